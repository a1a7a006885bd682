#include "PlatformTestUtil.h"

#include "qrnplatform/File.h"

#include <gtest/gtest.h>
#include <vector>

using platformtest::fsPath;
using platformtest::kSeparator;
using platformtest::TempFolder;
using qrnplatform::File;

TEST(File, OpensFilesWithNonAsciiNames) {
    TempFolder folder;
    const std::wstring path =
        folder / L"Zahnrad \u00d812 \u2013 L\u00e4ufer \u9f7f\u8f6e \U0001F600.txt";
    EXPECT_FALSE(File::exists(path));
    EXPECT_EQ(File::open(path, "rb"), nullptr);

    std::FILE* out = File::open(path, "wb");
    ASSERT_NE(out, nullptr);
    EXPECT_GE(std::fputs("gear", out), 0);
    std::fclose(out);
    EXPECT_TRUE(File::exists(path));
    EXPECT_FALSE(File::isDirectory(path));

    // The name on disk is the UTF-8 of what was asked for, checked without the library.
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(fsPath(folder.path())))
        names.push_back(entry.path().filename().u8string());
    ASSERT_EQ(names.size(), 1u);
    EXPECT_EQ(names[0], u8"Zahnrad \u00d812 \u2013 L\u00e4ufer \u9f7f\u8f6e \U0001F600.txt");

    std::FILE* in = File::open(path, "rb");
    ASSERT_NE(in, nullptr);
    char buffer[16] = {};
    EXPECT_EQ(std::fread(buffer, 1, sizeof buffer, in), 4u);
    std::fclose(in);
    EXPECT_STREQ(buffer, "gear");
}

TEST(File, MakesNestedDirectoriesButNotThroughAFile) {
    TempFolder folder;
    const std::wstring nested =
        folder / (L"a" + kSeparator + L"B\u00e4um" + kSeparator + L"\u9f7f\u8f6e");
    EXPECT_FALSE(File::exists(nested));
    ASSERT_TRUE(File::makeDirectories(nested));
    EXPECT_TRUE(File::isDirectory(nested));
    EXPECT_TRUE(std::filesystem::is_directory(fsPath(nested)));
    // Already there, and with a trailing separator.
    EXPECT_TRUE(File::makeDirectories(nested));
    EXPECT_TRUE(File::makeDirectories(folder / (L"c" + kSeparator)));
    EXPECT_TRUE(File::isDirectory(folder / L"c"));
    // Forward slashes work on Windows too.
    EXPECT_TRUE(File::makeDirectories(folder.path() + L"/d/e"));
    EXPECT_TRUE(File::isDirectory(folder / (L"d" + kSeparator + L"e")));

    const std::wstring file = folder / L"plain.txt";
    std::FILE* out = File::open(file, "wb");
    ASSERT_NE(out, nullptr);
    std::fclose(out);
    EXPECT_FALSE(File::makeDirectories(file));
    EXPECT_FALSE(File::makeDirectories(file + kSeparator + L"sub"));
    EXPECT_FALSE(File::isDirectory(file + kSeparator + L"sub"));
    EXPECT_FALSE(File::makeDirectories(L""));
}
