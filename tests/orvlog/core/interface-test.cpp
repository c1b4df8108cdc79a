// The library as a client meets it: the shared library alone, through its three exports.

#include "orvlog/interface/orvlog.h"

#include "tests/support/every-call.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

namespace
{

using namespace orvlog::test;

TEST(SharedLibrary, LogsAndForwardsAWholeJob)
{
    EveryCall job;
    TestSession test(Behind::kRenderer, nullptr, job.ticket_functions(), job.ticket_serial_functions());
    ASSERT_NE(test.initialised, 0U);
    const uint32_t calls = job.run(&test.orv);
    EXPECT_EQ(test.renderer.calls().size(), calls);
    for (const uint32_t result : job.results())
        EXPECT_EQ(result, 1U);
    EXPECT_EQ(test.shut_down(), 1U);
    EXPECT_EQ(test.allocator.outstanding(), 0U);
    EXPECT_EQ(job.references(), 0);
    const std::string& log = test.stream.text();
    EXPECT_EQ(log.compare(0, 33, "<ORV MIRDA_TOLMA_VERSION=\"10034\" "), 0);
    EXPECT_EQ(log.substr(log.size() - 7), "</ORV>\n");
    EXPECT_NE(log.find("  <ORV_face_start document_context=\"0\" drawing_context=\"1\" "), std::string::npos);
}

// Whatever keeps a log from beginning, the table that the client gets is the renderer's own, and the job is drawn.
TEST(SharedLibrary, WithoutALogTheJobIsDrawnByTheRenderersTable)
{
    FakeIdentity identity;
    FakeIdentity refusing;
    refusing.refuse();
    const ORVLOG_IdentitySource no_object = {nullptr};
    ORVLOG_IdentityObject table_less = {nullptr};
    const ORVLOG_IdentitySource no_table = {&table_less};
    const ORVLOG_IdentityTable empty = {};
    ORVLOG_IdentityObject function_less = {&empty};
    const ORVLOG_IdentitySource no_function = {&function_less};
    TestAllocator allocator;
    TestAllocator exhausted;
    exhausted.refuse(1, true);
    GMM_Allocator no_alloc = *allocator.get();
    no_alloc.gmm_Alloc = nullptr;
    GMM_Allocator no_free = *allocator.get();
    no_free.gmm_Free = nullptr;
    GMM_Allocator no_realloc = *allocator.get();
    no_realloc.gmm_Realloc = nullptr;
    const struct
    {
        const char* name;
        GMM_Allocator* allocator;
        const ORVLOG_IdentitySource* identity;
    } cases[] = {
        {"no allocator", nullptr, identity.get()},      {"no gmm_Alloc", &no_alloc, identity.get()},
        {"no gmm_Free", &no_free, identity.get()},      {"no gmm_Realloc", &no_realloc, identity.get()},
        {"no memory", exhausted.get(), identity.get()}, {"no identity", allocator.get(), nullptr},
        {"no object", allocator.get(), &no_object},     {"no table", allocator.get(), &no_table},
        {"no function", allocator.get(), &no_function}, {"no number", allocator.get(), refusing.get()},
    };
    for (const auto& failure : cases)
    {
        EveryCall job;
        FakeRenderer renderer;
        MemoryStream stream;
        ORV_Interface orv;
        std::memset(&orv, 0xCD, sizeof orv);
        EXPECT_EQ(ORVLOG_DLL_initialise(&orv, renderer.get(), failure.allocator, failure.identity, 0, stream.get(),
                                        nullptr, 0, job.ticket_functions(), nullptr, 0, nullptr, nullptr),
                  0U)
            << failure.name;
        EXPECT_EQ(std::memcmp(&orv, renderer.get(), sizeof orv), 0) << failure.name;
        EXPECT_EQ(job.run(&orv), 42U) << failure.name;
        // A session answers three of these itself.
        EXPECT_EQ(renderer.count("drawing_error_context"), 3U) << failure.name;
        EXPECT_EQ(renderer.calls().size(), 45U) << failure.name;
        EXPECT_EQ(stream.text(), "") << failure.name;
    }
    EXPECT_EQ(allocator.outstanding(), 0U);
}

// Where the two tables are one, it stays what it was; without a renderer there is nothing to copy.
TEST(SharedLibrary, ATableThatCannotBeFilledStaysAsItWas)
{
    TestAllocator allocator;
    FakeIdentity identity;
    FakeRenderer renderer;
    MemoryStream stream;
    const ORV_Interface before = *renderer.get();
    const auto initialise = [&](ORV_Interface* out, const ORV_Interface* in, GMM_Allocator* memory)
    {
        return ORVLOG_DLL_initialise(out, in, memory, identity.get(), 0, stream.get(), nullptr, 0, nullptr, nullptr, 0,
                                     nullptr, nullptr);
    };
    EXPECT_EQ(initialise(renderer.table(), renderer.table(), allocator.get()), 0U);
    EXPECT_EQ(std::memcmp(&before, renderer.get(), sizeof before), 0);
    ORV_Interface orv;
    ORV_Interface untouched;
    std::memset(&orv, 0xCD, sizeof orv);
    std::memset(&untouched, 0xCD, sizeof untouched);
    EXPECT_EQ(initialise(&orv, nullptr, nullptr), 0U);
    EXPECT_EQ(std::memcmp(&orv, &untouched, sizeof orv), 0);
    EXPECT_EQ(stream.text(), "");
    EXPECT_EQ(allocator.requests(), 0U);
}

std::string expected_text(const char* name)
{
    std::ifstream file(std::string(ORVLOG_SOURCE_DIR) + "/tests/expected/" + name, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// The log of a job is the same bytes on every system.
TEST(SharedLibrary, LogOfEveryCallIsTheExpectedText)
{
    for (const bool base : {false, true})
    {
        EveryCall job;
        TestSession test(Behind::kRenderer, nullptr, job.ticket_functions(), nullptr);
        EXPECT_TRUE(!base || test.set_base_mode());
        job.run(&test.orv);
        test.shut_down();
        EXPECT_EQ(test.stream.text(), expected_text(base ? "every-call-base.xml" : "every-call-transparent.xml"));
    }
}

TEST(SharedLibrary, SameJobGivesTheSameLog)
{
    std::string logs[2];
    for (std::string& log : logs)
    {
        EveryCall job;
        TestSession test(Behind::kNothing, nullptr, job.ticket_functions(), job.ticket_serial_functions());
        job.run(&test.orv);
        test.shut_down();
        log = test.stream.text();
    }
    EXPECT_EQ(logs[0], logs[1]);
}

TEST(SharedLibrary, SessionsDoNotKnowOfOneAnother)
{
    EveryCall job;
    EveryCall other_job;
    TestSession test(Behind::kNothing);
    TestSession other(Behind::kNothing);
    job.run(&test.orv);
    other_job.run(&other.orv);
    test.shut_down();
    other.shut_down();
    EXPECT_EQ(test.stream.text(), other.stream.text());
}

TEST(SharedLibrary, AcceptsNullAndNothing)
{
    EXPECT_EQ(ORVLOG_DLL_shutdown(nullptr), 1U);
    const ORVLOG_Params params = {nullptr, 0, 0};
    EXPECT_EQ(ORVLOG_DLL_set_parameters(nullptr, &params), 1U);
    EXPECT_EQ(ORVLOG_DLL_initialise(nullptr, nullptr, nullptr, nullptr, 0, nullptr, nullptr, 0, nullptr, nullptr, 0,
                                    nullptr, nullptr),
              0U);
}

}  // namespace
