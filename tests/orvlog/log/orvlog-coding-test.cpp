#include "orvlog/log/orvlog-coding.h"

#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/log/orvlog-root.h"
#include "tests/support/decode-text.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using orvlog::test::decode_lines;
using orvlog::test::MemoryStream;
using orvlog::test::TestAllocator;

constexpr const char* kVersions =
    " MIRDA_TOLMA_VERSION=\"10034\" ORV_VERSION=\"10066\" TPN_VERSION=\"10061\" TRN_VERSION=\"10010\" "
    "HOLV_VERSION=\"10055\" GAM_VERSION=\"10044\" GBT_VERSION=\"10003\" GCA_VERSION=\"10003\" "
    "GCD_VERSION=\"10044\" GCM_VERSION=\"10099\" GER_VERSION=\"10017\" GFI_VERSION=\"10053\" "
    "GFX_VERSION=\"10024\" GGO_VERSION=\"10021\" GHT_VERSION=\"10003\" GIO_VERSION=\"10028\" "
    "GME_VERSION=\"10028\" GMM_VERSION=\"10031\" GNC_VERSION=\"10024\" GOP_VERSION=\"10090\" "
    "GOS_VERSION=\"10052\" GPA_VERSION=\"10057\" GSH_VERSION=\"10043\" GUT_VERSION=\"10003\" "
    "Endian=\"little\"";
constexpr const char* kRest = " GlyphLoggingMode=\"transparent\" ORVLOG_CONTENT_VERSION=\"2\">\n";

class Coding : public testing::Test
{
protected:
    void start(uint32_t compress)
    {
        orvlog_writer_init(&writer, allocator.get(), stream.get(), 0, compress);
    }

    TestAllocator allocator;
    MemoryStream stream;
    ORVLOG_Writer writer;
};

TEST_F(Coding, PlainRootHasNoCoder)
{
    start(0);
    orvlog_open_root(&writer, true);
    EXPECT_FALSE(orvlog_writer_is_coded(&writer));
    EXPECT_EQ(orvlog_writer_print_limit(&writer), UINT64_MAX);
    EXPECT_EQ(orvlog_writer_depth(&writer), 1U);
    EXPECT_EQ(allocator.requests(), 0U);
    orvlog_close_root(&writer);
    orvlog_writer_end_coding(&writer);
    EXPECT_EQ(stream.text(), "<ORV" + std::string(kVersions) + " LoggingMode=\"base\"" + kRest + "</ORV>\n");
}

TEST_F(Coding, RootIsCodedBehindItsPlainFirstTag)
{
    start(1);
    orvlog_open_root(&writer, false);
    EXPECT_TRUE(orvlog_writer_is_coded(&writer));
    EXPECT_EQ(orvlog_writer_print_limit(&writer), 198U);
    orvlog_close_root(&writer);
    orvlog_writer_end_coding(&writer);
    EXPECT_FALSE(orvlog_writer_is_coded(&writer));
    EXPECT_EQ(allocator.outstanding(), 0U);
    EXPECT_EQ(stream.text().substr(0, 35), "<ORV compression=\"Adaptive Huffman\"");
    EXPECT_EQ(decode_lines(stream.text().substr(35)),
              "<ORV" + std::string(kVersions) + " LoggingMode=\"transparent\"" + kRest + "</ORV>\n");
}

TEST_F(Coding, WithoutMemoryTheLogGoesOnPlain)
{
    for (const uint64_t refused : {uint64_t{1}, uint64_t{2}})
    {
        start(1);
        stream.clear();
        allocator.refuse(refused);
        orvlog_writer_start_coding(&writer);
        EXPECT_FALSE(orvlog_writer_is_coded(&writer));
        orvlog_writer_open_element(&writer, "A");
        orvlog_writer_end_coding(&writer);
        EXPECT_EQ(stream.text(), "<A>\n");
        EXPECT_EQ(allocator.outstanding(), 0U);
    }
}

TEST_F(Coding, EndWritesOneByteAndIsNotRepeated)
{
    start(1);
    orvlog_writer_start_coding(&writer);
    orvlog_writer_end_coding(&writer);
    EXPECT_EQ(stream.text(), std::string(1, '\0'));
    orvlog_writer_end_coding(&writer);
    EXPECT_EQ(stream.text().size(), 1U);
    orvlog_writer_open_element(&writer, "A");
    EXPECT_EQ(stream.text().substr(1), "<A>\n");
}

TEST_F(Coding, EndReleasesTheCoderWhereTheStreamTakesNothing)
{
    GIO_Stream no_ops = {nullptr, 0, nullptr};
    GIO_StreamOps none = {};
    GIO_Stream no_write = {nullptr, 0, &none};
    for (GIO_Stream* other : {static_cast<GIO_Stream*>(nullptr), &no_ops, &no_write})
    {
        start(1);
        orvlog_writer_start_coding(&writer);
        ASSERT_TRUE(orvlog_writer_is_coded(&writer));
        EXPECT_EQ(orvlog_writer_redirect(&writer, other), stream.get());
        orvlog_writer_end_coding(&writer);
        EXPECT_EQ(allocator.outstanding(), 0U);
    }
    EXPECT_EQ(stream.text(), "");
}

// A coder without the request for one is neither used nor ended.
TEST_F(Coding, NeedsTheRequest)
{
    start(0);
    orvlog_writer_start_coding(&writer);
    EXPECT_FALSE(orvlog_writer_is_coded(&writer));
    orvlog_writer_end_coding(&writer);
    EXPECT_EQ(stream.text(), "");
    EXPECT_EQ(allocator.outstanding(), 2U);
    AHC_EncoderFinish(writer.coder);
}

TEST_F(Coding, CopySpeaksThroughTheSameCoderAndDropsItsWarnings)
{
    start(1);
    orvlog_writer_start_coding(&writer);
    orvlog_writer_enter_element(&writer, "A");
    orvlog_writer_warn(&writer, "of the writer");
    ORVLOG_Writer copy = orvlog_writer_copy(&writer);
    orvlog_writer_warn(&copy, "of the copy");
    orvlog_writer_enter_element(&copy, "B");
    orvlog_writer_leave_element(&copy, "B");
    orvlog_writer_leave_element(&writer, "A");
    orvlog_writer_end_coding(&writer);
    EXPECT_EQ(decode_lines(stream.text()), "<A>\n  <B>\n  </B>\n</A>\n\n<!--\nORVLOG: WARNING: of the writer\n-->\n");
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST_F(Coding, DetachedCopyIsPlainInAnotherStream)
{
    MemoryStream other;
    start(1);
    orvlog_writer_start_coding(&writer);
    ORVLOG_Writer copy = orvlog_writer_copy(&writer);
    orvlog_writer_detach(&copy, other.get());
    orvlog_writer_end_coding(&writer);
    orvlog_writer_open_element(&copy, "B");
    EXPECT_EQ(other.text(), "<B>\n");
    orvlog_writer_detach(&copy, nullptr);
    orvlog_writer_close_element(&copy, "B");
    EXPECT_EQ(other.text(), "<B>\n");
    EXPECT_EQ(stream.text(), std::string(1, '\0'));
}

TEST_F(Coding, WarnsOnceForEachFlag)
{
    uint32_t first = 0;
    uint32_t second = 7;
    start(0);
    orvlog_writer_warn_once(&writer, &first, "first");
    orvlog_writer_warn_once(&writer, &first, "first");
    orvlog_writer_warn_once(&writer, &second, "second");
    EXPECT_EQ(first, 1U);
    EXPECT_EQ(second, 7U);
    EXPECT_EQ(stream.text(), "\n<!--\nORVLOG: WARNING: first\n-->\n");
}

}  // namespace
