// What the records of several families have in common.

#pragma once

#include "orvlog/interface/orvlog.h"
#include "reader/tree/element.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace orvlog::reader
{

// Attributes of an element, cut to the width of their field; zeros where it has none of that name.
uint8_t read_byte(const Element& element, std::string_view name);
uint16_t read_word(const Element& element, std::string_view name);

size_t count_named(const Element& element, std::string_view name);

// The colour in a member; null without one.
const Element* held_color(const Element* member);
// Bytes of a GBC_Color's channels behind the record; 0 for null.
size_t channel_bytes(const Element* color);
// `color` has room for the channels of the element.
void read_color(const Element& element, GBC_Color* color);

// Dashes of a GPA_PathStrokingParams; 0 for null.
size_t dash_count(const Element* params);
// `params` has room for `dashes` of them.
void read_stroke(const Element& element, GPA_PathStrokingParams* params, size_t dashes);

// The head that the records of all operands begin with.
void read_head(const Element& element, GOP_Operand* head);

}  // namespace orvlog::reader
