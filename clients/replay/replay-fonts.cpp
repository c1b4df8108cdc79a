#include "clients/replay/replay-fonts.h"

#include "reader/tree/values.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

namespace orvlog::replay
{

namespace
{

using reader::Element;

bool same(const GGO_Matrix& one, const GGO_Matrix& other)
{
    using Bits = std::array<uint64_t, sizeof one / sizeof(uint64_t)>;
    return std::bit_cast<Bits>(one) == std::bit_cast<Bits>(other);
}

bool is_fixed(const Element& get)
{
    return get.name == "GFI_GlyphGetFixedFormatFn";
}

uint32_t asked_type(const Element& get)
{
    return reader::read_enum(get, is_fixed(get) ? "required_desc_type" : "requested_desc_type");
}

// The type of the glyph that came; nothing if none came.
std::optional<uint32_t> delivered_type(const Element& get)
{
    const Element* pointer = get.child("GFI_GlyphDescPointer");
    const Element* member = pointer != nullptr ? pointer->member("gdp_GlyphDesc") : nullptr;
    const Element* description = member != nullptr ? member->first : nullptr;
    const Element* head = description != nullptr ? description->child("GFI_GlyphDesc") : nullptr;
    if (head == nullptr)
        return std::nullopt;
    return reader::read_enum(*head, "gd_Type");
}

}  // namespace

struct ReplayFonts::Functions
{
    static ReplayFonts* self(void* context)
    {
        return static_cast<Engine*>(context)->owner;
    }

    static uint32_t string_start(void* context, const GFI_FontSpecPointer*, const GGO_Matrix* to_pixels, uint32_t,
                                 uint32_t, const GFI_StringDescPointer* string, int32_t* unique_font_id,
                                 GGO_Matrix* glyph_to_pixels, uint32_t* flags)
    {
        ReplayFonts* fonts = self(context);
        fonts->pull_ = nullptr;
        const auto key = fonts->strings_.find(string);
        const auto pulls = key != fonts->strings_.end() ? fonts->pulls_.find(key->second) : fonts->pulls_.end();
        if (pulls == fonts->pulls_.end() || to_pixels == nullptr)
            return 0;
        fonts->all_ = &pulls->second;
        fonts->pull_ = fonts->choose(pulls->second, *to_pixels);
        fonts->pull_->used = true;
        fonts->step_ = 0;
        const Element& start = *fonts->pull_->start;
        fonts->asked_ = *to_pixels;
        fonts->logged_ = reader::read_matrix(start, "stringdesc_to_face_pixel");
        if (reader::read_bool(start, "result") == 0)
            return 0;
        const GGO_Matrix logged = reader::read_matrix(start, "glyphdesc_to_face_pixel");
        *unique_font_id = reader::read_int(start, "unique_font_id");
        *glyph_to_pixels = fonts->as_asked(logged);
        *flags = same(fonts->asked_, fonts->logged_) ? reader::read_flags(start, "glyphdesc_transform_flags")
                                                     : ggo_classify_matrix(glyph_to_pixels);
        return 1;
    }

    static uint32_t glyph_index_get(void* context, uint32_t* glyph_returned, uint32_t* glyph_index_out,
                                    uint16_t* sub_pixel_variant, GGO_Vector* advance, GGO_BoxFloat* box)
    {
        ReplayFonts* fonts = self(context);
        *glyph_returned = 0;
        if (fonts->pull_ == nullptr || fonts->step_ >= fonts->pull_->steps.size())
            return fonts->pull_ != nullptr ? 1 : 0;
        const Element& told = *fonts->pull_->steps[fonts->step_++].index;
        fonts->get_ = 0;
        *glyph_returned = reader::read_bool(told, "glyph_returned");
        *glyph_index_out = reader::read_uint(told, "glyph_index_out");
        *sub_pixel_variant = static_cast<uint16_t>(reader::read_uint(told, "glyph_sub_pixel_variant"));
        *advance = reader::read_vector(told, "advance_vector");
        if (box != nullptr && told.has("quick_bounding_box"))
            *box = reader::read_box(told, "quick_bounding_box");
        return reader::read_bool(told, "result");
    }

    static uint32_t glyph_get_fixed(void* context, uint32_t type, uint32_t* glyph_returned, uint32_t* changed,
                                    GGO_Matrix* matrix, uint32_t* flags, GFI_GlyphDescPointer** glyph)
    {
        ReplayFonts* fonts = self(context);
        const Element* get = fonts->find_get(type, true);
        *glyph_returned = 0;
        if (get == nullptr)
            return 1;
        if (is_fixed(*get) && reader::read_bool(*get, "result") == 0)
            return 0;
        if (is_fixed(*get) && reader::read_bool(*get, "glyph_returned") == 0)
            return 1;
        *glyph_returned = 1;
        fonts->hand_out(*get, changed, matrix, flags, glyph);
        return 1;
    }

    static uint32_t glyph_get(void* context, uint32_t type, uint32_t* changed, GGO_Matrix* matrix, uint32_t* flags,
                              GFI_GlyphDescPointer** glyph)
    {
        ReplayFonts* fonts = self(context);
        const Element* get = fonts->find_get(type, false);
        if (get == nullptr || reader::read_bool(*get, "result") == 0)
            return 0;
        fonts->hand_out(*get, changed, matrix, flags, glyph);
        return 1;
    }

    static const char* engine_id(void* context)
    {
        const Engine* engine = static_cast<Engine*>(context);
        return engine->id ? engine->id->c_str() : nullptr;
    }
};

const GFI_FontEngineTable* ReplayFonts::engine(const Element& call)
{
    if (reader::read_bool(call, "font_engine_functions") == 0)
        return nullptr;
    auto engine = std::make_unique<Engine>();
    engine->owner = this;
    engine->table = {Functions::string_start,
                     Functions::glyph_index_get,
                     Functions::glyph_get_fixed,
                     Functions::glyph_get,
                     Functions::engine_id,
                     nullptr,
                     engine.get()};
    if (call.has("fp_EngineIdGet"))
        engine->id = reader::to_text(call.value("fp_EngineIdGet"));
    return &engines_.emplace_back(std::move(engine))->table;
}

void ReplayFonts::start_call(reader::RecordReader& records)
{
    records_ = &records;
    strings_.clear();
    pulls_.clear();
    last_pull_.clear();
    all_ = nullptr;
    pull_ = nullptr;
}

void ReplayFonts::add_string(const GFI_StringDescPointer* string, uint32_t font_id, uint32_t string_id)
{
    strings_[string] = {font_id, string_id};
}

void ReplayFonts::add_callback(const Element& callback)
{
    const uint32_t engine = reader::read_uint(callback, "GfpId");
    if (callback.name == "GFI_StringStartFn")
    {
        const Key key = {reader::read_uint(callback, "orvlog_font_spec_id"),
                         reader::read_uint(callback, "orvlog_string_desc_id")};
        std::vector<Pull>& pulls = pulls_[key];
        pulls.push_back({&callback, {}, false});
        last_pull_[engine] = {key, pulls.size() - 1};
        return;
    }
    const auto last = last_pull_.find(engine);
    if (last == last_pull_.end())
        return;
    Pull& pull = pulls_[last->second.first][last->second.second];
    if (callback.name == "GFI_GlyphIndexGetFn")
        pull.steps.push_back({&callback, {}});
    else if (!pull.steps.empty())
        pull.steps.back().gets.push_back(&callback);
}

// One that has not been used, with the transform asked for if there is one, else the last one again.
ReplayFonts::Pull* ReplayFonts::choose(std::vector<Pull>& pulls, const GGO_Matrix& matrix) const
{
    Pull* first_unused = nullptr;
    for (Pull& pull : pulls)
    {
        if (pull.used)
            continue;
        if (same(reader::read_matrix(*pull.start, "stringdesc_to_face_pixel"), matrix))
            return &pull;
        if (first_unused == nullptr)
            first_unused = &pull;
    }
    return first_unused != nullptr ? first_unused : &pulls.back();
}

// What `step` was given when it was asked for `type`, or for any type.
const Element* ReplayFonts::delivered(const Step& step, uint32_t type, bool any) const
{
    for (const Element* get : step.gets)
    {
        const std::optional<uint32_t> came = delivered_type(*get);
        if (came && (any || *came == type))
            return get;
    }
    return nullptr;
}

// The answer to the present request: the one logged in its turn, else one to the same request, else the same form of
// the glyph from anywhere in the call, else, if `fixed` doesn't forbid it, an outline or whatever there is.
const Element* ReplayFonts::find_get(uint32_t type, bool fixed)
{
    if (pull_ == nullptr || step_ == 0)
        return nullptr;
    const Step& step = pull_->steps[step_ - 1];
    for (size_t i = get_; i < step.gets.size(); ++i)
    {
        if (is_fixed(*step.gets[i]) == fixed && asked_type(*step.gets[i]) == type)
        {
            get_ = i + 1;
            return step.gets[i];
        }
    }
    const uint32_t wanted[] = {type, GFI_GDT_PATH};
    for (const uint32_t one : std::span(wanted, fixed ? 1 : 2))
    {
        for (const Pull& pull : *all_)
        {
            const Element* found = step_ <= pull.steps.size() ? delivered(pull.steps[step_ - 1], one, false) : nullptr;
            if (found != nullptr)
                return found;
        }
    }
    for (const Pull& pull : *all_)
    {
        const Element* found =
            !fixed && step_ <= pull.steps.size() ? delivered(pull.steps[step_ - 1], type, true) : nullptr;
        if (found != nullptr)
            return found;
    }
    return nullptr;
}

// A transform that was logged for one place and size of the string, for the one asked for now.
GGO_Matrix ReplayFonts::as_asked(const GGO_Matrix& to_pixels) const
{
    if (same(asked_, logged_))
        return to_pixels;
    uint32_t invertible = 0;
    const GGO_Matrix back = ggo_inverse(&logged_, &invertible);
    if (invertible == 0)
        return to_pixels;
    const GGO_Matrix to_string = ggo_multiply(&to_pixels, &back);
    return ggo_multiply(&to_string, &asked_);
}

void ReplayFonts::hand_out(const Element& get, uint32_t* changed, GGO_Matrix* matrix, uint32_t* flags,
                           GFI_GlyphDescPointer** glyph)
{
    *changed = reader::read_bool(get, "glyphdesc_transform_changed");
    if (get.has("glyphdesc_to_face_pixel"))
    {
        *matrix = as_asked(reader::read_matrix(get, "glyphdesc_to_face_pixel"));
        *flags =
            same(asked_, logged_) ? reader::read_flags(get, "glyphdesc_transform_flags") : ggo_classify_matrix(matrix);
    }
    const GFI_GlyphDescPointer* made = records_->glyph(get.child("GFI_GlyphDescPointer"));
    given_ = made != nullptr ? *made : GFI_GlyphDescPointer{};
    *glyph = &given_;
}

}  // namespace orvlog::replay
