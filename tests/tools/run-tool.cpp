#include "tests/tools/run-tool.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace orvlog::test
{

namespace
{

// Adds an argument in the form of a shell.
void add_quoted(std::string* command, const std::string& argument)
{
    command->push_back('\'');
    for (const char c : argument)
        if (c == '\'')
            command->append("'\\''");
        else
            command->push_back(c);
    command->push_back('\'');
}

}  // namespace

ScratchFolder::ScratchFolder()
{
    std::string form = (std::filesystem::temp_directory_path() / "orvlog-test-XXXXXX").string();
    if (mkdtemp(form.data()) == nullptr)
        throw std::runtime_error("no scratch folder to be had");
    folder_ = form;
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::string ScratchFolder::path(const std::string& name) const
{
    return folder_ + "/" + name;
}

std::string ScratchFolder::write(const std::string& name, const std::string& content) const
{
    std::ofstream(path(name), std::ios::binary) << content;
    return path(name);
}

std::string read_file(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

ToolResult run_program(const std::vector<std::string>& words, const std::string& input)
{
    const ScratchFolder folder;
    std::string command;
    for (const std::string& word : words)
    {
        add_quoted(&command, word);
        command.push_back(' ');
    }
    command.push_back('<');
    add_quoted(&command, folder.write("in", input));
    command.append(" >");
    add_quoted(&command, folder.path("out"));
    command.append(" 2>");
    add_quoted(&command, folder.path("err"));
    const int status = std::system(command.c_str());
    ToolResult result;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.out = read_file(folder.path("out"));
    result.err = read_file(folder.path("err"));
    return result;
}

ToolResult run_tool(const std::vector<std::string>& arguments, const std::string& input)
{
    std::vector<std::string> words = {ORVLOG_TOOL};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return run_program(words, input);
}

}  // namespace orvlog::test
