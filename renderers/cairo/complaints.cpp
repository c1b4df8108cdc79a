#include "renderers/cairo/complaints.h"

#include <cstdio>
#include <utility>

namespace orvlog::cairo_renderer
{

Complaints::Complaints(std::function<void(const std::string&)> sink) : sink_(std::move(sink)) {}

void Complaints::say_once(const std::string& text)
{
    if (!known_.insert(text).second)
        return;
    said_.push_back(text);
    if (sink_)
        sink_("cairo renderer: " + text);
    else
        std::fprintf(stderr, "cairo renderer: %s\n", text.c_str());
}

const std::vector<std::string>& Complaints::said() const
{
    return said_;
}

}  // namespace orvlog::cairo_renderer
