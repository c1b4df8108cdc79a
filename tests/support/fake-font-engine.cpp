#include "tests/support/fake-font-engine.h"

namespace orvlog::test
{

FakeFontEngine::FakeFontEngine(const char* id) : table_{}, id_(id)
{
    table_.fe_Context = this;
    table_.fe_Reserved = &id_;
    table_.fp_EngineIdGet = [](void* context)
    {
        auto* engine = static_cast<FakeFontEngine*>(context);
        ++engine->asked_for_id_;
        return engine->id_;
    };
    table_.GFI_StringStartFn = [](void*, const GFI_FontSpecPointer*, const GGO_Matrix*, uint32_t, uint32_t,
                                  const GFI_StringDescPointer*, int32_t* font, GGO_Matrix* matrix,
                                  uint32_t* flags) -> uint32_t
    {
        *font = -3;
        *matrix = {{1, 0, 0, 1, 0, 0}};
        *flags = 1;
        return 1;
    };
    table_.GFI_GlyphIndexGetFn = [](void*, uint32_t* returned, uint32_t*, uint16_t*, GGO_Vector*,
                                    GGO_BoxFloat*) -> uint32_t
    {
        *returned = 0;
        return 1;
    };
    table_.GFI_GlyphGetFixedFormatFn = [](void*, uint32_t, uint32_t* returned, uint32_t*, GGO_Matrix*, uint32_t*,
                                          GFI_GlyphDescPointer**) -> uint32_t
    {
        *returned = 0;
        return 1;
    };
    table_.GFI_GlyphGetFn = [](void*, uint32_t, uint32_t*, GGO_Matrix*, uint32_t*, GFI_GlyphDescPointer**) -> uint32_t
    { return 0; };
}

}  // namespace orvlog::test
