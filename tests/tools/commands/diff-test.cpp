// Where two logs differ, by the command.

#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

const std::string kEveryCall = ORVLOG_SOURCE_DIR "/tests/expected/every-call-base.xml";
const std::string kPoint = "ORV_object_paint.paint_path/GSH_ShapePointer/GSH_ShapePointer.sp_U.filled_path/"
                           "GPA_PathPointer/GPA_Path/GPA_Path.pa_EdgeStart/GGO_Point[1]";
const std::string kLine = "4            4                1 object_paint            " + kPoint + " gpf_X: 0 -> 0.5\n";

// The log with another point in the paint 4.
std::string with_another_point()
{
    std::string log = read_file(kEveryCall);
    const std::string point = "gpf_X=\"0\"";
    const size_t at = log.find(point, log.find("<ORV_object_paint id=\"4\""));
    return at != std::string::npos ? log.replace(at, point.size(), "gpf_X=\"0.5\"") : "";
}

TEST(ToolDiff, TellsWhichAttributeOfWhichRecordDiffers)
{
    const ScratchFolder folder;
    const std::string other = folder.write("other.xml", with_another_point());
    const ToolResult result = run_tool({"diff", kEveryCall, other});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, kLine + "31 calls are the same, 1 changed\n");
    EXPECT_EQ(result.err, "");
}

TEST(ToolDiff, ShowsCallsAround)
{
    const ScratchFolder folder;
    const std::string other = folder.write("other.xml", with_another_point());
    EXPECT_EQ(run_tool({"diff", kEveryCall, other, "--context", "1"}).out,
              "line:688     line:688         1 group_start             same\n" + kLine +
                  "line:810     line:810         1 group_finish            same\n"
                  "31 calls are the same, 1 changed\n");
}

TEST(ToolDiff, WritesAnObject)
{
    const ScratchFolder folder;
    const std::string other = folder.write("other.xml", with_another_point());
    const ToolResult result = run_tool({"diff", kEveryCall, other, "--json"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out,
              "{\"calls\": [\n{\"what\":\"changed\",\"a\":\"4\",\"b\":\"4\",\"page\":1,\"kind\":\"object_paint\","
              "\"differences\":[{\"path\":\"" +
                  kPoint +
                  "\",\"attribute\":\"gpf_X\",\"a\":\"0\",\"b\":\"0.5\"}]}\n],\n"
                  "\"same\":31,\"changed\":1,\"missing\":0,\"added\":0,\"moved\":0,\"equal\":false}\n");
}

TEST(ToolDiff, EndsWithTheStatusThatScriptsGoBy)
{
    const ScratchFolder folder;
    const std::string other = folder.write("other.xml", with_another_point());
    const ToolResult same = run_tool({"diff", kEveryCall, kEveryCall});
    EXPECT_EQ(same.status, 0);
    EXPECT_EQ(same.out, "32 calls are the same, nothing differs\n");
    EXPECT_EQ(run_tool({"diff", kEveryCall, other, "--tolerance", "1"}).status, 0);
    EXPECT_EQ(run_tool({"diff", kEveryCall}).status, 2);
    EXPECT_EQ(run_tool({"diff", kEveryCall, other, "--png", folder.path("x")}).status, 2);
    const ToolResult none = run_tool({"diff", kEveryCall, folder.path("none.xml")});
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.err, "orvlog: " + folder.path("none.xml") + ": No such file or directory\n");
    EXPECT_EQ(run_tool({"diff", kEveryCall, folder.write("text", "no log")}).err,
              "orvlog: " + folder.path("text") + ": not a log\n");
}

TEST(ToolDiff, SaysThatALogIsCutShort)
{
    const ScratchFolder folder;
    const std::string cut = folder.write("cut.xml", read_file(kEveryCall).substr(0, 30000));
    const ToolResult result = run_tool({"diff", kEveryCall, cut});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: " + cut + ": is cut short, damaged in 1 places; what could be read is compared\n");
}

}  // namespace
