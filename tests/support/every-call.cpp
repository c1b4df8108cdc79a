#include "tests/support/every-call.h"

#include <cstring>

namespace orvlog::test
{

namespace
{

constexpr GGO_Matrix kIdentity = {{1, 0, 0, 1, 0, 0}};

// A path of two edges, one straight and one of Bezier segments.
struct PathRecords
{
    GPA_StraightEdge straight = {{GPA_EDGE_STRAIGHT, GPA_SUBPATH_CONTINUE, 1}, 0, {{1, 0}}};
    GPA_BezierEdge bezier = {{GPA_EDGE_BEZIER, GPA_SUBPATH_END_CLOSED, 1}, 0, {{{0, 1}, {0, 2}, {-1, 2}}}};
    struct
    {
        GPA_Path path = {2, GPA_HINT_ONE_SUBPATH, {0, 0, 1, 2}, {{0, 0}}};
        GGO_Point second = {1, 0};
    } points;
    struct
    {
        GPA_PathPointer pointer = {};
        GPA_EdgePointer second = {};
    } path;

    PathRecords()
    {
        path.pointer.lpp_Path = &points.path;
        path.pointer.lpp_EdgePointer[0] = {&straight.se_Edge, 1};
        path.second = {&bezier.be_Edge, 0};
    }
};

struct StrokeRecords
{
    GPA_PathStrokingParams params = {0x0101, 2, GPA_CAP_BUTT, 0.5F, 4, 0, {1}};
    float second = 2;
};

struct TextRecords
{
    GFI_FontSpec spec = {12, GFI_TD_LEFT_TO_RIGHT, GFI_FV_STATIC};
    GFI_FontSpecPointer font = {&spec};
    uint8_t text[2] = {65, 66};
    GFI_GlyphSpec glyphs[2] = {{0, 7, 0, 0, 0}, {1, 8, 0.5F, 0, 1}};
    GFI_GlyphClusterSpec clusters[2] = {{1, 1, &glyphs[0]}, {1, 1, &glyphs[1]}};
    GFI_StringDesc desc = {2, 2, 0};
    GFI_StringDescPointer string = {&desc, text, clusters};
    GSH_GlyphShape shape = {{GSH_SHAPE_GLYPHS, 0, kIdentity}};
    GSH_ShapePointer pointer = {};

    TextRecords()
    {
        pointer.sp_HeaderPtr = &shape.gs_Shape;
        pointer.sp_U.glyph.font_spec_ptr = &font;
        pointer.sp_U.glyph.string_desc = &string;
    }
};

struct FlatRecords
{
    struct
    {
        GOP_OperandFlat flat = {};
        uint32_t more[3] = {};
    } record;
    GOP_OperandFlatPointer pointer = {};

    FlatRecords()
    {
        record.flat.fl_Operand.go_ColorInfo = GOP_COLOR_INFO(GOP_OCS_INPUT, GCM_CF_OTHER);
        record.flat.fl_Operand.go_ColorSpaceFamily = GCM_CSF_RGB;
        record.flat.fl_Color.num_chans = 3;
        record.flat.fl_Color.bit_depth = 32;
        pointer.flp_Pointer.op_Operand = &record.flat.fl_Operand;
        pointer.flp_Pointer.op_UniqueId = 4;
    }
};

}  // namespace

EveryCall::EveryCall()
    : ticket_{&tickets_, 11, ""}, other_ticket_{&tickets_, 12, ""}, document_engine_("document"),
      drawing_engine_("drawing"), group_engine_("group")
{
}

uint32_t EveryCall::note(uint32_t result)
{
    results_.push_back(result);
    return result;
}

void EveryCall::start_group(ORV_DrawingInterface* drawing, const GFI_FontEngineTable* engine, void* ticket)
{
    PathRecords path;
    FlatRecords flat;
    GSH_FilledPathShape fill = {{GSH_SHAPE_FILL, 0, kIdentity}, GPA_WINDING_NON_ZERO};
    GSH_ShapeList clip = {};
    clip.sl_Shape.sp_HeaderPtr = &fill.fps_Shape;
    clip.sl_Shape.sp_U.filled_path = &path.path.pointer;
    GOP_Operator op = {};
    op.op_OperatorType = GOP_ROP_PDF_SEPARABLE;
    op.op_MaskMode = GOP_MASK_IN;
    const GBC_Color* color = &flat.record.flat.fl_Color;
    const GGO_BoxFloat box = {0, 0, 1, 1};
    uint32_t group = 0;
    note(drawing->group_start.fn(drawing, 1, &group, engine, 0, ORV_GROUP_NON_ISOLATED, 1, 0, ticket, 0, 1, 2,
                                 &kIdentity, &op, &flat.pointer.flp_Pointer, &clip, ORV_GROUP_TILE_X, 1, 2, color,
                                 color, &box));
}

void EveryCall::draw(ORV_DrawingInterface* drawing, uint32_t resource_id)
{
    PathRecords path;
    StrokeRecords stroke;
    TextRecords text;
    FlatRecords flat;
    GSH_FilledPathShape fill = {{GSH_SHAPE_FILL, 0, kIdentity}, GPA_WINDING_ODD_EVEN};
    GSH_ShapePointer shape = {};
    shape.sp_HeaderPtr = &fill.fps_Shape;
    shape.sp_U.filled_path = &path.path.pointer;
    GSH_ShapeList clip = {};
    clip.sl_Shape = shape;
    GOP_Operator op = {};
    op.op_OperatorType = GOP_ROP_ROP4;
    GOP_OperandPointer* operand = &flat.pointer.flp_Pointer;
    GGO_Point end = {};

    note(drawing->object_paint.fn(drawing, 4, 0, &op, &shape, 0, &clip, operand, operand, operand));
    note(drawing->object_paint.fn(drawing, 1, 0, &op, &text.pointer, 0, nullptr, operand, nullptr, nullptr));
    note(drawing->object_paint_and_stroke.fn(drawing, 4, 2, 0, &op, &op, &shape, &stroke.params, nullptr, 0, &clip, 3,
                                             &end, operand, operand, operand, operand, operand, operand));
    note(drawing->object_paint_and_stroke.fn(drawing, 1, 2, 0, &op, &op, &text.pointer, &stroke.params, &kIdentity, 0,
                                             &clip, 3, &end, operand, operand, operand, operand, operand, operand));
    note(drawing->resource_paint.fn(drawing, resource_id, 0, 0, &kIdentity, &op, operand, &clip, 0, 0, 0, nullptr,
                                    nullptr, 0));
    drawing->drawing_error_context.fn(drawing);
    start_group(drawing, group_engine_.get(), &other_ticket_);
    start_group(drawing, nullptr, nullptr);
    note(drawing->object_paint.fn(drawing, 4, 0, nullptr, &shape, 0, nullptr, operand, nullptr, nullptr));
    uint32_t replay = 0;
    note(drawing->group_finish.fn(drawing, &replay));
    note(drawing->group_finish.fn(drawing, &replay));
}

uint32_t EveryCall::run(ORV_Interface* orv)
{
    results_.clear();
    void* document = nullptr;
    if (note(orv->document_start.fn(nullptr, orv, &document, 1, document_engine_.get(), nullptr)) == 0)
        return static_cast<uint32_t>(results_.size());
    const ORV_FaceProperties face_properties = {0, kIdentity, 10, 10, {0, 0, 1, 1}, {0, 0, 1, 1}, {1, 1}};
    const ORV_ResourceProperties resource_properties = {0, 1, 0, 1, 2, {0, 0, 1, 1}};
    ORV_DrawingInterface face = {};
    ORV_DrawingInterface resource = {};
    ORV_DrawingInterface memory = {};
    uint32_t resource_id = 0;
    if (note(orv->resource_start.fn(nullptr, orv, document, &resource, nullptr, drawing_engine_.get(),
                                    &resource_properties, &ticket_, &resource_id)) != 0)
    {
        start_group(&resource, nullptr, &ticket_);
        note(resource.drawing_finish.fn(&resource));
    }
    if (note(orv->face_start.fn(nullptr, orv, document, &face, drawing_engine_.get(), 1, &face_properties, &ticket_, 0,
                                0)) != 0)
    {
        draw(&face, resource_id);
        note(face.drawing_finish.fn(&face));
    }
    if (note(orv->face_start.fn(nullptr, orv, document, &face, nullptr, 2, &face_properties, &ticket_, 0, 0)) != 0)
    {
        draw(&face, resource_id);
        note(face.drawing_discard.fn(&face));
    }
    if (note(orv->memory_context_start.fn(nullptr, orv, document, &memory, 1, 2, 3, 4, 5, drawing_engine_.get(),
                                          &ticket_, 8, 9, 10, 11, 12, 13)) != 0)
    {
        draw(&memory, resource_id);
        note(memory.drawing_finish.fn(&memory));
    }
    note(orv->resource_destroy.fn(nullptr, orv, document, nullptr, resource_id));
    note(orv->document_finish.fn(orv, document));
    return static_cast<uint32_t>(results_.size());
}

}  // namespace orvlog::test
