// What a call is, in a few numbers: enough to tell whether two calls may be the same, or resemble one another.

#pragma once

#include "inspect/align/call-names.h"
#include "inspect/align/temporary-file.h"
#include "reader/tree/element.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace orvlog::inspect
{

struct CallDigest
{
    static constexpr size_t kParts = 7;

    uint64_t whole = 0;                   // of all but names of things
    uint64_t form = 0;                    // the same without measures
    std::array<uint32_t, kParts> part{};  // attributes, operators, outline, its form, clip, operands, the rest
    uint32_t kind = 0;                    // of the call's name
    double sum = 0;                       // of all measures
    double weighted = 0;                  // of all measures, each with a weight of its own
    double size = 0;                      // the most that they may differ by for a tolerance of 1
    uint64_t line = 0;
    uint64_t byte = 0;
    int64_t id = -1;  // of a paint; -1 of other calls
};

// `with_measures`: false leaves out what only calls that are equal within a tolerance need.
CallDigest digest_of(const reader::Element& call, TicketTexts& tickets, bool with_measures);

// Whether the calls may be equal within the tolerance; those that are, are.
bool may_be_equal(const CallDigest& a, const CallDigest& b, double tolerance);

// 0: other calls. Otherwise 1 and more, the more the calls have in common; at most CallDigest::parts + 1.
int resemblance(const CallDigest& a, const CallDigest& b);

using DigestFile = RecordFile<CallDigest>;

}  // namespace orvlog::inspect
