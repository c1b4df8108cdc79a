#include "tests/reader/facts-hash.h"

#include <algorithm>

namespace
{

void add_vector(Hash& hash, const GGO_Vector& vector)
{
    hash.add_numbers({vector.gvf_X, vector.gvf_Y});
}

template <typename Edge> const Edge& as(const GPA_Edge& edge)
{
    return reinterpret_cast<const Edge&>(edge);
}

void add_segment(Hash& hash, const GPA_Edge& edge, size_t i)
{
    switch (edge.ed_EdgeType)
    {
    case GPA_EDGE_STRAIGHT:
        return add_vector(hash, as<GPA_StraightEdge>(edge).se_Segment[i]);
    case GPA_EDGE_BEZIER:
    {
        const GPA_BezierSegment& segment = as<GPA_BezierEdge>(edge).be_BezierSegment[i];
        add_vector(hash, segment.bs_StartTangent);
        add_vector(hash, segment.bs_EndTangent);
        return add_vector(hash, segment.bs_EndPoint);
    }
    case GPA_EDGE_QUAD_BEZIER:
    {
        const GPA_QuadBezierSegment& segment = as<GPA_QuadBezierEdge>(edge).qb_QuadBezierSegment[i];
        add_vector(hash, segment.qs_ControlPoint);
        return add_vector(hash, segment.qs_EndPoint);
    }
    case GPA_EDGE_STAIRCASE:
    {
        const GPA_StaircaseSegment& segment = as<GPA_StaircaseEdge>(edge).sc_Field[i];
        return hash.add_numbers<double>({double(segment.ss_XOffset), double(segment.ss_YOffset)});
    }
    default:
        const GPA_EllipticalSegment& segment = as<GPA_EllipticalEdge>(edge).ee_EllipticalSegment[i];
        hash.add_numbers({segment.es_XRadius, segment.es_YRadius, segment.es_AngleToXAxis});
        return add_vector(hash, segment.es_EndPoint);
    }
}

size_t payload_bytes(const orvlog::reader::Element& element)
{
    size_t size = element.bytes.size();
    for (const orvlog::reader::Element& child : orvlog::reader::Children(element))
        size += payload_bytes(child);
    return size;
}

}  // namespace

void add_path(Hash& hash, const GPA_PathPointer& pointer)
{
    const GPA_Path& path = *pointer.lpp_Path;
    const GGO_BoxFloat& box = path.pa_EnclosingBox;
    hash.add_numbers({box.gbf_MinX, box.gbf_MinY, box.gbf_MaxX, box.gbf_MaxY});
    for (uint32_t i = 0; i < path.pa_NumEdges; ++i)
        hash.add_numbers({path.pa_EdgeStart[i].gpf_X, path.pa_EdgeStart[i].gpf_Y});
    for (uint32_t i = 0; i < path.pa_NumEdges; ++i)
    {
        const GPA_Edge* edge = pointer.lpp_EdgePointer[i].ep_Pointer;
        for (size_t j = 0; edge && j < edge->ed_SegmentCount; ++j)
            add_segment(hash, *edge, j);
    }
}

void add_glyph(Hash& hash, const orvlog::reader::Element& element, const GFI_GlyphDescPointer& glyph)
{
    // A record is filled up with zeros where the log lacks bytes; only those that it has count.
    const size_t told = payload_bytes(element);
    const GFI_GlyphDesc* head = glyph.gdp_GlyphDesc;
    const auto add = [&](size_t from, size_t size)
    { hash.add(std::string_view(reinterpret_cast<const char*>(head) + from, std::min(size, told))); };
    switch (head->gd_Type)
    {
    case GFI_GDT_FBE:
        return add(GFI_GLYPH_DESC_FBE_PAYLOAD, reinterpret_cast<const GFI_GlyphDescFBE*>(head)->gdf_FbeSize);
    case GFI_GDT_BITMAP:
    {
        const auto* bitmap = reinterpret_cast<const GFI_GlyphDescBitmap*>(head);
        return add(GFI_GLYPH_DESC_BITMAP_PAYLOAD, size_t{bitmap->gdb_Height} * bitmap->gdb_Rowstep);
    }
    case GFI_GDT_TRUETYPE:
        return add(GFI_GLYPH_DESC_TRUETYPE_PAYLOAD,
                   reinterpret_cast<const GFI_GlyphDescTrueType*>(head)->gdt_TrueTypeSize);
    case GFI_GDT_RLE:
        return add(GFI_GLYPH_DESC_RLE_PAYLOAD, reinterpret_cast<const GFI_GlyphDescRLE*>(head)->gdr_RleSize);
    default:
        if (glyph.gdp_Path && glyph.gdp_Path->lpp_Path)
            add_path(hash, *glyph.gdp_Path);
    }
}
