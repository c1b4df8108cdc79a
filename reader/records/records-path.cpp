#include "reader/records/record-parts.h"
#include "reader/records/records.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace orvlog::reader
{

namespace
{

size_t count_children(const Element* element)
{
    size_t count = 0;
    for (const Element* child = element != nullptr ? element->first : nullptr; child != nullptr; child = child->next)
        ++count;
    return count;
}

GGO_Vector straight_segment(const Element& element)
{
    return {read_double(element, "gvf_X"), read_double(element, "gvf_Y")};
}

GPA_BezierSegment bezier_segment(const Element& element)
{
    return {read_vector(element, "bs_StartTangent"), read_vector(element, "bs_EndTangent"),
            read_vector(element, "bs_EndPoint")};
}

GPA_QuadBezierSegment quad_bezier_segment(const Element& element)
{
    return {read_vector(element, "qs_ControlPoint"), read_vector(element, "qs_EndPoint")};
}

GPA_StaircaseSegment staircase_segment(const Element& element)
{
    return {static_cast<uint8_t>(read_uint(element, "ss_YOffset")),
            static_cast<int8_t>(read_int(element, "ss_XOffset"))};
}

GPA_EllipticalSegment elliptical_segment(const Element& element)
{
    return {read_double(element, "es_XRadius"), read_double(element, "es_YRadius"),
            read_double(element, "es_AngleToXAxis"), read_vector(element, "es_EndPoint")};
}

// An edge of the type `Edge` with its segments, from `offset` on, of which `read` makes each.
template <typename Edge, auto read> GPA_Edge* make_edge(Arena& arena, const Element* member, size_t offset)
{
    using One = decltype(read(std::declval<const Element&>()));
    const size_t count = std::min<size_t>(count_children(member), UINT16_MAX);
    auto* head = reinterpret_cast<GPA_Edge*>(arena.make<Edge>(count * sizeof(One)));
    auto* bytes = reinterpret_cast<std::byte*>(head) + offset;
    size_t left = count;
    for (const Element* child = member != nullptr ? member->first : nullptr; left > 0; child = child->next, --left)
    {
        const One segment = read(*child);
        std::memcpy(bytes, &segment, sizeof segment);
        bytes += sizeof segment;
    }
    head->ed_SegmentCount = static_cast<uint16_t>(count);
    return head;
}

struct EdgeKind
{
    std::string_view element;
    uint8_t type;
    std::string_view segments;  // the member that holds them
    size_t offset;              // of the first one in the record
    GPA_Edge* (*make)(Arena& arena, const Element* member, size_t offset);
};

constexpr EdgeKind kKinds[] = {
    {"GPA_StraightEdge", GPA_EDGE_STRAIGHT, "se_Segment", offsetof(GPA_StraightEdge, se_Segment),
     make_edge<GPA_StraightEdge, straight_segment>},
    {"GPA_BezierEdge", GPA_EDGE_BEZIER, "be_BezierSegment", offsetof(GPA_BezierEdge, be_BezierSegment),
     make_edge<GPA_BezierEdge, bezier_segment>},
    {"GPA_QuadBezierEdge", GPA_EDGE_QUAD_BEZIER, "qb_QuadBezierSegment",
     offsetof(GPA_QuadBezierEdge, qb_QuadBezierSegment), make_edge<GPA_QuadBezierEdge, quad_bezier_segment>},
    {"GPA_StaircaseEdge", GPA_EDGE_STAIRCASE, "sc_Field", offsetof(GPA_StaircaseEdge, sc_Field),
     make_edge<GPA_StaircaseEdge, staircase_segment>},
    {"GPA_EllipticalEdge", GPA_EDGE_ELLIPTICAL, "ee_EllipticalSegment",
     offsetof(GPA_EllipticalEdge, ee_EllipticalSegment), make_edge<GPA_EllipticalEdge, elliptical_segment>},
};

// Null for an edge of no known kind, or without a head.
const GPA_Edge* read_edge(Arena& arena, const Element& element)
{
    const auto* kind = std::ranges::find(kKinds, element.name, &EdgeKind::element);
    const Element* told = element.child("GPA_Edge");
    if (kind == std::end(kKinds) || told == nullptr)
        return nullptr;
    GPA_Edge* head = kind->make(arena, element.member(kind->segments), kind->offset);
    head->ed_EdgeType = kind->type;
    head->ed_EdgeFlag = static_cast<uint8_t>(read_flags(*told, "ed_EdgeFlag"));
    if (kind->type == GPA_EDGE_STAIRCASE)
        reinterpret_cast<GPA_StaircaseEdge*>(head)->sc_YPositive = read_bool(element, "sc_YPositive");
    return head;
}

}  // namespace

const GPA_PathPointer* RecordReader::path(const Element* element)
{
    const Element* inside = element != nullptr ? element->child("GPA_Path") : nullptr;
    if (inside == nullptr)
        return nullptr;
    const Element* starts = inside->member("pa_EdgeStart");
    const Element* edges = element->member("lpp_EdgePointer");
    const size_t count = std::min(count_children(starts), count_children(edges));
    auto* record = arena_.make<GPA_Path>(count * sizeof(GGO_Point));
    record->pa_NumEdges = static_cast<uint32_t>(count);
    record->pa_PathHints = static_cast<uint16_t>(read_flags(*inside, "pa_PathHints"));
    record->pa_EnclosingBox = read_box(*inside, "pa_EnclosingBox");
    auto* pointer = arena_.make<GPA_PathPointer>(count * sizeof(GPA_EdgePointer));
    pointer->lpp_Path = record;
    pointer->lpp_EnablePixelPlacement = read_bool(*element, "lpp_EnablePixelPlacement");
    pointer->lpp_PixelPlacement = read_enum(*element, "lpp_PixelPlacement");
    pointer->lpp_PathOwned = read_bool(*element, "lpp_PathOwned");
    GGO_Point* start = record->pa_EdgeStart;
    GPA_EdgePointer* to = pointer->lpp_EdgePointer;
    const Element* from = count > 0 ? edges->first : nullptr;
    const Element* point = count > 0 ? starts->first : nullptr;
    for (size_t i = 0; i < count; ++i, point = point->next, from = from->next)
    {
        start[i] = {read_double(*point, "gpf_X"), read_double(*point, "gpf_Y")};
        const Element* member = from->member("ep_Pointer");
        const Element* held = member != nullptr ? member->first : nullptr;
        to[i] = {held != nullptr ? read_edge(arena_, *held) : nullptr, read_bool(*from, "ep_Owned")};
        unknown_ += held != nullptr && to[i].ep_Pointer == nullptr ? 1 : 0;
    }
    return pointer;
}

const GPA_PathStrokingParams* RecordReader::stroke(const Element* element)
{
    if (element == nullptr || element->name != "GPA_PathStrokingParams")
        return nullptr;
    const size_t dashes = dash_count(element);
    auto* params = arena_.make<GPA_PathStrokingParams>(dashes * sizeof(float));
    read_stroke(*element, params, dashes);
    return params;
}

}  // namespace orvlog::reader
