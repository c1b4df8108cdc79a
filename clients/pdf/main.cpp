// SPDX-License-Identifier: GPL-2.0-or-later
//
// orvlog-record: draws the pages of a PDF file through the logger.

#include "clients/command-line/number-range.h"
#include "clients/command-line/progress-bar.h"
#include "clients/pdf/interruption.h"
#include "clients/pdf/job.h"
#include "clients/pdf/password.h"
#include "reader/text/log-frames.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>

namespace
{

struct CommandLine
{
    orvlog::pdf_client::JobOptions job;
    orvlog::command_line::NumberRange pages = {1, UINT32_MAX};
    std::string mode = "transparent";
    std::string glyphs = "outlines";
    std::string stream;
    std::string summary;
    std::string password_file;
    bool no_renderer = false;
    bool progress = false;
};

void declare(CLI::App& app, CommandLine& line)
{
    orvlog::pdf_client::JobOptions& job = line.job;
    app.add_option("FILE", job.document, "the PDF file")->required();
    auto* log = app.add_option("-o,--output", job.log, "the log to write")->type_name("LOG");
    auto* no_log = app.add_flag("--no-log", job.no_log, "draw without the logger")->excludes(log);
    app.callback(
        [&job]
        {
            if (job.log.empty() && !job.no_log)
                throw CLI::RequiredError("--output");
        });
    app.add_option_function<std::string>(
           "--pages", [&line](const std::string& text) { orvlog::command_line::read_pages(text, &line.pages); },
           "only these pages, from 1")
        ->type_name("A-B")
        ->check(orvlog::command_line::check_pages);
    app.add_option("--mode", line.mode, "what is logged of images and glyphs")
        ->check(CLI::IsMember({"transparent", "base"}));
    app.add_option("--glyphs", line.glyphs, "the forms in which glyphs are asked for")
        ->check(CLI::IsMember({"outlines", "bitmaps", "all"}));
    app.add_option("--images-beside", job.image_prefix, "image data goes to files PREFIX-...")
        ->type_name("PREFIX")
        ->excludes(no_log);
    auto* silent = app.add_flag("--no-renderer", line.no_renderer, "log without drawing");
    app.add_option("--png", job.png_folder, "folder for page images; none without it")
        ->type_name("DIR")
        ->excludes(silent);
    app.add_option("--dpi", job.dpi, "pixels for each inch")->check(CLI::Range(1U, 2400U));
    app.add_flag("--compare", job.compare, "draw again without the logger, for its time")->excludes(no_log);
    app.add_flag("--check", job.check, "draw again without the logger and compare each pixel")
        ->excludes(silent)
        ->excludes(no_log);
    app.add_option("--page-timeout", job.seconds_for_page, "break off a page that takes longer, in seconds")
        ->type_name("S")
        ->check(CLI::Range(0.001, 1e6));
    app.add_flag("--progress", line.progress, "show a progress bar if standard error is a terminal");
    app.add_flag("--keep-images", job.keep_images, "keep images until a drawing ends");
    app.add_option("--stream", line.stream, "how the log is written; zstd without it if LOG ends in .zst, else mapped")
        ->check(CLI::IsMember({"mapped", "file", "zstd"}))
        ->excludes(no_log);
    app.add_flag("--compressed", job.compressed, "write a coded log")->excludes(no_log);
    app.add_flag("--via-temporary-log", job.via_temporary_log, "log to a temporary file first, then merge")
        ->excludes(no_log);
    app.add_option("--save-tickets", job.ticket_folder, "folder for the job's colour tickets")->type_name("DIR");
    app.add_option("--folder-beside", job.folder_beside, "where the files beside the log go instead of its folder")
        ->type_name("DIR")
        ->excludes(no_log);
    auto* password = app.add_option("--password", job.password, "the document's password, the owner's or the user's");
    app.add_option("--password-file", line.password_file,
                   "read the password from the first line of FILE; - is standard input")
        ->type_name("FILE")
        ->excludes(password);
    app.add_option("--summary", line.summary, "write a summary of the job as JSON")->type_name("FILE");
}

int fail(const std::string& text)
{
    std::fprintf(stderr, "orvlog-record: %s\n", text.c_str());
    return 1;
}

// What is wrong with a file before anybody tries to read it; empty if nothing is.
std::string trouble_with(const std::string& file)
{
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(file, error);
    if (!std::filesystem::exists(status))
        return file + ": " + std::strerror(error ? error.value() : ENOENT);
    if (std::filesystem::is_directory(status))
        return file + " is a directory";
    std::FILE* stream = std::fopen(file.c_str(), "rb");
    if (stream == nullptr)
        return file + ": " + std::strerror(errno);
    const bool empty = std::fgetc(stream) == EOF;
    std::fclose(stream);
    return empty ? file + " is empty" : std::string();
}

int record(CommandLine& line)
{
    orvlog::pdf_client::JobOptions& job = line.job;
    constexpr uint32_t kMost = INT_MAX;
    job.first_page = static_cast<int>(std::min(line.pages.first, kMost));
    job.last_page = static_cast<int>(std::min(line.pages.last, kMost));
    if (const std::string trouble = trouble_with(job.document); !trouble.empty())
        return fail(trouble);
    if (std::string error; !line.password_file.empty())
    {
        job.password = orvlog::pdf_client::read_password(line.password_file, error);
        if (!job.password)
            return fail(error);
    }
    job.ask_password = [&job] { return orvlog::pdf_client::ask_password(job.document); };
    job.base_mode = line.mode == "base";
    using Glyphs = orvlog::pdf_client::JobOptions::Glyphs;
    job.glyphs = line.glyphs == "all" ? Glyphs::all : line.glyphs == "bitmaps" ? Glyphs::bitmaps : Glyphs::outlines;
    using orvlog::client_stream::StreamKind;
    if (line.stream.empty())
        line.stream = job.log.ends_with(".zst") ? "zstd" : "mapped";
    if (line.stream == "zstd" && !orvlog::reader::Frames::can_be_read())
        return fail("this build has no Zstandard, which --stream zstd needs");
    job.stream = line.stream == "zstd"   ? StreamKind::zstd
                 : line.stream == "file" ? StreamKind::file
                                         : StreamKind::mapped;
    job.renderer = !line.no_renderer;
    constexpr int kWhole = 1000;
    std::optional<orvlog::command_line::ProgressBar> bar;
    if (line.progress)
    {
        bar.emplace(uint64_t{kWhole});
        job.progress = [&bar](int done, int total)
        { bar->show(static_cast<uint64_t>(int64_t{done} * kWhole / total)); };
    }
    for (const std::string& folder : {job.png_folder, job.ticket_folder})
    {
        std::error_code error;
        if (!folder.empty() && !std::filesystem::create_directories(folder, error) && error)
            return fail(folder + ": " + error.message());
    }
    orvlog::pdf_client::watch_for_interruption();
    const orvlog::pdf_client::JobResult result = orvlog::pdf_client::run_job(job);
    bar.reset();
    for (const std::string& message : result.summary.messages)
        std::fprintf(stderr, "orvlog-record: note: %s\n", message.c_str());
    for (const std::string& error : result.errors)
        fail(error);
    if (result.started && !line.summary.empty() && !orvlog::pdf_client::write_summary(result.summary, line.summary))
        return fail(line.summary + " can't be written");
    if (result.interrupted != 0)
        return 128 + result.interrupted;
    return result.errors.empty() ? 0 : 1;
}

int run(int argc, char** argv)
{
    CLI::App app("Draws the pages of a PDF file through the logger.", "orvlog-record");
    CommandLine line;
    declare(app, line);
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::CallForHelp& help)
    {
        return app.exit(help);
    }
    catch (const CLI::ParseError& error)
    {
        fail(std::string(error.what()) + " (see orvlog-record --help)");
        return 2;
    }
    return record(line);
}

}  // namespace

int main(int argc, char** argv)
{
#ifdef SIGXFSZ
    // A file that gets too long is a failed write.
    std::signal(SIGXFSZ, SIG_IGN);
#endif
    try
    {
        return run(argc, argv);
    }
    catch (const std::exception& error)
    {
        return fail(error.what());
    }
}
