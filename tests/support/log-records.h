// Reads the calls of a log back into records and makes them again on a table of drawing functions: documents,
// faces, resources, groups and paints with paths, strokes, shapes, clips, operators and flat or gradient operands.
// What it doesn't know (texts, images, tickets) it counts.

#pragma once

#include "orvlog/interface/orvlog.h"

#include <libxml/tree.h>

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

namespace orvlog::test
{

class LogRecords
{
public:
    explicit LogRecords(const std::string& log);
    LogRecords(const LogRecords&) = delete;
    LogRecords& operator=(const LogRecords&) = delete;
    ~LogRecords();

    bool parsed() const
    {
        return document_ != nullptr;
    }
    // Makes all calls in their order. Gives how many were made.
    uint32_t replay(const ORV_Interface* orv);
    // Records met that are not read back.
    uint32_t unknown() const
    {
        return unknown_;
    }

private:
    template <typename Record> Record* make(size_t trailing = 0);
    void call(xmlNode* node, const ORV_Interface* orv);
    void start_face(xmlNode* node, const ORV_Interface* orv);
    void start_resource(xmlNode* node, const ORV_Interface* orv);
    void start_group(xmlNode* node, const ORV_DrawingInterface& drawing);
    void paint(xmlNode* node, const ORV_DrawingInterface& drawing);
    void paint_and_stroke(xmlNode* node, const ORV_DrawingInterface& drawing);
    void paint_resource(xmlNode* node, const ORV_DrawingInterface& drawing);
    const ORV_DrawingInterface& drawing_of(xmlNode* node);

    const GOP_Operator* read_operator(xmlNode* call, const std::string& member);
    GOP_OperandPointer* read_operand(xmlNode* call, const std::string& member);
    GOP_OperandPointer* read_flat(xmlNode* node);
    GOP_OperandPointer* read_gradient(xmlNode* node, bool radial);
    const GSH_ShapePointer* read_shape(xmlNode* call, const std::string& member);
    bool read_shape_pointer(xmlNode* node, GSH_ShapePointer* shape);
    const GSH_ShapeList* read_clip(xmlNode* call, const std::string& member);
    const GSH_ShapeList* read_list(xmlNode* node);
    const GPA_PathPointer* read_path(xmlNode* node);
    const GPA_Edge* read_edge(xmlNode* node);
    const GPA_PathStrokingParams* read_stroke(xmlNode* node);
    void read_stroke_into(xmlNode* node, GPA_PathStrokingParams* params);
    const GBC_Color* read_color(xmlNode* node);
    void read_color_into(xmlNode* node, GBC_Color* color);
    void read_head(xmlNode* node, GOP_Operand* head);
    const GGO_Matrix* read_matrix(xmlNode* node, const char* name);

    xmlDoc* document_;
    std::deque<std::vector<uint64_t>> blocks_;
    std::map<uint32_t, ORV_DrawingInterface> drawings_;
    std::map<uint32_t, uint32_t> resources_;
    void* handle_ = nullptr;
    uint32_t calls_ = 0;
    uint32_t unknown_ = 0;
};

}  // namespace orvlog::test
