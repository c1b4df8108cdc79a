// What fuzzers share.

#pragma once

#include "holv-core/gmm/gmm-allocator.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace orvlog::fuzz
{

// Ends the run where something that always holds does not.
inline void expect(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

// The heap, so that the sanitizers see every block. Holds what the codec, streams and merge ask for.
inline GMM_Allocator* heap()
{
    static GMM_Allocator allocator = []
    {
        GMM_Allocator made = {};
        made.gmm_Alloc = [](GMM_Allocator*, uint64_t size, uint32_t) { return std::malloc(size); };
        made.gmm_Free = [](GMM_Allocator*, void* block) { std::free(block); };
        return made;
    }();
    return &allocator;
}

// Choices taken from the front of an input; zeros when it is used up.
class Choices
{
public:
    Choices(const uint8_t* data, size_t size) : next_(data), left_(size) {}

    uint8_t byte()
    {
        if (left_ == 0)
            return 0;
        --left_;
        return *next_++;
    }
    const uint8_t* rest() const
    {
        return next_;
    }
    size_t rest_size() const
    {
        return left_;
    }

private:
    const uint8_t* next_;
    size_t left_;
};

}  // namespace orvlog::fuzz
