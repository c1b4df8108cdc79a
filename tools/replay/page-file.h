// A page as a PNG file that is written as its rows come.

#pragma once

#include "tools/shared/png-writer.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace orvlog::tool
{

class PageFile
{
public:
    // Null if the file can't be made.
    static std::unique_ptr<PageFile> create(const std::string& name, uint32_t width, uint32_t height);
    PageFile(const PageFile&) = delete;
    PageFile& operator=(const PageFile&) = delete;
    ~PageFile();

    // The next rows, pixels 0x00RRGGBB, `row_pixels` from one row to the next. False once something has failed.
    bool add_rows(const uint32_t* pixels, uint32_t rows, size_t row_pixels);
    // False if something has failed, or rows are missing.
    bool close();

private:
    PageFile(std::FILE* file, uint32_t width, uint32_t height);

    std::FILE* file_;
    uint32_t width_;
    PngWriter png_;
    std::vector<uint8_t> row_;
    bool good_ = true;
};

}  // namespace orvlog::tool
