#include "tests/orvlog/colour/csd-dump.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace
{

using namespace orvlog::test;

std::string element(const std::string& attributes, const std::string& content = "")
{
    return "<GCM_CsdPointer>\n  <GCM_Csd " + attributes + ">\n  </GCM_Csd>\n" + content + "</GCM_CsdPointer>\n";
}

TEST_F(CsdDump, NullsWriteNothing)
{
    ORVLOG_DumpCsdPointer(&writer, nullptr);
    pointer.cp_Csd = nullptr;
    ORVLOG_DumpCsdPointer(&writer, &pointer);
    EXPECT_EQ(stream.text(), "");
}

TEST_F(CsdDump, File)
{
    csd.csd_Type = GCM_CSDTYPE_FILE;
    csd.csd_NumBaseChans = 255;
    csd.csd_HasSecondaryProfile = 1;
    csd.csd_UseIlluminantInfo = 7;
    csd.csd_DefaultRenderIntent = GCM_RI_USER_DEFINED_1;
    csd.csd_IsDeviceLinkProfile = 1;
    csd.csd_Defn.ProfileBufferSize = 99;
    pointer.cp_Filename = "a<b>.icc";
    EXPECT_EQ(dump(), R"X(<GCM_CsdPointer cp_Filename="a\x3cb\x3e.icc">
  <GCM_Csd csd_Type="GCM_CSDTYPE_FILE" csd_NumBaseChans="255" csd_NumNamedChans="0" csd_HasSecondaryProfile="TRUE" csd_HasAlternateDefn="FALSE" csd_UseIlluminantInfo="TRUE" csd_DefaultRenderIntent="GCM_RI_USER_DEFINED_1" csd_IsDeviceLinkProfile="TRUE">
  </GCM_Csd>
</GCM_CsdPointer>
)X");
    pointer.cp_Filename = nullptr;
    EXPECT_EQ(dump().find("<GCM_CsdPointer cp_Filename=\"\">\n"), 0u);
}

TEST_F(CsdDump, TypesAndIntentsByName)
{
    const char* const types[] = {"GCM_CSDTYPE_NO_BASE_CHANS", "GCM_CSDTYPE_POST_RENDER_LUT"};
    const char* const intents[] = {"GCM_RI_PERCEPTUAL",       "GCM_RI_SATURATION",     "GCM_RI_COLORIMETRIC_ABS",
                                   "GCM_RI_COLORIMETRIC_REL", "GCM_RI_USER_DEFINED_1", "UNKNOWN_VALUE(5)"};
    for (uint32_t type = 6; type < 8; ++type)
        for (uint32_t intent = 0; intent < 6; ++intent)
        {
            csd.csd_Type = type;
            csd.csd_DefaultRenderIntent = intent;
            EXPECT_EQ(dump(), element(std::string("csd_Type=\"") + types[type - 6] +
                                      "\" csd_NumBaseChans=\"0\" csd_NumNamedChans=\"0\""
                                      " csd_HasSecondaryProfile=\"FALSE\" csd_HasAlternateDefn=\"FALSE\""
                                      " csd_UseIlluminantInfo=\"FALSE\" csd_DefaultRenderIntent=\"" +
                                      intents[intent] + "\" csd_IsDeviceLinkProfile=\"FALSE\""));
        }
    csd.csd_Type = 9;
    EXPECT_NE(dump().find("<GCM_Csd csd_Type=\"UNKNOWN_VALUE(9)\" "), std::string::npos);
    csd.csd_Type = 0xFFFFFFFF;
    EXPECT_NE(dump().find("<GCM_Csd csd_Type=\"UNKNOWN_VALUE(-1)\" "), std::string::npos);
}

TEST_F(CsdDump, EachTypeHasItsNameAndItsAttribute)
{
    const char* const starts[] = {"csd_Type=\"GCM_CSDTYPE_FILE\"",
                                  "csd_Type=\"GCM_CSDTYPE_PROFILE_BUFFER\"",  // a callback, converted
                                  "csd_Type=\"GCM_CSDTYPE_PROFILE_BUFFER\"",
                                  "csd_Type=\"GCM_CSDTYPE_ANALYTICAL\"",
                                  "csd_Type=\"GCM_CSDTYPE_NONCOLORIMETRIC\"",
                                  "csd_Type=\"GCM_CSDTYPE_CIELUT_DATA\"",
                                  "csd_Type=\"GCM_CSDTYPE_NO_BASE_CHANS\"",
                                  "csd_Type=\"GCM_CSDTYPE_POST_RENDER_LUT\"",
                                  "csd_Type=\"GCM_CSDTYPE_INPUT\"",
                                  "csd_Type=\"UNKNOWN_VALUE(9)\""};
    const char* const ends[] = {"",
                                " csd_Defn.ProfileBufferSize=\"0\"",
                                " csd_Defn.ProfileBufferSize=\"2\"",
                                "",
                                " csd_Defn.NonColorimetric=\"GNC_FORMAT_GRAY\"",
                                " csd_Defn.CieBased=\"GCM_CIE_FAMILY_DEF\"",
                                "",
                                "",
                                " csd_Defn.Input=\"GCM_CSF_CMYK\"",
                                ""};
    csd.csd_NumBaseChans = 4;
    csd.csd_HasSecondaryProfile = 255;
    csd.csd_Defn.ProfileBufferSize = 2;
    for (uint32_t type = 0; type < 10; ++type)
    {
        csd.csd_Type = type;
        EXPECT_NE(dump().find(std::string("  <GCM_Csd ") + starts[type] +
                              " csd_NumBaseChans=\"4\" csd_NumNamedChans=\"0\" csd_HasSecondaryProfile=\"TRUE\""
                              " csd_HasAlternateDefn=\"FALSE\" csd_UseIlluminantInfo=\"FALSE\""
                              " csd_DefaultRenderIntent=\"GCM_RI_PERCEPTUAL\" csd_IsDeviceLinkProfile=\"FALSE\"" +
                              ends[type] + ">\n"),
                  std::string::npos)
            << type;
    }
}

TEST_F(CsdDump, AttributesOfColourSpaceTypeAndWhitePoint)
{
    const char* const types[] = {"GCM_CST_ADDITIVE", "GCM_CST_SUBTRACTIVE", "GCM_CST_OTHER", "UNKNOWN_VALUE(3)"};
    for (uint32_t type = 0; type < 4; ++type)
    {
        stream.clear();
        gcm_attr_color_space_type(&writer, "type", type);
        EXPECT_EQ(stream.text(), std::string(" type=\"") + types[type] + "\"");
    }
    const char* const points[] = {"GCM_WHITEPOINT_D65", "GCM_WHITEPOINT_D50", "UNKNOWN_VALUE(2)"};
    for (uint32_t point = 0; point < 3; ++point)
    {
        stream.clear();
        gcm_attr_white_point(&writer, "point", point);
        EXPECT_EQ(stream.text(), std::string(" point=\"") + points[point] + "\"");
    }
}

// The attribute behind the last of those that each definition has.
std::string last_attribute(const std::string& text)
{
    const std::string before = "csd_IsDeviceLinkProfile=\"FALSE\"";
    const size_t at = text.find(before) + before.size();
    return text.substr(at, text.find('\n', at) - at);
}

TEST_F(CsdDump, DefinitionsByName)
{
    const char* const formats[] = {"GNC_FORMAT_RGB",  "GNC_FORMAT_BGR", "GNC_FORMAT_GRAY", "GNC_FORMAT_CMYK",
                                   "GNC_FORMAT_YMCK", "GNC_FORMAT_K",   "GNC_FORMAT_NONE", "UNKNOWN_VALUE(7)"};
    for (uint32_t value = 0; value < 8; ++value)
    {
        csd.csd_Type = GCM_CSDTYPE_NONCOLORIMETRIC;
        csd.csd_Defn.NonColorimetric = value;
        EXPECT_EQ(last_attribute(dump()), std::string(" csd_Defn.NonColorimetric=\"") + formats[value] + "\">");
    }
    const char* const families[] = {"GCM_CIE_FAMILY_ABC",  "GCM_CIE_FAMILY_A",      "GCM_CIE_FAMILY_DEF",
                                    "GCM_CIE_FAMILY_DEFG", "GCM_CIE_FAMILY_CALRGB", "GCM_CIE_FAMILY_CALGRAY",
                                    "UNKNOWN_VALUE(6)"};
    for (uint32_t value = 0; value < 7; ++value)
    {
        csd.csd_Type = GCM_CSDTYPE_CIELUT_DATA;
        csd.csd_Defn.CieBased = value;
        EXPECT_EQ(last_attribute(dump()), std::string(" csd_Defn.CieBased=\"") + families[value] + "\">");
    }
    const char* const inputs[] = {"GCM_CSF_GRAY", "GCM_CSF_RGB", "GCM_CSF_CMYK", "GCM_CSF_NAMED", "UNKNOWN_VALUE(4)"};
    for (uint32_t value = 0; value < 5; ++value)
    {
        csd.csd_Type = GCM_CSDTYPE_INPUT;
        csd.csd_Defn.Input = value;
        EXPECT_EQ(last_attribute(dump()), std::string(" csd_Defn.Input=\"") + inputs[value] + "\">");
    }
}

TEST_F(CsdDump, Analytical)
{
    csd.csd_Type = GCM_CSDTYPE_ANALYTICAL;
    csd.csd_Defn.Analytical = {GCM_ACS_HVN_RGB, 0.5f, 1, 0.1f, 0, -0.0f, 1e-10f, -128, 127, -100, 100};
    EXPECT_EQ(dump(), R"X(<GCM_CsdPointer>
  <GCM_Csd csd_Type="GCM_CSDTYPE_ANALYTICAL" csd_NumBaseChans="0" csd_NumNamedChans="0" csd_HasSecondaryProfile="FALSE" csd_HasAlternateDefn="FALSE" csd_UseIlluminantInfo="FALSE" csd_DefaultRenderIntent="GCM_RI_PERCEPTUAL" csd_IsDeviceLinkProfile="FALSE">
    <GCM_AnalyticalColorSpace acs_ColorSpace="GCM_ACS_HVN_RGB" acs_WhitePointX="0.5" acs_WhitePointY="1" acs_WhitePointZ="0.100000001" acs_BlackPointX="0" acs_BlackPointY="-0" acs_BlackPointZ="1.00000001e-10" acs_LabAMin="-128" acs_LabAMax="127" acs_LabBMin="-100" acs_LabBMax="100">
    </GCM_AnalyticalColorSpace>
  </GCM_Csd>
</GCM_CsdPointer>
)X");
    const char* const names[] = {"GCM_ACS_XYZ",         "GCM_ACS_LAB",     "GCM_ACS_ADOBE_RGB",
                                 "GCM_ACS_LINEAR_SRGB", "GCM_ACS_SRGB",    "GCM_ACS_SCRGB",
                                 "GCM_ACS_SCRGB16",     "GCM_ACS_HVN_RGB", "UNKNOWN_VALUE(8)"};
    for (uint32_t space = 0; space < 9; ++space)
    {
        csd.csd_Defn.Analytical.acs_ColorSpace = space;
        EXPECT_NE(dump().find(std::string("acs_ColorSpace=\"") + names[space] + "\""), std::string::npos);
    }
}

TEST_F(CsdDump, ProfileBuffer)
{
    std::vector<uint8_t> profile(51, 0xAB);
    profile[50] = 0x01;
    GuardedBlock block(profile.data(), profile.size());
    csd.csd_Type = GCM_CSDTYPE_PROFILE_BUFFER;
    csd.csd_Defn.ProfileBufferSize = 51;
    pointer.cp_ProfileBuffer = block.data();
    std::string row;
    for (int i = 0; i < 50; ++i)
        row += "ab ";
    const std::string text = dump();
    EXPECT_EQ(last_attribute(text), " csd_Defn.ProfileBufferSize=\"51\">");
    EXPECT_NE(text.find("  </GCM_Csd>\n  <BufferUInt8 len=\"51\">\n" + row +
                        "\n01 \n  </BufferUInt8>\n"
                        "</GCM_CsdPointer>\n"),
              std::string::npos);
    csd.csd_Defn.ProfileBufferSize = 0;
    EXPECT_EQ(dump().find("BufferUInt8"), std::string::npos);
    csd.csd_Defn.ProfileBufferSize = 51;
    pointer.cp_ProfileBuffer = nullptr;
    EXPECT_EQ(dump().find("BufferUInt8"), std::string::npos);
}

constexpr const char* kConverted = "\n<!--\nORVLOG: WARNING: Converted a GCM_CSDTYPE_CALLBACK to a "
                                   "GCM_CSDTYPE_PROFILE_BUFFER in order to dump it to the log.\n-->\n";

TEST_F(CsdDump, CallbackStreamIsWrittenInPiecesOf512)
{
    MemoryStream profile(std::string(513, 'A'));
    profile.get()->ops->gio_Seek(profile.get()->instance, 500, GIO_SEEK_SET);
    csd.csd_Type = GCM_CSDTYPE_CALLBACK;
    csd.csd_Defn.CallbackBufferSize = 4711;
    pointer.cp_CallbackStream = profile.get();
    std::string rows;
    for (int i = 0; i < 512; ++i)
        rows += i % 50 == 0 && i != 0 ? "\n41 " : "41 ";
    writer.element_open = 1;
    EXPECT_EQ(dump(), std::string("<GCM_CsdPointer GCM_CsdPointer_callback_dumped_as_profile_buffer=\"TRUE\">\n"
                                  "  <GCM_Csd csd_Type=\"GCM_CSDTYPE_PROFILE_BUFFER\" csd_NumBaseChans=\"0\""
                                  " csd_NumNamedChans=\"0\" csd_HasSecondaryProfile=\"FALSE\""
                                  " csd_HasAlternateDefn=\"FALSE\" csd_UseIlluminantInfo=\"FALSE\""
                                  " csd_DefaultRenderIntent=\"GCM_RI_PERCEPTUAL\" csd_IsDeviceLinkProfile=\"FALSE\""
                                  " csd_Defn.ProfileBufferSize=\"0\">\n"
                                  "  </GCM_Csd>\n") +
                          kConverted + "  <BufferUInt8 len=\"512\">\n" + rows + "\n  </BufferUInt8>\n" +
                          "  <BufferUInt8 len=\"1\">\n41 \n  </BufferUInt8>\n</GCM_CsdPointer>\n");
    EXPECT_EQ(profile.get()->ops->gio_Eof(profile.get()->instance), 0);
    EXPECT_EQ(csd.csd_Type, uint32_t{GCM_CSDTYPE_CALLBACK});
    EXPECT_EQ(csd.csd_Defn.CallbackBufferSize, 4711u);
}

TEST_F(CsdDump, AnEmptyCallbackStreamWritesNoBuffer)
{
    MemoryStream profile;
    csd.csd_Type = GCM_CSDTYPE_CALLBACK;
    pointer.cp_CallbackStream = profile.get();
    std::string text = dump();
    EXPECT_EQ(text.find(std::string(kConverted) + "<GCM_CsdPointer GCM_CsdPointer_callback_dumped"), 0u);
    EXPECT_EQ(text.find("<BufferUInt8"), std::string::npos);
    pointer.cp_CallbackStream = nullptr;
    EXPECT_EQ(dump(), text);
    MemoryStream failing("abc");
    failing.fail(1, true);
    pointer.cp_CallbackStream = failing.get();
    EXPECT_EQ(dump(), text);
}

TEST_F(CsdDump, ACallbackStreamMayLackOperations)
{
    MemoryStream profile("AB");
    GIO_StreamOps ops = {};
    GIO_Stream bare = {profile.get()->instance, profile.get()->kind, &ops};
    csd.csd_Type = GCM_CSDTYPE_CALLBACK;
    pointer.cp_CallbackStream = &bare;
    EXPECT_EQ(dump().find("<BufferUInt8"), std::string::npos);
    ops.gio_Read = profile.get()->ops->gio_Read;
    EXPECT_NE(dump().find("  <BufferUInt8 len=\"2\">\n41 42 \n  </BufferUInt8>\n"), std::string::npos);
    ops.gio_Eof = profile.get()->ops->gio_Eof;
    ops.gio_Seek = profile.get()->ops->gio_Seek;
    EXPECT_NE(dump().find("  <BufferUInt8 len=\"2\">\n41 42 \n  </BufferUInt8>\n"), std::string::npos);
    ops.gio_Eof = nullptr;
    ops.gio_ClearErr = profile.get()->ops->gio_ClearErr;
    EXPECT_NE(dump().find("  <BufferUInt8 len=\"2\">\n41 42 \n  </BufferUInt8>\n"), std::string::npos);
    bare.ops = nullptr;
    EXPECT_EQ(dump().find("<BufferUInt8"), std::string::npos);
}

// A stream of zeros that gives at most `piece` bytes a read.
struct Zeros
{
    uint64_t left;
    uint64_t piece;
    GIO_StreamOps ops = {};
    GIO_Stream handle = {this, 0, &ops};

    Zeros(uint64_t size, uint64_t most) : left(size), piece(most)
    {
        ops.gio_Read = [](void* buffer, uint64_t, uint64_t count, void* context)
        {
            auto* self = static_cast<Zeros*>(context);
            const uint64_t given = std::min({count, self->piece, self->left});
            std::memset(buffer, 0, given);
            self->left -= given;
            return given;
        };
    }
};

// What counts is how many bytes came, not how often they were asked for.
TEST_F(CsdDump, ACallbackStreamOfShortReadsIsWrittenWhole)
{
    constexpr uint32_t kSize = 600000;
    Zeros profile(kSize, 1);
    csd.csd_Type = GCM_CSDTYPE_CALLBACK;
    pointer.cp_CallbackStream = &profile.handle;
    const std::string text = dump();
    const std::string one = "  <BufferUInt8 len=\"1\">\n00 \n  </BufferUInt8>\n";
    EXPECT_EQ(text.size() - text.find("  <BufferUInt8"), kSize * one.size() + std::strlen("</GCM_CsdPointer>\n"));
    EXPECT_EQ(text.find("WARNING", text.find("<BufferUInt8")), std::string::npos);
}

// A log of which only the warnings are kept, and the bytes counted that its buffers tell of.
struct RowCounter
{
    uint64_t bytes = 0;
    std::string warnings;
    GIO_StreamOps ops = {};
    GIO_Stream handle = {this, 0, &ops};

    RowCounter()
    {
        ops.gio_VPrintf = [](void* context, const char* format, va_list args) -> int32_t
        {
            auto* self = static_cast<RowCounter*>(context);
            if (std::strcmp(format, "%s") != 0)
                return 0;
            const char* text = va_arg(args, const char*);
            const size_t length = std::strlen(text);
            const char* len = length < 100 ? std::strstr(text, "len=\"") : nullptr;
            if (len != nullptr)
                self->bytes += std::strtoull(len + 5, nullptr, 10);
            else if (std::strstr(text, "WARNING") != nullptr)
                self->warnings += text;
            return static_cast<int32_t>(length);
        };
    }
};

TEST_F(CsdDump, ACallbackStreamEndsAtItsBoundWithAWarning)
{
    constexpr uint64_t kBound = 268435456;
    const std::string converted = "ORVLOG: WARNING: Converted a GCM_CSDTYPE_CALLBACK to a GCM_CSDTYPE_PROFILE_BUFFER "
                                  "in order to dump it to the log.\n";
    for (const uint64_t beyond : {uint64_t{0}, uint64_t{100}})
    {
        RowCounter log;
        writer.stream = &log.handle;
        Zeros profile(kBound + beyond, 300);
        csd.csd_Type = GCM_CSDTYPE_CALLBACK;
        pointer.cp_CallbackStream = &profile.handle;
        dump();
        EXPECT_EQ(log.bytes, kBound);
        EXPECT_EQ(log.warnings,
                  beyond == 0 ? converted
                              : converted + "ORVLOG: WARNING: The profile of a callback definition is too large; it is "
                                            "cut short.\n");
    }
}

// More bytes than were asked for cannot have been read.
TEST_F(CsdDump, ACallbackStreamThatLiesAboutItsBytesIsNotBelieved)
{
    MemoryStream profile("AB");
    GIO_StreamOps ops = *profile.get()->ops;
    ops.gio_Read = [](void*, uint64_t, uint64_t, void*) { return UINT64_MAX; };
    GIO_Stream lying = {profile.get()->instance, profile.get()->kind, &ops};
    csd.csd_Type = GCM_CSDTYPE_CALLBACK;
    pointer.cp_CallbackStream = &lying;
    EXPECT_EQ(dump().find("<BufferUInt8"), std::string::npos);
    ops.gio_Read = [](void*, uint64_t, uint64_t, void*) { return uint64_t{513}; };
    EXPECT_EQ(dump().find("<BufferUInt8"), std::string::npos);
}

TEST_F(CsdDump, NamesOfChannels)
{
    csd.csd_Type = GCM_CSDTYPE_NO_BASE_CHANS;
    pointer.cp_NamedChans[0] = "Spot \"1\"";
    EXPECT_EQ(dump().find("cp_"), std::string::npos);
    csd.csd_NumNamedChans = 2;
    EXPECT_NE(dump().find(R"X(  </GCM_Csd>
  <GCM_CsdPointer.cp_NamedChans>
    <CStr val="Spot \x221\x22">
    </CStr>
    <CStr val="">
    </CStr>
  </GCM_CsdPointer.cp_NamedChans>
</GCM_CsdPointer>
)X"),
              std::string::npos);
    csd.csd_NumNamedChans = 255;
    const std::string text = dump();
    size_t names = 0;
    for (size_t at = text.find("<CStr"); at != std::string::npos; at = text.find("<CStr", at + 1))
        ++names;
    EXPECT_EQ(names, 8u);
}

TEST_F(CsdDump, AlternateAndTintTransformAreWrapped)
{
    GCM_Csd other = {};
    other.csd_Type = GCM_CSDTYPE_INPUT;
    other.csd_Defn.Input = GCM_CSF_RGB;
    GCM_CsdPointer alternate = {};
    alternate.cp_Csd = &other;
    csd.csd_Type = GCM_CSDTYPE_NO_BASE_CHANS;
    csd.csd_HasAlternateDefn = 1;
    pointer.cp_AlternateDefn = &alternate;
    pointer.cp_TintTransformAltDefn = &alternate;
    const std::string inner = R"X(    <GCM_CsdPointer>
      <GCM_Csd csd_Type="GCM_CSDTYPE_INPUT" csd_NumBaseChans="0" csd_NumNamedChans="0" csd_HasSecondaryProfile="FALSE" csd_HasAlternateDefn="FALSE" csd_UseIlluminantInfo="FALSE" csd_DefaultRenderIntent="GCM_RI_PERCEPTUAL" csd_IsDeviceLinkProfile="FALSE" csd_Defn.Input="GCM_CSF_RGB">
      </GCM_Csd>
    </GCM_CsdPointer>
)X";
    const std::string one = "  <ORVLOG_WRAPPER name=\"cp_AlternateDefn\">\n" + inner + "  </ORVLOG_WRAPPER>\n";
    const std::string two = "  <ORVLOG_WRAPPER name=\"cp_TintTransformAltDefn\">\n" + inner + "  </ORVLOG_WRAPPER>\n";
    std::string text = dump();
    EXPECT_EQ(text.substr(text.find("  </GCM_Csd>\n")), "  </GCM_Csd>\n" + one + "</GCM_CsdPointer>\n");
    csd.csd_NumNamedChans = 1;
    text = dump();
    EXPECT_EQ(text.substr(text.find("  </GCM_Csd>\n")), "  </GCM_Csd>\n" + one + two + "</GCM_CsdPointer>\n");
    csd.csd_HasAlternateDefn = 0;
    text = dump();
    EXPECT_EQ(text.substr(text.find("  </GCM_Csd>\n")), "  </GCM_Csd>\n" + two + "</GCM_CsdPointer>\n");
    pointer.cp_TintTransformAltDefn = nullptr;
    text = dump();
    EXPECT_EQ(text.substr(text.find("  </GCM_Csd>\n")),
              "  </GCM_Csd>\n  <ORVLOG_WRAPPER name=\"cp_TintTransformAltDefn\">\n  </ORVLOG_WRAPPER>\n"
              "</GCM_CsdPointer>\n");
}

TEST_F(CsdDump, WrapperHasItsNameEscaped)
{
    csd.csd_Type = GCM_CSDTYPE_NO_BASE_CHANS;
    stream.clear();
    ORVLOG_DumpCsdWrapper(&writer, &pointer, "a&b");
    EXPECT_EQ(stream.text().find("<ORVLOG_WRAPPER name=\"a\\x26b\">\n  <GCM_CsdPointer>\n    <GCM_Csd "), 0u);
    stream.clear();
    ORVLOG_DumpCsdWrapper(&writer, nullptr, "none");
    EXPECT_EQ(stream.text(), "<ORVLOG_WRAPPER name=\"none\">\n</ORVLOG_WRAPPER>\n");
}

TEST_F(CsdDump, ACircleOfDefinitionsEndsWithAWarning)
{
    csd.csd_Type = GCM_CSDTYPE_NO_BASE_CHANS;
    csd.csd_HasAlternateDefn = 1;
    csd.csd_NumNamedChans = 1;
    pointer.cp_AlternateDefn = &pointer;
    pointer.cp_TintTransformAltDefn = &pointer;
    ORVLOG_DumpCsdPointer(&writer, &pointer);
    const std::string text = stream.text();
    size_t opened = 0;
    size_t closed = 0;
    size_t warned = 0;
    for (size_t at = 0; at < text.size(); at = text.find('\n', at) + 1)
    {
        const std::string line = text.substr(at, text.find('\n', at) - at);
        const size_t indent = line.find('<');
        opened += indent != std::string::npos && line.substr(indent) == "<GCM_CsdPointer>" ? 1 : 0;
        closed += indent != std::string::npos && line.substr(indent) == "</GCM_CsdPointer>" ? 1 : 0;
        warned += line == "ORVLOG: WARNING: Colour space definitions refer to one another without end; the rest is "
                          "left out."
                      ? 1
                      : 0;
    }
    EXPECT_EQ(opened, 1024u);
    EXPECT_EQ(closed, 1024u);
    EXPECT_EQ(warned, 1u);
    EXPECT_EQ(writer.depth, 0u);
}

TEST_F(CsdDump, AWrapperHoldsAsManyDefinitions)
{
    csd.csd_Type = GCM_CSDTYPE_NO_BASE_CHANS;
    csd.csd_HasAlternateDefn = 1;
    csd.csd_NumNamedChans = 1;
    pointer.cp_AlternateDefn = &pointer;
    pointer.cp_TintTransformAltDefn = &pointer;
    ORVLOG_DumpCsdWrapper(&writer, &pointer, "w");
    const std::string text = stream.text();
    size_t opened = 0;
    for (size_t at = text.find("<GCM_CsdPointer>\n"); at != std::string::npos;
         at = text.find("<GCM_CsdPointer>\n", at + 1))
        ++opened;
    EXPECT_EQ(opened, 1024u);
    EXPECT_EQ(writer.depth, 0u);
}

TEST_F(CsdDump, AThousandLevelsOfAlternatesAreWhole)
{
    std::vector<GCM_CsdPointer> chain(1002);
    csd.csd_Type = GCM_CSDTYPE_NO_BASE_CHANS;
    csd.csd_HasAlternateDefn = 1;
    for (size_t i = 0; i < chain.size(); ++i)
    {
        chain[i].cp_Csd = &csd;
        chain[i].cp_AlternateDefn = i + 1 < chain.size() ? &chain[i + 1] : nullptr;
    }
    ORVLOG_DumpCsdPointer(&writer, &chain[1]);
    const std::string whole = stream.text();
    EXPECT_EQ(whole.find("WARNING"), std::string::npos);
    size_t opened = 0;
    for (size_t at = whole.find("<GCM_CsdPointer>\n"); at != std::string::npos;
         at = whole.find("<GCM_CsdPointer>\n", at + 1))
        ++opened;
    EXPECT_EQ(opened, 1001u);
    stream.clear();
    ORVLOG_DumpCsdPointer(&writer, &chain[0]);
    EXPECT_NE(stream.text().find("WARNING"), std::string::npos);
}

TEST_F(CsdDump, AMillionAlternatesEndWithAWarning)
{
    std::vector<GCM_CsdPointer> chain(1000000);
    csd.csd_Type = GCM_CSDTYPE_NO_BASE_CHANS;
    csd.csd_HasAlternateDefn = 1;
    for (size_t i = 0; i < chain.size(); ++i)
    {
        chain[i].cp_Csd = &csd;
        chain[i].cp_AlternateDefn = i + 1 < chain.size() ? &chain[i + 1] : nullptr;
    }
    ORVLOG_DumpCsdPointer(&writer, chain.data());
    EXPECT_NE(stream.text().find("\n<!--\nORVLOG: WARNING: Colour space definitions refer to one another without end; "
                                 "the rest is left out.\n-->\n"),
              std::string::npos);
    EXPECT_EQ(writer.depth, 0u);
}

}  // namespace
