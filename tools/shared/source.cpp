#include "tools/shared/source.h"

#include "reader/text/log-files.h"
#include "reader/text/log-frames.h"
#include "tools/shared/input.h"
#include "tools/shared/left-out.h"
#include "tools/shared/temporary-folder.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <vector>

namespace orvlog::tool
{

namespace
{

// The first byte of a Zstandard frame, with which no other log begins.
constexpr int kFrameBegins = 0x28;

// A log in frames may repeat what stands before in it, which a pipe doesn't give again: it is held in a file.
class HeldInput : public std::ifstream
{
public:
    bool hold(std::istream& input)
    {
        if (!folder_.keep(input, "log"))
            return false;
        open(folder_.path("log"), std::ios::binary);
        return is_open();
    }

private:
    TemporaryFolder folder_;
};

}  // namespace

std::string trouble_with_frames(std::istream& log)
{
    if (orvlog::reader::Frames::can_be_read())
        return {};
    char head[4] = {};
    log.read(head, sizeof head);
    const auto count = static_cast<size_t>(log.gcount());
    log.clear();
    log.seekg(0);
    return orvlog::reader::Frames::begin_with({head, count}) ? text_of_left_out("Zstandard", "this log") : "";
}

Source::Source(const std::string& name)
{
    read(name);
    if (stream_ != nullptr && owned_ != nullptr)
        why_ = trouble_with_frames(*owned_);
    if (!why_.empty())
        stream_ = nullptr;
}

void Source::read(const std::string& name)
{
    if (name == "-")
    {
        stream_ = &std::cin;
        if (std::cin.peek() != kFrameBegins || std::cin.tellg() >= 0)
            return;
        std::cin.clear();
        auto held = std::make_unique<HeldInput>();
        const bool good = held->hold(std::cin);
        why_ = good ? "" : std::strerror(errno);
        owned_ = std::move(held);
        stream_ = good ? owned_.get() : nullptr;
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
