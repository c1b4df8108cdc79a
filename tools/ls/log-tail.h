// A plain log that is read while its job writes it.

#pragma once

#include "clients/system/followed-file.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace orvlog::tool
{

class LogTail
{
public:
    explicit LogTail(const std::string& path) : file_(path) {}
    LogTail(const LogTail&) = delete;
    LogTail& operator=(const LogTail&) = delete;

    // Told of each call that has come to its end, with its place in the log; false ends the reading. The element is
    // good until it returns.
    std::function<bool(const orvlog::reader::Element&)> on_call;
    // Told when nothing has come for a tenth of a second: of the call that was begun, "ORV_object_paint 3, line 46", or
    // of nothing. False ends the reading.
    std::function<bool(const std::string&)> on_wait;

    // Reads to the log's end. False if it can't be reached, and `why` says the reason; it is empty if a function above
    // has ended it. Zero bytes are room that the job hasn't written to yet.
    bool follow();
    const std::string& why() const
    {
        return why_;
    }

private:
    enum class Step
    {
        on,
        end,
        failed
    };

    Step read();
    Step take(std::string_view bytes);
    Step take_line(std::string_view line);
    Step finish_call();
    Step fail(const std::string& why);
    bool begins_like_a_log() const;
    std::string in_flight() const;

    std::string why_;
    system::FollowedFile file_;
    int64_t position_ = 0;
    std::string rest_;             // of a line whose end hasn't come
    std::string call_;             // the lines of a call whose end hasn't come, without rows of data
    std::string name_;             // the call's
    orvlog::reader::Place place_;  // of the next line
    orvlog::reader::Place begin_;  // of the call
    bool in_comment_ = false;
    bool begun_ = false;  // the root's tag has come
};

}  // namespace orvlog::tool
