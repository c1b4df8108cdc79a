// How image operands look in the log.

#pragma once

#include "orvlog/image/orvlog-image-context.h"
#include "orvlog/interface/gop-image.h"
#include "orvlog/log/orvlog-writer.h"

#include <cstdint>

// GNC_BMP_DEPTH_* under the name of an argument.
void orvlog_attr_bit_depth(ORVLOG_Writer* writer, const char* name, uint32_t depth);

// The GOP_OperandImage element; nothing for null.
void ORVLOG_DumpImageOperand(ORVLOG_Writer* writer, const GOP_OperandImage* image);

// The GOP_OperandImagePointer element. With `with_data` the bytes of a direct image go into the log or into a "dir"
// file beside it. The record may be one that could not be wrapped: then Id is 0 and bytes go into the log.
void ORVLOG_DumpImagePointer(ORVLOG_Writer* writer, const GOP_OperandImagePointer* record, uint32_t with_data);

// The same without data, for a record that a renderer holds, whatever it has made of the record's context.
void orvlog_dump_wrapped_image(ORVLOG_Writer* writer, const GOP_OperandImagePointer* record,
                               const ORVLOG_ImageWrapper* wrapper);
