#include "clients/command-line/progress-bar.h"
#include "clients/system/system.h"
#include "tools/help/usage.h"
#include "tools/shared/command.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <new>

namespace orvlog::tool
{

namespace
{

constexpr std::array kCommands = {
    Command{"record", "log a PDF document's drawing calls, with its page images", "orvlog record letter.pdf",
            declare_record},
    Command{"pack", "code a file as a log is coded on the fly", "orvlog pack letter.orvlog.xml -o letter.orvlog",
            declare_pack},
    Command{"unpack", "bring a coded log back as plain text", "orvlog unpack letter.orvlog -o letter.orvlog.xml",
            declare_unpack},
    Command{"repack", "make a small log, of which any page can be read alone",
            "orvlog repack letter.orvlog.xml -o letter.orvlog.xml.zst", declare_repack},
    Command{"merge", "make one log of a temporary log and the logs of its kept images",
            "orvlog merge orvlog-0f0e0d0c-0b0a0908-07060504-03020100.tmp -o letter.orvlog.xml", declare_merge},
    Command{"replay", "make the calls of a log again, and draw its pages",
            "orvlog replay letter.orvlog.xml --png pages", declare_replay},
    Command{"info", "tell what a log is and what is in it", "orvlog info letter.orvlog.xml", declare_info},
    Command{"ls", "list the calls of a log, a line each", "orvlog ls letter.orvlog.xml --page 2 --kind object_paint",
            declare_ls},
    Command{"show", "show one call of a log", "orvlog show letter.orvlog.xml 12", declare_show},
    Command{"extract", "write what a log holds as files of their own",
            "orvlog extract images letter.orvlog.xml -o images", declare_extract},
    Command{"check", "tell whether a log holds together", "orvlog check letter.orvlog.xml", declare_check},
    Command{"at", "tell which calls changed a pixel of a page", "orvlog at letter.orvlog.xml --page 1 120,80",
            declare_at},
    Command{"diff", "tell where two logs of a job differ", "orvlog diff good.orvlog.xml bad.orvlog.xml", declare_diff},
    Command{"trim", "make a smaller log of some calls, which still replays",
            "orvlog trim letter.orvlog.xml --pages 2 -o page-2.orvlog.xml", declare_trim},
    Command{"minimise", "make the smallest log for which a command still succeeds",
            "orvlog minimise letter.orvlog.xml --while 'orvlog ls {} | grep -q screen' -o small.orvlog.xml",
            declare_minimise},
    Command{"redact", "make a log that may be handed on", "orvlog redact letter.orvlog.xml -o redacted.orvlog.xml",
            declare_redact},
    Command{"compare", "tell where two renderers draw a log differently",
            "orvlog compare letter.orvlog.xml --renderer old/driver.so --renderer new/driver.so", declare_compare},
    Command{"regress", "hold what a renderer draws against a baseline",
            "orvlog regress logs --renderer driver.so --baseline pages --update", declare_regress},
    Command{"profile", "tell what the calls of a log cost a renderer",
            "orvlog profile letter.orvlog.xml --renderer driver.so", declare_profile},
    Command{"to-c", "make a program in C of the calls of a log", "orvlog to-c letter.orvlog.xml -o letter.c",
            declare_to_c},
    Command{"state", "tell what holds when a call of a log is made", "orvlog state letter.orvlog.xml 17",
            declare_state},
    Command{"export", "write logs as tables, into a database or as lines of JSON",
            "orvlog export spool/*.xml --sqlite jobs.sqlite", declare_export},
    Command{"query", "ask a database of tables in SQL", "orvlog query jobs.sqlite fonts", declare_query},
    Command{"watch", "export the logs of a folder as they come", "orvlog watch spool --jsonl tables --once",
            declare_watch},
    Command{"report", "make a page for a browser of a log: pages, calls, pixels",
            "orvlog report letter.orvlog.xml -o letter.html", declare_report},
    Command{"ticket", "show a serialised colour ticket as the text that a log holds",
            "orvlog ticket job-1.ticket --family rgb", declare_ticket},
    Command{"help", "show what a command does and which options it takes", "orvlog help record", declare_help},
};

int print_version()
{
    std::printf("orvlog %s\n", ORVLOG_VERSION);
    return EXIT_DONE;
}

const Command* find_command(const char* name)
{
    for (const Command& command : kCommands)
        if (std::strcmp(command.name, name) == 0)
            return &command;
    return nullptr;
}

int run_command(const Command& command, int argc, char** argv)
{
    Run run;
    const std::unique_ptr<CLI::App> app = make_parser(command, run);
    try
    {
        app->parse(argc, argv);
    }
    catch (const CLI::CallForHelp&)
    {
        std::fputs(help_text(usage_of(command)).c_str(), stdout);
        return EXIT_DONE;
    }
    catch (const CLI::ParseError& error)
    {
        std::fprintf(stderr, "orvlog %s: %s (see orvlog %s --help)\n", command.name, error.what(), command.name);
        return EXIT_BAD_USE;
    }
    return run();
}

int main_of_tool(int argc, char** argv)
{
    if (argc < 2)
    {
        std::fputs("orvlog: which command? (see orvlog help)\n", stderr);
        return EXIT_BAD_USE;
    }
    if (std::strcmp(argv[1], "--version") == 0)
        return print_version();
    const bool help = std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0;
    const Command* command = find_command(help ? "help" : argv[1]);
    if (command == nullptr)
    {
        std::fprintf(stderr, "orvlog: no command '%s' (see orvlog help)\n", argv[1]);
        return EXIT_BAD_USE;
    }
    return run_command(*command, argc - 1, argv + 1);
}

// What couldn't be printed is told by a command that has not failed for another reason.
int finish_output(int status)
{
    if (status != EXIT_DONE || (std::fflush(stdout) == 0 && std::ferror(stdout) == 0))
        return status;
    return fail_to_print();
}

}  // namespace

std::span<const Command> commands()
{
    return kCommands;
}

void say(const std::string& message)
{
    command_line::ProgressBar::clear();
    std::fprintf(stderr, "orvlog: %s\n", message.c_str());
}

// The C library of Windows says of a pipe that nobody reads that the write makes no sense.
int fail_to_print()
{
    const bool gone = errno == EINVAL && system::is_pipe(system::Stream::output);
    return fail(std::string("standard output: ") + std::strerror(gone ? EPIPE : errno));
}

int fail(const std::string& message)
{
    say(message);
    return EXIT_FAILED;
}

}  // namespace orvlog::tool

int main(int argc, char** argv)
{
    orvlog::system::begin_program(&argc, &argv);
    try
    {
        return orvlog::tool::finish_output(orvlog::tool::main_of_tool(argc, argv));
    }
    catch (const std::filesystem::filesystem_error& error)
    {
        return orvlog::tool::fail(error.path1().string() + ": " + error.code().message());
    }
    catch (const std::bad_alloc&)
    {
        return orvlog::tool::fail("out of memory");
    }
    catch (const std::exception& error)
    {
        return orvlog::tool::fail(error.what());
    }
}
