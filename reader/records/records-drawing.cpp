#include "reader/records/records.h"
#include "reader/tree/values.h"

namespace orvlog::reader
{

const ORV_FaceProperties* RecordReader::face_properties(const Element* element)
{
    if (element == nullptr || element->name != "ORV_FaceProperties")
        return nullptr;
    auto* face = arena_.make<ORV_FaceProperties>();
    face->fp_FaceHints = read_flags(*element, "fp_FaceHints");
    face->fp_FaceInchToPixels = read_matrix(*element, "fp_FaceInchToPixels");
    face->fp_WidthInPixels = read_uint(*element, "fp_WidthInPixels");
    face->fp_HeightInPixels = read_uint(*element, "fp_HeightInPixels");
    face->fp_TrimBox = read_box(*element, "fp_TrimBox");
    face->fp_ClipBox = read_box(*element, "fp_ClipBox");
    face->fp_MediaSize = read_point(*element, "fp_MediaSize");
    return face;
}

const ORV_ResourceProperties* RecordReader::resource_properties(const Element* element)
{
    if (element == nullptr || element->name != "ORV_ResourceProperties")
        return nullptr;
    auto* resource = arena_.make<ORV_ResourceProperties>();
    resource->rp_ResourceHints = read_flags(*element, "rp_ResourceHints");
    resource->rp_MaxRescale = read_float(*element, "rp_MaxRescale");
    resource->rp_IsKnockout = static_cast<uint8_t>(read_bool(*element, "rp_IsKnockout"));
    resource->rp_HasPixelPlacementRule = element->has("rp_PixelPlacementRule") ? 1 : 0;
    resource->rp_PixelPlacementRule = static_cast<uint16_t>(read_enum(*element, "rp_PixelPlacementRule"));
    resource->rp_Enclosing_box = read_box(*element, "rp_Enclosing_box");
    return resource;
}

}  // namespace orvlog::reader
