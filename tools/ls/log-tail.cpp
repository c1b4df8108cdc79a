#include "tools/ls/log-tail.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <sstream>
#include <thread>

namespace orvlog::tool
{

namespace
{

using orvlog::reader::Element;

constexpr std::chrono::milliseconds kPause{100};
constexpr size_t kBlock = 65536;
constexpr std::string_view kRoot = "<ORV";
constexpr std::string_view kCall = "  <ORV_";

// "ORV_object_paint" of "  <ORV_object_paint id=...".
std::string name_of(std::string_view line)
{
    line.remove_prefix(line.find('<') + 1);
    return std::string(line.substr(0, line.find_first_of(" />\r\n")));
}

std::string_view without_blanks(std::string_view line)
{
    return line.substr(std::min(line.find_first_not_of(' '), line.size()));
}

// The id in an opening tag that may not be whole; empty if there is none.
std::string_view id_of(std::string_view tag)
{
    constexpr std::string_view kName = " id=\"";
    const size_t at = tag.find(kName);
    if (at == std::string_view::npos)
        return {};
    tag.remove_prefix(at + kName.size());
    const size_t end = tag.find('"');
    const bool number = end != 0 && end != std::string_view::npos && end <= 10 &&
                        tag.substr(0, end).find_first_not_of("0123456789") == std::string_view::npos;
    return number ? tag.substr(0, end) : std::string_view();
}

}  // namespace

LogTail::Step LogTail::fail(const std::string& why)
{
    why_ = why;
    return Step::failed;
}

bool LogTail::begins_like_a_log() const
{
    const std::string_view start = std::string_view(rest_).substr(0, kRoot.size());
    const bool goes_on = rest_.size() <= kRoot.size() || rest_[kRoot.size()] == ' ' || rest_[kRoot.size()] == '>' ||
                         rest_[kRoot.size()] == '\n';
    return start == kRoot.substr(0, start.size()) && goes_on;
}

LogTail::Step LogTail::read()
{
    std::array<char, kBlock> block{};
    const int64_t count = file_.read(block.data(), block.size(), position_);
    if (count < 0)
        return fail(std::strerror(errno));
    const std::string_view bytes(block.data(), static_cast<size_t>(count));
    const std::string_view text = bytes.substr(0, bytes.find('\0'));
    position_ += static_cast<int64_t>(text.size());
    if (!text.empty())
        return take(text);
    // The file under the log's name is still to be the one that is read, with all that was read.
    if (!file_.is_there(position_, &why_))
        return Step::failed;
    if (on_wait && !on_wait(in_flight()))
        return Step::failed;
    std::this_thread::sleep_for(kPause);
    return Step::on;
}

LogTail::Step LogTail::take(std::string_view bytes)
{
    rest_ += bytes;
    if (!begun_ && !begins_like_a_log())
        return fail("is no plain log, which alone can be followed");
    std::string_view lines = rest_;
    Step step = Step::on;
    for (size_t end = lines.find('\n'); end != std::string_view::npos && step == Step::on; end = lines.find('\n'))
    {
        const std::string_view line = lines.substr(0, end + 1);
        begun_ = true;
        step = take_line(line);
        place_.byte += line.size();
        ++place_.line;
        lines.remove_prefix(line.size());
    }
    rest_.erase(0, rest_.size() - lines.size());
    return step;
}

LogTail::Step LogTail::take_line(std::string_view line)
{
    const std::string_view tag = without_blanks(line);
    if (in_comment_ || tag.starts_with("<!--"))
    {
        in_comment_ = line.find("-->") == std::string_view::npos;
        return Step::on;
    }
    if (tag.starts_with("</ORV>") && tag.size() == line.size())
        return Step::end;
    const bool begins = line.starts_with(kCall);
    if (begins)
    {
        // One that never came to its end is left aside.
        name_ = name_of(line);
        begin_ = place_;
        call_.clear();
    }
    if (name_.empty())
        return Step::on;
    // Rows of data don't matter to what is told of a call.
    if (tag.starts_with('<'))
        call_ += line;
    else
        call_ += "\n";
    const bool alone = begins && line.ends_with("/>\n");
    return alone || line.substr(0, line.size() - 1) == "  </" + name_ + ">" ? finish_call() : Step::on;
}

LogTail::Step LogTail::finish_call()
{
    std::istringstream text(call_);
    orvlog::reader::ElementReader elements(text, orvlog::reader::LogForm::fragment, orvlog::reader::Data::skip);
    const Element* element = elements.next();
    bool wanted = true;
    if (element != nullptr)
    {
        Element placed = *element;
        placed.place = begin_;
        wanted = !on_call || on_call(placed);
    }
    name_.clear();
    call_.clear();
    return wanted ? Step::on : Step::failed;
}

// Of the last tag that has begun, whole or not.
std::string LogTail::in_flight() const
{
    const std::string_view rest = rest_;
    const bool begins = rest.starts_with(kCall);
    if (name_.empty() && !begins)
        return {};
    const std::string_view first = begins ? rest : std::string_view(call_).substr(0, call_.find('\n'));
    const std::string_view id = id_of(first);
    return name_of(first) + (id.empty() ? "" : " ") + std::string(id) + ", line " +
           std::to_string(begins ? place_.line : begin_.line);
}

bool LogTail::follow()
{
    if (!file_.open(&why_))
        return false;
    Step step = Step::on;
    while (step == Step::on)
        step = read();
    return step == Step::end;
}

}  // namespace orvlog::tool
