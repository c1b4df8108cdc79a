// Texts of whole tickets: the bytes that come of them, and the text again.

#include "reader/tickets/ticket-bytes.h"

#include "orvlog/colour/gxc/gxc-ticket.h"
#include "tests/reader/tickets/dump-ticket.h"
#include "tests/support/ticket-bytes.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <cmath>
#include <limits>
#include <random>
#include <string>

namespace
{

using namespace orvlog::test;
using namespace std::string_literals;
using orvlog::reader::read_ticket_text;
using orvlog::reader::TicketEnding;
using orvlog::reader::TicketReading;

using Bytes = std::vector<uint8_t>;

constexpr uint32_t kListEnd = 0xFFFFFFFF;

TicketBytes plain_fixed_data()
{
    return TicketBytes().u8({1, 0, 1, 0, 0, 1, 1, 0}).u32({0, 4});
}

TicketBytes of_definitions(const TicketBytes& definitions)
{
    return plain_fixed_data().append(definitions).u32({kListEnd, 0});
}

TicketBytes of_sections(const TicketBytes& sections)
{
    return plain_fixed_data().u32({kListEnd}).append(sections).u32({0});
}

TicketReading read_whole(const std::string& text)
{
    TicketReading reading = read_ticket_text(text);
    EXPECT_EQ(reading.ending, TicketEnding::whole) << reading.line << ": " << reading.expected << "\n" << text;
    EXPECT_EQ(reading.line, 0u);
    EXPECT_EQ(reading.expected, "");
    EXPECT_EQ(reading.text_size, text.size());
    EXPECT_EQ(dump_again(reading), text);
    return reading;
}

// Of a ticket about which the text tells everything.
void expect_same_bytes(const TicketBytes& ticket)
{
    const TicketReading reading = read_whole(dump_ticket(ticket.bytes(), 2, "      "));
    EXPECT_EQ(reading.bytes, ticket.bytes());
    EXPECT_EQ(reading.family, 2);
    EXPECT_EQ(reading.line_prefix, "      ");
}

// Of a ticket about which it does not: what comes instead.
void expect_bytes(const TicketBytes& ticket, const TicketBytes& expected)
{
    EXPECT_EQ(read_whole(dump_ticket(ticket.bytes(), 1, "")).bytes, expected.bytes());
}

const std::string example = R"X(  <GXC_ColorTickets>
  	<RGBRenderColorSpace>
  		<GCM_ColorTicket>
  			<FixedSizeData>
  				<PreRenderOverrideGrayPreserve Bool="TRUE" />
  				<PostRenderGrayPreserve Bool="FALSE" />
  				<PureBlackTextPreserve Bool="FALSE" />
  				<PostConvInRenderer Bool="TRUE" />
  				<UseOutputGbd Bool="FALSE" />
  				<UseOverride Bool="FALSE" />
  				<PreConvInPdl Bool="FALSE" />
  				<PreConvImageOverrideInPdl Bool="FALSE" />
  				<XformQuality GCM_QualityHint="GCM_QUAL_HIGH" />
  				<XformPerformance GCM_PerformanceHint="GCM_PERF_LOW" />
  			</FixedSizeData>
  			<CSD_Data>
  				<Marker UInt32="7" />
  				<GCM_CsdPointer>
  					<Type GCM_CsdType="GCM_CSDTYPE_PROFILE_BUFFER" />
  					<NumBaseChans UInt8="3" />
  					<NumNamedChans UInt8="0" />
  					<HasSecondaryProfile Bool="FALSE" />
  					<HasAlternateDefn Bool="FALSE" />
  					<DefaultRenderIntent GCM_RenderIntent="GCM_RI_COLORIMETRIC_REL" />
  					<Defn>
  						<ProfileBufferSize UInt32="4" />
  					</Defn>
  					<ProfileBuffer>00FFA19C</ProfileBuffer>
  					<Extensions>
  					</Extensions>
  				</GCM_CsdPointer>
  			</CSD_Data>
  			<VariableSizedData>
  				<IgnoreColorimetricData>
  					<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_IGNORE_COLORIMETRIC_DATA" />
  					<Size UInt32="1" />
  					<Ignore Bool="TRUE" />
  				</IgnoreColorimetricData>
  				<NamedProfiles>
  					<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_NAMED_PROFILES" />
  					<Size UInt32="16" />
  					<NumNamedProfiles UInt32="2" />
  					<UseDeviceValues BoolArray="TRUE FALSE" />
  					<ProfileNames String="one" String="two" />
  				</NamedProfiles>
  			</VariableSizedData>
  		</GCM_ColorTicket>
  	</RGBRenderColorSpace>
  </GXC_ColorTickets>
)X";

const TicketBytes example_bytes = TicketBytes()
                                      .u8({1, 0, 0, 1, 0, 0, 0, 0, 3, 0, 0, 0, 1, 0, 0, 0})
                                      .u8({7, 0, 0, 0})
                                      .u8({2, 0, 0, 0, 3, 0, 0, 0, 3, 0, 0, 0, 4, 0, 0, 0, 0x00, 0xFF, 0xA1, 0x9C})
                                      .u8({0, 0, 0, 0})
                                      .u8({255, 255, 255, 255})
                                      .u8({26, 0, 0, 0, 1, 0, 0, 0, 1})
                                      .u8({16, 0, 0, 0, 16, 0, 0, 0, 2, 0, 0, 0, 1, 0})
                                      .u8({'o', 'n', 'e', 0, 't', 'w', 'o', 0})
                                      .u8({0, 0, 0, 0});

TEST(TicketText, GivesTheBytesOfAWholeTicket)
{
    const TicketReading reading = read_whole(example);
    EXPECT_EQ(reading.bytes, example_bytes.bytes());
    EXPECT_EQ(reading.line_prefix, "  ");
    EXPECT_EQ(reading.family, 1);
    EXPECT_FALSE(reading.has_stray_numbers);
}

TEST(TicketText, KnowsATicketOfAnUnknownFamilyByItsName)
{
    const std::string text = dump_ticket(example_bytes.bytes(), GXC_FAMILY_UNKNOWN, "  ");
    EXPECT_EQ(text.find("  <GXC_ColorTickets>\n  \t<UnknownRenderColorSpace>\n"), 0U);
    const TicketReading reading = read_whole(text);
    EXPECT_EQ(reading.family, GXC_FAMILY_UNKNOWN);
    EXPECT_EQ(reading.bytes, example_bytes.bytes());
}

TEST(TicketText, TakesATextWithoutItsFirstIndentAndLastNewline)
{
    const TicketReading reading = read_ticket_text(example.substr(2, example.size() - 3));
    EXPECT_EQ(reading.ending, TicketEnding::whole);
    EXPECT_EQ(reading.bytes, example_bytes.bytes());
    EXPECT_EQ(reading.line_prefix, "  ");
    EXPECT_EQ(reading.text_size, example.size() - 3);
    EXPECT_EQ(dump_again(reading), example);
}

TEST(TicketText, DoesNotLookBehindTheTicket)
{
    const TicketReading reading = read_ticket_text(example + "</GCM_ColorTicket>\n" + example);
    EXPECT_EQ(reading.ending, TicketEnding::whole);
    EXPECT_EQ(reading.bytes, example_bytes.bytes());
    EXPECT_EQ(reading.text_size, example.size());
}

std::string with_returns(const std::string& text)
{
    std::string lines;
    for (const char c : text)
        lines.append(c == '\n' ? "\r\n" : std::string(1, c));
    return lines;
}

TEST(TicketText, TakesLinesThatEndInCarriageReturns)
{
    const TicketReading reading = read_ticket_text(with_returns(example) + "</GCM_ColorTicket>\r\n");
    EXPECT_EQ(reading.ending, TicketEnding::whole);
    EXPECT_EQ(reading.bytes, example_bytes.bytes());
    EXPECT_EQ(reading.text_size, with_returns(example).size());
    EXPECT_EQ(dump_again(reading), example);
    const TicketBytes names = of_sections(TicketBytes().u32({16, 4, 2}).u8({1, 0}).text("a\nb\r\n").text("\r"));
    const TicketReading odd = read_ticket_text(with_returns(dump_ticket(names.bytes(), 1, "")));
    EXPECT_EQ(odd.ending, TicketEnding::whole);
    EXPECT_EQ(odd.bytes, names.bytes());
    for (size_t size = 22; size + 2 < with_returns(example).size(); ++size)
    {
        const TicketReading cut = read_ticket_text(with_returns(example).substr(0, size));
        EXPECT_EQ(cut.ending, TicketEnding::cut) << size;
        EXPECT_LE(cut.text_size, size);
    }
    // Without a first line that ends so they are part of the text.
    EXPECT_EQ(read_ticket_text(example.substr(0, 22) + with_returns(example.substr(22))).ending, TicketEnding::damaged);
}

TEST(TicketText, AnyPrefixWillDo)
{
    for (const std::string prefix : {"", " ", "\t", "log: ", "<", "                                                  "})
    {
        const std::string text = dump_ticket(example_bytes.bytes(), 3, prefix);
        const TicketReading reading = read_whole(text);
        EXPECT_EQ(reading.bytes, example_bytes.bytes());
        EXPECT_EQ(reading.line_prefix, prefix);
        EXPECT_EQ(reading.family, 3);
    }
}

TEST(TicketText, TellsTheFamily)
{
    for (int32_t family = -1; family <= 3; ++family)
        EXPECT_EQ(read_whole(dump_ticket(example_bytes.bytes(), family, "")).family, family);
    EXPECT_EQ(read_whole(dump_ticket(example_bytes.bytes(), 4, "")).family, -1);
}

TEST(TicketText, EveryKindOfRecordGivesItsTextAgain)
{
    const TicketReading reading = read_whole(dump_ticket(rich_ticket().bytes(), 0, " "));
    EXPECT_EQ(reading.definitions.size(), 14u);
}

TEST(TicketText, EmptyLists)
{
    expect_same_bytes(of_definitions({}));
}

TEST(TicketText, FixedData)
{
    for (uint32_t bits = 0; bits < 256; ++bits)
    {
        TicketBytes ticket;
        for (uint32_t i = 0; i < 8; ++i)
            ticket.u8({bits >> i & 1});
        expect_same_bytes(ticket.u32({bits % 5, bits / 5 % 5, kListEnd, 0}));
    }
}

TEST(TicketText, DefinitionByFile)
{
    expect_same_bytes(
        of_definitions(TicketBytes().u32({9, 0}).u8({3, 0, 0, 0}).u32({2}).text("C:\\a \"b\".icc").u32({0})));
    expect_same_bytes(of_definitions(TicketBytes().u32({9, 0}).u8({3, 0, 0, 0}).u32({2}).text("").u32({0})));
    expect_same_bytes(of_definitions(
        TicketBytes().u32({9, 0}).u8({3, 2, 1, 0}).u32({1}).text("Cyan").text("").text("a").text("b").u32({0})));
}

TEST(TicketText, DefinitionByProfile)
{
    TicketBytes profile;
    for (uint32_t i = 0; i < 256; ++i)
        profile.u8({i});
    expect_same_bytes(
        of_definitions(TicketBytes().u32({0, 2}).u8({4, 0, 0, 0}).u32({0, 256}).append(profile).u32({0})));
    expect_same_bytes(of_definitions(TicketBytes().u32({0, 2}).u8({4, 0, 0, 0}).u32({0, 0}).u32({0})));
    expect_same_bytes(
        of_definitions(TicketBytes().u32({0, 2}).u8({4, 1, 1, 0}).u32({0, 1}).text("x").text("y").u8({7}).u32({0})));
}

TEST(TicketText, AnalyticalDefinition)
{
    for (uint32_t space = 0; space < 8; ++space)
        expect_same_bytes(of_definitions(
            TicketBytes().u32({1, 3}).u8({3, 0, 0, 0}).u32({0, space}).f32({0.950456F, 1, -1.089058F}).u32({0})));
}

TEST(TicketText, NoncolorimetricDefinition)
{
    for (uint32_t format = 0; format < 7; ++format)
        expect_same_bytes(
            of_definitions(TicketBytes().u32({1, 4}).u8({1, 0, 0, 0}).u32({format % 5, format}).u32({0})));
}

TEST(TicketText, DefinitionWithoutBaseChannels)
{
    expect_same_bytes(of_definitions(TicketBytes().u32({0xFFFFFFFE}).append(plain_csd())));
    expect_same_bytes(
        of_definitions(TicketBytes().u32({0, 6}).u8({255, 2, 0, 0}).u32({3}).text("Spot 1").text("Spot 2").u32({0})));
}

// By family: how many decode tables there are, and whether the HIJK table has a fourth dimension.
TEST(TicketText, DefinitionByCieTables)
{
    constexpr size_t kTables[] = {6, 4, 10, 9, 3, 1};
    for (uint32_t family = 0; family < 6; ++family)
        for (uint32_t bit_depth : {0u, 1u, 2u, 8u, 32u})
        {
            TicketBytes ticket;
            ticket.u32({5, 5}).u8({3, 0, 0, 0}).u32({1, family, bit_depth});
            for (uint32_t i = 0; i < 24; ++i)
                ticket.f32({static_cast<float>(i) / 4});
            ticket.u8({2, 3, 1, 2});
            for (uint32_t i = 0; i < 8; ++i)
                ticket.f32({-static_cast<float>(i)});
            const uint32_t entries = bit_depth == 32 ? 0 : (1u << bit_depth) - 1;
            for (size_t i = 0; i < kTables[family] * entries; ++i)
                ticket.f32({static_cast<float>(i) / 8});
            const uint32_t cells = family == 2 ? 18 : family == 3 ? 36 : 0;
            for (uint32_t i = 0; i < cells; ++i)
                ticket.u8({i * 7});
            expect_same_bytes(of_definitions(ticket.u32({0, 0})));
        }
}

TEST(TicketText, Extensions)
{
    TicketBytes ticket;
    ticket.u32({0, 6}).u8({1, 0, 0, 0}).u32({0}).u32({71, 1}).u8({1}).u32({74, 99}).u8({0}).u32({71, 0}).u8({0});
    ticket.u32({0, 1, 3}).u8({3, 0, 0, 0}).u32({0, 4}).f32({1, 1, 1});
    ticket.u32({80, 12}).f32({0, 0.5F, -0.25F}).u32({74, 1}).u8({1}).u32({80, 3}).f32({1, 2, 3}).u32({0});
    expect_same_bytes(of_definitions(ticket));
}

TEST(TicketText, PostRenderLuts)
{
    TicketBytes ticket;
    ticket.u32({3, 7}).u8({3, 0, 0, 0}).u32({0}).u32({80, 11}).u8({2, 2, 8}).repeat(9, 12).u32({0});
    ticket.u32({4, 7}).u8({1, 0, 0, 0}).u32({0}).u32({80, 11}).u8({1, 2, 16}).u16({258, 65535}).u32({0});
    ticket.u32({5, 7}).u8({3, 0, 0, 0}).u32({0}).u32({80, 3}).u8({0, 0, 0}).u32({80, 3}).u8({2, 0, 16}).u32({0});
    ticket.u32({6, 7}).u8({3, 0, 0, 0}).u32({0}).u32({71, 1}).u8({1}).u32({80, 6}).u8({1, 1, 9}).repeat(1, 3).u32({0});
    expect_same_bytes(of_definitions(ticket));
}

TEST(TicketText, AlternatesOfAlternates)
{
    TicketBytes ticket;
    ticket.u32({1});
    for (uint32_t i = 0; i < 40; ++i)
        ticket.u32({6}).u8({i, 0, 0, 1}).u32({i % 5}).u32({0});
    ticket.append(plain_csd()).u32({2, 0}).u8({3, 0, 0, 1}).u32({0}).text("a").u32({0}).append(plain_csd());
    expect_same_bytes(of_definitions(ticket));
}

TEST(TicketText, SectionsOfFields)
{
    expect_same_bytes(of_sections(TicketBytes().u32({1, 26, 0, 1, 2, 3, 8}).u8({1, 0}).u32({7})));
    for (uint32_t marker = 2; marker <= 5; ++marker)
        expect_same_bytes(
            of_sections(TicketBytes().u32({marker, 24}).u8({1, 255, 0, 3, 1, 4, 0, 5}).u32({1, 2, 3, 0xFFFFFFFF})));
    expect_same_bytes(of_sections(TicketBytes().u32({6, 10, 8}).u8({0, 1}).u32({1})));
    expect_same_bytes(of_sections(TicketBytes().u32({7, 4, 5, 8, 4, 6})));
    expect_same_bytes(of_sections(TicketBytes().u32({11, 9}).u8({1}).f32({0.5F, 0.25F})));
    for (uint32_t marker = 12; marker <= 15; ++marker)
        expect_same_bytes(of_sections(TicketBytes().u32({marker, 16, 1, 2, 3, 4})));
    expect_same_bytes(of_sections(TicketBytes().u32({17, 17}).u8({1}).u32({1}).f32({1, 2, 3})));
    expect_same_bytes(of_sections(TicketBytes().u32({18, 13}).u8({0}).u32({2, 6500}).f32({80})));
    for (uint32_t marker : {19u, 21u, 24u})
        expect_same_bytes(of_sections(TicketBytes().u32({marker, 4}).u8({1, 0, 0, 1})));
    expect_same_bytes(of_sections(TicketBytes().u32({20, 4, 2, 34, 4, 3})));
    expect_same_bytes(of_sections(TicketBytes().u32({22, 8}).u8({1, 0, 1, 1, 0, 1, 0, 0})));
    for (uint32_t marker : {23u, 26u, 27u})
        expect_same_bytes(of_sections(TicketBytes().u32({marker, 1}).u8({1}).u32({marker, 1}).u8({0})));
    expect_same_bytes(of_sections(TicketBytes().u32({25, 16, 1, 2, 3, 4})));
    expect_same_bytes(of_sections(TicketBytes().u32({32, 18}).u8({1, 0}).f32({1, 2.2F, 3, 4})));
    expect_same_bytes(of_sections(TicketBytes().u32({33, 17}).u8({1}).u32({0, 1, 2, 4})));
}

TEST(TicketText, PlugInsMayHoldAnything)
{
    for (uint32_t marker = 28; marker <= 31; ++marker)
        expect_same_bytes(of_sections(TicketBytes()
                                          .u32({marker, 0})
                                          .text("\" />\n")
                                          .text("")
                                          .text("a\n\nb<&>")
                                          .text("\xff\x01 \xc3\xa9")
                                          .text("\" String=\"x\" />")));
}

TEST(TicketText, SpotColours)
{
    TicketBytes rgb = TicketBytes().u32({9, 60}).u8({1, 0, 1, 0}).u32({1, 2, 3, 4, 5, 6, 2});
    expect_same_bytes(of_sections(rgb.u16({1, 2, 65535, 4, 5, 6, 7}).u16({8, 9, 10, 11, 12, 13, 14})));
    TicketBytes cmyk = TicketBytes().u32({10, 48}).u8({0, 1, 0, 1}).u32({1, 2, 3, 4, 5, 6, 1});
    expect_same_bytes(of_sections(cmyk.u16({1, 2, 3, 4, 5, 6, 7, 8})));
    for (uint32_t marker : {9u, 10u})
        expect_same_bytes(of_sections(TicketBytes().u32({marker, 32}).u8({0, 1, 0, 1}).u32({1, 2, 3, 4, 5, 6, 0})));
}

TEST(TicketText, NamedProfiles)
{
    expect_same_bytes(of_sections(TicketBytes().u32({16, 4, 0})));
    expect_same_bytes(of_sections(TicketBytes().u32({16, 4, 1}).u8({1}).text("")));
    expect_same_bytes(of_sections(TicketBytes().u32({16, 4, 3}).u8({1, 0, 1}).text("a b").text("").text("\"c\" />\n")));
    expect_same_bytes(of_sections(TicketBytes().u32({16, 4, 1}).u8({0}).text("a\" String=\"b")));
}

TEST(TicketText, SizesThatDisagreeStandAsTheyAre)
{
    expect_same_bytes(of_sections(TicketBytes().u32({26, 0xFFFFFFFF}).u8({1}).u32({34, 0, 3}).u32({34, 0, 4})));
}

TEST(TicketText, TwoTicketsWithTheSameTextGiveTheSameBytes)
{
    // Other bytes than 1 are false; the rest of the text says nothing of them.
    expect_bytes(TicketBytes().u8({2, 255, 0, 1, 128, 3, 254, 1}).u32({0, 0, kListEnd, 0}),
                 TicketBytes().u8({0, 0, 0, 1, 0, 0, 0, 1}).u32({0, 0, kListEnd, 0}));
    expect_bytes(of_sections(TicketBytes().u32({16, 4, 2}).u8({2, 1}).text("a").text("b")),
                 of_sections(TicketBytes().u32({16, 4, 2}).u8({0, 1}).text("a").text("b")));
    // Values without names.
    expect_bytes(TicketBytes().repeat(0, 8).u32({5, 1000, kListEnd, 0}),
                 TicketBytes().repeat(0, 8).u32({0xFFFFFFFF, 0xFFFFFFFF, kListEnd, 0}));
    expect_bytes(of_definitions(TicketBytes().u32({0, 4}).u8({1, 0, 0, 0}).u32({5, 7}).u32({0})),
                 of_definitions(TicketBytes().u32({0, 4}).u8({1, 0, 0, 0}).u32({0xFFFFFFFF, 0xFFFFFFFF}).u32({0})));
    // What ends the record of CIE tables, whose family has no name either.
    const TicketBytes record = TicketBytes().repeat(0, 132);
    expect_bytes(
        of_definitions(
            TicketBytes().u32({0, 5}).u8({3, 0, 0, 0}).u32({0, 6, 0}).append(record).u32({0xDEADBEEF}).u32({0})),
        of_definitions(
            TicketBytes().u32({0, 5}).u8({3, 0, 0, 0}).u32({0, 0xFFFFFFFF, 0}).append(record).u32({0}).u32({0})));
    // Extensions and sections that are not known, and bytes behind the ticket.
    expect_bytes(
        of_definitions(TicketBytes().u32({0, 6}).repeat(0, 8).u32({99, 3}).u8({1, 2, 3}).u32({80, 0}).u32({0})),
        of_definitions(TicketBytes().u32({0, 6}).repeat(0, 8).u32({0})));
    expect_bytes(of_sections(TicketBytes().u32({35, 3}).u8({1, 2, 3}).u32({34, 4, 3})).repeat(1, 99),
                 of_sections(TicketBytes().u32({34, 4, 3})));
}

TEST(TicketText, TypesWithoutNamesAreToldByTheirLut)
{
    for (uint32_t type : {1u, 7u, 8u, 9u, 0xFFFFFFFFu})
        expect_bytes(of_definitions(TicketBytes().u32({0, type}).repeat(0, 8).u32({0})),
                     of_definitions(TicketBytes().u32({0, 8}).repeat(0, 8).u32({0})));
    const TicketBytes lut = TicketBytes().repeat(0, 8).u32({74, 1}).u8({1}).u32({80, 0}).u8({0, 0, 0}).u32({0});
    expect_same_bytes(of_definitions(TicketBytes().u32({0, 7}).append(lut)));
}

TEST(TicketText, StrayNumbersBehindALutAreNotTheTickets)
{
    TicketBytes ticket;
    ticket.u32({4, 7}).u8({1, 0, 0, 0}).u32({0}).u32({80, 11}).u8({1, 2, 16}).u16({258, 772}).u32({0});
    std::string text = dump_ticket(of_definitions(ticket).bytes(), 1, "");
    const std::string written = "<Lut UInt16_array=\"258 772 0 0\" />";
    text.replace(text.find(written), written.size(), "<Lut UInt16_array=\"258 772 65535 7\" />");
    const TicketReading reading = read_ticket_text(text);
    EXPECT_EQ(reading.ending, TicketEnding::whole);
    EXPECT_TRUE(reading.has_stray_numbers);
    EXPECT_EQ(reading.bytes, of_definitions(ticket).bytes());
}

TicketBytes of_float(float value)
{
    return of_sections(TicketBytes().u32({11, 9}).u8({1}).f32({value, 0}));
}

float float_again(float value)
{
    const TicketReading reading = read_whole(dump_ticket(of_float(value).bytes(), 1, ""));
    const uint8_t* at = reading.bytes.data() + 16 + 4 + 9;
    return std::bit_cast<float>(static_cast<uint32_t>(at[0]) | static_cast<uint32_t>(at[1]) << 8 |
                                static_cast<uint32_t>(at[2]) << 16 | static_cast<uint32_t>(at[3]) << 24);
}

TEST(TicketText, FloatsOfSixDecimalsComeBack)
{
    for (const float value :
         {0.0F, -0.0F, 0.000001F, -0.000001F, 0.3127F, 0.329F, 1.089058F, 2.2F, 8.007812F, 123456.789F, 16777216.0F,
          FLT_MAX, -FLT_MAX, std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity()})
        EXPECT_EQ(std::bit_cast<uint32_t>(float_again(value)), std::bit_cast<uint32_t>(value)) << value;
    EXPECT_EQ(std::bit_cast<uint32_t>(float_again(std::bit_cast<float>(0x7F800001))), 0x7FC00000u);
    EXPECT_EQ(std::bit_cast<uint32_t>(float_again(std::bit_cast<float>(0xFFFFFFFF))), 0xFFC00000u);
    EXPECT_EQ(std::bit_cast<uint32_t>(float_again(FLT_MIN)), 0u);
    EXPECT_EQ(std::bit_cast<uint32_t>(float_again(-FLT_TRUE_MIN)), 0x80000000u);
    EXPECT_EQ(float_again(0.0078125F), 0.007812F);
}

TEST(TicketText, FloatsGiveTheirTextAgain)
{
    std::mt19937 random(7);
    for (int i = 0; i < 5000; ++i)
    {
        const auto any = std::bit_cast<float>(static_cast<uint32_t>(random()));
        const float usual = static_cast<float>(random()) / 4294967296.0F * (i % 2 != 0 ? 2 : 300);
        const float near_half = std::nextafter(static_cast<float>(random() % 4096) / 128, i % 2 != 0 ? 99.0F : -1.0F);
        for (const float value : {any, usual, near_half})
            float_again(value);
    }
}

TEST(TicketText, TellsOfDefinitions)
{
    TicketBytes ticket;
    ticket.u32({40, 2}).u8({3, 0, 0, 1}).u32({0, 4}).u8({1, 2, 3, 4}).u32({0});
    ticket.u32({4}).u8({4, 0, 0, 1}).u32({0, 3}).u32({0});
    ticket.u32({2}).u8({1, 0, 0, 0}).u32({0, 2}).u8({9, 8}).u32({0});
    ticket.u32({41}).append(plain_csd());
    ticket.u32({42, 7}).u8({5, 0, 0, 0}).u32({0, 80, 0}).u8({0, 0, 0}).u32({0});
    const TicketReading reading = read_whole(dump_ticket(of_definitions(ticket).bytes(), 1, ""));
    constexpr uint32_t kExpected[5][4] = {{40, 0, 2, 3}, {40, 1, 4, 4}, {40, 2, 2, 1}, {41, 0, 6, 0}, {42, 0, 7, 5}};
    ASSERT_EQ(reading.definitions.size(), 5u);
    for (size_t i = 0; i < 5; ++i)
    {
        EXPECT_EQ(reading.definitions[i].marker, kExpected[i][0]) << i;
        EXPECT_EQ(reading.definitions[i].alternate, kExpected[i][1]) << i;
        EXPECT_EQ(reading.definitions[i].type, kExpected[i][2]) << i;
        EXPECT_EQ(reading.definitions[i].channels, kExpected[i][3]) << i;
    }
    const auto first = reading.profile(reading.definitions[0]);
    const auto third = reading.profile(reading.definitions[2]);
    EXPECT_EQ(Bytes(first.begin(), first.end()), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(Bytes(third.begin(), third.end()), (Bytes{9, 8}));
    EXPECT_TRUE(reading.profile(reading.definitions[1]).empty());
    EXPECT_TRUE(reading.profile(reading.definitions[3]).empty());
}

}  // namespace
