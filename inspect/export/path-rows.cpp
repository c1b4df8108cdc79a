#include "inspect/export/path-rows.h"

#include "inspect/export/digest.h"
#include "orvlog/interface/orvlog.h"
#include "reader/tree/values.h"

#include <array>

namespace orvlog::inspect
{

namespace
{

using orvlog::reader::Children;
using orvlog::reader::Element;

struct EdgeForm
{
    std::string_view element;
    std::string_view member;
    std::string_view kind;
    uint64_t PathFacts::*count;
};

constexpr std::array kEdges = {
    EdgeForm{"GPA_StraightEdge", "se_Segment", "straight", &PathFacts::straights},
    EdgeForm{"GPA_BezierEdge", "be_BezierSegment", "bezier", &PathFacts::beziers},
    EdgeForm{"GPA_QuadBezierEdge", "qb_QuadBezierSegment", "quadratic", &PathFacts::quadratics},
    EdgeForm{"GPA_StaircaseEdge", "sc_Field", "staircase", &PathFacts::staircases},
    EdgeForm{"GPA_EllipticalEdge", "ee_EllipticalSegment", "ellipse", &PathFacts::ellipses},
};

const EdgeForm* form_of_edge(const Element& edge)
{
    for (const EdgeForm& form : kEdges)
        if (edge.name == form.element)
            return &form;
    return nullptr;
}

const Element* edge_of(const Element& pointer)
{
    const Element* holder = pointer.member("ep_Pointer");
    return holder != nullptr ? holder->first : nullptr;
}

void digest_element(Digest& digest, const Element& element)
{
    digest.add(element.name);
    for (const orvlog::reader::Attribute& attribute : element.attributes)
    {
        digest.add(" ");
        digest.add(attribute.value);
    }
    digest.add("\n");
}

void put_vector(RowWriter& rows, const Element& segment, const char* name)
{
    const GGO_Vector vector = orvlog::reader::read_vector(segment, name);
    if (segment.has(name))
        rows.real(vector.gvf_X).real(vector.gvf_Y);
    else
        rows.null().null();
}

std::optional<double> number(const Element& element, const char* name)
{
    if (!element.has(name))
        return std::nullopt;
    return orvlog::reader::read_double(element, name);
}

}  // namespace

PathFacts path_facts(const Element& path, const TakeSegment& segment)
{
    PathFacts facts;
    Digest digest;
    const Element* record = path.child("GPA_Path");
    const Element* starts = record != nullptr ? record->member("pa_EdgeStart") : nullptr;
    const Element* start = starts != nullptr ? starts->first : nullptr;
    for (const Element* one = start; one != nullptr; one = one->next)
        digest_element(digest, *one);
    const Element* holder = path.member("lpp_EdgePointer");
    for (const Element* pointer = holder != nullptr ? holder->first : nullptr; pointer != nullptr;
         pointer = pointer->next, start = start != nullptr ? start->next : nullptr)
    {
        ++facts.edges;
        const Element* edge = edge_of(*pointer);
        const EdgeForm* form = edge != nullptr ? form_of_edge(*edge) : nullptr;
        if (form == nullptr)
            continue;
        if (const Element* head = edge->child("GPA_Edge"); head != nullptr)
        {
            digest_element(digest, *head);
            facts.closed += (orvlog::reader::read_flags(*head, "ed_EdgeFlag") & 0x7FU) == GPA_SUBPATH_END_CLOSED;
        }
        digest.add(edge->value("sc_YPositive"));
        const Element* list = edge->member(form->member);
        const Element* from = start;
        for (const Element* one = list != nullptr ? list->first : nullptr; one != nullptr; one = one->next)
        {
            ++facts.segments;
            ++(facts.*form->count);
            digest_element(digest, *one);
            if (segment)
                segment(*edge, facts.edges, from, *one);
            from = nullptr;
        }
    }
    facts.hash = digest.take();
    facts.complete =
        record != nullptr && orvlog::reader::read_uint(*record, "pa_NumEdges") == facts.edges && !path.implied_end;
    return facts;
}

void put_segment(RowWriter& rows, const Element& edge, const Element* start, const Element& segment)
{
    const EdgeForm* form = form_of_edge(edge);
    const Element* head = edge.child("GPA_Edge");
    rows.text(form->kind).integer(head != nullptr ? orvlog::reader::read_flags(*head, "ed_EdgeFlag") : 0);
    rows.real(start != nullptr ? number(*start, "gpf_X") : std::nullopt);
    rows.real(start != nullptr ? number(*start, "gpf_Y") : std::nullopt);
    if (form->kind == "bezier")
    {
        put_vector(rows, segment, "bs_StartTangent");
        put_vector(rows, segment, "bs_EndTangent");
        put_vector(rows, segment, "bs_EndPoint");
    }
    else if (form->kind == "quadratic")
    {
        put_vector(rows, segment, "qs_ControlPoint");
        rows.null().null();
        put_vector(rows, segment, "qs_EndPoint");
    }
    else if (form->kind == "ellipse")
    {
        rows.real(number(segment, "es_XRadius")).real(number(segment, "es_YRadius"));
        rows.real(number(segment, "es_AngleToXAxis")).null();
        put_vector(rows, segment, "es_EndPoint");
    }
    else if (form->kind == "staircase")
    {
        const double sign = edge.value("sc_YPositive") == "FALSE" ? -1 : 1;
        rows.null().null().null().null();
        rows.real(orvlog::reader::read_double(segment, "ss_XOffset"));
        rows.real(sign * orvlog::reader::read_double(segment, "ss_YOffset"));
    }
    else
    {
        rows.null().null().null().null();
        rows.real(number(segment, "gvf_X")).real(number(segment, "gvf_Y"));
    }
}

}  // namespace orvlog::inspect
