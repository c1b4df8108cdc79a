#include "orvlog/records/gop-operand-dump.h"

#include "tests/support/record-log.h"

#include <gtest/gtest.h>

#include <array>

namespace
{

using orvlog::test::attribute_of;
using orvlog::test::Guarded;
using orvlog::test::Parts;
using orvlog::test::RecordLog;

constexpr uint8_t kOther = GOP_OCS_OTHER;

std::string dump_head(const GOP_Operand& operand)
{
    RecordLog log;
    Guarded<GOP_Operand> guarded(operand);
    ORVLOG_DumpOperand(log.writer(), guarded.get());
    return log.take();
}

Parts one_channel(float value)
{
    return Parts().add(uint16_t{1}).add(uint8_t{32}).add(uint8_t{0}).add(uint32_t{0}).add(value);
}

TEST(GopOperandDump, Head)
{
    EXPECT_EQ(dump_head({GOP_OPERAND_GRAD_2PT, 0x80, 65535, 0, GCM_CSF_CMYK}),
              R"(<GOP_Operand go_OpType="GOP_OPERAND_GRAD_2PT" go_ColorInfo.GCM_ColorFlag="GCM_CF_OTHER" )"
              R"(go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_INPUT" go_Count="65535" )"
              R"(go_Hints="[0] GOP_OPD_HINT_NONE " go_ColorSpaceFamily="GCM_CSF_CMYK"/>
)");
}

TEST(GopOperandDump, FlatHasNoCount)
{
    EXPECT_EQ(dump_head({GOP_OPERAND_FLAT, 0x41, 9, 0, 0}),
              R"(<GOP_Operand go_OpType="GOP_OPERAND_FLAT" go_ColorInfo.GCM_ColorFlag="GCM_CF_GREY" )"
              R"(go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_RENDER" go_Hints="[0] GOP_OPD_HINT_NONE "/>
)");
}

TEST(GopOperandDump, OperandTypes)
{
    const std::array<std::string, 8> names = {
        "GOP_OPERAND_FLAT",        "GOP_OPERAND_GRAD_2PT", "GOP_OPERAND_GRAD_MULTISTOP", "GOP_OPERAND_GRAD_3PT",
        "GOP_OPERAND_GRAD_RADIAL", "GOP_OPERAND_IMAGE",    "GOP_OPERAND_IMAGE_TILE",     "UNKNOWN_VALUE(7)"};
    for (uint8_t type = 0; type < names.size(); ++type)
    {
        const std::string text = dump_head({type, 0, 3, 0, 0});
        EXPECT_EQ(attribute_of(text, "go_OpType"), names[type]);
        EXPECT_EQ(attribute_of(text, "go_Count"), type == 0 ? "(absent)" : "3");
    }
    EXPECT_EQ(attribute_of(dump_head({255, 0, 3, 0, 0}), "go_OpType"), "UNKNOWN_VALUE(255)");
}

TEST(GopOperandDump, ColorInfo)
{
    const std::array<std::string, 4> flags = {"GCM_CF_BLACK", "GCM_CF_GREY", "GCM_CF_OTHER", "GCM_WHITEPOINT_D65"};
    const std::array<std::string, 4> spaces = {"GOP_OCS_INPUT", "GOP_OCS_RENDER", "GOP_OCS_OTHER", "UNKNOWN_VALUE(3)"};
    for (uint32_t flag = 0; flag < 4; ++flag)
    {
        for (uint32_t space = 0; space < 4; ++space)
        {
            const std::string text = dump_head({0, static_cast<uint8_t>(flag << 6 | space), 0, 0, GCM_CSF_RGB});
            EXPECT_EQ(attribute_of(text, "go_ColorInfo.GCM_ColorFlag"), flags[flag]);
            EXPECT_EQ(attribute_of(text, "go_ColorInfo.GOP_OperandColorSpace"), spaces[space]);
            EXPECT_EQ(attribute_of(text, "go_ColorInfo"), "(absent)");
            EXPECT_EQ(attribute_of(text, "go_ColorSpaceFamily"), space == 0 ? "GCM_CSF_RGB" : "(absent)");
        }
    }
}

TEST(GopOperandDump, OtherBitsOfColorInfoShowTheRawByte)
{
    EXPECT_EQ(dump_head({0, 0x04, 0, 0, GCM_CSF_GRAY}),
              "<GOP_Operand go_OpType=\"GOP_OPERAND_FLAT\" go_ColorInfo=\"4\" go_Hints=\"[0] GOP_OPD_HINT_NONE \" "
              "go_ColorSpaceFamily=\"GCM_CSF_GRAY\"/>\n");
    for (const uint8_t bit : std::array<uint8_t, 4>{0x04, 0x08, 0x10, 0x20})
    {
        const std::string text = dump_head({0, static_cast<uint8_t>(0xC1 | bit), 0, 0, 0});
        EXPECT_EQ(attribute_of(text, "go_ColorInfo"), std::to_string(0xC1 | bit));
        EXPECT_EQ(attribute_of(text, "go_ColorInfo.GCM_ColorFlag"), "(absent)");
        EXPECT_EQ(attribute_of(text, "go_ColorInfo.GOP_OperandColorSpace"), "(absent)");
        EXPECT_EQ(attribute_of(text, "go_ColorSpaceFamily"), "(absent)");
    }
}

TEST(GopOperandDump, ColorSpaceFamilies)
{
    const std::array<std::string, 5> names = {"GCM_CSF_GRAY", "GCM_CSF_RGB", "GCM_CSF_CMYK", "GCM_CSF_NAMED",
                                              "UNKNOWN_VALUE(4)"};
    for (uint16_t family = 0; family < names.size(); ++family)
        EXPECT_EQ(attribute_of(dump_head({0, 0, 0, 0, family}), "go_ColorSpaceFamily"), names[family]);
    EXPECT_EQ(attribute_of(dump_head({0, 0, 0, 0, 65535}), "go_ColorSpaceFamily"), "UNKNOWN_VALUE(65535)");
}

TEST(GopOperandDump, Hints)
{
    const std::array<std::pair<uint16_t, std::string>, 10> cases = {{
        {uint16_t{0x1}, "[0x1] GOP_OPD_HINT_IS_OPAQUE "},
        {uint16_t{0x2}, "[0x2] "},
        {uint16_t{0x4}, "[0x4] GOP_OPD_HINT_ONE_TIME_USE "},
        {uint16_t{0x8}, "[0x8] GOP_OPD_HINT_IMAGE_TRANSLATE_ONLY "},
        {uint16_t{0x10}, "[0x10] GOP_OPD_HINT_IMAGE_MAX_2_COLORS "},
        {uint16_t{0x20}, "[0x20] GOP_OPD_HINT_IMAGE_MAX_4_COLORS "},
        {uint16_t{0x40}, "[0x40] GOP_OPD_HINT_IMAGE_MAX_16_COLORS "},
        {uint16_t{0x80}, "[0x80] GOP_OPD_HINT_IMAGE_MAX_256_COLORS "},
        {uint16_t{0x8000}, "[0x8000] "},
        {uint16_t{0x85}, "[0x85] GOP_OPD_HINT_IS_OPAQUE GOP_OPD_HINT_ONE_TIME_USE GOP_OPD_HINT_IMAGE_MAX_256_COLORS "},
    }};
    for (const auto& [hints, expected] : cases)
        EXPECT_EQ(attribute_of(dump_head({0, 0, 0, hints, 0}), "go_Hints"), expected);
}

TEST(GopOperandDump, Flat)
{
    RecordLog log;
    Parts parts;
    parts.add(GOP_Operand{GOP_OPERAND_FLAT, kOther, 0, 0, 0});
    parts.add_parts(one_channel(0.5F));
    Guarded<GOP_OperandFlat> operand(parts);
    dump_GOP_OperandFlat(log.writer(), operand.get());
    EXPECT_EQ(log.take(), R"(<GOP_OperandFlat>
  <GOP_Operand go_OpType="GOP_OPERAND_FLAT" go_ColorInfo.GCM_ColorFlag="GCM_CF_BLACK" )"
                          R"(go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_OTHER" go_Hints="[0] GOP_OPD_HINT_NONE "/>
  <GOP_OperandFlat.fl_Color>
    <GBC_Color bit_depth="32" num_chans="1" has_alpha="FALSE" base_n="0.5 " empty_chans="0"/>
  </GOP_OperandFlat.fl_Color>
</GOP_OperandFlat>
)");
}

TEST(GopOperandDump, Grad2Pt)
{
    RecordLog log;
    Guarded<GOP_OperandGrad2Pt> operand(GOP_OperandGrad2Pt{
        {GOP_OPERAND_GRAD_2PT, kOther, 2, 1, 0}, {{1, 2, 3, 4, 5, 6}}, {7, 8}, {9, 10.5}, 255, 1, 2});
    dump_GOP_OperandGrad2Pt(log.writer(), operand.get());
    EXPECT_EQ(log.take(), R"(<GOP_OperandGrad2Pt g2_Transform="1 2 3 4 5 6 " g2_Pt1="7 8 " g2_Pt2="9 10.5 " )"
                          R"(g2_UseInterpColorSpace="255" g2_GradientExtendMode="1" g2_GradientRoundingMode="2">
  <GOP_Operand go_OpType="GOP_OPERAND_GRAD_2PT" go_ColorInfo.GCM_ColorFlag="GCM_CF_BLACK" )"
                          R"(go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_OTHER" go_Count="2" )"
                          R"(go_Hints="[0x1] GOP_OPD_HINT_IS_OPAQUE "/>
</GOP_OperandGrad2Pt>
)");
}

TEST(GopOperandDump, Grad3Pt)
{
    RecordLog log;
    Guarded<GOP_OperandGrad3Pt> operand(
        GOP_OperandGrad3Pt{{GOP_OPERAND_GRAD_3PT, kOther, 1, 0, 0}, {{1, 2, 3, 4, 5, 6}}, {7, 8}, {9, 10}, {11, 12}});
    dump_GOP_OperandGrad3Pt(log.writer(), operand.get());
    EXPECT_EQ(log.take(),
              R"(<GOP_OperandGrad3Pt g3_Transform="1 2 3 4 5 6 " g3_Pt1="7 8 " g3_Pt2="9 10 " g3_Pt3="11 12 ">
  <GOP_Operand go_OpType="GOP_OPERAND_GRAD_3PT" go_ColorInfo.GCM_ColorFlag="GCM_CF_BLACK" )"
              R"(go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_OTHER" go_Count="1" go_Hints="[0] GOP_OPD_HINT_NONE "/>
</GOP_OperandGrad3Pt>
)");
}

TEST(GopOperandDump, GradMultistop)
{
    RecordLog log;
    Guarded<GOP_OperandGradMultistop> operand(GOP_OperandGradMultistop{
        {GOP_OPERAND_GRAD_MULTISTOP, kOther, 5, 0, 0}, {{1, 0, 0, 1, 0, 0}}, {7, 8}, {9, 10}, 0, 3, 4});
    dump_GOP_OperandGradMultistop(log.writer(), operand.get());
    EXPECT_EQ(log.take(), R"(<GOP_OperandGradMultistop gm_Transform="1 0 0 1 0 0 " gm_Pt1="7 8 " gm_Pt2="9 10 " )"
                          R"(gm_UseInterpColorSpace="0" gm_GradientExtendMode="3" gm_GradientRoundingMode="4">
  <GOP_Operand go_OpType="GOP_OPERAND_GRAD_MULTISTOP" go_ColorInfo.GCM_ColorFlag="GCM_CF_BLACK" )"
                          R"(go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_OTHER" go_Count="5" )"
                          R"(go_Hints="[0] GOP_OPD_HINT_NONE "/>
</GOP_OperandGradMultistop>
)");
}

TEST(GopOperandDump, GradRadialHasABareColor)
{
    RecordLog log;
    GOP_OperandGradRadial head = {};
    head.gr_Operand = {GOP_OPERAND_GRAD_RADIAL, kOther, 0, 0, 0};
    head.gr_Transform = {{1, 0, 0, 1, 0, 0}};
    head.gr_Center1 = {1, 2};
    head.gr_Radius1 = 0.1;
    head.gr_Center2 = {3, 4};
    head.gr_Radius2 = 1e100;
    head.gr_UseInterpColorSpace = 1;
    head.gr_GradientExtendMode = 2;
    head.gr_GradientRoundingMode = 3;
    Parts parts;
    parts.add_head(head, offsetof(GOP_OperandGradRadial, gr_Color));
    parts.add(uint16_t{2}).add(uint8_t{16}).add(uint8_t{0}).add(uint32_t{0}).add(uint16_t{5}).add(uint16_t{6});
    Guarded<GOP_OperandGradRadial> operand(parts);
    dump_GOP_OperandGradRadial(log.writer(), operand.get());
    EXPECT_EQ(
        log.take(),
        R"(<GOP_OperandGradRadial gr_Transform="1 0 0 1 0 0 " gr_Center1="1 2 " gr_Radius1="0.10000000000000001" )"
        R"(gr_Center2="3 4 " gr_Radius2="1e+100" gr_UseInterpColorSpace="1" gr_GradientExtendMode="2" )"
        R"(gr_GradientRoundingMode="3">
  <GOP_Operand go_OpType="GOP_OPERAND_GRAD_RADIAL" go_ColorInfo.GCM_ColorFlag="GCM_CF_BLACK" )"
        R"(go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_OTHER" go_Count="0" go_Hints="[0] GOP_OPD_HINT_NONE "/>
  <GBC_Color bit_depth="16" num_chans="2" has_alpha="FALSE" base_n="5 6 " empty_chans="0"/>
</GOP_OperandGradRadial>
)");
}

TEST(GopOperandDump, GradStop)
{
    RecordLog log;
    Parts parts;
    parts.add(0.25).add(uint16_t{2}).add(uint8_t{32}).add(uint8_t{1}).add(uint32_t{2}).add(0.5F).add(1.0F);
    Guarded<GOP_GradStop> stop(parts);
    dump_GOP_GradStop(log.writer(), stop.get());
    EXPECT_EQ(log.take(), R"(<GOP_GradStop gs_StopPosn="0.25">
  <GOP_GradStop.gs_StopColor>
    <GBC_Color bit_depth="32" num_chans="2" has_alpha="TRUE" alpha="0.5" base_n="1 " empty_chans="2"/>
  </GOP_GradStop.gs_StopColor>
</GOP_GradStop>
)");
}

TEST(GopOperandDump, TilingParameters)
{
    RecordLog log;
    Guarded<GOP_TilingParameters> parameters(GOP_TilingParameters{1.5, -0.1, 65535, 0});
    dump_GOP_TilingParameters(log.writer(), parameters.get());
    EXPECT_EQ(log.take(), R"(<GOP_TilingParameters it_XRepetitionInterval="1.5" )"
                          R"(it_YRepetitionInterval="-0.10000000000000001" it_XFlip="65535" it_YFlip="0">
</GOP_TilingParameters>
)");
}

TEST(GopOperandDump, NullWritesNothing)
{
    RecordLog log;
    ORVLOG_DumpOperand(log.writer(), nullptr);
    dump_GOP_OperandFlat(log.writer(), nullptr);
    dump_GOP_OperandGrad2Pt(log.writer(), nullptr);
    dump_GOP_OperandGrad3Pt(log.writer(), nullptr);
    dump_GOP_OperandGradMultistop(log.writer(), nullptr);
    dump_GOP_OperandGradRadial(log.writer(), nullptr);
    dump_GOP_GradStop(log.writer(), nullptr);
    dump_GOP_TilingParameters(log.writer(), nullptr);
    EXPECT_EQ(log.take(), "");
}

}  // namespace
