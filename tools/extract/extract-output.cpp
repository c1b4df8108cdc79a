#include "tools/extract/extract-output.h"

#include "tools/shared/look.h"

#include <cerrno>
#include <charconv>
#include <cstring>

namespace orvlog::tool
{

using nlohmann::ordered_json;

ExtractOutput::ExtractOutput(const std::string& folder, const std::string& log, const std::string& what)
    : folder_(folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder_, error);
    if (error)
    {
        why_ = path("manifest.json") + ": " + error.message();
        good_ = false;
        return;
    }
    errno = 0;
    manifest_.open(folder_ / "manifest.json", std::ios::binary);
    if (!manifest_)
    {
        fail("manifest.json");
        return;
    }
    manifest_ << "{\n\"log\": " << json_text(log) << ",\n\"what\": " << json_text(what) << ",\n\"files\": [";
}

bool ExtractOutput::fail(const std::string& name)
{
    if (good_)
        why_ = path(name) + ": " + std::strerror(errno != 0 ? errno : EIO);
    good_ = false;
    return false;
}

std::string ExtractOutput::path(const std::string& name) const
{
    return (folder_ / name).string();
}

bool ExtractOutput::write(const std::string& name, std::string_view content)
{
    errno = 0;
    std::ofstream file(folder_ / name, std::ios::binary);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    return file.good() || fail(name);
}

bool ExtractOutput::write(const std::string& name, std::span<const uint8_t> content)
{
    return write(name, std::string_view(reinterpret_cast<const char*>(content.data()), content.size()));
}

void ExtractOutput::list(const ordered_json& entry)
{
    manifest_ << (files_++ == 0 ? "\n" : ",\n") << json_text(entry);
}

bool ExtractOutput::finish()
{
    manifest_ << (files_ == 0 ? "]\n}\n" : "\n]\n}\n");
    manifest_.close();
    return good_ && (manifest_.good() || fail("manifest.json"));
}

std::string ExtractOutput::call_name(const std::string& id, uint64_t line)
{
    uint64_t number = 0;
    const auto read = std::from_chars(id.data(), id.data() + id.size(), number);
    if (read.ec != std::errc() || read.ptr != id.data() + id.size() || number < next_id_)
        return "line-" + std::to_string(line);
    next_id_ = number + 1;
    return std::to_string(number);
}

}  // namespace orvlog::tool
