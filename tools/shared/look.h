// What the commands that look into a log share.

#pragma once

#include "holv-core/ggo/ggo-geometry.h"
#include "reader/tree/element.h"
#include "tools/shared/source.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <istream>
#include <memory>
#include <optional>
#include <string>

namespace orvlog::tool
{

// A log that is read once from its beginning to its end, with its progress shown.
class LogInput
{
public:
    explicit LogInput(const std::string& name) : name_(name), source_(name), progress_(source_.size()) {}
    // Reads parts of it instead, unless they are null.
    void read_instead(std::unique_ptr<std::istream> parts)
    {
        parts_ = std::move(parts);
    }

    bool open() const
    {
        return source_.open();
    }
    std::istream& stream()
    {
        return parts_ != nullptr ? *parts_ : source_.stream();
    }
    void show(uint64_t done)
    {
        progress_.show(done);
    }
    // One line on standard error; gives EXIT_FAILED.
    int fail_to_open() const;
    int fail_as_no_log() const;

private:
    std::string name_;
    Source source_;
    std::unique_ptr<std::istream> parts_;
    Progress progress_;
};

// Shortest text of a number that reads back the same.
std::string number_text(double value);
// "0,12,40,30": whole pixels around the box, minimum x, minimum y, maximum x, maximum y; "-" for none.
std::string box_text(const std::optional<GGO_BoxFloat>& box);
nlohmann::ordered_json box_json(const std::optional<GGO_BoxFloat>& box);
// Bytes that are no characters come out as U+FFFD.
std::string json_text(const nlohmann::ordered_json& value, int indent = -1);
// Bytes that would disturb a terminal come out as \x and two digits.
std::string printable(std::string_view text);
// Writes to the standard output. False if it failed; `finish_output` says why, and gives the exit status.
bool put(std::string_view text);
int finish_output(int status);

}  // namespace orvlog::tool
