// Logs of Zstandard frames, and the journal beside them.

#include "clients/stream/orvlog-stream.h"
#include "reader/text/log-bytes.h"
#include "reader/text/log-files.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace
{

using orvlog::test::TempFolder;

int32_t print(GIO_Stream* stream, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int32_t result = stream->ops->gio_VPrintf(stream->instance, format, args);
    va_end(args);
    return result;
}

std::string text_of(std::istream& file)
{
    orvlog::reader::LogBytes bytes(file);
    std::istream text(&bytes);
    return {std::istreambuf_iterator<char>(text), {}};
}

std::string text_of_log(const char* name, bool* foreign_journal = nullptr)
{
    const auto log = orvlog::reader::open_log(name, foreign_journal);
    return log != nullptr ? text_of(*log) : "(absent)";
}

std::string long_text(size_t size)
{
    std::string text = "<ORV a=\"1\">\n";
    for (unsigned i = 0; text.size() < size; ++i)
        text += "  <b number=\"" + std::to_string(i * 2654435761U) + "\"/>\n";
    text.resize(size);
    return text;
}

uint32_t word_at(const std::string& bytes, size_t at)
{
    uint32_t word = 0;
    for (size_t i = 4; i-- > 0;)
        word = word << 8 | static_cast<unsigned char>(bytes[at + i]);
    return word;
}

class ZstdStream : public testing::Test
{
protected:
    // A log with a journal, as a process leaves it that ends in the middle: copies of the two files.
    void leave(const std::string& text, const char* name)
    {
        GIO_Stream* stream = orvlog_open_zstd_stream("open.xml");
        ASSERT_NE(stream, nullptr);
        print(stream, "%s", text.c_str());
        std::filesystem::copy_file("open.xml", name);
        std::filesystem::copy_file("open.xml.journal", std::string(name) + ".journal");
        stream->ops->gio_Close(stream->instance);
    }

    TempFolder folder_;
};

TEST_F(ZstdStream, WritesFramesAndTheirTable)
{
    const std::string text = long_text(2500000);
    GIO_Stream* stream = orvlog_open_zstd_stream("a.xml.zst");
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(print(stream, "%s", text.c_str()), 2500000);
    EXPECT_EQ(stream->ops->gio_Size(stream->instance), 2500000);
    EXPECT_TRUE(std::filesystem::exists("a.xml.zst.journal"));
    ORVLOG_StreamReport report;
    EXPECT_EQ(orvlog_stream_close(stream, &report), GIO_OK);
    EXPECT_EQ(report.text_bytes, 2500000U);
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"a.xml.zst"});
    const std::string file = folder_.read("a.xml.zst");
    EXPECT_EQ(report.file_bytes, file.size());
    EXPECT_LT(file.size(), text.size() / 2);
    EXPECT_TRUE(text_of_log("a.xml.zst") == text);

    // Magic, size, an entry for each frame, count, no checksums, magic.
    ASSERT_GT(file.size(), 41U);
    const size_t table = file.size() - (8 + 3 * 8 + 9);
    EXPECT_EQ(word_at(file, table), 0x184D2A5EU);
    EXPECT_EQ(word_at(file, table + 4), 33U);
    EXPECT_EQ(word_at(file, table + 12), 1048576U);
    EXPECT_EQ(word_at(file, table + 20), 1048576U);
    EXPECT_EQ(word_at(file, table + 28), 402848U);
    EXPECT_EQ(word_at(file, table + 8) + word_at(file, table + 16) + word_at(file, table + 24), table);
    EXPECT_EQ(word_at(file, table + 32), 3U);
    EXPECT_EQ(file[table + 36], '\0');
    EXPECT_EQ(word_at(file, table + 37), 0x8F92EAB1U);
    for (size_t at = 0, entry = table + 8; at < table; at += word_at(file, entry), entry += 8)
        EXPECT_EQ(word_at(file, at), 0xFD2FB528U);
}

TEST_F(ZstdStream, LeavesAnEmptyFileWhereNothingIsPrinted)
{
    GIO_Stream* stream = orvlog_open_zstd_stream("a.xml");
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(stream->ops->gio_Close(stream->instance), GIO_OK);
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"a.xml"});
    EXPECT_EQ(folder_.read("a.xml"), "");
}

TEST_F(ZstdStream, LeavesWhatIsInNoFrameInTheJournal)
{
    leave("<ORV a=\"1\">\n", "short.xml");
    EXPECT_EQ(folder_.read("short.xml"), "");
    EXPECT_EQ(text_of_log("short.xml"), "<ORV a=\"1\">\n");
    const std::string text = long_text(1500000);
    leave(text, "long.xml");
    EXPECT_TRUE(text_of_log("long.xml") == text);
    // The file can be read from its beginning again.
    const auto log = orvlog::reader::open_log("long.xml");
    EXPECT_TRUE(text_of(*log) == text);
    log->clear();
    log->seekg(0);
    EXPECT_TRUE(text_of(*log) == text);
}

// Killed when the frame was written and the journal had not been told.
TEST_F(ZstdStream, DoesNotReadAFrameThatIsStillInTheJournal)
{
    leave("<ORV a=\"1\">\n", "a.xml");
    const std::string other = long_text(1048576);
    leave(other, "b.xml");
    std::filesystem::copy_file("open.xml", "frame.zst");
    std::ofstream("a.xml", std::ios::binary) << folder_.read("frame.zst").substr(0, 40);
    EXPECT_EQ(text_of_log("a.xml"), "<ORV a=\"1\">\n");
}

TEST_F(ZstdStream, KnowsAJournalOfAnotherLog)
{
    const std::string text = long_text(1500000);
    leave(text, "a.xml");
    leave(long_text(1200000).replace(20, 3, "ABC"), "b.xml");
    std::filesystem::copy_file("b.xml.journal", "a.xml.journal", std::filesystem::copy_options::overwrite_existing);
    bool foreign = false;
    EXPECT_TRUE(text_of_log("a.xml", &foreign) == text.substr(0, 1048576));
    EXPECT_TRUE(foreign);
    // One that was closed is whole without it.
    std::filesystem::copy_file("open.xml", "c.xml");
    std::filesystem::copy_file("b.xml.journal", "c.xml.journal");
    EXPECT_EQ(text_of_log("c.xml", &foreign).size(), 1200000U);
    EXPECT_TRUE(foreign);
    std::ofstream("c.xml.journal") << "my own notes";
    EXPECT_EQ(text_of_log("c.xml", &foreign).size(), 1200000U);
    EXPECT_TRUE(foreign);
}

TEST_F(ZstdStream, ReadsAnyJournalWithoutHarm)
{
    leave(long_text(1500), "a.xml");
    const std::string journal = folder_.read("a.xml.journal");
    for (size_t at = 0; at < 128; ++at)
    {
        for (const int byte : {0x00, 0x01, 0x7F, 0xFF})
        {
            std::string bent = journal;
            bent[at] = static_cast<char>(byte);
            std::ofstream("a.xml.journal", std::ios::binary) << bent;
            EXPECT_LE(text_of_log("a.xml").size(), bent.size());
        }
    }
    for (size_t size = 0; size < 2000; size += 97)
    {
        std::ofstream("a.xml.journal", std::ios::binary) << journal.substr(0, size);
        EXPECT_LE(text_of_log("a.xml").size(), size);
    }
}

TEST_F(ZstdStream, DoesNotTouchAFileThatIsNoJournal)
{
    std::ofstream("a.xml") << "the log of before";
    std::ofstream("a.xml.journal") << "my own notes";
    EXPECT_EQ(orvlog_open_zstd_stream("a.xml"), nullptr);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(folder_.read("a.xml.journal"), "my own notes");
    EXPECT_EQ(folder_.read("a.xml"), "the log of before");
}

TEST_F(ZstdStream, DoesNotTouchWhatIsNoOrdinaryFile)
{
    std::ofstream("a.xml") << "the log of before";
    std::filesystem::create_symlink("elsewhere", "a.xml.journal");
    EXPECT_EQ(orvlog_open_zstd_stream("a.xml"), nullptr);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_TRUE(std::filesystem::is_symlink("a.xml.journal"));
    EXPECT_FALSE(std::filesystem::exists("elsewhere"));
    std::filesystem::remove("a.xml.journal");
    std::filesystem::create_directory("a.xml.journal");
    EXPECT_EQ(orvlog_open_zstd_stream("a.xml"), nullptr);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(folder_.read("a.xml"), "the log of before");
}

// Killed before anything was printed.
TEST_F(ZstdStream, TakesTheJournalThatWasJustBeingMade)
{
    std::ofstream("a.xml") << "";
    std::ofstream("a.xml.journal", std::ios::binary) << std::string(4096, '\0');
    bool foreign = true;
    EXPECT_EQ(text_of_log("a.xml", &foreign), "");
    EXPECT_FALSE(foreign);
    GIO_Stream* stream = orvlog_open_zstd_stream("a.xml");
    ASSERT_NE(stream, nullptr);
    stream->ops->gio_Close(stream->instance);
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"a.xml"});
}

TEST_F(ZstdStream, TakesThePlaceOfALogThatWasNotClosed)
{
    leave(long_text(1500000), "a.xml");
    GIO_Stream* stream = orvlog_open_zstd_stream("a.xml");
    ASSERT_NE(stream, nullptr);
    print(stream, "%s", "<ORV>");
    EXPECT_EQ(text_of_log("a.xml"), "<ORV>");
    stream->ops->gio_Close(stream->instance);
    EXPECT_EQ(text_of_log("a.xml"), "<ORV>");
    EXPECT_FALSE(std::filesystem::exists("a.xml.journal"));
}

}  // namespace
