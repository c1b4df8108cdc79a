// A group that a test starts.

#pragma once

#include "orvlog/interface/orv-interface.h"

#include <cstdint>

namespace orvlog::test
{

// The arguments of a group, ordinary ones unless changed.
struct GroupArguments
{
    uint32_t unique_id = 5;
    uint32_t* group_out = nullptr;
    const GFI_FontEngineTable* engine = nullptr;
    uint32_t hints = 0;
    uint32_t type = 0;
    uint32_t is_knockout = 0;
    uint32_t is_replayable = 0;
    void* ticket = nullptr;
    uint32_t orientation = 0;
    uint32_t has_placement = 0;
    uint32_t placement = 0;
    const GGO_Matrix* retransform = nullptr;
    const GOP_Operator* op = nullptr;
    GOP_OperandPointer* operand2 = nullptr;
    const GSH_ShapeList* clip = nullptr;
    uint32_t tiling = 0;
    double x = 0;
    double y = 0;
    const GBC_Color* mask = nullptr;
    const GBC_Color* color = nullptr;
    const GGO_BoxFloat* box = nullptr;
};

inline uint32_t start_group(const ORV_DrawingInterface& drawing, const GroupArguments& a)
{
    return drawing.group_start.fn(&drawing, a.unique_id, a.group_out, a.engine, a.hints, a.type, a.is_knockout,
                                  a.is_replayable, a.ticket, a.orientation, a.has_placement, a.placement, a.retransform,
                                  a.op, a.operand2, a.clip, a.tiling, a.x, a.y, a.mask, a.color, a.box);
}

}  // namespace orvlog::test
