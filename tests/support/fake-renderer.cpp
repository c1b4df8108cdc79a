#include "tests/support/fake-renderer.h"

#include <algorithm>
#include <cstdio>

namespace orvlog::test
{

namespace
{

std::string number(const char* name, uint64_t value)
{
    return std::string(" ") + name + "=" + std::to_string(value);
}

std::string whole(const char* name, double value)
{
    return number(name, value < 1e9 ? static_cast<uint64_t>(value) : 0);
}

std::string address(const char* name, const void* value)
{
    return number(name, reinterpret_cast<uintptr_t>(value));
}

}  // namespace

uint32_t FakeRenderer::count(const std::string& call) const
{
    return static_cast<uint32_t>(std::count_if(
        calls_.begin(), calls_.end(), [&](const std::string& made) { return made.substr(0, made.find(' ')) == call; }));
}

uint32_t FakeRenderer::arrive(const char* call, const std::string& arguments)
{
    ++arrivals_;
    calls_.push_back(call + arguments);
    if (hook_)
        hook_(call);
    if (arrivals_ == fail_at_)
    {
        ++failed_;
        return 0;
    }
    return result_;
}

void FakeRenderer::fill_drawing(ORV_DrawingInterface* drawing)
{
    drawing->object_paint.context = this;
    drawing->object_paint.fn = [](const ORV_DrawingInterface* table, uint8_t type, uint32_t hints,
                                  const GOP_Operator* op, const GSH_ShapePointer* path, uint32_t placement,
                                  const GSH_ShapeList* clip, GOP_OperandPointer* o1, GOP_OperandPointer* o2,
                                  GOP_OperandPointer* o3)
    {
        FakeRenderer* r = of(table->object_paint.context);
        r->last_table = table;
        r->last_op = op;
        r->last_shape = path;
        r->last_clip = clip;
        r->last_operands[0] = o1;
        r->last_operands[1] = o2;
        r->last_operands[2] = o3;
        return r->arrive("object_paint",
                         number("type", type) + number("hints", hints) + number("placement", placement));
    };
    drawing->object_paint_and_stroke.context = this;
    drawing->object_paint_and_stroke.fn = [](const ORV_DrawingInterface* table, uint8_t fill_type, uint8_t stroke_type,
                                             uint32_t hints, const GOP_Operator* fill_op, const GOP_Operator* stroke_op,
                                             const GSH_ShapePointer* path, const GPA_PathStrokingParams* params,
                                             const GGO_Matrix* transform, uint32_t placement, const GSH_ShapeList* clip,
                                             uint32_t flags, GGO_Point* end_point, GOP_OperandPointer* f1,
                                             GOP_OperandPointer* f2, GOP_OperandPointer* f3, GOP_OperandPointer* s1,
                                             GOP_OperandPointer* s2, GOP_OperandPointer* s3)
    {
        FakeRenderer* r = of(table->object_paint_and_stroke.context);
        r->last_table = table;
        r->last_op = fill_op;
        r->last_shape = path;
        r->last_clip = clip;
        r->last_end_point = end_point;
        GOP_OperandPointer* const operands[] = {f1, f2, f3, s1, s2, s3};
        std::copy(operands, operands + 6, r->last_operands);
        return r->arrive("object_paint_and_stroke",
                         number("fill_type", fill_type) + number("stroke_type", stroke_type) + number("hints", hints) +
                             address("stroke_op", stroke_op) + address("params", params) +
                             address("transform", transform) + number("placement", placement) + number("flags", flags));
    };
    drawing->group_start.context = this;
    drawing->group_start.fn = [](const ORV_DrawingInterface* table, uint32_t unique_id, uint32_t* group_out,
                                 const GFI_FontEngineTable* engine, uint32_t hints, uint32_t type, uint32_t knockout,
                                 uint32_t replayable, void* ticket, uint32_t orientation, uint32_t has_placement,
                                 uint32_t placement, const GGO_Matrix* retransform, const GOP_Operator* op,
                                 GOP_OperandPointer* o2, const GSH_ShapeList* clip, uint32_t tiling, double x, double y,
                                 const GBC_Color* mask, const GBC_Color* color, const GGO_BoxFloat* box)
    {
        FakeRenderer* r = of(table->group_start.context);
        r->last_table = table;
        r->last_engine = engine;
        r->last_ticket = ticket;
        r->last_op = op;
        r->last_operands[1] = o2;
        r->last_clip = clip;
        if (group_out != nullptr)
            *group_out = r->group_;
        return r->arrive("group_start", number("unique_id", unique_id) + number("hints", hints) + number("type", type) +
                                            number("knockout", knockout) + number("replayable", replayable) +
                                            number("orientation", orientation) +
                                            number("has_placement", has_placement) + number("placement", placement) +
                                            address("retransform", retransform) + number("tiling", tiling) +
                                            whole("x", x) + whole("y", y) + address("mask", mask) +
                                            address("color", color) + address("box", box));
    };
    drawing->group_finish.context = this;
    drawing->group_finish.fn = [](const ORV_DrawingInterface* table, uint32_t* replay_out)
    {
        FakeRenderer* r = of(table->group_finish.context);
        r->last_table = table;
        *replay_out = r->replay_;
        return r->arrive("group_finish", "");
    };
    drawing->resource_paint.context = this;
    drawing->resource_paint.fn = [](const ORV_DrawingInterface* table, uint32_t resource_id, uint32_t hints,
                                    uint32_t type, const GGO_Matrix* retransform, const GOP_Operator* op,
                                    GOP_OperandPointer* o2, const GSH_ShapeList* clip, uint32_t tiling, double x,
                                    double y, const GBC_Color* mask, const GBC_Color* color, uint32_t orientation)
    {
        FakeRenderer* r = of(table->resource_paint.context);
        r->last_table = table;
        r->last_op = op;
        r->last_operands[1] = o2;
        r->last_clip = clip;
        return r->arrive("resource_paint", number("resource", resource_id) + number("hints", hints) +
                                               number("type", type) + address("retransform", retransform) +
                                               number("tiling", tiling) + whole("x", x) + whole("y", y) +
                                               address("mask", mask) + address("color", color) +
                                               number("orientation", orientation));
    };
    drawing->drawing_error_context.context = this;
    drawing->drawing_error_context.fn = [](const ORV_DrawingInterface* table) -> void*
    {
        of(table->drawing_error_context.context)->arrive("drawing_error_context", "");
        return nullptr;
    };
    drawing->drawing_finish.context = this;
    drawing->drawing_finish.fn = [](const ORV_DrawingInterface* table)
    { return of(table->drawing_finish.context)->arrive("drawing_finish", ""); };
    drawing->drawing_discard.context = this;
    drawing->drawing_discard.fn = [](const ORV_DrawingInterface* table)
    { return of(table->drawing_discard.context)->arrive("drawing_discard", ""); };
}

FakeRenderer::FakeRenderer(std::string name) : name_(std::move(name)), table_{}
{
    table_.document_start.context = this;
    table_.document_start.fn = [](void* err, const ORV_Interface* table, void** document_out, uint32_t document_id,
                                  const GFI_FontEngineTable* engine, void* extra)
    {
        FakeRenderer* r = of(table->document_start.context);
        r->last_table = table;
        r->last_engine = engine;
        *document_out = r;
        return r->arrive("document_start", address("err", err) + number("id", document_id) + address("extra", extra));
    };
    table_.document_finish.context = this;
    table_.document_finish.fn = [](const ORV_Interface* table, void* document)
    {
        FakeRenderer* r = of(table->document_finish.context);
        return r->arrive("document_finish", document == r ? " own-document" : " foreign-document");
    };
    table_.resource_destroy.context = this;
    table_.resource_destroy.fn = [](void* err, const ORV_Interface* table, void* document,
                                    const ORV_DrawingInterface* parent, uint32_t resource_id)
    {
        FakeRenderer* r = of(table->resource_destroy.context);
        r->last_parent = parent;
        return r->arrive("resource_destroy", address("err", err) + number("resource", resource_id) +
                                                 (document == r ? " own-document" : " foreign-document"));
    };
    table_.face_start.context = this;
    table_.face_start.fn = [](void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing_out,
                              const GFI_FontEngineTable* engine, uint32_t sequence,
                              const ORV_FaceProperties* properties, void* ticket, uint32_t orientation,
                              uint32_t placement)
    {
        FakeRenderer* r = of(table->face_start.context);
        r->fill_drawing(drawing_out);
        r->last_engine = engine;
        r->last_ticket = ticket;
        return r->arrive("face_start", address("err", err) + number("sequence", sequence) +
                                           address("properties", properties) + number("orientation", orientation) +
                                           number("placement", placement) +
                                           (document == r ? " own-document" : " foreign-document"));
    };
    table_.resource_start.context = this;
    table_.resource_start.fn = [](void* err, const ORV_Interface* table, void* document,
                                  ORV_DrawingInterface* drawing_out, const ORV_DrawingInterface* parent,
                                  const GFI_FontEngineTable* engine, const ORV_ResourceProperties* properties,
                                  void* ticket, uint32_t* resource_id_out)
    {
        FakeRenderer* r = of(table->resource_start.context);
        r->fill_drawing(drawing_out);
        r->last_engine = engine;
        r->last_ticket = ticket;
        r->last_parent = parent;
        *resource_id_out = r->next_resource_++;
        return r->arrive("resource_start", address("err", err) + address("properties", properties) +
                                               (document == r ? " own-document" : " foreign-document"));
    };
    table_.memory_context_start.context = this;
    table_.memory_context_start.fn =
        [](void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing_out, uintptr_t w1,
           uintptr_t w2, uintptr_t w3, uintptr_t w4, uintptr_t w5, const GFI_FontEngineTable* engine, void* ticket,
           uintptr_t w8, uintptr_t w9, uintptr_t w10, uintptr_t w11, uintptr_t w12, uintptr_t w13)
    {
        FakeRenderer* r = of(table->memory_context_start.context);
        r->fill_drawing(drawing_out);
        r->last_engine = engine;
        r->last_ticket = ticket;
        const uintptr_t words[] = {w1, w2, w3, w4, w5, 0, 0, w8, w9, w10, w11, w12, w13};
        std::copy(words, words + 13, r->last_words);
        return r->arrive("memory_context_start",
                         address("err", err) + (document == r ? " own-document" : " foreign-document"));
    };
}

}  // namespace orvlog::test
