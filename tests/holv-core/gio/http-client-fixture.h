// The system's HTTP client, with short limits, against a server of the test's own.

#pragma once

#include "holv-core/gio/gio-http-client.h"
#include "holv-core/gio/gio-url-stream.h"
#include "holv-core/gio/gio-url.h"
#include "tests/support/http-server.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <string>

namespace orvlog::test
{

// Lines that tell where they stand, long enough that no client has it all at once.
inline std::string many_lines(size_t count)
{
    std::string text;
    for (size_t i = 0; i < count; ++i)
        text += "line " + std::to_string(i) + " of the text\n";
    return text;
}

class HttpClient : public testing::Test
{
protected:
    HttpClient()
    {
        gio_InstallHttpClient();
        gio_SetHttpLimits(2000, 1000);
    }
    ~HttpClient() override
    {
        close();
        EXPECT_EQ(allocator_.outstanding(), 0U);
        gio_SetHttpLimits(0, 0);
        gio_SetHttpClient(nullptr);
    }
    int32_t open(const std::string& url)
    {
        close();
        const int32_t code =
            gio_OpenUrlOrPath(url.c_str(), GIO_PATH_URL, nullptr, GIO_PATH_URL, allocator_.get(), &stream_);
        ops_ = stream_ != nullptr ? stream_->ops : nullptr;
        c_ = stream_ != nullptr ? stream_->instance : nullptr;
        return code;
    }
    int32_t open_page(const std::string& page)
    {
        return open(server_.url(page));
    }
    void close()
    {
        const int32_t code = stream_ != nullptr ? ops_->gio_Close(c_) : 0;
        EXPECT_EQ(code, 0);
        stream_ = nullptr;
    }
    std::string read(uint64_t size)
    {
        std::string text(size, '\0');
        text.resize(ops_->gio_Read(text.data(), 1, size, c_));
        return text;
    }
    // Wine's client answers each change of position with 0 and stays where it is.
    bool can_seek()
    {
        EXPECT_EQ(open_page("/whole"), 0);
        const bool can = ops_->gio_Seek(c_, 5, GIO_SEEK_SET) == 0 && ops_->gio_Tell(c_) == 5;
        close();
        return can;
    }

    const std::string content_ = many_lines(20000);
    HttpServer server_{content_};
    TestAllocator allocator_;
    GIO_Stream* stream_ = nullptr;
    const GIO_StreamOps* ops_ = nullptr;
    void* c_ = nullptr;
};

}  // namespace orvlog::test
