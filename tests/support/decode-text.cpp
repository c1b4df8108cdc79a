#include "tests/support/decode-text.h"

#include "orvlog/log/ahc-coder.h"
#include "tests/support/test-allocator.h"

namespace orvlog::test
{

std::string decode_lines(const std::string& bits)
{
    TestAllocator allocator;
    AdaptiveHuffmanCoder* coder = AHC_DecoderCreate(allocator.get());
    // The last bytes come out only while there is one more behind them.
    const std::string input = bits + '\0';
    AHC_SetInput(coder, reinterpret_cast<const uint8_t*>(input.data()), static_cast<uint32_t>(input.size()));
    std::string text;
    char piece[100];
    for (int32_t count; (count = AHC_Decode(coder, reinterpret_cast<uint8_t*>(piece), sizeof piece)) > 0;)
        text.append(piece, static_cast<size_t>(count));
    AHC_DecoderDestroy(coder);
    return text.substr(0, text.rfind('\n') + 1);
}

}  // namespace orvlog::test
