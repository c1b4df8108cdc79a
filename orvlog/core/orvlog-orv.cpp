#include "orvlog/core/orvlog-orv.h"

#include "holv-core/ger/ger-error.h"
#include "orvlog/font/orvlog-font-wrapper.h"
#include "orvlog/image/orvlog-image-wrapper.h"
#include "orvlog/log/orvlog-attributes.h"

namespace
{

constexpr int32_t kSeverity = 1;
constexpr int32_t kModule = 6;
constexpr int32_t kCodeBase = 33300000;
constexpr uint16_t kImageProcessingWithoutOperand2 = 3;

bool operator_uses_operand2(const GOP_Operator* op)
{
    return op->op_MaskMode != GOP_MASK_NONE || op->op_OperatorType == GOP_ROP_ROP3 ||
           op->op_OperatorType == GOP_ROP_ROP4 ||
           (op->op_OperatorType == GOP_ROP_IMAGE_PROCESSING && op->op_Operator != kImageProcessingWithoutOperand2);
}

}  // namespace

void orvlog_fill_drawing_interface(ORV_DrawingInterface* table, ORVLOG_DrawingContext* drawing)
{
    table->object_paint = {orvlog_object_paint, drawing};
    table->object_paint_and_stroke = {orvlog_object_paint_and_stroke, drawing};
    table->group_start = {orvlog_group_start, drawing};
    table->group_finish = {orvlog_group_finish, drawing};
    table->resource_paint = {orvlog_resource_paint, drawing};
    table->drawing_error_context = {orvlog_drawing_error_context, drawing};
    table->drawing_finish = {orvlog_drawing_finish, drawing};
    table->drawing_discard = {orvlog_drawing_discard, drawing};
}

const ORV_Interface* orvlog_renderer_of(const ORV_Interface* table)
{
    return table->base.renderer;
}

ORVLOG_EngineArgument orvlog_wrap_engine(ORVLOG_Session* session, const GFI_FontEngineTable* engine)
{
    const GFI_FontEngineTable* wrapped = nullptr;
    if (engine != nullptr && font_wrapper_create(session, &wrapped, engine) != 0)
        return {wrapped, wrapped};
    return {nullptr, engine};
}

void orvlog_attr_font_engine(ORVLOG_Writer* writer, const GFI_FontEngineTable* wrapped)
{
    orvlog_attr_bool(writer, "font_engine_functions", wrapped != nullptr ? 1 : 0);
    if (wrapped == nullptr)
        return;
    const char* engine_id = font_engine_id(wrapped);
    if (engine_id != nullptr)
        orvlog_attr_string(writer, "fp_EngineIdGet", engine_id);
    orvlog_attr_uint(writer, "GfpId", font_wrapper_id(wrapped));
}

void orvlog_count_operands(ORVLOG_CallOperand* operands, const GOP_Operator* op)
{
    operands[0].counts = operands[0].operand != nullptr ? 1 : 0;
    operands[1].counts = operands[1].operand != nullptr && op != nullptr && operator_uses_operand2(op) ? 1 : 0;
    operands[2].counts = operands[2].operand != nullptr && op != nullptr && op->op_OperatorType == GOP_ROP_ROP4 ? 1 : 0;
}

void orvlog_count_mask_operand(ORVLOG_CallOperand* operand, const GOP_Operator* op)
{
    operand->counts = operand->operand != nullptr && op != nullptr && op->op_MaskMode != GOP_MASK_NONE ? 1 : 0;
}

void orvlog_replace_operands(ORVLOG_Session* session, ORVLOG_CallOperand* operands, uint32_t count)
{
    for (uint32_t i = 0; i < count; ++i)
    {
        ORVLOG_CallOperand* operand = &operands[i];
        if (operand->counts == 0)
            continue;
        const GOP_OperandPointer* before = operand->operand;
        ORVLOG_ReplaceImageOperand(session, &operand->operand, &operand->kept);
        operand->replaced = operand->operand != before ? 1 : 0;
    }
}

void orvlog_release_operands(const ORVLOG_CallOperand* operands, uint32_t count)
{
    for (uint32_t i = 0; i < count; ++i)
    {
        const ORVLOG_CallOperand* operand = &operands[i];
        if (operand->replaced != 0)
            ORVLOG_EndImageCall(reinterpret_cast<GOP_OperandImagePointer*>(operand->operand), operand->kept);
    }
}

uint32_t orvlog_result_after_dump(const ORVLOG_DrawingContext* drawing, uint32_t read_well, uint32_t result,
                                  int32_t line)
{
    if (read_well != 0 || !orvlog_session_is_base(drawing->session))
        return result;
    GER_ErrorSet(static_cast<GER_Error*>(drawing->error_context), kSeverity, kModule, kCodeBase + line,
                 "ORVLOG: Image read failed.:orvlog-orv v$Revision: 1.114 $ L:%d ", line);
    return 0;
}
