#include "inspect/report/outline.h"

#include "inspect/report/columns.h"
#include "orvlog/interface/gsh-shape.h"
#include "reader/look/call-box.h"
#include "reader/look/elliptical-arc.h"
#include "reader/tree/values.h"

#include <array>
#include <charconv>
#include <cmath>

namespace orvlog::inspect
{

namespace
{

using reader::Children;
using reader::Element;
using reader::read_double;
using reader::read_vector;

constexpr size_t kLongest = size_t{32} << 10;
constexpr size_t kMostClips = 32;

class PathText
{
public:
    explicit PathText(const GGO_Matrix& matrix) : matrix_(matrix) {}

    void edge(GGO_Point start, const Element& edge)
    {
        if (!open_)
            to('M', {start});
        else if (start.gpf_X != at_.gpf_X || start.gpf_Y != at_.gpf_Y)
            to('L', {start});
        open_ = true;
        at_ = start;
        const bool up = reader::read_bool(edge, "sc_YPositive") != 0;
        for (const Element& member : Children(edge))
            for (const Element& one : Children(member))
                segment(one, up);
        const Element* head = edge.child("GPA_Edge");
        const uint32_t end = head != nullptr ? reader::read_flags(*head, "ed_EdgeFlag") & 0x7F : 0;
        if (end == 0)
            data_ += "Z";
        open_ = end == 1;
    }

    void rectangle(const GGO_BoxFloat& box)
    {
        to('M', {GGO_Point{box.gbf_MinX, box.gbf_MinY}});
        to('L', {GGO_Point{box.gbf_MaxX, box.gbf_MinY}});
        to('L', {GGO_Point{box.gbf_MaxX, box.gbf_MaxY}});
        to('L', {GGO_Point{box.gbf_MinX, box.gbf_MaxY}});
        data_ += "Z";
    }

    bool is_full() const
    {
        return data_.size() >= kLongest;
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

    void number(double value)
    {
        constexpr double kFar = 1e7;
        char text[32];
        const double shown = std::round(std::clamp(value, -kFar, kFar) * 100) / 100 + 0.0;
        const auto end = std::to_chars(text, text + sizeof text, shown);
        data_.append(text, end.ptr);
    }

    template <size_t Count> void to(char command, const std::array<GGO_Point, Count>& points)
    {
        std::array<GGO_Point, Count> shown;
        for (size_t i = 0; i < Count; ++i)
        {
            shown[i] = ggo_transform_point(&matrix_, points[i]);
            if (!std::isfinite(shown[i].gpf_X) || !std::isfinite(shown[i].gpf_Y))
                return;
        }
        // A path begins with a place to begin at.
        data_ += data_.empty() ? 'M' : command;
        for (size_t i = 0; i < Count; ++i)
        {
            data_ += i == 0 ? "" : " ";
            number(shown[i].gpf_X);
            data_ += ',';
            number(shown[i].gpf_Y);
        }
        at_ = points.back();
    }
    void to(char command, const std::array<GGO_Point, 1>& point)
    {
        to<1>(command, point);
    }

    void line(GGO_Vector by)
    {
        to<1>('L', {from_here(by)});
    }

    void segment(const Element& one, bool up)
    {
        if (is_full())
            return;
        if (one.name == "GGO_Vector")
            line({read_double(one, "gvf_X"), read_double(one, "gvf_Y")});
        else if (one.name == "GPA_BezierSegment")
            to<3>('C', {from_here(read_vector(one, "bs_StartTangent")), from_here(read_vector(one, "bs_EndTangent")),
                        from_here(read_vector(one, "bs_EndPoint"))});
        else if (one.name == "GPA_QuadBezierSegment")
            to<2>('Q', {from_here(read_vector(one, "qs_ControlPoint")), from_here(read_vector(one, "qs_EndPoint"))});
        else if (one.name == "GPA_StaircaseSegment")
        {
            line({static_cast<double>(reader::read_int(one, "ss_XOffset")), 0});
            const double height = reader::read_uint(one, "ss_YOffset");
            line({0, up ? height : -height});
        }
        else if (one.name == "GPA_EllipticalSegment")
            arc(reader::EllipticalArc(one));
    }

    // As a line of many parts.
    void arc(const reader::EllipticalArc& arc)
    {
        constexpr int kParts = 24;
        const GGO_Point start = at_;
        for (int i = 1; i < kParts && !arc.is_line(); ++i)
        {
            const GGO_Vector by = arc.at(static_cast<double>(i) / kParts);
            to<1>('L', {GGO_Point{start.gpf_X + by.gvf_X, start.gpf_Y + by.gvf_Y}});
        }
        to<1>('L', {GGO_Point{start.gpf_X + arc.end().gvf_X, start.gpf_Y + arc.end().gvf_Y}});
    }

    const GGO_Matrix& matrix_;
    std::string data_;
    GGO_Point at_{};
    bool open_ = false;
};

const Element* in_member(const Element& element, std::string_view name)
{
    const Element* member = element.member(name);
    return member != nullptr ? member->first : nullptr;
}

GGO_BoxFloat box_of(const Element& one)
{
    return {
        static_cast<double>(reader::read_int(one, "gbi_MinX")), static_cast<double>(reader::read_int(one, "gbi_MinY")),
        static_cast<double>(reader::read_int(one, "gbi_MaxX")), static_cast<double>(reader::read_int(one, "gbi_MaxY"))};
}

// Shapes of rectangles, of rows, and of the rectangle of an image.
void add_boxes(PathText& text, const Element& record)
{
    if (record.name == "GSH_ImageRectShape")
        text.rectangle({0, 0, static_cast<double>(reader::read_uint(record, "irs_ImageWidth")),
                        static_cast<double>(reader::read_uint(record, "irs_ImageHeight"))});
    auto y = static_cast<double>(reader::read_int(record, "ss_StartY"));
    for (const Element& one : Children(record))
    {
        if (text.is_full())
            return;
        if (one.name == "GGO_BoxInt")
            text.rectangle(box_of(one));
        if (one.name != "GSH_XLimits")
            continue;
        const double start = reader::read_int(one, "xl_StartX");
        const double stop = reader::read_int(one, "xl_StopX");
        if (start < stop)
            text.rectangle({start, y, stop, y + 1});
        y += 1;
    }
}

double stroke_width(const Element& params, const GGO_Matrix& matrix)
{
    const GGO_Vector margin = reader::stroke_margin(params, matrix);
    return margin.gvf_X + margin.gvf_Y;
}

// `stroke`: the line with which a call strokes what it fills, or null. Nothing for shapes without extent, as texts.
std::optional<Outline> outline_of(const Element& shape, const Element* stroke, const GGO_Matrix& to_pixels)
{
    const Element* record = in_member(shape, "sp_HeaderPtr");
    const Element* head = record != nullptr ? record->child("GSH_Shape") : nullptr;
    if (head == nullptr)
        return std::nullopt;
    const GGO_Matrix own = reader::read_matrix(*head, "sh_Transform");
    const GGO_Matrix matrix = ggo_multiply(&own, &to_pixels);
    Outline outline;
    const Element* stroked = shape.member("sp_U.stroked_path");
    const Element* holder = stroked != nullptr ? stroked : shape.member("sp_U.filled_path");
    const Element* path = holder != nullptr ? holder->child("GPA_PathPointer") : nullptr;
    if (path != nullptr)
        outline.data = path_data(*path, matrix, outline.cut);
    else
    {
        PathText text(matrix);
        add_boxes(text, *record);
        outline.cut = text.is_full();
        outline.data = text.take();
    }
    const Element* params = stroked != nullptr ? record->child("GPA_PathStrokingParams") : stroke;
    if (params != nullptr)
        outline.stroke = stroke_width(*params, matrix);
    if (stroked == nullptr)
        outline.rule = record->value("fps_WindingRule") == "GPA_WINDING_NON_ZERO" ? "nonzero" : "evenodd";
    return outline.data.empty() ? std::nullopt : std::optional(std::move(outline));
}

// The rectangle of what `box` tells, in pixels.
void add_box(std::vector<Outline>& outlines, const std::optional<GGO_BoxFloat>& box)
{
    constexpr GGO_Matrix kIdentity = {{1, 0, 0, 1, 0, 0}};
    if (!box)
        return;
    PathText text(kIdentity);
    text.rectangle(*box);
    outlines.push_back({text.take(), "nonzero", std::nullopt, true, false});
}

void add_image(std::vector<Outline>& outlines, const Element& call, const GGO_Matrix& to_pixels)
{
    for (const char* name : {"operand1", "fill_operand1"})
    {
        const Element* operand = in_member(call, name);
        const Element* image = operand != nullptr ? operand->child("GOP_OperandImage") : nullptr;
        if (image == nullptr || operand->child("GOP_TilingParameters") != nullptr)
            continue;
        const GGO_Matrix own = reader::read_matrix(*image, "im_Transform");
        const GGO_Matrix matrix = ggo_multiply(&own, &to_pixels);
        const bool unit = image->value("im_Flags").find("TRANSFORM_FROM_UNIT_SQUARE") != std::string_view::npos;
        PathText text(matrix);
        text.rectangle({0, 0, unit ? 1 : static_cast<double>(reader::read_uint(*image, "im_ImageWidthPixels")),
                        unit ? 1 : static_cast<double>(reader::read_uint(*image, "im_ImageHeightPixels"))});
        outlines.push_back({text.take(), "nonzero", std::nullopt, true, false});
        return;
    }
}

}  // namespace

std::string path_data(const Element& path, const GGO_Matrix& matrix, bool& cut)
{
    const Element* record = path.child("GPA_Path");
    const Element* start = record != nullptr ? in_member(*record, "pa_EdgeStart") : nullptr;
    const Element* edge = in_member(path, "lpp_EdgePointer");
    PathText text(matrix);
    for (; edge != nullptr && start != nullptr && !text.is_full(); edge = edge->next, start = start->next)
        if (const Element* pointer = in_member(*edge, "ep_Pointer"); pointer != nullptr)
            text.edge({read_double(*start, "gpf_X"), read_double(*start, "gpf_Y")}, *pointer);
    cut = text.is_full();
    return text.take();
}

std::vector<Outline> outlines_of(const Element& call, const GGO_Matrix& to_pixels)
{
    std::vector<Outline> outlines;
    const Element* shape = in_member(call, "paint_path");
    const Element* stroke = in_member(call, "stroking_params");
    if (shape != nullptr && reader::is_text(*shape))
        add_box(outlines, reader::text_box(call, *shape));
    else if (shape != nullptr)
    {
        if (auto outline = outline_of(*shape, stroke, to_pixels))
            outlines.push_back(std::move(*outline));
    }
    else
        add_image(outlines, call, to_pixels);
    return outlines;
}

std::vector<Outline> clips_of(const Element& call, const GGO_Matrix& to_pixels)
{
    std::vector<Outline> outlines;
    const Element* list = in_member(call, "clip");
    if (list == nullptr)
        list = in_member(call, "group_clip");
    for (; list != nullptr && outlines.size() < kMostClips; list = list->next)
    {
        bool inside = reader::read_bool(*list, "sl_ClipIn") != 0;
        for (const Element* one = list; one != nullptr && outlines.size() < kMostClips;)
        {
            const Element* shape = in_member(*one, "sl_Shape");
            auto outline = shape != nullptr ? outline_of(*shape, nullptr, to_pixels) : std::nullopt;
            if (outline)
            {
                outline->inside = inside;
                outlines.push_back(std::move(*outline));
            }
            const Element* collection = one->child("GSH_ShapeListCollection");
            one = collection != nullptr ? collection->child("GSH_ShapeList") : nullptr;
        }
        if ((reader::read_flags(*list, "sl_Hints") & GSH_SLH_IGNORE_REST_OF_LIST) != 0)
            break;
    }
    return outlines;
}

std::string outline_json(const Outline& outline)
{
    // Path data is made here: there is nothing in it that needs an escape.
    std::string json = "{\"d\":\"" + outline.data + "\",\"rule\":";
    json += outline.rule.empty() ? "null" : "\"" + outline.rule + "\"";
    json += ",\"stroke\":" + (outline.stroke ? number_json(std::round(*outline.stroke * 100) / 100) : "null");
    json += std::string(",\"inside\":") + (outline.inside ? "true" : "false");
    return json + ",\"cut\":" + (outline.cut ? "true" : "false") + "}";
}

}  // namespace orvlog::inspect
