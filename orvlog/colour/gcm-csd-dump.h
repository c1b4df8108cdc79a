// How colour space definitions look in the log.

#pragma once

#include "orvlog/interface/gcm-csd.h"
#include "orvlog/log/orvlog-writer.h"

// The GCM_CsdPointer element; nothing for null.
void ORVLOG_DumpCsdPointer(ORVLOG_Writer* writer, const GCM_CsdPointer* pointer);
