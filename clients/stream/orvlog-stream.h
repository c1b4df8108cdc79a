/// \file
/// Streams to log to, for programs in C and C++. Each is a GIO_Stream that goes to ORVLOG_DLL_initialise, and is the
/// caller's to close after ORVLOG_DLL_shutdown.
///
/// What is printed has left the stream when the print returns: a process that is killed leaves a log with all that it
/// had logged. A print that is no more than a text ("%s") is a copy. The first failure, a full disk for example, is
/// remembered, and every later print fails at once; it is asked for at the end, by orvlog_stream_close.
///
/// The streams only go forward (GIO_KIND_FORWARD_ONLY): they print and write, tell their position and size, and
/// nothing can be read from them. Positions and sizes are bytes of text. A stream belongs to one thread at a time.

#ifndef ORVLOG_STREAM_H
#define ORVLOG_STREAM_H

#include "holv-core/gio/gio-stream.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// How a stream of this kind went, told when it is closed.
typedef struct ORVLOG_StreamReport
{
    int32_t error;        ///< 0, or the first failure as a value of errno
    uint32_t journal;     ///< 1 if the end of the text could not be moved out of the journal, which was left
    uint64_t text_bytes;  ///< what was printed
    uint64_t file_bytes;  ///< what the log takes in the file, or went to the pipe or device
} ORVLOG_StreamReport;

/// A file that is mapped into memory: a print costs no system call. The file is reserved in steps, so that a full disk
/// is a failure and never a signal, and is cut to the text at the close. After a crash zero bytes stand behind the
/// text; the log's readers take them as its end. A pipe, a device, a folder of another machine and a file system that
/// can't reserve get a stream that writes each print as orvlog_open_file_stream does.
///
/// Whoever cuts the file meanwhile ends the process that writes it.
/// \param path  the file, UTF-8; it is made or begun anew. `/dev/stdout`, on Windows `\\.\STDOUT`, is the standard
///     output
/// \return the stream, which is closed by orvlog_stream_close; or null with errno set if the file can't be opened:
///     EBUSY while another of these streams writes it
GIO_Stream* orvlog_open_mapped_stream(const char* path);

/// A file or device that is written at each flush, and so by the logger once for each attribute and tag.
/// \param path  as for orvlog_open_mapped_stream
/// \return as of orvlog_open_mapped_stream
GIO_Stream* orvlog_open_file_stream(const char* path);

/// Zstandard, in independent frames with a table for seeking at the end, so that `zstd -d` gives the text. What is in
/// no frame yet stands in a mapped file of fixed size beside the log, the log's name with ".journal" behind it, which
/// is removed at the close; a crash leaves both, and the log's readers read both. A pipe or device gets the frames
/// alone. In the library orvlog-zstd-stream, which needs libzstd.
/// \param path  as for orvlog_open_mapped_stream
/// \return as of orvlog_open_mapped_stream
GIO_Stream* orvlog_open_zstd_stream(const char* path);

/// Closes a stream of these three kinds; the handle is gone. gio_Close does the same without a report.
/// \param stream  the stream; null gives GIO_ERR_BAD_HANDLE
/// \param report  is filled; may be null
/// \return 0, or the result code of the first failure
int32_t orvlog_stream_close(GIO_Stream* stream, ORVLOG_StreamReport* report);

/// How a stream stands.
/// \param stream  a stream of these three kinds
/// \return the first failure so far as a value of errno; 0 if there was none
int32_t orvlog_stream_error(const GIO_Stream* stream);

#ifdef __cplusplus
}
#endif

#endif
