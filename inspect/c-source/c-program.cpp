#include "inspect/c-source/c-program.h"

#include "clients/replay/image-log.h"
#include "clients/replay/script.h"
#include "inspect/c-source/c-call.h"
#include "inspect/c-source/c-text.h"
#include "reader/look/call-address.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <utility>

namespace orvlog::inspect
{

namespace
{

using reader::Children;
using reader::Element;

constexpr size_t kMostOfAPart = 1000;
// Where a session's number isn't told.
constexpr uint8_t kSession = 7;

bool is_callback(const Element& element)
{
    return replay::is_image_callback(element) || replay::is_font_callback(element);
}

// Records that hold no callbacks.
bool is_closed_record(const Element& element)
{
    return element.name == "GSH_ShapePointer" || element.name.starts_with("GOP_Operand") ||
           element.name.starts_with("GFI_");
}

// Whether its element is closed before it is passed on.
bool is_closed_call(std::string_view name)
{
    return !name.starts_with("ORV_object_") && !name.starts_with("ORV_group_") && name != "ORV_resource_paint";
}

// "OBJECT_PAINT" of "ORV_object_paint".
std::string macro_of(const std::string& call)
{
    std::string macro = call.substr(std::string_view("ORV_").size());
    std::ranges::transform(macro, macro.begin(), [](char c) { return c >= 'a' && c <= 'z' ? char(c - 32) : c; });
    return macro;
}

}  // namespace

CProgram::CProgram(const replay::LogKind& kind, const CProgramOptions& options)
    : kind_(kind), options_(options), records_(options.put),
      steps_(records_, options.put,
             [this](std::string_view name, uint64_t begin, uint64_t count) { return side_file(name, begin, count); })
{
    session_.fill(kSession);
    if (const auto told = replay::session_number(kind.script.session))
        session_ = *told;
}

CProgram::~CProgram() = default;

void CProgram::complain(const std::string& line) const
{
    if (options_.complain)
        options_.complain(line);
}

std::vector<uint8_t> CProgram::side_file(std::string_view name, uint64_t begin, uint64_t count)
{
    if (side_file_name_ != name)
    {
        side_file_name_ = name;
        reader::LogFile file = options_.files.open(side_file_name_, reader::LogFileKind::image_data);
        side_file_ = std::move(file.stream);
        if (side_file_ == nullptr)
            complain("the file " + side_file_name_ + " " + file.why);
    }
    outcome_.missing += side_file_ == nullptr ? 1 : 0;
    if (side_file_ == nullptr)
        return {};
    side_file_->clear();
    side_file_->seekg(0, std::ios::end);
    const auto size = static_cast<uint64_t>(side_file_->tellg());
    std::vector<uint8_t> bytes(begin < size ? std::min(count, size - begin) : 0);
    side_file_->seekg(static_cast<std::streamoff>(std::min(begin, size)));
    side_file_->read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<size_t>(side_file_->gcount()));
    if (bytes.size() >= count || count == UINT64_MAX)
        return bytes;
    ++outcome_.missing;
    complain("the file " + side_file_name_ + " is too short");
    return bytes;
}

// The first part of the names of files with image data, as far as it leads to no other folder.
void CProgram::note_prefix(std::string_view file)
{
    if (!prefix_.empty() || file.empty())
        return;
    std::string name = reader::to_text(file);
    for (int dashes = 0; dashes < 2; ++dashes)
        name.resize(std::min(name.size(), name.rfind('-')));
    const bool leaves = name.starts_with('/') || name.find("..") != std::string::npos ||
                        name.find(':') != std::string::npos || name.find('\\') != std::string::npos;
    if (leaves)
    {
        complain("image data beside the log goes to other folders, and that of the program to the present one");
        name.erase(0, name.find_last_of("/\\:") + 1);
    }
    prefix_ = name.empty() ? "image" : name;
}

void CProgram::add_to_job(const std::string& step)
{
    part_.push_back("    " + step + ",\n");
    if (part_.size() >= kMostOfAPart)
        end_part();
}

void CProgram::end_part()
{
    if (part_.empty())
        return;
    *to_ << "static const Step part_" << ++parts_ << "[] = {\n";
    for (const std::string& line : part_)
        *to_ << line;
    *to_ << "};\n\n";
    part_.clear();
}

void CProgram::comments_before(uint64_t byte, bool by_logger, Call& made)
{
    size_t used = 0;
    for (; used < comments_.size() && comments_[used].place.byte < byte; ++used)
        made.steps(by_logger) += steps_.finish_run() + "    COMMENT(" + c_string(comments_[used].text) + "),\n";
    has_comments_ |= used > 0;
    comments_.erase(comments_.begin(), comments_.begin() + static_cast<ptrdiff_t>(used));
}

void CProgram::step(const Element& callback, bool by_logger, Call& made)
{
    note_prefix(callback.value("ImageFileName"));
    made.steps(by_logger) += steps_.step(callback, by_logger, made.memory->records);
    if (callback.name == "GOP_ImageKeepFn" && callback.has("async_img_log_file_name"))
        follow_kept(callback, made);
}

// The callbacks of an image that has a log of its own: as if they had been made at once.
void CProgram::follow_kept(const Element& callback, Call& made)
{
    const auto add = [this, &made](const Element& one)
    {
        note_prefix(one.value("ImageFileName"));
        made.steps(false) += steps_.step(one, false, made.memory->records);
    };
    const std::string why = replay::read_image_log(callback, options_.files, &outcome_.damage, add);
    if (why.empty())
        return;
    ++outcome_.missing;
    complain(why);
}

void CProgram::nested_call(const Element& element, bool by_logger, Call& made)
{
    made.steps(by_logger) += steps_.finish_run();
    *to_ << std::exchange(made.definitions, {}) << records_.take();
    CRecords::State outer = records_.push();
    Call inner;
    call(element, true, &inner);
    records_.pop(std::move(outer));
    if (!inner.asked.empty())
        made.steps(by_logger) += "    CALL(call_" + std::to_string(inner.number) + "),\n";
}

// What stands in members was asked by the logger itself.
void CProgram::walk(const Element& element, bool in_member, Call& made)
{
    for (const Element& child : Children(element))
    {
        const bool member = in_member || child.name.find('.') != std::string_view::npos;
        const bool by_logger = in_member || (member && !is_callback(child));
        comments_before(child.place.byte, by_logger, made);
        if (reader::is_call_name(child.name))
            nested_call(child, in_member, made);
        else if (is_callback(child))
            step(child, in_member, made);
        else if (!is_closed_record(child))
            walk(child, member, made);
    }
    made.steps(in_member) += steps_.finish_run();
}

// A callback that stands in no call was made in one whose element is closed before it is passed on, or between two.
void CProgram::loose(const Element& callback)
{
    if (pending_ == nullptr || !is_callback(callback))
    {
        outcome_.not_made += is_callback(callback) ? 1 : 0;
        return;
    }
    if (loose_memory_ == nullptr)
        loose_memory_ = std::make_unique<Memory>();
    for (const std::string& text : behind_pending_)
        loose_ += steps_.finish_run() + "    COMMENT(" + text + "),\n";
    behind_pending_.clear();
    records_.start_call(++number_);
    loose_ += steps_.step(callback, false, loose_memory_->records);
    loose_definitions_ += records_.take();
    loose_loads_ += records_.take_loads();
    if (loose_memory_->arena.size() > Memory::kMost)
        loose_memory_.reset();
}

void CProgram::flush_pending()
{
    if (pending_ != nullptr)
    {
        loose_ += steps_.finish_run();
        Call between;
        Call& owner = is_closed_call(pending_->name) ? *pending_ : between;
        owner.definitions += std::exchange(loose_definitions_, {});
        owner.loads += std::exchange(loose_loads_, {});
        owner.renderer_steps += std::exchange(loose_, {});
        write_and_add(*pending_);
        if (!between.renderer_steps.empty())
        {
            between.number = ++number_;
            between.name = "ORV_between";
            between.address = "behind " + pending_->address;
            between.asked = "0";
            write_and_add(between);
        }
        pending_.reset();
    }
    for (const std::string& text : behind_pending_)
        add_to_job("COMMENT(" + text + ")");
    behind_pending_.clear();
}

void CProgram::write_and_add(const Call& made)
{
    write(made);
    add_to_job("CALL(call_" + std::to_string(made.number) + ")");
}

void CProgram::write(const Call& made)
{
    std::string fields = made.fields;
    const std::string number = std::to_string(made.number);
    *to_ << "/* " << made.address << ": " << made.name << " */\n" << made.definitions;
    const auto list =
        [&](const std::string& rows, const char* type, const char* name, const char* field, const char* count)
    {
        if (rows.empty())
            return;
        *to_ << "static const " << type << " " << name << "_" << number << "[] = {\n" << rows << "};\n";
        fields += std::string(", .") + field + " = " + name + "_" + number + ", ." + count + " = LENGTH(" + name + "_" +
                  number + ")";
    };
    list(made.loads, "Load", "loads", "loads", "load_count");
    list(made.logger_steps, "Step", "logger_asks", "by_logger", "logger_steps");
    list(made.renderer_steps, "Step", "renderer_asks", "by_renderer", "renderer_steps");
    *to_ << "static const Call call_" << number << " = {.name = \"" << made.address << "\"" << fields << ",\n    "
         << macro_of(made.name) << "(" << made.asked << ")};\n\n";
}

void CProgram::call(const Element& element, bool nested, Call* made)
{
    const std::string at = reader::call_address_text(element);
    made->number = ++number_;
    made->name = std::string(element.name);
    made->address =
        at.starts_with("line:") ? "line " + at.substr(5) : "id " + at + ", line " + std::to_string(element.place.line);
    made->memory = std::make_shared<Memory>();
    records_.start_call(made->number);
    for (const uint32_t id : std::exchange(dying_engines_, {}))
        steps_.end_engine(id);
    for (const uint64_t scope : std::exchange(dying_scopes_, {}))
        steps_.drop_images(scope);
    steps_.start_call(nested);
    Memory& memory = *made->memory;
    memory.records.on_text = [this](const GSH_ShapePointer& shape, const Element& told)
    {
        const std::string font = records_.font(shape.sp_U.glyph.font_spec_ptr);
        steps_.bring_text(reader::read_uint(told, "orvlog_font_spec_id"),
                          reader::read_uint(told, "orvlog_string_desc_id"), font,
                          records_.string(shape.sp_U.glyph.string_desc));
    };
    if (!arguments(element, *made))
    {
        ++outcome_.not_made;
        made->asked.clear();
        return;
    }
    ++outcome_.calls;
    made->definitions += records_.take();
    made->loads += records_.take_loads();
    if (!nested)
        return;
    write(*made);
}

void CProgram::write_calls(std::istream& log, std::ostream& to)
{
    to_ = &to;
    reader::ElementReader elements(log);
    elements.on_damage = [this](const reader::Damage& one)
    {
        ++outcome_.damage;
        complain("line " + std::to_string(one.place.line) + ": " + one.text);
    };
    std::vector<reader::Comment> outside;
    elements.on_comment = [&](const reader::Comment& one)
    {
        if (!one.warning)
            (one.inside ? comments_ : outside).push_back(one);
    };
    while (const Element* element = elements.next())
    {
        has_comments_ |= !outside.empty();
        for (const reader::Comment& one : outside)
            behind_pending_.push_back(c_string(one.text));
        outside.clear();
        if (!reader::is_call_name(element->name))
            loose(*element);
        else
        {
            flush_pending();
            auto made = std::make_unique<Call>();
            call(*element, false, made.get());
            made->memory.reset();
            if (!made->asked.empty())
                pending_ = std::move(made);
        }
        comments_.clear();
        if (options_.progress)
            options_.progress(elements.events().bytes_used());
    }
    for (const reader::Comment& one : outside)
        behind_pending_.push_back(c_string(one.text));
    has_comments_ |= !outside.empty();
    flush_pending();
    end_part();
    outcome_.is_log = elements.events().is_log();
    outcome_.cut = elements.events().is_cut();
    outcome_.not_made += steps_.not_made();
    outcome_.missing += steps_.missing();
    coded_ = elements.events().is_coded();
}

}  // namespace orvlog::inspect
