#include "reader/check/check-calls.h"

#include "reader/tickets/ticket-bytes.h"
#include "reader/tree/values.h"

namespace orvlog::reader
{

namespace
{

constexpr size_t kMostOpen = 1 << 16;
constexpr size_t kWholeTicket = 1 << 16;  // longer ones are not kept whole

std::string told(std::string_view what, uint64_t number)
{
    return std::string(what).append(" ").append(std::to_string(number));
}

}  // namespace

// Numbers rise by one; after a gap they go on from there.
void CheckCalls::number(const Element& call, std::string_view attribute, uint64_t& next)
{
    if (!call.has(attribute))
    {
        report_(call.place, std::string(call.name).append(" has no ").append(attribute));
        return;
    }
    const uint64_t found = to_uint(call.value(attribute));
    if (found != next)
        report_(call.place, std::string(attribute).append(" is ").append(std::to_string(found)).append(" where ") +
                                std::to_string(next) + " was due");
    next = found + 1;
}

void CheckCalls::document_of(const Element& call)
{
    const uint32_t document = read_uint(call, "document_context");
    if (call.has("document_context") && !documents_.contains(document) && !forgot_)
        report_(call.place, told("document_context", document) + " is not open");
}

void CheckCalls::engine(const Element& call)
{
    if (!call.has("GfpId"))
        return;
    const uint64_t id = to_uint(call.value("GfpId"));
    if (id < next_engine_ || id > next_engine_ + hidden_engines_)
        report_(call.place, told("GfpId is", id) + told(" where", next_engine_) + " was due");
    hidden_engines_ -= id > next_engine_ && id <= next_engine_ + hidden_engines_ ? id - next_engine_ : 0;
    next_engine_ = id + 1;
}

void CheckCalls::font_callback(const Element& callback)
{
    const uint64_t id = to_uint(callback.value("GfpId"));
    if (id >= next_engine_ + hidden_engines_)
        report_(callback.place, told("GfpId", id) + " is of no font engine");
}

void CheckCalls::ticket(const Element& call)
{
    const Element* ticket = call.child("GCM_ColorTicket");
    if (ticket == nullptr)
        return;
    const uint64_t id = to_uint(ticket->value("id"));
    const Element* text = ticket->child("GXC_ColorTickets");
    if (id > next_ticket_)
        report_(ticket->place, told("ticket", id) + told(" comes where", next_ticket_) + " was due");
    if (id != 0 && id < next_ticket_ && text != nullptr)
        report_(ticket->place, told("ticket", id) + " has its text again");
    next_ticket_ = std::max(next_ticket_, id + 1);
    if (text == nullptr || text->implied_end || text->data_size >= kWholeTicket)
        return;
    const TicketReading reading = read_ticket_text(text->rows);
    Place place = text->place;
    place.line += reading.line > 0 ? reading.line - 1 : 0;
    if (reading.ending == TicketEnding::cut || reading.ending == TicketEnding::damaged)
        report_(place, told("the text of ticket", id) + " is damaged; due was: " + reading.expected);
    if (reading.ending == TicketEnding::short_ticket)
        note_(place, told("ticket", id) + " ended early");
}

void CheckCalls::start_drawing(const Element& call)
{
    document_of(call);
    number(call, "drawing_context", next_drawing_);
    Drawing drawing;
    drawing.place = call.place;
    if (call.name == "ORV_resource_start")
    {
        const uint32_t parent = read_uint(call, "parent_drawing");
        if (call.has("parent_drawing") && !drawings_.contains(parent) && !forgot_)
            report_(call.place, told("parent_drawing", parent) + " is not open");
        number(call, "resource_id", next_resource_);
        if (resources_.size() < kMostOpen)
            resources_[read_uint(call, "resource_id")] = call.place;
        else
            forgot_ = true;
    }
    const uint32_t context = read_uint(call, "drawing_context");
    if (drawings_.size() < kMostOpen)
        drawings_[context] = drawing;
    else
        forgot_ = true;
}

void CheckCalls::resource(const Element& call)
{
    const uint32_t id = read_uint(call, "resource_id");
    if (!resources_.contains(id) && !forgot_)
        report_(call.place, told("resource_id", id) + (id < next_resource_ ? " is destroyed" : " was never started"));
    if (call.name == "ORV_resource_destroy")
        resources_.erase(id);
}

void CheckCalls::in_drawing(const Element& call)
{
    const uint32_t context = read_uint(call, "drawing_context");
    const auto known = drawings_.find(context);
    if (known == drawings_.end())
    {
        if (!forgot_)
            report_(call.place, told("drawing_context", context) +
                                    (context < next_drawing_ ? " is finished" : " was never started"));
        return;
    }
    Drawing& drawing = known->second;
    if (call.name == "ORV_group_start")
        ++drawing.groups;
    else if (call.name == "ORV_group_finish")
    {
        if (drawing.groups == 0)
            report_(call.place, "a group is finished that was not started");
        else if (read_bool(call, "replay_group") == 0)
            --drawing.groups;
    }
    else if (call.name == "ORV_drawing_finish" || call.name == "ORV_drawing_discard")
    {
        if (drawing.groups > 0)
            report_(call.place, told("the drawing ends with", drawing.groups) + " open groups");
        drawings_.erase(known);
    }
}

void CheckCalls::call(const Element& call)
{
    engine(call);
    ticket(call);
    const std::string_view name = call.name;
    if (name == "ORV_document_start")
    {
        number(call, "document_context", next_document_);
        if (documents_.size() < kMostOpen)
            documents_[read_uint(call, "document_context")] = call.place;
        else
            forgot_ = true;
    }
    else if (name == "ORV_document_finish")
    {
        document_of(call);
        documents_.erase(read_uint(call, "document_context"));
    }
    else if (name == "ORV_resource_destroy")
    {
        document_of(call);
        resource(call);
    }
    else if (name == "ORV_face_start" || name == "ORV_resource_start" || name == "ORV_memory_context_start")
    {
        hidden_engines_ += name == "ORV_memory_context_start" ? 1 : 0;
        start_drawing(call);
    }
    else
    {
        if (name == "ORV_object_paint" || name == "ORV_object_paint_and_stroke")
            number(call, "id", next_paint_);
        in_drawing(call);
        if (name == "ORV_resource_paint")
            resource(call);
    }
}

void CheckCalls::finish()
{
    for (const auto& [context, drawing] : drawings_)
    {
        report_(drawing.place, told("drawing_context", context) + " is not finished" +
                                   (drawing.groups > 0 ? told(", nor are", drawing.groups) + " groups of it" : ""));
    }
    for (const auto& [context, place] : documents_)
        report_(place, told("document_context", context) + " is not finished");
}

}  // namespace orvlog::reader
