#include "clients/stream/log-file.h"

namespace orvlog::client_stream
{

std::unique_ptr<LogFile> LogFile::open(const std::string& file_name, StreamKind kind)
{
    GIO_Stream* stream = nullptr;
    switch (kind)
    {
    case StreamKind::mapped:
        stream = orvlog_open_mapped_stream(file_name.c_str());
        break;
    case StreamKind::file:
        stream = orvlog_open_file_stream(file_name.c_str());
        break;
    case StreamKind::zstd:
        stream = orvlog_open_zstd_stream(file_name.c_str());
        break;
    }
    return std::unique_ptr<LogFile>(stream != nullptr ? new LogFile(stream) : nullptr);
}

LogFile::LogFile(GIO_Stream* stream) : stream_(stream) {}

LogFile::~LogFile()
{
    close();
}

GIO_Stream* LogFile::stream()
{
    return stream_;
}

bool LogFile::close()
{
    if (stream_ != nullptr)
        orvlog_stream_close(stream_, &report_);
    stream_ = nullptr;
    return report_.error == 0;
}

int LogFile::first_error() const
{
    return report_.error;
}

int64_t LogFile::size() const
{
    return static_cast<int64_t>(report_.file_bytes);
}

bool LogFile::has_journal() const
{
    return report_.journal != 0;
}

}  // namespace orvlog::client_stream
