// What a call has written by the time it is passed on, and what calls make of arguments that cannot be.

#include "orvlog/interface/orvlog-session-options.h"
#include "tests/support/fake-font-engine.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <string>
#include <vector>

namespace
{

using namespace orvlog::test;

// What the log held when each call reached a receiver.
class Order : public testing::Test
{
protected:
    Order()
    {
        test.renderer.on_draw([&](const char* call) { note("renderer", call); });
        second.on_draw([&](const char* call) { note("second", call); });
    }
    void note(const char* receiver, const char* call)
    {
        const std::string log = test.log();
        const std::string tag = std::string("</ORV_") + call + ">\n";
        const bool closed = log.size() >= tag.size() && log.compare(log.size() - tag.size(), tag.size(), tag) == 0;
        seen.push_back(std::string(receiver) + " " + call + (closed ? " closed" : log.empty() ? " nothing" : " open"));
        EXPECT_EQ(test.stream.unflushed(), 0U) << call;
    }
    uint32_t start_memory(ORV_DrawingInterface* drawing)
    {
        return test.orv.memory_context_start.fn(nullptr, &test.orv, test.document, drawing, 0, 0, 0, 0, 0, nullptr,
                                                nullptr, 0, 0, 0, 0, 0, 0);
    }
    uint32_t start_resource(ORV_DrawingInterface* drawing, uint32_t* id)
    {
        return test.orv.resource_start.fn(nullptr, &test.orv, test.document, drawing, nullptr, nullptr, nullptr,
                                          nullptr, id);
    }

    TestSession test;
    FakeRenderer second{"second"};
    std::vector<std::string> seen;
};

TEST_F(Order, DocumentCallsAreClosedBeforeTheyArePassedOn)
{
    ORV_DrawingInterface face = {};
    ORV_DrawingInterface resource = {};
    ORV_DrawingInterface memory = {};
    uint32_t id = 0;
    test.start_document();
    start_memory(&memory);
    memory.drawing_finish.fn(&memory);
    test.set_second(second.get());
    start_resource(&resource, &id);
    test.start_face(&face);
    face.drawing_discard.fn(&face);
    test.orv.resource_destroy.fn(nullptr, &test.orv, test.document, nullptr, id);
    test.finish_document();
    const std::vector<std::string> expected = {
        "renderer document_start closed",   "renderer memory_context_start closed",
        "renderer drawing_finish closed",   "renderer resource_start closed",
        "second face_start closed",         "renderer face_start closed",
        "second drawing_discard closed",    "renderer drawing_discard closed",
        "renderer resource_destroy closed", "second document_finish closed",
        "renderer document_finish closed",
    };
    EXPECT_EQ(seen, expected);
}

TEST_F(Order, DrawingCallsAreOpenWhileTheyArePassedOnAndTheEndOfAGroupIsNotYetLogged)
{
    ORV_DrawingInterface face = {};
    ORV_DrawingInterface resource = {};
    uint32_t id = 0;
    uint32_t replay = 0;
    test.start_document();
    start_resource(&resource, &id);
    test.start_face(&face);
    seen.clear();
    test.forget();
    face.object_paint.fn(&face, 0, 0, nullptr, nullptr, 0, nullptr, nullptr, nullptr, nullptr);
    face.object_paint_and_stroke.fn(&face, 0, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, 0, nullptr, 3, nullptr,
                                    nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    face.resource_paint.fn(&face, id, 0, 0, nullptr, nullptr, nullptr, nullptr, 0, 0, 0, nullptr, nullptr, 0);
    face.group_start.fn(&face, 1, nullptr, nullptr, 0, 0, 0, 0, nullptr, 0, 0, 0, nullptr, nullptr, nullptr, nullptr, 0,
                        0, 0, nullptr, nullptr, nullptr);
    test.forget();
    face.group_finish.fn(&face, &replay);
    const std::vector<std::string> expected = {
        "renderer object_paint open", "renderer object_paint_and_stroke open", "renderer resource_paint open",
        "renderer group_start open",  "renderer group_finish nothing",
    };
    EXPECT_EQ(seen, expected);
}

TEST_F(Order, DocumentsThatHaveEndedAreNotNamed)
{
    ORV_DrawingInterface face = {};
    test.start_document();
    void* ended = test.document;
    test.finish_document();
    test.start_document();
    void* other = test.document;
    test.finish_document();
    test.forget();
    EXPECT_EQ(test.orv.document_finish.fn(&test.orv, ended), 1U);
    EXPECT_EQ(test.orv.document_finish.fn(&test.orv, &face), 1U);
    EXPECT_EQ(test.orv.document_finish.fn(&test.orv, nullptr), 1U);
    EXPECT_EQ(test.log(), "  <ORV_document_finish>\n  </ORV_document_finish>\n"
                          "  <ORV_document_finish>\n  </ORV_document_finish>\n"
                          "  <ORV_document_finish>\n  </ORV_document_finish>\n");
    test.forget();
    EXPECT_EQ(test.orv.resource_destroy.fn(nullptr, &test.orv, other, nullptr, 3), 0U);
    EXPECT_EQ(test.log(), "  <ORV_resource_destroy resource_id=\"3\">\n  </ORV_resource_destroy>\n");
    test.shut_down();
    EXPECT_EQ(test.allocator.bad_frees(), 0U);
    EXPECT_EQ(test.allocator.outstanding(), 0U);
}

TEST_F(Order, ParentsThatHaveEndedOrAreAnothersAreNotNamed)
{
    ORV_DrawingInterface face = {};
    ORV_DrawingInterface foreign = {};
    int another = 0;
    foreign.object_paint.context = &another;
    test.start_document();
    test.start_face(&face);
    face.drawing_finish.fn(&face);
    test.forget();
    EXPECT_EQ(test.orv.resource_destroy.fn(nullptr, &test.orv, test.document, &face, 3), 0U);
    EXPECT_EQ(test.orv.resource_destroy.fn(nullptr, &test.orv, test.document, &foreign, 3), 0U);
    EXPECT_EQ(test.log(), "  <ORV_resource_destroy document_context=\"0\" resource_id=\"3\">\n"
                          "  </ORV_resource_destroy>\n"
                          "  <ORV_resource_destroy document_context=\"0\" resource_id=\"3\">\n"
                          "  </ORV_resource_destroy>\n");
}

TEST_F(Order, CallsWithoutATableGiveZero)
{
    ORV_DrawingInterface face = {};
    ORV_DrawingInterface out = {};
    void* document = nullptr;
    uint32_t word = 0;
    test.start_document();
    test.start_face(&face);
    test.forget();
    ORV_Interface empty = test.orv;
    empty.document_start.context = nullptr;
    const ORV_Interface& orv = test.orv;
    EXPECT_EQ(orv.document_start.fn(nullptr, &empty, &document, 1, nullptr, nullptr), 0U);
    EXPECT_EQ(orv.document_start.fn(nullptr, nullptr, &document, 1, nullptr, nullptr), 0U);
    EXPECT_EQ(orv.document_finish.fn(nullptr, test.document), 0U);
    EXPECT_EQ(orv.resource_destroy.fn(nullptr, nullptr, test.document, nullptr, 0), 0U);
    EXPECT_EQ(orv.face_start.fn(nullptr, nullptr, test.document, &out, nullptr, 0, nullptr, nullptr, 0, 0), 0U);
    EXPECT_EQ(orv.resource_start.fn(nullptr, nullptr, test.document, &out, nullptr, nullptr, nullptr, nullptr, &word),
              0U);
    EXPECT_EQ(orv.memory_context_start.fn(nullptr, nullptr, test.document, &out, 0, 0, 0, 0, 0, nullptr, nullptr, 0, 0,
                                          0, 0, 0, 0),
              0U);
    EXPECT_EQ(face.object_paint.fn(nullptr, 0, 0, nullptr, nullptr, 0, nullptr, nullptr, nullptr, nullptr), 0U);
    EXPECT_EQ(face.object_paint_and_stroke.fn(nullptr, 0, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, 0, nullptr,
                                              3, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              0U);
    EXPECT_EQ(face.group_start.fn(nullptr, 1, nullptr, nullptr, 0, 0, 0, 0, nullptr, 0, 0, 0, nullptr, nullptr, nullptr,
                                  nullptr, 0, 0, 0, nullptr, nullptr, nullptr),
              0U);
    EXPECT_EQ(face.group_finish.fn(nullptr, &word), 0U);
    EXPECT_EQ(
        face.resource_paint.fn(nullptr, 0, 0, 0, nullptr, nullptr, nullptr, nullptr, 0, 0, 0, nullptr, nullptr, 0), 0U);
    EXPECT_EQ(face.drawing_error_context.fn(nullptr), nullptr);
    EXPECT_EQ(face.drawing_finish.fn(nullptr), 0U);
    EXPECT_EQ(face.drawing_discard.fn(nullptr), 0U);
    EXPECT_EQ(test.log(), "");
    EXPECT_EQ(document, nullptr);
}

TEST(Entry, ATableCannotStandBehindItself)
{
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    FakeRenderer renderer;
    ORV_Interface table = *renderer.get();
    EXPECT_EQ(ORVLOG_DLL_initialise(&table, &table, allocator.get(), identity.get(), 0, stream.get(), nullptr, 0,
                                    nullptr, nullptr, 0, nullptr, nullptr),
              0U);
    EXPECT_EQ(allocator.requests(), 0U);
    EXPECT_EQ(table.document_start.fn, renderer.get()->document_start.fn);
}

int32_t say(orvlog_comment_fn_type comment, void* context, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int32_t length = comment(context, format, args);
    va_end(args);
    return length;
}

TEST(Entry, CommentOfNothingIsRefused)
{
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    ORV_Interface orv = {};
    orvlog_comment_fn_type comment = nullptr;
    void* context = nullptr;
    ASSERT_NE(ORVLOG_DLL_initialise(&orv, nullptr, allocator.get(), identity.get(), 0, stream.get(), nullptr, 0,
                                    nullptr, nullptr, 0, &comment, &context),
              0U);
    stream.clear();
    EXPECT_EQ(say(comment, nullptr, "%s", "x"), -1);
    EXPECT_EQ(say(comment, context, nullptr), -1);
    EXPECT_EQ(stream.text(), "");
    ORVLOG_DLL_shutdown(orv.document_start.context);
}

}  // namespace
