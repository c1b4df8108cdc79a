// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/null-renderer.h"

namespace pdf_client
{

namespace
{

void fill(ORV_DrawingInterface* drawing)
{
    *drawing = {};
    drawing->object_paint.fn = [](const ORV_DrawingInterface*, uint8_t, uint32_t, const GOP_Operator*,
                                  const GSH_ShapePointer*, uint32_t, const GSH_ShapeList*, GOP_OperandPointer*,
                                  GOP_OperandPointer*, GOP_OperandPointer*) -> uint32_t { return 1; };
    drawing->object_paint_and_stroke.fn =
        [](const ORV_DrawingInterface*, uint8_t, uint8_t, uint32_t, const GOP_Operator*, const GOP_Operator*,
           const GSH_ShapePointer*, const GPA_PathStrokingParams*, const GGO_Matrix*, uint32_t, const GSH_ShapeList*,
           uint32_t, GGO_Point*, GOP_OperandPointer*, GOP_OperandPointer*, GOP_OperandPointer*, GOP_OperandPointer*,
           GOP_OperandPointer*, GOP_OperandPointer*) -> uint32_t { return 1; };
    drawing->group_start.fn = [](const ORV_DrawingInterface*, uint32_t, uint32_t*, const GFI_FontEngineTable*, uint32_t,
                                 uint32_t, uint32_t, uint32_t, void*, uint32_t, uint32_t, uint32_t, const GGO_Matrix*,
                                 const GOP_Operator*, GOP_OperandPointer*, const GSH_ShapeList*, uint32_t, double,
                                 double, const GBC_Color*, const GBC_Color*, const GGO_BoxFloat*) -> uint32_t
    { return 1; };
    drawing->group_finish.fn = [](const ORV_DrawingInterface*, uint32_t* replay_out) -> uint32_t
    {
        *replay_out = 0;
        return 1;
    };
    drawing->resource_paint.fn = [](const ORV_DrawingInterface*, uint32_t, uint32_t, uint32_t, const GGO_Matrix*,
                                    const GOP_Operator*, GOP_OperandPointer*, const GSH_ShapeList*, uint32_t, double,
                                    double, const GBC_Color*, const GBC_Color*, uint32_t) -> uint32_t { return 1; };
    drawing->drawing_error_context.fn = [](const ORV_DrawingInterface*) -> void* { return nullptr; };
    drawing->drawing_finish.fn = [](const ORV_DrawingInterface*) -> uint32_t { return 1; };
    drawing->drawing_discard.fn = [](const ORV_DrawingInterface*) -> uint32_t { return 1; };
}

ORV_Interface make_table()
{
    ORV_Interface table{};
    table.document_start.fn = [](void*, const ORV_Interface*, void** document_out, uint32_t, const GFI_FontEngineTable*,
                                 void*) -> uint32_t
    {
        *document_out = nullptr;
        return 1;
    };
    table.document_finish.fn = [](const ORV_Interface*, void*) -> uint32_t { return 1; };
    table.resource_destroy.fn = [](void*, const ORV_Interface*, void*, const ORV_DrawingInterface*,
                                   uint32_t) -> uint32_t { return 1; };
    table.face_start.fn = [](void*, const ORV_Interface*, void*, ORV_DrawingInterface* drawing_out,
                             const GFI_FontEngineTable*, uint32_t, const ORV_FaceProperties*, void*, uint32_t,
                             uint32_t) -> uint32_t
    {
        fill(drawing_out);
        return 1;
    };
    table.resource_start.fn = [](void*, const ORV_Interface*, void*, ORV_DrawingInterface* drawing_out,
                                 const ORV_DrawingInterface*, const GFI_FontEngineTable*, const ORV_ResourceProperties*,
                                 void*, uint32_t* resource_id_out) -> uint32_t
    {
        fill(drawing_out);
        *resource_id_out = 0;
        return 1;
    };
    table.memory_context_start.fn = [](void*, const ORV_Interface*, void*, ORV_DrawingInterface*, uintptr_t, uintptr_t,
                                       uintptr_t, uintptr_t, uintptr_t, const GFI_FontEngineTable*, void*, uintptr_t,
                                       uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t) -> uint32_t { return 0; };
    return table;
}

}  // namespace

const ORV_Interface* null_renderer()
{
    static const ORV_Interface table = make_table();
    return &table;
}

}  // namespace pdf_client
