// The pages of a log held against pictures that are there.

#pragma once

#include "tools/diff/diff-input.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvlog::tool
{

struct AgainstOptions
{
    std::string pictures;  // the folder
    std::string marked;    // where pictures of what differs go; empty for none
    uint32_t tolerance = 0;
    double dpi = 0;
    bool json = false;
    std::vector<std::string> folders;
};

// Gives the exit status: 0 if all pages are as their pictures.
int compare_against(const DiffInput& log, const AgainstOptions& options);

}  // namespace orvlog::tool
