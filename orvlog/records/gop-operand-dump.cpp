#include "orvlog/records/gop-operand-dump.h"

#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/log/orvlog-scope.h"
#include "orvlog/names/orvlog-names.h"
#include "orvlog/records/gbc-color-dump.h"
#include "orvlog/records/ggo-dump.h"

namespace
{

// Bits of go_ColorInfo outside the colour space and the colour flag.
constexpr uint32_t kOtherColorInfo = 0x3C;

}  // namespace

void ORVLOG_DumpOperand(ORVLOG_Writer* writer, const GOP_Operand* operand)
{
    if (operand == nullptr)
        return;
    const uint32_t info = operand->go_ColorInfo;
    orvlog_writer_begin_element(writer, "GOP_Operand");
    orvlog_attr_enum(writer, "go_OpType", &ORVLOG_OPERAND_TYPE, operand->go_OpType);
    if ((info & kOtherColorInfo) == 0)
    {
        orvlog_attr_enum(writer, "go_ColorInfo.GCM_ColorFlag", &ORVLOG_COLOR_FLAG, GOP_COLOR_INFO_FLAG(info));
        orvlog_attr_enum(writer, "go_ColorInfo.GOP_OperandColorSpace", &ORVLOG_COLOR_SPACE, GOP_COLOR_INFO_SPACE(info));
    }
    else
    {
        orvlog_attr_uint(writer, "go_ColorInfo", info);
    }
    if (operand->go_OpType != GOP_OPERAND_FLAT)
        orvlog_attr_uint(writer, "go_Count", operand->go_Count);
    orvlog_attr_flags(writer, "go_Hints", &ORVLOG_OPERAND_HINTS, operand->go_Hints);
    if (GOP_COLOR_INFO_SPACE(info) == GOP_OCS_INPUT)
        orvlog_attr_enum(writer, "go_ColorSpaceFamily", &ORVLOG_COLOR_SPACE_FAMILY, operand->go_ColorSpaceFamily);
    orvlog_writer_self_close(writer);
}

void dump_GOP_OperandFlat(ORVLOG_Writer* writer, const GOP_OperandFlat* operand)
{
    if (operand == nullptr)
        return;
    const ORVLOG_Element element(writer, "GOP_OperandFlat");
    ORVLOG_DumpOperand(writer, &operand->fl_Operand);
    ORVLOG_DumpNamedColor(writer, "GOP_OperandFlat", "fl_Color", &operand->fl_Color);
}

void dump_GOP_OperandGrad2Pt(ORVLOG_Writer* writer, const GOP_OperandGrad2Pt* operand)
{
    if (operand == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GOP_OperandGrad2Pt");
    ggo_attr_matrix(writer, "g2_Transform", &operand->g2_Transform);
    ggo_attr_point(writer, "g2_Pt1", &operand->g2_Pt1);
    ggo_attr_point(writer, "g2_Pt2", &operand->g2_Pt2);
    orvlog_attr_uint(writer, "g2_UseInterpColorSpace", operand->g2_UseInterpColorSpace);
    orvlog_attr_uint(writer, "g2_GradientExtendMode", operand->g2_GradientExtendMode);
    orvlog_attr_uint(writer, "g2_GradientRoundingMode", operand->g2_GradientRoundingMode);
    const ORVLOG_Content content(writer, "GOP_OperandGrad2Pt");
    ORVLOG_DumpOperand(writer, &operand->g2_Operand);
}

void dump_GOP_OperandGrad3Pt(ORVLOG_Writer* writer, const GOP_OperandGrad3Pt* operand)
{
    if (operand == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GOP_OperandGrad3Pt");
    ggo_attr_matrix(writer, "g3_Transform", &operand->g3_Transform);
    ggo_attr_point(writer, "g3_Pt1", &operand->g3_Pt1);
    ggo_attr_point(writer, "g3_Pt2", &operand->g3_Pt2);
    ggo_attr_point(writer, "g3_Pt3", &operand->g3_Pt3);
    const ORVLOG_Content content(writer, "GOP_OperandGrad3Pt");
    ORVLOG_DumpOperand(writer, &operand->g3_Operand);
}

void dump_GOP_OperandGradMultistop(ORVLOG_Writer* writer, const GOP_OperandGradMultistop* operand)
{
    if (operand == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GOP_OperandGradMultistop");
    ggo_attr_matrix(writer, "gm_Transform", &operand->gm_Transform);
    ggo_attr_point(writer, "gm_Pt1", &operand->gm_Pt1);
    ggo_attr_point(writer, "gm_Pt2", &operand->gm_Pt2);
    orvlog_attr_uint(writer, "gm_UseInterpColorSpace", operand->gm_UseInterpColorSpace);
    orvlog_attr_uint(writer, "gm_GradientExtendMode", operand->gm_GradientExtendMode);
    orvlog_attr_uint(writer, "gm_GradientRoundingMode", operand->gm_GradientRoundingMode);
    const ORVLOG_Content content(writer, "GOP_OperandGradMultistop");
    ORVLOG_DumpOperand(writer, &operand->gm_Operand);
}

void dump_GOP_OperandGradRadial(ORVLOG_Writer* writer, const GOP_OperandGradRadial* operand)
{
    if (operand == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GOP_OperandGradRadial");
    ggo_attr_matrix(writer, "gr_Transform", &operand->gr_Transform);
    ggo_attr_point(writer, "gr_Center1", &operand->gr_Center1);
    orvlog_attr_double(writer, "gr_Radius1", operand->gr_Radius1);
    ggo_attr_point(writer, "gr_Center2", &operand->gr_Center2);
    orvlog_attr_double(writer, "gr_Radius2", operand->gr_Radius2);
    orvlog_attr_uint(writer, "gr_UseInterpColorSpace", operand->gr_UseInterpColorSpace);
    orvlog_attr_uint(writer, "gr_GradientExtendMode", operand->gr_GradientExtendMode);
    orvlog_attr_uint(writer, "gr_GradientRoundingMode", operand->gr_GradientRoundingMode);
    const ORVLOG_Content content(writer, "GOP_OperandGradRadial");
    ORVLOG_DumpOperand(writer, &operand->gr_Operand);
    ORVLOG_DumpColor(writer, &operand->gr_Color);
}

void dump_GOP_GradStop(ORVLOG_Writer* writer, const GOP_GradStop* stop)
{
    if (stop == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GOP_GradStop");
    orvlog_attr_double(writer, "gs_StopPosn", stop->gs_StopPosn);
    const ORVLOG_Content content(writer, "GOP_GradStop");
    ORVLOG_DumpNamedColor(writer, "GOP_GradStop", "gs_StopColor", &stop->gs_StopColor);
}

void dump_GOP_TilingParameters(ORVLOG_Writer* writer, const GOP_TilingParameters* parameters)
{
    if (parameters == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GOP_TilingParameters");
    orvlog_attr_double(writer, "it_XRepetitionInterval", parameters->it_XRepetitionInterval);
    orvlog_attr_double(writer, "it_YRepetitionInterval", parameters->it_YRepetitionInterval);
    orvlog_attr_uint(writer, "it_XFlip", parameters->it_XFlip);
    orvlog_attr_uint(writer, "it_YFlip", parameters->it_YFlip);
    orvlog_writer_end_empty(writer, "GOP_TilingParameters");
}
