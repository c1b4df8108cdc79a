#include "orvlog/colour/gxc/gxc-csd.h"

#include "tests/support/memory-stream.h"
#include "tests/support/ticket-bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace
{

using namespace orvlog::test;

// The text of one definition, which must be read to its last byte.
std::string csd(const TicketBytes& bytes, uint32_t level = 0)
{
    GuardedBlock block(bytes.bytes().data(), bytes.size());
    MemoryStream log;
    GXC_Writer writer = {nullptr, nullptr, log.get(), "", level};
    GXC_Input input = {block.data(), block.size(), 0};
    EXPECT_TRUE(gxc_write_csd(&writer, &input));
    EXPECT_EQ(input.offset, bytes.size());
    EXPECT_EQ(writer.level, level);
    return log.text();
}

TEST(GxcCsd, PlainDefinitionHas16BytesAndNoDefn)
{
    EXPECT_EQ(plain_csd().size(), 16u);
    EXPECT_EQ(csd(plain_csd()), R"X(<GCM_CsdPointer>
	<Type GCM_CsdType="GCM_CSDTYPE_NO_BASE_CHANS" />
	<NumBaseChans UInt8="0" />
	<NumNamedChans UInt8="0" />
	<HasSecondaryProfile Bool="FALSE" />
	<HasAlternateDefn Bool="FALSE" />
	<DefaultRenderIntent GCM_RenderIntent="GCM_RI_PERCEPTUAL" />
	<Extensions>
	</Extensions>
</GCM_CsdPointer>
)X");
}

TEST(GxcCsd, FileWithNamesSecondaryProfileAndExtensions)
{
    TicketBytes t;
    t.u32({0}).u8({4, 2, 1, 0}).u32({4}).text("Cyan").text("").text("in.icc").text("<\"second\">");
    t.u32({71, 1}).u8({1}).u32({74, 5}).u8({2}).u32({99, 3}).u8({7, 7, 7}).u32({80, 2}).u8({1, 1}).u32({0});
    EXPECT_EQ(csd(t), R"X(<GCM_CsdPointer>
	<Type GCM_CsdType="GCM_CSDTYPE_FILE" />
	<NumBaseChans UInt8="4" />
	<NumNamedChans UInt8="2" />
	<HasSecondaryProfile Bool="TRUE" />
	<HasAlternateDefn Bool="FALSE" />
	<DefaultRenderIntent GCM_RenderIntent="GCM_RI_USER_DEFINED_1" />
	<NamedChans>
		<ChanName String="Cyan" />
		<ChanName String="" />
	</NamedChans>
	<Filename String="in.icc" />
	<SecondaryProfile String="<"second">" />
	<Extensions>
		<ExtensionVersion UInt32="71" />
		<ExtensionSize UInt32="1" />
		<ExtensionElements>
			<UseIlluminantInfo Bool="TRUE" />
		</ExtensionElements>
		<ExtensionVersion UInt32="74" />
		<ExtensionSize UInt32="5" />
		<ExtensionElements>
			<IsDeviceLinkProfile Bool="FALSE" />
		</ExtensionElements>
	</Extensions>
</GCM_CsdPointer>
)X");
}

TEST(GxcCsd, ProfileStandsOnOneLine)
{
    TicketBytes t;
    t.u32({2}).u8({3, 0, 0, 0}).u32({1}).u32({5}).u8({0xDE, 0xAD, 0x00, 0xBE, 0x0F}).u32({0});
    EXPECT_EQ(csd(t), R"X(<GCM_CsdPointer>
	<Type GCM_CsdType="GCM_CSDTYPE_PROFILE_BUFFER" />
	<NumBaseChans UInt8="3" />
	<NumNamedChans UInt8="0" />
	<HasSecondaryProfile Bool="FALSE" />
	<HasAlternateDefn Bool="FALSE" />
	<DefaultRenderIntent GCM_RenderIntent="GCM_RI_SATURATION" />
	<Defn>
		<ProfileBufferSize UInt32="5" />
	</Defn>
	<ProfileBuffer>DEAD00BE0F</ProfileBuffer>
	<Extensions>
	</Extensions>
</GCM_CsdPointer>
)X");
}

TEST(GxcCsd, EmptyProfile)
{
    const std::string text = csd(TicketBytes().u32({2}).u8({3, 0, 0, 0}).u32({1}).u32({0}).u32({0}));
    EXPECT_NE(text.find("\t<ProfileBuffer></ProfileBuffer>\n\t<Extensions>\n"), std::string::npos);
}

TEST(GxcCsd, AnalyticalWithBlackPoint)
{
    TicketBytes t;
    t.u32({3}).u8({3, 0, 0, 0}).u32({2}).u32({1}).f32({0.9642f, 1, 0.8249f});
    t.u32({80, 999}).f32({0, 0.5f, -1}).u32({0});
    EXPECT_EQ(csd(t), R"X(<GCM_CsdPointer>
	<Type GCM_CsdType="GCM_CSDTYPE_ANALYTICAL" />
	<NumBaseChans UInt8="3" />
	<NumNamedChans UInt8="0" />
	<HasSecondaryProfile Bool="FALSE" />
	<HasAlternateDefn Bool="FALSE" />
	<DefaultRenderIntent GCM_RenderIntent="GCM_RI_COLORIMETRIC_ABS" />
	<Defn>
		<Analytical>
			<ColorSpace GCM_AnalyticalColorSpaceType="GCM_ACS_LAB" />
			<WhitePoint>
				<WhitePoint_X float="0.964200" />
				<WhitePoint_Y float="1.000000" />
				<WhitePoint_Z float="0.824900" />
			</WhitePoint>
		</Analytical>
	</Defn>
	<Extensions>
		<ExtensionVersion UInt32="80" />
		<ExtensionSize UInt32="999" />
		<ExtensionElements>
			<BlackPoint>
				<BlackPoint_X float="0.000000" />
				<BlackPoint_Y float="0.500000" />
				<BlackPoint_Z float="-1.000000" />
			</BlackPoint>
		</ExtensionElements>
	</Extensions>
</GCM_CsdPointer>
)X");
}

TEST(GxcCsd, Noncolorimetric)
{
    const std::string text = csd(TicketBytes().u32({4}).u8({4, 0, 0, 0}).u32({3}).u32({3}).u32({0}));
    EXPECT_NE(text.find(R"X(	<Type GCM_CsdType="GCM_CSDTYPE_NONCOLORIMETRIC" />
	<NumBaseChans UInt8="4" />
	<NumNamedChans UInt8="0" />
	<HasSecondaryProfile Bool="FALSE" />
	<HasAlternateDefn Bool="FALSE" />
	<DefaultRenderIntent GCM_RenderIntent="GCM_RI_COLORIMETRIC_REL" />
	<Defn>
		<NonColorimetric GNC_Format="GNC_FORMAT_CMYK" />
	</Defn>
	<Extensions>
)X"),
              std::string::npos);
}

TEST(GxcCsd, CieDataWithNamesSecondaryProfileAndASkippedVersion80)
{
    TicketBytes t;
    t.u32({5}).u8({1, 1, 1, 0}).u32({0}).u32({5}).text("Ink").text("b.icc");
    t.u32({0}).repeat(0, 132).u32({0});  // a record with empty tables
    t.u32({80, 3}).u8({7, 7, 7}).u32({71, 1}).u8({0}).u32({0});
    const std::string text = csd(t);
    EXPECT_EQ(text.substr(0, text.find("\t\t<GCM_CieLuts>\n")), R"X(<GCM_CsdPointer>
	<Type GCM_CsdType="GCM_CSDTYPE_CIELUT_DATA" />
	<NumBaseChans UInt8="1" />
	<NumNamedChans UInt8="1" />
	<HasSecondaryProfile Bool="TRUE" />
	<HasAlternateDefn Bool="FALSE" />
	<DefaultRenderIntent GCM_RenderIntent="GCM_RI_PERCEPTUAL" />
	<Defn>
		<CieBased GCM_CieFamily="GCM_CIE_FAMILY_CALGRAY" />
	</Defn>
	<NamedChans>
		<ChanName String="Ink" />
	</NamedChans>
	<SecondaryProfile String="b.icc" />
	<GCM_CieLutsPointer>
)X");
    EXPECT_EQ(text.substr(text.find("\t\t</GCM_CieLuts>\n")), R"X(		</GCM_CieLuts>
		<DecodeABC_A float_array="" />
		<Extensions>
		</Extensions>
	</GCM_CieLutsPointer>
	<Extensions>
		<ExtensionVersion UInt32="71" />
		<ExtensionSize UInt32="1" />
		<ExtensionElements>
			<UseIlluminantInfo Bool="FALSE" />
		</ExtensionElements>
	</Extensions>
</GCM_CsdPointer>
)X");
}

TEST(GxcCsd, TheSecondaryProfileStandsAheadOfTheProfile)
{
    TicketBytes t;
    t.u32({2}).u8({3, 1, 1, 0}).u32({0}).u32({2}).text("Ink").text("b.icc").u8({0xA0, 0x0B}).u32({0});
    const std::string text = csd(t);
    EXPECT_NE(text.find(R"X(	<Defn>
		<ProfileBufferSize UInt32="2" />
	</Defn>
	<NamedChans>
		<ChanName String="Ink" />
	</NamedChans>
	<SecondaryProfile String="b.icc" />
	<ProfileBuffer>A00B</ProfileBuffer>
	<Extensions>
	</Extensions>
)X"),
              std::string::npos)
        << text;
}

TEST(GxcCsd, UnknownTypesHaveNoDefinition)
{
    for (const uint32_t type : {1u, 7u, 8u, 9u, 0xFFFFFFFFu})
    {
        const std::string text = csd(TicketBytes().u32({type}).u8({1, 0, 0, 0}).u32({5}).u32({0}));
        EXPECT_EQ(text, R"X(<GCM_CsdPointer>
	<Type GCM_CsdType="(null)" />
	<NumBaseChans UInt8="1" />
	<NumNamedChans UInt8="0" />
	<HasSecondaryProfile Bool="FALSE" />
	<HasAlternateDefn Bool="FALSE" />
	<DefaultRenderIntent GCM_RenderIntent="(null)" />
	<Extensions>
	</Extensions>
</GCM_CsdPointer>
)X") << type;
    }
}

TEST(GxcCsd, PostRenderLutOf8Bits)
{
    TicketBytes t;
    t.u32({7}).u8({3, 0, 0, 0}).u32({0}).u32({80, 1}).u8({2, 2, 8}).u8({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 255});
    EXPECT_EQ(csd(t.u32({0})), R"X(<GCM_CsdPointer>
	<Type GCM_CsdType="(null)" />
	<NumBaseChans UInt8="3" />
	<NumNamedChans UInt8="0" />
	<HasSecondaryProfile Bool="FALSE" />
	<HasAlternateDefn Bool="FALSE" />
	<DefaultRenderIntent GCM_RenderIntent="GCM_RI_PERCEPTUAL" />
	<Extensions>
		<ExtensionVersion UInt32="80" />
		<ExtensionSize UInt32="1" />
		<ExtensionElements>
			<PostRenderLut>
				<LutDimensions UInt8="2" />
				<LutSize UInt8="2" />
				<LutOutputBitDepth UInt8="8" />
				<Lut UInt8_array="0 1 2 3 4 5 6 7 8 9 10 255" />
			</PostRenderLut>
		</ExtensionElements>
	</Extensions>
</GCM_CsdPointer>
)X");
}

// Reads a post-render LUT whose table stands behind its three bytes; gives its text.
std::string lut(uint8_t dimensions, uint8_t size, uint8_t depth, uint8_t channels, size_t bytes)
{
    TicketBytes t;
    t.u8({dimensions, size, depth}).repeat(1, bytes);
    GuardedBlock block(t.bytes().data(), t.size());
    MemoryStream log;
    GXC_Writer writer = {nullptr, nullptr, log.get(), "", 0};
    GXC_Input input = {block.data(), block.size(), 0};
    EXPECT_TRUE(gxc_write_post_render_lut(&writer, &input, channels));
    EXPECT_EQ(input.offset, 3 + bytes);
    return log.text();
}

TEST(GxcCsd, PostRenderLutOf16BitsPrintsAsManyNumbersAsBytes)
{
    EXPECT_EQ(lut(1, 2, 16, 1, 4), R"X(<PostRenderLut>
	<LutDimensions UInt8="1" />
	<LutSize UInt8="2" />
	<LutOutputBitDepth UInt8="16" />
	<Lut UInt16_array="257 257 0 0" />
</PostRenderLut>
)X");
}

TEST(GxcCsd, PostRenderLutSizes)
{
    const std::string whole = lut(3, 17, 8, 3, 14739);
    EXPECT_EQ(std::count(whole.begin(), whole.end(), '1'), 14739 + 1);  // one more stands in the 17
    EXPECT_NE(lut(0, 0, 8, 1, 1).find("<Lut UInt8_array=\"1\" />"), std::string::npos);
    EXPECT_NE(lut(1, 0, 8, 1, 0).find("<Lut UInt8_array=\"\" />"), std::string::npos);
    EXPECT_NE(lut(1, 3, 12, 1, 4).find("<Lut UInt8_array=\"1 1 1 1\" />"), std::string::npos);
    EXPECT_NE(lut(1, 3, 1, 1, 0).find("<Lut UInt8_array=\"\" />"), std::string::npos);
    // 16^8 is 2^32, and 255^255 is beyond any integer: both are 0 modulo 2^32.
    EXPECT_NE(lut(8, 16, 8, 3, 0).find("<Lut UInt8_array=\"\" />"), std::string::npos);
    EXPECT_NE(lut(255, 255, 8, 3, 0).find("<Lut UInt8_array=\"\" />"), std::string::npos);
    EXPECT_NE(lut(255, 1, 8, 2, 2).find("<Lut UInt8_array=\"1 1\" />"), std::string::npos);
    // 2^30 entries of 32 bits are 2^32 bytes in 32-bit arithmetic: 0.
    EXPECT_NE(lut(30, 2, 32, 1, 0).find("<Lut UInt8_array=\"\" />"), std::string::npos);
}

TEST(GxcCsd, Version80DependsOnTheType)
{
    const std::string text = csd(TicketBytes().u32({6}).u8({0, 0, 0, 0}).u32({0}).u32({80, 3}).u8({1, 2, 3}).u32({0}));
    EXPECT_NE(text.find("\t<Extensions>\n\t</Extensions>\n"), std::string::npos);
}

TEST(GxcCsd, AlternateStandsInside)
{
    TicketBytes t;
    t.u32({6}).u8({0, 0, 0, 1}).u32({0}).u32({0}).append(plain_csd());
    EXPECT_EQ(csd(t), R"X(<GCM_CsdPointer>
	<Type GCM_CsdType="GCM_CSDTYPE_NO_BASE_CHANS" />
	<NumBaseChans UInt8="0" />
	<NumNamedChans UInt8="0" />
	<HasSecondaryProfile Bool="FALSE" />
	<HasAlternateDefn Bool="TRUE" />
	<DefaultRenderIntent GCM_RenderIntent="GCM_RI_PERCEPTUAL" />
	<Extensions>
	</Extensions>
	<AlternateDefn>
		<GCM_CsdPointer>
			<Type GCM_CsdType="GCM_CSDTYPE_NO_BASE_CHANS" />
			<NumBaseChans UInt8="0" />
			<NumNamedChans UInt8="0" />
			<HasSecondaryProfile Bool="FALSE" />
			<HasAlternateDefn Bool="FALSE" />
			<DefaultRenderIntent GCM_RenderIntent="GCM_RI_PERCEPTUAL" />
			<Extensions>
			</Extensions>
		</GCM_CsdPointer>
	</AlternateDefn>
</GCM_CsdPointer>
)X");
}

TEST(GxcCsd, AnAlternateFlagOf2MeansThatNothingFollows)
{
    const std::string text = csd(TicketBytes().u32({6}).u8({0, 0, 2, 2}).u32({0}).u32({0}));
    EXPECT_EQ(text.find("AlternateDefn>"), std::string::npos);
    EXPECT_EQ(text.find("SecondaryProfile S"), std::string::npos);
    EXPECT_NE(text.find("<HasAlternateDefn Bool=\"FALSE\" />"), std::string::npos);
}

TEST(GxcCsd, DeepAlternatesStopIndentingAt16Tabs)
{
    TicketBytes t;
    for (int i = 0; i < 10; ++i)
        t.u32({6}).u8({0, 0, 0, 1}).u32({0}).u32({0});
    const std::string text = csd(t.append(plain_csd()));
    const std::string tabs(16, '\t');
    // Levels: definition i stands at 2i, its fields at 2i + 1; the seventh alternate's fields are at 15.
    EXPECT_NE(
        text.find("\n" + std::string(15, '\t') + "<AlternateDefn>\n" + tabs + "<GCM_CsdPointer>\n" + tabs + "<Type "),
        std::string::npos);
    EXPECT_EQ(text.find(tabs + "\t"), std::string::npos);
    std::string tail;
    for (int i = 10; i >= 0; --i)
    {
        const auto level = static_cast<size_t>(2 * i);
        tail += std::string(std::min<size_t>(level, 16), '\t') + "</GCM_CsdPointer>\n";
        if (i != 0)
            tail += std::string(std::min<size_t>(level - 1, 16), '\t') + "</AlternateDefn>\n";
    }
    ASSERT_GE(text.size(), tail.size());
    EXPECT_EQ(text.substr(text.size() - tail.size()), tail);
}

TEST(GxcCsd, AlternatesNestAsDeepAsTheBlockGoes)
{
    constexpr int kDepth = 20000;
    TicketBytes t;
    for (int i = 0; i < kDepth; ++i)
        t.u32({6}).u8({0, 0, 0, 1}).u32({0}).u32({0});
    const std::string text = csd(t.append(plain_csd()));
    size_t opened = 0;
    for (size_t at = text.find("<AlternateDefn>"); at != std::string::npos; at = text.find("<AlternateDefn>", at + 1))
        ++opened;
    EXPECT_EQ(opened, static_cast<size_t>(kDepth));
}

}  // namespace
