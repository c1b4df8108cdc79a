#include "orvlog/colour/gxc/gxc-variable.h"

#include "tests/support/memory-stream.h"
#include "tests/support/ticket-bytes.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

// The text of the sections in `bytes`, to which the end marker is added, without the element around them.
std::string sections(TicketBytes bytes)
{
    bytes.u32({0});
    GuardedBlock block(bytes.bytes().data(), bytes.size());
    MemoryStream log;
    GXC_Writer writer = {nullptr, nullptr, log.get(), "", 0};
    GXC_Input input = {block.data(), block.size(), 0};
    EXPECT_TRUE(gxc_write_variable_data(&writer, &input));
    EXPECT_EQ(input.offset, bytes.size());
    EXPECT_EQ(writer.level, 0u);
    const std::string begin = "<VariableSizedData>\n";
    const std::string end = "</VariableSizedData>\n";
    const std::string text = log.text();
    EXPECT_EQ(text.substr(0, begin.size()), begin);
    EXPECT_EQ(text.substr(text.size() - end.size()), end);
    return text.substr(begin.size(), text.size() - begin.size() - end.size());
}

std::string text_of(uint32_t marker, uint32_t size, const TicketBytes& fields)
{
    return sections(TicketBytes().u32({marker, size}).append(fields));
}

TEST(GxcVariable, EmptyStream)
{
    EXPECT_EQ(sections(TicketBytes()), "");
}

TEST(GxcVariable, Section1)
{
    EXPECT_EQ(text_of(1, 26, TicketBytes().u32({0, 1, 2, 3, 8}).u8({1, 2}).u32({7})), R"X(	<RenderColorSpace>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_RENDER_SPACE" />
		<Size UInt32="26" />
		<PostRenderIntents>
			<TextRenderIntent GCM_RenderIntent="GCM_RI_PERCEPTUAL" />
			<LineRenderIntent GCM_RenderIntent="GCM_RI_SATURATION" />
			<GraphicsRenderIntent GCM_RenderIntent="GCM_RI_COLORIMETRIC_ABS" />
			<ImageRenderIntent GCM_RenderIntent="GCM_RI_COLORIMETRIC_REL" />
		</PostRenderIntents>
		<RenderBitDepth UInt32="8" />
		<RenderHasAlpha Bool="TRUE" />
		<RenderChansPremul Bool="FALSE" />
		<RenderCsdRef UInt32="7" />
	</RenderColorSpace>
)X");
}

// One of the four input families.
std::string input_text(uint32_t marker)
{
    return text_of(marker, 24, TicketBytes().u8({1, 9, 0, 8, 1, 7, 2, 255}).u32({10, 20, 30, 0xFFFFFFFF}));
}

TEST(GxcVariable, Section2)
{
    EXPECT_EQ(input_text(2), R"X(	<InputRGB>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_RGB_INPUT" />
		<Size UInt32="24" />
		<InputDefn>
			<GCM_InputFamilyDefinition>
				<Text>
					<GrayPreserve Bool="TRUE" />
					<PrebuildXforms UInt8="9" />
				</Text>
				<Line>
					<GrayPreserve Bool="FALSE" />
					<PrebuildXforms UInt8="8" />
				</Line>
				<Graphics>
					<GrayPreserve Bool="TRUE" />
					<PrebuildXforms UInt8="7" />
				</Graphics>
				<Image>
					<GrayPreserve Bool="FALSE" />
					<PrebuildXforms UInt8="255" />
				</Image>
			</GCM_InputFamilyDefinition>
		</InputDefn>
		<TextCsdRef UInt32="10" />
		<LineCsdRef UInt32="20" />
		<GraphicsCsdRef UInt32="30" />
		<ImageCsdRef UInt32="4294967295" />
	</InputRGB>
)X");
}

TEST(GxcVariable, Sections3To5HaveTheFormOf2)
{
    const char* const elements[] = {"InputCMYK", "InputGray", "InputNamed"};
    const char* const markers[] = {"GCM_SER_MARKER_CMYK_INPUT", "GCM_SER_MARKER_GRAY_INPUT",
                                   "GCM_SER_MARKER_NAMED_INPUT"};
    const std::string model = input_text(2);
    const std::string inside =
        model.substr(model.find("\t\t<Size"), model.find("\t</InputRGB>") - model.find("\t\t<Size"));
    for (uint32_t i = 0; i < 3; ++i)
    {
        const std::string element = elements[i];
        EXPECT_EQ(input_text(3 + i), "\t<" + element + ">\n\t\t<GCM_SerMarker GCM_SerMarker=\"" + markers[i] +
                                         "\" />\n" + inside + "\t</" + element + ">\n");
    }
}

TEST(GxcVariable, Section6)
{
    EXPECT_EQ(text_of(6, 10, TicketBytes().u32({16}).u8({0, 1}).u32({2})), R"X(	<Output>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_OUTPUT_SPACE" />
		<Size UInt32="10" />
		<OutputBitDepth UInt32="16" />
		<OutputChansHasAlpha Bool="FALSE" />
		<OutputChansPremul Bool="TRUE" />
		<OutputCsdRef UInt32="2" />
	</Output>
)X");
}

TEST(GxcVariable, Sections7And8)
{
    EXPECT_EQ(sections(TicketBytes().u32({7, 4, 5, 8, 4, 6})), R"X(	<PostRenderSim>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_POST_RENDER_SIM" />
		<Size UInt32="4" />
		<PostSimulationCsdRef UInt32="5" />
	</PostRenderSim>
	<PreRenderOverrideSim>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_PRE_RENDER_OVERRIDE_SIM" />
		<Size UInt32="4" />
		<PostSimulationCsdRef UInt32="6" />
	</PreRenderOverrideSim>
)X");
}

TEST(GxcVariable, Section9)
{
    TicketBytes fields;
    fields.u8({1, 0, 2, 1}).u32({1, 2, 3, 4, 5, 6, 2}).u16({1, 2, 65535, 4, 5, 6, 7}).u16({8, 9, 10, 11, 12, 13, 14});
    EXPECT_EQ(text_of(9, 60, fields), R"X(	<RGBSpotColor>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_RGB_SPOT_COLOR" />
		<Size UInt32="60" />
		<EnableSpotImage>
			<TextFlag Bool="TRUE" />
			<LineFlag Bool="FALSE" />
			<GraphicsFlag Bool="FALSE" />
			<ImageFlag Bool="TRUE" />
		</EnableSpotImage>
		<MaxImagePixels UInt32="1" />
		<MaxImageWidth UInt32="2" />
		<MaxImageHeight UInt32="3" />
		<SpotColorType UInt32="4" />
		<UseWhitePoint UInt32="5" />
		<KeyBitDepth UInt32="6" />
		<NumCols UInt32="2" />
		<RGBSpotColorDefn>
			<Key UInt16_array="1 2 65535" />
			<Target UInt16_array="4 5 6 7" />
		</RGBSpotColorDefn>
		<RGBSpotColorDefn>
			<Key UInt16_array="8 9 10" />
			<Target UInt16_array="11 12 13 14" />
		</RGBSpotColorDefn>
	</RGBSpotColor>
)X");
}

TEST(GxcVariable, Section9WithNoColours)
{
    const std::string text = text_of(9, 32, TicketBytes().u8({0, 0, 0, 0}).u32({0, 0, 0, 0, 0, 0, 0}));
    EXPECT_NE(text.find("\t\t<NumCols UInt32=\"0\" />\n\t</RGBSpotColor>\n"), std::string::npos);
}

TEST(GxcVariable, Section10)
{
    TicketBytes fields;
    fields.u8({0, 1, 1, 0}).u32({10, 20, 30, 40, 50, 60, 1}).u16({1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_EQ(text_of(10, 48, fields), R"X(	<CMYKSpotColor>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_CMYK_SPOT_COLOR" />
		<Size UInt32="48" />
		<EnableSpotImage>
			<TextFlag Bool="FALSE" />
			<LineFlag Bool="TRUE" />
			<GraphicsFlag Bool="TRUE" />
			<ImageFlag Bool="FALSE" />
		</EnableSpotImage>
		<MaxImagePixels UInt32="10" />
		<MaxImageWidth UInt32="20" />
		<MaxImageHeight UInt32="30" />
		<SpotColorType UInt32="40" />
		<UseWhitePoint UInt32="50" />
		<KeyBitDepth UInt32="60" />
		<NumCols UInt32="1" />
		<CMYKSpotColorDefn>
			<Key UInt16_array="1 2 3 4" />
			<Target UInt16_array="5 6 7 8" />
		</CMYKSpotColorDefn>
	</CMYKSpotColor>
)X");
}

TEST(GxcVariable, Section11)
{
    EXPECT_EQ(text_of(11, 9, TicketBytes().u8({1}).f32({0.5f, 0.03125f})), R"X(	<GrayDetect>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_GRAY_DETECT" />
		<Size UInt32="9" />
		<GrayscaleDetect Bool="TRUE" />
		<RgbGrayThreshold float="0.500000" />
		<CmyGrayThreshold float="0.031250" />
	</GrayDetect>
)X");
}

TEST(GxcVariable, Sections12To15)
{
    TicketBytes t;
    for (uint32_t marker = 12; marker <= 15; ++marker)
        t.u32({marker, 16, marker, 2, 3, 4});
    EXPECT_EQ(sections(t), R"X(	<RGBPreSim>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_RGB_PRE_SIM" />
		<Size UInt32="16" />
		<TextCsdRef UInt32="12" />
		<LineCsdRef UInt32="2" />
		<GraphicsCsdRef UInt32="3" />
		<ImageCsdRef UInt32="4" />
	</RGBPreSim>
	<CMYKPreSim>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_CMYK_PRE_SIM" />
		<Size UInt32="16" />
		<TextCsdRef UInt32="13" />
		<LineCsdRef UInt32="2" />
		<GraphicsCsdRef UInt32="3" />
		<ImageCsdRef UInt32="4" />
	</CMYKPreSim>
	<GrayPreSim>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_GRAY_PRE_SIM" />
		<Size UInt32="16" />
		<TextCsdRef UInt32="14" />
		<LineCsdRef UInt32="2" />
		<GraphicsCsdRef UInt32="3" />
		<ImageCsdRef UInt32="4" />
	</GrayPreSim>
	<NamedPreSim>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_NAMED_PRE_SIM" />
		<Size UInt32="16" />
		<TextCsdRef UInt32="15" />
		<LineCsdRef UInt32="2" />
		<GraphicsCsdRef UInt32="3" />
		<ImageCsdRef UInt32="4" />
	</NamedPreSim>
)X");
}

TEST(GxcVariable, Section16)
{
    EXPECT_EQ(text_of(16, 20, TicketBytes().u32({3}).u8({1, 0, 2}).text("first").text("").text("a\"b")),
              R"X(	<NamedProfiles>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_NAMED_PROFILES" />
		<Size UInt32="20" />
		<NumNamedProfiles UInt32="3" />
		<UseDeviceValues BoolArray="TRUE FALSE FALSE" />
		<ProfileNames String="first" String="" String="a"b" />
	</NamedProfiles>
)X");
}

TEST(GxcVariable, Section16WithNoProfilesAndASizeBelow4)
{
    EXPECT_EQ(text_of(16, 0, TicketBytes().u32({0})), R"X(	<NamedProfiles>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_NAMED_PROFILES" />
		<Size UInt32="0" />
		<NumNamedProfiles UInt32="0" />
		<UseDeviceValues BoolArray="" />
		<ProfileNames />
	</NamedProfiles>
)X");
}

TEST(GxcVariable, Sections17And18)
{
    TicketBytes t;
    t.u32({17, 17}).u8({1}).u32({2}).f32({0.95f, 1, 1.089f}).u32({18, 13}).u8({0}).u32({3, 6500}).f32({80});
    EXPECT_EQ(sections(t), R"X(	<IllumWhitePt>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_ILLUM_WHITE_PT" />
		<Size UInt32="17" />
		<DefaultIllumMode Bool="TRUE" />
		<IllumLampGroup GCM_IlluminantLampGroup="GCM_LAMP_GROUP_THREE_BAND" />
		<IllumWhitePointX float="0.950000" />
		<IllumWhitePointY float="1.000000" />
		<IllumWhitePointZ float="1.089000" />
	</IllumWhitePt>
	<IllumTemp>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_ILLUM_TEMP" />
		<Size UInt32="13" />
		<DefaultIllumMode Bool="FALSE" />
		<IllumLampGroup GCM_IlluminantLampGroup="(null)" />
		<IllumColorTemp UInt32="6500" />
		<IllumLuminance float="80.000000" />
	</IllumTemp>
)X");
}

TEST(GxcVariable, SectionsOfFourFlags)
{
    TicketBytes t;
    t.u32({19, 4}).u8({1, 0, 0, 0}).u32({21, 4}).u8({0, 1, 0, 0}).u32({24, 4}).u8({0, 0, 1, 3});
    EXPECT_EQ(sections(t), R"X(	<GrayPreservePreOverride>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_GRAY_PRESERVE_PRE_OVERRIDE" />
		<Size UInt32="4" />
		<TextFlag Bool="TRUE" />
		<LineFlag Bool="FALSE" />
		<GraphicsFlag Bool="FALSE" />
		<ImageFlag Bool="FALSE" />
	</GrayPreservePreOverride>
	<PureBlackPreserve>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_PURE_BLACK_PRESERVE" />
		<Size UInt32="4" />
		<TextFlag Bool="FALSE" />
		<LineFlag Bool="TRUE" />
		<GraphicsFlag Bool="FALSE" />
		<ImageFlag Bool="FALSE" />
	</PureBlackPreserve>
	<NamedColorLookupDisable>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_NAMED_COLOR_LOOKUP_DISABLE" />
		<Size UInt32="4" />
		<TextFlag Bool="FALSE" />
		<LineFlag Bool="FALSE" />
		<GraphicsFlag Bool="TRUE" />
		<ImageFlag Bool="FALSE" />
	</NamedColorLookupDisable>
)X");
}

TEST(GxcVariable, Sections20And34)
{
    EXPECT_EQ(sections(TicketBytes().u32({20, 4, 9, 34, 4, 10})), R"X(	<GrayPreserveRenderCsd>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_GRAY_PRESERVE_RENDER_CSD" />
		<Size UInt32="4" />
		<CsdRef UInt32="9" />
	</GrayPreserveRenderCsd>
	<RgbToMonoCsd>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_RGB_TO_MONO_CSD" />
		<Size UInt32="4" />
		<CsdRef UInt32="10" />
	</RgbToMonoCsd>
)X");
}

TEST(GxcVariable, Section22)
{
    EXPECT_EQ(text_of(22, 8, TicketBytes().u8({1, 0, 0, 1, 0, 1, 1, 0})), R"X(	<PureBlackProcess>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_PURE_BLACK_PROCESS" />
		<Size UInt32="8" />
		<ProcessRGB>
			<TextFlag Bool="TRUE" />
			<LineFlag Bool="FALSE" />
			<GraphicsFlag Bool="FALSE" />
			<ImageFlag Bool="TRUE" />
		</ProcessRGB>
		<ProcessCMYK>
			<TextFlag Bool="FALSE" />
			<LineFlag Bool="TRUE" />
			<GraphicsFlag Bool="TRUE" />
			<ImageFlag Bool="FALSE" />
		</ProcessCMYK>
	</PureBlackProcess>
)X");
}

TEST(GxcVariable, SectionsOfOneFlag)
{
    TicketBytes t;
    t.u32({23, 1}).u8({1}).u32({26, 1}).u8({0}).u32({27, 1}).u8({2});
    EXPECT_EQ(sections(t), R"X(	<InputInDeviceRgb>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_INPUT_IN_DEVICE_RGB" />
		<Size UInt32="1" />
		<DeviceRGB Bool="TRUE" />
	</InputInDeviceRgb>
	<IgnoreColorimetricData>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_IGNORE_COLORIMETRIC_DATA" />
		<Size UInt32="1" />
		<Ignore Bool="FALSE" />
	</IgnoreColorimetricData>
	<RecombineSeparations>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_RECOMBINE_SEPARATIONS" />
		<Size UInt32="1" />
		<Recombine Bool="FALSE" />
	</RecombineSeparations>
)X");
}

TEST(GxcVariable, Section25)
{
    EXPECT_EQ(text_of(25, 16, TicketBytes().u32({1, 2, 3, 4})), R"X(	<RgbToMonoParams>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_RGB_TO_MONO_PARAMS" />
		<Size UInt32="16" />
		<TextConversion UInt32="1" />
		<LineConversion UInt32="2" />
		<GraphicsConversion UInt32="3" />
		<ImageConversion UInt32="4" />
	</RgbToMonoParams>
)X");
}

TEST(GxcVariable, Sections28To31)
{
    TicketBytes t;
    t.u32({28, 9}).text("dmp").text("").text("g1").text("").text("");
    t.u32({29, 5}).text("").text("").text("").text("").text("");
    t.u32({30, 10}).text("a").text("b").text("c").text("d").text("e");
    t.u32({31, 10}).text("f").text("g").text("h").text("i").text("j");
    EXPECT_EQ(sections(t), R"X(	<RGBVirtualProfilePlugins>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_RGB_VIRTUAL_PROFILE_PLUGINS" />
		<Size UInt32="9" />
		<DmpPlugIn String="dmp" />
		<Gmmp0PlugIn String="" />
		<Gmmp1PlugIn String="g1" />
		<Gmmp2PlugIn String="" />
		<Gmmp3PlugIn String="" />
	</RGBVirtualProfilePlugins>
	<RGBPrinterProfilePlugins>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_RGB_PRINTER_PROFILE_PLUGINS" />
		<Size UInt32="5" />
		<DmpPlugIn String="" />
		<Gmmp0PlugIn String="" />
		<Gmmp1PlugIn String="" />
		<Gmmp2PlugIn String="" />
		<Gmmp3PlugIn String="" />
	</RGBPrinterProfilePlugins>
	<InputDeviceProfilePlugins>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_INPUT_DEVICE_PROFILE_PLUGINS" />
		<Size UInt32="10" />
		<DmpPlugIn String="a" />
		<Gmmp0PlugIn String="b" />
		<Gmmp1PlugIn String="c" />
		<Gmmp2PlugIn String="d" />
		<Gmmp3PlugIn String="e" />
	</InputDeviceProfilePlugins>
	<CMYKPrinterProfilePlugins>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_CMYK_PRINTER_PROFILE_PLUGINS" />
		<Size UInt32="10" />
		<DmpPlugIn String="f" />
		<Gmmp0PlugIn String="g" />
		<Gmmp1PlugIn String="h" />
		<Gmmp2PlugIn String="i" />
		<Gmmp3PlugIn String="j" />
	</CMYKPrinterProfilePlugins>
)X");
}

TEST(GxcVariable, Section32)
{
    EXPECT_EQ(text_of(32, 18, TicketBytes().u8({1, 0}).f32({1, 2.2f, 1.8f, -1})), R"X(	<Pre-renderRgbGammaAdjustment>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_SET_PRE_RGB_GAMMA_ADJUSTMENT" />
		<Size UInt32="18" />
		<GammaEnabledDefaultPreRender Bool="TRUE" />
		<GammaEnabledPreRenderOverride Bool="FALSE" />
		<RgbTextGamma float="1.000000" />
		<RgbLineGamma float="2.200000" />
		<RgbGraphicsGamma float="1.800000" />
		<RgbImageGamma float="-1.000000" />
	</Pre-renderRgbGammaAdjustment>
)X");
}

TEST(GxcVariable, Section33)
{
    EXPECT_EQ(text_of(33, 17, TicketBytes().u8({1}).u32({4, 3, 2, 5})), R"X(	<StandardOverrideRenderIntents>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_SET_STD_OVERRIDE_RENDER_INTENTS" />
		<Size UInt32="17" />
		<EnableStdOverrideRenderIntents Bool="TRUE" />
		<MiscStdOverrideRenderIntents>
			<TextRenderIntent GCM_RenderIntent="GCM_RI_USER_DEFINED_1" />
			<LineRenderIntent GCM_RenderIntent="GCM_RI_COLORIMETRIC_REL" />
			<GraphicsRenderIntent GCM_RenderIntent="GCM_RI_COLORIMETRIC_ABS" />
			<ImageRenderIntent GCM_RenderIntent="(null)" />
		</MiscStdOverrideRenderIntents>
	</StandardOverrideRenderIntents>
)X");
}

TEST(GxcVariable, UnknownMarkersArePassedOverByTheirSize)
{
    EXPECT_EQ(sections(TicketBytes().u32({35, 10}).repeat(1, 10)), "");
    EXPECT_EQ(sections(TicketBytes().u32({0xFFFFFFFF, 4, 34})), "");
    EXPECT_EQ(sections(TicketBytes().u32({36, 0}).u32({20, 4, 1}).u32({35, 1}).u8({0})),
              R"X(	<GrayPreserveRenderCsd>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_GRAY_PRESERVE_RENDER_CSD" />
		<Size UInt32="4" />
		<CsdRef UInt32="1" />
	</GrayPreserveRenderCsd>
)X");
}

TEST(GxcVariable, KnownSectionsAreReadByTheirFieldsAndMayComeTwice)
{
    EXPECT_EQ(sections(TicketBytes().u32({20, 4000, 1}).u32({20, 0, 2})), R"X(	<GrayPreserveRenderCsd>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_GRAY_PRESERVE_RENDER_CSD" />
		<Size UInt32="4000" />
		<CsdRef UInt32="1" />
	</GrayPreserveRenderCsd>
	<GrayPreserveRenderCsd>
		<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_GRAY_PRESERVE_RENDER_CSD" />
		<Size UInt32="0" />
		<CsdRef UInt32="2" />
	</GrayPreserveRenderCsd>
)X");
}

}  // namespace
