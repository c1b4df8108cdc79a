#include "orvlog/image/gop-operand-pointer.h"

#include "orvlog/colour/gcm-csd-dump.h"
#include "orvlog/image/gop-image-dump.h"
#include "orvlog/image/orvlog-image-read.h"
#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/log/orvlog-scope.h"
#include "orvlog/records/gbc-color-dump.h"
#include "orvlog/records/gop-operand-dump.h"

namespace
{

bool has_other_color_space(const GOP_Operand* operand)
{
    return GOP_COLOR_INFO_SPACE(operand->go_ColorInfo) == GOP_OCS_OTHER;
}

void begin(ORVLOG_Writer* writer, const char* element, const GOP_OperandPointer* pointer)
{
    orvlog_writer_begin_element(writer, element);
    orvlog_attr_uint(writer, "op_UniqueId", pointer->op_UniqueId);
}

void dump_csd_if(ORVLOG_Writer* writer, bool used, const GOP_OperandPointer* pointer)
{
    if (used && has_other_color_space(pointer->op_Operand))
        ORVLOG_DumpCsdPointer(writer, &pointer->op_Csd);
}

void dump_stops(ORVLOG_Writer* writer, const char* element, const char* member, const GOP_GradStop* const* stops,
                uint32_t count)
{
    const ORVLOG_Member inside(writer, element, member);
    for (uint32_t i = 0; i < count; ++i)
        dump_GOP_GradStop(writer, stops[i]);
}

void dump_flat(ORVLOG_Writer* writer, const GOP_OperandPointer* pointer)
{
    begin(writer, "GOP_OperandFlatPointer", pointer);
    const ORVLOG_Content content(writer, "GOP_OperandFlatPointer");
    dump_GOP_OperandFlat(writer, reinterpret_cast<const GOP_OperandFlat*>(pointer->op_Operand));
    if (pointer->op_Operand != nullptr)
        dump_csd_if(writer, true, pointer);
    else
        orvlog_writer_warn(writer, "GOP_OperandPointer without an operand.");
}

void dump_grad_2pt(ORVLOG_Writer* writer, const GOP_OperandGrad2PtPointer* pointer)
{
    static constexpr const char* const kElement = "GOP_OperandGrad2PtPointer";
    const auto* operand = reinterpret_cast<const GOP_OperandGrad2Pt*>(pointer->g2p_Pointer.op_Operand);
    begin(writer, kElement, &pointer->g2p_Pointer);
    const ORVLOG_Content content(writer, kElement);
    dump_GOP_OperandGrad2Pt(writer, operand);
    dump_csd_if(writer, operand->g2_UseInterpColorSpace != 0, &pointer->g2p_Pointer);
    ORVLOG_DumpNamedColor(writer, kElement, "g2p_Color1", pointer->g2p_Color1);
    ORVLOG_DumpNamedColor(writer, kElement, "g2p_Color2", pointer->g2p_Color2);
}

void dump_grad_multistop(ORVLOG_Writer* writer, const GOP_OperandGradMultistopPointer* pointer)
{
    static constexpr const char* const kElement = "GOP_OperandGradMultistopPointer";
    const auto* operand = reinterpret_cast<const GOP_OperandGradMultistop*>(pointer->gmp_Pointer.op_Operand);
    begin(writer, kElement, &pointer->gmp_Pointer);
    const ORVLOG_Content content(writer, kElement);
    dump_GOP_OperandGradMultistop(writer, operand);
    dump_csd_if(writer, operand->gm_UseInterpColorSpace != 0, &pointer->gmp_Pointer);
    dump_stops(writer, kElement, "gmp_GradStop", pointer->gmp_GradStop, operand->gm_Operand.go_Count);
}

// This kind has no word of its own for the interpolation space: its count says whether there is one.
void dump_grad_3pt(ORVLOG_Writer* writer, const GOP_OperandGrad3PtPointer* pointer)
{
    static constexpr const char* const kElement = "GOP_OperandGrad3PtPointer";
    const auto* operand = reinterpret_cast<const GOP_OperandGrad3Pt*>(pointer->g3p_Pointer.op_Operand);
    begin(writer, kElement, &pointer->g3p_Pointer);
    const ORVLOG_Content content(writer, kElement);
    dump_GOP_OperandGrad3Pt(writer, operand);
    dump_csd_if(writer, operand->g3_Operand.go_Count == 1, &pointer->g3p_Pointer);
    const ORVLOG_Member member(writer, kElement, "g3p_Color");
    for (const GBC_Color* color : pointer->g3p_Color)
        ORVLOG_DumpColor(writer, color);
}

void dump_grad_radial(ORVLOG_Writer* writer, const GOP_OperandGradRadialPointer* pointer)
{
    static constexpr const char* const kElement = "GOP_OperandGradRadialPointer";
    const auto* operand = reinterpret_cast<const GOP_OperandGradRadial*>(pointer->grp_Pointer.op_Operand);
    begin(writer, kElement, &pointer->grp_Pointer);
    const ORVLOG_Content content(writer, kElement);
    dump_GOP_OperandGradRadial(writer, operand);
    dump_csd_if(writer, operand->gr_UseInterpColorSpace != 0, &pointer->grp_Pointer);
    dump_stops(writer, kElement, "grp_GradStop", pointer->grp_GradStop, operand->gr_Operand.go_Count);
}

uint32_t dump_image(ORVLOG_Session* session, GOP_OperandImagePointer* record)
{
    ORVLOG_DumpImagePointer(&session->writer, record, 1);
    if (session->image.image_logging_mode != ORVLOG_MODE_BASE)
        return 1;
    const uint32_t result = orvlog_capture_image(record);
    const ORVLOG_ImageWrapper* wrapper = orvlog_image_wrapper_of(record);
    if (wrapper != nullptr && wrapper->context->endless != 0)
        orvlog_writer_warn(&session->writer, "Image goes on beyond its size.");
    return result;
}

void dump_paint(ORVLOG_Writer* writer, const GOP_OperandPointer* operand, uint32_t type)
{
    switch (type)
    {
    case GOP_OPERAND_FLAT:
        return dump_flat(writer, operand);
    case GOP_OPERAND_GRAD_2PT:
        return dump_grad_2pt(writer, reinterpret_cast<const GOP_OperandGrad2PtPointer*>(operand));
    case GOP_OPERAND_GRAD_MULTISTOP:
        return dump_grad_multistop(writer, reinterpret_cast<const GOP_OperandGradMultistopPointer*>(operand));
    case GOP_OPERAND_GRAD_3PT:
        return dump_grad_3pt(writer, reinterpret_cast<const GOP_OperandGrad3PtPointer*>(operand));
    case GOP_OPERAND_GRAD_RADIAL:
        return dump_grad_radial(writer, reinterpret_cast<const GOP_OperandGradRadialPointer*>(operand));
    default:
        return;
    }
}

}  // namespace

bool orvlog_operand_is_image(const GOP_OperandPointer* operand)
{
    if (operand == nullptr || operand->op_Operand == nullptr)
        return false;
    const uint8_t type = operand->op_Operand->go_OpType;
    return type == GOP_OPERAND_IMAGE || type == GOP_OPERAND_IMAGE_TILE;
}

uint32_t ORVLOG_DumpOperandPointer(ORVLOG_Session* session, GOP_OperandPointer* operand)
{
    if (operand == nullptr)
        return 1;
    if (orvlog_operand_is_image(operand))
        return dump_image(session, reinterpret_cast<GOP_OperandImagePointer*>(operand));
    // Where there is no operand to tell the kind, the record is a flat one with nothing in it.
    dump_paint(&session->writer, operand,
               operand->op_Operand != nullptr ? operand->op_Operand->go_OpType : uint32_t{GOP_OPERAND_FLAT});
    return 1;
}

uint32_t ORVLOG_DumpNamedOperand(ORVLOG_Session* session, const char* parent, const char* member,
                                 GOP_OperandPointer* operand)
{
    if (operand == nullptr)
        return 1;
    const ORVLOG_Member inside(&session->writer, parent, member);
    return ORVLOG_DumpOperandPointer(session, operand);
}
