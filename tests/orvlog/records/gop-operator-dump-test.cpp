#include "orvlog/records/gop-operator-dump.h"

#include "tests/support/record-log.h"

#include <gtest/gtest.h>

#include <array>

namespace
{

using orvlog::test::attribute_of;
using orvlog::test::Guarded;
using orvlog::test::RecordLog;

void transfer() {}

std::string dump(const GOP_Operator& op)
{
    RecordLog log;
    Guarded<GOP_Operator> guarded(op);
    ORVLOG_DumpOperator(log.writer(), guarded.get());
    return log.take();
}

TEST(GopOperatorDump, AllAttributesInOrder)
{
    EXPECT_EQ(dump({GOP_ROP_PORTER_DUFF, 65535, GOP_TRANS_SOURCE, 3, GOP_MASK_IN, 3, transfer, transfer}),
              R"(<GOP_Operator op_OperatorType="GOP_ROP_PORTER_DUFF" op_Operator="65535" op_MaskMode="GOP_MASK_IN" )"
              R"(op_TransparencyType="GOP_TRANS_SOURCE" op_BitmapTransferFn="TRUE" op_ColorTransferFn="TRUE" )"
              R"(op_TransparencyFlags="[0x3] GOP_TRANS_FLAG_ALPHA_IS_SHAPE GOP_TRANS_FLAG_NO_KNOCKOUT " )"
              R"(op_OperatorHints="[0x3] GOP_OP_HINT_NEEDS_BACKGROUND GOP_OP_HINT_NO_BACKGROUND_NEEDED ">
</GOP_Operator>
)");
}

TEST(GopOperatorDump, NullTransferFunctionsAreLeftOut)
{
    EXPECT_EQ(dump({}), R"(<GOP_Operator op_OperatorType="GOP_ROP_ROP2_GDI" op_Operator="0" )"
                        R"(op_MaskMode="GOP_MASK_NONE" op_TransparencyType="GOP_TRANS_NONE" )"
                        R"(op_TransparencyFlags="[0] GOP_TRANS_FLAG_NONE " op_OperatorHints="[0] GOP_OP_HINT_NONE ">
</GOP_Operator>
)");
    GOP_Operator op = {};
    op.op_BitmapTransferFn = transfer;
    EXPECT_EQ(attribute_of(dump(op), "op_BitmapTransferFn"), "TRUE");
    EXPECT_EQ(attribute_of(dump(op), "op_ColorTransferFn"), "(absent)");
}

TEST(GopOperatorDump, EnumerationsNameEachValue)
{
    const std::array<std::string, 10> types = {
        "GOP_ROP_ROP2_GDI",      "GOP_ROP_ROP3",
        "GOP_ROP_ROP4",          "GOP_ROP_PORTER_DUFF",
        "GOP_ROP_PDF_SEPARABLE", "GOP_ROP_PDF_NONSEPARABLE",
        "GOP_ROP_ARITHMETIC",    "GOP_ROP_IMAGE_PROCESSING",
        "GOP_ROP_USER_DEFINED",  "UNKNOWN_VALUE(9)",
    };
    const std::array<std::string, 5> masks = {"GOP_MASK_NONE", "GOP_MASK_IN", "GOP_MASK_OUT", "GOP_ATTRIBUTE_MASK",
                                              "UNKNOWN_VALUE(4)"};
    const std::array<std::string, 8> transparencies = {
        "GOP_TRANS_NONE",
        "GOP_TRANS_SOURCE",
        "GOP_TRANS_PATTERN",
        "GOP_TRANS_SOURCE_AND_PATTERN",
        "GOP_TRANS_SOURCE_BY_CHANNEL",
        "GOP_TRANS_GREY_TO_ALPHA",
        "GOP_TRANS_SOURCE_BY_CHANNEL_INCL_ZERO",
        "UNKNOWN_VALUE(7)",
    };
    GOP_Operator op = {};
    for (uint32_t i = 0; i < types.size(); ++i)
    {
        op.op_OperatorType = i;
        EXPECT_EQ(attribute_of(dump(op), "op_OperatorType"), types[i]);
    }
    for (uint32_t i = 0; i < masks.size(); ++i)
    {
        op.op_MaskMode = i;
        EXPECT_EQ(attribute_of(dump(op), "op_MaskMode"), masks[i]);
    }
    for (uint8_t i = 0; i < transparencies.size(); ++i)
    {
        op.op_TransparencyType = i;
        EXPECT_EQ(attribute_of(dump(op), "op_TransparencyType"), transparencies[i]);
    }
    op.op_OperatorType = 0x80000000;
    EXPECT_EQ(attribute_of(dump(op), "op_OperatorType"), "UNKNOWN_VALUE(-2147483648)");
}

TEST(GopOperatorDump, FlagsBeyondTheTableShowInTheNumber)
{
    GOP_Operator op = {};
    op.op_TransparencyFlags = 0x84;
    op.op_OperatorHints = 0x80000002;
    EXPECT_EQ(attribute_of(dump(op), "op_TransparencyFlags"), "[0x84] ");
    EXPECT_EQ(attribute_of(dump(op), "op_OperatorHints"), "[0x80000002] GOP_OP_HINT_NO_BACKGROUND_NEEDED ");
    op.op_TransparencyFlags = 1;
    EXPECT_EQ(attribute_of(dump(op), "op_TransparencyFlags"), "[0x1] GOP_TRANS_FLAG_ALPHA_IS_SHAPE ");
}

TEST(GopOperatorDump, NamedOperatorHasAFrame)
{
    RecordLog log(1);
    const GOP_Operator op = {};
    ORVLOG_DumpNamedOperator(log.writer(), "ORV_object_paint", "op", &op);
    const std::string text = log.take();
    EXPECT_EQ(text.rfind("  <ORV_object_paint.op>\n    <GOP_Operator op_OperatorType=", 0), 0U);
    EXPECT_NE(text.find(">\n    </GOP_Operator>\n  </ORV_object_paint.op>\n"), std::string::npos);
    ORVLOG_DumpNamedOperator(log.writer(), "ORV_object_paint", "op", nullptr);
    ORVLOG_DumpOperator(log.writer(), nullptr);
    EXPECT_EQ(log.take(), "");
}

}  // namespace
