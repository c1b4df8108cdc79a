#include "tests/orvlog/core/random-calls.h"

namespace
{

using namespace orvlog::test;

TEST(RandomCallSequence, KeepsEveryOpenEngineAndLosesNothing)
{
    for (uint32_t seed = 0; seed < 150; ++seed)
    {
        RandomCalls calls(seed);
        calls.run(80);
        const int32_t held = calls.ticket.references;
        const uint32_t ticket_calls = calls.tickets.calls;
        EXPECT_EQ(held, calls.references_of_frames());
        EXPECT_EQ(calls.test.shut_down(), 1U);
        EXPECT_EQ(calls.test.allocator.bad_frees(), 0U);
        EXPECT_EQ(calls.test.allocator.other_channels(), 0U);
        EXPECT_EQ(calls.test.allocator.outstanding(), 0U);
        EXPECT_EQ(calls.ticket.references, held) << "what is left open is the client's to release";
        EXPECT_EQ(calls.tickets.calls, ticket_calls);
        EXPECT_TRUE(calls.test.stream.text().ends_with("</ORV>\n"));
        if (testing::Test::HasFailure())
            FAIL() << "seed " << seed;
    }
}

}  // namespace
