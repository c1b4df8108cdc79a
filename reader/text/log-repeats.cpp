#include "reader/text/log-repeats.h"

#include "reader/text/log-frames.h"

#include <algorithm>

namespace orvlog::reader
{

namespace
{

constexpr uint32_t kRepeatMagic = 0x184D2A5C;
constexpr std::string_view kSignature = "ORVLOGRP";
constexpr size_t kFrameHead = 8;
// Signature, place, size in the file, size of the text, size of the own text.
constexpr size_t kRepeatHead = 8 + 8 + 4 + 4 + 4;

void put(std::string& bytes, uint64_t value, size_t size)
{
    for (size_t i = 0; i < size; ++i)
        bytes += static_cast<char>(value >> 8 * i);
}

uint64_t take(std::string_view bytes, size_t at, size_t size)
{
    uint64_t value = 0;
    for (size_t i = 0; i < size; ++i)
        value |= static_cast<uint64_t>(static_cast<unsigned char>(bytes[at + i])) << 8 * i;
    return value;
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

// Frames that decompress to more than this many times their size aren't taken.
constexpr uint64_t kMostTimes = 65536;

bool is_plausible(uint64_t file_size, uint64_t text_size)
{
    return text_size <= kLargestFrameText && text_size / kMostTimes <= file_size;
}

}  // namespace

bool is_repeat(std::string_view head)
{
    return head.size() >= kFrameHead + kSignature.size() && take(head, 0, 4) == kRepeatMagic &&
           head.substr(kFrameHead).starts_with(kSignature);
}

std::string repeat_frame(std::string_view text, int level, const RepeatedFrame& earlier, std::string_view earlier_text)
{
    const std::string own = compressed_frame(text, level, earlier_text);
    std::string bytes;
    put(bytes, kRepeatMagic, 4);
    put(bytes, kRepeatHead + own.size(), 4);
    bytes += kSignature;
    put(bytes, earlier.place, 8);
    put(bytes, earlier.file_size, 4);
    put(bytes, earlier.text_size, 4);
    put(bytes, text.size(), 4);
    return bytes + own;
}

std::optional<std::string> repeat_text(std::istream& file, uint64_t place, std::string_view frame)
{
    if (frame.size() < kRepeatHead || !frame.starts_with(kSignature))
        return std::nullopt;
    const RepeatedFrame earlier{take(frame, 8, 8), static_cast<uint32_t>(take(frame, 16, 4)),
                                static_cast<uint32_t>(take(frame, 20, 4))};
    const auto size = static_cast<uint32_t>(take(frame, 24, 4));
    if (earlier.place >= place || earlier.file_size > place - earlier.place ||
        !is_plausible(earlier.file_size, earlier.text_size) || size > kLargestFrameText)
        return std::nullopt;
    const std::string bytes = read_bytes(file, earlier.place, earlier.file_size);
    const std::optional<std::string> before = frame_text(bytes, earlier.text_size);
    return before ? frame_text(frame.substr(kRepeatHead), size, *before) : std::nullopt;
}

std::optional<std::string> file_frame_text(std::istream& file, uint64_t place, uint32_t file_size, uint32_t text_size)
{
    if (text_size > kLargestFrameText)
        return std::nullopt;
    const std::string bytes = read_bytes(file, place, file_size);
    if (bytes.size() != file_size)
        return std::nullopt;
    if (!is_repeat(bytes))
        return is_plausible(file_size, text_size) ? frame_text(bytes, text_size) : std::nullopt;
    std::optional<std::string> text = repeat_text(file, place, std::string_view(bytes).substr(kFrameHead));
    return text && text->size() == text_size ? std::move(text) : std::nullopt;
}

}  // namespace orvlog::reader
