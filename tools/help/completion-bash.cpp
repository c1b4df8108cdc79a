// Completion for bash: what the commands take as three case tables, and one function that reads them.

#include "tools/help/usage.h"

namespace orvlog::tool
{

namespace
{

constexpr const char* kReader = R"(
_orvlog_offer()
{
    case $taken in
    @files) compopt -o default ;;
    @folders) compopt -o dirnames ;;
    @text | '') ;;
    *) COMPREPLY=($(compgen -W "$taken" -- "$1")) ;;
    esac
}

_orvlog()
{
    local command=${COMP_WORDS[1]} current=${COMP_WORDS[COMP_CWORD]} arguments=0 index value taken
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        _orvlog_commands
        _orvlog_offer "$current"
        return
    fi
    # An option is passed over with its value; "--name=value" is three words.
    for ((index = 2; index < COMP_CWORD; ++index)); do
        if [[ ${COMP_WORDS[index]} != -?* ]]; then
            ((arguments++))
            continue
        fi
        _orvlog_taken "$command" "${COMP_WORDS[index]}"
        [[ -n $taken ]] || continue
        value=$((index + 1))
        [[ ${COMP_WORDS[value]} == '=' ]] && ((value++))
        if ((value >= COMP_CWORD)); then
            _orvlog_offer "${current#=}"
            return
        fi
        index=$value
    done
    if [[ $current == -* ]]; then
        _orvlog_options "$command"
    else
        _orvlog_taken "$command" $((arguments + 1))
        [[ -n $taken ]] || _orvlog_taken "$command" more
    fi
    _orvlog_offer "$current"
}

complete -F _orvlog orvlog
)";

std::string names_of(const std::vector<Parameter>& options)
{
    std::string text;
    for (const Parameter& option : options)
        for (const std::string& name : option.names)
            text += (text.empty() ? "" : " ") + name;
    return text;
}

std::string taken_by(const Parameter& parameter)
{
    std::string words;
    switch (parameter.offer)
    {
    case Offer::files:
        return "@files";
    case Offer::folders:
        return "@folders";
    case Offer::nothing:
        return "@text";
    case Offer::choices:
        break;
    }
    for (const std::string& choice : parameter.choices)
        words += (words.empty() ? "" : " ") + choice;
    return words;
}

std::string line_of(const std::string& pattern, const Parameter& parameter)
{
    return "    " + pattern + ") taken='" + taken_by(parameter) + "' ;;\n";
}

std::string taken_lines(const Usage& usage)
{
    std::string lines;
    for (const Parameter& option : usage.options)
    {
        std::string pattern;
        for (const std::string& name : option.names)
            pattern += (pattern.empty() ? "" : " | ") + usage.name + ":" + name;
        if (!option.value.empty())
            lines += line_of(pattern, option);
    }
    for (size_t i = 0; i < usage.arguments.size(); ++i)
    {
        const Parameter& argument = usage.arguments[i];
        lines += line_of(usage.name + ":" + (argument.repeated ? "more" : std::to_string(i + 1)), argument);
    }
    return lines;
}

}  // namespace

std::string bash_completion()
{
    std::string names;
    std::string options;
    std::string taken;
    for (const Command& command : commands())
    {
        const Usage usage = usage_of(command);
        names += usage.name + " ";
        options += "    " + usage.name + ") taken='" + names_of(usage.options) + "' ;;\n";
        taken += taken_lines(usage);
    }
    return "# Completion of orvlog for bash, made by: orvlog help --completion bash\n\n"
           "# Each leaves in `taken` what may stand in a place: words, @files, @folders, @text, or nothing.\n\n"
           "_orvlog_commands()\n{\n    taken='" +
           names + names_of(program_options()) + "'\n}\n\n_orvlog_options()\n{\n    taken=\n    case $1 in\n" +
           options + "    esac\n}\n\n_orvlog_taken()\n{\n    taken=\n    case $1:$2 in\n" + taken + "    esac\n}\n" +
           kReader;
}

}  // namespace orvlog::tool
