// Completion for zsh: what is given to _arguments.

#include "tools/help/usage.h"

namespace orvlog::tool
{

namespace
{

constexpr const char* kBeginning = R"(#compdef orvlog
# Completion of orvlog for zsh, made by: orvlog help --completion zsh

_orvlog()
{
    local curcontext=$curcontext state line
    local -a commands
    commands=(
)";

constexpr const char* kCommandsEnd = R"(    )
    _arguments -C \
)";

constexpr const char* kDispatch = R"(        '1: :->command' \
        '*:: :->argument'
    if [[ $state == command ]]; then
        _describe -t commands 'orvlog command' commands
        return
    fi
    [[ $state == argument ]] || return 0
    curcontext=${curcontext%:*}-$words[1]:
    case $words[1] in
)";

constexpr const char* kEnd = R"(    esac
}

if [[ $funcstack[1] == _orvlog ]]; then
    _orvlog "$@"
else
    compdef _orvlog orvlog
fi
)";

// Between single quotes, with a backslash before each of `marks`.
std::string quoted(const std::string& text, const std::string& marks)
{
    std::string word;
    for (const char c : text)
    {
        if (c == '\'')
            word += "'\\'";
        else if (marks.find(c) != std::string::npos)
            word += '\\';
        word += c;
    }
    return word;
}

std::string action_of(const Parameter& parameter)
{
    std::string words;
    switch (parameter.offer)
    {
    case Offer::files:
        return "_files";
    case Offer::folders:
        return "_files -/";
    case Offer::nothing:
        return " ";
    case Offer::choices:
        break;
    }
    for (const std::string& choice : parameter.choices)
        words += (words.empty() ? "" : " ") + choice;
    return "(" + words + ")";
}

std::string value_of(const Parameter& parameter)
{
    return parameter.value.empty() ? "" : ":" + quoted(parameter.value, ":") + ":" + action_of(parameter);
}

// A short name takes its value in the same word or the next, a long one behind "=" or in the next.
std::string option_name(const std::string& name, bool has_value)
{
    if (!has_value)
        return name;
    return name + (name.size() == 2 ? "+" : "=");
}

std::string argument_text(const Parameter& option)
{
    const bool has_value = !option.value.empty();
    std::string all;
    std::string forms;
    bool is_help = false;
    for (const std::string& name : option.names)
    {
        all += (all.empty() ? "" : " ") + name;
        forms += (forms.empty() ? "" : ",") + option_name(name, has_value);
        is_help = is_help || name == "--help" || name == "--version";
    }
    const std::string others = is_help ? "'(- : *)'" : "'(" + all + ")'";
    const std::string names = option.names.size() > 1 ? "{" + forms + "}" : forms;
    return (option.repeated ? "'*'" : others) + names + "'[" + quoted(option.description, "[]:\\") + "]" +
           value_of(option) + "'";
}

std::string positional_text(const Parameter& argument, size_t place)
{
    const std::string start = argument.repeated ? "*" : std::to_string(place);
    return "'" + start + (argument.required || argument.repeated ? "" : ":") + value_of(argument) + "'";
}

std::string case_of(const Usage& usage)
{
    std::string text = "    " + usage.name + ")\n        _arguments";
    for (const Parameter& option : usage.options)
        text += " \\\n            " + argument_text(option);
    for (size_t i = 0; i < usage.arguments.size(); ++i)
        text += " \\\n            " + positional_text(usage.arguments[i], i + 1);
    return text + "\n        ;;\n";
}

}  // namespace

std::string zsh_completion()
{
    std::string names;
    std::string cases;
    for (const Command& command : commands())
    {
        const Usage usage = usage_of(command);
        names += "        '" + usage.name + ":" + quoted(usage.summary, "") + "'\n";
        cases += case_of(usage);
    }
    std::string options;
    for (const Parameter& option : program_options())
        options += "        " + argument_text(option) + " \\\n";
    return kBeginning + names + kCommandsEnd + options + kDispatch + cases + kEnd;
}

}  // namespace orvlog::tool
