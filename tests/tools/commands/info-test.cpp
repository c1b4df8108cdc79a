// What a log is and what is in it.

#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

const std::string kSmall =
    "<ORV ORV_VERSION=\"10066\" GPA_VERSION=\"10057\" Endian=\"little\" LoggingMode=\"base\" "
    "ORVLOG_CONTENT_VERSION=\"2\">\n"
    "  <ORV_face_start drawing_context=\"0\" font_engine_functions=\"TRUE\" fp_EngineIdGet=\"ours\" GfpId=\"0\">\n"
    "    <ORV_FaceProperties fp_FaceInchToPixels=\"300 0 0 300 0 0 \" fp_WidthInPixels=\"600\" "
    "fp_HeightInPixels=\"1200\">\n"
    "    </ORV_FaceProperties>\n"
    "    <GCM_ColorTicket id=\"1\">\n"
    "      <GXC_ColorTickets>\n"
    "      \t<CMYKRenderColorSpace>\n"
    "      </GXC_ColorTickets>\n"
    "    </GCM_ColorTicket>\n"
    "  </ORV_face_start>\n"
    "\n<!--\nfrom the client\n-->\n"
    "\n<!--\nORVLOG: WARNING: one\n-->\n"
    "\n<!--\nORVLOG: WARNING: one\n-->\n"
    "  <ORV_object_paint id=\"0\" drawing_context=\"0\">\n"
    "    <ORV_object_paint.operand1>\n"
    "      <GOP_OperandImagePointer Id=\"10\" imp_DirectImage=\"TRUE\">\n"
    "        <imp_DirectImageData>\n"
    "          <BufferUInt8 len=\"2\">\n"
    "80 01 \n"
    "          </BufferUInt8>\n"
    "        </imp_DirectImageData>\n"
    "        <GOP_OperandImage im_ImageEncoding=\"0\" im_Flags=\"[0x1] GOP_OP_FLAGS_HAS_COLOR_DATA \" "
    "im_ImageWidthPixels=\"8\" im_ImageHeightPixels=\"2\" im_Transform=\"1 0 0 1 0 0 \">\n"
    "          <GOP_Operand go_OpType=\"GOP_OPERAND_IMAGE\" go_ColorInfo.GOP_OperandColorSpace=\"GOP_OCS_INPUT\" "
    "go_Count=\"0\" go_ColorSpaceFamily=\"GCM_CSF_GRAY\"/>\n"
    "        </GOP_OperandImage>\n"
    "      </GOP_OperandImagePointer>\n"
    "    </ORV_object_paint.operand1>\n"
    "  </ORV_object_paint>\n"
    "  <ORV_drawing_finish drawing_context=\"0\">\n"
    "  </ORV_drawing_finish>\n";

TEST(ToolInfo, TellsOfASmallLogThatWasCutShort)
{
    const ToolResult result = run_tool({"info", "-"}, kSmall);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, R"X(log         standard input
form        plain, 1363 bytes, cut short
content     version 2
mode        base
pages       1
  page 1: 600x1200 pixels, 2.00x4.00 inches at 300 dpi
calls       3
           1  drawing_finish
           1  face_start
           1  object_paint
images      1
           1  8x2 gray 1 bit
  1 direct, 2 bytes in the log, 0 in files beside it
engines     1
           1  ours
strings     0
tickets     1, brought by 1 calls
  1 CMYK
comments    1
  from the client
warnings    2
           2  one
damage      1
  line 39, byte 1363: the log ends here, before its end
)X");
}

TEST(ToolInfo, WritesAnObject)
{
    const ToolResult result = run_tool({"info", "-", "--json"}, kSmall + "</ORV>\n");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, R"X({
  "log": "standard input",
  "coded": false,
  "cut": false,
  "bytes": 1370,
  "root": {
    "ORV_VERSION": "10066",
    "GPA_VERSION": "10057",
    "Endian": "little",
    "LoggingMode": "base",
    "ORVLOG_CONTENT_VERSION": "2"
  },
  "page_count": 1,
  "pages": [
    {
      "first": 1,
      "last": 1,
      "width": 600,
      "height": 1200,
      "width_inches": 2.0,
      "height_inches": 4.0,
      "dpi": [
        300.0,
        300.0
      ]
    }
  ],
  "calls": {
    "drawing_finish": 1,
    "face_start": 1,
    "object_paint": 1
  },
  "callbacks": {},
  "images": {
    "8x2 gray 1 bit": 1
  },
  "direct_images": 1,
  "image_bytes": 2,
  "side_file_bytes": 0,
  "kept_image_logs": 0,
  "engines": {
    "ours": 1
  },
  "strings": 0,
  "glyphs": {},
  "ticket_uses": 1,
  "tickets": {
    "CMYK": 1
  },
  "comment_count": 1,
  "comments": [
    "from the client"
  ],
  "warnings": {
    "one": 2
  },
  "damage_count": 0,
  "damage": []
}
)X");
}

TEST(ToolInfo, TellsVersionsWhenAsked)
{
    const std::string out = run_tool({"info", "-", "--versions"}, kSmall).out;
    EXPECT_NE(out.find("\nmode        base\nversions    ORV 10066, GPA 10057\npages       1\n"), std::string::npos)
        << out;
}

TEST(ToolInfo, TellsOfEveryCall)
{
    const ToolResult result =
        run_tool({"info", "-"}, read_file(ORVLOG_SOURCE_DIR "/tests/expected/every-call-base.xml"));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, R"X(log         standard input
form        plain, 95024 bytes, whole
content     version 2
mode        transparent
pages       2
  pages 1-2: 10x10 pixels, 10.00x10.00 inches at 1 dpi
calls       32
           6  object_paint
           5  group_start
           4  group_finish
           4  object_paint_and_stroke
           3  drawing_finish
           2  face_start
           2  resource_paint
           1  document_finish
           1  document_start
           1  drawing_discard
           1  memory_context_start
           1  resource_destroy
           1  resource_start
callbacks   8
           4  GFI_GlyphIndexGetFn
           4  GFI_StringStartFn
engines     5
           2  drawing
           2  group
           1  document
strings     4
tickets     0, brought by 0 calls
comments    0
warnings    1
           1  ORV_memory_context_start parameters are not logged
damage      none
)X");
}

TEST(ToolInfo, WhatIsNoLogIsSaid)
{
    ToolResult result = run_tool({"info", "-"}, "");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: -: not a log\n");
    result = run_tool({"info", "/"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: /: Is a directory\n");
    EXPECT_EQ(run_tool({"info"}).status, 2);
}

// A process that was killed leaves unused room behind the text of a mapped log.
TEST(ToolInfo, TakesUnusedRoomAsTheEnd)
{
    const ScratchFolder folder;
    const std::string text = "<ORV LoggingMode=\"transparent\">\n  <ORV_object_paint id=\"7\">\n    <a b=\"";
    const std::string log = folder.write("log.xml", text + std::string(100000, '\0'));
    const ToolResult result = run_tool({"info", log});
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.out.find("form        plain, " + std::to_string(text.size()) +
                              " bytes, cut short\nin flight   ORV_object_paint 7, line 2\n"),
              std::string::npos)
        << result.out;
    EXPECT_EQ(run_tool({"unpack", log, "-o", "-"}).out, text);
    EXPECT_EQ(run_tool({"unpack", "-", "-o", "-"}, read_file(log)).out, text);
    const std::string whole = folder.write("whole.xml", "<ORV>\n</ORV>\n" + std::string(7, '\0'));
    const std::string closed = folder.write("closed.xml", "<ORV>\n</ORV>\n");
    EXPECT_EQ(run_tool({"check", whole}).out, run_tool({"check", closed}).out);
    EXPECT_EQ(run_tool({"pack", whole, "-o", folder.path("coded")}).status, 0);
    EXPECT_EQ(run_tool({"unpack", folder.path("coded"), "-o", "-"}).out, "<ORV>\n</ORV>\n");
    // Within the text it is damage, and no end.
    const std::string hole = folder.write("hole.xml", "<ORV>\n" + std::string(70000, '\0') + "\n</ORV>\n");
    EXPECT_NE(run_tool({"info", hole}).out.find("form        plain, 70014 bytes, whole\n"), std::string::npos);
}

TEST(ToolInfo, NamesTheTemporaryLogOfAnEmptyOne)
{
    const ScratchFolder folder;
    const std::string log = folder.write("log.xml", std::string(5000, '\0'));
    EXPECT_EQ(run_tool({"info", log}).err, "orvlog: " + log + ": not a log\n");
    const std::string temporary = folder.write("orvlog-00000001-00000002-00000003-000000ff.tmp", "<ORV>\n");
    const ToolResult result = run_tool({"info", log});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: " + log + ": empty; a job that was broken off is in " + temporary +
                              ": orvlog merge " + temporary + " -o " + log + "\n");
}

TEST(ToolInfo, CountsRecordsWhereAsked)
{
    const std::string log = "<ORV ORVLOG_CONTENT_VERSION=\"2\">\n"
                            "  <ORV_object_paint id=\"0\" drawing_context=\"0\">\n"
                            "    <ORV_object_paint.clip>\n"
                            "      <GSH_ShapeList sl_ClipIn=\"TRUE\">\n"
                            "        <GSH_ShapeList.sl_Shape>\n"
                            "          <GSH_ShapePointer>\n"
                            "          </GSH_ShapePointer>\n"
                            "        </GSH_ShapeList.sl_Shape>\n"
                            "      </GSH_ShapeList>\n"
                            "    </ORV_object_paint.clip>\n"
                            "  </ORV_object_paint>\n"
                            "  <GFI_GlyphIndexGetFn GfpId=\"0\" result=\"FALSE\"/>\n"
                            "</ORV>\n";
    const ToolResult result = run_tool({"info", "-", "--records"}, log);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(
        result.out.find("operators   0\noperands    0\ncolours     0\npaths       0\nshapes      1\nclips       1\n"
                        "fonts       0\n"),
        std::string::npos)
        << result.out;
    // A callback that stands between calls counts, too.
    EXPECT_NE(result.out.find("callbacks   1\n"), std::string::npos) << result.out;
    EXPECT_EQ(run_tool({"info", "-"}, log).out.find("shapes"), std::string::npos);
}

}  // namespace
