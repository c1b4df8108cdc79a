// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/job/log-writing.h"

#include "clients/colour/colour-manager.h"

#include <filesystem>

namespace orvlog::pdf_client
{

namespace
{

client_session::LoggedSessionOptions session_options(const JobOptions& job)
{
    client_session::LoggedSessionOptions session;
    session.log = job.log;
    session.stream = job.stream;
    session.image_prefix = job.image_prefix;
    session.folder_beside = job.folder_beside;
    session.compressed = job.compressed;
    session.via_temporary_log = job.via_temporary_log;
    session.keeps_images = job.keep_images;
    session.base_content = job.base_mode;
    session.fixed_glyph_forms = job.glyphs == JobOptions::Glyphs::all;
    session.glyph_form = job.glyphs == JobOptions::Glyphs::outlines ? GFI_GDT_PATH : GFI_GDT_BITMAP;
    session.ticket_functions = orvlog::colour::ColourManager::ticket_functions();
    session.ticket_serial_functions = orvlog::colour::ColourManager::ticket_serial_functions();
    return session;
}

}  // namespace

std::unique_ptr<client_session::LoggedSession> open_log(JobState& state)
{
    std::error_code none;
    if (std::filesystem::equivalent(state.options.log, state.options.document, none))
    {
        state.result.errors.push_back(state.options.log + ": is the document to be logged");
        return nullptr;
    }
    auto session = std::make_unique<client_session::LoggedSession>(session_options(state.options));
    std::string why;
    if (session->open_log(&why))
        return session;
    state.result.errors.push_back(why);
    return nullptr;
}

}  // namespace orvlog::pdf_client
