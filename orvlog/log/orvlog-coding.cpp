#include "orvlog/log/orvlog-coding.h"

#include <cstdio>
#include <cstring>

namespace
{

constexpr uint32_t kFormatBlock = 200;
constexpr uint32_t kCoderOutput = 10;

}  // namespace

void orvlog_writer_start_coding(ORVLOG_Writer* writer)
{
    writer->coder = AHC_EncoderCreate(writer->allocator);
}

void orvlog_writer_end_coding(ORVLOG_Writer* writer)
{
    if (!orvlog_writer_is_coded(writer))
        return;
    const uint8_t last = AHC_EncoderFinish(writer->coder);
    writer->coder = nullptr;
    const GIO_Stream* stream = writer->stream;
    if (stream != nullptr && stream->ops != nullptr && stream->ops->gio_Write != nullptr)
        stream->ops->gio_Write(&last, 1, 1, stream->instance);
}

void orvlog_writer_detach(ORVLOG_Writer* writer, GIO_Stream* stream)
{
    writer->stream = stream;
    writer->coder = nullptr;
}

void orvlog_coding_put(const ORVLOG_Writer* writer, const char* text, uint32_t length)
{
    const GIO_Stream* stream = writer->stream;
    uint8_t output[kCoderOutput];
    AHC_SetInput(writer->coder, reinterpret_cast<const uint8_t*>(text), length);
    for (int32_t count; (count = AHC_Encode(writer->coder, output, kCoderOutput)) > 0;)
        stream->ops->gio_Write(output, 1, static_cast<uint64_t>(count), stream->instance);
}

int32_t orvlog_coding_vprint(const ORVLOG_Writer* writer, const char* format, va_list args)
{
    char block[kFormatBlock] = "";
    const int formatted = std::vsnprintf(block, kFormatBlock, format, args);
    uint32_t length = static_cast<uint32_t>(formatted);
    if (formatted < 0 || length >= ORVLOG_CODED_PRINT_LIMIT)
    {
        block[ORVLOG_CODED_PRINT_LIMIT] = '\0';
        length = static_cast<uint32_t>(std::strlen(block));
    }
    orvlog_coding_put(writer, block, length);
    return static_cast<int32_t>(length);
}
