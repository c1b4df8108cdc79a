#include "orvlog/colour/gxc/gxc-ticket.h"

#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"
#include "tests/support/ticket-bytes.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace
{

using namespace orvlog::test;

class GxcTicket : public testing::Test
{
protected:
    TestAllocator allocator;
    MemoryStream log;

    uint32_t deserialise(LentStream* input, int32_t family, const char* prefix = "")
    {
        return gxc_deserialise_ticket(allocator.get(), input->get(), family, log.get(), prefix);
    }
};

TicketBytes smallest()
{
    return fixed_data().u32({0xFFFFFFFF}).u32({0});
}

TEST_F(GxcTicket, WritesTheFrameOfAnRgbTicket)
{
    LentStream input(fixed_data().u32({0}).append(plain_csd()).u32({0xFFFFFFFF}).u32({34, 4, 3}).u32({0}));
    EXPECT_EQ(deserialise(&input, 1, "  "), 1u);
    EXPECT_EQ(log.text(), R"X(  <GXC_ColorTickets>
  	<RGBRenderColorSpace>
  		<GCM_ColorTicket>
  			<FixedSizeData>
  				<PreRenderOverrideGrayPreserve Bool="TRUE" />
  				<PostRenderGrayPreserve Bool="FALSE" />
  				<PureBlackTextPreserve Bool="FALSE" />
  				<PostConvInRenderer Bool="TRUE" />
  				<UseOutputGbd Bool="FALSE" />
  				<UseOverride Bool="FALSE" />
  				<PreConvInPdl Bool="TRUE" />
  				<PreConvImageOverrideInPdl Bool="FALSE" />
  				<XformQuality GCM_QualityHint="GCM_QUAL_HIGH" />
  				<XformPerformance GCM_PerformanceHint="GCM_PERF_LOW" />
  			</FixedSizeData>
  			<CSD_Data>
  				<Marker UInt32="0" />
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
  			</CSD_Data>
  			<VariableSizedData>
  				<RgbToMonoCsd>
  					<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_RGB_TO_MONO_CSD" />
  					<Size UInt32="4" />
  					<CsdRef UInt32="3" />
  				</RgbToMonoCsd>
  			</VariableSizedData>
  		</GCM_ColorTicket>
  	</RGBRenderColorSpace>
  </GXC_ColorTickets>
)X");
    EXPECT_EQ(log.unflushed(), 0u);
    EXPECT_EQ(allocator.requests(), 0u);
}

TEST_F(GxcTicket, WritesEmptyLists)
{
    LentStream input(smallest());
    EXPECT_EQ(deserialise(&input, 0), 1u);
    EXPECT_NE(log.text().find("\t\t\t<CSD_Data>\n\t\t\t</CSD_Data>\n"
                              "\t\t\t<VariableSizedData>\n\t\t\t</VariableSizedData>\n\t\t</GCM_ColorTicket>\n"),
              std::string::npos);
    EXPECT_EQ(input.position, 24);
}

TEST_F(GxcTicket, NamesTheFamily)
{
    const char* const names[] = {"GrayRenderColorSpace", "RGBRenderColorSpace", "CMYKRenderColorSpace",
                                 "NamedRenderColorSpace"};
    for (int32_t family = 0; family < 4; ++family)
    {
        LentStream input(smallest());
        EXPECT_EQ(deserialise(&input, family), 1u);
        const std::string name = names[family];
        EXPECT_EQ(log.text().find("<GXC_ColorTickets>\n\t<" + name + ">\n\t\t<GCM_ColorTicket>\n"), 0u);
        EXPECT_NE(log.text().find("\t\t</GCM_ColorTicket>\n\t</" + name + ">\n</GXC_ColorTickets>\n"),
                  std::string::npos);
        log.clear();
    }
}

TEST_F(GxcTicket, NoFamilyPrintsAsNull)
{
    LentStream input(smallest());
    EXPECT_EQ(deserialise(&input, -1), 1u);
    EXPECT_EQ(log.text().find("<GXC_ColorTickets>\n\t<(null)>\n\t\t<GCM_ColorTicket>\n\t\t\t<FixedSizeData>\n"), 0u);
    EXPECT_NE(log.text().find("\t\t</GCM_ColorTicket>\n\t</(null)>\n</GXC_ColorTickets>\n"), std::string::npos);
}

TEST_F(GxcTicket, UnknownHintsPrintAsNullAndOnlyTheByte1IsTrue)
{
    LentStream input(TicketBytes().u8({2, 255, 0, 1, 128, 3, 254, 1}).u32({5, 0xFFFFFFFF}).u32({0xFFFFFFFF}).u32({0}));
    EXPECT_EQ(deserialise(&input, 1), 1u);
    EXPECT_NE(log.text().find(R"X(			<FixedSizeData>
				<PreRenderOverrideGrayPreserve Bool="FALSE" />
				<PostRenderGrayPreserve Bool="FALSE" />
				<PureBlackTextPreserve Bool="FALSE" />
				<PostConvInRenderer Bool="TRUE" />
				<UseOutputGbd Bool="FALSE" />
				<UseOverride Bool="FALSE" />
				<PreConvInPdl Bool="FALSE" />
				<PreConvImageOverrideInPdl Bool="TRUE" />
				<XformQuality GCM_QualityHint="(null)" />
				<XformPerformance GCM_PerformanceHint="(null)" />
			</FixedSizeData>
)X"),
              std::string::npos);
}

TEST_F(GxcTicket, EveryMarkerButTheLastIntroducesADefinition)
{
    LentStream input(
        fixed_data().u32({0xFFFFFFFE}).append(plain_csd()).u32({0}).append(plain_csd()).u32({0xFFFFFFFF}).u32({0}));
    EXPECT_EQ(deserialise(&input, 1), 1u);
    EXPECT_NE(log.text().find("<Marker UInt32=\"4294967294\" />\n\t\t\t\t<GCM_CsdPointer>\n"), std::string::npos);
    EXPECT_NE(log.text().find("<Marker UInt32=\"0\" />\n\t\t\t\t<GCM_CsdPointer>\n"), std::string::npos);
    EXPECT_EQ(input.position, 16 + 20 + 20 + 8);
}

TEST_F(GxcTicket, BytesBehindTheTicketAreNotRead)
{
    LentStream input(smallest().repeat(0xFF, 100));
    EXPECT_EQ(deserialise(&input, 1), 1u);
    EXPECT_EQ(input.position, 24);
}

TEST_F(GxcTicket, AStreamThatCannotLendGivesNothing)
{
    LentStream input(smallest());
    input.refuses = true;
    EXPECT_EQ(deserialise(&input, 1), 0u);
    EXPECT_EQ(log.text(), "");
    EXPECT_EQ(log.operations(), 0u);
    EXPECT_EQ(input.last_errors, 1);
    EXPECT_EQ(input.cleared, 1);
    EXPECT_EQ(input.position, -1);
}

TEST_F(GxcTicket, EmptyOperationsAreNotCalled)
{
    LentStream input(smallest());
    input.operations.gio_Seek = nullptr;
    EXPECT_EQ(deserialise(&input, 1), 1u);
    log.clear();
    input.operations = {};
    EXPECT_EQ(deserialise(&input, 1), 0u);
    EXPECT_EQ(gxc_deserialise_ticket(allocator.get(), nullptr, 1, log.get(), ""), 0u);
    EXPECT_EQ(log.text(), "");
}

TEST_F(GxcTicket, StreamsWithoutOperationsAreNotUsed)
{
    LentStream input(smallest());
    const GIO_StreamOps none = {};
    GIO_Stream output = {nullptr, GIO_KIND_FILE, &none};
    EXPECT_EQ(gxc_deserialise_ticket(allocator.get(), input.get(), 1, &output, ""), 1u);
    EXPECT_EQ(input.position, 24);
    output.ops = nullptr;
    EXPECT_EQ(gxc_deserialise_ticket(allocator.get(), input.get(), 1, &output, ""), 1u);
    EXPECT_EQ(gxc_deserialise_ticket(allocator.get(), input.get(), 1, nullptr, ""), 1u);
    input.get()->ops = nullptr;
    EXPECT_EQ(deserialise(&input, 1), 0u);
    EXPECT_EQ(log.text(), "");
}

TEST_F(GxcTicket, NullPrefixIsEmpty)
{
    LentStream input(smallest());
    EXPECT_EQ(deserialise(&input, 1, nullptr), 1u);
    EXPECT_EQ(log.text().find("<GXC_ColorTickets>\n\t<RGB"), 0u);
}

// The bytes that a line of two-digit numbers says, up to three blanks.
TicketBytes bytes_of_line(const std::string& line)
{
    TicketBytes bytes;
    std::istringstream words(line.substr(0, line.find("   ")));
    for (std::string word; words >> word;)
        bytes.u8({static_cast<uint32_t>(std::stoul(word, nullptr, 16))});
    return bytes;
}

TEST_F(GxcTicket, TheDocumentedExampleIsTrue)
{
    std::ifstream file(ORVLOG_SOURCE_DIR "/docs/ticket-text.md", std::ios::binary);
    ASSERT_TRUE(file.is_open());
    TicketBytes ticket;
    std::string text;
    int fences = -1;
    for (std::string line; std::getline(file, line);)
        if (line == "## An example")
            fences = 0;
        else if (fences >= 0 && line == "```")
            ++fences;
        else if (fences == 1)
            ticket.append(bytes_of_line(line));
        else if (fences == 3)
            text += line + "\n";
    EXPECT_EQ(ticket.size(), 64u);
    LentStream input(ticket);
    EXPECT_EQ(deserialise(&input, 1), 1u);
    EXPECT_EQ(log.text(), text);
}

TEST_F(GxcTicket, AFailingLogDoesNotStopTheReader)
{
    LentStream input(smallest());
    log.fail(1, true);
    EXPECT_EQ(deserialise(&input, 1), 1u);
    EXPECT_EQ(input.position, 24);
}

}  // namespace
