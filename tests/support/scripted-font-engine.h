// A font engine that delivers given glyphs, records each call, and fails or misbehaves as told.

#pragma once

#include "orvlog/interface/gfi-font.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace orvlog::test
{

class ScriptedFontEngine
{
public:
    ScriptedFontEngine();
    ScriptedFontEngine(const ScriptedFontEngine&) = delete;
    ScriptedFontEngine& operator=(const ScriptedFontEngine&) = delete;

    const GFI_FontEngineTable* get() const
    {
        return &table;
    }
    // The calls since the last time, with a blank behind each.
    std::string take_calls();

    GFI_FontEngineTable table = {};
    std::vector<GGO_Vector> advances;  // one for each glyph of a string
    GGO_Matrix matrix = {{2, 0, 0, 3, 100, 100}};
    uint32_t start_result = 1;
    uint32_t index_result = 1;
    uint32_t glyph_result = 1;
    uint32_t changed = 0;
    uint32_t fixed_results[5] = {1, 1, 1, 1, 1};   // by type
    uint32_t fixed_returned[5] = {1, 1, 1, 1, 1};  // by type
    const GFI_GlyphDesc* glyph = nullptr;          // what is delivered; its own bitmap unless told otherwise
    bool endless = false;
    std::function<void()> on_call;  // from within each; may be empty
    int64_t* fuse = nullptr;        // counts down with each call; the one that brings it to 0 fails

    // What the last start was given.
    GGO_Matrix start_matrix = {};
    uint32_t start_flags = 0;
    uint32_t start_scaled = 0;

private:
    static ScriptedFontEngine* of(void* context)
    {
        return static_cast<ScriptedFontEngine*>(context);
    }
    void note(const std::string& call);
    uint32_t answer(uint32_t result) const
    {
        return fuse != nullptr && --*fuse == 0 ? 0 : result;
    }
    void deliver(uint32_t* changed_out, GGO_Matrix* matrix_out, uint32_t* flags_out, GFI_GlyphDescPointer** out);

    struct Bitmap
    {
        GFI_GlyphDescBitmap head;
        uint8_t bytes[2];
    };
    Bitmap bitmap_ = {};
    GFI_GlyphDescPointer given_ = {};
    std::string calls_;
    size_t next_ = 0;
};

}  // namespace orvlog::test
