#include "tools/render/call-costs.h"

#include "clients/system/system.h"

#include <ctime>
#include <utility>

namespace orvlog::tool
{

namespace
{

int64_t nanoseconds(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

enum Callback : uint32_t
{
    string_start,
    glyph_index,
    glyph_fixed,
    glyph_get,
    prepare,
    read,
    finish,
    reset,
    keep,
    release
};

}  // namespace

void Cost::add(const Cost& other)
{
    wall += other.wall;
    processor += other.processor;
    memory += other.memory;
}

void Cost::take_off(const Cost& other)
{
    wall -= other.wall;
    processor -= other.processor;
    memory -= other.memory;
}

Cost cost_now()
{
    Cost now;
    now.memory = system::heap_bytes();
    now.processor = nanoseconds(CLOCK_PROCESS_CPUTIME_ID);
    now.wall = nanoseconds(CLOCK_MONOTONIC);
    return now;
}

struct CallCosts::Engine
{
    CallCosts* owner;
    const GFI_FontEngineTable* inner;
    GFI_FontEngineTable table;
};

struct CallCosts::Image
{
    CallCosts* owner;
    GOP_OperandImagePointer* inner;
    GOP_OperandImagePointer record;

    void refresh();
};

struct CallCosts::Drawing
{
    CallCosts* owner;
    ORV_DrawingInterface inner;
};

struct CallCosts::Functions
{
    static CallCosts* costs(const ORV_Interface* table)
    {
        return static_cast<CallCosts*>(table->document_start.context);
    }
    static const ORV_Interface* real(const ORV_Interface* table)
    {
        return &costs(table)->renderer_;
    }
    static Drawing& drawing(const ORV_DrawingInterface* table)
    {
        return *static_cast<Drawing*>(table->object_paint.context);
    }

    // A call of the renderer's, measured.
    template <typename Forward> static uint32_t call(CallCosts* costs, Forward forward)
    {
        costs->in_callbacks_ = {};
        const Cost before = cost_now();
        const uint32_t result = forward();
        Cost own = cost_now();
        CallCost& told = costs->calls_.back();
        told.begin = told.end == 0 ? before.wall - costs->start_ : told.begin;
        told.end = own.wall - costs->start_;
        own.take_off(before);
        own.take_off(costs->in_callbacks_);
        told.own.add(own);
        costs->end_call();
        return result;
    }
    // A callback that the replay answers.
    template <typename Forward> static uint32_t answer(CallCosts* costs, Callback kind, Forward forward)
    {
        const Cost before = cost_now();
        const uint32_t result = forward();
        costs->add(kind, before, 0);
        return result;
    }

    static uint32_t document_start(void* err, const ORV_Interface* table, void** document, uint32_t id,
                                   const GFI_FontEngineTable* engine, void* extra)
    {
        const GFI_FontEngineTable* wrapped = costs(table)->wrap(engine);
        return call(costs(table),
                    [&] { return real(table)->document_start.fn(err, real(table), document, id, wrapped, extra); });
    }
    static uint32_t document_finish(const ORV_Interface* table, void* document)
    {
        return call(costs(table), [&] { return real(table)->document_finish.fn(real(table), document); });
    }
    static const ORV_DrawingInterface* parent_of(const ORV_DrawingInterface* parent)
    {
        return parent != nullptr ? &drawing(parent).inner : nullptr;
    }
    static uint32_t resource_destroy(void* err, const ORV_Interface* table, void* document,
                                     const ORV_DrawingInterface* parent, uint32_t resource)
    {
        return call(
            costs(table),
            [&] { return real(table)->resource_destroy.fn(err, real(table), document, parent_of(parent), resource); });
    }
    static uint32_t face_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* out,
                               const GFI_FontEngineTable* engine, uint32_t number, const ORV_FaceProperties* properties,
                               void* ticket, uint32_t orientation, uint32_t placement)
    {
        const GFI_FontEngineTable* wrapped = costs(table)->wrap(engine);
        const uint32_t result =
            call(costs(table),
                 [&]
                 {
                     return real(table)->face_start.fn(err, real(table), document, out, wrapped, number, properties,
                                                       ticket, orientation, placement);
                 });
        costs(table)->wrap(out);
        return result;
    }
    static uint32_t resource_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* out,
                                   const ORV_DrawingInterface* parent, const GFI_FontEngineTable* engine,
                                   const ORV_ResourceProperties* properties, void* ticket, uint32_t* resource)
    {
        const GFI_FontEngineTable* wrapped = costs(table)->wrap(engine);
        const uint32_t result =
            call(costs(table),
                 [&]
                 {
                     return real(table)->resource_start.fn(err, real(table), document, out, parent_of(parent), wrapped,
                                                           properties, ticket, resource);
                 });
        costs(table)->wrap(out);
        return result;
    }
    static uint32_t memory_context_start(void* err, const ORV_Interface* table, void* document,
                                         ORV_DrawingInterface* out, uintptr_t word1, uintptr_t word2, uintptr_t word3,
                                         uintptr_t word4, uintptr_t word5, const GFI_FontEngineTable* engine,
                                         void* ticket, uintptr_t word8, uintptr_t word9, uintptr_t word10,
                                         uintptr_t word11, uintptr_t word12, uintptr_t word13)
    {
        const uint32_t result = call(costs(table),
                                     [&]
                                     {
                                         return real(table)->memory_context_start.fn(
                                             err, real(table), document, out, word1, word2, word3, word4, word5, engine,
                                             ticket, word8, word9, word10, word11, word12, word13);
                                     });
        costs(table)->wrap(out);
        return result;
    }

    static uint32_t object_paint(const ORV_DrawingInterface* table, uint8_t type, uint32_t hints,
                                 const GOP_Operator* op, const GSH_ShapePointer* path, uint32_t placement,
                                 const GSH_ShapeList* clip, GOP_OperandPointer* one, GOP_OperandPointer* two,
                                 GOP_OperandPointer* three)
    {
        Drawing& to = drawing(table);
        GOP_OperandPointer* operands[] = {to.owner->wrap(one), to.owner->wrap(two), to.owner->wrap(three)};
        return call(to.owner,
                    [&]
                    {
                        return to.inner.object_paint.fn(&to.inner, type, hints, op, path, placement, clip, operands[0],
                                                        operands[1], operands[2]);
                    });
    }
    static uint32_t object_paint_and_stroke(const ORV_DrawingInterface* table, uint8_t fill_type, uint8_t stroke_type,
                                            uint32_t hints, const GOP_Operator* fill_op, const GOP_Operator* stroke_op,
                                            const GSH_ShapePointer* path, const GPA_PathStrokingParams* params,
                                            const GGO_Matrix* transform, uint32_t placement, const GSH_ShapeList* clip,
                                            uint32_t flags, GGO_Point* end_point, GOP_OperandPointer* fill1,
                                            GOP_OperandPointer* fill2, GOP_OperandPointer* fill3,
                                            GOP_OperandPointer* stroke1, GOP_OperandPointer* stroke2,
                                            GOP_OperandPointer* stroke3)
    {
        Drawing& to = drawing(table);
        GOP_OperandPointer* o[] = {to.owner->wrap(fill1),   to.owner->wrap(fill2),   to.owner->wrap(fill3),
                                   to.owner->wrap(stroke1), to.owner->wrap(stroke2), to.owner->wrap(stroke3)};
        return call(to.owner,
                    [&]
                    {
                        return to.inner.object_paint_and_stroke.fn(
                            &to.inner, fill_type, stroke_type, hints, fill_op, stroke_op, path, params, transform,
                            placement, clip, flags, end_point, o[0], o[1], o[2], o[3], o[4], o[5]);
                    });
    }
    static uint32_t group_start(const ORV_DrawingInterface* table, uint32_t unique_id, uint32_t* group,
                                const GFI_FontEngineTable* engine, uint32_t hints, uint32_t type, uint32_t knockout,
                                uint32_t replayable, void* ticket, uint32_t orientation, uint32_t has_placement,
                                uint32_t placement, const GGO_Matrix* retransform, const GOP_Operator* op,
                                GOP_OperandPointer* operand2, const GSH_ShapeList* clip, uint32_t tiling, double x,
                                double y, const GBC_Color* mask, const GBC_Color* color, const GGO_BoxFloat* box)
    {
        Drawing& to = drawing(table);
        const GFI_FontEngineTable* wrapped = to.owner->wrap(engine);
        GOP_OperandPointer* operand = to.owner->wrap(operand2);
        return call(to.owner,
                    [&]
                    {
                        return to.inner.group_start.fn(&to.inner, unique_id, group, wrapped, hints, type, knockout,
                                                       replayable, ticket, orientation, has_placement, placement,
                                                       retransform, op, operand, clip, tiling, x, y, mask, color, box);
                    });
    }
    static uint32_t group_finish(const ORV_DrawingInterface* table, uint32_t* again)
    {
        Drawing& to = drawing(table);
        return call(to.owner, [&] { return to.inner.group_finish.fn(&to.inner, again); });
    }
    static uint32_t resource_paint(const ORV_DrawingInterface* table, uint32_t resource, uint32_t hints, uint32_t type,
                                   const GGO_Matrix* retransform, const GOP_Operator* op, GOP_OperandPointer* operand2,
                                   const GSH_ShapeList* clip, uint32_t tiling, double x, double y,
                                   const GBC_Color* mask, const GBC_Color* color, uint32_t orientation)
    {
        Drawing& to = drawing(table);
        GOP_OperandPointer* operand = to.owner->wrap(operand2);
        return call(to.owner,
                    [&]
                    {
                        return to.inner.resource_paint.fn(&to.inner, resource, hints, type, retransform, op, operand,
                                                          clip, tiling, x, y, mask, color, orientation);
                    });
    }
    static void* drawing_error_context(const ORV_DrawingInterface* table)
    {
        const Drawing& to = drawing(table);
        return to.inner.drawing_error_context.fn(&to.inner);
    }
    static uint32_t drawing_finish(const ORV_DrawingInterface* table)
    {
        Drawing& to = drawing(table);
        return call(to.owner, [&] { return to.inner.drawing_finish.fn(&to.inner); });
    }
    static uint32_t drawing_discard(const ORV_DrawingInterface* table)
    {
        Drawing& to = drawing(table);
        return call(to.owner, [&] { return to.inner.drawing_discard.fn(&to.inner); });
    }

    static uint32_t start_string(void* context, const GFI_FontSpecPointer* font, const GGO_Matrix* to_pixels,
                                 uint32_t flags, uint32_t scaled, const GFI_StringDescPointer* string, int32_t* id,
                                 GGO_Matrix* glyph, uint32_t* glyph_flags)
    {
        const auto* e = static_cast<Engine*>(context);
        return answer(e->owner, string_start,
                      [&]
                      {
                          return e->inner->GFI_StringStartFn(e->inner->fe_Context, font, to_pixels, flags, scaled,
                                                             string, id, glyph, glyph_flags);
                      });
    }
    static uint32_t get_index(void* context, uint32_t* returned, uint32_t* index, uint16_t* variant,
                              GGO_Vector* advance, GGO_BoxFloat* box)
    {
        const auto* e = static_cast<Engine*>(context);
        return answer(
            e->owner, glyph_index,
            [&]
            { return e->inner->GFI_GlyphIndexGetFn(e->inner->fe_Context, returned, index, variant, advance, box); });
    }
    static uint32_t get_fixed(void* context, uint32_t type, uint32_t* returned, uint32_t* changed, GGO_Matrix* matrix,
                              uint32_t* flags, GFI_GlyphDescPointer** glyph)
    {
        const auto* e = static_cast<Engine*>(context);
        return answer(e->owner, glyph_fixed,
                      [&] {
                          return e->inner->GFI_GlyphGetFixedFormatFn(e->inner->fe_Context, type, returned, changed,
                                                                     matrix, flags, glyph);
                      });
    }
    static uint32_t get_glyph(void* context, uint32_t type, uint32_t* changed, GGO_Matrix* matrix, uint32_t* flags,
                              GFI_GlyphDescPointer** glyph)
    {
        const auto* e = static_cast<Engine*>(context);
        return answer(e->owner, glyph_get,
                      [&]
                      { return e->inner->GFI_GlyphGetFn(e->inner->fe_Context, type, changed, matrix, flags, glyph); });
    }
    static const char* engine_id(void* context)
    {
        const auto* e = static_cast<Engine*>(context);
        return e->inner->fp_EngineIdGet != nullptr ? e->inner->fp_EngineIdGet(e->inner->fe_Context) : nullptr;
    }

    static Image& image(void* context)
    {
        return *static_cast<Image*>(context);
    }
    static uint32_t prepare_image(GOP_OperandImagePointer** operand, uint32_t object_type, uint32_t decompress,
                                  uint32_t rescale, float a, float b, float c, float d, uint32_t render_space,
                                  uint32_t depth, uint32_t attributes)
    {
        Image& i = image((*operand)->imp_Context);
        const uint32_t result =
            answer(i.owner, prepare,
                   [&]
                   {
                       return i.inner->imp_ImagePrepareFn(&i.inner, object_type, decompress, rescale, a, b, c, d,
                                                          render_space, depth, attributes);
                   });
        i.refresh();
        *operand = &i.record;
        return result;
    }
    static uint32_t read_image(GOP_OperandImagePointer*, void* context, uint32_t skip, uint8_t* bytes, uint32_t size,
                               int32_t step, int32_t* returned, uint8_t* attributes, uint32_t attr_size,
                               int32_t attr_step, int32_t* attr_returned)
    {
        const Image& i = image(context);
        const Cost before = cost_now();
        const uint32_t result = i.inner->imp_ImageReadFn(i.inner, i.inner->imp_Context, skip, bytes, size, step,
                                                         returned, attributes, attr_size, attr_step, attr_returned);
        i.owner->add(read, before, result != 0 && *returned > 0 ? static_cast<uint64_t>(*returned) : 0);
        return result;
    }
    static uint32_t finish_image(GOP_OperandImagePointer*, void* context)
    {
        const Image& i = image(context);
        return answer(i.owner, finish, [&] { return i.inner->imp_ImageFinishFn(i.inner, i.inner->imp_Context); });
    }
    static uint32_t reset_image(GOP_OperandImagePointer*, void* context)
    {
        const Image& i = image(context);
        return answer(i.owner, reset, [&] { return i.inner->imp_ImageResetFn(i.inner, i.inner->imp_Context); });
    }
    static uint32_t keep_image(GOP_OperandImagePointer* operand)
    {
        const Image& i = image(operand->imp_Context);
        i.owner->kept_ = true;
        return answer(i.owner, keep, [&] { return i.inner->imp_ImageKeepFn(i.inner); });
    }
    static void* release_image(GOP_OperandImagePointer* operand)
    {
        const Image& i = image(operand->imp_Context);
        answer(i.owner, release,
               [&]
               {
                   i.inner->imp_ImageReleaseFn(i.inner);
                   return 1U;
               });
        return nullptr;
    }
};

// The record as the client has it, with the callbacks that measure.
void CallCosts::Image::refresh()
{
    record = *inner;
    record.imp_ImagePrepareFn = Functions::prepare_image;
    record.imp_ImageReadFn = Functions::read_image;
    record.imp_ImageFinishFn = Functions::finish_image;
    record.imp_ImageResetFn = inner->imp_ImageResetFn != nullptr ? Functions::reset_image : nullptr;
    record.imp_ImageKeepFn = inner->imp_ImageKeepFn != nullptr ? Functions::keep_image : nullptr;
    record.imp_ImageReleaseFn = inner->imp_ImageReleaseFn != nullptr ? Functions::release_image : nullptr;
    record.imp_Context = this;
}

CallCosts::CallCosts(const ORV_Interface& renderer, bool events)
    : renderer_(renderer), keep_events_(events), start_(cost_now().wall), callbacks_(kCallbackCount)
{
    table_.document_start = {Functions::document_start, this};
    table_.document_finish = {Functions::document_finish, this};
    table_.resource_destroy = {Functions::resource_destroy, this};
    table_.face_start = {Functions::face_start, this};
    table_.resource_start = {Functions::resource_start, this};
    table_.memory_context_start = {Functions::memory_context_start, this};
    // What the replay makes behind the log's last call.
    begin_call({});
}

CallCosts::~CallCosts() = default;

void CallCosts::begin_call(CallCost call)
{
    calls_.push_back(std::move(call));
}

int64_t CallCosts::wall() const
{
    int64_t sum = 0;
    for (const CallCost& one : calls_)
        sum += one.own.wall;
    return sum;
}

const GFI_FontEngineTable* CallCosts::wrap(const GFI_FontEngineTable* engine)
{
    if (engine == nullptr)
        return nullptr;
    auto made = std::make_unique<Engine>(Engine{this, engine, {}});
    made->table = {Functions::start_string,
                   Functions::get_index,
                   Functions::get_fixed,
                   Functions::get_glyph,
                   Functions::engine_id,
                   engine->fe_Reserved,
                   made.get()};
    return &engines_.emplace_back(std::move(made))->table;
}

GOP_OperandPointer* CallCosts::wrap(GOP_OperandPointer* operand)
{
    const bool is_image = operand != nullptr && operand->op_Operand != nullptr &&
                          (operand->op_Operand->go_OpType == GOP_OPERAND_IMAGE ||
                           operand->op_Operand->go_OpType == GOP_OPERAND_IMAGE_TILE);
    if (!is_image)
        return operand;
    auto made = std::make_unique<Image>(Image{this, reinterpret_cast<GOP_OperandImagePointer*>(operand), {}});
    made->refresh();
    return reinterpret_cast<GOP_OperandPointer*>(&images_.emplace_back(std::move(made))->record);
}

void CallCosts::wrap(ORV_DrawingInterface* drawing)
{
    Drawing* made = drawings_.emplace_back(std::make_unique<Drawing>(Drawing{this, *drawing})).get();
    *drawing = {{Functions::object_paint, made},   {Functions::object_paint_and_stroke, made},
                {Functions::group_start, made},    {Functions::group_finish, made},
                {Functions::resource_paint, made}, {Functions::drawing_error_context, made},
                {Functions::drawing_finish, made}, {Functions::drawing_discard, made}};
}

// Images that were kept stay until the end, and so do those of their call.
void CallCosts::end_call()
{
    if (!kept_)
        images_.clear();
}

void CallCosts::add(uint32_t callback, const Cost& before, uint64_t bytes)
{
    Cost own = cost_now();
    if (keep_events_)
        events_.push_back({callback, before.wall - start_, own.wall - start_});
    own.take_off(before);
    CallbackCost& told = callbacks_[callback];
    ++told.count;
    told.bytes += bytes;
    told.all.add(own);
    in_callbacks_.add(own);
    ++calls_.back().callbacks;
}

}  // namespace orvlog::tool
