#include "qrnplatform/Environment.h"
#include "qrnplatform/File.h"

#include <cstdlib>
#include <gtest/gtest.h>

using qrnplatform::Environment;

TEST(Environment, ExecutableIsThisTestAndVariablesAreSetReadAndUnset) {
    EXPECT_EQ(Environment::executableBaseName(), L"qrnplatform_unit_tests");

    const std::wstring path = Environment::executablePath();
    EXPECT_TRUE(qrnplatform::File::exists(path));
#ifdef _WIN32
    const std::wstring fileName = L"qrnplatform_unit_tests.exe";
    EXPECT_TRUE(path.size() > 3 && (path[1] == L':' || path.rfind(L"\\\\", 0) == 0)) << path;
#else
    const std::wstring fileName = L"qrnplatform_unit_tests";
    EXPECT_EQ(path.front(), L'/');
#endif
    ASSERT_GT(path.size(), fileName.size());
    EXPECT_EQ(path.substr(path.size() - fileName.size()), fileName);
    const wchar_t before = path[path.size() - fileName.size() - 1];
    EXPECT_TRUE(before == L'/' || before == L'\\');

    const std::wstring name = L"QRNPLATFORM_TEST_VARIABLE";
    ASSERT_TRUE(Environment::unsetVariable(name));
    EXPECT_EQ(Environment::getVariable(name), L"");

    ASSERT_TRUE(Environment::setVariable(name, L"plain"));
    EXPECT_EQ(Environment::getVariable(name), L"plain");
    // Code that asks the C runtime sees the same value.
    const char* narrow = std::getenv("QRNPLATFORM_TEST_VARIABLE");
    ASSERT_NE(narrow, nullptr);
    EXPECT_STREQ(narrow, "plain");

    const std::wstring nonAscii = L"Zahnrad \u00d812 \u2013 \u9f7f\u8f6e";
    ASSERT_TRUE(Environment::setVariable(name, nonAscii));
    EXPECT_EQ(Environment::getVariable(name), nonAscii);
    // Longer than any first guess at a buffer size.
    const std::wstring longValue(5000, L'x');
    ASSERT_TRUE(Environment::setVariable(name, longValue));
    EXPECT_EQ(Environment::getVariable(name), longValue);

    ASSERT_TRUE(Environment::unsetVariable(name));
    EXPECT_EQ(Environment::getVariable(name), L"");
    EXPECT_EQ(std::getenv("QRNPLATFORM_TEST_VARIABLE"), nullptr);
}
