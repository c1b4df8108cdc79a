// The root element of a log.

#pragma once

#include "orvlog/session/orvlog-session.h"

// Writes the opening tag with the version attributes. A coded log gets its coder here, behind the plain first tag;
// without memory for it the log goes on plain, and the first tag stands twice.
void orvlog_open_root(ORVLOG_Session* session);

// Writes the closing tag, and behind it the warnings that wait.
void orvlog_close_root(ORVLOG_Session* session);
