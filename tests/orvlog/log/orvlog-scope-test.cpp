#include "orvlog/log/orvlog-scope.h"

#include "orvlog/log/orvlog-attributes.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

namespace
{

using orvlog::test::MemoryStream;
using orvlog::test::TestAllocator;

class Scope : public testing::Test
{
protected:
    Scope()
    {
        orvlog_writer_init(&writer, allocator.get(), stream.get(), 0, 0);
    }

    TestAllocator allocator;
    MemoryStream stream;
    ORVLOG_Writer writer;
};

TEST_F(Scope, ElementsMembersAndContentsNest)
{
    {
        const ORVLOG_Element outer(&writer, "Outer");
        {
            const ORVLOG_Member member(&writer, "Outer", "member");
            orvlog_writer_begin_element(&writer, "Inner");
            orvlog_attr_uint(&writer, "a", 1);
            const ORVLOG_Content content(&writer, "Inner");
            orvlog_writer_begin_element(&writer, "Empty");
            orvlog_attr_uint(&writer, "b", 2);
            orvlog_writer_end_empty(&writer, "Empty");
        }
        EXPECT_EQ(writer.depth, 1U);
    }
    EXPECT_EQ(writer.depth, 0U);
    EXPECT_EQ(writer.element_open, 0U);
    EXPECT_EQ(stream.text(), "<Outer>\n"
                             "  <Outer.member>\n"
                             "    <Inner a=\"1\">\n"
                             "      <Empty b=\"2\">\n"
                             "      </Empty>\n"
                             "    </Inner>\n"
                             "  </Outer.member>\n"
                             "</Outer>\n");
}

// One flush for each tag and attribute, none behind another.
TEST_F(Scope, FlushesWhereTheFormsByHandDo)
{
    {
        orvlog_writer_begin_element(&writer, "A");
        orvlog_attr_uint(&writer, "a", 1);
        const ORVLOG_Content content(&writer, "A");
        const ORVLOG_Member member(&writer, "A", "b");
        const ORVLOG_Element element(&writer, "C");
    }
    EXPECT_EQ(stream.text(), "<A a=\"1\">\n  <A.b>\n    <C>\n    </C>\n  </A.b>\n</A>\n");
    EXPECT_EQ(stream.flush_marks(), (std::vector<uint64_t>{2, 8, 10, 18, 26, 35, 44, 49}));
    EXPECT_EQ(stream.unflushed(), 0U);
}

uint32_t leaves_early(ORVLOG_Writer* writer, bool early)
{
    const ORVLOG_Element element(writer, "E");
    if (early)
        return 1;
    orvlog_writer_begin_element(writer, "F");
    orvlog_writer_self_close(writer);
    return 2;
}

TEST_F(Scope, EarlyReturnClosesToo)
{
    EXPECT_EQ(leaves_early(&writer, true), 1U);
    EXPECT_EQ(leaves_early(&writer, false), 2U);
    EXPECT_EQ(stream.text(), "<E>\n</E>\n<E>\n  <F/>\n</E>\n");
}

TEST_F(Scope, AWarningComesOutBehindTheInnerTag)
{
    {
        const ORVLOG_Element outer(&writer, "Outer");
        const ORVLOG_Element inner(&writer, "Inner");
        orvlog_writer_warn(&writer, "text");
    }
    EXPECT_EQ(stream.text(), "<Outer>\n  <Inner>\n  </Inner>\n\n<!--\nORVLOG: WARNING: text\n-->\n</Outer>\n");
}

TEST_F(Scope, RedirectPutsTheStreamBack)
{
    MemoryStream other;
    orvlog_writer_open_element(&writer, "A");
    {
        const ORVLOG_Redirect redirect(&writer, other.get());
        orvlog_writer_open_element(&writer, "B");
        const ORVLOG_Redirect nowhere(&writer, nullptr);
        orvlog_writer_open_element(&writer, "C");
    }
    EXPECT_EQ(orvlog_writer_stream(&writer), stream.get());
    orvlog_writer_open_element(&writer, "D");
    EXPECT_EQ(stream.text(), "<A>\n<D>\n");
    EXPECT_EQ(other.text(), "<B>\n");
}

}  // namespace
