// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/clients/pdf/small-document.h"

#include "clients/pdf/poppler/pdf-document.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace orvlog::small_document
{

namespace
{

using orvlog::test::TempFolder;

void write(const std::string& name, const std::string& content)
{
    std::ofstream(name, std::ios::binary) << content;
}

}  // namespace

std::string stream(const std::string& entries, const std::string& bytes)
{
    std::string object("<< ");
    object.append(entries).append(" /Length ").append(std::to_string(bytes.size())).append(" >>\nstream\n");
    return object.append(bytes).append("\nendstream");
}

std::string page(const std::string& content, const std::string& resources, const std::vector<std::string>& objects)
{
    std::vector<std::string> all = {"<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Count 1 /Kids [3 0 R] >>",
                                    "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 100 100] /Contents 4 0 R "
                                    "/Resources << " +
                                        resources + " >> >>",
                                    stream("", content)};
    all.insert(all.end(), objects.begin(), objects.end());
    std::string document("%PDF-1.7\n");
    for (size_t i = 0; i < all.size(); ++i)
        document.append(std::to_string(i + 1)).append(" 0 obj\n").append(all[i]).append("\nendobj\n");
    document.append("trailer\n<< /Size ").append(std::to_string(all.size() + 1));
    return document.append(" /Root 1 0 R >>\n%%EOF\n");
}

std::string from_hex(const std::string& digits)
{
    std::string bytes;
    for (size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

std::string jpeg_2000()
{
    return from_hex(
        "0000000c6a5020200d0a870a00000014667479706a703220000000006a7032200000002d6a70326800000016696864720000"
        "0028000000300003070700000000000f636f6c7201000000000010000000be6a703263ff4fff51002f000000000030000000"
        "280000000000000000000000300000002800000000000000000003070101070101070101ff52000c00000001010004040001"
        "ff5c00044040ff90000a00000000006d0001ff93c7d440115054afff7e3e9bfd12800000000000309097ff35510000000000"
        "0c2425ff7fc7d44214005cafff7fff5b1b907000000000000018484bff5aa88000000000061212ff7fdf80a814005cafff7e"
        "3deffb1d000000000000309097ff7fffd9");
}

std::vector<std::string> square_font(int number)
{
    const std::string descriptor = std::to_string(number + 1);
    const std::string file = std::to_string(number + 2);
    return {
        "<< /Type /Font /Subtype /TrueType /BaseFont /Square /FirstChar 32 /LastChar 65 /Widths [1000 0 0 0 0 0 0 0 0 "
        "0 0 0 0 0 0 "
        "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 1000] /FontDescriptor " +
            descriptor + " 0 R >>",
        "<< /Type /FontDescriptor /FontName /Square /Flags 4 /FontBBox [0 0 1000 1000] /ItalicAngle 0 /Ascent 1000 "
        "/Descent 0 /CapHeight 1000 /StemV 80 /FontFile2 " +
            file + " 0 R >>",
        stream(
            "",
            from_hex(
                "000100000007004000020030636d6170000102150000007c00000112676c796609d411a800000190000000486865616462fb"
                "44cd000001d8000000366868656107d103ec0000021000000024686d74780bb80000000002340000000c6c6f636100120036"
                "00000240000000086d61787000050005000002480000002000000001000100000000000c0000010600000000000000000000"
                "0000000000000000000000000000000000000000000000000100000000000000000000000000000000000000000000000000"
                "0000000000000002000000000000000000000000000000000000000000000000000000000000000000000000000000000000"
                "0000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000"
                "0000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000"
                "0000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000"
                "00010000000003e803e800030000010101010000000003e80000000003e80000fc18000000010000000003e803e800030000"
                "010101010000000003e80000000003e80000fc1800000001000000010000000000005f0f3cf5000003e80000000000000000"
                "00000000000000000000000003e803e80000000800020000000000000001000003e80000000003e80000000003e800010000"
                "000000000000000000000000000303e8000003e8000003e80000000000120012002400010000000300040001000000000001"
                "00000000000000000000000000000000"))};
}

Made record(const std::string& document, pdf_client::JobOptions options)
{
    const TempFolder folder;
    write("page.pdf", document);
    options.document = "page.pdf";
    options.log = "log.xml";
    options.png_folder = std::string(options.renderer ? "." : "");
    options.dpi = 72;
    Made made;
    made.result = pdf_client::run_job(options);
    made.log = folder.read("log.xml");
    for (const std::string& name : folder.names())
        if (name.ends_with(".png"))
            made.pages.push_back(folder.read(name));
    return made;
}

cairo_renderer::PagePixels draw(const std::string& document, std::vector<std::string>* messages)
{
    const TempFolder folder;
    write("page.pdf", document);
    const auto say = [messages](const std::string& line)
    {
        if (messages != nullptr)
            messages->push_back(line);
    };
    cairo_renderer::PageCollector collector;
    cairo_renderer::Options options;
    options.page_sink = collector.sink();
    options.complaint_sink = say;
    const cairo_renderer::Renderer renderer(options);
    std::string error;
    const auto pages = pdf_client::PdfDocument::open("page.pdf", say, error);
    if (pages == nullptr)
    {
        ADD_FAILURE() << error;
        return {};
    }
    pdf_client::Painter painter(renderer.interface(), say);
    painter.begin_document(1);
    painter.begin_page({1, 100, 100, 100 / 72.0, 100 / 72.0, 72, nullptr});
    pages->paint_page(1, painter, [] { return false; });
    painter.end_page();
    painter.end_document();
    return collector.pages().empty() ? cairo_renderer::PagePixels{} : collector.pages()[0];
}

uint32_t pixel(const cairo_renderer::PagePixels& page, uint32_t x, uint32_t y)
{
    const size_t at = size_t{y} * page.width + x;
    return at < page.pixels.size() ? page.pixels[at] : UINT32_MAX;
}

}  // namespace orvlog::small_document
