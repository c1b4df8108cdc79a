// The records of the drawing interface, made again from their elements in a log. They are what the client passed,
// with the values that the log tells; what it doesn't tell is zero or null.
//
// Counts are those of what is there, so that a damaged log gives records that are safe to walk. All records lie in
// the arena that the reader was given.

#pragma once

#include "orvlog/interface/orvlog.h"
#include "reader/records/colour-spaces.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string_view>

namespace orvlog::reader
{

class RecordReader
{
public:
    explicit RecordReader(Arena& arena) : arena_(arena), colour_spaces_(arena) {}
    RecordReader(const RecordReader&) = delete;
    RecordReader& operator=(const RecordReader&) = delete;

    // All of these take the element that holds the record (for an operand: GOP_OperandFlatPointer and so on) and give
    // null for null and for an element that is not of that kind.
    const GPA_PathPointer* path(const Element* element);
    const GPA_PathStrokingParams* stroke(const Element* element);
    const GSH_ShapePointer* shape(const Element* element);
    const GOP_Operator* op(const Element* element);
    GOP_OperandPointer* operand(const Element* element);
    const GBC_Color* color(const Element* element);
    const GCM_CsdPointer* csd(const Element* element);
    const GFI_FontSpecPointer* font_spec(const Element* element);
    const GFI_StringDescPointer* string_desc(const Element* element);
    // A GFI_GlyphDescPointer. Its description and payload are one block.
    const GFI_GlyphDescPointer* glyph(const Element* element);
    GOP_OperandImagePointer* image(const Element* element);
    const ORV_FaceProperties* face_properties(const Element* element);
    const ORV_ResourceProperties* resource_properties(const Element* element);

    // Members of a call; null where the call has none of that name.
    const GSH_ShapePointer* shape_member(const Element& call, std::string_view name);
    const GSH_ShapeList* clip_member(const Element& call, std::string_view name);
    const GOP_Operator* op_member(const Element& call, std::string_view name);
    GOP_OperandPointer* operand_member(const Element& call, std::string_view name);
    const GPA_PathStrokingParams* stroke_member(const Element& call, std::string_view name);
    const GBC_Color* color_member(const Element& call, std::string_view name);
    const GGO_Matrix* matrix_attribute(const Element& call, std::string_view name);
    const GGO_BoxFloat* box_attribute(const Element& call, std::string_view name);

    // Forgets which fonts and strings have been met; equal ids give one record until then.
    void start_call();

    // Told of each image record, to fill in its callbacks and its data; may be empty.
    std::function<void(GOP_OperandImagePointer* image, const Element& element)> on_image;
    // Told of each text shape.
    std::function<void(const GSH_ShapePointer& shape, const Element& glyph_member)> on_text;

    // Elements met that no record could be made from.
    uint64_t unknown() const
    {
        return unknown_;
    }

private:
    bool read_shape(const Element& element, GSH_ShapePointer* shape);
    void read_glyph_shape(const Element& element, GSH_ShapePointer* shape);
    const GSH_ShapeList* shape_list(const Element& element, uint32_t levels);

    Arena& arena_;
    ColourSpaceReader colour_spaces_;
    std::map<uint32_t, const GFI_FontSpecPointer*> font_specs_;
    std::map<uint32_t, const GFI_StringDescPointer*> strings_;
    uint64_t unknown_ = 0;
};

}  // namespace orvlog::reader
