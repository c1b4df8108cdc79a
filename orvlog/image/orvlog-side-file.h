// Files beside the log that hold the bytes of images: raw, with no header.

#pragma once

#include "orvlog/image/orvlog-image-context.h"

#include <cstdint>

// Opens "<file_prefix>-<kind>-<number>.bin" for writing, with the next number of the image. `kind` is "dir", "img" or
// "attr". The name is made in a block of the private allocator if `*name` is null. 1, or 0 without memory for the
// name or when the file cannot be opened; then `*stream` is null.
uint32_t ORVLOG_OpenSideFile(ORVLOG_ImageContext* context, GIO_Stream** stream, char** name, const char* kind);

// Writes the bytes; does nothing for a file that is not open.
void orvlog_side_file_write(GIO_Stream* stream, const uint8_t* bytes, uint64_t count);
