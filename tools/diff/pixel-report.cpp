#include "tools/diff/pixel-report.h"

#include "tools/shared/picture-file.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace orvlog::tool
{

namespace
{

namespace fs = std::filesystem;
using nlohmann::ordered_json;
using orvlog::inspect::PageDifference;
using orvlog::inspect::PixelArea;
using orvlog::inspect::PixelCopy;

std::string either(const std::string& text)
{
    return text.empty() ? "-" : text;
}

ordered_json either_json(const std::string& text)
{
    return text.empty() ? ordered_json(nullptr) : ordered_json(text);
}

std::string page_text(uint32_t page)
{
    return page > 0 ? std::to_string(page) : "-";
}

std::string short_kind(const std::string& kind)
{
    return kind.starts_with("ORV_") ? kind.substr(4) : kind;
}

std::string line_of(const PageDifference& page)
{
    std::string line = "page " + page_text(page.page_a);
    if (page.page_b != page.page_a)
        line.append("|").append(page_text(page.page_b));
    if (page.page_a == 0 || page.page_b == 0)
        return line + ": only in the " + (page.page_b == 0 ? "first" : "second") + " log";
    line += ": differs first behind " + either(page.call_a) + " " + either(page.call_b) + " " + short_kind(page.kind);
    line += ", " + area_text(page.first);
    if (page.in_layer)
        line += " of a group's layer";
    if (page.cause_a != page.call_a || page.cause_b != page.call_b)
        line += ", by " + either(page.cause_a) + " " + either(page.cause_b) + " " + short_kind(page.cause_kind) +
                " around it";
    return line + "; at its end " + (page.end.pixels > 0 ? area_text(page.end) : "it is the same");
}

}  // namespace

std::string page_stem(const std::string& log)
{
    fs::path name = log == "-" ? "log" : log;
    if (name.extension() == ".zst")
        name.replace_extension();
    return name.stem().string();
}

std::optional<PageName> page_name(const fs::path& file)
{
    constexpr size_t kMostDigits = 9;
    const std::string name = file.stem().string();
    const size_t dash = name.rfind('-');
    const std::string digits = dash != std::string::npos ? name.substr(dash + 1) : "";
    const bool good = file.extension() == ".png" && digits.size() >= 3 && digits.size() <= kMostDigits &&
                      digits.find_first_not_of("0123456789") == std::string::npos;
    if (!good)
        return std::nullopt;
    return PageName{name.substr(0, dash), static_cast<uint32_t>(std::stoul(digits))};
}

std::string area_text(const PixelArea& area)
{
    std::string text = std::to_string(area.pixels) + (area.pixels == 1 ? " pixel" : " pixels");
    if (area.pixels > 0)
    {
        text.append(" in ").append(std::to_string(area.box.x0)).append(",").append(std::to_string(area.box.y0));
        text.append(",").append(std::to_string(area.box.x1)).append(",").append(std::to_string(area.box.y1));
    }
    return text;
}

ordered_json area_json(const PixelArea& area)
{
    ordered_json object;
    object["pixels"] = area.pixels;
    object["box"] = area.pixels == 0 ? ordered_json(nullptr)
                                     : ordered_json::array({area.box.x0, area.box.y0, area.box.x1, area.box.y1});
    return object;
}

std::string PixelReport::write(const std::string& name, const PixelCopy& a, const PixelCopy& b,
                               ordered_json& names) const
{
    std::error_code failed;
    fs::create_directories(folder_, failed);
    if (failed)
        return folder_ + ": " + failed.message();
    const std::string prefix = (fs::path(folder_) / name).string();
    if (!a.pixels.empty())
        names.push_back(prefix + "-a.png");
    if (!b.pixels.empty())
        names.push_back(prefix + "-b.png");
    if (!names.empty())
        names.push_back(prefix + "-marked.png");
    return write_pictures(a, b, 0, prefix);
}

std::string PixelReport::add(const PageDifference& page)
{
    lines_.push_back(line_of(page));
    ordered_json object;
    object["page_a"] = page.page_a > 0 ? ordered_json(page.page_a) : ordered_json(nullptr);
    object["page_b"] = page.page_b > 0 ? ordered_json(page.page_b) : ordered_json(nullptr);
    object["a"] = either_json(page.call_a);
    object["b"] = either_json(page.call_b);
    object["kind"] = short_kind(page.kind);
    object["cause"] = {
        {"a", either_json(page.cause_a)}, {"b", either_json(page.cause_b)}, {"kind", short_kind(page.cause_kind)}};
    object["in_layer"] = page.in_layer;
    object["first"] = area_json(page.first);
    object["end"] = area_json(page.end);
    object["pictures"] = ordered_json::array();
    std::string why;
    if (!folder_.empty())
    {
        char number[16];
        std::snprintf(number, sizeof number, "-%03u", std::max(page.page_a, page.page_b));
        why = write(stem_ + number, page.a.behind, page.b.behind, object["pictures"]);
        if (why.empty() && page.end.pixels > 0)
            why = write(stem_ + number + "-end", orvlog::inspect::picture_of(page.a.end),
                        orvlog::inspect::picture_of(page.b.end), object["pictures"]);
    }
    json_.push_back(object);
    return why;
}

}  // namespace orvlog::tool
