// The forms in which values stand in a log, read back. What is not of the form gives 0, or what of it is.

#pragma once

#include "holv-core/ggo/ggo-geometry.h"
#include "reader/tree/element.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::reader
{

uint64_t to_uint(std::string_view value);
int64_t to_int(std::string_view value);
double to_double(std::string_view value);  // "inf", "nan" and their negatives too
float to_float(std::string_view value);
bool to_bool(std::string_view value);  // "TRUE"

// The number in "[0x12] NAME NAME ".
uint32_t to_flags(std::string_view value);

// The value of an enumerator of the interface by its name, or the number in "UNKNOWN_VALUE(9)"; 0 for other texts.
uint32_t to_enum(std::string_view value);
bool is_enumerator(std::string_view value);

// Numbers with blanks between them.
std::vector<uint32_t> to_uints(std::string_view value);
std::vector<double> to_doubles(std::string_view value);
std::vector<float> to_floats(std::string_view value);
// As many as `values` has room for; the others stay as they are. Gives how many were read.
size_t read_doubles(std::string_view value, std::span<double> values);

// A text without its escapes \x22.
std::string to_text(std::string_view value);

// Attributes of an element; zeros where it has none of that name.
uint32_t read_uint(const Element& element, std::string_view name);
int32_t read_int(const Element& element, std::string_view name);
double read_double(const Element& element, std::string_view name);
float read_float(const Element& element, std::string_view name);
uint32_t read_bool(const Element& element, std::string_view name);
uint32_t read_flags(const Element& element, std::string_view name);
uint32_t read_enum(const Element& element, std::string_view name);
GGO_Matrix read_matrix(const Element& element, std::string_view name);
GGO_BoxFloat read_box(const Element& element, std::string_view name);
GGO_Point read_point(const Element& element, std::string_view name);
GGO_Vector read_vector(const Element& element, std::string_view name);

}  // namespace orvlog::reader
