// Calls in any order: documents, drawings and groups that begin and end as chance has it, with engines, images and
// tickets of their own, while the renderer goes on pulling glyphs by every engine whose scope is still open.

#include "orvlog/font/orvlog-font-wrapper.h"
#include "orvlog/session/orvlog-frames.h"
#include "tests/support/fake-image.h"
#include "tests/support/fake-tickets.h"
#include "tests/support/scripted-font-engine.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{

using namespace orvlog::test;

// A wrapped table and its number; null where the scope had no engine.
struct Engine
{
    const GFI_FontEngineTable* table = nullptr;
    uint32_t number = 0;
};

struct Drawing
{
    ORV_DrawingInterface table = {};
    Engine engine;
    std::vector<Engine> groups;
    bool in_memory = false;
};

struct Document
{
    void* handle = nullptr;
    Engine engine;
};

class RandomCalls
{
public:
    explicit RandomCalls(uint32_t seed)
        : test(Behind::kRenderer, nullptr, tickets.functions(), tickets.serial()), random_(seed)
    {
        client_engine_.advances = {{1, 0}};
        text_.sp_HeaderPtr = &shape_;
        text_.sp_U.glyph.font_spec_ptr = &font_;
        text_.sp_U.glyph.string_desc = &string_;
        op_.op_MaskMode = GOP_MASK_IN;
    }

    void run(int calls)
    {
        for (int i = 0; i < calls; ++i)
        {
            step();
            pull_by_all();
        }
    }

    int32_t references_of_frames()
    {
        int32_t count = 0;
        const auto* session = static_cast<const ORVLOG_Session*>(test.session());
        for (const ORVLOG_ColourFrame* frame = session->colour_frames; frame != nullptr; frame = frame->next)
            count += static_cast<int32_t>(frame->retained);
        return count;
    }

    FakeTickets tickets;
    FakeTickets::Ticket ticket = {&tickets, 1, "x"};
    TestSession test;
    FakeRenderer second{"second"};

private:
    uint32_t below(size_t limit)
    {
        return static_cast<uint32_t>(random_() % limit);
    }
    const GFI_FontEngineTable* maybe_engine()
    {
        test.renderer.last_engine = nullptr;
        return below(2) == 0 ? client_engine_.get() : nullptr;
    }
    Engine given_engine() const
    {
        const GFI_FontEngineTable* table = test.renderer.last_engine;
        return {table, table != nullptr ? font_wrapper_id(table) : 0};
    }
    void* any_document()
    {
        return documents_.empty() || below(8) == 0 ? nullptr : documents_[below(documents_.size())].handle;
    }
    void* maybe_ticket()
    {
        return below(3) == 0 ? &ticket : nullptr;
    }

    void step()
    {
        test.renderer.set_result(below(10) == 0 ? 0 : 1);
        test.renderer.set_replay(below(4) == 0 ? 1 : 0);
        image_.fail_read = below(5) == 0 ? 0 : -1;
        const uint32_t kind = below(14);
        if (kind == 0)
            return start_document();
        if (kind == 1)
            return finish_document();
        if (kind <= 4)
            return start_drawing(kind);
        if (kind == 5)
            return change_parameters();
        if (kind == 6)
        {
            test.orv.resource_destroy.fn(nullptr, &test.orv, any_document(), nullptr, below(4));
            return;
        }
        if (drawings_.empty())
            return;
        const size_t at = below(drawings_.size());
        Drawing* drawing = drawings_[at].get();
        if (kind <= 9)
            return paint(drawing, kind);
        if (kind <= 11)
            return start_group(drawing);
        if (kind == 12)
            return finish_group(drawing);
        if (below(2) == 0)
            drawing->table.drawing_finish.fn(&drawing->table);
        else
            drawing->table.drawing_discard.fn(&drawing->table);
        drawings_.erase(drawings_.begin() + static_cast<std::ptrdiff_t>(at));
    }

    void start_document()
    {
        Document document;
        test.orv.document_start.fn(nullptr, &test.orv, &document.handle, 1, maybe_engine(), nullptr);
        document.engine = given_engine();
        documents_.push_back(document);
    }

    void finish_document()
    {
        if (documents_.empty())
            return;
        const size_t at = below(documents_.size());
        test.orv.document_finish.fn(&test.orv, documents_[at].handle);
        documents_.erase(documents_.begin() + static_cast<std::ptrdiff_t>(at));
    }

    void start_drawing(uint32_t kind)
    {
        auto drawing = std::make_unique<Drawing>();
        const ORV_FaceProperties properties = letter_face();
        const GFI_FontEngineTable* engine = maybe_engine();
        uint32_t id = 0;
        if (kind == 2)
            test.orv.face_start.fn(nullptr, &test.orv, any_document(), &drawing->table, engine, 1, &properties,
                                   maybe_ticket(), 0, 0);
        else if (kind == 3)
            test.orv.resource_start.fn(nullptr, &test.orv, any_document(), &drawing->table,
                                       drawings_.empty() ? nullptr : &drawings_[0]->table, engine, nullptr,
                                       maybe_ticket(), &id);
        else if (second_set_)
            return;
        else
            test.orv.memory_context_start.fn(nullptr, &test.orv, any_document(), &drawing->table, 0, 0, 0, 0, 0, engine,
                                             maybe_ticket(), 0, 0, 0, 0, 0, 0);
        drawing->in_memory = kind == 4;
        drawing->engine = given_engine();
        drawings_.push_back(std::move(drawing));
    }

    void change_parameters()
    {
        second_set_ = below(3) == 0;
        const ORVLOG_Params params = {second_set_ ? second.get() : nullptr, 0, below(2)};
        ORVLOG_DLL_set_parameters(test.session(), &params);
    }

    void paint(Drawing* drawing, uint32_t kind)
    {
        const ORV_DrawingInterface* table = &drawing->table;
        GGO_Point end = {};
        GOP_OperandPointer* image = below(2) == 0 ? image_.operand() : nullptr;
        if (kind == 7)
            table->object_paint.fn(table, 1, 0, &op_, &text_, 0, nullptr, image, image, nullptr);
        else if (kind == 8)
            table->object_paint_and_stroke.fn(table, 1, 1, 0, &op_, &op_, &text_, nullptr, nullptr, 0, nullptr, 3, &end,
                                              image, nullptr, nullptr, image, image, nullptr);
        else
            table->resource_paint.fn(table, below(3), 0, 0, nullptr, &op_, image, nullptr, 0, 0, 0, nullptr, nullptr,
                                     0);
    }

    void start_group(Drawing* drawing)
    {
        const ORV_DrawingInterface* table = &drawing->table;
        GOP_OperandPointer* image = below(2) == 0 ? image_.operand() : nullptr;
        const GFI_FontEngineTable* engine = maybe_engine();
        table->group_start.fn(table, 1, nullptr, engine, 0, 0, 0, 0, maybe_ticket(), 0, 0, 0, nullptr, &op_, image,
                              nullptr, 0, 0, 0, nullptr, nullptr, nullptr);
        if (!drawing->in_memory)
            drawing->groups.push_back(given_engine());
    }

    void finish_group(Drawing* drawing)
    {
        uint32_t replay = 0;
        drawing->table.group_finish.fn(&drawing->table, &replay);
        if (replay == 0 && !drawing->groups.empty())
            drawing->groups.pop_back();
    }

    void pull(const Engine& engine)
    {
        if (engine.table == nullptr)
            return;
        test.forget();
        uint32_t returned = 0;
        uint32_t index = 0;
        uint16_t variant = 0;
        GGO_Vector advance = {};
        engine.table->GFI_GlyphIndexGetFn(engine.table->fe_Context, &returned, &index, &variant, &advance, nullptr);
        EXPECT_NE(
            test.log().find("<GFI_GlyphIndexGetFn GfpId=\"" + std::to_string(engine.number) + "\" result=\"TRUE\""),
            std::string::npos);
    }

    void pull_by_all()
    {
        for (const Document& document : documents_)
            pull(document.engine);
        for (const auto& drawing : drawings_)
        {
            pull(drawing->engine);
            for (const Engine& engine : drawing->groups)
                pull(engine);
        }
    }

    std::mt19937 random_;
    ScriptedFontEngine client_engine_;
    FakeImage image_{2, 2};
    GSH_Shape shape_ = {GSH_SHAPE_GLYPHS, 0, {{1, 0, 0, 1, 2, 3}}};
    GFI_FontSpecPointer font_ = {};
    GFI_StringDesc desc_ = {};
    GFI_StringDescPointer string_ = {&desc_, nullptr, nullptr};
    GSH_ShapePointer text_ = {};
    GOP_Operator op_ = {};
    std::vector<Document> documents_;
    std::vector<std::unique_ptr<Drawing>> drawings_;
    bool second_set_ = false;
};

TEST(RandomCallSequence, KeepsEveryOpenEngineAndLosesNothing)
{
    for (uint32_t seed = 0; seed < 150; ++seed)
    {
        RandomCalls calls(seed);
        calls.run(80);
        const int32_t held = calls.ticket.references;
        const uint32_t ticket_calls = calls.tickets.calls;
        EXPECT_EQ(held, calls.references_of_frames());
        EXPECT_EQ(calls.test.shut_down(), 1U);
        EXPECT_EQ(calls.test.allocator.bad_frees(), 0U);
        EXPECT_EQ(calls.test.allocator.other_channels(), 0U);
        EXPECT_EQ(calls.test.allocator.outstanding(), 0U);
        EXPECT_EQ(calls.ticket.references, held) << "what is left open is the client's to release";
        EXPECT_EQ(calls.tickets.calls, ticket_calls);
        EXPECT_TRUE(calls.test.stream.text().ends_with("</ORV>\n"));
        if (testing::Test::HasFailure())
            FAIL() << "seed " << seed;
    }
}

}  // namespace
