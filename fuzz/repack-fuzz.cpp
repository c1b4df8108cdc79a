// Logs that are repacked: the text comes back byte for byte, the index fits, and a page that is read by it, without the
// rest, has the calls and the damage that it has in the whole log. The first byte says whether data that comes again is
// put aside.

#include "fuzz/fuzz.h"
#include "inspect/repack/log-repacker.h"
#include "reader/look/call-summary.h"
#include "reader/text/log-index.h"
#include "reader/text/log-pieces.h"
#include "reader/tree/element.h"

#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

using orvlog::fuzz::expect;
using namespace orvlog::reader;

namespace
{

std::string text_of(std::istream& file)
{
    CodedInput input(file);
    std::string text;
    std::vector<char> piece(1 << 16);
    for (size_t got = 0; (got = input.read(piece.data(), piece.size())) > 0;)
        text.append(piece.data(), got);
    return text;
}

struct Told
{
    std::vector<std::string> calls;  // of a page
    std::vector<Place> damage;       // of the log
    uint32_t pages = 0;

    bool operator==(const Told&) const = default;
};

// What is told of a page, and where the whole log is damaged.
Told tell(std::istream& log, uint32_t page)
{
    Told told;
    CallSummaries summaries;
    ElementReader elements(log, LogForm::log, Data::skip);
    elements.split_nested = true;
    elements.on_damage = [&told](const Damage& damage) { told.damage.push_back(damage.place); };
    while (const Element* element = elements.next())
    {
        if (!is_call_name(element->name))
            continue;
        const CallSummary call = summaries.next(*element);
        if (call.page == page)
            told.calls.push_back(std::string(element->name) + " " + std::to_string(element->place.line) + " " +
                                 call.op + call.colour);
    }
    told.pages = summaries.pages();
    return told;
}

void hold_pages(const std::string& text, const std::string& file, const LogIndex& index)
{
    const auto shared = std::make_shared<const LogIndex>(index);
    for (uint32_t page = 1; page <= std::min(index.pages, 3U); ++page)
    {
        std::istringstream whole(text);
        LogPieces part(std::make_unique<std::istringstream>(file), shared,
                       pieces_of_pages(index, page, page, Resources::none));
        expect(part.fit(), "frames are where the index says");
        expect(tell(whole, page) == tell(part, page), "a page is the same without the rest");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    orvlog::fuzz::Choices choices(data, size);
    const bool dedupe = choices.byte() % 2 == 1;
    const std::string log(choices.rest(), choices.rest() + choices.rest_size());
    std::string file;
    orvlog::inspect::RepackOptions options;
    options.level = 1;
    options.dedupe = dedupe;
    options.write = [&file](const void* bytes, size_t count)
    {
        file.append(static_cast<const char*>(bytes), count);
        return true;
    };
    std::istringstream source(log);
    const orvlog::inspect::RepackOutcome outcome = orvlog::inspect::repack(source, options);
    if (!outcome.is_log)
        return 0;
    std::istringstream again(log);
    const std::string text = text_of(again);
    std::istringstream packed(file);
    expect(text_of(packed) == text, "the text comes back");
    packed.clear();
    std::string why;
    const std::optional<LogIndex> index = read_log_index(packed, why);
    expect(index && index->text_size == text.size() && index->has_pages == outcome.has_pages, "the index fits");
    if (index->has_pages)
        hold_pages(text, file, *index);
    return 0;
}
