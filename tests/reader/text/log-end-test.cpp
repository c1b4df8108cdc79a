#include "reader/text/log-end.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using orvlog::reader::LogEnd;

const std::string body = "<ORV MIRDA_TOLMA_VERSION=\"10034\">\n"
                         "  <ORV_document_start document_context=\"0\">\n"
                         "  </ORV_document_start>\n"
                         "</ORV>\n";
const std::string comment = "\n<!--\nORVLOG: WARNING: late\n-->\n";

struct Followed
{
    std::string text;
    bool wants_more = true;
    bool is_log = false;
    bool is_whole = false;
    std::string held;
};

Followed follow(const std::string& text, size_t piece)
{
    Followed result;
    LogEnd end;
    for (size_t at = 0; at < text.size(); at += piece)
        result.wants_more = end.follow(std::string_view(text).substr(at, piece), result.text);
    result.is_log = end.is_log();
    result.is_whole = end.is_whole();
    result.held = end.take_held();
    return result;
}

// The same whatever the pieces.
Followed follow(const std::string& text)
{
    const Followed whole = follow(text, text.size() + 1);
    for (size_t piece = 1; piece < 9; ++piece)
    {
        const Followed pieces = follow(text, piece);
        EXPECT_EQ(pieces.text, whole.text);
        EXPECT_EQ(pieces.wants_more, whole.wants_more);
        EXPECT_EQ(pieces.is_log, whole.is_log);
        EXPECT_EQ(pieces.is_whole, whole.is_whole);
        EXPECT_EQ(pieces.held, whole.held);
    }
    return whole;
}

void expect_whole(const std::string& text)
{
    const Followed result = follow(text);
    EXPECT_EQ(result.text, text);
    EXPECT_TRUE(result.is_log);
    EXPECT_TRUE(result.is_whole);
    EXPECT_EQ(result.held, "");
}

void expect_cut(const std::string& text)
{
    const Followed result = follow(text);
    EXPECT_EQ(result.text + result.held, text);
    EXPECT_TRUE(result.wants_more);
    EXPECT_TRUE(result.is_log);
    EXPECT_FALSE(result.is_whole);
}

void expect_end_before(const std::string& behind)
{
    const Followed result = follow(body + behind);
    EXPECT_EQ(result.text, body) << behind;
    EXPECT_FALSE(result.wants_more);
    EXPECT_TRUE(result.is_whole);
    EXPECT_EQ(result.held, "");
}

TEST(LogEnd, IsTheClosingTagOfTheRoot)
{
    expect_whole(body);
    expect_whole("<ORV>\n</ORV>\n");
}

TEST(LogEnd, TakesTheCommentsBehindTheRoot)
{
    expect_whole(body + comment);
    expect_whole(body + comment + comment + comment);
    expect_whole(body + "\n<!--\nwith --> and <!-- and\n\n</ORV>\nwithin-->\n");
}

TEST(LogEnd, StopsAtOtherBytes)
{
    expect_end_before("x");
    expect_end_before("\nx");
    expect_end_before("\n\n");
    expect_end_before("\n<!--x");
    expect_end_before("<ORV>");
    expect_end_before(std::string("\0", 1));
    const Followed result = follow(body + comment + "<more>");
    EXPECT_EQ(result.text, body + comment);
}

TEST(LogEnd, MissesWhatIsCut)
{
    for (size_t size = 0; size < body.size(); ++size)
        expect_cut(body.substr(0, size));
    const std::string both = body + comment;
    for (size_t size = body.size() + 1; size < both.size(); ++size)
        expect_cut(both.substr(0, size));
}

TEST(LogEnd, KnowsALogByItsFirstTag)
{
    for (const char* text : {"x", "<", "<ORX", "<ORVX>", "<?xml", "<ORV\n", " <ORV>"})
    {
        const Followed result = follow(text);
        EXPECT_EQ(result.is_log, std::string(text) == "<") << text;
        EXPECT_FALSE(result.is_whole);
        EXPECT_EQ(result.text, text);
    }
}

TEST(LogEnd, IsNotInAComment)
{
    expect_whole("<ORV>\n\n<!--\n</ORV>\n-->\n</ORV>\n");
    expect_whole("<ORV>\n\n<!--\na client's --> and more\n</ORV>\n-->\n</ORV>\n");
    expect_whole("<ORV>\n\n<!--\nno line end-->\n</ORV>\n");
    expect_cut("<ORV>\n\n<!--\n</ORV>\n");
}

TEST(LogEnd, IsATagOfTheFirstColumn)
{
    expect_cut("<ORV>\n  </ORV>\n");
    expect_cut("<ORV>\n</ORVX>\n");
    expect_cut("<ORV>\nx</ORV>\n");
    expect_cut("<ORV>\n</ORV> \n");
}

TEST(LogEnd, AllowsLineEndsOfATextFile)
{
    expect_whole("<ORV>\r\n</ORV>\r\n");
    expect_whole("<ORV>\r\n\r\n<!--\r\n</ORV>\r\n-->\r\n</ORV>\r\n\r\n<!--\r\nlate\r\n-->\r\n");
    expect_whole("<ORV>\n</ORV>\n\n<!--\r\nmixed\n-->\r\n");
}

}  // namespace
