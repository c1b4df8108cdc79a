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

namespace orvlog::pdf_client
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

// Passwords are bytes; those of older documents are in an encoding of their own, whose letters beyond ASCII are mostly
// those of Latin 1. Empty if the text isn't UTF-8 that can be said in that.
std::string as_latin1(const std::string& text)
{
    std::string bytes;
    for (size_t i = 0; i < text.size(); ++i)
    {
        const auto lead = static_cast<uint8_t>(text[i]);
        if (lead < 0x80)
        {
            bytes.push_back(text[i]);
            continue;
        }
        const auto next = static_cast<uint8_t>(i + 1 < text.size() ? text[i + 1] : 0);
        if ((lead != 0xC2 && lead != 0xC3) || (next & 0xC0U) != 0x80)
            return {};
        bytes.push_back(static_cast<char>((lead & 3U) << 6 | (next & 0x3FU)));
        ++i;
    }
    return bytes;
}

std::unique_ptr<PDFDoc> open_with(const std::string& file_name, const std::optional<std::string>& password)
{
    std::optional<GooString> key;
    if (password)
        key.emplace(*password);
    return std::make_unique<PDFDoc>(std::make_unique<GooString>(file_name), key, key);
}

bool is_locked(PDFDoc& document)
{
    return !document.isOk() && document.getErrorCode() == errEncrypted;
}

// The document; locked if the password isn't one of its own.
std::unique_ptr<PDFDoc> unlock(const std::string& file_name, Unlocking& unlocking)
{
    std::unique_ptr<PDFDoc> document = open_with(file_name, unlocking.password);
    if (is_locked(*document) && !unlocking.password && unlocking.ask)
    {
        unlocking.password = unlocking.ask();
        document = open_with(file_name, unlocking.password);
    }
    const std::string older = as_latin1(unlocking.password.value_or(""));
    if (is_locked(*document) && !older.empty() && older != unlocking.password)
        document = open_with(file_name, older);
    return document;
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
                                               std::function<void(const std::string&)> complain, std::string& error,
                                               Unlocking* unlocking)
{
    if (globalParams == nullptr)
        globalParams = std::make_unique<GlobalParams>();
    setErrorCallback(swallow_message);
    Unlocking without;
    Unlocking& with = unlocking != nullptr ? *unlocking : without;
    std::unique_ptr<PDFDoc> document = unlock(file_name, with);
    if (!document->isOk())
    {
        const bool wrong = is_locked(*document) && with.password;
        error = wrong ? "is protected by a password, and this one is wrong" : reason_of(document->getErrorCode());
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
        std::swap(size.width, size.height);
    return size;
}

PageColours PdfDocument::page_colours(int page)
{
    PageColours colours;
    PDFDoc& document = implementation_->document();
    Page* source = document.getPage(page);
    if (source == nullptr)
        return colours;
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
        painter.begin_group({true, false, {1, 1, -1, -1}, PaintState{}});
    implementation_->document().displayPageSlice(&device, page, kPointsPerInch, kPointsPerInch, 0, true, false, false,
                                                 -1, -1, -1, -1, is_to_stop, &state);
    device.finish_page();
    if (blends)
        painter.end_group();
    device.set_painter(nullptr);
    return !state.met;
}

}  // namespace orvlog::pdf_client
