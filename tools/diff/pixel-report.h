// What `orvlog diff` writes of the pages of two logs.

#pragma once

#include "inspect/pixels/pixel-diff.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace orvlog::tool
{

// What the files of a log's pages begin with.
std::string page_stem(const std::string& log);

// What the name of a page's picture, STEM-001.png and onwards, is made of.
struct PageName
{
    std::string stem;
    uint32_t number = 0;
};
std::optional<PageName> page_name(const std::filesystem::path& file);

// "3 pixels in 10,20,13,21".
std::string area_text(const orvlog::inspect::PixelArea& area);
nlohmann::ordered_json area_json(const orvlog::inspect::PixelArea& area);

class PixelReport
{
public:
    // `folder`: where pictures go; empty for none. `log` gives them their names.
    PixelReport(std::string folder, const std::string& log) : folder_(std::move(folder)), stem_(page_stem(log)) {}

    // Takes what is to be said and writes the pictures; empty if all could be written.
    std::string add(const orvlog::inspect::PageDifference& page);

    // A line for each page, in their order.
    const std::vector<std::string>& lines() const
    {
        return lines_;
    }
    const nlohmann::ordered_json& json() const
    {
        return json_;
    }

private:
    std::string write(const std::string& name, const orvlog::inspect::PixelCopy& a, const orvlog::inspect::PixelCopy& b,
                      nlohmann::ordered_json& names) const;

    std::string folder_;
    std::string stem_;
    std::vector<std::string> lines_;
    nlohmann::ordered_json json_ = nlohmann::ordered_json::array();
};

}  // namespace orvlog::tool
