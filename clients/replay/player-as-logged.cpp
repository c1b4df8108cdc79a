// What the player does otherwise where all is to be as logged: calls nest, and callbacks are the script's.

#include "clients/replay/player.h"

#include "reader/text/log-files.h"
#include "reader/tree/values.h"

#include <utility>

namespace orvlog::replay
{

namespace
{

using reader::Element;

// Each takes a few frames of the stack.
constexpr uint32_t kDeepestCall = 200;

// The logger then forgets which fonts and strings it has met.
bool clears_texts(const Element& call)
{
    return call.name == "ORV_object_paint" || call.name == "ORV_object_paint_and_stroke" ||
           call.name == "ORV_resource_paint" || call.name == "ORV_group_finish" || call.name == "ORV_face_start";
}

}  // namespace

CallMemory::~CallMemory()
{
    if (renderer != nullptr)
        renderer->forget_images(this);
}

void Player::set_tasks()
{
    ScriptTasks tasks;
    tasks.play = [this](const Element& call) { play_within(call); };
    tasks.perform = [this](const Element& callback) { options_.as_logged->renderer.perform(callback); };
    tasks.comment = [this](const std::string& text)
    {
        if (options_.comment)
            options_.comment(text);
    };
    tasks.differ = [this](const std::string& line)
    {
        ++outcome_.differences;
        if (options_.differ)
            options_.differ(line);
    };
    tasks.next_between = [this] { return next_between(); };
    tasks.after_keep = [this](const Element& keep) { follow_keep(keep); };
    tasks.side_file = [this](std::string_view name, uint64_t begin, uint64_t count)
    { return side_file(name, begin, count); };
    options_.as_logged->script.set_tasks(std::move(tasks));
}

const Element* Player::next_between()
{
    const Element* next = depth_ == 0 ? calls_.peek() : nullptr;
    const bool callback = next != nullptr && (is_image_callback(*next) || is_font_callback(*next));
    return callback ? calls_.take() : nullptr;
}

// Texts are known by their records: those of calls between which the logger forgets nothing are kept together, and
// those of a call with those of the calls within.
void Player::begin_call_as_logged(const Element& call)
{
    AsLogged& as_logged = *options_.as_logged;
    if (clears_texts(call))
        as_logged.renderer.forget_texts();
    if (clears_texts(call) && depth_ == 0)
        memory_.reset();
    if (memory_ == nullptr)
    {
        new_memory();
        memory_->renderer = &as_logged.renderer;
    }
    as_logged.renderer.set_owner(memory_.get());
    as_logged.script.begin_call(call, depth_ == 0 ? calls_.comments() : as_logged.script.comments_within(call));
}

void Player::play_within(const Element& call)
{
    if (depth_ >= kDeepestCall)
        return options_.as_logged->script.differ(call, "stands in too many calls");
    ++depth_;
    make(call);
    --depth_;
}

void Player::make_scripted(GOP_OperandImagePointer* image, const Element& element)
{
    ScriptedClient::Image& scripted = memory_->scripted.emplace_back();
    scripted.client = &options_.as_logged->client;
    scripted.records = &memory_->records;
    ScriptedClient::fill_callbacks(image, element, &scripted);
}

std::optional<uint32_t> Player::engine_number(const Element& call) const
{
    if (call.has("GfpId"))
        return reader::read_uint(call, "GfpId");
    if (options_.as_logged == nullptr || call.name != "ORV_memory_context_start")
        return std::nullopt;
    const auto& silent = options_.as_logged->facts.memory_engines;
    const auto known = silent.find(reader::read_uint(call, "drawing_context"));
    return known != silent.end() ? std::optional(known->second) : std::nullopt;
}

const GFI_FontEngineTable* Player::engine(const Element& call)
{
    if (options_.as_logged == nullptr)
        return fonts_.engine(call);
    ScriptedClient& client = options_.as_logged->client;
    const bool silent = call.name == "ORV_memory_context_start" && engine_number(call);
    return silent ? client.silent_engine() : client.engine(call);
}

void Player::forget_engine(const std::optional<uint32_t>& number)
{
    if (options_.as_logged != nullptr && number)
        options_.as_logged->renderer.forget_engine(*number);
}

// The mask of a group can be asked for until the group ends.
void Player::begin_scope(const Element& call, Drawing& drawing)
{
    GroupScope& scope = drawing.scopes.emplace_back();
    scope.engine = engine_number(call);
    scope.byte = call.place.byte;
    if (!memory_->images.empty())
        scope.memory = memory_;
}

void Player::end_scopes(Drawing& drawing, size_t left)
{
    for (; drawing.scopes.size() > left; drawing.scopes.pop_back())
    {
        forget_engine(drawing.scopes.back().engine);
        if (options_.as_logged != nullptr)
            options_.as_logged->renderer.forget_mask(drawing.scopes.back().byte);
        if (drawing.scopes.back().memory != nullptr)
            hold(drawing.scopes.back().memory);
    }
}

// What the image's own log has is made at once; it can't be told when it was.
void Player::follow_keep(const Element& keep)
{
    read_kept(keep, [this](const Element& made) { options_.as_logged->renderer.perform(made); });
}

}  // namespace orvlog::replay
