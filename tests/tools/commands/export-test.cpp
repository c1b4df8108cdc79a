// Logs as tables, by the command: what is in them, what isn't, and what is refused.

#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sys/stat.h>

#include <filesystem>
#include <string>

namespace
{

using namespace orvlog::test;
using nlohmann::json;

const std::string kSample = ORVLOG_SOURCE_DIR "/docs/sample.pdf";

bool has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

// A job of one page, with a text, a path behind a clip that leaves nothing of it, and an operator that nobody knows.
std::string small_log(const std::string& text = "83 101 99 114 101 116 ")
{
    return R"(<ORV ORV_VERSION="10066" LoggingMode="transparent" ORVLOG_CONTENT_VERSION="2">
  <ORV_document_start document_context="0" document_id="7" font_engine_functions="TRUE" fp_EngineIdGet="engine" GfpId="0">
  </ORV_document_start>
  <ORV_face_start document_context="0" drawing_context="0" font_engine_functions="FALSE" face_seq_number="0" pixel_placement_orientation="GPA_PP_ORIENTATION_0_DEG" pixel_placement="GPA_PLACEMENT_PS">
    <ORV_FaceProperties fp_FaceHints="[0] ORV_FACE_HINT_NONE " fp_FaceInchToPixels="100 0 0 100 0 0 " fp_WidthInPixels="200" fp_HeightInPixels="300">
    </ORV_FaceProperties>
  </ORV_face_start>
  <ORV_object_paint id="0" drawing_context="0" object_type_and_flag="1" object_hints="[0] ORV_OBJ_HINT_NONE " path_pixel_placement="GPA_PLACEMENT_PS">
    <ORV_object_paint.op>
      <GOP_Operator op_OperatorType="GOP_ROP_PDF_SEPARABLE" op_Operator="99" op_MaskMode="GOP_MASK_NONE" op_TransparencyType="GOP_TRANS_NONE" op_TransparencyFlags="[0] GOP_TRANS_FLAG_NONE " op_OperatorHints="[0] GOP_OP_HINT_NONE ">
      </GOP_Operator>
    </ORV_object_paint.op>
    <ORV_object_paint.paint_path>
      <GSH_ShapePointer>
        <GSH_ShapePointer.sp_HeaderPtr>
          <GSH_GlyphShape>
            <GSH_Shape sh_ShapeType="GSH_SHAPE_GLYPHS" sh_Hints="[0] GSH_SH_NO_HINT " sh_Transform="1 0 0 1 0 0 "/>
          </GSH_GlyphShape>
        </GSH_ShapePointer.sp_HeaderPtr>
        <GSH_ShapePointer.sp_U.glyph orvlog_font_spec_id="0" orvlog_string_desc_id="0">
          <GFI_FontSpecPointer>
            <GFI_FontSpec ufs_FontSize="12.5" ufs_Direction="GFI_TD_LEFT_TO_RIGHT" ufs_FontVolatility="GFI_FV_STATIC">
            </GFI_FontSpec>
          </GFI_FontSpecPointer>
          <GFI_StringDescPointer gsp_StringDesc.gsd_TextLen="6" gsp_StringDesc.gsd_GlyphMappingLen="0" gsp_StringDesc.gsd_StyleSimulation="0" gsp_TextPtr=")" +
           text + R"(">
          </GFI_StringDescPointer>
        </GSH_ShapePointer.sp_U.glyph>
      </GSH_ShapePointer>
    </ORV_object_paint.paint_path>
    <ORV_object_paint.clip>
      <GSH_ShapeList sl_Hints="[0] GSH_SLH_NONE " sl_ClipIn="TRUE" sl_UniqueId="5">
        <GSH_ShapeList.sl_Shape>
          <GSH_ShapePointer>
            <GSH_ShapePointer.sp_HeaderPtr>
              <GSH_MultiRectShape mrs_RectCount="1">
                <GSH_Shape sh_ShapeType="GSH_SHAPE_MULTI_RECT" sh_Hints="[0] GSH_SH_NO_HINT " sh_Transform="1 0 0 1 0 0 "/>
                <GGO_BoxInt gbi_MinX="10" gbi_MinY="10" gbi_MaxX="20" gbi_MaxY="20"/>
              </GSH_MultiRectShape>
            </GSH_ShapePointer.sp_HeaderPtr>
          </GSH_ShapePointer>
        </GSH_ShapeList.sl_Shape>
      </GSH_ShapeList>
    </ORV_object_paint.clip>
    <GFI_StringStartFn GfpId="0" result="TRUE" scaled="TRUE" unique_font_id="41" orvlog_font_spec_id="0" orvlog_string_desc_id="0"/>
  </ORV_object_paint>
</ORV>

<!--
ORVLOG: WARNING: GPA_PathPointer without a path.
-->
)";
}

json ask(const std::string& file, const std::string& question)
{
    const ToolResult result = run_tool({"query", file, question, "--json"});
    EXPECT_EQ(result.status, 0) << result.err;
    return json::parse(result.out, nullptr, false);
}

TEST(ToolExport, WritesWhatACallIs)
{
    const ScratchFolder folder;
    const std::string log = folder.write("job.xml", small_log());
    const std::string file = folder.path("jobs.sqlite");
    const ToolResult result = run_tool({"export", log, "--sqlite", file});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "1 log exported, 13 rows\n");
    EXPECT_EQ(ask(file, "SELECT name, form, state, content_version, orv_version, pages, calls, callbacks FROM jobs"),
              json::parse(R"([{"name":"job.xml","form":"plain","state":"whole","content_version":2,
                  "orv_version":10066,"pages":1,"calls":3,"callbacks":1}])"));
    EXPECT_EQ(ask(file, "SELECT call, page, width, height, width_inches, dpi_x FROM pages"),
              json::parse(R"([{"call":2,"page":1,"width":200,"height":300,"width_inches":2.0,"dpi_x":100.0}])"));
    EXPECT_EQ(
        ask(file, "SELECT call, kind, id, page, line, shut, complete FROM calls"),
        json::parse(R"([{"call":1,"kind":"document_start","id":null,"page":null,"line":2,"shut":null,"complete":1},
                  {"call":2,"kind":"face_start","id":null,"page":1,"line":4,"shut":null,"complete":1},
                  {"call":3,"kind":"object_paint","id":0,"page":1,"line":8,"shut":1,"complete":1}])"));
    EXPECT_EQ(ask(file, "SELECT role, type, operation, known, blend FROM operators"),
              json::parse(R"([{"role":"op","type":"GOP_ROP_PDF_SEPARABLE","operation":99,"known":0,"blend":1}])"));
    EXPECT_EQ(ask(file, "SELECT item, role, clip, kind, parts FROM shapes"),
              json::parse(R"([{"item":1,"role":"paint_path","clip":null,"kind":"GSH_SHAPE_GLYPHS","parts":null},
                  {"item":2,"role":"clip","clip":1,"kind":"GSH_SHAPE_MULTI_RECT","parts":1}])"));
    EXPECT_EQ(ask(file, "SELECT shape, size, engine_name, font FROM fonts"),
              json::parse(R"([{"shape":1,"size":12.5,"engine_name":"engine","font":41}])"));
    EXPECT_EQ(ask(file, "SELECT call, text FROM warnings"),
              json::parse(R"([{"call":3,"text":"GPA_PathPointer without a path."}])"));
}

TEST(ToolExport, WritesTheSameToFilesAsToADatabase)
{
    const ScratchFolder folder;
    const std::string log = folder.write("job.xml", small_log());
    const std::string file = folder.path("jobs.sqlite");
    ASSERT_EQ(run_tool({"export", log, "--sqlite", file}).status, 0);
    ASSERT_EQ(run_tool({"export", log, "--jsonl", folder.path("tables")}).status, 0);
    for (const std::string table : {"jobs", "calls", "operators", "shapes", "clips", "fonts", "texts", "warnings"})
    {
        const json rows = ask(file, "SELECT * FROM " + table);
        std::string lines;
        for (const json& row : rows)
            lines += row.dump() + "\n";
        std::string written;
        std::istringstream found(read_file(folder.path("tables/" + table + ".jsonl")));
        for (std::string line; std::getline(found, line);)
            written += json::parse(line).dump() + "\n";
        EXPECT_EQ(written, lines);
    }
}

TEST(ToolExport, HasEachLogOnceInAllItsForms)
{
    const ScratchFolder folder;
    const std::string log = folder.write("job.xml", small_log());
    const std::string file = folder.path("jobs.sqlite");
    ASSERT_EQ(run_program({"zstd", "-q", log, "-o", folder.path("job.xml.zst")}).status, 0);
    const ToolResult both = run_tool({"export", log, folder.path("job.xml.zst"), log, "--sqlite", file});
    EXPECT_EQ(both.status, 0) << both.err;
    EXPECT_EQ(both.out, "1 log exported, 13 rows; 2 there already\n");
    const ToolResult again = run_tool({"export", log, "--sqlite", file});
    EXPECT_EQ(again.out, "0 logs exported, 0 rows; 1 there already\n");
    EXPECT_EQ(ask(file, "SELECT count(*) AS n FROM calls"), json::parse(R"([{"n":3}])"));
}

TEST(ToolExport, TellsNoTextUnlessAsked)
{
    const ScratchFolder folder;
    std::string text = small_log();
    text += "\n<!--\nORVLOG: WARNING: Secret words\n-->\n";
    const size_t at = text.find("    </ORV_object_paint.clip>\n");
    text.insert(at, "    </Secret>\n");
    const std::string log = folder.write("job.xml", text);
    ASSERT_EQ(run_tool({"export", log, "--jsonl", folder.path("plain"), "--content"}).status, 0);
    ASSERT_EQ(run_tool({"export", log, "--jsonl", folder.path("texts"), "--texts"}).status, 0);
    std::string plain;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path("plain")))
        plain += read_file(entry.path().string());
    EXPECT_FALSE(has(plain, "Secret"));
    EXPECT_FALSE(has(plain, "536563726574"));
    EXPECT_TRUE(has(read_file(folder.path("plain/damage.jsonl")), "an end tag of '...' where none is due"));
    EXPECT_TRUE(has(read_file(folder.path("texts/texts.jsonl")), R"("text":"Secret","text_hex":"536563726574")"));
    EXPECT_TRUE(has(read_file(folder.path("texts/warnings.jsonl")), R"("text":"Secret words")"));
}

TEST(ToolExport, ExportsWhatIsWholeOfADamagedLog)
{
    const ScratchFolder folder;
    const std::string text = small_log();
    const std::string log = folder.write("cut.xml", text.substr(0, text.find("<GSH_MultiRectShape")));
    const std::string file = folder.path("jobs.sqlite");
    const ToolResult result = run_tool({"export", log, "--sqlite", file});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(has(result.err, "cut.xml: is cut short; what is whole was exported")) << result.err;
    EXPECT_EQ(ask(file, "SELECT call, complete FROM calls WHERE call = 3"),
              json::parse(R"([{"call":3,"complete":0}])"));
    EXPECT_EQ(ask(file, "SELECT text FROM damage"), json::parse(R"([{"text":"the log ends here, before its end"}])"));
    EXPECT_EQ(ask(file, "SELECT state FROM jobs"), json::parse(R"([{"state":"cut"}])"));
}

TEST(ToolExport, LeavesWhatIsNoExportAsItIs)
{
    const ScratchFolder folder;
    const std::string log = folder.write("job.xml", small_log());
    const std::string mine = folder.write("mine.sqlite", "not a database, but something that is dear to me");
    const ToolResult file = run_tool({"export", log, "--sqlite", mine});
    EXPECT_EQ(file.status, 1);
    EXPECT_TRUE(has(file.err, "mine.sqlite: is no database")) << file.err;
    EXPECT_EQ(read_file(mine), "not a database, but something that is dear to me");
    std::filesystem::create_directory(folder.path("tables"));
    folder.write("tables/calls.jsonl", "mine\n");
    const ToolResult tables = run_tool({"export", log, "--jsonl", folder.path("tables")});
    EXPECT_EQ(tables.status, 1);
    EXPECT_TRUE(has(tables.err, "calls.jsonl: is not of an export; nothing was written")) << tables.err;
    EXPECT_EQ(read_file(folder.path("tables/calls.jsonl")), "mine\n");
}

TEST(ToolExport, NamesWhatItCannotExportAndGoesOn)
{
    const ScratchFolder folder;
    const std::string log = folder.write("job.xml", small_log());
    const std::string other = folder.write("other.xml", "<html></html>\n");
    const ToolResult result = run_tool({"export", other, folder.path("none.xml"), log, "--jsonl", folder.path("t")});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(has(result.err, "other.xml: not a log\n")) << result.err;
    EXPECT_TRUE(has(result.err, "none.xml: No such file or directory\n")) << result.err;
    EXPECT_EQ(result.out, "1 log exported, 13 rows\n");
    EXPECT_EQ(run_tool({"export", log}).status, 2);
    EXPECT_EQ(run_tool({"export", "--sqlite", folder.path("x")}).status, 2);
}

TEST(ToolExport, CompressesAFolderAsItWasBegun)
{
    const ScratchFolder folder;
    const std::string one = folder.write("one.xml", small_log());
    const std::string two = folder.write("two.xml", small_log("65 "));
    for (const std::string form : {"zstd", "gzip"})
    {
        const std::string tables = folder.path(form);
        ASSERT_EQ(run_tool({"export", one, "--jsonl", tables, "--compress", form}).status, 0);
        ASSERT_EQ(run_tool({"export", two, "--jsonl", tables}).status, 0);
        const ToolResult other = run_tool({"export", two, "--jsonl", tables, "--compress", "none"});
        EXPECT_EQ(other.status, 1);
        EXPECT_TRUE(has(other.err, "its files have the compression " + form)) << other.err;
        const ToolResult lines =
            run_program({form, "-dc", tables + (form == "zstd" ? "/calls.jsonl.zst" : "/calls.jsonl.gz")});
        EXPECT_EQ(std::count(lines.out.begin(), lines.out.end(), '\n'), 6);
    }
}

TEST(ToolExport, TakesAwayWhatAnEndedProcessLeft)
{
    const ScratchFolder folder;
    const std::string one = folder.write("one.xml", small_log());
    const std::string two = folder.write("two.xml", small_log("65 "));
    const std::string calls = folder.path("t/calls.jsonl");
    ASSERT_EQ(run_tool({"export", one, "--jsonl", folder.path("t")}).status, 0);
    const std::string whole = read_file(calls);
    folder.write("t/calls.jsonl", whole + "{\"job\":\"half a ro");
    ASSERT_EQ(run_tool({"export", two, "--jsonl", folder.path("t")}).status, 0);
    EXPECT_TRUE(read_file(calls).starts_with(whole + "{\"job\":\""));
    EXPECT_FALSE(has(read_file(calls), "half"));
    folder.write("t/calls.jsonl", "short");
    const ToolResult short_one =
        run_tool({"export", one, folder.write("three.xml", small_log("66 ")), "--jsonl", folder.path("t")});
    EXPECT_EQ(short_one.status, 1);
    EXPECT_TRUE(has(short_one.err, "calls.jsonl: is shorter than the ledger says; nothing was written"))
        << short_one.err;
    EXPECT_EQ(read_file(calls), "short");
}

TEST(ToolExport, TellsItsTablesAsThePageDoes)
{
    const json schema = json::parse(run_tool({"export", "--schema"}).out);
    const std::string page = read_file(ORVLOG_SOURCE_DIR "/docs/tables.md");
    EXPECT_EQ(schema["tables"].size(), 19U);
    for (const json& table : schema["tables"])
    {
        const std::string head = "### " + table["name"].get<std::string>() + "\n\nA row is " +
                                 table["meaning"].get<std::string>() + ". Key: ";
        EXPECT_TRUE(has(page, head)) << head;
        std::string lines = "| Column | Type | |\n| --- | --- | --- |\n";
        for (const json& column : table["columns"])
            lines += "| `" + column["name"].get<std::string>() + "` | " + column["type"].get<std::string>() +
                     (column["null"].get<bool>() ? ", may be null" : "") + " | " +
                     column["meaning"].get<std::string>() + " |\n";
        EXPECT_TRUE(has(page, lines)) << lines;
    }
}

TEST(ToolQuery, OnlyReads)
{
    const ScratchFolder folder;
    const std::string file = folder.path("jobs.sqlite");
    ASSERT_EQ(run_tool({"export", folder.write("job.xml", small_log()), "--sqlite", file}).status, 0);
    const std::string before = read_file(file);
    for (const std::string& sql :
         {std::string("DELETE FROM jobs"), std::string("DROP TABLE jobs"), "ATTACH '" + folder.path("x") + "' AS x",
          std::string("PRAGMA user_version = 7"), std::string("SELECT load_extension('x')"),
          std::string("CREATE TEMP TABLE t (x)"), std::string("VACUUM INTO 'y'"), std::string("SELECT 1; SELECT 2")})
    {
        const ToolResult result = run_tool({"query", file, sql});
        EXPECT_EQ(result.status, 1) << sql;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    }
    EXPECT_EQ(read_file(file), before);
    EXPECT_FALSE(std::filesystem::exists(folder.path("x")));
    const ToolResult endless = run_tool(
        {"query", file, "WITH RECURSIVE a(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM a) SELECT count(*) FROM a",
         "--seconds", "0.2"});
    EXPECT_EQ(endless.status, 1);
    EXPECT_EQ(endless.err, "orvlog: the question takes too long; --seconds gives it more\n");
    EXPECT_EQ(run_tool({"query", file, "nosuch"}).status, 2);
    EXPECT_EQ(run_tool({"query", folder.write("text", "text"), "fonts"}).status, 1);
}

TEST(ToolQuery, SaysWhereThereIsNoDatabase)
{
    const ScratchFolder folder;
    const ToolResult asked = run_tool({"query", folder.path(""), "fonts"});
    EXPECT_EQ(asked.status, 1);
    EXPECT_TRUE(has(asked.err, ": is a folder; a question is asked of a database")) << asked.err;
    const ToolResult missing = run_tool({"query", folder.path("none"), "fonts"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(has(missing.err, "none: No such file or directory\n")) << missing.err;
}

TEST(ToolQuery, PrintsTablesJsonAndCsv)
{
    const ScratchFolder folder;
    const std::string file = folder.path("jobs.sqlite");
    ASSERT_EQ(run_tool({"export", folder.write("job.xml", small_log()), "--sqlite", file}).status, 0);
    const std::string sql = "SELECT kind, id, 'a \"b\", c' AS text FROM calls WHERE call > 1";
    EXPECT_EQ(run_tool({"query", file, sql}).out,
              "kind          id  text\nface_start    -   a \"b\", c\nobject_paint   0  a \"b\", c\n");
    EXPECT_EQ(run_tool({"query", file, sql, "--csv"}).out,
              "kind,id,text\nface_start,,\"a \"\"b\"\", c\"\nobject_paint,0,\"a \"\"b\"\", c\"\n");
    EXPECT_EQ(run_tool({"query", file, sql, "--json"}).out,
              "[\n{\"kind\":\"face_start\",\"id\":null,\"text\":\"a \\\"b\\\", c\"},\n"
              "{\"kind\":\"object_paint\",\"id\":0,\"text\":\"a \\\"b\\\", c\"}\n]\n");
}

TEST(ToolQuery, AnswersTheQuestionsThatHaveAName)
{
    const ScratchFolder folder;
    const std::string file = folder.path("jobs.sqlite");
    const std::string log = folder.write("job.xml", small_log());
    ASSERT_EQ(run_tool({"export", log, "--sqlite", file}).status, 0);
    EXPECT_EQ(ask(file, "unknown-operators")[0]["operation"], 99);
    EXPECT_EQ(ask(file, "shut-pages")[0]["paints"], 1);
    EXPECT_EQ(ask(file, "fonts")[0]["engine_name"], "engine");
    EXPECT_EQ(ask(file, "heavy-kinds")[0]["kind"], "object_paint");
    EXPECT_EQ(ask(file, "warnings")[0]["orv_version"], 10066);
    EXPECT_EQ(ask(file, "damaged-jobs"), json::array());
    const json list = json::parse(run_tool({"query", "--list", "--json"}).out);
    EXPECT_EQ(list.size(), 10U);
    const std::string page = read_file(ORVLOG_SOURCE_DIR "/docs/commands.md");
    for (const json& question : list)
        EXPECT_TRUE(has(page, "| `" + question["name"].get<std::string>() + "` | " +
                                  question["meaning"].get<std::string>() + " |\n"));
}

TEST(ToolWatch, ExportsFinishedLogsOnce)
{
    const ScratchFolder folder;
    std::filesystem::create_directory(folder.path("spool"));
    folder.write("spool/one.xml", small_log());
    folder.write("spool/copy.xml", small_log());
    folder.write("spool/open.xml", small_log("65 ").substr(0, 2000));
    folder.write("spool/text", "no log\n");
    folder.write("elsewhere.xml", small_log("66 "));
    std::filesystem::create_symlink(folder.path("elsewhere.xml"), folder.path("spool/link.xml"));
    ASSERT_EQ(mkfifo(folder.path("spool/pipe.xml").c_str(), 0600), 0);
    std::filesystem::create_directory(folder.path("spool/folder.xml"));
    const std::vector<std::string> watch = {
        "watch", folder.path("spool"), "--jsonl", folder.path("t"), "--once", "--rest", "0"};
    const ToolResult first = run_tool(watch);
    EXPECT_EQ(first.status, 0) << first.err;
    EXPECT_EQ(first.out, "copy.xml: 13 rows\n");
    EXPECT_EQ(first.err, "orvlog: 1 file is not finished, and may be later\n");
    EXPECT_EQ(run_tool(watch).out, "");
    std::vector<std::string> settled = watch;
    settled.insert(settled.end(), {"--settle", "0"});
    EXPECT_EQ(run_tool(settled).out, "open.xml: 11 rows; the log is cut short\n");
    EXPECT_EQ(run_tool(settled).out, "");
    const std::string jobs = read_file(folder.path("t/jobs.jsonl"));
    EXPECT_EQ(std::count(jobs.begin(), jobs.end(), '\n'), 2);
}

TEST(ToolWatch, SaysWhereThereIsNoFolder)
{
    const ScratchFolder folder;
    const ToolResult result = run_tool({"watch", folder.path("none"), "--jsonl", folder.path("t"), "--once"});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(has(result.err, "none: No such file or directory\n")) << result.err;
}

}  // namespace
