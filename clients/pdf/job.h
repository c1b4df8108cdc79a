// SPDX-License-Identifier: GPL-2.0-or-later
//
// One job: a document, from its first page to its last, through the logger to a renderer.

#pragma once

#include "clients/pdf/painter/painter.h"
#include "clients/pdf/time-spent.h"
#include "clients/stream/log-file.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvlog::pdf_client
{

struct JobOptions
{
    std::string document;
    std::string log;
    // What opens a protected document, and who is asked if it isn't given; both may be empty.
    std::optional<std::string> password;
    std::function<std::optional<std::string>()> ask_password;
    client_stream::StreamKind stream = client_stream::StreamKind::mapped;
    int first_page = 1;
    int last_page = INT32_MAX;
    bool base_mode = false;
    // The forms in which the renderer, and in base mode the logger, ask for glyphs. `all`: the renderer asks for
    // each other form in turn and then for the outline.
    enum class Glyphs
    {
        outlines,
        bitmaps,
        all
    } glyphs = Glyphs::outlines;
    std::string image_prefix;  // not empty: image data goes to files beside the log
    // Not empty: what lies beside the log goes there, and not to the log's folder.
    std::string folder_beside;
    bool renderer = true;
    std::string png_folder;  // not empty: page images go there, NAME-001.png for page 1
    unsigned dpi = 96;
    bool no_log = false;   // walk and draw without the logger; `log` and how it is written don't count
    bool compare = false;  // walk again without the logger, for its time
    bool check = false;    // the same, and compare the pages
    bool keep_images = false;
    bool compressed = false;
    bool via_temporary_log = false;
    std::string ticket_folder;
    double seconds_for_page = 0;  // above 0: a page that takes longer is broken off
    // Told of each page that is finished: its place among all pages to do, and their count. May be empty.
    std::function<void(int, int)> progress;
};

struct CheckResult
{
    uint64_t pages_compared = 0;
    uint64_t pixels_different = 0;
    bool same = false;
};

struct JobSummary
{
    CallCounts calls;
    int pages = 0;
    uint32_t page_images = 0;  // written
    std::string log;
    int64_t log_bytes = -1;
    std::optional<TimeSpent> time;                 // of the job with the logger
    std::optional<TimeSpent> time_without_logger;  // of the one without it
    uint64_t tickets_retained = 0;
    uint64_t tickets_released = 0;
    std::vector<std::string> messages;  // what couldn't be passed on or painted as it stands, each kind once
    std::optional<CheckResult> check;
};

struct JobResult
{
    // What went wrong, in words for the user; empty if all went well.
    std::vector<std::string> errors;
    // False if not even a log was begun.
    bool started = false;
    // The signal that broke the job off; 0 if none did.
    int interrupted = 0;
    JobSummary summary;
};

JobResult run_job(const JobOptions& options);

// Writes the summary as JSON. False if the file can't be written.
bool write_summary(const JobSummary& summary, const std::string& file_name);

}  // namespace orvlog::pdf_client
