// A small job from beginning to end through the three exports, with its whole log.

#include "tests/support/fake-identity.h"
#include "tests/support/fake-renderer.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"

#include "orvlog/interface/orvlog.h"

#include <gtest/gtest.h>

#include <cstdarg>

namespace
{

using namespace orvlog::test;

const char* const kExpected =
#include "tests/expected/whole-job.inc"
    ;

void comment(orvlog_comment_fn_type put, void* writer, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    put(writer, format, args);
    va_end(args);
}

TEST(WholeJob, IsWrittenToTheLastByte)
{
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    FakeRenderer renderer;
    ORV_Interface orv = {};
    orvlog_comment_fn_type put = nullptr;
    void* writer = nullptr;
    ASSERT_EQ(ORVLOG_DLL_initialise(&orv, renderer.get(), allocator.get(), identity.get(), 0, stream.get(), nullptr, 0,
                                    nullptr, nullptr, 0, &put, &writer),
              1U);
    comment(put, writer, "job %d of %s\n", 7, "two");

    void* document = nullptr;
    EXPECT_EQ(orv.document_start.fn(nullptr, &orv, &document, 7, nullptr, nullptr), 1U);
    const ORV_FaceProperties letter = {
        0, {{100.5, 0, 0, -100.25, 0.1, 1e300}}, 850, 1100, {0, 0, 8.5, 11}, {0.1, 0.2, 0.3, 0.7}, {8.5, 11}};
    ORV_DrawingInterface face = {};
    EXPECT_EQ(orv.face_start.fn(nullptr, &orv, document, &face, nullptr, 1, &letter, nullptr, 0, 0), 1U);
    EXPECT_EQ(face.object_paint.fn(&face, 4, 0, nullptr, nullptr, 0, nullptr, nullptr, nullptr, nullptr), 1U);
    EXPECT_EQ(face.drawing_finish.fn(&face), 1U);
    EXPECT_EQ(orv.document_finish.fn(&orv, document), 1U);
    EXPECT_EQ(ORVLOG_DLL_shutdown(orv.document_start.context), 1U);

    EXPECT_EQ(stream.text(), kExpected);
    EXPECT_EQ(renderer.count("object_paint"), 1U);
    EXPECT_FALSE(stream.closed());
}

}  // namespace
