// Images of kept calls, for which there is little memory: the same pixels from the temporary file.

#include "renderers/cairo/image-store.h"
#include "tests/renderers/cairo/image-records.h"
#include "tests/renderers/cairo/page-fixture.h"

#include <csignal>
#include <cstring>
#include <initializer_list>
#include <optional>

#include <sys/resource.h>

using namespace orvlog::records;

namespace
{

using orvlog::cairo_renderer::Image;
using orvlog::cairo_renderer::ImageStore;

Image image_of(int width, int height, uint8_t fill)
{
    Image image;
    image.surface = orvlog::cairo_renderer::own_surface(cairo_image_surface_create(CAIRO_FORMAT_A8, width, height));
    cairo_surface_flush(image.surface.get());
    const int stride = cairo_image_surface_get_stride(image.surface.get());
    std::memset(cairo_image_surface_get_data(image.surface.get()), fill, static_cast<size_t>(stride * height));
    cairo_surface_mark_dirty(image.surface.get());
    return image;
}

// The first byte of the pixels, if there are any.
std::optional<uint8_t> first_of(const Image& image)
{
    const orvlog::cairo_renderer::SurfacePtr pixels = pixels_of(image);
    if (pixels == nullptr)
        return std::nullopt;
    return *cairo_image_surface_get_data(pixels.get());
}

class ImageStoreTest : public testing::Test
{
protected:
    std::vector<std::string> said;
    orvlog::cairo_renderer::Complaints complaints{[this](const std::string& line) { said.push_back(line); }};
};

TEST_F(ImageStoreTest, KeepsInMemoryWhatHasRoom)
{
    ImageStore store(2000, complaints);
    Image one = image_of(40, 40, 1);
    store.put_away(one);
    EXPECT_NE(one.surface, nullptr);
    Image other = image_of(40, 40, 2);
    store.put_away(other);
    EXPECT_EQ(other.surface, nullptr);
    EXPECT_EQ(first_of(one), 1);
    EXPECT_EQ(first_of(other), 2);
    // The room of the first is free again.
    one = Image();
    Image third = image_of(40, 40, 3);
    store.put_away(third);
    EXPECT_NE(third.surface, nullptr);
    EXPECT_TRUE(said.empty());
}

TEST_F(ImageStoreTest, UsesPlacesAgain)
{
    ImageStore store(0, complaints);
    std::vector<Image> images;
    for (int round = 0; round < 50; ++round)
    {
        for (uint8_t i = 0; i < 8; ++i)
        {
            images.push_back(image_of(64, 8 + i * 5 + round % 3, static_cast<uint8_t>(round + i)));
            store.put_away(images.back());
        }
        for (uint8_t i = 0; i < 8; ++i)
            ASSERT_EQ(first_of(images[i]), static_cast<uint8_t>(round + i)) << round;
        images.erase(images.begin() + round % 8);
        images.clear();
    }
    EXPECT_FALSE(store.has_lost());
}

// Some are given back while others wait.
TEST_F(ImageStoreTest, LeavesOthersAlone)
{
    ImageStore store(0, complaints);
    std::vector<Image> images;
    for (uint8_t i = 0; i < 12; ++i)
    {
        images.push_back(image_of(64, 10 + i, i));
        store.put_away(images.back());
    }
    for (const size_t gone : {3U, 5U, 4U, 0U, 11U, 10U})
        images[gone] = Image();
    for (uint8_t i = 0; i < 6; ++i)
    {
        images.push_back(image_of(64, 5 + 7 * i, static_cast<uint8_t>(100 + i)));
        store.put_away(images.back());
    }
    for (const uint8_t i : std::initializer_list<uint8_t>{1, 2, 6, 7, 8, 9})
        EXPECT_EQ(first_of(images[i]), i);
    for (uint8_t i = 0; i < 6; ++i)
        EXPECT_EQ(first_of(images[12U + i]), static_cast<uint8_t>(100 + i));
}

// Files may have so many bytes only while it lives.
class ShortFiles
{
public:
    explicit ShortFiles(rlim_t bytes) : ignored_(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ShortFiles(const ShortFiles&) = delete;
    ShortFiles& operator=(const ShortFiles&) = delete;
    ~ShortFiles()
    {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, ignored_);
    }

private:
    void (*ignored_)(int);
    rlimit before_{};
};

TEST_F(ImageStoreTest, SaysWhatItLoses)
{
    const ShortFiles limit(5000);
    ImageStore store(0, complaints);
    Image one = image_of(64, 64, 1);
    Image lost = image_of(64, 64, 2);
    store.put_away(one);
    EXPECT_FALSE(store.has_lost());
    store.put_away(lost);
    EXPECT_TRUE(store.has_lost());
    EXPECT_EQ(first_of(one), 1);
    EXPECT_EQ(first_of(lost), std::nullopt);
    EXPECT_EQ(said, std::vector<std::string>{"cairo renderer: images for which neither memory nor the temporary folder "
                                             "has room are left out"});
}

// Pages with images, tiles and masks, in a group and alone.
class StoredImagesTest : public PageTest
{
protected:
    class Drawing : public PageTest
    {
    public:
        orvlog::cairo_renderer::PagePixels draw(uint64_t pixels_at_once, uint64_t image_bytes, bool keep)
        {
            options_.pixels_at_once = pixels_at_once;
            options_.kept_image_bytes = image_bytes;
            options_.keep_images = keep;
            ImageSource colours(GCM_CSF_RGB, 2, 2, {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 0});
            ImageSource tiles(GCM_CSF_RGB, 1, 2, {9, 200, 30, 90, 20, 150});
            ImageSource mask(GCM_CSF_GRAY, 2, 3, {255, 40, 90, 200, 0, 255});
            const GOP_Operator op = operation(GOP_ROP_PORTER_DUFF, 3, GOP_MASK_IN);
            Extra extra;
            extra.op = &op;
            extra.operand2 = mask.place(0.2, 0.3, 1.4).flags(GOP_OP_FLAGS_ASYNCH_ACCESS).record();
            paint_record(nullptr, colours.place(0.5, 0.4, 1.1).flags(GOP_OP_FLAGS_ASYNCH_ACCESS).record(), {});
            paint_record(Shape::box(2, 2, 4, 4).record(), tiles.place(0, 0, 0.3).tile(2, 3, true, false).record(), {});
            GroupExtra group;
            group.op = &op;
            group.operand2 = mask.record();
            start_group(group);
            paint(Shape::box(0, 0, 3, 4), Operand::rgb(0, 0.5F, 1), extra);
            finish_group();
            finish();
            EXPECT_TRUE(said_.empty());
            EXPECT_TRUE(renderer().all_pages_written());
            return pages().at(0);
        }

    private:
        void TestBody() override {}
    };
};

TEST_F(StoredImagesTest, LookTheSameFromTheFile)
{
    const orvlog::cairo_renderer::PagePixels whole = Drawing().draw(1600, 1 << 20, false);
    EXPECT_NE(whole.pixels.at(10 * 40 + 10), 0xFFFFFFU);
    EXPECT_TRUE(Drawing().draw(1600, 0, true) == whole);
    const orvlog::cairo_renderer::PagePixels banded = Drawing().draw(280, 1 << 20, false);
    // Cairo rounds where an image lies anew for each surface.
    EXPECT_LE(orvlog::cairo_renderer::compare_pixels(banded, whole).largest, 2U);
    EXPECT_TRUE(Drawing().draw(280, 0, false) == banded);
    EXPECT_TRUE(Drawing().draw(280, 20, false) == banded);
    EXPECT_TRUE(Drawing().draw(280, 0, true) == banded);
}

TEST_F(StoredImagesTest, PageThatLacksOneHasFailed)
{
    const ShortFiles limit(10);
    options_.pixels_at_once = 280;
    options_.kept_image_bytes = 0;
    ImageSource colours(GCM_CSF_RGB, 2, 2, {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 0});
    paint_record(nullptr, colours.record(), {});
    ORV_DrawingInterface& table = page();
    EXPECT_EQ(table.drawing_finish.fn(&table), 0U);
    EXPECT_FALSE(renderer().all_pages_written());
    EXPECT_EQ(lost_.size(), 1U);
}

}  // namespace
