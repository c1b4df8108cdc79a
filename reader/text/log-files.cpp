#include "reader/text/log-files.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <system_error>

namespace orvlog::reader
{

namespace
{

namespace fs = std::filesystem;

constexpr std::string_view kFolderMarks = "/\\";
constexpr std::string_view kTemporaryEnd = ".tmp";

bool take(std::string_view& text, std::string_view start)
{
    const bool there = text.starts_with(start);
    text.remove_prefix(there ? start.size() : 0);
    return there;
}

bool take_end(std::string_view& text, std::string_view end)
{
    const bool there = text.ends_with(end);
    text.remove_suffix(there ? end.size() : 0);
    return there;
}

bool are_all(std::string_view text, std::string_view of)
{
    return text.find_first_not_of(of) == std::string_view::npos;
}

// "orvlog-%08x-%08x-%08x-%08x", taken off.
bool take_session(std::string_view& name)
{
    if (!take(name, "orvlog"))
        return false;
    for (int word = 0; word < 4; ++word)
    {
        if (!take(name, "-") || name.size() < 8 || !are_all(name.substr(0, 8), "0123456789abcdef"))
            return false;
        name.remove_prefix(8);
    }
    return true;
}

bool is_image_log_name(std::string_view name)
{
    return take_session(name) && take(name, "-async-image-") && take_end(name, kTemporaryEnd) && name.size() == 10 &&
           are_all(name, "0123456789") && name <= "4294967295";
}

// "%s-%s-%d.bin". What the counter has beyond 31 bits comes out negative.
bool is_image_data_name(std::string_view name)
{
    if (!take_end(name, ".bin"))
        return false;
    const size_t digits = name.find_last_not_of("0123456789") + 1;
    const std::string_view number = name.substr(digits);
    int64_t value = 0;
    const auto read = std::from_chars(number.data(), number.data() + number.size(), value);
    if (read.ec != std::errc() || value > int64_t{1} << 31 || (number.size() > 1 && number.starts_with('0')))
        return false;
    name = name.substr(0, digits);
    constexpr std::array<std::string_view, 3> kKinds = {"-dir-", "-img-", "-attr-"};
    return std::ranges::any_of(kKinds, [name](std::string_view kind)
                               { return name.ends_with(kind) || name.ends_with(std::string(kind) + "-"); });
}

// Whether a path of either system begins at a root or a drive.
bool is_rooted(std::string_view name)
{
    return name.find_first_of(kFolderMarks) == 0 || (name.size() > 1 && name[1] == ':');
}

bool climbs(std::string_view name)
{
    for (size_t at = 0; at <= name.size();)
    {
        const size_t end = std::min(name.find_first_of(kFolderMarks, at), name.size());
        if (name.substr(at, end - at) == "..")
            return true;
        at = end + 1;
    }
    return false;
}

bool is_below(const fs::path& file, const fs::path& folder)
{
    const auto [inside, rest] = std::mismatch(folder.begin(), folder.end(), file.begin(), file.end());
    return inside == folder.end() && rest != file.end();
}

// Where a name with folders may stand in a folder; nothing if it would be elsewhere.
std::optional<fs::path> place_in(const fs::path& folder, const std::string& name)
{
    if (climbs(name))
        return std::nullopt;
    if (!is_rooted(name))
        return folder / name;
    const fs::path path = fs::path(name).lexically_normal();
    return is_below(path, folder) ? std::optional(path) : std::nullopt;
}

LogFile refusal(const std::string& reason)
{
    return {nullptr, {}, "is not read: " + reason, true};
}

LogFile absence()
{
    return {nullptr, {}, "is missing", false};
}

LogFile open_in(const fs::path& folder, const fs::path& path, LogFileKind kind)
{
    std::error_code error;
    const fs::path real = fs::canonical(path, error);
    if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory)
        return absence();
    if (error)
        return refusal(error.message());
    if (!is_below(real, folder) || !is_log_file_name(real.filename().string(), kind))
        return refusal("a link leads to where no file of the log lies");
    LogFile file;
    file.path = path;
    file.stream = open_ordinary_file(real, error);
    if (file.stream != nullptr)
        return file;
    return refusal(error ? error.message() : "it is no ordinary file");
}

}  // namespace

bool is_log_file_name(std::string_view name, LogFileKind kind)
{
    if (name.find('\0') != std::string_view::npos)
        return false;
    return kind == LogFileKind::image_log ? is_image_log_name(name) : is_image_data_name(name);
}

bool is_temporary_log_name(std::string_view name)
{
    return take_session(name) && name == kTemporaryEnd;
}

fs::path folder_of_log(const std::string& log)
{
    const bool elsewhere = log == "-" || log.starts_with("http:") || log.starts_with("file:");
    return elsewhere ? fs::path(".") : fs::path(log).parent_path();
}

LogFiles::LogFiles(const std::string& log, const std::vector<std::string>& folders)
{
    for (const std::string& folder : folders)
    {
        std::error_code error;
        const fs::path real = fs::canonical(folder, error);
        if (!error && !fs::is_directory(real, error) && !error)
            error = std::make_error_code(std::errc::not_a_directory);
        if (error)
            why_ = folder + ": " + error.message();
        else
            folders_.push_back(real);
    }
    const fs::path beside = folder_of_log(log);
    std::error_code error;
    const fs::path real = fs::canonical(beside.empty() ? "." : beside, error);
    if (!error)
        folders_.push_back(real);
}

LogFile LogFiles::open(const std::string& name, LogFileKind kind) const
{
    if (!is_log_file_name(name, kind))
        return refusal("no log names its files so");
    const size_t last = name.find_last_of(kFolderMarks) + 1;
    bool within = false;
    LogFile found = absence();
    for (const fs::path& folder : folders_)
    {
        const std::optional<fs::path> place = place_in(folder, name);
        within = within || place;
        for (const fs::path& path :
             {place.value_or(fs::path()), last > 0 || !place ? folder / name.substr(last) : fs::path()})
        {
            LogFile file = path.empty() ? absence() : open_in(folder, path, kind);
            if (file.stream != nullptr)
                return file;
            if (file.refused && !found.refused)
                found = std::move(file);
        }
    }
    const bool outside = !within && !found.refused;
    return outside ? refusal("it is outside the log's folder (see --files-from)") : std::move(found);
}

}  // namespace orvlog::reader
