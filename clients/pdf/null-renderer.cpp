// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/null-renderer.h"

#include <type_traits>

namespace orvlog::pdf_client
{

namespace
{

// What takes any call without a word: 1, or null where a call gives an address.
template <typename Result, typename... Arguments> auto silent(Result (*)(Arguments...)) -> Result (*)(Arguments...)
{
    return [](Arguments...) -> Result
    {
        if constexpr (std::is_pointer_v<Result>)
            return nullptr;
        else
            return 1;
    };
}

void fill(ORV_DrawingInterface* drawing)
{
    *drawing = {};
#define ORV_DOCUMENT_CALL(name)
#define ORV_DRAWING_CALL(name) drawing->name.fn = silent(drawing->name.fn);
#include "orvlog/names/calls.inc"
    drawing->group_finish.fn = [](const ORV_DrawingInterface*, uint32_t* replay_out) -> uint32_t
    {
        *replay_out = 0;
        return 1;
    };
}

ORV_Interface make_table()
{
    ORV_Interface table{};
#define ORV_DOCUMENT_CALL(name) table.name.fn = silent(table.name.fn);
#define ORV_DRAWING_CALL(name)
#include "orvlog/names/calls.inc"
    table.document_start.fn = [](void*, const ORV_Interface*, void** document_out, uint32_t, const GFI_FontEngineTable*,
                                 void*) -> uint32_t
    {
        *document_out = nullptr;
        return 1;
    };
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

}  // namespace orvlog::pdf_client
