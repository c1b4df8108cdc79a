#include "clients/command-line/number-range.h"
#include "clients/command-line/progress-bar.h"
#include "clients/system/signals.h"
#include "tools/report/report-job.h"
#include "tools/shared/child-program.h"
#include "tools/shared/command.h"
#include "tools/shared/input.h"
#include "tools/shared/output.h"
#include "tools/shared/password-pipe.h"
#include "tools/shared/record-summary.h"
#include "tools/shared/source.h"
#include "tools/shared/temporary-folder.h"

#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <vector>

namespace orvlog::tool
{

namespace
{

using std::filesystem::path;

constexpr size_t kPiece = 1 << 16;

struct RecordOptions
{
    std::string document;
    std::string log;
    std::string pages;
    std::string mode = "transparent";
    std::string glyphs = "outlines";
    std::string stream;
    std::string image_prefix;
    std::string png_folder;
    std::string ticket_folder;
    std::string page_timeout;
    std::string report;
    std::optional<std::string> password;
    std::string password_file;
    unsigned dpi = 96;
    bool no_renderer = false;
    bool no_log = false;
    bool compare = false;
    bool check = false;
    bool keep_images = false;
    bool compressed = false;
    bool temporary_log = false;
};

void declare_options(CLI::App& app, RecordOptions& options)
{
    app.add_option("FILE", options.document, "the PDF document: a path, a URL, or - for standard input")->required();
    auto* log = app.add_option("-o,--output", options.log,
                               "write the log to LOG instead of FILE.orvlog.xml; - for standard output")
                    ->type_name("LOG");
    auto* no_log = app.add_flag("--no-log", options.no_log, "draw without the logger: no log")->excludes(log);
    app.add_option("--pages", options.pages, "only these pages, from 1")
        ->type_name("A-B")
        ->check(command_line::check_pages);
    app.add_option("--mode", options.mode, "base: log all images and glyphs; transparent: what the renderer asks for")
        ->check(CLI::IsMember({"transparent", "base"}))
        ->capture_default_str();
    app.add_option("--glyphs", options.glyphs, "the forms in which glyphs are asked for, and logged")
        ->check(CLI::IsMember({"outlines", "bitmaps", "all"}))
        ->capture_default_str();
    app.add_option("--images-beside", options.image_prefix, "image data goes to files PREFIX-..., not into the log")
        ->type_name("PREFIX")
        ->excludes(no_log);
    auto* silent = app.add_flag("--no-renderer", options.no_renderer, "log without drawing: no page images");
    app.add_option("--png", options.png_folder, "folder for the page images instead of the document's")
        ->type_name("DIR")
        ->excludes(silent);
    app.add_option("--dpi", options.dpi, "resolution of the page images")
        ->type_name("N")
        ->check(CLI::Range(1U, 2400U))
        ->capture_default_str();
    app.add_flag("--compare", options.compare, "draw again without the logger, and tell its time")->excludes(no_log);
    app.add_flag("--check", options.check, "draw again without the logger, tell its time, and compare each pixel")
        ->excludes(silent)
        ->excludes(no_log);
    app.add_flag("--keep-images", options.keep_images, "let the renderer keep images until a drawing ends");
    app.add_option("--stream", options.stream,
                   "how the log is written: mapped into memory, to a file, or in Zstandard frames; by itself mapped, "
                   "and zstd if LOG ends in .zst")
        ->check(CLI::IsMember({"mapped", "file", "zstd"}))
        ->excludes(no_log);
    app.add_flag("--compressed", options.compressed, "write a coded log")->excludes(no_log);
    app.add_flag("--via-temporary-log", options.temporary_log, "log to a temporary file first, then merge")
        ->excludes(no_log);
    app.add_option("--page-timeout", options.page_timeout, "break off a page that takes longer than S seconds")
        ->type_name("S")
        ->check(CLI::Range(0.001, 1e6));
    app.add_option("--report", options.report, "make a page for a browser of the log, as orvlog report does")
        ->type_name("FILE.html")
        ->excludes(no_log);
    app.add_option("--save-tickets", options.ticket_folder, "save the job's colour tickets in DIR")->type_name("DIR");
    auto* password = app.add_option("--password", options.password, "open a protected document with this password")
                         ->type_name("TEXT");
    app.add_option("--password-file", options.password_file, "the password is the first line of FILE")
        ->type_name("FILE")
        ->excludes(password);
    app.final_callback(
        [&options]
        {
            if (options.document == "-" && options.password_file == "-")
                throw CLI::ValidationError("--password-file", "standard input is the document already");
            if (options.log == "-" && options.report == "-")
                throw CLI::ValidationError("--report", "standard output is the log already");
        });
}

path without_pdf(const path& document)
{
    const std::string extension = document.extension().string();
    return extension == ".pdf" || extension == ".PDF" ? path(document).replace_extension() : document;
}

std::string log_beside(const path& document, const RecordOptions& options)
{
    return without_pdf(document).string() + (options.stream == "zstd" ? ".orvlog.xml.zst" : ".orvlog.xml");
}

std::string folder_of(const path& document)
{
    const path folder = document.parent_path();
    return folder.empty() ? "." : folder.string();
}

// A log for the standard output is the file `log_file` first; what lies beside it goes to the present folder.
std::vector<std::string> arguments_of(const RecordOptions& options, const std::string& log_file,
                                      const std::string& summary_file)
{
    std::vector<std::string> words = {options.document};
    if (options.no_log)
        words.emplace_back("--no-log");
    else
        words.insert(words.end(), {"-o", log_file});
    words.insert(words.end(), {"--mode", options.mode, "--glyphs", options.glyphs});
    const auto option = [&words](const char* name, const std::string& value)
    {
        if (!value.empty())
            words.insert(words.end(), {name, value});
    };
    const auto flag = [&words](const char* name, bool given)
    {
        if (given)
            words.emplace_back(name);
    };
    option("--pages", options.pages);
    option("--stream", options.stream);
    option("--images-beside", options.image_prefix);
    flag("--no-renderer", options.no_renderer);
    option("--png", options.png_folder);
    option("--dpi", std::to_string(options.dpi));
    flag("--compare", options.compare);
    flag("--check", options.check);
    flag("--keep-images", options.keep_images);
    flag("--compressed", options.compressed);
    flag("--via-temporary-log", options.temporary_log);
    option("--page-timeout", options.page_timeout);
    option("--save-tickets", options.ticket_folder);
    option("--password-file", options.password_file);
    option("--folder-beside", options.log == "-" ? "." : "");
    flag("--progress", command_line::bar_has_room());
    option("--summary", summary_file);
    return words;
}

// A log on the standard output has it for itself. What a failed job has left is not spoken of as if it were whole.
void print_summary(const RecordOptions& options, const std::string& file, bool good)
{
    auto summary = read_record_summary(file);
    if (!summary)
        return;
    std::FILE* output = options.log == "-" ? stderr : stdout;
    summary->log = !good ? "" : options.log == "-" ? "the standard output" : summary->log;
    std::fputs(format_record_summary(*summary).c_str(), output);
    if (good && summary->page_images.value_or(0) > 0)
        std::fprintf(output, "page images in %s\n", options.png_folder.c_str());
}

bool put_out(const std::string& file)
{
    std::ifstream log(file, std::ios::binary);
    Output output("-");
    std::vector<char> piece(kPiece);
    while (log.read(piece.data(), kPiece), log.gcount() > 0)
        if (!output.write(piece.data(), static_cast<size_t>(log.gcount())))
            break;
    return output.finish();
}

// What the document is called here: the last element of a URL's path.
std::string name_of(const std::string& document)
{
    const std::string last = document.substr(document.rfind('/') + 1);
    const std::string name = last.substr(0, last.find_first_of("?#"));
    return name.empty() || name == "-" || name == "." || name == ".." ? "document.pdf" : name;
}

// A document that is no file here is brought first, and what it leaves goes to the present folder.
bool bring(RecordOptions& options, const TemporaryFolder& folder, std::string* why)
{
    Source source(options.document);
    *why = source.why();
    if (!source.open())
        return false;
    const std::string name = name_of(options.document);
    if (options.log.empty() && !options.no_log)
        options.log = log_beside(name, options);
    if (options.png_folder.empty() && !options.no_renderer)
        options.png_folder = ".";
    options.document = folder.path(name);
    const bool whole = folder.keep(source.stream(), name);
    *why = std::strerror(errno);
    return whole;
}

// A page for a browser of the log that the job left.
int report_on(const RecordOptions& options, const std::string& log)
{
    ReportSettings settings;
    // What lies beside a log for the standard output.
    if (options.log == "-")
        settings.folders.emplace_back(".");
    const int status = make_report({log}, options.report, settings);
    if (status == EXIT_DONE)
        std::fprintf(options.log == "-" || options.report == "-" ? stderr : stdout, "report in %s\n",
                     options.report.c_str());
    return status;
}

// Starts the program that draws. What writes a log goes back and forth in it, so that one for the standard output is
// a file first.
int draw(const RecordOptions& options)
{
    const std::string program = find_program("orvlog-record", "../clients/pdf");
    if (program.empty())
        return fail("orvlog-record, which reads PDF documents, is not installed");
    const TemporaryFolder folder;
    const std::string summary = folder.path("summary");
    const std::string log = options.log == "-" ? folder.path("log") : options.log;
    const int status = run_program(program, arguments_of(options, log, summary));
    if (status < 0)
        return fail(program + ": " + std::strerror(errno));
    if (options.log == "-" && !put_out(log))
        return fail(std::string("standard output: ") + std::strerror(errno));
    const int signal = system::signal_received();
    print_summary(options, summary, status == EXIT_DONE && signal == 0);
    if (!options.report.empty() && status == EXIT_DONE && signal == 0)
        return report_on(options, log);
    if (!options.report.empty())
        say(options.report + ": not made, as the job failed");
    return signal != 0 ? EXIT_SIGNAL + signal : status;
}

int record(RecordOptions options)
{
    const TemporaryFolder brought;
    const std::string given = options.document;
    std::string why;
    if ((given == "-" || is_url(given)) && !bring(options, brought, &why))
        return fail(given + ": " + why);
    if (access(options.document.c_str(), R_OK) != 0)
        return fail(options.document + ": " + std::strerror(errno));
    std::optional<PasswordPipe> pipe;
    if (options.password)
    {
        options.password_file = pipe.emplace(*options.password).name();
        if (options.password_file.empty())
            return fail(std::string("the password can't be handed on: ") + std::strerror(errno));
    }
    if (options.log.empty() && !options.no_log)
        options.log = log_beside(options.document, options);
    if (options.png_folder.empty() && !options.no_renderer)
        options.png_folder = folder_of(options.document);

    return draw(options);
}

}  // namespace

Run declare_record(CLI::App& app)
{
    auto options = std::make_shared<RecordOptions>();
    app.footer("Draws the pages of the document through the logger. Leaves the log FILE.orvlog.xml and the page images "
               "FILE-001.png onwards, with the numbers of the pages, both beside FILE; a document that comes from "
               "standard input or by a URL leaves "
               "them in the "
               "present folder, and is called document.pdf when it has no name. Then prints how often each call was "
               "made, the size "
               "of the log, and the time and processor time of the job; on standard error when the log is the standard "
               "output. Times without the logger are told when it was drawn without it: --compare and --check draw a "
               "second time, --no-log draws that way only.\n\n"
               "The log is written as it grows and can be read at any time. What lies beside a log goes to its folder. "
               "What could not be written, of all this, is told, and the status is then 1. SIGINT, SIGTERM and SIGHUP "
               "break the job off: the log is brought to its end, and the status is 128 plus the signal.\n\n"
               "What reads the document is the program orvlog-record, which is started from the folder that "
               "ORVLOG_EXEC_PATH names, "
               "the folder of orvlog, libexec/orvlog beside that folder, or the PATH. Its exit status is passed on, "
               "and 128 plus "
               "the number of the signal if one ended it.\n\n"
               "A protected document is opened with the password of its owner or its user. Without one it is asked for "
               "on the "
               "terminal, if there is one. What is given with --password can be seen in the list of processes as long "
               "as the job runs, but not in the log; a file and the terminal can't be seen.");
    declare_options(app, *options);
    return [options] { return record(*options); };
}

}  // namespace orvlog::tool
