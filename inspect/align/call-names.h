// Which attributes of a log hold names rather than values, and whether the names of two logs go together.

#pragma once

#include "reader/tree/element.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orvlog::inspect
{

// What a number or a file name in a log stands for. Two logs of the same job may have others for the same things.
enum class NameSpace : uint8_t
{
    none,     // a value
    counter,  // counts calls; says nothing else
    document,
    document_id,
    drawing,
    resource,
    face,
    group,
    engine,
    font,    // within a call
    string,  // within a call
    unique_font,
    image,
    operand,
    clip_list,
    ticket,
    file
};
constexpr size_t kNameSpaces = static_cast<size_t>(NameSpace::file) + 1;

// What the attribute holds of an element of that name.
NameSpace name_space_of(std::string_view element, std::string_view attribute);

// Whether an attribute holds numbers that are rounded: coordinates, colours, widths.
bool is_measure(std::string_view attribute);

// Which names of one log stand for which of another one. Of each kind the last 65,536 are known.
class NamePairs
{
public:
    // False if either name stands for something else so far; from then on these two go together.
    bool agree(NameSpace space, std::string_view a, std::string_view b);
    // Fonts and strings are numbered within a call.
    void start_call();

private:
    struct Table
    {
        std::unordered_map<std::string, std::string> to_b;
        std::unordered_map<std::string, std::string> to_a;
        std::vector<std::string> order;  // those of A, as a ring
        size_t next = 0;
    };

    static void forget(Table& table, const std::string& a);

    std::array<Table, kNameSpaces> tables_;
};

// The texts of a log's tickets by their numbers, as hashes: a log has each text only once. The last 65,536 are known.
class TicketTexts
{
public:
    // Of a GCM_ColorTicket: the hash of its text, be it in the element or in an earlier one.
    uint64_t text_hash(const reader::Element& ticket);

private:
    std::unordered_map<uint32_t, uint64_t> hashes_;
    std::vector<uint32_t> order_;
    size_t next_ = 0;
};

}  // namespace orvlog::inspect
