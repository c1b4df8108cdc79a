#include "orvlog/records/gop-operator-dump.h"

#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/log/orvlog-scope.h"
#include "orvlog/names/orvlog-names.h"

namespace
{

}  // namespace

void ORVLOG_DumpOperator(ORVLOG_Writer* writer, const GOP_Operator* op)
{
    if (op == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GOP_Operator");
    orvlog_attr_enum(writer, "op_OperatorType", &ORVLOG_OPERATOR_TYPE, op->op_OperatorType);
    orvlog_attr_uint(writer, "op_Operator", op->op_Operator);
    // The mask mode ahead of the transparency type, against their storage; readers of the log rely on it.
    orvlog_attr_enum(writer, "op_MaskMode", &ORVLOG_MASK_MODE, op->op_MaskMode);
    orvlog_attr_enum(writer, "op_TransparencyType", &ORVLOG_TRANSPARENCY_TYPE, op->op_TransparencyType);
    if (op->op_BitmapTransferFn != nullptr)
        orvlog_attr_bool(writer, "op_BitmapTransferFn", 1);
    if (op->op_ColorTransferFn != nullptr)
        orvlog_attr_bool(writer, "op_ColorTransferFn", 1);
    orvlog_attr_flags(writer, "op_TransparencyFlags", &ORVLOG_TRANSPARENCY_FLAGS, op->op_TransparencyFlags);
    orvlog_attr_flags(writer, "op_OperatorHints", &ORVLOG_OPERATOR_HINTS, op->op_OperatorHints);
    orvlog_writer_end_empty(writer, "GOP_Operator");
}

void ORVLOG_DumpNamedOperator(ORVLOG_Writer* writer, const char* parent, const char* member, const GOP_Operator* op)
{
    if (op == nullptr)
        return;
    const ORVLOG_Member inside(writer, parent, member);
    ORVLOG_DumpOperator(writer, op);
}
