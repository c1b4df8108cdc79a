// orvlog pack: any bytes coded as a log is coded on the fly.

#include "clients/stream/file-stream.h"
#include "orvlog/log/orvlog-compressed-stream.h"
#include "tools/command.h"
#include "tools/tool-output.h"
#include "tools/tool-source.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace tool
{

namespace
{

constexpr size_t PIECE = 1 << 16;

struct PackOptions
{
    std::string file;
    std::string output;
};

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
    std::vector<char> piece(PIECE);
    uint64_t done = 0;
    while (source.stream().read(piece.data(), PIECE), source.stream().gcount() > 0)
    {
        const auto count = static_cast<uint64_t>(source.stream().gcount());
        coded->ops->gio_Write(piece.data(), 1, count, coded->instance);
        done += count;
        progress.show(done);
    }
    const bool read_well = !source.stream().bad();
    ORVLOG_CloseCompressedStream(coded);
    if (!read_well)
        return fail(options.file + ": cannot be read to its end");
    return output.finish() ? EXIT_DONE : fail(options.output + ": " + std::strerror(errno));
}

}  // namespace

Run declare_pack(CLI::App& app)
{
    auto options = std::make_shared<PackOptions>();
    app.footer("Takes any bytes. The coded file begins with the 35 bytes by which a coded log is known, and ends with "
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

}  // namespace tool
