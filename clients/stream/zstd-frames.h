// The table for seeking behind the frames of a log: a frame that decoders skip, with the sizes of all frames.

#ifndef CLIENTS_STREAM_ZSTD_FRAMES_H
#define CLIENTS_STREAM_ZSTD_FRAMES_H

#include "clients/stream/mapped-file.h"

#include <cstdint>

namespace orvlog::log_stream
{

// Reads the frames that end at `frames_end` from the file, all of which hold `text_size` bytes of text but the last,
// and writes the table behind them; `*file_end` is where it ends. Needs little memory, however many frames there are.
// 0 or a value of errno.
int write_seek_table(HostFile* file, uint64_t frames_end, uint64_t text_size, uint64_t text_in_all, uint64_t* file_end);

}  // namespace orvlog::log_stream

#endif
