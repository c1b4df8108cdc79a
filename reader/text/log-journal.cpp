#include "reader/text/log-journal.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>
#include <system_error>

namespace orvlog::reader
{

namespace
{

namespace fs = std::filesystem;

constexpr std::string_view kMagic = "ORVLOGZJ";
constexpr size_t kHeadSize = 128;
constexpr size_t kStatesAt = 32;
constexpr size_t kStateSize = 32;
constexpr uint64_t kLongestText = uint64_t{64} << 20;
constexpr size_t kCheckedBytes = 8;
constexpr uint64_t kFooterMagic = 0x8F92EAB1;

uint64_t number_at(std::string_view bytes, size_t at, size_t size)
{
    uint64_t value = 0;
    for (size_t i = size; i-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

// Up to `size` bytes of a file.
std::string bytes_at(const fs::path& path, uint64_t place, size_t size)
{
    std::string bytes(size, '\0');
    std::ifstream file(path, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(place));
    file.read(bytes.data(), static_cast<std::streamsize>(size));
    bytes.resize(static_cast<size_t>(std::max<std::streamsize>(file.gcount(), 0)));
    return bytes;
}

// FNV-1a.
uint64_t check_of(std::string_view bytes)
{
    uint64_t sum = 0xCBF29CE484222325;
    for (const char c : bytes)
        sum = (sum ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    return sum;
}

// A log with its table for seeking was closed: no text is missing in it.
bool has_seek_table(const fs::path& log, uint64_t size)
{
    const std::string last = size >= 4 ? bytes_at(log, size - 4, 4) : std::string();
    return last.size() == 4 && number_at(last, 0, 4) == kFooterMagic;
}

}  // namespace

JournalState read_journal(const fs::path& path, Journal& journal)
{
    std::error_code error;
    const fs::path beside = path.string() + ".journal";
    if (!fs::is_regular_file(beside, error) || !fs::is_regular_file(path, error))
        return JournalState::none;
    const uint64_t log_size = fs::file_size(path, error);
    const std::string head = bytes_at(beside, 0, kHeadSize);
    if (head.find_first_not_of('\0') == std::string::npos)
        return JournalState::none;
    if (error || head.size() < kHeadSize || !head.starts_with(kMagic) || number_at(head, 8, 4) != 1)
        return JournalState::foreign;
    const uint64_t text_at = number_at(head, 12, 4);
    const uint64_t turn = number_at(head, 24, 8);
    const size_t state = kStatesAt + kStateSize * (turn & 1);
    journal.frames_end = number_at(head, state, 8);
    const uint64_t length = number_at(head, state + 8, 8);
    const uint64_t check = number_at(head, state + 24, 8);
    if (journal.frames_end > log_size || length > kLongestText)
        return JournalState::foreign;
    const auto checked = static_cast<size_t>(std::min<uint64_t>(kCheckedBytes, journal.frames_end));
    if (check_of(bytes_at(path, journal.frames_end - checked, checked)) != check)
        return JournalState::foreign;
    if (length > 0 && has_seek_table(path, log_size))
        return JournalState::foreign;
    journal.text = bytes_at(beside, text_at, static_cast<size_t>(length));
    return journal.text.size() == length ? JournalState::belongs : JournalState::foreign;
}

std::string stored_frame(const std::string& text)
{
    // A window of 128 KB, which is the longest block, and neither a size nor a checksum.
    constexpr size_t kLongestBlock = size_t{128} << 10;
    std::string frame("\x28\xB5\x2F\xFD\x00\x38", 6);
    for (size_t at = 0; at < text.size() || at == 0;)
    {
        const size_t count = std::min(kLongestBlock, text.size() - at);
        const size_t word = count << 3 | (at + count == text.size() ? 1 : 0);
        for (int i = 0; i < 3; ++i)
            frame += static_cast<char>(word >> 8 * i & 0xFF);
        frame.append(text, at, count);
        at += std::max<size_t>(count, 1);
    }
    return frame;
}

}  // namespace orvlog::reader
