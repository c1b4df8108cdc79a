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
    // `sink` takes what is painted otherwise than asked for, `losses` what isn't
    // painted. An empty sink means standard error, empty losses the sink.
    explicit Complaints(std::function<void(const std::string&)> sink,
                        std::function<void(const std::string&)> losses = {});

    // Says "cairo renderer: TEXT" unless the same text was said before. The text names the thing and what
    // is done instead.
    void say_once(const std::string& text);
    // The same for what a sound call asked for and the page lacks.
    void lose_once(const std::string& text);

    const std::vector<std::string>& said() const;

private:
    void say(const std::string& text, const std::function<void(const std::string&)>& sink);

    std::function<void(const std::string&)> sink_;
    std::function<void(const std::string&)> losses_;
    std::set<std::string> known_;
    std::vector<std::string> said_;
};

}  // namespace orvlog::cairo_renderer
