// The pages of two logs, drawn once their calls have been compared.

#pragma once

#include "inspect/align/log-alignment.h"
#include "tools/diff/diff-input.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <vector>

namespace orvlog::tool
{

struct PixelPassOptions
{
    std::string pictures;  // where pictures of what differs go; empty for none
    std::vector<std::string> folders;
    double dpi = 0;
    bool json = false;
    // These outlive the pass.
    const DiffInput& a;
    const DiffInput& b;
};

class PixelPass
{
public:
    PixelPass() = default;
    PixelPass(const PixelPass&) = delete;
    PixelPass& operator=(const PixelPass&) = delete;
    virtual ~PixelPass() = default;

    // Takes the next step of the alignment of calls.
    virtual void number(const orvlog::inspect::Step& step) = 0;
    // Draws the pages of both, and writes a line for each that differs, unless JSON is wanted. What can't be compared
    // is added to `lacks`.
    virtual void draw(std::vector<std::string>& lacks) = 0;
    virtual bool differ() const = 0;
    virtual const nlohmann::ordered_json& json() const = 0;
};

// Null in a build without Cairo.
std::unique_ptr<PixelPass> make_pixel_pass(const PixelPassOptions& options);

}  // namespace orvlog::tool
