// SPDX-License-Identifier: GPL-2.0-or-later
//
// Two runs of a document make the same log and the same pages, whatever lies in memory that nobody has written to; and
// where a document is read differently each time, the check says that it's the document.

#include "tests/clients/pdf/small-document.h"
#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace
{

using namespace orvlog::test;
using orvlog::small_document::page;
using orvlog::small_document::stream;

std::string sample()
{
    return read_file(ORVLOG_SOURCE_DIR "/docs/sample.pdf");
}

std::string image_document(const std::string& entries, const std::string& bytes)
{
    return page("0 1 0 rg 0 0 100 100 re f q 90 0 0 90 5 5 cm /I Do Q", "/XObject << /I 5 0 R >>",
                {stream("/Type /XObject /Subtype /Image /Width 48 /Height 40 " + entries, bytes)});
}

// `document` with bytes of it replaced by others, always the same ones.
std::string bent(std::string document, uint32_t seed, int changes)
{
    for (int i = 0; i < changes; ++i)
    {
        seed = seed * 1664525U + 1013904223U;
        const uint64_t place = (uint64_t{seed} * document.size()) >> 32;
        seed = seed * 1664525U + 1013904223U;
        document[place] = static_cast<char>(seed >> 24);
    }
    return document;
}

std::vector<std::pair<std::string, std::string>> documents()
{
    const std::string whole = sample();
    const std::string jpx = orvlog::small_document::jpeg_2000();
    const std::string noise = bent(std::string(300, '\x5A'), 3, 200);
    std::vector<std::pair<std::string, std::string>> result = {
        {"sample", whole},
        {"cut", whole.substr(0, whole.size() * 2 / 3)},
        {"jpx", image_document("/Filter /JPXDecode", jpx)},
        {"jpx-cut", image_document("/Filter /JPXDecode", jpx.substr(0, jpx.size() / 2))},
        {"jpx-bent", image_document("/Filter /JPXDecode", bent(jpx, 5, 9))},
        {"fax", image_document("/BitsPerComponent 1 /ColorSpace /DeviceGray /Filter /CCITTFaxDecode "
                               "/DecodeParms << /K -1 /Columns 48 /Rows 40 >>",
                               noise)},
        {"jbig2", image_document("/BitsPerComponent 1 /ColorSpace /DeviceGray /Filter /JBIG2Decode", noise)},
        {"flate",
         image_document("/BitsPerComponent 8 /ColorSpace /DeviceRGB /Filter /FlateDecode", "\x78\x9C" + noise)},
        {"lzw", image_document("/BitsPerComponent 8 /ColorSpace /DeviceRGB /Filter /LZWDecode", noise)},
        {"short", image_document("/BitsPerComponent 16 /ColorSpace /DeviceCMYK", noise)},
    };
    for (uint32_t seed = 1; seed <= 4; ++seed)
        result.emplace_back("bent-" + std::to_string(seed), bent(whole, seed, 12));
    return result;
}

// What a run leaves and says.
struct Outcome
{
    int status = -1;
    std::string said;
    std::map<std::string, std::string> files;

    bool operator==(const Outcome&) const = default;
};

Outcome record(const std::string& folder, const std::string& document, const std::string& mode, const char* filling)
{
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    const ToolResult run =
        run_program({"env", "-C", folder, std::string("MALLOC_PERTURB_=") + filling, ORVLOG_RECORD_PROGRAM, document,
                     "-o", "x.xml", "--png", ".", "--mode", mode, "--pages", "1"});
    Outcome outcome{run.status, run.err, {}};
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        outcome.files[entry.path().filename().string()] = read_file(entry.path().string());
    return outcome;
}

TEST(TwoRuns, MakeTheSameLogAndPagesWhateverMemoryHolds)
{
    const ScratchFolder scratch;
    const std::string folder = scratch.path("run");
    int logs = 0;
    bool in_base = false;
    for (const auto& [name, bytes] : documents())
    {
        const std::string document = scratch.write(name + ".pdf", bytes);
        const std::string mode = in_base ? "base" : "transparent";
        in_base = !in_base;
        const Outcome first = record(folder, document, mode, "1");
        EXPECT_TRUE(first.status == 0 || first.status == 1) << name << ": " << first.said;
        EXPECT_TRUE(record(folder, document, mode, "254") == first) << name << " in mode " << mode;
        logs += static_cast<int>(first.files.count("x.xml"));
    }
    // The others are refused.
    EXPECT_GT(logs, 10);
}

class ChangingDocument : public testing::Test
{
protected:
    // Checks a page in which "@@" is other digits each time it's read.
    ToolResult check(const std::string& content, const std::string& resources = "",
                     const std::vector<std::string>& objects = {}, bool changes = true) const
    {
        const std::string document = scratch.write("d.pdf", page(content, resources, objects));
        const std::string library = changes ? ORVLOG_CHANGING_DOCUMENT : "";
        return run_program(
            {"env", "LD_PRELOAD=" + library, ORVLOG_RECORD_PROGRAM, document, "-o", scratch.path("x.xml"), "--check"});
    }

    ScratchFolder scratch;
};

const char* const differs_by_document =
    "orvlog-record: page 1 differs from the one drawn without the logger, and the logger isn't the cause: the document "
    "asks for other calls each time it is read\n";

TEST_F(ChangingDocument, IsBlamedForOtherPages)
{
    const ToolResult run = check("1 0 0 rg 10 10 @@ 40 re f");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, differs_by_document);
}

TEST_F(ChangingDocument, IsNamedWhenOnlyItsCallsDiffer)
{
    const ToolResult run = check("1 0 0 rg 10 10 40 40 re f 200 200 5@@ 40 re f");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err,
              "orvlog-record: note: page 1 asks for other calls each time it is read, so that two logs of it differ\n");
}

TEST_F(ChangingDocument, IsBlamedForTheBytesOfItsImages)
{
    const ToolResult run =
        check("q 80 0 0 80 10 10 cm /I Do Q", "/XObject << /I 5 0 R >>",
              {stream("/Type /XObject /Subtype /Image /Width 2 /Height 1 /ColorSpace /DeviceGray /BitsPerComponent 8",
                      "@@")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, differs_by_document);
}

TEST_F(ChangingDocument, IsNotBlamedWhenItStaysAsItIs)
{
    const ToolResult run = check("1 0 0 rg 10 10 40 40 re f");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(check("1 0 0 rg 10 10 511 40 re f", "", {}, false).err, "");
}

}  // namespace
