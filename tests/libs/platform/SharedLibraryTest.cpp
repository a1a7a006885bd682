#include "PlatformTestUtil.h"

#include "qrnplatform/File.h"
#include "qrnplatform/SharedLibrary.h"
#include "qrnplatform/Text.h"

#include <gtest/gtest.h>
#include <utility>

using qrnplatform::SharedLibrary;

namespace {

using AddFunction = int (*)(int, int);
using NextFunction = int (*)();

std::wstring modulePath() {
    return qrnplatform::Text::fromUtf8(QRNPLATFORM_TEST_MODULE);
}

} // namespace

TEST(SharedLibrary, LoadsAModuleAndFindsItsFunctions) {
    SharedLibrary library(modulePath());
    ASSERT_TRUE(library.isLoaded()) << qrnplatform::Text::toUtf8(library.error());
    EXPECT_EQ(library.error(), L"");
    EXPECT_EQ(library.path(), modulePath());
    const auto add = library.function<AddFunction>("qrnplatform_test_add");
    ASSERT_NE(add, nullptr);
    EXPECT_EQ(add(2, 3), 5);
    EXPECT_EQ(library.symbol("qrnplatform_test_missing"), nullptr);
    EXPECT_EQ(library.symbol(nullptr), nullptr);
}

TEST(SharedLibrary, MissingOrInvalidFilesAreReportedAndNonAsciiPathsLoad) {
    platformtest::TempFolder folder;
    SharedLibrary missing(folder / L"no-such-module.plugin");
    EXPECT_FALSE(missing.isLoaded());
    EXPECT_FALSE(missing.error().empty());
    EXPECT_EQ(missing.symbol("qrnplatform_test_add"), nullptr);

    const std::wstring text = folder / L"not-a-module.plugin";
    std::FILE* out = qrnplatform::File::open(text, "wb");
    ASSERT_NE(out, nullptr);
    std::fputs("this is not a library\n", out);
    std::fclose(out);
    SharedLibrary invalid(text);
    EXPECT_FALSE(invalid.isLoaded());
    EXPECT_FALSE(invalid.error().empty());

    const std::wstring copy = folder / L"Modul \u00d8 L\u00e4ufer \u9f7f\u8f6e.plugin";
    std::filesystem::copy_file(platformtest::fsPath(modulePath()), platformtest::fsPath(copy));
    SharedLibrary library(copy);
    ASSERT_TRUE(library.isLoaded()) << qrnplatform::Text::toUtf8(library.error());
    const auto add = library.function<AddFunction>("qrnplatform_test_add");
    ASSERT_NE(add, nullptr);
    EXPECT_EQ(add(-4, 1), -3);
}

TEST(SharedLibrary, HandlesShareOneModuleUnloadedWithTheLastAndMovesTransferIt) {
    {
        SharedLibrary first(modulePath());
        SharedLibrary second(modulePath());
        const auto next = first.function<NextFunction>("qrnplatform_test_next");
        ASSERT_NE(next, nullptr);
        EXPECT_EQ(next(), 1);
        EXPECT_EQ(second.function<NextFunction>("qrnplatform_test_next")(), 2);
        { SharedLibrary dropped(std::move(first)); }
        // The second handle keeps the module, and its state, alive.
        EXPECT_EQ(second.function<NextFunction>("qrnplatform_test_next")(), 3);
    }
    // A fresh load starts from fresh state only if the last handle really unloaded it.
    {
        SharedLibrary again(modulePath());
        EXPECT_EQ(again.function<NextFunction>("qrnplatform_test_next")(), 1);
        // Assigning over a loaded library releases the handle it held.
        SharedLibrary other(modulePath());
        again = std::move(other);
        EXPECT_EQ(again.function<NextFunction>("qrnplatform_test_next")(), 2);
    }
    SharedLibrary last(modulePath());
    EXPECT_EQ(last.function<NextFunction>("qrnplatform_test_next")(), 1);

    SharedLibrary a(modulePath());
    ASSERT_TRUE(a.isLoaded());
    SharedLibrary b(std::move(a));
    EXPECT_FALSE(a.isLoaded());
    EXPECT_EQ(a.symbol("qrnplatform_test_add"), nullptr);
    EXPECT_TRUE(a.path().empty());
    ASSERT_TRUE(b.isLoaded());
    EXPECT_EQ(b.function<AddFunction>("qrnplatform_test_add")(1, 1), 2);

    SharedLibrary failed(L"no-such-module.plugin");
    failed = std::move(b);
    EXPECT_TRUE(failed.isLoaded());
    EXPECT_TRUE(failed.error().empty());
    EXPECT_FALSE(b.isLoaded());
    EXPECT_EQ(failed.function<AddFunction>("qrnplatform_test_add")(20, 22), 42);

    SharedLibrary& self = failed;
    failed = std::move(self);
    EXPECT_TRUE(failed.isLoaded());
}
