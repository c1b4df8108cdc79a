// SPDX-License-Identifier: GPL-2.0-or-later
//
// Images of documents: those that decode all at once are there each time they are read, and those that give fewer bytes
// than their size says end there.

#include "tests/clients/pdf/small-document.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{

using namespace orvlog::small_document;
using orvlog::pdf_client::JobOptions;
using Lines = std::vector<std::string>;

constexpr char kPlace[] = "q 100 0 0 100 0 0 cm /I Do Q";

std::string image(const std::string& entries, const std::string& bytes)
{
    return stream("/Type /XObject /Subtype /Image " + entries, bytes);
}

std::string jpx_image()
{
    return image("/Width 48 /Height 40 /ColorSpace /DeviceRGB /BitsPerComponent 8 /Filter /JPXDecode", jpeg_2000());
}

size_t count(const std::string& text, const std::string& part)
{
    size_t found = 0;
    for (size_t at = text.find(part); at != text.npos; at = text.find(part, at + part.size()))
        ++found;
    return found;
}

TEST(Jpeg2000, IsThereForEachReading)
{
    const std::string document = page(kPlace, "/XObject << /I 5 0 R >>", {jpx_image()});
    JobOptions options;
    options.base_mode = true;
    options.check = true;
    const Made made = record(document, options);
    EXPECT_EQ(made.result.errors, Lines());
    EXPECT_EQ(made.result.summary.messages, Lines());
    // Read by the logger, a row at a time, and by the renderer, all rows at once.
    EXPECT_EQ(count(made.log, "<GOP_ImageReadFn "), 41U + 1U);
    EXPECT_EQ(count(made.log, "\nc8 28 5a c8 28 5a "), 40U + 39U);
    EXPECT_EQ(count(made.log, "00 00 00 "), 0U);
    EXPECT_EQ(pixel(draw(document), 50, 50), 0xC8285AU);
}

TEST(Jpeg2000, IsThereInTheGroupOfASoftMask)
{
    const std::string group = stream("/Type /XObject /Subtype /Form /BBox [0 0 100 100] /Group << /S /Transparency /CS "
                                     "/DeviceRGB >> /Resources << /XObject << /I 5 0 R >> >>",
                                     kPlace);
    const std::string document =
        page("/M gs 0 0 1 rg 0 0 100 100 re f", "/ExtGState << /M << /SMask << /S /Luminosity /G 6 0 R >> >> >>",
             {jpx_image(), group});
    // The luminosity of (200, 40, 90) is 93.5: blue through it on white.
    const uint32_t seen = pixel(draw(document), 50, 50);
    EXPECT_EQ(seen & 0xFFU, 0xFFU);
    EXPECT_NEAR(seen >> 16, 255 - 93.5, 1.5);
    EXPECT_NEAR(seen >> 8 & 0xFFU, 255 - 93.5, 1.5);
}

TEST(Jpeg2000, IsThereBehindAColourMapAndAsAKeptImage)
{
    const std::string inverted =
        image("/Width 48 /Height 40 /ColorSpace /DeviceRGB /BitsPerComponent 8 /Filter /JPXDecode "
              "/Decode [1 0 1 0 1 0]",
              jpeg_2000());
    const std::string document = page("q 100 0 0 50 0 0 cm /I Do Q q 100 0 0 50 0 50 cm /J Do Q",
                                      "/XObject << /I 5 0 R /J 6 0 R >>", {jpx_image(), inverted});
    for (const bool base : {false, true})
    {
        JobOptions options;
        options.base_mode = base;
        options.check = true;
        const Made plain = record(document, options);
        options.keep_images = true;
        options.via_temporary_log = true;
        const Made kept = record(document, options);
        EXPECT_EQ(kept.result.errors, Lines());
        EXPECT_EQ(kept.result.summary.messages, Lines());
        EXPECT_EQ(kept.pages, plain.pages);
    }
    const auto drawn = draw(document);
    EXPECT_EQ(pixel(drawn, 50, 75), 0xC8285AU);
    EXPECT_EQ(pixel(drawn, 50, 25), 0x37D7A5U);
}

struct Short
{
    const char* name;
    std::string entries;
    std::string bytes;
    const char* message;
    int whole_rows;
};

class ShortImages : public testing::TestWithParam<Short>
{
};

TEST_P(ShortImages, EndWhereTheirDataEnds)
{
    const std::string document = page(kPlace, "/XObject << /I 5 0 R >>", {image(GetParam().entries, GetParam().bytes)});
    for (const bool base : {false, true})
    {
        JobOptions options;
        options.base_mode = base;
        options.renderer = false;
        const Made made = record(document, options);
        EXPECT_EQ(made.result.errors, Lines());
        // What isn't read isn't said; small images are read in any case.
        const bool is_read = base || std::string_view(GetParam().name) == "Small";
        EXPECT_EQ(made.result.summary.messages, is_read ? Lines{GetParam().message} : Lines());
        EXPECT_LT(made.log.size(), 40000U);
        EXPECT_EQ(count(made.log, " img_returned=\"90\""), static_cast<size_t>(base ? GetParam().whole_rows : 0));
    }
    Lines messages;
    const auto drawn = draw(document, &messages);
    ASSERT_FALSE(messages.empty());
    EXPECT_EQ(messages[0], GetParam().message);
    EXPECT_EQ(pixel(drawn, 50, 99), 0xFFFFFFU) << "paper";
}

// 30 pixels in RGB are a row of 90 bytes. The line end before "endstream" is taken for a byte of the data.
INSTANTIATE_TEST_SUITE_P(
    All, ShortImages,
    testing::Values(
        Short{"Jpeg", "/Width 30000 /Height 30000 /ColorSpace /DeviceRGB /BitsPerComponent 8 /Filter /DCTDecode",
              "\xFF\xD8\xFF\xD9", "image 5 0 R ends early: 0 of its 2700000000 bytes", 0},
        Short{"Plain", "/Width 30 /Height 60 /ColorSpace /DeviceRGB /BitsPerComponent 8 /Filter /ASCIIHexDecode",
              "112233445566>", "image 5 0 R ends early: 6 of its 5400 bytes", 0},
        Short{"Rows", "/Width 30 /Height 60 /ColorSpace /DeviceRGB /BitsPerComponent 8 /Filter /RunLengthDecode",
              from_hex("8109"
                       "CC09"
                       "80"),
              "image 5 0 R ends early: 181 of its 5400 bytes", 2},
        Short{"Mapped",
              "/Width 30 /Height 60 /ColorSpace /DeviceRGB /BitsPerComponent 8 /Filter /RunLengthDecode "
              "/Decode [1 0 1 0 1 0]",
              from_hex("8109"
                       "CC09"
                       "80"),
              "image 5 0 R ends early: 180 of its 5400 bytes", 2},
        Short{"Small", "/Width 30 /Height 4 /ColorSpace /DeviceRGB /BitsPerComponent 8 /Filter /RunLengthDecode",
              from_hex("8109"
                       "CC09"
                       "80"),
              "image 5 0 R ends early: 181 of its 360 bytes", 2}),
    [](const testing::TestParamInfo<Short>& one) { return std::string(one.param.name); });

TEST(ShortImages, PaintThePixelsThatCame)
{
    // Two pixels of the first row of two rows of four.
    const std::string document =
        page(kPlace, "/XObject << /I 5 0 R >>",
             {image("/Width 4 /Height 2 /ColorSpace /DeviceRGB /BitsPerComponent 8 /Filter /ASCIIHexDecode",
                    "FF00000000FF00>")});
    const auto drawn = draw(document);
    EXPECT_EQ(pixel(drawn, 12, 25), 0xFF0000U);
    EXPECT_EQ(pixel(drawn, 37, 25), 0x0000FFU);
    EXPECT_EQ(pixel(drawn, 62, 25), 0xFFFFFFU);
    EXPECT_EQ(pixel(drawn, 37, 75), 0xFFFFFFU);
}

TEST(ShortImages, WithinTheContentAndAsStencilsAndMasks)
{
    const std::string document = page(
        "q 50 0 0 50 0 0 cm BI /W 20 /H 20 /CS /G /BPC 8 /F /AHx ID 00112233> EI Q "
        "q 50 0 0 50 50 0 cm /I Do Q q 50 0 0 50 50 50 cm /J Do Q",
        "/XObject << /I 5 0 R /J 6 0 R >>",
        {image("/Width 300 /Height 300 /ImageMask true /Filter /ASCIIHexDecode", "00>"),
         image("/Width 1 /Height 1 /ColorSpace /DeviceGray /BitsPerComponent 8 /SMask 7 0 R", "A"),
         image("/Width 90 /Height 90 /ColorSpace /DeviceGray /BitsPerComponent 8 /Filter /ASCIIHexDecode", "FF>")});
    JobOptions options;
    options.base_mode = true;
    options.renderer = false;
    const Lines wanted = {"an image within the content ends early: 4 of its 400 bytes",
                          "image 5 0 R ends early: 1 of its 11400 bytes",
                          "the mask of image 6 0 R ends early: 1 of its 8100 bytes"};
    EXPECT_EQ(record(document, options).result.summary.messages, wanted);
}

// Two pixels, each half opaque and blended with the matte before: red, and what is beyond what the matte allows.
TEST(Matte, IsTakenOut)
{
    const auto draw_with = [](const std::string& mask_entries, const std::string& mask, Lines* messages)
    {
        const std::string document =
            page("0 0 1 rg 0 0 100 100 re f q 100 0 0 100 0 0 cm /I Do Q", "/XObject << /I 5 0 R >>",
                 {image("/Width 2 /Height 1 /ColorSpace /DeviceRGB /BitsPerComponent 8 /Filter /ASCIIHexDecode "
                        "/SMask 6 0 R",
                        "80000000FF00>"),
                  image("/ColorSpace /DeviceGray /Filter /ASCIIHexDecode " + mask_entries, mask)});
        return draw(document, messages);
    };
    Lines messages;
    const auto drawn = draw_with("/Width 2 /Height 1 /BitsPerComponent 8 /Matte [0 0 0]", "8080>", &messages);
    EXPECT_EQ(messages, Lines());
    // 0x80 red by half over blue: red comes back to 0xFF first.
    EXPECT_EQ(pixel(drawn, 20, 50) >> 16, 0x80U);
    EXPECT_EQ(pixel(drawn, 20, 50) & 0xFFU, 0x7FU);
    EXPECT_EQ(pixel(drawn, 80, 50), 0x00807FU);
    const auto white = draw_with("/Width 2 /Height 1 /BitsPerComponent 8 /Matte [1 1 1]", "80FF>", &messages);
    // (80, 0, 0) on white by half was (01, -FF, -FF).
    EXPECT_EQ(pixel(white, 20, 50) >> 16, 0x01U);
    EXPECT_EQ(pixel(white, 80, 50), 0x00FF00U);
    const auto bits = draw_with("/Width 2 /Height 1 /BitsPerComponent 1 /Matte [1 1 1]", "40>", &messages);
    EXPECT_EQ(pixel(bits, 20, 50), 0x0000FFU);
    EXPECT_EQ(pixel(bits, 80, 50), 0x00FF00U);
    EXPECT_EQ(messages, Lines());
    // A matte has as many channels as the image.
    const auto other = draw_with("/Width 2 /Height 1 /BitsPerComponent 8 /Matte [1 1]", "FFFF>", &messages);
    EXPECT_EQ(pixel(other, 20, 50), 0x800000U);
    EXPECT_EQ(messages, Lines{"the matte colour of a soft mask is left out"});
}

// Masks of other sizes than that of the image, which is two pixels: red by half, and green, on black.
TEST(Matte, IsTakenOutThroughAMaskOfAnotherSize)
{
    const auto draw_with = [](const std::string& mask_entries, const std::string& mask)
    {
        Lines messages;
        const std::string document = page(
            "0 0 1 rg 0 0 100 100 re f q 100 0 0 100 0 0 cm /I Do Q", "/XObject << /I 5 0 R >>",
            {image("/Width 2 /Height 1 /ColorSpace /DeviceRGB /BitsPerComponent 8 /Filter /ASCIIHexDecode "
                   "/SMask 6 0 R",
                   "40000000FF00>"),
             image("/ColorSpace /DeviceGray /BitsPerComponent 8 /Matte [0 0 0] /Filter /ASCIIHexDecode " + mask_entries,
                   mask)});
        const auto drawn = draw(document, &messages);
        EXPECT_EQ(messages, Lines());
        return drawn;
    };
    // Red comes back to 0x80 by a half, and is then painted by a half.
    const auto smaller = draw_with("/Width 1 /Height 1", "80>");
    EXPECT_EQ(pixel(smaller, 20, 50), 0x40007FU);
    // Of four and two rows the mean of (40, 80, 80, C0) is 0x80, so that red is 0x80 here too; green is opaque.
    const auto larger = draw_with("/Width 4 /Height 2", "4080FFFF80C0FFFF>");
    EXPECT_EQ(pixel(larger, 5, 10), 0x2000BFU);
    EXPECT_EQ(pixel(larger, 40, 90), 0x60003FU);
    EXPECT_EQ(pixel(larger, 80, 50), 0x00FF00U);
    // The middle one of three lies on both pixels.
    const auto odd = draw_with("/Width 3 /Height 1", "00FFFF>");
    EXPECT_EQ(pixel(odd, 5, 50), 0x0000FFU);
    EXPECT_EQ(pixel(odd, 45, 50), 0x800000U);
}

// Painted in black through a mask whose group is of this colour: how dark that is.
uint32_t darkness_through(const std::string& space, const std::string& colour)
{
    const std::string group = stream("/Type /XObject /Subtype /Form /BBox [0 0 100 100] /Group << /S /Transparency "
                                     "/CS " +
                                         space + " >>",
                                     colour + " 0 0 100 100 re f");
    return 255 - (pixel(draw(page("/M gs 0 g 0 0 100 100 re f",
                                  "/ExtGState << /M << /SMask << /S /Luminosity /G 5 0 R >> >> >>", {group})),
                        50, 50) &
                  0xFFU);
}

TEST(LuminosityOfCmyk, IsNothingForBlackAndAllForPaper)
{
    EXPECT_EQ(darkness_through("/DeviceCMYK", "0 0 0 1 k"), 0U);
    EXPECT_EQ(darkness_through("/DeviceCMYK", "1 1 1 1 k"), 0U);
    EXPECT_EQ(darkness_through("/DeviceCMYK", "0 0 0 0 k"), 255U);
    const uint32_t half = darkness_through("/DeviceCMYK", "0 0 0 0.5 k");
    EXPECT_GT(half, 100U);
    EXPECT_LT(half, 160U);
    EXPECT_EQ(darkness_through("/DeviceRGB", "0 0 0 rg"), 0U);
    EXPECT_EQ(darkness_through("/DeviceGray", "0.5 g"), 128U);
}

}  // namespace
