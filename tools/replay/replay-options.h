// What a replay was asked for.

#pragma once

#include "clients/command-line/number-range.h"
#include "reader/look/call-address.h"

#include <optional>
#include <string>
#include <vector>

namespace orvlog::tool
{

struct ReplayOptions
{
    std::string log;
    std::string new_log;
    std::string image_prefix;
    bool compressed = false;
    bool via_temporary_log = false;
    bool allow_missing = false;
    std::string png;
    std::string svg;
    std::string pdf;
    std::string renderer;  // "cairo", "none", or a shared library as FILE or FILE:SYMBOL; empty: as the job was drawn
    std::optional<std::string> renderer_options;
    std::vector<std::string> folders;
    command_line::NumberRange pages = {1, UINT32_MAX};
    unsigned dpi = 0;
    bool as_logged = false;
    unsigned call_limit = 60;  // seconds that a library may take for a call; 0: as long as it likes
    unsigned time_limit = 0;   // seconds that it may take in all; 0: the same
    std::optional<reader::CallAddress> up_to;
};

// A renderer that is a shared library.
inline bool has_library(const ReplayOptions& options)
{
    return !options.renderer.empty() && options.renderer != "cairo" && options.renderer != "none";
}

// What renders is what the log says that the job's renderer did.
inline bool wants_as_logged(const ReplayOptions& options)
{
    return options.as_logged || (options.renderer == "none" && !options.new_log.empty());
}

}  // namespace orvlog::tool
