// The address of a call as command lines take it.

#pragma once

#include "reader/look/call-address.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>

namespace orvlog::tool
{

// An option, or a positional one, whose value is an address; `address` stays empty without it, and lives as long as
// the parser.
CLI::Option* add_address(CLI::App& app, const std::string& name, std::optional<orvlog::reader::CallAddress>& address,
                         const std::string& description);

}  // namespace orvlog::tool
