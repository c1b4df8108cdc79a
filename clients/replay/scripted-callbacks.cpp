// The callbacks of the scripted renderer, each with the arguments that the log tells.

#include "clients/replay/scripted-renderer.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <set>
#include <vector>

namespace orvlog::replay
{

namespace
{

using reader::Children;
using reader::Element;

// Of a text that isn't one of the job's.
const GFI_FontSpecPointer other_font{};
const GFI_StringDescPointer other_string{};

uint32_t glyph_type(const Element& callback, const char* name)
{
    return reader::read_enum(callback, name);
}

bool can_be_called(const GOP_OperandImagePointer& record, const Element& callback)
{
    if (callback.name == "GOP_ImageResetFn")
        return record.imp_ImageResetFn != nullptr;
    if (callback.name == "GOP_ImageKeepFn")
        return record.imp_ImageKeepFn != nullptr;
    return callback.name != "GOP_ImageReleaseFn" || record.imp_ImageReleaseFn != nullptr;
}

bool looks_like(const GOP_OperandImagePointer& record, const Element& told)
{
    const Element* image = told.child("GOP_OperandImage");
    return image != nullptr && record.imp_Image != nullptr &&
           reader::read_uint(told, "imp_RowStep") == record.imp_RowStep &&
           reader::read_uint(*image, "im_ImageWidthPixels") == record.imp_Image->im_ImageWidthPixels &&
           reader::read_uint(*image, "im_ImageHeightPixels") == record.imp_Image->im_ImageHeightPixels;
}

// A record reads into one file, up to its first finish. Where there is no file, or the read failed, that isn't told.
bool reads_into(const std::string& file, bool ended, const Element& read)
{
    if (read.has("ImageFileName"))
        return !ended && (file.empty() || file == read.value("ImageFileName"));
    return ended || reader::read_bool(read, "return") == 0 || read.child("img_buf") != nullptr;
}

// Takes prepares back that changed a record in its place, the last one first.
uint32_t id_before(uint32_t id, const Element& element)
{
    if (element.name == "GOP_ImagePrepareFn")
    {
        const Element* left = element.child("GOP_OperandImagePointer");
        const bool its = left != nullptr && reader::read_uint(*left, "Id") == id;
        return its && reader::read_bool(element, "operand_p_replaced") == 0 ? reader::read_uint(element, "Id") : id;
    }
    std::vector<const Element*> children;
    for (const Element& child : Children(element))
        children.push_back(&child);
    for (auto child = children.rbegin(); child != children.rend(); ++child)
        id = id_before(id, **child);
    return id;
}

// The log has the number that the record had when the client had answered; it may have been prepared meanwhile.
uint32_t id_when_called(const Element& callback, const std::vector<const Element*>& within)
{
    uint32_t id = reader::read_uint(callback, "Id");
    for (auto element = within.rbegin(); element != within.rend(); ++element)
        id = id_before(id, **element);
    return id;
}

}  // namespace

// The logger holds a few images whose keep was refused, those that came last.
bool ScriptedRenderer::is_gone(const Live& live) const
{
    constexpr size_t kHeldByLogger = 8;
    const auto refused = [this](uint64_t image) {
        return std::ranges::any_of(images_,
                                   [image](const Live& one) { return one.image == image && one.refusal != 0; });
    };
    if (!refused(live.image))
        return false;
    std::set<uint64_t> later;
    for (const Live& other : images_)
        if (other.refusal != 0 && other.image > live.image)
            later.insert(other.image);
    return later.size() >= kHeldByLogger;
}

// How much speaks for it that the callback is that record's. Prepares count an image's number up to those of the
// images behind it; but each image logs at the depth of its call, goes on counting where it was, and reads into its own
// file. Callbacks of a kept image stand together, behind its keep or in a log of its own.
uint32_t ScriptedRenderer::likeness(const Live& live, const Element& callback) const
{
    const Element* left = callback.child("GOP_OperandImagePointer");
    const bool counts =
        callback.name == "GOP_ImagePrepareFn" && left != nullptr && reader::read_uint(*left, "Id") == live.next_id;
    const bool reads = callback.name != "GOP_ImageReadFn" || reads_into(live.file, live.file_ended, callback);
    const bool alike = left != nullptr && looks_like(live.record, *left);
    return (is_gone(live) ? 0U : 32U) | (live.indent == callback.indent ? 16U : 0U) | (counts ? 8U : 0U) |
           (reads ? 4U : 0U) | (live.image == followed_ ? 2U : 0U) | (alike ? 1U : 0U);
}

// Of those that are alike the one that came last.
ScriptedRenderer::Live* ScriptedRenderer::find(const Element& callback)
{
    const uint32_t id = id_when_called(callback, script_.within_answer());
    Live* found = nullptr;
    uint32_t most = 0;
    for (Live& live : images_)
    {
        if (live.id != id || !can_be_called(live.record, callback))
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

// The client may answer 0, and the image is kept all the same; but not where it isn't asked.
void ScriptedRenderer::keep(const Element& callback, Live& live)
{
    const uint64_t number = live.number;
    const uint64_t image = live.image;
    const bool kept = live.kept;
    const bool granted = std::ranges::any_of(images_, [image](const Live& one)
                                             { return one.image == image && one.kept && one.refusal == 0; });
    live.kept = true;
    live.refusal = granted ? 0 : ++refusals_;
    followed_ = image;
    GOP_OperandImagePointer record = live.record;
    const bool grants = record.imp_ImageKeepFn(&record) != 0;
    const auto again = std::ranges::find(images_, number, &Live::number);
    if (script_.is_expected(callback) && again != images_.end())
        again->kept = kept;
    for (Live& one : images_)
        if (grants && one.image == image)
            one.refusal = 0;
}

// By any of its records the image is gone. Its own log doesn't tell when it was: as long as it has other records, by
// which what follows may have been called, it is put off.
void ScriptedRenderer::release(Live& live)
{
    constexpr size_t kMostPutOff = 64;
    const Live mine = live;
    const auto same = [&mine](const Live& other) { return other.image == mine.image; };
    if (std::ranges::none_of(images_, [&](const Live& other) { return same(other) && !other.kept; }))
        return make_release(mine);
    script_.put_off();
    put_off_.push_back(mine);
    for (const Live& other : images_)
        if (same(other))
            put_off_.back().refusal = std::max(put_off_.back().refusal, other.refusal);
    std::erase_if(images_, [&](const Live& other) { return same(other) && other.kept; });
    if (put_off_.size() > kMostPutOff)
        make_put_off(put_off_.front());
}

void ScriptedRenderer::make_release(Live live)
{
    live.record.imp_ImageReleaseFn(&live.record);
    const auto same = [&live](const Live& other) { return other.image == live.image; };
    std::erase_if(images_, same);
    std::erase_if(put_off_, same);
}

void ScriptedRenderer::make_put_off(const Live& live)
{
    Element release;
    release.name = "GOP_ImageReleaseFn";
    script_.expect(release);
    make_release(live);
    // Nobody may have been asked.
    script_.put_off();
}

void ScriptedRenderer::finish_releases()
{
    while (!put_off_.empty())
        make_put_off(put_off_.front());
}

// Of images whose keep was refused the logger holds a few beyond their calls.
void ScriptedRenderer::end_call()
{
    if (--calls_ > 0)
        return;
    for (const Live& live : std::vector<Live>(put_off_))
        if (live.refusal != 0)
            make_put_off(live);
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
    const auto again = std::ranges::find(images_, mine.number, &Live::number);
    if (held == &mine.record && again == images_.end())
        return;
    mine.id = id;
    for (Live& other : images_)
        if (other.image == mine.image)
            other.next_id = id + 1;
    mine.next_id = id + 1;
    if (held == &mine.record)
    {
        *again = mine;
        return;
    }
    mine.record = *held;
    mine.file.clear();
    mine.file_ended = false;
    mine.number = ++record_count_;
    images_.push_back(mine);
}

void ScriptedRenderer::read(const Element& callback, Live& live)
{
    client_.deliver(callback);
    if (callback.has("ImageFileName"))
        live.file = callback.value("ImageFileName");
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
    live.file_ended |= !live.file.empty();
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
