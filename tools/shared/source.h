// A command's input as a stream of bytes, so that large files need little memory.

#pragma once

#include "clients/command-line/progress-bar.h"

#include <cstdint>
#include <fstream>
#include <istream>
#include <memory>
#include <string>

namespace orvlog::tool
{

class Source
{
public:
    // A path, "-" for the standard input, or a URL, which is read whole. Check `open`; `why` has one line of reason.
    explicit Source(const std::string& name);

    bool open() const
    {
        return stream_ != nullptr;
    }
    const std::string& why() const
    {
        return why_;
    }
    std::istream& stream()
    {
        return *stream_;
    }
    // Bytes of a file; 0 when the size is not known.
    uint64_t size() const
    {
        return size_;
    }

private:
    void read(const std::string& name);

    std::unique_ptr<std::istream> owned_;
    std::istream* stream_ = nullptr;
    std::string why_;
    uint64_t size_ = 0;
};

// Why a log in Zstandard frames can't be read; empty if it can, or consists of none.
std::string trouble_with_frames(std::istream& log);

using Progress = command_line::ProgressBar;

}  // namespace orvlog::tool
