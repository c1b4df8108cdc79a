#include "clients/stream/file-stream.h"

#include "clients/stream/stream-operations.h"
#include "clients/system/system.h"

#include <cerrno>
#include <cstring>

namespace orvlog::client_stream
{

using stream_operations::code_of;

struct FileStream::Operations
{
    static FileStream* self(void* c)
    {
        return static_cast<FileStream*>(c);
    }

    static std::FILE* file(void* c)
    {
        return self(c)->file_;
    }

    // Passes a result on, noting a failure.
    template <typename Result> static Result checked(void* c, Result result, bool good)
    {
        if (!good)
            self(c)->note_failure();
        return result;
    }

    static uint64_t read(void* buffer, uint64_t item_size, uint64_t item_count, void* c)
    {
        return std::fread(buffer, item_size, item_count, file(c));
    }

    static uint64_t write(const void* buffer, uint64_t item_size, uint64_t item_count, void* c)
    {
        if (self(c)->first_error_ != 0)
            return 0;
        const uint64_t written = std::fwrite(buffer, item_size, item_count, file(c));
        return checked(c, written, written == item_count || item_size == 0);
    }

    static int32_t seek64(void* c, int64_t offset, int32_t origin)
    {
        const int whence = origin == GIO_SEEK_SET ? SEEK_SET : origin == GIO_SEEK_CUR ? SEEK_CUR : SEEK_END;
        return system::seek(file(c), offset, whence) ? 0 : -1;
    }

    static int64_t tell64(void* c)
    {
        return system::tell(file(c));
    }

    static int32_t flush(void* c)
    {
        if (self(c)->first_error_ != 0)
            return -1;
        const int result = std::fflush(file(c));
        return checked(c, result == 0 ? 0 : -1, result == 0);
    }

    static char* gets(char* buffer, int32_t size, void* c)
    {
        return std::fgets(buffer, size, file(c));
    }

    static int32_t puts(const char* text, void* c)
    {
        if (self(c)->first_error_ != 0)
            return -1;
        const int result = std::fputs(text, file(c));
        return checked(c, result >= 0 ? result : -1, result >= 0);
    }

    static int32_t getc(void* c)
    {
        return std::fgetc(file(c));
    }

    static int32_t putc(int32_t byte, void* c)
    {
        if (self(c)->first_error_ != 0)
            return -1;
        const int result = std::fputc(byte, file(c));
        return checked(c, result, result != EOF);
    }

    static const char* name(void* c)
    {
        return self(c)->file_name_.c_str();
    }

    static int32_t print(void* c, const char* format, va_list args)
    {
        if (self(c)->first_error_ != 0)
            return -1;
        const int result = std::vfprintf(file(c), format, args);
        return checked(c, result, result >= 0);
    }

    static void clear_error(void* c)
    {
        std::clearerr(file(c));
    }

    static int32_t eof(void* c)
    {
        return std::feof(file(c));
    }

    static int32_t error(void* c)
    {
        return std::ferror(file(c));
    }

    static int32_t last_error(void* c)
    {
        return code_of(self(c)->first_error_);
    }

    static int64_t size(void* c)
    {
        return self(c)->size();
    }

    static int32_t close(void* c)
    {
        return self(c)->close() ? GIO_OK : code_of(self(c)->first_error_);
    }
};

std::unique_ptr<FileStream> FileStream::open(const std::string& file_name, const char* mode)
{
    std::FILE* file = std::fopen(file_name.c_str(), mode);
    if (file == nullptr)
        return nullptr;
    return std::unique_ptr<FileStream>(new FileStream(file, file_name));
}

FileStream::FileStream(std::FILE* file, std::string file_name) : file_(file), file_name_(std::move(file_name))
{
    stream_.instance = this;
    stream_.kind = GIO_KIND_FILE;
    stream_.ops = &stream_operations::kTable<Operations>;
}

FileStream::~FileStream()
{
    close();
}

GIO_Stream* FileStream::stream()
{
    return &stream_;
}

void FileStream::note_failure()
{
    if (first_error_ == 0)
        first_error_ = errno != 0 ? errno : EIO;
}

bool FileStream::close()
{
    if (file_ != nullptr)
    {
        if (std::fflush(file_) != 0)
            note_failure();
        final_size_ = size();
        if (std::fclose(file_) != 0)
            note_failure();
        file_ = nullptr;
    }
    return first_error_ == 0;
}

int FileStream::first_error() const
{
    return first_error_;
}

int64_t FileStream::size() const
{
    if (file_ == nullptr)
        return final_size_;
    const int64_t position = system::tell(file_);
    if (position < 0 || !system::seek(file_, 0, SEEK_END))
        return -1;
    const int64_t end = system::tell(file_);
    return system::seek(file_, position, SEEK_SET) ? end : -1;
}

}  // namespace orvlog::client_stream
