// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/pdf-document.h"

#include "clients/pdf/poppler/page-resources.h"
#include "clients/pdf/poppler/painting-device.h"

#include <utility>

#include <Error.h>
#include <ErrorCodes.h>
#include <GlobalParams.h>
#include <PDFDoc.h>
#include <Page.h>

namespace pdf_client
{

class PdfDocument::Implementation
{
public:
    Implementation(std::unique_ptr<PDFDoc> document, std::function<void(const std::string&)> complain)
        : document_(std::move(document)), device_(document_.get(), std::move(complain))
    {
    }

    PDFDoc& document()
    {
        return *document_;
    }

    PaintingDevice& device()
    {
        return device_;
    }

private:
    std::unique_ptr<PDFDoc> document_;
    PaintingDevice device_;
};

namespace
{

void swallow_message(ErrorCategory, Goffset, const char*) {}

const char* reason_of(int code)
{
    switch (code)
    {
    case errOpenFile:
        return "can't be opened";
    case errEncrypted:
        return "is protected by a password";
    default:
        return "is damaged or is no PDF file";
    }
}

struct Stop
{
    const std::function<bool()>& wanted;
    bool met = false;
};

bool is_to_stop(void* data)
{
    Stop* stop = static_cast<Stop*>(data);
    stop->met = stop->met || stop->wanted();
    return stop->met;
}

}  // namespace

std::unique_ptr<PdfDocument> PdfDocument::open(const std::string& file_name,
                                               std::function<void(const std::string&)> complain, std::string& error)
{
    if (globalParams == nullptr)
    {
        globalParams = std::make_unique<GlobalParams>();
    }
    setErrorCallback(swallow_message);
    auto document = std::make_unique<PDFDoc>(std::make_unique<GooString>(file_name));
    if (!document->isOk())
    {
        error = reason_of(document->getErrorCode());
        return nullptr;
    }
    if (document->getNumPages() < 1)
    {
        error = "has no pages";
        return nullptr;
    }
    return std::unique_ptr<PdfDocument>(
        new PdfDocument(std::make_unique<Implementation>(std::move(document), std::move(complain))));
}

PdfDocument::PdfDocument(std::unique_ptr<Implementation> implementation) : implementation_(std::move(implementation)) {}

PdfDocument::~PdfDocument() = default;

int PdfDocument::page_count() const
{
    return implementation_->document().getNumPages();
}

PageSize PdfDocument::page_size(int page) const
{
    PDFDoc& document = implementation_->document();
    PageSize size = {document.getPageMediaWidth(page), document.getPageMediaHeight(page)};
    const int turn = document.getPageRotate(page);
    if (turn == 90 || turn == 270)
    {
        std::swap(size.width, size.height);
    }
    return size;
}

PageColours PdfDocument::page_colours(int page)
{
    PageColours colours;
    PDFDoc& document = implementation_->document();
    Page* source = document.getPage(page);
    if (source == nullptr)
    {
        return colours;
    }
    gather_profiles(source->getResourceDict(), colours);
    Dict* group = source->getGroup();
    colours.group_channels = group != nullptr ? channels_of_space(group->lookup("CS")) : uint16_t{0};
    colours.output_intent = output_intent_of(document);
    return colours;
}

bool PdfDocument::paint_page(int page, Painter& painter, const std::function<bool()>& stop)
{
    Stop state = {stop};
    PaintingDevice& device = implementation_->device();
    device.set_painter(&painter);
    // What blends, blends with what was painted before it and not with the paper.
    Page* source = implementation_->document().getPage(page);
    const bool blends = source != nullptr && blends_within(source->getResourceDict());
    if (blends)
    {
        painter.begin_group({true, false, {1, 1, -1, -1}, PaintState{}});
    }
    implementation_->document().displayPageSlice(&device, page, points_per_inch, points_per_inch, 0, true, false, false,
                                                 -1, -1, -1, -1, is_to_stop, &state);
    device.finish_page();
    if (blends)
    {
        painter.end_group();
    }
    device.set_painter(nullptr);
    return !state.met;
}

}  // namespace pdf_client
