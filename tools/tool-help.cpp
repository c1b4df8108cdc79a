#include "tools/command.h"

#include <cstdio>
#include <memory>

namespace tool
{

namespace
{

int print_commands()
{
    std::puts("Usage: orvlog COMMAND [OPTION]...\n       orvlog --version\n\nCommands:");
    for (const Command& command : commands())
        std::printf("  %-9s %s\n", command.name, command.summary);
    std::puts("\nMore on a command: orvlog help COMMAND, or orvlog COMMAND --help.");
    return EXIT_DONE;
}

int print_help(const std::string& topic)
{
    if (topic.empty())
        return print_commands();
    for (const Command& command : commands())
    {
        if (topic != command.name)
            continue;
        Run run;
        std::fputs(make_parser(command, run)->help().c_str(), stdout);
        return EXIT_DONE;
    }
    return fail("no command '" + topic + "'");
}

}  // namespace

Run declare_help(CLI::App& app)
{
    auto topic = std::make_shared<std::string>();
    app.add_option("COMMAND", *topic, "the command to tell about; without it, a list of all");
    return [topic] { return print_help(*topic); };
}

}  // namespace tool
