#include "tools/extract/job-files.h"

#include <algorithm>

namespace orvlog::tool
{

using orvlog::reader::LogFileKind;

std::unique_ptr<std::istream> JobFiles::open(const std::string& name, LogFileKind kind)
{
    orvlog::reader::LogFile file = files_.open(name, kind);
    refused_ = refused_ || file.refused;
    if (file.stream == nullptr && missing_.size() < 1000)
        missing_.insert(name + " " + file.why);
    return std::move(file.stream);
}

std::vector<uint8_t> JobFiles::read(const std::string& name, uint64_t begin, uint64_t count)
{
    if (name != last_name_)
    {
        last_ = open(name, LogFileKind::image_data);
        last_name_ = name;
    }
    std::istream* file = last_.get();
    if (file == nullptr)
        return {};
    file->clear();
    file->seekg(0, std::ios::end);
    const auto size = static_cast<uint64_t>(std::max<std::streamoff>(file->tellg(), 0));
    std::vector<uint8_t> bytes(begin < size ? std::min(count, size - begin) : 0);
    file->seekg(static_cast<std::streamoff>(std::min(begin, size)));
    file->read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<size_t>(file->gcount()));
    return bytes;
}

}  // namespace orvlog::tool
