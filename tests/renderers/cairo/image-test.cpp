// Images: formats, callbacks, masks, tiles, kept images.

#include "tests/renderers/cairo/image-records.h"
#include "tests/renderers/cairo/page-fixture.h"

#include <array>
#include <cstring>

using namespace orvlog::records;

namespace
{

class ImageTest : public PageTest
{
protected:
    void draw(ImageSource& source)
    {
        paint_record(nullptr, source.record(), {});
    }
};

using Diary = std::vector<std::string>;

TEST_F(ImageTest, GrayPixelsLieInTheirOwnRectangle)
{
    ImageSource source(GCM_CSF_GRAY, 2, 2, {0, 51, 102, 204});
    draw(source.direct());
    EXPECT_EQ(at(12, 12), 0x000000U);
    EXPECT_EQ(at(27, 12), 0x333333U);
    EXPECT_EQ(at(12, 27), 0x666666U);
    EXPECT_EQ(at(27, 27), 0xCCCCCCU);
    EXPECT_EQ(at(9, 12), 0xFFFFFFU);
    EXPECT_EQ(at(30, 12), 0xFFFFFFU);
    EXPECT_TRUE(source.diary.empty());
}

TEST_F(ImageTest, CallbacksDeliverTheRows)
{
    ImageSource source(GCM_CSF_RGB, 2, 2, {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 0});
    source.bytes_a_read = 6;
    draw(source);
    EXPECT_EQ(at(12, 12), 0xFF0000U);
    EXPECT_EQ(at(27, 12), 0x00FF00U);
    EXPECT_EQ(at(12, 27), 0x0000FFU);
    EXPECT_EQ(at(27, 27), 0xFFFF00U);
    EXPECT_EQ(source.diary, (Diary{"prepare", "read 6", "read 6", "finish"}));
}

TEST_F(ImageTest, RowsMayComeInPieces)
{
    ImageSource source(GCM_CSF_GRAY, 2, 2, {0, 51, 102, 204});
    source.bytes_a_read = 1;
    draw(source);
    EXPECT_EQ(at(27, 12), 0x333333U);
    EXPECT_EQ(at(27, 27), 0xCCCCCCU);
}

TEST_F(ImageTest, RowStepOfADirectImage)
{
    ImageSource source(GCM_CSF_GRAY, 2, 2, {0, 51, 99, 99, 102, 204});
    source.direct().pointer.imp_RowStep = 4;
    draw(source);
    EXPECT_EQ(at(12, 27), 0x666666U);
    EXPECT_EQ(at(27, 27), 0xCCCCCCU);
}

TEST_F(ImageTest, UnitSquare)
{
    ImageSource source(GCM_CSF_GRAY, 2, 1, {0, 51});
    source.direct().flags(GOP_OP_FLAGS_TRANSFORM_FROM_UNIT_SQUARE);
    source.image.im_Transform = {{3, 0, 0, 1, 0, 0}};
    draw(source);
    EXPECT_EQ(at(2, 5), 0x000000U);
    EXPECT_EQ(at(27, 5), 0x333333U);
    EXPECT_EQ(at(27, 12), 0xFFFFFFU);
}

TEST_F(ImageTest, PaintsWithinTheShapeAndGoesOnBeyondItsEdge)
{
    ImageSource source(GCM_CSF_GRAY, 1, 1, {51});
    source.direct();
    paint_record(Shape::box(0, 0, 3, 1.5).record(), source.record(), {});
    EXPECT_EQ(at(2, 2), 0x333333U);
    EXPECT_EQ(at(29, 14), 0x333333U);
    EXPECT_EQ(at(15, 17), 0xFFFFFFU);
}

// Depths.

struct Depth
{
    uint16_t code;
    uint32_t more_flags;
    std::vector<uint8_t> bytes;  // a row of two samples: none and four fifths of the whole, or near
    uint32_t second;
};

class DepthTest : public ImageTest, public testing::WithParamInterface<Depth>
{
};

TEST_P(DepthTest, IsUnpacked)
{
    ImageSource source(GCM_CSF_GRAY, 2, 1, GetParam().bytes);
    draw(source.depth(GetParam().code).flags(GetParam().more_flags));
    EXPECT_EQ(at(12, 12), 0x000000U);
    EXPECT_EQ(at(27, 12), GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(
    Depths, DepthTest,
    testing::Values(Depth{GNC_BMP_DEPTH_1, 0, {0x40}, 0xFFFFFF}, Depth{GNC_BMP_DEPTH_2, 0, {0x20}, 0xAAAAAA},
                    Depth{GNC_BMP_DEPTH_4, 0, {0x0C}, 0xCCCCCC}, Depth{GNC_BMP_DEPTH_8, 0, {0x00, 0xCC}, 0xCCCCCC},
                    Depth{GNC_BMP_DEPTH_16, GOP_OP_FLAGS_ENDIAN_BIG, {0, 0, 0xCC, 0x33}, 0xCBCBCB},
                    Depth{GNC_BMP_DEPTH_16, GOP_OP_FLAGS_ENDIAN_LITTLE, {0, 0, 0x33, 0xCC}, 0xCBCBCB},
                    Depth{GNC_BMP_DEPTH_16, 0, {0, 0, 0x33, 0xCC}, 0xCBCBCB}));

TEST_F(ImageTest, FloatSamples)
{
    const std::array<float, 2> values{-3.0F, 0.8F};
    std::vector<uint8_t> bytes(8);
    std::memcpy(bytes.data(), values.data(), 8);
    ImageSource source(GCM_CSF_GRAY, 2, 1, bytes);
    draw(source.depth(GNC_BMP_DEPTH_32_FL));
    EXPECT_EQ(at(12, 12), 0x000000U);
    EXPECT_EQ(at(27, 12), 0xCCCCCCU);
}

// Rows of three 1-bit pixels fill whole bytes.
TEST_F(ImageTest, RowsStartOnWholeBytes)
{
    ImageSource source(GCM_CSF_GRAY, 3, 2, {0x40, 0xA0});
    draw(source.depth(GNC_BMP_DEPTH_1).place(0, 0, 1));
    EXPECT_EQ(at(2, 2), 0x000000U);
    EXPECT_EQ(at(15, 2), 0xFFFFFFU);
    EXPECT_EQ(at(15, 15), 0x000000U);
    EXPECT_EQ(at(27, 15), 0xFFFFFFU);
}

TEST_F(ImageTest, Cmyk)
{
    ImageSource source(GCM_CSF_CMYK, 2, 1, {0, 0, 0, 255, 255, 0, 0, 0});
    draw(source);
    EXPECT_EQ(at(12, 12), 0x231F20U);
    EXPECT_EQ(at(27, 12), 0x00ADEFU);
}

TEST_F(ImageTest, IndexedRgb)
{
    const std::vector<uint8_t> table{255, 0, 0, 0, 255, 0, 0, 0, 255, 51, 51, 51};
    ImageSource source(GCM_CSF_RGB, 4, 1, {0x1B});
    source.depth(GNC_BMP_DEPTH_2).flags(GOP_OP_FLAGS_IS_INDEXED_COLOR).place(0, 0, 1);
    source.image.im_IndexColorDepth = GNC_BMP_DEPTH_8;
    source.pointer.imp_IndexColorTable = table.data();
    draw(source);
    EXPECT_EQ(at(2, 2), 0xFF0000U);
    EXPECT_EQ(at(12, 2), 0x00FF00U);
    EXPECT_EQ(at(27, 2), 0x0000FFU);
    EXPECT_EQ(at(37, 2), 0x333333U);
}

TEST_F(ImageTest, IndexedWithAlphaInTheTable)
{
    const std::vector<uint8_t> table{0, 9, 255, 51};
    ImageSource source(GCM_CSF_GRAY, 2, 1, {0x40});
    source.depth(GNC_BMP_DEPTH_1).flags(GOP_OP_FLAGS_IS_INDEXED_COLOR | unsigned{GOP_OP_FLAGS_HAS_ALPHA});
    source.image.im_IndexColorDepth = GNC_BMP_DEPTH_8;
    source.pointer.imp_IndexColorTable = table.data();
    draw(source);
    EXPECT_EQ(at(12, 12), 0xFFFFFFU);
    EXPECT_EQ(at(27, 12), 0x333333U);
}

TEST_F(ImageTest, AlphaIsTheFirstChannel)
{
    ImageSource source(GCM_CSF_GRAY, 2, 1, {255, 0, 102, 0});
    draw(source.flags(GOP_OP_FLAGS_HAS_ALPHA));
    EXPECT_EQ(at(12, 12), 0x000000U);
    EXPECT_EQ(at(27, 12), 0x999999U);
}

TEST_F(ImageTest, PremultipliedColours)
{
    ImageSource source(GCM_CSF_RGB, 1, 1, {102, 102, 0, 51});
    draw(source.flags(GOP_OP_FLAGS_HAS_ALPHA | unsigned{GOP_OP_FLAGS_IS_PREMULTIPLIED}));
    EXPECT_EQ(at(15, 15), 0xFF99CCU);
}

TEST_F(ImageTest, ConstantAlphaCountsWithItsFlagOnly)
{
    ImageSource plain(GCM_CSF_GRAY, 1, 1, {0});
    plain.image.im_Alpha = 0.4F;
    draw(plain.place(0, 0, 1));
    ImageSource thin(GCM_CSF_GRAY, 1, 1, {0});
    thin.image.im_Alpha = 0.4F;
    draw(thin.place(2, 2, 1).flags(GOP_OP_FLAGS_HAS_CONSTANT_ALPHA));
    EXPECT_EQ(at(5, 5), 0x000000U);
    EXPECT_EQ(at(25, 25), 0x999999U);
}

TEST_F(ImageTest, PlanarRows)
{
    ImageSource source(GCM_CSF_RGB, 2, 1, {255, 0, 0, 102, 0, 51});
    source.image.im_ImageEncoding = GOP_ENCODING_PLANAR;
    draw(source);
    EXPECT_EQ(at(12, 12), 0xFF0000U);
    EXPECT_EQ(at(27, 12), 0x006633U);
}

TEST_F(ImageTest, EnlargedPixelsAreBlocksUnlessSmooth)
{
    ImageSource blocks(GCM_CSF_GRAY, 2, 1, {0, 255});
    draw(blocks.place(0, 0, 2));
    ImageSource smooth(GCM_CSF_GRAY, 2, 1, {0, 255});
    draw(smooth.place(0, 2, 2).flags(GOP_OP_FLAGS_SMOOTH));
    EXPECT_EQ(at(18, 5), 0x000000U);
    EXPECT_EQ(at(21, 5), 0xFFFFFFU);
    EXPECT_TRUE(near(20, 30, 0x808080, 16));
}

TEST_F(ImageTest, ReducedImagesAreAveraged)
{
    std::vector<uint8_t> bytes;
    for (int i = 0; i < 100 * 100; ++i)
        bytes.push_back((i + i / 100) % 2 == 0 ? 0 : 255);
    ImageSource source(GCM_CSF_GRAY, 100, 100, bytes);
    draw(source.place(0, 0, 0.01));
    EXPECT_TRUE(near(5, 5, 0x808080, 24));
}

// Masks.

class ImageMaskTest : public ImageTest
{
protected:
    void draw_masked(uint32_t mode, ImageSource& mask, GOP_OperandPointer* colour, const GSH_ShapePointer* shape)
    {
        const GOP_Operator op = operation(GOP_ROP_PORTER_DUFF, 3, mode);
        Extra extra;
        extra.op = &op;
        extra.operand2 = mask.record();
        paint_record(shape, colour, extra);
    }
};

TEST_F(ImageMaskTest, StencilPaintsWhereTheBitIsOne)
{
    ImageSource mask(GCM_CSF_GRAY, 2, 1, {0x40});
    const Operand red = Operand::rgb(1, 0, 0);
    draw_masked(GOP_MASK_IN, mask.depth(GNC_BMP_DEPTH_1), red.record(), nullptr);
    EXPECT_EQ(at(15, 15), 0xFFFFFFU);
    EXPECT_EQ(at(25, 15), 0xFF0000U);
    EXPECT_EQ(at(35, 15), 0xFFFFFFU);
}

TEST_F(ImageMaskTest, MaskOut)
{
    ImageSource mask(GCM_CSF_GRAY, 2, 1, {0x40});
    const Operand red = Operand::rgb(1, 0, 0);
    draw_masked(GOP_MASK_OUT, mask.depth(GNC_BMP_DEPTH_1), red.record(), nullptr);
    EXPECT_EQ(at(15, 15), 0xFF0000U);
    EXPECT_EQ(at(25, 15), 0xFFFFFFU);
    EXPECT_EQ(at(35, 15), 0xFF0000U);
}

TEST_F(ImageMaskTest, SoftMaskOfAnotherSize)
{
    ImageSource mask(GCM_CSF_GRAY, 2, 1, {102, 204});
    ImageSource picture(GCM_CSF_GRAY, 1, 1, {0});
    draw_masked(GOP_MASK_IN, mask.place(1, 1, 1), picture.place(1, 1, 2).record(), nullptr);
    EXPECT_EQ(at(12, 15), 0x999999U);
    EXPECT_EQ(at(27, 15), 0x333333U);
    EXPECT_EQ(at(15, 25), 0xFFFFFFU);
}

TEST_F(ImageMaskTest, MaskWithAShape)
{
    ImageSource mask(GCM_CSF_GRAY, 1, 1, {102});
    const Operand black = Operand::gray(0);
    draw_masked(GOP_MASK_IN, mask.place(0, 0, 2), black.record(), Shape::box(1, 1, 3, 3).record());
    EXPECT_EQ(at(15, 15), 0x999999U);
    EXPECT_EQ(at(25, 15), 0xFFFFFFU);
    EXPECT_EQ(at(5, 5), 0xFFFFFFU);
}

TEST_F(ImageMaskTest, SoftMaskOfAGroup)
{
    ImageSource mask(GCM_CSF_GRAY, 2, 1, {102, 204});
    const GOP_Operator op = operation(GOP_ROP_PORTER_DUFF, 3, GOP_MASK_IN);
    GroupExtra extra;
    extra.op = &op;
    extra.operand2 = mask.place(0, 0, 2).record();
    start_group(extra);
    paint(Shape::box(0, 0, 4, 1), Operand::gray(0));
    finish_group();
    EXPECT_EQ(at(5, 5), 0x999999U);
    EXPECT_EQ(at(35, 5), 0x333333U);
    EXPECT_EQ(at(5, 15), 0xFFFFFFU);
}

// Tiles.

TEST_F(ImageTest, TilesRepeatAtTheirSize)
{
    ImageSource source(GCM_CSF_GRAY, 2, 1, {0, 255});
    draw(source.place(0, 0, 0.5).tile(0, 0, false, false));
    EXPECT_EQ(at(2, 2), 0x000000U);
    EXPECT_EQ(at(7, 2), 0xFFFFFFU);
    EXPECT_EQ(at(12, 2), 0x000000U);
    EXPECT_EQ(at(32, 37), 0x000000U);
}

TEST_F(ImageTest, TilesWithGaps)
{
    ImageSource source(GCM_CSF_GRAY, 1, 1, {0});
    draw(source.place(0, 0, 1).tile(2, 4, false, false));
    EXPECT_EQ(at(5, 5), 0x000000U);
    EXPECT_EQ(at(15, 5), 0xFFFFFFU);
    EXPECT_EQ(at(25, 5), 0x000000U);
    EXPECT_EQ(at(5, 25), 0xFFFFFFU);
    EXPECT_DOUBLE_EQ(ink(), 200.0);
}

TEST_F(ImageTest, TilesMirrored)
{
    ImageSource source(GCM_CSF_GRAY, 2, 2, {0, 255, 255, 255});
    draw(source.place(0, 0, 1).tile(2, 2, true, true));
    EXPECT_EQ(at(5, 5), 0x000000U);
    EXPECT_EQ(at(25, 5), 0xFFFFFFU);
    EXPECT_EQ(at(35, 5), 0x000000U);
    EXPECT_EQ(at(5, 35), 0x000000U);
    EXPECT_EQ(at(35, 35), 0x000000U);
    EXPECT_DOUBLE_EQ(ink(), 400.0);
}

TEST_F(ImageTest, TilesWithoutParametersRepeatAtTheirSize)
{
    ImageSource source(GCM_CSF_GRAY, 2, 1, {0, 255});
    source.place(0, 0, 1).tile(9, 9, true, true).pointer.imp_TilingParameters = nullptr;
    draw(source);
    EXPECT_EQ(at(25, 35), 0x000000U);
    EXPECT_EQ(at(35, 35), 0xFFFFFFU);
}

// Callbacks that misbehave.

TEST_F(ImageTest, PrepareMayExchangeTheRecord)
{
    ImageSource other(GCM_CSF_GRAY, 1, 1, {51});
    ImageSource source(GCM_CSF_RGB, 2, 2, {});
    source.exchanged_for = &other;
    draw(source);
    EXPECT_EQ(at(15, 15), 0x333333U);
    EXPECT_EQ(source.diary, (Diary{"prepare"}));
    EXPECT_EQ(other.diary, (Diary{"read 1", "finish"}));
}

TEST_F(ImageTest, FailedPrepareLeavesTheImageOut)
{
    ImageSource source(GCM_CSF_GRAY, 1, 1, {0});
    source.fail_prepare = true;
    draw(source);
    EXPECT_DOUBLE_EQ(ink(), 0.0);
    EXPECT_EQ(source.diary, (Diary{"prepare"}));
    EXPECT_EQ(said_, (Diary{"cairo renderer: images that cannot be prepared are left out"}));
}

TEST_F(ImageTest, FailedReadKeepsTheRowsThatCame)
{
    ImageSource source(GCM_CSF_GRAY, 1, 2, {0, 0});
    source.bytes_a_read = 1;
    source.fail_read = 2;
    draw(source);
    EXPECT_EQ(at(15, 12), 0x000000U);
    EXPECT_EQ(at(15, 27), 0xFFFFFFU);
    EXPECT_EQ(source.diary, (Diary{"prepare", "read 1", "read failed", "finish"}));
    EXPECT_EQ(said_, (Diary{"cairo renderer: images that end early are painted as far as they came"}));
}

TEST_F(ImageTest, EndOfTheImageBeforeItsLastRow)
{
    ImageSource source(GCM_CSF_GRAY, 1, 3, {0});
    draw(source);
    EXPECT_EQ(source.diary, (Diary{"prepare", "read 1", "read 0", "finish"}));
    EXPECT_EQ(at(15, 12), 0x000000U);
    EXPECT_EQ(at(15, 27), 0xFFFFFFU);
}

TEST_F(ImageTest, ClaimsBeyondTheBufferEndTheImage)
{
    for (const int32_t lie : {1 << 30, -5})
    {
        ImageSource source(GCM_CSF_GRAY, 2, 2, {0, 0, 0, 0});
        source.lie = lie;
        draw(source);
        EXPECT_EQ(source.diary.size(), 3U);
    }
    EXPECT_DOUBLE_EQ(ink(), 0.0);
}

TEST_F(ImageTest, RecordsWithoutSenseAreLeftOut)
{
    ImageSource empty(GCM_CSF_GRAY, 0, 5, {0});
    draw(empty);
    ImageSource huge(GCM_CSF_CMYK, 0xFFFFFFFF, 0xFFFFFFFF, {0});
    draw(huge.direct());
    ImageSource deep(GCM_CSF_GRAY, 1, 1, {0});
    draw(deep.depth(77));
    ImageSource indexed(GCM_CSF_GRAY, 1, 1, {0});
    draw(indexed.flags(GOP_OP_FLAGS_IS_INDEXED_COLOR));
    ImageSource null(GCM_CSF_GRAY, 1, 1, {0});
    null.pointer.imp_Image = nullptr;
    draw(null);
    EXPECT_DOUBLE_EQ(ink(), 0.0);
    EXPECT_EQ(said_, (Diary{"cairo renderer: images of unknown form are left out"}));
}

TEST_F(ImageTest, CompressedAndDatalessImagesAreSaid)
{
    ImageSource packed(GCM_CSF_GRAY, 1, 1, {0});
    packed.image.im_ImageEncoding = 2;
    draw(packed);
    ImageSource mute(GCM_CSF_GRAY, 1, 1, {0});
    mute.pointer.imp_ImagePrepareFn = nullptr;
    mute.pointer.imp_ImageReadFn = nullptr;
    mute.pointer.imp_ImageFinishFn = nullptr;
    draw(mute);
    EXPECT_DOUBLE_EQ(ink(), 0.0);
    EXPECT_EQ(packed.diary, (Diary{"prepare", "finish"}));
    EXPECT_EQ(lost_, (Diary{"cairo renderer: compressed images are left out"}));
    EXPECT_EQ(said_, (Diary{"cairo renderer: images without data are left out"}));
}

TEST_F(ImageTest, LongRowsAreReadRowByRow)
{
    const std::vector<uint8_t> bytes(70000 * 2, 51);
    ImageSource source(GCM_CSF_GRAY, 70000, 2, bytes);
    draw(source.place(0, 0, 1.0 / 20000));
    EXPECT_EQ(source.diary, (Diary{"prepare", "read 70000", "read 70000", "finish"}));
}

// Kept images.

class KeptImageTest : public ImageTest
{
protected:
    KeptImageTest()
    {
        options_.keep_images = true;
    }
};

TEST_F(KeptImageTest, IsPulledWhenTheDrawingEnds)
{
    ImageSource source(GCM_CSF_GRAY, 1, 1, {51});
    source.flags(GOP_OP_FLAGS_ASYNCH_ACCESS);
    draw(source);
    paint(Shape::box(1, 1, 1.5, 2), Operand::rgb(1, 0, 0));
    EXPECT_EQ(source.diary, (Diary{"keep"}));
    finish();
    EXPECT_EQ(source.diary, (Diary{"keep", "prepare", "read 1", "finish", "release"}));
    // What was painted later still lies above.
    EXPECT_EQ(at(12, 15), 0xFF0000U);
    EXPECT_EQ(at(17, 15), 0x333333U);
}

TEST_F(KeptImageTest, ImagesThatCannotBeKeptArePulledAtOnce)
{
    ImageSource plain(GCM_CSF_GRAY, 1, 1, {51});
    draw(plain);
    ImageSource unwilling(GCM_CSF_GRAY, 1, 1, {51});
    unwilling.flags(GOP_OP_FLAGS_ASYNCH_ACCESS).refuse_keep = true;
    draw(unwilling);
    ImageSource without(GCM_CSF_GRAY, 1, 1, {51});
    without.flags(GOP_OP_FLAGS_ASYNCH_ACCESS).pointer.imp_ImageReleaseFn = nullptr;
    draw(without);
    EXPECT_EQ(plain.diary, (Diary{"prepare", "read 1", "finish"}));
    EXPECT_EQ(unwilling.diary, (Diary{"keep", "prepare", "read 1", "finish"}));
    EXPECT_EQ(without.diary, (Diary{"prepare", "read 1", "finish"}));
    finish();
}

TEST_F(KeptImageTest, DiscardedDrawingGivesItBackUnpulled)
{
    ImageSource source(GCM_CSF_GRAY, 1, 1, {51});
    source.flags(GOP_OP_FLAGS_ASYNCH_ACCESS);
    draw(source);
    ORV_DrawingInterface& table = page();
    EXPECT_EQ(table.drawing_discard.fn(&table), 1U);
    EXPECT_EQ(source.diary, (Diary{"keep", "release"}));
    EXPECT_EQ(renderer().pages_finished(), 0U);
}

TEST_F(KeptImageTest, GroupsMasksAndResourcesKeepToo)
{
    ImageSource mask(GCM_CSF_GRAY, 1, 1, {102});
    mask.flags(GOP_OP_FLAGS_ASYNCH_ACCESS).place(0, 0, 4);
    ImageSource inside(GCM_CSF_GRAY, 1, 1, {0});
    inside.flags(GOP_OP_FLAGS_ASYNCH_ACCESS);
    ORV_ResourceProperties properties{};
    properties.rp_Enclosing_box = {1, 1, -1, -1};
    const uint32_t id = start_resource(properties);
    draw(inside);
    EXPECT_EQ(inside.diary, (Diary{"keep"}));
    end_resource();
    EXPECT_EQ(inside.diary.back(), "release");
    const GOP_Operator op = operation(GOP_ROP_PORTER_DUFF, 3, GOP_MASK_IN);
    GroupExtra extra;
    extra.op = &op;
    extra.operand2 = mask.record();
    start_group(extra);
    EXPECT_EQ(paint_resource(id, {}), 1U);
    finish_group();
    EXPECT_EQ(mask.diary, (Diary{"keep"}));
    EXPECT_EQ(at(15, 15), 0x999999U);
    EXPECT_EQ(at(5, 5), 0xFFFFFFU);
}

TEST_F(KeptImageTest, SamePixelsAsWithoutKeeping)
{
    const auto draw_all = [](orvlog::cairo_renderer::Options options)
    {
        orvlog::cairo_renderer::PageCollector collector;
        options.page_sink = collector.sink();
        orvlog::cairo_renderer::Renderer renderer(options);
        const ORV_Interface* table = renderer.interface();
        void* document = nullptr;
        table->document_start.fn(nullptr, table, &document, 1, nullptr, nullptr);
        ORV_FaceProperties face{};
        face.fp_FaceInchToPixels = {{10, 0, 0, 10, 0, 0}};
        face.fp_WidthInPixels = 40;
        face.fp_HeightInPixels = 40;
        ORV_DrawingInterface page{};
        table->face_start.fn(nullptr, table, document, &page, nullptr, 1, &face, nullptr, 0, 0);
        ImageSource source(GCM_CSF_GRAY, 2, 2, {0, 51, 102, 204});
        source.flags(GOP_OP_FLAGS_ASYNCH_ACCESS);
        const Operand red = Operand::rgba(1, 0, 0, 0.5F);
        const GSH_ShapeList* no_clip = nullptr;
        page.object_paint.fn(&page, 8, 0, nullptr, nullptr, 0, no_clip, source.record(), nullptr, nullptr);
        page.object_paint.fn(&page, 4, 0, nullptr, Shape::box(1.2, 1.3, 3.3, 3.4).record(), 0, no_clip, red.record(),
                             nullptr, nullptr);
        page.drawing_finish.fn(&page);
        table->document_finish.fn(table, document);
        return collector.pages().at(0);
    };
    orvlog::cairo_renderer::Options keeping;
    keeping.keep_images = true;
    EXPECT_EQ(draw_all({}), draw_all(keeping));
}

}  // namespace
