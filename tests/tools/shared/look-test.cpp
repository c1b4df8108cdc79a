// Checking a log, showing a call of it, and taking it apart.

#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>

namespace
{

using namespace orvlog::test;

const std::string kEveryCall = ORVLOG_SOURCE_DIR "/tests/expected/every-call-base.xml";
const std::string kTransparent = ORVLOG_SOURCE_DIR "/tests/expected/every-call-transparent.xml";

const std::string kHead = "<ORV ORVLOG_CONTENT_VERSION=\"2\">\n"
                          "  <ORV_face_start drawing_context=\"0\" font_engine_functions=\"TRUE\" GfpId=\"0\">\n"
                          "    <ORV_FaceProperties fp_FaceInchToPixels=\"2 0 0 2 0 0 \" fp_WidthInPixels=\"20\" "
                          "fp_HeightInPixels=\"20\">\n"
                          "    </ORV_FaceProperties>\n"
                          "  </ORV_face_start>\n";
const std::string kTail = "  <ORV_drawing_finish drawing_context=\"0\">\n  </ORV_drawing_finish>\n</ORV>\n";

std::string paint(const std::string& members)
{
    return "  <ORV_object_paint id=\"0\" drawing_context=\"0\">\n" + members + "  </ORV_object_paint>\n";
}

std::string image(const std::string& id, const std::string& attributes, const std::string& data,
                  const std::string& record, const std::string& head)
{
    return "    <ORV_object_paint.operand1>\n      <GOP_OperandImagePointer Id=\"" + id + "\" " + attributes + ">\n" +
           data + "        <GOP_OperandImage " + record +
           ">\n          <GOP_Operand go_OpType=\"GOP_OPERAND_IMAGE\" go_ColorInfo.GCM_ColorFlag=\"GCM_CF_OTHER\" "
           "go_ColorInfo.GOP_OperandColorSpace=\"GOP_OCS_INPUT\" " +
           head +
           "/>\n        </GOP_OperandImage>\n      </GOP_OperandImagePointer>\n    </ORV_object_paint.operand1>\n";
}

std::string direct(const std::string& row)
{
    return "        <imp_DirectImageData>\n          <BufferUInt8 len=\"" + std::to_string((row.size() + 1) / 3) +
           "\">\n" + row + "\n          </BufferUInt8>\n        </imp_DirectImageData>\n";
}

TEST(ToolCheck, FindsNothingInALogThatHoldsTogether)
{
    const ToolResult result = run_tool({"check", "-"}, kHead + paint("") + kTail);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(run_tool({"check", "-", "--json"}, kHead + kTail).out, "[]\n");
}

TEST(ToolCheck, WritesALineForEachFinding)
{
    const ToolResult result = run_tool({"check", "-"}, kHead + paint("") + paint("") + "</ORV>\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "line 8: id is 0 where 1 was due\nline 2: drawing_context 0 is not finished\n");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(run_tool({"check", "-", "--json"}, kHead + paint("") + paint("") + kTail).out,
              "[\n{\"line\":8,\"byte\":332,\"text\":\"id is 0 where 1 was due\"}\n]\n");
}

TEST(ToolCheck, LooksForTheFilesOfALog)
{
    const ScratchFolder folder;
    const std::string gray = "im_ImageEncoding=\"0\" im_Flags=\"[0x1] A \" im_ImageWidthPixels=\"2\" "
                             "im_ImageHeightPixels=\"1\"";
    const std::string log = folder.write(
        "log.xml", kHead +
                       paint(image("10", "imp_DirectImage=\"TRUE\" imp_DirectImageFileName=\"/gone/a-dir-10.bin\"", "",
                                   gray, "go_Count=\"3\" go_ColorSpaceFamily=\"GCM_CSF_GRAY\"")) +
                       kTail);
    ToolResult result = run_tool({"check", log});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "line 8: the file /gone/a-dir-10.bin is not read: it is outside the log's folder (see "
                          "--files-from)\n");
    EXPECT_EQ(run_tool({"check", log, "--no-files"}).status, 0);
    folder.write("a-dir-10.bin", "ab");
    EXPECT_EQ(run_tool({"check", log}).status, 0);
}

const std::string kKept = "orvlog-00000004-00000003-00000002-00000001-async-image-0000000021.tmp";
const std::string kGray = "im_ImageEncoding=\"0\" im_Flags=\"[0x1] A \" im_ImageWidthPixels=\"2\" "
                          "im_ImageHeightPixels=\"2\"";
const std::string kGrayHead = "go_Count=\"3\" go_ColorSpaceFamily=\"GCM_CSF_GRAY\"";

// A log whose only image has its bytes in a file of that name.
std::string log_with_file(const std::string& name)
{
    return kHead +
           paint(
               image("10", "imp_DirectImage=\"TRUE\" imp_DirectImageFileName=\"" + name + "\"", "", kGray, kGrayHead)) +
           kTail;
}

const std::string kNan = "    <GGO_Point gpf_X=\"nan\" gpf_Y=\"0\"/>\n";

TEST(ToolCheck, TellsErrorsFromNotes)
{
    const std::string log = kHead + paint(kNan) + kTail;
    ToolResult result = run_tool({"check", "-"}, log);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "line 7: note: gpf_X of GGO_Point is not finite: nan\n");
    result = run_tool({"check", "-", "--strict", "--json"}, log);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "[\n{\"line\":7,\"byte\":310,\"text\":\"gpf_X of GGO_Point is not finite: nan\","
                          "\"note\":true}\n]\n");
    EXPECT_EQ(run_tool({"check", "-", "--strict"}, kHead + kTail).status, 0);
    EXPECT_EQ(run_tool({"check", "-"}, kHead + paint(kNan) + paint("") + kTail).status, 1);
}

TEST(ToolCheck, AddsUpWhatRepeats)
{
    std::string points;
    for (int i = 0; i < 5000; ++i)
        points += kNan;
    std::string lines;
    for (int line = 7; line < 17; ++line)
        lines += "line " + std::to_string(line) + ": note: gpf_X of GGO_Point is not finite: nan\n";
    const std::string log = kHead + paint(points) + paint("") + kTail;
    ToolResult result = run_tool({"check", "-"}, log);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, lines + "line 5008: id is 0 where 1 was due\n"
                                  "4990 more like line 7: note: gpf_X of GGO_Point is not finite: nan\n");
    result = run_tool({"check", "-", "--json"}, log);
    EXPECT_NE(result.out.find("\"note\":true,\"more\":4990}\n]\n"), std::string::npos);
    result = run_tool({"check", "-", "--all"}, log);
    EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 5001);
}

// The width in a PNG's head; 0 if it is none.
int png_size(const std::string& file)
{
    const std::string png = read_file(file);
    return png.size() > 26 && png.substr(1, 3) == "PNG" ? static_cast<unsigned char>(png[19]) : 0;
}

TEST(ToolCheck, LooksForFilesWhereTheUserSays)
{
    const ScratchFolder folder;
    std::filesystem::create_directories(folder.path("images/sub"));
    folder.write("images/sub/a-dir-10.bin", "abcd");
    const std::string log = folder.write("log.xml", log_with_file(folder.path("images/sub/a-dir-10.bin")));
    const std::string elsewhere = folder.write("images/other.xml", log_with_file("/gone/sub/a-dir-10.bin"));
    EXPECT_EQ(run_tool({"check", log}).status, 0);
    EXPECT_EQ(run_tool({"check", elsewhere}).status, 1);
    EXPECT_EQ(run_tool({"check", elsewhere, "--files-from", folder.path("images/sub")}).status, 0);
    EXPECT_EQ(run_tool({"extract", "images", elsewhere, "-o", folder.path("out")}).status, 1);
    EXPECT_EQ(
        run_tool({"extract", "images", elsewhere, "-o", folder.path("out"), "--files-from", folder.path("images/sub")})
            .status,
        0);
    EXPECT_EQ(png_size(folder.path("out/image-0-10.png")), 2);
    const std::vector<std::string> replay = {"replay", elsewhere, "--renderer", "none"};
    EXPECT_NE(run_tool(replay).err.find("a-dir-10.bin is not read: "), std::string::npos);
    EXPECT_EQ(run_tool({"replay", elsewhere, "--renderer", "none", "--files-from", folder.path("images/sub")})
                  .err.find("is not read"),
              std::string::npos);
    const ToolResult result = run_tool({"check", log, "--files-from", folder.path("gone")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: " + folder.path("gone") + ": No such file or directory\n");
}

TEST(ToolExtract, ReadsNoFilesThatNoJobCanHaveLeft)
{
    const ScratchFolder folder;
    std::filesystem::create_directory(folder.path("in"));
    folder.write("out-dir-10.bin", "secret");
    folder.write("in/notes.txt", "secret");
    std::filesystem::create_symlink("../out-dir-10.bin", folder.path("in/link-dir-10.bin"));
    std::filesystem::create_directory_symlink("..", folder.path("in/up"));
    ASSERT_EQ(run_program({"mkfifo", folder.path("in/pipe-dir-10.bin")}).status, 0);
    std::filesystem::create_symlink("/dev/zero", folder.path("in/zero-dir-10.bin"));
    for (const std::string& name :
         {std::string("/etc/passwd"), std::string("/dev/zero"), std::string("notes.txt"), folder.path("out-dir-10.bin"),
          std::string("../out-dir-10.bin"), std::string("link-dir-10.bin"), std::string("up/out-dir-10.bin"),
          std::string("pipe-dir-10.bin"), std::string("zero-dir-10.bin"), kKept})
    {
        const std::string log = folder.write("in/log.xml", log_with_file(name));
        const ToolResult result =
            run_program({"timeout", "20", ORVLOG_TOOL, "extract", "images", log, "-o", folder.path("extracted")});
        EXPECT_EQ(result.status, 1) << name;
        EXPECT_EQ(result.err.find("orvlog: " + log + ": the file " + name + " is not read: "), 0U) << result.err;
        EXPECT_EQ(read_file(folder.path("extracted/manifest.json")).find("image-0"), std::string::npos) << name;
        const ToolResult checked = run_program({"timeout", "20", ORVLOG_TOOL, "check", log});
        EXPECT_EQ(checked.status, 1) << name;
        EXPECT_EQ(checked.out.find("line 8: the file " + name + " is not read: "), 0U) << checked.out;
        const ToolResult played = run_program({"timeout", "20", ORVLOG_TOOL, "replay", log, "--renderer", "none"});
        EXPECT_NE(played.err.find("the file " + name + " is not read: "), std::string::npos) << played.err;
    }
}

TEST(ToolExtract, SaysWhyAFolderCannotBeMade)
{
    const ScratchFolder folder;
    const std::string file = folder.write("file", "");
    EXPECT_EQ(run_tool({"extract", "images", kEveryCall, "-o", file + "/out"}).err,
              "orvlog: " + file + "/out/manifest.json: Not a directory\n");
}

TEST(ToolCheck, WhatIsNoLogIsSaid)
{
    const ToolResult result = run_tool({"check", "-"}, "nothing");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "orvlog: -: not a log\n");
}

// From where a call begins to behind its end.
std::string lines_of(const std::string& log, const std::string& begin, const std::string& end)
{
    const size_t at = log.find(begin);
    return log.substr(at, log.find(end, at) + end.size() - at);
}

TEST(ToolShow, ShowsTheLinesOfACall)
{
    const std::string log = read_file(kEveryCall);
    const std::string call = lines_of(log, "  <ORV_object_paint id=\"5\"", "  </ORV_object_paint>\n");
    EXPECT_GT(call.size(), 3000U);
    ToolResult result = run_tool({"show", kEveryCall, "5"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, call);
    EXPECT_EQ(run_tool({"show", "-", "5"}, log).out, call);
    const ScratchFolder folder;
    ASSERT_EQ(run_tool({"pack", kEveryCall, "-o", folder.path("coded")}).status, 0);
    EXPECT_EQ(run_tool({"show", folder.path("coded"), "5"}).out, call);
    EXPECT_EQ(run_tool({"show", kEveryCall,
                        "line:" + std::to_string(
                                      1 + std::count(log.begin(),
                                                     log.begin() + static_cast<std::ptrdiff_t>(log.find(call)), '\n'))})
                  .out,
              call);
    EXPECT_EQ(run_tool({"show", kEveryCall, "byte:" + std::to_string(log.find(call) + 2)}).out, call);
    EXPECT_EQ(run_tool({"show", kEveryCall, "--line", "2"}).out,
              "  <ORV_document_start document_context=\"0\" document_id=\"1\" font_engine_functions=\"TRUE\" "
              "fp_EngineIdGet=\"document\" GfpId=\"0\">\n  </ORV_document_start>\n");
}

TEST(ToolShow, ShowsWhatIsLeftOfACall)
{
    const std::string log = kHead + "  <ORV_object_paint id=\"0\" drawing_context=\"0\">\n    <ORV_object_paint.op>\n";
    const ToolResult result = run_tool({"show", "-", "0"}, log);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "  <ORV_object_paint id=\"0\" drawing_context=\"0\">\n    <ORV_object_paint.op>\n");
}

TEST(ToolShow, ShowsATree)
{
    const std::string log = kHead +
                            paint("    <A b=\"1 \">\n      <BufferUInt8 len=\"2\">\n0a ff \n      </BufferUInt8>\n"
                                  "      <BufferFloat len=\"1\">\n1.5 \n      </BufferFloat>\n    </A>\n") +
                            kTail;
    const ToolResult result = run_tool({"show", "-", "0", "--json"}, log);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, R"X({
  "name": "ORV_object_paint",
  "line": 6,
  "byte": 262,
  "attributes": {"id":"0","drawing_context":"0"},
  "children": [
    {
      "name": "A",
      "line": 7,
      "byte": 310,
      "attributes": {"b":"1 "},
      "children": [
        {
          "name": "BufferUInt8",
          "line": 8,
          "byte": 325,
          "attributes": {"len":"2"},
          "bytes": "0aff"
        },
        {
          "name": "BufferFloat",
          "line": 11,
          "byte": 381,
          "attributes": {"len":"1"},
          "rows": "1.5 \n"
        }
      ]
    }
  ]
}
)X");
}

TEST(ToolShow, WhatIsNotThereIsSaid)
{
    ToolResult result = run_tool({"show", kEveryCall, "99"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "orvlog: " + kEveryCall + ": has no paint 99\n");
    result = run_tool({"show", kEveryCall, "--line", "3"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: " + kEveryCall + ": has no call that begins in line 3\n");
    result = run_tool({"show", kEveryCall, "byte:600"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: " + kEveryCall + ": has no call that begins at byte 600\n");
    result = run_tool({"show", kEveryCall, "row:7"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "orvlog show: ADDRESS: calls are named by the ID of a paint, line:N or byte:N (see orvlog "
                          "show --help)\n");
    result = run_tool({"show", kEveryCall});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "orvlog: show takes either the ADDRESS of a call or its --line\n");
    result = run_tool({"show", "-", "1"}, "no");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: -: not a log\n");
}

// The width, height, bit depth and colour type in a PNG's head.
std::vector<int> png_head(const std::string& file)
{
    const std::string png = read_file(file);
    if (png.size() < 26 || png.substr(1, 3) != "PNG")
        return {};
    const auto byte = [&png](size_t at) { return static_cast<int>(static_cast<unsigned char>(png[at])); };
    return {byte(18) << 8 | byte(19), byte(22) << 8 | byte(23), byte(24), byte(25)};
}

TEST(ToolExtract, ImagesThatCanBeShownArePng)
{
    const ScratchFolder folder;
    const std::string size = "im_ImageEncoding=\"0\" im_ImageWidthPixels=\"3\" im_ImageHeightPixels=\"1\" ";
    const std::string log =
        kHead +
        paint(image("10", "imp_DirectImage=\"TRUE\"", direct("a0 "), size + "im_Flags=\"[0x1] A \"",
                    "go_Count=\"0\" go_ColorSpaceFamily=\"GCM_CSF_GRAY\"") +
              image("20", "imp_DirectImage=\"TRUE\"", direct("00 ff 00 ff 00 00 ff 00 00 00 ff ff "),
                    size + "im_Flags=\"[0x1] A \"", "go_Count=\"3\" go_ColorSpaceFamily=\"GCM_CSF_CMYK\"") +
              image("30", "imp_DirectImage=\"TRUE\" imp_IndexColorTable=\"255 0 0 0 255 0 0 0 255 9 9 9 \"",
                    direct("18 "), size + "im_Flags=\"[0x3] A \" im_IndexColorDepth=\"3\"",
                    "go_Count=\"1\" go_ColorSpaceFamily=\"GCM_CSF_RGB\"") +
              image("40", "imp_DirectImage=\"TRUE\"", direct("80 00 80 01 00 00 00 ff 00 00 ff ff "),
                    size + "im_Flags=\"[0x8005] A \"", "go_Count=\"4\" go_ColorSpaceFamily=\"GCM_CSF_GRAY\"") +
              image("50", "imp_DirectImage=\"FALSE\"", "", "im_ImageEncoding=\"7\" im_ImageWidthPixels=\"3\"",
                    "go_Count=\"3\" go_ColorSpaceFamily=\"GCM_CSF_RGB\"") +
              "  <GOP_ImageReadFn Id=\"50\" return=\"TRUE\" img_returned=\"2\">\n    <img_buf>\n"
              "      <BufferUInt8 len=\"2\">\n68 69 \n      </BufferUInt8>\n    </img_buf>\n  </GOP_ImageReadFn>\n") +
        kTail;
    const ToolResult result = run_tool({"extract", "images", "-", "-o", folder.path("out")}, log);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "5 images in " + folder.path("out") + "/manifest.json\n");
    EXPECT_EQ(png_head(folder.path("out/image-0-10.png")), (std::vector<int>{3, 1, 8, 0}));
    EXPECT_EQ(png_head(folder.path("out/image-0-20.png")), (std::vector<int>{3, 1, 8, 2}));
    EXPECT_EQ(png_head(folder.path("out/image-0-30.png")), (std::vector<int>{3, 1, 8, 2}));
    EXPECT_EQ(png_head(folder.path("out/image-0-40.png")), (std::vector<int>{3, 1, 16, 4}));
    EXPECT_EQ(read_file(folder.path("out/image-0-50.bin")), "hi");
    EXPECT_EQ(read_file(folder.path("out/manifest.json")), R"X({
"log": "-",
"what": "images",
"files": [
{"file":"image-0-10.png","call":0,"kind":"object_paint","page":1,"line":6,"image":10,"width":3,"height":1,"bytes":1,"missing_bytes":0},
{"file":"image-0-20.png","call":0,"kind":"object_paint","page":1,"line":6,"image":20,"width":3,"height":1,"bytes":12,"missing_bytes":0},
{"file":"image-0-30.png","call":0,"kind":"object_paint","page":1,"line":6,"image":30,"width":3,"height":1,"bytes":1,"missing_bytes":0},
{"file":"image-0-40.png","call":0,"kind":"object_paint","page":1,"line":6,"image":40,"width":3,"height":1,"bytes":12,"missing_bytes":0},
{"file":"image-0-50.bin","call":0,"kind":"object_paint","page":1,"line":6,"image":50,"width":3,"height":0,"bytes":2,"missing_bytes":0}
]
}
)X");
}

TEST(ToolExtract, ImagesFromFilesBeside)
{
    const ScratchFolder folder;
    const std::string gray = "im_ImageEncoding=\"0\" im_Flags=\"[0x1] A \" im_ImageWidthPixels=\"2\" "
                             "im_ImageHeightPixels=\"2\"";
    const std::string head = "go_Count=\"3\" go_ColorSpaceFamily=\"GCM_CSF_GRAY\"";
    const std::string prepare = "  <GOP_ImageKeepFn Id=\"20\" async_img_log_file_name=\"" + kKept +
                                "\" return=\"TRUE\">\n"
                                "  </GOP_ImageKeepFn>\n";
    const std::string log = folder.write(
        "log",
        kHead +
            paint(image("10", "imp_DirectImage=\"TRUE\" imp_DirectImageFileName=\"d-dir-10.bin\"", "", gray, head) +
                  image("20", "imp_DirectImage=\"FALSE\"", "", gray, head) + prepare +
                  image("30", "imp_DirectImage=\"TRUE\" imp_DirectImageFileName=\"none-dir-30.bin\"", "", gray, head)) +
            kTail);
    folder.write("d-dir-10.bin", "abcd");
    folder.write(kKept,
                 "<GOP_ImageReadFn Id=\"20\" return=\"TRUE\" img_returned=\"2\" ImageFileName=\"r-img-20.bin\">\n"
                 "</GOP_ImageReadFn>\n"
                 "<GOP_ImageReadFn Id=\"20\" return=\"TRUE\" img_returned=\"2\" ImageFileName=\"r-img-20.bin\">\n"
                 "</GOP_ImageReadFn>\n");
    folder.write("r-img-20.bin", "wxyz");
    const ToolResult result = run_tool({"extract", "images", log, "-o", folder.path("out"), "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "{\"files\":3,\"manifest\":\"" + folder.path("out") + "/manifest.json\"}\n");
    EXPECT_EQ(result.err, "orvlog: " + log + ": the file none-dir-30.bin is missing\n");
    EXPECT_EQ(png_head(folder.path("out/image-0-10.png")), (std::vector<int>{2, 2, 8, 0}));
    EXPECT_EQ(png_head(folder.path("out/image-0-20.png")), (std::vector<int>{2, 2, 8, 0}));
    EXPECT_NE(read_file(folder.path("out/manifest.json")).find("{\"file\":null,\"call\":0,"), std::string::npos);
}

TEST(ToolExtract, GlyphsAsPicturesAndOutlines)
{
    const ScratchFolder folder;
    const std::string start = "    <GFI_StringStartFn GfpId=\"0\" result=\"TRUE\" unique_font_id=\"7\" "
                              "glyphdesc_to_face_pixel=\"2 0 0 -2 5 5 \"/>\n";
    const std::string glyphs =
        "    <GFI_GlyphIndexGetFn GfpId=\"0\" result=\"TRUE\" glyph_returned=\"TRUE\" glyph_index_out=\"65\"/>\n"
        "    <GFI_GlyphGetFn GfpId=\"0\" result=\"TRUE\">\n      <GFI_GlyphDescPointer>\n"
        "        <GFI_GlyphDescPointer.gdp_GlyphDesc>\n          <GFI_GlyphDescBitmap gdb_Width=\"3\" gdb_Height=\"2\" "
        "gdb_Rowstep=\"1\" gdb_BlackIsOne=\"1\">\n            <BufferUInt8 len=\"2\">\na0 \n40 \n"
        "            </BufferUInt8>\n          </GFI_GlyphDescBitmap>\n        </GFI_GlyphDescPointer.gdp_GlyphDesc>\n"
        "      </GFI_GlyphDescPointer>\n    </GFI_GlyphGetFn>\n"
        "    <GFI_GlyphGetFn GfpId=\"0\" result=\"TRUE\">\n      <GFI_GlyphDescPointer>\n"
        "        <GFI_GlyphDescPointer.gdp_GlyphDesc>\n          <GFI_GlyphDescPath "
        "gdp_WindingRule=\"GPA_WINDING_NON_ZERO\">\n          </GFI_GlyphDescPath>\n          <GPA_PathPointer>\n"
        "            <GPA_Path>\n              <GPA_Path.pa_EdgeStart>\n<GGO_Point gpf_X=\"1\" gpf_Y=\"1\"/>\n"
        "              </GPA_Path.pa_EdgeStart>\n            </GPA_Path>\n"
        "            <GPA_PathPointer.lpp_EdgePointer>\n<GPA_EdgePointer>\n<GPA_EdgePointer.ep_Pointer>\n"
        "<GPA_StraightEdge>\n<GPA_Edge ed_EdgeFlag=\"[0] GPA_SUBPATH_END_CLOSED \"/>\n<GPA_StraightEdge.se_Segment>\n"
        "<GGO_Vector gvf_X=\"2\" gvf_Y=\"0\"/>\n<GGO_Vector gvf_X=\"0\" gvf_Y=\"3\"/>\n"
        "</GPA_StraightEdge.se_Segment>\n</GPA_StraightEdge>\n</GPA_EdgePointer.ep_Pointer>\n</GPA_EdgePointer>\n"
        "            </GPA_PathPointer.lpp_EdgePointer>\n          </GPA_PathPointer>\n"
        "        </GFI_GlyphDescPointer.gdp_GlyphDesc>\n      </GFI_GlyphDescPointer>\n    </GFI_GlyphGetFn>\n";
    const ToolResult result =
        run_tool({"extract", "glyphs", "-", "-o", folder.path("out")}, kHead + paint(start + glyphs) + kTail);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(read_file(folder.path("out/glyph-0-000.pgm")),
              std::string("P5\n3 2\n255\n\x00\xff\x00\xff\x00\xff", 11 + 6));
    EXPECT_EQ(read_file(folder.path("out/glyph-0-001.svg")),
              "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"4\" height=\"6\" viewBox=\"2 -8 4 6\">\n"
              "<path transform=\"matrix(2 0 0 -2 0 0)\" fill=\"black\" fill-rule=\"nonzero\" "
              "d=\"M1,1L3,1L3,4Z\"/>\n</svg>\n");
    EXPECT_NE(read_file(folder.path("out/manifest.json")).find("\"glyph\":65,\"font\":7,\"size\":17}"),
              std::string::npos);
}

TEST(ToolExtract, PathsTicketsAndProfilesOfALog)
{
    const ScratchFolder folder;
    ToolResult result = run_tool({"extract", "paths", kEveryCall, "-o", folder.path("paths")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(read_file(folder.path("paths/path-0.svg")),
              "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"1\" height=\"2\" viewBox=\"0 0 1 2\">\n"
              "<path transform=\"matrix(1 0 0 1 0 0)\" fill=\"black\" fill-rule=\"evenodd\" "
              "d=\"M0,0L1,0C1,1 1,2 0,2Z\"/>\n</svg>\n");
    const std::string call =
        "  <ORV_group_start drawing_context=\"0\">\n    <GCM_ColorTicket id=\"1\">\n"
        "      <GXC_ColorTickets>\n      \t<CMYKRenderColorSpace>\n      </GXC_ColorTickets>\n"
        "    </GCM_ColorTicket>\n    <GCM_CsdPointer>\n      <GCM_Csd "
        "csd_Type=\"GCM_CSDTYPE_PROFILE_BUFFER\" csd_Defn.ProfileBufferSize=\"3\">\n      </GCM_Csd>\n"
        "      <BufferUInt8 len=\"3\">\n69 63 63 \n      </BufferUInt8>\n    </GCM_CsdPointer>\n"
        "  </ORV_group_start>\n";
    result = run_tool({"extract", "tickets", "-", "-o", folder.path("tickets")}, kHead + call + kTail);
    EXPECT_EQ(result.out, "1 tickets in " + folder.path("tickets") + "/manifest.json\n");
    EXPECT_EQ(read_file(folder.path("tickets/ticket-1.txt")),
              "      <GXC_ColorTickets>\n      \t<CMYKRenderColorSpace>\n      </GXC_ColorTickets>\n");
    result = run_tool({"extract", "profiles", "-", "-o", folder.path("profiles")}, kHead + call + call + kTail);
    EXPECT_EQ(result.out, "2 profiles in " + folder.path("profiles") + "/manifest.json\n");
    EXPECT_EQ(read_file(folder.path("profiles/profile-line-6-0.icc")), "icc");
    EXPECT_FALSE(std::filesystem::exists(folder.path("profiles/profile-line-19-0.icc")));
}

TEST(ToolExtract, WhatCannotBeDoneIsSaid)
{
    const ScratchFolder folder;
    ToolResult result = run_tool({"extract", "images", "-", "-o", folder.path("out")}, "nothing");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: -: not a log\n");
    EXPECT_FALSE(std::filesystem::exists(folder.path("out")));
    const std::string file = folder.write("file", "");
    result = run_tool({"extract", "images", kEveryCall, "-o", file});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: " + file + "/manifest.json: Not a directory\n");
    EXPECT_EQ(run_tool({"extract", "pixels", kEveryCall, "-o", file}).status, 2);
}

TEST(ToolLook, LogsCutAnywhereGiveAReportAndAStatus)
{
    const std::string log = read_file(kTransparent);
    const ScratchFolder folder;
    std::mt19937 random(11);
    for (int i = 0; i < 10; ++i)
    {
        std::string bent = log.substr(0, 5 + random() % (log.size() - 5));
        if (i % 2 != 0)
            bent.insert(random() % bent.size(), bent.substr(random() % bent.size(), 300));
        const std::string file = folder.write("log", "<ORV " + bent.substr(5));
        EXPECT_EQ(run_tool({"check", file}).status, 1);
        EXPECT_LE(run_tool({"show", file, "3"}).status, 1);
        EXPECT_LE(run_tool({"show", file, "3", "--json"}).status, 1);
        for (const char* what : {"images", "glyphs", "profiles", "tickets", "paths"})
            EXPECT_EQ(run_tool({"extract", what, file, "-o", folder.path("out")}).status, 0) << what;
    }
}

}  // namespace
