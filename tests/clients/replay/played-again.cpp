#include "tests/clients/replay/played-again.h"

#include "clients/replay/as-logged.h"
#include "clients/replay/replay.h"
#include "orvlog/interface/orvlog-session-options.h"
#include "tests/support/fake-identity.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace orvlog::test
{

namespace
{

namespace fs = std::filesystem;

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

}  // namespace

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
    ORVLOG_SessionOptions session{};
    session.interface_out = &table;
    session.interface_in = as_logged.renderer.interface();
    session.allocator = allocator.get();
    session.identity = identity.get();
    session.log_stream = stream.get();
    session.file_prefix = side_files ? "side" : nullptr;
    session.ticket_functions = replay::ReplayTickets::functions();
    session.ticket_serial_functions = replay::ReplayTickets::serial_functions();
    session.comment_fn_out = &comments.function;
    session.comment_ctx_out = &comments.context;
    session.mode = kind.base_mode ? ORVLOG_MODE_BASE : ORVLOG_MODE_TRANSPARENT;
    session.base_content = kind.base_content ? 1 : 0;
    session.via_temporary_log = kind.script.merged ? 1 : 0;
    session.image_dump_flag = kind.image_attributes ? 1 : 0;
    session.glyph_fixed_format = kind.fixed_formats ? 1 : 0;
    session.glyph_get_format = kind.glyph_get_type;
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

}  // namespace orvlog::test
