#include "tests/clients/replay/random-job.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>

namespace orvlog::test
{

// The functions of the renderer.
struct RandomJob::Renderer
{
    template <typename Table> static RandomJob* of(const Table* table)
    {
        return static_cast<RandomJob*>(table->context);
    }

    static void fill(ORV_DrawingInterface* out, void* context)
    {
        out->object_paint = {object_paint, context};
        out->object_paint_and_stroke = {object_paint_and_stroke, context};
        out->group_start = {group_start, context};
        out->group_finish = {group_finish, context};
        out->resource_paint = {resource_paint, context};
        out->drawing_error_context = {[](const ORV_DrawingInterface*) -> void* { return nullptr; }, context};
        out->drawing_finish = {drawing_finish, context};
        out->drawing_discard = {drawing_finish, context};
    }

    static uint32_t called(RandomJob* job)
    {
        job->fumble();
        return job->chance(8) ? 0 : 1;
    }

    static uint32_t document_start(void*, const ORV_Interface* table, void** out, uint32_t,
                                   const GFI_FontEngineTable* engine, void*)
    {
        RandomJob* job = of(&table->document_start);
        *out = job;
        job->took_engine(engine);
        return called(job);
    }
    static uint32_t document_finish(const ORV_Interface* table, void*)
    {
        return called(of(&table->document_finish));
    }
    static uint32_t resource_destroy(void*, const ORV_Interface* table, void*, const ORV_DrawingInterface*, uint32_t)
    {
        return called(of(&table->resource_destroy));
    }
    static uint32_t start(RandomJob* job, ORV_DrawingInterface* out, const GFI_FontEngineTable* engine)
    {
        fill(out, job);
        job->took_engine(engine);
        if (job->chance(6))
            out->resource_paint.fn = nullptr;
        return called(job);
    }
    static uint32_t face_start(void*, const ORV_Interface* table, void*, ORV_DrawingInterface* out,
                               const GFI_FontEngineTable* engine, uint32_t, const ORV_FaceProperties*, void*, uint32_t,
                               uint32_t)
    {
        return start(of(&table->face_start), out, engine);
    }
    static uint32_t resource_start(void*, const ORV_Interface* table, void*, ORV_DrawingInterface* out,
                                   const ORV_DrawingInterface*, const GFI_FontEngineTable* engine,
                                   const ORV_ResourceProperties*, void*, uint32_t* id)
    {
        *id = of(&table->resource_start)->below(1000);
        return start(of(&table->resource_start), out, engine);
    }
    static uint32_t memory_context_start(void*, const ORV_Interface* table, void*, ORV_DrawingInterface* out, uintptr_t,
                                         uintptr_t, uintptr_t, uintptr_t, uintptr_t, const GFI_FontEngineTable* engine,
                                         void*, uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t)
    {
        return start(of(&table->memory_context_start), out, engine);
    }
    static uint32_t painted(RandomJob* job, const GSH_ShapePointer* path,
                            std::initializer_list<GOP_OperandPointer*> operands)
    {
        const GSH_ShapePointer* before = job->text_;
        job->text_ = path;
        for (GOP_OperandPointer* operand : operands)
            job->took(operand);
        const uint32_t result = called(job);
        job->text_ = before;
        return result;
    }
    static uint32_t object_paint(const ORV_DrawingInterface* table, uint8_t, uint32_t, const GOP_Operator*,
                                 const GSH_ShapePointer* path, uint32_t, const GSH_ShapeList*, GOP_OperandPointer* one,
                                 GOP_OperandPointer* two, GOP_OperandPointer* three)
    {
        RandomJob* job = of(&table->object_paint);
        return painted(job, path, {one, two, three});
    }
    static uint32_t object_paint_and_stroke(const ORV_DrawingInterface* table, uint8_t, uint8_t, uint32_t,
                                            const GOP_Operator*, const GOP_Operator*, const GSH_ShapePointer* path,
                                            const GPA_PathStrokingParams*, const GGO_Matrix*, uint32_t,
                                            const GSH_ShapeList*, uint32_t, GGO_Point*, GOP_OperandPointer* f1,
                                            GOP_OperandPointer* f2, GOP_OperandPointer* f3, GOP_OperandPointer* s1,
                                            GOP_OperandPointer* s2, GOP_OperandPointer* s3)
    {
        RandomJob* job = of(&table->object_paint_and_stroke);
        return painted(job, path, {f1, f2, f3, s1, s2, s3});
    }
    static uint32_t group_start(const ORV_DrawingInterface* table, uint32_t, uint32_t*,
                                const GFI_FontEngineTable* engine, uint32_t, uint32_t, uint32_t, uint32_t, void*,
                                uint32_t, uint32_t, uint32_t, const GGO_Matrix*, const GOP_Operator*,
                                GOP_OperandPointer* operand, const GSH_ShapeList*, uint32_t, double, double,
                                const GBC_Color*, const GBC_Color*, const GGO_BoxFloat*)
    {
        RandomJob* job = of(&table->group_start);
        job->took_engine(engine);
        job->took(operand);
        return called(job);
    }
    static uint32_t group_finish(const ORV_DrawingInterface* table, uint32_t* replay)
    {
        RandomJob* job = of(&table->group_finish);
        const uint32_t result = called(job);
        *replay = job->chance(4) ? 1 : 0;
        return result;
    }
    static uint32_t resource_paint(const ORV_DrawingInterface* table, uint32_t, uint32_t, uint32_t, const GGO_Matrix*,
                                   const GOP_Operator*, GOP_OperandPointer* operand, const GSH_ShapeList*, uint32_t,
                                   double, double, const GBC_Color*, const GBC_Color*, uint32_t)
    {
        RandomJob* job = of(&table->resource_paint);
        job->took(operand);
        return called(job);
    }
    static uint32_t drawing_finish(const ORV_DrawingInterface* table)
    {
        return called(of(&table->drawing_finish));
    }
};

void RandomJob::make_renderer()
{
    renderer_.document_start = {Renderer::document_start, this};
    renderer_.document_finish = {Renderer::document_finish, this};
    renderer_.resource_destroy = {Renderer::resource_destroy, this};
    renderer_.face_start = {Renderer::face_start, this};
    renderer_.resource_start = {Renderer::resource_start, this};
    renderer_.memory_context_start = {Renderer::memory_context_start, this};
}

void RandomJob::took(GOP_OperandPointer* operand)
{
    const auto* record = reinterpret_cast<const GOP_OperandImagePointer*>(operand);
    // What the logger passes on as it is, in a memory context, isn't logged.
    const bool raw = std::ranges::any_of(images_, [&](const auto& image) { return &image->record == record; });
    if (record != nullptr && !raw)
        held_.push_back({.record = *record, .call = call_, .number = ++held_count_, .image = held_count_});
}

void RandomJob::took_engine(const GFI_FontEngineTable* engine)
{
    if (engine != nullptr)
        tables_.push_back({engine, call_});
}

void RandomJob::forget(uint64_t call)
{
    std::erase_if(held_, [call](const Held& held) { return !held.kept && held.call == call; });
    std::erase_if(tables_, [call](const HeldEngine& held) { return held.call == call; });
}

// What the renderer does in a call.
void RandomJob::fumble()
{
    ++doing_;
    const uint32_t count = below(6);
    for (uint32_t i = 0; i < count && !held_.empty(); ++i)
    {
        Held held = held_[below(static_cast<uint32_t>(held_.size()))];
        ++uses_;
        use(held);
        --uses_;
        const auto known = std::ranges::find(held_, held.number, &Held::number);
        if (known != held_.end())
            *known = held;
    }
    if (!tables_.empty() && chance(2))
        pull(tables_[below(static_cast<uint32_t>(tables_.size()))].table);
    --doing_;
}

// The logger holds a few images whose keep was refused.
bool RandomJob::is_dropped(const Held& held) const
{
    constexpr std::ptrdiff_t kHeld = 6;
    const auto later = refused_.upper_bound(held.image);
    return held.refused && std::distance(later, refused_.end()) >= kHeld;
}

void RandomJob::use(Held& held)
{
    const uint32_t kind = below(10);
    if (is_dropped(held))
        return;
    if (kind <= 2)
        prepare(held);
    else if (kind <= 6)
        read(held);
    else if (kind == 7)
    {
        if (chance(3))
            held.record.op_UniqueId = 12345;
        held.record.imp_ImageFinishFn(&held.record, held.record.imp_Context);
    }
    else if (kind == 8 && held.record.imp_ImageResetFn != nullptr)
        held.record.imp_ImageResetFn(&held.record, held.record.imp_Context);
    else if (kind == 9 && held.record.imp_ImageKeepFn != nullptr)
        keep_or_release(held);
}

void RandomJob::prepare(Held& held)
{
    GOP_OperandImagePointer* record = &held.record;
    const uint32_t rescale = below(2);
    record->imp_ImagePrepareFn(&record, 1U << below(5), below(2), rescale, 1.5F, 0.5F, 2, 0.25F, below(2), below(6),
                               below(2));
    if (record == &held.record)
        return;
    // It may go on with both.
    if (chance(2))
    {
        held_.push_back(held);
        held_.back().number = ++held_count_;
    }
    held.record = *record;
}

// By any of its records the image ends, but not from within another callback, whose element would stand behind its end.
// The log doesn't tell when a kept image was used, so that the renderer doesn't use its other records any more.
void RandomJob::keep_or_release(Held& held)
{
    if (!held.kept)
    {
        std::erase_if(held_,
                      [&held](const Held& other) { return other.image == held.image && other.number != held.number; });
        held.refused = held.record.imp_ImageKeepFn(&held.record) == 0;
        held.kept = !held.refused || chance(2);
        if (held.refused)
            refused_.insert(held.image);
        return;
    }
    const uint64_t image = held.image;
    if (uses_ > 1)
        return;
    held.record.imp_ImageReleaseFn(&held.record);
    std::erase_if(held_, [image](const Held& other) { return other.image == image; });
    refused_.erase(image);
}

// What was granted, behind the session.
void RandomJob::release_all()
{
    while (!held_.empty())
        if (held_.back().refused || !chance(2))
            held_.pop_back();
        else
            keep_or_release(held_.back());
}

void RandomJob::read(Held& held)
{
    uint8_t bytes[64] = {};
    uint8_t attributes[64] = {};
    int32_t returned = 0;
    int32_t attr_returned = 0;
    GOP_OperandImagePointer* record = &held.record;
    const bool with_attr = chance(3);
    const uint32_t size = chance(3) ? below(5) : 1 + below(64);
    record->imp_ImageReadFn(record, record->imp_Context, below(4), bytes, size, static_cast<int32_t>(below(9)) - 2,
                            &returned, with_attr ? attributes : nullptr, with_attr ? 1 + below(64) : 0, 4,
                            &attr_returned);
}

void RandomJob::pull(const GFI_FontEngineTable* engine)
{
    const bool known = text_ != nullptr && !chance(5);
    const GFI_FontSpecPointer* font = known ? text_->sp_U.glyph.font_spec_ptr : nullptr;
    const GFI_StringDescPointer* string = known ? text_->sp_U.glyph.string_desc : nullptr;
    const GGO_Matrix matrix = {{2.5, 0, 0.125, 3, static_cast<double>(below(100)), 7}};
    int32_t unique = 0;
    GGO_Matrix glyph{};
    uint32_t flags = 0;
    engine->GFI_StringStartFn(engine->fe_Context, font, chance(9) ? nullptr : &matrix, below(8), below(2), string,
                              &unique, &glyph, &flags);
    for (uint32_t i = below(5); i > 0; --i)
    {
        uint32_t returned = 0;
        uint32_t index = 0;
        uint16_t variant = 0;
        GGO_Vector advance{};
        GGO_BoxFloat box{1, 1, -1, -1};
        engine->GFI_GlyphIndexGetFn(engine->fe_Context, &returned, &index, &variant, &advance,
                                    chance(2) ? &box : nullptr);
        pull_glyph(engine);
    }
}

void RandomJob::pull_glyph(const GFI_FontEngineTable* engine)
{
    uint32_t returned = 0;
    uint32_t changed = 0;
    GGO_Matrix matrix{};
    uint32_t flags = 0;
    GFI_GlyphDescPointer* glyph = nullptr;
    for (uint32_t i = below(3); i > 0; --i)
    {
        if (chance(2))
            engine->GFI_GlyphGetFn(engine->fe_Context, below(7), &changed, &matrix, &flags, &glyph);
        else
            engine->GFI_GlyphGetFixedFormatFn(engine->fe_Context, below(5), &returned, &changed, &matrix, &flags,
                                              &glyph);
    }
}

}  // namespace orvlog::test
