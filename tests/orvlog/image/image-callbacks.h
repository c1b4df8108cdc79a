// An image that is wrapped, and its callbacks as a renderer calls them.

#pragma once

#include "orvlog/image/orvlog-image-callbacks.h"
#include "orvlog/image/orvlog-image-wrapper.h"

#include "tests/support/fake-image.h"
#include "tests/support/record-log.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>

#include <cstring>

namespace orvlog::test
{

class Callbacks : public testing::Test
{
protected:
    Callbacks()
    {
        for (uint8_t i = 0; i < 16; ++i)
            log.session.session_id[i] = i;
    }
    ~Callbacks() override
    {
        if (record != nullptr)
            ORVLOG_EndImageCall(record, kept);
    }
    void wrap()
    {
        GOP_OperandPointer* operand = fake.operand();
        ORVLOG_ReplaceImageOperand(&log.session, &operand, &kept);
        ASSERT_NE(operand, fake.operand());
        record = reinterpret_cast<GOP_OperandImagePointer*>(operand);
    }
    void use_files(const char* prefix)
    {
        log.session.image.has_file_prefix = 1;
        std::strcpy(log.session.image.file_prefix, prefix);
    }
    uint32_t prepare(uint32_t object_type = 0, uint32_t decompress = 0, uint32_t rescale = 0, uint32_t depth = 3)
    {
        return record->imp_ImagePrepareFn(&record, object_type, decompress, rescale, 1, 0.5F, 0.25F, 0.1F, 1, depth, 0);
    }
    uint32_t read(bool with_attr = false)
    {
        return record->imp_ImageReadFn(record, record->imp_Context, 0, image_buffer.data(), 2, 2, &img_returned,
                                       with_attr ? attr_buffer.data() : nullptr, 2, -2, &attr_returned);
    }
    uint32_t finish()
    {
        return record->imp_ImageFinishFn(record, record->imp_Context);
    }

    TempFolder folder;
    RecordLog log;
    FakeImage fake{2, 2};
    uint32_t kept = 7;
    GOP_OperandImagePointer* record = nullptr;
    GuardedBlock image_buffer{2};
    GuardedBlock attr_buffer{2};
    int32_t img_returned = -1;
    int32_t attr_returned = -1;
};

}  // namespace orvlog::test
