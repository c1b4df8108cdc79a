// What a check finds.

#include "reader/check/log-check.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

namespace
{

using namespace orvlog::reader;

using Files = std::map<std::string, std::string>;

// The findings, a line each.
std::string check(const std::string& log, const Files& files = {})
{
    std::istringstream source(log);
    std::string told;
    CheckOptions options;
    options.on_finding = [&](const Finding& finding)
    { told += std::to_string(finding.place.line) + (finding.note ? ": note: " : ": ") + finding.text + "\n"; };
    options.open_file = [&](const std::string& name, LogFileKind) -> LogFile
    {
        const auto known = files.find(name);
        if (known == files.end())
            return {nullptr, {}, "is missing", false};
        return {std::make_unique<std::istringstream>(known->second), name, "", false};
    };
    const CheckOutcome outcome = check_log(source, options);
    EXPECT_EQ(outcome.errors + outcome.notes == 0, told.empty());
    return outcome.is_log ? told : "no log\n";
}

std::string log_of(const std::string& calls)
{
    return "<ORV ORVLOG_CONTENT_VERSION=\"2\">\n" + calls + "</ORV>\n";
}

const std::string kFace = "  <ORV_face_start drawing_context=\"0\">\n  </ORV_face_start>\n";
const std::string kFinish = "  <ORV_drawing_finish drawing_context=\"0\">\n  </ORV_drawing_finish>\n";

std::string paint(const std::string& members = "")
{
    return "  <ORV_object_paint id=\"0\" drawing_context=\"0\">\n" + members + "  </ORV_object_paint>\n";
}

TEST(LogCheck, NothingIsFoundWhereNothingIsWrong)
{
    EXPECT_EQ(check(log_of("")), "");
    EXPECT_EQ(check(log_of(kFace + paint() + kFinish)), "");
    EXPECT_EQ(check("<html>"), "no log\n");
    EXPECT_EQ(check(""), "no log\n");
}

TEST(LogCheck, TheVersion)
{
    EXPECT_EQ(check("<ORV ORVLOG_CONTENT_VERSION=\"3\">\n</ORV>\n"), "1: the content version is '3', known is 2\n");
}

TEST(LogCheck, NumbersRiseByOne)
{
    EXPECT_EQ(check(log_of(kFace + paint() + paint() + kFinish)), "6: id is 0 where 1 was due\n");
    EXPECT_EQ(check(log_of("  <ORV_document_start document_context=\"1\">\n  </ORV_document_start>\n"
                           "  <ORV_document_finish document_context=\"1\">\n  </ORV_document_finish>\n")),
              "2: document_context is 1 where 0 was due\n");
    EXPECT_EQ(check(log_of("  <ORV_resource_start drawing_context=\"0\" resource_id=\"4\">\n  </ORV_resource_start>\n" +
                           kFinish)),
              "2: resource_id is 4 where 0 was due\n");
    EXPECT_EQ(check(log_of("  <ORV_face_start drawing_context=\"0\" GfpId=\"1\">\n  </ORV_face_start>\n" + kFinish)),
              "2: GfpId is 1 where 0 was due\n");
    // A memory context may have brought one that stands nowhere.
    EXPECT_EQ(
        check(log_of("  <ORV_memory_context_start drawing_context=\"0\">\n  </ORV_memory_context_start>\n" + kFinish +
                     "  <ORV_face_start drawing_context=\"1\" GfpId=\"1\">\n  </ORV_face_start>\n"
                     "  <ORV_drawing_discard drawing_context=\"1\">\n  </ORV_drawing_discard>\n")),
        "");
}

TEST(LogCheck, WhatIsNotBegunAndWhatIsNotEnded)
{
    EXPECT_EQ(check(log_of(paint())), "2: drawing_context 0 was never started\n");
    EXPECT_EQ(check(log_of(kFace)), "2: drawing_context 0 is not finished\n");
    EXPECT_EQ(check(log_of(kFace + kFinish + paint())), "6: drawing_context 0 is finished\n");
    EXPECT_EQ(check(log_of("  <ORV_document_start document_context=\"0\">\n  </ORV_document_start>\n")),
              "2: document_context 0 is not finished\n");
    EXPECT_EQ(check(log_of("  <ORV_face_start document_context=\"5\" drawing_context=\"0\">\n  </ORV_face_start>\n" +
                           kFinish)),
              "2: document_context 5 is not open\n");
    const std::string start = "  <ORV_group_start drawing_context=\"0\">\n  </ORV_group_start>\n";
    const std::string finish = "  <ORV_group_finish drawing_context=\"0\" replay_group=\"FALSE\">\n"
                               "  </ORV_group_finish>\n";
    EXPECT_EQ(check(log_of(kFace + start + kFinish)), "6: the drawing ends with 1 open groups\n");
    EXPECT_EQ(check(log_of(kFace + start + finish + finish + kFinish)),
              "4: note: nothing is drawn into a group\n8: a group is finished that was not started\n");
    const std::string resource = "  <ORV_resource_paint drawing_context=\"0\" resource_id=\"7\">\n"
                                 "  </ORV_resource_paint>\n";
    EXPECT_EQ(check(log_of(kFace + resource + kFinish)), "4: resource_id 7 was never started\n");
}

TEST(LogCheck, EnginesAndTickets)
{
    EXPECT_EQ(check(log_of(kFace + paint("    <GFI_StringStartFn GfpId=\"2\" result=\"TRUE\"/>\n") + kFinish)),
              "5: GfpId 2 is of no font engine\n");
    EXPECT_EQ(check(log_of("  <ORV_face_start drawing_context=\"0\">\n    <GCM_ColorTicket id=\"2\">\n"
                           "    </GCM_ColorTicket>\n  </ORV_face_start>\n" +
                           kFinish)),
              "3: ticket 2 comes where 1 was due\n");
}

std::string image(const std::string& attributes, const std::string& data)
{
    return "    <ORV_object_paint.operand1>\n      <GOP_OperandImagePointer " + attributes + ">\n" + data +
           "        <GOP_OperandImage im_ImageEncoding=\"0\" im_Flags=\"[0x1] A \" im_ImageWidthPixels=\"2\" "
           "im_ImageHeightPixels=\"3\">\n"
           "          <GOP_Operand go_OpType=\"GOP_OPERAND_IMAGE\" go_ColorInfo.GCM_ColorFlag=\"GCM_CF_OTHER\" "
           "go_ColorInfo.GOP_OperandColorSpace=\"GOP_OCS_INPUT\" go_Count=\"3\" "
           "go_ColorSpaceFamily=\"GCM_CSF_GRAY\"/>\n"
           "        </GOP_OperandImage>\n      </GOP_OperandImagePointer>\n    </ORV_object_paint.operand1>\n";
}

TEST(LogCheck, ImagesInTheLog)
{
    const auto direct = [](const char* len, const char* row)
    {
        return "        <imp_DirectImageData>\n          <BufferUInt8 len=\"" + std::string(len) + "\">\n" + row +
               "\n          </BufferUInt8>\n        </imp_DirectImageData>\n";
    };
    const std::string good = image("Id=\"10\" imp_DirectImage=\"TRUE\"", direct("6", "00 01 02 03 04 05 "));
    EXPECT_EQ(check(log_of(kFace + paint(good) + kFinish)), "");
    EXPECT_EQ(check(log_of(kFace + paint(image("Id=\"10\" imp_DirectImage=\"TRUE\"", direct("5", "00 01 02 03 04 "))) +
                           kFinish)),
              "6: image 10 has 5 bytes, due were 6\n");
    EXPECT_EQ(
        check(log_of(kFace + paint(image("Id=\"10\" imp_DirectImage=\"TRUE\"", direct("7", "00 01 02 03 04 05 "))) +
                     kFinish)),
        "8: BufferUInt8 holds 6 values, due were 7\n");
    EXPECT_EQ(check(log_of(kFace + paint(image("Id=\"30\"", "")) + kFinish)),
              "6: an image has the Id 30 where 10 was due\n");
    const auto read = [](const char* id, const char* returned, const char* row)
    {
        return "    <GOP_ImageReadFn Id=\"" + std::string(id) +
               "\" return=\"TRUE\" img_row_step=\"4\" img_returned=\"" + returned +
               "\">\n    <img_buf>\n    <BufferUInt8 len=\"" + returned + "\">\n" + row +
               "\n    </BufferUInt8>\n    </img_buf>\n    </GOP_ImageReadFn>\n";
    };
    const std::string end =
        "    <GOP_ImageReadFn Id=\"10\" return=\"TRUE\" img_returned=\"0\">\n    <img_buf>\n"
        "    </img_buf>\n    </GOP_ImageReadFn>\n    <GOP_ImageFinishFn Id=\"10\" return=\"TRUE\">\n"
        "    </GOP_ImageFinishFn>\n";
    // Rows may lie farther from one another than they are long.
    const std::string two = read("10", "8", "00 01 00 00 02 03 00 00 ");
    const std::string one = read("10", "4", "04 05 00 00 ");
    EXPECT_EQ(check(log_of(kFace + paint(image("Id=\"10\"", "") + two + one + end) + kFinish)), "");
    EXPECT_EQ(check(log_of(kFace + paint(image("Id=\"10\"", "") + two + end) + kFinish)),
              "23: note: image 10 has 4 bytes, due were 6\n");
    EXPECT_EQ(check(log_of(kFace + paint(image("Id=\"10\"", "") + read("21", "4", "04 05 00 00 ")) + kFinish)),
              "12: image 21 is not known\n");
}

TEST(LogCheck, FilesBeside)
{
    const std::string direct = image("Id=\"10\" imp_DirectImage=\"TRUE\" imp_DirectImageFileName=\"a-dir-10.bin\"", "");
    EXPECT_EQ(check(log_of(kFace + paint(direct) + kFinish), {{"a-dir-10.bin", "123456"}}), "");
    EXPECT_EQ(check(log_of(kFace + paint(direct) + kFinish), {{"a-dir-10.bin", "12345"}}),
              "6: the file a-dir-10.bin has 5 bytes, due were 6\n");
    EXPECT_EQ(check(log_of(kFace + paint(direct) + kFinish)), "6: the file a-dir-10.bin is missing\n");
    const std::string reads = image("Id=\"10\"", "") +
                              "    <GOP_ImageReadFn Id=\"10\" return=\"TRUE\" img_returned=\"4\" ImageFileName=\"i\">\n"
                              "    </GOP_ImageReadFn>\n"
                              "    <GOP_ImageReadFn Id=\"10\" return=\"TRUE\" img_returned=\"2\" ImageFileName=\"i\">\n"
                              "    </GOP_ImageReadFn>\n";
    EXPECT_EQ(check(log_of(kFace + paint(reads) + kFinish), {{"i", "123456"}}), "");
    EXPECT_EQ(check(log_of(kFace + paint(reads) + kFinish), {{"i", "1234"}}),
              "14: the file i has 4 bytes, due were 6\n");
    const std::string keep = image("Id=\"10\"", "") + "    <GOP_ImageKeepFn Id=\"10\" async_img_log_file_name=\"k\" "
                                                      "return=\"TRUE\">\n    </GOP_ImageKeepFn>\n";
    EXPECT_EQ(check(log_of(kFace + paint(keep) + kFinish)), "12: the log k of a kept image is missing\n");
    EXPECT_EQ(check(log_of(kFace + paint(keep) + kFinish), {{"k", ""}}), "");
    EXPECT_EQ(check(log_of(kFace + paint(keep) + kFinish), {{"k", "  <GOP_ImageReleaseFn Id=\"40\">\n"}}),
              "12: k, line 2: the log ends here, before its end\n12: k, line 1: image 40 is not known\n");
}

TEST(LogCheck, NumbersThatAreNotFiniteAndEmptyClips)
{
    EXPECT_EQ(check(log_of(kFace +
                           paint("    <GGO_Point gpf_X=\"nan\" gpf_Y=\"0\"/>\n"
                                 "    <A b=\"1 -inf 2 \" val=\"nan\" c=\"nine\" d=\"info\"/>\n") +
                           kFinish)),
              "5: note: gpf_X of GGO_Point is not finite: nan\n6: note: b of A is not finite: 1 -inf 2 \n");
    const std::string clip =
        "    <ORV_object_paint.clip>\n      <GSH_ShapeList sl_ClipIn=\"TRUE\">\n        <GSH_ShapeList.sl_Shape>\n"
        "          <GSH_ShapePointer>\n            <GSH_ShapePointer.sp_HeaderPtr>\n"
        "              <GSH_ImageRectShape irs_ImageHeight=\"HEIGHT\" irs_ImageWidth=\"5\">\n"
        "                <GSH_Shape sh_ShapeType=\"GSH_SHAPE_IMAGE_RECT\" sh_Transform=\"1 0 0 1 0 0 \"/>\n"
        "              </GSH_ImageRectShape>\n            </GSH_ShapePointer.sp_HeaderPtr>\n"
        "          </GSH_ShapePointer>\n        </GSH_ShapeList.sl_Shape>\n      </GSH_ShapeList>\n"
        "    </ORV_object_paint.clip>\n";
    const auto high = [&clip](const char* height)
    {
        std::string text = clip;
        return text.replace(text.find("HEIGHT"), 6, height);
    };
    EXPECT_EQ(check(log_of(kFace + paint(high("1")) + kFinish)), "");
    EXPECT_EQ(check(log_of(kFace + paint(high("0")) + kFinish)), "6: note: a clip is empty\n");
}

TEST(LogCheck, DamageIsAFinding)
{
    EXPECT_EQ(
        check("<ORV ORVLOG_CONTENT_VERSION=\"2\">\n" + kFace + "  <ORV_object_paint id=\"0\" drawing_context=\"0\">\n"),
        "5: the log ends here, before its end\n4: in flight: ORV_object_paint 0, line 4\n"
        "2: drawing_context 0 is not finished\n");
}

}  // namespace
