// Parts of a repacked log as a stream: its head, and what stands at some pages or from some call on, with what has to
// be known there of the rest. Memory: the index and the text of one frame.

#pragma once

#include "reader/text/log-events.h"
#include "reader/text/log-index.h"

#include <cstdint>
#include <istream>
#include <memory>
#include <optional>
#include <streambuf>
#include <string>
#include <vector>

namespace orvlog::reader
{

// Text of the log from `begin` to `end`, from `kept` on in the index's copy, or from the frames.
struct LogPiece
{
    uint64_t begin = 0;
    uint64_t end = 0;
    uint64_t line = 1;
    uint64_t kept = kNoNumber;
};

// Which resources come with pages.
enum class Resources
{
    none,
    painted,  // those that the pages paint, and those that these paint
    all
};

// Where a call begins, if it is in the log: on or behind the one frame's first call, before the other's.
struct Stretch
{
    uint64_t begin = 0;
    uint64_t end = 0;
    uint64_t line = 1;
};

// Of the paints with these ids, of the call on this line, or at this byte. Nothing if the index doesn't tell.
std::optional<Stretch> stretch_of_ids(const LogIndex& index, uint64_t first, uint64_t last);
std::optional<Stretch> stretch_of_line(const LogIndex& index, uint64_t line);
std::optional<Stretch> stretch_of_byte(const LogIndex& index, uint64_t byte);

// The pages, counted from 1, with all that begins and ends documents, drawings and resources in the whole log, and the
// client's comments. The index must have pages. With `up_to` the drawings that come there, whatever they are, and all
// only as far as its end, but for what belongs to no drawing; without pages, where `first` is above `last`, these
// alone.
std::vector<LogPiece> pieces_of_pages(const LogIndex& index, uint32_t first, uint32_t last, Resources resources,
                                      const std::optional<Stretch>& up_to = std::nullopt);

// The head of the log, and what stands there, to its end or to that of the log.
std::vector<LogPiece> pieces_of(const LogIndex& index, const Stretch& stretch);
std::vector<LogPiece> pieces_from(const LogIndex& index, const Stretch& stretch);

class LogPieces : public std::istream
{
public:
    // `file` is the log that the index is of.
    LogPieces(std::unique_ptr<std::istream> file, std::shared_ptr<const LogIndex> index, std::vector<LogPiece> pieces);
    ~LogPieces() override;
    LogPieces(const LogPieces&) = delete;
    LogPieces& operator=(const LogPieces&) = delete;

    // Whether the first frames that the pieces need, `most` at most, are in the file as the index tells.
    bool fit(size_t most = SIZE_MAX) const;

    const std::vector<Jump>& jumps() const
    {
        return jumps_;
    }
    const LogIndex& index() const
    {
        return *index_;
    }

private:
    class Bytes;

    std::shared_ptr<const LogIndex> index_;
    std::vector<Jump> jumps_;
    std::unique_ptr<Bytes> bytes_;
};

}  // namespace orvlog::reader
