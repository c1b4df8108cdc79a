// What a command takes, read off its option parser. Help, manual pages and completions are written from this alone,
// so that a new command or option is in all of them once it is declared.

#pragma once

#include "tools/shared/command.h"

#include <string>
#include <vector>

namespace orvlog::tool
{

// What completions offer for a value.
enum class Offer
{
    nothing,  // free text, or a flag, which has no value
    choices,
    files,
    folders
};

// An option or an argument.
struct Parameter
{
    std::vector<std::string> names;    // "-o", "--output"; none for an argument
    std::string value;                 // what stands for the value: "FILE"; empty for a flag
    std::vector<std::string> choices;  // the only words that the value may be; empty when it is free
    std::string description;           // one phrase, with range and default
    std::string group;                 // heading; "Options" when the parser names none
    Offer offer = Offer::nothing;
    bool required = false;
    bool repeated = false;  // takes any number of values
};

struct Usage
{
    std::string name;  // "record"
    std::string summary;
    std::string details;  // paragraphs with an empty line between; may be empty
    std::string example;
    std::vector<Parameter> arguments;
    std::vector<Parameter> options;
};

Usage usage_of(const Command& command);

// The options of `orvlog` itself, without a command.
std::vector<Parameter> program_options();

// The paragraphs of a text, which have an empty line between.
std::vector<std::string> paragraphs_of(const std::string& text);

// The words of a text in lines of at most 80 characters that begin at a column; `line` is what the first begins with.
std::string wrapped(std::string line, const std::string& text, size_t column);

// The usage as the text of --help.
std::string help_text(const Usage& usage);

// Pages of the manual in troff's man macros: of one command, and of `orvlog`, which lists them all.
std::string manual_page(const Usage& usage);
std::string manual_overview();

// What a shell reads to complete the command lines of `orvlog`.
std::string bash_completion();
std::string zsh_completion();

}  // namespace orvlog::tool
