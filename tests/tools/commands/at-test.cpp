// The commands that look for the call behind a pixel.

#include "tests/inspect/history/small-log.h"
#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace
{

using namespace orvlog::test;

// The face begins in line 4, the group in line 8.
std::string job()
{
    With clipped;
    clipped.clip = clip_of({0, 0, 4, 4});
    return page_of(10, 10,
                   group_start() + paint_of(0, {0, 0, 8, 8}, "1 0 0") + group_finish() +
                       paint_of(1, {0, 0, 8, 8}, "0 1 0", clipped));
}

std::string address_of(const std::string& log, const std::string& tag)
{
    const size_t at = log.find(tag);
    return "line:" + std::to_string(1 + std::count(log.begin(), log.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
}

std::string padded(const std::string& address)
{
    return std::string(12 - address.size(), ' ') + address;
}

TEST(ToolAt, ListsWhatHappenedToAPixel)
{
    const std::string log = job();
    const std::string start = address_of(log, "<ORV_group_start ");
    const std::string finish = address_of(log, "<ORV_group_finish ");
    const std::string head = "page 1, 10 by 10 pixels, pixel 6,6: 2 changes, 1 without effect\n";
    const std::string paint = "           0 object_paint            #00000000 -> #ff0000ff source-over    rgb(1 0 0)  "
                              "clip -  in " +
                              start + "\n";
    const std::string end =
        padded(finish) + " group_finish            #ffffff -> #ff0000     source-over    -  clip -  of " + start + "\n";
    const std::string stays = "           1 object_paint            #ff0000 stays: clipped away source-over    "
                              "rgb(0 1 0)  clip 0,0,4,4\n";
    ToolResult result = run_tool({"at", "-", "6,6"}, log);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, head + paint + end + stays);
    result = run_tool({"at", "-", "6,6", "--last-first"}, log);
    EXPECT_EQ(result.out, head + stays + end + paint);
    const ScratchFolder folder;
    const std::string file = folder.write("a.xml", log);
    EXPECT_EQ(run_tool({"at", file, "6,6", "--page", "1"}).out, head + paint + end + stays);
    ASSERT_EQ(run_tool({"pack", file, "-o", folder.path("coded")}).status, 0);
    EXPECT_EQ(run_tool({"at", folder.path("coded"), "6,6"}).out, head + paint + end + stays);
}

TEST(ToolAt, ListsWhatHappenedToABox)
{
    const std::string log = job();
    const ToolResult result = run_tool({"at", "-", "--box", "3,3,10,10"}, log);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "page 1, 10 by 10 pixels, box 3,3,10,10: 3 changes\n"
                          "           0 object_paint            25 pixels in 3,3,8,8   source-over    rgb(1 0 0)  clip "
                          "-  in " +
                              address_of(log, "<ORV_group_start ") + "\n" +
                              padded(address_of(log, "<ORV_group_finish ")) +
                              " group_finish            25 pixels in 3,3,8,8   source-over    -  clip -  of " +
                              address_of(log, "<ORV_group_start ") +
                              "\n           1 object_paint            1 pixel in 3,3,4,4     source-over    rgb(0 1 0) "
                              " clip 0,0,4,4\n");
}

TEST(ToolAt, WritesAnObject)
{
    const std::string log = page_of(4, 4, paint_of(7, {0, 0, 2, 2}, "1 0 0"));
    const ToolResult result = run_tool({"at", "-", "1,1", "--json"}, log);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out,
              "{\"page\":1,\"width\":4,\"height\":4,\"box\":[1,1,2,2],\"not_listed\":0,\"calls\":[\n"
              "{\"call\":\"7\",\"line\":8,\"byte\":" +
                  std::to_string(log.find("  <ORV_object_paint ")) +
                  ",\"kind\":\"object_paint\",\"of\":null,\"in\":[],\"changed\":true,\"reason\":null,"
                  "\"reason_call\":null,\"before\":\"#ffffff\",\"after\":\"#ff0000\",\"pixels\":1,\"area\":[1,1,2,2],"
                  "\"operator\":\"source-over\",\"operand\":\"rgb(1 0 0)\",\"clips\":[]}\n]}\n");
}

TEST(ToolAt, CountsWhatIsAlike)
{
    std::string calls;
    for (int i = 0; i < 25; ++i)
        calls += paint_of(i, {0, 0, 4, 4}, "1 1 1");
    const std::string log = page_of(4, 4, calls);
    const std::string out = run_tool({"at", "-", "1,1"}, log).out;
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 12);
    EXPECT_TRUE(out.ends_with("\n             15 more that stay for this reason\n")) << out;
    const std::string all = run_tool({"at", "-", "1,1", "--all"}, log).out;
    EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 26);
}

TEST(ToolAt, SaysWhatIsWrong)
{
    const ScratchFolder folder;
    const std::string log = job();
    const std::string file = folder.write("a.xml", log);
    const auto error = [&](const std::vector<std::string>& words, int status)
    {
        std::vector<std::string> all = {"at"};
        all.insert(all.end(), words.begin(), words.end());
        const ToolResult result = run_tool(all);
        EXPECT_EQ(result.status, status) << result.err;
        return result.err;
    };
    EXPECT_EQ(error({file, "10,0"}, 1), "orvlog: " + file + ": page 1 has 10 by 10 pixels\n");
    EXPECT_EQ(error({file, "--box", "0,0,10,11"}, 1), "orvlog: " + file + ": page 1 has 10 by 10 pixels\n");
    EXPECT_EQ(error({file, "1,1", "--page", "2"}, 1), "orvlog: " + file + ": has no page 2, but 1 in all\n");
    EXPECT_EQ(error({folder.write("b.xml", "<HTML>\n"), "1,1"}, 1),
              "orvlog: " + folder.path("b.xml") + ": not a log\n");
    EXPECT_EQ(error({folder.path("none"), "1,1"}, 1),
              "orvlog: " + folder.path("none") + ": No such file or directory\n");
    EXPECT_EQ(error({file}, 2), "orvlog: at takes either a pixel or a --box\n");
    EXPECT_EQ(error({file, "1,1", "--box", "0,0,1,1"}, 2), "orvlog: at takes either a pixel or a --box\n");
    for (const char* pixel : {"1", "1,", ",1", "1,2,3", "1.5,2", "1,-2", "x,y", "99999999999,1"})
        error({file, pixel}, 2);
    for (const char* box : {"0,0,0,1", "2,0,1,1", "0,0,1"})
        error({file, "--box", box}, 2);
    const std::string cut = folder.write("c.xml", log.substr(0, log.find("  <ORV_drawing_finish")));
    const ToolResult result = run_tool({"at", cut, "6,6"});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.err.ends_with("\norvlog: " + cut + ": is cut short; what it has is drawn\n")) << result.err;
    EXPECT_NE(result.out.find("2 changes, 1 without effect"), std::string::npos);
}

TEST(ToolState, TellsWhatHolds)
{
    const std::string log = job();
    const std::string file_at = std::to_string(log.find("  <ORV_object_paint id=\"1\""));
    ToolResult result = run_tool({"state", "-", "1"}, log);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    const std::string line = address_of(log, "<ORV_object_paint id=\"1\"").substr(5);
    EXPECT_EQ(result.out, "call        1 object_paint, line " + line + ", byte " + file_at +
                              "\n"
                              "document    line:2, context 0, id 1\n"
                              "page 1      line:4, drawing 0, number 1, 10 by 10 pixels, transform 1 0 0 1 0 0\n"
                              "colours     line:4, no ticket\n"
                              "to pixels   1 0 0 1 0 0\n"
                              "paints      source-over, rgb(0 1 0), box 0 0 8 8\n"
                              "clip        inside filled path, non-zero, 3 parts, 0 0 4 4\n"
                              "all clips   0 0 4 4\n"
                              "warnings    0 since the start, 0 since the page began\n");
    result = run_tool({"state", "-", "0"}, log);
    const std::string group = address_of(log, "<ORV_group_start ");
    EXPECT_NE(result.out.find("group       " + group + ", SIMPLE, source-over, -, transform 1 0 0 1 0 0\n"),
              std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find("colours     " + group + ", no ticket\n"), std::string::npos);
    result = run_tool({"state", "-", "line:4", "--json"}, log);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out.substr(0, 55), "{\"call\":\"line:4\",\"line\":4,\"kind\":\"face_start\",\"operator");
}

TEST(ToolState, DrawsTheClip)
{
    const ScratchFolder folder;
    const std::string file = folder.write("a.xml", job());
    ToolResult result = run_tool({"state", file, "1", "--clip-png", folder.path("c.png")});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(read_file(folder.path("c.png")).substr(1, 3), "PNG");
    result = run_tool({"state", file, "line:4", "--clip-png", folder.path("d.png")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: " + file +
                              ": the call line:4 paints on no page, so there is no picture of its "
                              "clip\n");
    EXPECT_EQ(read_file(folder.path("d.png")), "");
    result = run_tool({"state", file, "1", "--clip-png", file});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: " + file + ": is the log\n");
    EXPECT_EQ(read_file(file), job());
    EXPECT_EQ(run_tool({"state", file, "1", "--clip-png", folder.path("none/c.png")}).status, 1);
}

TEST(ToolState, SaysWhatIsWrong)
{
    const ScratchFolder folder;
    const std::string file = folder.write("a.xml", job());
    EXPECT_EQ(run_tool({"state", file, "9"}).err, "orvlog: " + file + ": has no paint 9\n");
    EXPECT_EQ(run_tool({"state", file, "9"}).status, 1);
    EXPECT_EQ(run_tool({"state", file, "line:5"}).err, "orvlog: " + file + ": has no call that begins in line 5\n");
    EXPECT_EQ(run_tool({"state", file}).status, 2);
    EXPECT_EQ(run_tool({"state", file, "nine"}).status, 2);
    EXPECT_EQ(run_tool({"state", "-", "1"}, "text").err, "orvlog: -: not a log\n");
}

}  // namespace
