// Listing the calls of a log.

#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

const std::string kEveryCall = ORVLOG_SOURCE_DIR "/tests/expected/every-call-base.xml";

const std::string kHeader = "        call  page kind                    box                clip               operator "
                            "      colour                         text\n";

TEST(ToolLs, TellsTheOperatorOnATerminalOf80Characters)
{
    const std::string line = std::string("COLUMNS=80 NO_COLOR=1 ") + ORVLOG_TOOL + " ls " + kEveryCall;
    const ToolResult result = run_program({"script", "-qec", line, "/dev/null"});
    EXPECT_NE(result.out.find(
                  "        call  page kind                    box                operator       co\xe2\x80\xa6\r\n"),
              std::string::npos)
        << result.out.substr(0, 400);
    EXPECT_NE(result.out.find("           0     1 object_paint            0,0,1,2            rop4(0)        rg"),
              std::string::npos);
}

TEST(ToolLs, ListsEachCallOfALog)
{
    const ToolResult result = run_tool({"ls", kEveryCall});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(
        result.out,
        R"X(        call  page kind                    box                clip               operator       colour                         text
      line:2     - document_start          -                  -                  -              -                              -
      line:4     - resource_start          -                  -                  -              -                              -
      line:8     - group_start             -                  -                  normal/mask-in mask 0                         -
     line:76     - drawing_finish          -                  -                  -              -                              -
     line:78     1 face_start              0,0,10,10          -                  -              -                              -
           0     1 object_paint            0,0,1,2            -                  rop4(0)        rgb(0 0 0), mask 0             -
           1     1 object_paint            -                  -                  rop4(0)        rgb(0 0 0)                     "AB"
           2     1 object_paint_and_stroke -1,-1,2,3          -                  rop4(0)        rgb(0 0 0), mask 0, stroke rgb(0 0 0), mask 0 -
           3     1 object_paint_and_stroke -                  -                  rop4(0)        rgb(0 0 0), mask 0, stroke rgb(0 0 0), mask 0 "AB"
    line:568     1 resource_paint          0,0,1,1            -                  rop4(0)        resource 0                     -
    line:620     1 group_start             0,0,1,1            -                  normal/mask-in mask 0                         -
    line:688     1 group_start             0,0,1,1            -                  normal/mask-in mask 0                         -
           4     1 object_paint            0,0,1,2            -                  source-over    rgb(0 0 0)                     -
    line:810     1 group_finish            -                  -                  -              -                              -
    line:812     1 group_finish            -                  -                  -              -                              -
    line:814     1 drawing_finish          -                  -                  -              -                              -
    line:816     2 face_start              0,0,10,10          -                  -              -                              -
           5     2 object_paint            0,0,1,2            -                  rop4(0)        rgb(0 0 0), mask 0             -
           6     2 object_paint            -                  -                  rop4(0)        rgb(0 0 0)                     "AB"
           7     2 object_paint_and_stroke -1,-1,2,3          -                  rop4(0)        rgb(0 0 0), mask 0, stroke rgb(0 0 0), mask 0 -
           8     2 object_paint_and_stroke -                  -                  rop4(0)        rgb(0 0 0), mask 0, stroke rgb(0 0 0), mask 0 "AB"
   line:1306     2 resource_paint          0,0,1,1            -                  rop4(0)        resource 0                     -
   line:1358     2 group_start             0,0,1,1            -                  normal/mask-in mask 0                         -
   line:1426     2 group_start             0,0,1,1            -                  normal/mask-in mask 0                         -
           9     2 object_paint            0,0,1,2            -                  source-over    rgb(0 0 0)                     -
   line:1548     2 group_finish            -                  -                  -              -                              -
   line:1550     2 group_finish            -                  -                  -              -                              -
   line:1552     2 drawing_discard         -                  -                  -              -                              -
   line:1558     - memory_context_start    -                  -                  -              -                              -
   line:1560     - drawing_finish          -                  -                  -              -                              -
   line:1562     - resource_destroy        -                  -                  -              -                              -
   line:1564     - document_finish         -                  -                  -              -                              -
)X");
}

TEST(ToolLs, FiltersByPageKindAndId)
{
    EXPECT_EQ(
        run_tool({"ls", kEveryCall, "--id", "4-5"}).out,
        R"X(        call  page kind                    box                clip               operator       colour                         text
           4     1 object_paint            0,0,1,2            -                  source-over    rgb(0 0 0)                     -
           5     2 object_paint            0,0,1,2            -                  rop4(0)        rgb(0 0 0), mask 0             -
)X");
    EXPECT_EQ(
        run_tool({"ls", kEveryCall, "--page", "2", "--kind", "group_start", "--kind", "ORV_resource_paint"}).out,
        R"X(        call  page kind                    box                clip               operator       colour                         text
   line:1306     2 resource_paint          0,0,1,1            -                  rop4(0)        resource 0                     -
   line:1358     2 group_start             0,0,1,1            -                  normal/mask-in mask 0                         -
   line:1426     2 group_start             0,0,1,1            -                  normal/mask-in mask 0                         -
)X");
    EXPECT_EQ(run_tool({"ls", kEveryCall, "--page", "3-"}).out, kHeader);
    EXPECT_EQ(
        run_tool({"ls", kEveryCall, "--id", "-0"}).out,
        kHeader +
            R"X(           0     1 object_paint            0,0,1,2            -                  rop4(0)        rgb(0 0 0), mask 0             -
)X");
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
    EXPECT_EQ(result.out, kHeader);
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
    EXPECT_EQ(
        run_tool({"ls", kEveryCall, "--places", "--kind", "face_start"}).out,
        R"X(        byte      line         call  page kind                    box                clip               operator       colour                         text
        5428        78      line:78     1 face_start              0,0,10,10          -                  -              -                              -
       50037       816     line:816     2 face_start              0,0,10,10          -                  -              -                              -
)X");
}

TEST(ToolLs, WritesAnArray)
{
    EXPECT_EQ(run_tool({"ls", kEveryCall, "--json", "--id", "4"}).out, R"X([
{"call":"4","id":4,"page":1,"kind":"object_paint","box":[0.0,0.0,1.0,2.0],"clip":null,"operator":null,"stroke_operator":null,"operands":[{"role":"paint","type":"GOP_OperandFlat","unique_id":4,"space":"GCM_CSF_RGB","bit_depth":32,"channels":[0.0,0.0,0.0],"alpha":null}],"resource":null,"text":null,"hints":["ORV_OBJ_HINT_NONE"],"byte":46859,"line":756}
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
    EXPECT_EQ(
        result.out,
        R"X(        call  page kind                    box                clip               operator       colour                         text
           0     1 object_paint            0,0,1,2            -                  rop4(0)        rgb(0 0 0), mask 0             -
)X");
    EXPECT_EQ(result.err, "orvlog: -: damaged in 1 places, cut short\n");
}

TEST(ToolLs, TakesColumnsAndColours)
{
    EXPECT_EQ(run_tool({"ls", kEveryCall, "--columns", "text,kind,call", "--id", "1-2"}).out,
              "text                     kind                            call\n"
              "\"AB\"                     object_paint                       1\n"
              "-                        object_paint_and_stroke            2\n");
    EXPECT_EQ(run_tool({"ls", kEveryCall, "--columns", "call,page", "--id", "1", "--colour", "always"}).out,
              "\x1b[1m        call\x1b[0m\x1b[1m  page\x1b[0m\n\x1b[33m           1\x1b[0m     1\n");
    for (const char* columns : {"", "id", "call,", "call,,page"})
        EXPECT_EQ(run_tool({"ls", kEveryCall, "--columns", columns}).status, 2) << columns;
    EXPECT_EQ(run_tool({"ls", kEveryCall, "--columns", "call", "--places"}).status, 2);
    EXPECT_EQ(run_tool({"ls", kEveryCall, "--colour", "sometimes"}).status, 2);
}

// A terminal's lines end at its edge, and have colours unless the user wants none.
TEST(ToolLs, FitsATerminal)
{
    const auto on_terminal = [](const std::string& variables)
    {
        const std::string command = "env TERM=xterm COLUMNS=24 " + variables + " " ORVLOG_TOOL " ls " + kEveryCall +
                                    " --columns call,kind --id 0";
        return run_program({"script", "-qec", command, "/dev/null"}).out;
    };
    EXPECT_EQ(on_terminal("NO_COLOR=1"), "        call kind\r\n           0 object_pai…\r\n");
    EXPECT_EQ(on_terminal("NO_COLOR="), "\x1b[1m        call\x1b[0m\x1b[1m kind\x1b[0m\r\n"
                                        "\x1b[33m           0\x1b[0m\x1b[36m object_pai…\x1b[0m\r\n");
}

const std::string kStart = "<ORV ORVLOG_CONTENT_VERSION=\"2\">\n"
                           "  <ORV_document_start document_context=\"0\">\n"
                           "  </ORV_document_start>\n";
const std::string kText = "  <ORV_object_paint id=\"7\" drawing_context=\"0\">\n"
                          "    <ORV_object_paint.paint_path>\n"
                          "      <GSH_ShapePointer>\n"
                          "        <GSH_ShapePointer.sp_U.glyph>\n"
                          "          <GFI_StringDescPointer gsp_TextPtr=\"65 195 164 226 128 174 34 255 7 \">\n"
                          "          </GFI_StringDescPointer>\n"
                          "        </GSH_ShapePointer.sp_U.glyph>\n"
                          "      </GSH_ShapePointer>\n"
                          "    </ORV_object_paint.paint_path>\n";

// Nothing that a text says turns the line, rings a bell or ends it.
TEST(ToolLs, TellsATextSoThatItDisturbsNoTerminal)
{
    EXPECT_EQ(
        run_tool({"ls", "-", "--columns", "call,text", "--id", "7"}, kStart + kText + "  </ORV_object_paint>\n</ORV>\n")
            .out,
        "        call text\n           7 \"Aä\\xe2\\x80\\xae\\x22\\xff\\x07\"\n");
}

TEST(ToolLs, NamesTheCallInFlight)
{
    EXPECT_EQ(run_tool({"ls", "-", "--columns", "call"}, kStart + kText).err,
              "orvlog: -: damaged in 1 places, cut short\norvlog: -: in flight: ORV_object_paint 7, line 4\n");
    EXPECT_EQ(run_tool({"ls", "-", "--columns", "call"}, kStart).err, "orvlog: -: damaged in 1 places, cut short\n");
}

// A log grows while it is followed: in the middle of lines, with zero bytes in room that isn't used yet.
std::string follow_while(const std::string& commands, const std::string& options, int status)
{
    const ScratchFolder folder;
    folder.write("start", kStart + "  <ORV_object_pa");
    folder.write("more", kText.substr(16));
    folder.write("end", "  </ORV_object_paint>\n</ORV>\n");
    const ToolResult result =
        run_program({"env", "-C", folder.path(""), "sh", "-uc",
                     "cp start log; (sleep 0.5; " + commands + ") & timeout 20 " ORVLOG_TOOL " ls log --follow " +
                         options + " 2>&1; status=$?; wait; exit $status"});
    EXPECT_EQ(result.status, status) << result.out;
    return result.out;
}

TEST(ToolLs, EndsToFollowWhenNobodyReads)
{
    const ScratchFolder folder;
    folder.write("log", kStart + "  <ORV_object_pa");
    const ToolResult result = run_program(
        {"env", "-C", folder.path(""), "sh", "-c",
         "{ timeout 20 " ORVLOG_TOOL " ls log --follow --columns call; echo $? >status; } | read line; cat status"});
    // By the signal, unless it is ignored here.
    EXPECT_TRUE(result.out == "141\n" || result.out == "1\n") << result.out;
}

TEST(ToolLs, FollowsALogWhileItGrows)
{
    EXPECT_EQ(follow_while("cat more >>log; sleep 0.5; cat end >>log", "--columns call,kind", 0),
              "        call kind\n"
              "      line:2 document_start\n"
              "in flight: ORV_object_pa, line 4\n"
              "in flight: ORV_object_paint 7, line 4\n"
              "           7 object_paint\n");
    // As a job leaves it that maps its log, and cuts it to its length at the end.
    EXPECT_EQ(
        follow_while("cat start more >l; cp l new; head -c 9000 /dev/zero >>new; cat new >log; sleep 0.5; "
                     "cat l end >all; cat all 1<>log >&1; truncate -s $(wc -c <all) log",
                     "--json", 0),
        R"X({"call":"line:2","id":null,"page":null,"kind":"document_start","box":null,"clip":null,"operator":null,"stroke_operator":null,"operands":[],"resource":null,"text":null,"hints":[],"byte":33,"line":2}
{"call":"7","id":7,"page":null,"kind":"object_paint","box":null,"clip":null,"operator":null,"stroke_operator":null,"operands":[],"resource":null,"text":"A\u00e4\u202e\"\ufffd\u0007","hints":[],"byte":101,"line":4}
)X");
}

TEST(ToolLs, SaysWhyALogCantBeFollowed)
{
    const std::string flight = "in flight: ORV_object_pa, line 4\n";
    EXPECT_EQ(follow_while(": >log", "--columns call", 1),
              "        call\n      line:2\n" + flight + "orvlog: log: has become shorter while it was followed\n");
    EXPECT_EQ(follow_while("cp log new; mv new log", "--columns call", 1),
              "        call\n      line:2\n" + flight +
                  "orvlog: log: is gone, or another file, since it is followed\n");
    const ScratchFolder folder;
    EXPECT_EQ(run_tool({"ls", "--follow", folder.path("none")}).status, 1);
    EXPECT_EQ(run_tool({"ls", "--follow", folder.write("x", "<ORVIS>")}).err,
              "orvlog: " + folder.path("x") + ": is no plain log, which alone can be followed\n");
    EXPECT_EQ(run_tool({"ls", "--follow", "-"}, kStart).status, 2);
}

// Every call that a list has.
TEST(ToolLs, FollowsAWholeLogAsItListsIt)
{
    EXPECT_EQ(run_tool({"ls", kEveryCall, "--follow", "--places"}).out, run_tool({"ls", kEveryCall, "--places"}).out);
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
