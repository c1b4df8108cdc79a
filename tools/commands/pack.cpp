// orvlog pack: any bytes coded as a log is coded on the fly.

#include "clients/stream/malloc-allocator.h"
#include "orvlog/log/orvlog-compressed-stream.h"
#include "reader/text/log-bytes.h"
#include "reader/text/log-text.h"
#include "tools/shared/command.h"
#include "tools/shared/output.h"
#include "tools/shared/source.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace orvlog::tool
{

namespace
{

constexpr size_t kPiece = 1 << 16;

struct PackOptions
{
    std::string file;
    std::string output;
};

// Whether a file that begins so is a log in another form than plain text: in frames, or with unused room behind it.
bool begins_as_log(const std::string& head)
{
    std::istringstream beginning(head);
    orvlog::reader::LogBytes bytes(beginning);
    char tag[4] = {};
    return bytes.read(tag, sizeof tag) == sizeof tag && std::memcmp(tag, "<ORV", sizeof tag) == 0;
}

int pack(const PackOptions& options)
{
    Source source(options.file);
    if (!source.open())
        return fail(options.file + ": " + source.why());
    Output output(options.output);
    if (!output.open())
        return fail(options.output + ": " + std::strerror(errno));
    client_stream::MallocAllocator memory;
    GIO_Stream* coded = ORVLOG_OpenCompressedStream(memory.allocator(), output.stream());
    if (coded == nullptr)
        return fail(options.output + ": " + std::strerror(errno != 0 ? errno : ENOMEM));
    Progress progress(source.size());
    std::vector<char> piece(kPiece);
    uint64_t done = 0;
    std::string head(kPiece, '\0');
    source.stream().read(head.data(), kPiece);
    head.resize(static_cast<size_t>(source.stream().gcount()));
    const bool is_log = begins_as_log(head);
    orvlog::reader::RejoinedBytes rejoined(head, source.stream());
    std::istream whole(&rejoined);
    orvlog::reader::LogBytes log_bytes(whole);
    std::istream log(&log_bytes);
    std::istream& input = is_log ? log : whole;
    while (input.read(piece.data(), kPiece), input.gcount() > 0)
    {
        const auto count = static_cast<uint64_t>(input.gcount());
        coded->ops->gio_Write(piece.data(), 1, count, coded->instance);
        done += count;
        progress.show(done);
    }
    const bool read_well = !source.stream().bad() && !log_bytes.is_damaged();
    ORVLOG_CloseCompressedStream(coded);
    if (!read_well)
        return fail(options.file + ": cannot be read to its end");
    return output.finish() ? EXIT_DONE : fail(options.output + ": " + std::strerror(errno));
}

}  // namespace

Run declare_pack(CLI::App& app)
{
    auto options = std::make_shared<PackOptions>();
    app.footer("Takes any bytes; of a log in Zstandard frames, and of one that was not closed, the text. The coded "
               "file begins with the 35 bytes by which a coded log is known, and ends with "
               "the last "
               "byte of the coded stream. A byte 0 that is not the first leaves no trace in the stream, as in a log, "
               "which has "
               "none.");
    app.add_option("FILE", options->file, "what to code: a path, a URL, or - for standard input")->required();
    app.add_option("-o,--output", options->output, "the coded file, or - for standard output")
        ->type_name("CODED")
        ->required();
    return [options] { return pack(*options); };
}

}  // namespace orvlog::tool
