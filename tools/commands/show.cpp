// orvlog show: one call of a log, as it stands there or as a tree.

#include "reader/look/call-address.h"
#include "reader/text/coded-input.h"
#include "reader/text/log-events.h"
#include "reader/tree/values.h"
#include "tools/shared/address.h"
#include "tools/shared/command.h"
#include "tools/shared/indexed-log.h"
#include "tools/shared/look.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <streambuf>
#include <string>
#include <vector>

namespace orvlog::tool
{

namespace
{

using nlohmann::ordered_json;
using orvlog::reader::CallAddress;
using orvlog::reader::Element;
using orvlog::reader::Event;
using orvlog::reader::EventKind;

struct ShowOptions
{
    std::string log;
    std::optional<CallAddress> address;
    std::optional<uint64_t> line;
    bool json = false;
};

// The text of a log, of which what was read last is kept.
class KeptText : public std::streambuf
{
public:
    // Of parts of a log `ahead` is how far places in it are ahead of what has been read.
    explicit KeptText(std::istream& source, uint64_t ahead) : input_(source), block_(size_t{1} << 16), begin_(ahead) {}

    // Forgets what stands before `begin`, a place in the text.
    void forget(uint64_t begin)
    {
        const auto count = static_cast<size_t>(begin - std::min(begin, begin_));
        if (count < kept_.size() / 2 || count < block_.size())
            return;
        kept_.erase(0, count);
        begin_ = begin;
    }
    std::string_view text(uint64_t begin, uint64_t end) const
    {
        return std::string_view(kept_).substr(static_cast<size_t>(begin - begin_), static_cast<size_t>(end - begin));
    }
    // Behind the line of the end tag at `place`; `place` if there is none.
    uint64_t behind_end_tag(uint64_t place) const
    {
        const auto at = static_cast<size_t>(place - begin_);
        const size_t tag = kept_.find_first_not_of(" \t", at);
        if (tag == std::string::npos || kept_.compare(tag, 2, "</") != 0)
            return place;
        const size_t end = kept_.find('\n', tag);
        return begin_ + (end == std::string::npos ? kept_.size() : end + 1);
    }
    uint64_t bytes_used() const
    {
        return input_.bytes_used();
    }

private:
    int_type underflow() override
    {
        const size_t count = input_.read(block_.data(), block_.size());
        kept_.append(block_.data(), count);
        setg(block_.data(), block_.data(), block_.data() + count);
        return count == 0 ? traits_type::eof() : traits_type::to_int_type(*gptr());
    }

    orvlog::reader::CodedInput input_;
    std::vector<char> block_;
    std::string kept_;
    uint64_t begin_ = 0;
};

// Whether the call was found.
bool show_lines(const ShowOptions& options, LogInput& input, bool* is_log)
{
    std::vector<orvlog::reader::Jump> jumps;
    if (const auto* pieces = dynamic_cast<const orvlog::reader::LogPieces*>(&input.stream()); pieces != nullptr)
        jumps = pieces->jumps();
    KeptText kept(input.stream(), jumps.empty() ? 0 : jumps.back().place.byte - jumps.back().read);
    std::istream text(&kept);
    orvlog::reader::LogEvents events(text);
    events.set_jumps(std::move(jumps));
    size_t depth = 0;
    size_t outer = 0;
    uint64_t shown = 0;
    bool found = false;
    for (Event event; events.next(event);)
    {
        const bool opens = event.kind == EventKind::open;
        if (opens && !found && orvlog::reader::is_at(event, *options.address))
        {
            found = true;
            outer = depth;
            shown = event.place.byte;
        }
        depth += opens ? 1 : 0;
        depth -= event.kind == EventKind::close ? 1 : 0;
        if (found && event.place.byte > shown)
        {
            put(kept.text(shown, event.place.byte));
            shown = event.place.byte;
        }
        kept.forget(found ? shown : event.place.byte);
        if (found && event.kind == EventKind::close && depth == outer)
        {
            if (!event.implied)
                put(kept.text(shown, kept.behind_end_tag(shown)));
            return true;
        }
        input.show(kept.bytes_used());
    }
    *is_log = events.is_log();
    return found;
}

std::string hex_text(std::span<const uint8_t> bytes)
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * bytes.size());
    for (const uint8_t byte : bytes)
    {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

void put_tree(const Element& element, const std::string& indent)
{
    const std::string inner = indent + "  ";
    ordered_json attributes = ordered_json::object();
    for (const auto& attribute : element.attributes)
        attributes[std::string(attribute.name)] = attribute.value;
    put(indent + "{\n" + inner + "\"name\": " + json_text(element.name) + ",\n");
    put(inner + "\"line\": " + std::to_string(element.place.line) + ",\n");
    put(inner + "\"byte\": " + std::to_string(element.place.byte) + ",\n");
    put(inner + "\"attributes\": " + json_text(attributes));
    if (!element.bytes.empty())
        put(",\n" + inner + "\"bytes\": \"" + hex_text(element.bytes) + "\"");
    if (!element.rows.empty())
        put(",\n" + inner + "\"rows\": " + json_text(element.rows));
    if (element.implied_end)
        put(",\n" + inner + "\"end\": \"missing\"");
    if (element.first != nullptr)
    {
        put(",\n" + inner + "\"children\": [\n");
        for (const Element& child : orvlog::reader::Children(element))
        {
            put_tree(child, inner + "  ");
            put(child.next != nullptr ? ",\n" : "\n");
        }
        put(inner + "]");
    }
    put("\n" + indent + "}");
}

const Element* find_in(const ShowOptions& options, const Element& element)
{
    if (orvlog::reader::is_at(element, *options.address))
        return &element;
    for (const Element& child : orvlog::reader::Children(element))
    {
        const bool may_hold =
            child.name.starts_with("ORV_") || child.name == "GSH_ShapeList" || child.name == "GSH_ShapeList.sl_Shape";
        const Element* found = may_hold ? find_in(options, child) : nullptr;
        if (found != nullptr)
            return found;
    }
    return nullptr;
}

bool show_tree(const ShowOptions& options, LogInput& input, bool* is_log)
{
    orvlog::reader::ElementReader elements(input.stream());
    while (const Element* element = elements.next())
    {
        if (const Element* call = find_in(options, *element); call != nullptr)
        {
            put_tree(*call, "");
            put("\n");
            return true;
        }
        input.show(elements.events().bytes_used());
    }
    *is_log = elements.events().is_log();
    return false;
}

int show(ShowOptions options)
{
    if (options.address.has_value() == options.line.has_value())
    {
        fail("show takes either the ADDRESS of a call or its --line");
        return EXIT_BAD_USE;
    }
    if (options.line)
        options.address = CallAddress{CallAddress::Kind::line, *options.line};
    LogInput input(options.log);
    if (!input.open())
        return input.fail_to_open();
    bool is_log = true;
    const auto look = [&]
    { return options.json ? show_tree(options, input, &is_log) : show_lines(options, input, &is_log); };
    bool found = false;
    if (std::unique_ptr<std::istream> parts = IndexedLog(options.log).from_call(*options.address); parts != nullptr)
    {
        input.read_instead(std::move(parts));
        found = look();
        input.read_instead(nullptr);
    }
    found = found || look();
    if (!is_log)
        return input.fail_as_no_log();
    if (!found)
        return fail(options.log + ": has no " + orvlog::reader::describe(*options.address));
    return finish_output(EXIT_DONE);
}

}  // namespace

Run declare_show(CLI::App& app)
{
    auto options = std::make_shared<ShowOptions>();
    app.add_option("LOG", options->log, "the log, plain or coded: a path, a URL, or - for standard input")->required();
    add_address(app, "ADDRESS", options->address, "the id of a paint, or line:N or byte:N of any call");
    app.add_option("--line", options->line, "the same as line:N")->type_name("N");
    app.add_flag("--json", options->json, "write the call as a tree of objects instead");
    app.footer("Writes one call of a log with all that stands in it, line by line as it stands there, of a coded log "
               "as its text has it. Calls without an id are named by their line or byte, line:17 or byte:1234, which "
               "orvlog ls --places "
               "tells. In "
               "the tree bytes are hexadecimal digits, and other rows and all values are as they stand.");
    return [options] { return show(*options); };
}

}  // namespace orvlog::tool
