#include "tests/support/fake-locks.h"

#include <cstddef>

namespace orvlog::test
{

namespace
{

// The services are the first member.
FakeLocks* of(const GER_OsServices* services)
{
    return reinterpret_cast<FakeLocks*>(const_cast<GER_OsServices*>(services));
}

}  // namespace

FakeLocks::FakeLocks() : services{}
{
    services.create = [](const GER_OsServices* s, void*, void** lock, uintptr_t one, uintptr_t also_one) -> int32_t
    {
        ++of(s)->created;
        *lock = of(s);
        return one == 1 && also_one == 1 ? of(s)->create_result : 0;
    };
    services.destroy = [](const GER_OsServices* s, void* lock) -> int32_t
    {
        ++of(s)->destroyed;
        return lock == of(s) ? of(s)->destroy_result : 0;
    };
    services.release = [](const GER_OsServices* s, void*) -> int32_t
    {
        --of(s)->held;
        return of(s)->release_result;
    };
    services.take = [](const GER_OsServices* s, void*, uintptr_t zero, uint32_t timeout) -> int32_t
    {
        of(s)->last_timeout = timeout;
        if (zero != 0 || of(s)->take_result != 5)
            return of(s)->take_result;
        ++of(s)->held;
        return 5;
    };
}

}  // namespace orvlog::test
