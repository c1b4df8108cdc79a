#include "orvlog/core/orvlog-call-operands.h"

#include "orvlog/image/gop-operand-pointer.h"
#include "orvlog/image/orvlog-image-wrapper.h"

namespace
{

constexpr uint16_t kImageProcessingWithoutOperand2 = 3;

bool operator_uses_operand2(const GOP_Operator* op)
{
    return op->op_MaskMode != GOP_MASK_NONE || op->op_OperatorType == GOP_ROP_ROP3 ||
           op->op_OperatorType == GOP_ROP_ROP4 ||
           (op->op_OperatorType == GOP_ROP_IMAGE_PROCESSING && op->op_Operator != kImageProcessingWithoutOperand2);
}

}  // namespace

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

uint32_t orvlog_dump_operands(ORVLOG_Session* session, const char* element, const char* const* members,
                              const ORVLOG_CallOperand* operands, uint32_t count)
{
    uint32_t read_well = 1;
    for (uint32_t i = 0; i < count; ++i)
        if (operands[i].counts != 0)
            read_well &= ORVLOG_DumpNamedOperand(session, element, members[i], operands[i].operand);
    return read_well;
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
