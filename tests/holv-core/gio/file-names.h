// Files that tests of names open: made for a test, removed behind it.

#pragma once

#include "holv-core/gio/gio-file.h"
#include "holv-core/gio/gio-url-stream.h"
#include "holv-core/gio/gio-url.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace orvlog::test
{

// Where a name leads, seen by the file that it opens.
class FileNames : public testing::Test
{
protected:
    void make(const std::string& name)
    {
        GIO_Stream* stream = nullptr;
        ASSERT_EQ(gio_OpenFile(name.c_str(), GIO_OPEN_WRITE, 0, allocator_.get(), &stream), 0) << name;
        EXPECT_EQ(stream->ops->gio_Write("found\n", 1, 6, stream->instance), 6U);
        stream->ops->gio_Close(stream->instance);
        made_.push_back(name);
    }
    void expect_found(const std::string& url, const char* base = nullptr, uint32_t kind = GIO_PATH_URL)
    {
        GIO_Stream* stream = nullptr;
        ASSERT_EQ(gio_OpenUrlOrPath(url.c_str(), kind, base, GIO_PATH_URL, allocator_.get(), &stream), 0) << url;
        char buffer[16] = {};
        EXPECT_EQ(stream->ops->gio_Read(buffer, 1, 16, stream->instance), 6U);
        EXPECT_STREQ(buffer, "found\n");
        EXPECT_EQ(stream->ops->gio_Close(stream->instance), 0);
        EXPECT_EQ(allocator_.outstanding(), 0U);
    }
    ~FileNames() override
    {
        for (const std::string& name : made_)
            std::remove(name.c_str());
    }

    TestAllocator allocator_;
    std::vector<std::string> made_;
};

}  // namespace orvlog::test
