// URLs as input: the ticket command stands for every command that reads a file.

#include "tests/support/http-server.h"
#include "tests/support/ticket-bytes.h"
#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

std::string ticket()
{
    const TicketBytes made = fixed_data().u32({0xFFFFFFFF}).u32({0});
    return std::string(made.bytes().begin(), made.bytes().end());
}

class ToolInput : public testing::Test
{
protected:
    void expect_same_as_the_file(const std::string& url)
    {
        const ToolResult from_file = run_tool({"ticket", file_});
        const ToolResult from_url = run_tool({"ticket", url});
        EXPECT_EQ(from_url.status, 0) << url;
        EXPECT_EQ(from_url.err, "");
        EXPECT_NE(from_url.out.find("<GXC_ColorTickets>"), std::string::npos);
        EXPECT_EQ(from_url.out, from_file.out);
    }
    void expect_failure(const std::string& url, const std::string& why)
    {
        const ToolResult result = run_tool({"ticket", url});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "orvlog: " + url + ": " + why + "\n");
    }

    ScratchFolder folder_;
    std::string file_ = folder_.write("a b.ticket", ticket());
};

TEST_F(ToolInput, HttpUrl)
{
    HttpServer server(ticket());
    if (run_tool({"ticket", server.url("/whole")}).err.find("does not give it") != std::string::npos)
        GTEST_SKIP() << "built without an HTTP client";
    expect_same_as_the_file(server.url("/whole"));
    expect_same_as_the_file(server.url("/moved"));
    expect_failure(server.url("/missing"), "the server does not give it");
    expect_failure(server.url("/early"), "the server broke off");
    expect_failure("http://h/%C3", "malformed URL");
}

TEST_F(ToolInput, FileUrl)
{
    const std::string path = folder_.path("a%20b.ticket");
    expect_same_as_the_file("file://" + path);
    expect_same_as_the_file("FILE://localhost" + path);
    expect_failure("file://elsewhere" + path, "malformed URL");
    expect_failure("file://" + folder_.path("none"), "No such file or directory");
    expect_failure("file:", "malformed URL");
}

TEST_F(ToolInput, PathWithAColonIsNoUrl)
{
    const std::string path = folder_.write("x:y", ticket());
    EXPECT_EQ(run_tool({"ticket", path}).status, 0);
}

}  // namespace
