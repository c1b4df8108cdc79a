// Which calls of one log are which calls of another one.

#pragma once

#include "inspect/align/call-digest.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orvlog::inspect
{

enum class EditKind : uint8_t
{
    pair,     // the same call, or one that was changed
    missing,  // of A, not in B
    added     // of B, not in A
};

struct Edit
{
    static constexpr uint32_t kNowhere = UINT32_MAX;

    EditKind kind = EditKind::pair;
    bool equal = false;           // of a pair: as far as digests tell
    bool twice = false;           // of an added call: its neighbour in B is the same call
    uint32_t a = kNowhere;        // index of the call
    uint32_t b = kNowhere;        // likewise
    uint32_t partner = kNowhere;  // of a missing or an added call that stands elsewhere in the other log: where
};

// Every call of both once, in order: a longest common subsequence of what is equal, and between its calls those
// together that have most in common. Stretches that differ by more than some thousands of calls are aligned by what
// occurs once in both and, where there is no such thing, one after the other.
// `before_b` is the call of B ahead of the first one; null if there is none.
std::vector<Edit> align(std::span<const CallDigest> a, std::span<const CallDigest> b, double tolerance,
                        const CallDigest* before_b = nullptr);

}  // namespace orvlog::inspect
