// What the commands of `orvlog` share: the form of the table in tools/main.cpp, and the exit statuses.

#pragma once

#include "clients/system/signals.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <span>
#include <string>

namespace orvlog::tool
{

// Exit statuses of every command. A command that runs another program passes that program's status on.
enum ExitStatus
{
    EXIT_DONE = 0,                       // what was asked for is done
    EXIT_FAILED = 1,                     // it could not be done; one line on standard error says why
    EXIT_BAD_USE = 2,                    // the command line makes no sense
    EXIT_SIGNAL = system::kSignalStatus  // plus the number of the signal that ended the program run by the command
};

struct ExitMeaning
{
    int status;
    const char* meaning;
};

// What help and manual say of the statuses.
std::span<const ExitMeaning> exit_meanings();

// What a command does once its command line is read; gives the exit status.
using Run = std::function<int()>;

// Help, manual pages and completions come from this and from what `declare` does; see usage.h. What it leaves as the
// parser's footer is the longer description: paragraphs that tell what is read and written. The name of a value says
// what completions offer for it: files for FILE, LOG, what ends like them, CODED, PATH, PREFIX and TICKET; folders for
// DIR and FOLDER; the words of CLI::IsMember; nothing for any other.
struct Command
{
    const char* name;               // "record"
    const char* summary;            // one line, shown by `orvlog help`
    const char* example;            // one command line, shown by --help
    Run (*declare)(CLI::App& app);  // declares the options, and gives what to run when they are parsed
};

// All commands, in the order in which help shows them.
std::span<const Command> commands();

// The option parser of one command. `run` takes what the command gave.
std::unique_ptr<CLI::App> make_parser(const Command& command, Run& run);

// Writes "orvlog: " and the message as one line on standard error, and gives EXIT_FAILED.
int fail(const std::string& message);
// The same for a standard output that took not all, with the error variable's reason.
int fail_to_print();
// The same for what doesn't end the command, or ends it with another status.
void say(const std::string& message);

Run declare_record(CLI::App& app);
Run declare_pack(CLI::App& app);
Run declare_unpack(CLI::App& app);
Run declare_merge(CLI::App& app);
Run declare_repack(CLI::App& app);
Run declare_replay(CLI::App& app);
Run declare_report(CLI::App& app);
Run declare_info(CLI::App& app);
Run declare_ls(CLI::App& app);
Run declare_show(CLI::App& app);
Run declare_state(CLI::App& app);
Run declare_extract(CLI::App& app);
Run declare_check(CLI::App& app);
Run declare_at(CLI::App& app);
Run declare_diff(CLI::App& app);
Run declare_trim(CLI::App& app);
Run declare_minimise(CLI::App& app);
Run declare_redact(CLI::App& app);
Run declare_export(CLI::App& app);
Run declare_query(CLI::App& app);
Run declare_watch(CLI::App& app);
Run declare_to_c(CLI::App& app);
Run declare_compare(CLI::App& app);
Run declare_regress(CLI::App& app);
Run declare_profile(CLI::App& app);
Run declare_ticket(CLI::App& app);
Run declare_help(CLI::App& app);

}  // namespace orvlog::tool
