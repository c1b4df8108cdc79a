// orvlog redact: a log that may be handed on.

#include "inspect/redact/redacted-text.h"
#include "inspect/reduce/trimmed-text.h"
#include "tools/shared/command.h"
#include "tools/shared/files-from.h"
#include "tools/shared/look.h"
#include "tools/shared/new-log.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

namespace orvlog::tool
{

namespace
{

using orvlog::inspect::RedactedText;
using orvlog::inspect::TrimmedText;

struct RedactCommand
{
    std::string log;
    std::string output;
    std::string list;
    std::vector<std::string> folders;
};

std::string list_text(const orvlog::inspect::Redactions& redactions)
{
    std::string text;
    for (const auto& [kind, count] : redactions)
        text += std::to_string(count) + " " + kind + "\n";
    return text.empty() ? "nothing\n" : text;
}

class RedactJob
{
public:
    explicit RedactJob(const RedactCommand& command) : command_(command), files_(command.log, command.folders) {}

    int run()
    {
        if (!files_.why().empty())
            return fail(files_.why());
        Source source(command_.log);
        if (!source.open())
            return fail(command_.log + ": " + source.why());
        for (const std::string& output : {command_.output, command_.list})
            if (!output.empty() && output != "-" && is_same_file(output, command_.log))
                return fail(output + ": is the log to be redacted");
        std::istream& log = source.stream();
        Progress progress(source.size());
        orvlog::inspect::TrimOptions options;
        options.open_file = [this](const std::string& name, orvlog::reader::LogFileKind kind)
        { return files_.open(name, kind); };
        options.complain = [this](const std::string& line)
        {
            constexpr size_t kMost = 100;
            if (complaints_++ < kMost)
                say(printable(command_.log + ": " + line));
        };
        // One text with all that stood beside it, and of this the redacted one.
        TrimmedText whole(log, std::move(options));
        std::istream whole_stream(&whole);
        whole_stream.exceptions(std::ios::badbit);
        RedactedText text(whole_stream);
        std::istream stream(&text);
        stream.exceptions(std::ios::badbit);
        if (stream.peek() == std::istream::traits_type::eof())
            return fail(command_.log + ": not a log");
        const std::string why = write_new_log(stream, command_.output, [&] { progress.show(whole.bytes_used()); });
        if (!why.empty())
            return fail(why);
        return finish(whole, text);
    }

private:
    int finish(const TrimmedText& whole, const RedactedText& text) const
    {
        Progress::make_way_for_output();
        const std::string list = list_text(text.redactions());
        if (command_.list.empty())
            std::fputs(list.c_str(), stderr);
        else if (const std::string why = write_list(list); !why.empty())
            return fail(why);
        int status = EXIT_DONE;
        if (whole.missing() > 0)
            status = fail(command_.log + ": lacks data in " + std::to_string(whole.missing()) +
                          " places; what could be found is written");
        if (whole.is_cut())
            status = fail(command_.log + ": is cut short; what it has is written");
        else if (whole.damage() > 0)
            status = fail(command_.log + ": is damaged in " + std::to_string(whole.damage()) +
                          " places; what could be understood is written");
        return status;
    }

    std::string write_list(const std::string& list) const
    {
        Output output(command_.list);
        const bool good = output.open() && output.write(list.data(), list.size()) && output.finish();
        return good ? "" : command_.list + ": " + std::strerror(errno);
    }

    const RedactCommand& command_;
    orvlog::reader::LogFiles files_;
    size_t complaints_ = 0;
};

// Where a name leads, be there a file or not.
std::string place_of(const std::string& name)
{
    std::error_code none;
    return name == "-" ? name : std::filesystem::weakly_canonical(name, none).string();
}

int redact(const RedactCommand& command)
{
    if (command.list.empty() || place_of(command.list) != place_of(command.output))
        return RedactJob(command).run();
    std::fprintf(stderr, "orvlog redact: the list and the log can't go to the same place (see orvlog redact --help)\n");
    return EXIT_BAD_USE;
}

}  // namespace

Run declare_redact(CLI::App& app)
{
    auto command = std::make_shared<RedactCommand>();
    app.add_option("LOG", command->log, "the log, plain or coded; a path, or - for standard input")->required();
    app.add_option("-o,--output", command->output, "the redacted log, or - for standard output")
        ->required()
        ->type_name("NEWLOG");
    app.add_option("--list", command->list, "write what was changed to FILE instead of standard error")
        ->type_name("FILE");
    add_files_from(app, command->folders);
    app.footer(
        "Writes a log that may be handed on: its texts, the shapes of its glyphs, the pixels of its images, the "
        "descriptions of its profiles, its comments and names are replaced by others of the same form and size. "
        "Calls, geometry and colours stay, and so do paths, text that was drawn as paths among them. All that stands "
        "beside the log, image data and the logs of kept images, is put into the new one, which is one file.\n\n"
        "The same glyph gets the same stand-in everywhere. What was changed is told on standard error, a line for each "
        "kind.\n\n"
        "Of a log that is damaged only what is understood is written, and the exit status is then 1.");
    return [command] { return redact(*command); };
}

}  // namespace orvlog::tool
