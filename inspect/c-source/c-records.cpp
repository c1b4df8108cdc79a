#include "inspect/c-source/c-records.h"

#include "inspect/c-source/c-text.h"
#include "orvlog/names/orvlog-names.h"

#include <algorithm>
#include <vector>

namespace orvlog::inspect
{

namespace
{

std::string vector_text(const GGO_Vector& record)
{
    return "{" + c_double(record.gvf_X) + ", " + c_double(record.gvf_Y) + "}";
}

std::string stroke_flags(uint32_t flags)
{
    return flags == 0
               ? "0"
               : "STROKE_FLAGS(" + c_enum(ORVLOG_CAP, GPA_PSP_START_CAP(flags)) + ", " +
                     c_enum(ORVLOG_CAP, GPA_PSP_END_CAP(flags)) + ", " + c_enum(ORVLOG_JOIN, GPA_PSP_JOIN(flags)) +
                     ", " + c_enum(ORVLOG_ADJUST, GPA_PSP_ADJUST(flags)) + ", " + c_uint(GPA_PSP_Z(flags)) + ")";
}

// Of a STROKE(n).
std::string stroke_text(const GPA_PathStrokingParams& record)
{
    std::vector<std::string> dashes;
    for (const float dash : std::span(record.psp_DashLength, record.psp_DashCount))
        dashes.push_back(c_float(dash));
    return CFields()
        .add("psp_Flags", stroke_flags(record.psp_Flags))
        .add("psp_DashCount", c_uint(record.psp_DashCount))
        .add("psp_DashCaps", record.psp_DashCaps == 0 ? "0" : c_enum(ORVLOG_CAP, record.psp_DashCaps))
        .add("psp_StrokeWidth", c_float(record.psp_StrokeWidth))
        .add("psp_MiterLimit", c_float(record.psp_MiterLimit))
        .add("psp_DashStart", c_float(record.psp_DashStart))
        .add("psp_DashLength", c_list(dashes))
        .text();
}

std::string room(size_t count)
{
    return "(" + std::to_string(std::max<size_t>(count, 1)) + ")";
}

std::string edge_head(const GPA_Edge& record)
{
    const uint32_t end = record.ed_EdgeFlag & 0x7FU;
    const std::string suppressed = (record.ed_EdgeFlag & 0x80U) != 0 ? "GPA_SUPPRESS_STROKING_FLAG | " : "";
    return "{" + c_enum(ORVLOG_EDGE_TYPE, record.ed_EdgeType) + ", " + suppressed + c_enum(ORVLOG_SUBPATH, end) + ", " +
           c_uint(record.ed_SegmentCount) + "}";
}

}  // namespace

std::string CRecords::matrix_text(const GGO_Matrix& record)
{
    std::vector<std::string> values;
    for (const double value : record.m)
        values.push_back(c_double(value));
    return "{" + c_list(values) + "}";
}

std::string CRecords::box_text(const GGO_BoxFloat& record)
{
    return "{" + c_double(record.gbf_MinX) + ", " + c_double(record.gbf_MinY) + ", " + c_double(record.gbf_MaxX) +
           ", " + c_double(record.gbf_MaxY) + "}";
}

std::string CRecords::matrix(std::string_view base, const GGO_Matrix* record)
{
    return record == nullptr ? "NULL" : define("const GGO_Matrix", base, matrix_text(*record));
}

std::string CRecords::box(std::string_view base, const GGO_BoxFloat* record)
{
    return record == nullptr ? "NULL" : define("const GGO_BoxFloat", base, box_text(*record));
}

std::string CRecords::op(std::string_view base, const GOP_Operator* record)
{
    if (record == nullptr)
        return "NULL";
    const CFields fields =
        CFields()
            .add("op_OperatorType", c_enum(ORVLOG_OPERATOR_TYPE, record->op_OperatorType))
            .add("op_Operator", c_uint(record->op_Operator))
            .add("op_TransparencyType",
                 record->op_TransparencyType == 0 ? "0" : c_enum(ORVLOG_TRANSPARENCY_TYPE, record->op_TransparencyType))
            .add("op_TransparencyFlags", c_flags(ORVLOG_TRANSPARENCY_FLAGS, record->op_TransparencyFlags))
            .add("op_MaskMode", record->op_MaskMode == 0 ? "0" : c_enum(ORVLOG_MASK_MODE, record->op_MaskMode))
            .add("op_OperatorHints", c_flags(ORVLOG_OPERATOR_HINTS, record->op_OperatorHints))
            .add("op_BitmapTransferFn", record->op_BitmapTransferFn != nullptr ? "transfer" : "NULL")
            .add("op_ColorTransferFn", record->op_ColorTransferFn != nullptr ? "transfer" : "NULL");
    return define("const GOP_Operator", base, fields.text());
}

std::string CRecords::stroke(std::string_view base, const GPA_PathStrokingParams* record)
{
    if (record == nullptr)
        return "NULL";
    const std::string made = define("const STROKE" + room(record->psp_DashCount), base, stroke_text(*record));
    return "(const GPA_PathStrokingParams*)" + made;
}

std::string CRecords::edge(const GPA_Edge* record)
{
    if (record == nullptr)
        return "NULL";
    std::vector<std::string> segments;
    const size_t count = record->ed_SegmentCount;
    const char* type = "STRAIGHT";
    uint32_t positive = 0;
    if (record->ed_EdgeType == GPA_EDGE_STRAIGHT)
    {
        const auto* edge = reinterpret_cast<const GPA_StraightEdge*>(record);
        for (const GGO_Vector& one : std::span(edge->se_Segment, count))
            segments.push_back(vector_text(one));
    }
    else if (record->ed_EdgeType == GPA_EDGE_BEZIER)
    {
        type = "BEZIER";
        const auto* edge = reinterpret_cast<const GPA_BezierEdge*>(record);
        for (const GPA_BezierSegment& one : std::span(edge->be_BezierSegment, count))
            segments.push_back("{" + vector_text(one.bs_StartTangent) + ", " + vector_text(one.bs_EndTangent) + ", " +
                               vector_text(one.bs_EndPoint) + "}");
    }
    else if (record->ed_EdgeType == GPA_EDGE_QUAD_BEZIER)
    {
        type = "QUAD_BEZIER";
        const auto* edge = reinterpret_cast<const GPA_QuadBezierEdge*>(record);
        for (const GPA_QuadBezierSegment& one : std::span(edge->qb_QuadBezierSegment, count))
            segments.push_back("{" + vector_text(one.qs_ControlPoint) + ", " + vector_text(one.qs_EndPoint) + "}");
    }
    else if (record->ed_EdgeType == GPA_EDGE_STAIRCASE)
    {
        type = "STAIRCASE";
        const auto* edge = reinterpret_cast<const GPA_StaircaseEdge*>(record);
        positive = edge->sc_YPositive;
        for (const GPA_StaircaseSegment& one : std::span(edge->sc_Field, count))
            segments.push_back("{" + c_uint(one.ss_YOffset) + ", " + c_int(one.ss_XOffset) + "}");
    }
    else if (record->ed_EdgeType == GPA_EDGE_ELLIPTICAL)
    {
        type = "ELLIPTICAL";
        const auto* edge = reinterpret_cast<const GPA_EllipticalEdge*>(record);
        for (const GPA_EllipticalSegment& one : std::span(edge->ee_EllipticalSegment, count))
            segments.push_back("{" + c_double(one.es_XRadius) + ", " + c_double(one.es_YRadius) + ", " +
                               c_double(one.es_AngleToXAxis) + ", " + vector_text(one.es_EndPoint) + "}");
    }
    const std::string fields = CFields()
                                   .add("edge", edge_head(*record))
                                   .add("positive", c_uint(positive))
                                   .add("segments", c_list(segments))
                                   .text();
    return "(const GPA_Edge*)" + define(std::string("const ") + type + room(segments.size()), "edge", fields);
}

std::string CRecords::path(std::string_view base, const GPA_PathPointer* record)
{
    if (record == nullptr)
        return "NULL";
    const GPA_Path* path = record->lpp_Path;
    const size_t count = path != nullptr ? path->pa_NumEdges : 0;
    std::vector<std::string> starts;
    std::vector<std::string> edges;
    for (size_t i = 0; i < count; ++i)
    {
        starts.push_back("{" + c_double(path->pa_EdgeStart[i].gpf_X) + ", " + c_double(path->pa_EdgeStart[i].gpf_Y) +
                         "}");
        edges.push_back("{" + edge(record->lpp_EdgePointer[i].ep_Pointer) + ", " +
                        c_uint(record->lpp_EdgePointer[i].ep_Owned) + "}");
    }
    std::string inner = "NULL";
    if (path != nullptr)
        inner = "(const GPA_Path*)" + define("const PATH" + room(count), "path",
                                             CFields()
                                                 .add("pa_NumEdges", c_uint(path->pa_NumEdges))
                                                 .add("pa_PathHints", c_flags(ORVLOG_PATH_HINTS, path->pa_PathHints))
                                                 .add("pa_EnclosingBox", box_text(path->pa_EnclosingBox))
                                                 .add("pa_EdgeStart", c_list(starts))
                                                 .text());
    const std::string placement =
        record->lpp_PixelPlacement == 0 ? "0" : c_enum(ORVLOG_PLACEMENT, record->lpp_PixelPlacement);
    return "(const GPA_PathPointer*)" +
           define("const PATH_POINTER" + room(count), base,
                  CFields()
                      .add("lpp_Path", inner)
                      .add("lpp_PixelPlacement", placement)
                      .add("lpp_EnablePixelPlacement", c_uint(record->lpp_EnablePixelPlacement))
                      .add("lpp_PathOwned", c_uint(record->lpp_PathOwned))
                      .add("lpp_EdgePointer", c_list(edges))
                      .text());
}

std::string CRecords::header(const GSH_Shape* record)
{
    if (record == nullptr)
        return "NULL";
    const std::string head = "{" + c_enum(ORVLOG_SHAPE_TYPE, record->sh_ShapeType) + ", " +
                             c_flags(ORVLOG_SHAPE_HINTS, record->sh_Hints) + ", " + matrix_text(record->sh_Transform) +
                             "}";
    std::string type = "const GSH_GlyphShape";
    CFields fields;
    if (record->sh_ShapeType == GSH_SHAPE_FILL)
    {
        type = "const GSH_FilledPathShape";
        const auto* shape = reinterpret_cast<const GSH_FilledPathShape*>(record);
        fields.add("fps_Shape", head).add("fps_WindingRule", c_enum(ORVLOG_WINDING, shape->fps_WindingRule));
    }
    else if (record->sh_ShapeType == GSH_SHAPE_STROKE)
    {
        const auto* shape = reinterpret_cast<const GSH_StrokedPathShape*>(record);
        type = "const STROKED_PATH_SHAPE" + room(shape->sps_StrokingParams.psp_DashCount);
        fields.add("shape", head)
            .add("winding", c_enum(ORVLOG_WINDING, shape->sps_WindingRule))
            .add("stroke", stroke_text(shape->sps_StrokingParams));
    }
    else if (record->sh_ShapeType == GSH_SHAPE_IMAGE_RECT)
    {
        type = "const GSH_ImageRectShape";
        const auto* shape = reinterpret_cast<const GSH_ImageRectShape*>(record);
        fields.add("irs_Shape", head)
            .add("irs_ImageWidth", c_uint(shape->irs_ImageWidth))
            .add("irs_ImageHeight", c_uint(shape->irs_ImageHeight));
    }
    else if (record->sh_ShapeType == GSH_SHAPE_MULTI_RECT)
    {
        const auto* shape = reinterpret_cast<const GSH_MultiRectShape*>(record);
        std::vector<std::string> boxes;
        for (const GGO_BoxInt& one : std::span(shape->mrs_Rect, shape->mrs_RectCount))
            boxes.push_back("{" + c_int(one.gbi_MinX) + ", " + c_int(one.gbi_MinY) + ", " + c_int(one.gbi_MaxX) + ", " +
                            c_int(one.gbi_MaxY) + "}");
        type = "const MULTI_RECT_SHAPE" + room(boxes.size());
        fields.add("shape", head).add("count", c_uint(shape->mrs_RectCount)).add("boxes", c_list(boxes));
    }
    else if (record->sh_ShapeType == GSH_SHAPE_SCANLINE)
    {
        const auto* shape = reinterpret_cast<const GSH_ScanlineShape*>(record);
        std::vector<std::string> limits;
        for (const GSH_XLimits& one : std::span(shape->ss_XLimits, shape->ss_Height))
            limits.push_back("{" + c_int(one.xl_StartX) + ", " + c_int(one.xl_StopX) + "}");
        const GGO_BoxInt& bounds = shape->ss_BoundingBox;
        type = "const SCANLINE_SHAPE" + room(limits.size());
        fields.add("shape", head)
            .add("box", "{" + c_int(bounds.gbi_MinX) + ", " + c_int(bounds.gbi_MinY) + ", " + c_int(bounds.gbi_MaxX) +
                            ", " + c_int(bounds.gbi_MaxY) + "}")
            .add("start", c_int(shape->ss_StartY))
            .add("height", c_uint(shape->ss_Height))
            .add("limits", c_list(limits));
    }
    else if (record->sh_ShapeType == GSH_SHAPE_STROKE_GLYPHS)
    {
        const auto* shape = reinterpret_cast<const GSH_StrokedGlyphShape*>(record);
        type = "const STROKED_GLYPH_SHAPE" + room(shape->sgs_StrokingParams.psp_DashCount);
        fields.add("shape", head)
            .add("transform", matrix_text(shape->sgs_StrokingTransform))
            .add("stroke", stroke_text(shape->sgs_StrokingParams));
    }
    else
        fields.add("gs_Shape", head);
    return "(const GSH_Shape*)" + define(type, "shape", fields.text());
}

std::string CRecords::shape_text(const GSH_ShapePointer& record)
{
    const std::string head = header(record.sp_HeaderPtr);
    CFields inner;
    const uint32_t type = record.sp_HeaderPtr != nullptr ? record.sp_HeaderPtr->sh_ShapeType : UINT32_MAX;
    if (type == GSH_SHAPE_FILL)
        inner.add("filled_path", path("path_pointer", record.sp_U.filled_path));
    if (type == GSH_SHAPE_STROKE)
        inner.add("stroked_path", path("path_pointer", record.sp_U.stroked_path));
    if (type == GSH_SHAPE_GLYPHS || type == GSH_SHAPE_STROKE_GLYPHS)
    {
        const std::string spec = font(record.sp_U.glyph.font_spec_ptr);
        inner.add("glyph", "{" + spec + ", " + string(record.sp_U.glyph.string_desc) + "}");
    }
    CFields fields;
    fields.add("sp_HeaderPtr", head);
    if (inner.list() != "0")
        fields.add("sp_U", inner.text());
    return fields.text();
}

std::string CRecords::shape(std::string_view base, const GSH_ShapePointer* record)
{
    return record == nullptr ? "NULL" : define("const GSH_ShapePointer", base, shape_text(*record));
}

std::string CRecords::clip(std::string_view base, const GSH_ShapeList* record)
{
    std::vector<const GSH_ShapeList*> lists;
    for (; record != nullptr; record = record->sl_Next)
        lists.push_back(record);
    std::string next = "NULL";
    for (auto one = lists.rbegin(); one != lists.rend(); ++one)
    {
        const std::string collection = clip("collection", (*one)->sl_Collection);
        const std::string shape = shape_text((*one)->sl_Shape);
        next = define("const GSH_ShapeList", base,
                      CFields()
                          .add("sl_Hints", c_flags(ORVLOG_SHAPE_LIST_HINTS, (*one)->sl_Hints))
                          .add("sl_ClipIn", c_uint((*one)->sl_ClipIn))
                          .add("sl_Shape", shape)
                          .add("sl_Next", next)
                          .add("sl_Collection", collection)
                          .add("sl_UniqueId", c_uint((*one)->sl_UniqueId))
                          .text());
    }
    return next;
}

std::string CRecords::face(const ORV_FaceProperties* record)
{
    if (record == nullptr)
        return "NULL";
    return define("const ORV_FaceProperties", "face",
                  CFields()
                      .add("fp_FaceHints", c_flags(ORVLOG_FACE_HINTS, record->fp_FaceHints))
                      .add("fp_FaceInchToPixels", matrix_text(record->fp_FaceInchToPixels))
                      .add("fp_WidthInPixels", c_uint(record->fp_WidthInPixels))
                      .add("fp_HeightInPixels", c_uint(record->fp_HeightInPixels))
                      .add("fp_TrimBox", box_text(record->fp_TrimBox))
                      .add("fp_ClipBox", box_text(record->fp_ClipBox))
                      .add("fp_MediaSize", "{" + c_double(record->fp_MediaSize.gpf_X) + ", " +
                                               c_double(record->fp_MediaSize.gpf_Y) + "}")
                      .text());
}

std::string CRecords::resource(const ORV_ResourceProperties* record)
{
    if (record == nullptr)
        return "NULL";
    return define("const ORV_ResourceProperties", "resource",
                  CFields()
                      .add("rp_ResourceHints", c_flags(ORVLOG_RESOURCE_HINTS, record->rp_ResourceHints))
                      .add("rp_MaxRescale", c_float(record->rp_MaxRescale))
                      .add("rp_IsKnockout", c_uint(record->rp_IsKnockout))
                      .add("rp_HasPixelPlacementRule", c_uint(record->rp_HasPixelPlacementRule))
                      .add("rp_PixelPlacementRule", record->rp_PixelPlacementRule == 0
                                                        ? "0"
                                                        : c_enum(ORVLOG_PLACEMENT, record->rp_PixelPlacementRule))
                      .add("rp_Enclosing_box", box_text(record->rp_Enclosing_box))
                      .text());
}

}  // namespace orvlog::inspect
