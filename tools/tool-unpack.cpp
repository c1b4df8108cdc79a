// orvlog unpack: a coded log as plain text. A plain log comes out as it is.

#include "reader/coded-input.h"
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
constexpr uint64_t SHORTEST = 5;  // "<ORV " is where a log begins

struct UnpackOptions
{
    std::string file;
    std::string output;
};

int unpack(const UnpackOptions& options)
{
    Source source(options.file);
    if (!source.open())
        return fail(options.file + ": " + source.why());
    orvlog::reader::CodedInput log(source.stream());
    Progress progress(source.size());
    std::vector<char> piece(PIECE);
    std::unique_ptr<Output> output;
    // The first bytes tell whether it is a log; nothing is written before.
    for (size_t count; (count = log.read(piece.data(), PIECE)) > 0;)
    {
        if (output == nullptr)
            output = std::make_unique<Output>(options.output);
        if (!output->open() || !output->write(piece.data(), count))
            return fail(options.output + ": " + std::strerror(errno));
        progress.show(log.bytes_used());
    }
    using orvlog::reader::Ending;
    const Ending ending = log.ending();
    if (ending == Ending::not_a_log || log.bytes_given() < SHORTEST)
        return fail(options.file + ": not a log");
    if (output == nullptr)
        output = std::make_unique<Output>(options.output);
    if (!output->open() || !output->finish())
        return fail(options.output + ": " + std::strerror(errno));
    const std::string given = std::to_string(log.bytes_given()) + " bytes of text are in " + options.output;
    if (ending == Ending::cut)
        return fail(options.file + ": the log is cut short; " + given);
    if (ending == Ending::damaged)
        return fail(options.file + ": the coded stream is damaged; " + given);
    return EXIT_DONE;
}

}  // namespace

Run declare_unpack(CLI::App& app)
{
    auto options = std::make_shared<UnpackOptions>();
    app.footer("A coded log comes out as the text that was logged, with the colour tickets that stand in it as text; a "
               "plain log "
               "comes out as it is. Of a log that is cut short or damaged it gives what is whole, one line that says "
               "so, and the "
               "exit status 1. What is no log leaves no file.");
    app.add_option("CODED", options->file, "a log, coded or plain: a path, a URL, or - for standard input")->required();
    app.add_option("-o,--output", options->output, "the log as plain text, or - for standard output")
        ->type_name("LOG")
        ->required();
    return [options] { return unpack(*options); };
}

}  // namespace tool
