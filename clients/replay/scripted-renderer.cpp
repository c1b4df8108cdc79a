#include "clients/replay/scripted-renderer.h"

#include "reader/tree/values.h"

#include <algorithm>
#include <string>

namespace orvlog::replay
{

namespace
{

using reader::Children;
using reader::Element;

// Images whose keep was refused are mostly never released. The logger holds fewer of them.
constexpr uint64_t kMostRefused = 64;

GOP_OperandImagePointer* image_of(const GOP_OperandPointer* operand)
{
    return reinterpret_cast<GOP_OperandImagePointer*>(const_cast<GOP_OperandPointer*>(operand));
}

// The number that the image of an operand gives next, of those that log at the depth of its call.
uint32_t next_id_at_forward(const Element& member, uint32_t id, uint64_t indent)
{
    uint32_t last = id;
    for (const Element& child : Children(member))
    {
        const Element* left = child.name == "GOP_ImagePrepareFn" && child.indent == indent
                                  ? child.child("GOP_OperandImagePointer")
                                  : nullptr;
        last = left != nullptr ? std::max(last, reader::read_uint(*left, "Id")) : last;
    }
    return last + 1;
}

// The number that the image of an operand has when the call reaches the renderer: the logger may have prepared it.
uint32_t id_at_forward(const Element& member, uint32_t id)
{
    for (const Element& child : Children(member))
    {
        if (child.name != "GOP_ImagePrepareFn" || reader::read_uint(child, "Id") != id ||
            reader::read_bool(child, "operand_p_replaced") != 0)
            continue;
        const Element* left = child.child("GOP_OperandImagePointer");
        id = left != nullptr ? reader::read_uint(*left, "Id") : id;
    }
    return id;
}

}  // namespace

// The functions of the tables. None gives 0 but where the log says so.
struct ScriptedRenderer::Calls
{
    static ScriptedRenderer* of(void* context)
    {
        return static_cast<ScriptedRenderer*>(context);
    }

    // What the log has behind the element of such a call came from within it, since its element is closed before it is
    // passed on.
    static uint32_t closed_call(ScriptedRenderer* self)
    {
        ++self->calls_;
        self->run_rest();
        self->perform_between();
        self->end_call();
        return 1;
    }

    static uint32_t open_call(ScriptedRenderer* self)
    {
        ++self->calls_;
        self->run_rest();
        self->end_call();
        return 1;
    }

    // Images that came with it, behind that number, go with it.
    static uint32_t paint_call(ScriptedRenderer* self, uint64_t before)
    {
        const uint64_t last = self->image_count_;
        open_call(self);
        std::erase_if(self->images_, [self, before, last](const Live& live)
                      { return live.image > before && live.image <= last && !self->is_held(live); });
        return 1;
    }

    static uint32_t document_start(void*, const ORV_Interface* table, void** document_out, uint32_t,
                                   const GFI_FontEngineTable* engine, void*)
    {
        ScriptedRenderer* self = of(table->document_start.context);
        *document_out = self;
        self->note_engine(engine);
        return closed_call(self);
    }

    static uint32_t document_finish(const ORV_Interface* table, void*)
    {
        return closed_call(of(table->document_finish.context));
    }

    static uint32_t resource_destroy(void*, const ORV_Interface* table, void*, const ORV_DrawingInterface*, uint32_t)
    {
        return closed_call(of(table->resource_destroy.context));
    }

    static uint32_t face_start(void*, const ORV_Interface* table, void*, ORV_DrawingInterface* drawing_out,
                               const GFI_FontEngineTable* engine, uint32_t, const ORV_FaceProperties*, void*, uint32_t,
                               uint32_t)
    {
        ScriptedRenderer* self = of(table->face_start.context);
        self->fill(drawing_out);
        self->note_engine(engine);
        return closed_call(self);
    }

    static uint32_t resource_start(void*, const ORV_Interface* table, void*, ORV_DrawingInterface* drawing_out,
                                   const ORV_DrawingInterface*, const GFI_FontEngineTable* engine,
                                   const ORV_ResourceProperties*, void*, uint32_t* resource_id_out)
    {
        ScriptedRenderer* self = of(table->resource_start.context);
        self->fill(drawing_out);
        self->note_engine(engine);
        const Element* call = self->script_.call();
        const uint32_t number = call != nullptr ? reader::read_uint(*call, "resource_id") : 0;
        *resource_id_out = number;
        closed_call(self);
        return self->facts_.refused_resources.contains(number) ? 0 : 1;
    }

    static uint32_t memory_context_start(void*, const ORV_Interface* table, void*, ORV_DrawingInterface* drawing_out,
                                         uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t,
                                         const GFI_FontEngineTable* engine, void*, uintptr_t, uintptr_t, uintptr_t,
                                         uintptr_t, uintptr_t, uintptr_t)
    {
        ScriptedRenderer* self = of(table->memory_context_start.context);
        self->fill(drawing_out);
        self->note_engine(engine);
        return closed_call(self);
    }

    static uint32_t object_paint(const ORV_DrawingInterface* table, uint8_t, uint32_t, const GOP_Operator*,
                                 const GSH_ShapePointer*, uint32_t, const GSH_ShapeList*, GOP_OperandPointer* operand1,
                                 GOP_OperandPointer* operand2, GOP_OperandPointer* operand3)
    {
        ScriptedRenderer* self = of(table->object_paint.context);
        const uint64_t before = self->image_count_;
        self->note_operand("operand1", operand1);
        self->note_operand("operand2", operand2);
        self->note_operand("operand3", operand3);
        return paint_call(self, before);
    }

    static uint32_t object_paint_and_stroke(const ORV_DrawingInterface* table, uint8_t, uint8_t, uint32_t,
                                            const GOP_Operator*, const GOP_Operator*, const GSH_ShapePointer*,
                                            const GPA_PathStrokingParams*, const GGO_Matrix*, uint32_t,
                                            const GSH_ShapeList*, uint32_t, GGO_Point*,
                                            GOP_OperandPointer* fill_operand1, GOP_OperandPointer* fill_operand2,
                                            GOP_OperandPointer* fill_operand3, GOP_OperandPointer* stroke_operand1,
                                            GOP_OperandPointer* stroke_operand2, GOP_OperandPointer* stroke_operand3)
    {
        ScriptedRenderer* self = of(table->object_paint_and_stroke.context);
        const uint64_t before = self->image_count_;
        self->note_operand("fill_operand1", fill_operand1);
        self->note_operand("fill_operand2", fill_operand2);
        self->note_operand("fill_operand3", fill_operand3);
        self->note_operand("stroke_operand1", stroke_operand1);
        self->note_operand("stroke_operand2", stroke_operand2);
        self->note_operand("stroke_operand3", stroke_operand3);
        return paint_call(self, before);
    }

    static uint32_t group_start(const ORV_DrawingInterface* table, uint32_t, uint32_t* group_out,
                                const GFI_FontEngineTable* engine, uint32_t, uint32_t, uint32_t, uint32_t, void*,
                                uint32_t, uint32_t, uint32_t, const GGO_Matrix*, const GOP_Operator*,
                                GOP_OperandPointer* operand2, const GSH_ShapeList*, uint32_t, double, double,
                                const GBC_Color*, const GBC_Color*, const GGO_BoxFloat*)
    {
        ScriptedRenderer* self = of(table->group_start.context);
        if (group_out != nullptr)
            *group_out = 0;
        self->note_engine(engine);
        self->note_mask(operand2);
        return open_call(self);
    }

    // Its element is written behind it: what came from within stands before it, and has been made.
    static uint32_t group_finish(const ORV_DrawingInterface* table, uint32_t* replay_out)
    {
        const Element* call = of(table->group_finish.context)->script_.call();
        *replay_out = call != nullptr ? reader::read_bool(*call, "replay_group") : 0;
        return 1;
    }

    static uint32_t resource_paint(const ORV_DrawingInterface* table, uint32_t, uint32_t, uint32_t, const GGO_Matrix*,
                                   const GOP_Operator*, GOP_OperandPointer* operand2, const GSH_ShapeList*, uint32_t,
                                   double, double, const GBC_Color*, const GBC_Color*, uint32_t)
    {
        ScriptedRenderer* self = of(table->resource_paint.context);
        const uint64_t before = self->image_count_;
        self->note_operand("operand2", operand2);
        return paint_call(self, before);
    }

    static void* drawing_error_context(const ORV_DrawingInterface*)
    {
        return nullptr;
    }

    static uint32_t drawing_finish(const ORV_DrawingInterface* table)
    {
        return closed_call(of(table->drawing_finish.context));
    }

    static uint32_t drawing_discard(const ORV_DrawingInterface* table)
    {
        return closed_call(of(table->drawing_discard.context));
    }
};

ScriptedRenderer::ScriptedRenderer(Script& script, ScriptedClient& client, const ScriptFacts& facts)
    : script_(script), client_(client), facts_(facts)
{
#define ORV_DOCUMENT_CALL(name) table_.name = {.fn = Calls::name, .context = this};
#define ORV_DRAWING_CALL(name)
#include "orvlog/names/calls.inc"
}

void ScriptedRenderer::fill(ORV_DrawingInterface* drawing)
{
#define ORV_DOCUMENT_CALL(name)
#define ORV_DRAWING_CALL(name) drawing->name = {.fn = Calls::name, .context = this};
#include "orvlog/names/calls.inc"
    const Element* call = script_.call();
    if (call != nullptr && facts_.without_resource_paint.contains(reader::read_uint(*call, "drawing_context")))
        drawing->resource_paint.fn = nullptr;
}

void ScriptedRenderer::run_rest()
{
    while (const Element* callback = script_.next_of_renderer())
        perform(*callback);
}

void ScriptedRenderer::perform_between()
{
    while (const Element* callback = script_.next_between())
        perform(*callback);
}

void ScriptedRenderer::note_operand(std::string_view member, const GOP_OperandPointer* operand)
{
    const Element* call = script_.call();
    const Element* told = call != nullptr ? call->member(member) : nullptr;
    const Element* pointer = told != nullptr ? told->child("GOP_OperandImagePointer") : nullptr;
    const uint32_t id = pointer != nullptr ? reader::read_uint(*pointer, "Id") : 0;
    if (operand == nullptr || id == 0)
        return;
    images_.push_back({.id = id_at_forward(*told, id),
                       .next_id = next_id_at_forward(*told, id, call->indent),
                       .indent = call->indent,
                       .image = ++image_count_,
                       .group = std::nullopt,
                       .owner = owner_,
                       .record = *image_of(operand),
                       .file = "",
                       .number = ++record_count_});
}

void ScriptedRenderer::note_mask(const GOP_OperandPointer* operand)
{
    const uint64_t before = image_count_;
    note_operand("operand2", operand);
    if (image_count_ > before)
        images_.back().group = script_.call()->place.byte;
}

void ScriptedRenderer::forget_mask(uint64_t byte)
{
    std::erase_if(images_, [this, byte](const Live& live) { return live.group == byte && !is_held(live); });
}

void ScriptedRenderer::note_engine(const GFI_FontEngineTable* engine)
{
    const Element* call = script_.call();
    if (call == nullptr || engine == nullptr)
        return;
    const auto silent = facts_.memory_engines.find(reader::read_uint(*call, "drawing_context"));
    if (call->has("GfpId"))
        engines_[reader::read_uint(*call, "GfpId")] = engine;
    else if (call->name == "ORV_memory_context_start" && silent != facts_.memory_engines.end())
        engines_[silent->second] = engine;
}

void ScriptedRenderer::forget_engine(uint32_t number)
{
    engines_.erase(number);
}

void ScriptedRenderer::note_text(uint32_t font_id, uint32_t string_id, const GFI_FontSpecPointer* font,
                                 const GFI_StringDescPointer* string)
{
    texts_[{font_id, string_id}] = {font, string};
}

void ScriptedRenderer::forget_texts()
{
    texts_.clear();
}

// Kept images are released where the session has ended, which put their logs into its own: what the log says of them
// ended there, and not the images.
void ScriptedRenderer::forget_images(const void* owner)
{
    const auto belongs = [owner](const Live& live) { return live.owner == owner; };
    const auto granted = [&belongs](const Live& live)
    { return belongs(live) && live.kept && live.refusal == 0 && live.record.imp_ImageReleaseFn != nullptr; };
    while (facts_.merged && std::ranges::any_of(images_, granted))
        make_release(*std::ranges::find_if(images_, granted));
    std::erase_if(images_, belongs);
    std::erase_if(put_off_, belongs);
}

// By one of its records an image is kept with all of them.
bool ScriptedRenderer::is_held(const Live& live) const
{
    const auto same = [&live](const Live& other) { return other.image == live.image; };
    return std::ranges::any_of(images_, [&same](const Live& other) { return same(other) && other.kept; }) ||
           std::ranges::any_of(put_off_, same);
}

bool ScriptedRenderer::has_kept(const void* owner) const
{
    const auto held = [this](const Live& live)
    { return live.kept && (live.refusal == 0 || live.refusal + kMostRefused > refusals_); };
    return std::ranges::any_of(images_,
                               [owner, held](const Live& live) { return live.owner == owner && held(live); }) ||
           std::ranges::any_of(put_off_, [owner](const Live& live) { return live.owner == owner; });
}

void ScriptedRenderer::perform(const Element& callback)
{
    script_.expect(callback);
    if (is_font_callback(callback))
        font(callback);
    else
        image(callback);
    script_.settle(callback);
    if (callback.name == "GOP_ImageKeepFn" && callback.has("async_img_log_file_name"))
        script_.tasks().after_keep(callback);
}

}  // namespace orvlog::replay
