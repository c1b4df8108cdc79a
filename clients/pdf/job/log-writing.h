// SPDX-License-Identifier: GPL-2.0-or-later
//
// The logger of a job and the file of its log, as the job's options say.

#pragma once

#include "clients/pdf/job/job-state.h"
#include "clients/session/logged-session.h"

#include <memory>

namespace orvlog::pdf_client
{

// Null, with an error in the result, where a log can't be written; a log of before has then stayed.
std::unique_ptr<client_session::LoggedSession> open_log(JobState& state);

}  // namespace orvlog::pdf_client
