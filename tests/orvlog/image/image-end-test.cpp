// Renderers that come back with an image when it is gone: in a job as it runs, with all memory watched.

#include "orvlog/image/orvlog-image-wrapper.h"
#include "tests/support/fake-image.h"
#include "tests/support/temp-folder.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <functional>

namespace
{

using namespace orvlog::test;

// The callbacks as a renderer finds them, apart from the record.
struct Callbacks
{
    explicit Callbacks(const GOP_OperandImagePointer* record)
        : prepare(record->imp_ImagePrepareFn), read(record->imp_ImageReadFn), finish(record->imp_ImageFinishFn),
          reset(record->imp_ImageResetFn), keep(record->imp_ImageKeepFn), release(record->imp_ImageReleaseFn)
    {
    }
    // What all of them give for a record; the buffers stay as they are.
    std::string answers(GOP_OperandImagePointer* record) const
    {
        uint8_t row[2] = {0x55, 0x55};
        int32_t returned = -7;
        std::string text;
        text += std::to_string(read(record, nullptr, 0, row, 2, 2, &returned, nullptr, 0, 0, nullptr));
        text += std::to_string(finish(record, nullptr)) + std::to_string(reset(record, nullptr));
        text += std::to_string(keep(record)) + (release(record) == nullptr ? "0" : "1");
        text += std::to_string(prepare(&record, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0));
        EXPECT_EQ(returned, -7);
        EXPECT_EQ(row[0], 0x55);
        return text;
    }

    GOP_ImagePrepareFn prepare;
    GOP_ImageReadFn read;
    GOP_ImageFinishFn finish;
    GOP_ImageResetFn reset;
    GOP_ImageKeepFn keep;
    GOP_ImageReleaseFn release;
};

class ImageEnd : public testing::Test
{
protected:
    ImageEnd() : client(Behind::kRenderer, "side")
    {
        fake.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
        client.start_document();
        client.start_face(&drawing);
    }
    ~ImageEnd() override
    {
        shut_down();
    }
    void shut_down()
    {
        if (ended)
            return;
        ended = true;
        drawing.drawing_finish.fn(&drawing);
        client.finish_document();
        EXPECT_EQ(client.shut_down(), 1U);
        // What is kept outlives the session.
        for (GOP_OperandImagePointer* record : still_kept)
        {
            EXPECT_GT(client.allocator.outstanding(), 0U);
            EXPECT_EQ(record->imp_ImageReleaseFn(record), client.allocator.get());
        }
        EXPECT_EQ(client.allocator.outstanding(), 0U);
        EXPECT_EQ(client.allocator.bad_frees(), 0U);
    }
    // How often the log has the text.
    uint32_t count_in_log(const std::string& text) const
    {
        uint32_t count = 0;
        const std::string log = client.log();
        for (size_t at = log.find(text); at != std::string::npos; at = log.find(text, at + 1))
            ++count;
        return count;
    }
    // A paint in which the renderer does `act`; gives the record that it saw.
    GOP_OperandImagePointer* paint(const std::function<void(GOP_OperandImagePointer*)>& act)
    {
        GOP_OperandImagePointer* seen = nullptr;
        client.renderer.on_draw(
            [&](const char*)
            {
                seen = reinterpret_cast<GOP_OperandImagePointer*>(client.renderer.last_operands[0]);
                act(seen);
            });
        EXPECT_EQ(drawing.object_paint.fn(&drawing, 8, 0, &op, nullptr, 0, nullptr, fake.operand(), nullptr, nullptr),
                  1U);
        client.renderer.on_draw(nullptr);
        return seen;
    }
    static void keep(GOP_OperandImagePointer* record)
    {
        EXPECT_EQ(record->imp_ImageKeepFn(record), 1U);
    }
    static void read(GOP_OperandImagePointer* record)
    {
        uint8_t row[2];
        int32_t returned = 0;
        EXPECT_EQ(record->imp_ImageReadFn(record, record->imp_Context, 0, row, 2, 2, &returned, nullptr, 0, 0, nullptr),
                  1U);
    }

    TempFolder folder;
    TestSession client;
    ORV_DrawingInterface drawing = {};
    FakeImage fake{2, 2};
    const GOP_Operator op = {};
    bool ended = false;
    std::vector<GOP_OperandImagePointer*> still_kept;
};

constexpr const char* kGone = "\n<!--\nORVLOG: WARNING: Image callback for an image that is gone.\n-->\n";

TEST_F(ImageEnd, ReleaseRepeatedBehindTheCall)
{
    GOP_OperandImagePointer* record = paint(keep);
    EXPECT_EQ(record->imp_ImageReleaseFn(record), client.allocator.get());
    EXPECT_EQ(fake.take_calls(), "keep release ");
    const std::string text = folder.read(folder.names()[0]);
    EXPECT_EQ(count_in_log(kGone), 0U);
    EXPECT_EQ(record->imp_ImageReleaseFn(record), nullptr);
    EXPECT_EQ(count_in_log(kGone), 1U);
    EXPECT_EQ(Callbacks(record).answers(record), "000000");
    // Other images come and go in the meantime.
    paint(read);
    fake.take_calls();
    EXPECT_EQ(record->imp_ImageReleaseFn(record), nullptr);
    EXPECT_EQ(fake.take_calls(), "");
    EXPECT_EQ(record->imp_Image->im_ImageWidthPixels, 2U);
    EXPECT_EQ(folder.read(folder.names()[0]), text);
    EXPECT_EQ(count_in_log(kGone), 1U) << "once";
}

// The renderer holds a copy, which knows its image for as long as there is one, and no other.
TEST_F(ImageEnd, ReleaseRepeatedByACopyWhileManyOthersComeAndGo)
{
    GOP_OperandImagePointer copy = *paint(keep);
    EXPECT_EQ(copy.imp_ImageReleaseFn(&copy), client.allocator.get());
    const uint64_t bytes = client.allocator.bytes();
    for (int i = 0; i < 300; ++i)
    {
        GOP_OperandImagePointer* other = paint(keep);
        fake.take_calls();
        EXPECT_EQ(Callbacks(&copy).answers(&copy), "000000");
        EXPECT_EQ(copy.imp_ImageReleaseFn(&copy), nullptr);
        EXPECT_EQ(fake.take_calls(), "");
        EXPECT_EQ(other->imp_ImageReleaseFn(other), client.allocator.get());
    }
    EXPECT_EQ(client.allocator.bytes(), bytes);
    EXPECT_EQ(count_in_log(kGone), 1U);
}

TEST_F(ImageEnd, ReleasedWithinTheCallAndAgainBehindIt)
{
    GOP_OperandImagePointer* record = paint(
        [](GOP_OperandImagePointer* seen)
        {
            keep(seen);
            EXPECT_EQ(seen->imp_ImageReleaseFn(seen), nullptr);
        });
    EXPECT_EQ(record->imp_ImageReleaseFn(record), nullptr);
    EXPECT_EQ(Callbacks(record).answers(record), "000000");
    EXPECT_EQ(fake.take_calls(), "keep release ");
}

TEST_F(ImageEnd, RefusedKeepLivesUntilItsRelease)
{
    fake.keep_result = 0;
    const uint64_t before = client.allocator.outstanding();
    GOP_OperandImagePointer* record = paint(
        [](GOP_OperandImagePointer* seen)
        {
            EXPECT_EQ(seen->imp_ImageKeepFn(seen), 0U);
            read(seen);
        });
    EXPECT_NE(client.log().find("-async-image-0000000011.tmp\" return=\"FALSE\">"), std::string::npos);
    EXPECT_EQ(record->imp_ImageReleaseFn(record), client.allocator.get());
    EXPECT_EQ(client.allocator.outstanding(), before);
    EXPECT_EQ(fake.take_calls(), "keep read release ");
    ASSERT_EQ(folder.names().size(), 2U);
    EXPECT_EQ(folder.read("side-img-10.bin"), "\x01\x02");
    std::string text = folder.read(folder.names()[0]);
    std::erase(text, '\r');
    EXPECT_EQ(text, R"(  <GOP_ImageReadFn Id="10" return="TRUE" skip_pixels="0" img_row_step="2" img_returned="2" )"
                    R"(ImageFileName="side-img-10.bin">
  </GOP_ImageReadFn>
  <GOP_ImageReleaseFn Id="10">
  </GOP_ImageReleaseFn>
)");
    EXPECT_EQ(Callbacks(record).answers(record), "000000");
}

// A renderer that was refused need not come back: the last of them alone are held, and not beyond the session.
TEST_F(ImageEnd, RefusedKeepsThatAreNeverReleased)
{
    fake.keep_result = 0;
    std::vector<GOP_OperandImagePointer*> refused;
    for (uint32_t i = 0; i < ORVLOG_MAX_REFUSED_IMAGES + 1; ++i)
        refused.push_back(paint([](GOP_OperandImagePointer* seen) { EXPECT_EQ(seen->imp_ImageKeepFn(seen), 0U); }));
    fake.take_calls();
    EXPECT_EQ(refused[0]->imp_ImageReleaseFn(refused[0]), nullptr);
    EXPECT_EQ(fake.take_calls(), "");
    EXPECT_EQ(refused[1]->imp_ImageReleaseFn(refused[1]), client.allocator.get());
    EXPECT_EQ(fake.take_calls(), "release ");
    shut_down();
}

TEST_F(ImageEnd, RefusedImagesTakeNoMoreMemoryHoweverManyTheyAre)
{
    fake.keep_result = 0;
    uint64_t bytes = 0;
    for (int i = 0; i < 400; ++i)
    {
        paint([](GOP_OperandImagePointer* seen) { EXPECT_EQ(seen->imp_ImageKeepFn(seen), 0U); });
        if (i == 20)
            bytes = client.allocator.bytes();
    }
    EXPECT_EQ(client.allocator.bytes(), bytes);
}

TEST_F(ImageEnd, ManyRefusedKeepsLeaveNoFileOpen)
{
    fake.keep_result = 0;
    for (int i = 0; i < 1500; ++i)
        paint([](GOP_OperandImagePointer* seen) { EXPECT_EQ(seen->imp_ImageKeepFn(seen), 0U); });
    EXPECT_EQ(folder.names().size(), 1500U);
    fake.keep_result = 1;
    still_kept = {paint(keep)};
}

TEST_F(ImageEnd, RefusedKeepBehindAGrantedOneEndsNothing)
{
    GOP_OperandImagePointer* record = paint(
        [&](GOP_OperandImagePointer* seen)
        {
            keep(seen);
            fake.keep_result = 0;
            EXPECT_EQ(seen->imp_ImageKeepFn(seen), 0U);
        });
    read(record);
    EXPECT_EQ(record->imp_ImageReleaseFn(record), client.allocator.get());
    EXPECT_EQ(fake.take_calls(), "keep keep read release ");
}

TEST_F(ImageEnd, ReleasedAndRefusedWithinTheCall)
{
    paint(
        [&](GOP_OperandImagePointer* seen)
        {
            keep(seen);
            seen->imp_ImageReleaseFn(seen);
            fake.keep_result = 0;
            EXPECT_EQ(seen->imp_ImageKeepFn(seen), 0U);
        });
    EXPECT_EQ(fake.take_calls(), "keep release keep ");
}

TEST_F(ImageEnd, ReleasedAndKeptAgainWithinTheCall)
{
    GOP_OperandImagePointer* record = paint(
        [](GOP_OperandImagePointer* seen)
        {
            keep(seen);
            seen->imp_ImageReleaseFn(seen);
            keep(seen);
        });
    read(record);
    EXPECT_EQ(record->imp_ImageReleaseFn(record), client.allocator.get());
    EXPECT_EQ(fake.take_calls(), "keep release keep read release ");
}

TEST_F(ImageEnd, ExchangedAndKeptAndNeverReleased)
{
    FakeImage other(2, 2);
    other.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
    fake.replacement = other.get();
    GOP_OperandImagePointer* exchanged = nullptr;
    GOP_OperandImagePointer* first = paint(
        [&](GOP_OperandImagePointer* seen)
        {
            exchanged = seen;
            seen->imp_ImagePrepareFn(&exchanged, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0);
            keep(exchanged);
        });
    ASSERT_NE(first, exchanged);
    GOP_OperandImagePointer* third = first;
    EXPECT_EQ(first->imp_ImagePrepareFn(&third, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0), 1U);
    read(third);
    // Any record of the image releases it, behind the session, too.
    still_kept = {third};
    shut_down();
    EXPECT_EQ(other.take_calls(), "keep read release ");
}

TEST_F(ImageEnd, ExchangedAndKeptAndReleased)
{
    FakeImage other(2, 2);
    other.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
    fake.replacement = other.get();
    GOP_OperandImagePointer* exchanged = nullptr;
    GOP_OperandImagePointer* first = paint(
        [&](GOP_OperandImagePointer* seen)
        {
            exchanged = seen;
            seen->imp_ImagePrepareFn(&exchanged, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0);
            keep(exchanged);
        });
    EXPECT_EQ(exchanged->imp_ImageReleaseFn(exchanged), client.allocator.get());
    EXPECT_EQ(other.take_calls(), "keep release ");
    EXPECT_EQ(Callbacks(first).answers(first), "000000");
    EXPECT_EQ(Callbacks(exchanged).answers(exchanged), "000000");
}

// The image has one log, whichever of its records it was kept by.
TEST_F(ImageEnd, KeptByTwoOfItsRecords)
{
    FakeImage other(2, 2);
    other.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
    fake.replacement = other.get();
    GOP_OperandImagePointer* exchanged = nullptr;
    client.forget();
    GOP_OperandImagePointer* first = paint(
        [&](GOP_OperandImagePointer* seen)
        {
            exchanged = seen;
            seen->imp_ImagePrepareFn(&exchanged, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0);
            keep(seen);
            keep(exchanged);
        });
    read(exchanged);
    EXPECT_EQ(first->imp_ImageReleaseFn(first), client.allocator.get());
    ASSERT_EQ(folder.names().size(), 2U);
    std::string text = folder.read(folder.names()[0]);
    std::erase(text, '\r');
    EXPECT_EQ(text, R"(  <GOP_ImageKeepFn Id="11" return="TRUE">
  </GOP_ImageKeepFn>
  <GOP_ImageReadFn Id="11" return="TRUE" skip_pixels="0" img_row_step="2" img_returned="2" )"
                    R"(ImageFileName="side-img-10.bin">
  </GOP_ImageReadFn>
  <GOP_ImageReleaseFn Id="10">
  </GOP_ImageReleaseFn>
)");
    const std::string log = client.log();
    EXPECT_EQ(log.find("<GOP_ImageKeepFn"), log.rfind("<GOP_ImageKeepFn"));
    EXPECT_NE(log.find("<GOP_ImageKeepFn Id=\"10\" async_img_log_file_name=\""), std::string::npos);
    EXPECT_EQ(fake.take_calls() + other.take_calls(), "prepare(0,3,0) keep release keep read ");
}

// The record is the renderer's to write to, but for its context, by which it is known.
TEST_F(ImageEnd, RecordWithoutAnImageStillServes)
{
    const uint64_t before = client.allocator.outstanding();
    GOP_OperandImagePointer* record = paint(
        [&](GOP_OperandImagePointer* seen)
        {
            GOP_OperandImagePointer* prepared = seen;
            seen->imp_Image = nullptr;
            EXPECT_EQ(seen->imp_ImageFinishFn(seen, nullptr), 1U);
            EXPECT_EQ(seen->imp_ImagePrepareFn(&prepared, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0), 1U);
            EXPECT_EQ(prepared, seen);
            ASSERT_NE(seen->imp_Image, nullptr);
            EXPECT_EQ(seen->imp_Image->im_ImageWidthPixels, 2U);
            keep(seen);
        });
    read(record);
    record->imp_Image = nullptr;
    EXPECT_EQ(record->imp_ImageReleaseFn(record), client.allocator.get());
    EXPECT_EQ(fake.take_calls(), "finish prepare(0,3,0) keep read release ");
    EXPECT_EQ(Callbacks(record).answers(record), "000000");
    EXPECT_EQ(client.allocator.outstanding(), before);
}

// Without its context a record serves where the context comes as an argument, and is told of at the end of the call.
TEST_F(ImageEnd, RecordThatHasLostItsContext)
{
    static constexpr const char* kLost = "\n<!--\nORVLOG: WARNING: Image record has lost its context.\n-->\n";
    const uint64_t before = client.allocator.outstanding();
    for (int i = 0; i < 2; ++i)
        paint(
            [&](GOP_OperandImagePointer* seen)
            {
                GOP_OperandImagePointer* prepared = seen;
                void* context = seen->imp_Context;
                uint8_t row[2];
                int32_t returned = 0;
                seen->imp_Context = &client;
                EXPECT_EQ(seen->imp_ImageReadFn(seen, context, 0, row, 2, 2, &returned, nullptr, 0, 0, nullptr), 1U);
                EXPECT_EQ(
                    seen->imp_ImageReadFn(seen, seen->imp_Context, 0, row, 2, 2, &returned, nullptr, 0, 0, nullptr),
                    0U);
                EXPECT_EQ(seen->imp_ImageFinishFn(nullptr, context), 1U);
                EXPECT_EQ(seen->imp_ImageResetFn(seen, context), 1U);
                EXPECT_EQ(seen->imp_ImageKeepFn(seen), 0U);
                EXPECT_EQ(seen->imp_ImagePrepareFn(&prepared, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0), 0U);
            });
    EXPECT_EQ(fake.take_calls(), "read finish reset read finish reset ");
    EXPECT_EQ(count_in_log(kLost), 1U);
    EXPECT_EQ(client.allocator.outstanding(), before);
}

// Whether an image ends is not a matter of what the renderer has made of its record.
TEST_F(ImageEnd, RecordMadeIntoAnotherKindOfOperand)
{
    const uint64_t before = client.allocator.outstanding();
    paint([](GOP_OperandImagePointer* seen) { seen->imp_Image = nullptr; });
    EXPECT_EQ(client.allocator.outstanding(), before);
    paint([](GOP_OperandImagePointer* seen)
          { const_cast<GOP_OperandImage*>(seen->imp_Image)->im_Operand.go_OpType = GOP_OPERAND_FLAT; });
    EXPECT_EQ(client.allocator.outstanding(), before);
    paint([](GOP_OperandImagePointer* seen) { *seen = {}; });
    EXPECT_EQ(client.allocator.outstanding(), before);
}

// The image that the client first passed could not be kept; the one that it exchanged it for can.
class ImageEndOfAnExchange : public ImageEnd
{
protected:
    void SetUp() override
    {
        ImageEnd::SetUp();
        fake.image.im_Flags &= ~static_cast<uint32_t>(GOP_OP_FLAGS_ASYNCH_ACCESS);
        other.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
        fake.replacement = other.get();
        before = client.allocator.outstanding();
    }
    // Gives what the renderer kept.
    GOP_OperandImagePointer* paint_and_keep()
    {
        GOP_OperandImagePointer* exchanged = nullptr;
        first = paint(
            [&](GOP_OperandImagePointer* seen)
            {
                exchanged = seen;
                seen->imp_ImagePrepareFn(&exchanged, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0);
                keep(exchanged);
            });
        EXPECT_NE(first, exchanged);
        return exchanged;
    }

    FakeImage other{2, 2};
    GOP_OperandImagePointer* first = nullptr;
    uint64_t before = 0;
};

TEST_F(ImageEndOfAnExchange, Released)
{
    GOP_OperandImagePointer* kept = paint_and_keep();
    const Callbacks callbacks(kept);
    read(kept);
    EXPECT_EQ(kept->imp_ImageReleaseFn(kept), client.allocator.get());
    EXPECT_EQ(other.take_calls(), "keep read release ");
    EXPECT_EQ(callbacks.answers(kept), "000000");
    EXPECT_EQ(callbacks.answers(first), "000000");
    EXPECT_EQ(client.allocator.outstanding(), before);
    EXPECT_EQ(kept->imp_Image->im_ImageWidthPixels, 2U);
    still_kept = {paint_and_keep()};
    shut_down();
}

TEST_F(ImageEndOfAnExchange, NeverReleased)
{
    GOP_OperandImagePointer* kept = paint_and_keep();
    still_kept = {kept};
    shut_down();
    EXPECT_EQ(other.take_calls(), "keep release ");
}

TEST_F(ImageEndOfAnExchange, ReleasedWithinTheCall)
{
    paint(
        [&](GOP_OperandImagePointer* seen)
        {
            GOP_OperandImagePointer* exchanged = seen;
            seen->imp_ImagePrepareFn(&exchanged, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0);
            keep(exchanged);
            exchanged->imp_ImageReleaseFn(exchanged);
        });
    EXPECT_EQ(other.take_calls(), "keep release ");
    shut_down();
}

// Its record has null in these places; a renderer may have the functions from another one.
TEST_F(ImageEndOfAnExchange, KeptAndReleasedByTheRecordThatCannotBeKept)
{
    GOP_OperandImagePointer* kept = paint_and_keep();
    const Callbacks callbacks(kept);
    other.take_calls();
    EXPECT_EQ(kept->imp_ImageReleaseFn(first), nullptr);
    EXPECT_EQ(kept->imp_ImageKeepFn(first), 0U);
    fake.replacement = nullptr;
    paint([&](GOP_OperandImagePointer* seen) { EXPECT_EQ(kept->imp_ImageKeepFn(seen), 0U); });
    EXPECT_EQ(fake.take_calls() + other.take_calls(), "prepare(0,3,0) ");
    EXPECT_EQ(folder.names().size(), 1U);
    EXPECT_EQ(kept->imp_ImageReleaseFn(kept), client.allocator.get());
}

TEST_F(ImageEnd, ImageThatWasNotKeptIsUnknownBehindItsCall)
{
    Callbacks callbacks(fake.get());
    const uint64_t before = client.allocator.outstanding();
    GOP_OperandImagePointer* record = paint([&](GOP_OperandImagePointer* seen) { callbacks = Callbacks(seen); });
    EXPECT_EQ(client.allocator.outstanding(), before);
    EXPECT_EQ(callbacks.answers(record), "000000");
    EXPECT_EQ(fake.take_calls(), "");
}

TEST_F(ImageEnd, MaskOfAGroupThatNeverFinishes)
{
    GOP_Operator mask = {};
    mask.op_MaskMode = GOP_MASK_IN;
    uint32_t group = 0;
    GOP_OperandImagePointer* record = nullptr;
    client.renderer.on_draw(
        [&](const char*)
        {
            record = reinterpret_cast<GOP_OperandImagePointer*>(client.renderer.last_operands[1]);
            keep(record);
        });
    drawing.group_start.fn(&drawing, 1, &group, nullptr, 0, 0, 0, 0, nullptr, 0, 0, 0, nullptr, &mask, fake.operand(),
                           nullptr, 0, 0, 0, nullptr, nullptr, nullptr);
    client.renderer.on_draw(nullptr);
    ASSERT_NE(record, nullptr);
    read(record);
    ended = true;
    EXPECT_EQ(client.shut_down(), 1U);
    read(record);
    EXPECT_EQ(record->imp_ImageReleaseFn(record), client.allocator.get());
    EXPECT_EQ(client.allocator.outstanding(), 0U);
    EXPECT_EQ(fake.take_calls(), "keep read read release ");
}

}  // namespace
