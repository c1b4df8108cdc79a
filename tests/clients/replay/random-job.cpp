#include "tests/clients/replay/random-job.h"

#include <algorithm>
#include <cstdarg>

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
        if (engine != nullptr)
            job->tables_.push_back(engine);
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
        if (engine != nullptr)
            job->tables_.push_back(engine);
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
        start(of(&table->resource_start), out, engine);
        return 1;
    }
    static uint32_t memory_context_start(void*, const ORV_Interface* table, void*, ORV_DrawingInterface* out, uintptr_t,
                                         uintptr_t, uintptr_t, uintptr_t, uintptr_t, const GFI_FontEngineTable* engine,
                                         void*, uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t)
    {
        return start(of(&table->memory_context_start), out, engine);
    }
    static uint32_t object_paint(const ORV_DrawingInterface* table, uint8_t, uint32_t, const GOP_Operator*,
                                 const GSH_ShapePointer* path, uint32_t, const GSH_ShapeList*, GOP_OperandPointer* one,
                                 GOP_OperandPointer* two, GOP_OperandPointer* three)
    {
        RandomJob* job = of(&table->object_paint);
        job->text_ = path;
        for (GOP_OperandPointer* operand : {one, two, three})
            job->took(operand);
        return called(job);
    }
    static uint32_t object_paint_and_stroke(const ORV_DrawingInterface* table, uint8_t, uint8_t, uint32_t,
                                            const GOP_Operator*, const GOP_Operator*, const GSH_ShapePointer* path,
                                            const GPA_PathStrokingParams*, const GGO_Matrix*, uint32_t,
                                            const GSH_ShapeList*, uint32_t, GGO_Point*, GOP_OperandPointer* f1,
                                            GOP_OperandPointer* f2, GOP_OperandPointer* f3, GOP_OperandPointer* s1,
                                            GOP_OperandPointer* s2, GOP_OperandPointer* s3)
    {
        RandomJob* job = of(&table->object_paint_and_stroke);
        job->text_ = path;
        for (GOP_OperandPointer* operand : {f1, f2, f3, s1, s2, s3})
            job->took(operand);
        return called(job);
    }
    static uint32_t group_start(const ORV_DrawingInterface* table, uint32_t, uint32_t*,
                                const GFI_FontEngineTable* engine, uint32_t, uint32_t, uint32_t, uint32_t, void*,
                                uint32_t, uint32_t, uint32_t, const GGO_Matrix*, const GOP_Operator*,
                                GOP_OperandPointer* operand, const GSH_ShapeList*, uint32_t, double, double,
                                const GBC_Color*, const GBC_Color*, const GGO_BoxFloat*)
    {
        RandomJob* job = of(&table->group_start);
        if (engine != nullptr)
            job->tables_.push_back(engine);
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

RandomJob::RandomJob(uint32_t seed) : random_(seed)
{
    renderer_.document_start = {Renderer::document_start, this};
    renderer_.document_finish = {Renderer::document_finish, this};
    renderer_.resource_destroy = {Renderer::resource_destroy, this};
    renderer_.face_start = {Renderer::face_start, this};
    renderer_.resource_start = {Renderer::resource_start, this};
    renderer_.memory_context_start = {Renderer::memory_context_start, this};
    op_.op_MaskMode = GOP_MASK_IN;
    shape_ = {GSH_SHAPE_GLYPHS, 0, {{1, 0, 0, 1, 2, 3}}};
    spec_.ufs_FontSize = 12.5F;
    font_.fsp_FontSpec = &spec_;
    desc_.gsd_TextLen = 4;
    for (size_t i = 0; i < 2; ++i)
    {
        strings_[i] = {&desc_, letters_, nullptr};
        texts_[i].sp_HeaderPtr = &shape_;
        texts_[i].sp_U.glyph.font_spec_ptr = &font_;
        texts_[i].sp_U.glyph.string_desc = &strings_[i];
    }
    clip_.sl_ClipIn = 1;
    clip_.sl_Shape = texts_[0];
}

void RandomJob::open_session()
{
    ORVLOG_SessionOptions options{};
    side_files_ = chance(4);
    options.interface_out = &orv_;
    options.interface_in = &renderer_;
    options.allocator = allocator_.get();
    options.identity = identity_.get();
    options.log_stream = stream_.get();
    options.file_prefix = side_files_ ? "side" : nullptr;
    options.ticket_functions = tickets_.functions();
    options.ticket_serial_functions = tickets_.serial();
    options.comment_fn_out = &comment_;
    options.comment_ctx_out = &comment_context_;
    options.mode = below(2);
    options.via_temporary_log = below(2);
    options.image_dump_flag = below(2);
    options.glyph_fixed_format = below(2);
    options.glyph_get_format = below(5);
    orvlog_create_session_with(&options);
}

void RandomJob::run()
{
    open_session();
    orv_.document_start.fn(nullptr, &orv_, &document_, 7, maybe_engine(), nullptr);
    for (int i = 0; i < 40; ++i)
        step();
    while (!drawings_.empty())
        end(drawings_.size() - 1, true);
    orv_.document_finish.fn(&orv_, document_);
    ORVLOG_DLL_shutdown(orv_.document_start.context);
}

void RandomJob::step()
{
    const uint32_t kind = below(12);
    if (drawings_.empty() || kind == 0)
        return start_drawing();
    if (chance(10))
        say();
    const size_t at = below(static_cast<uint32_t>(drawings_.size()));
    Drawing& drawing = *drawings_[at];
    if (kind <= 7)
        return paint(drawing);
    if (kind == 8)
        return start_group(drawing);
    if (kind == 9)
    {
        uint32_t again = 0;
        forget_call();
        drawing.table.group_finish.fn(&drawing.table, &again);
        if (again == 0 && drawing.groups > 0)
            --drawing.groups;
        // Its engine may be gone.
        tables_.clear();
        return;
    }
    if (kind == 10 && !resources_.empty())
    {
        orv_.resource_destroy.fn(nullptr, &orv_, document_, nullptr, resources_.back());
        resources_.pop_back();
        return;
    }
    if (kind == 11)
        end(at, chance(2));
}

void RandomJob::end(size_t at, bool finish)
{
    // The engines of its scopes are gone then, and so are the masks of its groups.
    Drawing& drawing = *drawings_[at];
    tables_.clear();
    forget_call();
    if (finish)
        drawing.table.drawing_finish.fn(&drawing.table);
    else
        drawing.table.drawing_discard.fn(&drawing.table);
    tables_.clear();
    drawings_.erase(drawings_.begin() + static_cast<std::ptrdiff_t>(at));
}

void RandomJob::start_drawing()
{
    auto drawing = std::make_unique<Drawing>();
    ORV_FaceProperties properties{};
    properties.fp_FaceInchToPixels = {{100, 0, 0, 100, 0, 0}};
    properties.fp_WidthInPixels = 850;
    const uint32_t kind = below(4);
    const ORV_DrawingInterface* parent = drawings_.empty() ? nullptr : &drawings_[0]->table;
    void* ticket = chance(3) ? &ticket_ : nullptr;
    uint32_t id = 0;
    if (kind <= 1)
        orv_.face_start.fn(nullptr, &orv_, document_, &drawing->table, maybe_engine(), below(9), &properties, ticket, 0,
                           0);
    else
        orv_.resource_start.fn(nullptr, &orv_, document_, &drawing->table, parent, maybe_engine(), nullptr, ticket,
                               &id);
    if (kind > 1)
        resources_.push_back(id);
    drawings_.push_back(std::move(drawing));
}

void RandomJob::paint(Drawing& drawing)
{
    const ORV_DrawingInterface* table = &drawing.table;
    GGO_Point pen{};
    forget_call();
    const GSH_ShapeList* clip = chance(4) ? &clip_ : nullptr;
    const uint32_t kind = below(5);
    if (kind <= 2)
        table->object_paint.fn(table, 1, 0, &op_, text(below(3)), 0, clip, maybe_image(), maybe_image(), nullptr);
    else if (kind == 3)
        table->object_paint_and_stroke.fn(table, 1, 2, 0, &op_, &op_, text(below(3)), nullptr, nullptr, 0, clip,
                                          below(4), &pen, maybe_image(), maybe_image(), nullptr, maybe_image(), nullptr,
                                          nullptr);
    else if (!resources_.empty())
        table->resource_paint.fn(table, resources_[below(static_cast<uint32_t>(resources_.size()))], 0, 0, nullptr,
                                 &op_, maybe_image(), clip, 0, 1, 2, nullptr, nullptr, 0);
    forget_call();
}

void RandomJob::start_group(Drawing& drawing)
{
    const ORV_DrawingInterface* table = &drawing.table;
    forget_call();
    table->group_start.fn(table, below(9), nullptr, maybe_engine(), 0, 0, 0, 0, chance(4) ? &ticket_ : nullptr, 0, 0, 0,
                          nullptr, &op_, maybe_image(), chance(4) ? &clip_ : nullptr, 0, 0, 0, nullptr, nullptr,
                          nullptr);
    ++drawing.groups;
}

void RandomJob::say()
{
    print_comment("the client says %u\n", below(1000));
}

void RandomJob::print_comment(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    comment_(comment_context_, format, args);
    va_end(args);
}

// What a client says from within a callback.
void RandomJob::draw_within()
{
    if (within_ > 0 || !chance(12))
        return;
    say();
}

const GSH_ShapePointer* RandomJob::text(uint32_t which)
{
    return which < 2 ? &texts_[which] : nullptr;
}

const GFI_FontEngineTable* RandomJob::maybe_engine()
{
    if (chance(3))
        return nullptr;
    auto engine = std::make_unique<Engine>();
    engine->job = this;
    ScriptedFontEngine& inner = engine->inner;
    inner.advances.assign(below(4), {1.5, 0});
    inner.start_result = chance(8) ? 0 : 1;
    inner.index_result = chance(12) ? 0 : 1;
    inner.glyph_result = chance(5) ? 0 : 1;
    inner.changed = below(2);
    for (uint32_t i = 0; i < 5; ++i)
    {
        inner.fixed_results[i] = chance(4) ? 0 : 1;
        inner.fixed_returned[i] = below(2);
    }
    engine->table = inner.table;
    engine->table.fe_Context = engine.get();
    engine->table.GFI_StringStartFn = [](void* context, const GFI_FontSpecPointer* font, const GGO_Matrix* matrix,
                                         uint32_t flags, uint32_t scaled, const GFI_StringDescPointer* string,
                                         int32_t* unique, GGO_Matrix* glyph, uint32_t* glyph_flags) -> uint32_t
    {
        auto* self = static_cast<Engine*>(context);
        self->job->draw_within();
        const GGO_Matrix none{};
        if (matrix == nullptr)
            matrix = &none;
        return self->inner.table.GFI_StringStartFn(self->inner.table.fe_Context, font, matrix, flags, scaled, string,
                                                   unique, glyph, glyph_flags);
    };
    engine->table.GFI_GlyphIndexGetFn = [](void* context, uint32_t* returned, uint32_t* index, uint16_t* variant,
                                           GGO_Vector* advance, GGO_BoxFloat* box) -> uint32_t
    {
        const GFI_FontEngineTable& inner_table = static_cast<Engine*>(context)->inner.table;
        return inner_table.GFI_GlyphIndexGetFn(inner_table.fe_Context, returned, index, variant, advance, box);
    };
    engine->table.GFI_GlyphGetFixedFormatFn = [](void* context, uint32_t type, uint32_t* returned, uint32_t* changed,
                                                 GGO_Matrix* matrix, uint32_t* flags,
                                                 GFI_GlyphDescPointer** glyph) -> uint32_t
    {
        auto* self = static_cast<Engine*>(context);
        self->job->draw_within();
        return self->inner.table.GFI_GlyphGetFixedFormatFn(self->inner.table.fe_Context, type, returned, changed,
                                                           matrix, flags, glyph);
    };
    engine->table.GFI_GlyphGetFn = [](void* context, uint32_t type, uint32_t* changed, GGO_Matrix* matrix,
                                      uint32_t* flags, GFI_GlyphDescPointer** glyph) -> uint32_t
    {
        auto* self = static_cast<Engine*>(context);
        self->job->draw_within();
        return self->inner.table.GFI_GlyphGetFn(self->inner.table.fe_Context, type, changed, matrix, flags, glyph);
    };
    engine->table.fp_EngineIdGet = [](void*) -> const char* { return "an \"engine\""; };
    engines_.push_back(std::move(engine));
    return &engines_.back()->table;
}

GOP_OperandPointer* RandomJob::maybe_image()
{
    if (chance(2))
        return nullptr;
    auto image = std::make_unique<FakeImage>(1 + below(4), 1 + below(4));
    image->record.op_UniqueId = below(100);
    if (chance(2))
        image->image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
    if (chance(3))
        image->image.im_Flags |= GOP_OP_FLAGS_HAS_ATTRIBUTE_DATA;
    if (chance(4))
        image->record.imp_DirectImage = image->bytes.data();
    image->record.imp_RowStep = image->image.im_ImageWidthPixels;
    image->prepare_result = chance(8) ? 0 : 1;
    image->finish_result = below(2);
    image->reset_result = below(2);
    image->keep_result = chance(3) ? 0 : 1;
    image->fail_read = chance(4) ? below(3) : -1;
    if (chance(3))
        image->record.imp_ImageResetFn = nullptr;
    if (!side_files_ && chance(6))
        image->claim = static_cast<int64_t>(below(40));
    if (chance(6))
    {
        images_.push_back(std::make_unique<FakeImage>(2, 2));
        image->replacement = &images_.back()->record;
        images_.back()->image.im_Flags = image->image.im_Flags;
    }
    images_.push_back(std::move(image));
    return images_.back()->operand();
}

void RandomJob::took(GOP_OperandPointer* operand)
{
    const auto* record = reinterpret_cast<const GOP_OperandImagePointer*>(operand);
    // What the logger passes on as it is, in a memory context, isn't logged.
    const bool raw = std::ranges::any_of(images_, [&](const auto& image) { return &image->record == record; });
    if (record != nullptr && !raw)
        held_.push_back({*record, false});
}

void RandomJob::forget_call()
{
    std::erase_if(held_, [](const Held& held) { return !held.kept; });
    text_ = nullptr;
}

// What the renderer does in a call.
void RandomJob::fumble()
{
    if (within_ > 0)
        return;
    const uint32_t count = below(6);
    for (uint32_t i = 0; i < count && !held_.empty(); ++i)
    {
        const size_t at = below(static_cast<uint32_t>(held_.size()));
        Held held = held_[at];
        use(held);
        if (at < held_.size())
            held_[at] = held;
    }
    std::erase_if(held_, [](const Held& held) { return held.record.imp_Context == nullptr; });
    if (!tables_.empty() && chance(2))
        pull(tables_[below(static_cast<uint32_t>(tables_.size()))]);
}

void RandomJob::use(Held& held)
{
    GOP_OperandImagePointer* record = &held.record;
    const uint32_t kind = below(10);
    if (kind <= 2)
    {
        const uint32_t rescale = below(2);
        record->imp_ImagePrepareFn(&record, 1U << below(5), below(2), rescale, 1.5F, 0.5F, 2, 0.25F, below(2), below(6),
                                   below(2));
        if (record != &held.record)
            held.record = *record;
        return;
    }
    if (kind <= 6)
        return read(held);
    if (kind == 7)
    {
        if (chance(3))
            record->op_UniqueId = 12345;
        record->imp_ImageFinishFn(record, record->imp_Context);
        return;
    }
    if (kind == 8 && record->imp_ImageResetFn != nullptr)
        record->imp_ImageResetFn(record, record->imp_Context);
    if (kind != 9 || record->imp_ImageKeepFn == nullptr)
        return;
    if (held.kept)
    {
        record->imp_ImageReleaseFn(record);
        record->imp_Context = nullptr;
        return;
    }
    held.kept = record->imp_ImageKeepFn(record) != 0;
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
