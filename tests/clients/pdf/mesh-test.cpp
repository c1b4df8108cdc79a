// SPDX-License-Identifier: GPL-2.0-or-later
//
// Meshes of triangles and of patches: how many pieces they become, where those lie, and their colours.

#include "clients/pdf/job.h"
#include "renderers/cairo/cairo-renderer.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

namespace
{

using namespace orvlog::pdf_client;
using orvlog::test::TempFolder;

// A page of 64 by 64 points with one shading, the one named Sh.
std::string document_of(const std::string& shading, const std::string& data, const std::string& before = "")
{
    const std::string content = before + "/Sh sh";
    return "%PDF-1.7\n1 0 obj\n<< /Type /Catalog /Pages 2 0 R >>\nendobj\n"
           "2 0 obj\n<< /Type /Pages /Kids [3 0 R] /Count 1 >>\nendobj\n"
           "3 0 obj\n<< /Type /Page /Parent 2 0 R /MediaBox [0 0 64 64] /Contents 4 0 R /Resources << "
           "/Shading << /Sh 5 0 R >> >> >>\nendobj\n"
           "4 0 obj\n<< /Length " +
           std::to_string(content.size()) + " >>\nstream\n" + content +
           "\nendstream\nendobj\n"
           "5 0 obj\n<< " +
           shading + " /BitsPerFlag 8 /BitsPerCoordinate 8 /BitsPerComponent 8 /Filter /ASCIIHexDecode /Length " +
           std::to_string(data.size()) + " >>\nstream\n" + data +
           "\nendstream\nendobj\ntrailer\n<< /Root 1 0 R >>\n%%EOF\n";
}

struct Painted
{
    std::string log;
    orvlog::cairo_renderer::PagePixels page;

    uint32_t at(uint32_t x, uint32_t y) const
    {
        return page.pixels.at(size_t{y} * page.width + x) & 0xFFFFFFU;
    }
};

Painted paint(const std::string& document, unsigned dpi = 72)
{
    const TempFolder folder;
    std::ofstream("mesh.pdf", std::ios::binary) << document;
    JobOptions options;
    options.document = "mesh.pdf";
    options.log = "log.xml";
    options.png_folder = std::string(".");
    options.dpi = dpi;
    const JobResult result = run_job(options);
    EXPECT_TRUE(result.errors.empty()) << result.errors.front();
    EXPECT_TRUE(result.summary.messages.empty()) << result.summary.messages.front();
    return {folder.read("log.xml"), orvlog::cairo_renderer::read_png("mesh-001.png")};
}

size_t count(const std::string& text, const std::string& part)
{
    size_t found = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++found;
    return found;
}

testing::AssertionResult near(uint32_t seen, uint32_t expected, int slack)
{
    for (const unsigned shift : {0U, 8U, 16U})
        if (std::abs(static_cast<int>((seen >> shift) & 0xFFU) - static_cast<int>((expected >> shift) & 0xFFU)) > slack)
            return testing::AssertionFailure() << std::hex << seen << " instead of " << expected;
    return testing::AssertionSuccess();
}

constexpr const char* kRgbSpace = "/ColorSpace /DeviceRGB /Decode [0 64 0 64 0 1 0 1 0 1]";
constexpr const char* kGrayByFunction = "/ColorSpace /DeviceGray /Decode [0 64 0 64 0 1] "
                                        "/Function << /FunctionType 2 /Domain [0 1] /C0 [0] /C1 [1] /N 8 >>";

// The square from 8.03 to 56.22, of edges that are straight: from the lower left corner up, right, down and back.
const std::string square_edges = "00 2020 2060 20A0 20E0 60E0 A0E0 E0E0 E0A0 E060 E020 A020 6020 ";
const std::string inner_points = "6060 60A0 A0A0 A060 ";

TEST(Mesh, CoonsPatchRunsFromCornerToCorner)
{
    const Painted painted =
        paint(document_of(std::string("/ShadingType 6 ") + kRgbSpace, square_edges + "FF0000 00FF00 0000FF FFFFFF"));
    // 48.2 pixels each way, in pieces of at most 10: 5 by 5, each of two triangles.
    EXPECT_EQ(count(painted.log, "<GOP_OperandGrad3Pt "), 50U);
    EXPECT_EQ(count(painted.log, "<ORV_group_start "), 0U);
    EXPECT_TRUE(near(painted.at(9, 54), 0xFF0000, 20));
    EXPECT_TRUE(near(painted.at(9, 9), 0x00FF00, 20));
    EXPECT_TRUE(near(painted.at(54, 9), 0x0000FF, 20));
    EXPECT_TRUE(near(painted.at(54, 54), 0xFFFFFF, 20));
    EXPECT_TRUE(near(painted.at(32, 32), 0x808080, 6));
    EXPECT_EQ(painted.at(4, 32), 0xFFFFFFU);
    EXPECT_EQ(painted.at(60, 32), 0xFFFFFFU);
}

TEST(Mesh, PiecesShowNoSeams)
{
    const Painted painted = paint(document_of(std::string("/ShadingType 7 ") + kRgbSpace,
                                              square_edges + inner_points + "336699 336699 336699 336699"));
    for (uint32_t y = 9; y < 55; ++y)
        for (uint32_t x = 9; x < 55; ++x)
            ASSERT_TRUE(near(painted.at(x, y), 0x336699, 1)) << x << " " << y;
}

TEST(Mesh, ManyPiecesUnderAClipAreAGroupThatHoldsTheClip)
{
    const Painted painted = paint(document_of(std::string("/ShadingType 7 ") + kRgbSpace,
                                              square_edges + inner_points + "336699 336699 336699 336699",
                                              "32 8 m 56 32 l 32 56 l 8 32 l W n "),
                                  96);
    // 64.3 pixels each way are 7 pieces.
    EXPECT_EQ(count(painted.log, "<GOP_OperandGrad3Pt "), 98U);
    EXPECT_EQ(count(painted.log, "<ORV_group_start "), 1U);
    EXPECT_LT(count(painted.log, "<GSH_ShapeList "), 5U);
    EXPECT_TRUE(near(painted.at(42, 42), 0x336699, 1));
    EXPECT_EQ(painted.at(14, 14), 0xFFFFFFU);
}

TEST(Mesh, PatchOfAFunctionFollowsIt)
{
    const Painted painted =
        paint(document_of(std::string("/ShadingType 6 ") + kGrayByFunction, square_edges + "00 00 FF FF"));
    // A little more than 48 pixels in pieces of at most 4: 13 by 13.
    EXPECT_EQ(count(painted.log, "<GOP_OperandGrad3Pt "), 338U);
    EXPECT_TRUE(near(painted.at(9, 32), 0x000000, 1));
    EXPECT_TRUE(near(painted.at(32, 32), 0x010101, 2));
    EXPECT_TRUE(near(painted.at(50, 32), 0x585858, 12));
    EXPECT_TRUE(near(painted.at(55, 32), 0xF0F0F0, 16));
}

TEST(Mesh, TriangleIsOneGradient)
{
    const Painted painted =
        paint(document_of(std::string("/ShadingType 4 ") + kRgbSpace, "00 2020 FF0000 00 20E0 00FF00 00 E020 0000FF"));
    EXPECT_EQ(count(painted.log, "<GOP_OperandGrad3Pt "), 1U);
    EXPECT_TRUE(near(painted.at(10, 53), 0xF00808, 16));
    EXPECT_TRUE(near(painted.at(24, 40), 0x555555, 8));
    EXPECT_EQ(painted.at(48, 16), 0xFFFFFFU);
}

TEST(Mesh, TriangleOfAFunctionFollowsIt)
{
    const Painted painted =
        paint(document_of(std::string("/ShadingType 4 ") + kGrayByFunction, "00 2020 00 00 20E0 00 00 E020 FF"));
    // The longest side, a little more than 68 pixels, in 18 pieces.
    EXPECT_EQ(count(painted.log, "<GOP_OperandGrad3Pt "), 324U);
    EXPECT_TRUE(near(painted.at(32, 50), 0x010101, 2));
    EXPECT_TRUE(near(painted.at(48, 54), 0x404040, 16));
    EXPECT_TRUE(near(painted.at(54, 55), 0xD0D0D0, 40));
}

TEST(Mesh, PatchesBeyondReasonAreLeftOut)
{
    const Painted painted = paint(document_of("/ShadingType 6 /ColorSpace /DeviceRGB "
                                              "/Decode [0 1e308 -1e308 1e308 0 1 0 1 0 1]",
                                              square_edges + "FF0000 00FF00 0000FF FFFFFF"));
    EXPECT_EQ(painted.at(32, 32), 0xFFFFFFU);
}

}  // namespace
