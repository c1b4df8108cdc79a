#include "inspect/report/columns.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <cmath>

namespace orvlog::inspect
{

std::string text_json(std::string_view text)
{
    using nlohmann::json;
    const std::string plain = json(text).dump(-1, ' ', true, json::error_handler_t::replace);
    std::string safe;
    safe.reserve(plain.size());
    for (const char c : plain)
        if (c == '<')
            safe += "\\u003c";
        else if (c == '>')
            safe += "\\u003e";
        else if (c == '&')
            safe += "\\u0026";
        else
            safe += c;
    return safe;
}

std::string number_json(double value)
{
    if (!std::isfinite(value))
        return "null";
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value);
    return {text, end.ptr};
}

Columns::Columns(std::vector<std::string> names) : names_(std::move(names)), columns_(names_.size()) {}

void Columns::put(std::string_view json)
{
    std::string& column = columns_[values_++ % columns_.size()];
    column += column.empty() ? "" : ",";
    column += json;
    size_ += json.size() + 1;
}

void Columns::add(int64_t value)
{
    put(std::to_string(value));
}

void Columns::add(double value)
{
    put(number_json(value));
}

void Columns::add_null()
{
    put("null");
}

void Columns::add_json(std::string_view json)
{
    put(json);
}

int64_t Columns::place_of(std::string_view text)
{
    const auto known = places_.find(text);
    if (known != places_.end())
        return known->second;
    const auto place = static_cast<int64_t>(places_.size());
    strings_.append(places_.empty() ? "" : ",").append(text_json(text));
    size_ += text.size();
    places_.emplace(text, place);
    return place;
}

void Columns::add_text(std::string_view text)
{
    add(text.empty() ? -1 : place_of(text));
}

void Columns::add_box(int64_t x0, int64_t y0, int64_t x1, int64_t y1)
{
    std::string json = "[";
    for (const int64_t side : {x0, y0, x1, y1})
        json.append(json.size() > 1 ? "," : "").append(std::to_string(side));
    put(json + "]");
}

std::string Columns::json(std::string_view more) const
{
    std::string text = "{";
    for (size_t i = 0; i < names_.size(); ++i)
        text.append(i == 0 ? "\"" : ",\"").append(names_[i]).append("\":[").append(columns_[i]).append("]");
    if (!places_.empty())
        text.append(",\"strings\":[").append(strings_).append("]");
    return text.append(more).append("}");
}

}  // namespace orvlog::inspect
