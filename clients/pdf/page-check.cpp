// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/page-check.h"

#include <algorithm>
#include <new>

namespace orvlog::pdf_client
{

using cairo_renderer::Page;
using cairo_renderer::PagePixels;

cairo_renderer::PageSink PageCheck::first()
{
    return [this](const Page& page) { hold(page); };
}

cairo_renderer::PageSink PageCheck::second()
{
    return [this](const Page& page) { compare(page); };
}

void PageCheck::hold(const Page& page)
{
    try
    {
        PagePixels pixels = cairo_renderer::read_pixels(page);
        rows_held_ += pixels.height;
        if (page.rows == page.height)
        {
            held_ = std::move(pixels);
            return;
        }
        if (page.first_row == 0)
            file_.reset(std::tmpfile());
        const size_t count = pixels.pixels.size();
        const bool written =
            file_ != nullptr && std::fwrite(pixels.pixels.data(), sizeof(uint32_t), count, file_.get()) == count;
        if (written && page.first_row + page.rows == page.height)
            std::rewind(file_.get());
        lost_ = lost_ || !written;
    }
    catch (const std::bad_alloc&)
    {
        lost_ = true;
    }
}

// The rows of the other page that this one, or this band, has.
bool PageCheck::fetch(const Page& page, PagePixels& held)
{
    if (page.rows == page.height)
    {
        held = std::move(held_);
        return true;
    }
    held.width = page.width;
    held.height = page.rows;
    held.pixels.resize(static_cast<size_t>(page.width) * page.rows);
    return file_ != nullptr &&
           std::fread(held.pixels.data(), sizeof(uint32_t), held.pixels.size(), file_.get()) == held.pixels.size();
}

void PageCheck::compare(const Page& page)
{
    alone_ = alone_ || rows_held_ != page.height;
    if (lost_ || alone_)
        return;
    try
    {
        PagePixels held;
        lost_ = !fetch(page, held);
        const PagePixels pixels = lost_ ? PagePixels{} : cairo_renderer::read_pixels(page);
        rows_compared_ += pixels.height;
        different_ += lost_ ? 0 : cairo_renderer::compare_pixels(held, pixels).pixels_different;
    }
    catch (const std::bad_alloc&)
    {
        lost_ = true;
    }
}

void PageCheck::end_page(int number, const CallDigest& logged, const CallDigest& plain)
{
    const std::string name = "page " + std::to_string(number);
    const bool pixels_differ = different_ > different_before_;
    const bool by_itself = logged.differs_by_itself(plain);
    differ_ = differ_ || (pixels_differ && !by_itself);
    if (by_itself && pixels_differ)
    {
        differing_by_document_.push_back(name +
                                         " differs from the one drawn without the logger, and the logger isn't the "
                                         "cause: the document asks for other calls each time it is read");
    }
    else if (by_itself)
    {
        other_calls_.push_back(name + " asks for other calls each time it is read, so that two logs of it differ");
    }
    different_before_ = different_;
    if (lost_)
        not_compared_.push_back(name + " can't be compared: there is no room to hold it");
    else if (alone_ || rows_held_ != rows_compared_)
        not_compared_.push_back(name + " can't be compared: only one of its two drawings could be made");
    else if (rows_held_ > 0)
        ++pages_;
    held_ = {};
    file_.reset();
    rows_held_ = 0;
    rows_compared_ = 0;
    alone_ = false;
    lost_ = false;
}

uint64_t PageCheck::pages_compared() const
{
    return pages_;
}

uint64_t PageCheck::pixels_different() const
{
    return different_;
}

bool PageCheck::differ() const
{
    return differ_;
}

const std::vector<std::string>& PageCheck::differing_by_document() const
{
    return differing_by_document_;
}

const std::vector<std::string>& PageCheck::other_calls() const
{
    return other_calls_;
}

const std::vector<std::string>& PageCheck::not_compared() const
{
    return not_compared_;
}

}  // namespace orvlog::pdf_client
