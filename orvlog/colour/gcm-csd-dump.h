// How colour space definitions of a call look in the log.

#pragma once

#include "orvlog/interface/gcm-csd.h"
#include "orvlog/log/orvlog-writer.h"

#include <cstdint>

// Bounds of one dump, for definitions that refer to one another in a circle or without end: so many levels of
// alternates, and so many definitions in all. What lies beyond is left out, with a warning.
constexpr uint32_t ORVLOG_MAX_CSD_DEPTH = 1000;
constexpr uint32_t ORVLOG_MAX_CSD_COUNT = 1024;

// The most bytes that are taken from the stream of a callback definition.
constexpr uint32_t ORVLOG_MAX_CSD_STREAM = 256u << 20;

// GCM_CST_* and GCM_WHITEPOINT_* under the name of an argument. No record of a call has them.
void gcm_attr_color_space_type(ORVLOG_Writer* writer, const char* name, uint32_t type);
void gcm_attr_white_point(ORVLOG_Writer* writer, const char* name, uint32_t white_point);

// The GCM_CsdPointer element, with all that the record refers to; nothing when the record or its definition is
// null. The stream of a callback definition is read from its start and left at its end.
void ORVLOG_DumpCsdPointer(ORVLOG_Writer* writer, const GCM_CsdPointer* pointer);

// The same inside an ORVLOG_WRAPPER element with the attribute name.
void ORVLOG_DumpCsdWrapper(ORVLOG_Writer* writer, const GCM_CsdPointer* pointer, const char* name);
