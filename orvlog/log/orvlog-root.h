// The root element of a log.

#pragma once

#include "orvlog/log/orvlog-writer.h"

// Writes the opening tag with the version attributes; `base` says which mode the log is in. A log that is to be coded
// gets its coder here, behind the plain first tag; without memory for it the log goes on plain, and the first tag
// stands twice.
void orvlog_open_root(ORVLOG_Writer* writer, bool base);

// Writes the closing tag, and behind it the warnings that wait.
void orvlog_close_root(ORVLOG_Writer* writer);
