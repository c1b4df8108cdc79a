// A ticket in its serialised form: fixed data, colour space definitions, sections. The format is told in
// docs/ticket-text.md.

#pragma once

#include "clients/colour/colour-manager.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvlog::colour
{

// Little-endian fields without gaps.
class ByteWriter
{
public:
    void boolean(bool value)
    {
        u8(value ? 1 : 0);
    }
    void u8(uint8_t value);
    void u32(uint32_t value);
    void f32(float value);
    void text(const std::string& value);  // up to its first zero, with a terminator
    void append(const Bytes& bytes);

    const Bytes& bytes() const
    {
        return bytes_;
    }

private:
    Bytes bytes_;
};

// A definition as a ticket holds it. An empty profile means a plain definition of the family: sRGB, or the bare
// device space.
struct Definition
{
    Family family = Family::rgb;
    uint32_t intent = GCM_RI_PERCEPTUAL;
    Bytes icc;
    bool is_device_link = false;

    // The type of the definition, GCM_CSDTYPE_*.
    uint32_t type() const;
};

// What a ticket is made of once profiles have been read. References are places in `definitions`, of which the
// first is the render space.
struct TicketContent
{
    TicketDescription description;
    std::vector<Definition> definitions;
    uint32_t gray_ref = 0;
    uint32_t rgb_ref = 0;
    uint32_t cmyk_ref = 0;
    uint32_t output_ref = 0;
    std::vector<std::string> profile_names;
};

Bytes serialise(const TicketContent& content);

}  // namespace orvlog::colour
