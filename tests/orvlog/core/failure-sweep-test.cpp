// The Nth allocation refused, the Nth stream operation failed, the Nth call of the renderer failed, for every N
// until a run meets no failure: nothing crashes, nothing leaks, the renderer is called, its results come back.

#include "orvlog/session/orvlog-creators.h"
#include "orvlog/session/orvlog-frames.h"
#include "orvlog/session/orvlog-session.h"
#include "tests/support/every-call.h"
#include "tests/support/failure-sweep.h"
#include "tests/support/fake-identity.h"
#include "tests/support/fake-renderer.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace
{

using namespace orvlog::test;

struct Sweep
{
    EveryCall job;
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    FakeRenderer renderer;
    ORV_Interface orv = {};
    uint32_t calls = 0;
    // Of tickets for which there was no memory for a frame; they stay held.
    int32_t references_without_frame = 0;

    // 0 when the session could not be had.
    uint32_t run(uint32_t mode, uint32_t compress = 0)
    {
        if (orvlog_create_session(&orv, renderer.get(), allocator.get(), identity.get(), stream.get(), nullptr,
                                  job.ticket_functions(), job.ticket_serial_functions(), nullptr, nullptr, nullptr,
                                  compress, mode) == 0)
            return 0;
        calls = job.run(&orv);
        references_without_frame = job.references() - references_of_frames();
        const uint32_t ticket_calls = job.tickets().calls;
        const uint32_t result = ORVLOG_DLL_shutdown(orv.document_start.context);
        EXPECT_EQ(job.tickets().calls, ticket_calls) << "the shutdown calls nothing of the colour manager's";
        return result;
    }

    int32_t references_of_frames() const
    {
        const auto* session = static_cast<const ORVLOG_Session*>(orv.document_start.context);
        int32_t count = 0;
        for (const ORVLOG_ColourFrame* frame = session->colour_frames; frame != nullptr; frame = frame->next)
            count += static_cast<int32_t>(frame->retained);
        return count;
    }

    void expect_clean(uint64_t n)
    {
        EXPECT_EQ(allocator.outstanding(), 0U) << n;
        EXPECT_EQ(allocator.bad_frees(), 0U) << n;
        EXPECT_EQ(allocator.other_channels(), 0U) << n;
    }
};

class FailureSweep : public testing::TestWithParam<uint32_t>
{
};

TEST_P(FailureSweep, SoundJobIsClean)
{
    Sweep sweep;
    EXPECT_EQ(sweep.run(GetParam()), 1U);
    for (const uint32_t result : sweep.job.results())
        EXPECT_EQ(result, 1U);
    EXPECT_EQ(sweep.calls, 42U);
    // The memory context's drawing calls are forwarded, too; the error contexts are not.
    EXPECT_EQ(sweep.renderer.calls().size(), 42U);
    EXPECT_EQ(sweep.renderer.count("drawing_error_context"), 0U);
    EXPECT_EQ(sweep.job.references(), 1) << "the frame of the resource, whose group was left open";
    EXPECT_EQ(sweep.references_without_frame, 0);
    sweep.expect_clean(0);
}

TEST_P(FailureSweep, NthAllocationRefused)
{
    const auto refused = [](uint64_t n)
    {
        Sweep sweep;
        sweep.allocator.refuse(n);
        sweep.run(GetParam());
        sweep.expect_clean(n);
        EXPECT_GE(sweep.references_without_frame, 0) << n;
        EXPECT_LE(sweep.references_without_frame, 1) << n;
        return sweep.allocator.refused() != 0;
    };
    EXPECT_GT(sweep_failures(refused), 19U);
}

TEST_P(FailureSweep, AllAllocationsRefusedFromTheNthOn)
{
    const auto refused = [](uint64_t n)
    {
        Sweep sweep;
        sweep.allocator.refuse(n, true);
        sweep.run(GetParam());
        sweep.expect_clean(n);
        return sweep.allocator.refused() != 0;
    };
    EXPECT_GT(sweep_failures(refused), 19U);
}

TEST_P(FailureSweep, NthStreamOperationFailed)
{
    for (const uint32_t compress : {0U, 1U})
    {
        Sweep sound;
        sound.run(GetParam(), compress);
        const uint64_t operations = sound.stream.operations();
        // Beyond the first operations, which open the log, some stand for their neighbours.
        for (uint64_t n = 1; n <= operations; n += n < 40 ? 1 : 1 + operations / 80)
        {
            Sweep sweep;
            sweep.stream.fail(n);
            EXPECT_EQ(sweep.run(GetParam(), compress), 1U);
            ASSERT_EQ(sweep.stream.failed(), 1U) << n;
            ASSERT_EQ(sweep.renderer.calls().size(), 42U) << n;
            for (const uint32_t result : sweep.job.results())
                ASSERT_EQ(result, 1U) << n;
            EXPECT_EQ(sweep.references_without_frame, 0) << n;
            sweep.expect_clean(n);
        }
        Sweep last;
        last.stream.fail(operations + 1);
        EXPECT_EQ(last.run(GetParam(), compress), 1U);
        EXPECT_EQ(last.stream.failed(), 0U);
    }
}

TEST_P(FailureSweep, StreamThatFailsForGood)
{
    const auto failed = [](uint64_t n)
    {
        Sweep sweep;
        sweep.stream.fail(n, true);
        EXPECT_EQ(sweep.run(GetParam()), 1U);
        EXPECT_EQ(sweep.renderer.calls().size(), 42U);
        sweep.expect_clean(n);
        return sweep.stream.failed() != 0;
    };
    EXPECT_GT(sweep_failures(failed, 61), 20U);
}

TEST_P(FailureSweep, NthCallOfTheRendererFailed)
{
    const auto failed = [](uint64_t n)
    {
        Sweep sweep;
        sweep.renderer.fail(n);
        EXPECT_EQ(sweep.run(GetParam()), 1U);
        sweep.expect_clean(n);
        const bool met = sweep.renderer.failed() != 0;
        uint32_t zeros = 0;
        for (const uint32_t result : sweep.job.results())
            zeros += result == 0 ? 1 : 0;
        EXPECT_EQ(zeros != 0, met) << n;
        return met;
    };
    EXPECT_EQ(sweep_failures(failed), 42U);
}

TEST_P(FailureSweep, TicketOperationsFailed)
{
    for (uint32_t FakeTickets::*operation : {&FakeTickets::retain_result, &FakeTickets::query_result,
                                             &FakeTickets::key_result, &FakeTickets::serialise_result})
    {
        Sweep sweep;
        sweep.job.tickets().*operation = 0;
        EXPECT_EQ(sweep.run(GetParam()), 1U);
        EXPECT_EQ(sweep.renderer.calls().size(), 42U);
        EXPECT_EQ(sweep.references_without_frame, 0);
        sweep.expect_clean(0);
    }
    Sweep sweep;
    sweep.job.tickets().release_result = 0;
    EXPECT_EQ(sweep.run(GetParam()), 1U);
    EXPECT_EQ(sweep.allocator.outstanding(), 0U);
    EXPECT_EQ(sweep.job.tickets().releases, sweep.job.tickets().retains - 1) << "one frame was left open";
}

uint64_t sweep_a_job_of_three_places(uint64_t step, uint64_t cap)
{
    return sweep_failures([](uint64_t n) { return n <= 3; }, step, cap);
}

TEST(SweepFailures, EndsWithTheFirstRunThatMeetsNone)
{
    EXPECT_EQ(sweep_a_job_of_three_places(1, 4), 3U);
    EXPECT_EQ(sweep_a_job_of_three_places(2, 4), 2U);
}

TEST(SweepFailures, FailsWhereItsCapComesFirst)
{
    EXPECT_NONFATAL_FAILURE(sweep_a_job_of_three_places(1, 3), "all of 3 runs met a failure");
}

INSTANTIATE_TEST_SUITE_P(Modes, FailureSweep, testing::Values(ORVLOG_MODE_TRANSPARENT, ORVLOG_MODE_BASE));

}  // namespace
