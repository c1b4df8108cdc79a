// SPDX-License-Identifier: GPL-2.0-or-later
//
// orvlog-record: draws the pages of a PDF file through the logger.

#include "clients/pdf/job.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <regex>

namespace
{

struct CommandLine
{
    pdf_client::JobOptions job;
    std::string pages;
    std::string mode = "transparent";
    std::string glyphs = "outlines";
    std::string stream;
    std::string summary;
    bool no_renderer = false;
    bool progress = false;
};

void declare(CLI::App& app, CommandLine& line)
{
    pdf_client::JobOptions& job = line.job;
    app.add_option("FILE", job.document, "the PDF file")->required();
    app.add_option("-o,--output", job.log, "the log to write")->type_name("LOG")->required();
    app.add_option("--pages", line.pages, "only these pages, from 1")->type_name("A-B");
    app.add_option("--mode", line.mode, "what is logged of images and glyphs")
        ->check(CLI::IsMember({"transparent", "base"}));
    app.add_option("--glyphs", line.glyphs, "the forms in which glyphs are asked for")
        ->check(CLI::IsMember({"outlines", "bitmaps", "all"}));
    app.add_option("--images-beside", job.image_prefix, "image data goes to files PREFIX-...")->type_name("PREFIX");
    app.add_flag("--no-renderer", line.no_renderer, "log without drawing");
    app.add_option("--png", job.png_folder, "folder for page images; none without it")->type_name("DIR");
    app.add_option("--dpi", job.dpi, "pixels for each inch")->check(CLI::Range(1U, 2400U));
    app.add_flag("--check", job.check, "draw again without the logger and compare each pixel");
    app.add_flag("--progress", line.progress, "show a progress bar on standard error");
    app.add_flag("--keep-images", job.keep_images, "keep images until a drawing ends");
    app.add_option("--stream", line.stream, "how the log is written; zstd without it if LOG ends in .zst, else mapped")
        ->check(CLI::IsMember({"mapped", "file", "zstd"}));
    app.add_flag("--compressed", job.compressed, "write a coded log");
    app.add_flag("--via-temporary-log", job.via_temporary_log, "log to a temporary file first, then merge");
    app.add_option("--save-tickets", job.ticket_folder, "folder for the job's colour tickets")->type_name("DIR");
    app.add_option("--summary", line.summary, "write a summary of the job as JSON")->type_name("FILE");
}

int fail(const std::string& text)
{
    std::fprintf(stderr, "orvlog-record: %s\n", text.c_str());
    return 1;
}

bool read_pages(const std::string& text, pdf_client::JobOptions& job)
{
    static const std::regex form("([1-9][0-9]{0,8})(?:-([1-9][0-9]{0,8}))?");
    std::smatch parts;
    if (!std::regex_match(text, parts, form))
    {
        return false;
    }
    job.first_page = std::stoi(parts[1]);
    job.last_page = parts[2].matched ? std::stoi(parts[2]) : job.first_page;
    return job.first_page <= job.last_page;
}

void show_progress(int done, int total)
{
    constexpr int width = 40;
    std::string bar(static_cast<size_t>(width * done / total), '#');
    bar.resize(width, '.');
    std::fprintf(stderr, "\r[%s] page %d of %d%s", bar.c_str(), done, total, done == total ? "\n" : "");
    std::fflush(stderr);
}

// What is wrong with a file before anybody tries to read it; empty if nothing is.
std::string trouble_with(const std::string& file)
{
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(file, error);
    if (!std::filesystem::exists(status))
    {
        return file + ": " + std::strerror(error ? error.value() : ENOENT);
    }
    if (std::filesystem::is_directory(status))
    {
        return file + " is a directory";
    }
    std::FILE* stream = std::fopen(file.c_str(), "rb");
    if (stream == nullptr)
    {
        return file + ": " + std::strerror(errno);
    }
    const bool empty = std::fgetc(stream) == EOF;
    std::fclose(stream);
    return empty ? file + " is empty" : std::string();
}

int record(CommandLine& line)
{
    pdf_client::JobOptions& job = line.job;
    if (!line.pages.empty() && !read_pages(line.pages, job))
    {
        return fail("pages are given as A or A-B, counting from 1");
    }
    if (const std::string trouble = trouble_with(job.document); !trouble.empty())
    {
        return fail(trouble);
    }
    job.base_mode = line.mode == "base";
    using Glyphs = pdf_client::JobOptions::Glyphs;
    job.glyphs = line.glyphs == "all" ? Glyphs::all : line.glyphs == "bitmaps" ? Glyphs::bitmaps : Glyphs::outlines;
    using client_stream::StreamKind;
    if (line.stream.empty())
    {
        line.stream = job.log.ends_with(".zst") ? "zstd" : "mapped";
    }
    job.stream = line.stream == "zstd"   ? StreamKind::zstd
                 : line.stream == "file" ? StreamKind::file
                                         : StreamKind::mapped;
    job.renderer = !line.no_renderer;
    if (line.progress)
    {
        job.progress = show_progress;
    }
    for (const std::string& folder : {job.png_folder, job.ticket_folder})
    {
        std::error_code error;
        if (!folder.empty() && !std::filesystem::create_directories(folder, error) && error)
        {
            return fail(folder + ": " + error.message());
        }
    }
    const pdf_client::JobResult result = pdf_client::run_job(job);
    for (const std::string& message : result.summary.messages)
    {
        std::fprintf(stderr, "orvlog-record: note: %s\n", message.c_str());
    }
    for (const std::string& error : result.errors)
    {
        fail(error);
    }
    if (result.started && !line.summary.empty() && !pdf_client::write_summary(result.summary, line.summary))
    {
        return fail(line.summary + " can't be written");
    }
    return result.errors.empty() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv)
{
#ifdef SIGXFSZ
    // A file that gets too long is a failed write.
    std::signal(SIGXFSZ, SIG_IGN);
#endif
    CLI::App app("Draws the pages of a PDF file through the logger.", "orvlog-record");
    CommandLine line;
    declare(app, line);
    CLI11_PARSE(app, argc, argv);
    try
    {
        return record(line);
    }
    catch (const std::exception& error)
    {
        return fail(error.what());
    }
}
