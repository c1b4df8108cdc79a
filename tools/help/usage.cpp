#include "tools/help/usage.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <string_view>

namespace orvlog::tool
{

namespace
{

// A value's name says what it is. Files are also those that end in FILE or LOG.
constexpr std::array<std::string_view, 4> kFileNames = {"CODED", "PATH", "PREFIX", "TICKET"};
constexpr std::array<std::string_view, 2> kFolderNames = {"DIR", "FOLDER"};
constexpr std::array<std::string_view, 3> kNumberTypes = {"UINT", "INT", "FLOAT"};

constexpr size_t kTextWidth = 80;

constexpr std::array kExitMeanings = {
    ExitMeaning{EXIT_DONE, "done"},
    ExitMeaning{EXIT_FAILED, "failed, with one line on standard error"},
    ExitMeaning{EXIT_BAD_USE, "bad command line"},
};

template <size_t N> bool is_one_of(const std::array<std::string_view, N>& names, const std::string& name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool ends_with(const std::string& text, std::string_view end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

Offer offer_of(const Parameter& parameter)
{
    if (!parameter.choices.empty())
        return Offer::choices;
    if (is_one_of(kFolderNames, parameter.value))
        return Offer::folders;
    const bool file = is_one_of(kFileNames, parameter.value) || ends_with(parameter.value, "FILE") ||
                      ends_with(parameter.value, "LOG");
    return file ? Offer::files : Offer::nothing;
}

// What stands between two marks; empty when it isn't there.
std::string between(const std::string& text, const std::string& open, const std::string& close)
{
    const size_t start = text.find(open);
    const size_t end = start == std::string::npos ? start : text.find(close, start + open.size());
    return end == std::string::npos ? "" : text.substr(start + open.size(), end - start - open.size());
}

std::vector<std::string> split(const std::string& text, char mark)
{
    std::vector<std::string> parts;
    for (size_t start = 0; start < text.size();)
    {
        const size_t end = std::min(text.find(mark, start), text.size());
        parts.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

std::string join(const std::vector<std::string>& parts, const std::string& mark)
{
    std::string text;
    for (const std::string& part : parts)
        text += (text.empty() ? "" : mark) + part;
    return text;
}

// The parser tells of a type as of "NAME:{a,b}" or "N:UINT in [1 - 10]": its name, then its checks.
void read_type(const CLI::Option& option, Parameter* parameter)
{
    const std::string type = option.get_type_name();
    const std::string name = type.substr(0, type.find(':'));
    parameter->choices = split(between(type, ":{", "}"), ',');
    const std::string choices = join(parameter->choices, "|");
    if (option.get_positional())
        parameter->value = option.get_name(true);
    else if (name == "TEXT" && !choices.empty())
        parameter->value = choices;
    else
        parameter->value = is_one_of(kNumberTypes, name) ? "N" : name;
    parameter->repeated = option.get_expected_max() > 1;

    if (!choices.empty() && parameter->value != choices)
        parameter->description += ": " + join(parameter->choices, ", ");
    std::string range = between(type, " in [", "]");
    if (const size_t dash = range.find(" - "); dash != std::string::npos)
        parameter->description += ", from " + range.replace(dash, 3, " to ");
    if (!option.get_default_str().empty())
        parameter->description += " (default " + option.get_default_str() + ")";
    parameter->offer = offer_of(*parameter);
}

Parameter parameter_of(const CLI::Option& option)
{
    Parameter parameter;
    parameter.description = option.get_description();
    parameter.group = option.get_group();
    parameter.required = option.get_required();
    for (const std::string& name : option.get_snames())
        parameter.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        parameter.names.push_back("--" + name);
    if (option.get_type_size() != 0)
        read_type(option, &parameter);
    return parameter;
}

// A group that the parser checks as a whole is a parser of its own below the command's, with a help flag again.
void add_parameters(const CLI::App& app, const CLI::App* above, Usage* usage)
{
    for (const CLI::Option* option : app.get_options())
    {
        if (option->get_group().empty() || (above != nullptr && option == app.get_help_ptr()))
            continue;
        Parameter parameter = parameter_of(*option);
        if (above != nullptr)
            parameter.group = app.get_group();
        (parameter.names.empty() ? usage->arguments : usage->options).push_back(std::move(parameter));
    }
    for (const CLI::App* group : app.get_subcommands([](const CLI::App* below) { return below->get_name().empty(); }))
        add_parameters(*group, &app, usage);
}

}  // namespace

std::span<const ExitMeaning> exit_meanings()
{
    return kExitMeanings;
}

std::unique_ptr<CLI::App> make_parser(const Command& command, Run& run)
{
    auto app = std::make_unique<CLI::App>(command.summary, std::string("orvlog ") + command.name);
    app->set_help_flag("-h,--help", "show this text");
    // A word that begins with a slash is a path on each system.
    app->allow_windows_style_options(false);
    run = command.declare(*app);
    return app;
}

Usage usage_of(const Command& command)
{
    Run run;
    const std::unique_ptr<CLI::App> app = make_parser(command, run);
    Usage usage = {command.name, command.summary, app->get_footer(), command.example, {}, {}};
    add_parameters(*app, nullptr, &usage);
    return usage;
}

std::vector<Parameter> program_options()
{
    Parameter help;
    help.names = {"-h", "--help"};
    help.description = "list the commands";
    Parameter version;
    version.names = {"--version"};
    version.description = "show the version";
    return {help, version};
}

std::vector<std::string> paragraphs_of(const std::string& text)
{
    std::vector<std::string> paragraphs;
    for (size_t start = 0; start < text.size();)
    {
        const size_t end = std::min(text.find("\n\n", start), text.size());
        paragraphs.push_back(text.substr(start, end - start));
        start = end + 2;
    }
    return paragraphs;
}

std::string wrapped(std::string line, const std::string& text, size_t column)
{
    std::string lines;
    std::istringstream words(text);
    line.resize(std::max(line.size(), column), ' ');
    bool begun = false;
    for (std::string word; words >> word; begun = true)
    {
        if (begun && line.size() + 1 + word.size() > kTextWidth)
        {
            lines += line + "\n";
            line.assign(column, ' ');
            begun = false;
        }
        line += (begun ? " " : "") + word;
    }
    return lines + line + "\n";
}

}  // namespace orvlog::tool
