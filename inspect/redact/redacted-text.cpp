#include "inspect/redact/redacted-text.h"

#include "inspect/redact/known-forms.h"
#include "inspect/reduce/tag-edit.h"
#include "reader/tree/values.h"

#include <algorithm>

namespace orvlog::inspect
{

namespace
{

using reader::Event;
using reader::EventKind;

constexpr size_t kMostProfile = size_t{64} << 20;

// The line end of a text: "\n", "\r\n", or none.
std::string_view line_end(std::string_view text)
{
    if (text.ends_with("\r\n"))
        return "\r\n";
    return text.ends_with('\n') ? "\n" : "";
}

int digit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : 0;
}

void append_byte(uint8_t byte, std::string& out)
{
    constexpr char kDigits[] = "0123456789abcdef";
    out += kDigits[byte >> 4];
    out += kDigits[byte & 15];
    out += ' ';
}

}  // namespace

RedactedText::int_type RedactedText::underflow()
{
    out_.clear();
    constexpr size_t kEnough = size_t{1} << 15;
    while (!ended_ && out_.size() < kEnough)
    {
        Event next;
        ended_ = !scan_.next(next);
        if (!ended_)
            event(next);
        else
            end_profile();
    }
    setg(out_.data(), out_.data(), out_.data() + out_.size());
    return out_.empty() ? traits_type::eof() : traits_type::to_int_type(out_[0]);
}

void RedactedText::put(std::string_view text)
{
    if (in_profile_)
        waiting_.push_back({std::string(text), 0});
    else
        out_ += text;
}

void RedactedText::event(const Event& event)
{
    const bool empty_lines = scan_.before().find_first_not_of("\r\n") == std::string_view::npos;
    if (empty_lines && event.kind != EventKind::row && event.kind != EventKind::damage)
        put(scan_.before());
    switch (event.kind)
    {
    case EventKind::open:
        open(event);
        break;
    case EventKind::close:
        close(event);
        break;
    case EventKind::row:
        row(event);
        break;
    case EventKind::comment:
        comment(event);
        break;
    case EventKind::damage:
        break;
    }
}

void RedactedText::open(const Event& event)
{
    const bool parent_written = levels_.empty() || levels_.back().written;
    levels_.push_back({std::string(event.name), parent_written && is_known_element(event.name)});
    in_string_ = false;
    place_ = 0;
    const std::string_view text = scan_.text();
    // The text of a ticket begins with a row.
    if (!levels_.back().written || text.empty())
        return;
    if (in_profile_ && event.name != "BufferUInt8")
        end_profile();
    if (event.name == "BufferUInt8" && data_here() == Data::profile)
        in_profile_ = true;
    note_element(event);
    std::string tag(indent_of(text), ' ');
    tag.append("<").append(event.name);
    for (const reader::Attribute& attribute : event.attributes)
        if (is_attribute_name(attribute.name))
            tag.append(" ").append(attribute.name).append("=\"").append(value(event, attribute)).append("\"");
    tag.append(event.self_closed ? "/>" : ">").append(line_end(text));
    put(tag);
}

void RedactedText::close(const Event& event)
{
    if (levels_.empty())
        return;
    if (in_profile_ && levels_.back().name != "BufferUInt8")
        end_profile();
    const std::string_view text = scan_.text();
    if (levels_.back().written && !text.empty() && levels_.back().name != "GXC_ColorTickets")
        put(std::string(indent_of(text), ' ') + "</" + std::string(event.name) + ">" + std::string(line_end(text)));
    levels_.pop_back();
}

void RedactedText::comment(const Event& event)
{
    const bool own = is_known_warning(event.text);
    const std::string end(scan_.text().find("\r\n") != std::string_view::npos ? "\r\n" : "\n");
    if (!own)
        count("comments");
    put("<!--" + end + (own ? std::string(event.text) : masked_text(event.text)) + "-->" + end);
}

bool RedactedText::stands_in(std::string_view name) const
{
    return std::any_of(levels_.begin(), levels_.end(), [name](const Level& level) { return level.name == name; });
}

bool RedactedText::in_outline() const
{
    return stands_in("GFI_GlyphDescPointer.gdp_GlyphDesc");
}

RedactedText::Data RedactedText::data_here() const
{
    for (auto level = levels_.rbegin(); level != levels_.rend(); ++level)
    {
        if (level->name == "GFI_GlyphDescBitmap")
            return Data::bitmap;
        if (level->name.starts_with("GFI_"))
            return Data::glyph;
        if (level->name == "GCM_PostRenderLut" || level->name.starts_with("clp_"))
            return Data::table;
        if (level->name == "GCM_CsdPointer")
            return Data::profile;
    }
    return Data::image;
}

void RedactedText::note_element(const Event& event)
{
    if (event.name == "GFI_GlyphDescBitmap")
        black_is_one_ = reader::to_uint(attribute(event, "gdb_BlackIsOne")) != 0;
    if (event.name == "GOP_ImageReadFn")
        count("reads of image data");
    if (event.name == "imp_DirectImageData")
        count("images in memory");
    if (event.name.starts_with("GFI_GlyphDesc") && event.name.find('.') == std::string_view::npos &&
        event.name != "GFI_GlyphDesc" && event.name != "GFI_GlyphDescPointer")
        count("glyphs");
    if (!in_outline())
        return;
    if (event.name == "GPA_Path")
    {
        GGO_BoxFloat box{};
        const std::vector<double> numbers = reader::to_doubles(attribute(event, "pa_EnclosingBox"));
        if (numbers.size() == 4)
            box = {numbers[0], numbers[1], numbers[2], numbers[3]};
        outline_.start(OutlineStandIn::rounded(box),
                       static_cast<uint32_t>(reader::to_uint(attribute(event, "pa_NumEdges"))));
    }
    else if (event.name == "GGO_Point")
        start_ = outline_.next_start();
    else if (event.name == "GPA_Edge")
        outline_.start_edge(static_cast<uint32_t>(reader::to_uint(attribute(event, "ed_SegmentCount"))));
    else if (event.name == "GGO_Vector" || event.name.ends_with("Segment"))
        segment_ = event.name.find('.') == std::string_view::npos ? outline_.next_segment() : segment_;
}

void RedactedText::row(const Event& event)
{
    if (levels_.empty() || !levels_.back().written)
        return;
    const std::string_view end = line_end(scan_.text());
    const std::string& name = levels_.back().name;
    if (name == "GXC_ColorTickets")
        return ticket_row(event.text, end.empty() ? "" : end);
    if (!name.starts_with("Buffer") || !is_number_row(event.text))
        return;
    if (name != "BufferUInt8" || data_here() == Data::table)
        put(std::string(event.text) + std::string(end));
    else if (in_profile_)
        profile_row(event.text, end);
    else
        byte_row(event.text, end);
}

void RedactedText::byte_row(std::string_view row, std::string_view end)
{
    const Data data = data_here();
    const size_t bytes = (row.size() + 1) / 3;
    std::string stands;
    for (size_t i = 0; i < bytes; ++i, ++place_)
    {
        const uint8_t ink = black_is_one_ ? 0xff : 0;
        append_byte(data == Data::image ? image_stand_in(place_) : data == Data::bitmap ? ink : uint8_t{0}, stands);
    }
    if (data == Data::image)
        count("bytes of image data", bytes);
    put(stands + std::string(end));
}

void RedactedText::profile_row(std::string_view row, std::string_view end)
{
    size_t bytes = 0;
    for (size_t at = 0; at + 1 < row.size(); at += 3, ++bytes)
        profile_.push_back(static_cast<uint8_t>(digit(row[at]) << 4 | digit(row[at + 1])));
    waiting_.push_back({std::string(end), bytes});
    if (profile_.size() < kMostProfile)
        return;
    // Nothing of one that large is told.
    std::fill(profile_.begin(), profile_.end(), uint8_t{0});
    end_profile();
    in_profile_ = true;
}

void RedactedText::end_profile()
{
    if (!in_profile_)
        return;
    in_profile_ = false;
    if (!profile_.empty())
    {
        redact_profile(profile_);
        count("profiles");
    }
    size_t at = 0;
    for (const Waiting& one : waiting_)
    {
        for (size_t i = 0; i < one.bytes; ++i)
            append_byte(profile_[at++], out_);
        out_ += one.text;
    }
    waiting_.clear();
    profile_.clear();
}

}  // namespace orvlog::inspect
