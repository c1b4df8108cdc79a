// The files that a log is taken apart into, and the list of them.

#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <string_view>

namespace orvlog::tool
{

class ExtractOutput
{
public:
    // Makes the folder, and in it manifest.json; see `good`.
    ExtractOutput(const std::string& folder, const std::string& log, const std::string& what);

    bool good() const
    {
        return good_;
    }
    // The line of reason when something failed.
    const std::string& why() const
    {
        return why_;
    }
    uint64_t files() const
    {
        return files_;
    }

    // Writes a file. False if it could not be.
    bool write(const std::string& name, std::string_view content);
    bool write(const std::string& name, std::span<const uint8_t> content);
    // The path to write a file at by other means.
    std::string path(const std::string& name) const;
    // What is told of a file; its name is "file" in it.
    void list(const nlohmann::ordered_json& entry);
    // Ends the list.
    bool finish();

    // The names of calls in file names: their id, or their line where they have none or one that came before.
    std::string call_name(const std::string& id, uint64_t line);

private:
    bool fail(const std::string& name);

    std::filesystem::path folder_;
    std::ofstream manifest_;
    std::string why_;
    bool good_ = true;
    uint64_t files_ = 0;
    uint64_t next_id_ = 0;
};

}  // namespace orvlog::tool
