#include "holv-core/ggo/ggo-faults.h"

#include <xmmintrin.h>

namespace
{

constexpr unsigned kPending = 0x3F;  // the six faults of the control and status register
constexpr unsigned kWatched = 0x1F;  // all but the inexact result
constexpr unsigned kMasks = 0x1F80;  // the six masks

}  // namespace

bool ggo_run_watched(void (*work)(void* context), void* context)
{
    const unsigned before = _mm_getcsr();
    _mm_setcsr((before & ~kPending) | kMasks);
    work(context);
    const unsigned met = _mm_getcsr() & kWatched;
    _mm_setcsr(before & ~kPending);
    return met != 0;
}
