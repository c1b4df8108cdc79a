#include "renderers/cairo/library-options.h"

#include <charconv>

namespace orvlog::cairo_renderer
{

namespace
{

bool read_glyphs(std::string_view value, Options* options)
{
    const bool known = value == "path" || value == "bitmap" || value == "in-turn";
    options->glyph_form = value == "bitmap"    ? GlyphForm::bitmap
                          : value == "in-turn" ? GlyphForm::in_turn
                                               : GlyphForm::path;
    return known;
}

bool read_number(std::string_view value, uint64_t* number)
{
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), *number);
    return error == std::errc{} && end == value.data() + value.size() && *number > 0;
}

bool read_option(std::string_view name, std::string_view value, Options* options)
{
    if (name == "keep-images")
        options->keep_images = value == "yes";
    if (name == "keep-images")
        return value == "yes" || value == "no";
    if (name == "glyphs")
        return read_glyphs(value, options);
    return name == "pixels-at-once" && read_number(value, &options->pixels_at_once);
}

}  // namespace

bool read_library_options(std::string_view text, Options* options, std::string* why)
{
    while (!text.empty())
    {
        const std::string_view one = text.substr(0, text.find(','));
        text.remove_prefix(std::min(text.size(), one.size() + 1));
        const size_t sign = one.find('=');
        if (sign == one.npos || !read_option(one.substr(0, sign), one.substr(sign + 1), options))
        {
            *why = "no option of this renderer: " + std::string(one);
            return false;
        }
    }
    return true;
}

}  // namespace orvlog::cairo_renderer
