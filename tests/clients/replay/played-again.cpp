#include "tests/clients/replay/played-again.h"

#include "clients/replay/replay.h"
#include "tests/clients/replay/session-as-logged.h"
#include "tests/support/fake-identity.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

namespace orvlog::test
{

namespace fs = std::filesystem;

Files files_here()
{
    Files files;
    for (const auto& entry : fs::directory_iterator("."))
    {
        std::ifstream file(entry.path(), std::ios::binary);
        files[entry.path().filename().string()] = {std::istreambuf_iterator<char>(file), {}};
    }
    return files;
}

// The first file that isn't the same in both, with what they have of it; empty if there is none.
std::string first_other(const Files& one, const Files& other)
{
    const auto text = [](const Files& files, const std::string& name)
    {
        const auto known = files.find(name);
        return known != files.end() ? "\"" + known->second + "\"" : "no file";
    };
    Files all = one;
    all.insert(other.begin(), other.end());
    for (const auto& file : all)
        if (text(one, file.first) != text(other, file.first))
            return file.first + ": " + text(one, file.first) + ", and not " + text(other, file.first);
    return "";
}

std::string play_again(const std::string& log, const std::string& folder, bool side_files, std::string* differences)
{
    std::istringstream first(log);
    const replay::LogKind kind = replay::examine(first);
    replay::AsLogged as_logged(kind.script);
    replay::ReplayTickets tickets;
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    ORV_Interface table{};
    Comments comments;
    ORVLOG_SessionOptions session = session_as_logged(kind, &as_logged, &table, &comments);
    session.allocator = allocator.get();
    session.identity = identity.get();
    session.log_stream = stream.get();
    session.file_prefix = side_files ? "side" : nullptr;
    EXPECT_EQ(orvlog_create_session_with(&session), 1U);
    replay::Options options;
    options.files = reader::LogFiles(folder + "/log.xml");
    options.as_logged = &as_logged;
    options.differ = [differences](const std::string& line) { *differences += line + "\n"; };
    options.comment = [&](const std::string& text) { comments.print("%s", text.c_str()); };
    std::istringstream second(log);
    const replay::Outcome outcome = replay::play(second, &table, tickets, options);
    ORVLOG_DLL_shutdown(table.document_start.context);
    return stream.text();
}

std::string limit_of(const std::string& log, const Files& beside)
{
    static const std::regex named(R"re(<GOP_ImageKeepFn Id="(\d+)" async_img_log_file_name="[^"]*-(\d+)\.tmp")re");
    static const std::regex again_in_log(R"re(</GOP_ImageKeepFn>\s*<GOP_ImageKeepFn Id="\d+" return)re");
    static const std::regex again(R"re(<GOP_ImageKeepFn Id="\d+" return)re");
    std::set<std::string> logs;
    for (std::sregex_iterator keep(log.begin(), log.end(), named), end; keep != end; ++keep)
    {
        if (!logs.insert((*keep)[2]).second)
            return "two images log into one file";
        if (std::stoul((*keep)[1]) >= std::stoul((*keep)[2]))
            return "an image was prepared while its keep was answered";
    }
    bool kept_again = std::regex_search(log, again_in_log);
    for (const auto& file : beside)
        kept_again |= file.first.ends_with(".tmp") && std::regex_search(file.second, again);
    return kept_again ? "an image was kept once more" : "";
}

}  // namespace orvlog::test
