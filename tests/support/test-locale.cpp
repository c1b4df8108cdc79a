// Lets a whole run of tests take place in the locale that ORVLOG_TEST_LOCALE names, one that writes numbers
// with a comma: what the library writes must not change.

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace
{

class LocaleEnvironment : public testing::Environment
{
    void SetUp() override
    {
        const char* name = std::getenv("ORVLOG_TEST_LOCALE");
        if (name == nullptr)
            return;
        ASSERT_NE(std::setlocale(LC_ALL, name), nullptr) << name;
        char text[8];
        std::snprintf(text, sizeof text, "%.1f", 1.5);
        ASSERT_EQ(std::string(text), "1,5");
    }
};

[[maybe_unused]] const testing::Environment* const registered =
    testing::AddGlobalTestEnvironment(new LocaleEnvironment);

}  // namespace
