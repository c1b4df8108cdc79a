// The records of the drawing interface, made again from their elements in a log. They are what the client passed,
// with the values that the log tells; what it doesn't tell is zero or null.
//
// Counts are those of what is there, so that a damaged log gives records that are safe to walk. All records lie in
// the arena that the reader was given.

#pragma once

#include "holv-core/gio/gio-stream.h"
#include "orvlog/interface/orvlog.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace orvlog::reader
{

class RecordReader
{
public:
    explicit RecordReader(Arena& arena) : arena_(arena) {}
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
    const GPA_Edge* edge(const Element& element);
    const GSH_Shape* shape_head(const Element& element);
    const GSH_Shape* multi_rect(const Element& element, const GSH_Shape& common);
    const GSH_Shape* scanline(const Element& element, const GSH_Shape& common);
    bool read_shape(const Element& element, GSH_ShapePointer* shape);
    void read_glyph_shape(const Element& element, GSH_ShapePointer* shape);
    const GSH_ShapeList* shape_list(const Element& element, uint32_t levels);
    static void read_stroke(const Element& element, GPA_PathStrokingParams* params, size_t dashes);
    static void read_color(const Element& element, GBC_Color* color);
    static void read_head(const Element& element, GOP_Operand* head);
    void read_pointer(const Element& element, GOP_OperandPointer* pointer);
    GOP_OperandPointer* flat(const Element& element);
    GOP_OperandPointer* gradient_2pt(const Element& element);
    GOP_OperandPointer* gradient_3pt(const Element& element);
    GOP_OperandPointer* gradient_multistop(const Element& element);
    GOP_OperandPointer* gradient_radial(const Element& element);
    void read_stops(const Element* member, const GOP_GradStop** stops, size_t count);
    void read_csd(const Element& element, GCM_CsdPointer* csd, uint32_t levels);
    const GCM_Csd* csd_head(const Element& element, bool callback);
    const GCM_CieLutsPointer* cie_luts(const Element& element);
    const GCM_PostRenderLut* post_render_lut(const Element& element, uint8_t base_channels);
    GIO_Stream* profile_stream(const Element& element);
    GIO_Stream* make_stream(std::span<uint8_t> bytes);
    const float* float_table(const Element* holder, size_t count);
    const uint8_t* padded(std::span<const uint8_t> told, uint64_t size);
    const char* text(std::string_view value);

    struct CloseStream
    {
        void operator()(GIO_Stream* stream) const;
    };

    Arena& arena_;
    std::vector<std::unique_ptr<GIO_Stream, CloseStream>> streams_;
    std::map<uint32_t, const GFI_FontSpecPointer*> font_specs_;
    std::map<uint32_t, const GFI_StringDescPointer*> strings_;
    uint64_t unknown_ = 0;
};

}  // namespace orvlog::reader
