#include "orvlog/colour/gxc/gxc-family.h"

#include "tests/support/fake-tickets.h"

#include <gtest/gtest.h>

namespace
{

using orvlog::test::FakeTickets;

class GxcFamily : public testing::Test
{
protected:
    GxcFamily()
    {
        tickets.csd_list_result = 1;
    }

    // The family, or 99 for none.
    int32_t family(uint32_t kind, uint8_t base_chans)
    {
        int32_t result = 99;
        tickets.kind = kind;
        tickets.base_chans = base_chans;
        const uint32_t found = gxc_family_of_ticket(tickets.functions(), &ticket, &result);
        EXPECT_EQ(found, result == 99 ? 0u : 1u);
        return result;
    }

    FakeTickets tickets;
    FakeTickets::Ticket ticket = {&tickets, 1, ""};
};

TEST_F(GxcFamily, FollowsKindAndChannels)
{
    EXPECT_EQ(family(0, 1), 0);
    EXPECT_EQ(family(0, 3), 1);
    EXPECT_EQ(family(1, 4), 2);
}

TEST_F(GxcFamily, AnythingElseIsNone)
{
    for (uint32_t kind = 0; kind < 4; ++kind)
        for (uint32_t channels = 0; channels < 256; ++channels)
        {
            const bool known = (kind == 0 && (channels == 1 || channels == 3)) || (kind == 1 && channels == 4);
            EXPECT_EQ(family(kind, static_cast<uint8_t>(channels)) == 99, !known) << kind << " " << channels;
        }
    EXPECT_EQ(family(0xFFFFFFFF, 1), 99);
}

TEST_F(GxcFamily, FailedInquiriesGiveNone)
{
    tickets.query_result = 0;
    EXPECT_EQ(family(0, 3), 99);
    tickets.query_result = 1;
    tickets.csd_list_result = 0;
    EXPECT_EQ(family(0, 3), 99);
    tickets.csd_list_result = 1;
    tickets.has_definition = false;
    EXPECT_EQ(family(0, 3), 99);
    tickets.has_definition = true;
    EXPECT_EQ(family(0, 3), 1);
}

TEST_F(GxcFamily, MissingOperationsGiveNone)
{
    int32_t result = 5;
    ORVLOG_TicketFunctions functions = *tickets.functions();
    functions.query = nullptr;
    EXPECT_EQ(gxc_family_of_ticket(&functions, &ticket, &result), 0u);
    functions = *tickets.functions();
    functions.csd_list = nullptr;
    EXPECT_EQ(gxc_family_of_ticket(&functions, &ticket, &result), 0u);
    EXPECT_EQ(gxc_family_of_ticket(nullptr, &ticket, &result), 0u);
    EXPECT_EQ(result, 5);
}

}  // namespace
