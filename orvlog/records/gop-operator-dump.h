// How operators look in the log.

#pragma once

#include "orvlog/interface/gop-operand.h"
#include "orvlog/log/orvlog-writer.h"

// The GOP_Operator element; nothing for null.
void ORVLOG_DumpOperator(ORVLOG_Writer* writer, const GOP_Operator* op);

// The frame "parent.member" around it; nothing for null.
void ORVLOG_DumpNamedOperator(ORVLOG_Writer* writer, const char* parent, const char* member, const GOP_Operator* op);
