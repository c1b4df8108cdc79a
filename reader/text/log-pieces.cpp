#include "reader/text/log-pieces.h"

#include "reader/text/log-frames.h"
#include "reader/text/log-repeats.h"

#include <algorithm>

namespace orvlog::reader
{

namespace
{

using Frame = LogIndex::Frame;

// The drawings whose calls are wanted.
std::vector<bool> wanted_drawings(const LogIndex& index, uint32_t first, uint32_t last, Resources resources)
{
    std::vector<bool> wanted(index.drawings.size());
    std::vector<uint32_t> open;
    for (uint32_t i = 0; i < index.drawings.size(); ++i)
    {
        const uint32_t page = index.drawings[i].page;
        wanted[i] = page == 0 ? resources == Resources::all : first <= page && page <= last;
        if (wanted[i] && resources == Resources::painted)
            open.push_back(i);
    }
    while (!open.empty())
    {
        const uint32_t drawing = open.back();
        open.pop_back();
        for (const uint32_t other : index.drawings[drawing].paints)
            if (!wanted[other])
            {
                wanted[other] = true;
                open.push_back(other);
            }
    }
    return wanted;
}

std::vector<LogPiece> pieces_from_frame(const LogIndex& index, const Frame& frame)
{
    if (frame.byte <= index.head_size)
        return {{0, index.text_size, 1, kNoNumber}};
    // An index with pages has a copy of what is before the first of them.
    const uint64_t kept = index.has_pages && index.head_size <= index.kept.size() ? 0 : kNoNumber;
    return {{0, index.head_size, 1, kept}, {frame.byte, index.text_size, frame.line, kNoNumber}};
}

// The last frame that begins between two calls and of which `is_before` holds.
template <typename Before> std::vector<LogPiece> pieces_from(const LogIndex& index, Before is_before)
{
    const Frame* found = nullptr;
    for (const Frame& frame : index.frames)
        if (!frame.within && is_before(frame))
            found = &frame;
    return found != nullptr ? pieces_from_frame(index, *found) : std::vector<LogPiece>();
}

uint32_t word_of(const char* bytes)
{
    uint32_t word = 0;
    for (int i = 0; i < 4; ++i)
        word |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[i])) << 8 * i;
    return word;
}

}  // namespace

std::vector<LogPiece> pieces_of_pages(const LogIndex& index, uint32_t first, uint32_t last, Resources resources)
{
    const std::vector<bool> wanted = wanted_drawings(index, first, last, resources);
    std::vector<LogPiece> pieces;
    uint64_t kept = 0;
    for (size_t i = 0; i < index.runs.size(); ++i)
    {
        const LogIndex::Run& run = index.runs[i];
        const uint64_t end = i + 1 < index.runs.size() ? index.runs[i + 1].byte : index.text_size;
        const bool of_nobody = run.owner == kNobody;
        if (of_nobody || wanted[run.owner])
            pieces.push_back({run.byte, end, run.line, of_nobody ? kept : kNoNumber});
        kept += of_nobody ? end - run.byte : 0;
    }
    return pieces;
}

std::vector<LogPiece> pieces_from_id(const LogIndex& index, uint64_t id)
{
    if (!index.ids_rise)
        return {};
    return pieces_from(index, [id](const Frame& frame) { return frame.first_id <= id; });
}

std::vector<LogPiece> pieces_from_line(const LogIndex& index, uint64_t line)
{
    return pieces_from(index, [line](const Frame& frame) { return frame.line <= line; });
}

std::vector<LogPiece> pieces_from_byte(const LogIndex& index, uint64_t byte)
{
    return pieces_from(index, [byte](const Frame& frame) { return frame.byte <= byte; });
}

class LogPieces::Bytes : public std::streambuf
{
public:
    Bytes(std::unique_ptr<std::istream> file, const LogIndex& index, std::vector<LogPiece> pieces)
        : file_(std::move(file)), index_(index), pieces_(std::move(pieces))
    {
    }

    bool fit(size_t most)
    {
        const Frame* last = nullptr;
        for (const LogPiece& piece : pieces_)
            for (auto frame = frame_at(piece.begin);
                 piece.kept == kNoNumber && frame != index_.frames.end() && most > 0; ++frame)
            {
                if (frame->byte >= piece.end)
                    break;
                if (&*frame == last)
                    continue;
                last = &*frame;
                --most;
                if (!is_there(*frame))
                    return false;
            }
        return true;
    }

private:
    std::vector<Frame>::const_iterator frame_at(uint64_t byte) const
    {
        const auto behind = std::upper_bound(index_.frames.begin(), index_.frames.end(), byte,
                                             [](uint64_t place, const Frame& frame) { return place < frame.byte; });
        return behind == index_.frames.begin() ? index_.frames.end() : behind - 1;
    }

    std::string read_file(uint64_t place, size_t size)
    {
        std::string bytes(size, '\0');
        file_->clear();
        file_->seekg(static_cast<std::streamoff>(place));
        file_->read(bytes.data(), static_cast<std::streamsize>(size));
        bytes.resize(static_cast<size_t>(std::max<std::streamsize>(file_->gcount(), 0)));
        return bytes;
    }

    bool is_there(const Frame& frame)
    {
        if (frame.file_size < 8 || frame.text_size > kLargestFrameText)
            return false;
        const std::string head = read_file(frame.place, 4);
        const std::string end = read_file(frame.place + frame.file_size - 4, 4);
        return Frames::begin_with(head) && end.size() == 4 && word_of(end.data()) == frame.checksum;
    }

    // The text of the frame at `byte`, empty if it can't be had.
    std::string_view text_from(uint64_t byte)
    {
        const auto frame = frame_at(byte);
        if (frame == index_.frames.end() || frame->text_size > kLargestFrameText)
            return {};
        if (present_ != &*frame)
        {
            present_ = nullptr;
            text_ = file_frame_text(*file_, frame->place, frame->file_size, frame->text_size).value_or("");
            present_ = &*frame;
        }
        const uint64_t skipped = byte - frame->byte;
        return skipped < text_.size() ? std::string_view(text_).substr(static_cast<size_t>(skipped))
                                      : std::string_view();
    }

    int_type underflow() override
    {
        if (gptr() != egptr())
            return traits_type::to_int_type(*gptr());
        while (next_ < pieces_.size() && pieces_[next_].begin + done_ == pieces_[next_].end)
        {
            ++next_;
            done_ = 0;
        }
        if (next_ == pieces_.size())
            return traits_type::eof();
        const LogPiece& piece = pieces_[next_];
        const uint64_t left = piece.end - piece.begin - done_;
        std::string_view text = piece.kept != kNoNumber
                                    ? std::string_view(index_.kept).substr(static_cast<size_t>(piece.kept + done_))
                                    : text_from(piece.begin + done_);
        text = text.substr(0, static_cast<size_t>(std::min<uint64_t>(left, text.size())));
        if (text.empty())
            return traits_type::eof();
        done_ += text.size();
        // Nothing is put back into it.
        char* const begin = const_cast<char*>(text.data());
        setg(begin, begin, begin + text.size());
        return traits_type::to_int_type(*gptr());
    }

    // To the beginning only.
    pos_type seekoff(off_type offset, std::ios::seekdir origin, std::ios::openmode) override
    {
        if (offset != 0 || origin != std::ios::beg)
            return pos_type(off_type(-1));
        next_ = 0;
        done_ = 0;
        setg(nullptr, nullptr, nullptr);
        return pos_type(0);
    }
    pos_type seekpos(pos_type place, std::ios::openmode which) override
    {
        return seekoff(off_type(place), std::ios::beg, which);
    }

    std::unique_ptr<std::istream> file_;
    const LogIndex& index_;
    std::vector<LogPiece> pieces_;
    size_t next_ = 0;
    uint64_t done_ = 0;
    const Frame* present_ = nullptr;
    std::string text_;
};

LogPieces::LogPieces(std::unique_ptr<std::istream> file, std::shared_ptr<const LogIndex> index,
                     std::vector<LogPiece> pieces)
    : std::istream(nullptr), index_(std::move(index))
{
    uint64_t read = 0;
    for (const LogPiece& piece : pieces)
    {
        jumps_.push_back({read, {piece.begin, piece.line}});
        read += piece.end - piece.begin;
    }
    bytes_ = std::make_unique<Bytes>(std::move(file), *index_, std::move(pieces));
    rdbuf(bytes_.get());
}

LogPieces::~LogPieces() = default;

bool LogPieces::fit(size_t most) const
{
    return bytes_->fit(most);
}

}  // namespace orvlog::reader
