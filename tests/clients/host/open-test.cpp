// Sessions that are opened by named options: what they make, and each reason for which none is begun.

#include "clients/host/orvlog-host.h"
#include "tests/support/fake-renderer.h"
#include "tests/support/memory-stream.h"
#include "tests/support/temp-folder.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

class Open : public testing::Test
{
protected:
    Open()
    {
        options_.interface_out = &table_;
        options_.interface_in = renderer_.get();
        options_.log_path = "job.xml";
        options_.why_out = &why_;
    }

    // That the job goes on without a log.
    void expect_no_log(uint32_t why)
    {
        EXPECT_EQ(orvlog_open(&options_), nullptr);
        EXPECT_EQ(why_, why);
        EXPECT_EQ(table_.document_start.fn, renderer_.get()->document_start.fn);
        EXPECT_EQ(table_.document_start.context, renderer_.get()->document_start.context);
    }

    void draw()
    {
        void* document = nullptr;
        EXPECT_EQ(table_.document_start.fn(nullptr, &table_, &document, 7, nullptr, nullptr), 1U);
        EXPECT_EQ(table_.document_finish.fn(&table_, document), 1U);
    }

    std::string behind_root() const
    {
        const std::string log = folder_.read("job.xml");
        return log.substr(log.find('\n') + 1);
    }

    const std::string kDocument = "  <ORV_document_start document_context=\"0\" document_id=\"7\" "
                                  "font_engine_functions=\"FALSE\">\n"
                                  "  </ORV_document_start>\n"
                                  "  <ORV_document_finish document_context=\"0\">\n"
                                  "  </ORV_document_finish>\n"
                                  "</ORV>\n";

    TempFolder folder_;
    FakeRenderer renderer_;
    ORV_Interface table_ = {};
    uint32_t why_ = 99;
    ORVLOG_OpenOptions options_ = {};
};

uint32_t no_number(ORVLOG_IdentityObject*, uint8_t*)
{
    return 0;
}

GIO_Stream* no_stream(const char*)
{
    errno = EACCES;
    return nullptr;
}

TEST_F(Open, MakesALogAndPassesTheCallsOn)
{
    ORVLOG_Host* host = orvlog_open(&options_);
    ASSERT_NE(host, nullptr);
    EXPECT_EQ(why_, static_cast<uint32_t>(ORVLOG_OPEN_DONE));
    draw();
    EXPECT_EQ(orvlog_close(host), 0);
    EXPECT_EQ(behind_root(), kDocument);
    EXPECT_EQ(renderer_.calls().size(), 2U);
}

TEST_F(Open, NeedsNoRenderer)
{
    options_.interface_in = nullptr;
    ORVLOG_Host* host = orvlog_open(&options_);
    ASSERT_NE(host, nullptr);
    draw();
    EXPECT_EQ(orvlog_close(host), 0);
    EXPECT_EQ(behind_root(), kDocument);
}

TEST_F(Open, LeavesTheClientsStreamToTheClient)
{
    MemoryStream stream;
    options_.log_stream = stream.get();
    ORVLOG_Host* host = orvlog_open(&options_);
    ASSERT_NE(host, nullptr);
    draw();
    EXPECT_EQ(orvlog_close(host), 0);
    EXPECT_EQ(stream.text().substr(stream.text().find('\n') + 1), kDocument);
    EXPECT_EQ(folder_.names(), std::vector<std::string>());
    stream.get()->ops->gio_Flush(stream.get()->instance);
}

TEST_F(Open, ChoosesBaseModeBehindTheRoot)
{
    options_.base_mode = 1;
    ORVLOG_Host* host = orvlog_open(&options_);
    ASSERT_NE(host, nullptr);
    draw();
    EXPECT_EQ(orvlog_close(host), 0);
    EXPECT_EQ(behind_root(), kDocument);
}

TEST_F(Open, TellsASecondReceiverAndSaysThatItsModeIsObsolete)
{
    FakeRenderer second("second");
    options_.second_interface = second.get();
    ORVLOG_Host* host = orvlog_open(&options_);
    ASSERT_NE(host, nullptr);
    draw();
    EXPECT_EQ(orvlog_close(host), 0);
    EXPECT_EQ(second.calls().size(), 2U);
    EXPECT_NE(behind_root().find("ORVLOG: WARNING: Version 1.1 ORVLOG_Params.up_DumpReqImgDataOnly converted"),
              std::string::npos);
}

TEST_F(Open, GivesBackAllMemory)
{
    TestAllocator allocator;
    options_.allocator = allocator.get();
    ORVLOG_Host* host = orvlog_open(&options_);
    ASSERT_NE(host, nullptr);
    draw();
    EXPECT_EQ(orvlog_close(host), 0);
    EXPECT_GT(allocator.requests(), 0U);
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST_F(Open, SaysThatTheLogCantBeOpened)
{
    options_.log_path = "no/such/folder/job.xml";
    expect_no_log(ORVLOG_OPEN_NO_LOG);
    EXPECT_EQ(errno, ENOENT);
    draw();
    EXPECT_EQ(renderer_.calls().size(), 2U);
}

TEST_F(Open, SaysThatAStreamCantBeOpened)
{
    options_.open_stream = no_stream;
    expect_no_log(ORVLOG_OPEN_NO_LOG);
    EXPECT_EQ(errno, EACCES);
}

TEST_F(Open, SaysThatNoLogIsNamed)
{
    options_.log_path = nullptr;
    expect_no_log(ORVLOG_OPEN_NO_LOG_NAMED);
}

TEST_F(Open, SaysThatTheSessionIsRefused)
{
    TestAllocator allocator;
    allocator.refuse(1, true);
    options_.allocator = allocator.get();
    expect_no_log(ORVLOG_OPEN_REFUSED);
    EXPECT_EQ(allocator.outstanding(), 0U);
    EXPECT_EQ(folder_.read("job.xml"), "");

    ORVLOG_IdentityTable functions = {};
    functions.orvlog_get_session_id = no_number;
    ORVLOG_IdentityObject object = {&functions};
    const ORVLOG_IdentitySource identity = {&object};
    options_.allocator = nullptr;
    options_.identity = &identity;
    expect_no_log(ORVLOG_OPEN_REFUSED);
}

TEST_F(Open, SaysThatThereIsNoTable)
{
    options_.interface_out = nullptr;
    EXPECT_EQ(orvlog_open(&options_), nullptr);
    EXPECT_EQ(why_, static_cast<uint32_t>(ORVLOG_OPEN_NO_TABLE));

    options_.interface_out = renderer_.table();
    const ORV_document_start_fn before = renderer_.get()->document_start.fn;
    EXPECT_EQ(orvlog_open(&options_), nullptr);
    EXPECT_EQ(why_, static_cast<uint32_t>(ORVLOG_OPEN_NO_TABLE));
    EXPECT_EQ(renderer_.get()->document_start.fn, before);
    EXPECT_EQ(folder_.names(), std::vector<std::string>());
}

TEST_F(Open, GivesNothingForNoOptions)
{
    EXPECT_EQ(orvlog_open(nullptr), nullptr);
}

TEST_F(Open, SaysThatAnExportIsMissing)
{
    const ORVLOG_Library whole = {ORVLOG_DLL_initialise, ORVLOG_DLL_shutdown, ORVLOG_DLL_set_parameters};
    for (int missing = 0; missing < 4; ++missing)
    {
        ORVLOG_Library library = whole;
        if (missing == 0)
            library.initialise = nullptr;
        else if (missing == 1)
            library.shutdown = nullptr;
        else if (missing == 2)
            library.set_parameters = nullptr;
        EXPECT_EQ(orvlog_open_in(missing < 3 ? &library : nullptr, &options_), nullptr);
        EXPECT_EQ(why_, static_cast<uint32_t>(ORVLOG_OPEN_NO_LIBRARY));
        EXPECT_EQ(table_.document_start.fn, renderer_.get()->document_start.fn);
    }
    ORVLOG_Host* host = orvlog_open_in(&whole, &options_);
    ASSERT_NE(host, nullptr);
    EXPECT_EQ(orvlog_close(host), 0);
}

TEST_F(Open, WithoutARendererLeavesNothingToDrawOn)
{
    options_.interface_in = nullptr;
    options_.log_path = nullptr;
    table_ = *renderer_.get();
    EXPECT_EQ(orvlog_open(&options_), nullptr);
    EXPECT_EQ(table_.document_start.fn, nullptr);
    EXPECT_EQ(orvlog_close(nullptr), GIO_ERR_BAD_HANDLE);
}

TEST_F(Open, TellsOfAStreamThatFailed)
{
    MemoryStream stream;
    options_.log_stream = stream.get();
    ORVLOG_Host* host = orvlog_open(&options_);
    ASSERT_NE(host, nullptr);
    GIO_StreamOps ops = *stream.get()->ops;
    ops.gio_Error = [](void*) -> int32_t { return 1; };
    stream.get()->ops = &ops;
    draw();
    EXPECT_EQ(orvlog_close(host), GIO_ERR_OTHER);
}

#ifdef __linux__
TEST_F(Open, TellsOfAFullDisk)
{
    options_.log_path = "/dev/full";
    ORVLOG_Host* host = orvlog_open(&options_);
    ASSERT_NE(host, nullptr);
    draw();
    EXPECT_EQ(renderer_.calls().size(), 2U);
    EXPECT_EQ(orvlog_close(host), GIO_ERR_NO_SPACE);
}
#endif

}  // namespace
