#include "orvlog/log/orvlog-merge.h"

#include "holv-core/gio/gio-file.h"
#include "orvlog/log/orvlog-compressed-stream.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace
{

using orvlog::test::MemoryStream;
using orvlog::test::TestAllocator;
namespace fs = std::filesystem;

constexpr char kTempLog[] = "temp.tmp";

// Each test in a directory of its own, since the names in a log are relative.
class Merge : public testing::Test
{
protected:
    Merge() : home_(fs::current_path())
    {
        const auto* info = testing::UnitTest::GetInstance()->current_test_info();
        std::random_device random;
        directory_ =
            fs::temp_directory_path() / (std::string("orvlog-merge-") + info->name() + "-" + std::to_string(random()));
        fs::create_directories(directory_);
        fs::current_path(directory_);
    }
    ~Merge() override
    {
        fs::current_path(home_);
        fs::remove_all(directory_);
        EXPECT_EQ(allocator.outstanding(), 0u);
        EXPECT_FALSE(target.closed());
    }

    static void put_file(const std::string& name, const std::string& content)
    {
        std::ofstream file(name, std::ios::binary);
        file << content;
    }
    static std::string get_file(const std::string& name)
    {
        std::ifstream file(name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    uint32_t merge(const std::string& text, uint32_t compress = 0, uint32_t has_async_images = 1)
    {
        put_file(kTempLog, text);
        return ORVLOG_MergeLogs(allocator.get(), kTempLog, target.get(), compress, has_async_images);
    }

    TestAllocator allocator;
    MemoryStream target;

private:
    fs::path home_;
    fs::path directory_;
};

constexpr char kSideName[] = "orvlog-00000004-00000003-00000002-00000001-async-image-0000000010.tmp";
const std::string side_text = "      <GOP_ImagePrepareFn Id=\"10\">\n      </GOP_ImagePrepareFn>\n"
                              "      <GOP_ImageReleaseFn Id=\"10\">\n      </GOP_ImageReleaseFn>\n";

const std::string keep = "      <GOP_ImageKeepFn Id=\"10\" async_img_log_file_name="
                         "\"orvlog-00000004-00000003-00000002-00000001-async-image-0000000010.tmp\""
                         " return=\"TRUE\">\n      </GOP_ImageKeepFn>";
const std::string merged_keep = "      <GOP_ImageKeepFn Id=\"10\"  return=\"TRUE\">\n      </GOP_ImageKeepFn>";

TEST_F(Merge, PutsTheLogOfAKeptImageBehindItsElement)
{
    put_file(kSideName, side_text);
    EXPECT_EQ(merge("<ORV>\n" + keep + "\n  <after>\n</ORV>\n"), 1u);
    EXPECT_EQ(target.text(), "<ORV>\n"
                             "      <GOP_ImageKeepFn Id=\"10\"  return=\"TRUE\">\n"
                             "      </GOP_ImageKeepFn>\n"
                             "      <GOP_ImagePrepareFn Id=\"10\">\n      </GOP_ImagePrepareFn>\n"
                             "      <GOP_ImageReleaseFn Id=\"10\">\n      </GOP_ImageReleaseFn>\n"
                             "  <after>\n</ORV>\n");
    EXPECT_FALSE(fs::exists(kSideName));
    EXPECT_FALSE(fs::exists(kTempLog));
}

TEST_F(Merge, CopiesALogWithoutKeptImagesAsItStands)
{
    put_file(kSideName, side_text);
    const std::string text = "<ORV>\n" + keep + "\n</ORV>\n" + std::string(40000, 'x');
    EXPECT_EQ(merge(text, 0, 0), 1u);
    EXPECT_EQ(target.text(), text);
    EXPECT_TRUE(fs::exists(kSideName));
    EXPECT_FALSE(fs::exists(kTempLog));

    target.clear();
    EXPECT_EQ(merge("<ORV>\n</ORV>\n", 0, 1), 1u);
    EXPECT_EQ(target.text(), "<ORV>\n</ORV>\n");
}

TEST_F(Merge, TakesAtMostTwoLineEndsWithTheElement)
{
    struct Case
    {
        const char* with;
        const char* behind;
    };
    // All sequences of up to three characters of a line end, and what follows them.
    const Case cases[] = {
        {"", ""},          {"\n", ""},     {"\r", ""},      {"\n\n", ""},     {"\n\r", ""},   {"\r\n", ""},
        {"\r\r", ""},      {"\n\n", "\n"}, {"\n\n", "\r"},  {"\n\r", "\n"},   {"\n\r", "\r"}, {"\r\n", "\n"},
        {"\r\n", "\r"},    {"\r\r", "\n"}, {"\r\r", "\r"},  {"\r\n", "\r\n"}, {"\n", " \n"},  {"\r", " \r"},
        {"\r\n", " \r\n"}, {"", " \n\r"},  {"", "<a>\r\n"}, {"\n", "\t\n"},
    };
    for (const std::string& line_end : {std::string("\n"), std::string("\r\n"), std::string("\r")})
    {
        // The line ends within the element stay what they are.
        const std::string name = "orvlog-side.tmp";
        const std::string element = "<GOP_ImageKeepFn Id=\"10\" async_img_log_file_name=\"orvlog-side.tmp\" "
                                    "return=\"TRUE\">" +
                                    line_end + "</GOP_ImageKeepFn>";
        const std::string merged = "<GOP_ImageKeepFn Id=\"10\"  return=\"TRUE\">" + line_end + "</GOP_ImageKeepFn>";
        for (const Case& c : cases)
        {
            for (const std::string& last : {std::string(), "</ORV>" + line_end})
            {
                target.clear();
                put_file(name, side_text);
                EXPECT_EQ(merge("<ORV>" + line_end + element + c.with + c.behind + last), 1u);
                EXPECT_EQ(target.text(), "<ORV>" + line_end + merged + c.with + side_text + c.behind + last);
            }
        }
    }
}

TEST_F(Merge, KeepsSeveralImages)
{
    std::string text;
    std::string expected;
    for (int i = 0; i < 300; ++i)
    {
        const std::string name = "orvlog-side-" + std::to_string(i) + ".tmp";
        const std::string content = "side " + std::to_string(i) + std::string(static_cast<size_t>(i) * 90, '.') + "\n";
        put_file(name, content);
        const std::string before = "<a n=\"" + std::string(static_cast<size_t>(i * 37 % 211), 'n') + "\">\n";
        text += before + "<GOP_ImageKeepFn async_img_log_file_name=\"" + name + "\">\n</GOP_ImageKeepFn>\n";
        expected += before + "<GOP_ImageKeepFn >\n</GOP_ImageKeepFn>\n" + content;
    }
    EXPECT_EQ(merge(text), 1u);
    EXPECT_EQ(target.text(), expected);
    EXPECT_TRUE(fs::is_empty(fs::current_path()));
}

// The element at every place about the end of a block, the first and the second: the first holds 16383 bytes,
// each further one 16183 and the 200 held back.
TEST_F(Merge, FindsAnElementCutAnywhereByABlock)
{
    for (const std::string& line_end : {std::string("\n"), std::string("\r\n")})
    {
        for (const size_t block_end : {size_t{16383}, size_t{16383 + 16183}})
        {
            for (size_t in_block = 0; in_block <= keep.size() + 4; ++in_block)
            {
                SCOPED_TRACE(in_block);
                target.clear();
                put_file(kSideName, side_text);
                const std::string before(block_end - in_block, 'b');
                const std::string after(20000, 'a');
                ASSERT_EQ(merge(before + keep + line_end + after), 1u);
                // A line end that the block does not hold stands behind the image's log.
                size_t with = line_end.size();
                if (in_block >= keep.size())
                    with = std::min(with, in_block - keep.size());
                ASSERT_EQ(target.text(),
                          before + merged_keep + line_end.substr(0, with) + side_text + line_end.substr(with) + after);
            }
        }
    }
}

// Two elements close together about the end of a block: one may go with it and the other wait, or both wait.
TEST_F(Merge, FindsBothOfTwoElementsAboutTheEndOfABlock)
{
    const std::string first = "<GOP_ImageKeepFn async_img_log_file_name=\"1.tmp\">\n</GOP_ImageKeepFn>\n";
    const std::string second = "<GOP_ImageKeepFn async_img_log_file_name=\"2.tmp\">\n</GOP_ImageKeepFn>\n";
    // A line end that the block does not hold stands behind the image's log.
    const std::string whole = "<GOP_ImageKeepFn >\n</GOP_ImageKeepFn>\n";
    const std::string parted = "<GOP_ImageKeepFn >\n</GOP_ImageKeepFn>";
    for (size_t in_block = 0; in_block <= first.size() + second.size(); ++in_block)
    {
        SCOPED_TRACE(in_block);
        target.clear();
        put_file("1.tmp", "one\n");
        put_file("2.tmp", "two\n");
        const std::string before(16383 - in_block, 'b');
        ASSERT_EQ(merge(before + first + second + "</ORV>\n"), 1u);
        std::string expected = before;
        expected += in_block == first.size() - 1 ? parted + "one\n\n" : whole + "one\n";
        expected += in_block == first.size() + second.size() - 1 ? parted + "two\n\n" : whole + "two\n";
        ASSERT_EQ(target.text(), expected + "</ORV>\n");
    }
}

// More than 200 bytes from the attribute to the end: whole in a block it is as any other, and cut by one it has lost
// its attribute's name when its end comes in sight, and stays as it is.
TEST_F(Merge, LeavesAnElementOfMoreThan200BytesThatABlockCuts)
{
    const std::string start = "<GOP_ImageKeepFn async_img_log_file_name=\"side.tmp\"";
    const std::string rest = " return=\"" + std::string(300, 'T') + "\">\n</GOP_ImageKeepFn>\n";
    put_file("side.tmp", "side\n");
    const std::string before(16383 - 260, 'b');
    EXPECT_EQ(merge(before + start + rest + "</ORV>\n"), 1u);
    EXPECT_EQ(target.text(), before + start + rest + "</ORV>\n");
    EXPECT_EQ(get_file("side.tmp"), "side\n");

    target.clear();
    EXPECT_EQ(merge(start + rest + "</ORV>\n"), 1u);
    EXPECT_EQ(target.text(), "<GOP_ImageKeepFn " + rest + "side\n</ORV>\n");
    EXPECT_FALSE(fs::exists("side.tmp"));
}

TEST_F(Merge, HoldsBack200Bytes)
{
    const std::string text(16383 + 16183 + 100, 'x');
    EXPECT_EQ(merge(text), 1u);
    EXPECT_EQ(target.text(), text);
    EXPECT_EQ(target.pieces(), (std::vector<uint64_t>{16183, 16183, 300}));
}

TEST_F(Merge, MakesNothingOfAnEmptyLog)
{
    EXPECT_EQ(merge(""), 1u);
    EXPECT_EQ(target.text(), "");
    EXPECT_EQ(target.operations(), 0u);
    EXPECT_FALSE(fs::exists(kTempLog));
}

TEST_F(Merge, CodesTheMergedLog)
{
    for (const uint32_t has_async_images : {0u, 1u})
    {
        target.clear();
        put_file(kSideName, side_text);
        const std::string text = "<ORV>\n" + keep + "\n</ORV>\n";
        EXPECT_EQ(merge(text, 1, has_async_images), 1u);
        MemoryStream expected;
        GIO_Stream* stream = ORVLOG_OpenCompressedStream(allocator.get(), expected.get());
        const std::string merged =
            has_async_images != 0 ? "<ORV>\n" + merged_keep + "\n" + side_text + "</ORV>\n" : text;
        ORVLOG_CompressedWrite(merged.data(), 1, merged.size(), stream->instance);
        ORVLOG_CloseCompressedStream(stream);
        EXPECT_EQ(target.text(), expected.text());
        EXPECT_EQ(target.text().substr(0, 36), "<ORV compression=\"Adaptive Huffman\"<");
    }
    target.clear();
    EXPECT_EQ(merge("", 1, 1), 1u);
    EXPECT_EQ(target.text(), "<ORV compression=\"Adaptive Huffman\"" + std::string(1, '\0'));
}

// --- Failures ---

TEST_F(Merge, FailsWithoutTheLogOfAnImage)
{
    EXPECT_EQ(merge("<ORV>\n" + keep + "\n</ORV>\n"), 0u);
    EXPECT_EQ(target.text(), "<ORV>\n" + merged_keep + "\n");
    EXPECT_EQ(get_file(kTempLog), "<ORV>\n" + keep + "\n</ORV>\n");
}

TEST_F(Merge, FailsWithoutTheTemporaryLog)
{
    for (const uint32_t has_async_images : {0u, 1u})
        EXPECT_EQ(ORVLOG_MergeLogs(allocator.get(), "absent", target.get(), 0, has_async_images), 0u);
    EXPECT_EQ(target.text(), "");
    EXPECT_EQ(ORVLOG_MergeLogs(allocator.get(), "absent", target.get(), 1, 1), 0u);
    EXPECT_EQ(target.text().size(), 36u);
}

TEST_F(Merge, FailsWhereTheTargetTakesFewerBytes)
{
    const std::string text = "<ORV>\n" + keep + "\n</ORV>\n";
    const std::string merged = "<ORV>\n" + merged_keep + "\n" + side_text + "</ORV>\n";
    for (const uint32_t has_async_images : {0u, 1u})
    {
        const std::string& whole = has_async_images != 0 ? merged : text;
        for (size_t room = 0; room <= whole.size(); ++room)
        {
            target.clear();
            target.set_room(room);
            put_file(kSideName, side_text);
            EXPECT_EQ(merge(text, 0, has_async_images), room < whole.size() ? 0u : 1u) << room;
            EXPECT_EQ(target.text(), whole.substr(0, room));
            EXPECT_EQ(fs::exists(kTempLog), room < whole.size());
        }
    }
}

TEST_F(Merge, HidesAFailingTargetBehindTheCoder)
{
    target.set_room(40);
    put_file(kSideName, side_text);
    EXPECT_EQ(merge("<ORV>\n" + keep + "\n</ORV>\n", 1, 1), 1u);
    EXPECT_EQ(target.text().size(), 40u);
    EXPECT_FALSE(fs::exists(kTempLog));

    target.clear();
    target.set_room(34);
    EXPECT_EQ(merge("<ORV>\n", 1, 1), 0u);
    EXPECT_TRUE(fs::exists(kTempLog));
}

TEST_F(Merge, FailsWithoutMemoryAndLeaksNothing)
{
    const std::string text = "<ORV>\n" + keep + "\n</ORV>\n";
    for (const uint32_t compress : {0u, 1u})
    {
        uint64_t n = 1;
        for (bool refused = true; refused; ++n)
        {
            put_file(kSideName, side_text);
            const uint64_t before = allocator.refused();
            allocator.refuse(n);
            const uint32_t result = merge(text, compress, 1);
            refused = allocator.refused() > before;
            EXPECT_EQ(result, refused ? 0u : 1u) << n;
            EXPECT_EQ(fs::exists(kTempLog), refused);
            EXPECT_EQ(allocator.outstanding(), 0u);
            allocator.refuse(0);
        }
        EXPECT_GT(n, 5u);
    }
}

TEST_F(Merge, FailsWhereAFileCannotBeRead)
{
    fs::create_directory("directory");
    for (const uint32_t has_async_images : {0u, 1u})
        EXPECT_EQ(ORVLOG_MergeLogs(allocator.get(), "directory", target.get(), 0, has_async_images), 0u);
    EXPECT_TRUE(fs::exists("directory"));
    EXPECT_EQ(merge("<ORV>\n<GOP_ImageKeepFn async_img_log_file_name=\"directory\">\n</GOP_ImageKeepFn>\n"), 0u);
}

TEST_F(Merge, LeavesAnElementThatNamesNoLog)
{
    const std::string without[] = {
        "<GOP_ImageKeepFn Id=\"1\" return=\"TRUE\">\n</GOP_ImageKeepFn>\n",
        "</GOP_ImageKeepFn></GOP_ImageKeepFn>",
        "<GOP_ImageKeepFn async_img_log_file_name></GOP_ImageKeepFn>\n",
        "<GOP_ImageKeepFn async_img_log_file_name=\"></GOP_ImageKeepFn>\n\"",
        "<GOP_ImageKeepFn async_img_log_file_name</GOP_ImageKeepFn>\n",
    };
    for (const std::string& element : without)
    {
        target.clear();
        put_file(kSideName, side_text);
        EXPECT_EQ(merge(element + keep + "\n"), 1u) << element;
        EXPECT_EQ(target.text(), element + merged_keep + "\n" + side_text);
    }
}

TEST_F(Merge, LetsNullBe)
{
    EXPECT_EQ(ORVLOG_MergeLogs(nullptr, kTempLog, target.get(), 0, 0), 0u);
    EXPECT_EQ(ORVLOG_MergeLogs(allocator.get(), nullptr, target.get(), 0, 0), 0u);
    EXPECT_EQ(ORVLOG_MergeLogs(allocator.get(), kTempLog, nullptr, 0, 0), 0u);
    std::vector<char> block(ORVLOG_MERGE_BLOCK);
    put_file("file", "text");
    EXPECT_EQ(ORVLOG_AppendFile(allocator.get(), nullptr, target.get(), block.data()), 0u);
    EXPECT_EQ(ORVLOG_AppendFile(allocator.get(), "file", target.get(), nullptr), 0u);
    EXPECT_EQ(ORVLOG_AppendFile(allocator.get(), "file", nullptr, block.data()), 0u);
    EXPECT_EQ(ORVLOG_AppendFile(nullptr, "file", target.get(), block.data()), 0u);
    GIO_StreamOps nothing = {};
    GIO_Stream mute = {nullptr, 0, &nothing};
    EXPECT_EQ(ORVLOG_AppendFile(allocator.get(), "file", &mute, block.data()), 0u);
    EXPECT_EQ(ORVLOG_MergeLogs(allocator.get(), "file", &mute, 0, 0), 0u);
    EXPECT_TRUE(fs::exists("file"));
    EXPECT_EQ(ORVLOG_OpenTempLog(allocator.get(), nullptr, nullptr, nullptr), 0u);
}

// --- Whole files, and temporary logs ---

TEST_F(Merge, AppendsFilesOfAnyLength)
{
    std::vector<char> block(ORVLOG_MERGE_BLOCK);
    for (const size_t size : {size_t{0}, size_t{1}, size_t{16383}, size_t{16384}, size_t{16385}, size_t{3 * 16384}})
    {
        std::string content(size, 'c');
        for (size_t i = 0; i < size; i += 7)
            content[i] = static_cast<char>(i);
        put_file("file", content);
        target.clear();
        EXPECT_EQ(ORVLOG_AppendFile(allocator.get(), "file", target.get(), block.data()), 1u);
        EXPECT_EQ(target.text(), content);
        if (size > 0)
        {
            target.clear();
            target.set_room(size - 1);
            EXPECT_EQ(ORVLOG_AppendFile(allocator.get(), "file", target.get(), block.data()), 0u);
            target.set_room(UINT64_MAX);
        }
    }
    EXPECT_EQ(ORVLOG_AppendFile(allocator.get(), "absent", target.get(), block.data()), 0u);
}

TEST_F(Merge, OpensATemporaryLogUnderTheSessionsNumber)
{
    const uint8_t session_id[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    char name[ORVLOG_TEMP_LOG_NAME];
    GIO_Stream* stream = nullptr;
    ASSERT_EQ(ORVLOG_OpenTempLog(allocator.get(), session_id, &stream, name), 1u);
    EXPECT_STREQ(name, "orvlog-0f0e0d0c-0b0a0908-07060504-03020100.tmp");
    EXPECT_EQ(stream->ops->gio_Write("one\n", 1, 4, stream->instance), 4u);
    EXPECT_EQ(stream->ops->gio_Close(stream->instance), 0);
    const std::string content = get_file(name);
    EXPECT_TRUE(content == "one\n" || content == "one\r\n") << content;

    fs::remove(name);
    fs::create_directory(name);
    EXPECT_EQ(ORVLOG_OpenTempLog(allocator.get(), session_id, &stream, name), 0u);
    EXPECT_EQ(stream, nullptr);
}

}  // namespace
