// A PNG file that is written row by row, so that no picture need be in memory as a whole.

#pragma once

#include <cairo.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace orvlog::cairo_renderer
{

class PngFile
{
public:
    // Null if the file cannot be created.
    static std::unique_ptr<PngFile> create(const std::string& name, uint32_t width, uint32_t height);
    ~PngFile();
    PngFile(const PngFile&) = delete;
    PngFile& operator=(const PngFile&) = delete;

    // The next rows, all those of an image surface of 32 bits a pixel, as wide as the file; alpha is not looked at.
    // False once something has failed.
    bool add_rows(cairo_surface_t* surface);
    // The same of pixels 0x00RRGGBB, `row_pixels` from one row to the next.
    bool add_rows(const uint32_t* pixels, uint32_t rows, size_t row_pixels);
    // False if something has failed, or rows are missing.
    bool close();

private:
    PngFile() = default;
    bool write_row(const uint8_t* pixels);

    struct Writer;
    std::unique_ptr<Writer> writer_;
    std::FILE* file_ = nullptr;
    std::vector<uint8_t> row_;
    uint32_t width_ = 0;
    uint32_t rows_left_ = 0;
    bool good_ = true;
};

}  // namespace orvlog::cairo_renderer
