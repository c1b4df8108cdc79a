#include "reader/tree/values.h"

#include "reader/text/character-set.h"
#include "reader/tree/enumerators.h"

#include <algorithm>
#include <charconv>

namespace orvlog::reader
{

namespace
{

constexpr CharacterSet kBetweenWords(" \n");

template <typename Number> Number number(std::string_view value)
{
    Number result{};
    std::from_chars(value.data(), value.data() + value.size(), result);
    return result;
}

// Calls `take` with each word.
template <typename Take> void for_words(std::string_view value, Take take)
{
    while (true)
    {
        value.remove_prefix(kBetweenWords.first_not_in(value));
        if (value.empty())
            return;
        const std::string_view word = value.substr(0, kBetweenWords.first_in(value));
        if (!take(word))
            return;
        value.remove_prefix(word.size());
    }
}

template <typename Number> std::vector<Number> numbers(std::string_view value)
{
    std::vector<Number> found;
    for_words(value,
              [&](std::string_view word)
              {
                  found.push_back(number<Number>(word));
                  return true;
              });
    return found;
}

}  // namespace

uint64_t to_uint(std::string_view value)
{
    return value.starts_with('-') ? static_cast<uint64_t>(number<int64_t>(value)) : number<uint64_t>(value);
}

int64_t to_int(std::string_view value)
{
    return number<int64_t>(value);
}

double to_double(std::string_view value)
{
    return number<double>(value);
}

float to_float(std::string_view value)
{
    return number<float>(value);
}

bool to_bool(std::string_view value)
{
    return value == "TRUE";
}

uint32_t to_flags(std::string_view value)
{
    if (!value.starts_with('['))
        return 0;
    value.remove_prefix(1);
    if (!value.starts_with("0x"))
        return number<uint32_t>(value);
    uint32_t result = 0;
    std::from_chars(value.data() + 2, value.data() + value.size(), result, 16);
    return result;
}

uint32_t to_enum(std::string_view value)
{
    constexpr std::string_view kUnknown = "UNKNOWN_VALUE(";
    if (value.starts_with(kUnknown))
        return static_cast<uint32_t>(to_int(value.substr(kUnknown.size())));
    return find_enumerator(value).value_or(0);
}

bool is_enumerator(std::string_view value)
{
    return find_enumerator(value).has_value();
}

std::vector<uint32_t> to_uints(std::string_view value)
{
    return numbers<uint32_t>(value);
}

std::vector<double> to_doubles(std::string_view value)
{
    return numbers<double>(value);
}

std::vector<float> to_floats(std::string_view value)
{
    return numbers<float>(value);
}

size_t read_doubles(std::string_view value, std::span<double> values)
{
    size_t count = 0;
    for_words(value,
              [&](std::string_view word)
              {
                  if (count == values.size())
                      return false;
                  values[count++] = to_double(word);
                  return true;
              });
    return count;
}

std::string to_text(std::string_view value)
{
    std::string text;
    for (size_t at = 0; at < value.size(); ++at)
    {
        unsigned code = 0;
        const std::string_view escape = value.substr(at, 4);
        if (escape.size() == 4 && escape.starts_with("\\x") &&
            std::from_chars(escape.data() + 2, escape.data() + 4, code, 16).ptr == escape.data() + 4)
        {
            text += static_cast<char>(code);
            at += 3;
            continue;
        }
        text += value[at];
    }
    return text;
}

uint32_t read_uint(const Element& element, std::string_view name)
{
    return static_cast<uint32_t>(to_uint(element.value(name)));
}

int32_t read_int(const Element& element, std::string_view name)
{
    return static_cast<int32_t>(to_int(element.value(name)));
}

double read_double(const Element& element, std::string_view name)
{
    return to_double(element.value(name));
}

float read_float(const Element& element, std::string_view name)
{
    return to_float(element.value(name));
}

uint32_t read_bool(const Element& element, std::string_view name)
{
    return to_bool(element.value(name)) ? 1 : 0;
}

uint32_t read_flags(const Element& element, std::string_view name)
{
    return to_flags(element.value(name));
}

uint32_t read_enum(const Element& element, std::string_view name)
{
    return to_enum(element.value(name));
}

GGO_Matrix read_matrix(const Element& element, std::string_view name)
{
    GGO_Matrix matrix{};
    read_doubles(element.value(name), matrix.m);
    return matrix;
}

GGO_BoxFloat read_box(const Element& element, std::string_view name)
{
    double v[4] = {};
    read_doubles(element.value(name), v);
    return {v[0], v[1], v[2], v[3]};
}

GGO_Point read_point(const Element& element, std::string_view name)
{
    double v[2] = {};
    read_doubles(element.value(name), v);
    return {v[0], v[1]};
}

GGO_Vector read_vector(const Element& element, std::string_view name)
{
    double v[2] = {};
    read_doubles(element.value(name), v);
    return {v[0], v[1]};
}

}  // namespace orvlog::reader
