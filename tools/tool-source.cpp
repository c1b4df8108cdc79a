#include "tools/tool-source.h"

#include "reader/log-files.h"
#include "tools/tool-input.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <unistd.h>
#include <vector>

namespace tool
{

namespace
{

constexpr int64_t QUIET_MS = 1000;
constexpr int64_t STEP_MS = 100;
constexpr int BAR = 40;

int64_t now_ms()
{
    const auto since = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(since).count();
}

}  // namespace

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

Progress::Progress(uint64_t whole)
    : whole_(whole), wanted_(whole != 0 && isatty(STDERR_FILENO) != 0), started_(now_ms())
{
}

Progress::~Progress()
{
    if (shown_)
        std::fprintf(stderr, "\r%*s\r", BAR + 8, "");
}

void Progress::show(uint64_t done)
{
    const int64_t now = wanted_ ? now_ms() : 0;
    if (!wanted_ || now - started_ < QUIET_MS || now - last_ < STEP_MS)
        return;
    last_ = now;
    shown_ = true;
    const int filled = static_cast<int>(static_cast<double>(done) / static_cast<double>(whole_) * BAR);
    const std::string bar(static_cast<size_t>(filled < BAR ? filled : BAR), '#');
    std::fprintf(stderr, "\r[%-*s] %3d%%", BAR, bar.c_str(), filled * 100 / BAR);
}

}  // namespace tool
