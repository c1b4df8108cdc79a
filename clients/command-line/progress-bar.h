// The bar that shows on a terminal how far a program is.

#pragma once

#include <cstdint>

namespace orvlog::command_line
{

// Whether a bar may be shown: standard error is a terminal, and what the program writes doesn't go through a pipe,
// behind which there may be a pager that has the terminal for itself.
bool bar_has_room();

// A bar on standard error for what takes longer than a second. There is one at a time.
class ProgressBar
{
public:
    // `whole` is what all of it comes to, in any unit; there is no bar when it is 0, nor without room for one.
    explicit ProgressBar(uint64_t whole);
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    ~ProgressBar();
    void show(uint64_t done);

    // Takes the bar away, before anything else is written to the terminal; the next `show` may bring it back.
    static void clear();
    // To be called before output is written. Output on the same terminal shows by itself how far it is: the bar is
    // gone then for good.
    static void make_way_for_output();

private:
    uint64_t whole_;
    bool wanted_;
    bool shown_ = false;
    int64_t started_;  // milliseconds
    int64_t last_ = 0;
};

}  // namespace orvlog::command_line
