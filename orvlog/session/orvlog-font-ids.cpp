#include "orvlog/session/orvlog-font-ids.h"

#include "holv-core/gmm/gmm-typed.h"

#include <cstdint>

namespace
{

// The nodes of a paint are searched by their font, by their string and by both, so each stands in up to three binary
// trees. A branch is taken by the next bit of the key's hash: the trees keep shallow by themselves, and need no memory
// beyond the nodes, so that they fail in no other way than these do.
using Branches = font_id_pair* (font_id_pair::*)[2];

uint64_t scatter(uint64_t key)
{
    key = (key ^ key >> 30) * 0xBF58476D1CE4E5B9U;
    key = (key ^ key >> 27) * 0x94D049BB133111EBU;
    return key ^ key >> 31;
}

uint64_t hash_of(const void* address)
{
    return scatter(reinterpret_cast<uintptr_t>(address));
}

// Where the node with the key is linked, or where it would be.
template <typename Matches>
font_id_pair** place_of(font_id_pair** root, Branches branches, uint64_t hash, Matches matches)
{
    font_id_pair** place = root;
    for (; *place != nullptr && !matches(*place); hash >>= 1)
        place = &((*place)->*branches)[hash & 1];
    return place;
}

font_id_pair** place_of_font(ORVLOG_Session* session, const GFI_FontSpecPointer* font_spec)
{
    return place_of(&session->pairs_by_font, &font_id_pair::by_font, hash_of(font_spec),
                    [=](const font_id_pair* pair) { return pair->font_spec == font_spec; });
}

font_id_pair** place_of_string(ORVLOG_Session* session, const GFI_StringDescPointer* string_desc)
{
    return place_of(&session->pairs_by_string, &font_id_pair::by_string, hash_of(string_desc),
                    [=](const font_id_pair* pair) { return pair->string_desc == string_desc; });
}

font_id_pair** place_of_both(ORVLOG_Session* session, const GFI_FontSpecPointer* font_spec,
                             const GFI_StringDescPointer* string_desc)
{
    return place_of(&session->pairs_by_both, &font_id_pair::by_both,
                    scatter(hash_of(font_spec) + reinterpret_cast<uintptr_t>(string_desc)),
                    [=](const font_id_pair* pair)
                    { return pair->font_spec == font_spec && pair->string_desc == string_desc; });
}

void link(font_id_pair** place, font_id_pair* pair)
{
    if (*place == nullptr)
        *place = pair;
}

}  // namespace

uint32_t orvlog_font_ids_take(ORVLOG_Session* session, const GFI_FontSpecPointer* font_spec,
                              const GFI_StringDescPointer* string_desc, ORVLOG_FontIds* ids)
{
    font_id_pair** font = place_of_font(session, font_spec);
    font_id_pair** string = place_of_string(session, string_desc);
    if (*font != nullptr && *string != nullptr)
    {
        *ids = {(*font)->font_spec_id, (*string)->string_desc_id};
        return 1;
    }
    GMM_Allocator* allocator = session->side_allocator;
    if (allocator == nullptr)
        return 0;
    auto* pair = gmm_alloc_record<font_id_pair>(allocator);
    if (pair == nullptr)
        return 0;
    *ids = {*font != nullptr ? (*font)->font_spec_id : session->next_font_spec_id++,
            *string != nullptr ? (*string)->string_desc_id : session->next_string_desc_id++};
    *pair = {session->object_scratch, font_spec, ids->font_spec_id, string_desc, ids->string_desc_id, {}, {}, {}};
    session->object_scratch = pair;
    link(font, pair);
    link(string, pair);
    link(place_of_both(session, font_spec, string_desc), pair);
    return 1;
}

const font_id_pair* orvlog_font_ids_find(ORVLOG_Session* session, const GFI_FontSpecPointer* font_spec,
                                         const GFI_StringDescPointer* string_desc)
{
    return *place_of_both(session, font_spec, string_desc);
}
