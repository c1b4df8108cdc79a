// How paths and stroking parameters look in the log: one dumper for each record, named after it.
//
// Each writes its element at the present depth and leaves the depth as it found it. A null record writes nothing.

#pragma once

#include "orvlog/interface/gpa-path.h"
#include "orvlog/log/orvlog-writer.h"

void dump_GPA_PathStrokingParams(ORVLOG_Writer* writer, const GPA_PathStrokingParams* params);
