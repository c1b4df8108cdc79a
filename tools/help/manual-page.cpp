// Pages of the manual in troff's man macros.

#include "tools/help/usage.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace orvlog::tool
{

namespace
{

constexpr std::string_view kOverview =
    "orvlog records the drawing calls of a rendering job as an XML log, and works on such logs.\n\n"
    "A file that is read may be a path or a URL (http: or file:), and - is the standard input; a file that is "
    "written may be -, the standard output. A file appears under its name only once it is whole, but for the logs of "
    "record and replay: these can be read while they are written, and as far as they got after a crash. Progress is "
    "shown "
    "on a terminal alone, and only for what takes longer than a second.";

// Marks with a meaning of their own in troff, and what gives them as they are.
std::string_view mark_of(char c)
{
    switch (c)
    {
    case '\\':
        return "\\(rs";
    case '\'':
        return "\\(aq";
    case '`':
        return "\\(ga";
    case '^':
        return "\\(ha";
    case '~':
        return "\\(ti";
    default:
        return {};
    }
}

bool is_hyphen(const std::string& text, size_t at)
{
    const auto is_letter = [&text](size_t i) { return i < text.size() && std::isalpha(text[i] & 0x7f) != 0; };
    return at > 0 && is_letter(at - 1) && is_letter(at + 1);
}

// A text as it is to be read; `typed` for what a user would type, in which no hyphen may turn into a dash.
std::string plain(const std::string& text, bool typed = false)
{
    std::string page;
    for (size_t i = 0; i < text.size(); ++i)
    {
        const std::string_view mark = mark_of(text[i]);
        if (text[i] == '.' && (i == 0 || std::isspace(text[i - 1] & 0x7f) != 0))
            page += "\\&";
        if (text[i] == '-' && (typed || !is_hyphen(text, i)))
            page += "\\-";
        else if (mark.empty())
            page += text[i];
        else
            page += mark;
    }
    return page;
}

// The same as lines of a source.
std::string prose(const std::string& text)
{
    return wrapped("", plain(text), 0);
}

std::string bold(const std::string& text)
{
    return "\\fB" + plain(text, true) + "\\fR";
}

std::string slanted(const std::string& text)
{
    return "\\fI" + plain(text, true) + "\\fR";
}

std::string upper(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::toupper(c & 0x7f));
    return text;
}

std::string heading(const std::string& name, const std::string& summary)
{
    return ".TH " + plain(upper(name), true) +
           " 1 " ORVLOG_DATE " \"orvlog " ORVLOG_VERSION "\" \"orvlog manual\"\n.SH NAME\n" + plain(name, true) +
           " \\- " + plain(summary) + "\n";
}

// A phrase as a sentence of its own.
std::string sentence(std::string text)
{
    if (!text.empty())
        text[0] = static_cast<char>(std::toupper(text[0] & 0x7f));
    return text + ".";
}

std::string paragraphs(const std::string& text)
{
    std::string page;
    for (const std::string& paragraph : paragraphs_of(text))
        page += (page.empty() ? "" : ".PP\n") + prose(paragraph);
    return page;
}

// Names in bold, what stands for something slanted.
std::string names_of(const Parameter& parameter)
{
    std::string page;
    for (const std::string& name : parameter.names)
        page += (page.empty() ? "" : ", ") + bold(name);
    if (parameter.value.empty())
        return page;
    const bool literal = parameter.value.find('|') != std::string::npos;
    return page + (page.empty() ? "" : " ") + (literal ? bold(parameter.value) : slanted(parameter.value));
}

std::string list(const std::string& title, const std::vector<Parameter>& parameters)
{
    std::string page = parameters.empty() ? "" : ".SH " + title + "\n";
    std::string group = "Options";
    for (const Parameter& parameter : parameters)
    {
        if (!parameter.names.empty() && !parameter.group.empty() && parameter.group != group)
        {
            group = parameter.group;
            page += ".SS " + plain(group) + "\n";
        }
        page += ".TP\n" + names_of(parameter) + "\n" + prose(parameter.description);
    }
    return page;
}

std::string statuses()
{
    std::string page = ".SH EXIT STATUS\n";
    for (const ExitMeaning& status : exit_meanings())
        page += ".TP\n" + bold(std::to_string(status.status)) + "\n" + prose(status.meaning);
    return page;
}

std::string page_name(const std::string& name)
{
    return bold(name) + "(1)";
}

// A parameter in a synopsis, by its shortest name.
std::string brief(Parameter parameter)
{
    parameter.names.resize(std::min<size_t>(parameter.names.size(), 1));
    const std::string page = parameter.required ? names_of(parameter) : "[" + names_of(parameter) + "]";
    return parameter.repeated ? page + "..." : page;
}

std::string synopsis(const Usage& usage)
{
    std::string page = ".SH SYNOPSIS\n" + bold("orvlog " + usage.name) + " [\\fIOPTION\\fR]...";
    for (const Parameter& argument : usage.arguments)
        page += " " + brief(argument);
    for (const Parameter& option : usage.options)
        page += option.required ? " " + brief(option) : "";
    return page + "\n";
}

std::string example(const std::string& line)
{
    return ".EX\n" + plain(line, true) + "\n.EE\n";
}

}  // namespace

std::string manual_page(const Usage& usage)
{
    return heading("orvlog-" + usage.name, usage.summary) + synopsis(usage) + ".SH DESCRIPTION\n" +
           paragraphs(sentence(usage.summary) + "\n\n" + usage.details) + list("ARGUMENTS", usage.arguments) +
           list("OPTIONS", usage.options) + statuses() + ".SH EXAMPLES\n" + example(usage.example) + ".SH SEE ALSO\n" +
           page_name("orvlog") + "\n";
}

std::string manual_overview()
{
    std::string page = heading("orvlog", "record the drawing calls of rendering jobs, and work on the logs");
    page += ".SH SYNOPSIS\n\\fBorvlog\\fR \\fICOMMAND\\fR [\\fIOPTION\\fR]...\n.SH DESCRIPTION\n";
    page += paragraphs(std::string(kOverview)) + ".SH COMMANDS\n";
    std::string examples;
    for (const Command& command : commands())
    {
        page += ".TP\n" + page_name(std::string("orvlog-") + command.name) + "\n" + prose(command.summary);
        examples += (examples.empty() ? "" : ".PP\n") + prose(sentence(command.summary)) + example(command.example);
    }
    page += list("OPTIONS", program_options()) + statuses() + ".SH ENVIRONMENT\n.TP\n" + bold("ORVLOG_EXEC_PATH");
    page += "\nthe folder in which programs that a command starts are looked for first\n";
    return page + ".SH EXAMPLES\n" + examples;
}

}  // namespace orvlog::tool
