#include "tests/support/temp-folder.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>

namespace orvlog::test
{

namespace fs = std::filesystem;

TempFolder::TempFolder() : home_(fs::current_path())
{
    std::random_device random;
    folder_ = fs::temp_directory_path() / ("orvlog-test-" + std::to_string(random()) + std::to_string(random()));
    fs::create_directories(folder_);
    fs::current_path(folder_);
}

TempFolder::~TempFolder()
{
    std::error_code ignored;
    fs::current_path(home_, ignored);
    fs::remove_all(folder_, ignored);
}

std::vector<std::string> TempFolder::names() const
{
    std::vector<std::string> result;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder_))
        result.push_back(entry.path().filename().string());
    std::sort(result.begin(), result.end());
    return result;
}

std::string TempFolder::read(const std::string& name) const
{
    std::ifstream file(folder_ / name, std::ios::binary);
    if (!file)
        return "(absent)";
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace orvlog::test
