// orvlog pack, unpack and merge as programs.

#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace
{

using namespace orvlog::test;

const std::string kPrefix = "<ORV compression=\"Adaptive Huffman\"";
const std::string kLog = "<ORV A=\"1\">\n  <ORV_document_start document_id=\"7\">\n  </ORV_document_start>\n</ORV>\n";

TEST(ToolPack, CodesAnyBytes)
{
    const ToolResult nothing = run_tool({"pack", "-", "-o", "-"}, "");
    EXPECT_EQ(nothing.status, 0);
    EXPECT_EQ(nothing.out, kPrefix + std::string(1, '\0'));
    EXPECT_EQ(run_tool({"pack", "-", "-o", "-"}, "abracadabra").out, kPrefix + "\x61\xb1\x6e\x56\xc7\x36\x49\x37");
    EXPECT_EQ(run_tool({"pack", "-", "-o", "-"}, std::string("A\0B", 3)).out, kPrefix + "\x41\xa1\x60");
}

TEST(ToolPack, ComesBackByUnpack)
{
    const ScratchFolder folder;
    const std::string log = folder.write("log.xml", kLog);
    EXPECT_EQ(run_tool({"pack", log, "-o", folder.path("coded")}).status, 0);
    const ToolResult unpacked = run_tool({"unpack", folder.path("coded"), "-o", folder.path("back.xml")});
    EXPECT_EQ(unpacked.status, 0);
    EXPECT_EQ(unpacked.err, "");
    EXPECT_EQ(read_file(folder.path("back.xml")), kLog);
}

TEST(ToolUnpack, GivesAPlainLogAsItIs)
{
    EXPECT_EQ(run_tool({"unpack", "-", "-o", "-"}, kLog).out, kLog);
}

TEST(ToolUnpack, ReportsACutLogAndGivesWhatWasWhole)
{
    const ScratchFolder folder;
    const std::string coded = run_tool({"pack", "-", "-o", "-"}, kLog).out;
    const std::string cut = folder.write("cut", coded.substr(0, coded.size() - 12));
    const ToolResult result = run_tool({"unpack", cut, "-o", folder.path("out")});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("the log is cut short"), std::string::npos);
    const std::string text = read_file(folder.path("out"));
    EXPECT_FALSE(text.empty());
    EXPECT_EQ(text, kLog.substr(0, text.size()));
}

TEST(ToolUnpack, TellsABentLogFromACutOne)
{
    const ScratchFolder folder;
    const std::string call = "  <ORV_document_start document_id=\"7\">\n  </ORV_document_start>\n";
    std::string text = "<ORV A=\"1\">\n";
    for (int i = 0; i < 200; ++i)
        text += call;
    std::string coded = run_tool({"pack", "-", "-o", "-"}, text + "</ORV>\n").out;
    const std::string cut = folder.write("cut", coded.substr(0, coded.size() / 2));
    coded[coded.size() / 4] = static_cast<char>(coded[coded.size() / 4] ^ 0x5A);
    const std::string bent = folder.write("bent", coded);
    ToolResult result = run_tool({"unpack", cut, "-o", folder.path("out")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err.find("orvlog: " + cut + ": the log is cut short; "), 0U) << result.err;
    result = run_tool({"unpack", bent, "-o", folder.path("out")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err.find("orvlog: " + bent + ": the coded stream is damaged; "), 0U) << result.err;
    EXPECT_NE(run_tool({"info", cut}).out.find("bytes, cut short\n"), std::string::npos);
    EXPECT_NE(run_tool({"info", bent}).out.find("bytes, damaged\n"), std::string::npos);
    EXPECT_EQ(run_tool({"ls", bent}).err.find(", cut short"), std::string::npos);
}

TEST(ToolUnpack, RefusesWhatIsNoLogAndLeavesNothing)
{
    const ScratchFolder folder;
    for (const char* content : {"", "something else", "<OR", "%PDF-1.4"})
    {
        const std::string file = folder.write("file", content);
        const ToolResult result = run_tool({"unpack", file, "-o", folder.path("out")});
        EXPECT_EQ(result.status, 1) << content;
        EXPECT_EQ(result.err, "orvlog: " + file + ": not a log\n") << content;
        EXPECT_FALSE(std::filesystem::exists(folder.path("out")));
        EXPECT_FALSE(std::filesystem::exists(folder.path("out.part")));
    }
}

TEST(ToolUnpack, MissingFilesAndFullDisks)
{
    const ScratchFolder folder;
    const ToolResult missing = run_tool({"unpack", folder.path("none"), "-o", folder.path("out")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "orvlog: " + folder.path("none") + ": No such file or directory\n");
    const ToolResult nowhere = run_tool({"pack", "-", "-o", folder.path("no/such/out")}, "x");
    EXPECT_EQ(nowhere.status, 1);
    EXPECT_NE(nowhere.err.find("No such file or directory"), std::string::npos);
}

TEST(ToolOutput, WritesADeviceAsItStands)
{
    const ToolResult full = run_tool({"pack", "-", "-o", "/dev/full"}, "abracadabra");
    EXPECT_EQ(full.status, 1);
    EXPECT_EQ(full.err, "orvlog: /dev/full: No space left on device\n");
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
    EXPECT_FALSE(std::filesystem::exists("/dev/full.part"));
    EXPECT_EQ(run_tool({"unpack", "-", "-o", "/dev/full"}, kLog).err, "orvlog: /dev/full: No space left on device\n");
    EXPECT_EQ(run_tool({"pack", "-", "-o", "/dev/null"}, "abracadabra").status, 0);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(ToolOutput, FollowsALink)
{
    const ScratchFolder folder;
    const std::string file = folder.write("file", "before");
    std::filesystem::create_symlink("file", folder.path("link"));
    EXPECT_EQ(run_tool({"unpack", "-", "-o", folder.path("link")}, kLog).status, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path("link")));
    EXPECT_EQ(read_file(file), kLog);
}

TEST(ToolOutput, LeavesNothingWhenItIsBrokenOff)
{
    const ScratchFolder folder;
    // The command waits for the rest of a pipe while it is ended.
    const char* script = "cd \"$1\" && mkfifo pipe && { \"$2\" pack pipe -o out & } && exec 3>pipe && "
                         "until test -e out.part; do sleep 0.02; done && kill $! && wait $!; echo $?; ls";
    const ToolResult result = run_program({"timeout", "20", "sh", "-c", script, "sh", folder.path(""), ORVLOG_TOOL});
    EXPECT_EQ(result.out, "143\npipe\n") << result.err;
}

TEST(ToolOutput, FailureLeavesTheFileOfBefore)
{
    const ScratchFolder folder;
    const std::string file = folder.write("file", "before");
    EXPECT_EQ(run_tool({"unpack", "-", "-o", file}, "no log").status, 1);
    EXPECT_EQ(run_tool({"pack", folder.path("none"), "-o", file}).status, 1);
    EXPECT_EQ(run_tool({"merge", folder.path("none"), "-o", file}).status, 1);
    EXPECT_EQ(read_file(file), "before");
    EXPECT_FALSE(std::filesystem::exists(file + ".part"));
}

TEST(ToolOutput, LeavesAFileThatHasTheNameOfAPart)
{
    const ScratchFolder folder;
    const std::string own = folder.write("log.part", "my own notes");
    EXPECT_EQ(run_tool({"unpack", "-", "-o", folder.path("log")}, kLog).status, 0);
    EXPECT_EQ(read_file(folder.path("log")), kLog);
    EXPECT_EQ(read_file(own), "my own notes");
    EXPECT_EQ(run_tool({"unpack", "-", "-o", folder.path("log")}, "no log").status, 1);
    EXPECT_EQ(read_file(own), "my own notes");
    EXPECT_FALSE(std::filesystem::exists(folder.path("log.part2")));
}

constexpr char kTemp[] = "orvlog-00000004-00000003-00000002-00000001.tmp";
constexpr char kImage[] = "orvlog-00000004-00000003-00000002-00000001-async-image-0000000011.tmp";
const std::string kCallbacks = "  <GOP_ImageReleaseFn Id=\"11\">\n  </GOP_ImageReleaseFn>\n";

std::string temporary_log(const std::string& image_log)
{
    return "<ORV A=\"1\">\n  <GOP_ImageKeepFn Id=\"11\" async_img_log_file_name=\"" + image_log +
           "\" return=\"TRUE\">\n  </GOP_ImageKeepFn>\n  <Behind>\n  </Behind>\n</ORV>\n";
}

TEST(ToolMerge, PutsTheLogOfAKeptImageInItsPlace)
{
    const ScratchFolder folder;
    folder.write(kTemp, temporary_log(kImage));
    folder.write(kImage, "  <GOP_ImageReleaseFn Id=\"11\">\n  </GOP_ImageReleaseFn>\n");
    const ToolResult result = run_tool({"merge", folder.path(kTemp), "-o", folder.path("log.xml")});
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(read_file(folder.path("log.xml")),
              "<ORV A=\"1\">\n  <GOP_ImageKeepFn Id=\"11\"  return=\"TRUE\">\n  </GOP_ImageKeepFn>\n"
              "  <GOP_ImageReleaseFn Id=\"11\">\n  </GOP_ImageReleaseFn>\n  <Behind>\n  </Behind>\n</ORV>\n");
    EXPECT_FALSE(std::filesystem::exists(folder.path(kTemp)));
    EXPECT_FALSE(std::filesystem::exists(folder.path(kImage)));
    EXPECT_FALSE(std::filesystem::exists(folder.path(std::string(kTemp) + ".merging")));
}

TEST(ToolMerge, CodesTheMergedLog)
{
    const ScratchFolder folder;
    folder.write(kTemp, kLog);
    EXPECT_EQ(run_tool({"merge", folder.path(kTemp), "-o", folder.path("coded"), "--compressed"}).status, 0);
    EXPECT_EQ(read_file(folder.path("coded")), run_tool({"pack", "-", "-o", "-"}, kLog).out);
}

TEST(ToolMerge, TakesTheStandardInput)
{
    const ScratchFolder folder;
    const std::string here = std::filesystem::current_path();
    folder.write(kImage, "  <GOP_ImageReleaseFn Id=\"11\">\n  </GOP_ImageReleaseFn>\n");
    std::filesystem::current_path(folder.path(""));
    const ToolResult result = run_tool({"merge", "-", "-o", "-"}, temporary_log(kImage));
    std::filesystem::current_path(here);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out,
              "<ORV A=\"1\">\n  <GOP_ImageKeepFn Id=\"11\"  return=\"TRUE\">\n  </GOP_ImageKeepFn>\n"
              "  <GOP_ImageReleaseFn Id=\"11\">\n  </GOP_ImageReleaseFn>\n  <Behind>\n  </Behind>\n</ORV>\n");
    EXPECT_FALSE(std::filesystem::exists(folder.path(kImage)));
    const ToolResult other = run_tool({"merge", "-", "-o", folder.path("log.xml")}, "not a log");
    EXPECT_EQ(other.status, 1);
    EXPECT_EQ(other.err, "orvlog: -: not a log\n");
}

TEST(ToolMerge, FailureLosesNothing)
{
    const ScratchFolder folder;
    folder.write(kTemp, temporary_log(kImage));
    const ToolResult missing = run_tool({"merge", folder.path(kTemp), "-o", folder.path("log.xml")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find("the log of a kept image is missing: " + std::string(kImage)), std::string::npos);
    EXPECT_TRUE(std::filesystem::exists(folder.path(kTemp)));
    EXPECT_FALSE(std::filesystem::exists(folder.path("log.xml")));
    EXPECT_FALSE(std::filesystem::exists(folder.path("log.xml.part")));
    const std::string other = folder.write("other.tmp", "not a log");
    const ToolResult refused = run_tool({"merge", other, "-o", folder.path("log.xml")});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "orvlog: " + other + ": not a log\n");
    EXPECT_TRUE(std::filesystem::exists(other));
    const std::string coded = folder.write("coded.tmp", run_tool({"pack", "-", "-o", "-"}, kLog).out);
    EXPECT_EQ(run_tool({"merge", coded, "-o", folder.path("log.xml")}).err,
              "orvlog: " + coded + ": is a coded log, which has nothing to merge; orvlog unpack makes it plain\n");
    folder.write(kImage, kCallbacks);
    EXPECT_EQ(run_tool({"merge", folder.path(kTemp), "-o", "/dev/full"}).err,
              "orvlog: /dev/full: No space left on device\n");
    EXPECT_EQ(run_tool({"merge", folder.path(kTemp), "-o", "/dev/full", "--compressed"}).status, 1);
    EXPECT_EQ(read_file(folder.path(kTemp)), temporary_log(kImage));
    EXPECT_EQ(read_file(folder.path(kImage)), kCallbacks);
}

TEST(ToolMerge, TakesThePlaceOfItsInput)
{
    const std::string image = kCallbacks;
    const std::string merged = "<ORV A=\"1\">\n  <GOP_ImageKeepFn Id=\"11\"  return=\"TRUE\">\n  </GOP_ImageKeepFn>\n" +
                               kCallbacks + "  <Behind>\n  </Behind>\n</ORV>\n";
    for (const char* output : {kTemp, kImage, "link", "other"})
    {
        const ScratchFolder folder;
        const std::string log = folder.write(kTemp, temporary_log(kImage));
        folder.write(kImage, image);
        std::filesystem::create_symlink(kTemp, folder.path("link"));
        std::filesystem::create_hard_link(log, folder.path("other"));
        const ToolResult result = run_tool({"merge", log, "-o", folder.path(output)});
        EXPECT_EQ(result.err, "") << output;
        EXPECT_EQ(result.status, 0) << output;
        EXPECT_EQ(read_file(folder.path(output)), merged) << output;
    }
}

TEST(ToolMerge, TouchesNoFilesElsewhere)
{
    const ScratchFolder folder;
    const std::string victim = folder.write("victim", "precious");
    folder.write(kImage, kCallbacks);
    std::filesystem::create_directory(folder.path("in"));
    const std::string keep = "<GOP_ImageKeepFn async_img_log_file_name=\"";
    for (const std::string& bent :
         {keep + kImage + "\"></GOP_ImageKeepFn>" + keep + "../victim\"></GOP_ImageKeepFn>",
          keep + "../" + kImage + "\"></GOP_ImageKeepFn>", keep + folder.path(kImage) + "\"></GOP_ImageKeepFn>",
          "<GOP_ImageKeepFn\n async_img_log_file_name=\"" + victim + "\"></GOP_ImageKeepFn>",
          std::string(" async_img_log_file_name: /dev/zero\"</GOP_ImageKeepFn>"),
          keep + "bent.tmp\"></GOP_ImageKeepFn>", keep + kTemp + "\"></GOP_ImageKeepFn>",
          keep + "\n</GOP_ImageKeepFn>\"", keep + std::string(100000, 'a') + "\"></GOP_ImageKeepFn>",
          std::string(65530, ' ') + keep + "../victim\"></GOP_ImageKeepFn>"})
    {
        folder.write("in/" + std::string(kImage), kCallbacks);
        const std::string log = folder.write("in/" + std::string(kTemp), "<ORV A=\"1\">\n" + bent + "\n</ORV>\n");
        const ToolResult result = run_tool({"merge", log, "-o", folder.path("log.xml")});
        EXPECT_EQ(result.status, 1) << bent;
        EXPECT_EQ(
            result.err.find("orvlog: " + log + ": the log of a kept image is not read: no log names its files so: "),
            0U)
            << result.err;
        EXPECT_TRUE(std::filesystem::exists(log));
        EXPECT_FALSE(std::filesystem::exists(folder.path("log.xml")));
    }
    EXPECT_EQ(read_file(victim), "precious");
    EXPECT_EQ(read_file(folder.path("in/" + std::string(kImage))), kCallbacks);
}

TEST(ToolMerge, TakesOnlyWhatHoldsCallbacksOfImages)
{
    for (const char* content :
         {"precious", "<ORV A=\"1\">\n</ORV>\n", "  <ORV_object_paint id=\"0\">\n  </ORV_object_paint>\n",
          "  <GOP_ImageReleaseFn Id=\"11\">\n  </GOP_ImageReleaseFn>\nprecious\n"})
    {
        const ScratchFolder folder;
        const std::string log = folder.write(kTemp, temporary_log(kImage));
        const std::string image = folder.write(kImage, content);
        const ToolResult result = run_tool({"merge", log, "-o", folder.path("log.xml")});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "orvlog: " + log +
                                  ": the log of a kept image is not read: it holds something else: " + kImage + "\n");
        EXPECT_EQ(read_file(image), content);
        EXPECT_EQ(read_file(log), temporary_log(kImage));
        EXPECT_FALSE(std::filesystem::exists(folder.path("log.xml")));
    }
    // One that ends early is taken, as is one of an image that was never used.
    for (const char* content : {"", "  <GOP_ImageReadFn Id=\"11\" return=\"TRUE\">\n    <img_buf>\n"})
    {
        const ScratchFolder folder;
        const std::string log = folder.write(kTemp, temporary_log(kImage));
        folder.write(kImage, content);
        EXPECT_EQ(run_tool({"merge", log, "-o", folder.path("log.xml")}).err, "");
        EXPECT_NE(read_file(folder.path("log.xml")).find(content), std::string::npos);
        EXPECT_FALSE(std::filesystem::exists(folder.path(kImage)));
    }
}

TEST(ToolMerge, TakesNoLinkOutNorWhatIsNoFile)
{
    const ScratchFolder folder;
    std::filesystem::create_directory(folder.path("in"));
    folder.write("victim", kCallbacks);
    const std::string image = folder.path("in/" + std::string(kImage));
    const std::string log = folder.write("in/" + std::string(kTemp), temporary_log(kImage));
    const std::string start = "orvlog: " + log + ": the log of a kept image is not read: ";
    std::filesystem::create_symlink("../victim", image);
    EXPECT_EQ(run_tool({"merge", log, "-o", folder.path("log.xml")}).err,
              start + "a link leads to where no file of the log lies: " + kImage + "\n");
    for (const char* make : {"mkfifo", "mkdir"})
    {
        std::filesystem::remove(image);
        ASSERT_EQ(run_program({make, image}).status, 0);
        EXPECT_EQ(run_program({"timeout", "20", ORVLOG_TOOL, "merge", log, "-o", folder.path("log.xml")}).err,
                  start + "it is no ordinary file: " + kImage + "\n");
    }
    EXPECT_EQ(read_file(folder.path("victim")), kCallbacks);
    EXPECT_FALSE(std::filesystem::exists(folder.path("log.xml")));
}

TEST(ToolMerge, LooksInTheFoldersOfTheUser)
{
    const ScratchFolder folder;
    std::filesystem::create_directory(folder.path("there"));
    const std::string log = folder.write(kTemp, temporary_log(kImage));
    const std::string image = folder.write("there/" + std::string(kImage), kCallbacks);
    EXPECT_EQ(run_tool({"merge", log, "-o", folder.path("log.xml")}).status, 1);
    EXPECT_EQ(run_tool({"merge", log, "-o", folder.path("log.xml"), "--files-from", folder.path("gone")}).err,
              "orvlog: " + folder.path("gone") + ": No such file or directory\n");
    EXPECT_EQ(run_tool({"merge", log, "-o", folder.path("log.xml"), "--files-from", folder.path("there")}).err, "");
    EXPECT_NE(read_file(folder.path("log.xml")).find(kCallbacks), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(image));
    EXPECT_FALSE(std::filesystem::exists(log));
}

TEST(ToolMerge, SaysThatThereIsNoTemporaryFolder)
{
    const ScratchFolder folder;
    const std::string log = folder.write(kTemp, kLog);
    const ToolResult result =
        run_program({"env", "TMPDIR=" + folder.path("none"), ORVLOG_TOOL, "merge", log, "-o", folder.path("log.xml")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: " + folder.path("none") + ": No such file or directory\n");
    EXPECT_EQ(read_file(log), kLog);
    EXPECT_FALSE(std::filesystem::exists(folder.path("log.xml")));
}

TEST(ToolMerge, LeavesAFinishedLog)
{
    const ScratchFolder folder;
    const std::string log = folder.write("letter.orvlog.xml", kLog);
    const ToolResult result = run_tool({"merge", log, "-o", folder.path("log.xml")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: " + log +
                              ": nothing to merge: it is no temporary log, and no logs of kept images belong to it\n");
    EXPECT_EQ(read_file(log), kLog);
    EXPECT_FALSE(std::filesystem::exists(folder.path("log.xml")));
    // With logs of kept images it is merged, and stays with them.
    const std::string kept = folder.write("kept.orvlog.xml", temporary_log(kImage));
    folder.write(kImage, kCallbacks);
    EXPECT_EQ(run_tool({"merge", kept, "-o", folder.path("log.xml")}).err, "");
    EXPECT_NE(read_file(folder.path("log.xml")).find(kCallbacks), std::string::npos);
    EXPECT_EQ(read_file(kept), temporary_log(kImage));
    EXPECT_EQ(read_file(folder.path(kImage)), kCallbacks);
}

TEST(ToolMerge, AFinishedLogWithARelativeNameStays)
{
    const ScratchFolder folder;
    folder.write("kept.orvlog.xml", temporary_log(kImage));
    folder.write(kImage, kCallbacks);
    const ToolResult result =
        run_program({"env", "-C", folder.path(""), ORVLOG_TOOL, "merge", "kept.orvlog.xml", "-o", "log.xml"});
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(read_file(folder.path("kept.orvlog.xml")), temporary_log(kImage));
    EXPECT_EQ(read_file(folder.path(kImage)), kCallbacks);
    EXPECT_NE(read_file(folder.path("log.xml")), "");
}

TEST(ToolMerge, AnAttributeOfNoKeptImageIsText)
{
    const ScratchFolder folder;
    const std::string text = "<ORV A=\"1\">\n  <CStr val=\"async_img_log_file_name=\">\n  </CStr>\n</ORV>\n";
    EXPECT_EQ(run_tool({"merge", folder.write(kTemp, text), "-o", folder.path("log.xml")}).status, 0);
    EXPECT_EQ(read_file(folder.path("log.xml")), text);
}

}  // namespace
