// SPDX-License-Identifier: GPL-2.0-or-later
//
// A user who breaks off a job gets the log of what was drawn until then, closed as any other. SIGINT, SIGTERM and
// SIGHUP ask for that; the page that is being painted is given a few seconds to come to a place where it can stop.

#pragma once

namespace orvlog::pdf_client
{

// From here on the signals are taken as a wish. Those that are ignored stay so.
void watch_for_interruption();

// The signal that has come; 0 while none has.
int interrupting_signal();

// The painting has ended. What is left to do, closing the log and merging it, takes the time that it takes; a further
// signal ends the process at once.
void painting_has_ended();

}  // namespace orvlog::pdf_client
