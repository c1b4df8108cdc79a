// Four sessions in four threads, each with every call and with images that are pulled, kept, exchanged, refused and
// released behind their session. The thread sanitizer watches: sessions share nothing that one of them writes to.

#include "orvlog/session/orvlog-session.h"
#include "tests/support/every-call.h"
#include "tests/support/fake-image.h"
#include "tests/support/fake-renderer.h"
#include "tests/support/memory-stream.h"
#include "tests/support/temp-folder.h"
#include "tests/support/test-allocator.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <thread>

namespace
{

using namespace orvlog::test;

constexpr uint32_t kThreads = 4;
constexpr uint32_t kRounds = 25;

// Names the logs of kept images apart.
struct NumberedIdentity
{
    explicit NumberedIdentity(uint8_t number) : object{{&table}, number}
    {
        table.orvlog_get_session_id = [](ORVLOG_IdentityObject* self, uint8_t* session_id) -> uint32_t
        {
            std::memset(session_id, reinterpret_cast<Object*>(self)->number, 16);
            return 1;
        };
    }

    struct Object
    {
        ORVLOG_IdentityObject base;
        uint8_t number;
    };
    ORVLOG_IdentityTable table = {};
    Object object;
    ORVLOG_IdentitySource source = {&object.base};
};

void pull(GOP_OperandImagePointer* record)
{
    record->imp_ImagePrepareFn(&record, GCM_OBJ_IMAGE, 0, 0, 0, 0, 0, 0, 0, GNC_BMP_DEPTH_8, 0);
    uint8_t row[2];
    int32_t returned = 1;
    for (int i = 0; i < 4 && returned > 0; ++i)
        record->imp_ImageReadFn(record, record->imp_Context, 0, row, 2, 2, &returned, nullptr, 0, 0, nullptr);
    record->imp_ImageResetFn(record, record->imp_Context);
    record->imp_ImageFinishFn(record, record->imp_Context);
}

class Job
{
public:
    Job(uint8_t number, std::string prefix) : identity_(number), prefix_(std::move(prefix))
    {
        image_.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
        other_.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
    }
    // The log, or what went wrong.
    std::string run(bool base)
    {
        ORV_Interface orv = {};
        if (ORVLOG_DLL_initialise(&orv, renderer_.get(), allocator_.get(), &identity_.source, 0, stream_.get(),
                                  base ? prefix_.c_str() : nullptr, 0, calls_.ticket_functions(),
                                  calls_.ticket_serial_functions(), 0, nullptr, nullptr) == 0)
            return "not initialised";
        const ORVLOG_Params params = {nullptr, 0, base ? 0U : 1U};
        ORVLOG_DLL_set_parameters(orv.document_start.context, &params);
        calls_.run(&orv);
        paint_images(&orv);
        if (ORVLOG_DLL_shutdown(orv.document_start.context) != 1)
            return "not shut down";
        pull(late_);
        late_->imp_ImageReleaseFn(late_);
        if (allocator_.outstanding() != 0)
            return "memory is left";
        std::string log = stream_.text();
        stream_.clear();
        return log;
    }

private:
    void paint_images(ORV_Interface* orv)
    {
        void* document = nullptr;
        ORV_DrawingInterface drawing = {};
        const ORV_FaceProperties face = letter_face();
        orv->document_start.fn(nullptr, orv, &document, 7, nullptr, nullptr);
        orv->face_start.fn(nullptr, orv, document, &drawing, nullptr, 1, &face, nullptr, 0, 0);
        for (image_.keep_result = 0; image_.keep_result < 2; ++image_.keep_result)
        {
            GOP_OperandImagePointer* kept = paint(&drawing);
            pull(kept);
            kept->imp_ImageReleaseFn(kept);
            kept->imp_ImageReleaseFn(kept);
        }
        image_.replacement = other_.get();
        GOP_OperandImagePointer copy = *paint(&drawing);
        copy.imp_ImageReleaseFn(&copy);
        image_.replacement = nullptr;
        late_ = paint(&drawing);
        drawing.drawing_finish.fn(&drawing);
        orv->document_finish.fn(orv, document);
    }
    GOP_OperandImagePointer* paint(ORV_DrawingInterface* drawing)
    {
        GOP_OperandImagePointer* seen = nullptr;
        renderer_.on_draw(
            [&](const char*)
            {
                seen = reinterpret_cast<GOP_OperandImagePointer*>(renderer_.last_operands[0]);
                pull(seen);
                seen->imp_ImageKeepFn(seen);
            });
        drawing->object_paint.fn(drawing, 8, 0, nullptr, nullptr, 0, nullptr, image_.operand(), nullptr, nullptr);
        renderer_.on_draw(nullptr);
        return seen;
    }

    NumberedIdentity identity_;
    std::string prefix_;
    TestAllocator allocator_;
    MemoryStream stream_;
    FakeRenderer renderer_;
    EveryCall calls_;
    FakeImage image_{2, 2};
    FakeImage other_{2, 2};
    GOP_OperandImagePointer* late_ = nullptr;
};

// The fakes are made ahead of the threads, which begin together: the first thing that they do is to initialise.
TEST(SessionsInThreads, ShareNothing)
{
    const TempFolder folder;
    std::vector<std::unique_ptr<Job>> jobs;
    for (uint32_t number = 0; number < kThreads; ++number)
        jobs.push_back(std::make_unique<Job>(static_cast<uint8_t>(number + 1), "side" + std::to_string(number)));
    std::vector<std::string> logs[kThreads];
    std::atomic<uint32_t> ready = 0;
    std::vector<std::thread> threads;
    for (uint32_t number = 0; number < kThreads; ++number)
        threads.emplace_back(
            [&, number]
            {
                ++ready;
                while (ready != kThreads)
                    std::this_thread::yield();
                for (uint32_t round = 0; round < kRounds; ++round)
                    logs[number].push_back(jobs[number]->run(round % 2 == 0));
            });
    for (std::thread& thread : threads)
        thread.join();
    for (uint32_t round = 0; round < kRounds; ++round)
        for (uint32_t number = 0; number < kThreads; ++number)
        {
            EXPECT_TRUE(logs[number][round].starts_with("<ORV ")) << logs[number][round];
            EXPECT_EQ(logs[number][round].size(), logs[0][round].size());
        }
}

TEST(SessionsInThreads, StandaloneSessionIsFoundByAll)
{
    std::atomic<uint32_t> ready = 0;
    ORVLOG_Session* found[kThreads] = {};
    GIO_Stream* streams[kThreads] = {};
    std::vector<std::thread> threads;
    for (uint32_t number = 0; number < kThreads; ++number)
        threads.emplace_back(
            [&, number]
            {
                ++ready;
                while (ready != kThreads)
                    std::this_thread::yield();
                found[number] = orvlog_standalone_session();
                streams[number] = found[number]->writer.stream;
            });
    for (std::thread& thread : threads)
        thread.join();
    for (uint32_t number = 0; number < kThreads; ++number)
    {
        EXPECT_EQ(found[number], found[0]);
        EXPECT_EQ(streams[number], streams[0]);
        EXPECT_NE(streams[number], nullptr);
    }
}

}  // namespace
