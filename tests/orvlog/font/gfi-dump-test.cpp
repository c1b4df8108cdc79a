#include "orvlog/font/gfi-dump.h"

#include "tests/support/record-log.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace
{

using orvlog::test::attribute_of;
using orvlog::test::Guarded;
using orvlog::test::Parts;
using orvlog::test::RecordLog;

GFI_GlyphDesc head(uint32_t type)
{
    return {type, {0, 0}};
}

Parts with_payload(Parts parts, uint32_t count)
{
    for (uint32_t i = 0; i < count; ++i)
        parts.add(static_cast<uint8_t>(i));
    return parts;
}

std::string dump(const Parts& parts)
{
    RecordLog log;
    Guarded<GFI_GlyphDesc> desc(parts);
    dump_glyph_desc(log.writer(), desc.get());
    return log.take();
}

Parts bitmap(uint16_t width, uint16_t height, uint16_t row_step)
{
    return with_payload(Parts().add(head(GFI_GDT_BITMAP)).add(width).add(height).add(row_step).add(uint16_t{1}),
                        uint32_t{height} * row_step);
}

TEST(GfiDump, GlyphDescHead)
{
    RecordLog log;
    const std::array<std::string, 6> types = {"GFI_GDT_FBE",      "GFI_GDT_BITMAP", "GFI_GDT_PATH",
                                              "GFI_GDT_TRUETYPE", "GFI_GDT_RLE",    "UNKNOWN_VALUE(5)"};
    for (uint32_t type = 0; type < types.size(); ++type)
    {
        Guarded<GFI_GlyphDesc> desc(GFI_GlyphDesc{type, {0.5, -1}});
        dump_GFI_GlyphDesc(log.writer(), desc.get());
        EXPECT_EQ(log.take(), "<GFI_GlyphDesc gd_Type=\"" + types[type] + "\" gd_Offset=\"0.5 -1 \"/>\n");
    }
}

TEST(GfiDump, BitmapHasARowForEachRow)
{
    EXPECT_EQ(dump(bitmap(20, 4, 4)),
              R"(<GFI_GlyphDescBitmap gdb_Width="20" gdb_Height="4" gdb_Rowstep="4" gdb_BlackIsOne="1">
  <GFI_GlyphDesc gd_Type="GFI_GDT_BITMAP" gd_Offset="0 0 "/>
  <BufferUInt8 len="16">
00 01 02 03 
04 05 06 07 
08 09 0a 0b 
0c 0d 0e 0f 
  </BufferUInt8>
</GFI_GlyphDescBitmap>
)");
}

TEST(GfiDump, BitmapWithoutRowsHasNoBuffer)
{
    const std::string expected = R"(<GFI_GlyphDescBitmap gdb_Width="20" gdb_Height="0" gdb_Rowstep="4" )"
                                 R"(gdb_BlackIsOne="1">
  <GFI_GlyphDesc gd_Type="GFI_GDT_BITMAP" gd_Offset="0 0 "/>
</GFI_GlyphDescBitmap>
)";
    EXPECT_EQ(dump(bitmap(20, 0, 4)), expected);
    EXPECT_EQ(dump(bitmap(20, 4, 0)).find("BufferUInt8"), std::string::npos);
}

TEST(GfiDump, BitmapRowsAreCutAt80Bytes)
{
    const std::string text = dump(bitmap(640, 2, 88));
    EXPECT_NE(text.find("\n50 51 52 53 54 55 56 57 58 59 5a 5b 5c 5d 5e 5f 60 61 "), std::string::npos);
    EXPECT_NE(text.find(" len=\"176\""), std::string::npos);
}

TEST(GfiDump, Fbe)
{
    EXPECT_EQ(
        dump(with_payload(Parts().add(head(GFI_GDT_FBE)).add(uint16_t{65535}).add(uint16_t{3}).add(uint32_t{56}), 56)),
        R"(<GFI_GlyphDescFBE gdf_Width="65535" gdf_Height="3" gdf_FbeSize="56">
  <GFI_GlyphDesc gd_Type="GFI_GDT_FBE" gd_Offset="0 0 "/>
  <BufferUInt8 len="56">
00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 11 12 13 14 15 16 17 18 19 1a 1b 1c 1d 1e 1f 20 21 22 23 24 25 26 27 28 29 2a 2b 2c 2d 2e 2f 30 31 
32 33 34 35 36 37 
  </BufferUInt8>
</GFI_GlyphDescFBE>
)");
}

TEST(GfiDump, PathDescriptionHasNoPayload)
{
    for (uint32_t rule = 0; rule < 3; ++rule)
    {
        const std::array<std::string, 3> names = {"GPA_WINDING_ODD_EVEN", "GPA_WINDING_NON_ZERO", "UNKNOWN_VALUE(2)"};
        EXPECT_EQ(dump(Parts().add(head(GFI_GDT_PATH)).add(rule).add(uint32_t{0})),
                  "<GFI_GlyphDescPath gdp_WindingRule=\"" + names[rule] +
                      "\">\n  <GFI_GlyphDesc gd_Type=\"GFI_GDT_PATH\" gd_Offset=\"0 0 \"/>\n</GFI_GlyphDescPath>\n");
    }
}

TEST(GfiDump, TrueTypePayloadStandsDirectlyBehindItsSize)
{
    EXPECT_EQ(dump(with_payload(Parts().add(head(GFI_GDT_TRUETYPE)).add(uint16_t{6}), 6)),
              R"(<GFI_GlyphDescTrueType gdt_TrueTypeSize="6">
  <GFI_GlyphDesc gd_Type="GFI_GDT_TRUETYPE" gd_Offset="0 0 "/>
  <BufferUInt8 len="6">
00 01 02 03 04 05 
  </BufferUInt8>
</GFI_GlyphDescTrueType>
)");
}

TEST(GfiDump, RlePayloadStandsDirectlyBehindItsSize)
{
    EXPECT_EQ(dump(with_payload(Parts().add(head(GFI_GDT_RLE)).add(uint16_t{7}).add(uint16_t{8}).add(uint16_t{2}), 2)),
              R"(<GFI_GlyphDescRLE gdr_Width="7" gdr_Height="8" gdr_RleSize="2">
  <GFI_GlyphDesc gd_Type="GFI_GDT_RLE" gd_Offset="0 0 "/>
  <BufferUInt8 len="2">
00 01 
  </BufferUInt8>
</GFI_GlyphDescRLE>
)");
}

TEST(GfiDump, UnknownDescriptionWritesNothing)
{
    EXPECT_EQ(dump(Parts().add(head(5))), "");
    EXPECT_EQ(dump(Parts().add(head(0xFFFFFFFF))), "");
}

TEST(GfiDump, PathGlyphHasItsPathBesideIt)
{
    RecordLog log;
    GPA_Path path = {};
    GPA_PathPointer path_pointer = {};
    path_pointer.lpp_Path = &path;
    Guarded<GFI_GlyphDescPath> desc(GFI_GlyphDescPath{head(GFI_GDT_PATH), 1});
    Guarded<GFI_GlyphDescPointer> pointer(
        GFI_GlyphDescPointer{reinterpret_cast<const GFI_GlyphDesc*>(desc.get()), &path_pointer});
    dump_GFI_GlyphDescPointer(log.writer(), pointer.get());
    EXPECT_EQ(log.take(), R"(<GFI_GlyphDescPointer>
  <GFI_GlyphDescPointer.gdp_GlyphDesc>
    <GFI_GlyphDescPath gdp_WindingRule="GPA_WINDING_NON_ZERO">
      <GFI_GlyphDesc gd_Type="GFI_GDT_PATH" gd_Offset="0 0 "/>
    </GFI_GlyphDescPath>
    <GPA_PathPointer lpp_EnablePixelPlacement="FALSE" lpp_PathOwned="FALSE">
      <GPA_Path pa_NumEdges="0" pa_PathHints="[0] GPA_HINT_NONE " pa_EnclosingBox="0 0 0 0 ">
        <GPA_Path.pa_EdgeStart>
        </GPA_Path.pa_EdgeStart>
      </GPA_Path>
      <GPA_PathPointer.lpp_EdgePointer>
      </GPA_PathPointer.lpp_EdgePointer>
    </GPA_PathPointer>
  </GFI_GlyphDescPointer.gdp_GlyphDesc>
</GFI_GlyphDescPointer>
)");
}

TEST(GfiDump, OtherGlyphsShowNoPath)
{
    RecordLog log;
    GPA_PathPointer path_pointer = {};
    Guarded<GFI_GlyphDesc> desc(with_payload(Parts().add(head(GFI_GDT_TRUETYPE)).add(uint16_t{0}), 6));
    const GFI_GlyphDescPointer pointer = {desc.get(), &path_pointer};
    dump_GFI_GlyphDescPointer(log.writer(), &pointer);
    EXPECT_EQ(log.take(), R"(<GFI_GlyphDescPointer>
  <GFI_GlyphDescPointer.gdp_GlyphDesc>
    <GFI_GlyphDescTrueType gdt_TrueTypeSize="0">
      <GFI_GlyphDesc gd_Type="GFI_GDT_TRUETYPE" gd_Offset="0 0 "/>
    </GFI_GlyphDescTrueType>
  </GFI_GlyphDescPointer.gdp_GlyphDesc>
</GFI_GlyphDescPointer>
)");
}

TEST(GfiDump, GlyphsWithoutAPathOrOfAnUnknownTypeLeaveItOut)
{
    RecordLog log;
    GPA_PathPointer path_pointer = {};
    Guarded<GFI_GlyphDesc> unknown(head(5));
    const GFI_GlyphDescPointer pointer = {unknown.get(), &path_pointer};
    dump_GFI_GlyphDescPointer(log.writer(), &pointer);
    EXPECT_EQ(log.take(), R"(<GFI_GlyphDescPointer>
  <GFI_GlyphDescPointer.gdp_GlyphDesc>
  </GFI_GlyphDescPointer.gdp_GlyphDesc>
</GFI_GlyphDescPointer>
)");
    Guarded<GFI_GlyphDescPath> path(GFI_GlyphDescPath{head(GFI_GDT_PATH), 0});
    const GFI_GlyphDescPointer bare = {reinterpret_cast<const GFI_GlyphDesc*>(path.get()), nullptr};
    dump_GFI_GlyphDescPointer(log.writer(), &bare);
    EXPECT_EQ(log.take(), R"(<GFI_GlyphDescPointer>
  <GFI_GlyphDescPointer.gdp_GlyphDesc>
    <GFI_GlyphDescPath gdp_WindingRule="GPA_WINDING_ODD_EVEN">
      <GFI_GlyphDesc gd_Type="GFI_GDT_PATH" gd_Offset="0 0 "/>
    </GFI_GlyphDescPath>
  </GFI_GlyphDescPointer.gdp_GlyphDesc>
</GFI_GlyphDescPointer>
)");
}

TEST(GfiDump, MissingGlyphIsWarnedOf)
{
    RecordLog log;
    const GFI_GlyphDescPointer pointer = {nullptr, nullptr};
    dump_GFI_GlyphDescPointer(log.writer(), &pointer);
    EXPECT_EQ(log.take(), R"(<GFI_GlyphDescPointer>
  <GFI_GlyphDescPointer.gdp_GlyphDesc>
  </GFI_GlyphDescPointer.gdp_GlyphDesc>

<!--
ORVLOG: WARNING: GFI_GlyphDescPointer without a glyph description.
-->
</GFI_GlyphDescPointer>
)");
}

TEST(GfiDump, FontSpec)
{
    RecordLog log;
    Guarded<GFI_FontSpec> spec(GFI_FontSpec{12, 0, 2});
    Guarded<GFI_FontSpecPointer> pointer(GFI_FontSpecPointer{spec.get()});
    dump_GFI_FontSpecPointer(log.writer(), pointer.get());
    EXPECT_EQ(log.take(), R"(<GFI_FontSpecPointer>
  <GFI_FontSpec ufs_FontSize="12" ufs_Direction="GFI_TD_LEFT_TO_RIGHT" ufs_FontVolatility="GFI_FV_STATIC">
  </GFI_FontSpec>
</GFI_FontSpecPointer>
)");
    const std::array<std::string, 4> directions = {"GFI_TD_LEFT_TO_RIGHT", "GFI_TD_RIGHT_TO_LEFT",
                                                   "GFI_TD_TOP_TO_BOTTOM", "UNKNOWN_VALUE(3)"};
    const std::array<std::string, 4> volatilities = {"GFI_FV_GLYPH", "GFI_FV_STRING", "GFI_FV_STATIC",
                                                     "UNKNOWN_VALUE(3)"};
    for (uint8_t value = 0; value < 4; ++value)
    {
        *spec.edit() = {0.1F, value, static_cast<uint8_t>(3 - value)};
        dump_GFI_FontSpecPointer(log.writer(), pointer.get());
        const std::string text = log.take();
        EXPECT_EQ(attribute_of(text, "ufs_FontSize"), "0.100000001");
        EXPECT_EQ(attribute_of(text, "ufs_Direction"), directions[value]);
        EXPECT_EQ(attribute_of(text, "ufs_FontVolatility"), volatilities[3 - value]);
    }
}

TEST(GfiDump, FontSpecPointerMayBeEmpty)
{
    RecordLog log;
    Guarded<GFI_FontSpecPointer> pointer(GFI_FontSpecPointer{nullptr});
    dump_GFI_FontSpecPointer(log.writer(), pointer.get());
    EXPECT_EQ(log.take(), "<GFI_FontSpecPointer>\n</GFI_FontSpecPointer>\n");
}

TEST(GfiDump, ClustersAndGlyphsStandAtOneIndent)
{
    RecordLog log(1);
    Guarded<GFI_StringDesc> desc(GFI_StringDesc{3, 2, 65535});
    const std::array<uint8_t, 3> bytes = {0, 65, 255};
    orvlog::test::GuardedBlock text(bytes.data(), bytes.size());
    Guarded<GFI_GlyphSpec> first(
        Parts().add(GFI_GlyphSpec{1, 65535, 0.5F, -0.5F, 0}).add(GFI_GlyphSpec{0, 2, 0, 0, 0.1F}));
    Guarded<GFI_GlyphClusterSpec> clusters(
        Parts().add(GFI_GlyphClusterSpec{3, 2, first.get()}).add(GFI_GlyphClusterSpec{65535, 0, nullptr}));
    Guarded<GFI_StringDescPointer> pointer(GFI_StringDescPointer{desc.get(), text.data(), clusters.get()});
    dump_GFI_StringDescPointer(log.writer(), pointer.get());
    EXPECT_EQ(log.take(),
              R"(  <GFI_StringDescPointer gsp_StringDesc.gsd_TextLen="3" gsp_StringDesc.gsd_GlyphMappingLen="2" )"
              R"(gsp_StringDesc.gsd_StyleSimulation="65535" gsp_TextPtr="0 65 255 ">
  <GFI_GlyphClusterSpec gcs_nCharacters="3" gcs_nGlyphIndices="2">
  <GFI_GlyphSpec ggs_Flags="1" ggs_GlyphIndex="65535" ggs_OffsetX="0.5" ggs_OffsetY="-0.5" ggs_AdvanceOverride="0">
  </GFI_GlyphSpec>
  <GFI_GlyphSpec ggs_Flags="0" ggs_GlyphIndex="2" ggs_OffsetX="0" ggs_OffsetY="0" ggs_AdvanceOverride="0.100000001">
  </GFI_GlyphSpec>
  </GFI_GlyphClusterSpec>
  <GFI_GlyphClusterSpec gcs_nCharacters="65535" gcs_nGlyphIndices="0">
  </GFI_GlyphClusterSpec>
  </GFI_StringDescPointer>
)");
}

TEST(GfiDump, EmptyStringHasNoText)
{
    RecordLog log;
    const GFI_StringDesc desc = {0, 0, 0};
    const uint8_t text = 1;
    const GFI_StringDescPointer pointer = {&desc, &text, nullptr};
    dump_GFI_StringDescPointer(log.writer(), &pointer);
    EXPECT_EQ(log.take(), R"(<GFI_StringDescPointer gsp_StringDesc.gsd_TextLen="0" )"
                          R"(gsp_StringDesc.gsd_GlyphMappingLen="0" gsp_StringDesc.gsd_StyleSimulation="0">
</GFI_StringDescPointer>
)");
}

TEST(GfiDump, StringWithoutItsArraysIsWarnedOf)
{
    RecordLog log;
    const GFI_StringDesc desc = {2, 1, 0};
    const GFI_StringDescPointer pointer = {&desc, nullptr, nullptr};
    dump_GFI_StringDescPointer(log.writer(), &pointer);
    EXPECT_EQ(log.take(), R"(<GFI_StringDescPointer gsp_StringDesc.gsd_TextLen="2" )"
                          R"(gsp_StringDesc.gsd_GlyphMappingLen="1" gsp_StringDesc.gsd_StyleSimulation="0" )"
                          R"(gsp_TextPtr="">
</GFI_StringDescPointer>

<!--
ORVLOG: WARNING: GFI_StringDescPointer without its glyph mapping.
-->

<!--
ORVLOG: WARNING: GFI_StringDescPointer without its text.
-->
)");
    const GFI_StringDescPointer bare = {nullptr, nullptr, nullptr};
    dump_GFI_StringDescPointer(log.writer(), &bare);
    EXPECT_EQ(log.take(), R"(<GFI_StringDescPointer>
</GFI_StringDescPointer>

<!--
ORVLOG: WARNING: GFI_StringDescPointer without a string description.
-->
)");
    const GFI_GlyphClusterSpec cluster = {1, 3, nullptr};
    dump_GFI_GlyphClusterSpec(log.writer(), &cluster);
    EXPECT_EQ(log.take(), R"(<GFI_GlyphClusterSpec gcs_nCharacters="1" gcs_nGlyphIndices="3">
</GFI_GlyphClusterSpec>

<!--
ORVLOG: WARNING: GFI_GlyphClusterSpec without its glyphs.
-->
)");
}

TEST(GfiDump, ClustersEndAt65535)
{
    RecordLog log;
    const std::vector<GFI_GlyphClusterSpec> clusters(65535);
    orvlog::test::GuardedBlock block(clusters.data(), clusters.size() * sizeof clusters[0]);
    GFI_StringDesc desc = {0, 65536, 0};
    const GFI_StringDescPointer pointer = {&desc, nullptr, block.as<GFI_GlyphClusterSpec>()};
    dump_GFI_StringDescPointer(log.writer(), &pointer);
    const std::string text = log.take();
    size_t count = 0;
    for (size_t at = text.find("<GFI_GlyphClusterSpec"); at != std::string::npos;
         at = text.find("<GFI_GlyphClusterSpec", at + 1))
        ++count;
    EXPECT_EQ(count, 65535U);
    EXPECT_NE(text.find("ORVLOG: WARNING: GFI_StringDescPointer with more than 65535 clusters.\n"), std::string::npos);
    EXPECT_TRUE(text.ends_with("</GFI_StringDescPointer>\n"));
    desc.gsd_GlyphMappingLen = 65535;
    dump_GFI_StringDescPointer(log.writer(), &pointer);
    EXPECT_EQ(log.take().find("WARNING"), std::string::npos);
}

GFI_FontSubstInfo subst_info()
{
    return {1, 2, 3, 4, 5, 0.5F, 6, 1, {0, 1, 2, 3, 4, 5, 6, 7, 8, 255}, {9, 10}, 1000, 11, 12, 13, 14, 15, -16};
}

TEST(GfiDump, FontSubstInfo)
{
    RecordLog log;
    Guarded<GFI_FontSubstInfo> info(subst_info());
    dump_GFI_FontSubstInfo(log.writer(), info.get());
    EXPECT_EQ(log.take(), R"(<GFI_FontSubstInfo fsi_FontWeight="1" fsi_FontStretch="2" fsi_FontStyle="3" )"
                          R"(fsi_FontSmallCaps="4" fsi_FontAllCaps="5" fsi_FontFamily="6" fsi_ObliqueAngle="0.5" )"
                          R"(fsi_PanoseValid="TRUE" fsi_Panose="0 1 2 3 4 5 6 7 8 255 " fsi_OsFamilyClass="9 10 " )"
                          R"(fsi_EmSquareSize="1000" fsi_StemV="11" fsi_StemH="12" fsi_CapHeight="13" )"
                          R"(fsi_XHeight="14" fsi_Ascent="15" fsi_Descent="-16">
</GFI_FontSubstInfo>
)");
}

TEST(GfiDump, FontSubstInfoLeavesOutWhatIsNotValid)
{
    RecordLog log;
    for (const float em : {0.0F, -0.0F, -1.0F})
    {
        GFI_FontSubstInfo info = subst_info();
        info.fsi_PanoseValid = 0;
        info.fsi_EmSquareSize = em;
        dump_GFI_FontSubstInfo(log.writer(), &info);
        const std::string shown = em < 0 ? "-1" : std::signbit(em) ? "-0" : "0";
        EXPECT_EQ(log.take(), R"(<GFI_FontSubstInfo fsi_FontWeight="1" fsi_FontStretch="2" fsi_FontStyle="3" )"
                              R"(fsi_FontSmallCaps="4" fsi_FontAllCaps="5" fsi_FontFamily="6" )"
                              R"(fsi_ObliqueAngle="0.5" fsi_PanoseValid="FALSE" fsi_OsFamilyClass="9 10 " )"
                              R"(fsi_EmSquareSize=")" +
                                  shown + "\">\n</GFI_FontSubstInfo>\n");
    }
}

TEST(GfiDump, DescriptionTypesUnderTheNameOfAnArgument)
{
    RecordLog log;
    gfi_attr_glyph_desc_type(log.writer(), "required_desc_type", 4);
    EXPECT_EQ(log.take(), " required_desc_type=\"GFI_GDT_RLE\"");
    gfi_attr_glyph_desc_type(log.writer(), "requested_desc_type", 0x80000000);
    EXPECT_EQ(log.take(), " requested_desc_type=\"UNKNOWN_VALUE(-2147483648)\"");
}

TEST(GfiDump, CharacterEncodings)
{
    RecordLog log;
    const std::array<std::string, 10> names = {
        "GFI_CE_NO_INFO",      "GFI_CE_UNICODE_32BE",  "GFI_CE_UNICODE_32LE", "GFI_CE_UNICODE_16BE",
        "GFI_CE_UNICODE_16LE", "GFI_CE_UNICODE_UTF16", "GFI_CE_UNICODE_UTF8", "GFI_CE_ADOBE_SINGLE_BYTE",
        "GFI_CE_ADOBE_CID",    "UNKNOWN_VALUE(9)"};
    for (uint32_t encoding = 0; encoding < names.size(); ++encoding)
    {
        gfi_attr_character_encoding(log.writer(), "encoding", encoding);
        EXPECT_EQ(log.take(), " encoding=\"" + names[encoding] + "\"");
    }
}

TEST(GfiDump, NullWritesNothing)
{
    RecordLog log;
    dump_GFI_GlyphDesc(log.writer(), nullptr);
    dump_glyph_desc(log.writer(), nullptr);
    dump_GFI_GlyphDescPointer(log.writer(), nullptr);
    dump_GFI_FontSpecPointer(log.writer(), nullptr);
    dump_GFI_StringDescPointer(log.writer(), nullptr);
    dump_GFI_GlyphClusterSpec(log.writer(), nullptr);
    dump_GFI_GlyphSpec(log.writer(), nullptr);
    dump_GFI_FontSubstInfo(log.writer(), nullptr);
    EXPECT_EQ(log.take(), "");
}

}  // namespace
