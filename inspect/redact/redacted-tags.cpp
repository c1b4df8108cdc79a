// The attributes of a redacted log.

#include "inspect/redact/known-forms.h"
#include "inspect/redact/redacted-text.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <array>

namespace orvlog::inspect
{

namespace
{

using reader::Attribute;
using reader::Event;

std::string pair_text(double x, double y)
{
    return double_text(x) + " " + double_text(y) + " ";
}

std::string box_text(const GGO_BoxFloat& box)
{
    return pair_text(box.gbf_MinX, box.gbf_MinY) + pair_text(box.gbf_MaxX, box.gbf_MaxY);
}

bool is_own_word(const Attribute& attribute)
{
    static constexpr std::array<std::string_view, 6> kNames = {"compression",      "Endian", "LoggingMode",
                                                               "GlyphLoggingMode", "name",   "GCM_CieFamily"};
    static constexpr std::array<std::string_view, 7> kWords = {
        "little", "big", "transparent", "base", "none", "cp_AlternateDefn", "cp_TintTransformAltDefn"};
    return std::find(kNames.begin(), kNames.end(), attribute.name) != kNames.end() &&
           std::find(kWords.begin(), kWords.end(), attribute.value) != kWords.end();
}

}  // namespace

std::string RedactedText::value(const Event& event, const Attribute& attribute)
{
    if (attribute.value.empty() || is_own_word(attribute))
        return std::string(attribute.value);
    if (attribute.name == "gsp_TextPtr")
    {
        count("texts");
        return masked_numbers(attribute.value);
    }
    if (attribute.name == "imp_IndexColorTable")
    {
        count("colour tables");
        std::string table;
        const size_t entries = reader::to_uints(attribute.value).size();
        for (size_t i = 0; i < entries; ++i)
            table += std::to_string(image_stand_in(i)) + " ";
        return table;
    }
    std::string stands = text_value(attribute);
    if (stands.empty())
        stands = glyph_value(event, attribute);
    if (stands.empty() && in_outline())
        stands = outline_value(event, attribute);
    if (!stands.empty())
        return stands;
    if (is_known_value(attribute.value))
        return std::string(attribute.value);
    count("other values");
    return masked_text(attribute.value);
}

// Empty if it is none.
std::string RedactedText::text_value(const Attribute& attribute)
{
    if (attribute.name == "fp_EngineIdGet")
    {
        count("names of font engines");
        return masked_value(attribute.value);
    }
    if (attribute.name == "cp_Filename")
    {
        count("file names");
        return masked_path(reader::to_text(attribute.value));
    }
    if (attribute.name == "imp_DirectImageFileName" || attribute.name == "ImageFileName" ||
        attribute.name == "AttrFileName" || attribute.name == "async_img_log_file_name")
    {
        count("file names");
        return masked_file(reader::to_text(attribute.value));
    }
    if (attribute.name == "val")
    {
        std::string masked = masked_colourant(attribute.value);
        if (masked != attribute.value)
            count("names of colourants");
        return masked;
    }
    return {};
}

std::string RedactedText::glyph_value(const Event&, const Attribute& attribute)
{
    if (attribute.name == "ggs_GlyphIndex" || attribute.name == "glyph_index_out")
    {
        count("numbers of glyphs");
        return std::to_string(glyphs_.of(static_cast<uint32_t>(reader::to_uint(attribute.value))));
    }
    if (attribute.name != "quick_bounding_box")
        return {};
    const std::vector<double> box = reader::to_doubles(attribute.value);
    return box.size() == 4 ? box_text(OutlineStandIn::rounded({box[0], box[1], box[2], box[3]})) : "";
}

// The points of a glyph.
std::string RedactedText::outline_value(const Event& event, const Attribute& attribute)
{
    const auto part = [this](double share) { return pair_text(segment_.gvf_X * share, segment_.gvf_Y * share); };
    if (attribute.name == "pa_EnclosingBox")
    {
        const std::vector<double> box = reader::to_doubles(attribute.value);
        return box.size() == 4 ? box_text(OutlineStandIn::rounded({box[0], box[1], box[2], box[3]})) : "0 0 0 0 ";
    }
    if (attribute.name == "gpf_X" || attribute.name == "gpf_Y")
        return double_text(attribute.name == "gpf_X" ? start_.gpf_X : start_.gpf_Y);
    if (attribute.name == "gvf_X" || attribute.name == "gvf_Y")
        return double_text(attribute.name == "gvf_X" ? segment_.gvf_X : segment_.gvf_Y);
    if (attribute.name == "bs_StartTangent")
        return part(1.0 / 3);
    if (attribute.name == "bs_EndTangent")
        return part(2.0 / 3);
    if (attribute.name == "qs_ControlPoint")
        return part(1.0 / 2);
    if (attribute.name.ends_with("_EndPoint"))
        return part(1);
    if (attribute.name.starts_with("es_") || attribute.name.starts_with("ss_"))
        return event.name == "GPA_StaircaseSegment" ? "1" : "0";
    return {};
}

}  // namespace orvlog::inspect
