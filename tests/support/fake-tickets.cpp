#include "tests/support/fake-tickets.h"

namespace orvlog::test
{

namespace
{

FakeTickets::Ticket* of(void* ticket)
{
    return static_cast<FakeTickets::Ticket*>(ticket);
}

FakeTickets* called(void* ticket)
{
    FakeTickets* owner = of(ticket)->owner;
    ++owner->calls;
    return owner;
}

}  // namespace

FakeTickets::FakeTickets() : functions_{}, serial_{}
{
    functions_.retain = [](void* ticket)
    {
        FakeTickets* owner = called(ticket);
        ++owner->retains;
        of(ticket)->references += owner->retain_result != 0 ? 1 : 0;
        return owner->retain_result;
    };
    functions_.release = [](void* ticket)
    {
        FakeTickets* owner = called(ticket);
        ++owner->releases;
        of(ticket)->references -= owner->release_result != 0 ? 1 : 0;
        return owner->release_result;
    };
    functions_.query = [](void* ticket, void* space, void* render)
    {
        FakeTickets* owner = called(ticket);
        ++owner->queries;
        auto* space_words = static_cast<uint32_t*>(space);
        auto* render_words = static_cast<uint32_t*>(render);
        for (uint32_t i = 0; i < 5; ++i)
            space_words[i] = i == 0 ? owner->kind : i + 1;
        for (uint32_t i = 0; i < 4; ++i)
            render_words[i] = 100 + i;
        return owner->query_result;
    };
    functions_.csd_list = [](void* ticket, const GCM_Csd* const** list, uintptr_t, uintptr_t)
    {
        FakeTickets* owner = called(ticket);
        owner->csd_[0] = {};
        owner->csd_[0].csd_NumBaseChans = owner->base_chans;
        owner->csds_[0] = owner->has_definition ? owner->csd_ : nullptr;
        *list = owner->csds_;
        return owner->csd_list_result;
    };
    functions_.key = [](void* ticket, uint32_t* key)
    {
        FakeTickets* owner = called(ticket);
        *key = of(ticket)->key;
        return owner->key_result;
    };
    serial_.serialise = [](void* ticket, GIO_Stream* stream, uintptr_t, uintptr_t)
    {
        FakeTickets* owner = called(ticket);
        ++owner->serialised;
        const std::string& bytes = of(ticket)->serialised;
        if (!bytes.empty())
            stream->ops->gio_Write(bytes.data(), 1, bytes.size(), stream->instance);
        return owner->serialise_result;
    };
}

}  // namespace orvlog::test
