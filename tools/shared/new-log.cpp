#include "tools/shared/new-log.h"

#include "clients/system/signals.h"
#include "clients/system/system.h"
#include "clients/system/unfinished.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace orvlog::tool
{

namespace
{

namespace fs = std::filesystem;

bool copy(std::istream& from, std::FILE* to)
{
    std::array<char, 1 << 16> block{};
    while (from)
    {
        from.read(block.data(), block.size());
        const auto count = static_cast<size_t>(from.gcount());
        if (std::fwrite(block.data(), 1, count, to) != count)
            return false;
    }
    return true;
}

// A file that wasn't there, and that a signal takes away. Null with the error number set.
std::FILE* make_noted(const std::string& path)
{
    const system::SignalsHeld held;
    errno = 0;
    std::FILE* file = system::create_file(path);
    if (file != nullptr)
        system::note_file_beside(path);
    return file;
}

}  // namespace

FilesBeside::FilesBeside(const std::string& new_log, const orvlog::reader::LogFiles& files)
    : files_(files), folder_(fs::path(new_log).parent_path()), stem_(fs::path(new_log).filename().string())
{
    stem_ = stem_.substr(0, std::max<size_t>(1, stem_.find('.', 1)));
}

FilesBeside::~FilesBeside()
{
    std::error_code none;
    for (const std::string& name : made_)
        fs::remove(folder_ / name, none);
    system::forget_files_beside();
}

std::string FilesBeside::take(const std::string& name, const std::string& kind, uint64_t number)
{
    if (const auto known = taken_.find(name); known != taken_.end())
        return known->second;
    orvlog::reader::LogFile file = files_.open(name, orvlog::reader::LogFileKind::image_data);
    if (file.stream == nullptr)
    {
        if (complain)
            complain("the file " + name + " " + file.why);
        return {};
    }
    std::string taken;
    do
        taken = stem_ + "-" + kind + "-" + std::to_string(number++) + ".bin";
    while (made_.contains(taken));
    const std::string path = (folder_ / taken).string();
    std::FILE* to = make_noted(path);
    if (to == nullptr)
        throw std::runtime_error(path + ": " + std::strerror(errno) + "; nothing was written");
    made_.insert(taken);
    const bool copied = copy(*file.stream, to);
    if (std::fclose(to) != 0 || !copied)
        throw std::runtime_error(path + ": " + std::strerror(errno) + "; nothing was written");
    taken_.emplace(name, taken);
    return taken;
}

bool is_same_file(const std::string& one, const std::string& other)
{
    std::error_code none;
    return fs::equivalent(one, other, none);
}

std::string write_new_log(std::istream& text, const std::string& name, const std::function<void()>& progress)
{
    Output output(name);
    if (!output.open())
        return name + ": " + std::strerror(errno);
    std::array<char, 1 << 16> block{};
    while (text)
    {
        text.read(block.data(), block.size());
        if (!output.write(block.data(), static_cast<size_t>(text.gcount())))
            break;
        if (progress)
            progress();
    }
    const bool good = output.finish();
    return good ? "" : (name == "-" ? "standard output" : name) + ": " + std::strerror(errno);
}

}  // namespace orvlog::tool
