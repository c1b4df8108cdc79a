#include "orvlog/log/orvlog-writer.h"

#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using orvlog::test::MemoryStream;
using orvlog::test::TestAllocator;

class Writer : public testing::Test
{
protected:
    Writer()
    {
        orvlog_writer_init(&writer, allocator.get(), stream.get(), 0, 0);
    }

    std::string indent(uint32_t depth)
    {
        return orvlog_writer_indent(depth);
    }

    TestAllocator allocator;
    MemoryStream stream;
    ORVLOG_Writer writer;
};

TEST_F(Writer, InitialisesItsFields)
{
    writer.depth = 9;
    writer.element_open = 1;
    orvlog_writer_init(&writer, allocator.get(), stream.get(), 99, 1);
    EXPECT_EQ(writer.depth, 0U);
    EXPECT_EQ(writer.element_open, 0U);
    EXPECT_EQ(writer.warnings, nullptr);
    EXPECT_EQ(writer.coder, nullptr);
    EXPECT_EQ(writer.compress, 1U);
    EXPECT_EQ(writer.stream, stream.get());
    EXPECT_EQ(writer.allocator, allocator.get());
}

TEST_F(Writer, IndentGrowsByTwoAndStopsAtFifty)
{
    EXPECT_EQ(indent(0), "");
    EXPECT_EQ(indent(1), "  ");
    EXPECT_EQ(indent(24), std::string(48, ' '));
    EXPECT_EQ(indent(25), std::string(50, ' '));
    EXPECT_EQ(indent(26), std::string(50, ' '));
    EXPECT_EQ(indent(40), std::string(50, ' '));
    EXPECT_EQ(indent(0U - 1U), std::string(50, ' '));
}

TEST_F(Writer, DepthHasNoCheckAtEitherEnd)
{
    orvlog_writer_depth_down(&writer);
    EXPECT_EQ(writer.depth, 0xFFFFFFFFU);
    orvlog_writer_open_element(&writer, "A");
    EXPECT_EQ(stream.text(), std::string(50, ' ') + "<A>\n");
    orvlog_writer_depth_up(&writer);
    EXPECT_EQ(writer.depth, 0U);
}

TEST_F(Writer, TagForms)
{
    writer.depth = 2;
    orvlog_writer_open_element(&writer, "Element");
    EXPECT_EQ(writer.element_open, 1U);
    orvlog_writer_close_element(&writer, "Element");
    EXPECT_EQ(writer.element_open, 0U);
    orvlog_writer_open_member(&writer, "Element", "member");
    EXPECT_EQ(writer.element_open, 1U);
    orvlog_writer_close_member(&writer, "Element", "member");
    EXPECT_EQ(writer.element_open, 0U);
    orvlog_writer_begin_element(&writer, "Begun");
    EXPECT_EQ(writer.element_open, 1U);
    orvlog_writer_end_tag(&writer);
    EXPECT_EQ(writer.element_open, 1U);
    orvlog_writer_begin_element(&writer, "Short");
    orvlog_writer_self_close(&writer);
    EXPECT_EQ(writer.element_open, 0U);
    EXPECT_EQ(writer.depth, 2U);
    EXPECT_EQ(stream.text(), "    <Element>\n"
                             "    </Element>\n"
                             "    <Element.member>\n"
                             "    </Element.member>\n"
                             "    <Begun>\n"
                             "    <Short/>\n");
}

TEST_F(Writer, EveryFormLeavesTheStreamFlushed)
{
    orvlog_writer_open_element(&writer, "A");
    EXPECT_EQ(stream.unflushed(), 0U);
    orvlog_writer_begin_element(&writer, "B");
    EXPECT_EQ(stream.unflushed(), 0U);
    orvlog_writer_end_tag(&writer);
    EXPECT_EQ(stream.unflushed(), 0U);
    orvlog_writer_print(&writer, "%s", "text");
    EXPECT_EQ(stream.unflushed(), 0U);
    orvlog_writer_close_element(&writer, "A");
    EXPECT_EQ(stream.unflushed(), 0U);
    orvlog_writer_comment(&writer, "%i\n", 4);
    EXPECT_EQ(stream.unflushed(), 0U);
}

TEST_F(Writer, PrintGivesTheLengthThatTheStreamPrinted)
{
    EXPECT_EQ(orvlog_writer_print(&writer, "%s-%u", "abc", 12U), 6);
    EXPECT_EQ(stream.text(), "abc-12");
    stream.fail(1);
    EXPECT_EQ(orvlog_writer_print(&writer, "lost"), -1);
    EXPECT_EQ(orvlog_writer_print(&writer, "kept"), 4);
    EXPECT_EQ(stream.text(), "abc-12kept");
}

TEST_F(Writer, PlainPrintHasNoLimit)
{
    const std::string text(100000, 'x');
    EXPECT_EQ(orvlog_writer_print(&writer, "%s", text.c_str()), 100000);
    EXPECT_EQ(stream.text(), text);
}

TEST_F(Writer, LongNamesAreWrittenWhole)
{
    const std::string name(2000, 'n');
    orvlog_writer_open_element(&writer, name.c_str());
    EXPECT_EQ(stream.text(), "<" + name + ">\n");
}

TEST_F(Writer, CommentStandsBetweenAnEmptyLineAndItsCloser)
{
    writer.depth = 3;
    orvlog_writer_comment(&writer, "%s", "hello\n");
    EXPECT_EQ(stream.text(), "\n<!--\nhello\n-->\n");
}

TEST_F(Writer, CommentIsWrittenUnchanged)
{
    orvlog_writer_comment(&writer, "%s", "a --> b\n<&>\n\nno newline at the end");
    EXPECT_EQ(stream.text(), "\n<!--\na --> b\n<&>\n\nno newline at the end-->\n");
}

TEST_F(Writer, CommentLandsInsideAnUnfinishedTag)
{
    orvlog_writer_begin_element(&writer, "A");
    orvlog_writer_comment(&writer, "x\n");
    orvlog_writer_end_tag(&writer);
    EXPECT_EQ(stream.text(), "<A\n<!--\nx\n-->\n>\n");
}

TEST_F(Writer, WarningWithNothingOpenComesOutAtOnce)
{
    orvlog_writer_defer_warning(&writer, "ORVLOG: WARNING: %s\n", "now");
    EXPECT_EQ(stream.text(), "\n<!--\nORVLOG: WARNING: now\n-->\n");
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST_F(Writer, WarningWaitsForTheNextClosingTagOfAnyElement)
{
    orvlog_writer_open_element(&writer, "Outer");
    orvlog_writer_depth_up(&writer);
    orvlog_writer_open_element(&writer, "Inner");
    orvlog_writer_defer_warning(&writer, "ORVLOG: WARNING: %s\n", "later");
    orvlog_writer_close_element(&writer, "Inner");
    orvlog_writer_depth_down(&writer);
    orvlog_writer_close_element(&writer, "Outer");
    EXPECT_EQ(stream.text(), "<Outer>\n"
                             "  <Inner>\n"
                             "  </Inner>\n"
                             "\n<!--\nORVLOG: WARNING: later\n-->\n"
                             "</Outer>\n");
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST_F(Writer, WarningComesOutBehindASelfClosedElementAndAMember)
{
    orvlog_writer_begin_element(&writer, "A");
    orvlog_writer_defer_warning(&writer, "%s\n", "one");
    orvlog_writer_self_close(&writer);
    orvlog_writer_open_member(&writer, "B", "c");
    orvlog_writer_defer_warning(&writer, "%s\n", "two");
    orvlog_writer_close_member(&writer, "B", "c");
    EXPECT_EQ(stream.text(), "<A/>\n\n<!--\none\n-->\n<B.c>\n</B.c>\n\n<!--\ntwo\n-->\n");
}

TEST_F(Writer, WarningsComeOutNewestFirst)
{
    orvlog_writer_open_element(&writer, "A");
    for (const char* text : {"one", "two", "three"})
        orvlog_writer_defer_warning(&writer, "%s\n", text);
    orvlog_writer_close_element(&writer, "A");
    EXPECT_EQ(stream.text(), "<A>\n</A>\n"
                             "\n<!--\nthree\n-->\n"
                             "\n<!--\ntwo\n-->\n"
                             "\n<!--\none\n-->\n");
    EXPECT_EQ(writer.warnings, nullptr);
}

TEST_F(Writer, WarningIsCutAtFiveHundredBytes)
{
    orvlog_writer_defer_warning(&writer, "%s", std::string(500, 'a').c_str());
    EXPECT_EQ(stream.text(), "\n<!--\n" + std::string(500, 'a') + "-->\n");
    stream.clear();
    orvlog_writer_defer_warning(&writer, "%s", std::string(501, 'b').c_str());
    EXPECT_EQ(stream.text(), "\n<!--\n" + std::string(500, 'b') + "-->\n");
}

TEST_F(Writer, WarningOfOneByteIsWritten)
{
    orvlog_writer_defer_warning(&writer, "%s", "w");
    EXPECT_EQ(stream.text(), "\n<!--\nw-->\n");
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST_F(Writer, EmptyWarningIsForgotten)
{
    orvlog_writer_defer_warning(&writer, "%s", "");
    EXPECT_EQ(stream.text(), "");
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST_F(Writer, WarningWithoutMemoryIsLost)
{
    for (uint64_t n = 1; n <= 2; ++n)
    {
        allocator.refuse(n);
        orvlog_writer_defer_warning(&writer, "%s", "lost");
        EXPECT_EQ(allocator.outstanding(), 0U);
    }
    EXPECT_EQ(stream.text(), "");
    orvlog_writer_defer_warning(&writer, "%s\n", "kept");
    EXPECT_EQ(stream.text(), "\n<!--\nkept\n-->\n");
}

TEST_F(Writer, WarningWithoutAllocatorIsDropped)
{
    writer.allocator = nullptr;
    orvlog_writer_defer_warning(&writer, "%s", "dropped");
    EXPECT_EQ(stream.text(), "");
}

TEST_F(Writer, NoStreamIsLetBe)
{
    writer.stream = nullptr;
    orvlog_writer_open_element(&writer, "A");
    EXPECT_EQ(orvlog_writer_print(&writer, "x"), -1);
    orvlog_writer_close_element(&writer, "A");
    GIO_Stream no_ops = {nullptr, 0, nullptr};
    writer.stream = &no_ops;
    orvlog_writer_open_element(&writer, "A");
    EXPECT_EQ(writer.element_open, 1U);
}

TEST_F(Writer, PlainTextNeedsTheStreamToPrintAndNothingElse)
{
    GIO_StreamOps ops = {};
    GIO_Stream prints = {stream.get()->instance, 0, &ops};
    writer.stream = &prints;
    orvlog_writer_open_element(&writer, "A");
    EXPECT_EQ(orvlog_writer_print(&writer, "x"), -1);
    EXPECT_EQ(stream.text(), "");
    ops.gio_VPrintf = stream.get()->ops->gio_VPrintf;
    orvlog_writer_open_element(&writer, "A");
    orvlog_writer_comment(&writer, "%d\n", 7);
    EXPECT_EQ(orvlog_writer_print(&writer, "x\n"), 2);
    orvlog_writer_close_element(&writer, "A");
    EXPECT_EQ(stream.text(), "<A>\n\n<!--\n7\n-->\nx\n</A>\n");
}

// What comes out of the coder again, with a byte more than the stream, as a reader feeds it.
std::string decoded(TestAllocator* allocator, const std::string& coded, size_t length)
{
    AdaptiveHuffmanCoder* coder = AHC_DecoderCreate(allocator->get());
    const std::string input = coded + '\0';
    AHC_SetInput(coder, reinterpret_cast<const uint8_t*>(input.data()), static_cast<uint32_t>(input.size()));
    std::string text(length + 64, '\0');
    const int32_t count =
        AHC_Decode(coder, reinterpret_cast<uint8_t*>(text.data()), static_cast<uint32_t>(text.size()));
    text.resize(static_cast<size_t>(count));
    AHC_DecoderDestroy(coder);
    return text.substr(0, length);
}

class CodedWriter : public Writer
{
protected:
    CodedWriter()
    {
        writer.compress = 1;
        writer.coder = AHC_EncoderCreate(allocator.get());
    }
    ~CodedWriter() override
    {
        if (writer.coder != nullptr)
            AHC_EncoderFinish(writer.coder);
    }

    std::string finish(size_t length)
    {
        const char last = static_cast<char>(AHC_EncoderFinish(writer.coder));
        writer.coder = nullptr;
        return decoded(&allocator, stream.text() + last, length);
    }
};

TEST_F(CodedWriter, CodedTextNeedsTheStreamToTakeBytes)
{
    GIO_StreamOps ops = {};
    ops.gio_VPrintf = stream.get()->ops->gio_VPrintf;
    GIO_Stream prints = {stream.get()->instance, 0, &ops};
    writer.stream = &prints;
    EXPECT_EQ(orvlog_writer_print(&writer, "x"), -1);
    EXPECT_EQ(stream.text(), "");
    ops.gio_VPrintf = nullptr;
    ops.gio_Write = stream.get()->ops->gio_Write;
    EXPECT_EQ(orvlog_writer_print(&writer, "abc"), 3);
    EXPECT_EQ(finish(3), "abc");
}

TEST_F(CodedWriter, PrintOf198BytesPassesWhole)
{
    const std::string text = std::string(197, 'a') + "b";
    EXPECT_EQ(orvlog_writer_print(&writer, "%s", text.c_str()), 198);
    EXPECT_EQ(orvlog_writer_print(&writer, "|"), 1);
    EXPECT_EQ(finish(199), text + "|");
}

TEST_F(CodedWriter, PrintOf199BytesLosesItsLast)
{
    const std::string text = std::string(197, 'a') + "bc";
    EXPECT_EQ(orvlog_writer_print(&writer, "%s", text.c_str()), 198);
    EXPECT_EQ(orvlog_writer_print(&writer, "|"), 1);
    EXPECT_EQ(finish(199), std::string(197, 'a') + "b|");
}

TEST_F(CodedWriter, LongWarningIsCutAsEachPrintIs)
{
    orvlog_writer_defer_warning(&writer, "%s", std::string(300, 'w').c_str());
    EXPECT_EQ(finish(6 + 198 + 4), "\n<!--\n" + std::string(198, 'w') + "-->\n");
}

TEST_F(CodedWriter, LongTagIsCutAsEachPrintIs)
{
    const std::string name = std::string(190, 'n');
    orvlog_writer_begin_element(&writer, (name + "1234567890").c_str());
    orvlog_writer_end_tag(&writer);
    orvlog_writer_close_member(&writer, name.c_str(), "12345");
    orvlog_writer_open_element(&writer, std::string(600, 'x').c_str());
    EXPECT_EQ(finish(198 + 2 + 198 + 198),
              "<" + name + "1234567" + ">\n" + "</" + name + ".12345" + "<" + std::string(197, 'x'));
}

TEST_F(CodedWriter, BytesReachTheStreamAtMostTenAtATime)
{
    std::string text;
    for (int i = 0; i < 150; ++i)
        text += static_cast<char>(' ' + i % 90);
    orvlog_writer_print(&writer, "%s", text.c_str());
    ASSERT_FALSE(stream.pieces().empty());
    for (const uint64_t piece : stream.pieces())
        EXPECT_LE(piece, 10U);
    EXPECT_EQ(stream.unflushed(), 0U);
    EXPECT_EQ(finish(150), text);
}

TEST_F(CodedWriter, WithoutACoderTheWriterIsPlain)
{
    AHC_EncoderFinish(writer.coder);
    writer.coder = nullptr;
    orvlog_writer_open_element(&writer, "A");
    EXPECT_EQ(stream.text(), "<A>\n");
}

TEST_F(CodedWriter, ACoderWithoutTheRequestIsNotUsed)
{
    writer.compress = 0;
    orvlog_writer_open_element(&writer, "A");
    EXPECT_EQ(stream.text(), "<A>\n");
}

}  // namespace
