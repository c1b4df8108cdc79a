#include "inspect/report/file-hash.h"

#include <nettle/sha2.h>

#include <vector>

namespace orvlog::inspect
{

namespace
{

Sha256 finished(sha256_ctx& context)
{
    Sha256 hash{};
    sha256_digest(&context, hash.size(), hash.data());
    return hash;
}

}  // namespace

Sha256 sha256_of(std::string_view text)
{
    sha256_ctx context;
    sha256_init(&context);
    sha256_update(&context, text.size(), reinterpret_cast<const uint8_t*>(text.data()));
    return finished(context);
}

std::string sha256_text(std::istream& stream)
{
    constexpr char kDigits[] = "0123456789abcdef";
    sha256_ctx context;
    sha256_init(&context);
    std::vector<char> block(size_t{1} << 16);
    while (stream.read(block.data(), static_cast<std::streamsize>(block.size())) || stream.gcount() > 0)
        sha256_update(&context, static_cast<size_t>(stream.gcount()), reinterpret_cast<const uint8_t*>(block.data()));
    if (stream.bad())
        return {};
    std::string text;
    for (const uint8_t byte : finished(context))
    {
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 15U];
    }
    return text;
}

}  // namespace orvlog::inspect
