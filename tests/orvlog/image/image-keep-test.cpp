// Images that are kept: a file of their own, and when they are given back.

#include "tests/orvlog/image/image-callbacks.h"

#include "tests/support/decode-text.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace orvlog::test;

class Kept : public Callbacks
{
protected:
    Kept()
    {
        fake.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
    }
    static constexpr const char* kName = "orvlog-0f0e0d0c-0b0a0908-07060504-03020100-async-image-0000000011.tmp";
};

TEST_F(Kept, KeepTurnsToAFileOfItsOwn)
{
    wrap();
    log.session.image_sequence[1] = 999;
    EXPECT_EQ(record->imp_ImageKeepFn(record), 1U);
    EXPECT_EQ(kept, 1U);
    EXPECT_EQ(log.session.merge_mode, 1U);
    EXPECT_EQ(fake.take_calls(), "keep ");
    EXPECT_EQ(log.take(), R"(<GOP_ImageKeepFn Id="10" async_img_log_file_name="orvlog-0f0e0d0c-0b0a0908-07060504-)"
                          R"(03020100-async-image-0000000011.tmp" return="TRUE">
</GOP_ImageKeepFn>
)");
    ORVLOG_EndImageCall(record, kept);
    read();
    finish();
    EXPECT_EQ(log.take(), "");
    EXPECT_EQ(record->imp_ImageReleaseFn(record), log.allocator.get());
    record = nullptr;
    EXPECT_EQ(fake.take_calls(), "read finish release ");
    EXPECT_EQ(log.allocator.outstanding(), 0U);
    EXPECT_EQ(log.take(), "");
    const std::string text = folder.read(kName);
    EXPECT_TRUE(text.starts_with("<GOP_ImageReadFn Id=\"10\" return=\"TRUE\" ")) << text;
    EXPECT_NE(text.find("01 02 "), std::string::npos);
    EXPECT_TRUE(text.find("</GOP_ImageFinishFn>") < text.find("<GOP_ImageReleaseFn Id=\"10\">"));
    EXPECT_NE(text.find("</GOP_ImageReleaseFn>"), std::string::npos);
}

TEST_F(Kept, KeepThatTheClientRefusesIsLogged)
{
    wrap();
    fake.keep_result = 0;
    EXPECT_EQ(record->imp_ImageKeepFn(record), 0U);
    EXPECT_EQ(log.take_value("return"), "FALSE");
    EXPECT_EQ(kept, 1U);
    record->imp_ImageReleaseFn(record);
}

TEST_F(Kept, KeepWithoutAFileFailsUntold)
{
    wrap();
    std::filesystem::create_directory(kName);
    EXPECT_EQ(record->imp_ImageKeepFn(record), 0U);
    EXPECT_EQ(fake.take_calls(), "");
    EXPECT_EQ(kept, 0U);
    EXPECT_EQ(log.session.merge_mode, 0U);
    EXPECT_EQ(log.take(), "");
}

TEST_F(Kept, SharesTheCoderOfTheSession)
{
    AdaptiveHuffmanCoder* coder = AHC_EncoderCreate(log.allocator.get());
    ASSERT_NE(coder, nullptr);
    log.session.writer.coder = coder;
    log.session.writer.compress = 1;
    wrap();
    record->imp_ImageKeepFn(record);
    ORVLOG_EndImageCall(record, kept);
    const uint64_t size_before = log.stream.text().size();
    record->imp_ImageReleaseFn(record);
    record = nullptr;
    EXPECT_EQ(log.stream.text().size(), size_before);
    log.session.writer.coder = nullptr;
    const std::string bits = log.take() + folder.read(kName) + static_cast<char>(AHC_EncoderFinish(coder));
    EXPECT_EQ(decode_lines(bits),
              "<GOP_ImageKeepFn Id=\"10\" async_img_log_file_name=\"orvlog-0f0e0d0c-0b0a0908-07060504-"
              "03020100-async-image-0000000011.tmp\" return=\"TRUE\">\n</GOP_ImageKeepFn>\n"
              "<GOP_ImageReleaseFn Id=\"10\">\n</GOP_ImageReleaseFn>\n");
}

TEST_F(Kept, KeptImageHasItsOwnParameters)
{
    use_files("side");
    wrap();
    record->imp_ImageKeepFn(record);
    ORVLOG_EndImageCall(record, kept);
    log.take();
    std::memset(&log.session.image, 0xEE, sizeof log.session.image);
    log.session.writer.stream = nullptr;
    read();
    finish();
    record->imp_ImageReleaseFn(record);
    record = nullptr;
    EXPECT_EQ(folder.read("side-img-10.bin"), "\x01\x02");
}

TEST_F(Kept, KeepingTwiceOpensOneFile)
{
    wrap();
    record->imp_ImageKeepFn(record);
    log.take();
    EXPECT_EQ(record->imp_ImageKeepFn(record), 1U);
    record->imp_ImageReleaseFn(record);
    ORVLOG_EndImageCall(record, kept);
    record = nullptr;
    EXPECT_EQ(folder.names(), (std::vector<std::string>{kName}));
    EXPECT_NE(folder.read(kName).find("<GOP_ImageKeepFn Id=\"10\" return=\"TRUE\">"), std::string::npos);
    EXPECT_EQ(fake.take_calls(), "keep keep release ");
}

// The element that names the image's log must be where a merge looks for it.
TEST_F(Kept, KeptAgainFromWithinTheKeepIsNamedInTheLog)
{
    wrap();
    bool within = false;
    fake.on_call = [&]
    {
        if (!std::exchange(within, true))
            record->imp_ImageKeepFn(record);
    };
    EXPECT_EQ(record->imp_ImageKeepFn(record), 1U);
    EXPECT_EQ(fake.take_calls(), "keep keep ");
    EXPECT_EQ(log.take(), R"(<GOP_ImageKeepFn Id="10" async_img_log_file_name="orvlog-0f0e0d0c-0b0a0908-07060504-)"
                          R"(03020100-async-image-0000000011.tmp" return="TRUE">
</GOP_ImageKeepFn>
)");
    ORVLOG_EndImageCall(record, kept);
    record->imp_ImageReleaseFn(record);
    record = nullptr;
    std::string text = folder.read(kName);
    std::erase(text, '\r');
    EXPECT_EQ(text, R"(<GOP_ImageKeepFn Id="10" return="TRUE">
</GOP_ImageKeepFn>
<GOP_ImageReleaseFn Id="10">
</GOP_ImageReleaseFn>
)");
}

TEST_F(Kept, ReleaseWithinTheCallWaitsForItsEnd)
{
    wrap();
    record->imp_ImageKeepFn(record);
    EXPECT_EQ(record->imp_ImageReleaseFn(record), nullptr);
    EXPECT_EQ(record->imp_ImageReleaseFn(record), nullptr);
    EXPECT_EQ(fake.take_calls(), "keep release ");
    EXPECT_GT(log.allocator.outstanding(), 0U);
    ORVLOG_EndImageCall(record, kept);
    record = nullptr;
    EXPECT_EQ(log.allocator.outstanding(), 0U);
}

TEST_F(Kept, ReleaseWithoutAKeepLeavesTheLogOpen)
{
    wrap();
    EXPECT_EQ(record->imp_ImageReleaseFn(record), nullptr);
    EXPECT_EQ(log.take(), "<GOP_ImageReleaseFn Id=\"10\">\n</GOP_ImageReleaseFn>\n");
    EXPECT_FALSE(log.stream.closed());
    ORVLOG_EndImageCall(record, kept);
    record = nullptr;
    EXPECT_EQ(log.allocator.outstanding(), 0U);
}

}  // namespace
