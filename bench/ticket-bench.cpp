// How fast a ticket becomes text: one with a profile of 500 KB, to a stream that drops it and to a file, beside a
// plain loop that writes the same digits into memory.

#include "orvlog/colour/gxc/gxc-ticket.h"

#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace
{

using Bytes = std::vector<uint8_t>;

constexpr uint32_t kProfileSize = 500 * 1024;
constexpr int kRounds = 5;

void put(Bytes* bytes, std::initializer_list<uint32_t> values)
{
    for (const uint32_t value : values)
        for (int shift = 0; shift < 32; shift += 8)
            bytes->push_back(static_cast<uint8_t>(value >> shift));
}

// A ticket with one profile and nothing else.
Bytes make_ticket(const Bytes& profile)
{
    Bytes ticket(16, 0);
    put(&ticket, {0, 2, 3, 0, kProfileSize});
    ticket.insert(ticket.end(), profile.begin(), profile.end());
    put(&ticket, {0, 0xFFFFFFFF, 0});
    return ticket;
}

Bytes make_profile()
{
    std::mt19937 random(1);
    Bytes profile(kProfileSize);
    for (uint8_t& byte : profile)
        byte = static_cast<uint8_t>(random());
    return profile;
}

struct Counter
{
    uint64_t bytes = 0;
    uint64_t prints = 0;
};

// A stream that formats and drops.
GIO_StreamOps dropping()
{
    GIO_StreamOps ops = {};
    ops.gio_VPrintf = [](void* c, const char* format, va_list args) -> int32_t
    {
        char text[2048];
        const int length = std::vsnprintf(text, sizeof text, format, args);
        auto* counter = static_cast<Counter*>(c);
        counter->bytes += static_cast<uint64_t>(length);
        ++counter->prints;
        return length;
    };
    ops.gio_Flush = [](void*) -> int32_t { return 0; };
    return ops;
}

GIO_StreamOps lending()
{
    GIO_StreamOps ops = {};
    ops.gio_ReadBuffer = [](void* c, void** data, uint64_t* length) -> int32_t
    {
        auto* bytes = static_cast<Bytes*>(c);
        *data = bytes->data();
        *length = bytes->size();
        return 1;
    };
    return ops;
}

// Seconds of the fastest round.
double fastest(const std::function<void()>& work)
{
    double best = 1e9;
    for (int i = 0; i < kRounds; ++i)
    {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        best = taken.count() < best ? taken.count() : best;
    }
    return best;
}

void report(const char* what, double seconds, uint64_t bytes, double plain)
{
    std::printf("%-34s %8.1f MB/s of text   %5.2f of the plain loop's speed\n", what,
                static_cast<double>(bytes) / seconds / 1e6, plain / seconds);
}

}  // namespace

int main()
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    const Bytes profile = make_profile();
    Bytes ticket = make_ticket(profile);
    const GIO_StreamOps lending_ops = lending();
    const GIO_StreamOps dropping_ops = dropping();
    GIO_Stream input = {&ticket, GIO_KIND_MEMORY, &lending_ops};
    Counter counter;
    GIO_Stream sink = {&counter, GIO_KIND_FILE, &dropping_ops};

    std::string digits(2 * profile.size(), '\0');
    const double plain = fastest(
        [&]
        {
            for (size_t i = 0; i < profile.size(); ++i)
            {
                digits[2 * i] = kDigits[profile[i] >> 4];
                digits[2 * i + 1] = kDigits[profile[i] & 15];
            }
        });
    const double dropped = fastest(
        [&]
        {
            counter = {};
            gxc_deserialise_ticket(nullptr, &input, 1, &sink, "    ");
        });
    std::FILE* scratch = std::tmpfile();
    GIO_StreamOps to_file = dropping_ops;
    to_file.gio_VPrintf = [](void* c, const char* format, va_list args) -> int32_t
    { return std::vfprintf(static_cast<std::FILE*>(c), format, args); };
    to_file.gio_Flush = [](void* c) -> int32_t { return std::fflush(static_cast<std::FILE*>(c)); };
    GIO_Stream file = {scratch, GIO_KIND_FILE, &to_file};
    const double written = fastest([&] { gxc_deserialise_ticket(nullptr, &input, 1, &file, "    "); });

    std::printf("a ticket with a profile of %u bytes: %llu bytes of text in %llu prints, check %c\n", kProfileSize,
                static_cast<unsigned long long>(counter.bytes), static_cast<unsigned long long>(counter.prints),
                digits[digits.size() / 2]);
    report("plain loop of digits in memory", plain, digits.size(), plain);
    report("to a stream that drops the text", dropped, counter.bytes, plain);
    report("to a file, flushed at each print", written, counter.bytes, plain);
    std::fclose(scratch);
    return 0;
}
