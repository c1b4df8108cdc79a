#include "bench/null-stream.h"

#include <cstdio>
#include <cstring>

namespace orvlog::bench
{

NullStream::NullStream() : handle_{this, GIO_KIND_FILE, &ops_}
{
    ops_.gio_Write = [](const void* buffer, uint64_t size, uint64_t count, void* c)
    {
        auto* self = static_cast<NullStream*>(c);
        self->bytes_ += size * count;
        if (self->text_ != nullptr)
            self->text_->append(static_cast<const char*>(buffer), size * count);
        return count;
    };
    ops_.gio_Flush = [](void* c) -> int32_t
    {
        ++static_cast<NullStream*>(c)->flushes_;
        return 0;
    };
    ops_.gio_VPrintf = [](void* c, const char* format, va_list args) -> int32_t
    {
        auto* self = static_cast<NullStream*>(c);
        // What stands already formatted is not copied for nothing.
        if (self->text_ == nullptr && std::strcmp(format, "%s") == 0)
        {
            const size_t length = std::strlen(va_arg(args, const char*));
            self->bytes_ += length;
            return static_cast<int32_t>(length);
        }
        char text[4096];
        const int length = std::vsnprintf(text, sizeof text, format, args);
        self->bytes_ += static_cast<uint64_t>(length);
        if (self->text_ != nullptr)
            self->text_->append(text, static_cast<size_t>(length));
        return length;
    };
}

}  // namespace orvlog::bench
