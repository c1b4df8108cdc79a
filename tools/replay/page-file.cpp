#include "tools/replay/page-file.h"

#include <string_view>

namespace orvlog::tool
{

std::unique_ptr<PageFile> PageFile::create(const std::string& name, uint32_t width, uint32_t height)
{
    std::FILE* file = std::fopen(name.c_str(), "wb");
    return std::unique_ptr<PageFile>(file != nullptr ? new PageFile(file, width, height) : nullptr);
}

PageFile::PageFile(std::FILE* file, uint32_t width, uint32_t height)
    : file_(file), width_(width), png_({width, height}, [this](std::string_view bytes)
                                       { return std::fwrite(bytes.data(), 1, bytes.size(), file_) == bytes.size(); }),
      row_(png_.row_bytes())
{
}

PageFile::~PageFile()
{
    if (file_ != nullptr)
        std::fclose(file_);
}

bool PageFile::add_rows(const uint32_t* pixels, uint32_t rows, size_t row_pixels)
{
    for (uint32_t y = 0; good_ && y < rows; ++y)
    {
        for (size_t x = 0; x < width_; ++x)
        {
            const uint32_t pixel = pixels[y * row_pixels + x];
            row_[x * 3] = static_cast<uint8_t>(pixel >> 16);
            row_[x * 3 + 1] = static_cast<uint8_t>(pixel >> 8);
            row_[x * 3 + 2] = static_cast<uint8_t>(pixel);
        }
        good_ = png_.add_row(row_.data());
    }
    return good_;
}

bool PageFile::close()
{
    good_ = png_.finish() && good_;
    const bool closed = file_ != nullptr && std::fclose(file_) == 0;
    file_ = nullptr;
    good_ = good_ && closed;
    return good_;
}

}  // namespace orvlog::tool
