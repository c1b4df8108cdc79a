#include "orvlog/records/gpa-path-dump.h"

#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/log/orvlog-line.h"
#include "orvlog/log/orvlog-scope.h"
#include "orvlog/names/orvlog-names.h"
#include "orvlog/records/ggo-dump.h"

namespace
{

// The low bits are a number and not flags, so no flag table says this.
void attr_edge_flag(ORVLOG_Writer* writer, uint32_t flag)
{
    const uint32_t subpath = flag & 0x7FU;
    ORVLOG_Line line;
    orvlog_line_start(&line, writer);
    orvlog_line_name(&line, "ed_EdgeFlag");
    orvlog_line_char(&line, '[');
    orvlog_line_hex(&line, flag);
    orvlog_line_text(&line, "] ");
    if ((flag & GPA_SUPPRESS_STROKING_FLAG) != 0)
        orvlog_line_text(&line, "GPA_SUPPRESS_STROKING_FLAG ");
    if (subpath <= ORVLOG_SUBPATH.max_value)
    {
        orvlog_line_text(&line, ORVLOG_SUBPATH.names[subpath]);
    }
    else
    {
        orvlog_line_text(&line, "UNKNOWN_VALUE(");
        orvlog_line_uint(&line, subpath);
        orvlog_line_char(&line, ')');
    }
    orvlog_line_char(&line, ' ');
    orvlog_line_finish_value(&line);
}

// What the five edges share behind the opening tag: the head, and the segments in a member of their own.
template <typename Segment>
void dump_segments(ORVLOG_Writer* writer, const char* element, const char* member, const GPA_Edge* edge,
                   const Segment* segments, void (*dump)(ORVLOG_Writer*, const Segment*))
{
    const ORVLOG_Content content(writer, element);
    dump_GPA_Edge(writer, edge);
    const ORVLOG_Member inside(writer, element, member);
    for (uint32_t i = 0; i < edge->ed_SegmentCount; ++i)
        dump(writer, segments + i);
}

void dump_edge_by_type(ORVLOG_Writer* writer, const GPA_Edge* edge)
{
    switch (edge->ed_EdgeType)
    {
    case GPA_EDGE_STRAIGHT:
        return dump_GPA_StraightEdge(writer, reinterpret_cast<const GPA_StraightEdge*>(edge));
    case GPA_EDGE_BEZIER:
        return dump_GPA_BezierEdge(writer, reinterpret_cast<const GPA_BezierEdge*>(edge));
    case GPA_EDGE_QUAD_BEZIER:
        return dump_GPA_QuadBezierEdge(writer, reinterpret_cast<const GPA_QuadBezierEdge*>(edge));
    case GPA_EDGE_STAIRCASE:
        return dump_GPA_StaircaseEdge(writer, reinterpret_cast<const GPA_StaircaseEdge*>(edge));
    case GPA_EDGE_ELLIPTICAL:
        return dump_GPA_EllipticalEdge(writer, reinterpret_cast<const GPA_EllipticalEdge*>(edge));
    default:
        return;
    }
}

}  // namespace

void dump_GPA_BezierSegment(ORVLOG_Writer* writer, const GPA_BezierSegment* segment)
{
    if (segment == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GPA_BezierSegment");
    ggo_attr_vector(writer, "bs_StartTangent", &segment->bs_StartTangent);
    ggo_attr_vector(writer, "bs_EndTangent", &segment->bs_EndTangent);
    ggo_attr_vector(writer, "bs_EndPoint", &segment->bs_EndPoint);
    orvlog_writer_end_empty(writer, "GPA_BezierSegment");
}

void dump_GPA_QuadBezierSegment(ORVLOG_Writer* writer, const GPA_QuadBezierSegment* segment)
{
    if (segment == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GPA_QuadBezierSegment");
    ggo_attr_vector(writer, "qs_ControlPoint", &segment->qs_ControlPoint);
    ggo_attr_vector(writer, "qs_EndPoint", &segment->qs_EndPoint);
    orvlog_writer_end_empty(writer, "GPA_QuadBezierSegment");
}

void dump_GPA_StaircaseSegment(ORVLOG_Writer* writer, const GPA_StaircaseSegment* segment)
{
    if (segment == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GPA_StaircaseSegment");
    // X ahead of Y, though it is stored behind; readers of the log rely on it.
    orvlog_attr_int(writer, "ss_XOffset", segment->ss_XOffset);
    orvlog_attr_uint(writer, "ss_YOffset", segment->ss_YOffset);
    orvlog_writer_end_empty(writer, "GPA_StaircaseSegment");
}

void dump_GPA_EllipticalSegment(ORVLOG_Writer* writer, const GPA_EllipticalSegment* segment)
{
    if (segment == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GPA_EllipticalSegment");
    orvlog_attr_double(writer, "es_XRadius", segment->es_XRadius);
    orvlog_attr_double(writer, "es_YRadius", segment->es_YRadius);
    orvlog_attr_double(writer, "es_AngleToXAxis", segment->es_AngleToXAxis);
    ggo_attr_vector(writer, "es_EndPoint", &segment->es_EndPoint);
    orvlog_writer_end_empty(writer, "GPA_EllipticalSegment");
}

void dump_GPA_Edge(ORVLOG_Writer* writer, const GPA_Edge* edge)
{
    if (edge == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GPA_Edge");
    orvlog_attr_enum(writer, "ed_EdgeType", &ORVLOG_EDGE_TYPE, edge->ed_EdgeType);
    attr_edge_flag(writer, edge->ed_EdgeFlag);
    orvlog_attr_uint(writer, "ed_SegmentCount", edge->ed_SegmentCount);
    orvlog_writer_self_close(writer);
}

void dump_GPA_StraightEdge(ORVLOG_Writer* writer, const GPA_StraightEdge* edge)
{
    if (edge == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GPA_StraightEdge");
    dump_segments(writer, "GPA_StraightEdge", "se_Segment", &edge->se_Edge, edge->se_Segment, dump_GGO_Vector);
}

void dump_GPA_BezierEdge(ORVLOG_Writer* writer, const GPA_BezierEdge* edge)
{
    if (edge == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GPA_BezierEdge");
    dump_segments(writer, "GPA_BezierEdge", "be_BezierSegment", &edge->be_Edge, edge->be_BezierSegment,
                  dump_GPA_BezierSegment);
}

void dump_GPA_QuadBezierEdge(ORVLOG_Writer* writer, const GPA_QuadBezierEdge* edge)
{
    if (edge == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GPA_QuadBezierEdge");
    dump_segments(writer, "GPA_QuadBezierEdge", "qb_QuadBezierSegment", &edge->qb_Edge, edge->qb_QuadBezierSegment,
                  dump_GPA_QuadBezierSegment);
}

void dump_GPA_StaircaseEdge(ORVLOG_Writer* writer, const GPA_StaircaseEdge* edge)
{
    if (edge == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GPA_StaircaseEdge");
    orvlog_attr_bool(writer, "sc_YPositive", edge->sc_YPositive);
    dump_segments(writer, "GPA_StaircaseEdge", "sc_Field", &edge->sc_Edge, edge->sc_Field, dump_GPA_StaircaseSegment);
}

void dump_GPA_EllipticalEdge(ORVLOG_Writer* writer, const GPA_EllipticalEdge* edge)
{
    if (edge == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GPA_EllipticalEdge");
    dump_segments(writer, "GPA_EllipticalEdge", "ee_EllipticalSegment", &edge->ee_Edge, edge->ee_EllipticalSegment,
                  dump_GPA_EllipticalSegment);
}

void dump_GPA_EdgePointer(ORVLOG_Writer* writer, const GPA_EdgePointer* pointer)
{
    if (pointer == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GPA_EdgePointer");
    orvlog_attr_bool(writer, "ep_Owned", pointer->ep_Owned);
    const ORVLOG_Content content(writer, "GPA_EdgePointer");
    const ORVLOG_Member member(writer, "GPA_EdgePointer", "ep_Pointer");
    if (pointer->ep_Pointer != nullptr)
        dump_edge_by_type(writer, pointer->ep_Pointer);
}

void dump_GPA_Path(ORVLOG_Writer* writer, const GPA_Path* path)
{
    if (path == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GPA_Path");
    orvlog_attr_uint(writer, "pa_NumEdges", path->pa_NumEdges);
    orvlog_attr_flags(writer, "pa_PathHints", &ORVLOG_PATH_HINTS, path->pa_PathHints);
    ggo_attr_box(writer, "pa_EnclosingBox", &path->pa_EnclosingBox);
    const ORVLOG_Content content(writer, "GPA_Path");
    const ORVLOG_Member member(writer, "GPA_Path", "pa_EdgeStart");
    const GGO_Point* starts = path->pa_EdgeStart;
    for (uint32_t i = 0; i < path->pa_NumEdges; ++i)
        dump_GGO_Point(writer, starts + i);
}

void dump_GPA_PathPointer(ORVLOG_Writer* writer, const GPA_PathPointer* pointer)
{
    if (pointer == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GPA_PathPointer");
    orvlog_attr_bool(writer, "lpp_EnablePixelPlacement", pointer->lpp_EnablePixelPlacement);
    if (pointer->lpp_EnablePixelPlacement != 0)
        orvlog_attr_enum(writer, "lpp_PixelPlacement", &ORVLOG_PLACEMENT, pointer->lpp_PixelPlacement);
    orvlog_attr_bool(writer, "lpp_PathOwned", pointer->lpp_PathOwned);
    const ORVLOG_Content content(writer, "GPA_PathPointer");
    dump_GPA_Path(writer, pointer->lpp_Path);
    const ORVLOG_Member member(writer, "GPA_PathPointer", "lpp_EdgePointer");
    if (pointer->lpp_Path == nullptr)
        orvlog_writer_warn(writer, "GPA_PathPointer without a path.");
    const uint32_t count = pointer->lpp_Path != nullptr ? pointer->lpp_Path->pa_NumEdges : 0;
    const GPA_EdgePointer* edges = pointer->lpp_EdgePointer;
    for (uint32_t i = 0; i < count; ++i)
        dump_GPA_EdgePointer(writer, edges + i);
}

void dump_GPA_PathStrokingParams(ORVLOG_Writer* writer, const GPA_PathStrokingParams* params)
{
    if (params == nullptr)
        return;
    const uint32_t flags = params->psp_Flags;
    orvlog_writer_begin_element(writer, "GPA_PathStrokingParams");
    orvlog_attr_enum(writer, "psp_Flags.S", &ORVLOG_CAP, GPA_PSP_START_CAP(flags));
    orvlog_attr_enum(writer, "psp_Flags.E", &ORVLOG_CAP, GPA_PSP_END_CAP(flags));
    orvlog_attr_enum(writer, "psp_Flags.J", &ORVLOG_JOIN, GPA_PSP_JOIN(flags));
    orvlog_attr_enum(writer, "psp_Flags.A", &ORVLOG_ADJUST, GPA_PSP_ADJUST(flags));
    orvlog_attr_bool(writer, "psp_Flags.Z", GPA_PSP_Z(flags));
    orvlog_attr_uint(writer, "psp_DashCount", params->psp_DashCount);
    orvlog_attr_enum(writer, "psp_DashCaps", &ORVLOG_CAP, params->psp_DashCaps);
    orvlog_attr_float(writer, "psp_StrokeWidth", params->psp_StrokeWidth);
    orvlog_attr_float(writer, "psp_MiterLimit", params->psp_MiterLimit);
    orvlog_attr_float(writer, "psp_DashStart", params->psp_DashStart);
    const ORVLOG_Content content(writer, "GPA_PathStrokingParams");
    orvlog_elem_named_floats(writer, "psp_DashLength", params->psp_DashLength, params->psp_DashCount);
}

void dump_shape_path_member(ORVLOG_Writer* writer, const char* member, const GPA_PathPointer* pointer)
{
    if (pointer == nullptr)
        return;
    const ORVLOG_Member inside(writer, "GSH_ShapePointer", member);
    dump_GPA_PathPointer(writer, pointer);
}
