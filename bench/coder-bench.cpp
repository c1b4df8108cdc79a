// Codes and decodes a log beside the plain scanning coder, and beside gzip -1 and zstd -1.
//
//   coder-bench LOG.xml

#include "bench/bench-clock.h"
#include "clients/stream/malloc-allocator.h"
#include "orvlog/log/ahc-coder.h"
#include "tests/support/ahc-oracle.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace
{

using Bytes = std::vector<uint8_t>;

constexpr size_t kPiece = 150;        // as the writer feeds a line
constexpr size_t kScanned = 1 << 20;  // what the scanning coder is given
constexpr size_t kGrowth = 64;

Bytes read_file(const char* name)
{
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Bytes code(const Bytes& text)
{
    orvlog::client_stream::MallocAllocator allocator;
    AdaptiveHuffmanCoder* coder = AHC_EncoderCreate(allocator.allocator());
    Bytes coded;
    uint8_t output[100];
    for (size_t at = 0; at < text.size(); at += kPiece)
    {
        AHC_SetInput(coder, text.data() + at, static_cast<uint32_t>(std::min(kPiece, text.size() - at)));
        for (int32_t count; (count = AHC_Encode(coder, output, sizeof output)) > 0;)
            coded.insert(coded.end(), output, output + count);
    }
    coded.push_back(AHC_EncoderFinish(coder));
    return coded;
}

size_t scan(const Bytes& text)
{
    orvlog::test::ScanningCoder coder(orvlog::test::ScanningCoder::encoder);
    uint8_t output[100];
    size_t size = 1;
    coder.set_input(text);
    for (int32_t count; (count = coder.encode(output, sizeof output)) > 0;)
        size += static_cast<size_t>(count);
    coder.finish();
    return size;
}

size_t decode(const Bytes& coded, size_t length)
{
    orvlog::client_stream::MallocAllocator allocator;
    AdaptiveHuffmanCoder* coder = AHC_DecoderCreate(allocator.allocator());
    Bytes padded = coded;
    padded.push_back(0);
    AHC_SetInput(coder, padded.data(), static_cast<uint32_t>(padded.size()));
    Bytes text(length + kGrowth);
    const int32_t count = AHC_Decode(coder, text.data(), static_cast<uint32_t>(text.size()));
    AHC_DecoderDestroy(coder);
    return static_cast<size_t>(count);
}

void print(const char* what, double seconds, size_t bytes, size_t coded)
{
    std::printf("%-28s %8.1f MB/s  %5.1f %% of the text\n", what, static_cast<double>(bytes) / 1e6 / seconds,
                100.0 * static_cast<double>(coded) / static_cast<double>(bytes));
}

size_t scan_back(const Bytes& coded, size_t length)
{
    orvlog::test::ScanningCoder coder(orvlog::test::ScanningCoder::decoder);
    Bytes padded = coded;
    padded.push_back(0);
    coder.set_input(padded);
    Bytes text(length + kGrowth);
    return static_cast<size_t>(coder.decode(text.data(), static_cast<uint32_t>(text.size())));
}

// A program that compresses, and the same as it brings the text back.
void run_program(const std::string& program, const std::string& file, size_t bytes)
{
    const std::string packed = file + ".bench-out";
    int status = 0;
    const auto seconds_of = [&status](const std::string& command)
    { return orvlog::bench::quickest(3, [&] { status |= std::system(command.c_str()); }); };
    const double coding = seconds_of(program + " -1 -c '" + file + "' > '" + packed + "'");
    const double decoding = seconds_of(program + " -d -c < '" + packed + "' > /dev/null");
    const size_t size = read_file(packed.c_str()).size();
    std::remove(packed.c_str());
    if (status != 0)
        return;
    print((program + " -1").c_str(), coding, bytes, size);
    print((program + " -d").c_str(), decoding, bytes, size);
}

// The same part of the text by the library's coder and by the scanning one.
void compare(const Bytes& part)
{
    size_t size = 0;
    Bytes coded;
    const double scanning = orvlog::bench::quickest(2, [&] { size = scan(part); });
    print("scanning coder", scanning, part.size(), size);
    const double coding = orvlog::bench::quickest(5, [&] { coded = code(part); });
    const double scanning_back = orvlog::bench::quickest(2, [&] { size = scan_back(coded, part.size()); });
    print("scanning decoder", scanning_back, part.size(), coded.size());
    const double decoding = orvlog::bench::quickest(5, [&] { size = decode(coded, part.size()); });
    std::printf("against the scanning one on the same %zu bytes: coder %.1f times, decoder %.1f times\n", part.size(),
                scanning / coding, scanning_back / decoding);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::fputs("usage: coder-bench LOG.xml\n", stderr);
        return 2;
    }
    const Bytes text = read_file(argv[1]);
    if (text.empty())
    {
        std::fprintf(stderr, "coder-bench: %s is empty or cannot be read\n", argv[1]);
        return 1;
    }
    Bytes coded;
    const double coding = orvlog::bench::quickest(5, [&] { coded = code(text); });
    print("coder", coding, text.size(), coded.size());
    size_t decoded = 0;
    const double decoding = orvlog::bench::quickest(5, [&] { decoded = decode(coded, text.size()); });
    print("decoder", decoding, text.size(), coded.size());
    compare({text.begin(), text.begin() + static_cast<ptrdiff_t>(std::min(kScanned, text.size()))});
    run_program("gzip", argv[1], text.size());
    run_program("zstd", argv[1], text.size());
    return decoded >= text.size() ? 0 : 1;
}
