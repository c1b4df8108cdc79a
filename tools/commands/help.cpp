// orvlog help: the commands and their options, for people, for man and for shells.

#include "tools/help/usage.h"
#include "tools/shared/command.h"
#include "tools/shared/output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

namespace orvlog::tool
{

namespace
{

struct HelpOptions
{
    std::string topic;
    std::string man_folder;
    std::string shell;
};

int print_commands()
{
    std::puts("Usage: orvlog COMMAND [OPTION]...\n       orvlog --version\n\nCommands:");
    for (const Command& command : commands())
        std::printf("  %-9s %s\n", command.name, command.summary);
    std::puts("\nMore on a command: orvlog help COMMAND, or orvlog COMMAND --help.");
    return EXIT_DONE;
}

int print(const std::string& text)
{
    std::fputs(text.c_str(), stdout);
    if (std::fflush(stdout) != 0)
        return fail_to_print();
    return EXIT_DONE;
}

int write_page(const std::filesystem::path& file, const std::string& page)
{
    Output output(file.string());
    if (output.open() && output.write(page.data(), page.size()) && output.finish())
        return EXIT_DONE;
    return fail(file.string() + ": " + std::strerror(errno));
}

int write_manual(const std::filesystem::path& folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    int status = write_page(folder / "orvlog.1", manual_overview());
    for (const Command& command : commands())
    {
        if (status == EXIT_DONE)
            status =
                write_page(folder / (std::string("orvlog-") + command.name + ".1"), manual_page(usage_of(command)));
    }
    return status;
}

int print_help(const HelpOptions& options)
{
    if (!options.man_folder.empty())
        return write_manual(options.man_folder);
    if (!options.shell.empty())
        return print(options.shell == "bash" ? bash_completion() : zsh_completion());
    for (const Command& command : commands())
        if (options.topic == command.name)
            return print(help_text(usage_of(command)));
    return print_commands();
}

std::vector<std::string> names()
{
    std::vector<std::string> all;
    for (const Command& command : commands())
        all.emplace_back(command.name);
    return all;
}

}  // namespace

Run declare_help(CLI::App& app)
{
    auto options = std::make_shared<HelpOptions>();
    app.footer("Without a command it lists them all.\n\n"
               "The manual pages and the completions come with an installation; both are written from the same "
               "declarations as this help. Without one, source <(orvlog help --completion bash) does for bash.");
    app.add_option("COMMAND", options->topic, "the command to tell about")->check(CLI::IsMember(names()));
    app.add_option("--man", options->man_folder, "write the manual pages to DIR")->type_name("DIR");
    app.add_option("--completion", options->shell, "write what completes command lines in this shell")
        ->check(CLI::IsMember({"bash", "zsh"}));
    return [options] { return print_help(*options); };
}

}  // namespace orvlog::tool
