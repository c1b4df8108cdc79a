#include "orvlog/colour/gxc/gxc-csd.h"

#include "orvlog/colour/gxc/gxc-cie.h"
#include "orvlog/colour/gxc/gxc-layout.h"

namespace
{

enum : uint32_t
{
    kTypeFile = 0,
    kTypeProfileBuffer = 2,
    kTypeAnalytical = 3,
    kTypeNoncolorimetric = 4,
    kTypeCieLutData = 5,
    kTypePostRenderLut = 7
};

// The fixed part of a definition.
struct Head
{
    uint32_t type;
    uint8_t num_base_chans;
    uint8_t num_named_chans;
    bool has_secondary_profile;
    bool has_alternate_defn;
};

constexpr GXC_Field kFilename[] = {{GXC_STRING, "Filename", nullptr}};
constexpr GXC_Field kSecondaryProfile[] = {{GXC_STRING, "SecondaryProfile", nullptr}};
constexpr GXC_Field kChanName[] = {{GXC_STRING, "ChanName", nullptr}};
constexpr GXC_Field kUseIlluminantInfoField[] = {{GXC_BOOL, "UseIlluminantInfo", nullptr}};
constexpr GXC_Field kIsDeviceLinkProfileField[] = {{GXC_BOOL, "IsDeviceLinkProfile", nullptr}};

bool write_head(GXC_Writer* writer, GXC_Input* input, Head* head)
{
    GXC_Input copy = *input;
    uint8_t flags[2] = {};
    const bool known = gxc_read_uint32(&copy, &head->type) && gxc_read_uint8(&copy, &head->num_base_chans) &&
                       gxc_read_uint8(&copy, &head->num_named_chans) && gxc_read_uint8(&copy, &flags[0]) &&
                       gxc_read_uint8(&copy, &flags[1]);
    head->has_secondary_profile = flags[0] == 1;
    head->has_alternate_defn = flags[1] == 1;
    return gxc_write_fields(writer, input, gxc_csd_head_fields) && known;
}

// A definition of one 32-bit word: `word` receives it.
bool write_word_definition(GXC_Writer* writer, GXC_Input* input, GXC_Field field, uint32_t* word)
{
    GXC_Input copy = *input;
    const bool known = gxc_read_uint32(&copy, word);
    const GXC_Field fields[] = {{GXC_OPEN, "Defn", nullptr}, field, {GXC_CLOSE, nullptr, nullptr}};
    return gxc_write_fields(writer, input, fields) && known;
}

bool write_definition(GXC_Writer* writer, GXC_Input* input, uint32_t type, uint32_t* word)
{
    switch (type)
    {
    case kTypeProfileBuffer:
        return write_word_definition(writer, input, {GXC_UINT32, "ProfileBufferSize", nullptr}, word);
    case kTypeAnalytical:
        return gxc_write_fields(writer, input, gxc_analytical_fields);
    case kTypeNoncolorimetric:
        return write_word_definition(writer, input, {GXC_ENUM, "NonColorimetric", "GNC_Format"}, word);
    case kTypeCieLutData:
        return write_word_definition(writer, input, {GXC_ENUM, "CieBased", "GCM_CieFamily"}, word);
    default:
        return true;
    }
}

bool write_named_chans(GXC_Writer* writer, GXC_Input* input, uint8_t count)
{
    if (count == 0)
        return true;
    bool whole = true;
    gxc_open(writer, "NamedChans");
    for (uint8_t i = 0; i < count && whole; ++i)
        whole = gxc_write_fields(writer, input, kChanName);
    gxc_close(writer, "NamedChans");
    return whole;
}

bool write_profile(GXC_Writer* writer, GXC_Input* input, uint32_t size)
{
    const uint64_t there = gxc_left(input) < size ? gxc_left(input) : size;
    gxc_open_inline(writer, "ProfileBuffer");
    gxc_hex_run(writer, gxc_here(input), there);
    gxc_close_inline(writer, "ProfileBuffer");
    return gxc_skip(input, there) && there == size;
}

bool write_content(GXC_Writer* writer, GXC_Input* input, const Head* head, uint32_t word)
{
    if (head->type == kTypeFile && !gxc_write_fields(writer, input, kFilename))
        return false;
    if (head->has_secondary_profile && !gxc_write_fields(writer, input, kSecondaryProfile))
        return false;
    if (head->type == kTypeProfileBuffer)
        return write_profile(writer, input, word);
    return head->type != kTypeCieLutData || gxc_write_cie_luts(writer, input, word);
}

bool write_extensions(GXC_Writer* writer, GXC_Input* input, const Head* head)
{
    gxc_open(writer, "Extensions");
    const bool whole = gxc_write_csd_extensions(writer, input, head->type, head->num_base_chans);
    gxc_close(writer, "Extensions");
    return whole;
}

// All of a definition but its alternate.
bool write_csd_body(GXC_Writer* writer, GXC_Input* input, Head* head)
{
    uint32_t word = 0;
    return write_head(writer, input, head) && write_definition(writer, input, head->type, &word) &&
           write_named_chans(writer, input, head->num_named_chans) && write_content(writer, input, head, word) &&
           write_extensions(writer, input, head);
}

bool extension_is_known(uint32_t version, uint32_t type)
{
    return version == GXC_USE_ILLUMINANT_INFO || version == GXC_IS_DEVICE_LINK_PROFILE ||
           (version == GXC_BY_TYPE && (type == kTypeAnalytical || type == kTypePostRenderLut));
}

bool write_payload(GXC_Writer* writer, GXC_Input* input, uint32_t version, uint32_t type, uint8_t num_base_chans)
{
    if (version == GXC_USE_ILLUMINANT_INFO)
        return gxc_write_fields(writer, input, kUseIlluminantInfoField);
    if (version == GXC_IS_DEVICE_LINK_PROFILE)
        return gxc_write_fields(writer, input, kIsDeviceLinkProfileField);
    if (type == kTypeAnalytical)
        return gxc_write_fields(writer, input, gxc_black_point_fields);
    return gxc_write_post_render_lut(writer, input, num_base_chans);
}

void write_uint32(GXC_Writer* writer, const char* name, uint32_t value)
{
    gxc_begin(writer, name);
    gxc_value_uint32(writer, value);
    gxc_end(writer);
}

void write_uint8(GXC_Writer* writer, const char* name, uint8_t value)
{
    gxc_begin(writer, name);
    gxc_value_uint8(writer, value);
    gxc_end(writer);
}

}  // namespace

bool gxc_write_csd_table(GXC_Writer* writer, GXC_Input* input)
{
    uint32_t marker = 0;
    gxc_open(writer, "CSD_Data");
    bool whole = gxc_read_uint32(input, &marker);
    while (whole && marker != GXC_TABLE_END)
    {
        write_uint32(writer, "Marker", marker);
        whole = gxc_write_csd(writer, input) && gxc_read_uint32(input, &marker);
    }
    gxc_close(writer, "CSD_Data");
    return whole;
}

// An alternate is the last part of its definition, so a chain of them is a loop, and the closing lines follow.
bool gxc_write_csd(GXC_Writer* writer, GXC_Input* input)
{
    Head head = {};
    uint64_t alternates = 0;
    gxc_open(writer, "GCM_CsdPointer");
    bool whole = write_csd_body(writer, input, &head);
    while (whole && head.has_alternate_defn)
    {
        ++alternates;
        gxc_open(writer, "AlternateDefn");
        gxc_open(writer, "GCM_CsdPointer");
        whole = write_csd_body(writer, input, &head);
    }
    for (; alternates != 0; --alternates)
    {
        gxc_close(writer, "GCM_CsdPointer");
        gxc_close(writer, "AlternateDefn");
    }
    gxc_close(writer, "GCM_CsdPointer");
    return whole;
}

bool gxc_write_csd_extensions(GXC_Writer* writer, GXC_Input* input, uint32_t type, uint8_t num_base_chans)
{
    uint32_t version = 0;
    uint32_t size = 0;
    while (gxc_read_uint32(input, &version))
    {
        if (version == GXC_EXTENSIONS_END)
            return true;
        if (!gxc_read_uint32(input, &size))
            return false;
        if (!extension_is_known(version, type))
        {
            gxc_report(writer->error_handle, "[GXC-WARNING] Unsupported CSD extension found (version=%02d)\n",
                       static_cast<int>(version));
            if (!gxc_skip(input, size))
                return false;
            continue;
        }
        write_uint32(writer, "ExtensionVersion", version);
        write_uint32(writer, "ExtensionSize", size);
        gxc_open(writer, "ExtensionElements");
        const bool whole = write_payload(writer, input, version, type, num_base_chans);
        gxc_close(writer, "ExtensionElements");
        if (!whole)
            return false;
    }
    return false;
}

bool gxc_write_post_render_lut(GXC_Writer* writer, GXC_Input* input, uint8_t num_base_chans)
{
    constexpr const char* kNames[3] = {"LutDimensions", "LutSize", "LutOutputBitDepth"};
    uint8_t head[3] = {};
    bool whole = true;
    gxc_open(writer, "PostRenderLut");
    for (int i = 0; i < 3 && whole; ++i)
    {
        whole = gxc_read_uint8(input, &head[i]);
        if (whole)
            write_uint8(writer, kNames[i], head[i]);
    }
    if (whole)
    {
        const uint32_t bytes = gxc_lut_size(head[0], head[1], head[2], num_base_chans);
        // As many numbers as the table has bytes: readers of the log rely on it.
        whole = head[2] == 16
                    ? gxc_write_array(writer, input, "Lut", GXC_ENTRY_UINT16, bytes >> 1, bytes - (bytes >> 1))
                    : gxc_write_array(writer, input, "Lut", GXC_ENTRY_UINT8, bytes, 0);
    }
    gxc_close(writer, "PostRenderLut");
    return whole;
}
