// Frames of a repacked log whose text stands in the log before, all of it or most: decoders skip them, and what they
// hold is a frame that is made with an earlier one's text before it.

#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <string>
#include <string_view>

namespace orvlog::reader
{

// What a repeat's text was made with: a frame that is none itself, before it in the file.
struct RepeatedFrame
{
    uint64_t place = 0;
    uint32_t file_size = 0;
    uint32_t text_size = 0;
};

inline constexpr uint32_t kLargestFrameText = uint32_t{1} << 26;

// Whether a frame that begins like that, with 16 bytes at least, is a repeat.
bool is_repeat(std::string_view head);

// The bytes of a repeat: `text`, whose earlier form is that of `earlier`. They end in the checksum of the text.
std::string repeat_frame(std::string_view text, int level, const RepeatedFrame& earlier, std::string_view earlier_text);

// The text of a frame of `file`, which may be a repeat: `text_size` bytes. The file must be one that can be read
// anywhere; its place is lost. Nothing if it doesn't hold that.
std::optional<std::string> file_frame_text(std::istream& file, uint64_t place, uint32_t file_size, uint32_t text_size);

// The text of a repeat that begins at `place`, whatever its size; `frame` is what follows its first eight bytes.
std::optional<std::string> repeat_text(std::istream& file, uint64_t place, std::string_view frame);

}  // namespace orvlog::reader
