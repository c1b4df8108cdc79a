#include "renderers/cairo/png-file.h"

#include <png.h>

#include <csetjmp>
#include <cstring>

namespace orvlog::cairo_renderer
{

struct PngFile::Writer
{
    png_structp png = nullptr;
    png_infop info = nullptr;
};

namespace
{

// libpng leaves a call that fails by a long jump, so nothing with a destructor may live in these.

bool begin(png_structp png, png_infop info, std::FILE* file, uint32_t width, uint32_t height)
{
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    png_init_io(png, file);
    png_set_IHDR(png, info, width, height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    return true;
}

bool put_row(png_structp png, const uint8_t* row)
{
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    png_write_row(png, row);
    return true;
}

bool end(png_structp png, png_infop info)
{
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    png_write_end(png, info);
    return true;
}

void say_nothing(png_structp /*png*/, png_const_charp /*text*/) {}

void give_up(png_structp png, png_const_charp /*text*/)
{
    png_longjmp(png, 1);
}

}  // namespace

std::unique_ptr<PngFile> PngFile::create(const std::string& name, uint32_t width, uint32_t height)
{
    std::unique_ptr<PngFile> result(new PngFile);
    result->writer_ = std::make_unique<Writer>();
    result->row_.resize(size_t{width} * 3);
    result->width_ = width;
    result->rows_left_ = height;
    result->file_ = std::fopen(name.c_str(), "wb");
    if (result->file_ == nullptr)
        return nullptr;
    Writer& writer = *result->writer_;
    writer.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, give_up, say_nothing);
    writer.info = writer.png == nullptr ? nullptr : png_create_info_struct(writer.png);
    result->good_ = writer.info != nullptr && begin(writer.png, writer.info, result->file_, width, height);
    return result;
}

PngFile::~PngFile()
{
    if (writer_ != nullptr && writer_->png != nullptr)
        png_destroy_write_struct(&writer_->png, &writer_->info);
    if (file_ != nullptr)
        std::fclose(file_);
}

bool PngFile::write_row(const uint8_t* pixels)
{
    for (size_t x = 0; x < width_; ++x)
    {
        uint32_t pixel = 0;
        std::memcpy(&pixel, pixels + x * 4, sizeof pixel);
        row_[x * 3] = static_cast<uint8_t>(pixel >> 16);
        row_[x * 3 + 1] = static_cast<uint8_t>(pixel >> 8);
        row_[x * 3 + 2] = static_cast<uint8_t>(pixel);
    }
    return put_row(writer_->png, row_.data());
}

bool PngFile::add_rows(cairo_surface_t* surface)
{
    cairo_surface_flush(surface);
    const uint8_t* data = cairo_image_surface_get_data(surface);
    const auto rows = static_cast<uint32_t>(cairo_image_surface_get_height(surface));
    const auto stride = static_cast<size_t>(cairo_image_surface_get_stride(surface));
    good_ = good_ && data != nullptr && rows <= rows_left_ &&
            cairo_image_surface_get_width(surface) == static_cast<int>(width_);
    for (uint32_t row = 0; good_ && row < rows; ++row)
        good_ = write_row(data + row * stride);
    if (good_)
        rows_left_ -= rows;
    return good_;
}

bool PngFile::add_rows(const uint32_t* pixels, uint32_t rows, size_t row_pixels)
{
    good_ = good_ && rows <= rows_left_;
    for (uint32_t row = 0; good_ && row < rows; ++row)
        good_ = write_row(reinterpret_cast<const uint8_t*>(pixels + row * row_pixels));
    if (good_)
        rows_left_ -= rows;
    return good_;
}

bool PngFile::close()
{
    good_ = good_ && rows_left_ == 0 && end(writer_->png, writer_->info);
    const bool closed = file_ != nullptr && std::fclose(file_) == 0;
    file_ = nullptr;
    good_ = good_ && closed;
    return good_;
}

}  // namespace orvlog::cairo_renderer
