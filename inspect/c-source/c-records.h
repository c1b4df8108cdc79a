// Records of the drawing interface as definitions in C source.
//
// Each function gives an expression that points to its record, "NULL" for null, and leaves the definitions that it
// needs in front of it. Records whose last field is an array are of a type that a macro of the program's makes. Records
// that nobody changes are defined once, wherever they come again.

#pragma once

#include "orvlog/interface/orvlog.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

namespace orvlog::inspect
{

// The bytes of a program that lie in files beside it.
enum class CDataKind
{
    images,
    profiles,
    glyphs
};

// Where bytes are put, from the beginning of their file.
using CDataSink = std::function<uint64_t(CDataKind kind, std::span<const uint8_t> bytes)>;

class CRecords
{
public:
    explicit CRecords(CDataSink put) : put_(std::move(put)) {}
    CRecords(const CRecords&) = delete;
    CRecords& operator=(const CRecords&) = delete;

    // What was defined since the last time. `number` is put behind the names of what comes next.
    std::string take();
    void start_call(uint64_t number);
    // A call within a call: puts aside what belongs to the outer one, and takes it up again. What the outer one has
    // defined by then has been taken, for the inner one may use it.
    struct State
    {
        std::string loads;
        std::string number;
        std::map<std::string, uint32_t, std::less<>> names;
        std::map<const void*, std::string> texts;
    };
    State push();
    void pop(State outer);
    // A name that no other definition has.
    std::string fresh(std::string_view base);
    void define(const std::string& definition)
    {
        definitions_ += definition;
    }
    // A definition with the type, the name and the initialiser; gives "&name". One of a constant type may be an earlier
    // one that is equal.
    std::string define(const std::string& type, std::string_view base, const std::string& initialiser);
    // One that is told apart from others by its address.
    std::string define_own(const std::string& type, std::string_view base, const std::string& initialiser);

    std::string op(std::string_view base, const GOP_Operator* record);
    std::string stroke(std::string_view base, const GPA_PathStrokingParams* record);
    std::string shape(std::string_view base, const GSH_ShapePointer* record);
    std::string clip(std::string_view base, const GSH_ShapeList* record);
    std::string color(std::string_view base, const GBC_Color* record);
    // No image.
    std::string operand(std::string_view base, const GOP_OperandPointer* record);
    // With the program's callbacks. `direct` is the expression for its bytes in memory, `table` its colours.
    std::string image(std::string_view base, const GOP_OperandImagePointer* record, const std::string& direct,
                      std::span<const uint8_t> table);
    std::string matrix(std::string_view base, const GGO_Matrix* record);
    std::string box(std::string_view base, const GGO_BoxFloat* record);
    std::string face(const ORV_FaceProperties* record);
    std::string resource(const ORV_ResourceProperties* record);
    std::string glyph(const GFI_GlyphDescPointer* record);
    std::string font(const GFI_FontSpecPointer* record);
    std::string string(const GFI_StringDescPointer* record);

    // Bytes that are loaded when they are needed: the name of an array.
    std::string bytes(CDataKind kind, std::span<const uint8_t> bytes, std::string_view base);
    // The loads that fill the arrays defined since the last time; to be made ahead of the call that needs them.
    std::string take_loads();

    static std::string matrix_text(const GGO_Matrix& record);
    static std::string box_text(const GGO_BoxFloat& record);

private:
    std::string path(std::string_view base, const GPA_PathPointer* record);
    std::string edge(const GPA_Edge* record);
    std::string shape_text(const GSH_ShapePointer& record);
    std::string header(const GSH_Shape* record);
    std::string csd_text(const GCM_CsdPointer& record);
    std::string csd(const GCM_CsdPointer* record);
    std::string csd_head(const GCM_Csd* record);
    std::string cie_luts(const GCM_CieLutsPointer* record);
    std::string render_lut(const GCM_PostRenderLut* record, uint8_t base_channels);
    std::string callback_stream(const GIO_Stream* stream);
    std::string float_table(const float* values, size_t count);
    std::string glyph_description(const GFI_GlyphDesc* record);
    std::string pointer_head(const GOP_OperandPointer& record, const std::string& operand);
    std::string stops(std::span<const GOP_GradStop* const> stops);
    std::string gradient_2pt(std::string_view base, const GOP_OperandPointer* record);
    std::string gradient_3pt(std::string_view base, const GOP_OperandPointer* record);
    std::string gradient_multistop(std::string_view base, const GOP_OperandPointer* record);
    std::string gradient_radial(std::string_view base, const GOP_OperandPointer* record);

    std::string named_type(const std::string& type);
    std::string known(const std::string& what) const;
    void remember(const std::string& what, const std::string& expression);
    void add_load(const std::string& to, CDataKind kind, std::span<const uint8_t> bytes);

    CDataSink put_;
    std::string definitions_;
    std::string loads_;
    std::string number_;
    std::map<std::string, uint32_t, std::less<>> names_;  // of the call
    std::map<const void*, std::string> texts_;            // fonts and strings of the call
    std::unordered_map<std::string, std::string> known_;  // expressions by what they point to
    size_t known_size_ = 0;
    std::set<std::string> types_;
};

}  // namespace orvlog::inspect
