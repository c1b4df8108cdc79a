// The text of --help.

#include "tools/help/usage.h"

namespace orvlog::tool
{

namespace
{

constexpr size_t kColumn = 24;

std::string names_of(const Parameter& parameter)
{
    std::string text = "  ";
    for (const std::string& name : parameter.names)
        text += (text.size() > 2 ? ", " : "") + name;
    if (!parameter.value.empty())
        text += (parameter.names.empty() ? "" : " ") + parameter.value;
    return text;
}

std::string lines_of(const Parameter& parameter)
{
    const std::string names = names_of(parameter);
    if (names.size() + 2 > kColumn)
        return names + "\n" + wrapped("", parameter.description, kColumn);
    return wrapped(names, parameter.description, kColumn);
}

// A parameter by its shortest name.
std::string synopsis_of(const Parameter& parameter)
{
    std::string text = parameter.value;
    if (!parameter.names.empty())
        text = parameter.names.front() + (text.empty() ? "" : " " + text);
    if (!parameter.required)
        text = "[" + text + "]";
    return parameter.repeated ? text + "..." : text;
}

std::string synopsis_of(const Usage& usage)
{
    std::string text = "[OPTION]...";
    for (const Parameter& argument : usage.arguments)
        text += " " + synopsis_of(argument);
    for (const Parameter& option : usage.options)
        if (option.required)
            text += " " + synopsis_of(option);
    return text;
}

std::string section(const std::string& heading, const std::vector<Parameter>& parameters)
{
    std::string text;
    std::string group;
    for (const Parameter& parameter : parameters)
    {
        const std::string title = parameter.names.empty() ? heading : parameter.group;
        if (title != group)
            text += "\n" + title + ":\n";
        group = title;
        text += lines_of(parameter);
    }
    return text;
}

std::string statuses()
{
    std::string text = "\nExit status:\n";
    for (const ExitMeaning& status : exit_meanings())
        text += "  " + std::to_string(status.status) + "  " + status.meaning + "\n";
    return text;
}

}  // namespace

std::string help_text(const Usage& usage)
{
    std::string text = "Usage: orvlog " + usage.name + " " + synopsis_of(usage) + "\n\n";
    text += wrapped("", usage.summary, 0);
    for (const std::string& paragraph : paragraphs_of(usage.details))
        text += "\n" + wrapped("", paragraph, 0);
    text += section("Arguments", usage.arguments) + section("Options", usage.options);
    return text + "\nExample: " + usage.example + "\n" + statuses();
}

}  // namespace orvlog::tool
