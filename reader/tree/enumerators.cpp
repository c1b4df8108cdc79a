#include "reader/tree/enumerators.h"

#include "orvlog/interface/orvlog.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace orvlog::reader
{

namespace
{

struct Enumerator
{
    std::string_view name;
    uint32_t value;
};

// clang-format off
constexpr Enumerator kListed[] = {
#define ORVLOG_ENUMERATION(list)
#define ORVLOG_NAME(name) {#name, name},
#define ORVLOG_BORROWED_NAME(name)
#define ORVLOG_END_ENUMERATION
#include "orvlog/names/enumerations.inc"
};
// clang-format on

constexpr auto in_order_of_names()
{
    auto enumerators = std::to_array(kListed);
    std::ranges::sort(enumerators, {}, &Enumerator::name);
    return enumerators;
}

constexpr auto kEnumerators = in_order_of_names();

static_assert(std::ranges::adjacent_find(kEnumerators, {}, &Enumerator::name) == kEnumerators.end());

}  // namespace

std::optional<uint32_t> find_enumerator(std::string_view name)
{
    const auto* found = std::ranges::lower_bound(kEnumerators, name, {}, &Enumerator::name);
    if (found == std::end(kEnumerators) || found->name != name)
        return std::nullopt;
    return found->value;
}

}  // namespace orvlog::reader
