// Any bytes coded, held against the scanning form, and read back by the log reader. The first two bytes say how
// the data is cut and how much each call may give.

#include "fuzz/fuzz.h"
#include "orvlog/log/ahc-coder.h"
#include "orvlog/log/orvlog-compressed-stream.h"
#include "reader/text/coded-bytes.h"
#include "reader/text/raw-bytes.h"
#include "tests/support/ahc-oracle.h"

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

using orvlog::fuzz::expect;
using orvlog::test::ScanningCoder;

namespace
{

std::string encode(const uint8_t* data, size_t size, size_t piece, uint32_t limit)
{
    AdaptiveHuffmanCoder* coder = AHC_EncoderCreate(orvlog::fuzz::heap());
    ScanningCoder oracle(ScanningCoder::encoder);
    std::string coded;
    for (size_t at = 0; at < size; at += piece)
    {
        const std::vector<uint8_t> input(data + at, data + std::min(size, at + piece));
        AHC_SetInput(coder, input.data(), static_cast<uint32_t>(input.size()));
        oracle.set_input(input);
        int32_t given = 0;
        do
        {
            std::vector<uint8_t> mine(limit);
            std::vector<uint8_t> theirs(limit);
            given = AHC_Encode(coder, mine.data(), limit);
            expect(given == oracle.encode(theirs.data(), limit), "both coders give the same count");
            expect(mine == theirs, "both coders give the same bytes");
            coded.append(mine.begin(), mine.begin() + given);
        } while (given > 0);
        expect(coder->input_count == 0, "all input is coded");
    }
    expect(find_difference(*coder, oracle).empty(), "both coders have the same tree");
    const uint8_t last = AHC_EncoderFinish(coder);
    expect(last == oracle.finish(), "both coders end alike");
    return coded + static_cast<char>(last);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    orvlog::fuzz::Choices choices(data, size);
    const size_t piece = 1 + choices.byte();
    // Room for any code there is.
    const uint32_t limit = 40 + choices.byte();
    std::string text(choices.rest(), choices.rest() + choices.rest_size());
    std::istringstream source(encode(choices.rest(), choices.rest_size(), piece, limit));

    orvlog::reader::RawBytes raw(source);
    orvlog::reader::CodedBytes decoded(raw);
    std::string read;
    while (decoded.read(read))
        continue;
    if (!text.empty())
        text.erase(std::remove(text.begin() + 1, text.end(), '\0'), text.end());
    expect(read == text, "what went in comes out");
    expect(!decoded.damaged(), "no coder writes a damaged stream");
    return 0;
}
