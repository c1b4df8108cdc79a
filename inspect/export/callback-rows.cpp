#include "inspect/export/callback-rows.h"

#include "inspect/export/path-rows.h"
#include "reader/tree/values.h"

namespace orvlog::inspect
{

using orvlog::reader::Children;
using orvlog::reader::Element;

void CallbackRows::start(const Element& element)
{
    count_ = 0;
    fonts_.clear();
    // Callbacks that the renderer makes while a call is passed on may follow as siblings.
    if (orvlog::reader::is_call_name(element.name))
        strings_.clear();
    look_for_fonts(element);
}

void CallbackRows::look_for_fonts(const Element& element)
{
    for (const Element& child : Children(element))
    {
        const std::optional<int64_t> spec = number_of(&child, "orvlog_font_spec_id");
        if (child.name == "GFI_StringStartFn" && spec)
            fonts_.try_emplace(*spec,
                               FontUse{number_of(&child, "GfpId").value_or(0), number_of(&child, "unique_font_id")});
        else if (!child.name.ends_with("Fn"))
            look_for_fonts(child);
    }
}

const FontUse* CallbackRows::font(int64_t font_spec) const
{
    const auto known = fonts_.find(font_spec);
    return known != fonts_.end() ? &known->second : nullptr;
}

void CallbackRows::note_engine(int64_t engine, std::string_view name)
{
    engines_.insert_or_assign(engine, std::string(name.substr(0, kLongestName)));
    if (engines_.size() > kMostEngines)
        engines_.erase(engines_.begin());
}

std::optional<std::string_view> CallbackRows::engine_name(int64_t engine) const
{
    const auto known = engines_.find(engine);
    if (known == engines_.end())
        return std::nullopt;
    return known->second;
}

void CallbackRows::write(const Element& callback)
{
    ++count_;
    if (callback.name.starts_with("GFI_"))
    {
        String& string = strings_[number_of(&callback, "GfpId").value_or(0)];
        if (callback.name == "GFI_StringStartFn")
            string = {number_of(&callback, "orvlog_string_desc_id"), std::nullopt};
        else if (callback.name == "GFI_GlyphIndexGetFn")
            string.glyph = number_of(&callback, "glyph_index_out");
    }
    const Element* pointer = callback.child("GFI_GlyphDescPointer");
    const Element* holder = pointer != nullptr ? pointer->member("gdp_GlyphDesc") : nullptr;
    if (holder != nullptr && holder->first != nullptr)
        glyph(callback, *holder);
}

// `holder` has the description and, for outlines, the path behind it.
void CallbackRows::glyph(const Element& callback, const Element& holder)
{
    const Element& description = *holder.first;
    const Element* path = holder.child("GPA_PathPointer");
    const Element* buffer = description.child("BufferUInt8");
    const std::optional<int64_t> engine = number_of(&callback, "GfpId");
    const String& string = strings_[engine.value_or(0)];
    const auto size = [&description](const char* bitmap, const char* fbe, const char* rle)
    {
        for (const char* name : {bitmap, fbe, rle})
            if (const auto value = number_of(&description, name))
                return value;
        return std::optional<int64_t>();
    };
    constexpr std::string_view kKinds[] = {"GFI_GlyphDescFBE", "GFI_GlyphDescBitmap", "GFI_GlyphDescPath",
                                           "GFI_GlyphDescTrueType", "GFI_GlyphDescRLE"};
    std::string_view kind = "other";
    for (const std::string_view one : kKinds)
        kind = description.name == one ? one : kind;
    std::optional<PathFacts> facts;
    if (path != nullptr)
        facts = path_facts(*path, {});
    RowWriter& rows = job_.rows;
    job_.begin(Table::glyphs);
    rows.integer(engine).integer(string.string_desc).text(kind);
    rows.integer(size("gdb_Width", "gdf_Width", "gdr_Width")).integer(size("gdb_Height", "gdf_Height", "gdr_Height"));
    rows.integer(buffer != nullptr ? static_cast<int64_t>(buffer->data_size) : 0);
    rows.integer(facts ? std::optional(static_cast<int64_t>(facts->segments)) : std::nullopt);
    if (job_.options.texts)
        rows.integer(string.glyph).text(facts ? std::optional<std::string_view>(facts->hash) : std::nullopt);
    else
        rows.null().null();
    rows.end();
}

}  // namespace orvlog::inspect
