#include "tests/clients/replay/random-job.h"

#include <algorithm>
#include <cstdarg>
#include <utility>

namespace orvlog::test
{

constexpr uint32_t kDeepestCallback = 2;
constexpr uint32_t kMostWithin = 30;

RandomJob::RandomJob(uint32_t seed) : random_(seed)
{
    make_renderer();
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
    memory_engines_ = chance(2);
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
    call_ = ++calls_;
    const uint64_t document = call_;
    orv_.document_start.fn(nullptr, &orv_, &document_, 7, maybe_engine(), nullptr);
    for (int i = 0; i < 40; ++i)
        step();
    while (!drawings_.empty())
        end(*drawings_.back(), true);
    orv_.document_finish.fn(&orv_, std::exchange(document_, nullptr));
    forget(document);
    ORVLOG_DLL_shutdown(orv_.document_start.context);
    release_all();
}

RandomJob::Drawing* RandomJob::any_drawing()
{
    return drawings_.empty() ? nullptr : drawings_[below(static_cast<uint32_t>(drawings_.size()))].get();
}

void RandomJob::step()
{
    const uint32_t kind = below(12);
    Drawing* drawing = any_drawing();
    if (drawing == nullptr || kind == 0)
        return start_drawing();
    if (chance(10))
        say();
    // Of a paint in a memory context nothing is logged, but what follows is of its object type.
    if (kind <= 6 && drawing->in_memory)
        return;
    if (kind <= 6)
        return paint(*drawing);
    if (kind == 7)
        return paint_resource(*drawing);
    if (kind == 8)
        return start_group(*drawing);
    // Within a callback nothing ends but what was begun there: the rest may be in use.
    const bool may_end = drawing->calls == 0 && (depth_ == 0 || drawing->callback == callback_);
    if (kind == 9 && may_end)
        return finish_group(*drawing);
    if (kind == 10 && !resources_.empty())
    {
        const uint32_t resource = resources_.back();
        resources_.pop_back();
        orv_.resource_destroy.fn(nullptr, &orv_, document_, nullptr, resource);
    }
    if (kind == 11 && may_end)
        end(*drawing, chance(2));
}

// The engines of its scopes are gone then, and so are the masks of its groups.
void RandomJob::end(Drawing& drawing, bool finish)
{
    ++drawing.calls;
    ++ending_;
    if (finish)
        drawing.table.drawing_finish.fn(&drawing.table);
    else
        drawing.table.drawing_discard.fn(&drawing.table);
    --ending_;
    for (const uint64_t group : drawing.groups)
        forget(group);
    forget(drawing.number);
    std::erase_if(drawings_, [&drawing](const auto& other) { return other.get() == &drawing; });
}

void RandomJob::finish_group(Drawing& drawing)
{
    uint32_t again = 0;
    ++drawing.calls;
    ++ending_;
    drawing.table.group_finish.fn(&drawing.table, &again);
    --ending_;
    --drawing.calls;
    if (again != 0 || drawing.groups.empty())
        return;
    forget(drawing.groups.back());
    drawing.groups.pop_back();
}

void RandomJob::start_drawing()
{
    drawings_.push_back(std::make_unique<Drawing>());
    Drawing* drawing = drawings_.back().get();
    ORV_FaceProperties properties{};
    properties.fp_FaceInchToPixels = {{100, 0, 0, 100, 0, 0}};
    properties.fp_WidthInPixels = 850;
    const uint32_t kind = below(5);
    const bool inside = drawings_[0].get() != drawing && drawings_[0]->calls == 0;
    const ORV_DrawingInterface* parent = inside ? &drawings_[0]->table : nullptr;
    void* ticket = chance(3) ? &ticket_ : nullptr;
    uint32_t id = 0;
    const uint64_t outer = call_;
    drawing->number = call_ = ++calls_;
    drawing->callback = callback_;
    ++drawing->calls;
    drawing->in_memory = kind == 4;
    if (kind <= 1)
        orv_.face_start.fn(nullptr, &orv_, document_, &drawing->table, maybe_engine(), below(9), &properties, ticket, 0,
                           0);
    else if (kind <= 3)
        orv_.resource_start.fn(nullptr, &orv_, document_, &drawing->table, parent, maybe_engine(), nullptr, ticket,
                               &id);
    else
        orv_.memory_context_start.fn(nullptr, &orv_, document_, &drawing->table, 1, 2, 3, 4, 5, memory_engine(), ticket,
                                     8, 9, 10, 11, 12, 13);
    --drawing->calls;
    call_ = outer;
    if (kind == 2 || kind == 3)
        resources_.push_back(id);
}

void RandomJob::paint(Drawing& drawing)
{
    const ORV_DrawingInterface* table = &drawing.table;
    const GSH_ShapeList* clip = chance(4) ? &clip_ : nullptr;
    const uint64_t outer = call_;
    const uint64_t mine = call_ = ++calls_;
    GGO_Point pen{};
    ++drawing.calls;
    if (chance(4))
        table->object_paint_and_stroke.fn(table, 1, 2, 0, &op_, &op_, text(below(3)), nullptr, nullptr, 0, clip,
                                          below(4), &pen, maybe_image(), maybe_image(), nullptr, maybe_image(), nullptr,
                                          nullptr);
    else
        table->object_paint.fn(table, 1, 0, &op_, text(below(3)), 0, clip, maybe_image(), maybe_image(), nullptr);
    --drawing.calls;
    forget(mine);
    call_ = outer;
}

// One that isn't known now and then: its element stays open, so that within another one it would take that one's end.
void RandomJob::paint_resource(Drawing& drawing)
{
    if (depth_ > 0)
        return;
    const bool known = !resources_.empty() && !chance(5);
    const uint32_t id = known ? resources_[below(static_cast<uint32_t>(resources_.size()))] : 700 + below(9);
    const uint64_t outer = call_;
    const uint64_t mine = call_ = ++calls_;
    ++drawing.calls;
    drawing.table.resource_paint.fn(&drawing.table, id, 0, 0, nullptr, &op_, maybe_image(),
                                    chance(4) ? &clip_ : nullptr, 0, 1, 2, nullptr, nullptr, 0);
    --drawing.calls;
    forget(mine);
    call_ = outer;
}

// What it came with stays until it ends.
void RandomJob::start_group(Drawing& drawing)
{
    const ORV_DrawingInterface* table = &drawing.table;
    const uint64_t outer = call_;
    drawing.groups.push_back(call_ = ++calls_);
    ++drawing.calls;
    table->group_start.fn(table, below(9), nullptr, maybe_engine(), 0, 0, 0, 0, chance(4) ? &ticket_ : nullptr, 0, 0, 0,
                          nullptr, &op_, maybe_image(), chance(4) ? &clip_ : nullptr, 0, 0, 0, nullptr, nullptr,
                          nullptr);
    --drawing.calls;
    call_ = outer;
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

// What a client does from within a callback. Between the logger's own callbacks it doesn't draw: what the renderer then
// called back couldn't be told from those. Nor does it while something ends: the log doesn't tell whether that was
// before or behind the end.
void RandomJob::draw_within()
{
    if (depth_ >= kDeepestCallback || within_ >= kMostWithin || document_ == nullptr || !chance(12))
        return;
    ++within_;
    const uint32_t doing = std::exchange(doing_, 0);
    const uint32_t callback = std::exchange(callback_, within_);
    ++depth_;
    if (doing == 0 || ending_ > 0 || chance(2))
        say();
    else
        step();
    --depth_;
    callback_ = callback;
    doing_ = doing;
}

const GSH_ShapePointer* RandomJob::text(uint32_t which)
{
    return which < 2 ? &texts_[which] : nullptr;
}

const GFI_FontEngineTable* RandomJob::maybe_engine()
{
    if (chance(3))
        return nullptr;
    engines_.push_back(std::make_unique<ScriptedFontEngine>());
    ScriptedFontEngine& engine = *engines_.back();
    engine.advances.assign(below(4), {1.5, 0});
    engine.start_result = chance(8) ? 0 : 1;
    engine.index_result = chance(12) ? 0 : 1;
    engine.glyph_result = chance(5) ? 0 : 1;
    engine.changed = below(2);
    for (uint32_t i = 0; i < 5; ++i)
    {
        engine.fixed_results[i] = chance(4) ? 0 : 1;
        engine.fixed_returned[i] = below(2);
    }
    engine.on_call = [this] { draw_within(); };
    if (!chance(4))
        engine.table.fp_EngineIdGet = [](void*) -> const char* { return "an \"engine\""; };
    return &engine.table;
}

// The log doesn't tell which memory contexts had one, so that in a job all have or none has.
const GFI_FontEngineTable* RandomJob::memory_engine()
{
    const GFI_FontEngineTable* engine = nullptr;
    while (memory_engines_ && engine == nullptr)
        engine = maybe_engine();
    return engine;
}

GOP_OperandPointer* RandomJob::maybe_image()
{
    if (chance(2))
        return nullptr;
    auto image = std::make_unique<FakeImage>(1 + below(4), 1 + below(4));
    image->on_call = [this] { draw_within(); };
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

}  // namespace orvlog::test
