#include "tools/report/report-compare.h"

#include "inspect/pixels/pictures.h"
#include "tools/shared/source.h"

#include <algorithm>

namespace orvlog::tool
{

namespace
{

using namespace orvlog::inspect;

constexpr uint64_t kRowsInBlock = 8192;
constexpr uint64_t kMostDifferences = 500000;
constexpr size_t kMostOfOneCall = 100;
constexpr size_t kLongestValue = 1000;

std::string value_json(const std::optional<std::string>& value)
{
    return value ? text_json(value->substr(0, kLongestValue)) : "null";
}

std::string differences_json(const std::vector<Difference>& differences)
{
    if (differences.empty())
        return "0";
    std::string json = "[";
    for (size_t i = 0; i < std::min(differences.size(), kMostOfOneCall); ++i)
    {
        const Difference& one = differences[i];
        json.append(i == 0 ? "[" : ",[").append(text_json(one.path)).append(",").append(text_json(one.attribute));
        json.append(",").append(value_json(one.a)).append(",").append(value_json(one.b));
        json.append(",").append(std::to_string(one.at)).append(",").append(std::to_string(one.count)).append("]");
    }
    return json.append("]");
}

OpenLog opener(ReportedLog& log)
{
    return [&log]() -> std::shared_ptr<std::istream> { return log.log().pass(); };
}

std::unique_ptr<Columns> new_rows()
{
    return std::make_unique<Columns>(std::vector<std::string>{"kind", "a", "b", "moved", "twice", "differences"});
}

const char* truth(bool value)
{
    return value ? "true" : "false";
}

}  // namespace

ReportCompare::ReportCompare(ReportedLog& a, ReportedLog& b, const ReportSettings& settings)
    : a_(a), b_(b), settings_(settings), rows_(new_rows())
{
}

// Calls that belong together get the same number.
void ReportCompare::number(const Step& step)
{
    const uint64_t side = step.b == nullptr                ? CallNumber::kInA
                          : step.a == nullptr              ? CallNumber::kInB
                          : step.kind == StepKind::changed ? CallNumber::kChanged
                                                           : CallNumber::kSame;
    const uint64_t value = 4 * row_ + side;
    if (step.a != nullptr)
        numbers_a_.add({step.a->place.byte, value});
    if (step.b != nullptr)
        numbers_b_.add({step.b->place.byte, value});
}

void ReportCompare::add_step(Blocks& blocks, const Step& step)
{
    ++row_;
    number(step);
    ++counts_[static_cast<size_t>(step.kind)];
    const int64_t a = step.a != nullptr ? a_.places().of(step.a->place.byte) : -1;
    const int64_t b = step.b != nullptr ? b_.places().of(step.b->place.byte) : -1;
    if (a < 0 && b < 0)
        return;
    int64_t moved = -1;
    if (step.moved)
        moved = (step.a != nullptr ? b_ : a_).places().of(step.moved->byte);
    const bool told = differences_ < kMostDifferences;
    differences_ += step.differences.size();
    rows_->add(static_cast<int64_t>(step.kind));
    rows_->add(a);
    rows_->add(b);
    rows_->add(moved);
    rows_->add(int64_t{step.twice ? 1 : 0});
    rows_->add_json(told ? differences_json(step.differences) : "0");
    if (rows_->rows() >= kRowsInBlock)
        end_block(blocks);
}

void ReportCompare::end_block(Blocks& blocks)
{
    if (rows_->rows() == 0)
        return;
    blocks_.append(blocks_.empty() ? "" : ",").append("{\"first\":").append(std::to_string(first_row_));
    blocks_.append(",\"count\":").append(std::to_string(rows_->rows()));
    blocks_.append(",\"list\":").append(text_json(blocks.add_deflated(rows_->json()))).append("}");
    first_row_ += rows_->rows();
    rows_ = new_rows();
}

bool ReportCompare::align(Blocks& blocks)
{
    Progress progress(2 * a_.log().size());
    AlignOptions options;
    options.progress = [&](int pass, uint64_t bytes) { progress.show(pass == 1 ? bytes : a_.log().size() + bytes); };
    const AlignOutcome outcome = align_logs(opener(a_), opener(b_), options,
                                            [&](const Step& step)
                                            {
                                                add_step(blocks, step);
                                                return blocks.good();
                                            });
    if (outcome.no_room)
        why_ = "no room for a temporary file with a digest of each call";
    end_block(blocks);
    if (!outcome.roots.empty())
        roots_ = differences_json(outcome.roots);
    return why_.empty();
}

// Pages in front of this one that nobody told of.
void ReportCompare::add_same_pages(uint32_t up_to)
{
    while (++pages_told_ < up_to)
        if (settings_.pages.empty() || a_.wants(pages_told_))
        {
            const std::string page = std::to_string(pages_told_);
            pages_.append(pages_.empty() ? "" : ",").append("{\"a\":").append(page).append(",\"b\":").append(page);
            pages_.append(",\"same\":true,\"pixels\":0,\"area\":null,\"first\":0,\"call_a\":\"\",\"call_b\":\"\","
                          "\"cause_a\":\"\",\"cause_b\":\"\",\"in_layer\":false,\"at_end\":false,\"picture\":null}");
        }
}

void ReportCompare::add_page(Blocks& blocks, const PageDifference& page)
{
    add_same_pages(page.page_a != 0 ? page.page_a : page.page_b);
    if (!a_.wants(page.page_a != 0 ? page.page_a : page.page_b))
        return;
    std::string picture = "null";
    if (page.end.pixels > 0 && page.page_a != 0 && page.page_b != 0)
    {
        const std::string png = picture_png(marked_picture(picture_of(page.a.end), picture_of(page.b.end), 0));
        picture = png.empty() ? "null" : text_json(blocks.add_plain(png));
    }
    pages_.append(pages_.empty() ? "" : ",").append("{\"a\":").append(std::to_string(page.page_a));
    pages_.append(",\"b\":").append(std::to_string(page.page_b)).append(",\"same\":false,\"pixels\":");
    pages_.append(std::to_string(page.end.pixels)).append(",\"area\":");
    if (page.end.pixels == 0)
        pages_.append("null");
    else
        for (const int side : {page.end.box.x0, page.end.box.y0, page.end.box.x1, page.end.box.y1})
            pages_.append(pages_.ends_with(':') ? "[" : ",").append(std::to_string(side));
    pages_.append(page.end.pixels == 0 ? "" : "]").append(",\"first\":").append(std::to_string(page.first.pixels));
    pages_.append(",\"call_a\":").append(text_json(page.call_a));
    pages_.append(",\"call_b\":").append(text_json(page.call_b));
    pages_.append(",\"cause_a\":").append(text_json(page.cause_a));
    pages_.append(",\"cause_b\":").append(text_json(page.cause_b));
    pages_.append(",\"in_layer\":").append(truth(page.in_layer)).append(",\"at_end\":").append(truth(page.at_end));
    pages_.append(",\"picture\":").append(picture).append("}");
}

bool ReportCompare::compare_pages(Blocks& blocks)
{
    const auto side = [this](ReportedLog& log)
    {
        PixelSide one;
        one.open = opener(log);
        one.files = orvlog::reader::LogFiles(log.name(), settings_.folders);
        one.kind = log.kind();
        return one;
    };
    const PixelDiffOutcome outcome = orvlog::inspect::compare_pages(
        side(a_), numbers_a_, side(b_), numbers_b_, 0, [&](const PageDifference& page) { add_page(blocks, page); });
    if (outcome.no_room)
        why_ = "no room for a temporary file with what each step draws";
    const uint64_t both = std::min(a_.kind().faces, b_.kind().faces);
    add_same_pages(static_cast<uint32_t>(std::min<uint64_t>(both, UINT32_MAX - 1)) + 1);
    return why_.empty();
}

bool ReportCompare::add(Blocks& blocks)
{
    if (!align(blocks) || !compare_pages(blocks))
        return false;
    if (differences_ > kMostDifferences)
        note_ = "of the later calls it is told that they differ, and not in what: there are too many";
    return true;
}

std::string ReportCompare::json() const
{
    std::string json = "{\"counts\":{\"same\":" + std::to_string(counts_[0]);
    json.append(",\"changed\":").append(std::to_string(counts_[1]));
    json.append(",\"missing\":").append(std::to_string(counts_[2]));
    json.append(",\"added\":").append(std::to_string(counts_[3]));
    json.append("},\"roots\":").append(roots_).append(",\"blocks\":[").append(blocks_);
    json.append("],\"pages\":[").append(pages_).append("],\"note\":").append(note_.empty() ? "null" : text_json(note_));
    return json.append("}");
}

}  // namespace orvlog::tool
