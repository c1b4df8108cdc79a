// Jobs of a few calls in which the log alone doesn't say outright who called what, replayed as they were.

#include "orvlog/interface/orvlog-session-options.h"
#include "tests/clients/replay/played-again.h"
#include "tests/support/fake-identity.h"
#include "tests/support/fake-image.h"
#include "tests/support/fake-renderer.h"
#include "tests/support/memory-stream.h"
#include "tests/support/scripted-font-engine.h"
#include "tests/support/temp-folder.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace
{

namespace fs = std::filesystem;
using namespace orvlog::test;

class AsLoggedCase : public testing::Test
{
protected:
    AsLoggedCase()
    {
        fs::create_directories("job");
        fs::create_directories("again");
        fs::current_path("job");
        op.op_MaskMode = GOP_MASK_IN;
        renderer.on_draw([this](const char*) { std::exchange(in_renderer, [] {})(); });
    }

    void open(bool via_temporary_log = false, bool side_files = false)
    {
        with_files = side_files;
        ORVLOG_SessionOptions options{};
        options.interface_out = &orv;
        options.interface_in = renderer.get();
        options.allocator = allocator.get();
        options.identity = identity.get();
        options.log_stream = stream.get();
        options.file_prefix = side_files ? "side" : nullptr;
        options.via_temporary_log = via_temporary_log ? 1 : 0;
        ASSERT_EQ(orvlog_create_session_with(&options), 1U);
        orv.document_start.fn(nullptr, &orv, &document, 7, nullptr, nullptr);
    }

    // A page.
    void start(ORV_DrawingInterface* drawing)
    {
        const ORV_FaceProperties properties{};
        orv.face_start.fn(nullptr, &orv, document, drawing, nullptr, 1, &properties, nullptr, 0, 0);
    }
    void start_memory_context(ORV_DrawingInterface* drawing, const GFI_FontEngineTable* engine)
    {
        orv.memory_context_start.fn(nullptr, &orv, document, drawing, 0, 0, 0, 0, 0, engine, nullptr, 0, 0, 0, 0, 0, 0);
    }
    uint32_t start_resource(ORV_DrawingInterface* drawing)
    {
        uint32_t id = 0;
        orv.resource_start.fn(nullptr, &orv, document, drawing, nullptr, nullptr, nullptr, nullptr, &id);
        return id;
    }
    // Each call with what the renderer does in it.
    static void finish(ORV_DrawingInterface* drawing)
    {
        drawing->drawing_finish.fn(drawing);
    }
    void paint(
        ORV_DrawingInterface* drawing, FakeImage* image, std::function<void()> renderer_does = [] {})
    {
        in_renderer = std::move(renderer_does);
        drawing->object_paint.fn(drawing, 1, 0, &op, nullptr, 0, nullptr, image != nullptr ? image->operand() : nullptr,
                                 nullptr, nullptr);
    }
    void start_group(
        ORV_DrawingInterface* drawing, FakeImage* mask, const GFI_FontEngineTable* engine,
        std::function<void()> renderer_does = [] {})
    {
        in_renderer = std::move(renderer_does);
        drawing->group_start.fn(drawing, 1, nullptr, engine, 0, 0, 0, 0, nullptr, 0, 0, 0, nullptr, &op,
                                mask != nullptr ? mask->operand() : nullptr, nullptr, 0, 0, 0, nullptr, nullptr,
                                nullptr);
    }
    static void finish_group(ORV_DrawingInterface* drawing)
    {
        uint32_t again = 0;
        drawing->group_finish.fn(drawing, &again);
    }
    void paint_resource(ORV_DrawingInterface* drawing, uint32_t resource)
    {
        drawing->resource_paint.fn(drawing, resource, 0, 0, nullptr, &op, nullptr, nullptr, 0, 0, 0, nullptr, nullptr,
                                   0);
    }

    // The first time only.
    static std::function<void()> once(std::function<void()> does)
    {
        return [does = std::move(does), done = false]() mutable
        {
            if (!std::exchange(done, true))
                does();
        };
    }

    // What the renderer does with images and engines.
    GOP_OperandImagePointer received(size_t operand = 0) const
    {
        return *reinterpret_cast<const GOP_OperandImagePointer*>(renderer.last_operands[operand]);
    }
    static void prepare(GOP_OperandImagePointer* record)
    {
        GOP_OperandImagePointer* held = record;
        record->imp_ImagePrepareFn(&held, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0);
        *record = *held;
    }
    static void read(GOP_OperandImagePointer* record)
    {
        uint8_t bytes[4] = {};
        int32_t returned = 0;
        record->imp_ImageReadFn(record, record->imp_Context, 0, bytes, 4, 4, &returned, nullptr, 0, 0, nullptr);
    }
    static void ask(const GFI_FontEngineTable* engine)
    {
        uint32_t returned = 0;
        uint32_t index = 0;
        uint16_t variant = 0;
        GGO_Vector advance{};
        engine->GFI_GlyphIndexGetFn(engine->fe_Context, &returned, &index, &variant, &advance, nullptr);
    }

    void expect_the_log_again()
    {
        in_renderer = [] {};
        orv.document_finish.fn(&orv, document);
        ORVLOG_DLL_shutdown(orv.document_start.context);
        if (behind)
            behind();
        const Files left = files_here();
        fs::current_path("../again");
        std::string differences;
        EXPECT_EQ(play_again(stream.text(), "../job", with_files, &differences), stream.text());
        EXPECT_EQ(differences, "");
        EXPECT_EQ(first_other(left, files_here()), "");
        fs::current_path("..");
    }

    TempFolder folder;
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    FakeRenderer renderer;
    ORV_Interface orv{};
    GOP_Operator op{};
    void* document = nullptr;
    bool with_files = false;
    std::function<void()> in_renderer = [] {};
    std::function<void()> behind;  // the session
};

// It isn't told with which memory context an engine came. One that is asked while its context ends is that one's.
TEST_F(AsLoggedCase, EnginesOfMemoryContexts)
{
    open();
    ScriptedFontEngine engines[2];
    ORV_DrawingInterface contexts[2] = {};
    start_memory_context(&contexts[0], engines[0].get());
    const GFI_FontEngineTable* first = renderer.last_engine;
    start_memory_context(&contexts[1], engines[1].get());
    const GFI_FontEngineTable* second = renderer.last_engine;
    in_renderer = [&] { ask(first); };
    finish(&contexts[0]);
    in_renderer = [&] { ask(second); };
    finish(&contexts[1]);
    expect_the_log_again();
}

TEST_F(AsLoggedCase, OneEngineForThreeMemoryContexts)
{
    open();
    ScriptedFontEngine engine;
    ORV_DrawingInterface contexts[3] = {};
    start_memory_context(&contexts[0], nullptr);
    start_memory_context(&contexts[1], engine.get());
    const GFI_FontEngineTable* wrapped = renderer.last_engine;
    start_memory_context(&contexts[2], nullptr);
    finish(&contexts[0]);
    in_renderer = [&] { ask(wrapped); };
    finish(&contexts[1]);
    finish(&contexts[2]);
    expect_the_log_again();
}

// The inner group ends first, and its engine with it.
TEST_F(AsLoggedCase, GroupStartedWithinTheStartOfAnother)
{
    open();
    ScriptedFontEngine engines[2];
    FakeImage mask{2, 2};
    ORV_DrawingInterface page{};
    start(&page);
    const GFI_FontEngineTable* outer = nullptr;
    mask.on_call = once([&] { start_group(&page, nullptr, engines[1].get()); });
    start_group(&page, &mask, engines[0].get(),
                [&]
                {
                    outer = renderer.last_engine;
                    GOP_OperandImagePointer record = received(1);
                    read(&record);
                });
    finish_group(&page);
    paint(&page, nullptr, [&] { ask(outer); });
    finish(&page);
    expect_the_log_again();
}

// Eleven prepares give the first image the number of the second one. It still logs at the depth of its own call.
TEST_F(AsLoggedCase, ImagesWithTheSameNumberAtTwoDepths)
{
    open();
    FakeImage outer{2, 2};
    FakeImage inner{2, 2};
    ORV_DrawingInterface page{};
    start(&page);
    start_group(&page, &outer, nullptr,
                [&]
                {
                    GOP_OperandImagePointer first = received(1);
                    for (int i = 0; i < 9; ++i)
                        prepare(&first);
                    outer.on_call = once(
                        [&]
                        {
                            start_group(&page, &inner, nullptr,
                                        [&]
                                        {
                                            GOP_OperandImagePointer second = received(1);
                                            prepare(&first);
                                            read(&first);
                                            read(&second);
                                            prepare(&first);
                                            prepare(&second);
                                        });
                        });
                    read(&first);
                });
    finish(&page);
    expect_the_log_again();
}

TEST_F(AsLoggedCase, ImagesWithTheSameNumberAtOneDepth)
{
    open();
    FakeImage mask{2, 2};
    FakeImage image{3, 1};
    image.record.imp_ImageResetFn = nullptr;
    ORV_DrawingInterface page{};
    start(&page);
    GOP_OperandImagePointer first{};
    start_group(&page, &mask, nullptr,
                [&]
                {
                    first = received(1);
                    for (int i = 0; i < 10; ++i)
                        prepare(&first);
                });
    paint(&page, &image,
          [&]
          {
              GOP_OperandImagePointer second = received();
              first.imp_ImageResetFn(&first, first.imp_Context);
              prepare(&second);
              prepare(&first);
              first.imp_ImageFinishFn(&first, first.imp_Context);
          });
    finish(&page);
    expect_the_log_again();
}

// The mask is gone with its group, and what has its number later isn't it.
TEST_F(AsLoggedCase, MaskOfAGroupThatHasEnded)
{
    open();
    FakeImage outer{2, 2};
    FakeImage inner{2, 2};
    ORV_DrawingInterface page{};
    start(&page);
    GOP_OperandImagePointer first{};
    start_group(&page, &outer, nullptr,
                [&]
                {
                    first = received(1);
                    for (int i = 0; i < 9; ++i)
                        prepare(&first);
                });
    start_group(&page, &inner, nullptr);
    finish_group(&page);
    start_group(&page, nullptr, nullptr, [&] { prepare(&first); });
    start_group(&page, nullptr, nullptr, [&] { read(&first); });
    finish(&page);
    expect_the_log_again();
}

// The image's own log doesn't tell when it was released; a prepare has left another record of it.
TEST_F(AsLoggedCase, OtherRecordOfAnImageThatIsKept)
{
    open();
    FakeImage image{2, 2};
    FakeImage other{2, 2};
    image.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
    other.image.im_Flags = image.image.im_Flags;
    image.replacement = &other.record;
    ORV_DrawingInterface page{};
    start(&page);
    paint(&page, &image,
          [&]
          {
              GOP_OperandImagePointer first = received();
              GOP_OperandImagePointer second = first;
              prepare(&second);
              second.imp_ImageKeepFn(&second);
              read(&second);
              read(&first);
              second.imp_ImageReleaseFn(&second);
          });
    finish(&page);
    expect_the_log_again();
}

// More of them than the replay puts off.
TEST_F(AsLoggedCase, ManyImagesThatAreKeptWithOtherRecords)
{
    open();
    FakeImage image{2, 2};
    FakeImage other{2, 2};
    image.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
    other.image.im_Flags = image.image.im_Flags;
    image.replacement = &other.record;
    ORV_DrawingInterface page{};
    start(&page);
    for (int i = 0; i < 150; ++i)
        paint(&page, &image,
              [&]
              {
                  GOP_OperandImagePointer first = received();
                  GOP_OperandImagePointer second = first;
                  prepare(&second);
                  second.imp_ImageKeepFn(&second);
                  read(&first);
                  second.imp_ImageReleaseFn(&second);
              });
    finish(&page);
    expect_the_log_again();
}

// The logs of kept images are put in at the session's end. What it reads into is whole when the image has been
// released.
TEST_F(AsLoggedCase, ImageThatIsReleasedBehindTheMerge)
{
    open(true, true);
    FakeImage image{2, 2};
    image.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
    ORV_DrawingInterface page{};
    start(&page);
    GOP_OperandImagePointer record{};
    paint(&page, &image,
          [&]
          {
              record = received();
              record.imp_ImageKeepFn(&record);
              read(&record);
          });
    finish(&page);
    behind = [&] { record.imp_ImageReleaseFn(&record); };
    expect_the_log_again();
}

// The log has its name from before the client was asked, and stands behind what the client did meanwhile.
TEST_F(AsLoggedCase, ImageThatIsPreparedWithinItsKeep)
{
    open();
    FakeImage image{2, 2};
    image.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
    ORV_DrawingInterface page{};
    ORV_DrawingInterface other{};
    start(&page);
    paint(&page, &image,
          [&]
          {
              GOP_OperandImagePointer record = received();
              read(&record);
              image.on_call = once(
                  [&]
                  {
                      start_group(&page, nullptr, nullptr, [&] { prepare(&record); });
                      in_renderer = [&] { prepare(&record); };
                      start(&other);
                  });
              record.imp_ImageKeepFn(&record);
              read(&record);
              record.imp_ImageReleaseFn(&record);
          });
    finish(&page);
    finish(&other);
    expect_the_log_again();
}

class AsLoggedCaseOfEachLog : public AsLoggedCase, public testing::WithParamInterface<bool>
{
};

TEST_P(AsLoggedCaseOfEachLog, ImageThatIsKeptAgainWithinItsKeep)
{
    open(GetParam());
    FakeImage image{2, 2};
    image.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
    ORV_DrawingInterface page{};
    start(&page);
    paint(&page, &image,
          [&]
          {
              GOP_OperandImagePointer record = received();
              image.on_call = once([&] { record.imp_ImageKeepFn(&record); });
              record.imp_ImageKeepFn(&record);
              read(&record);
              record.imp_ImageReleaseFn(&record);
          });
    finish(&page);
    expect_the_log_again();
}

INSTANTIATE_TEST_SUITE_P(Merged, AsLoggedCaseOfEachLog, testing::Bool());

// A drawing on which no resource can be painted closes the element; the resource was refused all the same.
TEST_F(AsLoggedCase, RefusedResourceThatIsPaintedWhereNoneCanBe)
{
    open();
    static ORV_face_start_fn start_page = nullptr;
    start_page = renderer.table()->face_start.fn;
    renderer.table()->face_start.fn = [](void* err, const ORV_Interface* table, void* handle,
                                         ORV_DrawingInterface* drawing, const GFI_FontEngineTable* engine,
                                         uint32_t number, const ORV_FaceProperties* properties, void* ticket,
                                         uint32_t orientation, uint32_t placement)
    {
        const uint32_t result =
            start_page(err, table, handle, drawing, engine, number, properties, ticket, orientation, placement);
        drawing->resource_paint.fn = nullptr;
        return result;
    };
    ORV_DrawingInterface pages[2] = {};
    ORV_DrawingInterface resource{};
    start(&pages[0]);
    renderer.table()->face_start.fn = start_page;
    start(&pages[1]);
    renderer.fail(1);
    const uint32_t refused = start_resource(&resource);
    paint_resource(&pages[0], refused);
    paint_resource(&pages[1], refused);
    paint_resource(&pages[0], refused);
    for (ORV_DrawingInterface* drawing : {&pages[0], &pages[1], &resource})
        finish(drawing);
    expect_the_log_again();
}

TEST_F(AsLoggedCase, DrawingThatIsLeftOpen)
{
    open();
    ORV_DrawingInterface page{};
    start(&page);
    start_group(&page, nullptr, nullptr);
    expect_the_log_again();
}

}  // namespace
