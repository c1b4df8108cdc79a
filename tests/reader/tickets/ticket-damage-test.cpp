// Texts of tickets that ended early, texts that are cut, and texts with damage.

#include "reader/tickets/ticket-bytes.h"

#include "tests/reader/tickets/dump-ticket.h"
#include "tests/support/guarded-block.h"
#include "tests/support/ticket-bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

namespace
{

using namespace orvlog::test;
using orvlog::reader::read_ticket_text;
using orvlog::reader::TicketEnding;
using orvlog::reader::TicketReading;

using Bytes = std::vector<uint8_t>;

// Read from a block that ends at an unmapped page.
TicketReading read_guarded(const std::string& text)
{
    GuardedBlock block(text.data(), text.size());
    return read_ticket_text({reinterpret_cast<const char*>(block.data()), text.size()});
}

bool is_as_a_log_holds_it(const TicketReading& reading)
{
    return reading.ending == TicketEnding::whole || reading.ending == TicketEnding::short_ticket;
}

// Fixed data of which the text tells everything.
TicketBytes told_fixed_data()
{
    return TicketBytes().u8({1, 0, 0, 1, 0, 0, 1, 0}).u32({3, 1});
}

// What holds of any text.
void expect_sound(const TicketReading& reading, const std::string& text)
{
    EXPECT_LE(reading.bytes.size(), text.size());
    EXPECT_LE(reading.text_size, text.size());
    EXPECT_EQ(reading.line == 0, reading.ending == TicketEnding::whole);
    EXPECT_EQ(reading.expected.empty(), reading.ending == TicketEnding::whole);
    EXPECT_LE(reading.line, static_cast<uint64_t>(std::count(text.begin(), text.end(), '\n')) + 1);
    if (is_as_a_log_holds_it(reading) && !reading.has_stray_numbers)
    {
        const std::string again = dump_again(reading);
        EXPECT_TRUE(again == text.substr(0, reading.text_size) || again == text.substr(0, reading.text_size) + "\n");
    }
}

std::string rich_text()
{
    return dump_ticket(rich_ticket().bytes(), 1, "  ");
}

// The ends of the text's lines.
std::vector<size_t> line_ends(const std::string& text)
{
    std::vector<size_t> ends;
    for (size_t at = text.find('\n'); at != text.npos; at = text.find('\n', at + 1))
        ends.push_back(at + 1);
    return ends;
}

std::string with(std::string text, const std::string& part, const std::string& other)
{
    const size_t at = text.find(part);
    EXPECT_NE(at, text.npos) << part;
    return at != text.npos ? text.replace(at, part.size(), other) : text;
}

void expect_stop(const std::string& text, TicketEnding ending, uint64_t line, const std::string& expected)
{
    const TicketReading reading = read_guarded(text);
    EXPECT_EQ(reading.ending, ending) << text;
    EXPECT_EQ(reading.line, line) << text;
    EXPECT_EQ(reading.expected, expected) << text;
}

// 24 bytes and 22 lines of text: fixed data on the lines 5 to 14, two empty lists.
std::string smallest_text()
{
    return dump_ticket(told_fixed_data().u32({0xFFFFFFFF, 0}).bytes(), 0, "");
}

TEST(TicketTextDamage, TicketsThatEndEarlyGiveTheirTextAgain)
{
    const Bytes ticket = rich_ticket().bytes();
    for (size_t size = 0; size < ticket.size(); ++size)
    {
        const std::string text =
            dump_ticket(Bytes(ticket.begin(), ticket.begin() + static_cast<ptrdiff_t>(size)), 2, " ");
        const TicketReading reading = read_ticket_text(text);
        ASSERT_TRUE(is_as_a_log_holds_it(reading)) << size << ", " << reading.line << ": " << reading.expected;
        ASSERT_EQ(reading.text_size, text.size());
        ASSERT_EQ(dump_again(reading), text) << size;
    }
}

TEST(TicketTextDamage, TellsWhereATicketEndedEarly)
{
    const Bytes head = told_fixed_data().bytes();
    expect_stop(dump_ticket(Bytes(head.begin(), head.begin() + 7), 1, ""), TicketEnding::short_ticket, 12,
                "<PreConvImageOverrideInPdl Bool=\"");
    expect_stop(dump_ticket(head, 1, ""), TicketEnding::short_ticket, 18, "<VariableSizedData>");
    const TicketBytes profile = told_fixed_data().u32({0, 2}).u8({3, 0, 0, 0}).u32({0, 5}).u8({1, 2, 3});
    expect_stop(dump_ticket(profile.bytes(), 1, ""), TicketEnding::short_ticket, 28, "5 bytes");
    const TicketReading reading = read_ticket_text(dump_ticket(profile.bytes(), 1, ""));
    EXPECT_EQ(reading.bytes, profile.bytes());
    ASSERT_EQ(reading.definitions.size(), 1u);
    EXPECT_EQ(reading.definitions[0].profile_size, 3u);
}

TEST(TicketTextDamage, AnElementThatMustComeMayOnlyLackWhereATicketCanEnd)
{
    // All of the fixed data is there, so the definitions' element is written whatever follows.
    const std::string text = smallest_text();
    const size_t begin = text.find("\t\t\t<CSD_Data>");
    const size_t end = text.find("\t\t</GCM_ColorTicket>");
    expect_stop(text.substr(0, begin) + text.substr(end), TicketEnding::damaged, 16, "<CSD_Data>");
}

TEST(TicketTextDamage, ACutTextGivesWhatStandsBeforeTheCut)
{
    const std::string text = rich_text();
    const TicketReading whole = read_ticket_text(text);
    std::mt19937 random(3);
    for (size_t size = 0; size + 1 < text.size(); size += 1 + random() % 11)
    {
        const TicketReading reading = read_ticket_text(std::string_view(text).substr(0, size));
        ASSERT_EQ(reading.ending, TicketEnding::cut) << size << ", " << reading.line << ": " << reading.expected;
        ASSERT_EQ(reading.line,
                  static_cast<uint64_t>(std::count(text.begin(), text.begin() + static_cast<ptrdiff_t>(size), '\n')) +
                      1);
        ASSERT_FALSE(reading.expected.empty());
        ASSERT_LE(reading.bytes.size(), whole.bytes.size());
        ASSERT_LE(reading.definitions.size(), whole.definitions.size());
    }
}

TEST(TicketTextDamage, WholeEntriesBeforeACutAreKept)
{
    const TicketBytes profile = told_fixed_data().u32({0, 2}).u8({3, 0, 0, 0}).u32({0, 5}).u8({1, 2, 3, 4, 5}).u32({0});
    const std::string text = dump_ticket(profile.bytes(), 1, "");
    const TicketReading cut = read_guarded(text.substr(0, text.find("0102") + 5));
    EXPECT_EQ(cut.ending, TicketEnding::cut);
    EXPECT_EQ(cut.expected, "two hexadecimal digits");
    EXPECT_EQ(cut.bytes, Bytes(profile.bytes().begin(), profile.bytes().begin() + 16 + 20 + 2));

    const TicketBytes names = told_fixed_data().u32({0xFFFFFFFF, 16, 9, 3}).u8({1, 0, 1});
    const std::string flags = dump_ticket(names.bytes(), 1, "");
    const TicketReading cut_flags = read_guarded(flags.substr(0, flags.find("\"TRUE FALSE") + 11));
    EXPECT_EQ(cut_flags.ending, TicketEnding::cut);
    EXPECT_EQ(cut_flags.bytes, Bytes({1,   0,   0,   1,  0, 0, 1, 0, 3, 0, 0, 0, 1, 0, 0, 0, 255,
                                      255, 255, 255, 16, 0, 0, 0, 9, 0, 0, 0, 3, 0, 0, 0, 1}));
}

TEST(TicketTextDamage, TellsTheLineAndWhatOughtToStandThere)
{
    const std::string text = smallest_text();
    expect_stop("", TicketEnding::cut, 1, "<GXC_ColorTickets>");
    expect_stop("   <GXC_Col", TicketEnding::cut, 1, "<GXC_ColorTickets>");
    expect_stop("a picture", TicketEnding::damaged, 1, "<GXC_ColorTickets>");
    expect_stop("\n" + text, TicketEnding::damaged, 1, "<GXC_ColorTickets>");
    expect_stop("<GXC_ColorTickets />\n", TicketEnding::damaged, 1, "<GXC_ColorTickets>");
    expect_stop(with(text, "GrayRender", "BlueRender"), TicketEnding::damaged, 2, "a family of colour spaces");
    expect_stop(with(text, "\t<GrayRender", "<GrayRender"), TicketEnding::damaged, 2, "a family of colour spaces");
    expect_stop(with(text, "\t\t<GCM_ColorTicket>", "\t<GCM_ColorTicket>"), TicketEnding::damaged, 3,
                "<GCM_ColorTicket>");
    expect_stop(with(text, "UseOverride", "UseOversight"), TicketEnding::damaged, 10, "<UseOverride Bool=\"");
    expect_stop(with(text, "TRUE", "true"), TicketEnding::damaged, 5, "TRUE or FALSE");
    expect_stop(with(text, "GCM_QUAL_HIGH", "GCM_QUAL_HIGHER"), TicketEnding::damaged, 13, "a name of the family");
    expect_stop(with(text, "GCM_QUAL_HIGH\" />", "GCM_QUAL_HIGH\"/>"), TicketEnding::damaged, 13, "\" />");
    expect_stop(with(text, "\t</GrayRender", "\t</RGBRender"), TicketEnding::damaged, 21, "</GrayRenderColorSpace>");
    expect_stop(with(text, "\t\t\t</VariableSizedData>\n", ""), TicketEnding::damaged, 19, "a section");
}

// A ticket with one definition, or one section, that begins on line 19 or 21.
std::string definition_text(const TicketBytes& definition)
{
    return dump_ticket(told_fixed_data().u32({5}).append(definition).u32({0xFFFFFFFF, 0}).bytes(), 1, "");
}

std::string section_text(const TicketBytes& section)
{
    return dump_ticket(told_fixed_data().u32({0xFFFFFFFF}).append(section).u32({0}).bytes(), 1, "");
}

TEST(TicketTextDamage, NumbersStandAsTheyAreWritten)
{
    const std::string text = definition_text(plain_csd());
    for (const char* number : {"", " 0", "00", "-1", "+1", "256", "1.0", "0x1", "4294967296"})
        expect_stop(with(text, "Chans UInt8=\"0", std::string("Chans UInt8=\"") + number), TicketEnding::damaged, 20,
                    "a number up to 255");
    for (const char* number : {"", "-5", "4294967296", "99999999999999999999"})
        expect_stop(with(text, "Marker UInt32=\"5", std::string("Marker UInt32=\"") + number), TicketEnding::damaged,
                    17, "a number up to 4294967295");
    expect_stop(with(text, "UInt32=\"5", "UInt32=\"4294967295"), TicketEnding::damaged, 18,
                "a marker below 4294967295");
    const std::string floats = section_text(TicketBytes().u32({11, 9}).u8({1}).f32({0.5F, 0.25F}));
    for (const char* number :
         {"", "0.5", "0.5000000", "00.500000", "+0.500000", "0,500000", "5e-1", "1.000000e5", "NAN", "infinity",
          "0.500000 ", "1000000000000000000000000000000000000000.000000", "16777217.000000"})
        expect_stop(with(floats, "0.500000", number), TicketEnding::damaged, 23, "a number with six decimals");
}

TEST(TicketTextDamage, Definitions)
{
    const std::string flagged = definition_text(TicketBytes().u32({6}).repeat(0, 8).u32({71, 1}).u8({1}).u32({0}));
    const std::string unknown = "a version of an extension that the definition can have";
    expect_stop(with(flagged, "UInt32=\"71", "UInt32=\"0"), TicketEnding::damaged, 27, unknown);
    expect_stop(with(flagged, "UInt32=\"71", "UInt32=\"80"), TicketEnding::damaged, 27, unknown);
    expect_stop(with(flagged, "UInt32=\"71", "UInt32=\"72"), TicketEnding::damaged, 27, unknown);
    expect_stop(with(flagged, "UInt32=\"71", "UInt32=\"74"), TicketEnding::damaged, 29, "<IsDeviceLinkProfile Bool=\"");
    const std::string profile =
        definition_text(TicketBytes().u32({2}).u8({3, 0, 0, 0}).u32({0, 2}).u8({1, 171}).u32({0}));
    expect_stop(with(profile, "01AB", "01AB02"), TicketEnding::damaged, 28, "no more than 2 bytes");
    expect_stop(with(profile, "01AB", "01A"), TicketEnding::damaged, 28, "</ProfileBuffer>");
    expect_stop(with(profile, "01AB", "01ab"), TicketEnding::damaged, 28, "</ProfileBuffer>");
    expect_stop(with(profile, "01AB", "01"), TicketEnding::damaged, 29, "</GCM_CsdPointer>");
    expect_stop(with(flagged, "UInt8=\"0\" />\n\t\t\t\t\t<HasS", "UInt8=\"2\" />\n\t\t\t\t\t<HasS"),
                TicketEnding::damaged, 25, "<NamedChans>");
}

TEST(TicketTextDamage, Arrays)
{
    const TicketBytes lut8 = TicketBytes().u32({7}).u8({1, 0, 0, 0}).u32({0, 80, 5}).u8({1, 2, 8}).u8({7, 9}).u32({0});
    const std::string bytes = definition_text(lut8);
    expect_stop(with(bytes, "\"7 9\"", "\"7 256\""), TicketEnding::damaged, 33, "a number up to 255");
    expect_stop(with(bytes, "\"7 9\"", "\"7  9\""), TicketEnding::damaged, 33, "a number up to 255");
    expect_stop(with(bytes, "\"7 9\"", "\"7 9 \""), TicketEnding::damaged, 33, "a number up to 255");
    expect_stop(with(bytes, "\"7 9\"", "\"7 9 1\""), TicketEnding::damaged, 33, "no more than 2 entries");
    expect_stop(with(bytes, "\"7 9\"", "\"7 9\n"), TicketEnding::damaged, 33, "\" />");
    const TicketBytes lut16 =
        TicketBytes().u32({7}).u8({1, 0, 0, 0}).u32({0, 80, 5}).u8({1, 2, 16}).u16({7, 9}).u32({0});
    const std::string words = definition_text(lut16);
    expect_stop(with(words, "\"7 9 0 0\"", "\"7 9 0\""), TicketEnding::damaged, 33, "4 entries");
    expect_stop(with(words, "\"7 9 0 0\"", "\"7 9\""), TicketEnding::damaged, 33, "4 entries");
    expect_stop(with(words, "\"7 9 0 0\"", "\"7 9 0 x\""), TicketEnding::damaged, 33, "a number up to 65535");
}

TEST(TicketTextDamage, Strings)
{
    const std::string names = section_text(TicketBytes().u32({16, 9, 2}).u8({1, 0}).text("a").text("b"));
    expect_stop(with(names, " String=\"a\"", " Strong=\"a\""), TicketEnding::damaged, 24, "strings");
    expect_stop(with(names, "NumNamedProfiles UInt32=\"2\" />", "NumNamedProfiles UInt32=\"0\" />"),
                TicketEnding::damaged, 23, "no more than 0 entries");
    expect_stop(with(names, "\"a\"", std::string("\"\0\"", 3)), TicketEnding::damaged, 24, "a string without a zero");
    const std::string file = definition_text(TicketBytes().u32({0}).u8({3, 0, 0, 0}).u32({0}).text("name").u32({0}));
    expect_stop(with(file, "\"name\"", std::string("\"\0\"", 3)), TicketEnding::damaged, 25, "a string without a zero");
    expect_stop(with(file, "<Extensions>", "<Intensions>"), TicketEnding::damaged, 26, "<Extensions>");
}

TEST(TicketTextDamage, Sections)
{
    const std::string text = section_text(TicketBytes().u32({26, 1}).u8({1}));
    expect_stop(with(text, "<IgnoreColorimetricData>", "<Ignore>"), TicketEnding::damaged, 19, "a section");
    expect_stop(with(text, "_IGNORE_COLORIMETRIC_DATA", "_OUTPUT_SPACE"), TicketEnding::damaged, 20,
                "<GCM_SerMarker GCM_SerMarker=\"GCM_SER_MARKER_IGNORE_COLORIMETRIC_DATA\" />");
    const std::string spots =
        section_text(TicketBytes().u32({9, 46}).repeat(0, 4).u32({1, 2, 3, 4, 5, 6, 1}).repeat(0, 14));
    expect_stop(with(spots, "NumCols UInt32=\"1", "NumCols UInt32=\"4294967295"), TicketEnding::damaged, 39,
                "<RGBSpotColorDefn>");
}

TEST(TicketTextDamage, EachLineLeftOut)
{
    const std::string text = rich_text();
    size_t begin = 0;
    int sound = 0;
    for (const size_t end : line_ends(text))
    {
        const std::string bent = text.substr(0, begin) + text.substr(end);
        const TicketReading reading = read_guarded(bent);
        expect_sound(reading, bent);
        sound += is_as_a_log_holds_it(reading) ? 1 : 0;
        begin = end;
    }
    // Without its very last field the text is that of a ticket that ended there.
    EXPECT_EQ(sound, 1);
}

TEST(TicketTextDamage, EachLineTwice)
{
    const std::string text = rich_text();
    size_t begin = 0;
    for (const size_t end : line_ends(text))
    {
        const std::string bent = text.substr(0, end) + text.substr(begin);
        expect_sound(read_guarded(bent), bent);
        begin = end;
    }
}

TEST(TicketTextDamage, BytesChanged)
{
    std::string text = rich_text();
    std::mt19937 random(11);
    constexpr std::string_view bytes("\0\n\t \"<>/=0159AFT.-n\xff", 20);
    for (size_t i = 0; i < text.size(); i += 1 + random() % 11)
    {
        const char kept = text[i];
        text[i] = bytes[random() % bytes.size()];
        expect_sound(read_ticket_text(text), text);
        text[i] = kept;
    }
}

TEST(TicketTextDamage, PiecesOfTextInAnyOrder)
{
    const std::string text = rich_text();
    std::mt19937 random(5);
    for (int i = 0; i < 300; ++i)
    {
        std::string bent;
        for (int pieces = 0; pieces < 4; ++pieces)
        {
            const size_t at = random() % text.size();
            bent += pieces == 0 ? text.substr(0, at) : text.substr(at, random() % 2000);
        }
        expect_sound(read_guarded(bent), bent);
    }
}

// A chain without end of what costs little text must stay within it.
TEST(TicketTextDamage, ALongChainOfAlternates)
{
    TicketBytes ticket = told_fixed_data().u32({0});
    for (int i = 0; i < 3000; ++i)
        ticket.u32({6}).u8({0, 0, 0, 1}).u32({0, 0});
    ticket.append(plain_csd()).u32({0xFFFFFFFF, 0});
    const std::string text = dump_ticket(ticket.bytes(), 1, "");
    const TicketReading reading = read_ticket_text(text);
    EXPECT_EQ(reading.ending, TicketEnding::whole);
    EXPECT_EQ(reading.bytes, ticket.bytes());
    EXPECT_EQ(reading.definitions.size(), 3001u);
    const TicketReading cut = read_ticket_text(std::string_view(text).substr(0, text.size() / 2));
    EXPECT_EQ(cut.ending, TicketEnding::cut);
}

}  // namespace
