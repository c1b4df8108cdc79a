// A job by chance, with a client and a renderer that behave as badly as they may: images that change, fail and lie,
// callbacks that draw, and a renderer that reads too much and too little, prepares twice, keeps, releases late, and
// asks for glyphs in every way.

#pragma once

#include "orvlog/interface/orvlog-session-options.h"
#include "tests/support/fake-identity.h"
#include "tests/support/fake-image.h"
#include "tests/support/fake-tickets.h"
#include "tests/support/memory-stream.h"
#include "tests/support/scripted-font-engine.h"
#include "tests/support/test-allocator.h"

#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace orvlog::test
{

class RandomJob
{
public:
    explicit RandomJob(uint32_t seed);
    RandomJob(const RandomJob&) = delete;
    RandomJob& operator=(const RandomJob&) = delete;

    // Makes the job; its log lies in `log` then, and what else it leaves in the present folder.
    void run();
    std::string log() const
    {
        return stream_.text();
    }
    bool side_files() const
    {
        return side_files_;
    }

private:
    struct Drawing
    {
        ORV_DrawingInterface table{};
        std::vector<uint64_t> groups;  // the numbers of the calls that began them
        uint64_t number = 0;           // that of the call that began it
        uint32_t callback = 0;         // the number of the callback in which it was begun; 0 outside
        uint32_t calls = 0;            // on it, that have not returned
        bool in_memory = false;
    };
    // What the renderer holds of an image, and of a font engine, as long as the call or what it has begun lasts.
    struct Held
    {
        GOP_OperandImagePointer record;
        bool kept = false;
        bool refused = false;
        uint64_t call = 0;
        uint64_t number = 0;
        uint64_t image = 0;
    };
    struct HeldEngine
    {
        const GFI_FontEngineTable* table;
        uint64_t call;
    };
    struct Renderer;

    uint32_t below(uint32_t limit)
    {
        return static_cast<uint32_t>(random_() % limit);
    }
    bool chance(uint32_t in)
    {
        return below(in) == 0;
    }
    void make_renderer();
    void open_session();
    void step();
    void start_drawing();
    void paint(Drawing& drawing);
    void paint_resource(Drawing& drawing);
    void start_group(Drawing& drawing);
    void finish_group(Drawing& drawing);
    void end(Drawing& drawing, bool finish);
    void forget(uint64_t call);
    Drawing* any_drawing();
    void say();
    void print_comment(const char* format, ...);
    void draw_within();
    const GFI_FontEngineTable* maybe_engine();
    const GFI_FontEngineTable* memory_engine();
    GOP_OperandPointer* maybe_image();
    const GSH_ShapePointer* text(uint32_t which);

    // The renderer's side.
    void took(GOP_OperandPointer* operand);
    void use(Held& held);
    bool is_dropped(const Held& held) const;
    void prepare(Held& held);
    void keep_or_release(Held& held);
    void read(Held& held);
    void pull(const GFI_FontEngineTable* engine);
    void pull_glyph(const GFI_FontEngineTable* engine);
    void fumble();
    void took_engine(const GFI_FontEngineTable* engine);
    void release_all();

    std::mt19937 random_;
    TestAllocator allocator_;
    MemoryStream stream_;
    FakeIdentity identity_;
    FakeTickets tickets_;
    FakeTickets::Ticket ticket_{&tickets_, 1, "x"};
    ORV_Interface renderer_{};
    ORV_Interface orv_{};
    orvlog_comment_fn_type comment_ = nullptr;
    void* comment_context_ = nullptr;
    bool side_files_ = false;
    bool memory_engines_ = false;
    uint32_t depth_ = 0;     // of callbacks from within which the client draws
    uint32_t within_ = 0;    // how often
    uint32_t callback_ = 0;  // the present one's number
    uint32_t ending_ = 0;    // calls that end something and have not returned
    uint64_t calls_ = 0;
    uint64_t call_ = 0;   // the present one
    uint32_t doing_ = 0;  // whether the renderer is at work in it

    void* document_ = nullptr;
    std::vector<std::unique_ptr<Drawing>> drawings_;
    std::vector<std::unique_ptr<FakeImage>> images_;
    std::vector<std::unique_ptr<ScriptedFontEngine>> engines_;
    std::vector<uint32_t> resources_;
    GOP_Operator op_{};
    GSH_Shape shape_{};
    GFI_FontSpec spec_{};
    GFI_FontSpecPointer font_{};
    GFI_StringDesc desc_{};
    uint8_t letters_[4] = {1, 2, 3, 4};
    GFI_StringDescPointer strings_[2] = {};
    GSH_ShapePointer texts_[2] = {};
    GSH_ShapeList clip_{};

    std::vector<Held> held_;
    uint64_t held_count_ = 0;
    uint32_t uses_ = 0;           // of them, one within the other
    std::set<uint64_t> refused_;  // images
    const GSH_ShapePointer* text_ = nullptr;
    std::vector<HeldEngine> tables_;  // wrapped ones that stand
};

}  // namespace orvlog::test
