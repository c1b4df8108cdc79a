#include "inspect/c-source/c-records.h"
#include "inspect/c-source/c-text.h"
#include "orvlog/names/orvlog-names.h"

#include <algorithm>
#include <vector>

namespace orvlog::inspect
{

namespace
{

bool is_float(const GBC_Color& record)
{
    return record.bit_depth == 32;
}

// The type of a record that ends in a colour, with room for its channels.
std::string with_color(const std::string& macro, const GBC_Color& record)
{
    const std::string room = std::to_string(std::max<uint32_t>(record.num_chans, 1));
    return macro + "(" + (is_float(record) ? "float, " : "uint16_t, ") + room + ")";
}

std::string color_text(const GBC_Color& record)
{
    std::vector<std::string> channels;
    for (size_t i = 0; i < record.num_chans; ++i)
        channels.push_back(is_float(record) ? c_float((&record.channels.as_float[0])[i])
                                            : c_uint((&record.channels.as_uint16[0])[i]));
    return CFields()
        .add("num_chans", c_uint(record.num_chans))
        .add("bit_depth", c_uint(record.bit_depth))
        .add("has_alpha", c_uint(record.has_alpha))
        .add("empty_chans", c_hex(record.empty_chans))
        .add("channels", c_list(channels))
        .text();
}

std::string head_text(const GOP_Operand& record)
{
    const uint32_t info = record.go_ColorInfo;
    const bool plain = (info & 0x3CU) == 0 && GOP_COLOR_INFO_FLAG(info) <= GCM_CF_OTHER;
    const std::string color_info = plain ? "GOP_COLOR_INFO(" + c_enum(ORVLOG_COLOR_SPACE, GOP_COLOR_INFO_SPACE(info)) +
                                               ", " + c_enum(ORVLOG_COLOR_FLAG, GOP_COLOR_INFO_FLAG(info)) + ")"
                                         : c_hex(info);
    return "{" + c_enum(ORVLOG_OPERAND_TYPE, record.go_OpType) + ", " + color_info + ", " + c_uint(record.go_Count) +
           ", " + c_flags(ORVLOG_OPERAND_HINTS, record.go_Hints) + ", " +
           c_enum(ORVLOG_COLOR_SPACE_FAMILY, record.go_ColorSpaceFamily) + "}";
}

std::string point_text(const GGO_Point& point)
{
    return "{" + c_double(point.gpf_X) + ", " + c_double(point.gpf_Y) + "}";
}

bool is_no_image(const GOP_OperandPointer* record)
{
    return record->op_Operand->go_OpType <= GOP_OPERAND_GRAD_RADIAL;
}

}  // namespace

std::string CRecords::color(std::string_view base, const GBC_Color* record)
{
    if (record == nullptr)
        return "NULL";
    return "(const GBC_Color*)" + define("const " + with_color("COLOR", *record), base, color_text(*record));
}

std::string CRecords::pointer_head(const GOP_OperandPointer& record, const std::string& operand)
{
    return CFields()
        .add("op_Operand", operand)
        .add("op_UniqueId", c_uint(record.op_UniqueId))
        .add("op_Csd", csd_text(record.op_Csd))
        .text();
}

std::string CRecords::stops(std::span<const GOP_GradStop* const> stops)
{
    std::vector<std::string> made;
    for (const GOP_GradStop* stop : stops)
    {
        if (stop == nullptr)
        {
            made.emplace_back("NULL");
            continue;
        }
        const std::string fields =
            CFields().add("position", c_double(stop->gs_StopPosn)).add("color", color_text(stop->gs_StopColor)).text();
        made.push_back("(const GOP_GradStop*)" +
                       define("const " + with_color("STOP", stop->gs_StopColor), "stop", fields));
    }
    return c_list(made);
}

std::string CRecords::gradient_2pt(std::string_view base, const GOP_OperandPointer* record)
{
    const auto* pointer = reinterpret_cast<const GOP_OperandGrad2PtPointer*>(record);
    const auto* inside = reinterpret_cast<const GOP_OperandGrad2Pt*>(record->op_Operand);
    const std::string made = define("const GOP_OperandGrad2Pt", "gradient",
                                    CFields()
                                        .add("g2_Operand", head_text(inside->g2_Operand))
                                        .add("g2_Transform", matrix_text(inside->g2_Transform))
                                        .add("g2_Pt1", point_text(inside->g2_Pt1))
                                        .add("g2_Pt2", point_text(inside->g2_Pt2))
                                        .add("g2_UseInterpColorSpace", c_uint(inside->g2_UseInterpColorSpace))
                                        .add("g2_GradientExtendMode", c_uint(inside->g2_GradientExtendMode))
                                        .add("g2_GradientRoundingMode", c_uint(inside->g2_GradientRoundingMode))
                                        .text());
    const std::string first = color("color", pointer->g2p_Color1);
    const std::string second = color("color", pointer->g2p_Color2);
    return define("GOP_OperandGrad2PtPointer", base,
                  CFields()
                      .add("g2p_Pointer", pointer_head(*record, "(const GOP_Operand*)" + made))
                      .add("g2p_Color1", first)
                      .add("g2p_Color2", second)
                      .text());
}

std::string CRecords::gradient_3pt(std::string_view base, const GOP_OperandPointer* record)
{
    const auto* pointer = reinterpret_cast<const GOP_OperandGrad3PtPointer*>(record);
    const auto* inside = reinterpret_cast<const GOP_OperandGrad3Pt*>(record->op_Operand);
    const std::string made = define("const GOP_OperandGrad3Pt", "gradient",
                                    CFields()
                                        .add("g3_Operand", head_text(inside->g3_Operand))
                                        .add("g3_Transform", matrix_text(inside->g3_Transform))
                                        .add("g3_Pt1", point_text(inside->g3_Pt1))
                                        .add("g3_Pt2", point_text(inside->g3_Pt2))
                                        .add("g3_Pt3", point_text(inside->g3_Pt3))
                                        .text());
    std::vector<std::string> colors;
    for (const GBC_Color* one : pointer->g3p_Color)
        colors.push_back(color("color", one));
    return define("GOP_OperandGrad3PtPointer", base,
                  CFields()
                      .add("g3p_Pointer", pointer_head(*record, "(const GOP_Operand*)" + made))
                      .add("g3p_Color", c_list(colors))
                      .text());
}

std::string CRecords::gradient_multistop(std::string_view base, const GOP_OperandPointer* record)
{
    const auto* pointer = reinterpret_cast<const GOP_OperandGradMultistopPointer*>(record);
    const auto* inside = reinterpret_cast<const GOP_OperandGradMultistop*>(record->op_Operand);
    const std::string made = define("const GOP_OperandGradMultistop", "gradient",
                                    CFields()
                                        .add("gm_Operand", head_text(inside->gm_Operand))
                                        .add("gm_Transform", matrix_text(inside->gm_Transform))
                                        .add("gm_Pt1", point_text(inside->gm_Pt1))
                                        .add("gm_Pt2", point_text(inside->gm_Pt2))
                                        .add("gm_UseInterpColorSpace", c_uint(inside->gm_UseInterpColorSpace))
                                        .add("gm_GradientExtendMode", c_uint(inside->gm_GradientExtendMode))
                                        .add("gm_GradientRoundingMode", c_uint(inside->gm_GradientRoundingMode))
                                        .text());
    const uint32_t count = inside->gm_Operand.go_Count;
    const std::string list = stops(std::span(pointer->gmp_GradStop, count));
    const std::string type = "STOPS_POINTER(" + std::to_string(std::max<uint32_t>(count, 1)) + ")";
    return define(
        type, base,
        CFields().add("pointer", pointer_head(*record, "(const GOP_Operand*)" + made)).add("stops", list).text());
}

std::string CRecords::gradient_radial(std::string_view base, const GOP_OperandPointer* record)
{
    const auto* pointer = reinterpret_cast<const GOP_OperandGradRadialPointer*>(record);
    const auto* inside = reinterpret_cast<const GOP_OperandGradRadial*>(record->op_Operand);
    const std::string made = define("const " + with_color("RADIAL", inside->gr_Color), "gradient",
                                    CFields()
                                        .add("operand", head_text(inside->gr_Operand))
                                        .add("transform", matrix_text(inside->gr_Transform))
                                        .add("center_1", point_text(inside->gr_Center1))
                                        .add("radius_1", c_double(inside->gr_Radius1))
                                        .add("center_2", point_text(inside->gr_Center2))
                                        .add("radius_2", c_double(inside->gr_Radius2))
                                        .add("interpolate", c_uint(inside->gr_UseInterpColorSpace))
                                        .add("extend", c_uint(inside->gr_GradientExtendMode))
                                        .add("rounding", c_uint(inside->gr_GradientRoundingMode))
                                        .add("color", color_text(inside->gr_Color))
                                        .text());
    const uint32_t count = inside->gr_Operand.go_Count;
    const std::string list = stops(std::span(pointer->grp_GradStop, count));
    const std::string type = "STOPS_POINTER(" + std::to_string(std::max<uint32_t>(count, 1)) + ")";
    return define(
        type, base,
        CFields().add("pointer", pointer_head(*record, "(const GOP_Operand*)" + made)).add("stops", list).text());
}

std::string CRecords::operand(std::string_view base, const GOP_OperandPointer* record)
{
    if (record == nullptr)
        return "NULL";
    if (record->op_Operand == nullptr)
        return define("GOP_OperandFlatPointer", base, "{.flp_Pointer = " + pointer_head(*record, "NULL") + "}");
    if (!is_no_image(record))
        return "NULL";
    switch (record->op_Operand->go_OpType)
    {
    case GOP_OPERAND_GRAD_2PT:
        return gradient_2pt(base, record);
    case GOP_OPERAND_GRAD_MULTISTOP:
        return gradient_multistop(base, record);
    case GOP_OPERAND_GRAD_3PT:
        return gradient_3pt(base, record);
    case GOP_OPERAND_GRAD_RADIAL:
        return gradient_radial(base, record);
    default:
        break;
    }
    const auto* inside = reinterpret_cast<const GOP_OperandFlat*>(record->op_Operand);
    const std::string made = define(
        "const " + with_color("FLAT", inside->fl_Color), "flat",
        CFields().add("operand", head_text(inside->fl_Operand)).add("color", color_text(inside->fl_Color)).text());
    return define("GOP_OperandFlatPointer", base,
                  "{.flp_Pointer = " + pointer_head(*record, "(const GOP_Operand*)" + made) + "}");
}

std::string CRecords::image(std::string_view base, const GOP_OperandImagePointer* record, const std::string& direct,
                            std::span<const uint8_t> table)
{
    const GOP_OperandImage* inside = record->imp_Image;
    const bool keeps = (inside->im_Flags & GOP_OP_FLAGS_ASYNCH_ACCESS) != 0;
    const std::string made =
        define("const GOP_OperandImage", "image",
               CFields()
                   .add("im_Operand", head_text(inside->im_Operand))
                   .add("im_ImageEncoding", c_uint(inside->im_ImageEncoding))
                   .add("im_IndexColorDepth",
                        inside->im_IndexColorDepth == 0 ? "0" : c_enum(ORVLOG_BIT_DEPTH, inside->im_IndexColorDepth))
                   .add("im_QualitySetting", c_enum(ORVLOG_IMAGE_QUALITY, inside->im_QualitySetting))
                   .add("im_NumNonalphaChans", c_uint(inside->im_NumNonalphaChans))
                   .add("im_Flags", c_flags(ORVLOG_IMAGE_FLAGS, inside->im_Flags))
                   .add("im_Alpha", c_float(inside->im_Alpha))
                   .add("im_ImageWidthPixels", c_uint(inside->im_ImageWidthPixels))
                   .add("im_ImageHeightPixels", c_uint(inside->im_ImageHeightPixels))
                   .add("im_Transform", matrix_text(inside->im_Transform))
                   .text());
    std::string colors = "NULL";
    if (!table.empty())
    {
        colors = fresh("table");
        define("static const uint8_t " + colors + "[" + std::to_string(table.size()) + "] = " + c_bytes(table) + ";\n");
    }
    std::string tiling = "NULL";
    if (const GOP_TilingParameters* told = record->imp_TilingParameters; told != nullptr)
        tiling = define("const GOP_TilingParameters", "tiling",
                        "{" + c_double(told->it_XRepetitionInterval) + ", " + c_double(told->it_YRepetitionInterval) +
                            ", " + c_uint(told->it_XFlip) + ", " + c_uint(told->it_YFlip) + "}");
    return define(
        "GOP_OperandImagePointer", base,
        CFields()
            .add("imp_Image", made)
            .add("op_UniqueId", c_uint(record->op_UniqueId))
            .add("imp_DirectImage", direct)
            .add("imp_RowStep", c_uint(record->imp_RowStep))
            .add("imp_Csd", csd_text(record->imp_Csd))
            .add("imp_IndexColorTable", colors)
            .add("imp_CompressedStreamLength", c_uint(record->imp_CompressedStreamLength))
            .add("imp_TilingParameters", tiling)
            .add("imp_ImagePrepareFn", "image_prepare")
            .add("imp_ImageReadFn", "image_read")
            .add("imp_ImageFinishFn", "image_finish")
            .add("imp_ImageResetFn", record->imp_ImageResetFn != nullptr ? "image_reset" : "NULL")
            .add("imp_ImageKeepFn", keeps ? "image_keep" : "NULL")
            .add("imp_ImageReleaseFn", keeps ? "image_release" : "NULL")
            .add("imp_GrayscaleDetectStatus", record->imp_GrayscaleDetectStatus == 0
                                                  ? "0"
                                                  : c_enum(ORVLOG_GRAYSCALE_STATUS, record->imp_GrayscaleDetectStatus))
            .text());
}

}  // namespace orvlog::inspect
