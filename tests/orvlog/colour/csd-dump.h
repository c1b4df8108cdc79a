// A colour space definition, and what is written of it and of what it refers to.

#pragma once

#include "orvlog/colour/gcm-csd-dump.h"

#include "tests/support/guarded-block.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <string>

namespace orvlog::test
{

class CsdDump : public testing::Test
{
protected:
    CsdDump()
    {
        orvlog_writer_init(&writer, allocator.get(), stream.get(), 0, 0);
        pointer.cp_Csd = &csd;
    }

    std::string dump()
    {
        // The records lie at the end of a page, so that a read behind them is a fault.
        GuardedBlock csd_block(&csd, sizeof csd);
        GCM_CsdPointer copy = pointer;
        copy.cp_Csd = csd_block.as<GCM_Csd>();
        GuardedBlock block(&copy, sizeof copy);
        stream.clear();
        ORVLOG_DumpCsdPointer(&writer, block.as<GCM_CsdPointer>());
        EXPECT_EQ(writer.depth, 0u);
        EXPECT_EQ(writer.element_open, 0u);
        EXPECT_EQ(writer.warnings, nullptr);
        return stream.text();
    }

    TestAllocator allocator;
    MemoryStream stream;
    ORVLOG_Writer writer;
    GCM_Csd csd = {};
    GCM_CsdPointer pointer = {};
};

}  // namespace orvlog::test
