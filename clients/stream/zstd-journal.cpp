#include "clients/stream/zstd-journal.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace orvlog::log_stream
{

namespace
{

constexpr char kMagic[8] = {'O', 'R', 'V', 'L', 'O', 'G', 'Z', 'J'};
constexpr char kEnding[] = ".journal";
constexpr size_t kSmallest = size_t{1} << 12;
constexpr size_t kCheckedBytes = 8;

// How the log and the journal stand to each other. There are two of it, and `turn` tells which one holds, so that
// one store leads from one state to the next.
struct State
{
    uint64_t frames_end;   // bytes of the log that are whole frames; what follows there doesn't count
    uint64_t length;       // bytes of text in the journal
    uint64_t text_before;  // bytes of text in the frames
    uint64_t check;        // over the last bytes of the frames
};

struct Head
{
    char magic[8];
    uint32_t version;
    uint32_t text_at;
    uint64_t capacity;
    uint64_t turn;
    State states[2];
    uint64_t unused[4];
};
static_assert(sizeof(Head) == 128);

Head* head_of(const Journal* journal)
{
    return reinterpret_cast<Head*>(journal->bytes);
}

void publish(uint64_t& word, uint64_t value)
{
    std::atomic_ref<uint64_t>(word).store(value, std::memory_order_release);
}

// FNV-1a.
uint64_t check_of(const void* bytes, size_t count)
{
    uint64_t sum = 0xCBF29CE484222325;
    for (size_t i = 0; i < count; ++i)
        sum = (sum ^ static_cast<const unsigned char*>(bytes)[i]) * 0x100000001B3;
    return sum;
}

int write_head(Journal* journal)
{
    return journal->is_mapped ? 0 : write_at(&journal->file, journal->bytes, sizeof(Head), 0);
}

// Room on the disk, as much as there is.
int reserve(Journal* journal, size_t capacity)
{
    while (true)
    {
        journal->size = sizeof(Head) + capacity;
        journal->capacity = capacity;
        const int error = reserve_file(&journal->file, 0, journal->size, true);
        if (error == 0 || !is_full(error) || capacity <= kSmallest)
            return error;
        capacity /= 2;
    }
}

bool is_free_or_journal(HostFile* file)
{
    char start[sizeof kMagic];
    const size_t count = read_at(file, start, sizeof start, 0);
    // One that was just being made has zero bytes there.
    constexpr char kUnmade[sizeof kMagic] = {};
    return std::memcmp(start, kUnmade, count) == 0 ||
           (count == sizeof start && std::memcmp(start, kMagic, sizeof start) == 0);
}

}  // namespace

int open_journal(Journal* journal, const char* log_path)
{
    *journal = {};
    journal->path = static_cast<char*>(std::malloc(std::strlen(log_path) + sizeof kEnding));
    if (journal->path == nullptr)
        return ENOMEM;
    std::strcpy(journal->path, log_path);
    std::strcat(journal->path, kEnding);
    int error = open_ordinary_file(&journal->file, journal->path);
    if (error == 0 && !is_free_or_journal(&journal->file))
        error = EEXIST;
    if (error != 0)
        close_journal(journal, true);
    return error;
}

int begin_journal(Journal* journal, size_t capacity)
{
    int error = cut_file(&journal->file, 0);
    if (error == 0)
        error = reserve(journal, capacity);
    if (error != 0)
        return error;
    void* piece = journal->file.can_map ? map_file(&journal->file, 0, journal->size) : nullptr;
    journal->is_mapped = piece != nullptr;
    journal->bytes = static_cast<char*>(journal->is_mapped ? piece : std::calloc(1, journal->size));
    if (journal->bytes == nullptr)
        return ENOMEM;
    Head* head = head_of(journal);
    head->version = 1;
    head->text_at = sizeof(Head);
    head->capacity = journal->capacity;
    head->states[0].check = check_of(nullptr, 0);
    std::atomic_signal_fence(std::memory_order_seq_cst);
    std::memcpy(head->magic, kMagic, sizeof kMagic);
    return write_head(journal);
}

char* journal_text(const Journal* journal)
{
    return journal->bytes + sizeof(Head);
}

int set_journal_length(Journal* journal, size_t length)
{
    Head* head = head_of(journal);
    if (!journal->is_mapped)
    {
        const size_t from = std::min(journal->written, length);
        const int error = write_at(&journal->file, journal_text(journal) + from, length - from, sizeof(Head) + from);
        if (error != 0)
            return error;
        journal->written = length;
    }
    publish(head->states[head->turn & 1].length, length);
    return write_head(journal);
}

int empty_journal(Journal* journal, uint64_t frames_end, uint64_t text_before, const void* last, size_t count)
{
    Head* head = head_of(journal);
    State* next = &head->states[(head->turn + 1) & 1];
    const size_t checked = std::min(count, kCheckedBytes);
    next->frames_end = frames_end;
    next->length = 0;
    next->text_before = text_before;
    next->check = check_of(static_cast<const char*>(last) + (count - checked), checked);
    publish(head->turn, head->turn + 1);
    journal->written = 0;
    return write_head(journal);
}

void close_journal(Journal* journal, bool keep)
{
    if (journal->is_mapped)
        unmap_file(journal->bytes, journal->size);
    else
        std::free(journal->bytes);
    if (!keep)
        remove_file(journal->path);
    close_file(&journal->file);
    std::free(journal->path);
    *journal = {};
}

}  // namespace orvlog::log_stream
