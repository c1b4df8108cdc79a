// The index of a repacked log in files that are bent: what is taken from it leads to nothing beyond the file, and
// pieces of the log end. The first byte says whether the sums over the index are made right again.

#include "fuzz/fuzz.h"
#include "reader/text/log-events.h"
#include "reader/text/log-index.h"
#include "reader/text/log-pieces.h"

#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

using orvlog::fuzz::expect;
using namespace orvlog::reader;

namespace
{

void read_pieces(const std::string& file, const std::shared_ptr<const LogIndex>& index, std::vector<LogPiece> pieces)
{
    uint64_t due = 0;
    for (const LogPiece& piece : pieces)
    {
        expect(piece.begin < piece.end && piece.end <= index->text_size, "pieces are of the text");
        due += piece.end - piece.begin;
    }
    LogPieces log(std::make_unique<std::istringstream>(file), index, std::move(pieces));
    log.fit();
    LogEvents events(log);
    uint64_t count = 0;
    for (Event event; events.next(event) && count < 100000; ++count)
    {
    }
    expect(events.bytes_used() <= due, "no more is read than there is");
}

void look(const std::string& file)
{
    std::istringstream source(file);
    std::string why;
    std::optional<LogIndex> found = read_log_index(source, why);
    if (!found)
        return;
    const auto index = std::make_shared<const LogIndex>(*std::move(found));
    if (index->text_size > uint64_t{1} << 24)
        return;
    for (const uint64_t number : {uint64_t{0}, uint64_t{5}, uint64_t{100000}, UINT64_MAX})
    {
        for (const auto& stretch :
             {stretch_of_ids(*index, number, number), stretch_of_line(*index, number), stretch_of_byte(*index, number)})
        {
            if (!stretch)
                continue;
            read_pieces(file, index, pieces_from(*index, *stretch));
            read_pieces(file, index, pieces_of(*index, *stretch));
            if (index->has_pages)
                read_pieces(file, index, pieces_of_pages(*index, 1, 1, Resources::painted, stretch));
        }
    }
    if (index->has_pages)
        for (const Resources resources : {Resources::none, Resources::painted, Resources::all})
            read_pieces(file, index, pieces_of_pages(*index, 1, 2, resources));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    orvlog::fuzz::Choices choices(data, size);
    const bool mend = choices.byte() % 2 == 1;
    std::string file(choices.rest(), choices.rest() + choices.rest_size());
    look(file);
    std::istringstream source(file);
    std::string why;
    std::optional<LogIndex> index = read_log_index(source, why);
    if (!mend || !index || index->frames.empty())
        return 0;
    // What is read is written the same, and read again.
    const LogIndex::Frame& last = index->frames.back();
    const std::string packed = write_log_index(*index);
    look(file.substr(0, last.place + last.file_size) + packed +
         write_seek_table(*index, static_cast<uint32_t>(packed.size())));
    return 0;
}
