#include "reader/text/coded-input.h"

#include "orvlog/log/orvlog-compressed-stream.h"
#include "orvlog/session/orvlog-creators.h"
#include "tests/reader/tickets/dump-ticket.h"
#include "tests/support/ahc-oracle.h"
#include "tests/support/fake-identity.h"
#include "tests/support/fake-tickets.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"
#include "tests/support/test-session.h"
#include "tests/support/ticket-bytes.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace std::string_literals;
using orvlog::reader::CodedInput;
using orvlog::reader::Ending;
using orvlog::test::dump_ticket;
using orvlog::test::FakeIdentity;
using orvlog::test::FakeTickets;
using orvlog::test::MemoryStream;
using orvlog::test::TestAllocator;
using orvlog::test::TicketBytes;

const std::string log_text = "<ORV MIRDA_TOLMA_VERSION=\"10034\" ORV_VERSION=\"10066\">\n"
                             "  <ORV_document_start document_context=\"0\" document_id=\"7\">\n"
                             "  </ORV_document_start>\n"
                             "\n<!--\nORVLOG: WARNING: a warning\n-->\n"
                             "  <ORV_document_finish document_context=\"0\">\n"
                             "  </ORV_document_finish>\n"
                             "</ORV>\n";

struct Log
{
    std::string text;
    Ending ending = Ending::not_a_log;
    bool coded = false;
    uint64_t used = 0;
};

Log read_log(const std::string& file, size_t piece = 1000)
{
    std::istringstream source(file);
    CodedInput input(source);
    Log log;
    std::vector<char> buffer(piece);
    while (const size_t count = input.read(buffer.data(), piece))
        log.text.append(buffer.data(), count);
    log.ending = input.ending();
    log.coded = input.is_coded();
    log.used = input.bytes_used();
    EXPECT_EQ(input.bytes_given(), log.text.size());
    EXPECT_EQ(input.read(buffer.data(), piece), 0u);
    return log;
}

// A coded log as a session writes it: pieces of text, and between them plain ones that bypass the coder.
class CodedFile
{
public:
    CodedFile() : stream_(ORVLOG_OpenCompressedStream(allocator_.get(), target_.get())) {}
    CodedFile(const CodedFile&) = delete;
    CodedFile& operator=(const CodedFile&) = delete;
    ~CodedFile()
    {
        if (stream_ != nullptr)
            ORVLOG_CloseCompressedStream(stream_);
    }

    CodedFile& code(const std::string& text)
    {
        stream_->ops->gio_Write(text.data(), 1, text.size(), stream_->instance);
        return *this;
    }
    CodedFile& plain(const std::string& text)
    {
        target_.get()->ops->gio_Write(text.data(), 1, text.size(), target_.get()->instance);
        return *this;
    }
    std::string close()
    {
        ORVLOG_CloseCompressedStream(std::exchange(stream_, nullptr));
        return target_.text();
    }

private:
    TestAllocator allocator_;
    MemoryStream target_;
    GIO_Stream* stream_;
};

std::string coded(const std::string& text)
{
    return CodedFile().code(text).close();
}

// How many bits of a stream each text length takes.
std::vector<size_t> bits_by_length(const std::string& text)
{
    orvlog::test::ScanningCoder coder(orvlog::test::ScanningCoder::encoder);
    std::vector<size_t> bits = {0};
    size_t bytes = 0;
    for (const char c : text)
    {
        const auto byte = static_cast<uint8_t>(c);
        std::array<uint8_t, 100> out;
        coder.set_input({&byte, 1});
        bytes += static_cast<size_t>(coder.encode(out.data(), out.size()));
        bits.push_back(bytes * 8 + static_cast<size_t>(7 - coder.bit_position));
    }
    return bits;
}

TEST(CodedInput, GivesAPlainLog)
{
    for (const size_t piece : {1u, 7u, 100000u})
    {
        const Log log = read_log(log_text, piece);
        EXPECT_EQ(log.text, log_text);
        EXPECT_EQ(log.ending, Ending::whole);
        EXPECT_FALSE(log.coded);
    }
}

TEST(CodedInput, GivesACodedLog)
{
    for (const size_t piece : {1u, 7u, 100000u})
    {
        const Log log = read_log(coded(log_text), piece);
        EXPECT_EQ(log.text, log_text);
        EXPECT_EQ(log.ending, Ending::whole);
        EXPECT_TRUE(log.coded);
        EXPECT_EQ(log.used, coded(log_text).size());
    }
}

TEST(CodedInput, GivesTheTextOfALogThatGotNoCoder)
{
    const Log log = read_log("<ORV compression=\"Adaptive Huffman\"" + log_text);
    EXPECT_EQ(log.text, log_text);
    EXPECT_EQ(log.ending, Ending::whole);
    EXPECT_FALSE(log.coded);
    EXPECT_EQ(log.used, 35 + log_text.size());
}

TEST(CodedInput, GivesAKnownStream)
{
    // The stream of "abracadabra", which is no log.
    const Log log = read_log("<ORV compression=\"Adaptive Huffman\"\x61\xb1\x6e\x56\xc7\x36\x49\x37"s);
    EXPECT_EQ(log.text, "abracadabra");
    EXPECT_EQ(log.ending, Ending::other);
    EXPECT_TRUE(log.coded);
}

TEST(CodedInput, GivesOtherTextsWhole)
{
    std::minstd_rand dice(11);
    for (int round = 0; round < 300; ++round)
    {
        std::string text;
        const size_t size = dice() % 600;
        const uint32_t kinds = 1 + static_cast<uint32_t>(dice() % 200);
        for (size_t i = 0; i < size; ++i)
            text += static_cast<char>(1 + dice() % kinds);
        const Log log = read_log(coded(text));
        ASSERT_EQ(log.text, text);
        ASSERT_EQ(log.ending, Ending::other);
    }
    EXPECT_EQ(read_log(coded("")).text, "");
    EXPECT_EQ(read_log(coded("")).ending, Ending::other);
    EXPECT_EQ(read_log(coded("\0"s)).text, "\0"s);
    EXPECT_EQ(read_log(coded("\0"s)).ending, Ending::other);
}

TEST(CodedInput, GivesWhatIsWholeOfACutFile)
{
    for (size_t size = 0; size < log_text.size(); ++size)
    {
        const Log log = read_log(log_text.substr(0, size));
        ASSERT_EQ(log.text, log_text.substr(0, size));
        ASSERT_EQ(log.ending, Ending::cut);
    }
    const std::string file = coded(log_text);
    const std::vector<size_t> bits = bits_by_length(log_text);
    for (size_t size = 35; size < file.size(); ++size)
    {
        const Log log = read_log(file.substr(0, size), 13);
        ASSERT_EQ(log_text.substr(0, log.text.size()), log.text);
        ASSERT_LE(bits[log.text.size()], 8 * (size - 35));
        ASSERT_TRUE(log.text == log_text || bits[log.text.size() + 1] > 8 * (size - 35));
        ASSERT_EQ(log.ending, log.text == log_text ? Ending::whole : Ending::cut);
    }
    for (size_t size = 6; size < 35; ++size)
    {
        const Log log = read_log(file.substr(0, size));
        ASSERT_EQ(log.text, "");
        ASSERT_EQ(log.ending, Ending::cut);
    }
}

TEST(CodedInput, StopsBehindTheLog)
{
    const std::string comment = "\n<!--\nORVLOG: WARNING: late\n-->\n";
    for (const std::string& text : {log_text, log_text + comment})
    {
        EXPECT_EQ(read_log(text + "foreign").text, text);
        EXPECT_EQ(read_log(text + "foreign").ending, Ending::whole);
        EXPECT_EQ(read_log(coded(text)).text, text);
        EXPECT_EQ(read_log(coded(text + "foreign")).text, text);
        std::minstd_rand dice(3);
        for (int round = 0; round < 100; ++round)
        {
            std::string behind(dice() % 30, 0);
            for (char& c : behind)
                c = static_cast<char>(dice());
            const Log log = read_log(coded(text) + behind);
            ASSERT_EQ(log.text, text);
            ASSERT_EQ(log.ending, Ending::whole);
        }
    }
}

TEST(CodedInput, RefusesWhatIsNoLog)
{
    for (const std::string& file : {"no log"s, "<xml>"s, "<ORVX>\n</ORVX>\n"s, std::string(100000, 'x')})
    {
        EXPECT_EQ(read_log(file).text, "");
        EXPECT_EQ(read_log(file).ending, Ending::not_a_log);
    }
}

TEST(CodedInput, ReportsAStreamThatNoCoderWrote)
{
    std::string file = "<ORV compression=\"Adaptive Huffman\"";
    for (const uint8_t byte : orvlog::test::ScanningCoder::stream_of_literals('Y', 300))
        file += static_cast<char>(byte);
    const Log log = read_log(file);
    EXPECT_EQ(log.text, std::string(256, 'Y'));
    EXPECT_EQ(log.ending, Ending::damaged);
}

TEST(CodedInput, GivesSomethingForAnyBytes)
{
    std::minstd_rand dice(8);
    for (int round = 0; round < 300; ++round)
    {
        std::string file = "<ORV compression=\"Adaptive Huffman\"";
        file.resize(file.size() + dice() % 3000);
        for (size_t i = 35; i < file.size(); ++i)
            file[i] = static_cast<char>(dice());
        const Log log = read_log(file);
        EXPECT_NE(log.ending, Ending::whole);
        EXPECT_NE(log.ending, Ending::not_a_log);
    }
}

// --- Plain ticket text between coded bytes ---

const std::string ticket_text = "      <GXC_ColorTickets>\n"
                                "      \t<RGBRenderColorSpace>\n"
                                "      \t\t<Name String=\"of </GXC_ColorTickets> fame\" />\n"
                                "      \t</RGBRenderColorSpace>\n"
                                "      </GXC_ColorTickets>\n";
const std::string before_ticket = "<ORV ORV_VERSION=\"10066\">\n"
                                  "    <GCM_ColorTicket id=\"1\">\n";
const std::string after_ticket = "    </GCM_ColorTicket>\n"
                                 "    <GCM_ColorTicket id=\"1\">\n"
                                 "    </GCM_ColorTicket>\n"
                                 "</ORV>\n";

TEST(CodedInput, PutsTicketTextWhereItBelongs)
{
    // Whatever bits wait in the coder when the ticket is printed.
    for (size_t shift = 0; shift < 60; ++shift)
    {
        const std::string head = "<ORV shift=\"" + "0123456789 aab"s.substr(0, shift % 15) + std::string(shift, 'a') +
                                 "\">\n    <GCM_ColorTicket id=\"1\">\n";
        const std::string file = CodedFile().code(head).plain(ticket_text).code(after_ticket).close();
        ASSERT_NE(file.find(ticket_text), std::string::npos);
        const Log log = read_log(file);
        ASSERT_EQ(log.text, head + ticket_text + after_ticket) << shift;
        ASSERT_EQ(log.ending, Ending::whole);
    }
}

TEST(CodedInput, ReadsManyTicketsAndLongOnes)
{
    CodedFile file;
    std::string text = "<ORV>\n";
    file.code(text);
    for (int i = 0; i < 50; ++i)
    {
        const std::string indent(i % 30 < 25 ? 2 * static_cast<size_t>(i % 30) : 50, ' ');
        const std::string deeper(std::min<size_t>(indent.size() + 2, 50), ' ');
        const std::string opened = indent + "<GCM_ColorTicket id=\"" + std::to_string(i) + "\">\n";
        std::string ticket = deeper + "<GXC_ColorTickets>\n";
        for (int line = 0; line < i * 200; ++line)
            ticket += deeper + "\t<Marker UInt32=\"" + std::to_string(line) + "\" />\n";
        ticket += deeper + "</GXC_ColorTickets>\n";
        const std::string closed = indent + "</GCM_ColorTicket>\n";
        file.code(opened).plain(ticket).code(closed);
        text += opened + ticket + closed;
    }
    text += "</ORV>\n";
    const Log log = read_log(file.code("</ORV>\n").close());
    EXPECT_EQ(log.text, text);
    EXPECT_EQ(log.ending, Ending::whole);
}

TEST(CodedInput, GivesWhatIsWholeOfAFileCutAroundATicket)
{
    const std::string text = before_ticket + ticket_text + after_ticket;
    const std::string file = CodedFile().code(before_ticket).plain(ticket_text).code(after_ticket).close();
    const size_t at = file.find(ticket_text);
    for (size_t size = 36; size < file.size(); ++size)
    {
        const Log log = read_log(file.substr(0, size));
        ASSERT_EQ(log.ending, log.text == text ? Ending::whole : Ending::cut) << size;
        if (size >= at + ticket_text.size() + 2)
        {
            ASSERT_EQ(log.text, text.substr(0, log.text.size())) << size;
            ASSERT_GE(log.text.size(), before_ticket.size() + ticket_text.size());
        }
    }
}

// A ticket whose strings hold the line that closes it, at its own indent and behind newlines and quotes.
const std::string closing_line = "\n      </GXC_ColorTickets>\n";

TicketBytes bytes_of_closing_lines()
{
    const std::string name = "a" + closing_line + closing_line + "\" />\n";
    return TicketBytes()
        .u8({1, 0, 1, 0, 0, 1, 1, 0})
        .u32({0, 4, 0, 0})
        .u8({3, 0, 0, 0})
        .u32({0})
        .text(name.c_str())
        .u32({0, 0xFFFFFFFF})
        .u32({28, 0})
        .text(closing_line.c_str())
        .text("")
        .text("b")
        .text(("\"" + closing_line).c_str())
        .text((closing_line + "c").c_str())
        .u32({0});
}

std::string ticket_of_closing_lines()
{
    return dump_ticket(bytes_of_closing_lines().bytes(), 1, "      ");
}

TEST(CodedInput, TakesTicketsWithStringsThatHoldTheClosingLine)
{
    const std::string ticket = ticket_of_closing_lines();
    ASSERT_NE(ticket.find(closing_line), ticket.rfind(closing_line.substr(0, closing_line.size() - 1)));
    const std::string text = before_ticket + ticket + after_ticket;
    const std::string file = CodedFile().code(before_ticket).plain(ticket).code(after_ticket).close();
    const Log log = read_log(file);
    EXPECT_EQ(log.text, text);
    EXPECT_EQ(log.ending, Ending::whole);
    EXPECT_EQ(log.used, file.size());
    // Cut within the ticket it gives what is there of it.
    const size_t at = file.find(ticket);
    for (size_t size = at + 100; size < at + ticket.size(); ++size)
    {
        const Log cut = read_log(file.substr(0, size));
        ASSERT_EQ(cut.ending, Ending::cut) << size;
        ASSERT_EQ(cut.text.substr(cut.text.size() - 40), file.substr(size - 40, 40)) << size;
    }
}

// The log of a face with such a ticket.
std::string log_of_a_session(uint32_t compress)
{
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    FakeTickets tickets;
    const std::vector<uint8_t> bytes = bytes_of_closing_lines().bytes();
    FakeTickets::Ticket ticket = {&tickets, 1, std::string(bytes.begin(), bytes.end())};
    const ORV_FaceProperties properties = orvlog::test::letter_face();
    ORV_Interface orv = {};
    ORV_DrawingInterface face = {};
    EXPECT_EQ(orvlog_create_session(&orv, nullptr, allocator.get(), identity.get(), stream.get(), nullptr,
                                    tickets.functions(), tickets.serial(), nullptr, nullptr, nullptr, compress, 0),
              1U);
    EXPECT_EQ(orv.face_start.fn(nullptr, &orv, nullptr, &face, nullptr, 1, &properties, &ticket, 0, 0), 1U);
    EXPECT_EQ(face.drawing_finish.fn(&face), 1U);
    EXPECT_EQ(ORVLOG_DLL_shutdown(orv.document_start.context), 1U);
    return stream.text();
}

TEST(CodedInput, GivesThePlainLogOfASessionWithSuchATicket)
{
    const std::string plain = log_of_a_session(0);
    ASSERT_NE(plain.find(closing_line), std::string::npos);
    const Log log = read_log(log_of_a_session(1));
    EXPECT_TRUE(log.coded);
    EXPECT_EQ(log.ending, Ending::whole);
    EXPECT_EQ(log.text, plain);
}

// A string full of closing lines is read again and again, but not without bound: behind so many the ticket is taken to
// end, and what follows for coded bytes.
TEST(CodedInput, BoundsHowOftenATicketIsReadAgain)
{
    std::string lines;
    for (int i = 0; i < 20000; ++i)
        lines += closing_line.substr(1);
    const std::string whole = ticket_of_closing_lines();
    const size_t at = whole.find(closing_line);
    const std::string full = whole.substr(0, at + 1) + lines + whole.substr(at + 1);
    const Log log = read_log(CodedFile().code(before_ticket).plain(full).code(after_ticket).close());
    EXPECT_TRUE(log.text.starts_with(before_ticket.substr(0, before_ticket.size() - 1)));
    EXPECT_NE(log.text.find(whole.substr(0, at + 1) + lines.substr(0, 5000)), std::string::npos);
    EXPECT_EQ(log.text.find(full), std::string::npos);
}

}  // namespace
