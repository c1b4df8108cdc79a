#include "inspect/align/call-digest.h"

#include "inspect/align/hash.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <cmath>

namespace orvlog::inspect
{

namespace
{

using reader::Children;
using reader::Element;

enum Part : size_t
{
    own_attributes,
    operators,
    outline,
    outline_form,
    clips,
    operands,
    others
};

// Numbers of a text as measures: how many there are is part of the form.
struct Measures
{
    double sum = 0;
    double weighted = 0;
    double size = 0;
    uint64_t count = 0;

    void add(std::string_view text)
    {
        while (!text.empty())
        {
            const size_t blank = text.find_first_of(" \n");
            const std::string_view number = text.substr(0, blank);
            text = blank == std::string_view::npos ? std::string_view() : text.substr(blank + 1);
            if (!number.empty())
                add(reader::to_double(number));
        }
    }
    void add(double value)
    {
        ++count;
        if (!std::isfinite(value) || std::fabs(value) > 1e15)
            return;
        sum += value;
        weighted += value * static_cast<double>((count * 7919) % 1009) / 1009.0;
        size += std::max(1.0, std::fabs(value));
    }
};

class Digester
{
public:
    Digester(TicketTexts& tickets, bool with_measures) : tickets_(tickets), with_measures_(with_measures) {}

    void add(const Element& element, Hash& hash, Hash& form)
    {
        hash.add(element.name);
        form.add(element.name);
        for (const reader::Attribute& attribute : element.attributes)
            add(element, attribute, hash, form);
        add_data(element, hash, form);
        const bool ticket = element.name == "GCM_ColorTicket";
        for (const Element* child = ticket ? nullptr : element.first; child != nullptr; child = child->next)
            add(*child, hash, form);
        hash.add(uint64_t{0});
        form.add(uint64_t{0});
    }

    void add(const Element& element, const reader::Attribute& attribute, Hash& hash, Hash& form)
    {
        hash.add(attribute.name);
        form.add(attribute.name);
        if (name_space_of(element.name, attribute.name) != NameSpace::none)
            return;
        hash.add(attribute.value);
        if (!is_measure(attribute.name))
            return form.add(attribute.value);
        if (with_measures_)
            add_measures(attribute.value, form);
    }

    const Measures& measures() const
    {
        return measures_;
    }

private:
    void add_measures(std::string_view text, Hash& form)
    {
        const uint64_t before = measures_.count;
        measures_.add(text);
        form.add(measures_.count - before);
    }

    void add_data(const Element& element, Hash& hash, Hash& form)
    {
        if (element.name == "GCM_ColorTicket")
        {
            const uint64_t text = tickets_.text_hash(element);
            hash.add(text);
            return form.add(text);
        }
        hash.add(element.bytes.data(), element.bytes.size());
        hash.add(element.rows);
        form.add(element.bytes.data(), element.bytes.size());
        if (element.name != "BufferFloat")
            form.add(element.rows);
        else if (with_measures_)
            add_measures(element.rows, form);
    }

    TicketTexts& tickets_;
    bool with_measures_;
    Measures measures_;
};

bool has_member(std::string_view name, std::string_view part)
{
    const size_t dot = name.find('.');
    return dot != std::string_view::npos && name.find(part, dot) != std::string_view::npos;
}

Part part_of(const Element& child)
{
    if (has_member(child.name, "paint_path") || has_member(child.name, "stroking_params"))
        return outline;
    if (has_member(child.name, "clip"))
        return clips;
    if (has_member(child.name, "operand"))
        return operands;
    return has_member(child.name, "op") ? operators : others;
}

}  // namespace

CallDigest digest_of(const Element& call, TicketTexts& tickets, bool with_measures)
{
    Digester digester(tickets, with_measures);
    std::array<Hash, CallDigest::kParts> kParts;
    Hash form;
    kParts[own_attributes].add(call.name);
    for (const reader::Attribute& attribute : call.attributes)
        digester.add(call, attribute, kParts[own_attributes], form);
    for (const Element& child : Children(call))
    {
        const Part part = part_of(child);
        digester.add(child, kParts[part], part == outline ? kParts[outline_form] : form);
    }
    kParts[others].add(call.bytes.data(), call.bytes.size());
    kParts[others].add(call.rows);
    CallDigest digest;
    Hash whole;
    for (size_t i = 0; i < kParts.size(); ++i)
    {
        digest.part[i] = static_cast<uint32_t>(kParts[i].value());
        whole.add(kParts[i].value());
    }
    form.add(kParts[outline_form].value());
    Hash kind;
    kind.add(call.name);
    form.add(kind.value());
    digest.kind = static_cast<uint32_t>(kind.value());
    digest.whole = whole.value();
    digest.form = form.value();
    digest.sum = digester.measures().sum;
    digest.weighted = digester.measures().weighted;
    digest.size = digester.measures().size;
    digest.line = call.place.line;
    digest.byte = call.place.byte;
    if (call.name.starts_with("ORV_object_paint") && call.has("id"))
        digest.id = reader::read_uint(call, "id");
    return digest;
}

bool may_be_equal(const CallDigest& a, const CallDigest& b, double tolerance)
{
    if (a.whole == b.whole || tolerance <= 0)
        return a.whole == b.whole;
    // What the addition itself may lose.
    const double slack = std::max(a.size, b.size) * (tolerance + 1e-9);
    return a.form == b.form && std::fabs(a.sum - b.sum) <= slack && std::fabs(a.weighted - b.weighted) <= slack;
}

int resemblance(const CallDigest& a, const CallDigest& b)
{
    if (a.kind != b.kind)
        return 0;
    int same = 1;
    for (size_t i = 0; i < CallDigest::kParts; ++i)
        same += a.part[i] == b.part[i] ? 1 : 0;
    return same;
}

}  // namespace orvlog::inspect
