// Files beside a log that are not as long as the log says.

#include "reader/check/files-due.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace
{

using namespace orvlog::reader;

constexpr char kLog[] =
    "<ORV ORVLOG_CONTENT_VERSION=\"2\">\n"
    "  <ORV_object_paint id=\"0\" drawing_context=\"0\">\n"
    "    <ORV_object_paint.operand1>\n"
    "      <GOP_OperandImagePointer Id=\"10\" imp_DirectImage=\"TRUE\" imp_DirectImageFileName=\"p-dir-10.bin\">\n"
    "        <GOP_OperandImage im_ImageEncoding=\"0\" im_NumNonalphaChans=\"1\" im_Flags=\"[0] \" im_Alpha=\"1\" "
    "im_ImageWidthPixels=\"10\" im_ImageHeightPixels=\"3\" im_Transform=\"1 0 0 1 0 0 \">\n"
    "          <GOP_Operand go_OpType=\"GOP_OPERAND_IMAGE\" go_ColorInfo=\"GOP_OCS_RENDER\" "
    "go_Count=\"3\">\n"
    "          </GOP_Operand>\n"
    "        </GOP_OperandImage>\n"
    "      </GOP_OperandImagePointer>\n"
    "    </ORV_object_paint.operand1>\n"
    "    <GOP_ImageReadFn Id=\"21\" return=\"TRUE\" skip_pixels=\"0\" img_row_step=\"4\" img_returned=\"4\" "
    "ImageFileName=\"p-img-20.bin\">\n"
    "    </GOP_ImageReadFn>\n"
    "    <GOP_ImageReadFn Id=\"21\" return=\"TRUE\" skip_pixels=\"0\" img_row_step=\"4\" img_returned=\"2\" "
    "attr_row_step=\"1\" attr_returned=\"3\" ImageFileName=\"p-img-20.bin\" AttrFileName=\"p-attr-21.bin\">\n"
    "    </GOP_ImageReadFn>\n"
    "    <GOP_ImageReadFn Id=\"21\" return=\"FALSE\" skip_pixels=\"0\" img_row_step=\"4\" img_returned=\"9\">\n"
    "    </GOP_ImageReadFn>\n"
    "    <GOP_ImageKeepFn Id=\"31\" async_img_log_file_name=\"kept.tmp\" return=\"TRUE\">\n"
    "    </GOP_ImageKeepFn>\n"
    "  </ORV_object_paint>\n"
    "</ORV>\n";

constexpr char kKept[] = "    <GOP_ImageReadFn Id=\"31\" return=\"TRUE\" skip_pixels=\"0\" img_row_step=\"4\" "
                         "img_returned=\"5\" ImageFileName=\"p-img-30.bin\">\n"
                         "    </GOP_ImageReadFn>\n"
                         "    <GOP_ImageReleaseFn Id=\"31\">\n"
                         "    </GOP_ImageReleaseFn>\n";

void write(const std::string& name, const std::string& content)
{
    std::ofstream(name, std::ios::binary) << content;
}

void write_all()
{
    write("p-dir-10.bin", std::string(30, 'd'));
    write("p-img-20.bin", "123456");
    write("p-attr-21.bin", "abc");
    write("p-img-30.bin", "12345");
    write("kept.tmp", kKept);
}

std::string lacks(const std::string& log = kLog)
{
    std::istringstream source(log);
    const FilesLacking found = find_lacking_files(source, "");
    std::string lines;
    for (const std::string& line : found.lines)
        lines += line + "\n";
    EXPECT_GE(found.count, found.lines.size());
    return lines;
}

TEST(FilesDue, NothingLacksWhereAllIsThere)
{
    const orvlog::test::TempFolder folder;
    write_all();
    EXPECT_EQ(lacks(), "");
    write("p-img-20.bin", "1234567");
    EXPECT_EQ(lacks(), "");
}

TEST(FilesDue, EveryShortOrMissingFileIsTold)
{
    const orvlog::test::TempFolder folder;
    write_all();
    write("p-dir-10.bin", std::string(29, 'd'));
    EXPECT_EQ(lacks(), "p-dir-10.bin: has 29 bytes, due were 30\n");
    write_all();
    write("p-img-20.bin", "12345");
    write("p-attr-21.bin", "");
    EXPECT_EQ(lacks(), "p-attr-21.bin: has 0 bytes, due were 3\np-img-20.bin: has 5 bytes, due were 6\n");
    write_all();
    std::remove("p-img-20.bin");
    write("p-img-30.bin", "1234");
    EXPECT_EQ(lacks(), "p-img-20.bin: is missing\np-img-30.bin: has 4 bytes, due were 5\n");
}

TEST(FilesDue, TheLogOfAKeptImageEndsWithItsRelease)
{
    const orvlog::test::TempFolder folder;
    write_all();
    const std::string kept = kKept;
    for (const size_t length : {size_t{0}, kept.find("    <GOP_ImageReleaseFn"), kept.size() - 10, size_t{50}})
    {
        write("kept.tmp", kept.substr(0, length));
        EXPECT_EQ(lacks(), "kept.tmp: the log of a kept image is cut short\n") << length;
    }
    std::remove("kept.tmp");
    EXPECT_EQ(lacks(), "kept.tmp: the log of a kept image is missing\n");
    // A keep that was refused is followed by nothing.
    write("kept.tmp", "");
    std::string refused = kLog;
    const std::string granted = "\"kept.tmp\" return=\"TRUE\"";
    refused.replace(refused.find(granted), granted.size(), "\"kept.tmp\" return=\"FALSE\"");
    EXPECT_EQ(lacks(refused), "");
}

TEST(FilesDue, AFileThatCouldNotBeMade)
{
    const orvlog::test::TempFolder folder;
    write_all();
    std::string log = kLog;
    log.insert(log.find("</ORV>"), "\n<!--\nORVLOG: WARNING: Could not open new image file\n-->\n");
    EXPECT_EQ(lacks(log), "the file of an image could not be made\n");
}

TEST(FilesDue, LinesAreFewHoweverMuchLacks)
{
    const orvlog::test::TempFolder folder;
    std::string log = "<ORV ORVLOG_CONTENT_VERSION=\"2\">\n";
    for (int i = 0; i < 100; ++i)
        log += "  <ORV_object_paint id=\"0\" drawing_context=\"0\">\n    <GOP_ImageReadFn Id=\"11\" return=\"TRUE\" "
               "img_returned=\"1\" ImageFileName=\"none-" +
               std::to_string(i) + ".bin\">\n    </GOP_ImageReadFn>\n  </ORV_object_paint>\n";
    std::istringstream source(log + "</ORV>\n");
    const FilesLacking found = find_lacking_files(source, "");
    EXPECT_EQ(found.count, 100U);
    EXPECT_EQ(found.lines.size(), FilesLacking::kMostLines);
}

}  // namespace
