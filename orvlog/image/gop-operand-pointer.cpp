#include "orvlog/image/gop-operand-pointer.h"

bool orvlog_operand_is_image(const GOP_OperandPointer* operand)
{
    if (operand == nullptr || operand->op_Operand == nullptr)
        return false;
    const uint8_t type = operand->op_Operand->go_OpType;
    return type == GOP_OPERAND_IMAGE || type == GOP_OPERAND_IMAGE_TILE;
}

uint32_t ORVLOG_DumpOperandPointer(ORVLOG_Session*, GOP_OperandPointer*)
{
    return 1;
}

uint32_t ORVLOG_DumpNamedOperand(ORVLOG_Session* session, const char* parent, const char* member,
                                 GOP_OperandPointer* operand)
{
    if (operand == nullptr)
        return 1;
    orvlog_writer_open_member(&session->writer, parent, member);
    orvlog_writer_depth_up(&session->writer);
    const uint32_t result = ORVLOG_DumpOperandPointer(session, operand);
    orvlog_writer_depth_down(&session->writer);
    orvlog_writer_close_member(&session->writer, parent, member);
    return result;
}
