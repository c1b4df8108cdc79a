// The callbacks of the scripted renderer, each with the arguments that the log tells.

#include "clients/replay/scripted-renderer.h"
#include "reader/tree/values.h"

#include <algorithm>

namespace orvlog::replay
{

namespace
{

using reader::Element;

// Of a text that isn't one of the job's.
const GFI_FontSpecPointer other_font{};
const GFI_StringDescPointer other_string{};

uint32_t glyph_type(const Element& callback, const char* name)
{
    return reader::read_enum(callback, name);
}

}  // namespace

// The number that the image gives next: to a record that a prepare leaves, and to its own log.
uint32_t ScriptedRenderer::next_id(uint64_t image) const
{
    uint32_t last = 0;
    for (const Live& live : images_)
        last = live.image == image ? std::max(last, live.id) : last;
    return last + 1;
}

// How much speaks for it that the callback is that record's. Prepares count an image's number up to those of the
// images behind it; but each image logs at the depth of its call, and goes on counting where it was. Callbacks of a
// kept image stand together, behind its keep or in a log of its own.
uint32_t ScriptedRenderer::likeness(const Live& live, const Element& callback) const
{
    const Element* left = callback.name == "GOP_ImagePrepareFn" ? callback.child("GOP_OperandImagePointer") : nullptr;
    const bool counts = left != nullptr && reader::read_uint(*left, "Id") == next_id(live.image);
    return (live.indent == callback.indent ? 4U : 0U) | (counts ? 2U : 0U) | (live.image == followed_ ? 1U : 0U);
}

// Of those that are alike the one that came last.
ScriptedRenderer::Live* ScriptedRenderer::find(const Element& callback)
{
    const uint32_t id = reader::read_uint(callback, "Id");
    Live* found = nullptr;
    uint32_t most = 0;
    for (Live& live : images_)
    {
        if (live.id != id)
            continue;
        const uint32_t alike = likeness(live, callback);
        if (found == nullptr || alike >= most)
            found = &live;
        most = std::max(most, alike);
    }
    if (found == nullptr || found->image != followed_)
        followed_ = 0;
    return found;
}

void ScriptedRenderer::image(const Element& callback)
{
    Live* live = find(callback);
    if (live == nullptr)
        return;
    GOP_OperandImagePointer* record = &live->record;
    if (callback.name == "GOP_ImagePrepareFn" && record->imp_ImagePrepareFn != nullptr)
        return prepare(callback, *live);
    if (callback.name == "GOP_ImageReadFn" && record->imp_ImageReadFn != nullptr)
        return read(callback, *live);
    if (callback.name == "GOP_ImageFinishFn" && record->imp_ImageFinishFn != nullptr)
        return finish(callback, *live);
    if (callback.name == "GOP_ImageResetFn" && record->imp_ImageResetFn != nullptr)
        record->imp_ImageResetFn(record, record->imp_Context);
    if (callback.name == "GOP_ImageKeepFn" && record->imp_ImageKeepFn != nullptr)
        keep(callback, *live);
    if (callback.name == "GOP_ImageReleaseFn" && record->imp_ImageReleaseFn != nullptr)
        release(*live);
}

// The client may answer 0, and the image is kept all the same.
void ScriptedRenderer::keep(const Element& callback, Live& live)
{
    live.kept = true;
    followed_ = live.image;
    live.refusal = reader::read_bool(callback, "return") == 0 ? ++refusals_ : 0;
    GOP_OperandImagePointer record = live.record;
    record.imp_ImageKeepFn(&record);
}

// By any of its records the image is gone. Its own log doesn't tell when it was: as long as it has other records, by
// which what follows may have been called, it is put off. Of images whose keep was refused the logger holds a few.
void ScriptedRenderer::release(Live& live)
{
    constexpr size_t kMostPutOff = 64;
    const Live mine = live;
    const auto same = [&mine](const Live& other) { return other.image == mine.image; };
    const bool refused = std::ranges::any_of(images_, [&](const Live& other) { return same(other) && other.refusal; });
    if (refused || std::ranges::none_of(images_, [&](const Live& other) { return same(other) && !other.kept; }))
        return make_release(mine);
    script_.put_off();
    std::erase_if(images_, [&](const Live& other) { return same(other) && other.kept; });
    put_off_.push_back(mine);
    if (put_off_.size() > kMostPutOff)
        make_first_put_off();
}

void ScriptedRenderer::make_release(Live live)
{
    live.record.imp_ImageReleaseFn(&live.record);
    const auto same = [&live](const Live& other) { return other.image == live.image; };
    std::erase_if(images_, same);
    std::erase_if(put_off_, same);
}

void ScriptedRenderer::make_first_put_off()
{
    Element release;
    release.name = "GOP_ImageReleaseFn";
    script_.expect(release);
    make_release(put_off_.front());
}

void ScriptedRenderer::finish_releases()
{
    while (!put_off_.empty())
        make_first_put_off();
}

void ScriptedRenderer::prepare(const Element& callback, Live& live)
{
    // Callbacks from within may bring images of their own.
    Live mine = live;
    GOP_OperandImagePointer* held = &mine.record;
    held->imp_ImagePrepareFn(
        &held, reader::read_flags(callback, "object_type"), reader::read_bool(callback, "decompress"),
        reader::read_bool(callback, "rescale") | (callback.has("max_width_rescale") ? 1U : 0U),
        reader::read_float(callback, "max_width_rescale"), reader::read_float(callback, "min_width_rescale"),
        reader::read_float(callback, "max_height_rescale"), reader::read_float(callback, "min_height_rescale"),
        reader::read_bool(callback, "use_render_color_space"), reader::read_enum(callback, "req_bit_depth"),
        reader::read_bool(callback, "need_attr"));
    const Element* left = callback.child("GOP_OperandImagePointer");
    const uint32_t id = left != nullptr ? reader::read_uint(*left, "Id") : 0;
    if (held != &mine.record)
        return images_.push_back({id, mine.indent, mine.kept, mine.refusal, mine.image, mine.owner, *held});
    const auto again = std::ranges::find_if(images_, [&mine](const Live& other)
                                            { return other.image == mine.image && other.id == mine.id; });
    if (again != images_.end())
        *again = {id, mine.indent, mine.kept, mine.refusal, mine.image, mine.owner, mine.record};
}

void ScriptedRenderer::read(const Element& callback, Live& live)
{
    client_.deliver(callback);
    std::vector<uint8_t> bytes(std::max<size_t>(client_.image_bytes_.size, 1));
    std::vector<uint8_t> attributes(std::max<size_t>(client_.attr_bytes_.size, 1));
    const bool with_attributes = callback.has("attr_returned");
    int32_t returned = 0;
    int32_t attr_returned = 0;
    GOP_OperandImagePointer record = live.record;
    record.imp_ImageReadFn(&record, record.imp_Context, reader::read_uint(callback, "skip_pixels"), bytes.data(),
                           client_.image_bytes_.size, reader::read_int(callback, "img_row_step"), &returned,
                           with_attributes ? attributes.data() : nullptr, client_.attr_bytes_.size,
                           reader::read_int(callback, "attr_row_step"), &attr_returned);
}

// The log tells of the record that the renderer gave, to which it may have written.
void ScriptedRenderer::finish(const Element& callback, Live& live)
{
    finish_arena_.clear();
    const Element* told = callback.child("GOP_OperandImagePointer");
    const GOP_OperandImagePointer* made = finish_records_.image(told);
    GOP_OperandImagePointer record = made != nullptr ? *made : live.record;
    record.imp_Context = live.record.imp_Context;
    if (made != nullptr)
    {
        static uint8_t direct = 0;
        record.imp_DirectImage = reader::read_bool(*told, "imp_DirectImage") != 0 ? &direct : nullptr;
        record.imp_ImageResetFn =
            reader::read_bool(*told, "imp_ImageResetFn") != 0 ? live.record.imp_ImageResetFn : nullptr;
        record.imp_ImageKeepFn = live.record.imp_ImageKeepFn;
        record.imp_ImageReleaseFn = live.record.imp_ImageReleaseFn;
    }
    live.record.imp_ImageFinishFn(&record, record.imp_Context);
}

void ScriptedRenderer::font(const Element& callback)
{
    const auto known = engines_.find(reader::read_uint(callback, "GfpId"));
    if (known == engines_.end())
        return;
    if (callback.name == "GFI_StringStartFn")
        start_string(callback, known->second);
    else if (callback.name == "GFI_GlyphIndexGetFn")
        get_index(callback, known->second);
    else
        get_glyph(callback, known->second);
}

void ScriptedRenderer::start_string(const Element& callback, const GFI_FontEngineTable* engine)
{
    const auto text = texts_.find(
        {reader::read_uint(callback, "orvlog_font_spec_id"), reader::read_uint(callback, "orvlog_string_desc_id")});
    const bool known = callback.has("orvlog_font_spec_id") && text != texts_.end();
    const GFI_FontSpecPointer* font = known ? text->second.first : &other_font;
    const GFI_StringDescPointer* string = known ? text->second.second : &other_string;
    const GGO_Matrix asked = reader::read_matrix(callback, "stringdesc_to_face_pixel");
    const bool with_glyph = reader::read_bool(callback, "result") == 0 || callback.has("glyphdesc_to_face_pixel");
    int32_t unique = 0;
    GGO_Matrix glyph{};
    uint32_t flags = 0;
    engine->GFI_StringStartFn(engine->fe_Context, font, callback.has("stringdesc_to_face_pixel") ? &asked : nullptr,
                              reader::read_flags(callback, "stringdesc_transform_flags"),
                              reader::read_bool(callback, "scaled"), string, &unique, with_glyph ? &glyph : nullptr,
                              &flags);
}

void ScriptedRenderer::get_index(const Element& callback, const GFI_FontEngineTable* engine)
{
    const bool returned = reader::read_bool(callback, "glyph_returned") != 0;
    uint32_t glyph_returned = 0;
    uint32_t index = 0;
    uint16_t variant = 0;
    GGO_Vector advance{};
    GGO_BoxFloat box{};
    engine->GFI_GlyphIndexGetFn(engine->fe_Context, &glyph_returned, &index, &variant,
                                !returned || callback.has("advance_vector") ? &advance : nullptr,
                                callback.has("quick_bounding_box") ? &box : nullptr);
}

void ScriptedRenderer::get_glyph(const Element& callback, const GFI_FontEngineTable* engine)
{
    uint32_t returned = 0;
    uint32_t changed = 0;
    GGO_Matrix matrix{};
    uint32_t flags = 0;
    GFI_GlyphDescPointer* glyph = nullptr;
    const bool transformed = reader::read_bool(callback, "glyphdesc_transform_changed") != 0;
    GGO_Matrix* to_pixels = !transformed || callback.has("glyphdesc_to_face_pixel") ? &matrix : nullptr;
    if (callback.name == "GFI_GlyphGetFn")
        engine->GFI_GlyphGetFn(engine->fe_Context, glyph_type(callback, "requested_desc_type"), &changed, to_pixels,
                               &flags, &glyph);
    else
        engine->GFI_GlyphGetFixedFormatFn(engine->fe_Context, glyph_type(callback, "required_desc_type"), &returned,
                                          &changed, to_pixels, &flags, &glyph);
}

}  // namespace orvlog::replay
