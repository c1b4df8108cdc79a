// Folders with the pages of a job, STEM-001.png and onwards, held against one another.

#pragma once

#include "inspect/pixels/page-look.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace orvlog::tool
{

// The pictures of a folder by the number in their names. `why` gets what is wrong with it: it can't be read, or two of
// them have the same number.
std::map<uint32_t, std::string> pages_in(const std::string& folder, std::string* why);

struct PageFault
{
    uint32_t page = 0;  // the number in its name
    std::string what;   // "3 pixels in 10,20,13,21 differ", "A has no such page"
    orvlog::inspect::PixelArea area;
    bool has_both = false;
};

struct PageFolders
{
    std::map<uint32_t, std::string> a;
    std::map<uint32_t, std::string> b;
    std::string name_a = "A";
    std::string name_b = "B";
    uint32_t tolerance = 0;  // channels may differ by as much
};

// A line for each page that differs, in the order of their numbers.
std::vector<PageFault> compare_folders(const PageFolders& folders);
// Whether this page differs.
bool page_differs(const std::string& a, const std::string& b, uint32_t tolerance);

// Pictures of a page that differs: PREFIX-NNN-a.png, -b.png and -marked.png. Nothing, or why they can't be written.
std::string write_pictures(const PageFolders& folders, const PageFault& fault, const std::string& prefix);

}  // namespace orvlog::tool
