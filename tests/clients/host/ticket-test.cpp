// Tickets that are a profile each: what the log says of them, that they are written once, and given back.

#include "clients/host/orvlog-host.h"
#include "tests/support/memory-stream.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

class Ticket : public testing::Test
{
protected:
    // The log of pages with these tickets, behind its root.
    std::string log_of(std::initializer_list<ORVLOG_ProfileTicket*> tickets)
    {
        MemoryStream stream;
        ORV_Interface table;
        ORVLOG_OpenOptions options = {};
        options.interface_out = &table;
        options.log_stream = stream.get();
        options.ticket_functions = orvlog_profile_ticket_functions();
        options.ticket_serial_functions = orvlog_profile_ticket_serial_functions();
        ORVLOG_Host* host = orvlog_open(&options);
        void* document = nullptr;
        table.document_start.fn(nullptr, &table, &document, 1, nullptr, nullptr);
        for (ORVLOG_ProfileTicket* ticket : tickets)
        {
            ORV_DrawingInterface page = {};
            table.face_start.fn(nullptr, &table, document, &page, nullptr, 1, nullptr, ticket, 0, 0);
            EXPECT_EQ(ticket->references, 1U);
            page.drawing_finish.fn(&page);
            EXPECT_EQ(ticket->references, 0U);
        }
        table.document_finish.fn(&table, document);
        EXPECT_EQ(orvlog_close(host), 0);
        return stream.text();
    }

    static ORVLOG_ProfileTicket ticket_of(uint32_t key, uint32_t channels)
    {
        ORVLOG_ProfileTicket ticket = {};
        ticket.key = key;
        ticket.channels = channels;
        return ticket;
    }

    static size_t count(const std::string& text, const std::string& wanted)
    {
        size_t found = 0;
        for (size_t at = text.find(wanted); at != std::string::npos; at = text.find(wanted, at + 1))
            ++found;
        return found;
    }
};

TEST_F(Ticket, StandsUnderItsFamily)
{
    ORVLOG_ProfileTicket gray = ticket_of(1, 1);
    ORVLOG_ProfileTicket rgb = ticket_of(2, 3);
    ORVLOG_ProfileTicket cmyk = ticket_of(3, 4);
    const std::string log = log_of({&gray, &rgb, &cmyk});
    EXPECT_EQ(count(log, "<GrayRenderColorSpace>"), 1U);
    EXPECT_EQ(count(log, "<RGBRenderColorSpace>"), 1U);
    EXPECT_EQ(count(log, "<CMYKRenderColorSpace>"), 1U);
    EXPECT_EQ(count(log, "<NonColorimetric GNC_Format=\"GNC_FORMAT_GRAY\" />"), 1U);
    EXPECT_EQ(count(log, "<NonColorimetric GNC_Format=\"GNC_FORMAT_RGB\" />"), 1U);
    EXPECT_EQ(count(log, "<NonColorimetric GNC_Format=\"GNC_FORMAT_CMYK\" />"), 1U);
    EXPECT_EQ(count(log, "<RenderBitDepth UInt32=\"8\" />"), 3U);
    EXPECT_EQ(count(log, "(null)"), 0U);
}

TEST_F(Ticket, HoldsItsProfileAndStandsInTheLogOnce)
{
    static const uint8_t profile[] = {0x00, 0x7F, 0x80, 0xFF};
    ORVLOG_ProfileTicket rgb = ticket_of(5, 3);
    rgb.intent = GCM_RI_SATURATION;
    rgb.profile = profile;
    rgb.profile_bytes = sizeof profile;
    ORVLOG_ProfileTicket other = rgb;
    other.key = 6;
    const std::string log = log_of({&rgb, &rgb, &other});
    EXPECT_EQ(count(log, "<ProfileBufferSize UInt32=\"4\" />"), 2U);
    EXPECT_EQ(count(log, "<ProfileBuffer>007F80FF</ProfileBuffer>"), 2U);
    EXPECT_EQ(count(log, "<GCM_ColorTicket id=\"1\">"), 2U);
    EXPECT_EQ(count(log, "<GCM_ColorTicket id=\"2\">"), 1U);
    EXPECT_EQ(count(log, "<ImageRenderIntent GCM_RenderIntent=\"GCM_RI_SATURATION\" />"), 2U);
    EXPECT_EQ(count(log, "<VariableSizedData>"), 2U);
    EXPECT_EQ(count(log, "</VariableSizedData>"), 2U);
}

}  // namespace
