// Runs the orvlog command as a program of its own.

#pragma once

#include <string>
#include <vector>

namespace orvlog::test
{

struct ToolResult
{
    int status = -1;  // exit status, or 128 and the number of a signal
    std::string out;
    std::string err;
};

// A program found on the PATH, and what it is given.
ToolResult run_program(const std::vector<std::string>& words, const std::string& input = "");

// The orvlog command.
ToolResult run_tool(const std::vector<std::string>& arguments, const std::string& input = "");

// A folder that is gone with its object.
class ScratchFolder
{
public:
    ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    // Path of a file in it.
    std::string path(const std::string& name) const;
    // Writes a file, and gives its path.
    std::string write(const std::string& name, const std::string& content) const;

private:
    std::string folder_;
};

std::string read_file(const std::string& path);

}  // namespace orvlog::test
