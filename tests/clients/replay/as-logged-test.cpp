// Jobs by chance, replayed as they were: the log of the replay is the log, byte for byte.

#include "clients/replay/as-logged.h"
#include "clients/replay/replay.h"
#include "orvlog/interface/orvlog-session-options.h"
#include "tests/clients/replay/random-job.h"
#include "tests/support/memory-stream.h"
#include "tests/support/temp-folder.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>

namespace
{

namespace fs = std::filesystem;
using namespace orvlog::test;

using Files = std::map<std::string, std::string>;

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

struct Comments
{
    void print(const char* format, ...)
    {
        va_list args;
        va_start(args, format);
        function(context, format, args);
        va_end(args);
    }

    orvlog_comment_fn_type function = nullptr;
    void* context = nullptr;
};

// A log once more, as logged; the files that it names lie in `folder`.
std::string again(const std::string& log, const std::string& folder, bool side_files, std::string* differences)
{
    std::istringstream first(log);
    const orvlog::replay::LogKind kind = orvlog::replay::examine(first);
    orvlog::replay::AsLogged as_logged(kind.script);
    orvlog::replay::ReplayTickets tickets;
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    ORV_Interface table{};
    Comments comments;
    ORVLOG_SessionOptions session{};
    session.interface_out = &table;
    session.interface_in = as_logged.renderer.interface();
    session.allocator = allocator.get();
    session.identity = identity.get();
    session.log_stream = stream.get();
    session.file_prefix = side_files ? "side" : nullptr;
    session.ticket_functions = orvlog::replay::ReplayTickets::functions();
    session.ticket_serial_functions = orvlog::replay::ReplayTickets::serial_functions();
    session.comment_fn_out = &comments.function;
    session.comment_ctx_out = &comments.context;
    session.mode = kind.base_mode ? ORVLOG_MODE_BASE : ORVLOG_MODE_TRANSPARENT;
    session.base_content = kind.base_content ? 1 : 0;
    session.via_temporary_log = kind.script.merged ? 1 : 0;
    session.image_dump_flag = kind.image_attributes ? 1 : 0;
    session.glyph_fixed_format = kind.fixed_formats ? 1 : 0;
    session.glyph_get_format = kind.glyph_get_type;
    EXPECT_EQ(orvlog_create_session_with(&session), 1U);
    orvlog::replay::Options options;
    options.files = orvlog::reader::LogFiles(folder + "/log.xml");
    options.as_logged = &as_logged;
    options.differ = [differences](const std::string& line) { *differences += line + "\n"; };
    options.comment = [&](const std::string& text) { comments.print("%s", text.c_str()); };
    std::istringstream second(log);
    const orvlog::replay::Outcome outcome = orvlog::replay::play(second, &table, tickets, options);
    ORVLOG_DLL_shutdown(table.document_start.context);
    return stream.text();
}

// The first line in which they differ, with those around it.
std::string first_difference(const std::string& one, const std::string& other)
{
    size_t same = 0;
    while (same < one.size() && same < other.size() && one[same] == other[same])
        ++same;
    const size_t from = same > 600 ? same - 600 : 0;
    return one.substr(from, same - from + 300) + "\n---- instead:\n" + other.substr(same, 300);
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

uint32_t told(const char* name, uint32_t usual)
{
    const char* text = std::getenv(name);
    return text != nullptr ? static_cast<uint32_t>(std::strtoul(text, nullptr, 10)) : usual;
}

// What a log is for a job by chance, or what it became instead, to be looked at in ORVLOG_KEEP.
void keep(uint32_t seed, const char* which, const std::string& log)
{
    if (const char* folder = std::getenv("ORVLOG_KEEP"); folder != nullptr)
        std::ofstream(std::string(folder) + "/" + std::to_string(seed) + which, std::ios::binary) << log;
}

TEST(AsLogged, GivesTheLogsOfJobsByChance)
{
    TempFolder folder;
    const uint32_t first = told("ORVLOG_SEED", 0);
    for (uint32_t seed = first; seed < first + told("ORVLOG_SESSIONS", 20); ++seed)
    {
        fs::create_directories("job");
        fs::create_directories("again");
        fs::current_path("job");
        RandomJob job(seed);
        job.run();
        const auto left = files_here();
        fs::current_path("../again");
        std::string differences;
        const std::string log = again(job.log(), "../job", job.side_files(), &differences);
        const bool same = log == job.log();
        if (!same || std::getenv("ORVLOG_ALL") != nullptr)
            keep(seed, "-job.xml", job.log());
        if (!same || std::getenv("ORVLOG_ALL") != nullptr)
            keep(seed, "-again.xml", log);
        EXPECT_TRUE(same) << "seed " << seed << "\n" << differences << first_difference(job.log(), log);
        EXPECT_EQ(differences, "") << "seed " << seed;
        EXPECT_EQ(first_other(left, files_here()), "") << "seed " << seed;
        fs::current_path("..");
        fs::remove_all("job");
        fs::remove_all("again");
    }
}

}  // namespace
