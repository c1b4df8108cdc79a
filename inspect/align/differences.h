// In what two calls differ: which attribute of which record.

#pragma once

#include "inspect/align/call-names.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::inspect
{

struct Difference
{
    // The elements below the call, "/" between them; of several of the same name in one element the place among these
    // stands behind it, "GGO_Vector[2]", from 1. Empty for the call itself.
    std::string path;
    // Empty if the element itself is missing or added, or its data differs.
    std::string attribute;
    // What stands there; nothing if it is missing. Of data a piece from where it begins to differ.
    std::optional<std::string> a;
    std::optional<std::string> b;
    uint64_t at = 0;     // of data: the first byte or line that differs, from 0
    uint64_t count = 0;  // of data: how many bytes or lines differ; 0 if it is no data
};

class CallComparer
{
public:
    // Measures are equal if they differ by no more than `tolerance`, or by no more than that part of the greater one
    // where this is above 1. With a tolerance of 0 they are compared as they stand.
    explicit CallComparer(double tolerance) : tolerance_(tolerance) {}

    // All in which the calls differ, in the log's order. Call it for each two calls that belong together, in the order
    // of the logs: it follows which names stand for the same things.
    std::vector<Difference> compare(const reader::Element& a, const reader::Element& b);
    // To be told of calls that only one log has.
    void only_in_a(const reader::Element& call)
    {
        note_tickets(call, tickets_a_);
    }
    void only_in_b(const reader::Element& call)
    {
        note_tickets(call, tickets_b_);
    }

private:
    void compare_elements(const reader::Element& a, const reader::Element& b);
    void compare_attributes(const reader::Element& a, const reader::Element& b);
    bool compare_tickets(const reader::Element& a, const reader::Element& b);
    void compare_bytes(const reader::Element& a, const reader::Element& b);
    void compare_rows(const reader::Element& a, const reader::Element& b);
    void compare_children(const reader::Element& a, const reader::Element& b);
    void compare_child(const reader::Element& a, const reader::Element& b, const std::string& step);
    bool is_same(const reader::Element& a, const reader::Element& b) const;
    bool same_measures(std::string_view a, std::string_view b) const;
    bool same_value(std::string_view element, std::string_view attribute, std::string_view a, std::string_view b,
                    bool follow_names);
    static void note_tickets(const reader::Element& call, TicketTexts& tickets);

    double tolerance_;
    NamePairs names_;
    TicketTexts tickets_a_;
    TicketTexts tickets_b_;
    std::string path_;
    std::vector<Difference> found_;
};

}  // namespace orvlog::inspect
