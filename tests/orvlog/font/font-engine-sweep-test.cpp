// A job with a font engine of a document, a face, a resource and a group, whose glyphs are pulled by the logger and
// by the renderer, swept through failures of memory, of the log's stream and of the engine; and engines that answer
// at random.

#include "orvlog/session/orvlog-session.h"
#include "tests/support/failure-sweep.h"
#include "tests/support/guarded-block.h"
#include "tests/support/scripted-font-engine.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{

using namespace orvlog::test;

// Pulls a string as a renderer does.
void pull(const GFI_FontEngineTable* engine, const GSH_ShapePointer* text)
{
    if (engine == nullptr)
        return;
    void* context = engine->fe_Context;
    const GGO_Matrix identity = {{1, 0, 0, 1, 0, 0}};
    GGO_Matrix matrix = identity;
    GFI_GlyphDescPointer* glyph = nullptr;
    GGO_Vector advance = {};
    int32_t font_id = 0;
    uint32_t flags = 0;
    uint32_t returned = 1;
    uint32_t changed = 0;
    uint32_t index = 0;
    uint16_t variant = 0;
    if (engine->GFI_StringStartFn(context, text->sp_U.glyph.font_spec_ptr, &identity, 1, 1,
                                  text->sp_U.glyph.string_desc, &font_id, &matrix, &flags) == 0)
        return;
    for (int i = 0; i < 3; ++i)
    {
        if (engine->GFI_GlyphIndexGetFn(context, &returned, &index, &variant, &advance, nullptr) == 0 || returned == 0)
            return;
        engine->GFI_GlyphGetFixedFormatFn(context, GFI_GDT_PATH, &returned, &changed, &matrix, &flags, &glyph);
        engine->GFI_GlyphGetFn(context, GFI_GDT_BITMAP, &changed, &matrix, &flags, &glyph);
    }
    engine->fp_EngineIdGet(context);
}

struct Text
{
    GSH_Shape shape = {GSH_SHAPE_GLYPHS, 0, {{1, 0, 0, 1, 2, 3}}};
    GFI_FontSpecPointer font = {};
    GFI_StringDesc desc = {};
    GFI_StringDescPointer string = {&desc, nullptr, nullptr};
    GSH_ShapePointer pointer = {};

    Text()
    {
        pointer.sp_HeaderPtr = &shape;
        pointer.sp_U.glyph.font_spec_ptr = &font;
        pointer.sp_U.glyph.string_desc = &string;
    }
};

// The same engine in four scopes, and a text in each of the three drawings and groups.
void run_job(TestSession* client, const GFI_FontEngineTable* engine)
{
    Text text;
    const GFI_FontEngineTable* pulled = nullptr;
    client->renderer.on_draw(
        [&](const char* call)
        {
            if (client->renderer.last_engine != nullptr)
                pulled = client->renderer.last_engine;
            if (std::string(call) == "object_paint")
                pull(pulled, &text.pointer);
        });
    const auto paint = [&](const ORV_DrawingInterface& drawing)
    { drawing.object_paint.fn(&drawing, 1, 0, nullptr, &text.pointer, 0, nullptr, nullptr, nullptr, nullptr); };
    const auto start_group = [&](const ORV_DrawingInterface& drawing, const GFI_FontEngineTable* of_group)
    {
        drawing.group_start.fn(&drawing, 1, nullptr, of_group, 0, 0, 0, 0, nullptr, 0, 0, 0, nullptr, nullptr, nullptr,
                               nullptr, 0, 0, 0, nullptr, nullptr, nullptr);
    };
    uint32_t replay = 0;
    if (client->orv.document_start.fn(nullptr, &client->orv, &client->document, 1, engine, nullptr) == 0)
        return client->renderer.on_draw(nullptr);
    ORV_DrawingInterface face = {};
    const ORV_FaceProperties properties = letter_face();
    if (client->orv.face_start.fn(nullptr, &client->orv, client->document, &face, engine, 1, &properties, nullptr, 0,
                                  0) != 0)
    {
        paint(face);
        ORV_DrawingInterface resource = {};
        uint32_t id = 0;
        client->orv.resource_start.fn(nullptr, &client->orv, client->document, &resource, &face, engine, nullptr,
                                      nullptr, &id);
        if (resource.object_paint.fn != nullptr)
        {
            start_group(resource, engine);
            paint(resource);
            resource.drawing_finish.fn(&resource);
        }
        pulled = nullptr;
        start_group(face, engine);
        paint(face);
        face.group_finish.fn(&face, &replay);
        face.drawing_finish.fn(&face);
    }
    client->finish_document();
    client->renderer.on_draw(nullptr);
}

class FontEngineSweep : public testing::TestWithParam<int>
{
protected:
    static constexpr int kTransparent = 0;
    static constexpr int kFixedFormats = 2;

    // Runs the job with the fault that `prepare` sets, and gives whether it was met.
    bool run(const std::function<void(TestSession*)>& prepare, const std::function<bool(const TestSession&)>& met)
    {
        TestSession client;
        if (GetParam() != kTransparent)
            client.set_base_mode();
        static_cast<ORVLOG_Session*>(client.session())->glyph_fixed_format = GetParam() == kFixedFormats ? 1 : 0;
        ScriptedFontEngine engine;
        engine.table.fp_EngineIdGet = [](void*) { return "E"; };
        engine.advances = {{1, 0}, {1, 0}};
        engine.fuse = &fuse;
        prepare(&client);
        run_job(&client, engine.get());
        const bool result = met(client);
        client.allocator.refuse(0);
        client.stream.fail(0);
        client.shut_down();
        EXPECT_EQ(client.allocator.bad_frees(), 0U);
        EXPECT_EQ(client.allocator.outstanding(), 0U);
        calls = engine.take_calls();
        return result;
    }

    int64_t fuse = 0;
    std::string calls;
};

TEST_P(FontEngineSweep, SoundJobPullsEveryGlyph)
{
    run([](TestSession*) {}, [](const TestSession&) { return false; });
    const std::string captured = GetParam() == kTransparent ? ""
                                 : GetParam() == kFixedFormats
                                     ? "start index fixed0 fixed1 fixed2 index fixed0 fixed1 fixed2 index "
                                     : "start index glyph1 index glyph1 index ";
    const std::string rendered = "start index fixed2 glyph1 index fixed2 glyph1 index ";
    EXPECT_EQ(calls, captured + rendered + captured + rendered + captured + rendered);
}

TEST_P(FontEngineSweep, NthAllocationRefused)
{
    const auto refused = [&](uint64_t n)
    {
        return run([&](TestSession* client) { client->allocator.refuse(n); },
                   [](const TestSession& client) { return client.allocator.refused() != 0; });
    };
    EXPECT_GT(sweep_failures(refused), 14U);
}

TEST_P(FontEngineSweep, AllAllocationsRefusedFromTheNthOn)
{
    const auto refused = [&](uint64_t n)
    {
        return run([&](TestSession* client) { client->allocator.refuse(n, true); },
                   [](const TestSession& client) { return client.allocator.refused() != 0; });
    };
    EXPECT_GT(sweep_failures(refused), 14U);
}

TEST_P(FontEngineSweep, NthCallOfTheEngineFailed)
{
    const auto failed = [&](uint64_t n) {
        return run([&](TestSession*) { fuse = static_cast<int64_t>(n); },
                   [&](const TestSession&) { return fuse <= 0; });
    };
    EXPECT_GT(sweep_failures(failed), 19U);
}

TEST_P(FontEngineSweep, StreamFailsFromTheNthOperationOn)
{
    const auto failed = [&](uint64_t n)
    {
        const bool met = run([&](TestSession* client) { client->stream.fail(n, true); },
                             [](const TestSession& client) { return client.stream.failed() != 0; });
        EXPECT_NE(calls.find("start index "), std::string::npos) << n;
        return met;
    };
    EXPECT_GT(sweep_failures(failed, 41), 20U);
}

INSTANTIATE_TEST_SUITE_P(Pulls, FontEngineSweep, testing::Values(0, 1, 2),
                         [](const testing::TestParamInfo<int>& test) {
                             return test.param == 0 ? "ByTheRenderer" : test.param == 1 ? "Bitmaps" : "FixedFormats";
                         });

// Answers anything: failures, glyphs of every kind and of none, words left as they were. What it delivers lies at the
// end of a page.
class RandomFontEngine
{
public:
    explicit RandomFontEngine(uint32_t seed) : random_(seed)
    {
        table.fe_Context = this;
        table.GFI_StringStartFn = [](void* context, const GFI_FontSpecPointer*, const GGO_Matrix*, uint32_t, uint32_t,
                                     const GFI_StringDescPointer*, int32_t* font, GGO_Matrix* matrix,
                                     uint32_t* flags) -> uint32_t
        {
            RandomFontEngine* self = of(context);
            self->left_ = self->next() % 6;
            self->maybe(font, static_cast<int32_t>(self->next()));
            self->maybe(matrix, GGO_Matrix{{0, 0, 0, 0, 1e300, -1e-300}});
            self->maybe(flags, self->next());
            return self->result();
        };
        table.GFI_GlyphIndexGetFn = [](void* context, uint32_t* returned, uint32_t* index, uint16_t* variant,
                                       GGO_Vector* advance, GGO_BoxFloat* box) -> uint32_t
        {
            RandomFontEngine* self = of(context);
            *returned = self->left_ == 0 ? 0 : self->next() | 1;
            self->left_ -= self->left_ == 0 ? 0 : 1;
            self->maybe(index, self->next());
            self->maybe(variant, static_cast<uint16_t>(self->next()));
            self->maybe(advance, GGO_Vector{-1e308, 1e308});
            if (box != nullptr)
                self->maybe(box, GGO_BoxFloat{4, 3, 2, 1});
            return self->result();
        };
        table.GFI_GlyphGetFixedFormatFn = [](void* context, uint32_t, uint32_t* returned, uint32_t* changed,
                                             GGO_Matrix* matrix, uint32_t* flags,
                                             GFI_GlyphDescPointer** glyph) -> uint32_t
        {
            RandomFontEngine* self = of(context);
            self->maybe(returned, self->next() % 2);
            return self->deliver(changed, matrix, flags, glyph);
        };
        table.GFI_GlyphGetFn = [](void* context, uint32_t, uint32_t* changed, GGO_Matrix* matrix, uint32_t* flags,
                                  GFI_GlyphDescPointer** glyph) -> uint32_t
        { return of(context)->deliver(changed, matrix, flags, glyph); };
        table.fp_EngineIdGet = [](void* context)
        { return of(context)->next() % 2 == 0 ? "\x01 engine \"x\" \xff" : nullptr; };
        fill();
    }
    RandomFontEngine(const RandomFontEngine&) = delete;
    RandomFontEngine& operator=(const RandomFontEngine&) = delete;

    GFI_FontEngineTable table = {};

private:
    static RandomFontEngine* of(void* context)
    {
        return static_cast<RandomFontEngine*>(context);
    }
    uint32_t next()
    {
        return static_cast<uint32_t>(random_());
    }
    template <typename Value> void maybe(Value* place, const Value& value)
    {
        if (next() % 3 != 0)
            *place = value;
    }
    uint32_t result()
    {
        return next() % 5 == 0 ? 0 : next() | 1;
    }
    void fill()
    {
        uint8_t bytes[40] = {};
        const GFI_GlyphDescFBE fbe = {{GFI_GDT_FBE, {0, 0}}, 1, 1, 8};
        const GFI_GlyphDescBitmap bitmap = {{GFI_GDT_BITMAP, {0, 0}}, 8, 4, 2, 1};
        const GFI_GlyphDescTrueType type = {{GFI_GDT_TRUETYPE, {0, 0}}, 14};
        const GFI_GlyphDescRLE rle = {{GFI_GDT_RLE, {0, 0}}, 1, 1, 10};
        const GFI_GlyphDescPath path = {{GFI_GDT_PATH, {0, 0}}, 7};
        const GFI_GlyphDesc unknown = {77, {0, 0}};
        const auto add = [&](const void* head, size_t size, size_t whole)
        {
            std::memcpy(bytes, head, size);
            glyphs_.push_back(std::make_unique<GuardedBlock>(bytes, whole));
        };
        add(&fbe, sizeof fbe, 40);
        add(&bitmap, sizeof bitmap, 40);
        add(&type, 26, 40);
        add(&rle, 30, 40);
        add(&path, sizeof path, 32);
        add(&unknown, sizeof unknown, 24);
    }
    uint32_t deliver(uint32_t* changed, GGO_Matrix* matrix, uint32_t* flags, GFI_GlyphDescPointer** glyph)
    {
        maybe(changed, next() % 2);
        maybe(matrix, GGO_Matrix{{1, 2, 3, 4, 5, 6}});
        maybe(flags, next());
        const size_t which = next() % (glyphs_.size() + 1);
        given_.gdp_GlyphDesc = which < glyphs_.size() ? glyphs_[which]->as<GFI_GlyphDesc>() : nullptr;
        *glyph = next() % 7 != 0 ? &given_ : nullptr;
        return result();
    }

    std::mt19937 random_;
    uint32_t left_ = 0;
    GFI_GlyphDescPointer given_ = {};
    std::vector<std::unique_ptr<GuardedBlock>> glyphs_;
};

// Every tag that is opened is closed, in order; comments stand between lines.
void expect_balanced(const std::string& log)
{
    std::vector<std::string> open;
    for (size_t at = log.find('<'); at != std::string::npos; at = log.find('<', at + 1))
    {
        if (log.compare(at, 4, "<!--") == 0)
        {
            at = log.find("-->", at);
            continue;
        }
        const size_t end = log.find('>', at);
        ASSERT_NE(end, std::string::npos);
        const bool closes = log[at + 1] == '/';
        const size_t from = at + (closes ? 2 : 1);
        const std::string name = log.substr(from, log.find_first_of(" />", from) - from);
        if (closes)
        {
            ASSERT_FALSE(open.empty()) << name;
            ASSERT_EQ(open.back(), name);
            open.pop_back();
        }
        else if (log[end - 1] != '/')
            open.push_back(name);
    }
    EXPECT_TRUE(open.empty());
}

TEST(RandomEngines, AreLoggedWhateverTheySay)
{
    for (uint32_t seed = 0; seed < 300; ++seed)
    {
        TestSession client;
        client.set_base_mode();
        static_cast<ORVLOG_Session*>(client.session())->glyph_fixed_format = seed % 2;
        RandomFontEngine engine(seed);
        run_job(&client, &engine.table);
        EXPECT_EQ(client.renderer.count("object_paint"), 3U);
        client.shut_down();
        EXPECT_EQ(client.allocator.bad_frees(), 0U);
        EXPECT_EQ(client.allocator.outstanding(), 0U);
        expect_balanced(client.stream.text());
        if (HasFailure())
            FAIL() << "seed " << seed;
    }
}

}  // namespace
