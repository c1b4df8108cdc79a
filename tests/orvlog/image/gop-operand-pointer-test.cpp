#include "orvlog/image/gop-operand-pointer.h"

#include "tests/support/record-log.h"

#include <gtest/gtest.h>

#include <array>

namespace
{

using orvlog::test::Guarded;
using orvlog::test::Parts;
using orvlog::test::RecordLog;

constexpr uint8_t kRender = GOP_OCS_RENDER;
constexpr uint8_t kOther = GOP_OCS_OTHER;

struct Color
{
    uint16_t num_chans = 1;
    uint8_t bit_depth = 32;
    uint8_t has_alpha = 0;
    uint32_t empty_chans = 0;
    float value = 0;
};

struct Stop
{
    double position = 0;
    Color color;
    uint32_t fill = 0;
};

const GBC_Color* color(const Color& c)
{
    return reinterpret_cast<const GBC_Color*>(&c);
}

// The frame around an operand shows that the depth comes back.
std::string dump(GOP_OperandPointer* pointer)
{
    RecordLog log;
    EXPECT_EQ(ORVLOG_DumpOperandPointer(&log.session, pointer), 1U);
    return log.take();
}

template <typename Record> GOP_OperandPointer* head(Guarded<Record>& record)
{
    return reinterpret_cast<GOP_OperandPointer*>(record.edit());
}

GOP_OperandPointer pointer_to(const void* operand, uint32_t unique_id)
{
    GOP_OperandPointer pointer = {};
    pointer.op_Operand = static_cast<const GOP_Operand*>(operand);
    pointer.op_UniqueId = unique_id;
    return pointer;
}

TEST(GopOperandPointer, Flat)
{
    Guarded<GOP_OperandFlat> operand(
        Parts().add(GOP_Operand{GOP_OPERAND_FLAT, kRender, 0, 0, 0}).add(Color{1, 32, 0, 0, 0.5F}));
    Guarded<GOP_OperandPointer> pointer(pointer_to(operand.get(), UINT32_MAX));
    EXPECT_EQ(dump(head(pointer)), R"(<GOP_OperandFlatPointer op_UniqueId="4294967295">
  <GOP_OperandFlat>
    <GOP_Operand go_OpType="GOP_OPERAND_FLAT" go_ColorInfo.GCM_ColorFlag="GCM_CF_BLACK" )"
                                   R"(go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_RENDER" )"
                                   R"(go_Hints="[0] GOP_OPD_HINT_NONE "/>
    <GOP_OperandFlat.fl_Color>
      <GBC_Color bit_depth="32" num_chans="1" has_alpha="FALSE" base_n="0.5 " empty_chans="0"/>
    </GOP_OperandFlat.fl_Color>
  </GOP_OperandFlat>
</GOP_OperandFlatPointer>
)");
}

TEST(GopOperandPointer, MissingOperandGivesAnEmptyFlatOne)
{
    Guarded<GOP_OperandPointer> pointer(pointer_to(nullptr, 3));
    EXPECT_EQ(dump(head(pointer)), R"(<GOP_OperandFlatPointer op_UniqueId="3">
</GOP_OperandFlatPointer>

<!--
ORVLOG: WARNING: GOP_OperandPointer without an operand.
-->
)");
}

TEST(GopOperandPointer, Grad2Pt)
{
    const Color first = {1, 32, 0, 0, 0.25F};
    const Color second = {1, 32, 0, 0, 0.75F};
    const GOP_OperandGrad2Pt operand = {
        {GOP_OPERAND_GRAD_2PT, kRender, 2, 0, 0}, {{1, 0, 0, 1, 0, 0}}, {0, 0}, {1, 1}, 1, 0, 0};
    Guarded<GOP_OperandPointer> pointer(Parts().add(pointer_to(&operand, 1)).add(color(first)).add(color(second)));
    EXPECT_EQ(dump(head(pointer)),
              R"(<GOP_OperandGrad2PtPointer op_UniqueId="1">
  <GOP_OperandGrad2Pt g2_Transform="1 0 0 1 0 0 " g2_Pt1="0 0 " g2_Pt2="1 1 " g2_UseInterpColorSpace="1" )"
              R"(g2_GradientExtendMode="0" g2_GradientRoundingMode="0">
    <GOP_Operand go_OpType="GOP_OPERAND_GRAD_2PT" go_ColorInfo.GCM_ColorFlag="GCM_CF_BLACK" )"
              R"(go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_RENDER" go_Count="2" go_Hints="[0] GOP_OPD_HINT_NONE "/>
  </GOP_OperandGrad2Pt>
  <GOP_OperandGrad2PtPointer.g2p_Color1>
    <GBC_Color bit_depth="32" num_chans="1" has_alpha="FALSE" base_n="0.25 " empty_chans="0"/>
  </GOP_OperandGrad2PtPointer.g2p_Color1>
  <GOP_OperandGrad2PtPointer.g2p_Color2>
    <GBC_Color bit_depth="32" num_chans="1" has_alpha="FALSE" base_n="0.75 " empty_chans="0"/>
  </GOP_OperandGrad2PtPointer.g2p_Color2>
</GOP_OperandGrad2PtPointer>
)");
    Guarded<GOP_OperandPointer> bare(Parts().add(pointer_to(&operand, 1)).add(uint64_t{0}).add(uint64_t{0}));
    EXPECT_EQ(dump(head(bare)).find("g2p_Color"), std::string::npos);
}

TEST(GopOperandPointer, Grad3Pt)
{
    const Color first = {1, 32, 0, 0, 0.25F};
    const Color third = {1, 32, 0, 0, 0.75F};
    const GOP_OperandGrad3Pt operand = {
        {GOP_OPERAND_GRAD_3PT, kRender, 1, 0, 0}, {{1, 0, 0, 1, 0, 0}}, {0, 0}, {1, 1}, {2, 2}};
    Guarded<GOP_OperandPointer> pointer(
        Parts().add(pointer_to(&operand, 1)).add(color(first)).add(uint64_t{0}).add(color(third)));
    EXPECT_EQ(dump(head(pointer)), R"(<GOP_OperandGrad3PtPointer op_UniqueId="1">
  <GOP_OperandGrad3Pt g3_Transform="1 0 0 1 0 0 " g3_Pt1="0 0 " g3_Pt2="1 1 " g3_Pt3="2 2 ">
    <GOP_Operand go_OpType="GOP_OPERAND_GRAD_3PT" go_ColorInfo.GCM_ColorFlag="GCM_CF_BLACK" )"
                                   R"(go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_RENDER" go_Count="1" )"
                                   R"(go_Hints="[0] GOP_OPD_HINT_NONE "/>
  </GOP_OperandGrad3Pt>
  <GOP_OperandGrad3PtPointer.g3p_Color>
    <GBC_Color bit_depth="32" num_chans="1" has_alpha="FALSE" base_n="0.25 " empty_chans="0"/>
    <GBC_Color bit_depth="32" num_chans="1" has_alpha="FALSE" base_n="0.75 " empty_chans="0"/>
  </GOP_OperandGrad3PtPointer.g3p_Color>
</GOP_OperandGrad3PtPointer>
)");
}

TEST(GopOperandPointer, GradMultistop)
{
    const Stop first = {0, {1, 32, 0, 0, 0.25F}};
    const Stop last = {1, {1, 32, 0, 0, 0.75F}};
    GOP_OperandGradMultistop operand = {
        {GOP_OPERAND_GRAD_MULTISTOP, kRender, 2, 0, 0}, {{1, 0, 0, 1, 0, 0}}, {0, 0}, {1, 1}, 0, 0, 0};
    Guarded<GOP_OperandPointer> pointer(Parts().add(pointer_to(&operand, 1)).add(&first).add(&last));
    EXPECT_EQ(dump(head(pointer)),
              R"(<GOP_OperandGradMultistopPointer op_UniqueId="1">
  <GOP_OperandGradMultistop gm_Transform="1 0 0 1 0 0 " gm_Pt1="0 0 " gm_Pt2="1 1 " gm_UseInterpColorSpace="0" )"
              R"(gm_GradientExtendMode="0" gm_GradientRoundingMode="0">
    <GOP_Operand go_OpType="GOP_OPERAND_GRAD_MULTISTOP" go_ColorInfo.GCM_ColorFlag="GCM_CF_BLACK" )"
              R"(go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_RENDER" go_Count="2" go_Hints="[0] GOP_OPD_HINT_NONE "/>
  </GOP_OperandGradMultistop>
  <GOP_OperandGradMultistopPointer.gmp_GradStop>
    <GOP_GradStop gs_StopPosn="0">
      <GOP_GradStop.gs_StopColor>
        <GBC_Color bit_depth="32" num_chans="1" has_alpha="FALSE" base_n="0.25 " empty_chans="0"/>
      </GOP_GradStop.gs_StopColor>
    </GOP_GradStop>
    <GOP_GradStop gs_StopPosn="1">
      <GOP_GradStop.gs_StopColor>
        <GBC_Color bit_depth="32" num_chans="1" has_alpha="FALSE" base_n="0.75 " empty_chans="0"/>
      </GOP_GradStop.gs_StopColor>
    </GOP_GradStop>
  </GOP_OperandGradMultistopPointer.gmp_GradStop>
</GOP_OperandGradMultistopPointer>
)");
    operand.gm_Operand.go_Count = 0;
    Guarded<GOP_OperandPointer> bare(pointer_to(&operand, 1));
    EXPECT_NE(dump(head(bare))
                  .find("  <GOP_OperandGradMultistopPointer.gmp_GradStop>\n"
                        "  </GOP_OperandGradMultistopPointer.gmp_GradStop>\n"),
              std::string::npos);
}

TEST(GopOperandPointer, GradRadial)
{
    const Stop only = {0.5, {1, 32, 0, 0, 0.25F}};
    GOP_OperandGradRadial operand = {};
    operand.gr_Operand = {GOP_OPERAND_GRAD_RADIAL, kRender, 2, 0, 0};
    operand.gr_Color.bit_depth = 32;
    Guarded<GOP_OperandPointer> pointer(Parts().add(pointer_to(&operand, 7)).add(&only).add(uint64_t{0}));
    EXPECT_EQ(dump(head(pointer)),
              R"(<GOP_OperandGradRadialPointer op_UniqueId="7">
  <GOP_OperandGradRadial gr_Transform="0 0 0 0 0 0 " gr_Center1="0 0 " gr_Radius1="0" gr_Center2="0 0 " )"
              R"(gr_Radius2="0" gr_UseInterpColorSpace="0" gr_GradientExtendMode="0" gr_GradientRoundingMode="0">
    <GOP_Operand go_OpType="GOP_OPERAND_GRAD_RADIAL" go_ColorInfo.GCM_ColorFlag="GCM_CF_BLACK" )"
              R"(go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_RENDER" go_Count="2" go_Hints="[0] GOP_OPD_HINT_NONE "/>
    <GBC_Color bit_depth="32" num_chans="0" has_alpha="FALSE" base_n="" empty_chans="0"/>
  </GOP_OperandGradRadial>
  <GOP_OperandGradRadialPointer.grp_GradStop>
    <GOP_GradStop gs_StopPosn="0.5">
      <GOP_GradStop.gs_StopColor>
        <GBC_Color bit_depth="32" num_chans="1" has_alpha="FALSE" base_n="0.25 " empty_chans="0"/>
      </GOP_GradStop.gs_StopColor>
    </GOP_GradStop>
  </GOP_OperandGradRadialPointer.grp_GradStop>
</GOP_OperandGradRadialPointer>
)");
}

// The lines of a definition that stands in a pointer record, one level in.
constexpr const char* kDefinition =
    R"(  <GCM_CsdPointer>
    <GCM_Csd csd_Type="GCM_CSDTYPE_INPUT" csd_NumBaseChans="3" csd_NumNamedChans="0" )"
    R"(csd_HasSecondaryProfile="FALSE" csd_HasAlternateDefn="FALSE" csd_UseIlluminantInfo="FALSE" )"
    R"(csd_DefaultRenderIntent="GCM_RI_PERCEPTUAL" csd_IsDeviceLinkProfile="FALSE" csd_Defn.Input="GCM_CSF_RGB">
    </GCM_Csd>
  </GCM_CsdPointer>
)";

class ColourSpace : public testing::Test
{
protected:
    ColourSpace()
    {
        definition.csd_Type = GCM_CSDTYPE_INPUT;
        definition.csd_NumBaseChans = 3;
        definition.csd_Defn.Input = GCM_CSF_RGB;
    }
    // Where the definition stands in the text of an operand: "none", or the line behind it.
    std::string behind(const void* operand, const Parts& rest)
    {
        GOP_OperandPointer with_definition = pointer_to(operand, 1);
        with_definition.op_Csd.cp_Csd = &definition;
        Guarded<GOP_OperandPointer> pointer(Parts().add(with_definition).add_parts(rest));
        const std::string text = dump(head(pointer));
        const size_t at = text.find(kDefinition);
        if (at == std::string::npos)
            return text.find("GCM_Csd") == std::string::npos ? "none" : "other text";
        const size_t line = at + std::string(kDefinition).size();
        // What stands ahead of it is the operand.
        EXPECT_NE(text.substr(0, at).rfind("  </GOP_Operand"), std::string::npos);
        return text.substr(line, text.find('\n', line) - line);
    }

    GCM_Csd definition = {};
    Parts two_nulls = Parts().add(uint64_t{0}).add(uint64_t{0});
    Parts three_nulls = Parts().add_parts(two_nulls).add(uint64_t{0});
};

TEST_F(ColourSpace, OfAFlatOperand)
{
    GOP_OperandFlat operand = {};
    for (uint8_t space = 0; space < 4; ++space)
    {
        operand.fl_Operand.go_ColorInfo = static_cast<uint8_t>(0xFC | space);
        EXPECT_EQ(behind(&operand, Parts()), space == kOther ? "</GOP_OperandFlatPointer>" : "none");
    }
}

TEST_F(ColourSpace, OfATwoPointGradient)
{
    GOP_OperandGrad2Pt operand = {};
    operand.g2_Operand = {GOP_OPERAND_GRAD_2PT, kOther, 0, 0, 0};
    EXPECT_EQ(behind(&operand, two_nulls), "none");
    operand.g2_UseInterpColorSpace = 2;
    EXPECT_EQ(behind(&operand, two_nulls), "</GOP_OperandGrad2PtPointer>");
    operand.g2_Operand.go_ColorInfo = GOP_OCS_INPUT;
    EXPECT_EQ(behind(&operand, two_nulls), "none");
}

TEST_F(ColourSpace, OfAMultistopGradient)
{
    GOP_OperandGradMultistop operand = {};
    operand.gm_Operand = {GOP_OPERAND_GRAD_MULTISTOP, kOther, 0, 0, 0};
    EXPECT_EQ(behind(&operand, Parts()), "none");
    operand.gm_UseInterpColorSpace = 1;
    EXPECT_EQ(behind(&operand, Parts()), "  <GOP_OperandGradMultistopPointer.gmp_GradStop>");
    operand.gm_Operand.go_ColorInfo = kRender;
    EXPECT_EQ(behind(&operand, Parts()), "none");
}

TEST_F(ColourSpace, OfAThreePointGradientGoesByItsCount)
{
    GOP_OperandGrad3Pt operand = {};
    operand.g3_Operand = {GOP_OPERAND_GRAD_3PT, kOther, 1, 0, 0};
    EXPECT_EQ(behind(&operand, three_nulls), "  <GOP_OperandGrad3PtPointer.g3p_Color>");
    for (const uint16_t count : std::array<uint16_t, 4>{0, 2, 3, 257})
    {
        operand.g3_Operand.go_Count = count;
        EXPECT_EQ(behind(&operand, three_nulls), "none");
    }
    operand.g3_Operand = {GOP_OPERAND_GRAD_3PT, kRender, 1, 0, 0};
    EXPECT_EQ(behind(&operand, three_nulls), "none");
}

TEST_F(ColourSpace, OfARadialGradient)
{
    GOP_OperandGradRadial operand = {};
    operand.gr_Operand = {GOP_OPERAND_GRAD_RADIAL, kOther, 0, 0, 0};
    EXPECT_EQ(behind(&operand, Parts()), "none");
    operand.gr_UseInterpColorSpace = 255;
    EXPECT_EQ(behind(&operand, Parts()), "  <GOP_OperandGradRadialPointer.grp_GradStop>");
    operand.gr_Operand.go_ColorInfo = GOP_OCS_INPUT;
    EXPECT_EQ(behind(&operand, Parts()), "none");
}

TEST(GopOperandPointer, UnknownKindWritesNothing)
{
    for (const uint8_t type : std::array<uint8_t, 3>{7, 8, 255})
    {
        const GOP_Operand operand = {type, 0, 0, 0, 0};
        Guarded<GOP_OperandPointer> pointer(pointer_to(&operand, 1));
        EXPECT_EQ(dump(head(pointer)), "");
    }
    EXPECT_EQ(dump(nullptr), "");
}

TEST(GopOperandPointer, NamedOperandHasAFrame)
{
    RecordLog log(1);
    Guarded<GOP_OperandPointer> pointer(pointer_to(nullptr, 3));
    EXPECT_EQ(ORVLOG_DumpNamedOperand(&log.session, "ORV_object_paint", "operand2", head(pointer)), 1U);
    EXPECT_EQ(log.take(), R"(  <ORV_object_paint.operand2>
    <GOP_OperandFlatPointer op_UniqueId="3">
    </GOP_OperandFlatPointer>

<!--
ORVLOG: WARNING: GOP_OperandPointer without an operand.
-->
  </ORV_object_paint.operand2>
)");
    EXPECT_EQ(ORVLOG_DumpNamedOperand(&log.session, "ORV_object_paint", "operand2", nullptr), 1U);
    EXPECT_EQ(log.take(), "");
}

}  // namespace
