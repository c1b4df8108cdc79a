// How points, vectors, boxes, matrices and transform flags look in the log. A null record writes nothing.

#pragma once

#include "holv-core/ggo/ggo-geometry.h"
#include "orvlog/log/orvlog-writer.h"

#include <cstdint>

// Self-closed elements at the present depth, for records that are members of a list.
void dump_GGO_Point(ORVLOG_Writer* writer, const GGO_Point* point);
void dump_GGO_Vector(ORVLOG_Writer* writer, const GGO_Vector* vector);
void dump_GGO_BoxInt(ORVLOG_Writer* writer, const GGO_BoxInt* box);

// A whole record in one attribute: each value with a blank behind it.
void ggo_attr_point(ORVLOG_Writer* writer, const char* name, const GGO_Point* point);
void ggo_attr_vector(ORVLOG_Writer* writer, const char* name, const GGO_Vector* vector);
void ggo_attr_matrix(ORVLOG_Writer* writer, const char* name, const GGO_Matrix* matrix);
void ggo_attr_box(ORVLOG_Writer* writer, const char* name, const GGO_BoxFloat* box);
void ggo_attr_box_int(ORVLOG_Writer* writer, const char* name, const GGO_BoxInt* box);

// GGO_XFLAG_*: "[%#x] ", the flags, then the name of the rotation field. GGO_XFLAG_GENERAL stands ahead of the
// rotation although it has the higher bit; readers of the log rely on it.
void ggo_attr_transform_flags(ORVLOG_Writer* writer, const char* name, uint32_t flags);
