#include "holv-core/ger/ger-log.h"
#include "orvlog/colour/gxc/gxc-ticket.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"
#include "tests/support/ticket-bytes.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

class GxcReport : public testing::Test
{
protected:
    GxcReport() : services{}
    {
        services.create = [](const GER_OsServices*, void*, void**, uintptr_t, uintptr_t) { return 5; };
        services.destroy = [](const GER_OsServices*, void*) { return 5; };
        services.release = [](const GER_OsServices*, void*) { return 5; };
        services.take = [](const GER_OsServices*, void*, uintptr_t, uint32_t) { return 5; };
        const int32_t made = GER_LogCreate(messages.get(), allocator.get(), &services, 0, nullptr, nullptr, &error_log);
        EXPECT_EQ(made, GIO_OK);
    }
    ~GxcReport() override
    {
        GER_LogDestroy(error_log);
    }

    // The messages of a ticket that is read with an error log at hand.
    std::string reports(const TicketBytes& bytes)
    {
        GuardedBlock block(bytes.bytes().data(), bytes.size());
        GXC_Writer writer = {nullptr, error_log, log.get(), "", 0};
        GXC_Input input = {block.data(), block.size(), 0};
        messages.clear();
        whole = gxc_write_ticket(&writer, &input, 1);
        EXPECT_EQ(writer.level, 0u);
        return messages.text();
    }

    TestAllocator allocator;
    MemoryStream messages;
    MemoryStream log;
    GER_OsServices services;
    GER_Log* error_log = nullptr;
    bool whole = false;
};

TEST_F(GxcReport, GoesOutWithItsModuleBeforeIt)
{
    EXPECT_EQ(gxc_report(error_log, "%s %d\n", "number", 7), 9);
    EXPECT_EQ(messages.text(), "[GXC] number 7\n");
}

TEST_F(GxcReport, WithoutALogNothingIsFormatted)
{
    EXPECT_EQ(gxc_report(nullptr, "%s", "text"), 0);
    EXPECT_EQ(messages.text(), "");
}

TEST_F(GxcReport, IsCutAt255Characters)
{
    EXPECT_EQ(gxc_report(error_log, "%s", std::string(255, 'a').c_str()), 255);
    EXPECT_EQ(messages.text(), "[GXC] " + std::string(255, 'a'));
    messages.clear();
    EXPECT_EQ(gxc_report(error_log, "%s", std::string(1000, 'b').c_str()), 255);
    EXPECT_EQ(messages.text(), "[GXC] " + std::string(255, 'b'));
}

TEST_F(GxcReport, HasLevel1OnChannel109)
{
    gxc_report(error_log, "x");
    GER_LogSetChannelLevel(error_log, 0, 109);
    messages.clear();
    gxc_report(error_log, "x");
    EXPECT_EQ(messages.text(), "");
    GER_LogSetChannelLevel(error_log, 1, 109);
    gxc_report(error_log, "x");
    EXPECT_EQ(messages.text(), "[GXC] x");
}

TEST_F(GxcReport, ASoundTicketHasNoMessage)
{
    EXPECT_EQ(reports(fixed_data().u32({0xFFFFFFFF}).u32({0})), "");
    EXPECT_TRUE(whole);
}

TEST_F(GxcReport, EachPartHasItsMessage)
{
    EXPECT_EQ(reports(TicketBytes().u8({1, 2})),
              "[GXC] [GXC] Failed to deserialise and write the fixed data portion of the colour ticket "
              "(bytes_read == 0).\n");
    EXPECT_FALSE(whole);
    EXPECT_EQ(reports(fixed_data().u32({0})),
              "[GXC] [GXC] Failed to deserialise and write the colour tickets CSD tables (bytes_read == 0).\n");
    EXPECT_FALSE(whole);
    EXPECT_EQ(reports(fixed_data().u32({0xFFFFFFFF}).u32({1})),
              "[GXC] [GXC] Failed to deserialise and write the variable data portion of the colour ticket "
              "(bytes_read == 0).\n");
    EXPECT_FALSE(whole);
}

TEST_F(GxcReport, UnknownExtensionsAreReported)
{
    TicketBytes t = fixed_data().u32({0, 6}).u8({0, 0, 0, 0}).u32({0});
    t.u32({5, 1}).u8({0}).u32({1234, 0}).u32({80, 0}).u32({0xFFFFFFFF, 0}).u32({0}).u32({0xFFFFFFFF}).u32({0});
    EXPECT_EQ(reports(t), "[GXC] [GXC-WARNING] Unsupported CSD extension found (version=05)\n"
                          "[GXC] [GXC-WARNING] Unsupported CSD extension found (version=1234)\n"
                          "[GXC] [GXC-WARNING] Unsupported CSD extension found (version=80)\n"
                          "[GXC] [GXC-WARNING] Unsupported CSD extension found (version=-1)\n");
    EXPECT_TRUE(whole);
}

}  // namespace
