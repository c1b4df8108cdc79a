#include "inspect/export/digest.h"

namespace orvlog::inspect
{

std::string Digest::take()
{
    constexpr char kDigits[] = "0123456789abcdef";
    uint8_t half[SHA256_DIGEST_SIZE / 2];
    sha256_digest(&state_, sizeof half, half);
    std::string text;
    for (const uint8_t byte : half)
    {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

}  // namespace orvlog::inspect
