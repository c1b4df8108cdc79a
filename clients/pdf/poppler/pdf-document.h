// SPDX-License-Identifier: GPL-2.0-or-later
//
// Reads PDF files with poppler and paints their pages. All that touches poppler's own interface, which moves
// with each of its releases, lies behind this header; nothing of it shows here.

#pragma once

#include "clients/pdf/painter/painter.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvlog::pdf_client
{

// A page's size in points, turned as the page is shown.
struct PageSize
{
    double width = 0;
    double height = 0;
};

struct DocumentProfile
{
    uint16_t channels = 3;
    std::vector<uint8_t> icc;
};

// What a page says of its colours: the profiles that its resources name, which of them stand for the device
// families, the channels of its group's space (0: none given), and what the document was made for.
struct PageColours
{
    std::vector<DocumentProfile> profiles;
    std::optional<size_t> default_gray;
    std::optional<size_t> default_rgb;
    std::optional<size_t> default_cmyk;
    uint16_t group_channels = 0;
    std::vector<uint8_t> output_intent;
};

// What a protected document is opened with.
struct Unlocking
{
    std::optional<std::string> password;  // the owner's or the user's
    // Asked once if there is no password and the document wants one; what it gives is kept as the password.
    std::function<std::optional<std::string>()> ask;
};

class PdfDocument
{
public:
    // Null if the file can't be read; then `error` says why in a few words. `complain` takes, once for each
    // kind, what couldn't be passed on as it stands.
    static std::unique_ptr<PdfDocument> open(const std::string& file_name,
                                             std::function<void(const std::string&)> complain, std::string& error,
                                             Unlocking* unlocking = nullptr);
    ~PdfDocument();
    PdfDocument(const PdfDocument&) = delete;
    PdfDocument& operator=(const PdfDocument&) = delete;

    int page_count() const;
    // Pages count from 1. A page that can't be read has the size 0.
    PageSize page_size(int page) const;
    PageColours page_colours(int page);
    // Paints one page, its annotations too, between the painter's begin_page and end_page. `stop`, which is
    // asked again and again, breaks the page off; false if it did.
    bool paint_page(int page, Painter& painter, const std::function<bool()>& stop);

private:
    class Implementation;
    explicit PdfDocument(std::unique_ptr<Implementation> implementation);
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace orvlog::pdf_client
