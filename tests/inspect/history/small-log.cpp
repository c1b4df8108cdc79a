#include "tests/inspect/history/small-log.h"

#include <charconv>

namespace orvlog::test
{

namespace
{

std::string number(double value)
{
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

std::string vector_of(double x, double y)
{
    return "<GGO_Vector gvf_X=\"" + number(x) + "\" gvf_Y=\"" + number(y) + "\"/>\n";
}

std::string shape_of(const Rectangle& r)
{
    return "<GSH_ShapePointer>\n<GSH_ShapePointer.sp_HeaderPtr>\n"
           "<GSH_FilledPathShape fps_WindingRule=\"GPA_WINDING_NON_ZERO\">\n"
           "<GSH_Shape sh_ShapeType=\"GSH_SHAPE_FILL\" sh_Hints=\"[0] GSH_SH_NO_HINT \" "
           "sh_Transform=\"1 0 0 1 0 0 \"/>\n</GSH_FilledPathShape>\n</GSH_ShapePointer.sp_HeaderPtr>\n"
           "<GSH_ShapePointer.sp_U.filled_path>\n"
           "<GPA_PathPointer lpp_EnablePixelPlacement=\"FALSE\" lpp_PathOwned=\"FALSE\">\n"
           "<GPA_Path pa_NumEdges=\"1\" pa_PathHints=\"[0] GPA_HINT_NONE \" pa_EnclosingBox=\"0 0 0 0 \">\n"
           "<GPA_Path.pa_EdgeStart>\n<GGO_Point gpf_X=\"" +
           number(r.x0) + "\" gpf_Y=\"" + number(r.y0) +
           "\"/>\n</GPA_Path.pa_EdgeStart>\n</GPA_Path>\n<GPA_PathPointer.lpp_EdgePointer>\n"
           "<GPA_EdgePointer ep_Owned=\"FALSE\">\n<GPA_EdgePointer.ep_Pointer>\n<GPA_StraightEdge>\n"
           "<GPA_Edge ed_EdgeType=\"GPA_EDGE_STRAIGHT\" ed_EdgeFlag=\"[0] GPA_SUBPATH_END_CLOSED \" "
           "ed_SegmentCount=\"3\"/>\n<GPA_StraightEdge.se_Segment>\n" +
           vector_of(r.x1 - r.x0, 0) + vector_of(0, r.y1 - r.y0) + vector_of(r.x0 - r.x1, 0) +
           "</GPA_StraightEdge.se_Segment>\n</GPA_StraightEdge>\n</GPA_EdgePointer.ep_Pointer>\n</GPA_EdgePointer>\n"
           "</GPA_PathPointer.lpp_EdgePointer>\n</GPA_PathPointer>\n</GSH_ShapePointer.sp_U.filled_path>\n"
           "</GSH_ShapePointer>\n";
}

std::string in_member(const std::string& name, const std::string& what)
{
    return what.empty() ? "" : "<" + name + ">\n" + what + "</" + name + ">\n";
}

std::string operator_of(const std::string& op, bool mask)
{
    return "<GOP_Operator op_OperatorType=\"GOP_ROP_PORTER_DUFF\" op_Operator=\"" + op + "\" op_MaskMode=\"" +
           (mask ? "GOP_MASK_IN" : "GOP_MASK_NONE") +
           "\" op_TransparencyType=\"GOP_TRANS_NONE\" op_TransparencyFlags=\"[0] GOP_TRANS_FLAG_NONE \" "
           "op_OperatorHints=\"[0] GOP_OP_HINT_NONE \">\n</GOP_Operator>\n";
}

std::string flat_of(const std::string& family, int channels, const std::string& colour, const std::string& alpha)
{
    return "<GOP_OperandFlatPointer op_UniqueId=\"0\">\n<GOP_OperandFlat>\n"
           "<GOP_Operand go_OpType=\"GOP_OPERAND_FLAT\" go_ColorInfo.GCM_ColorFlag=\"GCM_CF_OTHER\" "
           "go_ColorInfo.GOP_OperandColorSpace=\"GOP_OCS_INPUT\" go_Hints=\"[0] GOP_OPD_HINT_NONE \" "
           "go_ColorSpaceFamily=\"" +
           family + "\"/>\n<GOP_OperandFlat.fl_Color>\n<GBC_Color bit_depth=\"32\" num_chans=\"" +
           std::to_string(channels) + "\" has_alpha=\"" + (alpha.empty() ? "FALSE" : "TRUE") + "\" base_n=\"" + colour +
           " \"" + (alpha.empty() ? "" : " alpha=\"" + alpha + "\"") +
           " empty_chans=\"0\"/>\n</GOP_OperandFlat.fl_Color>\n</GOP_OperandFlat>\n</GOP_OperandFlatPointer>\n";
}

std::string rgb(const std::string& colour, const std::string& alpha = "")
{
    return flat_of("GCM_CSF_RGB", 3, colour, alpha);
}

std::string mask_of(const std::string& mask)
{
    return mask.empty() ? "" : flat_of("GCM_CSF_GRAY", 1, mask, "");
}

std::string repetition(const With& with)
{
    return (with.retransform.empty() ? "" : " retransform=\"" + with.retransform + " \"") +
           (with.tiling.empty() ? std::string(" tiling_flags=\"[0] ORV_GROUP_TILE_NONE \" "
                                              "x_repetition_interval=\"0\" y_repetition_interval=\"0\"")
                                : " " + with.tiling);
}

std::string group_members(const std::string& name, const With& with)
{
    return in_member(name + ".op", operator_of(with.op, !with.mask.empty())) +
           in_member(name + ".operand2", mask_of(with.mask)) + in_member(name + ".group_clip", with.clip);
}

}  // namespace

std::string clip_of(const Rectangle& rectangle, bool inside)
{
    return std::string("<GSH_ShapeList sl_Hints=\"[0] GSH_SLH_NONE \" sl_ClipIn=\"") + (inside ? "TRUE" : "FALSE") +
           "\" sl_UniqueId=\"5\">\n<GSH_ShapeList.sl_Shape>\n" + shape_of(rectangle) +
           "</GSH_ShapeList.sl_Shape>\n</GSH_ShapeList>\n";
}

std::string paint_of(int id, const Rectangle& rectangle, const std::string& colour, const With& with,
                     const std::string& alpha, int drawing)
{
    const std::string name = "ORV_object_paint";
    return "  <" + name + " id=\"" + std::to_string(id) + "\" drawing_context=\"" + std::to_string(drawing) +
           "\" object_type_and_flag=\"4\" object_hints=\"[0] ORV_OBJ_HINT_NONE \" "
           "path_pixel_placement=\"GPA_PLACEMENT_PS\">\n" +
           in_member(name + ".op", operator_of(with.op, !with.mask.empty())) +
           in_member(name + ".paint_path", shape_of(rectangle)) + in_member(name + ".clip", with.clip) +
           in_member(name + ".operand1", rgb(colour, alpha)) + in_member(name + ".operand2", mask_of(with.mask)) +
           "  </" + name + ">\n";
}

std::string fill_and_stroke(int id, const Rectangle& rectangle, const std::string& colour, const std::string& stroke,
                            double width, const std::string& mask, bool knockout)
{
    const std::string name = "ORV_object_paint_and_stroke";
    return "  <" + name + " id=\"" + std::to_string(id) +
           "\" drawing_context=\"0\" fill_object_type=\"4\" stroke_object_type=\"4\" "
           "object_hints=\"[0] ORV_OBJ_HINT_NONE \" path_pixel_placement=\"GPA_PLACEMENT_PS\" paint_flags=\"" +
           (knockout ? "[0xb] ORV_PAINTFLAGS_FILL ORV_PAINTFLAGS_STROKE ORV_PAINTFLAGS_KNOCKOUT "
                     : "[0x3] ORV_PAINTFLAGS_FILL ORV_PAINTFLAGS_STROKE ") +
           "\">\n" + in_member(name + ".fill_op", operator_of("3", false)) +
           in_member(name + ".stroke_op", operator_of("3", !mask.empty())) +
           in_member(name + ".paint_path", shape_of(rectangle)) +
           in_member(name + ".stroking_params",
                     "<GPA_PathStrokingParams psp_Flags.S=\"GPA_CAP_BUTT\" psp_Flags.E=\"GPA_CAP_BUTT\" "
                     "psp_Flags.J=\"GPA_JOIN_MITER\" psp_Flags.A=\"GPA_ADJUST_NONE\" psp_Flags.Z=\"FALSE\" "
                     "psp_DashCount=\"0\" psp_DashCaps=\"GPA_CAP_BUTT\" psp_StrokeWidth=\"" +
                         number(width) + "\" psp_MiterLimit=\"10\" psp_DashStart=\"0\">\n</GPA_PathStrokingParams>\n") +
           in_member(name + ".fill_operand1", rgb(colour)) + in_member(name + ".stroke_operand1", rgb(stroke)) +
           in_member(name + ".stroke_operand2", mask_of(mask)) + "  </" + name + ">\n";
}

std::string group_start(const With& with, int drawing)
{
    const std::string name = "ORV_group_start";
    return "  <" + name + " drawing_context=\"" + std::to_string(drawing) +
           "\" group_unique_id=\"1\" font_engine_functions=\"FALSE\" hints=\"[0] ORV_GRP_HINT_NONE \" group_type=\"" +
           with.type + "\" is_knockout=\"" + (with.knockout ? "TRUE" : "FALSE") +
           "\" is_replayable=\"FALSE\" pixel_placement_orientation=\"GPA_PP_ORIENTATION_0_DEG\" "
           "has_pixel_placement=\"FALSE\"" +
           repetition(with) + ">\n" + group_members(name, with) + "  </" + name + ">\n";
}

std::string group_finish(int drawing)
{
    return "  <ORV_group_finish drawing_context=\"" + std::to_string(drawing) +
           "\" replay_group=\"FALSE\">\n  </ORV_group_finish>\n";
}

std::string resource_of(int id, int drawing, const Rectangle& box, const std::string& content)
{
    return "  <ORV_resource_start document_context=\"0\" drawing_context=\"" + std::to_string(drawing) +
           "\" font_engine_functions=\"FALSE\" resource_id=\"" + std::to_string(id) +
           "\">\n    <ORV_ResourceProperties rp_ResourceHints=\"[0] ORV_RES_HINT_NONE \" rp_MaxRescale=\"1\" "
           "rp_IsKnockout=\"FALSE\" rp_Enclosing_box=\"" +
           number(box.x0) + " " + number(box.y0) + " " + number(box.x1) + " " + number(box.y1) +
           " \">\n    </ORV_ResourceProperties>\n  </ORV_resource_start>\n" + content +
           "  <ORV_drawing_finish drawing_context=\"" + std::to_string(drawing) + "\">\n  </ORV_drawing_finish>\n";
}

std::string resource_paint(int id, const With& with)
{
    const std::string name = "ORV_resource_paint";
    With numbered = with;
    if (with.tiling.empty())
        numbered.tiling = "tiling_flags=\"0\" x_repetition_interval=\"0\" y_repetition_interval=\"0\"";
    return "  <" + name + " drawing_context=\"0\" resource_id=\"" + std::to_string(id) +
           "\" hints=\"[0] ORV_GRP_HINT_NONE \" group_type=\"" + with.type + "\"" + repetition(numbered) +
           " pixel_placement_orientation=\"GPA_PP_ORIENTATION_0_DEG\">\n" + group_members(name, with) + "  </" + name +
           ">\n";
}

std::string page_of(int width, int height, const std::string& calls)
{
    return "<ORV Endian=\"little\" LoggingMode=\"transparent\" GlyphLoggingMode=\"transparent\">\n"
           "  <ORV_document_start document_context=\"0\" document_id=\"1\" font_engine_functions=\"FALSE\">\n"
           "  </ORV_document_start>\n"
           "  <ORV_face_start document_context=\"0\" drawing_context=\"0\" font_engine_functions=\"FALSE\" "
           "face_seq_number=\"1\" pixel_placement_orientation=\"GPA_PP_ORIENTATION_0_DEG\" "
           "pixel_placement=\"GPA_PLACEMENT_PS\">\n"
           "    <ORV_FaceProperties fp_FaceHints=\"[0] ORV_FACE_HINT_NONE \" fp_FaceInchToPixels=\"1 0 0 1 0 0 \" "
           "fp_WidthInPixels=\"" +
           std::to_string(width) + "\" fp_HeightInPixels=\"" + std::to_string(height) +
           "\" fp_TrimBox=\"0 0 1 1 \" fp_ClipBox=\"0 0 1 1 \" fp_MediaSize=\"1 1 \">\n"
           "    </ORV_FaceProperties>\n  </ORV_face_start>\n" +
           calls +
           "  <ORV_drawing_finish drawing_context=\"0\">\n  </ORV_drawing_finish>\n"
           "  <ORV_document_finish document_context=\"0\">\n  </ORV_document_finish>\n</ORV>\n";
}

}  // namespace orvlog::test
