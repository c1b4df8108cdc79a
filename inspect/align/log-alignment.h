// Two logs, call by call.

#pragma once

#include "inspect/align/alignment.h"
#include "inspect/align/differences.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <istream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvlog::inspect
{

// Opens a log anew, from its beginning; null if it can't be.
using OpenLog = std::function<std::shared_ptr<std::istream>()>;

enum class StepKind : uint8_t
{
    same,
    changed,
    missing,  // in B
    added     // in B
};

// Where a call stands that is not at hand.
struct CallPlace
{
    uint64_t line = 0;
    uint64_t byte = 0;
    std::optional<uint32_t> id;
};

struct Step
{
    StepKind kind = StepKind::same;
    const reader::Element* a = nullptr;   // null for an added call
    const reader::Element* b = nullptr;   // null for a missing one
    std::vector<Difference> differences;  // of a changed one
    // Of a missing or an added call: where it stands in the other log, if it does.
    std::optional<CallPlace> moved;
    bool twice = false;  // of an added call: the one before or behind it is the same
};

struct AlignOptions
{
    double tolerance = 0;
    // Calls of each log that are looked at together; memory goes with it, and with the largest call.
    uint32_t window = 1U << 17;
    // Told how many bytes of A have been used, in the first pass over it and in the second one; may be empty.
    std::function<void(int pass, uint64_t bytes)> progress;
};

// What is to be said of a log.
struct LogState
{
    bool opened = false;
    bool is_log = false;
    bool cut = false;
    uint64_t damage = 0;
    uint64_t calls = 0;
};

struct AlignOutcome
{
    LogState a;
    LogState b;
    bool no_room = false;           // for the temporary files
    std::vector<Difference> roots;  // of the element ORV
};

// Reads each log twice: once for a digest of each call, which goes to a temporary file of some 100 bytes a call, and
// once to compare what belongs together. `on_step` is told of each call in order, and gives false to end early.
AlignOutcome align_logs(const OpenLog& open_a, const OpenLog& open_b, const AlignOptions& options,
                        const std::function<bool(const Step&)>& on_step);

}  // namespace orvlog::inspect
