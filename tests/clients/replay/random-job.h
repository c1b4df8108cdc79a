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
        uint32_t groups = 0;
    };
    // An image of the client's, and what the renderer holds of it.
    struct Held
    {
        GOP_OperandImagePointer record;
        bool kept = false;
    };
    struct Renderer;
    struct Engine
    {
        RandomJob* job = nullptr;
        ScriptedFontEngine inner;
        GFI_FontEngineTable table{};
    };

    uint32_t below(uint32_t limit)
    {
        return static_cast<uint32_t>(random_() % limit);
    }
    bool chance(uint32_t in)
    {
        return below(in) == 0;
    }
    void open_session();
    void step();
    void start_drawing();
    void paint(Drawing& drawing);
    void start_group(Drawing& drawing);
    void end(size_t at, bool finish);
    void say();
    void print_comment(const char* format, ...);
    void draw_within();
    const GFI_FontEngineTable* maybe_engine();
    GOP_OperandPointer* maybe_image();
    const GSH_ShapePointer* text(uint32_t which);

    // The renderer's side.
    void took(GOP_OperandPointer* operand);
    void use(Held& held);
    void read(Held& held);
    void pull(const GFI_FontEngineTable* engine);
    void pull_glyph(const GFI_FontEngineTable* engine);
    void fumble();
    void forget_call();

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
    uint32_t within_ = 0;

    void* document_ = nullptr;
    std::vector<std::unique_ptr<Drawing>> drawings_;
    std::vector<std::unique_ptr<FakeImage>> images_;
    std::vector<std::unique_ptr<Engine>> engines_;
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

    std::vector<Held> held_;  // of the present call first, then those that are kept
    const GSH_ShapePointer* text_ = nullptr;
    std::vector<const GFI_FontEngineTable*> tables_;  // wrapped ones that stand
};

}  // namespace orvlog::test
