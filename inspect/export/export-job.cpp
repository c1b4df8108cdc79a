#include "inspect/export/export-job.h"

#include "reader/tree/values.h"

#include <algorithm>
#include <array>

namespace orvlog::inspect
{

using orvlog::reader::Element;

namespace
{

const orvlog::reader::Attribute* find(const Element* element, std::string_view name)
{
    return element != nullptr ? element->find(name) : nullptr;
}

bool is_unknown_value(std::string_view value)
{
    constexpr std::string_view kHead = "UNKNOWN_VALUE(";
    return value.starts_with(kHead) && value.ends_with(')') && value.size() < 32 &&
           std::ranges::all_of(value.substr(kHead.size(), value.size() - kHead.size() - 1),
                               [](char c) { return c == '-' || (c >= '0' && c <= '9'); });
}

}  // namespace

std::optional<int64_t> number_of(const Element* element, std::string_view name)
{
    const auto* found = find(element, name);
    if (found == nullptr)
        return std::nullopt;
    return orvlog::reader::to_int(found->value);
}

std::optional<int64_t> flags_of(const Element* element, std::string_view name)
{
    const auto* found = find(element, name);
    if (found == nullptr)
        return std::nullopt;
    // tiling_flags of a painted resource, and the like, are bare numbers.
    return found->value.starts_with('[') ? orvlog::reader::to_flags(found->value)
                                         : orvlog::reader::to_int(found->value);
}

std::optional<double> real_of(const Element* element, std::string_view name)
{
    const auto* found = find(element, name);
    if (found == nullptr)
        return std::nullopt;
    return orvlog::reader::to_double(found->value);
}

std::optional<std::string_view> name_of(const Element* element, std::string_view name)
{
    const auto* found = find(element, name);
    if (found == nullptr || !(orvlog::reader::is_enumerator(found->value) || is_unknown_value(found->value)))
        return std::nullopt;
    return found->value;
}

void put_matrix(RowWriter& rows, const Element* element, std::string_view name)
{
    std::array<double, 6> numbers{};
    const auto* found = find(element, name);
    const size_t count = found != nullptr ? orvlog::reader::read_doubles(found->value, numbers) : 0;
    for (size_t i = 0; i < numbers.size(); ++i)
        rows.real(i < count ? std::optional(numbers[i]) : std::nullopt);
}

void put_box(RowWriter& rows, const std::optional<GGO_BoxFloat>& box)
{
    if (!box)
        rows.null().null().null().null();
    else
        rows.real(box->gbf_MinX).real(box->gbf_MinY).real(box->gbf_MaxX).real(box->gbf_MaxY);
}

}  // namespace orvlog::inspect
