#include "tools/replay/page-file.h"

#include "tools/shared/png-writer.h"

#include <cstdio>
#include <string_view>
#include <utility>
#include <vector>

namespace orvlog::tool
{

struct PageFile::Writer
{
    Writer(std::FILE* opened, uint32_t columns, uint32_t rows)
        : file(opened), width(columns),
          png({columns, rows}, [opened](std::string_view bytes)
              { return std::fwrite(bytes.data(), 1, bytes.size(), opened) == bytes.size(); }),
          row(png.row_bytes())
    {
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer()
    {
        if (file != nullptr)
            std::fclose(file);
    }

    std::FILE* file;
    uint32_t width;
    PngWriter png;
    std::vector<uint8_t> row;
};

PageFile::PageFile(std::unique_ptr<Writer> writer) : writer_(std::move(writer)) {}

PageFile::~PageFile() = default;

std::unique_ptr<PageFile> PageFile::create(const std::string& name, uint32_t width, uint32_t height)
{
    std::FILE* file = std::fopen(name.c_str(), "wb");
    if (file == nullptr)
        return nullptr;
    return std::unique_ptr<PageFile>(new PageFile(std::make_unique<Writer>(file, width, height)));
}

bool PageFile::add_rows(const uint32_t* pixels, uint32_t rows, size_t row_pixels)
{
    bool good = true;
    for (uint32_t y = 0; good && y < rows; ++y)
    {
        for (size_t x = 0; x < writer_->width; ++x)
        {
            const uint32_t pixel = pixels[y * row_pixels + x];
            writer_->row[x * 3] = static_cast<uint8_t>(pixel >> 16);
            writer_->row[x * 3 + 1] = static_cast<uint8_t>(pixel >> 8);
            writer_->row[x * 3 + 2] = static_cast<uint8_t>(pixel);
        }
        good = writer_->png.add_row(writer_->row.data());
    }
    return good;
}

bool PageFile::close()
{
    const bool good = writer_->png.finish();
    const bool closed = writer_->file != nullptr && std::fclose(writer_->file) == 0;
    writer_->file = nullptr;
    return good && closed;
}

}  // namespace orvlog::tool
