#include "orvlog/records/gop-operator-dump.h"

#include "orvlog/log/orvlog-names.h"
#include "orvlog/log/orvlog-scope.h"

namespace
{

constexpr const char* kOperatorTypeNames[] = {
    "GOP_ROP_ROP2_GDI",      "GOP_ROP_ROP3",
    "GOP_ROP_ROP4",          "GOP_ROP_PORTER_DUFF",
    "GOP_ROP_PDF_SEPARABLE", "GOP_ROP_PDF_NONSEPARABLE",
    "GOP_ROP_ARITHMETIC",    "GOP_ROP_IMAGE_PROCESSING",
    "GOP_ROP_USER_DEFINED",
};
constexpr ORVLOG_EnumTable kOperatorType = orvlog_enum_table(kOperatorTypeNames);
static_assert(kOperatorType.max_value == GOP_ROP_USER_DEFINED);

constexpr const char* kMaskModeNames[] = {
    "GOP_MASK_NONE",
    "GOP_MASK_IN",
    "GOP_MASK_OUT",
    "GOP_ATTRIBUTE_MASK",
};
constexpr ORVLOG_EnumTable kMaskMode = orvlog_enum_table(kMaskModeNames);
static_assert(kMaskMode.max_value == GOP_ATTRIBUTE_MASK);

constexpr const char* kTransparencyTypeNames[] = {
    "GOP_TRANS_NONE",
    "GOP_TRANS_SOURCE",
    "GOP_TRANS_PATTERN",
    "GOP_TRANS_SOURCE_AND_PATTERN",
    "GOP_TRANS_SOURCE_BY_CHANNEL",
    "GOP_TRANS_GREY_TO_ALPHA",
    "GOP_TRANS_SOURCE_BY_CHANNEL_INCL_ZERO",
};
constexpr ORVLOG_EnumTable kTransparencyType = orvlog_enum_table(kTransparencyTypeNames);
static_assert(kTransparencyType.max_value == GOP_TRANS_SOURCE_BY_CHANNEL_INCL_ZERO);

constexpr ORVLOG_FlagEntry kTransparencyFlagEntries[] = {
    ORVLOG_FLAG(GOP_TRANS_FLAG_NONE),
    ORVLOG_FLAG(GOP_TRANS_FLAG_ALPHA_IS_SHAPE),
    ORVLOG_FLAG(GOP_TRANS_FLAG_NO_KNOCKOUT),
};
constexpr ORVLOG_FlagTable kTransparencyFlags = orvlog_flag_table(kTransparencyFlagEntries);

constexpr ORVLOG_FlagEntry kOperatorHintEntries[] = {
    ORVLOG_FLAG(GOP_OP_HINT_NONE),
    ORVLOG_FLAG(GOP_OP_HINT_NEEDS_BACKGROUND),
    ORVLOG_FLAG(GOP_OP_HINT_NO_BACKGROUND_NEEDED),
};
constexpr ORVLOG_FlagTable kOperatorHints = orvlog_flag_table(kOperatorHintEntries);

}  // namespace

void ORVLOG_DumpOperator(ORVLOG_Writer* writer, const GOP_Operator* op)
{
    if (op == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GOP_Operator");
    orvlog_attr_enum(writer, "op_OperatorType", &kOperatorType, op->op_OperatorType);
    orvlog_attr_uint(writer, "op_Operator", op->op_Operator);
    // The mask mode ahead of the transparency type, against their storage; readers of the log rely on it.
    orvlog_attr_enum(writer, "op_MaskMode", &kMaskMode, op->op_MaskMode);
    orvlog_attr_enum(writer, "op_TransparencyType", &kTransparencyType, op->op_TransparencyType);
    if (op->op_BitmapTransferFn != nullptr)
        orvlog_attr_bool(writer, "op_BitmapTransferFn", 1);
    if (op->op_ColorTransferFn != nullptr)
        orvlog_attr_bool(writer, "op_ColorTransferFn", 1);
    orvlog_attr_flags(writer, "op_TransparencyFlags", &kTransparencyFlags, op->op_TransparencyFlags);
    orvlog_attr_flags(writer, "op_OperatorHints", &kOperatorHints, op->op_OperatorHints);
    orvlog_writer_end_empty(writer, "GOP_Operator");
}

void ORVLOG_DumpNamedOperator(ORVLOG_Writer* writer, const char* parent, const char* member, const GOP_Operator* op)
{
    if (op == nullptr)
        return;
    const ORVLOG_Member inside(writer, parent, member);
    ORVLOG_DumpOperator(writer, op);
}
