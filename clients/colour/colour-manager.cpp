#include "clients/colour/colour-manager.h"

#include "clients/colour/icc-profile.h"
#include "clients/colour/ticket-writer.h"

#include <cstring>
#include <utility>

namespace orvlog::colour
{

struct ColourManager::Ticket
{
    TicketCounts* counts = nullptr;
    uint32_t key = 0;
    uint64_t references = 0;
    Bytes serialised;
    Family render = Family::rgb;
    uint32_t bit_depth = 8;
    bool has_alpha = false;
    std::vector<GCM_Csd> definitions;
    std::vector<const GCM_Csd*> list;  // ends with null
};

namespace
{

using Ticket = ColourManager::Ticket;

constexpr uint32_t kKindAdditive = 0;
constexpr uint32_t kKindSubtractive = 1;

Ticket* of(void* ticket)
{
    return static_cast<Ticket*>(ticket);
}

const Ticket* of(const void* ticket)
{
    return static_cast<const Ticket*>(ticket);
}

uint32_t retain_ticket(void* ticket)
{
    ++of(ticket)->references;
    ++of(ticket)->counts->retained;
    return 1;
}

uint32_t release_ticket(void* ticket)
{
    if (of(ticket)->references == 0)
        return 0;
    --of(ticket)->references;
    ++of(ticket)->counts->released;
    return 1;
}

// The space: kind, bit depth, whether there is alpha, render channels, key. The render block: the same key, three
// words of no meaning.
uint32_t query_ticket(void* ticket, void* ticket_space, void* ticket_render)
{
    const Ticket* t = of(ticket);
    const uint32_t space[5] = {t->render == Family::cmyk ? kKindSubtractive : kKindAdditive, t->bit_depth,
                               t->has_alpha ? 1u : 0u, channels_of(t->render), t->key};
    const uint32_t render[4] = {t->key, 0, 0, 0};
    std::memcpy(ticket_space, space, sizeof space);
    std::memcpy(ticket_render, render, sizeof render);
    return 1;
}

uint32_t list_definitions(void* ticket, const GCM_Csd* const** list, uintptr_t, uintptr_t)
{
    *list = of(ticket)->list.data();
    return 1;
}

uint32_t tell_key(void* ticket, uint32_t* key)
{
    *key = of(ticket)->key;
    return 1;
}

uint32_t serialise_ticket(void* ticket, GIO_Stream* stream, uintptr_t, uintptr_t)
{
    const Bytes& bytes = of(ticket)->serialised;
    ++of(ticket)->counts->serialised;
    if (stream->ops->gio_Write(bytes.data(), 1, bytes.size(), stream->instance) != bytes.size())
        return 0;
    return bytes.size() <= INT32_MAX &&
                   stream->ops->gio_Seek(stream->instance, static_cast<int32_t>(bytes.size()), GIO_SEEK_SET) == 0
               ? 1
               : 0;
}

GCM_Csd record_of(const Definition& definition)
{
    GCM_Csd csd = {};
    csd.csd_Type = definition.type();
    csd.csd_NumBaseChans = channels_of(definition.family);
    csd.csd_HasAlternateDefn = definition.icc.empty() ? 0 : 1;
    csd.csd_DefaultRenderIntent = definition.intent;
    csd.csd_IsDeviceLinkProfile = definition.is_device_link ? 1 : 0;
    if (csd.csd_Type == GCM_CSDTYPE_PROFILE_BUFFER)
        csd.csd_Defn.ProfileBufferSize = static_cast<uint32_t>(definition.icc.size());
    else if (csd.csd_Type == GCM_CSDTYPE_ANALYTICAL)
        csd.csd_Defn.Analytical.acs_ColorSpace = GCM_ACS_SRGB;
    else
        csd.csd_Defn.NonColorimetric = definition.family == Family::gray ? GNC_FORMAT_GRAY : GNC_FORMAT_CMYK;
    return csd;
}

// Puts the content of a ticket together; what cannot be used is left out with a complaint.
class ContentMaker
{
public:
    ContentMaker(const TicketDescription& description, std::vector<std::string>* complaints) : complaints_(complaints)
    {
        content_.description = description;
        content_.definitions.push_back({description.render, description.intents.graphics, {}, false});
    }

    TicketContent make()
    {
        add_inputs();
        add_output();
        content_.gray_ref = default_of(Family::gray, content_.description.default_gray);
        content_.rgb_ref = default_of(Family::rgb, content_.description.default_rgb);
        content_.cmyk_ref = default_of(Family::cmyk, content_.description.default_cmyk);
        return std::move(content_);
    }

private:
    void complain(const std::string& name, const std::string& why)
    {
        complaints_->push_back("colour profile " + name + ": " + why);
    }

    // The place of a new definition.
    uint32_t add(Definition definition)
    {
        content_.definitions.push_back(std::move(definition));
        return static_cast<uint32_t>(content_.definitions.size() - 1);
    }

    void add_inputs()
    {
        for (const InputProfile& input : content_.description.inputs)
        {
            std::string why;
            const std::optional<ProfileFacts> facts = read_profile(input.icc, &why);
            places_.emplace_back();
            const std::string name = input.name.empty() && facts ? facts->description : input.name;
            if (!facts)
                complain(name, why);
            else if (facts->family != input.family)
                complain(name, "it is of another family than the space that it stands for");
            else
            {
                places_.back() = add({facts->family, facts->intent, input.icc, facts->is_device_link});
                content_.profile_names.push_back(name);
            }
        }
    }

    // The output intent. One of the render space's family defines the render space itself.
    void add_output()
    {
        const Bytes& icc = content_.description.output_intent;
        std::string why;
        if (icc.empty())
            return;
        const std::optional<ProfileFacts> facts = read_profile(icc, &why);
        if (!facts)
        {
            complain("of the output intent", why);
            return;
        }
        const Definition definition = {facts->family, facts->intent, icc, facts->is_device_link};
        if (facts->family == content_.description.render)
            content_.definitions[0] = definition;
        else
            content_.output_ref = add(definition);
    }

    uint32_t default_of(Family family, std::optional<size_t> input)
    {
        if (input && *input < places_.size() && places_[*input] &&
            content_.definitions[*places_[*input]].family == family)
            return *places_[*input];
        if (family == content_.description.render)
            return 0;
        return add({family, GCM_RI_PERCEPTUAL, {}, false});
    }

    TicketContent content_;
    std::vector<std::string>* complaints_;
    std::vector<std::optional<uint32_t>> places_;  // of the inputs among the definitions
};

std::unique_ptr<Ticket> make_record(const TicketContent& content, Bytes serialised)
{
    auto ticket = std::make_unique<Ticket>();
    ticket->serialised = std::move(serialised);
    ticket->render = content.description.render;
    ticket->bit_depth = content.description.render_bit_depth;
    ticket->has_alpha = content.description.render_has_alpha;
    for (const Definition& definition : content.definitions)
        ticket->definitions.push_back(record_of(definition));
    for (const GCM_Csd& csd : ticket->definitions)
        ticket->list.push_back(&csd);
    ticket->list.push_back(nullptr);
    return ticket;
}

}  // namespace

uint8_t channels_of(Family family)
{
    switch (family)
    {
    case Family::gray:
        return 1;
    case Family::rgb:
        return 3;
    case Family::cmyk:
        break;
    }
    return 4;
}

ColourManager::ColourManager() = default;
ColourManager::~ColourManager() = default;

ColourManager::Ticket* ColourManager::find(const Bytes& serialised) const
{
    for (const auto& ticket : tickets_)
        if (ticket->serialised == serialised)
            return ticket.get();
    return nullptr;
}

void* ColourManager::make_ticket(const TicketDescription& description, std::vector<std::string>* complaints)
{
    const TicketContent content = ContentMaker(description, complaints).make();
    Bytes bytes = serialise(content);
    Ticket* known = find(bytes);
    if (known == nullptr)
    {
        tickets_.push_back(make_record(content, std::move(bytes)));
        known = tickets_.back().get();
        known->counts = &counts_;
        known->key = static_cast<uint32_t>(tickets_.size());
    }
    retain_ticket(known);
    return known;
}

void ColourManager::retain(void* ticket)
{
    retain_ticket(ticket);
}

void ColourManager::release(void* ticket)
{
    release_ticket(ticket);
}

const ORVLOG_TicketFunctions* ColourManager::ticket_functions()
{
    static const ORVLOG_TicketFunctions functions = []
    {
        ORVLOG_TicketFunctions f = {};
        f.retain = retain_ticket;
        f.release = release_ticket;
        f.query = query_ticket;
        f.csd_list = list_definitions;
        f.key = tell_key;
        return f;
    }();
    return &functions;
}

const ORVLOG_TicketSerialFunctions* ColourManager::ticket_serial_functions()
{
    static const ORVLOG_TicketSerialFunctions functions = []
    {
        ORVLOG_TicketSerialFunctions f = {};
        f.serialise = serialise_ticket;
        return f;
    }();
    return &functions;
}

uint32_t ColourManager::key_of(const void* ticket)
{
    return of(ticket)->key;
}

const Bytes& ColourManager::serialised(const void* ticket)
{
    return of(ticket)->serialised;
}

std::vector<const void*> ColourManager::tickets() const
{
    std::vector<const void*> all;
    for (const auto& ticket : tickets_)
        all.push_back(ticket.get());
    return all;
}

const TicketCounts& ColourManager::counts() const
{
    return counts_;
}

}  // namespace orvlog::colour
