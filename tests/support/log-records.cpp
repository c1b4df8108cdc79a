#include "tests/support/log-records.h"

#include <libxml/parser.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace orvlog::test
{

namespace
{

std::string text(xmlNode* node, const char* name)
{
    xmlChar* value = xmlGetProp(node, reinterpret_cast<const xmlChar*>(name));
    const std::string result = value != nullptr ? reinterpret_cast<const char*>(value) : "";
    xmlFree(value);
    return result;
}

bool has(xmlNode* node, const char* name)
{
    return xmlHasProp(node, reinterpret_cast<const xmlChar*>(name)) != nullptr;
}

std::string name_of(xmlNode* node)
{
    return reinterpret_cast<const char*>(node->name);
}

std::vector<xmlNode*> children(xmlNode* node)
{
    std::vector<xmlNode*> found;
    for (xmlNode* child = node->children; child != nullptr; child = child->next)
    {
        if (child->type == XML_ELEMENT_NODE)
            found.push_back(child);
    }
    return found;
}

xmlNode* child(xmlNode* node, const std::string& name)
{
    for (xmlNode* found : children(node))
    {
        if (name_of(found) == name)
            return found;
    }
    return nullptr;
}

xmlNode* member(xmlNode* node, const std::string& name)
{
    return child(node, name_of(node) + "." + name);
}

uint32_t number(xmlNode* node, const char* name)
{
    return static_cast<uint32_t>(std::strtoul(text(node, name).c_str(), nullptr, 10));
}

double real(xmlNode* node, const char* name)
{
    return std::strtod(text(node, name).c_str(), nullptr);
}

float single(xmlNode* node, const char* name)
{
    return std::strtof(text(node, name).c_str(), nullptr);
}

uint32_t truth(xmlNode* node, const char* name)
{
    return text(node, name) == "TRUE" ? 1 : 0;
}

// The number in "[0x12] NAMES".
uint32_t flags(xmlNode* node, const char* name)
{
    const std::string value = text(node, name);
    return static_cast<uint32_t>(std::strtoul(value.c_str() + (value.empty() ? 0 : 1), nullptr, 0));
}

std::vector<double> reals(const std::string& value)
{
    std::vector<double> found;
    const char* at = value.c_str();
    for (char* end = nullptr;; at = end)
    {
        const double one = std::strtod(at, &end);
        if (end == at)
            return found;
        found.push_back(one);
    }
}

void read_reals(xmlNode* node, const char* name, double* to, size_t count)
{
    const std::vector<double> values = reals(text(node, name));
    std::copy_n(values.begin(), std::min(count, values.size()), to);
}

GGO_Vector vector(xmlNode* node, const char* name)
{
    double values[2] = {};
    read_reals(node, name, values, 2);
    return {values[0], values[1]};
}

GGO_Point point(xmlNode* node, const char* name)
{
    const GGO_Vector v = vector(node, name);
    return {v.gvf_X, v.gvf_Y};
}

GGO_BoxFloat box(xmlNode* node, const char* name)
{
    double values[4] = {};
    read_reals(node, name, values, 4);
    return {values[0], values[1], values[2], values[3]};
}

uint32_t value_of(xmlNode* node, const char* name, std::initializer_list<const char*> names)
{
    const std::string value = text(node, name);
    const auto found = std::find(names.begin(), names.end(), value);
    return static_cast<uint32_t>(found - names.begin());
}

uint32_t placement(xmlNode* node, const char* name)
{
    return value_of(node, name,
                    {"GPA_PLACEMENT_GDI", "GPA_PLACEMENT_PS", "GPA_PLACEMENT_PCL", "GPA_PLACEMENT_GDI_MQP",
                     "GPA_PLACEMENT_PATH_PCL_IMAGE_GDI", "GPA_PLACEMENT_PATH_PS_IMAGE_GDI",
                     "GPA_PLACEMENT_PATH_GDI_IMAGE_PS", "GPA_PLACEMENT_AREA_INTERSECT",
                     "GPA_PLACEMENT_CENTER_INTERSECT"});
}

uint32_t winding(xmlNode* node, const char* name)
{
    return value_of(node, name, {"GPA_WINDING_ODD_EVEN", "GPA_WINDING_NON_ZERO"});
}

uint32_t cap(xmlNode* node, const char* name)
{
    return value_of(node, name, {"GPA_CAP_BUTT", "GPA_CAP_ROUND", "GPA_CAP_PROJECT", "GPA_CAP_TRIANGLE"});
}

uint32_t group_type(xmlNode* node)
{
    return value_of(node, "group_type",
                    {"ORV_GROUP_SIMPLE", "ORV_GROUP_PAINT_AS_OPAQUE", "ORV_GROUP_NON_ISOLATED",
                     "ORV_GROUP_COMBINE_SEPARATION", "ORV_GROUP_MAKE_SEPARATION"});
}

}  // namespace

LogRecords::LogRecords(const std::string& log)
    : document_(xmlReadMemory(log.data(), static_cast<int>(log.size()), "log", nullptr,
                              XML_PARSE_HUGE | XML_PARSE_NOERROR | XML_PARSE_NOWARNING))
{
}

LogRecords::~LogRecords()
{
    xmlFreeDoc(document_);
}

template <typename Record> Record* LogRecords::make(size_t trailing)
{
    blocks_.emplace_back((sizeof(Record) + trailing + 7) / 8, 0);
    return reinterpret_cast<Record*>(blocks_.back().data());
}

const GGO_Matrix* LogRecords::read_matrix(xmlNode* node, const char* name)
{
    if (!has(node, name))
        return nullptr;
    auto* matrix = make<GGO_Matrix>();
    read_reals(node, name, matrix->m, 6);
    return matrix;
}

const GPA_Edge* LogRecords::read_edge(xmlNode* node)
{
    xmlNode* head = child(node, "GPA_Edge");
    const std::string kind = name_of(node);
    if (kind != "GPA_StraightEdge" && kind != "GPA_BezierEdge")
        ++unknown_;
    const bool straight = kind == "GPA_StraightEdge";
    const uint32_t count = number(head, "ed_SegmentCount");
    auto* edge = make<GPA_StraightEdge>(count * (straight ? sizeof(GGO_Vector) : sizeof(GPA_BezierSegment)));
    edge->se_Edge.ed_EdgeType = straight ? GPA_EDGE_STRAIGHT : GPA_EDGE_BEZIER;
    edge->se_Edge.ed_EdgeFlag = static_cast<uint8_t>(flags(head, "ed_EdgeFlag"));
    edge->se_Edge.ed_SegmentCount = static_cast<uint16_t>(count);
    auto* segments = reinterpret_cast<uint8_t*>(edge) + offsetof(GPA_StraightEdge, se_Segment);
    for (xmlNode* segment : children(member(node, straight ? "se_Segment" : "be_BezierSegment")))
    {
        if (straight)
        {
            const GGO_Vector line = {real(segment, "gvf_X"), real(segment, "gvf_Y")};
            std::memcpy(segments, &line, sizeof line);
            segments += sizeof line;
            continue;
        }
        const GPA_BezierSegment curve = {vector(segment, "bs_StartTangent"), vector(segment, "bs_EndTangent"),
                                         vector(segment, "bs_EndPoint")};
        std::memcpy(segments, &curve, sizeof curve);
        segments += sizeof curve;
    }
    return &edge->se_Edge;
}

const GPA_PathPointer* LogRecords::read_path(xmlNode* node)
{
    xmlNode* path_node = child(node, "GPA_Path");
    const uint32_t count = number(path_node, "pa_NumEdges");
    auto* path = make<GPA_Path>(count * sizeof(GGO_Point));
    path->pa_NumEdges = count;
    path->pa_PathHints = static_cast<uint16_t>(flags(path_node, "pa_PathHints"));
    path->pa_EnclosingBox = box(path_node, "pa_EnclosingBox");
    GGO_Point* start = path->pa_EdgeStart;
    for (xmlNode* one : children(member(path_node, "pa_EdgeStart")))
        *start++ = {real(one, "gpf_X"), real(one, "gpf_Y")};
    auto* pointer = make<GPA_PathPointer>(count * sizeof(GPA_EdgePointer));
    pointer->lpp_Path = path;
    pointer->lpp_EnablePixelPlacement = truth(node, "lpp_EnablePixelPlacement");
    pointer->lpp_PathOwned = truth(node, "lpp_PathOwned");
    GPA_EdgePointer* edge = pointer->lpp_EdgePointer;
    for (xmlNode* one : children(member(node, "lpp_EdgePointer")))
    {
        const std::vector<xmlNode*> inside = children(member(one, "ep_Pointer"));
        *edge++ = {inside.empty() ? nullptr : read_edge(inside[0]), truth(one, "ep_Owned")};
    }
    return pointer;
}

void LogRecords::read_stroke_into(xmlNode* node, GPA_PathStrokingParams* params)
{
    const uint32_t join = value_of(node, "psp_Flags.J",
                                   {"GPA_JOIN_MITER", "GPA_JOIN_ROUND", "GPA_JOIN_BEVEL", "GPA_JOIN_MITER_CLIPPED",
                                    "GPA_JOIN_TRIANGLE", "GPA_JOIN_NONE", "GPA_JOIN_MITER_DUAL_CLIPPED"});
    const uint32_t adjust = value_of(node, "psp_Flags.A", {"GPA_ADJUST_NONE", "GPA_ADJUST_PS"});
    params->psp_Flags = static_cast<uint16_t>(cap(node, "psp_Flags.S") | cap(node, "psp_Flags.E") << 4 | join << 8 |
                                              adjust << 12 | truth(node, "psp_Flags.Z") << 15);
    params->psp_DashCount = static_cast<uint16_t>(number(node, "psp_DashCount"));
    params->psp_DashCaps = static_cast<uint8_t>(cap(node, "psp_DashCaps"));
    params->psp_StrokeWidth = single(node, "psp_StrokeWidth");
    params->psp_MiterLimit = single(node, "psp_MiterLimit");
    params->psp_DashStart = single(node, "psp_DashStart");
    xmlChar* dashes = xmlNodeGetContent(child(node, "psp_DashLength"));
    std::istringstream values(reinterpret_cast<const char*>(dashes));
    float* to = params->psp_DashLength;
    std::string one;
    for (uint32_t i = 0; i < params->psp_DashCount && values >> one; ++i)
        *to++ = std::strtof(one.c_str(), nullptr);
    xmlFree(dashes);
}

const GPA_PathStrokingParams* LogRecords::read_stroke(xmlNode* node)
{
    auto* params = make<GPA_PathStrokingParams>(number(node, "psp_DashCount") * sizeof(float));
    read_stroke_into(node, params);
    return params;
}

bool LogRecords::read_shape_pointer(xmlNode* node, GSH_ShapePointer* shape)
{
    const std::vector<xmlNode*> inside = children(member(node, "sp_HeaderPtr"));
    if (inside.empty())
        return false;
    xmlNode* head = child(inside[0], "GSH_Shape");
    const std::string kind = name_of(inside[0]);
    GSH_Shape common = {0, static_cast<uint16_t>(flags(head, "sh_Hints")), {}};
    read_reals(head, "sh_Transform", common.sh_Transform.m, 6);
    if (kind == "GSH_FilledPathShape")
    {
        auto* fill = make<GSH_FilledPathShape>();
        common.sh_ShapeType = GSH_SHAPE_FILL;
        *fill = {common, winding(inside[0], "fps_WindingRule")};
        shape->sp_HeaderPtr = &fill->fps_Shape;
        shape->sp_U.filled_path = read_path(children(member(node, "sp_U.filled_path"))[0]);
        return true;
    }
    if (kind == "GSH_StrokedPathShape")
    {
        xmlNode* params = child(inside[0], "GPA_PathStrokingParams");
        auto* stroke = make<GSH_StrokedPathShape>(number(params, "psp_DashCount") * sizeof(float));
        common.sh_ShapeType = GSH_SHAPE_STROKE;
        stroke->sps_Shape = common;
        stroke->sps_WindingRule = winding(inside[0], "sps_WindingRule");
        read_stroke_into(params, &stroke->sps_StrokingParams);
        shape->sp_HeaderPtr = &stroke->sps_Shape;
        shape->sp_U.stroked_path = read_path(children(member(node, "sp_U.stroked_path"))[0]);
        return true;
    }
    ++unknown_;
    return false;
}

const GSH_ShapePointer* LogRecords::read_shape(xmlNode* call, const std::string& name)
{
    xmlNode* frame = member(call, name);
    auto* shape = make<GSH_ShapePointer>();
    return frame != nullptr && read_shape_pointer(child(frame, "GSH_ShapePointer"), shape) ? shape : nullptr;
}

const GSH_ShapeList* LogRecords::read_list(xmlNode* node)
{
    auto* list = make<GSH_ShapeList>();
    list->sl_Hints = flags(node, "sl_Hints");
    list->sl_ClipIn = truth(node, "sl_ClipIn");
    list->sl_UniqueId = number(node, "sl_UniqueId");
    read_shape_pointer(child(member(node, "sl_Shape"), "GSH_ShapePointer"), &list->sl_Shape);
    xmlNode* collection = child(node, "GSH_ShapeListCollection");
    if (collection != nullptr)
        list->sl_Collection = read_list(child(collection, "GSH_ShapeList"));
    return list;
}

const GSH_ShapeList* LogRecords::read_clip(xmlNode* call, const std::string& name)
{
    xmlNode* frame = member(call, name);
    const GSH_ShapeList* first = nullptr;
    const GSH_ShapeList** link = &first;
    for (xmlNode* one : frame != nullptr ? children(frame) : std::vector<xmlNode*>())
    {
        *link = read_list(one);
        link = &const_cast<GSH_ShapeList*>(*link)->sl_Next;
    }
    return first;
}

void LogRecords::read_color_into(xmlNode* node, GBC_Color* color)
{
    color->bit_depth = static_cast<uint8_t>(number(node, "bit_depth"));
    color->num_chans = static_cast<uint16_t>(number(node, "num_chans"));
    color->has_alpha = static_cast<uint8_t>(truth(node, "has_alpha"));
    color->empty_chans = number(node, "empty_chans");
    std::istringstream values((color->has_alpha != 0 ? text(node, "alpha") + " " : "") + text(node, "base_n"));
    std::string one;
    for (uint32_t i = 0; values >> one; ++i)
    {
        if (color->bit_depth == 32)
            (&color->channels.as_float[0])[i] = std::strtof(one.c_str(), nullptr);
        else
            (&color->channels.as_uint16[0])[i] = static_cast<uint16_t>(std::strtoul(one.c_str(), nullptr, 10));
    }
}

const GBC_Color* LogRecords::read_color(xmlNode* node)
{
    auto* color = make<GBC_Color>(number(node, "num_chans") * sizeof(float));
    read_color_into(node, color);
    return color;
}

void LogRecords::read_head(xmlNode* node, GOP_Operand* head)
{
    head->go_OpType = static_cast<uint8_t>(
        value_of(node, "go_OpType",
                 {"GOP_OPERAND_FLAT", "GOP_OPERAND_GRAD_2PT", "GOP_OPERAND_GRAD_MULTISTOP", "GOP_OPERAND_GRAD_3PT",
                  "GOP_OPERAND_GRAD_RADIAL", "GOP_OPERAND_IMAGE", "GOP_OPERAND_IMAGE_TILE"}));
    const uint32_t space =
        value_of(node, "go_ColorInfo.GOP_OperandColorSpace", {"GOP_OCS_INPUT", "GOP_OCS_RENDER", "GOP_OCS_OTHER"});
    const uint32_t flag = value_of(node, "go_ColorInfo.GCM_ColorFlag", {"GCM_CF_BLACK", "GCM_CF_GREY", "GCM_CF_OTHER"});
    head->go_ColorInfo = static_cast<uint8_t>(flag << 6 | space);
    head->go_Count = static_cast<uint16_t>(number(node, "go_Count"));
    head->go_Hints = static_cast<uint16_t>(flags(node, "go_Hints"));
    head->go_ColorSpaceFamily = static_cast<uint16_t>(
        value_of(node, "go_ColorSpaceFamily", {"GCM_CSF_GRAY", "GCM_CSF_RGB", "GCM_CSF_CMYK", "GCM_CSF_NAMED"}));
}

GOP_OperandPointer* LogRecords::read_flat(xmlNode* node)
{
    xmlNode* flat_node = child(node, "GOP_OperandFlat");
    xmlNode* color = child(member(flat_node, "fl_Color"), "GBC_Color");
    auto* flat = make<GOP_OperandFlat>(number(color, "num_chans") * sizeof(float));
    read_head(child(flat_node, "GOP_Operand"), &flat->fl_Operand);
    read_color_into(color, &flat->fl_Color);
    auto* pointer = make<GOP_OperandFlatPointer>();
    pointer->flp_Pointer.op_Operand = &flat->fl_Operand;
    pointer->flp_Pointer.op_UniqueId = number(node, "op_UniqueId");
    return &pointer->flp_Pointer;
}

GOP_OperandPointer* LogRecords::read_gradient(xmlNode* node, bool radial)
{
    xmlNode* inside = child(node, radial ? "GOP_OperandGradRadial" : "GOP_OperandGradMultistop");
    const char* prefix = radial ? "gr_" : "gm_";
    const auto attribute = [&](const char* name) { return std::string(prefix) + name; };
    const GOP_Operand* head = nullptr;
    if (radial)
    {
        auto* gradient = make<GOP_OperandGradRadial>(64);
        read_head(child(inside, "GOP_Operand"), &gradient->gr_Operand);
        read_reals(inside, "gr_Transform", gradient->gr_Transform.m, 6);
        gradient->gr_Center1 = point(inside, "gr_Center1");
        gradient->gr_Radius1 = real(inside, "gr_Radius1");
        gradient->gr_Center2 = point(inside, "gr_Center2");
        gradient->gr_Radius2 = real(inside, "gr_Radius2");
        gradient->gr_UseInterpColorSpace =
            static_cast<uint8_t>(number(inside, attribute("UseInterpColorSpace").c_str()));
        gradient->gr_GradientRoundingMode =
            static_cast<uint8_t>(number(inside, attribute("GradientRoundingMode").c_str()));
        read_color_into(child(inside, "GBC_Color"), &gradient->gr_Color);
        gradient->gr_GradientExtendMode = static_cast<uint8_t>(number(inside, attribute("GradientExtendMode").c_str()));
        head = &gradient->gr_Operand;
    }
    else
    {
        auto* gradient = make<GOP_OperandGradMultistop>();
        read_head(child(inside, "GOP_Operand"), &gradient->gm_Operand);
        read_reals(inside, "gm_Transform", gradient->gm_Transform.m, 6);
        gradient->gm_Pt1 = point(inside, "gm_Pt1");
        gradient->gm_Pt2 = point(inside, "gm_Pt2");
        gradient->gm_UseInterpColorSpace =
            static_cast<uint8_t>(number(inside, attribute("UseInterpColorSpace").c_str()));
        gradient->gm_GradientRoundingMode =
            static_cast<uint8_t>(number(inside, attribute("GradientRoundingMode").c_str()));
        gradient->gm_GradientExtendMode = static_cast<uint8_t>(number(inside, attribute("GradientExtendMode").c_str()));
        head = &gradient->gm_Operand;
    }
    auto* pointer = make<GOP_OperandGradMultistopPointer>(head->go_Count * sizeof(void*));
    pointer->gmp_Pointer.op_Operand = head;
    pointer->gmp_Pointer.op_UniqueId = number(node, "op_UniqueId");
    const GOP_GradStop** stop = pointer->gmp_GradStop;
    for (xmlNode* one : children(member(node, radial ? "grp_GradStop" : "gmp_GradStop")))
    {
        xmlNode* color = child(member(one, "gs_StopColor"), "GBC_Color");
        auto* read = make<GOP_GradStop>(number(color, "num_chans") * sizeof(float));
        read->gs_StopPosn = real(one, "gs_StopPosn");
        read_color_into(color, &read->gs_StopColor);
        *stop++ = read;
    }
    return &pointer->gmp_Pointer;
}

GOP_OperandPointer* LogRecords::read_operand(xmlNode* call, const std::string& name)
{
    xmlNode* frame = member(call, name);
    const std::vector<xmlNode*> inside = frame != nullptr ? children(frame) : std::vector<xmlNode*>();
    if (inside.empty())
        return nullptr;
    const std::string kind = name_of(inside[0]);
    if (kind == "GOP_OperandFlatPointer")
        return read_flat(inside[0]);
    if (kind == "GOP_OperandGradMultistopPointer" || kind == "GOP_OperandGradRadialPointer")
        return read_gradient(inside[0], kind == "GOP_OperandGradRadialPointer");
    ++unknown_;
    return nullptr;
}

const GOP_Operator* LogRecords::read_operator(xmlNode* call, const std::string& name)
{
    xmlNode* frame = member(call, name);
    xmlNode* node = frame != nullptr ? child(frame, "GOP_Operator") : nullptr;
    if (node == nullptr)
        return nullptr;
    auto* op = make<GOP_Operator>();
    op->op_OperatorType = value_of(node, "op_OperatorType",
                                   {"GOP_ROP_ROP2_GDI", "GOP_ROP_ROP3", "GOP_ROP_ROP4", "GOP_ROP_PORTER_DUFF",
                                    "GOP_ROP_PDF_SEPARABLE", "GOP_ROP_PDF_NONSEPARABLE", "GOP_ROP_ARITHMETIC",
                                    "GOP_ROP_IMAGE_PROCESSING", "GOP_ROP_USER_DEFINED"});
    op->op_Operator = static_cast<uint16_t>(number(node, "op_Operator"));
    op->op_MaskMode =
        value_of(node, "op_MaskMode", {"GOP_MASK_NONE", "GOP_MASK_IN", "GOP_MASK_OUT", "GOP_ATTRIBUTE_MASK"});
    op->op_TransparencyFlags = static_cast<uint8_t>(flags(node, "op_TransparencyFlags"));
    op->op_OperatorHints = flags(node, "op_OperatorHints");
    return op;
}

const ORV_DrawingInterface& LogRecords::drawing_of(xmlNode* node)
{
    return drawings_[number(node, "drawing_context")];
}

void LogRecords::start_face(xmlNode* node, const ORV_Interface* orv)
{
    xmlNode* inside = child(node, "ORV_FaceProperties");
    ORV_FaceProperties properties = {};
    properties.fp_FaceHints = flags(inside, "fp_FaceHints");
    read_reals(inside, "fp_FaceInchToPixels", properties.fp_FaceInchToPixels.m, 6);
    properties.fp_WidthInPixels = number(inside, "fp_WidthInPixels");
    properties.fp_HeightInPixels = number(inside, "fp_HeightInPixels");
    properties.fp_TrimBox = box(inside, "fp_TrimBox");
    properties.fp_ClipBox = box(inside, "fp_ClipBox");
    properties.fp_MediaSize = point(inside, "fp_MediaSize");
    orv->face_start.fn(nullptr, orv, handle_, &drawings_[number(node, "drawing_context")], nullptr,
                       number(node, "face_seq_number"), &properties, nullptr, 0, placement(node, "pixel_placement"));
}

void LogRecords::start_resource(xmlNode* node, const ORV_Interface* orv)
{
    xmlNode* inside = child(node, "ORV_ResourceProperties");
    ORV_ResourceProperties properties = {};
    properties.rp_ResourceHints = flags(inside, "rp_ResourceHints");
    properties.rp_MaxRescale = single(inside, "rp_MaxRescale");
    properties.rp_IsKnockout = static_cast<uint8_t>(truth(inside, "rp_IsKnockout"));
    properties.rp_Enclosing_box = box(inside, "rp_Enclosing_box");
    orv->resource_start.fn(nullptr, orv, handle_, &drawings_[number(node, "drawing_context")], nullptr, nullptr,
                           &properties, nullptr, &resources_[number(node, "resource_id")]);
}

void LogRecords::start_group(xmlNode* node, const ORV_DrawingInterface& drawing)
{
    GGO_BoxFloat hint = box(node, "bounding_box_hint");
    drawing.group_start.fn(&drawing, number(node, "group_unique_id"), nullptr, nullptr, flags(node, "hints"),
                           group_type(node), truth(node, "is_knockout"), truth(node, "is_replayable"), nullptr, 0, 0, 0,
                           read_matrix(node, "retransform"), read_operator(node, "op"), read_operand(node, "operand2"),
                           read_clip(node, "group_clip"), flags(node, "tiling_flags"),
                           real(node, "x_repetition_interval"), real(node, "y_repetition_interval"), nullptr, nullptr,
                           has(node, "bounding_box_hint") ? &hint : nullptr);
}

void LogRecords::paint(xmlNode* node, const ORV_DrawingInterface& drawing)
{
    drawing.object_paint.fn(&drawing, static_cast<uint8_t>(number(node, "object_type_and_flag")),
                            flags(node, "object_hints"), read_operator(node, "op"), read_shape(node, "paint_path"),
                            placement(node, "path_pixel_placement"), read_clip(node, "clip"),
                            read_operand(node, "operand1"), read_operand(node, "operand2"),
                            read_operand(node, "operand3"));
}

void LogRecords::paint_and_stroke(xmlNode* node, const ORV_DrawingInterface& drawing)
{
    xmlNode* frame = member(node, "stroking_params");
    const GPA_PathStrokingParams* params =
        frame != nullptr ? read_stroke(child(frame, "GPA_PathStrokingParams")) : nullptr;
    drawing.object_paint_and_stroke.fn(
        &drawing, static_cast<uint8_t>(number(node, "fill_object_type")),
        static_cast<uint8_t>(number(node, "stroke_object_type")), flags(node, "object_hints"),
        read_operator(node, "fill_op"), read_operator(node, "stroke_op"), read_shape(node, "paint_path"), params,
        read_matrix(node, "stroking_transform"), placement(node, "path_pixel_placement"), read_clip(node, "clip"),
        flags(node, "paint_flags"), nullptr, read_operand(node, "fill_operand1"), read_operand(node, "fill_operand2"),
        read_operand(node, "fill_operand3"), read_operand(node, "stroke_operand1"),
        read_operand(node, "stroke_operand2"), read_operand(node, "stroke_operand3"));
}

void LogRecords::paint_resource(xmlNode* node, const ORV_DrawingInterface& drawing)
{
    drawing.resource_paint.fn(&drawing, resources_[number(node, "resource_id")], flags(node, "hints"), group_type(node),
                              read_matrix(node, "retransform"), read_operator(node, "op"),
                              read_operand(node, "operand2"), read_clip(node, "group_clip"),
                              number(node, "tiling_flags"), real(node, "x_repetition_interval"),
                              real(node, "y_repetition_interval"), nullptr, nullptr, 0);
}

void LogRecords::call(xmlNode* node, const ORV_Interface* orv)
{
    const std::string name = name_of(node);
    ++calls_;
    if (name == "ORV_document_start")
        orv->document_start.fn(nullptr, orv, &handle_, number(node, "document_id"), nullptr, nullptr);
    else if (name == "ORV_document_finish")
        orv->document_finish.fn(orv, handle_);
    else if (name == "ORV_face_start")
        start_face(node, orv);
    else if (name == "ORV_resource_start")
        start_resource(node, orv);
    else if (name == "ORV_resource_destroy")
        orv->resource_destroy.fn(nullptr, orv, handle_, nullptr, resources_[number(node, "resource_id")]);
    else if (name == "ORV_group_start")
        start_group(node, drawing_of(node));
    else if (name == "ORV_object_paint")
        paint(node, drawing_of(node));
    else if (name == "ORV_object_paint_and_stroke")
        paint_and_stroke(node, drawing_of(node));
    else if (name == "ORV_resource_paint")
        paint_resource(node, drawing_of(node));
    else if (name == "ORV_group_finish")
    {
        uint32_t again = 0;
        drawing_of(node).group_finish.fn(&drawing_of(node), &again);
    }
    else if (name == "ORV_drawing_finish")
        drawing_of(node).drawing_finish.fn(&drawing_of(node));
    else
        ++unknown_;
    blocks_.clear();
}

uint32_t LogRecords::replay(const ORV_Interface* orv)
{
    for (xmlNode* node : children(xmlDocGetRootElement(document_)))
        call(node, orv);
    return calls_;
}

}  // namespace orvlog::test
