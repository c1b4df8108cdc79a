#include "tools/render/junit.h"

#include "tools/shared/look.h"

#include <algorithm>

namespace orvlog::tool
{

namespace
{

// Without bytes that XML doesn't have.
std::string escaped(const std::string& text)
{
    std::string result;
    for (const char c : printable(text))
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else if (c == '"')
            result += "&quot;";
        else
            result += c;
    return result;
}

}  // namespace

std::string junit_text(const std::string& suite, const std::vector<TestCase>& cases)
{
    const auto count = [&cases](std::string TestCase::*what) {
        return std::to_string(
            std::ranges::count_if(cases, [what](const TestCase& one) { return !(one.*what).empty(); }));
    };
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuite name=\"" + escaped(suite) +
                       "\" tests=\"" + std::to_string(cases.size()) + "\" failures=\"" + count(&TestCase::failure) +
                       "\" errors=\"" + count(&TestCase::error) + "\">\n";
    for (const TestCase& one : cases)
    {
        text += "  <testcase classname=\"" + escaped(suite) + "\" name=\"" + escaped(one.name) + "\"";
        if (!one.error.empty())
            text += ">\n    <error message=\"" + escaped(one.error) + "\"/>\n  </testcase>\n";
        else if (!one.failure.empty())
            text += ">\n    <failure message=\"" + escaped(one.failure) + "\"/>\n  </testcase>\n";
        else
            text += "/>\n";
    }
    return text + "</testsuite>\n";
}

}  // namespace orvlog::tool
