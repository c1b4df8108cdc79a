#include "inspect/export/page-clips.h"

#include "orvlog/interface/orvlog.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <cmath>

namespace orvlog::inspect
{

namespace
{

using orvlog::reader::Element;

constexpr size_t kMostDrawings = 1 << 16;
constexpr size_t kMostGroups = 4096;

using Box = std::optional<GGO_BoxFloat>;

Box meet(const Box& one, const Box& other)
{
    if (!one || !other)
        return one ? one : other;
    return GGO_BoxFloat{std::max(one->gbf_MinX, other->gbf_MinX), std::max(one->gbf_MinY, other->gbf_MinY),
                        std::min(one->gbf_MaxX, other->gbf_MaxX), std::min(one->gbf_MaxY, other->gbf_MaxY)};
}

bool is_empty(const GGO_BoxFloat& box)
{
    return box.gbf_MinX >= box.gbf_MaxX || box.gbf_MinY >= box.gbf_MaxY;
}

bool apart(const GGO_BoxFloat& one, const GGO_BoxFloat& other)
{
    return one.gbf_MinX > other.gbf_MaxX || other.gbf_MinX > one.gbf_MaxX || one.gbf_MinY > other.gbf_MaxY ||
           other.gbf_MinY > one.gbf_MaxY;
}

// A list that leaves the inside of a shape in which there is nothing.
bool leaves_nothing(const Element& list)
{
    const Element* holder = list.member("sl_Shape");
    const Element* shape = holder != nullptr ? holder->child("GSH_ShapePointer") : nullptr;
    const Element* header = shape != nullptr ? shape->member("sp_HeaderPtr") : nullptr;
    const Element* record = header != nullptr ? header->first : nullptr;
    if (record == nullptr || orvlog::reader::read_bool(list, "sl_ClipIn") == 0 ||
        list.child("GSH_ShapeListCollection") != nullptr)
        return false;
    if (record->name == "GSH_MultiRectShape")
        return record->value("mrs_RectCount") == "0";
    const Element* filled = shape->member("sp_U.filled_path");
    const Element* pointer = filled != nullptr ? filled->child("GPA_PathPointer") : nullptr;
    const Element* path = pointer != nullptr ? pointer->child("GPA_Path") : nullptr;
    return path != nullptr && path->value("pa_NumEdges") == "0";
}

Box own_clip(const Element& call, const GGO_Matrix& around)
{
    const Element* clip = call.member("clip");
    clip = clip != nullptr ? clip : call.member("group_clip");
    for (const Element* list = clip != nullptr ? clip->first : nullptr; list != nullptr; list = list->next)
    {
        if (leaves_nothing(*list))
            return GGO_BoxFloat{1, 1, -1, -1};
        if ((orvlog::reader::read_flags(*list, "sl_Hints") & GSH_SLH_IGNORE_REST_OF_LIST) != 0)
            break;
    }
    return orvlog::reader::clip_box(call, around);
}

bool paints(const Element& call)
{
    return call.name == "ORV_object_paint" || call.name == "ORV_object_paint_and_stroke" ||
           call.name == "ORV_resource_paint";
}

bool is_shut(const Box& clip, const Box& face, const Box& box)
{
    return clip && (is_empty(*clip) || (face && apart(*clip, *face)) || (box && apart(*box, *clip)));
}

}  // namespace

void PageClips::start_face(const Element& call)
{
    Drawing drawing;
    if (const Element* face = call.child("ORV_FaceProperties"); face != nullptr)
    {
        const GGO_Matrix matrix = orvlog::reader::read_matrix(*face, "fp_FaceInchToPixels");
        drawing.face = GGO_BoxFloat{0, 0, static_cast<double>(orvlog::reader::read_uint(*face, "fp_WidthInPixels")),
                                    static_cast<double>(orvlog::reader::read_uint(*face, "fp_HeightInPixels"))};
        drawing.dpi_x = std::hypot(matrix.m[0], matrix.m[2]);
        drawing.dpi_y = std::hypot(matrix.m[1], matrix.m[3]);
    }
    const uint32_t number = orvlog::reader::read_uint(call, "drawing_context");
    drawings_.insert_or_assign(number, std::move(drawing));
    if (drawings_.size() > kMostDrawings)
        drawings_.erase(drawings_.begin()->first != number ? drawings_.begin() : std::next(drawings_.begin()));
}

ClipView PageClips::next(const Element& call, const GGO_Matrix* around, const orvlog::reader::CallSummary& summary)
{
    ClipView view;
    if (call.name == "ORV_face_start")
        start_face(call);
    const auto known = drawings_.find(orvlog::reader::read_uint(call, "drawing_context"));
    if (known == drawings_.end() || !call.has("drawing_context"))
        return view;
    Drawing& drawing = known->second;
    view.dpi_x = drawing.dpi_x;
    view.dpi_y = drawing.dpi_y;
    if (call.name == "ORV_group_finish" && orvlog::reader::read_bool(call, "replay_group") == 0)
    {
        if (drawing.deeper > 0)
            --drawing.deeper;
        else if (!drawing.groups.empty())
            drawing.groups.pop_back();
    }
    view.depth = drawing.groups.size() + drawing.deeper;
    const Box left = drawing.groups.empty() ? std::nullopt : drawing.groups.back();
    view.box = around != nullptr ? meet(left, own_clip(call, *around)) : left;
    if (paints(call) && around != nullptr)
        view.shut = is_shut(view.box, drawing.face, summary.box);
    if (call.name == "ORV_group_start" && drawing.groups.size() == kMostGroups)
        ++drawing.deeper;
    else if (call.name == "ORV_group_start")
        drawing.groups.push_back(view.box);
    if (call.name == "ORV_drawing_finish" || call.name == "ORV_drawing_discard")
        drawings_.erase(known);
    return view;
}

}  // namespace orvlog::inspect
