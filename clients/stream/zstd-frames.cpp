#include "clients/stream/zstd-frames.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>

namespace orvlog::log_stream
{

namespace
{

constexpr uint32_t kTableMagic = 0x184D2A5E;
constexpr uint32_t kFooterMagic = 0x8F92EAB1;
constexpr uint64_t kHeadSize = 8;
constexpr uint64_t kEntrySize = 8;
constexpr uint64_t kFooterSize = 9;
constexpr size_t kLongestFrameHead = 18;

void put_32(uint8_t* to, uint64_t value)
{
    for (int i = 0; i < 4; ++i)
        to[i] = static_cast<uint8_t>(value >> 8 * i);
}

// The bytes of a file, read in pieces as they are looked at.
struct Look
{
    HostFile* file;
    uint64_t end;
    uint64_t place;
    size_t count;
    uint8_t piece[4096];
};

// `size` bytes at `place`; null where the frames end before.
const uint8_t* look_at(Look* look, uint64_t place, size_t size)
{
    if (place > look->end || size > look->end - place)
        return nullptr;
    if (place < look->place || place + size > look->place + look->count)
    {
        const uint64_t most = std::min<uint64_t>(sizeof look->piece, look->end - place);
        look->place = place;
        look->count = read_at(look->file, look->piece, static_cast<size_t>(most), place);
    }
    return look->count >= size ? look->piece + (place - look->place) : nullptr;
}

// Behind the frame at `place`; 0 if there is no whole one.
uint64_t frame_end(Look* look, uint64_t place)
{
    const uint64_t seen = std::min<uint64_t>(kLongestFrameHead, look->end - place);
    const uint8_t* head = look_at(look, place, static_cast<size_t>(seen));
    if (head == nullptr || seen < 5)
        return 0;
    const uint8_t form = head[4];
    const bool single_segment = (form & 0x20) != 0;
    const bool has_checksum = (form & 4) != 0;
    static constexpr uint64_t kIdSizes[4] = {0, 1, 2, 4};
    static constexpr uint64_t kContentSizes[4] = {0, 2, 4, 8};
    const uint64_t content_size = form >> 6 == 0 && single_segment ? 1 : kContentSizes[form >> 6];
    place += 5 + (single_segment ? 0 : 1) + kIdSizes[form & 3] + content_size;
    for (bool is_last = false; !is_last;)
    {
        const uint8_t* block = look_at(look, place, 3);
        if (block == nullptr)
            return 0;
        const uint32_t word = block[0] | static_cast<uint32_t>(block[1]) << 8 | static_cast<uint32_t>(block[2]) << 16;
        is_last = (word & 1) != 0;
        const bool repeats_a_byte = (word >> 1 & 3) == 1;
        place += 3 + (repeats_a_byte ? 1 : word >> 3);
    }
    place += has_checksum ? 4 : 0;
    return place <= look->end ? place : 0;
}

struct Table
{
    HostFile* file;
    uint64_t place;
    size_t count;
    uint8_t piece[1024];
};

int flush_table(Table* table)
{
    const int error = write_at(table->file, table->piece, table->count, table->place);
    table->place += table->count;
    table->count = 0;
    return error;
}

int put_word(Table* table, uint64_t value)
{
    put_32(table->piece + table->count, value);
    table->count += 4;
    return table->count == sizeof table->piece ? flush_table(table) : 0;
}

// Gives the number of frames, and hands the size of each to `table` unless that is null. 0 if they can't be read.
uint64_t walk_frames(Look* look, uint64_t text_size, uint64_t text_left, Table* table, int* error)
{
    uint64_t frames = 0;
    for (uint64_t place = 0; place < look->end; ++frames)
    {
        const uint64_t next = frame_end(look, place);
        *error = next == 0 ? EIO : 0;
        const uint64_t text = std::min(text_size, text_left);
        if (*error == 0 && table != nullptr)
            *error = put_word(table, next - place);
        if (*error == 0 && table != nullptr)
            *error = put_word(table, text);
        if (*error != 0)
            return 0;
        text_left -= text;
        place = next;
    }
    return frames;
}

}  // namespace

int write_seek_table(HostFile* file, uint64_t frames_end, uint64_t text_size, uint64_t text_in_all, uint64_t* file_end)
{
    *file_end = frames_end;
    int error = 0;
    Look look = {file, frames_end, 0, 0, {}};
    const uint64_t frames = walk_frames(&look, text_size, text_in_all, nullptr, &error);
    const uint64_t size = frames * kEntrySize + kFooterSize;
    if (error != 0 || size > UINT32_MAX)
        return error;
    Table table = {file, frames_end, 0, {}};
    error = put_word(&table, kTableMagic);
    if (error == 0)
        error = put_word(&table, size);
    if (error == 0)
        walk_frames(&look, text_size, text_in_all, &table, &error);
    if (error == 0 && table.count > 0)
        error = flush_table(&table);
    uint8_t footer[kFooterSize] = {};
    put_32(footer, frames);
    put_32(footer + 5, kFooterMagic);
    if (error == 0)
        error = write_at(file, footer, sizeof footer, table.place);
    if (error == 0)
        *file_end = frames_end + kHeadSize + size;
    return error;
}

}  // namespace orvlog::log_stream
