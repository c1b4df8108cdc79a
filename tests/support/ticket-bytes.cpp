#include "tests/support/ticket-bytes.h"

#include <cstring>

namespace orvlog::test
{

namespace
{

void put(std::vector<uint8_t>* bytes, uint32_t value, int count)
{
    for (int i = 0; i < count; ++i)
        bytes->push_back(static_cast<uint8_t>(value >> (8 * i)));
}

}  // namespace

TicketBytes& TicketBytes::u8(std::initializer_list<uint32_t> values)
{
    for (const uint32_t value : values)
        put(&bytes_, value, 1);
    return *this;
}

TicketBytes& TicketBytes::u16(std::initializer_list<uint32_t> values)
{
    for (const uint32_t value : values)
        put(&bytes_, value, 2);
    return *this;
}

TicketBytes& TicketBytes::u32(std::initializer_list<uint32_t> values)
{
    for (const uint32_t value : values)
        put(&bytes_, value, 4);
    return *this;
}

TicketBytes& TicketBytes::f32(std::initializer_list<float> values)
{
    for (const float value : values)
    {
        uint32_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        put(&bytes_, bits, 4);
    }
    return *this;
}

TicketBytes& TicketBytes::text(const char* text)
{
    bytes_.insert(bytes_.end(), text, text + std::strlen(text) + 1);
    return *this;
}

TicketBytes& TicketBytes::append(const TicketBytes& other)
{
    bytes_.insert(bytes_.end(), other.bytes_.begin(), other.bytes_.end());
    return *this;
}

TicketBytes& TicketBytes::repeat(uint8_t byte, size_t count)
{
    bytes_.insert(bytes_.end(), count, byte);
    return *this;
}

TicketBytes fixed_data()
{
    return TicketBytes().u8({1, 0, 2, 1, 0, 255, 1, 0}).u32({3, 1});
}

TicketBytes plain_csd()
{
    return TicketBytes().u32({6}).u8({0, 0, 0, 0}).u32({0}).u32({0});
}

namespace
{

// Each with a marker before it.
TicketBytes rich_definitions()
{
    TicketBytes t;
    t.u32({0}).append(plain_csd());
    t.u32({1, 0}).u8({3, 2, 1, 1}).u32({3}).text("Cyan").text("Spot").text("a.icc").text("b.icc");
    t.u32({71, 1}).u8({1}).u32({99, 3}).u8({7, 7, 7}).u32({74, 1}).u8({0}).u32({0});
    t.append(TicketBytes().u32({2}).u8({3, 0, 0, 1}).u32({1}).u32({5}).u8({0xDE, 0xAD, 0, 0xBE, 0xEF}).u32({0}));
    t.append(TicketBytes().u32({3}).u8({3, 0, 0, 0}).u32({2}).u32({1}).f32({0.5f, 1, 0.25f}));
    t.u32({80, 12}).f32({0, 0.125f, 0}).u32({0});
    t.u32({2, 4}).u8({4, 0, 0, 0}).u32({4, 3, 0});
    t.u32({3, 7}).u8({3, 0, 0, 0}).u32({0}).u32({80, 11}).u8({2, 2, 8}).repeat(9, 12).u32({0});
    t.u32({4, 7}).u8({1, 0, 0, 0}).u32({0}).u32({80, 11}).u8({1, 2, 16}).u16({258, 772}).u32({0});
    for (uint32_t family = 0; family <= 6; ++family)
    {
        t.u32({5 + family, 5}).u8({3, 0, 0, 0}).u32({0, family, 1}).repeat(0, 96).u8({2, 1, 1, 2}).repeat(0, 32);
        const size_t tables[] = {6, 4, 10, 9, 3, 1, 1};
        t.repeat(0x3F, 4 * tables[family]);
        t.repeat(5, family == 2 ? 6 : family == 3 ? 12 : 0).u32({0}).u32({0});
    }
    return t.u32({0xFFFFFFFF});
}

TicketBytes rich_sections()
{
    TicketBytes t;
    t.u32({1, 26, 0, 1, 2, 3, 8}).u8({1, 0}).u32({7});
    for (uint32_t marker = 2; marker <= 5; ++marker)
        t.u32({marker, 24}).u8({1, 2, 0, 3, 1, 4, 0, 5}).u32({1, 2, 3, 4});
    t.u32({6, 10, 8}).u8({0, 1}).u32({1}).u32({7, 4, 5}).u32({8, 4, 6});
    t.u32({9, 60})
        .u8({1, 0, 1, 0})
        .u32({1, 2, 3, 4, 5, 6, 2})
        .u16({1, 2, 3, 4, 5, 6, 7})
        .u16({8, 9, 10, 11, 12, 13, 14});
    t.u32({10, 48}).u8({0, 1, 0, 1}).u32({1, 2, 3, 4, 5, 6, 1}).u16({1, 2, 3, 4, 5, 6, 7, 8});
    t.u32({11, 9}).u8({1}).f32({0.5f, 0.25f});
    for (uint32_t marker = 12; marker <= 15; ++marker)
        t.u32({marker, 16, 1, 2, 3, 4});
    t.u32({16, 0, 2}).u8({1, 0}).text("one").text("");
    t.u32({17, 17}).u8({1}).u32({1}).f32({1, 2, 3}).u32({18, 13}).u8({0}).u32({2, 6500}).f32({80});
    t.u32({19, 4}).u8({1, 0, 1, 0}).u32({20, 4, 2}).u32({21, 4}).u8({0, 1, 0, 1}).u32({22, 8}).repeat(1, 8);
    t.u32({23, 1}).u8({1}).u32({24, 4}).repeat(1, 4).u32({25, 16, 1, 2, 3, 4}).u32({26, 1}).u8({0});
    t.u32({35, 3}).u8({1, 2, 3}).u32({27, 1}).u8({1});
    for (uint32_t marker = 28; marker <= 31; ++marker)
        t.u32({marker, 12}).text("dmp").text("").text("g1").text("g2").text("");
    t.u32({32, 18}).u8({1, 0}).f32({1, 2, 3, 4}).u32({33, 17}).u8({1}).u32({0, 1, 2, 9}).u32({34, 4, 3});
    return t.u32({0});
}

}  // namespace

TicketBytes rich_ticket()
{
    return fixed_data().append(rich_definitions()).append(rich_sections());
}

LentStream::LentStream(const void* content, size_t size)
    : operations{}, block_(content, size), handle_{this, GIO_KIND_MEMORY, &operations}
{
    operations.gio_ReadBuffer = [](void* c, void** data, uint64_t* length)
    {
        auto* self = static_cast<LentStream*>(c);
        *data = self->block_.data();
        *length = self->block_.size();
        return self->refuses ? 0 : 1;
    };
    operations.gio_Seek = [](void* c, int32_t offset, int32_t origin)
    {
        static_cast<LentStream*>(c)->position = origin == GIO_SEEK_SET ? offset : -2;
        return 0;
    };
    operations.gio_LastError = [](void* c) { return ++static_cast<LentStream*>(c)->last_errors; };
    operations.gio_ClearErr = [](void* c) { ++static_cast<LentStream*>(c)->cleared; };
}

}  // namespace orvlog::test
