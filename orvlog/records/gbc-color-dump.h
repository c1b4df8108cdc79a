// How base colours look in the log.

#pragma once

#include "orvlog/interface/gop-operand.h"
#include "orvlog/log/orvlog-writer.h"

// The GBC_Color element; nothing for null. A colour that says that it has alpha but has no channel shows none.
void ORVLOG_DumpColor(ORVLOG_Writer* writer, const GBC_Color* color);

// The frame "parent.member" around it; nothing for null.
void ORVLOG_DumpNamedColor(ORVLOG_Writer* writer, const char* parent, const char* member, const GBC_Color* color);
