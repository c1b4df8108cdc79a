// A stream that codes what is written to it and passes the coded bytes to another stream.
//
// A coded log file is: 35 plain bytes `<ORV compression="Adaptive Huffman"`, the coded form of the whole log
// text, its root tag once more at the beginning, and the coder's last byte. There is no length, no checksum and
// no other header. The prefix and the last byte are always there, so the log of nothing has 36 bytes.

#pragma once

#include "holv-core/gio/gio-stream.h"
#include "holv-core/gmm/gmm-allocator.h"
#include "orvlog/log/ahc-coder.h"

#include <cstdint>

inline constexpr char ORVLOG_CODED_PREFIX[] = "<ORV compression=\"Adaptive Huffman\"";
inline constexpr uint32_t ORVLOG_CODED_PREFIX_SIZE = sizeof ORVLOG_CODED_PREFIX - 1;

// The instance record of the kind.
struct ORVLOG_CompressedStream
{
    GMM_Allocator* allocator;  // owner of the handle, the table, this record and the coder
    GIO_Stream* target;        // not owned
    AdaptiveHuffmanCoder* coder;
};

// Writes the prefix to `target` and gives a stream that codes into it, or null when memory is short or the
// target did not take the prefix. The stream may be written by gio_Write and closed by the function below, and
// nothing else: the other operations of its table are null. `target` must outlive it and stays the caller's.
GIO_Stream* ORVLOG_OpenCompressedStream(GMM_Allocator* allocator, GIO_Stream* target);

// The gio_Write of the kind. Gives the number of bytes offered, whatever the target took. Up to seven bits wait
// in the coder until the stream is closed; nothing is flushed.
uint64_t ORVLOG_CompressedWrite(const void* data, uint64_t item_size, uint64_t item_count, void* instance);

// Writes the coder's last byte and releases the stream. The target stays open. Null is let be.
void ORVLOG_CloseCompressedStream(GIO_Stream* stream);
