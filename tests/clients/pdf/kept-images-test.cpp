// SPDX-License-Identifier: GPL-2.0-or-later
//
// The sample recorded with a renderer that keeps its images: merged, the log is that of the same job without keeps.

#include "clients/pdf/job.h"
#include "tests/support/decode-text.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string_view>
#include <vector>

namespace
{

using namespace orvlog::pdf_client;
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
        options.image_prefix = "beside";
    const JobResult result = run_job(options);
    EXPECT_TRUE(result.errors.empty()) << result.errors.front();
    EXPECT_TRUE(result.summary.messages.empty()) << result.summary.messages.front();
    Record made;
    for (const std::string& name : folder.names())
        (name == "log.xml" ? made.log : made.files[name]) = folder.read(name);
    return made;
}

// The tags and the lines of bytes, without what tells of keeping. The line end behind a keep may come behind what the
// merge has put there.
std::vector<std::string_view> content_of(std::string_view log)
{
    constexpr std::string_view kKeepEnd = "</GOP_ImageKeepFn>";
    std::vector<std::string_view> lines;
    for (size_t start = 0; start < log.size();)
    {
        const size_t end = std::min(log.find('\n', start), log.size());
        std::string_view line = log.substr(start, end - start);
        start = end + 1;
        if (const size_t at = line.find(kKeepEnd); at != std::string_view::npos)
            line.remove_prefix(at + kKeepEnd.size());
        line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
        if (!line.empty() && !line.starts_with("<GOP_ImageKeepFn ") && line.find("GOP_ImageReleaseFn") == line.npos)
            lines.push_back(line);
    }
    return lines;
}

size_t count(const std::string& text, const std::string& part)
{
    size_t found = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++found;
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
    const std::string decoded = decode_lines(coded.log.substr(35));
    EXPECT_TRUE(content_of(decoded) == content_of(plain.log));
    EXPECT_TRUE(coded.files == plain.files);
}

INSTANTIATE_TEST_SUITE_P(
    Modes, KeptImages,
    testing::Values(std::pair(false, false), std::pair(false, true), std::pair(true, false), std::pair(true, true)),
    [](const testing::TestParamInfo<std::pair<bool, bool>>& test)
    { return std::string(test.param.first ? "Base" : "Transparent") + (test.param.second ? "WithFiles" : ""); });

}  // namespace
