#include "reader/tickets/ticket-definitions.h"

#include "orvlog/colour/gxc/gxc-layout.h"
#include "orvlog/interface/gcm-csd.h"
#include "reader/tickets/ticket-values.h"

#include <array>
#include <iterator>

namespace orvlog::reader
{

namespace
{

constexpr std::string_view kExtensionsLine = "<Extensions>\n";

// Where the fields of a definition's head lie behind its start.
constexpr size_t kChannelsPlace = 4;
constexpr size_t kNamesPlace = 5;
constexpr size_t kHasSecondaryPlace = 6;
constexpr size_t kHasAlternatePlace = 7;

// One definition while it is read.
struct Definition
{
    size_t start = 0;  // in the ticket's bytes
    uint32_t type = 0;
    bool is_nameless = false;  // the text does not tell the type
    uint32_t word = 0;         // what the definition by type holds, if it is one word
    TicketDefinition* summary = nullptr;
};

bool read_head(TicketText& text, Definition& definition)
{
    definition.start = text.size();
    const bool whole = text.fields(gxc_csd_head_fields);
    if (text.size() < definition.start + sizeof definition.type)
        return whole;
    definition.type = text.uint32_at(definition.start);
    definition.is_nameless = definition.type == kNamelessValue;
    if (definition.is_nameless)
    {
        definition.type = GCM_CSDTYPE_INPUT;
        text.set_uint32(definition.start, definition.type);
    }
    definition.summary->type = definition.type;
    if (whole)
        definition.summary->channels = text.uint8_at(definition.start + kChannelsPlace);
    return whole;
}

bool read_word(TicketText& text, const GXC_Field& field, uint32_t& word)
{
    const size_t place = text.size();
    if (!text.open("Defn") || !text.field(field))
        return false;
    word = text.uint32_at(place);
    return text.close();
}

bool read_definition_by_type(TicketText& text, Definition& definition)
{
    switch (definition.type)
    {
    case GCM_CSDTYPE_PROFILE_BUFFER:
        return read_word(text, {GXC_UINT32, "ProfileBufferSize", nullptr}, definition.word);
    case GCM_CSDTYPE_ANALYTICAL:
        return text.fields(gxc_analytical_fields);
    case GCM_CSDTYPE_NONCOLORIMETRIC:
        return read_word(text, {GXC_ENUM, "NonColorimetric", "GNC_Format"}, definition.word);
    case GCM_CSDTYPE_CIELUT_DATA:
        return read_word(text, {GXC_ENUM, "CieBased", "GCM_CieFamily"}, definition.word);
    default:
        return true;
    }
}

bool read_names(TicketText& text, uint8_t count)
{
    if (count == 0)
        return true;
    if (!text.open("NamedChans"))
        return false;
    for (uint8_t left = count; left != 0; --left)
        if (!text.string("ChanName", left > 1 ? "<ChanName String=\"" : std::string_view()))
            return false;
    return text.close();
}

// How the line behind the strings of a definition begins.
std::string_view line_behind_strings(uint32_t type)
{
    if (type == GCM_CSDTYPE_PROFILE_BUFFER)
        return "<ProfileBuffer>";
    return type == GCM_CSDTYPE_CIELUT_DATA ? "<GCM_CieLutsPointer>\n" : kExtensionsLine;
}

bool read_strings(TicketText& text, const Definition& definition)
{
    const bool has_secondary = text.uint8_at(definition.start + kHasSecondaryPlace) == 1;
    if (definition.type == GCM_CSDTYPE_FILE &&
        !text.string("Filename", has_secondary ? "<SecondaryProfile String=\"" : kExtensionsLine))
        return false;
    return !has_secondary || text.string("SecondaryProfile", line_behind_strings(definition.type));
}

bool read_profile(TicketText& text, const Definition& definition)
{
    const size_t place = text.size();
    const bool whole = text.hex("ProfileBuffer", definition.word);
    if (text.size() < place)
        return whole;
    definition.summary->profile_at = place;
    definition.summary->profile_size = text.size() - place;
    return whole;
}

bool read_matrix(TicketText& text, std::string_view name)
{
    return text.open(name) && text.matrix_row() && text.matrix_row() && text.matrix_row() && text.close();
}

bool read_dimensions(TicketText& text)
{
    constexpr GXC_Field kFields[] = {
        {GXC_OPEN, "HIJKDimensions", nullptr}, {GXC_UINT8, "H_Dimension", nullptr}, {GXC_UINT8, "I_Dimension", nullptr},
        {GXC_UINT8, "J_Dimension", nullptr},   {GXC_UINT8, "K_Dimension", nullptr}, {GXC_CLOSE, nullptr, nullptr},
    };
    return text.fields({kFields, std::size(kFields)});
}

bool read_cie_tables(TicketText& text, uint32_t family, uint32_t bit_depth, const std::array<uint8_t, 4>& dimensions)
{
    for (const GXC_DecodeTable& table : gxc_decode_tables)
        if (gxc_family_has_table(&table, family) &&
            !text.array(table.name, GXC_ENTRY_FLOAT, gxc_decode_entries(bit_depth)))
            return false;
    return (family != GXC_CIE_DEF && family != GXC_CIE_DEFG) ||
           text.array("HIJKTable", GXC_ENTRY_UINT8, gxc_hijk_size(family, dimensions.data()));
}

bool read_cie_luts(TicketText& text, uint32_t family)
{
    const size_t start = text.size();
    if (!text.open("GCM_CieLutsPointer") || !text.open("GCM_CieLuts") ||
        !text.field({GXC_UINT32, "DecodeBitDepth", nullptr}) || !text.fields(gxc_cie_point_fields) ||
        !read_matrix(text, "MatrixABC") || !read_matrix(text, "MatrixLMN"))
        return false;
    const size_t place = text.size();
    if (!read_dimensions(text) || !text.fields(gxc_cie_range_fields) || !text.close())
        return false;
    std::array<uint8_t, 4> dimensions = {};
    for (size_t i = 0; i < dimensions.size(); ++i)
        dimensions[i] = text.uint8_at(place + i);
    if (!read_cie_tables(text, family, text.uint32_at(start), dimensions) || !text.line("<Extensions>") ||
        !text.line("</Extensions>"))
        return false;
    text.put_end(0);
    return text.close();
}

bool read_content(TicketText& text, const Definition& definition)
{
    if (!read_strings(text, definition))
        return false;
    if (definition.type == GCM_CSDTYPE_PROFILE_BUFFER)
        return read_profile(text, definition);
    return definition.type != GCM_CSDTYPE_CIELUT_DATA || read_cie_luts(text, definition.word);
}

bool read_post_render_lut(TicketText& text, uint8_t channels)
{
    const size_t place = text.size();
    if (!text.open("PostRenderLut") || !text.field({GXC_UINT8, "LutDimensions", nullptr}) ||
        !text.field({GXC_UINT8, "LutSize", nullptr}) || !text.field({GXC_UINT8, "LutOutputBitDepth", nullptr}))
        return false;
    const uint8_t bit_depth = text.uint8_at(place + 2);
    const uint32_t size = gxc_lut_size(text.uint8_at(place), text.uint8_at(place + 1), bit_depth, channels);
    const bool whole = bit_depth == 16 ? text.array("Lut", GXC_ENTRY_UINT16, size >> 1, size - (size >> 1))
                                       : text.array("Lut", GXC_ENTRY_UINT8, size);
    return whole && text.close();
}

// Version 80 is written only where it is known, so that it tells the type of a definition that has no name.
bool read_extension_by_type(TicketText& text, Definition& definition)
{
    if (definition.type == GCM_CSDTYPE_ANALYTICAL)
        return text.fields(gxc_black_point_fields);
    return read_post_render_lut(text, text.uint8_at(definition.start + kChannelsPlace));
}

bool read_payload(TicketText& text, Definition& definition, uint32_t version)
{
    if (version == GXC_USE_ILLUMINANT_INFO)
        return text.field({GXC_BOOL, "UseIlluminantInfo", nullptr});
    if (version == GXC_IS_DEVICE_LINK_PROFILE)
        return text.field({GXC_BOOL, "IsDeviceLinkProfile", nullptr});
    return read_extension_by_type(text, definition);
}

bool extension_is_known(const Definition& definition, uint32_t version)
{
    return version == GXC_USE_ILLUMINANT_INFO || version == GXC_IS_DEVICE_LINK_PROFILE ||
           (version == GXC_BY_TYPE && (definition.type == GCM_CSDTYPE_ANALYTICAL || definition.is_nameless));
}

bool read_extension(TicketText& text, Definition& definition)
{
    const size_t place = text.size();
    if (!text.due_field({GXC_UINT32, "ExtensionVersion", nullptr}))
        return false;
    const uint32_t version = text.uint32_at(place);
    if (!extension_is_known(definition, version))
        return text.damaged("a version of an extension that the definition can have");
    if (version == GXC_BY_TYPE && definition.is_nameless)
    {
        definition.type = GCM_CSDTYPE_POST_RENDER_LUT;
        definition.summary->type = definition.type;
        text.set_uint32(definition.start, definition.type);
    }
    return text.due_field({GXC_UINT32, "ExtensionSize", nullptr}) && text.open("ExtensionElements") &&
           read_payload(text, definition, version) && text.close();
}

bool read_extensions(TicketText& text, Definition& definition)
{
    if (!text.open("Extensions"))
        return false;
    while (!text.at_close())
        if (!read_extension(text, definition))
            return false;
    text.put_end(GXC_EXTENSIONS_END);
    return text.close();
}

// All of a definition but its alternate.
bool read_body(TicketText& text, Definition& definition)
{
    return text.open("GCM_CsdPointer") && read_head(text, definition) && read_definition_by_type(text, definition) &&
           read_names(text, text.uint8_at(definition.start + kNamesPlace)) && read_content(text, definition) &&
           read_extensions(text, definition);
}

// An alternate is the last part of its definition, so a chain of them is a loop.
bool read_definition(TicketText& text, uint32_t marker, std::vector<TicketDefinition>& definitions)
{
    for (uint32_t alternate = 0;; ++alternate)
    {
        Definition definition;
        definition.summary = &definitions.emplace_back(TicketDefinition{marker, alternate});
        if (!read_body(text, definition))
            return false;
        if (text.uint8_at(definition.start + kHasAlternatePlace) != 1)
        {
            for (; alternate != 0; --alternate)
                if (!text.close() || !text.close())
                    return false;
            return text.close();
        }
        if (!text.open("AlternateDefn"))
            return false;
    }
}

}  // namespace

bool read_definitions(TicketText& text, std::vector<TicketDefinition>& definitions)
{
    if (!text.open("CSD_Data"))
        return false;
    while (!text.at_close())
    {
        const size_t place = text.size();
        if (!text.due_field({GXC_UINT32, "Marker", nullptr}))
            return false;
        const uint32_t marker = text.uint32_at(place);
        if (marker == GXC_TABLE_END)
            return text.damaged("a marker below 4294967295");
        if (!read_definition(text, marker, definitions))
            return false;
    }
    text.put_end(GXC_TABLE_END);
    return text.close();
}

}  // namespace orvlog::reader
