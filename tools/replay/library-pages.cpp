#include "tools/replay/library-pages.h"

#include <array>
#include <cstdio>

namespace orvlog::tool
{

namespace
{

std::string file_name(const std::string& prefix, uint32_t number)
{
    std::array<char, 24> ending{};
    std::snprintf(ending.data(), ending.size(), "-%03u.png", number);
    return prefix + ending.data();
}

}  // namespace

bool LibraryPages::take(const ORVLOG_RendererPage& page)
{
    if (page.first_row == 0)
    {
        good_ = close() && good_;
        ++count_;
        rows_left_ = page.height;
        if (!prefix_.empty())
            file_ = PageFile::create(file_name(prefix_, number_()), page.width, page.height);
    }
    rows_left_ -= page.rows;
    if (prefix_.empty())
        return true;
    bool written = file_ != nullptr && file_->add_rows(page.pixels, page.rows, page.row_pixels);
    if (rows_left_ == 0 && file_ != nullptr)
        written = file_->close() && written;
    if (rows_left_ == 0)
        file_.reset();
    good_ = good_ && written;
    return written;
}

bool LibraryPages::close()
{
    good_ = good_ && rows_left_ == 0;
    rows_left_ = 0;
    if (file_ != nullptr)
        good_ = file_->close() && good_;
    file_.reset();
    return good_;
}

}  // namespace orvlog::tool
