// The decoder on foreign data: it stays in its blocks and does what the scanning form does. The first two bytes
// say how the data is cut and how much each call may give.

#include "fuzz/fuzz.h"
#include "orvlog/log/ahc-coder.h"
#include "tests/support/ahc-oracle.h"

#include <algorithm>
#include <vector>

using orvlog::fuzz::expect;
using orvlog::test::ScanningCoder;

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    orvlog::fuzz::Choices choices(data, size);
    const size_t piece = 1 + choices.byte();
    const uint32_t limit = choices.byte();
    AdaptiveHuffmanCoder* coder = AHC_DecoderCreate(orvlog::fuzz::heap());
    ScanningCoder oracle(ScanningCoder::decoder);
    for (size_t at = 0; at < choices.rest_size(); at += piece)
    {
        // Blocks of their own, so that a byte too many is seen.
        const size_t count = std::min(piece, choices.rest_size() - at);
        const std::vector<uint8_t> input(choices.rest() + at, choices.rest() + at + count);
        AHC_SetInput(coder, input.data(), static_cast<uint32_t>(count));
        oracle.set_input(input);
        int32_t given = 0;
        do
        {
            std::vector<uint8_t> mine(std::max(limit, 1u));
            std::vector<uint8_t> theirs(std::max(limit, 1u));
            given = AHC_Decode(coder, mine.data(), limit);
            expect(given == oracle.decode(theirs.data(), limit), "both decoders give the same count");
            expect(mine == theirs, "both decoders give the same bytes");
        } while (given > 0);
    }
    expect(find_difference(*coder, oracle).empty(), "both decoders have the same tree");
    AHC_DecoderDestroy(coder);
    return 0;
}
