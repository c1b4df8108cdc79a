// The options of the renderer as a shared library, from their text.

#pragma once

#include "renderers/cairo/cairo-renderer.h"

#include <string>
#include <string_view>

namespace orvlog::cairo_renderer
{

// "NAME=VALUE,NAME=VALUE,...": keep-images=yes|no, glyphs=path|bitmap|in-turn, pixels-at-once=N. False with the reason
// in `why`, where there is another name or value.
bool read_library_options(std::string_view text, Options* options, std::string* why);

}  // namespace orvlog::cairo_renderer
