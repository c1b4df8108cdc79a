#include "reader/records/records.h"

#include "reader/tree/values.h"

#include <algorithm>
#include <cstring>

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

GPA_BezierSegment bezier_segment(const Element& element)
{
    return {read_vector(element, "bs_StartTangent"), read_vector(element, "bs_EndTangent"),
            read_vector(element, "bs_EndPoint")};
}

GPA_EllipticalSegment elliptical_segment(const Element& element)
{
    return {read_double(element, "es_XRadius"), read_double(element, "es_YRadius"),
            read_double(element, "es_AngleToXAxis"), read_vector(element, "es_EndPoint")};
}

// An edge of the type `Edge` with its segments, of which `read` makes each.
template <typename Edge, typename Segment, typename Read>
Edge* make_edge(Arena& arena, const Element* member, Segment Edge::*, size_t offset, Read read)
{
    using One = std::remove_extent_t<Segment>;
    const size_t count = std::min<size_t>(count_children(member), UINT16_MAX);
    auto* edge = arena.make<Edge>(count * sizeof(One));
    auto* bytes = reinterpret_cast<std::byte*>(edge) + offset;
    size_t left = count;
    for (const Element* child = member != nullptr ? member->first : nullptr; left > 0; child = child->next, --left)
    {
        const One segment = read(*child);
        std::memcpy(bytes, &segment, sizeof segment);
        bytes += sizeof segment;
    }
    auto* head = reinterpret_cast<GPA_Edge*>(edge);
    head->ed_SegmentCount = static_cast<uint16_t>(count);
    return edge;
}

}  // namespace

const GPA_Edge* RecordReader::edge(const Element& element)
{
    GPA_Edge* head = nullptr;
    if (element.name == "GPA_StraightEdge")
        head = &make_edge(arena_, element.member("se_Segment"), &GPA_StraightEdge::se_Segment,
                          offsetof(GPA_StraightEdge, se_Segment),
                          [](const Element& e) {
                              return GGO_Vector{read_double(e, "gvf_X"), read_double(e, "gvf_Y")};
                          })
                    ->se_Edge;
    else if (element.name == "GPA_BezierEdge")
        head = &make_edge(arena_, element.member("be_BezierSegment"), &GPA_BezierEdge::be_BezierSegment,
                          offsetof(GPA_BezierEdge, be_BezierSegment), bezier_segment)
                    ->be_Edge;
    else if (element.name == "GPA_QuadBezierEdge")
        head = &make_edge(
                    arena_, element.member("qb_QuadBezierSegment"), &GPA_QuadBezierEdge::qb_QuadBezierSegment,
                    offsetof(GPA_QuadBezierEdge, qb_QuadBezierSegment),
                    [](const Element& e) {
                        return GPA_QuadBezierSegment{read_vector(e, "qs_ControlPoint"), read_vector(e, "qs_EndPoint")};
                    })
                    ->qb_Edge;
    else if (element.name == "GPA_StaircaseEdge")
    {
        GPA_StaircaseEdge* stairs = make_edge(
            arena_, element.member("sc_Field"), &GPA_StaircaseEdge::sc_Field, offsetof(GPA_StaircaseEdge, sc_Field),
            [](const Element& e)
            {
                return GPA_StaircaseSegment{static_cast<uint8_t>(read_uint(e, "ss_YOffset")),
                                            static_cast<int8_t>(read_int(e, "ss_XOffset"))};
            });
        stairs->sc_YPositive = read_bool(element, "sc_YPositive");
        head = &stairs->sc_Edge;
    }
    else if (element.name == "GPA_EllipticalEdge")
        head = &make_edge(arena_, element.member("ee_EllipticalSegment"), &GPA_EllipticalEdge::ee_EllipticalSegment,
                          offsetof(GPA_EllipticalEdge, ee_EllipticalSegment), elliptical_segment)
                    ->ee_Edge;
    const Element* told = element.child("GPA_Edge");
    if (head == nullptr || told == nullptr)
    {
        ++unknown_;
        return nullptr;
    }
    static constexpr struct
    {
        std::string_view element;
        uint8_t type;
    } kTypes[] = {{"GPA_StraightEdge", GPA_EDGE_STRAIGHT},
                  {"GPA_BezierEdge", GPA_EDGE_BEZIER},
                  {"GPA_QuadBezierEdge", GPA_EDGE_QUAD_BEZIER},
                  {"GPA_StaircaseEdge", GPA_EDGE_STAIRCASE},
                  {"GPA_EllipticalEdge", GPA_EDGE_ELLIPTICAL}};
    head->ed_EdgeType = std::ranges::find(kTypes, element.name, [](const auto& type) { return type.element; })->type;
    head->ed_EdgeFlag = static_cast<uint8_t>(read_flags(*told, "ed_EdgeFlag"));
    return head;
}

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
        to[i] = {held != nullptr ? edge(*held) : nullptr, read_bool(*from, "ep_Owned")};
    }
    return pointer;
}

void RecordReader::read_stroke(const Element& element, GPA_PathStrokingParams* params, size_t dashes)
{
    params->psp_Flags = static_cast<uint16_t>(
        (read_enum(element, "psp_Flags.S") & 0xF) | (read_enum(element, "psp_Flags.E") & 0xF) << 4 |
        (read_enum(element, "psp_Flags.J") & 0xF) << 8 | (read_enum(element, "psp_Flags.A") & 0x7) << 12 |
        read_bool(element, "psp_Flags.Z") << 15);
    params->psp_DashCount = static_cast<uint16_t>(dashes);
    params->psp_DashCaps = static_cast<uint8_t>(read_enum(element, "psp_DashCaps"));
    params->psp_StrokeWidth = read_float(element, "psp_StrokeWidth");
    params->psp_MiterLimit = read_float(element, "psp_MiterLimit");
    params->psp_DashStart = read_float(element, "psp_DashStart");
    const Element* holder = element.child("psp_DashLength");
    const Element* buffer = holder != nullptr ? holder->child("BufferFloat") : nullptr;
    if (buffer == nullptr)
        return;
    const std::vector<float> lengths = to_floats(buffer->rows);
    std::copy_n(lengths.begin(), std::min(dashes, lengths.size()), params->psp_DashLength);
}

const GPA_PathStrokingParams* RecordReader::stroke(const Element* element)
{
    if (element == nullptr || element->name != "GPA_PathStrokingParams")
        return nullptr;
    const size_t dashes = read_uint(*element, "psp_DashCount") & UINT16_MAX;
    auto* params = arena_.make<GPA_PathStrokingParams>(dashes * sizeof(float));
    read_stroke(*element, params, dashes);
    return params;
}

}  // namespace orvlog::reader
