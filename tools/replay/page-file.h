// A page as a PNG file that is written as its rows come: by the renderer that the project has, so that a page's file is
// the same whoever drew it, or where that isn't there by the command itself.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

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
    struct Writer;
    explicit PageFile(std::unique_ptr<Writer> writer);

    std::unique_ptr<Writer> writer_;
};

}  // namespace orvlog::tool
