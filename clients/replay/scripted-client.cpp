#include "clients/replay/scripted-client.h"

#include "reader/tree/values.h"

#include <algorithm>
#include <cstring>

namespace orvlog::replay
{

namespace
{

using reader::Element;

constexpr size_t kMostPlaces = 4096;
uint8_t no_bytes[1];

// Where the caller gave no place for it, there is nothing to say.
template <typename Value> void give(Value* place, Value value)
{
    if (place != nullptr)
        *place = value;
}

}  // namespace

struct ScriptedClient::ImageFunctions
{
    static Image* self(const GOP_OperandImagePointer* record)
    {
        return static_cast<Image*>(record->imp_Context);
    }

    static uint32_t prepare(GOP_OperandImagePointer** operand_p, uint32_t, uint32_t, uint32_t, float, float, float,
                            float, uint32_t, uint32_t, uint32_t)
    {
        Image* image = self(*operand_p);
        const Element* told = image->client->script_.answer("GOP_ImagePrepareFn");
        if (told == nullptr)
            return 0;
        const Element* child = told->child("GOP_OperandImagePointer");
        image->client->leaving_ = true;
        GOP_OperandImagePointer* left = image->records->image(child);
        image->client->leaving_ = false;
        if (left != nullptr)
            leave(operand_p, left, *told, *child, image);
        return reader::read_bool(*told, "return");
    }

    // The record as the log says that the prepare left it.
    static void leave(GOP_OperandImagePointer** operand_p, GOP_OperandImagePointer* left, const Element& told,
                      const Element& child, Image* image)
    {
        GOP_OperandImagePointer* mine = *operand_p;
        if (reader::read_bool(child, "imp_DirectImage") != 0)
            left->imp_DirectImage = mine->imp_DirectImage != nullptr ? mine->imp_DirectImage : no_bytes;
        fill_callbacks(left, child, image);
        if (reader::read_bool(told, "operand_p_replaced") != 0)
            *operand_p = left;
        else
            *mine = *left;
    }

    static uint32_t read(GOP_OperandImagePointer* record, void*, uint32_t, uint8_t* image_buffer, uint32_t image_size,
                         int32_t, int32_t* img_returned, uint8_t* attr_buffer, uint32_t attr_size, int32_t,
                         int32_t* attr_returned)
    {
        ScriptedClient* client = self(record)->client;
        give(img_returned, 0);
        give(attr_returned, 0);
        const Element* told = client->script_.answer("GOP_ImageReadFn");
        if (told == nullptr)
            return 0;
        client->deliver(*told);
        copy(client->image_bytes_, image_buffer, image_size);
        copy(client->attr_bytes_, attr_buffer, attr_size);
        client->read_ = nullptr;
        give(img_returned, reader::read_int(*told, "img_returned"));
        give(attr_returned, reader::read_int(*told, "attr_returned"));
        return reader::read_bool(*told, "return");
    }

    static void copy(const Delivery& from, uint8_t* to, uint32_t size)
    {
        const size_t count = to != nullptr ? std::min<size_t>(from.bytes.size(), size) : 0;
        if (count > 0)
            std::memcpy(to, from.bytes.data(), count);
    }

    static uint32_t answer(const GOP_OperandImagePointer* record, const char* name)
    {
        const Element* told = self(record)->client->script_.answer(name);
        return told != nullptr ? reader::read_bool(*told, "return") : 0;
    }

    static uint32_t finish(GOP_OperandImagePointer* record, void*)
    {
        return answer(record, "GOP_ImageFinishFn");
    }

    static uint32_t reset(GOP_OperandImagePointer* record, void*)
    {
        return answer(record, "GOP_ImageResetFn");
    }

    static uint32_t keep(GOP_OperandImagePointer* record)
    {
        return answer(record, "GOP_ImageKeepFn");
    }

    static void* release(GOP_OperandImagePointer* record)
    {
        self(record)->client->script_.answer("GOP_ImageReleaseFn");
        return nullptr;
    }
};

void ScriptedClient::fill_callbacks(GOP_OperandImagePointer* record, const Element& element, Image* image)
{
    record->imp_ImagePrepareFn = ImageFunctions::prepare;
    record->imp_ImageReadFn = ImageFunctions::read;
    record->imp_ImageFinishFn = ImageFunctions::finish;
    record->imp_ImageResetFn = reader::read_bool(element, "imp_ImageResetFn") != 0 ? ImageFunctions::reset : nullptr;
    record->imp_ImageKeepFn = element.has("imp_ImageKeepFn") ? ImageFunctions::keep : nullptr;
    record->imp_ImageReleaseFn = element.has("imp_ImageReleaseFn") ? ImageFunctions::release : nullptr;
    record->imp_Context = image;
}

// Gives the place of these bytes, and goes on behind them.
uint64_t ScriptedClient::advance(const std::string& name, uint64_t count)
{
    const auto known = std::ranges::find(places_, name, &FilePlace::name);
    if (known != places_.end())
        places_.splice(places_.begin(), places_, known);
    else
        places_.push_front({name, 0});
    if (places_.size() > kMostPlaces)
        places_.pop_back();
    const uint64_t begin = places_.front().begin;
    places_.front().begin += count;
    return begin;
}

ScriptedClient::Delivery ScriptedClient::delivery(const Element& read, std::string_view holder, std::string_view file,
                                                  std::string_view returned)
{
    Delivery result;
    const int32_t count = reader::read_int(read, returned);
    const Element* inside = read.child(holder);
    const Element* buffer = inside != nullptr ? inside->child("BufferUInt8") : nullptr;
    if (buffer != nullptr)
        result.bytes.assign(buffer->bytes.begin(), buffer->bytes.end());
    else if (read.has(file) && count > 0)
    {
        const std::string name = reader::to_text(read.value(file));
        result.bytes =
            script_.tasks().side_file(name, advance(name, static_cast<uint64_t>(count)), static_cast<uint64_t>(count));
    }
    result.size = static_cast<uint32_t>(std::min<size_t>(result.bytes.size(), UINT32_MAX));
    return result;
}

// Once for each read: the renderer asks for the sizes first.
void ScriptedClient::deliver(const Element& read)
{
    if (read_ == &read)
        return;
    read_ = &read;
    image_bytes_ = delivery(read, "img_buf", "ImageFileName", "img_returned");
    attr_bytes_ = delivery(read, "attr_buf", "AttrFileName", "attr_returned");
}

struct ScriptedClient::FontFunctions
{
    static ScriptedClient* self(void* context)
    {
        return static_cast<Engine*>(context)->client;
    }

    static uint32_t string_start(void* context, const GFI_FontSpecPointer*, const GGO_Matrix*, uint32_t, uint32_t,
                                 const GFI_StringDescPointer*, int32_t* unique_font_id, GGO_Matrix* glyph_to_pixels,
                                 uint32_t* flags)
    {
        const Element* told = self(context)->script_.answer("GFI_StringStartFn");
        if (told == nullptr || reader::read_bool(*told, "result") == 0)
            return 0;
        give(unique_font_id, reader::read_int(*told, "unique_font_id"));
        give(glyph_to_pixels, reader::read_matrix(*told, "glyphdesc_to_face_pixel"));
        give(flags, reader::read_flags(*told, "glyphdesc_transform_flags"));
        return 1;
    }

    static uint32_t glyph_index_get(void* context, uint32_t* glyph_returned, uint32_t* glyph_index_out,
                                    uint16_t* sub_pixel_variant, GGO_Vector* advance, GGO_BoxFloat* box)
    {
        const Element* told = self(context)->script_.answer("GFI_GlyphIndexGetFn");
        give(glyph_returned, told != nullptr ? reader::read_bool(*told, "glyph_returned") : 0);
        if (told == nullptr)
            return 0;
        give(glyph_index_out, reader::read_uint(*told, "glyph_index_out"));
        give(sub_pixel_variant, static_cast<uint16_t>(reader::read_uint(*told, "glyph_sub_pixel_variant")));
        give(advance, reader::read_vector(*told, "advance_vector"));
        if (told->has("quick_bounding_box"))
            give(box, reader::read_box(*told, "quick_bounding_box"));
        return reader::read_bool(*told, "result");
    }

    static uint32_t glyph_get_fixed(void* context, uint32_t, uint32_t* glyph_returned, uint32_t* changed,
                                    GGO_Matrix* matrix, uint32_t* flags, GFI_GlyphDescPointer** glyph)
    {
        ScriptedClient* client = self(context);
        const Element* told = client->script_.answer("GFI_GlyphGetFixedFormatFn");
        const bool good = told != nullptr && reader::read_bool(*told, "result") != 0;
        const bool returned = good && reader::read_bool(*told, "glyph_returned") != 0;
        // What a call that failed left there isn't told, but by whether the logger went on to ask in another way.
        const bool left = !good && !client->script_.next_is("GFI_GlyphGetFn");
        give(glyph_returned, returned || left ? 1U : 0U);
        if (returned)
            client->hand_out(*told, changed, matrix, flags, glyph);
        return good ? 1 : 0;
    }

    static uint32_t glyph_get(void* context, uint32_t, uint32_t* changed, GGO_Matrix* matrix, uint32_t* flags,
                              GFI_GlyphDescPointer** glyph)
    {
        ScriptedClient* client = self(context);
        const Element* told = client->script_.answer("GFI_GlyphGetFn");
        if (told == nullptr || reader::read_bool(*told, "result") == 0)
            return 0;
        client->hand_out(*told, changed, matrix, flags, glyph);
        return 1;
    }

    static const char* engine_id(void* context)
    {
        const Engine* engine = static_cast<Engine*>(context);
        return engine->id ? engine->id->c_str() : nullptr;
    }
};

void ScriptedClient::hand_out(const Element& get, uint32_t* changed, GGO_Matrix* matrix, uint32_t* flags,
                              GFI_GlyphDescPointer** glyph)
{
    give(changed, reader::read_bool(get, "glyphdesc_transform_changed"));
    if (get.has("glyphdesc_to_face_pixel"))
        give(matrix, reader::read_matrix(get, "glyphdesc_to_face_pixel"));
    give(flags, reader::read_flags(get, "glyphdesc_transform_flags"));
    glyph_arena_.clear();
    const Element* child = get.child("GFI_GlyphDescPointer");
    const GFI_GlyphDescPointer* made = glyph_records_.glyph(child);
    glyph_ = made != nullptr ? *made : GFI_GlyphDescPointer{};
    if (glyph != nullptr)
        *glyph = child != nullptr ? &glyph_ : nullptr;
}

const GFI_FontEngineTable* ScriptedClient::silent_engine()
{
    Engine& engine = engines_.emplace_back();
    engine.client = this;
    engine.table = {FontFunctions::string_start,
                    FontFunctions::glyph_index_get,
                    FontFunctions::glyph_get_fixed,
                    FontFunctions::glyph_get,
                    FontFunctions::engine_id,
                    nullptr,
                    &engine};
    return &engine.table;
}

const GFI_FontEngineTable* ScriptedClient::engine(const Element& call)
{
    if (reader::read_bool(call, "font_engine_functions") == 0)
        return nullptr;
    const GFI_FontEngineTable* table = silent_engine();
    if (call.has("fp_EngineIdGet"))
        engines_.back().id = reader::to_text(call.value("fp_EngineIdGet"));
    return table;
}

}  // namespace orvlog::replay
