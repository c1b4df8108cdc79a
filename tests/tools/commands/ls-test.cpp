// Listing the calls of a log.

#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

const std::string kEveryCall = ORVLOG_SOURCE_DIR "/tests/expected/every-call-base.xml";

TEST(ToolLs, ListsEachCallOfALog)
{
    const ToolResult result = run_tool({"ls", kEveryCall});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, R"X(       -     - document_start          -                      -              -
       -     - resource_start          -                      -              -
       -     - group_start             -                      normal/mask-in mask 0
       -     - drawing_finish          -                      -              -
       -     1 face_start              0,0,10,10              -              -
       0     1 object_paint            0,0,1,2                rop4(0)        rgb(0 0 0), mask 0
       1     1 object_paint            -                      rop4(0)        rgb(0 0 0)
       2     1 object_paint_and_stroke -1,-1,2,3              rop4(0)        rgb(0 0 0), mask 0, stroke rgb(0 0 0), mask 0
       3     1 object_paint_and_stroke -                      rop4(0)        rgb(0 0 0), mask 0, stroke rgb(0 0 0), mask 0
       -     1 resource_paint          0,0,1,1                rop4(0)        resource 0
       -     1 group_start             0,0,1,1                normal/mask-in mask 0
       -     1 group_start             0,0,1,1                normal/mask-in mask 0
       4     1 object_paint            0,0,1,2                source-over    rgb(0 0 0)
       -     1 group_finish            -                      -              -
       -     1 group_finish            -                      -              -
       -     1 drawing_finish          -                      -              -
       -     2 face_start              0,0,10,10              -              -
       5     2 object_paint            0,0,1,2                rop4(0)        rgb(0 0 0), mask 0
       6     2 object_paint            -                      rop4(0)        rgb(0 0 0)
       7     2 object_paint_and_stroke -1,-1,2,3              rop4(0)        rgb(0 0 0), mask 0, stroke rgb(0 0 0), mask 0
       8     2 object_paint_and_stroke -                      rop4(0)        rgb(0 0 0), mask 0, stroke rgb(0 0 0), mask 0
       -     2 resource_paint          0,0,1,1                rop4(0)        resource 0
       -     2 group_start             0,0,1,1                normal/mask-in mask 0
       -     2 group_start             0,0,1,1                normal/mask-in mask 0
       9     2 object_paint            0,0,1,2                source-over    rgb(0 0 0)
       -     2 group_finish            -                      -              -
       -     2 group_finish            -                      -              -
       -     2 drawing_discard         -                      -              -
       -     - memory_context_start    -                      -              -
       -     - drawing_finish          -                      -              -
       -     - resource_destroy        -                      -              -
       -     - document_finish         -                      -              -
)X");
}

TEST(ToolLs, FiltersByPageKindAndId)
{
    EXPECT_EQ(run_tool({"ls", kEveryCall, "--id", "4-5"}).out,
              R"X(       4     1 object_paint            0,0,1,2                source-over    rgb(0 0 0)
       5     2 object_paint            0,0,1,2                rop4(0)        rgb(0 0 0), mask 0
)X");
    EXPECT_EQ(run_tool({"ls", kEveryCall, "--page", "2", "--kind", "group_start", "--kind", "ORV_resource_paint"}).out,
              R"X(       -     2 resource_paint          0,0,1,1                rop4(0)        resource 0
       -     2 group_start             0,0,1,1                normal/mask-in mask 0
       -     2 group_start             0,0,1,1                normal/mask-in mask 0
)X");
    EXPECT_EQ(run_tool({"ls", kEveryCall, "--page", "3-"}).out, "");
    EXPECT_EQ(run_tool({"ls", kEveryCall, "--id", "-0"}).out,
              "       0     1 object_paint            0,0,1,2                rop4(0)        rgb(0 0 0), mask 0\n");
}

TEST(ToolLs, RefusesACommandLineThatMakesNoSense)
{
    for (const char* pages : {"0", "5-3", "1,3-4", "x", "", "4294967296"})
    {
        const ToolResult result = run_tool({"ls", kEveryCall, "--page", pages});
        EXPECT_EQ(result.status, 2) << pages;
        EXPECT_EQ(result.out, "") << pages;
    }
    EXPECT_EQ(run_tool({"ls", kEveryCall, "--page", "0"}).err,
              "orvlog ls: --page: pages are given as A, A-B, A- or -B, counting from 1 (see orvlog ls --help)\n");
    EXPECT_EQ(run_tool({"ls", kEveryCall, "--id", "5-3"}).err,
              "orvlog ls: --id: the last id comes before the first (see orvlog ls --help)\n");
    const ToolResult result = run_tool({"ls", kEveryCall, "--kind", "object_pant"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err.find("orvlog ls: --kind: object_pant not in {document_start,document_finish,"), 0U)
        << result.err;
}

TEST(ToolLs, SaysWhatTheLogDoesNotHave)
{
    ToolResult result = run_tool({"ls", kEveryCall, "--page", "99"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "orvlog: " + kEveryCall + ": has no page 99, but 2 in all\n");
    result = run_tool({"ls", kEveryCall, "--json", "--id", "400-"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "[]\n");
    EXPECT_EQ(result.err, "orvlog: " + kEveryCall + ": has no paint 400-\n");
    // What is there is listed; a page without a paint of the id is no fault.
    EXPECT_EQ(run_tool({"ls", kEveryCall, "--page", "2-99"}).status, 0);
    EXPECT_EQ(run_tool({"ls", kEveryCall, "--page", "1", "--id", "5"}).status, 0);
}

TEST(ToolLs, TellsPlaces)
{
    EXPECT_EQ(run_tool({"ls", kEveryCall, "--places", "--kind", "face_start"}).out,
              R"X(        5428        78        -     1 face_start              0,0,10,10              -              -
       50037       816        -     2 face_start              0,0,10,10              -              -
)X");
}

TEST(ToolLs, WritesAnArray)
{
    EXPECT_EQ(run_tool({"ls", kEveryCall, "--json", "--id", "4"}).out, R"X([
{"id":4,"page":1,"kind":"object_paint","box":[0.0,0.0,1.0,2.0],"operator":"source-over","colour":"rgb(0 0 0)","byte":46859,"line":756}
]
)X");
    EXPECT_EQ(run_tool({"ls", kEveryCall, "--json", "--id", "400"}).out, "[]\n");
}

TEST(ToolLs, ReadsTheStandardInputAndWhatIsLeftOfALog)
{
    const std::string log = read_file(kEveryCall);
    const ToolResult result =
        run_tool({"ls", "-", "--id", "0-1"}, log.substr(0, log.find("<ORV_object_paint id=\"1\"")));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out,
              R"X(       0     1 object_paint            0,0,1,2                rop4(0)        rgb(0 0 0), mask 0
)X");
    EXPECT_EQ(result.err, "orvlog: -: damaged in 1 places, cut short\n");
}

TEST(ToolLs, WhatIsNoLogIsSaid)
{
    const ScratchFolder folder;
    ToolResult result = run_tool({"ls", folder.path("none")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: " + folder.path("none") + ": No such file or directory\n");
    result = run_tool({"ls", "-"}, "<html>\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "orvlog: -: not a log\n");
}

}  // namespace
