#include "orvlog/colour/gxc/gxc-family.h"

namespace
{

struct FamilyRow
{
    uint32_t kind;
    uint8_t channels;
    int32_t family;
};

constexpr FamilyRow kFamilies[] = {{0, 1, 0}, {0, 3, 1}, {1, 4, 2}};

}  // namespace

uint32_t gxc_family_of_ticket(const ORVLOG_TicketFunctions* colour_ops, void* ticket, int32_t* out_family)
{
    alignas(8) uint32_t space[5] = {};
    alignas(8) uint32_t render[4] = {};
    const GCM_Csd* const* list = nullptr;
    if (colour_ops == nullptr || colour_ops->query == nullptr || colour_ops->csd_list == nullptr)
        return 0;
    if (colour_ops->query(ticket, space, render) == 0)
        return 0;
    if (colour_ops->csd_list(ticket, &list, 0, 0) == 0 || list == nullptr || list[0] == nullptr)
        return 0;
    for (const FamilyRow& row : kFamilies)
    {
        if (row.kind != space[0] || row.channels != list[0]->csd_NumBaseChans)
            continue;
        *out_family = row.family;
        return 1;
    }
    return 0;
}
