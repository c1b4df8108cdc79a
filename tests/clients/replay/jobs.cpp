#include "tests/clients/replay/jobs.h"

#include <filesystem>
#include <regex>

namespace orvlog::test
{

namespace fs = std::filesystem;

ToolResult run_in(const std::string& folder, const Words& words)
{
    Words all = {"env", "-C", folder};
    all.insert(all.end(), words.begin(), words.end());
    return run_program(all);
}

std::string sample()
{
    return ORVLOG_SOURCE_DIR "/docs/sample.pdf";
}

std::map<std::string, std::string> files_of(const std::string& folder)
{
    std::map<std::string, std::string> files;
    std::error_code none;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, none))
        if (entry.is_regular_file())
            files[entry.path().filename().string()] = read_file(entry.path().string());
    return files;
}

std::vector<std::string> pages_of(const std::string& folder)
{
    std::vector<std::string> pages;
    for (const auto& [name, content] : files_of(folder))
        pages.push_back(content);
    return pages;
}

std::string without_session_ids(const std::string& log)
{
    return std::regex_replace(log, std::regex("orvlog-[0-9a-f]{8}-[0-9a-f]{8}-[0-9a-f]{8}-[0-9a-f]{8}-"), "orvlog-");
}

}  // namespace orvlog::test
