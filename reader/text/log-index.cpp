#include "reader/text/log-index.h"

#include "reader/text/log-frames.h"

#include <algorithm>
#include <limits>

namespace orvlog::reader
{

namespace
{

constexpr uint32_t kIndexMagic = 0x184D2A5B;
constexpr uint32_t kTableMagic = 0x184D2A5E;
constexpr uint32_t kFooterMagic = 0x8F92EAB1;
constexpr int kLevel = 9;
constexpr std::string_view kSignature = "ORVLOGIX";
constexpr uint32_t kVersion = 1;
constexpr size_t kFrameHead = 8;
constexpr size_t kFooterSize = 9;
constexpr size_t kEntrySize = 12;
constexpr uint8_t kHasChecksums = 0x80;
constexpr uint32_t kSumOfNothing = 0x51D8E999;
// Signature, version, flags, sum of the table, sum of what follows, its size unpacked.
constexpr size_t kIndexHead = 8 + 4 + 4 + 8 + 8 + 8;
constexpr uint64_t kMostFrames = uint64_t{1} << 24;
constexpr uint32_t kIdsRise = 1;
constexpr uint32_t kHasPages = 2;
constexpr uint32_t kWithin = 1;
constexpr uint32_t kRepeated = 2;

uint64_t sum_of(std::string_view bytes)
{
    uint64_t sum = 0xCBF29CE484222325U;
    for (const char byte : bytes)
        sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001B3U;
    return sum;
}

class Words
{
public:
    void put(uint64_t value, size_t size)
    {
        for (size_t i = 0; i < size; ++i)
            bytes_ += static_cast<char>(value >> 8 * i);
    }
    void put_32(uint64_t value)
    {
        put(value, 4);
    }
    void put_64(uint64_t value)
    {
        put(value, 8);
    }
    void put(std::string_view bytes)
    {
        bytes_ += bytes;
    }
    std::string take()
    {
        return std::move(bytes_);
    }
    const std::string& bytes() const
    {
        return bytes_;
    }

private:
    std::string bytes_;
};

// Reads words; from the first that isn't there on all are 0.
class WordsBack
{
public:
    explicit WordsBack(std::string_view bytes) : left_(bytes) {}

    uint64_t take(size_t size)
    {
        good_ = good_ && left_.size() >= size;
        if (!good_)
            return 0;
        uint64_t value = 0;
        for (size_t i = 0; i < size; ++i)
            value |= static_cast<uint64_t>(static_cast<unsigned char>(left_[i])) << 8 * i;
        left_.remove_prefix(size);
        return value;
    }
    uint32_t take_32()
    {
        return static_cast<uint32_t>(take(4));
    }
    uint64_t take_64()
    {
        return take(8);
    }
    // How many there are of something that takes `size` bytes at least; 0 if so many can't be there.
    size_t take_count(size_t size)
    {
        const uint64_t count = take_64();
        good_ = good_ && count <= left_.size() / size;
        return good_ ? static_cast<size_t>(count) : 0;
    }
    std::string_view take_text()
    {
        const std::string_view text = left_.substr(0, take_count(1));
        const std::string_view found(left_.data(), text.size());
        left_.remove_prefix(text.size());
        return found;
    }
    bool good() const
    {
        return good_;
    }
    bool at_end() const
    {
        return good_ && left_.empty();
    }

private:
    std::string_view left_;
    bool good_ = true;
};

std::string table_entries(const LogIndex& index)
{
    Words words;
    for (const LogIndex::Frame& frame : index.frames)
    {
        words.put_32(frame.file_size);
        words.put_32(frame.repeated ? 0 : frame.text_size);
        words.put_32(frame.repeated ? kSumOfNothing : frame.checksum);
    }
    return words.take();
}

void put_pages(Words& words, const LogIndex& index)
{
    words.put_64(index.warnings);
    words.put_64(index.pages);
    words.put_64(index.drawings.size());
    for (const LogIndex::Drawing& drawing : index.drawings)
    {
        words.put_32(drawing.page);
        words.put_64(drawing.paints.size());
        for (const uint32_t other : drawing.paints)
            words.put_32(other);
    }
    words.put_64(index.runs.size());
    for (const LogIndex::Run& run : index.runs)
    {
        words.put_32(run.owner);
        words.put_64(run.byte);
        words.put_64(run.line);
    }
    words.put_64(index.facts.size());
    for (const uint64_t fact : index.facts)
        words.put_64(fact);
    words.put_64(index.kept.size());
    words.put(index.kept);
}

// Where they stand in the file is in the table.
void put_frames(Words& words, const LogIndex& index)
{
    words.put_64(index.text_size);
    words.put_64(index.head_size);
    words.put_64(index.calls);
    words.put_64(index.frames.size());
    for (const LogIndex::Frame& frame : index.frames)
    {
        words.put_64(frame.line);
        words.put_64(frame.calls);
        words.put_64(frame.first_id);
        words.put_32(frame.text_size);
        words.put_32(frame.checksum);
        words.put((frame.within ? kWithin : 0) | (frame.repeated ? kRepeated : 0), 1);
    }
}

void take_pages(WordsBack& words, LogIndex& index)
{
    index.warnings = words.take_64();
    index.pages = static_cast<uint32_t>(words.take_64());
    index.drawings.resize(words.take_count(12));
    for (LogIndex::Drawing& drawing : index.drawings)
    {
        drawing.page = words.take_32();
        drawing.paints.resize(words.take_count(4));
        for (uint32_t& other : drawing.paints)
            other = words.take_32();
    }
    index.runs.resize(words.take_count(20));
    for (LogIndex::Run& run : index.runs)
    {
        run.owner = words.take_32();
        run.byte = words.take_64();
        run.line = words.take_64();
    }
    index.facts.resize(words.take_count(8));
    for (uint64_t& fact : index.facts)
        fact = words.take_64();
    index.kept = words.take_text();
}

bool take_frames(WordsBack& words, LogIndex& index)
{
    index.text_size = words.take_64();
    index.head_size = words.take_64();
    index.calls = words.take_64();
    if (words.take_count(33) != index.frames.size())
        return false;
    uint64_t byte = 0;
    for (LogIndex::Frame& frame : index.frames)
    {
        frame.line = words.take_64();
        frame.calls = words.take_64();
        frame.first_id = words.take_64();
        const uint32_t text_size = words.take_32();
        const uint32_t checksum = words.take_32();
        const uint64_t flags = words.take(1);
        frame.within = (flags & kWithin) != 0;
        frame.repeated = (flags & kRepeated) != 0;
        const bool as_in_table = frame.text_size == text_size && frame.checksum == checksum;
        if (text_size == 0 || (frame.repeated ? frame.text_size != 0 : !as_in_table))
            return false;
        frame.text_size = text_size;
        frame.checksum = checksum;
        frame.byte = byte;
        byte += text_size;
    }
    return words.good();
}

bool frames_fit(const LogIndex& index)
{
    const LogIndex::Frame* before = nullptr;
    uint64_t end = 0;
    for (const LogIndex::Frame& frame : index.frames)
    {
        const bool rises = before == nullptr ? frame.line == 1 && frame.calls == 0 && !frame.within
                                             : frame.line >= before->line && frame.calls >= before->calls;
        if (!rises || frame.calls > index.calls)
            return false;
        end = frame.byte + frame.text_size;
        before = &frame;
    }
    return end == index.text_size && index.head_size <= end;
}

bool drawings_fit(const LogIndex& index)
{
    uint32_t pages = 0;
    for (const LogIndex::Drawing& drawing : index.drawings)
    {
        pages += drawing.page != 0 ? 1 : 0;
        if (drawing.page != 0 && drawing.page != pages)
            return false;
        for (const uint32_t other : drawing.paints)
            if (other >= index.drawings.size() || index.drawings[other].page != 0)
                return false;
    }
    return pages == index.pages;
}

bool runs_fit(const LogIndex& index)
{
    uint64_t kept = 0;
    for (size_t i = 0; i < index.runs.size(); ++i)
    {
        const LogIndex::Run& run = index.runs[i];
        const uint64_t end = i + 1 < index.runs.size() ? index.runs[i + 1].byte : index.text_size;
        const bool first = i == 0 && (run.byte != 0 || run.line != 1);
        const bool falls = i > 0 && run.line < index.runs[i - 1].line;
        if (first || falls || end <= run.byte || (run.owner != kNobody && run.owner >= index.drawings.size()))
            return false;
        kept += run.owner == kNobody ? end - run.byte : 0;
    }
    return !index.runs.empty() && kept == index.kept.size();
}

std::string read_bytes(std::istream& file, uint64_t place, size_t size)
{
    std::string bytes(size, '\0');
    file.clear();
    file.seekg(static_cast<std::streamoff>(place));
    file.read(bytes.data(), static_cast<std::streamsize>(size));
    bytes.resize(static_cast<size_t>(std::max<std::streamsize>(file.gcount(), 0)));
    return bytes;
}

struct SeekTable
{
    uint64_t place = 0;  // of the frame that it is
    std::string entries;
    uint64_t frames = 0;
};

// The table that ends the file; nothing if there is none with checksums.
std::optional<SeekTable> read_seek_table(std::istream& file, uint64_t size)
{
    if (size < kFrameHead + kFooterSize)
        return std::nullopt;
    const std::string footer = read_bytes(file, size - kFooterSize, kFooterSize);
    WordsBack words(footer);
    SeekTable table;
    table.frames = words.take_32();
    const bool has_checksums = words.take(1) == kHasChecksums;
    if (words.take_32() != kFooterMagic || !has_checksums || table.frames > kMostFrames)
        return std::nullopt;
    const uint64_t whole = kFrameHead + table.frames * kEntrySize + kFooterSize;
    if (whole > size)
        return std::nullopt;
    table.place = size - whole;
    table.entries = read_bytes(file, table.place, static_cast<size_t>(whole - kFooterSize));
    WordsBack head(table.entries);
    if (head.take_32() != kTableMagic || head.take_32() != whole - kFrameHead)
        return std::nullopt;
    table.entries.erase(0, kFrameHead);
    return table;
}

// Where the table's frames stand, of which the last one is the index. False if the sizes don't lead to the table.
bool take_table(const SeekTable& table, LogIndex& index)
{
    WordsBack words(table.entries);
    uint64_t place = 0;
    index.frames.resize(static_cast<size_t>(table.frames - 1));
    for (LogIndex::Frame& frame : index.frames)
    {
        frame.place = place;
        frame.file_size = words.take_32();
        frame.text_size = words.take_32();
        frame.checksum = words.take_32();
        place += frame.file_size;
        if (frame.file_size == 0)
            return false;
    }
    return place + words.take_32() == table.place;
}

// The bytes of the last frame of the table, if that is an index; else nothing.
std::string find_index(std::istream& file, const SeekTable& table)
{
    const std::string last = table.entries.substr(table.entries.size() - kEntrySize);
    WordsBack words(last);
    const uint32_t size = words.take_32();
    if (size < kFrameHead + kIndexHead || size > kLargestIndex || size > table.place)
        return {};
    std::string bytes = read_bytes(file, table.place - size, size);
    const bool signed_so = std::string_view(bytes).substr(kFrameHead).starts_with(kSignature);
    return signed_so ? bytes : std::string();
}

// Empty, or what is wrong.
std::string take_index(std::string_view bytes, std::string_view entries, LogIndex& index)
{
    WordsBack head(bytes.substr(0, kFrameHead + kIndexHead));
    if (head.take_32() != kIndexMagic || head.take_32() != bytes.size() - kFrameHead)
        return "is damaged";
    head.take_64();
    if (head.take_32() != kVersion)
        return "is of a version that is not known";
    const uint32_t flags = head.take_32();
    const bool is_of_table = head.take_64() == sum_of(entries);
    const uint64_t sum = head.take_64();
    const uint64_t size = head.take_64();
    const std::string_view packed = bytes.substr(kFrameHead + kIndexHead);
    if (!is_of_table)
        return "belongs to other frames";
    if (sum != sum_of(packed) || size > kLargestIndex)
        return "is damaged";
    const std::optional<std::string> text = frame_text(packed, static_cast<size_t>(size));
    if (!text)
        return "is damaged";
    WordsBack words(*text);
    index.ids_rise = (flags & kIdsRise) != 0;
    index.has_pages = (flags & kHasPages) != 0;
    if (!take_frames(words, index))
        return "is damaged";
    if (index.has_pages)
        take_pages(words, index);
    const bool fits =
        words.at_end() && frames_fit(index) && (!index.has_pages || (drawings_fit(index) && runs_fit(index)));
    return fits ? "" : "does not fit the frames";
}

}  // namespace

std::string write_log_index(const LogIndex& index)
{
    Words words;
    put_frames(words, index);
    Words pages;
    if (index.has_pages)
        put_pages(pages, index);
    const bool has_pages = index.has_pages && words.bytes().size() + pages.bytes().size() <= kLargestIndex;
    if (has_pages)
        words.put(pages.bytes());
    const std::string text = words.take();
    const std::string packed = compressed_frame(text, kLevel);
    if (packed.empty() || text.size() > kLargestIndex || packed.size() > std::numeric_limits<uint32_t>::max() / 2)
        return {};
    Words frame;
    frame.put_32(kIndexMagic);
    frame.put_32(kIndexHead + packed.size());
    frame.put(kSignature);
    frame.put_32(kVersion);
    frame.put_32((index.ids_rise ? kIdsRise : 0) | (has_pages ? kHasPages : 0));
    frame.put_64(sum_of(table_entries(index)));
    frame.put_64(sum_of(packed));
    frame.put_64(text.size());
    frame.put(packed);
    return frame.take();
}

std::string write_seek_table(const LogIndex& index, uint32_t index_size)
{
    const size_t frames = index.frames.size() + (index_size > 0 ? 1 : 0);
    Words table;
    table.put_32(kTableMagic);
    table.put_32(frames * kEntrySize + kFooterSize);
    table.put(table_entries(index));
    if (index_size > 0)
    {
        table.put_32(index_size);
        table.put_64(0);
    }
    table.put_32(frames);
    table.put(kHasChecksums, 1);
    table.put_32(kFooterMagic);
    return table.take();
}

std::optional<LogIndex> read_log_index(std::istream& file, std::string& why)
{
    why.clear();
    file.clear();
    file.seekg(0, std::ios::end);
    const std::streamoff size = file.tellg();
    const std::optional<SeekTable> table = size > 0 ? read_seek_table(file, static_cast<uint64_t>(size)) : std::nullopt;
    if (!table || table->frames == 0)
        return std::nullopt;
    const std::string bytes = find_index(file, *table);
    if (bytes.empty())
        return std::nullopt;
    LogIndex index;
    if (!take_table(*table, index))
    {
        why = "the table for seeking does not fit the file";
        return std::nullopt;
    }
    const std::string entries = table->entries.substr(0, index.frames.size() * kEntrySize);
    const std::string wrong = take_index(bytes, entries, index);
    if (wrong.empty())
        return index;
    why = "the index " + wrong;
    return std::nullopt;
}

}  // namespace orvlog::reader
