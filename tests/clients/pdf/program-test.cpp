// SPDX-License-Identifier: GPL-2.0-or-later
//
// The program from outside: exit status and what it says, above all of files that can't be read.

#include "reader/tickets/ticket-bytes.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <spawn.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern char** environ;

namespace
{

const std::string sample = ORVLOG_SOURCE_DIR "/docs/sample.pdf";

struct Outcome
{
    int status = -1;
    std::string errors;
};

class ProgramTest : public testing::Test
{
protected:
    ProgramTest()
    {
        folder_ = std::filesystem::temp_directory_path() / ("orvlog-record-" + std::to_string(getpid()));
        std::filesystem::create_directories(folder_);
    }
    ~ProgramTest() override
    {
        std::filesystem::remove_all(folder_);
    }

    std::string file(const std::string& name) const
    {
        return (folder_ / name).string();
    }

    std::string write(const std::string& name, const std::string& content) const
    {
        std::ofstream(file(name), std::ios::binary) << content;
        return file(name);
    }

    Outcome run(const std::string& arguments) const
    {
        const std::string errors = file("errors.txt");
        const std::string command = std::string(ORVLOG_RECORD_PROGRAM) + " " + arguments + " 2> " + errors;
        const int status = std::system(command.c_str());
        std::ifstream input(errors);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1,
                {std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()}};
    }

    Outcome record(const std::string& document, const std::string& more = "") const
    {
        return run(document + " -o " + file("log.xml") + " --dpi 30 " + more);
    }

private:
    std::filesystem::path folder_;
};

TEST_F(ProgramTest, RecordsTheSample)
{
    const Outcome outcome = record(sample, "--check --summary " + file("summary.json"));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_TRUE(std::filesystem::exists(file("summary.json")));
    EXPECT_FALSE(std::filesystem::exists(file("sample-001.png")));
}

TEST_F(ProgramTest, LeavesNoLogWhenItIsToLeaveNone)
{
    const Outcome outcome = run(sample + " --no-log --no-renderer --summary " + file("summary.json"));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
    std::ifstream input(file("summary.json"));
    const std::string summary{std::istreambuf_iterator<char>(input), {}};
    EXPECT_NE(summary.find("\"ORV_face_start\": "), std::string::npos);
    EXPECT_NE(summary.find("\"processor_seconds_without_logger\": "), std::string::npos);
    EXPECT_EQ(summary.find("\"seconds\": "), std::string::npos);
    EXPECT_EQ(summary.find("\"log"), std::string::npos);
}

TEST_F(ProgramTest, WantsALogOrNone)
{
    const Outcome neither = run(sample);
    EXPECT_EQ(neither.status, 2);
    EXPECT_EQ(neither.errors, "orvlog-record: --output is required (see orvlog-record --help)\n");
    EXPECT_EQ(run("--help > " + file("help.txt")).status, 0);
    for (const char* with_log : {"--compare", "--check", "--stream file", "--compressed", "--via-temporary-log",
                                 "--images-beside p", "--folder-beside ."})
        EXPECT_EQ(run(sample + " --no-log " + with_log).status, 2) << with_log;
    EXPECT_EQ(record(sample, "--no-log").status, 2);
}

TEST_F(ProgramTest, SavesTickets)
{
    EXPECT_EQ(record(sample, "--pages 1 --save-tickets " + file("tickets")).status, 0);
    EXPECT_TRUE(std::filesystem::exists(file("tickets/ticket-1.bin")));
}

// The bytes of a whole file.
std::string content_of(const std::string& path)
{
    std::ifstream input(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
}

TEST_F(ProgramTest, ItsLogTellsTheWholeTickets)
{
    EXPECT_EQ(record(sample, "--save-tickets " + file("tickets")).status, 0);
    const std::string log = content_of(file("log.xml"));
    int found = 0;
    for (size_t at = log.find("<GXC_ColorTickets>\n"); at != log.npos; at = log.find("<GXC_ColorTickets>\n", at + 1))
    {
        const auto reading = orvlog::reader::read_ticket_text(std::string_view(log).substr(at));
        EXPECT_EQ(reading.ending, orvlog::reader::TicketEnding::whole) << reading.line << ": " << reading.expected;
        const std::string saved = content_of(file("tickets/ticket-" + std::to_string(++found) + ".bin"));
        EXPECT_EQ(std::string(reading.bytes.begin(), reading.bytes.end()), saved);
        EXPECT_NE(saved, "");
    }
    EXPECT_GT(found, 0);
}

TEST_F(ProgramTest, SaysThatAFileIsMissing)
{
    const Outcome outcome = record(file("none.pdf"));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors, "orvlog-record: " + file("none.pdf") + ": No such file or directory\n");
    EXPECT_FALSE(std::filesystem::exists(file("log.xml")));
}

TEST_F(ProgramTest, SaysThatAFileIsADirectoryOrEmpty)
{
    std::filesystem::create_directory(file("folder.pdf"));
    const Outcome folder = record(file("folder.pdf"));
    EXPECT_EQ(folder.status, 1);
    EXPECT_EQ(folder.errors, "orvlog-record: " + file("folder.pdf") + " is a directory\n");
    const Outcome empty = record(write("empty.pdf", ""));
    EXPECT_EQ(empty.status, 1);
    EXPECT_EQ(empty.errors, "orvlog-record: " + file("empty.pdf") + " is empty\n");
}

TEST_F(ProgramTest, SaysThatAFileIsDamaged)
{
    const Outcome outcome = record(write("text.pdf", "This is no PDF file at all.\n"));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors, "orvlog-record: " + file("text.pdf") + " is damaged or is no PDF file\n");
}

TEST_F(ProgramTest, SaysThatAFileIsProtected)
{
    const std::string key(64, '5');
    const std::string document =
        "%PDF-1.4\n1 0 obj\n<< /Type /Catalog /Pages 2 0 R >>\nendobj\n"
        "2 0 obj\n<< /Type /Pages /Count 0 /Kids [] >>\nendobj\n"
        "3 0 obj\n<< /Filter /Standard /V 1 /R 2 /P -4 /O <" +
        key + "> /U <" + key +
        "> >>\nendobj\n"
        "trailer\n<< /Size 4 /Root 1 0 R /Encrypt 3 0 R /ID [<00112233445566778899aabbccddeeff> "
        "<00112233445566778899aabbccddeeff>] >>\n%%EOF\n";
    const Outcome outcome = record(write("protected.pdf", document));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors, "orvlog-record: " + file("protected.pdf") + " is protected by a password\n");
}

TEST_F(ProgramTest, SurvivesTheSampleCutShortAndBent)
{
    std::ifstream input(sample, std::ios::binary);
    const std::string whole((std::istreambuf_iterator<char>(input)), std::istreambuf_iterator<char>());
    for (size_t length = 500; length < whole.size(); length += 4711)
    {
        const Outcome cut = record(write("cut.pdf", whole.substr(0, length)), "--no-renderer");
        EXPECT_TRUE(cut.status == 0 || cut.status == 1) << length << " " << cut.status;
    }
    for (size_t place = 60; place < whole.size(); place += 3331)
    {
        std::string bent = whole;
        bent[place] = static_cast<char>(bent[place] ^ 0x15);
        const Outcome outcome = record(write("bent.pdf", bent));
        EXPECT_TRUE(outcome.status == 0 || outcome.status == 1) << place << " " << outcome.status;
    }
}

TEST_F(ProgramTest, RefusesPagesOfAbsurdSizes)
{
    const std::string document = "%PDF-1.4\n1 0 obj\n<< /Type /Catalog /Pages 2 0 R >>\nendobj\n"
                                 "2 0 obj\n<< /Type /Pages /Count 1 /Kids [3 0 R] >>\nendobj\n"
                                 "3 0 obj\n<< /Type /Page /Parent 2 0 R /MediaBox [0 0 1000000 1000000] >>\nendobj\n"
                                 "trailer\n<< /Size 4 /Root 1 0 R >>\n%%EOF\n";
    const Outcome outcome = record(write("large.pdf", document));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors, "orvlog-record: page 1 is too large at 30 dots per inch\n");
}

// A page with one gray image of so many pixels each way, all of them alike.
std::string page_with_image(int size)
{
    std::string pixels;
    for (int64_t left = int64_t{size} * size; left > 0; left -= 128)
        pixels += {static_cast<char>(257 - std::min<int64_t>(left, 128)), '\x55'};
    pixels += '\x80';
    const std::string number = std::to_string(size);
    return "%PDF-1.4\n1 0 obj\n<< /Type /Catalog /Pages 2 0 R >>\nendobj\n"
           "2 0 obj\n<< /Type /Pages /Count 1 /Kids [3 0 R] >>\nendobj\n"
           "3 0 obj\n<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 200] /Contents 4 0 R "
           "/Resources << /XObject << /I 5 0 R >> >> >>\nendobj\n"
           "4 0 obj\n<< /Length 27 >>\nstream\nq 200 0 0 200 0 0 cm /I Do Q\nendstream\nendobj\n"
           "5 0 obj\n<< /Type /XObject /Subtype /Image /ColorSpace /DeviceGray /BitsPerComponent 8 /Width " +
           number + " /Height " + number + " /Filter /RunLengthDecode /Length " + std::to_string(pixels.size()) +
           " >>\nstream\n" + pixels + "\nendstream\nendobj\ntrailer\n<< /Size 6 /Root 1 0 R >>\n%%EOF\n";
}

// The most memory that a run without a renderer has, in megabytes.
int64_t peak_of(const std::string& document, const std::string& log, const std::string& prefix)
{
    std::string words[] = {ORVLOG_RECORD_PROGRAM, document, "-o",      log, "--no-renderer", "--mode", "base",
                           "--images-beside",     prefix,   "--pages", "1"};
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    // Under a sanitizer freed memory would be held back and count.
    std::string setting = "ASAN_OPTIONS=quarantine_size_mb=1";
    std::vector<char*> environment = {setting.data()};
    for (char** variable = environ; *variable != nullptr; ++variable)
        environment.push_back(*variable);
    environment.push_back(nullptr);
    pid_t child = 0;
    EXPECT_EQ(posix_spawn(&child, arguments[0], nullptr, nullptr, arguments.data(), environment.data()), 0);
    int status = -1;
    rusage usage = {};
    EXPECT_EQ(wait4(child, &status, 0, &usage), child);
    EXPECT_EQ(status, 0);
    return usage.ru_maxrss / 1024;
}

TEST_F(ProgramTest, HoldsARowOfALargeImageAndNoMore)
{
    const int64_t small = peak_of(write("small.pdf", page_with_image(100)), file("small.xml"), file("small"));
    const int64_t large = peak_of(write("large.pdf", page_with_image(10000)), file("large.xml"), file("large"));
    EXPECT_EQ(std::filesystem::file_size(file("small-img-10.bin")), 10000U);
    EXPECT_EQ(std::filesystem::file_size(file("large-img-10.bin")), 100000000U);
    EXPECT_LT(large, small + 25) << "megabytes";
}

TEST_F(ProgramTest, NoticesAFullDisk)
{
    const Outcome outcome = run(sample + " -o /dev/full --dpi 30 --pages 1");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors, "orvlog-record: /dev/full: No space left on device; the log is incomplete\n");
}

TEST_F(ProgramTest, NoticesAFullDiskBehindATemporaryLog)
{
    const std::string document = std::filesystem::absolute(sample);
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(file(""));  // where the temporary log stays
    const Outcome outcome = run(document + " -o /dev/full --no-renderer --pages 1 --via-temporary-log");
    std::filesystem::current_path(before);
    EXPECT_EQ(outcome.status, 1);
    const std::string told = "orvlog-record: /dev/full: No space left on device; the log is incomplete\n"
                             "orvlog-record: what was logged can be had by: orvlog merge orvlog-";
    EXPECT_EQ(outcome.errors.substr(0, told.size()), told);
    EXPECT_EQ(outcome.errors.substr(told.size() + 35), ".tmp -o /dev/full\n");
}

TEST_F(ProgramTest, DoesNotWriteTheLogOverTheDocument)
{
    const std::string document = file("same.pdf");
    std::filesystem::copy_file(sample, document);
    std::filesystem::create_symlink("same.pdf", file("link"));
    const uintmax_t size = std::filesystem::file_size(document);
    for (const std::string& log : {document, file("link")})
    {
        const Outcome outcome = run(document + " --no-renderer -o " + log);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.errors, "orvlog-record: " + log + ": is the document to be logged\n");
        EXPECT_EQ(std::filesystem::file_size(document), size);
    }
}

TEST_F(ProgramTest, SaysThatALogCannotBeWritten)
{
    const Outcome outcome = run(sample + " -o /no/such/folder/log.xml");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors, "orvlog-record: /no/such/folder/log.xml: No such file or directory\n");
}

TEST_F(ProgramTest, WantsPagesInOrderAndInTheDocument)
{
    EXPECT_EQ(record(sample, "--pages 3-2").errors,
              "orvlog-record: --pages: the last page comes before the first (see orvlog-record --help)\n");
    EXPECT_EQ(record(sample, "--pages 0").status, 2);
    EXPECT_EQ(record(sample, "--pages 1,3").status, 2);
    EXPECT_EQ(record(sample, "--pages 3-").status, 0);
    EXPECT_EQ(record(sample, "--pages 9").errors, "orvlog-record: " + sample + " has only 3 pages\n");
    EXPECT_EQ(record(sample, "--mode other").status, 2);
}

TEST_F(ProgramTest, ShowsNoProgressBesideATerminal)
{
    const Outcome outcome = record(sample, "--pages 1-2 --no-renderer --progress");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
}

}  // namespace
