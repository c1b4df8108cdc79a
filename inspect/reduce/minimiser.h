// The smallest log for which something still holds: delta debugging over pages, calls, groups, clip lists, edges and
// segments of paths, and areas of images.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvlog::inspect
{

class LogTrials
{
public:
    virtual ~LogTrials() = default;

    // How many logs are looked at side by side. The result doesn't depend on it.
    virtual size_t at_once() const = 0;
    // The first of these logs for which it still holds.
    virtual std::optional<size_t> first_good(const std::vector<std::string>& logs) = 0;
    // Nothing more is to be tried.
    virtual bool is_over() const = 0;
};

class Minimiser
{
public:
    // `log` is the plain text of a whole log for which it holds, with all its data in it; in memory, as all of its
    // smaller ones are. `trials` lives as long as this.
    Minimiser(std::string log, LogTrials& trials) : log_(std::move(log)), trials_(trials) {}

    // Makes the log as small as it gets, or as it gets until the trials are over.
    void run();

    const std::string& log() const
    {
        return log_;
    }

    // Told of each smaller log that was found; may be empty.
    std::function<void(const std::string& log)> on_smaller;

private:
    // The log without some of its parts.
    using Make = std::function<std::string(const std::vector<bool>& left_out)>;

    enum class Ending
    {
        done,
        halved  // the log is so much smaller that its parts are to be found anew
    };
    Ending reduce(size_t parts, const Make& make);
    bool reduce_round(size_t chunk, std::vector<size_t>& left, std::vector<bool>& out, const Make& make,
                      size_t halved_at);
    Ending reduce_pages();
    Ending reduce_calls();
    Ending reduce_groups();
    template <typename Find> Ending reduce_parts(Find find);
    void repeat(Ending (Minimiser::*phase)());

    std::string log_;
    LogTrials& trials_;
};

// How many calls a plain log has.
uint64_t count_calls(const std::string& log);

}  // namespace orvlog::inspect
