#include "tools/report/report-objects.h"

#include "inspect/align/hash.h"
#include "inspect/report/call-record.h"
#include "inspect/report/columns.h"
#include "inspect/report/flat-colour.h"
#include "inspect/report/outline.h"
#include "reader/look/call-box.h"
#include "reader/look/call-summary.h"
#include "reader/tree/values.h"
#include "tools/report/glyph-picture.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace orvlog::tool
{

namespace
{

using orvlog::inspect::Columns;
using orvlog::inspect::Hash;
using orvlog::inspect::number_json;
using orvlog::inspect::text_json;
using orvlog::reader::Children;
using orvlog::reader::Element;
using orvlog::reader::LogFileKind;
using orvlog::reader::read_uint;

constexpr size_t kMostObjects = 20000;
constexpr uint64_t kMostTextBytes = uint64_t{32} << 20;
constexpr uint64_t kObjectsInBlock = 512;
constexpr uint32_t kLongestSide = 1024;
constexpr uint32_t kDeepest = 4096;

// The colours of a gradient's stops, with the place of each.
void add_stops(const Element& element, const std::string& space, std::string& stops, uint32_t depth)
{
    for (const Element& child : Children(element))
        if (child.name == "GOP_GradStop")
        {
            const Element* holder = child.member("gs_StopColor");
            const Element* color = holder != nullptr ? holder->child("GBC_Color") : nullptr;
            const int64_t shown = color != nullptr ? orvlog::inspect::shown_colour(*color, space) : -1;
            if (shown >= 0 && stops.size() < 4096)
                stops.append(stops.empty() ? "[" : ",[")
                    .append(number_json(orvlog::reader::read_double(child, "gs_StopPosn")))
                    .append(",")
                    .append(std::to_string(shown))
                    .append("]");
        }
        else if (depth < 4)
            add_stops(child, space, stops, depth + 1);
}

// Of gradients without stops: their colours, evenly.
void add_colours(const Element& operand, const std::string& space, std::string& stops)
{
    std::vector<int64_t> colours;
    for (const char* name : {"g2p_Color1", "g2p_Color2", "g3p_Color1", "g3p_Color2", "g3p_Color3"})
    {
        const Element* holder = operand.member(name);
        const Element* color = holder != nullptr ? holder->child("GBC_Color") : nullptr;
        const int64_t shown = color != nullptr ? orvlog::inspect::shown_colour(*color, space) : -1;
        if (shown >= 0)
            colours.push_back(shown);
    }
    for (size_t i = 0; i < colours.size() && colours.size() > 1; ++i)
        stops.append(i == 0 ? "[" : ",[")
            .append(number_json(static_cast<double>(i) / static_cast<double>(colours.size() - 1)))
            .append(",")
            .append(std::to_string(colours[i]))
            .append("]");
}

std::string family_of(std::string_view ticket)
{
    constexpr std::string_view kEnd = "RenderColorSpace>";
    const size_t at = ticket.find(kEnd);
    const size_t begin = at != std::string_view::npos ? ticket.rfind('<', at) : at;
    return begin != std::string_view::npos ? std::string(ticket.substr(begin + 1, at - begin - 1)) : "no family";
}

std::string box_json(const GGO_BoxFloat& box)
{
    const double sides[] = {box.gbf_MinX, box.gbf_MinY, box.gbf_MaxX - box.gbf_MinX, box.gbf_MaxY - box.gbf_MinY};
    std::string json = "[";
    for (const double side : sides)
        json.append(json.size() > 1 ? "," : "").append(number_json(std::round(side * 100) / 100 + 0.0));
    return json.append("]");
}

}  // namespace

ReportObjects::ReportObjects(orvlog::inspect::Blocks& blocks, JobFiles& files, uint64_t most_bytes)
    : blocks_(blocks), most_bytes_(most_bytes),
      images_([&files](const std::string& name, uint64_t begin, uint64_t count)
              { return files.read(name, begin, count); },
              [&files](const std::string& name) { return files.open(name, LogFileKind::image_log); })
{
}

template <typename Make> void ReportObjects::use(uint64_t hash, const Make& make)
{
    const auto known = places_.find(hash);
    int64_t place = known != places_.end() ? known->second : -1;
    if (place < 0)
    {
        if (objects_.size() >= kMostObjects || text_bytes_ >= kMostTextBytes)
        {
            ++left_out_;
            return;
        }
        place = static_cast<int64_t>(objects_.size());
        places_.emplace(hash, place);
        Object object;
        object.call = call_;
        make(object);
        text_bytes_ += object.data.size() + object.content.size() + object.label.size() + object.stops.size();
        objects_.push_back(std::move(object));
    }
    if (std::ranges::find(used_, place) != used_.end())
        return;
    used_.push_back(place);
    ++objects_[static_cast<size_t>(place)].uses;
}

std::string ReportObjects::picture_of(std::string_view png, Object& object)
{
    if (png.empty())
        return "null";
    if (blocks_.written() >= most_bytes_)
    {
        object.note = "left out: the report would be too large";
        return "null";
    }
    return text_json(blocks_.add_plain(png));
}

void ReportObjects::add_image(const TakenImage& image, const Element& operand)
{
    const GOP_OperandImage* record = image.record != nullptr ? image.record->imp_Image : nullptr;
    const std::string label = orvlog::reader::image_text(operand);
    Hash hash;
    hash.add(std::string_view("image"));
    hash.add(label);
    hash.add(image.row_bytes);
    hash.add(image.color_table.data(), image.color_table.size());
    hash.add(image.bytes.data(), image.bytes.size());
    use(hash.value(),
        [&](Object& object)
        {
            object.kind = "image";
            object.label = label;
            object.width = record != nullptr ? record->im_ImageWidthPixels : 0;
            object.height = record != nullptr ? record->im_ImageHeightPixels : 0;
            if (image.bytes.empty())
                object.note = "none of its data is in the log";
            else
            {
                const std::string png = image_png(image, kLongestSide);
                object.note = png.empty() ? "not of a form that can be shown" : "";
                object.picture = picture_of(png, object);
            }
            const uint64_t due = image.rows * image.row_bytes;
            if (object.note.empty() && due > image.bytes.size())
                object.note =
                    "of " + std::to_string(due) + " bytes " + std::to_string(image.bytes.size()) + " are in the log";
        });
}

void ReportObjects::add_images(const Element& call)
{
    if (operands_.empty())
        return;
    for (const TakenImage* image : images_.take(call))
    {
        const auto with_number = [image](const Element* one) { return read_uint(*one, "Id") == image->operand; };
        const auto operand = std::ranges::find_if(operands_, with_number);
        if (operand != operands_.end())
            add_image(*image, **operand);
    }
}

void ReportObjects::add_glyph(const Element& pointer, uint32_t number)
{
    const GlyphPicture glyph = glyph_picture(pointer, to_pixels_);
    if (glyph.data.empty() && glyph.png.empty())
        return;
    Hash hash;
    hash.add(std::string_view("glyph"));
    hash.add(uint64_t{number});
    hash.add(glyph.data);
    hash.add(glyph.png);
    use(hash.value(),
        [&](Object& object)
        {
            object.kind = "glyph";
            object.label = std::string("glyph ").append(std::to_string(number));
            object.width = glyph.width;
            object.height = glyph.height;
            object.picture = picture_of(glyph.png, object);
            if (!glyph.data.empty())
            {
                object.data = text_json(glyph.data);
                object.view = box_json(glyph.box);
            }
        });
}

// A log has the text of a ticket once; later calls tell its number.
void ReportObjects::add_ticket(const Element& ticket)
{
    const uint32_t id = read_uint(ticket, "id");
    const Element* text = ticket.child("GXC_ColorTickets");
    Hash hash;
    hash.add(std::string_view("ticket"));
    hash.add(uint64_t{id});
    const auto known = tickets_.find(id);
    hash.add(text != nullptr || known == tickets_.end() ? static_cast<uint64_t>(call_)
                                                        : static_cast<uint64_t>(known->second));
    use(hash.value(),
        [&](Object& object)
        {
            tickets_[id] = call_;
            object.kind = "ticket";
            object.label = std::string("ticket ").append(std::to_string(id));
            if (text == nullptr)
            {
                object.note = "its text is not in the calls that are listed";
                return;
            }
            object.label += ", " + family_of(text->rows);
            object.content = text_json(orvlog::inspect::abridged(text->rows));
        });
}

void ReportObjects::add_gradient(const Element& operand)
{
    const std::string label = orvlog::reader::operand_text(&operand);
    std::string stops;
    add_stops(operand, label, stops, 0);
    if (stops.empty())
        add_colours(operand, label, stops);
    Hash hash;
    hash.add(std::string_view("gradient"));
    hash.add(label);
    hash.add(stops);
    use(hash.value(),
        [&](Object& object)
        {
            object.kind = "gradient";
            object.label = label;
            object.stops = stops.empty() ? "null" : std::string("[").append(stops).append("]");
            object.note = stops.empty() ? "its colours can't be told" : "";
        });
}

void ReportObjects::walk(const Element& element, uint32_t depth)
{
    for (const Element& child : Children(element))
        if (child.name == "GOP_OperandImagePointer")
            operands_.push_back(&child);
        else if (child.name == "GCM_ColorTicket")
            add_ticket(child);
        else if (child.name.starts_with("GOP_OperandGrad") && child.name.ends_with("Pointer"))
            add_gradient(child);
        else if (child.name == "GFI_StringStartFn")
            to_pixels_ = orvlog::reader::read_matrix(child, "glyphdesc_to_face_pixel");
        else if (child.name == "GFI_GlyphIndexGetFn")
            glyph_ = read_uint(child, "glyph_index_out");
        else if (child.name == "GFI_GlyphGetFn" || child.name == "GFI_GlyphGetFixedFormatFn")
        {
            if (child.has("glyphdesc_to_face_pixel"))
                to_pixels_ = orvlog::reader::read_matrix(child, "glyphdesc_to_face_pixel");
            if (const Element* pointer = child.child("GFI_GlyphDescPointer"); pointer != nullptr)
                add_glyph(*pointer, glyph_);
        }
        else if (depth < kDeepest)
            walk(child, depth + 1);
}

std::vector<int64_t> ReportObjects::of(const Element& call, int64_t place)
{
    call_ = place;
    used_.clear();
    operands_.clear();
    walk(call, 0);
    add_images(call);
    return used_;
}

void ReportObjects::end_block(uint64_t first, uint64_t count)
{
    Columns columns(
        {"kind", "label", "call", "uses", "width", "height", "picture", "d", "view", "stops", "content", "note"});
    for (uint64_t i = first; i < first + count; ++i)
    {
        const Object& object = objects_[i];
        columns.add_json(text_json(object.kind));
        columns.add_json(text_json(object.label));
        columns.add(object.call);
        columns.add(object.uses);
        columns.add(int64_t{object.width});
        columns.add(int64_t{object.height});
        for (const std::string* json : {&object.picture, &object.data, &object.view, &object.stops, &object.content})
            columns.add_json(*json);
        columns.add_json(object.note.empty() ? "null" : text_json(object.note));
    }
    list_.append(list_.empty() ? "" : ",").append("{\"first\":").append(std::to_string(first));
    list_.append(",\"count\":").append(std::to_string(count));
    list_.append(",\"list\":").append(text_json(blocks_.add_deflated(columns.json()))).append("}");
}

std::string ReportObjects::finish()
{
    for (uint64_t first = 0; first < objects_.size(); first += kObjectsInBlock)
        end_block(first, std::min<uint64_t>(kObjectsInBlock, objects_.size() - first));
    std::string json = "{\"count\":";
    json.append(std::to_string(objects_.size())).append(",\"left_out\":").append(std::to_string(left_out_));
    return json.append(",\"blocks\":[").append(list_).append("]}");
}

}  // namespace orvlog::tool
