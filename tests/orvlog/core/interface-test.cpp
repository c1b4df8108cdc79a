// The library as a client meets it: the shared library alone, through its three exports.

#include "orvlog/interface/orvlog.h"

#include "tests/support/every-call.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

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
    EXPECT_EQ(job.references(), 1) << "the resource's, whose group was left open: the client's to release";
    const std::string& log = test.stream.text();
    EXPECT_EQ(log.compare(0, 33, "<ORV MIRDA_TOLMA_VERSION=\"10034\" "), 0);
    EXPECT_EQ(log.substr(log.size() - 7), "</ORV>\n");
    EXPECT_NE(log.find("  <ORV_face_start document_context=\"0\" drawing_context=\"1\" "), std::string::npos);
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
