#include "orvlog/colour/orvlog-colour-ticket.h"

#include "orvlog/log/ahc-coder.h"
#include "orvlog/session/orvlog-creators.h"
#include "tests/support/failure-sweep.h"
#include "tests/support/fake-identity.h"
#include "tests/support/fake-tickets.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"
#include "tests/support/test-session.h"
#include "tests/support/ticket-bytes.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace
{

using namespace orvlog::test;

std::string bytes_of(const TicketBytes& ticket)
{
    return std::string(ticket.bytes().begin(), ticket.bytes().end());
}

std::string smallest()
{
    return bytes_of(fixed_data().u32({0xFFFFFFFF}).u32({0}));
}

class ColourTicket : public testing::Test
{
protected:
    ColourTicket()
        : test(std::make_unique<TestSession>(Behind::kNothing, nullptr, tickets.functions(), tickets.serial()))
    {
    }

    ORVLOG_Session* session()
    {
        return static_cast<ORVLOG_Session*>(test->session());
    }
    // What one dump adds to the log.
    std::string dump(FakeTickets::Ticket* ticket)
    {
        test->forget();
        ORVLOG_DumpColorTicket(session(), ticket);
        EXPECT_TRUE(test->log().empty() || session()->writer.element_open == 0u);
        EXPECT_EQ(session()->writer.depth, 1u);
        return test->log();
    }
    FakeTickets::Ticket ticket(uint32_t key)
    {
        return {&tickets, key, smallest()};
    }

    FakeTickets tickets;
    std::unique_ptr<TestSession> test;
};

// The element of a ticket that has been written before.
std::string reference(uint32_t id)
{
    return "  <GCM_ColorTicket id=\"" + std::to_string(id) + "\">\n  </GCM_ColorTicket>\n";
}

TEST_F(ColourTicket, StandsInTheLogOnceAndIsReferredToAfterwards)
{
    FakeTickets::Ticket one = ticket(700);
    EXPECT_EQ(dump(&one), R"X(  <GCM_ColorTicket id="1">
    <GXC_ColorTickets>
    	<(null)>
    		<GCM_ColorTicket>
    			<FixedSizeData>
    				<PreRenderOverrideGrayPreserve Bool="TRUE" />
    				<PostRenderGrayPreserve Bool="FALSE" />
    				<PureBlackTextPreserve Bool="FALSE" />
    				<PostConvInRenderer Bool="TRUE" />
    				<UseOutputGbd Bool="FALSE" />
    				<UseOverride Bool="FALSE" />
    				<PreConvInPdl Bool="TRUE" />
    				<PreConvImageOverrideInPdl Bool="FALSE" />
    				<XformQuality GCM_QualityHint="GCM_QUAL_HIGH" />
    				<XformPerformance GCM_PerformanceHint="GCM_PERF_LOW" />
    			</FixedSizeData>
    			<CSD_Data>
    			</CSD_Data>
    			<VariableSizedData>
    			</VariableSizedData>
    		</GCM_ColorTicket>
    	</(null)>
    </GXC_ColorTickets>
  </GCM_ColorTicket>
)X");
    EXPECT_EQ(dump(&one), reference(1));
    EXPECT_EQ(tickets.serialised, 1u);
    FakeTickets::Ticket same_key = ticket(700);
    EXPECT_EQ(dump(&same_key), reference(1));
}

TEST_F(ColourTicket, WithoutAFamilyHasANameWhereThatIsWanted)
{
    session()->name_unknown_families = 1;
    FakeTickets::Ticket one = ticket(700);
    const std::string log = dump(&one);
    EXPECT_EQ(log.find("(null)"), std::string::npos);
    EXPECT_EQ(log.find("  <GCM_ColorTicket id=\"1\">\n    <GXC_ColorTickets>\n    \t<UnknownRenderColorSpace>\n"), 0u);
    const std::string end = "    \t</UnknownRenderColorSpace>\n    </GXC_ColorTickets>\n  </GCM_ColorTicket>\n"
                            "\n<!--\nORVLOG: WARNING: GCM_ColorTicket of an unknown family.\n-->\n";
    ASSERT_GT(log.size(), end.size());
    EXPECT_EQ(log.substr(log.size() - end.size()), end);
    // Written once, it is warned of once.
    EXPECT_EQ(dump(&one), reference(1));
}

TEST_F(ColourTicket, WithAFamilyIsTheSameWhereANameIsWanted)
{
    tickets.kind = 1;
    tickets.base_chans = 4;
    tickets.csd_list_result = 1;
    FakeTickets::Ticket one = ticket(700);
    FakeTickets::Ticket again = ticket(701);
    std::string first = dump(&one);
    session()->name_unknown_families = 1;
    std::string second = dump(&again);
    EXPECT_EQ(first.replace(first.find("id=\"1\""), 6, "id=\"2\""), second);
}

TEST_F(ColourTicket, IdsCountFrom1)
{
    FakeTickets::Ticket first = ticket(9);
    FakeTickets::Ticket second = ticket(8);
    FakeTickets::Ticket third = ticket(0);
    EXPECT_EQ(dump(&first).find("  <GCM_ColorTicket id=\"1\">\n    <GXC_"), 0u);
    EXPECT_EQ(dump(&second).find("  <GCM_ColorTicket id=\"2\">\n    <GXC_"), 0u);
    EXPECT_EQ(dump(&third).find("  <GCM_ColorTicket id=\"3\">\n    <GXC_"), 0u);
    EXPECT_EQ(dump(&second), reference(2));
    EXPECT_EQ(dump(&first), reference(1));
    EXPECT_EQ(dump(&third), reference(3));
    const ORVLOG_TicketEntry* head = session()->logged_tickets;
    EXPECT_EQ(head->key, 0u);
    EXPECT_EQ(head->next->key, 8u);
    EXPECT_EQ(head->next->next->key, 9u);
    EXPECT_EQ(head->next->next->next, nullptr);
    ORVLOG_FreeTicketList(session());
    EXPECT_EQ(session()->logged_tickets, nullptr);
}

TEST_F(ColourTicket, NamesTheFamily)
{
    FakeTickets::Ticket one = ticket(1);
    tickets.kind = 1;
    tickets.base_chans = 4;
    tickets.csd_list_result = 1;
    EXPECT_NE(dump(&one).find("    <GXC_ColorTickets>\n    \t<CMYKRenderColorSpace>\n"), std::string::npos);
}

TEST_F(ColourTicket, TheIndentOfTheLogStandsBeforeEachLine)
{
    FakeTickets::Ticket one = ticket(1);
    session()->writer.depth = 24;
    test->forget();
    ORVLOG_DumpColorTicket(session(), &one);
    EXPECT_EQ(test->log().find(std::string(48, ' ') + "<GCM_ColorTicket id=\"1\">\n" + std::string(50, ' ') +
                               "<GXC_ColorTickets>\n" + std::string(50, ' ') + "\t<(null)>\n"),
              0u);
    session()->writer.depth = 40;
    FakeTickets::Ticket two = ticket(2);
    test->forget();
    ORVLOG_DumpColorTicket(session(), &two);
    EXPECT_EQ(test->log().find(std::string(50, ' ') + "<GCM_ColorTicket id=\"2\">\n" + std::string(50, ' ') +
                               "<GXC_ColorTickets>\n"),
              0u);
    EXPECT_EQ(session()->writer.depth, 40u);
    session()->writer.depth = 1;
}

TEST_F(ColourTicket, ASerialiserThatWritesNothingLeavesTheElementEmpty)
{
    FakeTickets::Ticket one = {&tickets, 1, ""};
    EXPECT_EQ(dump(&one), reference(1));
    tickets.serialise_result = 0;
    FakeTickets::Ticket two = {&tickets, 2, ""};
    EXPECT_EQ(dump(&two), reference(2));
    EXPECT_EQ(dump(&two), reference(2));
    EXPECT_EQ(tickets.serialised, 2u);
}

TEST_F(ColourTicket, StandsBehindThePropertiesOfADrawingAndAtTheHeadOfAGroup)
{
    FakeTickets::Ticket one = {&tickets, 1, ""};
    FakeTickets::Ticket two = {&tickets, 2, ""};
    ORV_Interface& orv = test->orv;
    ASSERT_EQ(test->start_document(), 1u);
    test->forget();
    ORV_DrawingInterface face = {};
    const ORV_FaceProperties properties = {};
    ASSERT_EQ(orv.face_start.fn(nullptr, &orv, test->document, &face, nullptr, 3, &properties, &one, 0, 0), 1u);
    EXPECT_EQ(test->log(),
              R"(  <ORV_face_start document_context="0" drawing_context="0" font_engine_functions="FALSE" )"
              R"(face_seq_number="3" pixel_placement_orientation="GPA_PP_ORIENTATION_0_DEG" )"
              R"(pixel_placement="GPA_PLACEMENT_GDI">
    <ORV_FaceProperties fp_FaceHints="[0] ORV_FACE_HINT_NONE " fp_FaceInchToPixels="0 0 0 0 0 0 " fp_WidthInPixels="0" )"
              R"(fp_HeightInPixels="0" fp_TrimBox="0 0 0 0 " fp_ClipBox="0 0 0 0 " fp_MediaSize="0 0 ">
    </ORV_FaceProperties>
    <GCM_ColorTicket id="1">
    </GCM_ColorTicket>
  </ORV_face_start>
)");
    test->forget();
    ORV_DrawingInterface resource = {};
    const ORV_ResourceProperties pattern = {};
    uint32_t resource_id = 9;
    ASSERT_EQ(
        orv.resource_start.fn(nullptr, &orv, test->document, &resource, &face, nullptr, &pattern, &two, &resource_id),
        1u);
    EXPECT_EQ(test->log(), R"(  <ORV_resource_start document_context="0" drawing_context="1" parent_drawing="0" )"
                           R"(font_engine_functions="FALSE" resource_id="0">
    <ORV_ResourceProperties rp_ResourceHints="[0] ORV_RES_HINT_NONE " rp_MaxRescale="0" rp_IsKnockout="FALSE" )"
                           R"(rp_Enclosing_box="0 0 0 0 ">
    </ORV_ResourceProperties>
    <GCM_ColorTicket id="2">
    </GCM_ColorTicket>
  </ORV_resource_start>
)");
    test->forget();
    const GOP_Operator op = {};
    EXPECT_EQ(resource.group_start.fn(&resource, 4, nullptr, nullptr, 0, 0, 0, 0, &one, 0, 0, 0, nullptr, &op, nullptr,
                                      nullptr, 0, 0, 0, nullptr, nullptr, nullptr),
              1u);
    EXPECT_EQ(test->log(),
              R"(  <ORV_group_start drawing_context="1" group_unique_id="4" )"
              R"(font_engine_functions="FALSE" hints="[0] ORV_GRP_HINT_NONE " group_type="ORV_GROUP_SIMPLE" )"
              R"(is_knockout="FALSE" is_replayable="FALSE" )"
              R"(pixel_placement_orientation="GPA_PP_ORIENTATION_0_DEG" has_pixel_placement="FALSE" )"
              R"(tiling_flags="[0] ORV_GROUP_TILE_NONE " x_repetition_interval="0" y_repetition_interval="0">
    <GCM_ColorTicket id="1">
    </GCM_ColorTicket>
    <ORV_group_start.op>
      <GOP_Operator op_OperatorType="GOP_ROP_ROP2_GDI" op_Operator="0" op_MaskMode="GOP_MASK_NONE" )"
              R"(op_TransparencyType="GOP_TRANS_NONE" op_TransparencyFlags="[0] GOP_TRANS_FLAG_NONE " )"
              R"(op_OperatorHints="[0] GOP_OP_HINT_NONE ">
      </GOP_Operator>
    </ORV_group_start.op>
  </ORV_group_start>
)");
    // What was left open stays held: the shutdown calls no colour manager.
    test = nullptr;
    EXPECT_EQ(one.references, 2);
    EXPECT_EQ(two.references, 1);
}

TEST_F(ColourTicket, AFailingSerialiserIsNotLookedAt)
{
    FakeTickets::Ticket one = ticket(1);
    tickets.serialise_result = 0;
    EXPECT_NE(dump(&one).find("</GXC_ColorTickets>"), std::string::npos);
}

TEST_F(ColourTicket, ADamagedTicketIsClosed)
{
    FakeTickets::Ticket one = {&tickets, 1, bytes_of(fixed_data().u32({0, 5}).repeat(0xFF, 1000))};
    const std::string text = dump(&one);
    const std::string end = "    \t</(null)>\n    </GXC_ColorTickets>\n  </GCM_ColorTicket>\n";
    EXPECT_EQ(text.substr(text.size() - end.size()), end);
}

TEST_F(ColourTicket, WaitingWarningsComeBehindIt)
{
    FakeTickets::Ticket one = ticket(1);
    dump(&one);
    session()->writer.element_open = 1;
    orvlog_writer_defer_warning(&session()->writer, ORVLOG_WARNING_FORMAT, "text");
    EXPECT_EQ(dump(&one), reference(1) + "\n<!--\nORVLOG: WARNING: text\n-->\n");
}

TEST_F(ColourTicket, NullsWriteNothing)
{
    EXPECT_EQ(dump(nullptr), "");
    FakeTickets::Ticket one = ticket(1);
    session()->ticket_functions = nullptr;
    EXPECT_EQ(dump(&one), "");
    session()->ticket_functions = tickets.functions();
    session()->ticket_serial_functions = nullptr;
    EXPECT_EQ(dump(&one), "");
    ORVLOG_TicketSerialFunctions empty = {};
    session()->ticket_serial_functions = &empty;
    EXPECT_EQ(dump(&one), reference(1));
    session()->ticket_serial_functions = tickets.serial();
}

TEST_F(ColourTicket, ALogWithoutAStreamTakesNothing)
{
    FakeTickets::Ticket one = ticket(1);
    GIO_Stream* stream = session()->writer.stream;
    session()->writer.stream = nullptr;
    EXPECT_EQ(dump(&one), "");
    session()->writer.stream = stream;
    EXPECT_EQ(dump(&one), reference(1));
}

TEST_F(ColourTicket, ATicketThatCannotBeRememberedIsWrittenEachTime)
{
    FakeTickets::Ticket one = ticket(1);
    for (int i = 0; i < 2; ++i)
    {
        test->allocator.refuse(1);
        EXPECT_EQ(dump(&one).find("  <GCM_ColorTicket id=\"0\">\n    <GXC_ColorTickets>\n"), 0u);
        EXPECT_EQ(session()->logged_tickets, nullptr);
    }
    tickets.key_result = 0;
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(dump(&one).find("  <GCM_ColorTicket id=\"0\">\n    <GXC_ColorTickets>\n"), 0u);
    tickets.key_result = 1;
    EXPECT_EQ(dump(&one).find("  <GCM_ColorTicket id=\"1\">\n    <GXC_ColorTickets>\n"), 0u);
    EXPECT_EQ(dump(&one), reference(1));
}

TEST_F(ColourTicket, EveryRefusedAllocationIsSurvived)
{
    const auto refused = [&](uint64_t n)
    {
        FakeTickets::Ticket one = {&tickets, static_cast<uint32_t>(n), bytes_of(rich_ticket())};
        const uint64_t before = test->allocator.refused();
        test->allocator.refuse(n);
        const std::string text = dump(&one);
        EXPECT_EQ(text.find("  <GCM_ColorTicket id="), 0u);
        const std::string end = "  </GCM_ColorTicket>\n";
        EXPECT_EQ(text.substr(text.size() - end.size()), end);
        return test->allocator.refused() != before;
    };
    EXPECT_GT(sweep_failures(refused), 0u);
    test->allocator.refuse(0);
    test->shut_down();
    EXPECT_EQ(test->allocator.outstanding(), 0u);
}

TEST_F(ColourTicket, EveryFailedStreamOperationIsSurvived)
{
    FakeTickets::Ticket probe = ticket(1);
    dump(&probe);
    const auto failed = [&](uint64_t n)
    {
        FakeTickets::Ticket one = ticket(static_cast<uint32_t>(n) + 1);
        const uint64_t before = test->stream.failed();
        test->stream.fail(n);
        dump(&one);
        return test->stream.failed() != before;
    };
    EXPECT_GT(sweep_failures(failed), 20u);
    test->stream.fail(0);
    EXPECT_EQ(dump(&probe), reference(1));
}

// The text that a coded stream holds.
std::string decoded(const std::string& coded)
{
    TestAllocator allocator;
    AdaptiveHuffmanCoder* decoder = AHC_DecoderCreate(allocator.get());
    std::string text;
    uint8_t piece[256];
    AHC_SetInput(decoder, reinterpret_cast<const uint8_t*>(coded.data()), static_cast<uint32_t>(coded.size()));
    for (int32_t n = AHC_Decode(decoder, piece, sizeof piece); n > 0; n = AHC_Decode(decoder, piece, sizeof piece))
        text.append(reinterpret_cast<const char*>(piece), static_cast<size_t>(n));
    AHC_DecoderDestroy(decoder);
    return text;
}

TEST(ColourTicketCoded, TheTextStandsAsPlainBytesInACodedLog)
{
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    FakeTickets tickets;
    FakeTickets::Ticket ticket = {&tickets, 1, smallest()};
    ORV_Interface orv = {};
    ASSERT_NE(orvlog_create_session(&orv, nullptr, allocator.get(), identity.get(), stream.get(), nullptr,
                                    tickets.functions(), tickets.serial(), nullptr, nullptr, nullptr, 1,
                                    ORVLOG_MODE_TRANSPARENT),
              0u);
    auto* session = static_cast<ORVLOG_Session*>(orv.document_start.context);
    ORVLOG_DumpColorTicket(session, &ticket);
    ORVLOG_DumpColorTicket(session, &ticket);
    ORVLOG_DLL_shutdown(session);
    const std::string begin = "    <GXC_ColorTickets>\n    \t<(null)>\n    \t\t<GCM_ColorTicket>\n";
    const std::string end = "    \t\t</GCM_ColorTicket>\n    \t</(null)>\n    </GXC_ColorTickets>\n";
    std::string log = stream.text();
    const size_t from = log.find(begin);
    const size_t to = log.find(end);
    ASSERT_NE(from, std::string::npos);
    ASSERT_NE(to, std::string::npos);
    log.erase(from, to + end.size() - from);
    constexpr size_t kPlainPrefix = 35;
    const std::string text = decoded(log.substr(kPlainPrefix));
    EXPECT_NE(text.find("  <GCM_ColorTicket id=\"1\">\n  </GCM_ColorTicket>\n  <GCM_ColorTicket id=\"1\">\n"
                        "  </GCM_ColorTicket>\n"),
              std::string::npos)
        << text;
    EXPECT_EQ(allocator.outstanding(), 0u);
}

}  // namespace
