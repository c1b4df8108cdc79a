// Every call of the list: it has a wrapper in the tables, the whole job makes it, and it reaches log and renderer.

#include "orvlog/interface/orvlog.h"
#include "tests/support/every-call.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace orvlog::test;

const std::vector<std::string> kCalls = {
#define ORV_DOCUMENT_CALL(name) #name,
#define ORV_DRAWING_CALL(name) #name,
#include "orvlog/names/calls.inc"
};

TEST(Calls, AreThoseOfTheTwoTables)
{
    const std::vector<std::string> calls = {
        "document_start",       "document_finish",       "resource_destroy",        "face_start",      "resource_start",
        "memory_context_start", "object_paint",          "object_paint_and_stroke", "group_start",     "group_finish",
        "resource_paint",       "drawing_error_context", "drawing_finish",          "drawing_discard",
    };
    EXPECT_EQ(kCalls, calls);
}

TEST(Calls, OfTheDocumentHaveTheSessionForTheirContext)
{
    TestSession test;
#define ORV_DOCUMENT_CALL(name)                                                                                        \
    EXPECT_NE(test.orv.name.fn, nullptr) << #name;                                                                     \
    EXPECT_EQ(test.orv.name.context, test.session()) << #name;
#define ORV_DRAWING_CALL(name)
#include "orvlog/names/calls.inc"
}

TEST(Calls, OfADrawingHaveOneContextOfTheirOwn)
{
    TestSession test;
    void* document = nullptr;
    ORV_DrawingInterface face = {};
    test.orv.document_start.fn(nullptr, &test.orv, &document, 1, nullptr, nullptr);
    test.orv.face_start.fn(nullptr, &test.orv, document, &face, nullptr, 1, nullptr, nullptr, 0, 0);
#define ORV_DOCUMENT_CALL(name)
#define ORV_DRAWING_CALL(name)                                                                                         \
    EXPECT_NE(face.name.fn, nullptr) << #name;                                                                         \
    EXPECT_NE(face.name.context, nullptr) << #name;                                                                    \
    EXPECT_EQ(face.name.context, face.object_paint.context) << #name;
#include "orvlog/names/calls.inc"
}

TEST(Calls, AreAllMadeByTheWholeJobAndReachLogAndRenderer)
{
    EveryCall job;
    TestSession test;
    job.run(&test.orv);
    for (const std::string& call : kCalls)
    {
        // The logger answers this one by itself.
        const bool silent = call == "drawing_error_context";
        EXPECT_EQ(test.renderer.count(call) > 0, !silent) << call;
        EXPECT_EQ(test.log().find("<ORV_" + call + " ") != std::string::npos, !silent) << call;
    }
}

// Each drawing call on a table that is none gives 0, and nothing of it is looked at.
TEST(Calls, WithoutAContextGiveZero)
{
    TestSession test;
    ORV_Interface empty = test.orv;
    empty.document_start.context = nullptr;
    empty.document_finish.context = nullptr;
    empty.resource_destroy.context = nullptr;
    void* document = nullptr;
    EXPECT_EQ(empty.document_start.fn(nullptr, &empty, &document, 1, nullptr, nullptr), 0U);
    EXPECT_EQ(empty.document_start.fn(nullptr, nullptr, &document, 1, nullptr, nullptr), 0U);
    EXPECT_EQ(empty.document_finish.fn(&empty, nullptr), 0U);
    EXPECT_EQ(empty.resource_destroy.fn(nullptr, &empty, nullptr, nullptr, 0), 0U);
    EXPECT_TRUE(test.renderer.calls().empty());
}

}  // namespace
