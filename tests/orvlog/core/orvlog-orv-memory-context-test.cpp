// ORV_memory_context_start.

#include "orvlog/session/orvlog-frames.h"
#include "tests/orvlog/core/face-fixture.h"
#include "tests/support/fake-font-engine.h"
#include "tests/support/fake-tickets.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

class MemoryContext : public Face
{
protected:
    uint32_t start(void* document)
    {
        return test.orv.memory_context_start.fn(&error_object, &test.orv, document, &face, 1, 2, 3, 4, 5, nullptr,
                                                &ticket_object, 8, 9, 10, 11, 12, 13);
    }
};

TEST_F(MemoryContext, LogsOnlyThatItBeganWithAWarningAheadOfTheElement)
{
    EXPECT_EQ(start(test.document), 1U);
    EXPECT_EQ(test.log(), "\n<!--\nORVLOG: WARNING: ORV_memory_context_start parameters are not logged\n-->\n"
                          "  <ORV_memory_context_start document_context=\"0\" drawing_context=\"0\">\n"
                          "  </ORV_memory_context_start>\n");
    EXPECT_EQ(drawing_of(face)->kind, 3U);
    for (const double value : drawing_of(face)->base_transform.m)
        EXPECT_EQ(value, 0);
    test.forget();
    start(test.document);
    EXPECT_EQ(test.log(), "\n<!--\nORVLOG: WARNING: ORV_memory_context_start parameters are not logged\n-->\n"
                          "  <ORV_memory_context_start document_context=\"0\" drawing_context=\"1\">\n"
                          "  </ORV_memory_context_start>\n");
}

TEST_F(MemoryContext, ForwardsItsWords)
{
    start(test.document);
    EXPECT_EQ(test.renderer.last(), "memory_context_start err=" + number(&error_object) + " own-document");
    const uintptr_t words[] = {1, 2, 3, 4, 5, 0, 0, 8, 9, 10, 11, 12, 13};
    for (int i = 0; i < 13; ++i)
        EXPECT_EQ(test.renderer.last_words[i], words[i]) << i;
    EXPECT_EQ(test.renderer.last_ticket, &ticket_object);
}

TEST_F(MemoryContext, WithoutDocumentHasNoDocumentAttribute)
{
    start(nullptr);
    EXPECT_NE(test.log().find("  <ORV_memory_context_start drawing_context=\"0\">\n"), std::string::npos);
}

TEST_F(MemoryContext, WrapsTheFontEngine)
{
    FakeFontEngine engine;
    test.orv.memory_context_start.fn(nullptr, &test.orv, test.document, &face, 1, 2, 3, 4, 5, engine.get(), nullptr, 8,
                                     9, 10, 11, 12, 13);
    EXPECT_NE(test.renderer.last_engine, engine.get());
    EXPECT_EQ(session_of(test)->current_font_wrapper, test.renderer.last_engine);
}

TEST(MemoryContextColour, ItsTicketIsHeldInAFrameUntilItsEnd)
{
    FakeTickets tickets;
    FakeTickets::Ticket ticket = {&tickets, 9, "", 0};
    TestSession test(Behind::kRenderer, nullptr, tickets.functions());
    ORV_DrawingInterface memory = {};
    test.start_document();
    EXPECT_EQ(test.orv.memory_context_start.fn(nullptr, &test.orv, test.document, &memory, 1, 2, 3, 4, 5, nullptr,
                                               &ticket, 8, 9, 10, 11, 12, 13),
              1U);
    const ORVLOG_ColourFrame* frame = session_of(test)->colour_frames;
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->ticket, &ticket);
    EXPECT_EQ(frame->next, nullptr);
    EXPECT_EQ(ticket.references, 1);
    EXPECT_EQ(memory.drawing_finish.fn(&memory), 1U);
    EXPECT_EQ(session_of(test)->colour_frames, nullptr);
    EXPECT_EQ(ticket.references, 0);
}

// A colour manager that lacks an operation of a frame is asked for none of them, and the page is drawn.
TEST_F(MemoryContext, GoesToTheSecondReceiverWhole)
{
    FakeRenderer second("second");
    test.set_second(second.get());
    second.set_result(31);
    EXPECT_EQ(start(test.document), 31U);
    EXPECT_EQ(test.log(), "");
    EXPECT_EQ(test.renderer.count("memory_context_start"), 0U);
    EXPECT_EQ(second.count("memory_context_start"), 1U);
    EXPECT_EQ(face.drawing_finish.context, &second);
    EXPECT_EQ(second.last_words[12], 13U);
    EXPECT_EQ(second.last_ticket, &ticket_object);
}

TEST(TicketTables, ThatLackAnOperationGiveNoFrame)
{
    for (const int lacking : {0, 1, 2})
    {
        FakeTickets tickets;
        FakeTickets::Ticket ticket = {&tickets, 9, "", 0};
        ORVLOG_TicketFunctions functions = *tickets.functions();
        if (lacking == 0)
            functions.retain = nullptr;
        else if (lacking == 1)
            functions.release = nullptr;
        else
            functions.query = nullptr;
        TestSession test(Behind::kRenderer, nullptr, &functions);
        const ORV_FaceProperties properties = letter_face();
        ORV_DrawingInterface face = {};
        test.start_document();
        EXPECT_EQ(
            test.orv.face_start.fn(nullptr, &test.orv, test.document, &face, nullptr, 1, &properties, &ticket, 0, 0),
            1U);
        EXPECT_EQ(session_of(test)->colour_frames, nullptr) << lacking;
        EXPECT_EQ(face.drawing_finish.fn(&face), 1U);
        EXPECT_EQ(test.finish_document(), 1U);
        EXPECT_EQ(test.shut_down(), 1U);
        EXPECT_EQ(test.renderer.calls().size(), 4U);
        EXPECT_EQ(tickets.retains, 0U) << lacking;
        EXPECT_EQ(tickets.releases, 0U) << lacking;
        EXPECT_EQ(tickets.queries, 0U) << lacking;
    }
}

}  // namespace
