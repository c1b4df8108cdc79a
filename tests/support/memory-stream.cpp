#include "tests/support/memory-stream.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace orvlog::test
{

MemoryStream* MemoryStream::of(void* c)
{
    return static_cast<MemoryStream*>(c);
}

bool MemoryStream::step()
{
    ++operations_;
    const bool fails = fail_at_ != 0 && (fail_after_ ? operations_ >= fail_at_ : operations_ == fail_at_);
    failed_ += fails ? 1 : 0;
    return !fails;
}

uint64_t MemoryStream::append(const void* data, uint64_t size)
{
    const uint64_t taken = std::min(size, room_ - std::min<uint64_t>(room_, text_.size()));
    text_.append(static_cast<const char*>(data), taken);
    pieces_.push_back(taken);
    return taken;
}

MemoryStream::MemoryStream(std::string content) : MemoryStream()
{
    text_ = std::move(content);
}

MemoryStream::MemoryStream() : ops_{}, handle_{this, GIO_KIND_FILE, &ops_}
{
    ops_.gio_Read = [](void* buffer, uint64_t size, uint64_t count, void* c) -> uint64_t
    {
        MemoryStream* s = of(c);
        if (!s->step() || size == 0)
            return 0;
        const uint64_t left = s->text_.size() - std::min<uint64_t>(s->position_, s->text_.size());
        const uint64_t items = std::min(count, left / size);
        s->at_end_ = items < count;
        std::memcpy(buffer, s->text_.data() + s->position_, items * size);
        s->position_ += items * size;
        return items;
    };
    ops_.gio_Write = [](const void* buffer, uint64_t size, uint64_t count, void* c) -> uint64_t
    {
        MemoryStream* s = of(c);
        return s->step() && size != 0 ? s->append(buffer, size * count) / size : 0;
    };
    ops_.gio_Seek = [](void* c, int32_t offset, int32_t origin) { return of(c)->ops_.gio_Seek64(c, offset, origin); };
    ops_.gio_Tell = [](void* c) { return static_cast<int32_t>(of(c)->position_); };
    ops_.gio_Seek64 = [](void* c, int64_t offset, int32_t origin)
    {
        MemoryStream* s = of(c);
        if (!s->step())
            return -1;
        const auto base = origin == GIO_SEEK_SET   ? int64_t{0}
                          : origin == GIO_SEEK_CUR ? static_cast<int64_t>(s->position_)
                                                   : static_cast<int64_t>(s->text_.size());
        if (base + offset < 0)
            return -1;
        s->position_ = static_cast<uint64_t>(base + offset);
        s->at_end_ = false;
        return 0;
    };
    ops_.gio_Tell64 = [](void* c) { return static_cast<int64_t>(of(c)->position_); };
    ops_.gio_Flush = [](void* c)
    {
        MemoryStream* s = of(c);
        ++s->flushes_;
        if (s->flushed_ != s->text_.size())
            s->flush_marks_.push_back(s->text_.size());
        s->flushed_ = s->text_.size();
        return s->step() ? 0 : -1;
    };
    ops_.gio_Gets = [](char*, int32_t, void*) -> char* { return nullptr; };
    ops_.gio_Puts = [](const char* text, void* c)
    { return of(c)->step() && of(c)->append(text, std::strlen(text)) == std::strlen(text) ? 0 : -1; };
    ops_.gio_Getc = [](void* c)
    {
        MemoryStream* s = of(c);
        s->at_end_ = s->position_ >= s->text_.size();
        return s->at_end_ ? -1 : static_cast<int32_t>(static_cast<unsigned char>(s->text_[s->position_++]));
    };
    ops_.gio_Putc = [](int32_t byte, void* c)
    {
        const char one = static_cast<char>(byte);
        return of(c)->step() && of(c)->append(&one, 1) == 1 ? byte : -1;
    };
    ops_.gio_GetPath = [](void*, uint32_t* path_kind) -> const char*
    {
        *path_kind = 4;
        return nullptr;
    };
    ops_.gio_ReadBuffer = [](void* c, void** data, uint64_t* length)
    {
        MemoryStream* s = of(c);
        if (!s->step())
            return 0;
        *data = s->text_.data();
        *length = s->text_.size();
        return 1;
    };
    ops_.gio_VPrintf = [](void* c, const char* format, va_list args)
    {
        MemoryStream* s = of(c);
        if (!s->step())
            return -1;
        va_list again;
        va_copy(again, args);
        const int length = std::vsnprintf(nullptr, 0, format, again);
        va_end(again);
        if (length < 0)
            return -1;
        std::string piece(static_cast<size_t>(length) + 1, '\0');
        std::vsnprintf(piece.data(), piece.size(), format, args);
        return static_cast<int32_t>(s->append(piece.data(), static_cast<uint64_t>(length)));
    };
    ops_.gio_ClearErr = [](void* c) { of(c)->at_end_ = false; };
    ops_.gio_Eof = [](void* c) { return of(c)->at_end_ ? 1 : 0; };
    ops_.gio_Error = [](void* c) { return of(c)->failed_ != 0 ? 1 : 0; };
    ops_.gio_LastError = [](void*) -> int32_t { return GIO_OK; };
    ops_.gio_Size = [](void* c) { return static_cast<int64_t>(of(c)->text_.size()); };
    ops_.gio_Close = [](void* c) -> int32_t
    {
        of(c)->closed_ = true;
        return 0;
    };
}

}  // namespace orvlog::test
