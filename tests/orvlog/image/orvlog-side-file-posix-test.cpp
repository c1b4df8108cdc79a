// Side files that the system opens but cannot fill: a whole job, whose calls go on as ever.

#include "tests/support/fake-image.h"
#include "tests/support/temp-folder.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

namespace
{

using namespace orvlog::test;

TEST(SideFilePosix, WritesThatFailAreNotLookedAt)
{
    for (const bool direct : {false, true})
    {
        TempFolder folder;
        TestSession client(Behind::kRenderer, "s");
        client.set_base_mode();
        client.start_document();
        ORV_DrawingInterface drawing = {};
        client.start_face(&drawing);
        for (const char* name : {"s-img-10.bin", "s-dir-10.bin"})
            std::filesystem::create_symlink("/dev/full", name);
        // More than what the system's own buffer holds.
        FakeImage image(300, 300);
        if (direct)
            image.record.imp_DirectImage = image.bytes.data();
        EXPECT_EQ(
            drawing.object_paint.fn(&drawing, 8, 0, nullptr, nullptr, 0, nullptr, image.operand(), nullptr, nullptr),
            1U);
        EXPECT_NE(client.log().find(direct ? "\"s-dir-10.bin\"" : "\"s-img-10.bin\""), std::string::npos);
        drawing.drawing_finish.fn(&drawing);
        client.finish_document();
        EXPECT_EQ(client.shut_down(), 1U);
        EXPECT_EQ(client.allocator.outstanding(), 0U);
    }
}

}  // namespace
