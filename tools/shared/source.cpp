#include "tools/shared/source.h"

#include "reader/text/log-files.h"
#include "tools/shared/input.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <vector>

namespace orvlog::tool
{

Source::Source(const std::string& name)
{
    if (name == "-")
    {
        stream_ = &std::cin;
        return;
    }
    if (is_url(name))
    {
        std::vector<uint8_t> bytes;
        if (!read_input(name, &bytes, &why_))
            return;
        size_ = bytes.size();
        owned_ = std::make_unique<std::istringstream>(std::string(bytes.begin(), bytes.end()));
        stream_ = owned_.get();
        return;
    }
    std::error_code error;
    if (std::filesystem::is_directory(name, error))
    {
        why_ = std::strerror(EISDIR);
        return;
    }
    bool foreign_journal = false;
    owned_ = orvlog::reader::open_log(name, &foreign_journal);
    if (owned_ == nullptr)
    {
        why_ = std::strerror(errno);
        return;
    }
    if (foreign_journal)
        std::fprintf(stderr, "orvlog: %s.journal: does not belong to this log and is not read\n", name.c_str());
    const auto size = std::filesystem::file_size(name, error);
    size_ = error ? 0 : size;
    stream_ = owned_.get();
}

}  // namespace orvlog::tool
