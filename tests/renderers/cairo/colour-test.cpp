// Flat colours, and the spaces they are in.

#include "renderers/cairo/colour.h"
#include "tests/renderers/cairo/page-fixture.h"

#include <lcms2.h>

#include <algorithm>
#include <array>

using namespace orvlog::records;

namespace
{

class ColourTest : public PageTest
{
protected:
    uint32_t painted(const Operand& operand)
    {
        paint_record(nullptr, operand.record(), {});
        return at(20, 20);
    }
};

TEST_F(ColourTest, Gray)
{
    EXPECT_EQ(painted(Operand::gray(0.2F)), 0x333333U);
}

TEST_F(ColourTest, Rgb)
{
    EXPECT_EQ(painted(Operand::rgb(1, 0.4F, 0.2F)), 0xFF6633U);
}

TEST_F(ColourTest, AlphaIsTheFirstChannel)
{
    EXPECT_EQ(painted(Operand::rgba(1, 0, 0, 0.6F)), 0xFF6666U);
}

TEST_F(ColourTest, WordsOfSixteenBits)
{
    EXPECT_EQ(painted(Operand::flat(GCM_CSF_RGB, Colour::words({65535, 13107, 0}, 16))), 0xFF3300U);
}

TEST_F(ColourTest, WordsOfEightBitsWithAlpha)
{
    EXPECT_EQ(painted(Operand::flat(GCM_CSF_GRAY, Colour::words({255, 51}, 8, true))), 0x333333U);
}

TEST_F(ColourTest, ValuesBeyondTheRangeAreHeld)
{
    EXPECT_EQ(painted(Operand::rgb(2, -1, 0)), 0xFF0000U);
}

TEST_F(ColourTest, RenderSpaceGoesByTheNumberOfChannels)
{
    Operand operand = Operand::cmyk(0, 0, 0, 1);
    const_cast<GOP_Operand*>(operand.record()->op_Operand)->go_ColorInfo = GOP_COLOR_INFO(GOP_OCS_RENDER, GCM_CF_OTHER);
    EXPECT_EQ(painted(operand), 0x231F20U);
}

TEST_F(ColourTest, NamedInksAreTints)
{
    EXPECT_EQ(painted(Operand::flat(GCM_CSF_NAMED, Colour({0.2F, 0.5F}))), 0x666666U);
}

struct Ink
{
    float c, m, y, k;
    uint32_t rgb;
};

class CmykTest : public ColourTest, public testing::WithParamInterface<Ink>
{
};

TEST_P(CmykTest, BecomesRgb)
{
    const Ink& ink = GetParam();
    EXPECT_EQ(painted(Operand::cmyk(ink.c, ink.m, ink.y, ink.k)), ink.rgb);
}

INSTANTIATE_TEST_SUITE_P(Inks, CmykTest,
                         testing::Values(Ink{0, 0, 0, 0, 0xFFFFFF}, Ink{1, 0, 0, 0, 0x00ADEF},
                                         Ink{0, 1, 0, 0, 0xEC008C}, Ink{0, 0, 1, 0, 0xFFF200},
                                         Ink{0, 0, 0, 1, 0x231F20}, Ink{1, 1, 0, 0, 0x2E3192},
                                         Ink{0, 1, 1, 0, 0xED1C24}, Ink{1, 0, 1, 0, 0x00A650},
                                         Ink{1, 1, 1, 0, 0x363639}, Ink{1, 1, 1, 1, 0x000000},
                                         Ink{0.5F, 0, 0, 0, 0x80D6F7}, Ink{0, 0, 0, 0.5F, 0x918F90}));

// Colour space definitions.

GCM_CsdPointer pointer_to(const GCM_Csd& csd)
{
    GCM_CsdPointer pointer{};
    pointer.cp_Csd = &csd;
    return pointer;
}

TEST_F(ColourTest, NonColorimetricBgr)
{
    GCM_Csd csd{};
    csd.csd_Type = GCM_CSDTYPE_NONCOLORIMETRIC;
    csd.csd_NumBaseChans = 3;
    csd.csd_Defn.NonColorimetric = GNC_FORMAT_BGR;
    EXPECT_EQ(painted(Operand::rgb(1, 0.4F, 0).in_space(pointer_to(csd))), 0x0066FFU);
}

TEST_F(ColourTest, NonColorimetricBlack)
{
    GCM_Csd csd{};
    csd.csd_Type = GCM_CSDTYPE_NONCOLORIMETRIC;
    csd.csd_NumBaseChans = 1;
    csd.csd_Defn.NonColorimetric = GNC_FORMAT_K;
    EXPECT_EQ(painted(Operand::gray(1).in_space(pointer_to(csd))), 0x231F20U);
}

TEST_F(ColourTest, LabWhiteBlackAndRed)
{
    GCM_Csd csd{};
    csd.csd_Type = GCM_CSDTYPE_ANALYTICAL;
    csd.csd_NumBaseChans = 3;
    csd.csd_Defn.Analytical = {GCM_ACS_LAB, 0.9505F, 1, 1.089F, 0, 0, 0, -100, 100, -100, 100};
    // The Lab values of the sRGB red: 53.24, 80.09, 67.20.
    orvlog::cairo_renderer::Complaints complaints([](const std::string&) {});
    orvlog::cairo_renderer::ColourSpaces spaces(complaints);
    const GCM_CsdPointer pointer = pointer_to(csd);
    GOP_Operand head{GOP_OPERAND_FLAT, GOP_COLOR_INFO(GOP_OCS_OTHER, GCM_CF_OTHER), 0, 0, 0};
    const auto space = spaces.find(head, &pointer, 3);
    const std::array<float, 3> white{1, 0.5F, 0.5F};
    const std::array<float, 3> red{0.5324F, 0.90045F, 0.836F};
    EXPECT_NEAR(space->convert(white.data()).red, 1.0, 0.01);
    EXPECT_NEAR(space->convert(white.data()).blue, 1.0, 0.01);
    EXPECT_NEAR(space->convert(red.data()).red, 1.0, 0.01);
    EXPECT_NEAR(space->convert(red.data()).green, 0.0, 0.02);
    EXPECT_NEAR(space->convert(red.data()).blue, 0.0, 0.02);
}

// The tables of a calibrated space, all three of them the same.
struct CalibratedSpace
{
    explicit CalibratedSpace(uint32_t family, uint8_t channels)
    {
        csd.csd_Type = GCM_CSDTYPE_CIELUT_DATA;
        csd.csd_NumBaseChans = channels;
        csd.csd_Defn.CieBased = family;
        luts.cl_DecodeBitDepth = 2;
        tables.clp_CieLuts = &luts;
        pointer = pointer_to(csd);
        pointer.cp_CieLuts = &tables;
        tables.clp_DecodeABC_A = tables.clp_DecodeABC_B = tables.clp_DecodeABC_C = decode.data();
    }
    GCM_Csd csd{};
    GCM_CieLuts luts{};
    GCM_CieLutsPointer tables{};
    GCM_CsdPointer pointer{};
    std::array<float, 4> decode{0, 0.2F, 0.6F, 1};
};

TEST_F(ColourTest, CalibratedGrayIsLinearLight)
{
    CalibratedSpace space(GCM_CIE_FAMILY_CALGRAY, 1);
    space.luts = {2, {0.9505F, 1, 1.089F}, {}, {}, {}, {}, {}};
    // Half way between the second entry and the third is 0.4 of the light: 0.665 on the screen's curve.
    paint_record(nullptr, Operand::gray(0.5F).in_space(space.pointer).record(), {});
    EXPECT_TRUE(near(20, 20, 0xAAAAAA, 1));
    EXPECT_TRUE(said_.empty());
}

TEST_F(ColourTest, CalibratedWhiteIsTheWhiteOfThePage)
{
    CalibratedSpace space(GCM_CIE_FAMILY_CALGRAY, 1);
    space.luts = {2, {1.2F, 1, 0.5F}, {}, {}, {}, {}, {}};
    paint_record(nullptr, Operand::gray(1).in_space(space.pointer).record(), {});
    EXPECT_TRUE(near(20, 20, 0xFFFFFF, 1));
}

TEST_F(ColourTest, CalibratedRgbGoesThroughItsMatrix)
{
    CalibratedSpace space(GCM_CIE_FAMILY_CALRGB, 3);
    space.luts.cl_WhitePoint[0] = 0.95047F;
    space.luts.cl_WhitePoint[1] = 1;
    space.luts.cl_WhitePoint[2] = 1.08883F;
    // The primaries of sRGB, red and blue exchanged.
    const std::array<float, 9> matrix{0.1804375F, 0.0721750F, 0.9503041F, 0.3575761F, 0.7151522F,
                                      0.1191920F, 0.4124564F, 0.2126729F, 0.0193339F};
    std::copy(matrix.begin(), matrix.end(), space.luts.cl_MatrixABC);
    paint_record(nullptr, Operand::rgb(1, 0.5F, 0).in_space(space.pointer).record(), {});
    EXPECT_TRUE(near(20, 20, 0x00AAFF, 1));
    EXPECT_TRUE(said_.empty());
}

TEST_F(ColourTest, CalibratedSpaceWithoutTablesFallsBack)
{
    CalibratedSpace space(GCM_CIE_FAMILY_CALRGB, 3);
    space.tables.clp_DecodeABC_C = nullptr;
    EXPECT_EQ(painted(Operand::rgb(1, 0.4F, 0).in_space(space.pointer)), 0xFF6600U);
    EXPECT_EQ(said_.size(), 1U);
}

TEST_F(ColourTest, CalibratedSpaceWithTablesBeyondReasonFallsBack)
{
    CalibratedSpace space(GCM_CIE_FAMILY_CALRGB, 3);
    space.luts.cl_DecodeBitDepth = 40;
    EXPECT_EQ(painted(Operand::rgb(1, 0.4F, 0).in_space(space.pointer)), 0xFF6600U);
    EXPECT_EQ(said_.size(), 1U);
}

std::vector<uint8_t> srgb_profile()
{
    cmsHPROFILE profile = cmsCreate_sRGBProfile();
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    std::vector<uint8_t> bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

TEST_F(ColourTest, ProfileInMemory)
{
    const std::vector<uint8_t> bytes = srgb_profile();
    GCM_Csd csd{};
    csd.csd_Type = GCM_CSDTYPE_PROFILE_BUFFER;
    csd.csd_NumBaseChans = 3;
    csd.csd_DefaultRenderIntent = GCM_RI_COLORIMETRIC_REL;
    csd.csd_Defn.ProfileBufferSize = static_cast<uint32_t>(bytes.size());
    GCM_CsdPointer pointer = pointer_to(csd);
    pointer.cp_ProfileBuffer = bytes.data();
    paint_record(nullptr, Operand::rgb(1, 0.4F, 0.2F).in_space(pointer).record(), {});
    EXPECT_TRUE(near(20, 20, 0xFF6633, 1));
    EXPECT_TRUE(said_.empty());
}

TEST_F(ColourTest, DamagedProfileFallsBack)
{
    const std::vector<uint8_t> bytes(100, 7);
    GCM_Csd csd{};
    csd.csd_Type = GCM_CSDTYPE_PROFILE_BUFFER;
    csd.csd_NumBaseChans = 4;
    csd.csd_Defn.ProfileBufferSize = 100;
    GCM_CsdPointer pointer = pointer_to(csd);
    pointer.cp_ProfileBuffer = bytes.data();
    EXPECT_EQ(painted(Operand::cmyk(0, 0, 0, 1).in_space(pointer)), 0x231F20U);
    const std::vector<std::string> expected{
        "cairo renderer: colour profiles that cannot be read are taken by their number of channels"};
    EXPECT_EQ(said_, expected);
}

TEST_F(ColourTest, DefinitionsThatLoopBackEnd)
{
    GCM_Csd csd{};
    csd.csd_Type = GCM_CSDTYPE_NO_BASE_CHANS;
    csd.csd_HasAlternateDefn = 1;
    GCM_CsdPointer pointer = pointer_to(csd);
    pointer.cp_AlternateDefn = &pointer;
    EXPECT_EQ(painted(Operand::gray(0.2F).in_space(pointer)), 0x333333U);
}

TEST_F(ColourTest, NoDefinitionAtAll)
{
    EXPECT_EQ(painted(Operand::gray(0.2F).in_space(GCM_CsdPointer{})), 0x333333U);
}

}  // namespace
