#include "tools/render/page-folders.h"

#include "renderers/cairo/cairo-renderer.h"
#include "tools/diff/pixel-report.h"
#include "tools/shared/picture-file.h"

#include <cstdio>
#include <filesystem>
#include <optional>
#include <set>
#include <system_error>

namespace orvlog::tool
{

namespace
{

namespace fs = std::filesystem;
using orvlog::inspect::PixelArea;
using orvlog::inspect::PixelCopy;

PixelCopy picture(const std::string& file)
{
    const cairo_renderer::PagePixels pixels = cairo_renderer::read_png(file);
    return pixels.pixels.empty() ? PixelCopy{} : orvlog::inspect::picture_of(pixels);
}

std::string sizes_of(const PixelCopy& a, const PixelCopy& b)
{
    const auto size = [](const PixelCopy& one) { return std::to_string(one.width) + "x" + std::to_string(one.height); };
    return size(a) + " and " + size(b) + " pixels";
}

// Empty if the page is the same in both.
std::string fault_of(const PixelCopy& a, const PixelCopy& b, const PageFolders& folders, PixelArea* area)
{
    if (a.pixels.empty() || b.pixels.empty())
        return (a.pixels.empty() ? folders.name_a : folders.name_b) + "'s picture can't be read";
    *area = orvlog::inspect::area_between(a, b, folders.tolerance);
    if (a.width != b.width || a.height != b.height)
        return "sizes differ: " + sizes_of(a, b);
    return area->pixels > 0 ? area_text(*area) + " differ" : "";
}

}  // namespace

std::map<uint32_t, std::string> pages_in(const std::string& folder, std::string* why)
{
    std::map<uint32_t, std::string> pages;
    std::map<std::string, uint32_t> files;
    std::error_code failed;
    for (fs::directory_iterator file(folder, failed), end; !failed && file != end; file.increment(failed))
        if (const std::optional<PageName> name = page_name(file->path()))
            files.insert({file->path().filename().string(), name->number});
    *why = failed ? folder + ": " + failed.message() : "";
    for (const auto& [name, number] : files)
    {
        const auto [place, added] = pages.try_emplace(number, (fs::path(folder) / name).string());
        if (!added && why->empty())
            *why = folder + ": has two pages " + std::to_string(number) + ": " +
                   fs::path(place->second).filename().string() + " and " + name;
    }
    return pages;
}

bool page_differs(const std::string& a, const std::string& b, uint32_t tolerance)
{
    PageFolders folders;
    folders.tolerance = tolerance;
    PixelArea area;
    return !fault_of(picture(a), picture(b), folders, &area).empty();
}

std::vector<PageFault> compare_folders(const PageFolders& folders)
{
    std::vector<PageFault> faults;
    std::set<uint32_t> numbers;
    for (const auto* pages : {&folders.a, &folders.b})
        for (const auto& [number, file] : *pages)
            numbers.insert(number);
    for (const uint32_t number : numbers)
    {
        PageFault fault;
        fault.page = number;
        const auto a = folders.a.find(number);
        const auto b = folders.b.find(number);
        fault.has_both = a != folders.a.end() && b != folders.b.end();
        if (fault.has_both)
            fault.what = fault_of(picture(a->second), picture(b->second), folders, &fault.area);
        else
            fault.what = (a == folders.a.end() ? folders.name_a : folders.name_b) + " has no such page";
        if (!fault.what.empty())
            faults.push_back(fault);
    }
    return faults;
}

std::string write_pictures(const PageFolders& folders, const PageFault& fault, const std::string& prefix)
{
    if (!fault.has_both)
        return {};
    const PixelCopy a = picture(folders.a.at(fault.page));
    const PixelCopy b = picture(folders.b.at(fault.page));
    char number[16];
    std::snprintf(number, sizeof number, "-%03u", fault.page);
    return write_pictures(a, b, folders.tolerance, prefix + number);
}

}  // namespace orvlog::tool
