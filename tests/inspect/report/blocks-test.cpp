// The blocks of a report, and texts in it.

#include "inspect/report/blocks.h"
#include "inspect/report/columns.h"
#include "inspect/report/file-hash.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>

namespace
{

using namespace orvlog::inspect;

TEST(Base64, FillsUpItsEnd)
{
    EXPECT_EQ(base64(""), "");
    EXPECT_EQ(base64("f"), "Zg==");
    EXPECT_EQ(base64("fo"), "Zm8=");
    EXPECT_EQ(base64("foo"), "Zm9v");
    EXPECT_EQ(base64(std::string("\xFF\xFE\x00\x3E\x3F", 5)), "//4APj8=");
}

TEST(Sha256, IsThatOfOtherPrograms)
{
    std::istringstream stream("abc");
    EXPECT_EQ(sha256_text(stream), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    std::istringstream empty("");
    EXPECT_EQ(sha256_text(empty), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST(Blocks, AreNamedInTheirOrder)
{
    std::string file;
    Blocks blocks(
        [&file](std::string_view text)
        {
            file += text;
            return true;
        });
    EXPECT_EQ(blocks.add_plain("foo"), "b0");
    EXPECT_EQ(blocks.add_deflated(std::string(3, 'a')), "b1");
    EXPECT_EQ(file, "<script type=\"application/octet-stream;base64\" id=\"b0\" data-coding=\"none\">Zm9v</script>\n"
                    "<script type=\"application/octet-stream;base64\" id=\"b1\" data-coding=\"deflate\">"
                    "eJxLTEwEAAJJASQ=</script>\n");
    EXPECT_EQ(blocks.written(), file.size());
    EXPECT_TRUE(blocks.good());
}

TEST(Blocks, WriteNothingBehindAFailure)
{
    int writes = 0;
    Blocks blocks([&writes](std::string_view) { return ++writes < 2; });
    blocks.add_plain("foo");
    blocks.add_plain("foo");
    EXPECT_EQ(writes, 2);
    EXPECT_FALSE(blocks.good());
}

TEST(TextJson, HasNothingInItThatEndsAScript)
{
    EXPECT_EQ(text_json("</script><!--&\"\\"), "\"\\u003c/script\\u003e\\u003c!--\\u0026\\\"\\\\\"");
    EXPECT_EQ(text_json(std::string("a\0b", 3)), "\"a\\u0000b\"");
    EXPECT_EQ(text_json("\xE2\x80\xA8\xE2\x80\xAE"), "\"\\u2028\\u202e\"");
    EXPECT_EQ(text_json("\xFF"), "\"\\ufffd\"");
}

TEST(NumberJson, IsNullForWhatIsNoNumber)
{
    EXPECT_EQ(number_json(0.1), "0.1");
    EXPECT_EQ(number_json(std::numeric_limits<double>::infinity()), "null");
    EXPECT_EQ(number_json(std::numeric_limits<double>::quiet_NaN()), "null");
}

TEST(Columns, HaveAnArrayForEachColumn)
{
    Columns columns({"a", "b", "c"});
    EXPECT_EQ(columns.json(), "{\"a\":[],\"b\":[],\"c\":[]}");
    columns.add(int64_t{1});
    columns.add_text("x");
    columns.add_box(0, -1, 2, 3);
    columns.add(0.5);
    columns.add_text("");
    columns.add_null();
    columns.add(int64_t{2});
    columns.add_text("x");
    columns.add_json("[1]");
    EXPECT_EQ(columns.rows(), 3U);
    EXPECT_EQ(columns.json(",\"d\":0"), "{\"a\":[1,0.5,2],\"b\":[0,-1,0],\"c\":[[0,-1,2,3],null,[1]],"
                                        "\"strings\":[\"x\"],\"d\":0}");
}

}  // namespace
