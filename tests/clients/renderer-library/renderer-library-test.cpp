// Renderers that are shared libraries: one in C is loaded, a job of a log is drawn by it behind the logger, and its log
// is had again as logged. The logs in tests/expected are those that drivers in C write, on each system.

#include "clients/renderer-library/renderer-library.h"
#include "clients/replay/as-logged.h"
#include "clients/replay/replay.h"
#include "orvlog/interface/orvlog-session-options.h"
#include "tests/support/fake-identity.h"
#include "tests/support/memory-stream.h"
#include "tests/support/temp-folder.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace
{

using namespace orvlog::test;
using orvlog::renderer_library::Host;
using orvlog::renderer_library::RendererLibrary;
using orvlog::renderer_library::split_name;

const std::string kRenderer = ORVLOG_ROW_RENDERER;

std::string expected(const std::string& name)
{
    std::ifstream file(std::string(ORVLOG_EXPECTED) + "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The log of the job of `log`, drawn by a renderer with the logger in front of it.
std::string drawn_by(const ORV_Interface* renderer, const std::string& log, orvlog::replay::AsLogged* as_logged,
                     std::string* differences)
{
    std::istringstream first(log);
    const orvlog::replay::LogKind kind = orvlog::replay::examine(first);
    orvlog::replay::ReplayTickets tickets;
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    ORV_Interface table{};
    ORVLOG_SessionOptions session{};
    session.interface_out = &table;
    session.interface_in = renderer;
    session.allocator = allocator.get();
    session.identity = identity.get();
    session.log_stream = stream.get();
    session.ticket_functions = orvlog::replay::ReplayTickets::functions();
    session.ticket_serial_functions = orvlog::replay::ReplayTickets::serial_functions();
    session.mode = kind.base_mode ? ORVLOG_MODE_BASE : ORVLOG_MODE_TRANSPARENT;
    session.base_content = kind.base_content ? 1 : 0;
    session.glyph_fixed_format = kind.fixed_formats ? 1 : 0;
    session.glyph_get_format = kind.glyph_get_type;
    EXPECT_EQ(orvlog_create_session_with(&session), 1U);
    orvlog::replay::Options options;
    options.as_logged = as_logged;
    options.differ = [differences](const std::string& line) { *differences += line + "\n"; };
    std::istringstream second(log);
    orvlog::replay::play(second, &table, tickets, options);
    ORVLOG_DLL_shutdown(table.document_start.context);
    return stream.text();
}

std::string drawn_by_library(const std::string& name, const std::string& log, uint32_t* pages)
{
    Host host;
    host.take_page = [pages](const ORVLOG_RendererPage&) { return ++*pages > 0; };
    RendererLibrary library(std::move(host));
    std::string why;
    EXPECT_TRUE(library.open(name, nullptr, &why)) << why;
    if (library.interface() == nullptr)
        return why;
    std::string none;
    std::string drawn = drawn_by(library.interface(), log, nullptr, &none);
    EXPECT_TRUE(library.end());
    return drawn;
}

std::string again(const std::string& log)
{
    std::istringstream first(log);
    orvlog::replay::AsLogged as_logged(orvlog::replay::examine(first).script);
    std::string differences;
    std::string made = drawn_by(as_logged.renderer.interface(), log, &as_logged, &differences);
    EXPECT_EQ(differences, "");
    return made;
}

// It reads the image by rows, which the log of the job has not.
TEST(RendererLibraries, DrawAJobBehindTheLogger)
{
    uint32_t pages = 0;
    const std::string log = drawn_by_library(kRenderer, expected("examples/page.xml"), &pages);
    EXPECT_EQ(pages, 1U);
    EXPECT_EQ(log, expected("page-by-rows.xml"));
}

TEST(RendererLibraries, LeaveLogsThatAreHadAgain)
{
    TempFolder folder;
    const std::string jobs[] = {expected("every-call-transparent.xml"), expected("examples/page.xml")};
    for (const std::string& job : jobs)
        for (const char* symbol : {"", ":fumbling_renderer"})
        {
            uint32_t pages = 0;
            const std::string log = drawn_by_library(kRenderer + symbol, job, &pages);
            EXPECT_TRUE(log != job) << symbol;
            EXPECT_TRUE(again(log) == log) << symbol;
        }
}

TEST(RendererLibraries, LogsOfDriversInCAreHadAgain)
{
    for (const char* name : {"edges", "job", "mapped", "page", "smallest", "ticket"})
    {
        const std::string log = expected("examples/" + std::string(name) + ".xml");
        EXPECT_FALSE(log.empty()) << name;
        EXPECT_EQ(again(log), log) << name;
    }
    const std::string rows = expected("page-by-rows.xml");
    EXPECT_EQ(again(rows), rows);
}

TEST(RendererLibraries, SayWhyTheyCantBeLoaded)
{
    TempFolder folder;
    std::ofstream("text.dll") << "no library";
    for (const char* name : {"none.dll", "text.dll", ""})
    {
        RendererLibrary library(Host{});
        std::string why;
        EXPECT_FALSE(library.open(name, nullptr, &why)) << name;
        EXPECT_GT(why.size(), 10U) << name << ": " << why;
        EXPECT_EQ(why.find('\n'), std::string::npos) << why;
        EXPECT_EQ(library.interface(), nullptr);
    }
    RendererLibrary other(Host{});
    std::string why;
    EXPECT_FALSE(other.open(kRenderer + ":other", nullptr, &why));
    EXPECT_EQ(why, "has no function other");
}

TEST(RendererLibraries, AreNamedByFileAndSymbol)
{
    EXPECT_EQ(split_name("a.so").symbol, "orvlog_renderer");
    EXPECT_EQ(split_name("dir/a.so:rows").file, "dir/a.so");
    EXPECT_EQ(split_name("dir/a.so:rows").symbol, "rows");
    EXPECT_EQ(split_name("C:\\drivers\\a.dll").file, "C:\\drivers\\a.dll");
    EXPECT_EQ(split_name("C:\\drivers\\a.dll:rows").file, "C:\\drivers\\a.dll");
    EXPECT_EQ(split_name("C:/drivers/a.dll").symbol, "orvlog_renderer");
}

}  // namespace
