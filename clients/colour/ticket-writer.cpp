#include "clients/colour/ticket-writer.h"

#include <cstring>

namespace orvlog::colour
{

namespace
{

constexpr uint32_t kQualityHigh = 3;
constexpr uint32_t kPerformanceMedium = 2;
constexpr uint32_t kTableEnd = 0xFFFFFFFF;
constexpr uint32_t kExtensionsEnd = 0;
constexpr uint32_t kIsDeviceLink = 74;
constexpr uint32_t kBlackPoint = 80;
// XYZ of the white at x = 0.3127, y = 0.3290.
constexpr float kSrgbWhite[3] = {0.950456F, 1, 1.089058F};

enum Marker : uint32_t
{
    kEnd = 0,
    kRenderSpace = 1,
    kRgbInput = 2,
    kCmykInput = 3,
    kGrayInput = 4,
    kOutputSpace = 6,
    kNamedProfiles = 16,
    kPureBlackPreserve = 21
};

void write_fixed_data(ByteWriter* out, const TicketContent& content)
{
    const bool cmyk = content.description.render == Family::cmyk;
    out->boolean(false);
    out->boolean(cmyk);
    out->boolean(cmyk);
    out->boolean(content.output_ref != 0);
    out->boolean(false);
    out->boolean(false);
    out->boolean(false);
    out->boolean(false);
    out->u32(kQualityHigh);
    out->u32(kPerformanceMedium);
}

uint32_t device_format(Family family)
{
    switch (family)
    {
    case Family::gray:
        return GNC_FORMAT_GRAY;
    case Family::rgb:
        return GNC_FORMAT_RGB;
    case Family::cmyk:
        break;
    }
    return GNC_FORMAT_CMYK;
}

void write_head(ByteWriter* out, uint32_t type, const Definition& definition, bool has_alternate)
{
    out->u32(type);
    out->u8(channels_of(definition.family));
    out->u8(0);
    out->boolean(false);
    out->boolean(has_alternate);
    out->u32(definition.intent);
}

void write_device_definition(ByteWriter* out, const Definition& definition)
{
    write_head(out, GCM_CSDTYPE_NONCOLORIMETRIC, definition, false);
    out->u32(device_format(definition.family));
    out->u32(kExtensionsEnd);
}

// Whoever cannot use the profile finds the device space behind it.
void write_profile_definition(ByteWriter* out, const Definition& definition)
{
    write_head(out, GCM_CSDTYPE_PROFILE_BUFFER, definition, true);
    out->u32(static_cast<uint32_t>(definition.icc.size()));
    out->append(definition.icc);
    if (definition.is_device_link)
    {
        out->u32(kIsDeviceLink);
        out->u32(1);
        out->boolean(true);
    }
    out->u32(kExtensionsEnd);
    write_device_definition(out, definition);
}

void write_srgb_definition(ByteWriter* out, const Definition& definition)
{
    write_head(out, GCM_CSDTYPE_ANALYTICAL, definition, false);
    out->u32(GCM_ACS_SRGB);
    for (const float value : kSrgbWhite)
        out->f32(value);
    out->u32(kBlackPoint);
    out->u32(3 * sizeof(float));
    for (int i = 0; i < 3; ++i)
        out->f32(0);
    out->u32(kExtensionsEnd);
}

void write_definitions(ByteWriter* out, const std::vector<Definition>& definitions)
{
    uint32_t marker = 0;
    for (const Definition& definition : definitions)
    {
        out->u32(marker++);
        switch (definition.type())
        {
        case GCM_CSDTYPE_PROFILE_BUFFER:
            write_profile_definition(out, definition);
            break;
        case GCM_CSDTYPE_ANALYTICAL:
            write_srgb_definition(out, definition);
            break;
        default:
            write_device_definition(out, definition);
            break;
        }
    }
    out->u32(kTableEnd);
}

void write_section(ByteWriter* out, Marker marker, const ByteWriter& fields)
{
    out->u32(marker);
    out->u32(static_cast<uint32_t>(fields.bytes().size()));
    out->append(fields.bytes());
}

void write_render_space(ByteWriter* out, const TicketDescription& description)
{
    ByteWriter fields;
    fields.u32(description.intents.text);
    fields.u32(description.intents.line);
    fields.u32(description.intents.graphics);
    fields.u32(description.intents.image);
    fields.u32(description.render_bit_depth);
    fields.boolean(description.render_has_alpha);
    fields.boolean(false);
    fields.u32(0);
    write_section(out, kRenderSpace, fields);
}

// Text and line art keep pure grays; images do not. No transform is built ahead.
void write_input(ByteWriter* out, Marker marker, uint32_t definition)
{
    ByteWriter fields;
    for (const bool preserve : {true, true, true, false})
    {
        fields.boolean(preserve);
        fields.u8(0);
    }
    for (int i = 0; i < 4; ++i)
        fields.u32(definition);
    write_section(out, marker, fields);
}

void write_output(ByteWriter* out, const TicketContent& content)
{
    ByteWriter fields;
    fields.u32(content.description.render_bit_depth);
    fields.boolean(false);
    fields.boolean(false);
    fields.u32(content.output_ref);
    write_section(out, kOutputSpace, fields);
}

void write_named_profiles(ByteWriter* out, const std::vector<std::string>& names)
{
    if (names.empty())
        return;
    ByteWriter fields;
    fields.u32(static_cast<uint32_t>(names.size()));
    for (size_t i = 0; i < names.size(); ++i)
        fields.boolean(false);
    for (const std::string& name : names)
        fields.text(name);
    write_section(out, kNamedProfiles, fields);
}

void write_pure_black(ByteWriter* out)
{
    ByteWriter fields;
    for (const bool preserve : {true, true, true, false})
        fields.boolean(preserve);
    write_section(out, kPureBlackPreserve, fields);
}

}  // namespace

void ByteWriter::u8(uint8_t value)
{
    bytes_.push_back(value);
}

void ByteWriter::u32(uint32_t value)
{
    for (int shift = 0; shift < 32; shift += 8)
        bytes_.push_back(static_cast<uint8_t>(value >> shift));
}

void ByteWriter::f32(float value)
{
    uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    u32(bits);
}

void ByteWriter::text(const std::string& value)
{
    const std::string known = value.substr(0, value.find('\0'));
    bytes_.insert(bytes_.end(), known.begin(), known.end());
    bytes_.push_back(0);
}

void ByteWriter::append(const Bytes& bytes)
{
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

uint32_t Definition::type() const
{
    if (!icc.empty())
        return GCM_CSDTYPE_PROFILE_BUFFER;
    return family == Family::rgb ? GCM_CSDTYPE_ANALYTICAL : GCM_CSDTYPE_NONCOLORIMETRIC;
}

Bytes serialise(const TicketContent& content)
{
    ByteWriter out;
    write_fixed_data(&out, content);
    write_definitions(&out, content.definitions);
    write_render_space(&out, content.description);
    write_input(&out, kRgbInput, content.rgb_ref);
    write_input(&out, kCmykInput, content.cmyk_ref);
    write_input(&out, kGrayInput, content.gray_ref);
    write_output(&out, content);
    write_named_profiles(&out, content.profile_names);
    if (content.description.render == Family::cmyk)
        write_pure_black(&out);
    out.u32(kEnd);
    return out.bytes();
}

}  // namespace orvlog::colour
