#include "inspect/history/call-state.h"

#include "reader/look/call-summary.h"
#include "reader/tree/values.h"

#include <iterator>

namespace orvlog::inspect
{

namespace
{

using reader::Element;

constexpr size_t kMostOpen = 1 << 16;     // documents, drawings and resources that are followed
constexpr size_t kDeepest = 4096;         // groups of a drawing
constexpr size_t kMostWarnings = 20;      // told with their text
constexpr size_t kLongestWarning = 1000;  // bytes

template <typename Map> void remember(Map& map, uint32_t key, typename Map::mapped_type value)
{
    map.insert_or_assign(key, std::move(value));
    if (map.size() > kMostOpen)
        map.erase(map.begin()->first != key ? map.begin() : std::next(map.begin()));
}

std::optional<FontState> font_of(const Element& call)
{
    if (reader::read_bool(call, "font_engine_functions") == 0)
        return std::nullopt;
    FontState font;
    font.from = reader::call_address_text(call);
    font.engine = reader::to_text(call.value("fp_EngineIdGet"));
    if (call.has("GfpId"))
        font.gfp_id = reader::read_uint(call, "GfpId");
    return font;
}

FrameState frame_of(const Element& call, const std::vector<FrameState>& around)
{
    FrameState frame;
    frame.from = reader::call_address_text(call);
    const Element* ticket = call.child("GCM_ColorTicket");
    frame.own = ticket != nullptr;
    if (ticket != nullptr)
        frame.ticket = reader::read_uint(*ticket, "id");
    else if (!around.empty())
        frame.ticket = around.back().ticket;
    return frame;
}

CallDescription describe(const Element& call, const reader::CallSummary& summary, const GGO_Matrix& to_pixels)
{
    CallDescription description;
    description.address = reader::call_address_text(call);
    description.line = call.place.line;
    description.kind = summary.kind;
    description.page = summary.page;
    description.op = summary.op;
    description.operand = summary.colour;
    description.box = summary.box;
    description.clips = clip_entries(call, to_pixels);
    return description;
}

// Follows what is open.
class StateReader
{
public:
    void warn(const reader::Comment& comment)
    {
        ++warnings_;
        last_warnings_.push_back({comment.place.line, comment.text.substr(0, kLongestWarning)});
        if (last_warnings_.size() > kMostWarnings)
            last_warnings_.pop_front();
    }

    void tell(const Element& call, CallState& state)
    {
        const GGO_Matrix* space = summaries_.to_pixels(call);
        state.found = true;
        state.byte = call.place.byte;
        state.on_page = space != nullptr;
        state.to_pixels = space != nullptr ? *space : GGO_Matrix{{1, 0, 0, 1, 0, 0}};
        state.warnings = warnings_;
        state.last_warnings.assign(last_warnings_.begin(), last_warnings_.end());
        const auto drawing = drawings_.find(reader::read_uint(call, "drawing_context"));
        const bool begins = call.name.ends_with("_start") && call.name != "ORV_group_start";
        if (call.has("drawing_context") && !begins && drawing != drawings_.end())
            state.drawing = drawing->second.state;
        const auto document =
            documents_.find(state.drawing ? drawing->second.document : reader::read_uint(call, "document_context"));
        const bool of_document = state.drawing || call.has("document_context");
        if (of_document && call.name != "ORV_document_start" && document != documents_.end())
            state.document = document->second.state;
        for (const auto& [id, resource] : resources_)
            state.resources.push_back(resource);
        state.call = describe(call, summaries_.next(call), state.to_pixels);
    }

    void take(const Element& call)
    {
        const GGO_Matrix* space = summaries_.to_pixels(call);
        const GGO_Matrix to_pixels = space != nullptr ? *space : GGO_Matrix{{1, 0, 0, 1, 0, 0}};
        const reader::CallSummary summary = summaries_.next(call);
        const uint32_t drawing = reader::read_uint(call, "drawing_context");
        if (call.name == "ORV_document_start")
            start_document(call);
        else if (call.name == "ORV_document_finish")
            documents_.erase(reader::read_uint(call, "document_context"));
        else if (call.name == "ORV_face_start" || call.name == "ORV_resource_start" ||
                 call.name == "ORV_memory_context_start")
            start_drawing(call, summary);
        else if (call.name == "ORV_resource_destroy")
            resources_.erase(reader::read_uint(call, "resource_id"));
        else if (call.name == "ORV_group_start")
            start_group(call, describe(call, summary, to_pixels));
        else if (call.name == "ORV_group_finish")
            finish_group(call);
        else if (call.name == "ORV_drawing_finish" || call.name == "ORV_drawing_discard")
            finish_drawing(drawing, call.name == "ORV_drawing_discard");
    }

private:
    struct Document
    {
        DocumentState state;
        std::optional<FontState> font;
    };
    struct Drawing
    {
        DrawingState state;
        uint32_t document = 0;
        std::optional<uint32_t> resource;
        uint64_t deeper = 0;  // groups beyond the deepest that is followed
        std::vector<bool> group_fonts;
    };

    void start_document(const Element& call)
    {
        const uint32_t context = reader::read_uint(call, "document_context");
        const DocumentState state{reader::call_address_text(call), context, reader::read_uint(call, "document_id")};
        remember(documents_, context, {state, font_of(call)});
    }

    void start_drawing(const Element& call, const reader::CallSummary& summary)
    {
        Drawing drawing;
        DrawingState& state = drawing.state;
        drawing.document = reader::read_uint(call, "document_context");
        state.from = reader::call_address_text(call);
        state.kind = call.name.substr(4, call.name.size() - 4 - 6);
        state.context = reader::read_uint(call, "drawing_context");
        state.page = summary.page;
        state.warnings_before = warnings_;
        const auto document = documents_.find(drawing.document);
        if (call.has("document_context") && document != documents_.end() && document->second.font)
            state.fonts.push_back(*document->second.font);
        if (const std::optional<FontState> font = font_of(call); font)
            state.fonts.push_back(*font);
        state.frames.push_back(frame_of(call, {}));
        if (const Element* face = call.child("ORV_FaceProperties"); face != nullptr)
        {
            state.number = reader::read_uint(call, "face_seq_number");
            state.box = {0, 0, static_cast<double>(reader::read_uint(*face, "fp_WidthInPixels")),
                         static_cast<double>(reader::read_uint(*face, "fp_HeightInPixels"))};
            state.to_pixels = reader::read_matrix(*face, "fp_FaceInchToPixels");
        }
        if (state.kind == "resource")
            start_resource(call, drawing);
        remember(drawings_, state.context, std::move(drawing));
    }

    void start_resource(const Element& call, Drawing& drawing)
    {
        const uint32_t id = reader::read_uint(call, "resource_id");
        const Element* properties = call.child("ORV_ResourceProperties");
        drawing.resource = drawing.state.number = id;
        if (properties != nullptr)
            drawing.state.box = reader::read_box(*properties, "rp_Enclosing_box");
        remember(resources_, id, {id, drawing.state.from, drawing.state.box, true});
    }

    void start_group(const Element& call, CallDescription description)
    {
        const auto known = drawings_.find(reader::read_uint(call, "drawing_context"));
        if (known == drawings_.end())
            return;
        Drawing& drawing = known->second;
        if (drawing.state.groups.size() == kDeepest)
        {
            ++drawing.deeper;
            return;
        }
        GroupState group;
        group.call = std::move(description);
        group.type = call.value("group_type");
        group.knockout = reader::read_bool(call, "is_knockout") != 0;
        group.retransform =
            call.has("retransform") ? reader::read_matrix(call, "retransform") : GGO_Matrix{{1, 0, 0, 1, 0, 0}};
        drawing.state.groups.push_back(std::move(group));
        drawing.state.frames.push_back(frame_of(call, drawing.state.frames));
        const std::optional<FontState> font = font_of(call);
        drawing.group_fonts.push_back(font.has_value());
        if (font)
            drawing.state.fonts.push_back(*font);
    }

    void finish_group(const Element& call)
    {
        const auto known = drawings_.find(reader::read_uint(call, "drawing_context"));
        if (known == drawings_.end() || reader::read_bool(call, "replay_group") != 0)
            return;
        Drawing& drawing = known->second;
        if (drawing.deeper > 0)
        {
            --drawing.deeper;
            return;
        }
        if (drawing.state.groups.empty())
            return;
        drawing.state.groups.pop_back();
        drawing.state.frames.pop_back();
        if (drawing.group_fonts.back())
            drawing.state.fonts.pop_back();
        drawing.group_fonts.pop_back();
    }

    void finish_drawing(uint32_t context, bool discard)
    {
        const auto known = drawings_.find(context);
        if (known == drawings_.end())
            return;
        if (known->second.resource)
        {
            const auto resource = resources_.find(*known->second.resource);
            if (resource != resources_.end() && discard)
                resources_.erase(resource);
            else if (resource != resources_.end())
                resource->second.open = false;
        }
        drawings_.erase(known);
    }

    reader::CallSummaries summaries_;
    std::map<uint32_t, Document> documents_;
    std::map<uint32_t, Drawing> drawings_;
    std::map<uint32_t, ResourceState> resources_;
    uint64_t warnings_ = 0;
    std::deque<WarningState> last_warnings_;
};

}  // namespace

CallState state_at(std::istream& log, const reader::CallAddress& address, const std::function<void(uint64_t)>& progress)
{
    CallState state;
    StateReader reading;
    reader::ElementReader elements(log, reader::LogForm::log, reader::Data::skip);
    elements.split_nested = true;
    elements.on_damage = [&state](const reader::Damage&) { ++state.damage; };
    elements.on_comment = [&reading](const reader::Comment& comment)
    {
        if (comment.warning)
            reading.warn(comment);
    };
    while (const Element* call = elements.next())
    {
        if (progress)
            progress(elements.events().bytes_used());
        if (!reader::is_call_name(call->name))
            continue;
        if (!reader::is_at(*call, address))
        {
            reading.take(*call);
            continue;
        }
        reading.tell(*call, state);
        break;
    }
    state.is_log = elements.events().is_log();
    return state;
}

}  // namespace orvlog::inspect
