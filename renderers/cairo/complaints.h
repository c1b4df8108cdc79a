// What the renderer could not do, each kind said once.

#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

namespace orvlog::cairo_renderer
{

class Complaints
{
public:
    explicit Complaints(std::function<void(const std::string&)> sink);

    // Says "cairo renderer: TEXT" unless the same text was said before. The text names the thing and what
    // is done instead.
    void say_once(const std::string& text);

    const std::vector<std::string>& said() const;

private:
    std::function<void(const std::string&)> sink_;
    std::set<std::string> known_;
    std::vector<std::string> said_;
};

}  // namespace orvlog::cairo_renderer
