// The form in which continuous integration reads what came of tests.

#pragma once

#include <string>
#include <vector>

namespace orvlog::tool
{

struct TestCase
{
    std::string name;
    std::string failure;  // what is wrong with what was made; empty for nothing
    std::string error;    // why nothing was made; empty if something was
};

// One suite as XML. It tells no times: the same outcome gives the same text.
std::string junit_text(const std::string& suite, const std::vector<TestCase>& cases);

}  // namespace orvlog::tool
