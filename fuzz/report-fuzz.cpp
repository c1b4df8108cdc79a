// What a report tells of a log: of foreign text, too, it has an end, and there is no markup in it.

#include "fuzz/fuzz.h"
#include "inspect/reduce/log-scan.h"
#include "inspect/report/call-list.h"
#include "inspect/report/page-recorder.h"
#include "reader/tree/values.h"

#include <memory>
#include <sstream>
#include <string>
#include <vector>

using orvlog::fuzz::expect;
using namespace orvlog::inspect;

namespace
{

constexpr uint64_t kMostPixels = uint64_t{1} << 16;  // of a page that is drawn
constexpr uint64_t kMostBytes = uint64_t{1} << 24;   // of a report

// Lists the calls, and tells of each page whether it is drawn.
std::vector<bool> list_calls(const std::string& log, CallList& list)
{
    std::istringstream source(log);
    KeptText kept(source);
    std::istream text(&kept);
    orvlog::reader::ElementReader elements(text);
    elements.split_nested = true;
    elements.on_comment = [&list](const orvlog::reader::Comment& comment) { list.warn(comment); };
    std::vector<bool> drawn{false};
    while (const orvlog::reader::Element* call = elements.next())
    {
        const uint64_t end = elements.events().text_bytes();
        list.add(*call, kept.text(call->place.byte, end));
        kept.forget(end);
        if (call->name != "ORV_face_start")
            continue;
        const orvlog::reader::Element* face = call->child("ORV_FaceProperties");
        const uint64_t width = face != nullptr ? orvlog::reader::read_uint(*face, "fp_WidthInPixels") : 0;
        const uint64_t height = face != nullptr ? orvlog::reader::read_uint(*face, "fp_HeightInPixels") : 0;
        drawn.push_back(width * height <= kMostPixels);
    }
    list.finish();
    return drawn;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string log(reinterpret_cast<const char*>(data), size);
    std::string report;
    Blocks blocks(
        [&report](std::string_view text)
        {
            report += text;
            return report.size() < kMostBytes;
        });
    CallListOptions listing;
    listing.most_calls = 1000;
    listing.most_bytes = kMostBytes / 2;
    listing.wanted = [](uint32_t) { return true; };
    listing.objects = [](const orvlog::reader::Element&, int64_t) { return std::vector<int64_t>{}; };
    CallList list(blocks, std::move(listing));
    const std::vector<bool> drawn = list_calls(log, list);
    expect(list.places().count() <= list.calls(), "no more calls are listed than there are");
    expect((list.calls_json() + list.texts_json()).find('<') == std::string::npos, "no markup comes through");
    std::istringstream source(log);
    const orvlog::replay::LogKind kind = orvlog::replay::examine(source);
    PageOptions options;
    options.files = orvlog::reader::LogFiles("/nonexistent/log");
    options.wanted = [&drawn](uint32_t page) { return page < drawn.size() && drawn[page]; };
    const auto open = [&log]() -> std::shared_ptr<std::istream> { return std::make_shared<std::istringstream>(log); };
    for (const RecordedPage& page : record_pages(open, kind, list.places(), blocks, options).pages)
        expect((page.picture + page.steps + page.effects).find('<') == std::string::npos, "nor of a page");
    return 0;
}
