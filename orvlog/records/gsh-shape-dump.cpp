#include "orvlog/records/gsh-shape-dump.h"

#include "orvlog/font/gfi-dump.h"
#include "orvlog/font/orvlog-glyph-capture.h"
#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/log/orvlog-scope.h"
#include "orvlog/names/orvlog-names.h"
#include "orvlog/records/ggo-dump.h"
#include "orvlog/records/gpa-path-dump.h"
#include "orvlog/session/orvlog-font-ids.h"

namespace
{

void dump_glyph_shape(ORVLOG_Writer* writer, const GSH_GlyphShape* shape)
{
    orvlog_writer_begin_element(writer, "GSH_GlyphShape");
    const ORVLOG_Content content(writer, "GSH_GlyphShape");
    dump_GSH_Shape(writer, &shape->gs_Shape);
}

void dump_filled_path(ORVLOG_Writer* writer, const GSH_FilledPathShape* shape)
{
    orvlog_writer_begin_element(writer, "GSH_FilledPathShape");
    orvlog_attr_enum(writer, "fps_WindingRule", &ORVLOG_WINDING, shape->fps_WindingRule);
    const ORVLOG_Content content(writer, "GSH_FilledPathShape");
    dump_GSH_Shape(writer, &shape->fps_Shape);
}

void dump_stroked_path(ORVLOG_Writer* writer, const GSH_StrokedPathShape* shape)
{
    orvlog_writer_begin_element(writer, "GSH_StrokedPathShape");
    orvlog_attr_enum(writer, "sps_WindingRule", &ORVLOG_WINDING, shape->sps_WindingRule);
    const ORVLOG_Content content(writer, "GSH_StrokedPathShape");
    dump_GSH_Shape(writer, &shape->sps_Shape);
    dump_GPA_PathStrokingParams(writer, &shape->sps_StrokingParams);
}

void dump_image_rect(ORVLOG_Writer* writer, const GSH_ImageRectShape* shape)
{
    orvlog_writer_begin_element(writer, "GSH_ImageRectShape");
    // Height ahead of width, against their storage; readers of the log rely on it.
    orvlog_attr_uint(writer, "irs_ImageHeight", shape->irs_ImageHeight);
    orvlog_attr_uint(writer, "irs_ImageWidth", shape->irs_ImageWidth);
    const ORVLOG_Content content(writer, "GSH_ImageRectShape");
    dump_GSH_Shape(writer, &shape->irs_Shape);
}

void dump_multi_rect(ORVLOG_Writer* writer, const GSH_MultiRectShape* shape)
{
    orvlog_writer_begin_element(writer, "GSH_MultiRectShape");
    orvlog_attr_uint(writer, "mrs_RectCount", shape->mrs_RectCount);
    const ORVLOG_Content content(writer, "GSH_MultiRectShape");
    dump_GSH_Shape(writer, &shape->mrs_Shape);
    const GGO_BoxInt* rects = shape->mrs_Rect;
    for (uint32_t i = 0; i < shape->mrs_RectCount; ++i)
        dump_GGO_BoxInt(writer, rects + i);
}

void dump_limits(ORVLOG_Writer* writer, const GSH_XLimits* limits)
{
    orvlog_writer_begin_element(writer, "GSH_XLimits");
    orvlog_attr_int(writer, "xl_StartX", limits->xl_StartX);
    orvlog_attr_int(writer, "xl_StopX", limits->xl_StopX);
    orvlog_writer_end_empty(writer, "GSH_XLimits");
}

void dump_scanline(ORVLOG_Writer* writer, const GSH_ScanlineShape* shape)
{
    orvlog_writer_begin_element(writer, "GSH_ScanlineShape");
    ggo_attr_box_int(writer, "ss_BoundingBox", &shape->ss_BoundingBox);
    orvlog_attr_int(writer, "ss_StartY", shape->ss_StartY);
    orvlog_attr_uint(writer, "ss_Height", shape->ss_Height);
    const ORVLOG_Content content(writer, "GSH_ScanlineShape");
    dump_GSH_Shape(writer, &shape->ss_Shape);
    const GSH_XLimits* rows = shape->ss_XLimits;
    for (uint32_t i = 0; i < shape->ss_Height; ++i)
        dump_limits(writer, rows + i);
}

void dump_stroked_glyphs(ORVLOG_Writer* writer, const GSH_StrokedGlyphShape* shape)
{
    orvlog_writer_begin_element(writer, "GSH_StrokedGlyphShape");
    ggo_attr_matrix(writer, "sgs_StrokingTransform", &shape->sgs_StrokingTransform);
    const ORVLOG_Content content(writer, "GSH_StrokedGlyphShape");
    dump_GSH_Shape(writer, &shape->sgs_Shape);
    dump_GPA_PathStrokingParams(writer, &shape->sgs_StrokingParams);
}

void dump_glyph_member(ORVLOG_Session* session, const GSH_ShapePointer* pointer)
{
    ORVLOG_Writer* writer = &session->writer;
    const GFI_FontSpecPointer* font_spec = pointer->sp_U.glyph.font_spec_ptr;
    const GFI_StringDescPointer* string_desc = pointer->sp_U.glyph.string_desc;
    orvlog_writer_begin_element(writer, "GSH_ShapePointer.sp_U.glyph");
    ORVLOG_FontIds ids = {};
    if (orvlog_font_ids_take(session, font_spec, string_desc, &ids) != 0)
    {
        orvlog_attr_uint(writer, "orvlog_font_spec_id", ids.font_spec_id);
        orvlog_attr_uint(writer, "orvlog_string_desc_id", ids.string_desc_id);
    }
    const ORVLOG_Content content(writer, "GSH_ShapePointer.sp_U.glyph");
    dump_GFI_FontSpecPointer(writer, font_spec);
    dump_GFI_StringDescPointer(writer, string_desc);
}

void dump_union(ORVLOG_Session* session, const GSH_ShapePointer* pointer)
{
    switch (pointer->sp_HeaderPtr->sh_ShapeType)
    {
    case GSH_SHAPE_FILL:
        return dump_shape_path_member(&session->writer, "sp_U.filled_path", pointer->sp_U.filled_path);
    case GSH_SHAPE_STROKE:
        return dump_shape_path_member(&session->writer, "sp_U.stroked_path", pointer->sp_U.stroked_path);
    case GSH_SHAPE_GLYPHS:
    case GSH_SHAPE_STROKE_GLYPHS:
        return dump_glyph_member(session, pointer);
    default:
        return;
    }
}

void dump_header(ORVLOG_Writer* writer, const GSH_Shape* shape)
{
    const ORVLOG_Member member(writer, "GSH_ShapePointer", "sp_HeaderPtr");
    dump_shape_header(writer, shape);
    if (shape == nullptr)
        orvlog_writer_warn(writer, "GSH_ShapePointer without a shape.");
}

// How many different lists a chain holds; `loops` says that its last one leads back into it. A pointer that waits
// at ever longer distances meets the walker once it stands inside the loop.
uint64_t count_chain(const GSH_ShapeList* head, const GSH_ShapeList* GSH_ShapeList::*link, bool* loops)
{
    uint64_t count = 0;
    uint64_t wait = 1;
    uint64_t loop = 0;
    *loops = false;
    const GSH_ShapeList* waiting = nullptr;
    const GSH_ShapeList* list = head;
    for (; list != nullptr && list != waiting; list = list->*link, ++count, ++loop)
    {
        if (count != wait)
            continue;
        waiting = list;
        wait *= 2;
        loop = 0;
    }
    if (list == nullptr)
        return count;
    *loops = true;
    const GSH_ShapeList* ahead = head;
    for (uint64_t i = 0; i < loop; ++i)
        ahead = ahead->*link;
    uint64_t before = 0;
    for (; head != ahead; head = head->*link, ahead = ahead->*link)
        ++before;
    return before + loop;
}

void open_list(ORVLOG_Session* session, const GSH_ShapeList* list)
{
    ORVLOG_Writer* writer = &session->writer;
    orvlog_writer_begin_element(writer, "GSH_ShapeList");
    orvlog_attr_flags(writer, "sl_Hints", &ORVLOG_SHAPE_LIST_HINTS, list->sl_Hints);
    orvlog_attr_bool(writer, "sl_ClipIn", list->sl_ClipIn);
    orvlog_attr_uint(writer, "sl_UniqueId", list->sl_UniqueId);
    orvlog_writer_enter(writer);
    dump_shape_member(session, "GSH_ShapeList", "sl_Shape", &list->sl_Shape);
}

void dump_pointer(ORVLOG_Session* session, const GSH_ShapePointer* pointer)
{
    ORVLOG_Writer* writer = &session->writer;
    const ORVLOG_Element element(writer, "GSH_ShapePointer");
    dump_header(writer, pointer->sp_HeaderPtr);
    if (pointer->sp_HeaderPtr != nullptr)
        dump_union(session, pointer);
}

}  // namespace

void dump_GSH_Shape(ORVLOG_Writer* writer, const GSH_Shape* shape)
{
    if (shape == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GSH_Shape");
    orvlog_attr_enum(writer, "sh_ShapeType", &ORVLOG_SHAPE_TYPE, shape->sh_ShapeType);
    orvlog_attr_flags(writer, "sh_Hints", &ORVLOG_SHAPE_HINTS, shape->sh_Hints);
    ggo_attr_matrix(writer, "sh_Transform", &shape->sh_Transform);
    orvlog_writer_self_close(writer);
}

void dump_shape_header(ORVLOG_Writer* writer, const GSH_Shape* shape)
{
    if (shape == nullptr)
        return;
    switch (shape->sh_ShapeType)
    {
    case GSH_SHAPE_GLYPHS:
        return dump_glyph_shape(writer, reinterpret_cast<const GSH_GlyphShape*>(shape));
    case GSH_SHAPE_FILL:
        return dump_filled_path(writer, reinterpret_cast<const GSH_FilledPathShape*>(shape));
    case GSH_SHAPE_STROKE:
        return dump_stroked_path(writer, reinterpret_cast<const GSH_StrokedPathShape*>(shape));
    case GSH_SHAPE_IMAGE_RECT:
        return dump_image_rect(writer, reinterpret_cast<const GSH_ImageRectShape*>(shape));
    case GSH_SHAPE_MULTI_RECT:
        return dump_multi_rect(writer, reinterpret_cast<const GSH_MultiRectShape*>(shape));
    case GSH_SHAPE_SCANLINE:
        return dump_scanline(writer, reinterpret_cast<const GSH_ScanlineShape*>(shape));
    case GSH_SHAPE_STROKE_GLYPHS:
        return dump_stroked_glyphs(writer, reinterpret_cast<const GSH_StrokedGlyphShape*>(shape));
    default:
        return;
    }
}

void dump_GSH_ShapePointer(ORVLOG_Session* session, const GSH_ShapePointer* pointer)
{
    if (pointer == nullptr)
        return;
    dump_pointer(session, pointer);
    capture_shape_glyphs(session, pointer);
}

void dump_GSH_ShapeList(ORVLOG_Session* session, const GSH_ShapeList* list)
{
    if (list == nullptr)
        return;
    ORVLOG_Writer* writer = &session->writer;
    bool loops = false;
    const uint64_t nested = count_chain(list, &GSH_ShapeList::sl_Collection, &loops);
    const uint64_t levels = nested < ORVLOG_MAX_COLLECTION_DEPTH ? nested : ORVLOG_MAX_COLLECTION_DEPTH;
    open_list(session, list);
    for (uint64_t level = 1; level < levels; ++level)
    {
        list = list->sl_Collection;
        orvlog_writer_enter_element(writer, "GSH_ShapeListCollection");
        open_list(session, list);
    }
    if (levels < nested)
        orvlog_writer_warn(writer, "GSH_ShapeListCollection nested too deep.");
    else if (loops)
        orvlog_writer_warn(writer, "GSH_ShapeListCollection leads back to itself.");
    for (uint64_t level = 1; level < levels; ++level)
    {
        orvlog_writer_leave_element(writer, "GSH_ShapeList");
        orvlog_writer_leave_element(writer, "GSH_ShapeListCollection");
    }
    orvlog_writer_leave_element(writer, "GSH_ShapeList");
}

void dump_shape_member(ORVLOG_Session* session, const char* owner, const char* member, const GSH_ShapePointer* shape)
{
    if (shape == nullptr)
        return;
    ORVLOG_Writer* writer = &session->writer;
    const ORVLOG_Member inside(writer, owner, member);
    dump_GSH_ShapePointer(session, shape);
}

void dump_shape_list_member(ORVLOG_Session* session, const char* owner, const char* member, const GSH_ShapeList* list)
{
    if (list == nullptr)
        return;
    ORVLOG_Writer* writer = &session->writer;
    bool loops = false;
    const uint64_t count = count_chain(list, &GSH_ShapeList::sl_Next, &loops);
    const ORVLOG_Member inside(writer, owner, member);
    for (uint64_t i = 0; i < count; ++i, list = list->sl_Next)
        dump_GSH_ShapeList(session, list);
    if (loops)
        orvlog_writer_warn(writer, "GSH_ShapeList leads back to itself.");
}
