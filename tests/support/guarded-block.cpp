#include "tests/support/guarded-block.h"

#include <stdexcept>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace orvlog::test
{

namespace
{

constexpr size_t kPage = 4096;

}

GuardedBlock::GuardedBlock(size_t size) : mapped_((size + kPage - 1) / kPage * kPage + kPage), size_(size)
{
    const size_t open = mapped_ - kPage;
#ifdef _WIN32
    mapping_ = VirtualAlloc(nullptr, mapped_, MEM_RESERVE, PAGE_NOACCESS);
    const bool mapped =
        mapping_ != nullptr && (open == 0 || VirtualAlloc(mapping_, open, MEM_COMMIT, PAGE_READWRITE) != nullptr);
#else
    mapping_ = mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    const bool mapped = mapping_ != MAP_FAILED && (open == 0 || mprotect(mapping_, open, PROT_READ | PROT_WRITE) == 0);
#endif
    if (!mapped)
        throw std::runtime_error("no guarded block to be had");
    data_ = static_cast<uint8_t*>(mapping_) + open - size;
}

GuardedBlock::~GuardedBlock()
{
#ifdef _WIN32
    VirtualFree(mapping_, 0, MEM_RELEASE);
#else
    munmap(mapping_, mapped_);
#endif
}

void GuardedBlock::close()
{
    if (mapped_ == kPage)
        return;
#ifdef _WIN32
    VirtualFree(mapping_, mapped_ - kPage, MEM_DECOMMIT);
#else
    mprotect(mapping_, mapped_, PROT_NONE);
#endif
}

bool is_readable(const void* byte)
{
#ifdef _WIN32
    MEMORY_BASIC_INFORMATION page;
    return VirtualQuery(byte, &page, sizeof page) == sizeof page && page.State == MEM_COMMIT &&
           (page.Protect & (PAGE_NOACCESS | PAGE_GUARD)) == 0;
#else
    int ends[2];
    if (pipe(ends) != 0)
        throw std::runtime_error("no pipe to be had");
    const bool readable = write(ends[1], byte, 1) == 1;
    ::close(ends[0]);
    ::close(ends[1]);
    return readable;
#endif
}

}  // namespace orvlog::test
