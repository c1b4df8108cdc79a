#include "tools/extract/extract-shapes.h"

#include "reader/look/call-box.h"
#include "reader/tree/values.h"
#include "tools/shared/look.h"

#include <algorithm>
#include <cmath>

namespace orvlog::tool
{

namespace
{

using orvlog::reader::BoxAround;
using orvlog::reader::Children;
using orvlog::reader::Element;
using orvlog::reader::read_double;
using orvlog::reader::read_uint;
using orvlog::reader::read_vector;

// SVG has no word for what isn't finite.
std::string number(double value)
{
    return number_text(std::isfinite(value) ? value : 0);
}

class DataWriter
{
public:
    void edge(GGO_Point start, const Element& edge)
    {
        if (!open_)
            move_to(start);
        else if (start.gpf_X != at_.gpf_X || start.gpf_Y != at_.gpf_Y)
            to('L', {start});
        open_ = true;
        const bool up = orvlog::reader::read_bool(edge, "sc_YPositive") != 0;
        for (const Element& member : Children(edge))
            for (const Element& one : Children(member))
                segment(one, up);
        const Element* head = edge.child("GPA_Edge");
        const uint32_t end = head != nullptr ? orvlog::reader::read_flags(*head, "ed_EdgeFlag") & 0x7F : 0;
        if (end == 0)
            data_ += "Z";
        open_ = end == 1;
    }

    std::string take()
    {
        return std::move(data_);
    }

private:
    GGO_Point from_here(GGO_Vector by) const
    {
        return {at_.gpf_X + by.gvf_X, at_.gpf_Y + by.gvf_Y};
    }

    void move_to(GGO_Point point)
    {
        to('M', {point});
    }

    void to(char command, std::initializer_list<GGO_Point> points)
    {
        data_ += command;
        bool first = true;
        for (const GGO_Point& point : points)
        {
            data_ += first ? "" : " ";
            data_.append(number(point.gpf_X)).append(",").append(number(point.gpf_Y));
            first = false;
            at_ = point;
        }
    }

    void segment(const Element& one, bool up)
    {
        if (one.name == "GGO_Vector")
            to('L', {from_here({read_double(one, "gvf_X"), read_double(one, "gvf_Y")})});
        else if (one.name == "GPA_BezierSegment")
            to('C', {from_here(read_vector(one, "bs_StartTangent")), from_here(read_vector(one, "bs_EndTangent")),
                     from_here(read_vector(one, "bs_EndPoint"))});
        else if (one.name == "GPA_QuadBezierSegment")
            to('Q', {from_here(read_vector(one, "qs_ControlPoint")), from_here(read_vector(one, "qs_EndPoint"))});
        else if (one.name == "GPA_StaircaseSegment")
        {
            to('L', {from_here({static_cast<double>(orvlog::reader::read_int(one, "ss_XOffset")), 0})});
            const double height = read_uint(one, "ss_YOffset");
            to('L', {from_here({0, up ? height : -height})});
        }
        else if (one.name == "GPA_EllipticalSegment")
            arc(one);
    }

    void arc(const Element& one)
    {
        constexpr double kDegrees = 57.295779513082323;
        const double x = read_double(one, "es_XRadius");
        const double y = read_double(one, "es_YRadius");
        const GGO_Point end = from_here(read_vector(one, "es_EndPoint"));
        data_.append("A").append(number(std::abs(x))).append(",").append(number(std::abs(y))).append(" ");
        data_.append(number(read_double(one, "es_AngleToXAxis") * kDegrees)).append(x * y > 0 ? " 0 1 " : " 0 0 ");
        data_.append(number(end.gpf_X)).append(",").append(number(end.gpf_Y));
        at_ = end;
    }

    std::string data_;
    GGO_Point at_{};
    bool open_ = false;
};

std::string matrix_text(const GGO_Matrix& matrix)
{
    std::string text = "matrix(";
    for (size_t i = 0; i < std::size(matrix.m); ++i)
        text.append(i == 0 ? "" : " ").append(number(matrix.m[i]));
    return text + ")";
}

std::string svg(const GGO_BoxFloat& box, const std::string& content)
{
    const double width = std::max(box.gbf_MaxX - box.gbf_MinX, 1e-6);
    const double height = std::max(box.gbf_MaxY - box.gbf_MinY, 1e-6);
    std::string text = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"";
    text.append(number(width)).append("\" height=\"").append(number(height)).append("\" viewBox=\"");
    text.append(number(box.gbf_MinX)).append(" ").append(number(box.gbf_MinY)).append(" ");
    text.append(number(width)).append(" ").append(number(height)).append("\">\n");
    return text + content + "</svg>\n";
}

std::string path_element(const std::string& data, const GGO_Matrix& matrix, const std::string& paint)
{
    return "<path transform=\"" + matrix_text(matrix) + "\" " + paint + " d=\"" + data + "\"/>\n";
}

std::string stroke_paint(const Element& params)
{
    constexpr const char* kCaps[] = {"butt", "round", "square"};
    constexpr const char* kJoins[] = {"miter", "round", "bevel"};
    const uint32_t cap = orvlog::reader::read_enum(params, "psp_Flags.S");
    const uint32_t join = orvlog::reader::read_enum(params, "psp_Flags.J");
    std::string text = "fill=\"none\" stroke=\"black\" stroke-width=\"";
    text.append(number(read_double(params, "psp_StrokeWidth"))).append("\" stroke-linecap=\"");
    text.append(kCaps[cap < std::size(kCaps) ? cap : 0]).append("\" stroke-linejoin=\"");
    text.append(kJoins[join < std::size(kJoins) ? join : 0]).append("\" stroke-miterlimit=\"");
    text.append(number(std::max(read_double(params, "psp_MiterLimit"), 1.0))).append("\"");
    const Element* lengths = params.child("psp_DashLength");
    const Element* buffer = lengths != nullptr ? lengths->child("BufferFloat") : nullptr;
    std::string dashes;
    if (buffer != nullptr)
        for (const double length : orvlog::reader::to_doubles(buffer->rows))
            dashes.append(dashes.empty() ? "" : " ").append(number(length));
    if (!dashes.empty())
        text.append(" stroke-dasharray=\"")
            .append(dashes)
            .append("\" stroke-dashoffset=\"")
            .append(number(read_double(params, "psp_DashStart")))
            .append("\"");
    return text;
}

std::string fill_paint(std::string_view rule)
{
    return std::string("fill=\"black\" fill-rule=\"") + (rule == "GPA_WINDING_NON_ZERO" ? "nonzero" : "evenodd") + "\"";
}

// The pixels of a bitmap, black where it paints.
std::string pgm(const Element& bitmap, std::span<const uint8_t> bytes)
{
    const uint32_t width = read_uint(bitmap, "gdb_Width") & 0xFFFF;
    const uint32_t height = read_uint(bitmap, "gdb_Height") & 0xFFFF;
    const size_t step = read_uint(bitmap, "gdb_Rowstep") & 0xFFFF;
    const bool ones = read_uint(bitmap, "gdb_BlackIsOne") != 0;
    std::string text = "P5\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n";
    for (uint32_t y = 0; y < height; ++y)
    {
        for (uint32_t x = 0; x < width; ++x)
        {
            const size_t at = y * step + x / 8;
            const bool there = at < bytes.size() && x / 8 < step;
            const bool one = there && (bytes[at] >> (7 - x % 8) & 1) != 0;
            text += there && one == ones ? '\0' : '\xFF';
        }
    }
    return text;
}

}  // namespace

std::string path_data(const Element& path)
{
    const Element* record = path.child("GPA_Path");
    const Element* starts = record != nullptr ? record->member("pa_EdgeStart") : nullptr;
    const Element* edges = path.member("lpp_EdgePointer");
    const Element* start = starts != nullptr ? starts->first : nullptr;
    DataWriter writer;
    for (const Element* edge = edges != nullptr ? edges->first : nullptr; edge != nullptr && start != nullptr;
         edge = edge->next, start = start->next)
    {
        const Element* pointer = edge->member("ep_Pointer");
        if (pointer != nullptr && pointer->first != nullptr)
            writer.edge({read_double(*start, "gpf_X"), read_double(*start, "gpf_Y")}, *pointer->first);
    }
    return writer.take();
}

std::string shape_svg(const Element& shape, const Element* stroke, const GGO_Matrix& to_pixels)
{
    const Element* holder = shape.member("sp_HeaderPtr");
    const Element* record = holder != nullptr ? holder->first : nullptr;
    const Element* head = record != nullptr ? record->child("GSH_Shape") : nullptr;
    const Element* filled = shape.member("sp_U.filled_path");
    const Element* stroked = shape.member("sp_U.stroked_path");
    const Element* member = filled != nullptr ? filled : stroked;
    const Element* path = member != nullptr ? member->child("GPA_PathPointer") : nullptr;
    if (head == nullptr || path == nullptr)
        return {};
    const GGO_Matrix own = orvlog::reader::read_matrix(*head, "sh_Transform");
    const GGO_Matrix matrix = ggo_multiply(&own, &to_pixels);
    const Element* params = stroked != nullptr ? record->child("GPA_PathStrokingParams") : stroke;
    BoxAround around;
    orvlog::reader::add_path(*path, matrix, around);
    const GGO_Vector margin = params != nullptr ? orvlog::reader::stroke_margin(*params, matrix) : GGO_Vector{};
    const auto box = around.box(margin.gvf_X, margin.gvf_Y);
    const std::string data = path_data(*path);
    if (!box || data.empty())
        return {};
    std::string content;
    if (stroked == nullptr)
        content = path_element(data, matrix, fill_paint(record->value("fps_WindingRule")));
    if (params != nullptr)
        content += path_element(data, matrix, stroke_paint(*params));
    return svg(*box, content);
}

GlyphFile glyph_file(const Element& pointer, const GGO_Matrix& to_pixels)
{
    const Element* holder = pointer.member("gdp_GlyphDesc");
    const Element* record = holder != nullptr ? holder->first : nullptr;
    if (record == nullptr)
        return {};
    const Element* buffer = record->child("BufferUInt8");
    const std::span<const uint8_t> bytes = buffer != nullptr ? buffer->bytes : std::span<const uint8_t>();
    if (record->name == "GFI_GlyphDescBitmap")
        return bytes.empty() ? GlyphFile{} : GlyphFile{".pgm", pgm(*record, bytes)};
    if (record->name != "GFI_GlyphDescPath")
        return bytes.empty()
                   ? GlyphFile{}
                   : GlyphFile{".bin", std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size())};
    const Element* path = holder->child("GPA_PathPointer");
    const std::string data = path != nullptr ? path_data(*path) : std::string();
    const double* m = to_pixels.m;
    const GGO_Matrix matrix = {{m[0], m[1], m[2], m[3], 0, 0}};
    BoxAround around;
    if (path != nullptr)
        orvlog::reader::add_path(*path, matrix, around);
    const auto box = around.box();
    if (!box || data.empty())
        return {};
    return {".svg", svg(*box, path_element(data, matrix, fill_paint(record->value("gdp_WindingRule"))))};
}

}  // namespace orvlog::tool
