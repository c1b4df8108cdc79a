// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/job/log-writing.h"

#include "reader/check/files-due.h"

#include <cerrno>
#include <cstring>
#include <fstream>

namespace pdf_client
{

namespace
{

// For a user whose log goes to the standard output the file that it is until then has no name.
std::string wanted_log(const JobOptions& options)
{
    return options.folder_beside.empty() ? options.log : "LOG";
}

// The logger leaves unsaid what it could not write beside the log.
void look_for_files(JobState& state, const std::filesystem::path& file)
{
    std::error_code none;
    if ((state.options.image_prefix.empty() && !state.options.keep_images) ||
        !std::filesystem::is_regular_file(file, none))
    {
        return;
    }
    std::ifstream input(file, std::ios::binary);
    const orvlog::reader::FilesLacking lacking = orvlog::reader::find_lacking_files(input, "");
    state.result.errors.insert(state.result.errors.end(), lacking.lines.begin(), lacking.lines.end());
    if (lacking.count > lacking.lines.size())
    {
        state.result.errors.push_back("and as much of " + std::to_string(lacking.count - lacking.lines.size()) +
                                      " further files");
    }
}

}  // namespace

OpenLog open_log(JobState& state)
{
    const JobOptions& options = state.options;
    std::vector<std::string>& errors = state.result.errors;
    std::error_code none;
    if (std::filesystem::equivalent(options.log, options.document, none))
    {
        errors.push_back(options.log + ": is the document to be logged");
        return {};
    }
    // A log of before stays when its files could not be made.
    const std::string place = options.folder_beside.empty() ? options.log : options.folder_beside + "/log";
    OpenLog log;
    log.beside = client_stream::files_beside(place, options.image_prefix);
    if (!log.beside.trouble.empty())
    {
        errors.push_back(log.beside.trouble);
        return {};
    }
    // The job runs in another folder than the present one.
    const std::string file = std::filesystem::absolute(options.log).string();
    log.file = client_stream::LogFile::open(file, options.stream);
    if (log.file == nullptr)
    {
        // Only a journal must not be there before.
        const char* ending = errno == EEXIST ? ".journal" : "";
        errors.push_back(options.log + ending + ": " + std::strerror(errno));
    }
    return log;
}

void finish_log(JobState& state, const LoggedInterface& logger, client_stream::LogFile& log,
                const std::filesystem::path& from)
{
    client_stream::TemporaryLog* detour = logger.detour();
    std::string why;
    if (detour != nullptr)
    {
        look_for_files(state, detour->name());
    }
    const bool merged = detour == nullptr || detour->merge_into(log.stream(), state.options.compressed, &why);
    const bool whole = log.close();
    if (!whole)
    {
        why = state.options.log + ": " + std::strerror(log.first_error());
        state.result.errors.push_back(
            why + "; the log is incomplete" +
            (log.has_journal() ? ", and its end is in " + state.options.log + ".journal" : ""));
    }
    else if (!merged)
    {
        state.result.errors.push_back(why + "; the log is incomplete");
    }
    if (!merged)
    {
        state.result.errors.push_back("what was logged can be had by: " +
                                      detour->merge_command(from, wanted_log(state.options)));
    }
    if (detour == nullptr && whole)
    {
        look_for_files(state, from / state.options.log);
    }
    state.result.summary.log_bytes = log.size();
}

}  // namespace pdf_client
