// A folder of a test's own, in which it runs; it goes with all that is in it.

#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace orvlog::test
{

class TempFolder
{
public:
    TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder();

    // The names in it, in order.
    std::vector<std::string> names() const;
    // The bytes of a file in it; "(absent)" if there is none.
    std::string read(const std::string& name) const;

private:
    std::filesystem::path home_;
    std::filesystem::path folder_;
};

}  // namespace orvlog::test
