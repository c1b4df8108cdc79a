// SPDX-License-Identifier: GPL-2.0-or-later
//
// The sample recorded with a renderer that keeps its images: merged, the log is that of the same job without keeps.

#include "clients/pdf/job.h"
#include "tests/support/decode-text.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>

namespace
{

using namespace pdf_client;
using orvlog::test::decode_lines;
using orvlog::test::TempFolder;

struct Record
{
    std::string log;
    std::map<std::string, std::string> files;  // what lies beside it
};

Record record(bool keeps, bool base, bool compressed, bool beside)
{
    const TempFolder folder;
    JobOptions options;
    options.document = ORVLOG_SOURCE_DIR "/docs/sample.pdf";
    options.log = "log.xml";
    options.dpi = 50;
    options.base_mode = base;
    options.keep_images = keeps;
    // A job that is coded and keeps images takes that way by itself.
    options.via_temporary_log = keeps && !compressed;
    options.compressed = compressed;
    if (beside)
    {
        options.image_prefix = "beside";
    }
    const JobResult result = run_job(options);
    EXPECT_TRUE(result.errors.empty()) << result.errors.front();
    EXPECT_TRUE(result.summary.messages.empty()) << result.summary.messages.front();
    Record made;
    for (const std::string& name : folder.names())
    {
        (name == "log.xml" ? made.log : made.files[name]) = folder.read(name);
    }
    return made;
}

// Without what tells of keeping, and without the line ends around it, which a merge may put in either place.
std::string content_of(const std::string& log)
{
    static const std::regex keeping("\\s*<GOP_Image(Keep|Release)Fn [^>]*>\\s*</GOP_Image(Keep|Release)Fn>");
    return std::regex_replace(std::regex_replace(log, keeping, ""), std::regex("\\n+ *"), "\n");
}

size_t count(const std::string& text, const std::string& part)
{
    size_t found = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
    {
        found++;
    }
    return found;
}

class KeptImages : public testing::TestWithParam<std::pair<bool, bool>>
{
};

TEST_P(KeptImages, MergedLogHasTheContentOfTheJobWithoutKeepsCodedToo)
{
    const auto [base, beside] = GetParam();
    const Record plain = record(false, base, false, beside);
    const Record merged = record(true, base, false, beside);
    EXPECT_EQ(count(plain.log, "<GOP_ImageKeepFn "), 0U);
    EXPECT_EQ(count(merged.log, "<GOP_ImageKeepFn "), 3U);
    EXPECT_EQ(count(merged.log, "</GOP_ImageReleaseFn>"), 3U);
    EXPECT_EQ(count(merged.log, "async_img_log_file_name"), 0U);
    EXPECT_GE(count(plain.log, "<GOP_ImageReadFn "), 3U);
    EXPECT_TRUE(content_of(merged.log) == content_of(plain.log));
    EXPECT_EQ(plain.files.empty(), !beside);
    EXPECT_TRUE(merged.files == plain.files);
    const Record coded = record(true, base, true, beside);
    ASSERT_EQ(coded.log.substr(0, 35), "<ORV compression=\"Adaptive Huffman\"");
    EXPECT_TRUE(content_of(decode_lines(coded.log.substr(35))) == content_of(plain.log));
    EXPECT_TRUE(coded.files == plain.files);
}

INSTANTIATE_TEST_SUITE_P(
    Modes, KeptImages,
    testing::Values(std::pair(false, false), std::pair(false, true), std::pair(true, false), std::pair(true, true)),
    [](const testing::TestParamInfo<std::pair<bool, bool>>& test)
    { return std::string(test.param.first ? "Base" : "Transparent") + (test.param.second ? "WithFiles" : ""); });

}  // namespace
