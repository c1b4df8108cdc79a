// Groups and colour frames.

#include "orvlog/session/orvlog-frames.h"
#include "orvlog/session/orvlog-session.h"
#include "tests/orvlog/core/group-fixture.h"
#include "tests/support/fake-font-engine.h"
#include "tests/support/fake-image.h"
#include "tests/support/fake-tickets.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

class Group : public testing::Test
{
protected:
    Group() : test(Behind::kRenderer, nullptr, tickets.functions(), nullptr)
    {
        test.start_document();
        test.start_face(&face);
        test.forget();
    }

    ORVLOG_Session* session()
    {
        return static_cast<ORVLOG_Session*>(test.session());
    }
    ORVLOG_DrawingContext* drawing()
    {
        return static_cast<ORVLOG_DrawingContext*>(face.object_paint.context);
    }
    uint32_t finish_group(uint32_t* replay = nullptr)
    {
        uint32_t unseen = 9;
        return face.group_finish.fn(&face, replay != nullptr ? replay : &unseen);
    }

    FakeTickets tickets;
    TestSession test;
    ORV_DrawingInterface face = {};
    GroupArguments arguments;
};

TEST_F(Group, LogsItsAttributesAndStaysOpenForTheForward)
{
    std::string seen;
    test.renderer.on_draw([&](const char*) { seen = test.log(); });
    uint32_t group = 0;
    arguments.group_out = &group;
    EXPECT_EQ(start_group(face, arguments), 1U);
    const std::string tag = "  <ORV_group_start drawing_context=\"0\" group_unique_id=\"5\" "
                            "font_engine_functions=\"FALSE\" hints=\"[0] ORV_GRP_HINT_NONE \" "
                            "group_type=\"ORV_GROUP_SIMPLE\" is_knockout=\"FALSE\" is_replayable=\"FALSE\" "
                            "pixel_placement_orientation=\"GPA_PP_ORIENTATION_0_DEG\" has_pixel_placement=\"FALSE\" "
                            "tiling_flags=\"[0] ORV_GROUP_TILE_NONE \" x_repetition_interval=\"0\" "
                            "y_repetition_interval=\"0\">\n";
    EXPECT_EQ(seen, tag);
    EXPECT_EQ(test.log(), tag + "  </ORV_group_start>\n");
    EXPECT_EQ(group, 77U);
    EXPECT_EQ(test.renderer.last_table, &drawing()->renderer_table);
}

TEST_F(Group, LogsEveryOptionalAttribute)
{
    const GGO_Matrix retransform = {{1, 2, 3, 4, 5, 6.5}};
    const GGO_BoxFloat box = {0, 0.5, 1, 2};
    FakeFontEngine engine("E");
    arguments = {0xFFFFFFFF,   nullptr, engine.get(), 0x1DA,   4,    1,    2,    nullptr, 7,       3,   8,
                 &retransform, nullptr, nullptr,      nullptr, 0x7E, 0.25, 1e20, nullptr, nullptr, &box};
    start_group(face, arguments);
    EXPECT_EQ(test.log(),
              "  <ORV_group_start drawing_context=\"0\" group_unique_id=\"4294967295\" font_engine_functions=\"TRUE\" "
              "fp_EngineIdGet=\"E\" GfpId=\"0\" hints=\"[0x1da] ORV_GRP_HINT_NO_PDF_BLENDS ORV_GRP_HINT_PIXEL_UNITS "
              "ORV_GRP_HINT_NO_ROTATION ORV_GRP_HINT_NO_COMPOSITING ORV_GRP_HINT_NO_OVERPRINTING "
              "ORV_GRP_HINT_GROUP_UNIQUE_ID_USED_OUTSIDE_DRAWING \" group_type=\"ORV_GROUP_MAKE_SEPARATION\" "
              "is_knockout=\"TRUE\" is_replayable=\"TRUE\" "
              "pixel_placement_orientation=\"GPA_PP_ORIENTATION_Y_FLIP_270_DEG\" has_pixel_placement=\"TRUE\" "
              "pixel_placement=\"GPA_PLACEMENT_CENTER_INTERSECT\" retransform=\"1 2 3 4 5 6.5 \" "
              "tiling_flags=\"[0x7e] ORV_GROUP_TILE_X ORV_GROUP_TILE_Y ORV_GROUP_TILE_REFLECT_X "
              "ORV_GROUP_TILE_REFLECT_Y ORV_GROUP_TILE_PIXEL_SPACING ORV_GROUP_TILE_FASTER_PIXEL_SPACING \" "
              "x_repetition_interval=\"0.25\" y_repetition_interval=\"1e+20\" bounding_box_hint=\"0 0.5 1 2 \">\n"
              "  </ORV_group_start>\n");
}

TEST_F(Group, ForwardsItsArguments)
{
    const GGO_Matrix retransform = {{1, 0, 0, 1, 0, 0}};
    const GGO_BoxFloat box = {};
    const GOP_Operator op = {};
    const GSH_Shape header = {};
    GSH_ShapeList clip = {};
    clip.sl_Shape.sp_HeaderPtr = &header;
    const GOP_Operand head = {};
    GOP_OperandPointer operand = {&head, 3, {}};
    const GBC_Color mask = {};
    const GBC_Color color = {};
    arguments = {1,   nullptr,  nullptr, 2, 3,  4,  5,     nullptr, 6,   7, 8, &retransform,
                 &op, &operand, &clip,   9, 10, 11, &mask, &color,  &box};
    start_group(face, arguments);
    const auto number = [](const void* pointer) { return std::to_string(reinterpret_cast<uintptr_t>(pointer)); };
    EXPECT_EQ(test.renderer.last(), "group_start unique_id=1 hints=2 type=3 knockout=4 replayable=5 orientation=6 "
                                    "has_placement=7 placement=8 retransform=" +
                                        number(&retransform) + " tiling=9 x=10 y=11 mask=" + number(&mask) +
                                        " color=" + number(&color) + " box=" + number(&box));
    EXPECT_EQ(test.renderer.last_op, &op);
    EXPECT_EQ(test.renderer.last_operands[1], &operand);
    EXPECT_EQ(test.renderer.last_clip, &clip);
}

TEST_F(Group, MembersStandInTheirOrder)
{
    GOP_Operator op = {};
    op.op_MaskMode = GOP_MASK_IN;
    const GSH_Shape header = {};
    GSH_ShapeList clip = {};
    clip.sl_Shape.sp_HeaderPtr = &header;
    GOP_OperandFlat flat = {};
    GOP_OperandPointer operand = {&flat.fl_Operand, 3, {}};
    const GBC_Color mask = {};
    const GBC_Color color = {};
    arguments.op = &op;
    arguments.operand2 = &operand;
    arguments.clip = &clip;
    arguments.mask = &mask;
    arguments.color = &color;
    start_group(face, arguments);
    size_t at = 0;
    for (const char* tag :
         {"    <ORV_group_start.op>\n", "    </ORV_group_start.op>\n", "    <ORV_group_start.operand2>\n",
          "    </ORV_group_start.operand2>\n", "    <ORV_group_start.group_clip>\n",
          "    </ORV_group_start.group_clip>\n", "    <ORV_group_start.separation_mask>\n",
          "    </ORV_group_start.separation_mask>\n", "    <ORV_group_start.separation_color>\n",
          "    </ORV_group_start.separation_color>\n", "  </ORV_group_start>\n"})
    {
        const size_t found = test.log().find(tag, at);
        ASSERT_NE(found, std::string::npos) << tag;
        at = found;
    }
}

TEST_F(Group, WithoutMaskModeHasNoOperand)
{
    GOP_Operator op = {};
    op.op_OperatorType = GOP_ROP_ROP4;
    const GOP_Operand head = {};
    GOP_OperandPointer operand = {&head, 3, {}};
    arguments.op = &op;
    arguments.operand2 = &operand;
    start_group(face, arguments);
    EXPECT_EQ(test.log().find("operand2"), std::string::npos);
    EXPECT_EQ(test.renderer.last_operands[1], &operand);
    arguments.op = nullptr;
    start_group(face, arguments);
    EXPECT_EQ(test.log().find("operand2"), std::string::npos);
}

TEST_F(Group, TypesHaveTheirNames)
{
    const char* names[] = {"ORV_GROUP_SIMPLE",          "ORV_GROUP_PAINT_AS_OPAQUE",
                           "ORV_GROUP_NON_ISOLATED",    "ORV_GROUP_COMBINE_SEPARATION",
                           "ORV_GROUP_MAKE_SEPARATION", "UNKNOWN_VALUE(5)"};
    for (uint32_t i = 0; i < 6; ++i)
    {
        test.forget();
        arguments.type = i;
        start_group(face, arguments);
        EXPECT_NE(test.log().find(std::string(" group_type=\"") + names[i] + "\" "), std::string::npos);
    }
}

TEST_F(Group, HintsAndTilingFlagsHaveTheirNames)
{
    const std::pair<uint32_t, const char*> hints[] = {
        {0x2, "NO_PDF_BLENDS"},
        {0x8, "PIXEL_UNITS"},
        {0x10, "NO_ROTATION"},
        {0x40, "NO_COMPOSITING"},
        {0x80, "NO_OVERPRINTING"},
        {0x100, "GROUP_UNIQUE_ID_USED_OUTSIDE_DRAWING"},
        {0x800, "RECOMMEND_PRERENDERING"},
    };
    char expected[128];
    for (const auto& [value, name] : hints)
    {
        test.forget();
        arguments.hints = value;
        start_group(face, arguments);
        std::snprintf(expected, sizeof expected, " hints=\"[%#x] ORV_GRP_HINT_%s \" ", value, name);
        EXPECT_NE(test.log().find(expected), std::string::npos) << expected;
    }
    const std::pair<uint32_t, const char*> tiling[] = {
        {0x2, "X"},
        {0x4, "Y"},
        {0x8, "REFLECT_X"},
        {0x10, "REFLECT_Y"},
        {0x20, "PIXEL_SPACING"},
        {0x40, "FASTER_PIXEL_SPACING"},
    };
    for (const auto& [value, name] : tiling)
    {
        test.forget();
        arguments.tiling = value;
        start_group(face, arguments);
        std::snprintf(expected, sizeof expected, " tiling_flags=\"[%#x] ORV_GROUP_TILE_%s \" ", value, name);
        EXPECT_NE(test.log().find(expected), std::string::npos) << expected;
    }
}

TEST_F(Group, WithoutRendererGivesOneAndZeroesTheGroup)
{
    TestSession alone(Behind::kNothing);
    ORV_DrawingInterface drawing = {};
    alone.start_document();
    alone.start_face(&drawing);
    uint32_t group = 5;
    arguments.group_out = &group;
    EXPECT_EQ(start_group(drawing, arguments), 1U);
    EXPECT_EQ(group, 0U);
    arguments.group_out = nullptr;
    EXPECT_EQ(start_group(drawing, arguments), 1U);
    uint32_t replay = 7;
    EXPECT_EQ(drawing.group_finish.fn(&drawing, &replay), 1U);
    EXPECT_EQ(replay, 0U);
    EXPECT_EQ(drawing.group_finish.fn(&drawing, nullptr), 1U);
}

TEST_F(Group, TransformsCombine)
{
    const GGO_Matrix first = {{2, 0, 0, 3, 5, 7}};
    const GGO_Matrix second = {{0, 1, -1, 0, 11, 13}};
    start_group(face, arguments);
    EXPECT_EQ(drawing()->group_frames->group_transform.m[0], 1);
    EXPECT_EQ(drawing()->group_frames->group_transform.m[4], 0);
    finish_group();
    arguments.retransform = &first;
    start_group(face, arguments);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(drawing()->group_frames->group_transform.m[i], first.m[i]);
    arguments.retransform = nullptr;
    start_group(face, arguments);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(drawing()->group_frames->group_transform.m[i], first.m[i]);
    arguments.retransform = &second;
    start_group(face, arguments);
    const double expected[] = {0, 2, -3, 0, -7 + 11, 5 + 13};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(drawing()->group_frames->group_transform.m[i], expected[i]) << i;
    EXPECT_EQ(session()->group_depth, 3U);
}

TEST_F(Group, FinishLogsAfterTheForward)
{
    start_group(face, arguments);
    test.forget();
    std::string seen = "unseen";
    test.renderer.on_draw([&](const char*) { seen = test.log(); });
    EXPECT_EQ(finish_group(), 1U);
    EXPECT_EQ(seen, "");
    EXPECT_EQ(test.log(), "  <ORV_group_finish drawing_context=\"0\" replay_group=\"FALSE\">\n"
                          "  </ORV_group_finish>\n");
    EXPECT_EQ(drawing()->group_frames, nullptr);
    EXPECT_EQ(session()->group_depth, 0U);
    test.renderer.set_result(0);
    EXPECT_EQ(finish_group(), 0U);
}

TEST_F(Group, ReplayKeepsFramesAndEngine)
{
    FakeFontEngine engine;
    FakeTickets::Ticket ticket = {&tickets, 1, ""};
    arguments.engine = engine.get();
    arguments.ticket = &ticket;
    start_group(face, arguments);
    const ORVLOG_GroupFrame* group_frame = drawing()->group_frames;
    const ORVLOG_ColourFrame* colour_frame = session()->colour_frames;
    const GFI_FontEngineTable* in_force = session()->current_font_wrapper;
    ASSERT_NE(in_force, nullptr);
    test.renderer.set_replay(3);
    test.forget();
    uint32_t replay = 0;
    EXPECT_EQ(finish_group(&replay), 1U);
    EXPECT_EQ(replay, 3U);
    EXPECT_EQ(test.log(), "  <ORV_group_finish drawing_context=\"0\" replay_group=\"TRUE\">\n"
                          "  </ORV_group_finish>\n");
    EXPECT_EQ(drawing()->group_frames, group_frame);
    EXPECT_EQ(session()->colour_frames, colour_frame);
    EXPECT_EQ(session()->current_font_wrapper, in_force);
    EXPECT_EQ(ticket.references, 1);
    test.renderer.set_replay(0);
    finish_group();
    EXPECT_EQ(drawing()->group_frames, nullptr);
    EXPECT_EQ(session()->current_font_wrapper, nullptr);
    EXPECT_EQ(ticket.references, 0);
    ASSERT_NE(session()->colour_frames, nullptr);
    EXPECT_EQ(session()->colour_frames->next, nullptr);
}

TEST_F(Group, FontEngineEndsWithTheGroup)
{
    FakeFontEngine outer;
    FakeFontEngine inner;
    arguments.engine = outer.get();
    start_group(face, arguments);
    const GFI_FontEngineTable* outer_wrapper = session()->current_font_wrapper;
    arguments.engine = nullptr;
    start_group(face, arguments);
    EXPECT_EQ(session()->current_font_wrapper, outer_wrapper);
    EXPECT_EQ(test.renderer.last_engine, nullptr);
    arguments.engine = inner.get();
    test.forget();
    start_group(face, arguments);
    EXPECT_NE(test.log().find(" GfpId=\"1\" "), std::string::npos);
    EXPECT_NE(session()->current_font_wrapper, outer_wrapper);
    finish_group();
    EXPECT_EQ(session()->current_font_wrapper, outer_wrapper);
    finish_group();
    EXPECT_EQ(session()->current_font_wrapper, outer_wrapper);
    finish_group();
    EXPECT_EQ(session()->current_font_wrapper, nullptr);
}

TEST_F(Group, RefusedFrameStillLogsAndForwards)
{
    FakeFontEngine engine("E");
    arguments.engine = engine.get();
    test.allocator.refuse(1);
    EXPECT_EQ(start_group(face, arguments), 1U);
    EXPECT_EQ(drawing()->group_frames, nullptr);
    EXPECT_EQ(session()->group_depth, 0U);
    EXPECT_NE(test.log().find("  <ORV_group_start drawing_context=\"0\" group_unique_id=\"5\" "
                              "font_engine_functions=\"TRUE\" fp_EngineIdGet=\"E\" GfpId=\"0\" hints="),
              std::string::npos);
    ASSERT_NE(test.renderer.last_engine, nullptr);
    EXPECT_EQ(test.renderer.last_engine, session()->current_font_wrapper) << "the wrapped one";
    EXPECT_NE(test.renderer.last_engine, engine.get());
    finish_group();
    EXPECT_EQ(session()->current_font_wrapper, nullptr) << "the engine may be gone from here on";
    test.shut_down();
    EXPECT_EQ(test.allocator.outstanding(), 0U);
}

// Its finish ends it alone: the groups around it and in it keep their frames and their engines.
TEST_F(Group, WithoutAFrameEndsByItself)
{
    FakeFontEngine outer_engine("outer");
    FakeFontEngine engine("without a frame");
    FakeFontEngine inner_engine("inner");
    arguments.engine = outer_engine.get();
    start_group(face, arguments);
    const ORVLOG_GroupFrame* outer = drawing()->group_frames;
    const GFI_FontEngineTable* outer_wrapper = session()->current_font_wrapper;
    arguments.engine = engine.get();
    test.allocator.refuse(1);
    start_group(face, arguments);
    const GFI_FontEngineTable* wrapper = session()->current_font_wrapper;
    EXPECT_NE(wrapper, outer_wrapper);
    EXPECT_EQ(drawing()->group_frames, outer);
    arguments.engine = inner_engine.get();
    start_group(face, arguments);
    EXPECT_NE(drawing()->group_frames, outer);
    EXPECT_NE(session()->current_font_wrapper, wrapper);
    finish_group();
    EXPECT_EQ(drawing()->group_frames, outer);
    EXPECT_EQ(session()->current_font_wrapper, wrapper);
    test.renderer.set_replay(1);
    finish_group();
    EXPECT_EQ(session()->current_font_wrapper, wrapper) << "it is played again";
    test.renderer.set_replay(0);
    finish_group();
    EXPECT_EQ(drawing()->group_frames, outer);
    EXPECT_EQ(session()->current_font_wrapper, outer_wrapper);
    finish_group();
    EXPECT_EQ(drawing()->group_frames, nullptr);
    EXPECT_EQ(session()->group_depth, 0U);
    EXPECT_EQ(session()->current_font_wrapper, nullptr);
}

// The engine of the drawing is in force behind it, and the one from before behind the drawing.
TEST_F(Group, WithoutAFrameLeavesTheEngineOfTheDrawing)
{
    FakeFontEngine drawing_engine("drawing");
    FakeFontEngine engine("group");
    const ORV_FaceProperties properties = letter_face();
    for (const bool finished : {true, false})
    {
        ORV_DrawingInterface second = {};
        test.orv.face_start.fn(nullptr, &test.orv, test.document, &second, drawing_engine.get(), 1, &properties,
                               nullptr, 0, 0);
        const GFI_FontEngineTable* wrapper = session()->current_font_wrapper;
        arguments.engine = engine.get();
        test.allocator.refuse(1);
        start_group(second, arguments);
        EXPECT_NE(session()->current_font_wrapper, wrapper);
        uint32_t replay = 0;
        if (finished)
            second.group_finish.fn(&second, &replay);
        EXPECT_EQ(session()->current_font_wrapper == wrapper, finished);
        second.drawing_finish.fn(&second);
        EXPECT_EQ(session()->current_font_wrapper, nullptr);
    }
    test.allocator.refuse(1);
    start_group(face, arguments);
    face.drawing_finish.fn(&face);
    EXPECT_EQ(session()->current_font_wrapper, nullptr) << "a drawing without an engine of its own";
}

TEST_F(Group, InAMemoryContextIsForwardedOnly)
{
    ORV_DrawingInterface memory = {};
    test.orv.memory_context_start.fn(nullptr, &test.orv, test.document, &memory, 0, 0, 0, 0, 0, nullptr, nullptr, 0, 0,
                                     0, 0, 0, 0);
    test.forget();
    const uint32_t depth = session()->group_depth;
    EXPECT_EQ(start_group(memory, arguments), 1U);
    EXPECT_EQ(session()->group_depth, depth);
    EXPECT_EQ(static_cast<ORVLOG_DrawingContext*>(memory.object_paint.context)->group_frames, nullptr);
    uint32_t replay = 5;
    EXPECT_EQ(memory.group_finish.fn(&memory, &replay), 1U);
    EXPECT_EQ(test.log(), "");
    EXPECT_EQ(test.renderer.count("group_start"), 1U);
    EXPECT_EQ(test.renderer.count("group_finish"), 1U);
    EXPECT_EQ(memory.drawing_finish.fn(&memory), 1U);
    EXPECT_EQ(test.log(), "  <ORV_drawing_finish drawing_context=\"1\">\n  </ORV_drawing_finish>\n");
}

TEST_F(Group, KindFourWouldBeLogged)
{
    drawing()->kind = 4;
    start_group(face, arguments);
    EXPECT_NE(test.log(), "");
    test.forget();
    for (const uint32_t kind : {0U, 5U, 0xFFFFFFFFU})
    {
        drawing()->kind = kind;
        start_group(face, arguments);
        EXPECT_EQ(test.log(), "") << kind;
    }
}

class ColourFrames : public Group
{
protected:
    FakeTickets::Ticket ticket = {&tickets, 1, ""};
};

TEST_F(ColourFrames, HoldTheTicketAndItsBlocks)
{
    EXPECT_EQ(orvlog_push_colour_frame(session(), &ticket), 1U);
    const ORVLOG_ColourFrame* frame = session()->colour_frames;
    EXPECT_EQ(frame->ticket, &ticket);
    EXPECT_EQ(frame->retained, 1U);
    EXPECT_EQ(frame->ticket_space[0], 1U);
    EXPECT_EQ(frame->ticket_space[3], 4U);
    EXPECT_EQ(frame->ticket_render[3], 103U);
    EXPECT_EQ(ticket.references, 1);
    EXPECT_EQ(orvlog_push_colour_frame(session(), nullptr), 1U);
    frame = session()->colour_frames;
    EXPECT_EQ(frame->ticket, &ticket);
    EXPECT_EQ(frame->retained, 0U);
    EXPECT_EQ(frame->ticket_space[3], 4U);
    EXPECT_EQ(frame->ticket_render[0], 100U);
    orvlog_pop_colour_frame(session());
    EXPECT_EQ(ticket.references, 1);
    orvlog_pop_colour_frame(session());
    EXPECT_EQ(ticket.references, 0);
}

TEST_F(ColourFrames, PopOfAnEmptyStackDoesNothing)
{
    orvlog_pop_colour_frame(session());
    EXPECT_EQ(session()->colour_frames, nullptr);
    orvlog_pop_colour_frame(session());
    EXPECT_EQ(session()->colour_frames, nullptr);
}

TEST_F(ColourFrames, FailedRetainPushesNothing)
{
    const ORVLOG_ColourFrame* top = session()->colour_frames;
    tickets.retain_result = 0;
    EXPECT_EQ(orvlog_push_colour_frame(session(), &ticket), 0U);
    EXPECT_EQ(session()->colour_frames, top);
    EXPECT_EQ(tickets.queries, 0U);
    EXPECT_EQ(tickets.releases, 0U);
}

TEST_F(ColourFrames, FailedQueryReleases)
{
    const ORVLOG_ColourFrame* top = session()->colour_frames;
    tickets.query_result = 0;
    EXPECT_EQ(orvlog_push_colour_frame(session(), &ticket), 0U);
    EXPECT_EQ(session()->colour_frames, top);
    EXPECT_EQ(ticket.references, 0);
    arguments.ticket = &ticket;
    EXPECT_EQ(start_group(face, arguments), 1U);
    EXPECT_NE(test.log().find("  </ORV_group_start>\n"), std::string::npos);
    finish_group();
    EXPECT_EQ(session()->colour_frames, nullptr) << "the pop takes the enclosing frame";
}

// Seventeen of them: however many there are, nothing is remembered of them, and the session's end calls nobody.
TEST_F(ColourFrames, WithoutMemoryForAFrameTheReferenceStaysHeld)
{
    const uint64_t outstanding = test.allocator.outstanding();
    FakeTickets::Ticket other = {&tickets, 2, ""};
    for (int32_t i = 0; i < 17; ++i)
    {
        test.allocator.refuse(1);
        EXPECT_EQ(orvlog_push_colour_frame(session(), i == 1 ? &other : &ticket), 0U);
    }
    EXPECT_EQ(test.allocator.outstanding(), outstanding);
    EXPECT_EQ(ticket.references, 16);
    EXPECT_EQ(other.references, 1);
    test.shut_down();
    EXPECT_EQ(tickets.releases, 0U);
    EXPECT_EQ(ticket.references, 16);
    EXPECT_EQ(other.references, 1);
}

// A client may have ended its colour manager, its engines and the renderer before it ends the log.
TEST_F(ColourFrames, ShutdownCallsNothingOfTheClientsForWhatWasLeftOpen)
{
    FakeFontEngine engine("E");
    FakeImage image(2, 2);
    GOP_Operator op = {};
    op.op_MaskMode = GOP_MASK_IN;
    arguments.ticket = &ticket;
    arguments.engine = engine.get();
    arguments.op = &op;
    arguments.operand2 = image.operand();
    ASSERT_EQ(start_group(face, arguments), 1U);
    ASSERT_EQ(start_group(face, arguments), 1U);
    ASSERT_NE(drawing()->group_frames->replaced_operand, nullptr);
    tickets.release_result = 0;
    finish_group();
    tickets.release_result = 1;
    ASSERT_EQ(ticket.references, 2);
    const uint32_t ticket_calls = tickets.calls;
    const uint32_t engine_calls = engine.asked_for_id();
    image.take_calls();
    const size_t renderer_calls = test.renderer.calls().size();
    test.forget();
    EXPECT_EQ(test.shut_down(), 1U);
    EXPECT_EQ(test.log(), "</ORV>\n");
    EXPECT_EQ(tickets.calls, ticket_calls);
    EXPECT_EQ(engine.asked_for_id(), engine_calls);
    EXPECT_EQ(image.take_calls(), "");
    EXPECT_EQ(test.renderer.calls().size(), renderer_calls);
    EXPECT_EQ(ticket.references, 2) << "they are the client's affair";
    EXPECT_EQ(test.allocator.outstanding(), 0U);
    EXPECT_EQ(test.allocator.bad_frees(), 0U);
}

TEST_F(ColourFrames, FailedReleaseLosesNoMemory)
{
    orvlog_push_colour_frame(session(), &ticket);
    tickets.release_result = 0;
    const ORVLOG_ColourFrame* below = session()->colour_frames->next;
    const uint64_t outstanding = test.allocator.outstanding();
    orvlog_pop_colour_frame(session());
    EXPECT_EQ(session()->colour_frames, below);
    EXPECT_EQ(test.allocator.outstanding(), outstanding);
    face.drawing_finish.fn(&face);
    test.finish_document();
    test.shut_down();
    EXPECT_EQ(test.allocator.outstanding(), 0U);
}

TEST_F(ColourFrames, WithoutTicketFunctionsATicketPushesNothing)
{
    TestSession bare;
    auto* bare_session = static_cast<ORVLOG_Session*>(bare.session());
    EXPECT_EQ(orvlog_push_colour_frame(bare_session, &ticket), 0U);
    EXPECT_EQ(bare_session->colour_frames, nullptr);
}

TEST_F(ColourFrames, OfGroupsLeftOpenStayForTheNextDrawing)
{
    arguments.ticket = &ticket;
    start_group(face, arguments);
    face.drawing_finish.fn(&face);
    ASSERT_NE(session()->colour_frames, nullptr);
    EXPECT_EQ(session()->colour_frames->ticket, nullptr);
    EXPECT_EQ(session()->colour_frames->next, nullptr);
    EXPECT_EQ(ticket.references, 0) << "the finish popped the group's frame and left the drawing's";
}

}  // namespace
