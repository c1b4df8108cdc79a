// What a failed read of an image makes of a call.

#include "holv-core/ger/ger-error.h"
#include "orvlog/core/orvlog-orv.h"
#include "tests/orvlog/core/paint-fixture.h"

#include <gtest/gtest.h>

namespace
{

using namespace orvlog::test;

struct ErrorRoom
{
    GER_Error error;
    char text[200];
};

TEST_F(Paint, FailedReadIsReportedInBaseModeOnly)
{
    ErrorRoom room = {};
    room.error.ge_TextCapacity = 150;
    drawing()->error_context = &room.error;
    EXPECT_EQ(orvlog_result_after_dump(drawing(), 0, 5, 3786), 5U);
    EXPECT_EQ(room.error.ge_Severity, 0);
    test.set_base_mode();
    EXPECT_EQ(orvlog_result_after_dump(drawing(), 1, 5, 3786), 5U);
    EXPECT_EQ(room.error.ge_Severity, 0);
    EXPECT_EQ(orvlog_result_after_dump(drawing(), 0, 5, 3786), 0U);
    EXPECT_EQ(room.error.ge_Severity, 1);
    EXPECT_EQ(room.error.ge_Module, 6);
    EXPECT_EQ(room.error.ge_Code, 33303786);
    EXPECT_STREQ(room.error.ge_Text, "ORVLOG: Image read failed.:orvlog-orv v$Revision: 1.114 $ L:3786 ");
}

TEST_F(Paint, EachCallReportsUnderItsOwnCode)
{
    const std::pair<int32_t, int32_t> codes[] = {
        {2523, 33302523}, {3480, 33303480}, {3786, 33303786}, {4346, 33304346}};
    test.set_base_mode();
    for (const auto& [line, code] : codes)
    {
        ErrorRoom room = {};
        drawing()->error_context = &room.error;
        EXPECT_EQ(orvlog_result_after_dump(drawing(), 0, 1, line), 0U);
        EXPECT_EQ(room.error.ge_Code, code);
    }
    drawing()->error_context = nullptr;
    EXPECT_EQ(orvlog_result_after_dump(drawing(), 0, 1, 2523), 0U);
}

}  // namespace
