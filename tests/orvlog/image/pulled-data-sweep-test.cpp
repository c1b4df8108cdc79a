// A job in base mode whose images and glyphs are pulled by the logger and by the renderer, with side files and a kept
// image, swept through failures of memory, of the log's stream and of the client's callbacks.

#include "orvlog/interface/orvlog-session-options.h"
#include "tests/support/failure-sweep.h"
#include "tests/support/fake-image.h"
#include "tests/support/scripted-font-engine.h"
#include "tests/support/temp-folder.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <functional>

namespace
{

using namespace orvlog::test;

void pull(GOP_OperandImagePointer* record)
{
    record->imp_ImagePrepareFn(&record, GCM_OBJ_IMAGE, 0, 0, 0, 0, 0, 0, 0, GNC_BMP_DEPTH_8, 0);
    uint8_t row[4];
    int32_t returned = 1;
    for (int i = 0; i < 4 && returned > 0; ++i)
        record->imp_ImageReadFn(record, record->imp_Context, 0, row, sizeof row, sizeof row, &returned, nullptr, 0, 0,
                                nullptr);
    if (record->imp_ImageResetFn != nullptr)
        record->imp_ImageResetFn(record, record->imp_Context);
    record->imp_ImageFinishFn(record, record->imp_Context);
}

class PulledData : public testing::TestWithParam<const char*>
{
protected:
    // Runs the job with the fault that `prepare` sets, and gives whether it was met.
    bool run(const std::function<void(TestSession*)>& prepare, const std::function<bool(const TestSession&)>& met)
    {
        TestSession client(Behind::kRenderer, GetParam());
        EXPECT_EQ(client.initialised, 1U);
        client.set_base_mode();
        prepare(&client);
        uint32_t draws = 0;
        draw(&client, &draws);
        const bool result = met(client);
        client.allocator.refuse(0);
        client.stream.fail(0);
        client.shut_down();
        EXPECT_EQ(client.allocator.bad_frees(), 0U);
        EXPECT_EQ(client.allocator.outstanding(), 0U);
        return result;
    }

    void draw(TestSession* client, uint32_t* draws)
    {
        ScriptedFontEngine engine;
        engine.advances = {{1, 0}, {1, 0}};
        engine.fuse = &fuse;
        FakeImage image(4, 2);
        FakeImage mask(4, 1);
        image.fuse = mask.fuse = &fuse;
        image.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
        if (client->orv.document_start.fn(nullptr, &client->orv, &client->document, 7, engine.get(), nullptr) == 0)
            return;
        ORV_DrawingInterface drawing = {};
        if (client->start_face(&drawing) != 0)
        {
            paint(client, &drawing, &image, &mask, draws);
            drawing.drawing_finish.fn(&drawing);
        }
        client->finish_document();
    }

    static void paint(TestSession* client, ORV_DrawingInterface* drawing, FakeImage* image, FakeImage* mask,
                      uint32_t* draws)
    {
        GSH_Shape shape = {GSH_SHAPE_GLYPHS, 0, {{1, 0, 0, 1, 2, 3}}};
        GFI_FontSpecPointer font = {};
        GFI_StringDesc desc = {};
        GFI_StringDescPointer string = {&desc, nullptr, nullptr};
        GSH_ShapePointer text = {};
        text.sp_HeaderPtr = &shape;
        text.sp_U.glyph.font_spec_ptr = &font;
        text.sp_U.glyph.string_desc = &string;
        GOP_Operator op = {};
        op.op_MaskMode = GOP_MASK_IN;
        GOP_OperandImagePointer* kept = nullptr;
        client->renderer.on_draw(
            [&](const char*)
            {
                ++*draws;
                auto* record = reinterpret_cast<GOP_OperandImagePointer*>(client->renderer.last_operands[0]);
                pull(record);
                const bool wrapped = record != image->get();
                if (record->imp_ImageKeepFn != nullptr && wrapped && record->imp_ImageKeepFn(record) != 0)
                    kept = record;
                else if (record->imp_ImageReleaseFn != nullptr && wrapped)
                    record->imp_ImageReleaseFn(record);
            });
        drawing->object_paint.fn(drawing, 8, 0, &op, &text, 0, nullptr, image->operand(), mask->operand(), nullptr);
        client->renderer.on_draw(nullptr);
        EXPECT_EQ(*draws, 1U);
        if (kept == nullptr)
            return;
        pull(kept);
        kept->imp_ImageReleaseFn(kept);
    }

    TempFolder folder;
    int64_t fuse = 0;
};

TEST_P(PulledData, SoundJob)
{
    EXPECT_FALSE(run([](TestSession*) {}, [](const TestSession&) { return false; }));
}

TEST_P(PulledData, NthAllocationRefused)
{
    const auto refused = [&](uint64_t n)
    {
        return run([&](TestSession* client) { client->allocator.refuse(n); },
                   [](const TestSession& client) { return client.allocator.refused() != 0; });
    };
    EXPECT_GT(sweep_failures(refused), 9U);
}

TEST_P(PulledData, AllAllocationsRefusedFromTheNthOn)
{
    const auto refused = [&](uint64_t n)
    {
        return run([&](TestSession* client) { client->allocator.refuse(n, true); },
                   [](const TestSession& client) { return client.allocator.refused() != 0; });
    };
    EXPECT_GT(sweep_failures(refused), 9U);
}

TEST_P(PulledData, StreamFailsFromTheNthOperationOn)
{
    const auto failed = [&](uint64_t n)
    {
        return run([&](TestSession* client) { client->stream.fail(n, true); },
                   [](const TestSession& client) { return client.stream.failed() != 0; });
    };
    EXPECT_GT(sweep_failures(failed, 37), 20U);
}

TEST_P(PulledData, NthCallbackFailed)
{
    const auto failed = [&](uint64_t n) {
        return run([&](TestSession*) { fuse = static_cast<int64_t>(n); },
                   [&](const TestSession&) { return fuse <= 0; });
    };
    EXPECT_GT(sweep_failures(failed), 19U);
}

INSTANTIATE_TEST_SUITE_P(Files, PulledData, testing::Values(nullptr, "side", "no-such-folder/side"),
                         [](const testing::TestParamInfo<const char*>& test) {
                             return test.index == 0 ? "None" : test.index == 1 ? "Side" : "CannotBeOpened";
                         });

}  // namespace
