#include "inspect/redact/known-forms.h"

#include "reader/tree/values.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

namespace orvlog::inspect
{

namespace
{

constexpr std::string_view kWarning = "ORVLOG: WARNING: ";

constexpr std::array<std::string_view, 32> kWarnings = {
    "Version 1.1 ORVLOG_Params.up_DumpReqImgDataOnly converted to transparent mode logging",
    "ORV_memory_context_start parameters are not logged",
    "Image operand could not be replaced. Image callbacks will not be logged.",
    "Could not open new image file",
    "Image is too large.",
    "Image read returned a negative count.",
    "Image callback for an image that is gone.",
    "Image record has lost its context.",
    "Image goes on beyond its size.",
    "Could not match font_spec_ptr and string_desc in GFI_StringStartFn to a valid GSH_ShapePointer.",
    "GFI_GlyphIndexGetFn call returned failure. This msg logged once only.",
    "GFI_GlyphGetFixedFormatFn FBE call returned failure. This msg logged once only.",
    "GFI_GlyphGetFn returned failure. This msg logged once only.",
    "String of glyphs does not end.",
    "Text without a font engine. Its glyphs will not be logged.",
    "GPA_PathPointer without a path.",
    "GSH_ShapePointer without a shape.",
    "GSH_ShapeList leads back to itself.",
    "GSH_ShapeListCollection leads back to itself.",
    "GSH_ShapeListCollection nested too deep.",
    "GOP_OperandPointer without an operand.",
    "GFI_StringDescPointer without a string description.",
    "GFI_StringDescPointer without its text.",
    "GFI_StringDescPointer without its glyph mapping.",
    "GFI_StringDescPointer with more than 65535 clusters.",
    "GFI_GlyphClusterSpec without its glyphs.",
    "GFI_GlyphDescPointer without a glyph description.",
    "Converted a GCM_CSDTYPE_CALLBACK to a GCM_CSDTYPE_PROFILE_BUFFER in order to dump it to the log.",
    "The profile of a callback definition is too large; it is cut short.",
    "The decode tables of a colour space definition are too large; they are left out.",
    "The table of a post render LUT is too large; it is left out.",
    "Colour space definitions refer to one another without end; the rest is left out.",
};

constexpr std::array<std::string_view, 13> kElements = {
    "ORV_", "GOP_", "GSH_", "GPA_", "GFI_", "GCM_", "GGO_", "GBC_", "GXC_", "clp_", "Buffer", "ORVLOG_WRAPPER", "CStr"};
constexpr std::array<std::string_view, 5> kMembers = {"ORV", "img_buf", "attr_buf", "imp_DirectImageData",
                                                      "psp_DashLength"};

bool is_number(std::string_view word)
{
    if (word.starts_with('-') || word.starts_with('+'))
        word.remove_prefix(1);
    if (word == "inf" || word == "nan")
        return true;
    return !word.empty() && word[0] >= '0' && word[0] <= '9' &&
           word.find_first_not_of("0123456789.e+-") == std::string_view::npos;
}

bool is_hex(std::string_view word)
{
    return word.size() == 2 && word.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

// Names of flags are no enumerators that the reader knows.
bool is_flag_name(std::string_view word)
{
    return word.size() > 4 && word.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_") == word.npos &&
           (word.starts_with("ORV_") || word.starts_with("GOP_") || word.starts_with("GSH_") ||
            word.starts_with("GPA_") || word.starts_with("GCM_") || word.starts_with("GGO_"));
}

bool is_unknown_value(std::string_view word)
{
    constexpr std::string_view kHead = "UNKNOWN_VALUE(";
    return word.starts_with(kHead) && word.ends_with(')') &&
           is_number(word.substr(kHead.size(), word.size() - kHead.size() - 1));
}

bool is_flags(std::string_view word)
{
    return word.size() > 2 && word.starts_with('[') && word.ends_with(']') &&
           word.substr(1, word.size() - 2).find_first_not_of("0123456789abcdefx") == std::string_view::npos;
}

}  // namespace

bool is_known_value(std::string_view value)
{
    while (!value.empty())
    {
        const std::string_view word = value.substr(0, value.find(' '));
        const bool known = is_number(word) || is_hex(word) || word == "TRUE" || word == "FALSE" || is_flags(word) ||
                           is_unknown_value(word) || is_flag_name(word) || reader::is_enumerator(word);
        if (!known)
            return false;
        value.remove_prefix(std::min(word.size() + 1, value.size()));
    }
    return true;
}

bool is_known_element(std::string_view name)
{
    const auto begins = [name](std::string_view family) { return name.starts_with(family); };
    return is_attribute_name(name) && (std::any_of(kElements.begin(), kElements.end(), begins) ||
                                       std::find(kMembers.begin(), kMembers.end(), name) != kMembers.end());
}

bool is_attribute_name(std::string_view name)
{
    constexpr std::string_view kCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_.";
    return !name.empty() && name.find_first_not_of(kCharacters) == std::string_view::npos;
}

bool is_known_warning(std::string_view text)
{
    if (!text.starts_with(kWarning))
        return false;
    text.remove_prefix(kWarning.size());
    while (text.ends_with('\n') || text.ends_with('\r'))
        text.remove_suffix(1);
    return std::find(kWarnings.begin(), kWarnings.end(), text) != kWarnings.end();
}

bool is_number_row(std::string_view row)
{
    while (!row.empty())
    {
        const std::string_view word = row.substr(0, row.find_first_of(" \r\n"));
        if (!word.empty() && !is_number(word) && !is_hex(word))
            return false;
        row.remove_prefix(std::min(word.size() + 1, row.size()));
    }
    return true;
}

}  // namespace orvlog::inspect
