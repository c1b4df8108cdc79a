// Temporary logs, and how one becomes the final log together with the logs of kept images.
//
// A temporary log is the plain text of a session's log in a file of its own. Where it tells of a kept image,
// the merge takes out the attribute that names the image's own log, leaves the blank in front of it, and puts
// the whole of that log behind the element.

#pragma once

#include "holv-core/gio/gio-stream.h"
#include "holv-core/gmm/gmm-allocator.h"

#include <cstdint>

// All copying goes through blocks of this size.
inline constexpr uint32_t ORVLOG_MERGE_BLOCK = 16384;
inline constexpr uint32_t ORVLOG_TEMP_LOG_NAME = 48;

// Makes the name "orvlog-%08x-%08x-%08x-%08x.tmp" from the four words of the session's 16 bytes, highest first,
// in `name`, a buffer of ORVLOG_TEMP_LOG_NAME characters, and opens it for writing as text, wherever a relative
// name lands. 1, or 0 when the file cannot be opened, and `*stream_out` is null.
uint32_t ORVLOG_OpenTempLog(GMM_Allocator* allocator, const uint8_t* session_id, GIO_Stream** stream_out, char* name);

// Copies a whole file to `target` through `block`, of ORVLOG_MERGE_BLOCK bytes. 1, or 0 when the file cannot be
// opened or read, or the target took fewer bytes than offered.
uint32_t ORVLOG_AppendFile(GMM_Allocator* allocator, const char* path, GIO_Stream* target, char* block);

// Writes the temporary log at `path` to `target`, coded if `compress` is 1, with the logs of kept images in
// their places if `has_async_images` is not 0. Each of these is deleted when it has been copied, and the
// temporary log when all went well. 1, or 0 when memory is short, a file is missing or cannot be read, or the
// target took fewer bytes than offered; then the temporary log stays and the target holds what it got. A
// compressed stream hides what its target did.
uint32_t ORVLOG_MergeLogs(GMM_Allocator* allocator, const char* path, GIO_Stream* target, uint32_t compress,
                          uint32_t has_async_images);
