// The pages of a renderer that is a shared library, as PNG files.

#pragma once

#include "orvlog/interface/orvlog-renderer.h"
#include "tools/replay/page-file.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace orvlog::tool
{

class LibraryPages
{
public:
    // Files PREFIX-001.png and onwards; without a prefix pages are counted and that is all. `number` gives the number
    // of the page that begins.
    LibraryPages(std::string prefix, std::function<uint32_t()> number)
        : prefix_(std::move(prefix)), number_(std::move(number))
    {
    }

    // A page, or the next band of one. False if it couldn't be written.
    bool take(const ORVLOG_RendererPage& page);
    // False if a page couldn't be written, or lacks rows.
    bool close();
    uint32_t count() const
    {
        return count_;
    }

private:
    const std::string prefix_;
    const std::function<uint32_t()> number_;
    std::unique_ptr<PageFile> file_;
    uint32_t rows_left_ = 0;
    uint32_t count_ = 0;
    bool good_ = true;
};

}  // namespace orvlog::tool
