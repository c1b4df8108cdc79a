// Logs of which calls are left out.

#include "inspect/reduce/trimmed-text.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace
{

using namespace orvlog::inspect;

std::string expected_log(const std::string& name)
{
    std::ifstream file(std::string(ORVLOG_SOURCE_DIR "/tests/expected/") + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string trimmed(const std::string& log, const KeepPlan* plan = nullptr)
{
    std::istringstream source(log);
    TrimOptions options;
    options.plan = plan;
    TrimmedText text(source, std::move(options));
    return {std::istreambuf_iterator<char>(&text), {}};
}

std::string with_paint(const std::string& log, uint32_t id)
{
    KeepPlan plan([id](const CallTag& call) { return call.id == id; }, true);
    std::istringstream source(log);
    LogScan scan(source);
    for (orvlog::reader::Event event; scan.next(event);)
        plan.event(event, scan.text());
    plan.finish();
    return trimmed(log, &plan);
}

TEST(TrimmedText, LeavesALogOfWhichAllStaysAsItIs)
{
    size_t logs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(ORVLOG_SOURCE_DIR "/tests/expected"))
    {
        if (!entry.is_regular_file())
            continue;
        const std::string log = expected_log(entry.path().filename().string());
        if (!log.starts_with("<ORV "))
            continue;
        EXPECT_EQ(trimmed(log), log) << entry.path();
        ++logs;
    }
    EXPECT_GE(logs, 2U);
}

constexpr const char* kLog = R"X(<ORV LoggingMode="transparent">

<!--
about the job
-->
  <ORV_document_start document_context="0" document_id="7" font_engine_functions="TRUE" GfpId="0">
  </ORV_document_start>
  <ORV_face_start document_context="0" drawing_context="0" font_engine_functions="TRUE" GfpId="1" face_seq_number="1">
    <GCM_ColorTicket id="1">
      <GXC_ColorTickets>
      	<RGBRenderColorSpace>
      	</RGBRenderColorSpace>
      </GXC_ColorTickets>
    </GCM_ColorTicket>
  </ORV_face_start>

<!--
about paint 0
-->
  <ORV_object_paint id="0" drawing_context="0">
    <ORV_object_paint.operand1>
      <GOP_OperandImagePointer Id="10" op_UniqueId="1">
      </GOP_OperandImagePointer>
    </ORV_object_paint.operand1>
  </ORV_object_paint>
  <ORV_drawing_finish drawing_context="0">
  </ORV_drawing_finish>
  <GOP_ImageReleaseFn Id="10">
  </GOP_ImageReleaseFn>
  <ORV_face_start document_context="0" drawing_context="1" font_engine_functions="TRUE" GfpId="2" face_seq_number="2">
    <GCM_ColorTicket id="1">
    </GCM_ColorTicket>
  </ORV_face_start>

<!--
about paint 1
-->
  <ORV_object_paint id="1" drawing_context="1">
    <GSH_ShapePointer.sp_U.glyph orvlog_font_spec_id="4" orvlog_string_desc_id="5">
    </GSH_ShapePointer.sp_U.glyph>
    <ORV_object_paint.operand1>
      <GOP_OperandImagePointer Id="20" op_UniqueId="1">
      </GOP_OperandImagePointer>
    </ORV_object_paint.operand1>
  <GOP_ImagePrepareFn Id="20" return="TRUE">
    <GOP_OperandImagePointer Id="21" op_UniqueId="1">
    </GOP_OperandImagePointer>
  </GOP_ImagePrepareFn>
    <GFI_StringStartFn GfpId="2" result="TRUE" orvlog_font_spec_id="4" orvlog_string_desc_id="5"/>
  </ORV_object_paint>
  <GOP_ImageReleaseFn Id="21">
  </GOP_ImageReleaseFn>
  <ORV_drawing_finish drawing_context="1">
  </ORV_drawing_finish>
  <ORV_document_finish document_context="0">
  </ORV_document_finish>
</ORV>
)X";

TEST(TrimmedText, CountsNumbersAgainAndBringsTheTextOfATicket)
{
    EXPECT_EQ(with_paint(kLog, 1), R"X(<ORV LoggingMode="transparent">

<!--
about the job
-->
  <ORV_document_start document_context="0" document_id="7" font_engine_functions="TRUE" GfpId="0">
  </ORV_document_start>
  <ORV_face_start document_context="0" drawing_context="0" font_engine_functions="TRUE" GfpId="1" face_seq_number="2">
    <GCM_ColorTicket id="1">
      <GXC_ColorTickets>
      	<RGBRenderColorSpace>
      	</RGBRenderColorSpace>
      </GXC_ColorTickets>
    </GCM_ColorTicket>
  </ORV_face_start>

<!--
about paint 1
-->
  <ORV_object_paint id="0" drawing_context="0">
    <GSH_ShapePointer.sp_U.glyph orvlog_font_spec_id="0" orvlog_string_desc_id="0">
    </GSH_ShapePointer.sp_U.glyph>
    <ORV_object_paint.operand1>
      <GOP_OperandImagePointer Id="10" op_UniqueId="1">
      </GOP_OperandImagePointer>
    </ORV_object_paint.operand1>
  <GOP_ImagePrepareFn Id="10" return="TRUE">
    <GOP_OperandImagePointer Id="11" op_UniqueId="1">
    </GOP_OperandImagePointer>
  </GOP_ImagePrepareFn>
    <GFI_StringStartFn GfpId="1" result="TRUE" orvlog_font_spec_id="0" orvlog_string_desc_id="0"/>
  </ORV_object_paint>
  <GOP_ImageReleaseFn Id="11">
  </GOP_ImageReleaseFn>
  <ORV_drawing_finish drawing_context="0">
  </ORV_drawing_finish>
  <ORV_document_finish document_context="0">
  </ORV_document_finish>
</ORV>
)X");
}

TEST(TrimmedText, KeepsACutLogCut)
{
    const std::string log = kLog;
    const std::string cut = log.substr(0, log.find("  <ORV_face_start document_context=\"0\" drawing_context=\"1\""));
    std::istringstream source(cut);
    TrimmedText text(source, {});
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(&text), {}), cut);
    EXPECT_TRUE(text.is_cut());
    EXPECT_EQ(text.damage(), 0U);
}

// Such logs could lead back to themselves.
TEST(TrimmedText, ReadsNoLogThatTheLogOfAKeptImageNames)
{
    const std::string keep =
        "  <GOP_ImageKeepFn Id=\"10\" async_img_log_file_name=\"one.tmp\">\n  </GOP_ImageKeepFn>\n";
    std::istringstream source("<ORV LoggingMode=\"transparent\">\n" + keep + "</ORV>\n");
    TrimOptions options;
    int opened = 0;
    std::string said;
    options.open_file = [&](const std::string&, orvlog::reader::LogFileKind) -> orvlog::reader::LogFile
    {
        // The last one is of no account: it is there so that this ends.
        return {std::make_unique<std::istringstream>(++opened < 5 ? keep : ""), "", "", false};
    };
    options.complain = [&said](const std::string& line) { said += line + "\n"; };
    TrimmedText text(source, std::move(options));
    const std::string log(std::istreambuf_iterator<char>(&text), {});
    EXPECT_EQ(opened, 1);
    EXPECT_EQ(text.missing(), 1U);
    EXPECT_EQ(said, "the log one.tmp of a kept image is not read: it is named by that of another one\n");
    EXPECT_NE(log.find("async_img_log_file_name=\"one.tmp\""), std::string::npos);
}

// More numbers than are remembered, none of them in order.
TEST(TrimmedText, TakesNumbersThatNoLoggerGives)
{
    std::string log = "<ORV LoggingMode=\"transparent\">\n  <ORV_object_paint id=\"0\" drawing_context=\"0\">\n";
    for (uint32_t number = 70000; number > 0; --number)
        log += "    <GFI_StringStartFn GfpId=\"" + std::to_string(number) + "\" orvlog_font_spec_id=\"" +
               std::to_string(number) + "\"/>\n";
    log += "  </ORV_object_paint>\n</ORV>\n";
    const std::string made = trimmed(log);
    EXPECT_NE(made.find("<GFI_StringStartFn GfpId=\"0\" orvlog_font_spec_id=\"0\"/>"), std::string::npos);
    EXPECT_NE(made.find("<GFI_StringStartFn GfpId=\"1\" orvlog_font_spec_id=\"1\"/>\n  </ORV_object_paint>"),
              std::string::npos);
}

TEST(TrimmedText, SaysWhatIsNoLog)
{
    std::istringstream source("%PDF-1.7");
    TrimmedText text(source, {});
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(&text), {}), "");
    EXPECT_FALSE(text.is_log());
}

}  // namespace
