#include "inspect/history/clip-entries.h"

#include "orvlog/interface/gsh-shape.h"
#include "reader/look/call-box.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace orvlog::inspect
{

namespace
{

using reader::Children;
using reader::Element;

constexpr size_t kMost = 10000;

constexpr std::array<std::pair<std::string_view, const char*>, 7> kShapes = {{
    {"GSH_GlyphShape", "text"},
    {"GSH_FilledPathShape", "filled path"},
    {"GSH_StrokedPathShape", "stroked path"},
    {"GSH_ImageRectShape", "image rectangle"},
    {"GSH_MultiRectShape", "rectangles"},
    {"GSH_ScanlineShape", "rows"},
    {"GSH_StrokedGlyphShape", "stroked text"},
}};

std::string shape_name(const Element* record)
{
    if (record == nullptr)
        return "nothing";
    for (const auto& [name, text] : kShapes)
        if (record->name == name)
            return text;
    return std::string(record->name);
}

std::string winding_of(const Element& record)
{
    for (const char* name : {"fps_WindingRule", "sps_WindingRule"})
    {
        const std::string_view rule = record.value(name);
        if (rule == "GPA_WINDING_ODD_EVEN")
            return "odd-even";
        if (!rule.empty())
            return rule == "GPA_WINDING_NON_ZERO" ? "non-zero" : std::string(rule);
    }
    return {};
}

uint64_t segments_of(const Element& shape)
{
    uint64_t count = 0;
    for (const char* member : {"sp_U.filled_path", "sp_U.stroked_path"})
    {
        const Element* holder = shape.member(member);
        const Element* path = holder != nullptr ? holder->child("GPA_PathPointer") : nullptr;
        const Element* edges = path != nullptr ? path->member("lpp_EdgePointer") : nullptr;
        for (const Element* edge = edges != nullptr ? edges->first : nullptr; edge != nullptr; edge = edge->next)
        {
            const Element* pointer = edge->member("ep_Pointer");
            const Element* record = pointer != nullptr ? pointer->first : nullptr;
            const Element* head = record != nullptr ? record->child("GPA_Edge") : nullptr;
            count += head != nullptr ? reader::read_uint(*head, "ed_SegmentCount") : 0;
        }
    }
    return count;
}

uint64_t count_of(const Element& record, std::string_view name)
{
    uint64_t count = 0;
    for (const Element& child : Children(record))
        count += child.name == name ? 1 : 0;
    return count;
}

ClipEntry entry_of(const Element& list, const GGO_Matrix& to_pixels)
{
    ClipEntry entry;
    entry.inside = reader::read_bool(list, "sl_ClipIn") != 0;
    if (list.has("sl_UniqueId"))
        entry.unique_id = reader::read_uint(list, "sl_UniqueId");
    const Element* holder = list.member("sl_Shape");
    const Element* shape = holder != nullptr ? holder->child("GSH_ShapePointer") : nullptr;
    const Element* header = shape != nullptr ? shape->member("sp_HeaderPtr") : nullptr;
    const Element* record = header != nullptr ? header->first : nullptr;
    entry.shape = shape_name(record);
    if (record == nullptr)
        return entry;
    entry.winding = winding_of(*record);
    entry.parts = segments_of(*shape) + count_of(*record, "GGO_BoxInt") + count_of(*record, "GSH_XLimits");
    entry.box = reader::shape_box(*shape, to_pixels);
    return entry;
}

}  // namespace

std::vector<ClipEntry> clip_entries(const Element& call, const GGO_Matrix& to_pixels)
{
    std::vector<ClipEntry> entries;
    const Element* clips = call.member("clip");
    if (clips == nullptr)
        clips = call.member("group_clip");
    for (const Element* list = clips != nullptr ? clips->first : nullptr; list != nullptr; list = list->next)
    {
        if (list->name != "GSH_ShapeList")
            continue;
        bool collected = false;
        for (const Element* one = list; one != nullptr && entries.size() < kMost;)
        {
            entries.push_back(entry_of(*one, to_pixels));
            entries.back().collection = collected;
            const Element* collection = one->child("GSH_ShapeListCollection");
            one = collection != nullptr ? collection->child("GSH_ShapeList") : nullptr;
            collected = true;
        }
        if ((reader::read_flags(*list, "sl_Hints") & GSH_SLH_IGNORE_REST_OF_LIST) != 0)
            break;
    }
    return entries;
}

std::optional<GGO_BoxFloat> box_of(const std::vector<ClipEntry>& entries)
{
    std::optional<GGO_BoxFloat> box;
    for (size_t i = 0; i < entries.size(); ++i)
    {
        const bool united = entries[i].collection || (i + 1 < entries.size() && entries[i + 1].collection);
        if (!entries[i].inside || !entries[i].box || united)
            continue;
        const GGO_BoxFloat& other = *entries[i].box;
        box = !box ? other
                   : GGO_BoxFloat{std::max(box->gbf_MinX, other.gbf_MinX), std::max(box->gbf_MinY, other.gbf_MinY),
                                  std::min(box->gbf_MaxX, other.gbf_MaxX), std::min(box->gbf_MaxY, other.gbf_MaxY)};
    }
    return box;
}

}  // namespace orvlog::inspect
