#include "reader/look/call-text.h"

#include "reader/tree/values.h"

namespace orvlog::reader
{

std::string text_of(const Element& call)
{
    const Element* holder = call.member("paint_path");
    const Element* shape = holder != nullptr ? holder->child("GSH_ShapePointer") : nullptr;
    const Element* glyphs = shape != nullptr ? shape->member("sp_U.glyph") : nullptr;
    const Element* string = glyphs != nullptr ? glyphs->child("GFI_StringDescPointer") : nullptr;
    std::string text;
    if (string == nullptr)
        return text;
    for (const uint32_t byte : to_uints(string->value("gsp_TextPtr")))
        text += static_cast<char>(byte);
    return text;
}

}  // namespace orvlog::reader
