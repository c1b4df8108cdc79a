#include "reader/records/record-parts.h"
#include "reader/records/records.h"
#include "reader/tree/values.h"

#include <algorithm>

namespace orvlog::reader
{

namespace
{

constexpr uint32_t kMostLevels = 1000;

const GSH_Shape* glyphs(Arena& arena, const Element&, const GSH_Shape& common)
{
    auto* shape = arena.make<GSH_GlyphShape>();
    shape->gs_Shape = common;
    return &shape->gs_Shape;
}

const GSH_Shape* filled_path(Arena& arena, const Element& element, const GSH_Shape& common)
{
    auto* shape = arena.make<GSH_FilledPathShape>();
    shape->fps_Shape = common;
    shape->fps_WindingRule = read_enum(element, "fps_WindingRule");
    return &shape->fps_Shape;
}

const GSH_Shape* stroked_path(Arena& arena, const Element& element, const GSH_Shape& common)
{
    const Element* params = element.child("GPA_PathStrokingParams");
    auto* shape = arena.make<GSH_StrokedPathShape>(dash_count(params) * sizeof(float));
    shape->sps_Shape = common;
    shape->sps_WindingRule = read_enum(element, "sps_WindingRule");
    if (params != nullptr)
        read_stroke(*params, &shape->sps_StrokingParams, dash_count(params));
    return &shape->sps_Shape;
}

const GSH_Shape* stroked_glyphs(Arena& arena, const Element& element, const GSH_Shape& common)
{
    const Element* params = element.child("GPA_PathStrokingParams");
    auto* shape = arena.make<GSH_StrokedGlyphShape>(dash_count(params) * sizeof(float));
    shape->sgs_Shape = common;
    shape->sgs_StrokingTransform = read_matrix(element, "sgs_StrokingTransform");
    if (params != nullptr)
        read_stroke(*params, &shape->sgs_StrokingParams, dash_count(params));
    return &shape->sgs_Shape;
}

const GSH_Shape* image_rect(Arena& arena, const Element& element, const GSH_Shape& common)
{
    auto* shape = arena.make<GSH_ImageRectShape>();
    shape->irs_Shape = common;
    shape->irs_ImageWidth = read_uint(element, "irs_ImageWidth");
    shape->irs_ImageHeight = read_uint(element, "irs_ImageHeight");
    return &shape->irs_Shape;
}

const GSH_Shape* multi_rect(Arena& arena, const Element& element, const GSH_Shape& common)
{
    const size_t count = count_named(element, "GGO_BoxInt");
    auto* shape = arena.make<GSH_MultiRectShape>(count * sizeof(GGO_BoxInt));
    shape->mrs_Shape = common;
    shape->mrs_RectCount = static_cast<uint32_t>(count);
    GGO_BoxInt* to = shape->mrs_Rect;
    for (const Element& child : Children(element))
    {
        if (child.name == "GGO_BoxInt")
            *to++ = {read_int(child, "gbi_MinX"), read_int(child, "gbi_MinY"), read_int(child, "gbi_MaxX"),
                     read_int(child, "gbi_MaxY")};
    }
    return &shape->mrs_Shape;
}

const GSH_Shape* scanline(Arena& arena, const Element& element, const GSH_Shape& common)
{
    const size_t count = count_named(element, "GSH_XLimits");
    auto* shape = arena.make<GSH_ScanlineShape>(count * sizeof(GSH_XLimits));
    shape->ss_Shape = common;
    std::vector<double> corners = to_doubles(element.value("ss_BoundingBox"));
    corners.resize(4);
    shape->ss_BoundingBox = {static_cast<int32_t>(corners[0]), static_cast<int32_t>(corners[1]),
                             static_cast<int32_t>(corners[2]), static_cast<int32_t>(corners[3])};
    shape->ss_StartY = read_int(element, "ss_StartY");
    shape->ss_Height = static_cast<uint32_t>(count);
    GSH_XLimits* to = shape->ss_XLimits;
    for (const Element& child : Children(element))
    {
        if (child.name == "GSH_XLimits")
            *to++ = {static_cast<int16_t>(read_int(child, "xl_StartX")),
                     static_cast<int16_t>(read_int(child, "xl_StopX"))};
    }
    return &shape->ss_Shape;
}

struct ShapeKind
{
    std::string_view element;
    uint16_t type;
    const GSH_Shape* (*make)(Arena& arena, const Element& element, const GSH_Shape& common);
};

constexpr ShapeKind kKinds[] = {
    {"GSH_GlyphShape", GSH_SHAPE_GLYPHS, glyphs},
    {"GSH_FilledPathShape", GSH_SHAPE_FILL, filled_path},
    {"GSH_StrokedPathShape", GSH_SHAPE_STROKE, stroked_path},
    {"GSH_ImageRectShape", GSH_SHAPE_IMAGE_RECT, image_rect},
    {"GSH_MultiRectShape", GSH_SHAPE_MULTI_RECT, multi_rect},
    {"GSH_ScanlineShape", GSH_SHAPE_SCANLINE, scanline},
    {"GSH_StrokedGlyphShape", GSH_SHAPE_STROKE_GLYPHS, stroked_glyphs},
};

// The shape behind a header, from the element of its kind. Null without a head, or one that tells another kind.
const GSH_Shape* shape_head(Arena& arena, const Element& element)
{
    const Element* head = element.child("GSH_Shape");
    if (head == nullptr)
        return nullptr;
    GSH_Shape common{};
    common.sh_ShapeType = static_cast<uint16_t>(read_enum(*head, "sh_ShapeType"));
    common.sh_Hints = static_cast<uint16_t>(read_flags(*head, "sh_Hints"));
    common.sh_Transform = read_matrix(*head, "sh_Transform");
    const auto* kind = std::ranges::find(kKinds, element.name, &ShapeKind::element);
    const bool known = kind != std::end(kKinds) && kind->type == common.sh_ShapeType;
    return known ? kind->make(arena, element, common) : nullptr;
}

}  // namespace

void RecordReader::read_glyph_shape(const Element& element, GSH_ShapePointer* shape)
{
    const bool known = element.has("orvlog_font_spec_id");
    const uint32_t font_id = read_uint(element, "orvlog_font_spec_id");
    const uint32_t string_id = read_uint(element, "orvlog_string_desc_id");
    const auto font = font_specs_.find(font_id);
    const auto string = strings_.find(string_id);
    shape->sp_U.glyph.font_spec_ptr =
        known && font != font_specs_.end() ? font->second : font_spec(element.child("GFI_FontSpecPointer"));
    shape->sp_U.glyph.string_desc =
        known && string != strings_.end() ? string->second : string_desc(element.child("GFI_StringDescPointer"));
    if (known)
    {
        font_specs_[font_id] = shape->sp_U.glyph.font_spec_ptr;
        strings_[string_id] = shape->sp_U.glyph.string_desc;
    }
    if (on_text)
        on_text(*shape, element);
}

bool RecordReader::read_shape(const Element& element, GSH_ShapePointer* shape)
{
    const Element* member = element.member("sp_HeaderPtr");
    const Element* inside = member != nullptr ? member->first : nullptr;
    const GSH_Shape* head = inside != nullptr ? shape_head(arena_, *inside) : nullptr;
    if (head == nullptr)
    {
        ++unknown_;
        return false;
    }
    shape->sp_HeaderPtr = head;
    const auto held_path = [&](std::string_view name)
    {
        const Element* holder = element.member(name);
        return holder != nullptr ? path(holder->child("GPA_PathPointer")) : nullptr;
    };
    const Element* glyphs = element.member("sp_U.glyph");
    if (head->sh_ShapeType == GSH_SHAPE_FILL)
        shape->sp_U.filled_path = held_path("sp_U.filled_path");
    else if (head->sh_ShapeType == GSH_SHAPE_STROKE)
        shape->sp_U.stroked_path = held_path("sp_U.stroked_path");
    else if (glyphs != nullptr)
        read_glyph_shape(*glyphs, shape);
    return true;
}

const GSH_ShapePointer* RecordReader::shape(const Element* element)
{
    if (element == nullptr || element->name != "GSH_ShapePointer")
        return nullptr;
    auto* record = arena_.make<GSH_ShapePointer>();
    return read_shape(*element, record) ? record : nullptr;
}

const GSH_ShapeList* RecordReader::shape_list(const Element& element, uint32_t levels)
{
    auto* list = arena_.make<GSH_ShapeList>();
    list->sl_Hints = read_flags(element, "sl_Hints");
    list->sl_ClipIn = read_bool(element, "sl_ClipIn");
    list->sl_UniqueId = read_uint(element, "sl_UniqueId");
    const Element* member = element.member("sl_Shape");
    const Element* inside = member != nullptr ? member->child("GSH_ShapePointer") : nullptr;
    if (inside != nullptr)
        read_shape(*inside, &list->sl_Shape);
    const Element* collection = element.child("GSH_ShapeListCollection");
    const Element* held = collection != nullptr ? collection->child("GSH_ShapeList") : nullptr;
    if (held != nullptr && levels > 0)
        list->sl_Collection = shape_list(*held, levels - 1);
    return list;
}

const GSH_ShapePointer* RecordReader::shape_member(const Element& call, std::string_view name)
{
    const Element* member = call.member(name);
    return member != nullptr ? shape(member->child("GSH_ShapePointer")) : nullptr;
}

const GSH_ShapeList* RecordReader::clip_member(const Element& call, std::string_view name)
{
    const Element* member = call.member(name);
    const GSH_ShapeList* first = nullptr;
    const GSH_ShapeList** link = &first;
    for (const Element* child = member != nullptr ? member->first : nullptr; child != nullptr; child = child->next)
    {
        if (child->name != "GSH_ShapeList")
            continue;
        *link = shape_list(*child, kMostLevels);
        link = &const_cast<GSH_ShapeList*>(*link)->sl_Next;
    }
    return first;
}

}  // namespace orvlog::reader
