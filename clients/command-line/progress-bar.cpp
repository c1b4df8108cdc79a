#include "clients/command-line/progress-bar.h"

#include "clients/system/system.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>

namespace orvlog::command_line
{

namespace
{

constexpr int64_t kQuietMs = 1000;
constexpr int64_t kStepMs = 100;
constexpr int kBar = 40;

ProgressBar* current = nullptr;

int64_t now_ms()
{
    const auto since = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(since).count();
}

}  // namespace

bool bar_has_room()
{
    return system::is_terminal(system::Stream::error) && !system::is_pipe(system::Stream::output);
}

ProgressBar::ProgressBar(uint64_t whole) : whole_(whole), wanted_(whole != 0 && bar_has_room()), started_(now_ms())
{
    current = this;
}

ProgressBar::~ProgressBar()
{
    clear();
    current = nullptr;
}

void ProgressBar::show(uint64_t done)
{
    const int64_t now = wanted_ ? now_ms() : 0;
    if (!wanted_ || now - started_ < kQuietMs || now - last_ < kStepMs)
        return;
    last_ = now;
    shown_ = true;
    const double part = static_cast<double>(std::min(done, whole_)) / static_cast<double>(whole_);
    const std::string bar(static_cast<size_t>(part * kBar), '#');
    std::fprintf(stderr, "\r[%-*s] %3d%%", kBar, bar.c_str(), static_cast<int>(part * 100));
    std::fflush(stderr);
}

void ProgressBar::clear()
{
    if (current == nullptr || !current->shown_)
        return;
    current->shown_ = false;
    std::fprintf(stderr, "\r%*s\r", kBar + 8, "");
}

void ProgressBar::make_way_for_output()
{
    if (current == nullptr || !current->wanted_ || !system::is_terminal(system::Stream::output))
        return;
    clear();
    current->wanted_ = false;
}

}  // namespace orvlog::command_line
