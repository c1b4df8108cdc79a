#include "holv-core/ggo/ggo-faults.h"

#include <cfenv>

bool ggo_run_watched(void (*work)(void* context), void* context)
{
    std::feclearexcept(FE_ALL_EXCEPT);
    std::fenv_t before;
    std::feholdexcept(&before);
    work(context);
    const int met = std::fetestexcept(FE_UNDERFLOW | FE_OVERFLOW | FE_DIVBYZERO | FE_INVALID);
    std::fesetenv(&before);
    return met != 0;
}
