#include "renderers/cairo/complaints.h"

#include <cstdio>
#include <utility>

namespace orvlog::cairo_renderer
{

Complaints::Complaints(std::function<void(const std::string&)> sink, std::function<void(const std::string&)> losses)
    : sink_(std::move(sink)), losses_(std::move(losses))
{
}

void Complaints::say_once(const std::string& text)
{
    say(text, sink_);
}

void Complaints::lose_once(const std::string& text)
{
    say(text, losses_ ? losses_ : sink_);
}

void Complaints::say(const std::string& text, const std::function<void(const std::string&)>& sink)
{
    if (!known_.insert(text).second)
        return;
    said_.push_back(text);
    if (sink)
        sink("cairo renderer: " + text);
    else
        std::fprintf(stderr, "cairo renderer: %s\n", text.c_str());
}

const std::vector<std::string>& Complaints::said() const
{
    return said_;
}

}  // namespace orvlog::cairo_renderer
