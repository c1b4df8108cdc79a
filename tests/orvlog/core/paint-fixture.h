// A face that has begun, and what the tests of the paint calls share.

#pragma once

#include "holv-core/ggo/ggo-geometry.h"
#include "orvlog/session/orvlog-session.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace orvlog::test
{

struct PaintArguments
{
    uint8_t type = 4;
    uint32_t hints = 0;
    const GOP_Operator* op = nullptr;
    const GSH_ShapePointer* path = nullptr;
    uint32_t placement = 0;
    const GSH_ShapeList* clip = nullptr;
    GOP_OperandPointer* operands[3] = {};
};

struct StrokeArguments
{
    uint8_t fill_type = 4;
    uint8_t stroke_type = 2;
    uint32_t hints = 0;
    const GOP_Operator* fill_op = nullptr;
    const GOP_Operator* stroke_op = nullptr;
    const GSH_ShapePointer* path = nullptr;
    const GPA_PathStrokingParams* params = nullptr;
    const GGO_Matrix* transform = nullptr;
    uint32_t placement = 0;
    const GSH_ShapeList* clip = nullptr;
    uint32_t flags = 3;
    GGO_Point* end_point = nullptr;
    GOP_OperandPointer* operands[6] = {};
};

struct ResourceArguments
{
    uint32_t resource_id = 0;
    uint32_t hints = 0;
    uint32_t type = 0;
    const GGO_Matrix* retransform = nullptr;
    const GOP_Operator* op = nullptr;
    GOP_OperandPointer* operand2 = nullptr;
    const GSH_ShapeList* clip = nullptr;
    uint32_t tiling = 0;
    double x = 0;
    double y = 0;
    const GBC_Color* mask = nullptr;
    const GBC_Color* color = nullptr;
    uint32_t orientation = 0;
};

inline uint32_t paint(const ORV_DrawingInterface& d, const PaintArguments& a)
{
    return d.object_paint.fn(&d, a.type, a.hints, a.op, a.path, a.placement, a.clip, a.operands[0], a.operands[1],
                             a.operands[2]);
}

inline uint32_t stroke(const ORV_DrawingInterface& d, const StrokeArguments& a)
{
    return d.object_paint_and_stroke.fn(&d, a.fill_type, a.stroke_type, a.hints, a.fill_op, a.stroke_op, a.path,
                                        a.params, a.transform, a.placement, a.clip, a.flags, a.end_point, a.operands[0],
                                        a.operands[1], a.operands[2], a.operands[3], a.operands[4], a.operands[5]);
}

inline uint32_t paint_resource(const ORV_DrawingInterface& d, const ResourceArguments& a)
{
    return d.resource_paint.fn(&d, a.resource_id, a.hints, a.type, a.retransform, a.op, a.operand2, a.clip, a.tiling,
                               a.x, a.y, a.mask, a.color, a.orientation);
}

// The tags at one level in, without their attributes: what a call's members are.
inline std::string members(const std::string& log)
{
    std::string found;
    for (size_t line = 0; line < log.size(); line = log.find('\n', line) + 1)
    {
        if (log.compare(line, 5, "    <") != 0 || log[line + 5] == '/')
            continue;
        const size_t dot = log.find('.', line);
        found += log.substr(dot + 1, log.find('>', line) - dot - 1) + " ";
    }
    return found;
}

class Paint : public testing::Test
{
protected:
    Paint()
    {
        test.start_document();
        test.start_face(&face);
        test.forget();
        header.sh_ShapeType = GSH_SHAPE_IMAGE_RECT;
        header.sh_Transform = ggo_identity();
        shape.sp_HeaderPtr = &rect.irs_Shape;
        rect.irs_Shape = header;
        clip.sl_Shape = shape;
        for (int i = 0; i < 6; ++i)
            operands[i] = {&flats[i].fl_Operand, static_cast<uint32_t>(i), {}};
    }

    ORVLOG_Session* session()
    {
        return static_cast<ORVLOG_Session*>(test.session());
    }
    ORVLOG_DrawingContext* drawing()
    {
        return static_cast<ORVLOG_DrawingContext*>(face.object_paint.context);
    }
    void open_memory_context()
    {
        test.orv.memory_context_start.fn(nullptr, &test.orv, test.document, &face, 0, 0, 0, 0, 0, nullptr, nullptr, 0,
                                         0, 0, 0, 0, 0);
        test.forget();
    }

    TestSession test;
    ORV_DrawingInterface face = {};
    GSH_Shape header = {};
    GSH_ImageRectShape rect = {};
    GSH_ShapePointer shape = {};
    GSH_ShapeList clip = {};
    GOP_OperandFlat flats[6] = {};
    GOP_OperandPointer operands[6] = {};
    GOP_Operator op = {};
};

}  // namespace orvlog::test
