#include "inspect/report/call-list.h"

#include "inspect/report/flat-colour.h"
#include "inspect/report/outline.h"
#include "reader/look/call-address.h"
#include "reader/look/call-text.h"

#include <algorithm>
#include <cmath>

namespace orvlog::inspect
{

namespace
{

using reader::Element;

constexpr uint64_t kCallsInBlock = 4096;
constexpr size_t kOutlinesInBlock = size_t{4} << 20;
constexpr size_t kMostWarnings = 100;  // of a call
constexpr size_t kLongestText = 4096;
constexpr GGO_Matrix kIdentity = {{1, 0, 0, 1, 0, 0}};

const Element* in_member(const Element& call, std::string_view name)
{
    const Element* member = call.member(name);
    return member != nullptr ? member->first : nullptr;
}

int64_t count_clips(const Element& call)
{
    const Element* list = in_member(call, "clip");
    if (list == nullptr)
        list = in_member(call, "group_clip");
    int64_t count = 0;
    for (; list != nullptr; list = list->next)
        ++count;
    return count;
}

int64_t kind_number(std::string_view kind)
{
    const auto kinds = reader::call_kinds();
    const auto found = std::ranges::find(kinds, kind);
    return found - kinds.begin();
}

void add_box(Columns& columns, const std::optional<GGO_BoxFloat>& box)
{
    if (!box)
        return columns.add_null();
    std::string json = "[";
    for (const double value : {box->gbf_MinX, box->gbf_MinY, box->gbf_MaxX, box->gbf_MaxY})
        json.append(json.size() > 1 ? "," : "").append(number_json(std::round(value * 100) / 100 + 0.0));
    columns.add_json(json.append("]"));
}

std::string places_json(const std::vector<int64_t>& places)
{
    if (places.empty())
        return "0";
    std::string json = "[";
    for (const int64_t place : places)
        json.append(json.size() > 1 ? "," : "").append(std::to_string(place));
    return json + "]";
}

std::string_view shortened(std::string_view text)
{
    return text.substr(0, kLongestText);
}

}  // namespace

CallList::CallList(Blocks& blocks, CallListOptions options)
    : blocks_(blocks), options_(std::move(options)), records_(blocks, options_.most_bytes)
{
    begin_block();
}

void CallList::begin_block()
{
    first_ = places_.count();
    list_ = std::make_unique<Columns>(std::vector<std::string>{"address", "line", "byte", "kind", "page", "parent",
                                                               "op", "paint", "text", "colour", "box", "clip", "clips",
                                                               "warnings", "objects", "block", "at", "size", "whole"});
    shapes_ = std::make_unique<Columns>(std::vector<std::string>{"shape", "clip"});
    outlines_.clear();
    outline_places_.clear();
}

void CallList::warn(const reader::Comment& comment)
{
    if (!comment.warning)
        return;
    std::vector<std::string>* warnings = &inside_;
    if (!comment.inside && row_)
        warnings = &row_->warnings;
    if (warnings->size() < kMostWarnings)
        warnings->emplace_back(shortened(comment.text));
}

std::string CallList::outline_places(const std::vector<Outline>& outlines)
{
    std::vector<int64_t> places;
    for (const Outline& outline : outlines)
    {
        const std::string json = outline_json(outline);
        const auto place = static_cast<int64_t>(outline_places_.size());
        const auto [known, fresh] = outline_places_.try_emplace(json, place);
        if (fresh)
            outlines_.append(outlines_.empty() ? "" : ",").append(json);
        places.push_back(known->second);
    }
    return places_json(places);
}

void CallList::add_outlines(const Element& call, const GGO_Matrix* around, Row& row)
{
    if (blocks_.written() >= options_.most_bytes)
        return;
    const GGO_Matrix& matrix = around != nullptr ? *around : kIdentity;
    row.shape = outline_places(outlines_of(call, matrix));
    row.outline_of_clips = outline_places(clips_of(call, matrix));
}

CallList::Row CallList::row_of(const Element& call, const reader::CallSummary& summary, const GGO_Matrix* around)
{
    Row row;
    row.address = reader::call_address_text(call);
    row.place = call.place;
    row.kind = kind_number(summary.kind);
    row.page = summary.page;
    row.op = summary.op;
    row.paint = summary.colour;
    row.text = reader::text_of(call);
    const Element* operand = in_member(call, "operand1");
    row.colour = flat_colour(operand != nullptr ? operand : in_member(call, "fill_operand1"));
    if (row.colour < 0)
        row.colour = flat_colour(in_member(call, "stroke_operand1"));
    row.box = summary.box;
    row.clip = around != nullptr ? reader::clip_box(call, *around) : std::nullopt;
    row.clips = count_clips(call);
    row.warnings = std::move(inside_);
    return row;
}

void CallList::add(const Element& call, std::string_view record)
{
    if (!reader::is_call_name(call.name))
        return;
    end_row();
    ++all_;
    const GGO_Matrix* known = summaries_.to_pixels(call);
    const std::optional<GGO_Matrix> around = known != nullptr ? std::optional(*known) : std::nullopt;
    const reader::CallSummary summary = summaries_.next(call);
    const bool listed = places_.count() < options_.most_calls && options_.wanted(summary.page);
    const auto place = static_cast<int64_t>(places_.count());
    const int64_t parent = tree_.next(call, listed ? place : -1);
    if (!listed)
    {
        inside_.clear();
        return;
    }
    places_.add(call.place.byte);
    row_ = row_of(call, summary, around ? &*around : nullptr);
    row_->parent = parent;
    row_->objects = options_.objects(call, place);
    row_->record = records_.add(record);
    row_->whole = record.size();
    add_outlines(call, around ? &*around : nullptr, *row_);
}

void CallList::add_values(const Row& row)
{
    Columns& list = *list_;
    list.add_json(text_json(row.address));
    list.add(static_cast<int64_t>(row.place.line));
    list.add(static_cast<int64_t>(row.place.byte));
    list.add(row.kind);
    list.add(int64_t{row.page});
    list.add(row.parent);
    list.add_text(shortened(row.op));
    list.add_text(shortened(row.paint));
    list.add_text(shortened(row.text));
    list.add(row.colour);
    add_box(list, row.box);
    add_box(list, row.clip);
    list.add(row.clips);
    std::vector<int64_t> warnings;
    for (const std::string& warning : row.warnings)
        warnings.push_back(list.place_of(warning));
    list.add_json(places_json(warnings));
    list.add_json(places_json(row.objects));
    list.add(row.record.block);
    list.add(static_cast<int64_t>(row.record.at));
    list.add(static_cast<int64_t>(row.record.size));
    list.add(static_cast<int64_t>(row.whole));
}

void CallList::end_row()
{
    if (!row_)
        return;
    add_values(*row_);
    shapes_->add_json(row_->shape);
    shapes_->add_json(row_->outline_of_clips);
    row_.reset();
    if (list_->rows() >= kCallsInBlock || outlines_.size() >= kOutlinesInBlock)
    {
        end_block();
        begin_block();
    }
}

void CallList::end_block()
{
    if (list_->rows() == 0)
        return;
    blocks_json_.append(blocks_json_.empty() ? "" : ",").append("{\"first\":").append(std::to_string(first_));
    blocks_json_.append(",\"count\":").append(std::to_string(list_->rows()));
    blocks_json_.append(",\"list\":").append(text_json(blocks_.add_deflated(list_->json())));
    const std::string shapes = shapes_->json(std::string(",\"outlines\":[").append(outlines_).append("]"));
    blocks_json_.append(",\"shapes\":").append(text_json(blocks_.add_deflated(shapes))).append("}");
}

void CallList::finish()
{
    end_row();
    end_block();
    calls_ = "{\"count\":";
    calls_.append(std::to_string(places_.count())).append(",\"of\":").append(std::to_string(all_));
    calls_.append(",\"blocks\":[").append(blocks_json_).append("]}");
    texts_ = records_.finish();
}

}  // namespace orvlog::inspect
