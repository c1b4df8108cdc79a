#include "clients/colour/colour-manager.h"

#include "orvlog/colour/gxc/gxc-ticket.h"
#include "tests/clients/colour/test-profiles.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace orvlog::test;
using orvlog::colour::Bytes;
using orvlog::colour::ColourManager;
using orvlog::colour::Family;
using orvlog::colour::TicketDescription;

class Manager : public testing::Test
{
protected:
    ColourManager manager;
    std::vector<std::string> complaints;

    void* make(const TicketDescription& description)
    {
        return manager.make_ticket(description, &complaints);
    }

    // The text of a ticket, which must be read to its last byte.
    std::string text_of(const void* ticket, int32_t family)
    {
        const Bytes& bytes = ColourManager::serialised(ticket);
        MemoryStream log;
        GXC_Writer writer = {nullptr, nullptr, log.get(), "", 0};
        GXC_Input input = {bytes.data(), bytes.size(), 0};
        EXPECT_TRUE(gxc_write_ticket(&writer, &input, family));
        EXPECT_EQ(input.offset, bytes.size());
        return log.text();
    }
};

std::string hex(const Bytes& bytes)
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const uint8_t byte : bytes)
    {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

TEST_F(Manager, PlainRgbTicket)
{
    TicketDescription description;
    description.intents.image = GCM_RI_COLORIMETRIC_REL;
    const void* ticket = make(description);
    EXPECT_TRUE(complaints.empty());
    const std::string text = text_of(ticket, 1);
    EXPECT_EQ(text.substr(0, text.find("\t\t\t\t<InputRGB>")), R"X(<GXC_ColorTickets>
	<RGBRenderColorSpace>
		<GCM_ColorTicket>
			<FixedSizeData>
				<PreRenderOverrideGrayPreserve Bool="FALSE" />
				<PostRenderGrayPreserve Bool="FALSE" />
				<PureBlackTextPreserve Bool="FALSE" />
				<PostConvInRenderer Bool="FALSE" />
				<UseOutputGbd Bool="FALSE" />
				<UseOverride Bool="FALSE" />
				<PreConvInPdl Bool="FALSE" />
				<PreConvImageOverrideInPdl Bool="FALSE" />
				<XformQuality GCM_QualityHint="GCM_QUAL_HIGH" />
				<XformPerformance GCM_PerformanceHint="GCM_PERF_MEDIUM" />
			</FixedSizeData>
			<CSD_Data>
				<Marker UInt32="0" />
				<GCM_CsdPointer>
					<Type GCM_CsdType="GCM_CSDTYPE_ANALYTICAL" />
					<NumBaseChans UInt8="3" />
					<NumNamedChans UInt8="0" />
					<HasSecondaryProfile Bool="FALSE" />
					<HasAlternateDefn Bool="FALSE" />
					<DefaultRenderIntent GCM_RenderIntent="GCM_RI_PERCEPTUAL" />
					<Defn>
						<Analytical>
							<ColorSpace GCM_AnalyticalColorSpaceType="GCM_ACS_SRGB" />
							<WhitePoint>
								<WhitePoint_X float="0.950456" />
								<WhitePoint_Y float="1.000000" />
								<WhitePoint_Z float="1.089058" />
							</WhitePoint>
						</Analytical>
					</Defn>
					<Extensions>
						<ExtensionVersion UInt32="80" />
						<ExtensionSize UInt32="12" />
						<ExtensionElements>
							<BlackPoint>
								<BlackPoint_X float="0.000000" />
								<BlackPoint_Y float="0.000000" />
								<BlackPoint_Z float="0.000000" />
							</BlackPoint>
						</ExtensionElements>
					</Extensions>
				</GCM_CsdPointer>
				<Marker UInt32="1" />
				<GCM_CsdPointer>
					<Type GCM_CsdType="GCM_CSDTYPE_NONCOLORIMETRIC" />
					<NumBaseChans UInt8="1" />
					<NumNamedChans UInt8="0" />
					<HasSecondaryProfile Bool="FALSE" />
					<HasAlternateDefn Bool="FALSE" />
					<DefaultRenderIntent GCM_RenderIntent="GCM_RI_PERCEPTUAL" />
					<Defn>
						<NonColorimetric GNC_Format="GNC_FORMAT_GRAY" />
					</Defn>
					<Extensions>
					</Extensions>
				</GCM_CsdPointer>
				<Marker UInt32="2" />
				<GCM_CsdPointer>
					<Type GCM_CsdType="GCM_CSDTYPE_NONCOLORIMETRIC" />
					<NumBaseChans UInt8="4" />
					<NumNamedChans UInt8="0" />
					<HasSecondaryProfile Bool="FALSE" />
					<HasAlternateDefn Bool="FALSE" />
					<DefaultRenderIntent GCM_RenderIntent="GCM_RI_PERCEPTUAL" />
					<Defn>
						<NonColorimetric GNC_Format="GNC_FORMAT_CMYK" />
					</Defn>
					<Extensions>
					</Extensions>
				</GCM_CsdPointer>
			</CSD_Data>
			<VariableSizedData>
				<RenderColorSpace>
					<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_RENDER_SPACE" />
					<Size UInt32="26" />
					<PostRenderIntents>
						<TextRenderIntent GCM_RenderIntent="GCM_RI_PERCEPTUAL" />
						<LineRenderIntent GCM_RenderIntent="GCM_RI_PERCEPTUAL" />
						<GraphicsRenderIntent GCM_RenderIntent="GCM_RI_PERCEPTUAL" />
						<ImageRenderIntent GCM_RenderIntent="GCM_RI_COLORIMETRIC_REL" />
					</PostRenderIntents>
					<RenderBitDepth UInt32="8" />
					<RenderHasAlpha Bool="FALSE" />
					<RenderChansPremul Bool="FALSE" />
					<RenderCsdRef UInt32="0" />
				</RenderColorSpace>
)X");
    EXPECT_NE(text.find("<TextCsdRef UInt32=\"0\" />", text.find("<InputRGB>")), std::string::npos);
    EXPECT_EQ(text.find("<NamedProfiles>"), std::string::npos);
    EXPECT_NE(text.find("\t\t\t\t\t<OutputCsdRef UInt32=\"0\" />\n\t\t\t\t</Output>\n\t\t\t</VariableSizedData>\n"),
              std::string::npos);
}

// The four references of an input family, which are all alike; "?" if they are not.
std::string references(const std::string& text, std::string element)
{
    element += ">";
    const size_t at = text.find("</InputDefn>", text.find(element));
    const size_t end = text.find(element, at);
    const size_t value = text.find("TextCsdRef UInt32=\"", at) + 19;
    const std::string number = text.substr(value, text.find('"', value) - value);
    for (std::string line : {"<LineCsdRef UInt32=\"", "<GraphicsCsdRef UInt32=\"", "<ImageCsdRef UInt32=\""})
    {
        line += number;
        line += "\" />";
        if (text.find(line, at) > end)
            return "?";
    }
    return number;
}

TEST_F(Manager, ProfilesStandInTheTicket)
{
    TicketDescription description;
    description.render = Family::cmyk;
    description.inputs = {{"DefaultRGB", Family::rgb, rgb_profile()},
                          {"", Family::gray, gray_profile()},
                          {"second", Family::rgb, rgb_profile()}};
    description.default_gray = 1;
    description.default_rgb = 0;
    description.output_intent = cmyk_profile();
    const void* ticket = make(description);
    EXPECT_TRUE(complaints.empty());
    const std::string text = text_of(ticket, 2);
    // 0 is the output intent, which defines the render space; 1 to 3 are the inputs.
    EXPECT_EQ(references(text, "InputRGB"), "1");
    EXPECT_EQ(references(text, "InputGray"), "2");
    EXPECT_EQ(references(text, "InputCMYK"), "0");
    EXPECT_NE(text.find("<OutputCsdRef UInt32=\"0\" />"), std::string::npos);
    const size_t cmyk = text.find("<ProfileBuffer>" + hex(cmyk_profile()) + "</ProfileBuffer>");
    const size_t rgb = text.find("<ProfileBuffer>" + hex(rgb_profile()) + "</ProfileBuffer>");
    const size_t gray = text.find("<ProfileBuffer>" + hex(gray_profile()) + "</ProfileBuffer>");
    EXPECT_LT(cmyk, rgb);
    EXPECT_LT(rgb, gray);
    EXPECT_NE(gray, std::string::npos);
    EXPECT_NE(text.find("<IsDeviceLinkProfile Bool=\"TRUE\" />"), std::string::npos);
    EXPECT_NE(text.find("<DefaultRenderIntent GCM_RenderIntent=\"GCM_RI_SATURATION\" />"), std::string::npos);
    EXPECT_NE(text.find("<DefaultRenderIntent GCM_RenderIntent=\"GCM_RI_COLORIMETRIC_REL\" />"), std::string::npos);
    EXPECT_NE(text.find("<DefaultRenderIntent GCM_RenderIntent=\"GCM_RI_COLORIMETRIC_ABS\" />"), std::string::npos);
    EXPECT_NE(text.find("<NumNamedProfiles UInt32=\"3\" />\n\t\t\t\t\t<UseDeviceValues BoolArray=\"FALSE FALSE FALSE\" "
                        "/>\n\t\t\t\t\t<ProfileNames String=\"DefaultRGB\" String=\"gray built-in\" String=\"second\" "
                        "/>\n"),
              std::string::npos)
        << text.substr(text.find("<NamedProfiles>"), 600);
    EXPECT_NE(text.find("<PureBlackPreserve>"), std::string::npos);
}

TEST_F(Manager, AnOutputIntentOfAnotherFamilyStandsAlone)
{
    TicketDescription description;
    description.output_intent = cmyk_profile();
    const std::string text = text_of(make(description), 1);
    EXPECT_NE(text.find("<OutputCsdRef UInt32=\"1\" />"), std::string::npos);
    EXPECT_NE(text.find("<PostConvInRenderer Bool=\"TRUE\" />"), std::string::npos);
    EXPECT_EQ(references(text, "InputRGB"), "0");
    EXPECT_EQ(references(text, "InputGray"), "2");
    EXPECT_EQ(references(text, "InputCMYK"), "3");
}

TEST_F(Manager, WhatCannotBeReadIsLeftOutWithAComplaint)
{
    TicketDescription description;
    description.inputs = {{"broken", Family::rgb, {1, 2, 3}},
                          {"lab", Family::rgb, lab_profile()},
                          {"other", Family::cmyk, rgb_profile()},
                          {"empty", Family::rgb, {}}};
    description.default_rgb = 0;
    description.default_cmyk = 2;
    description.default_gray = 99;
    description.output_intent = {9};
    const void* ticket = make(description);
    EXPECT_EQ(complaints, (std::vector<std::string>{
                              "colour profile broken: not an ICC profile",
                              "colour profile lab: a profile of another space than gray, RGB or CMYK",
                              "colour profile other: it is of another family than the space that it stands for",
                              "colour profile empty: not an ICC profile",
                              "colour profile of the output intent: not an ICC profile"}));
    EXPECT_EQ(ColourManager::serialised(ticket), ColourManager::serialised(make(TicketDescription())));
}

TEST_F(Manager, EqualDescriptionsGiveTheSameTicket)
{
    TicketDescription gray;
    gray.render = Family::gray;
    void* first = make(TicketDescription());
    void* second = make(gray);
    EXPECT_NE(first, second);
    EXPECT_EQ(make(TicketDescription()), first);
    EXPECT_EQ(manager.tickets(), (std::vector<const void*>{first, second}));
    EXPECT_EQ(ColourManager::key_of(first), 1u);
    EXPECT_EQ(ColourManager::key_of(second), 2u);
}

TEST_F(Manager, CountsReferences)
{
    const ORVLOG_TicketFunctions* functions = ColourManager::ticket_functions();
    void* ticket = make(TicketDescription());
    EXPECT_EQ(functions->retain(ticket), 1u);
    EXPECT_EQ(manager.counts().retained, 2u);
    EXPECT_EQ(functions->release(ticket), 1u);
    ColourManager::release(ticket);
    EXPECT_EQ(manager.counts().released, 2u);
    EXPECT_EQ(functions->release(ticket), 0u);
    EXPECT_EQ(manager.counts().released, 2u);
}

TEST_F(Manager, AnswersInquiries)
{
    const ORVLOG_TicketFunctions* functions = ColourManager::ticket_functions();
    TicketDescription description;
    description.render = Family::cmyk;
    description.render_bit_depth = 16;
    description.render_has_alpha = true;
    void* ticket = make(description);
    uint32_t space[6] = {9, 9, 9, 9, 9, 9};
    uint32_t render[5] = {9, 9, 9, 9, 9};
    EXPECT_EQ(functions->query(ticket, space, render), 1u);
    const uint32_t expected_space[6] = {1, 16, 1, 4, 1, 9};
    const uint32_t expected_render[5] = {1, 0, 0, 0, 9};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(space[i], expected_space[i]) << i;
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(render[i], expected_render[i]) << i;
    uint32_t key = 0;
    EXPECT_EQ(functions->key(ticket, &key), 1u);
    EXPECT_EQ(key, 1u);
    const GCM_Csd* const* list = nullptr;
    EXPECT_EQ(functions->csd_list(ticket, &list, 0, 0), 1u);
    EXPECT_EQ(list[0]->csd_NumBaseChans, 4);
    EXPECT_EQ(list[0]->csd_Type, uint32_t{GCM_CSDTYPE_NONCOLORIMETRIC});
    EXPECT_EQ(list[1]->csd_NumBaseChans, 1);
    EXPECT_EQ(list[2]->csd_NumBaseChans, 3);
    EXPECT_EQ(list[3], nullptr);
}

TEST_F(Manager, TheSerialiserTellsOfAFailedWrite)
{
    void* ticket = make(TicketDescription());
    MemoryStream stream;
    const ORVLOG_TicketSerialFunctions* serial = ColourManager::ticket_serial_functions();
    EXPECT_EQ(serial->serialise(ticket, stream.get(), 1, 0), 1u);
    EXPECT_EQ(Bytes(stream.text().begin(), stream.text().end()), ColourManager::serialised(ticket));
    stream.fail(1);
    EXPECT_EQ(serial->serialise(ticket, stream.get(), 1, 0), 0u);
    stream.fail(2);
    EXPECT_EQ(serial->serialise(ticket, stream.get(), 1, 0), 0u);
    EXPECT_EQ(manager.counts().serialised, 3u);
}

}  // namespace
