// What this build of the command was made without.

#pragma once

#include "tools/shared/command.h"

#include <string>

namespace orvlog::tool
{

inline std::string text_of_left_out(const std::string& library, const std::string& what)
{
    return "this build has no " + library + ", which " + what + " needs";
}

// Says that the build has no `library`, which `what` needs, and gives EXIT_FAILED.
inline int left_out(const std::string& library, const std::string& what)
{
    return fail(text_of_left_out(library, what));
}

// Declares a command that this build doesn't have: whatever it is asked for, it says that, and fails.
inline Run declare_left_out(CLI::App& app, const std::string& library, const std::string& command)
{
    app.allow_extras();
    app.footer("This build has no " + library + ", which the command needs.");
    return [library, command] { return left_out(library, "orvlog " + command); };
}

}  // namespace orvlog::tool
