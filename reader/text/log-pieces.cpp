#include "reader/text/log-pieces.h"

#include "reader/text/log-frames.h"
#include "reader/text/log-repeats.h"

#include <algorithm>

namespace orvlog::reader
{

namespace
{

using Frame = LogIndex::Frame;

uint64_t end_of_run(const LogIndex& index, size_t run)
{
    return run + 1 < index.runs.size() ? index.runs[run + 1].byte : index.text_size;
}

// The drawings whose calls are wanted.
std::vector<bool> wanted_drawings(const LogIndex& index, uint32_t first, uint32_t last, Resources resources,
                                  const std::optional<Stretch>& up_to)
{
    std::vector<bool> wanted(index.drawings.size());
    for (uint32_t i = 0; i < index.drawings.size(); ++i)
    {
        const uint32_t page = index.drawings[i].page;
        wanted[i] = page == 0 ? resources == Resources::all : first <= page && page <= last;
    }
    for (size_t i = 0; up_to && i < index.runs.size(); ++i)
        if (index.runs[i].owner != kNobody && index.runs[i].byte < up_to->end && end_of_run(index, i) > up_to->begin)
            wanted[index.runs[i].owner] = true;
    std::vector<uint32_t> open;
    for (uint32_t i = 0; resources == Resources::painted && i < wanted.size(); ++i)
        if (wanted[i])
            open.push_back(i);
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

// From the last frame that begins between two calls and of which `is_before` holds, to the next such frame of which
// `is_behind` holds.
template <typename Before, typename Behind>
std::optional<Stretch> find_stretch(const LogIndex& index, Before is_before, Behind is_behind)
{
    std::optional<Stretch> found;
    for (const Frame& frame : index.frames)
    {
        if (frame.within)
            continue;
        if (is_before(frame))
            found = Stretch{frame.byte, index.text_size, frame.line};
        else if (found && is_behind(frame))
        {
            found->end = frame.byte;
            break;
        }
    }
    return found;
}

uint32_t word_of(const char* bytes)
{
    uint32_t word = 0;
    for (int i = 0; i < 4; ++i)
        word |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[i])) << 8 * i;
    return word;
}

}  // namespace

std::optional<Stretch> stretch_of_ids(const LogIndex& index, uint64_t first, uint64_t last)
{
    if (!index.ids_rise)
        return std::nullopt;
    // Of frames in which no paint begins nothing is told.
    return find_stretch(
        index, [first](const Frame& frame) { return frame.first_id <= first && frame.first_id != kNoNumber; },
        [last](const Frame& frame) { return frame.first_id > last && frame.first_id != kNoNumber; });
}

std::optional<Stretch> stretch_of_line(const LogIndex& index, uint64_t line)
{
    return find_stretch(
        index, [line](const Frame& frame) { return frame.line <= line; }, [](const Frame&) { return true; });
}

std::optional<Stretch> stretch_of_byte(const LogIndex& index, uint64_t byte)
{
    return find_stretch(
        index, [byte](const Frame& frame) { return frame.byte <= byte; }, [](const Frame&) { return true; });
}

std::vector<LogPiece> pieces_of_pages(const LogIndex& index, uint32_t first, uint32_t last, Resources resources,
                                      const std::optional<Stretch>& up_to)
{
    const std::vector<bool> wanted = wanted_drawings(index, first, last, resources, up_to);
    const uint64_t to = up_to ? up_to->end : index.text_size;
    std::vector<LogPiece> pieces;
    uint64_t kept = 0;
    for (size_t i = 0; i < index.runs.size(); ++i)
    {
        const LogIndex::Run& run = index.runs[i];
        const uint64_t end = end_of_run(index, i);
        if (run.owner == kNobody)
            pieces.push_back({run.byte, end, run.line, kept});
        else if (wanted[run.owner] && run.byte < to)
            pieces.push_back({run.byte, std::min(end, to), run.line, kNoNumber});
        kept += run.owner == kNobody ? end - run.byte : 0;
    }
    return pieces;
}

std::vector<LogPiece> pieces_of(const LogIndex& index, const Stretch& stretch)
{
    if (stretch.begin <= index.head_size)
        return {{0, stretch.end, 1, kNoNumber}};
    // An index with pages has a copy of what is before the first of them.
    const uint64_t kept = index.has_pages && index.head_size <= index.kept.size() ? 0 : kNoNumber;
    return {{0, index.head_size, 1, kept}, {stretch.begin, stretch.end, stretch.line, kNoNumber}};
}

std::vector<LogPiece> pieces_from(const LogIndex& index, const Stretch& stretch)
{
    return pieces_of(index, {stretch.begin, index.text_size, stretch.line});
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
