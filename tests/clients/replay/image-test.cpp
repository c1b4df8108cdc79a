// Images that a client's callbacks delivered come back from the log, bit for bit: from a log of base mode, in which
// the logger pulled them, and from a transparent one after a renderer did.

#include "clients/pdf/null-renderer.h"
#include "clients/pdf/poppler/pdf-document.h"
#include "clients/replay/replay-image.h"
#include "clients/stream/file-stream.h"
#include "clients/stream/malloc-allocator.h"
#include "clients/stream/random-identity.h"
#include "orvlog/interface/orvlog-session-options.h"
#include "reader/tree/values.h"
#include "tests/clients/replay/documents.h"
#include "tests/clients/replay/jobs.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace
{

using namespace orvlog;
using namespace orvlog::test;
using Bytes = std::vector<uint8_t>;

// A renderer that draws nothing and pulls the images of each paint and group, row by row or in large pieces.
class ImagePuller
{
public:
    explicit ImagePuller(size_t piece) : table_(*orvlog::pdf_client::null_renderer())
    {
        pulled.clear();
        piece_size = piece;
        table_.face_start.fn = start_face;
        table_.resource_start.fn = start_resource;
    }

    const ORV_Interface* table() const
    {
        return &table_;
    }

    static inline std::vector<Bytes> pulled;

private:
    static void pull(const GOP_OperandPointer* operand)
    {
        if (operand == nullptr || operand->op_Operand == nullptr || operand->op_Operand->go_OpType < GOP_OPERAND_IMAGE)
            return;
        auto* image = const_cast<GOP_OperandImagePointer*>(reinterpret_cast<const GOP_OperandImagePointer*>(operand));
        if (image->imp_DirectImage != nullptr ||
            image->imp_ImagePrepareFn(&image, GCM_OBJ_IMAGE, 0, 0, 0, 0, 0, 0, 0, image->imp_Image->im_Operand.go_Count,
                                      0) == 0)
            return;
        Bytes all;
        Bytes piece(piece_size);
        for (int32_t count = 1; count > 0;)
        {
            image->imp_ImageReadFn(image, image->imp_Context, 0, piece.data(), static_cast<uint32_t>(piece.size()), 0,
                                   &count, nullptr, 0, 0, nullptr);
            all.insert(all.end(), piece.begin(), piece.begin() + count);
        }
        image->imp_ImageFinishFn(image, image->imp_Context);
        pulled.push_back(std::move(all));
    }

    static uint32_t paint(const ORV_DrawingInterface*, uint8_t, uint32_t, const GOP_Operator*, const GSH_ShapePointer*,
                          uint32_t, const GSH_ShapeList*, GOP_OperandPointer* one, GOP_OperandPointer* two,
                          GOP_OperandPointer* three)
    {
        for (const GOP_OperandPointer* operand : {one, two, three})
            pull(operand);
        return 1;
    }

    static uint32_t start_face(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing,
                               const GFI_FontEngineTable* engine, uint32_t number, const ORV_FaceProperties* face,
                               void* ticket, uint32_t orientation, uint32_t placement)
    {
        const uint32_t result = orvlog::pdf_client::null_renderer()->face_start.fn(
            err, table, document, drawing, engine, number, face, ticket, orientation, placement);
        drawing->object_paint.fn = paint;
        return result;
    }

    static uint32_t start_resource(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing,
                                   const ORV_DrawingInterface* parent, const GFI_FontEngineTable* engine,
                                   const ORV_ResourceProperties* properties, void* ticket, uint32_t* id)
    {
        const uint32_t result = orvlog::pdf_client::null_renderer()->resource_start.fn(
            err, table, document, drawing, parent, engine, properties, ticket, id);
        drawing->object_paint.fn = paint;
        return result;
    }

    static inline size_t piece_size = 0;
    ORV_Interface table_;
};

// Draws the first pages of a document into a log.
void record(const std::string& document, const std::string& log, const ORV_Interface* renderer, bool base)
{
    std::string error;
    const auto quiet = [](const std::string&) {};
    const auto pages = orvlog::pdf_client::PdfDocument::open(document, quiet, error);
    ASSERT_NE(pages, nullptr) << error;
    const auto stream = orvlog::client_stream::FileStream::open(log, "w+b");
    orvlog::client_stream::MallocAllocator memory;
    const orvlog::client_stream::RandomIdentity identity;
    ORV_Interface table{};
    ORVLOG_SessionOptions options{};
    options.interface_out = &table;
    options.interface_in = renderer;
    options.allocator = memory.allocator();
    options.identity = const_cast<orvlog::client_stream::RandomIdentity&>(identity).source();
    options.log_stream = stream->stream();
    options.mode = base ? ORVLOG_MODE_BASE : ORVLOG_MODE_TRANSPARENT;
    ASSERT_EQ(orvlog_create_session_with(&options), 1U);
    {
        orvlog::pdf_client::Painter painter(&table, quiet);
        ASSERT_TRUE(painter.begin_document(1));
        for (int page = 1; page <= std::min(pages->page_count(), 3); ++page)
        {
            const orvlog::pdf_client::PageSize size = pages->page_size(page);
            orvlog::pdf_client::PageGeometry geometry;
            geometry.pixels_per_inch = 72;
            geometry.inches_wide = size.width / 72;
            geometry.inches_high = size.height / 72;
            geometry.width = static_cast<uint32_t>(size.width);
            geometry.height = static_cast<uint32_t>(size.height);
            ASSERT_TRUE(painter.begin_page(geometry));
            pages->paint_page(page, painter, [] { return false; });
            painter.end_page();
        }
        painter.end_document();
    }
    EXPECT_EQ(ORVLOG_DLL_shutdown(table.document_start.context), 1U);
}

// The images of a log by the order in which their operands stand: the bytes of the first pass that has any.
class LoggedImages
{
public:
    explicit LoggedImages(const std::string& log) : records_(arena_)
    {
        std::ifstream file(log, std::ios::binary);
        reader::ElementReader elements(file);
        elements.on_damage = [](const reader::Damage& damage) { ADD_FAILURE() << damage.text; };
        records_.on_image = [this](GOP_OperandImagePointer* image, const reader::Element& element)
        {
            if (!collecting_)
                by_id_[reader::read_uint(element, "Id")] =
                    images_.emplace_back(std::make_unique<replay::ReplayImage>(image, element)).get();
        };
        while (const reader::Element* call = elements.next())
            collect(*call);
    }

    // Images without bytes were not pulled.
    std::vector<Bytes> pixels() const
    {
        std::vector<Bytes> all;
        for (const auto& image : images_)
            if (image->record().imp_DirectImage == nullptr && !image->passes().empty())
                all.push_back(image->pixels());
        return all;
    }

private:
    void collect(const reader::Element& element)
    {
        for (const reader::Element& child : reader::Children(element))
            if (child.name == "GOP_OperandImagePointer" && !reader::to_bool(child.value("imp_DirectImage")))
                records_.image(&child);
            else if (child.name.starts_with("GOP_Image") && child.name.ends_with("Fn"))
                add(child);
            else
                collect(child);
    }

    void add(const reader::Element& callback)
    {
        const auto known = by_id_.find(reader::read_uint(callback, "Id"));
        ASSERT_NE(known, by_id_.end());
        replay::ReplayImage* image = known->second;
        collecting_ = true;
        image->add(
            callback, [](std::string_view, uint64_t, uint64_t) { return Bytes(); }, records_);
        collecting_ = false;
        const reader::Element* left = callback.child("GOP_OperandImagePointer");
        if (left != nullptr)
            by_id_[reader::read_uint(*left, "Id")] = image;
    }

    reader::Arena arena_;
    reader::RecordReader records_;
    std::vector<std::unique_ptr<replay::ReplayImage>> images_;
    std::map<uint32_t, replay::ReplayImage*> by_id_;
    bool collecting_ = false;
};

class ImagesOf : public testing::TestWithParam<const char*>
{
};

TEST_P(ImagesOf, ComeBackBitForBit)
{
    const std::string name = GetParam();
    const ScratchFolder scratch;
    const std::string document = name == "sample" ? sample() : scratch.write("made.pdf", made_document(name));
    const std::string log = scratch.path("log.xml");
    for (const bool base : {false, true})
    {
        const ImagePuller puller(1 << 20);
        record(document, log, puller.table(), base);
        EXPECT_FALSE(ImagePuller::pulled.empty());
        EXPECT_EQ(LoggedImages(log).pixels(), ImagePuller::pulled) << (base ? "base" : "transparent");
    }
    record(document, log, nullptr, true);
    EXPECT_EQ(LoggedImages(log).pixels(), ImagePuller::pulled) << "base without a renderer";
}

INSTANTIATE_TEST_SUITE_P(Documents, ImagesOf, testing::Values("sample", "cmyk-image"));

// Of an image whose rows lie further apart than they are long, a log has as many bytes as its rows are long.
TEST(ReplayedImage, HasRoomForRowsThatLieFarApart)
{
    GOP_OperandImage image{};
    image.im_Operand.go_ColorSpaceFamily = GCM_CSF_RGB;
    image.im_Operand.go_Count = GNC_BMP_DEPTH_8;
    image.im_ImageWidthPixels = 2;
    image.im_ImageHeightPixels = 3;
    GOP_OperandImagePointer record{};
    record.imp_Image = &image;
    record.imp_RowStep = 1000;
    const reader::Element element;
    replay::ReplayImage replayed(&record, element);
    EXPECT_TRUE(replayed.set_direct(std::vector<uint8_t>(18, 7)));
    ASSERT_NE(record.imp_DirectImage, nullptr);
    for (size_t i = 0; i < 2006; ++i)
        ASSERT_EQ(record.imp_DirectImage[i], i < 18 ? 7 : 0) << i;
}

// A renderer may take four channels where the log tells of a color space that it doesn't know.
TEST(ReplayedImage, HasRoomForEachChannelOfAFamilyThatIsntKnown)
{
    GOP_OperandImage image{};
    image.im_Operand.go_ColorSpaceFamily = 77;
    image.im_Operand.go_Count = GNC_BMP_DEPTH_8;
    image.im_ImageWidthPixels = 10;
    image.im_ImageHeightPixels = 10;
    GOP_OperandImagePointer record{};
    record.imp_Image = &image;
    const reader::Element element;
    replay::ReplayImage replayed(&record, element);
    replayed.set_direct({1});
    ASSERT_NE(record.imp_DirectImage, nullptr);
    for (size_t i = 0; i < 400; ++i)
        ASSERT_EQ(record.imp_DirectImage[i], i == 0 ? 1 : 0) << i;
}

}  // namespace
