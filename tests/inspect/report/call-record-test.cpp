// The records of calls, abridged.

#include "inspect/report/call-record.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::inspect;

TEST(Abridged, KeepsAShortRecordAsItIs)
{
    const std::string record = "  <ORV_group_start id=\"1\">\n    <a/>\n1 2 \n  </ORV_group_start>\n";
    EXPECT_EQ(abridged(record), record);
    EXPECT_EQ(abridged(""), "");
    EXPECT_EQ(abridged("no line end"), "no line end");
}

TEST(Abridged, ShowsTheFirstFourRows)
{
    EXPECT_EQ(abridged("<a>\n1\n2\n3\n4\n5\n6\n</a>\n<b>\n7\n</b>\n"),
              "<a>\n1\n2\n3\n4\n[2 more rows]\n</a>\n<b>\n7\n</b>\n");
    EXPECT_EQ(abridged("<a>\n1\n2\n3\n4\n5"), "<a>\n1\n2\n3\n4\n[1 more rows]\n");
}

TEST(Abridged, CutsWhatIsLong)
{
    const std::string line = "<" + std::string(20000, 'x') + ">\n";
    EXPECT_EQ(abridged(line), "<" + std::string(16383, 'x') + "\n[3619 more bytes]\n");
    std::string record;
    for (int i = 0; i < 20000; ++i)
        record += "<tag>\n";
    const std::string text = abridged(record);
    EXPECT_EQ(text.substr(0, 12), "<tag>\n<tag>\n");
    EXPECT_EQ(text.substr(65538), "[54462 more bytes]\n");
}

TEST(CallRecords, StandOneBehindTheOther)
{
    Blocks blocks([](std::string_view) { return true; });
    CallRecords records(blocks, 1);
    const RecordPlace one = records.add("<a>\n");
    const RecordPlace other = records.add("<bb>\n");
    EXPECT_EQ(one.block, 0);
    EXPECT_EQ(one.at, 0U);
    EXPECT_EQ(one.size, 4U);
    EXPECT_EQ(other.block, 0);
    EXPECT_EQ(other.at, 4U);
    EXPECT_EQ(other.size, 5U);
    EXPECT_EQ(records.finish(), "[\"b0\"]");
    EXPECT_EQ(records.add("<c>\n").block, -1);
    EXPECT_EQ(records.left_out(), 1U);
}

}  // namespace
