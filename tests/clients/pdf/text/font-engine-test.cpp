// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/painter/raster.h"
#include "clients/pdf/text/font-engine.h"

#include <gtest/gtest.h>

#include <cstring>

namespace
{

using namespace orvlog::pdf_client;

// A square from the baseline to half an em.
std::shared_ptr<Glyph> square()
{
    auto glyph = std::make_shared<Glyph>();
    glyph->code = 65;
    glyph->outline = rectangle({0, 0, 0.5, 0.5});
    return glyph;
}

GlyphRun run_of(const std::shared_ptr<const Glyph>& first, const std::shared_ptr<const Glyph>& second)
{
    GlyphRun run;
    run.em_to_content = {{0.2, 0, 0, -0.2, 3, 4}};
    run.font_size = 10;
    run.font_id = 7;
    run.glyphs = {{first, {0.5, 0}, {65}}, {second, {0.25, 0.125}, {1, 66}}};
    return run;
}

struct Started
{
    GGO_Matrix matrix{};
    uint32_t flags = 0;
    int32_t font = 0;
    uint32_t result = 0;
};

Started start(const FontEngine& engine, const GSH_ShapePointer* shape, const GGO_Matrix& to_pixels)
{
    Started started;
    const GFI_FontEngineTable* table = engine.table();
    started.result =
        table->GFI_StringStartFn(table->fe_Context, shape->sp_U.glyph.font_spec_ptr, &to_pixels, 0, 1,
                                 shape->sp_U.glyph.string_desc, &started.font, &started.matrix, &started.flags);
    return started;
}

struct Next
{
    uint32_t returned = 9;
    uint32_t index = 0;
    uint16_t variant = 9;
    GGO_Vector advance{};
    GGO_BoxFloat box{};
};

Next next(const FontEngine& engine)
{
    Next result;
    const GFI_FontEngineTable* table = engine.table();
    EXPECT_EQ(table->GFI_GlyphIndexGetFn(table->fe_Context, &result.returned, &result.index, &result.variant,
                                         &result.advance, &result.box),
              1U);
    return result;
}

struct Got
{
    uint32_t result = 0;
    uint32_t changed = 9;
    GGO_Matrix matrix{};
    uint32_t flags = 0;
    GFI_GlyphDescPointer* glyph = nullptr;
};

Got get(const FontEngine& engine, uint32_t type)
{
    Got got;
    const GFI_FontEngineTable* table = engine.table();
    got.result = table->GFI_GlyphGetFn(table->fe_Context, type, &got.changed, &got.matrix, &got.flags, &got.glyph);
    return got;
}

const uint8_t* payload(const Got& got, size_t offset)
{
    return reinterpret_cast<const uint8_t*>(got.glyph->gdp_GlyphDesc) + offset;
}

TEST(TextShape, DescribesTheRun)
{
    FontEngine engine;
    const GlyphRun run = run_of(square(), square());
    const TextShape shape(engine, run);
    const GSH_ShapePointer* pointer = shape.get();
    EXPECT_EQ(pointer->sp_HeaderPtr->sh_ShapeType, 0);
    EXPECT_EQ(pointer->sp_HeaderPtr->sh_Hints, 2);
    EXPECT_DOUBLE_EQ(pointer->sp_HeaderPtr->sh_Transform.m[0], 0.02);
    EXPECT_DOUBLE_EQ(pointer->sp_HeaderPtr->sh_Transform.m[3], -0.02);
    EXPECT_EQ(pointer->sp_HeaderPtr->sh_Transform.m[4], 3);
    const GFI_FontSpec* spec = pointer->sp_U.glyph.font_spec_ptr->fsp_FontSpec;
    EXPECT_EQ(spec->ufs_FontSize, 10.0F);
    EXPECT_EQ(spec->ufs_Direction, 0);
    EXPECT_EQ(spec->ufs_FontVolatility, 2);
    const GFI_StringDescPointer* string = pointer->sp_U.glyph.string_desc;
    EXPECT_EQ(string->gsp_StringDesc->gsd_TextLen, 3U);
    EXPECT_EQ(string->gsp_StringDesc->gsd_GlyphMappingLen, 2U);
    EXPECT_EQ(string->gsp_TextPtr[2], 66);
    EXPECT_EQ(string->gsp_GlyphMapping[1].gcs_nGlyphIndices, 1);
    EXPECT_EQ(string->gsp_GlyphMapping[0].gcs_GlyphSpec->ggs_GlyphIndex, 65);
    EXPECT_EQ(string->gsp_GlyphMapping[0].gcs_GlyphSpec->ggs_AdvanceOverride, 5.0F);
    EXPECT_EQ(shape.end_point().gpf_X, 7.5);
    EXPECT_EQ(shape.end_point().gpf_Y, 1.25);
}

TEST(FontEngine, StepsThroughAString)
{
    FontEngine engine;
    const GlyphRun run = run_of(square(), square());
    const TextShape shape(engine, run);
    const Started started = start(engine, shape.get(), scaling(2, -2));
    EXPECT_EQ(started.result, 1U);
    EXPECT_EQ(started.font, 7);
    EXPECT_EQ(started.matrix.m[0], 20);
    EXPECT_EQ(started.matrix.m[3], -20);
    EXPECT_EQ(started.flags, 0xCU);
    const Next first = next(engine);
    EXPECT_EQ(first.returned, 1U);
    EXPECT_EQ(first.index, 65U);
    EXPECT_EQ(first.variant, 0);
    EXPECT_EQ(first.advance.gvf_X, 0.5);
    EXPECT_EQ(first.box.gbf_MaxY, 0.5);
    EXPECT_EQ(next(engine).advance.gvf_Y, 0.125);
    EXPECT_EQ(next(engine).returned, 0U);
    EXPECT_EQ(next(engine).returned, 0U);
    EXPECT_EQ(get(engine, GFI_GDT_PATH).result, 0U);
}

TEST(FontEngine, KnowsNoStringThatIsGone)
{
    FontEngine engine;
    const GlyphRun run = run_of(square(), square());
    GSH_ShapePointer stale{};
    {
        const TextShape shape(engine, run);
        stale = *shape.get();
        start(engine, shape.get(), identity());
    }
    EXPECT_EQ(start(engine, &stale, identity()).result, 0U);
    const GFI_FontEngineTable* table = engine.table();
    Next result;
    EXPECT_EQ(table->GFI_GlyphIndexGetFn(table->fe_Context, &result.returned, &result.index, &result.variant,
                                         &result.advance, nullptr),
              0U);
}

TEST(FontEngine, GivesOutlines)
{
    FontEngine engine;
    const GlyphRun run = run_of(square(), square());
    const TextShape shape(engine, run);
    start(engine, shape.get(), identity());
    next(engine);
    const Got got = get(engine, GFI_GDT_PATH);
    ASSERT_EQ(got.result, 1U);
    EXPECT_EQ(got.changed, 0U);
    EXPECT_EQ(got.glyph->gdp_GlyphDesc->gd_Type, 2U);
    EXPECT_EQ(reinterpret_cast<const GFI_GlyphDescPath*>(got.glyph->gdp_GlyphDesc)->gdp_WindingRule, 1U);
    ASSERT_NE(got.glyph->gdp_Path, nullptr);
    EXPECT_EQ(got.glyph->gdp_Path->lpp_Path->pa_EnclosingBox.gbf_MaxX, 0.5);
}

TEST(FontEngine, GivesPixelsInThreeForms)
{
    FontEngine engine;
    const GlyphRun run = run_of(square(), square());
    const TextShape shape(engine, run);
    // An em is 10 pixels, so the square is 5 by 5, above the baseline.
    start(engine, shape.get(), scaling(1, -1));
    next(engine);
    const Got bitmap = get(engine, GFI_GDT_BITMAP);
    ASSERT_EQ(bitmap.result, 1U);
    EXPECT_EQ(bitmap.changed, 1U);
    EXPECT_EQ(bitmap.matrix.m[0], 1);
    EXPECT_EQ(bitmap.matrix.m[3], 1);
    EXPECT_EQ(bitmap.flags, 1U);
    const GFI_GlyphDescBitmap* record = reinterpret_cast<const GFI_GlyphDescBitmap*>(bitmap.glyph->gdp_GlyphDesc);
    EXPECT_EQ(record->gdb_Desc.gd_Type, 1U);
    EXPECT_EQ(record->gdb_Desc.gd_Offset.gvf_X, 0);
    EXPECT_EQ(record->gdb_Desc.gd_Offset.gvf_Y, -5);
    EXPECT_EQ(record->gdb_Width, 5);
    EXPECT_EQ(record->gdb_Height, 5);
    EXPECT_EQ(record->gdb_Rowstep, 1);
    EXPECT_EQ(record->gdb_BlackIsOne, 1);
    EXPECT_EQ(*payload(bitmap, 32), 0xF8);

    const Got runs = get(engine, GFI_GDT_RLE);
    EXPECT_EQ(runs.changed, 0U);
    EXPECT_EQ(runs.glyph->gdp_GlyphDesc->gd_Type, 4U);
    EXPECT_EQ(reinterpret_cast<const GFI_GlyphDescRLE*>(runs.glyph->gdp_GlyphDesc)->gdr_RleSize, 10);
    EXPECT_EQ(payload(runs, 30)[0], 0);
    EXPECT_EQ(payload(runs, 30)[1], 5);

    const Got edges = get(engine, GFI_GDT_FBE);
    EXPECT_EQ(edges.glyph->gdp_GlyphDesc->gd_Type, 0U);
    EXPECT_EQ(reinterpret_cast<const GFI_GlyphDescFBE*>(edges.glyph->gdp_GlyphDesc)->gdf_FbeSize, 30U);
    const uint8_t row[6] = {2, 0, 0, 0, 5, 0};
    EXPECT_EQ(std::memcmp(payload(edges, 32), row, 6), 0);

    // Back to an outline, the units of the string's start are in force again.
    const Got path = get(engine, GFI_GDT_PATH);
    EXPECT_EQ(path.changed, 1U);
    EXPECT_EQ(path.matrix.m[0], 10);
}

TEST(FontEngine, GivesTrueTypeDataOrAnotherForm)
{
    FontEngine engine;
    const auto plain = square();
    const auto instructed = square();
    instructed->true_type = {1, 2, 3};
    const GlyphRun run = run_of(instructed, plain);
    const TextShape shape(engine, run);
    start(engine, shape.get(), identity());
    next(engine);
    const Got got = get(engine, GFI_GDT_TRUETYPE);
    EXPECT_EQ(got.glyph->gdp_GlyphDesc->gd_Type, 3U);
    EXPECT_EQ(reinterpret_cast<const GFI_GlyphDescTrueType*>(got.glyph->gdp_GlyphDesc)->gdt_TrueTypeSize, 3);
    EXPECT_EQ(payload(got, 26)[2], 3);
    next(engine);
    EXPECT_EQ(get(engine, GFI_GDT_TRUETYPE).glyph->gdp_GlyphDesc->gd_Type, 2U);
    const GFI_FontEngineTable* table = engine.table();
    uint32_t returned = 9;
    Got fixed;
    EXPECT_EQ(table->GFI_GlyphGetFixedFormatFn(table->fe_Context, GFI_GDT_TRUETYPE, &returned, &fixed.changed,
                                               &fixed.matrix, &fixed.flags, &fixed.glyph),
              1U);
    EXPECT_EQ(returned, 0U);
    EXPECT_EQ(table->GFI_GlyphGetFixedFormatFn(table->fe_Context, GFI_GDT_PATH, &returned, &fixed.changed,
                                               &fixed.matrix, &fixed.flags, &fixed.glyph),
              1U);
    EXPECT_EQ(returned, 1U);
}

TEST(FontEngine, GivesStoredBitmapsInTheirOwnUnits)
{
    FontEngine engine;
    auto glyph = std::make_shared<Glyph>();
    glyph->bitmap_width = 8;
    glyph->bitmap_height = 2;
    glyph->bitmap = {0xAA, 0x55};
    glyph->bitmap_to_em = {{0.125, 0, 0, -0.25, 0.5, 0.75}};
    const GlyphRun run = run_of(glyph, glyph);
    const TextShape shape(engine, run);
    start(engine, shape.get(), scaling(1, -1));
    EXPECT_EQ(next(engine).box.gbf_MaxX, 1.5);
    const Got got = get(engine, GFI_GDT_PATH);
    EXPECT_EQ(got.glyph->gdp_GlyphDesc->gd_Type, 1U);
    EXPECT_EQ(got.changed, 1U);
    EXPECT_EQ(got.matrix.m[0], 1.25);
    EXPECT_EQ(got.matrix.m[3], 2.5);
    EXPECT_EQ(got.glyph->gdp_GlyphDesc->gd_Offset.gvf_X, 4);
    EXPECT_EQ(got.glyph->gdp_GlyphDesc->gd_Offset.gvf_Y, -3);
    EXPECT_EQ(payload(got, 32)[1], 0x55);
}

TEST(Raster, LeavesOutWhatIsTooLarge)
{
    EXPECT_EQ(rasterise(rectangle({0, 0, 3000, 1}), Winding::non_zero, 2000).width, 0U);
    EXPECT_EQ(rasterise(Path{}, Winding::non_zero, 2000).width, 0U);
}

TEST(Raster, KnowsBothWindingRules)
{
    Path path = rectangle({0, 0, 4, 4});
    path.append(rectangle({1, 1, 3, 3}));
    EXPECT_EQ(rasterise(path, Winding::non_zero, 100).rows, (std::vector<uint8_t>{0xF0, 0xF0, 0xF0, 0xF0}));
    EXPECT_EQ(rasterise(path, Winding::odd_even, 100).rows, (std::vector<uint8_t>{0xF0, 0x90, 0x90, 0xF0}));
}

TEST(Raster, CutsLongRuns)
{
    const Bitmap bitmap = rasterise(rectangle({0, 0, 300, 1}), Winding::non_zero, 2000);
    EXPECT_EQ(run_lengths(bitmap), (std::vector<uint8_t>{0, 255, 0, 45}));
    EXPECT_EQ(row_edges(bitmap), (std::vector<uint8_t>{2, 0, 0, 0, 44, 1}));
}

}  // namespace
