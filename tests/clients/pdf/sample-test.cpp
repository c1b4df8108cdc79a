// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/job.h"
#include "clients/pdf/poppler/pdf-document.h"
#include "tests/support/fake-renderer.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace
{

using namespace orvlog::pdf_client;
using orvlog::test::FakeRenderer;

const std::string sample = ORVLOG_SOURCE_DIR "/docs/sample.pdf";

std::string content_of(const std::string& name)
{
    std::ifstream input(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
}

class WorkingFolder
{
public:
    WorkingFolder()
    {
        static int number = 0;
        path_ = std::filesystem::temp_directory_path() /
                ("orvlog-sample-" + std::to_string(getpid()) + "-" + std::to_string(++number));
        std::filesystem::create_directories(path_);
    }
    ~WorkingFolder()
    {
        std::filesystem::remove_all(path_);
    }
    std::string file(const std::string& name) const
    {
        return (path_ / name).string();
    }
    std::string folder() const
    {
        return path_.string();
    }

private:
    std::filesystem::path path_;
};

TEST(Sample, ComesFromItsMaker)
{
    const WorkingFolder folder;
    const std::string made = folder.file("sample.pdf");
    ASSERT_EQ(std::system((ORVLOG_SOURCE_DIR "/clients/pdf/sample/make-sample " + made).c_str()), 0);
    EXPECT_TRUE(content_of(made) == content_of(sample));
    EXPECT_LT(content_of(sample).size(), 100000U);
}

TEST(Sample, BecomesTheCallsThatItShows)
{
    std::string error;
    const auto complain = [](const std::string& line) { ADD_FAILURE() << line; };
    const std::unique_ptr<PdfDocument> document = PdfDocument::open(sample, complain, error);
    ASSERT_NE(document, nullptr) << error;
    EXPECT_EQ(document->page_count(), 3);
    EXPECT_EQ(document->page_size(1).width, 595);
    EXPECT_EQ(document->page_size(1).height, 842);
    FakeRenderer fake;
    Painter painter(fake.get(), complain);
    ASSERT_TRUE(painter.begin_document(1));
    uint64_t calls[3][5] = {};
    for (int page = 1; page <= 3; ++page)
    {
        const uint32_t before[] = {fake.count("object_paint"), fake.count("object_paint_and_stroke"),
                                   fake.count("group_start"), fake.count("resource_start"),
                                   fake.count("resource_paint")};
        ASSERT_TRUE(painter.begin_page({static_cast<uint32_t>(page), 794, 1123, 595 / 72.0, 842 / 72.0, 96, nullptr}));
        EXPECT_TRUE(document->paint_page(page, painter, [] { return false; }));
        painter.end_page();
        const uint32_t after[] = {fake.count("object_paint"), fake.count("object_paint_and_stroke"),
                                  fake.count("group_start"), fake.count("resource_start"),
                                  fake.count("resource_paint")};
        for (int i = 0; i < 5; ++i)
            calls[page - 1][i] = after[i] - before[i];
    }
    painter.end_document();
    EXPECT_EQ(painter.counts().refused, 0U);
    // Fills and images; strokes and runs of text; groups; pattern cells, and how often they are painted.
    const uint64_t expected[3][5] = {{16, 82, 1, 0, 0}, {45, 5, 1, 3, 3}, {51, 31, 4, 0, 0}};
    for (int page = 0; page < 3; ++page)
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(calls[page][i], expected[page][i]) << "page " << page + 1 << " kind " << i;
    EXPECT_EQ(fake.count("resource_destroy"), 3U);
}

JobOptions sample_job(const WorkingFolder& folder)
{
    JobOptions options;
    options.document = sample;
    options.log = folder.file("log.xml");
    options.dpi = 50;
    options.check = true;
    return options;
}

void expect_sound(const JobResult& result)
{
    EXPECT_TRUE(result.started);
    EXPECT_TRUE(result.errors.empty()) << result.errors.front();
    EXPECT_TRUE(result.summary.messages.empty()) << result.summary.messages.front();
    ASSERT_TRUE(result.summary.check.has_value());
    EXPECT_TRUE(result.summary.check->same);
    EXPECT_EQ(result.summary.check->pixels_different, 0U);
    EXPECT_EQ(result.summary.check->pages_compared, 3U);
    EXPECT_EQ(result.summary.calls.refused, 0U);
    EXPECT_EQ(result.summary.pages, 3);
    EXPECT_EQ(result.summary.tickets_retained, result.summary.tickets_released);
}

TEST(SampleJob, LooksTheSameWithAndWithoutTheLogger)
{
    const WorkingFolder folder;
    JobOptions options = sample_job(folder);
    options.png_folder = folder.folder();
    int last_done = 0;
    options.progress = [&](int done, int total)
    {
        EXPECT_EQ(done, last_done + 1);
        EXPECT_EQ(total, 3);
        last_done = done;
    };
    const JobResult result = run_job(options);
    expect_sound(result);
    EXPECT_EQ(last_done, 3);
    for (const char* name : {"sample-001.png", "sample-002.png", "sample-003.png"})
        EXPECT_TRUE(std::filesystem::exists(folder.file(name))) << name;
    // Where text ends is known to both sides.
    EXPECT_GT(result.summary.calls.end_points, 20U);
    EXPECT_LT(result.summary.calls.worst_end_point, 1e-9);
    const std::string log = content_of(options.log);
    EXPECT_EQ(static_cast<size_t>(result.summary.log_bytes), log.size());
    EXPECT_EQ(log.substr(0, 30), "<ORV MIRDA_TOLMA_VERSION=\"1003");
    EXPECT_EQ(log.substr(log.size() - 7), "</ORV>\n");
    EXPECT_NE(log.find("<ORV_object_paint_and_stroke id="), std::string::npos);
}

TEST(SampleJob, LooksTheSameInBaseMode)
{
    const WorkingFolder folder;
    JobOptions options = sample_job(folder);
    options.base_mode = true;
    options.image_prefix = folder.file("beside");
    expect_sound(run_job(options));
}

TEST(SampleJob, LooksTheSameWithKeptImages)
{
    const WorkingFolder folder;
    JobOptions options = sample_job(folder);
    options.keep_images = true;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.folder());
    expect_sound(run_job(options));
    std::filesystem::current_path(before);
}

TEST(SampleJob, LooksTheSameWhenTheLogIsCodedAndMerged)
{
    const WorkingFolder folder;
    JobOptions options = sample_job(folder);
    options.keep_images = true;
    options.via_temporary_log = true;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.folder());
    expect_sound(run_job(options));
    const int64_t plain = static_cast<int64_t>(content_of(options.log).size());
    options.compressed = true;
    const JobResult coded = run_job(options);
    std::filesystem::current_path(before);
    expect_sound(coded);
    EXPECT_EQ(content_of(options.log).substr(0, 35), "<ORV compression=\"Adaptive Huffman\"");
    EXPECT_LT(coded.summary.log_bytes, plain);
}

TEST(SampleJob, LogsWithoutARenderer)
{
    const WorkingFolder folder;
    JobOptions options = sample_job(folder);
    options.renderer = false;
    options.check = false;
    options.base_mode = true;
    options.first_page = 2;
    options.last_page = 2;
    const JobResult result = run_job(options);
    EXPECT_TRUE(result.errors.empty()) << result.errors.front();
    EXPECT_EQ(result.summary.pages, 1);
    const std::string log = content_of(options.log);
    EXPECT_NE(log.find("face_seq_number=\"2\""), std::string::npos);
    EXPECT_EQ(log.find("face_seq_number=\"1\""), std::string::npos);
}

TEST(SampleJob, WritesItsSummary)
{
    JobSummary summary;
    summary.calls.made[static_cast<size_t>(Call::face_start)] = 2;
    summary.pages = 2;
    summary.log = "a.xml";
    summary.log_bytes = 1234;
    summary.time = TimeSpent{1.5, 1.25};
    summary.time_without_logger = TimeSpent{0.5, 0.25};
    summary.messages = {"one"};
    summary.check = CheckResult{2, 3, false};
    const WorkingFolder folder;
    ASSERT_TRUE(write_summary(summary, folder.file("summary.json")));
    EXPECT_EQ(content_of(folder.file("summary.json")), R"({
  "calls": {
    "ORV_face_start": 2
  },
  "calls_refused": 0,
  "text_end_points": {
    "count": 0,
    "worst_inches": 0.0
  },
  "pages": 2,
  "log": "a.xml",
  "log_bytes": 1234,
  "seconds": 1.5,
  "processor_seconds": 1.25,
  "seconds_without_logger": 0.5,
  "processor_seconds_without_logger": 0.25,
  "tickets": {
    "retained": 0,
    "released": 0
  },
  "messages": [
    "one"
  ],
  "check": {
    "same": false,
    "pages": 2,
    "pixels_different": 3
  }
}
)");
    EXPECT_FALSE(write_summary(summary, "/no/such/folder/summary.json"));
}

TEST(SampleJob, TellsOnlyWhatWasMeasured)
{
    const WorkingFolder folder;
    ASSERT_TRUE(write_summary(JobSummary(), folder.file("summary.json")));
    EXPECT_EQ(content_of(folder.file("summary.json")), R"({
  "calls": {},
  "calls_refused": 0,
  "text_end_points": {
    "count": 0,
    "worst_inches": 0.0
  },
  "pages": 0,
  "tickets": {
    "retained": 0,
    "released": 0
  },
  "messages": []
}
)");
}

// A job costs one walk; another is there for who asks for its time.
TEST(SampleJob, DrawsASecondTimeOnlyWhenAsked)
{
    const WorkingFolder folder;
    JobOptions options = sample_job(folder);
    options.check = false;
    options.png_folder.clear();
    options.renderer = false;
    const JobResult once = run_job(options);
    EXPECT_TRUE(once.summary.time && once.summary.time->processor_seconds > 0);
    EXPECT_FALSE(once.summary.time_without_logger);
    options.compare = true;
    const JobResult twice = run_job(options);
    EXPECT_TRUE(twice.summary.time_without_logger && twice.summary.time_without_logger->processor_seconds > 0);
    EXPECT_FALSE(twice.summary.check);
    EXPECT_EQ(content_of(options.log).size(), static_cast<size_t>(once.summary.log_bytes));
}

TEST(SampleJob, DrawsWithoutTheLogger)
{
    const WorkingFolder folder;
    JobOptions options = sample_job(folder);
    options.check = false;
    options.png_folder = folder.file("logged");
    std::filesystem::create_directories(options.png_folder);
    const JobResult logged = run_job(options);
    options.png_folder = folder.file("plain");
    std::filesystem::create_directories(options.png_folder);
    std::filesystem::remove(options.log);
    options.no_log = true;
    const JobResult plain = run_job(options);
    EXPECT_TRUE(plain.errors.empty()) << plain.errors.front();
    EXPECT_FALSE(std::filesystem::exists(options.log));
    EXPECT_TRUE(plain.started);
    EXPECT_EQ(plain.summary.log, "");
    EXPECT_EQ(plain.summary.log_bytes, -1);
    EXPECT_FALSE(plain.summary.time);
    EXPECT_TRUE(plain.summary.time_without_logger && plain.summary.time_without_logger->processor_seconds > 0);
    EXPECT_GT(plain.summary.pages, 0);
    EXPECT_EQ(plain.summary.calls.made, logged.summary.calls.made);
    EXPECT_EQ(plain.summary.page_images, logged.summary.page_images);
    const std::string picture = content_of(folder.file("plain/sample-001.png"));
    EXPECT_GT(picture.size(), 1000U);
    EXPECT_EQ(picture, content_of(folder.file("logged/sample-001.png")));
}

}  // namespace
