#include "tools/replay/page-file.h"

#include "renderers/cairo/png-file.h"

#include <utility>

namespace orvlog::tool
{

struct PageFile::Writer
{
    std::unique_ptr<cairo_renderer::PngFile> file;
};

PageFile::PageFile(std::unique_ptr<Writer> writer) : writer_(std::move(writer)) {}

PageFile::~PageFile() = default;

std::unique_ptr<PageFile> PageFile::create(const std::string& name, uint32_t width, uint32_t height)
{
    auto writer = std::make_unique<Writer>();
    writer->file = cairo_renderer::PngFile::create(name, width, height);
    return std::unique_ptr<PageFile>(writer->file != nullptr ? new PageFile(std::move(writer)) : nullptr);
}

bool PageFile::add_rows(const uint32_t* pixels, uint32_t rows, size_t row_pixels)
{
    return writer_->file->add_rows(pixels, rows, row_pixels);
}

bool PageFile::close()
{
    return writer_->file->close();
}

}  // namespace orvlog::tool
