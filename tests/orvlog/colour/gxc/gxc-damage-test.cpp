// Tickets that end early, lie about a length or have a byte changed: nothing outside the block is read, every
// element is closed, nothing is taken from the allocator, and the result says so.

#include "orvlog/colour/gxc/gxc-ticket.h"

#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"
#include "tests/support/ticket-bytes.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace
{

using namespace orvlog::test;

struct Outcome
{
    uint32_t result;
    std::string text;
    int64_t position;
};

Outcome deserialise(const uint8_t* bytes, size_t size)
{
    const uint8_t nothing = 0;
    LentStream input(size != 0 ? bytes : &nothing, size);
    TestAllocator allocator;
    MemoryStream log;
    Outcome outcome = {};
    outcome.result = gxc_deserialise_ticket(allocator.get(), input.get(), 1, log.get(), "");
    outcome.text = log.text();
    outcome.position = input.position;
    EXPECT_EQ(log.unflushed(), 0u);
    EXPECT_EQ(allocator.requests(), 0u);
    return outcome;
}

Outcome deserialise(const TicketBytes& bytes)
{
    return deserialise(bytes.bytes().data(), bytes.size());
}

// A log for sweeps: it keeps the text but for the values of strings, which may hold anything.
class Sink
{
public:
    Sink() : operations_{}, stream{this, GIO_KIND_FILE, &operations_}
    {
        operations_.gio_VPrintf = [](void* c, const char* format, va_list args) -> int32_t
        {
            char piece[2048];
            const int length = std::vsnprintf(piece, sizeof piece, format, args);
            if (std::strncmp(format, " String=", 8) != 0)
                static_cast<Sink*>(c)->text.append(piece, static_cast<size_t>(length));
            return length;
        };
        operations_.gio_Flush = [](void*) { return 0; };
    }

private:
    GIO_StreamOps operations_;

public:
    std::string text;
    GIO_Stream stream;
};

// Whether each element that is opened is closed, in order.
bool balanced(const std::string& text)
{
    std::vector<std::string> open;
    size_t at = 0;
    while (at < text.size())
    {
        size_t end = text.find('\n', at);
        if (end == std::string::npos)
            return false;
        std::string line = text.substr(at, end - at);
        at = end + 1;
        line.erase(0, line.find_first_not_of('\t'));
        if (line.size() >= 3 && line.compare(line.size() - 3, 3, " />") == 0)
            continue;
        if (line.compare(0, 15, "<ProfileBuffer>") == 0)
        {
            if (line.size() < 31 || line.compare(line.size() - 16, 16, "</ProfileBuffer>") != 0)
                return false;
            continue;
        }
        if (line.compare(0, 2, "</") == 0)
        {
            if (open.empty() || "</" + open.back() + ">" != line)
                return false;
            open.pop_back();
        }
        else if (line.size() > 2 && line.front() == '<' && line.back() == '>')
            open.push_back(line.substr(1, line.size() - 2));
        else
            return false;
    }
    return open.empty();
}

TEST(GxcDamage, TheRichTicketIsSound)
{
    const TicketBytes ticket = rich_ticket();
    const Outcome outcome = deserialise(ticket);
    EXPECT_EQ(outcome.result, 1u);
    EXPECT_EQ(outcome.position, static_cast<int64_t>(ticket.size()));
    EXPECT_TRUE(balanced(outcome.text));
    for (const char* name : {"ProfileBuffer", "PostRenderLut", "DecodeDEFG_G", "HIJKTable", "AlternateDefn",
                             "RGBSpotColorDefn", "ProfileNames", "RgbToMonoCsd"})
        EXPECT_NE(outcome.text.find(name), std::string::npos) << name;
}

TEST(GxcDamage, EveryPrefixGivesABalancedPartOfTheText)
{
    const TicketBytes ticket = rich_ticket();
    const Outcome whole = deserialise(ticket);
    for (size_t size = 1; size < ticket.size(); ++size)
    {
        LentStream input(ticket.bytes().data(), size);
        Sink log;
        ASSERT_EQ(gxc_deserialise_ticket(nullptr, input.get(), 1, &log.stream, ""), 0u) << size;
        ASSERT_LE(input.position, static_cast<int64_t>(size));
        ASSERT_TRUE(balanced(log.text)) << size << "\n" << log.text;
        ASSERT_LE(log.text.size(), whole.text.size());
    }
}

TEST(GxcDamage, EveryChangedByteIsSurvived)
{
    const TicketBytes ticket = rich_ticket();
    const std::vector<uint8_t>& sound = ticket.bytes();
    LentStream input(ticket);
    for (size_t at = 0; at < sound.size(); ++at)
    {
        const uint8_t low = sound[at] ^ 1;
        const uint8_t high = sound[at] ^ 0x80;
        for (const uint8_t change : {low, high, uint8_t{0}, uint8_t{0xFF}})
        {
            Sink log;
            input.data()[at] = change;
            gxc_deserialise_ticket(nullptr, input.get(), 1, &log.stream, "");
            ASSERT_TRUE(balanced(log.text)) << at << " " << uint32_t{change} << "\n" << log.text;
            ASSERT_LE(input.position, static_cast<int64_t>(sound.size()));
        }
        input.data()[at] = sound[at];
    }
}

TEST(GxcDamage, AnEmptyBlockLeavesTheFrame)
{
    EXPECT_EQ(deserialise(TicketBytes()).text, R"X(<GXC_ColorTickets>
	<RGBRenderColorSpace>
		<GCM_ColorTicket>
			<FixedSizeData>
			</FixedSizeData>
		</GCM_ColorTicket>
	</RGBRenderColorSpace>
</GXC_ColorTickets>
)X");
}

// What is written between the elements around the definitions, for definitions that end too early.
std::string cut_definitions(const TicketBytes& definitions)
{
    const Outcome outcome = deserialise(fixed_data().append(definitions));
    EXPECT_EQ(outcome.result, 0u);
    EXPECT_TRUE(balanced(outcome.text)) << outcome.text;
    const size_t begin = outcome.text.find("\t\t\t<CSD_Data>\n");
    return outcome.text.substr(begin, outcome.text.find("\t\t</GCM_ColorTicket>") - begin);
}

TEST(GxcDamage, WhatIsThereOfAProfileIsWritten)
{
    EXPECT_EQ(cut_definitions(TicketBytes().u32({5, 2}).u8({3, 0, 0, 0}).u32({0, 0xFFFFFFFF}).u8({1, 2, 0xAB})),
              R"X(			<CSD_Data>
				<Marker UInt32="5" />
				<GCM_CsdPointer>
					<Type GCM_CsdType="GCM_CSDTYPE_PROFILE_BUFFER" />
					<NumBaseChans UInt8="3" />
					<NumNamedChans UInt8="0" />
					<HasSecondaryProfile Bool="FALSE" />
					<HasAlternateDefn Bool="FALSE" />
					<DefaultRenderIntent GCM_RenderIntent="GCM_RI_PERCEPTUAL" />
					<Defn>
						<ProfileBufferSize UInt32="4294967295" />
					</Defn>
					<ProfileBuffer>0102AB</ProfileBuffer>
				</GCM_CsdPointer>
			</CSD_Data>
)X");
}

TEST(GxcDamage, WhatIsThereOfANameIsWritten)
{
    const std::string text = cut_definitions(TicketBytes().u32({5, 0}).u8({3, 3, 0, 0}).u32({0}).text("a").u8({'b'}));
    EXPECT_NE(text.find(R"X(					<NamedChans>
						<ChanName String="a" />
						<ChanName String="b" />
					</NamedChans>
				</GCM_CsdPointer>
			</CSD_Data>
)X"),
              std::string::npos);
}

TEST(GxcDamage, ANameOfWhichNothingIsThereHasNoLine)
{
    const std::string text = cut_definitions(TicketBytes().u32({5, 0}).u8({3, 2, 0, 0}).u32({0}).text("a"));
    EXPECT_NE(text.find(R"X(					<NamedChans>
						<ChanName String="a" />
					</NamedChans>
				</GCM_CsdPointer>
			</CSD_Data>
)X"),
              std::string::npos);
}

TEST(GxcDamage, WhatIsThereOfATableIsWritten)
{
    TicketBytes t;
    t.u32({5, 5}).u8({3, 0, 0, 0}).u32({0, 0, 31}).repeat(0, 132).f32({1, 2}).u8({1, 2, 3});
    const std::string text = cut_definitions(t);
    EXPECT_NE(text.find("\t\t\t\t\t\t<DecodeABC_A float_array=\"1.000000 2.000000\" />\n"
                        "\t\t\t\t\t</GCM_CieLutsPointer>\n\t\t\t\t</GCM_CsdPointer>\n\t\t\t</CSD_Data>\n"),
              std::string::npos)
        << text;
}

TEST(GxcDamage, ATableOf12GigabytesIsCutAtTheBlock)
{
    TicketBytes t;
    t.u32({5, 5}).u8({3, 0, 0, 0}).u32({0, 3, 0}).repeat(0, 96).u8({255, 255, 255, 255}).repeat(0, 32).u8({9, 8});
    EXPECT_NE(cut_definitions(t).find("<HIJKTable UInt8_array=\"9 8\" />"), std::string::npos);
}

TEST(GxcDamage, ALutThatIsCutHasNoZerosBehind)
{
    TicketBytes t;
    t.u32({5, 7}).u8({3, 0, 0, 0}).u32({0}).u32({80, 0}).u8({3, 17, 16}).u16({7, 6}).u8({1});
    EXPECT_NE(cut_definitions(t).find("<Lut UInt16_array=\"7 6\" />"), std::string::npos);
}

TEST(GxcDamage, AnExtensionThatIsTooLongEndsTheTicket)
{
    TicketBytes t;
    t.u32({5, 6}).u8({0, 0, 0, 0}).u32({0}).u32({99, 0xFFFFFFFF}).u32({0});
    EXPECT_NE(cut_definitions(t).find("\t\t\t\t\t<Extensions>\n\t\t\t\t\t</Extensions>\n\t\t\t\t</GCM_CsdPointer>\n"),
              std::string::npos);
}

TEST(GxcDamage, AlternatesWithoutEndAreAllClosed)
{
    TicketBytes t;
    t.u32({5});
    for (int i = 0; i < 5000; ++i)
        t.u32({6}).u8({0, 0, 0, 1}).u32({0}).u32({0});
    EXPECT_NE(cut_definitions(t).find("AlternateDefn"), std::string::npos);
}

// What is written of the sections, for sections that end too early.
std::string cut_sections(const TicketBytes& sections)
{
    const Outcome outcome = deserialise(fixed_data().u32({0xFFFFFFFF}).append(sections));
    EXPECT_EQ(outcome.result, 0u);
    EXPECT_TRUE(balanced(outcome.text)) << outcome.text;
    const size_t begin = outcome.text.find("\t\t\t<VariableSizedData>\n");
    return outcome.text.substr(begin, outcome.text.find("\t\t</GCM_ColorTicket>") - begin);
}

TEST(GxcDamage, SectionsThatEndEarlyAreClosed)
{
    EXPECT_EQ(cut_sections(TicketBytes()), "\t\t\t<VariableSizedData>\n\t\t\t</VariableSizedData>\n");
    EXPECT_EQ(cut_sections(TicketBytes().u32({35, 0xFFFFFFFF}).repeat(0, 100)),
              "\t\t\t<VariableSizedData>\n\t\t\t</VariableSizedData>\n");
    EXPECT_EQ(cut_sections(TicketBytes().u32({2, 24}).u8({1, 2, 1})), R"X(			<VariableSizedData>
				<InputRGB>
					<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_RGB_INPUT" />
					<Size UInt32="24" />
					<InputDefn>
						<GCM_InputFamilyDefinition>
							<Text>
								<GrayPreserve Bool="TRUE" />
								<PrebuildXforms UInt8="2" />
							</Text>
							<Line>
								<GrayPreserve Bool="TRUE" />
							</Line>
						</GCM_InputFamilyDefinition>
					</InputDefn>
				</InputRGB>
			</VariableSizedData>
)X");
}

TEST(GxcDamage, CountsThatAreTooLargeEndAtTheBlock)
{
    EXPECT_NE(cut_sections(TicketBytes().u32({16, 0, 0xFFFFFFFF}).u8({1, 0, 1}))
                  .find("\t\t\t\t\t<UseDeviceValues BoolArray=\"TRUE FALSE TRUE\" />\n\t\t\t\t</NamedProfiles>\n"),
              std::string::npos);
    EXPECT_NE(cut_sections(TicketBytes().u32({16, 0, 1}).u8({1}).u8({'n', 'a'}))
                  .find("\t\t\t\t\t<ProfileNames String=\"na\" />\n\t\t\t\t</NamedProfiles>\n"),
              std::string::npos);
    EXPECT_NE(cut_sections(TicketBytes().u32({16, 0, 2}).u8({1, 0}).text("na"))
                  .find("\t\t\t\t\t<ProfileNames String=\"na\" />\n\t\t\t\t</NamedProfiles>\n"),
              std::string::npos);
    const std::string spots =
        cut_sections(TicketBytes().u32({10, 0}).repeat(0, 28).u32({0xFFFFFFFF}).u16({1, 2, 3, 4, 5}));
    EXPECT_NE(spots.find("\t\t\t\t\t<CMYKSpotColorDefn>\n\t\t\t\t\t\t<Key UInt16_array=\"1 2 3 4\" />\n"
                         "\t\t\t\t\t\t<Target UInt16_array=\"5\" />\n\t\t\t\t\t</CMYKSpotColorDefn>\n"
                         "\t\t\t\t</CMYKSpotColor>\n"),
              std::string::npos);
}

}  // namespace
