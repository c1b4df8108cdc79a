// Images that are kept, released and outlive the session: what the client hears of it, and what it costs.

#include "tests/support/fake-image.h"
#include "tests/support/temp-folder.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace
{

using namespace orvlog::test;

class KeptImageEnd : public testing::Test
{
protected:
    KeptImageEnd() : client(Behind::kRenderer)
    {
        fake.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
        client.start_document();
        client.start_face(&drawing);
    }
    // Paints an image that the renderer asks to keep.
    GOP_OperandImagePointer* keep(uint32_t answer = 1)
    {
        GOP_OperandImagePointer* seen = nullptr;
        client.renderer.on_draw(
            [&](const char*)
            {
                seen = reinterpret_cast<GOP_OperandImagePointer*>(client.renderer.last_operands[0]);
                if (fake.replacement != nullptr)
                    seen->imp_ImagePrepareFn(&seen, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0);
                EXPECT_EQ(seen->imp_ImageKeepFn(seen), answer);
            });
        drawing.object_paint.fn(&drawing, 8, 0, nullptr, nullptr, 0, nullptr, fake.operand(), nullptr, nullptr);
        client.renderer.on_draw(nullptr);
        return seen;
    }
    void shut_down()
    {
        drawing.drawing_finish.fn(&drawing);
        client.finish_document();
        EXPECT_EQ(client.shut_down(), 1U);
    }
    void forget_files()
    {
        for (const std::string& name : folder.names())
            std::filesystem::remove(name);
    }
    static std::string text_of(const TempFolder& folder, size_t number)
    {
        std::string text = folder.read(folder.names()[number]);
        std::erase(text, '\r');
        return text;
    }

    TempFolder folder;
    TestSession client;
    ORV_DrawingInterface drawing = {};
    FakeImage fake{2, 2};
    FakeImage other{2, 2};
};

constexpr const char* kRelease = "  <GOP_ImageReleaseFn Id=\"10\">\n  </GOP_ImageReleaseFn>\n";

TEST_F(KeptImageEnd, ReleaseFreesAllThatTheImageTook)
{
    const uint64_t blocks = client.allocator.outstanding();
    const uint64_t bytes = client.allocator.bytes();
    for (int i = 0; i < 2000; ++i)
    {
        GOP_OperandImagePointer* record = keep();
        EXPECT_EQ(record->imp_ImageReleaseFn(record), client.allocator.get());
        if (i % 100 == 0)
            forget_files();
    }
    EXPECT_EQ(client.allocator.outstanding(), blocks);
    EXPECT_EQ(client.allocator.bytes(), bytes);
    shut_down();
    EXPECT_EQ(client.allocator.outstanding(), 0U);
}

TEST_F(KeptImageEnd, SoItDoesForRefusedKeepsAndForChains)
{
    const uint64_t bytes = client.allocator.bytes();
    other.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
    fake.replacement = other.get();
    for (uint32_t i = 0; i < 300; ++i)
    {
        other.keep_result = i % 2;
        GOP_OperandImagePointer* record = keep(i % 2);
        EXPECT_EQ(record->imp_ImageReleaseFn(record), client.allocator.get());
    }
    EXPECT_EQ(client.allocator.bytes(), bytes);
    shut_down();
}

// Memory follows what is kept at once.
TEST_F(KeptImageEnd, ManyThatAreKeptAtOnce)
{
    uint64_t bytes = 0;
    for (int round = 0; round < 2; ++round)
    {
        std::vector<GOP_OperandImagePointer*> kept;
        for (int i = 0; i < 200; ++i)
            kept.push_back(keep());
        for (GOP_OperandImagePointer* record : kept)
            EXPECT_EQ(record->imp_ImageReleaseFn(record), client.allocator.get());
        for (GOP_OperandImagePointer* record : kept)
            EXPECT_EQ(record->imp_ImageReleaseFn(record), nullptr);
        if (round == 0)
            bytes = client.allocator.bytes();
        EXPECT_EQ(client.allocator.bytes(), bytes);
    }
    shut_down();
    EXPECT_EQ(client.allocator.outstanding(), 0U);
}

// A client that drops an image may have the renderer drop it, too, before it comes back.
TEST_F(KeptImageEnd, ReleasedAgainFromWithinItsRelease)
{
    static GOP_OperandImagePointer* kept = nullptr;
    static int releases = 0;
    releases = 0;
    fake.record.imp_ImageReleaseFn = [](GOP_OperandImagePointer*) -> void*
    {
        if (++releases < 3)
            kept->imp_ImageReleaseFn(kept);
        return nullptr;
    };
    const uint64_t bytes = client.allocator.bytes();
    kept = keep();
    EXPECT_EQ(kept->imp_ImageReleaseFn(kept), client.allocator.get());
    EXPECT_EQ(releases, 1);
    EXPECT_EQ(client.allocator.bytes(), bytes);
    EXPECT_EQ(text_of(folder, 0), kRelease);
    shut_down();
    EXPECT_EQ(client.allocator.outstanding(), 0U);
}

// So may one that is asked for its bytes: the read that is under way is logged all the same.
TEST_F(KeptImageEnd, ReleasedFromWithinARead)
{
    static GOP_OperandImagePointer* kept = nullptr;
    fake.record.imp_ImageReadFn = [](GOP_OperandImagePointer*, void*, uint32_t, uint8_t*, uint32_t, int32_t,
                                     int32_t* returned, uint8_t*, uint32_t, int32_t, int32_t*) -> uint32_t
    {
        *returned = 0;
        kept->imp_ImageReleaseFn(kept);
        return 1;
    };
    const uint64_t bytes = client.allocator.bytes();
    kept = keep();
    uint8_t row[2] = {};
    int32_t returned = 0;
    EXPECT_EQ(kept->imp_ImageReadFn(kept, kept->imp_Context, 0, row, 2, 2, &returned, nullptr, 0, 0, nullptr), 1U);
    EXPECT_EQ(kept->imp_ImageReleaseFn(kept), nullptr);
    EXPECT_EQ(client.allocator.bytes(), bytes);
    EXPECT_EQ(text_of(folder, 0), std::string(kRelease) +
                                      "  <GOP_ImageReadFn Id=\"10\" return=\"TRUE\" skip_pixels=\"0\" "
                                      "img_row_step=\"2\" img_returned=\"0\">\n    <img_buf>\n    </img_buf>\n"
                                      "  </GOP_ImageReadFn>\n");
    shut_down();
    EXPECT_EQ(client.allocator.outstanding(), 0U);
}

TEST_F(KeptImageEnd, OutlivesTheSessionUntilItsRelease)
{
    GOP_OperandImagePointer* first = keep();
    GOP_OperandImagePointer* second = keep();
    fake.take_calls();
    shut_down();
    EXPECT_EQ(fake.take_calls(), "");
    EXPECT_GT(client.allocator.outstanding(), 0U);
    const std::string log = client.stream.text();
    EXPECT_TRUE(log.ends_with("</ORV>\n"));
    uint8_t row[2] = {};
    int32_t returned = 0;
    EXPECT_EQ(first->imp_ImageReadFn(first, first->imp_Context, 0, row, 2, 2, &returned, nullptr, 0, 0, nullptr), 1U);
    EXPECT_EQ(row[0], 1);
    EXPECT_EQ(first->imp_ImageReleaseFn(first), client.allocator.get());
    EXPECT_GT(client.allocator.outstanding(), 0U);
    EXPECT_EQ(second->imp_ImageReleaseFn(second), client.allocator.get());
    EXPECT_EQ(fake.take_calls(), "read release release ");
    EXPECT_EQ(client.allocator.outstanding(), 0U);
    EXPECT_EQ(client.allocator.bad_frees(), 0U);
    EXPECT_EQ(client.stream.text(), log);
    ASSERT_EQ(folder.names().size(), 2U);
    EXPECT_EQ(text_of(folder, 0), std::string(R"(  <GOP_ImageReadFn Id="10" return="TRUE" skip_pixels="0" )"
                                              R"(img_row_step="2" img_returned="2">
    <img_buf>
      <BufferUInt8 len="2">
01 02 
      </BufferUInt8>
    </img_buf>
  </GOP_ImageReadFn>
)") + kRelease);
    EXPECT_EQ(text_of(folder, 1), "  <GOP_ImageReleaseFn Id=\"20\">\n  </GOP_ImageReleaseFn>\n");
}

// A client may exchange its record at any time, behind the session, too.
TEST_F(KeptImageEnd, PreparesOnBehindTheSession)
{
    GOP_OperandImagePointer* first = keep();
    shut_down();
    fake.replacement = other.get();
    fake.take_calls();
    for (int i = 0; i < 200; ++i)
    {
        GOP_OperandImagePointer* record = first;
        EXPECT_EQ(record->imp_ImagePrepareFn(&record, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0), 1U);
        EXPECT_NE(record, first);
        EXPECT_EQ(record->imp_ImageFinishFn(record, record->imp_Context), 1U);
    }
    first->imp_ImageReleaseFn(first);
    EXPECT_EQ(client.allocator.outstanding(), 0U);
    EXPECT_TRUE(fake.take_calls().ends_with("release "));
}

// The record that was not kept itself speaks in the session's log, and when that is closed in the image's own.
TEST_F(KeptImageEnd, RecordOfAChainThatWasNotKeptItself)
{
    fake.replacement = other.get();
    other.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
    GOP_OperandImagePointer* first = nullptr;
    client.renderer.on_draw(
        [&](const char*)
        {
            first = reinterpret_cast<GOP_OperandImagePointer*>(client.renderer.last_operands[0]);
            GOP_OperandImagePointer* second = first;
            first->imp_ImagePrepareFn(&second, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0);
            EXPECT_EQ(second->imp_ImageKeepFn(second), 1U);
        });
    drawing.object_paint.fn(&drawing, 8, 0, nullptr, nullptr, 0, nullptr, fake.operand(), nullptr, nullptr);
    client.renderer.on_draw(nullptr);
    client.forget();
    EXPECT_EQ(first->imp_ImageResetFn(first, first->imp_Context), 1U);
    const std::string reset = "  <GOP_ImageResetFn Id=\"10\" return=\"TRUE\">\n  </GOP_ImageResetFn>\n";
    EXPECT_EQ(client.log(), reset);
    shut_down();
    const std::string log = client.stream.text();
    EXPECT_EQ(first->imp_ImageResetFn(first, first->imp_Context), 1U);
    EXPECT_EQ(first->imp_ImageReleaseFn(first), client.allocator.get());
    EXPECT_EQ(client.stream.text(), log);
    EXPECT_EQ(text_of(folder, 0), reset + kRelease);
    EXPECT_EQ(client.allocator.outstanding(), 0U);
}

// The renderer keeps records of its own and never touches the logger's again.
TEST_F(KeptImageEnd, CopyOfTheRecordServesAsTheRecordDoes)
{
    GOP_OperandImagePointer copy = *keep();
    const GOP_OperandImagePointer* held = &copy;
    uint8_t row[2] = {};
    int32_t returned = 0;
    fake.take_calls();
    fake.record.op_UniqueId = 77;
    GOP_OperandImagePointer* prepared = &copy;
    EXPECT_EQ(copy.imp_ImagePrepareFn(&prepared, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0), 1U);
    EXPECT_EQ(prepared, held);
    EXPECT_EQ(copy.op_UniqueId, 77U) << "what the client changed in place is in the record that the renderer holds";
    EXPECT_EQ(copy.imp_ImageReadFn(&copy, copy.imp_Context, 0, row, 2, 2, &returned, nullptr, 0, 0, nullptr), 1U);
    EXPECT_EQ(copy.imp_ImageResetFn(&copy, copy.imp_Context), 1U);
    EXPECT_EQ(copy.imp_ImageFinishFn(&copy, copy.imp_Context), 1U);
    EXPECT_EQ(copy.imp_ImageKeepFn(&copy), 1U);
    EXPECT_EQ(copy.imp_ImageReleaseFn(&copy), client.allocator.get());
    EXPECT_EQ(fake.take_calls(), "prepare(0,3,0) read reset finish keep release ");
    const std::string text = text_of(folder, 0);
    EXPECT_NE(text.find("<GOP_OperandImagePointer Id=\"11\" op_UniqueId=\"77\""), std::string::npos) << text;
    shut_down();
    EXPECT_EQ(client.allocator.outstanding(), 0U);
}

// In the call, too, and where the client puts another record in its place.
TEST_F(KeptImageEnd, CopyServesWithinTheCall)
{
    fake.replacement = other.get();
    client.renderer.on_draw(
        [&](const char*)
        {
            GOP_OperandImagePointer copy =
                *reinterpret_cast<GOP_OperandImagePointer*>(client.renderer.last_operands[0]);
            GOP_OperandImagePointer* exchanged = &copy;
            EXPECT_EQ(copy.imp_ImagePrepareFn(&exchanged, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0), 1U);
            ASSERT_NE(exchanged, &copy);
            GOP_OperandImagePointer second = *exchanged;
            uint8_t row[2] = {};
            int32_t returned = 0;
            EXPECT_EQ(
                second.imp_ImageReadFn(&second, second.imp_Context, 0, row, 2, 2, &returned, nullptr, 0, 0, nullptr),
                1U);
            EXPECT_EQ(second.imp_ImageFinishFn(&second, second.imp_Context), 1U);
        });
    client.forget();
    drawing.object_paint.fn(&drawing, 8, 0, nullptr, nullptr, 0, nullptr, fake.operand(), nullptr, nullptr);
    client.renderer.on_draw(nullptr);
    EXPECT_EQ(fake.take_calls() + other.take_calls(), "prepare(0,3,0) read finish ");
    const std::string log = client.log();
    EXPECT_NE(log.find("<GOP_ImageReadFn Id=\"11\" return=\"TRUE\" skip_pixels=\"0\""), std::string::npos) << log;
    EXPECT_NE(log.find("<GOP_ImageFinishFn Id=\"11\" return=\"TRUE\">\n    <GOP_OperandImagePointer Id=\"11\" "),
              std::string::npos)
        << log;
    shut_down();
}

TEST_F(KeptImageEnd, NegativeCountIsWarnedOfOnceForAnImage)
{
    fake.claim = -3;
    for (int image = 0; image < 2; ++image)
    {
        client.forget();
        client.renderer.on_draw(
            [&](const char*)
            {
                auto* record = reinterpret_cast<GOP_OperandImagePointer*>(client.renderer.last_operands[0]);
                uint8_t row[2] = {};
                int32_t returned = 0;
                for (int i = 0; i < 2; ++i)
                    record->imp_ImageReadFn(record, record->imp_Context, 0, row, 2, 2, &returned, nullptr, 0, 0,
                                            nullptr);
            });
        drawing.object_paint.fn(&drawing, 8, 0, nullptr, nullptr, 0, nullptr, fake.operand(), nullptr, nullptr);
        const std::string log = client.log();
        const std::string read = image == 0 ? "  <GOP_ImageReadFn Id=\"10\"" : "  <GOP_ImageReadFn Id=\"20\"";
        const std::string rest = " return=\"TRUE\" skip_pixels=\"0\" img_row_step=\"2\" img_returned=\"-3\">\n"
                                 "    <img_buf>\n    </img_buf>\n  </GOP_ImageReadFn>\n";
        const std::string expected = std::string(read).append(rest).append(
            "\n<!--\nORVLOG: WARNING: Image read returned a negative count.\n-->\n");
        EXPECT_NE(log.find(expected + read + rest + "  </ORV_object_paint>\n"), std::string::npos) << log;
    }
    client.renderer.on_draw(nullptr);
    shut_down();
}

}  // namespace
