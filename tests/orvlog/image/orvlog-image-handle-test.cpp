#include "orvlog/image/orvlog-image-handle.h"

#include "orvlog/image/orvlog-image-wrapper.h"
#include "tests/support/fake-image.h"
#include "tests/support/record-log.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace
{

using namespace orvlog::test;

TEST(ImageHandles, FindsWhatHasBeenEnteredAndNotLeft)
{
    std::vector<ORVLOG_ImageHandle> handles(3000);
    EXPECT_EQ(orvlog_image_handle_find(nullptr), nullptr);
    for (ORVLOG_ImageHandle& handle : handles)
    {
        EXPECT_EQ(orvlog_image_handle_find(&handle.record), nullptr);
        orvlog_image_handle_enter(&handle);
    }
    for (size_t i = 0; i < handles.size(); i += 2)
        orvlog_image_handle_leave(&handles[i]);
    for (size_t i = 0; i < handles.size(); ++i)
        EXPECT_EQ(orvlog_image_handle_find(&handles[i].record), i % 2 == 0 ? nullptr : &handles[i]);
    for (const ORVLOG_ImageHandle& handle : handles)
        orvlog_image_handle_leave(&handle);
    for (const ORVLOG_ImageHandle& handle : handles)
        EXPECT_EQ(orvlog_image_handle_find(&handle.record), nullptr);
}

TEST(ImageHandles, RecordIsNotReadToBeFound)
{
    EXPECT_EQ(orvlog_image_handle_find(reinterpret_cast<GOP_OperandImagePointer*>(uintptr_t{16})), nullptr);
    EXPECT_EQ(orvlog_image_wrapper_of(reinterpret_cast<GOP_OperandImagePointer*>(UINTPTR_MAX - 15)), nullptr);
}

// Sessions share the list of handles, and nothing else.
TEST(ImageHandles, SessionsInSeveralThreads)
{
    const auto work = [](uint32_t* failed)
    {
        RecordLog log;
        FakeImage fake(2, 2);
        for (int i = 0; i < 2000; ++i)
        {
            uint32_t kept = 0;
            GOP_OperandPointer* operand = fake.operand();
            ORVLOG_ReplaceImageOperand(&log.session, &operand, &kept);
            auto* record = reinterpret_cast<GOP_OperandImagePointer*>(operand);
            const ORVLOG_ImageWrapper* wrapper = orvlog_image_wrapper_of(record);
            if (wrapper == nullptr || wrapper->client_record != fake.get() ||
                record->imp_ImageFinishFn(record, record->imp_Context) != 1)
                ++*failed;
            ORVLOG_EndImageCall(record, kept);
        }
    };
    uint32_t failed[4] = {};
    std::vector<std::thread> threads;
    for (uint32_t& count : failed)
        threads.emplace_back(work, &count);
    for (std::thread& thread : threads)
        thread.join();
    for (const uint32_t count : failed)
        EXPECT_EQ(count, 0U);
}

}  // namespace
