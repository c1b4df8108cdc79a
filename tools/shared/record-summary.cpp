#include "tools/shared/record-summary.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>

namespace orvlog::tool
{

namespace
{

using nlohmann::json;

template <typename T> std::optional<T> number_of(const json& object, const char* name)
{
    const auto found = object.find(name);
    if (found == object.end() || !found->is_number())
        return std::nullopt;
    return found->get<T>();
}

void read_calls(const json& object, RecordSummary& summary)
{
    const auto calls = object.find("calls");
    if (calls == object.end() || !calls->is_object())
        return;
    for (const auto& [name, count] : calls->items())
        if (count.is_number_unsigned())
            summary.calls.emplace_back(name, count.get<uint64_t>());
}

template <typename... Values> void append(std::string& text, const char* format, Values... values)
{
    std::array<char, 300> line{};
    std::snprintf(line.data(), line.size(), format, values...);
    text += line.data();
}

void append_time(std::string& text, const char* what, std::optional<double> seconds)
{
    if (seconds)
        append(text, "%-32s %10.3f s\n", what, *seconds);
}

void append_times(std::string& text, const RecordSummary& summary)
{
    append_time(text, "time", summary.seconds);
    append_time(text, "processor time", summary.processor_seconds);
    append_time(text, "time without the logger", summary.seconds_without_logger);
    append_time(text, "processor time without it", summary.processor_seconds_without_logger);
}

void append_check(std::string& text, const RecordSummary& summary)
{
    if (summary.pages_compared && summary.pixels_different)
        append(text, "%-32s %10llu on %llu pages\n", "pixels that differ without it",
               static_cast<unsigned long long>(*summary.pixels_different),
               static_cast<unsigned long long>(*summary.pages_compared));
}

}  // namespace

std::optional<RecordSummary> read_record_summary(const std::string& file)
{
    std::ifstream input(file, std::ios::binary);
    const json object = json::parse(input, nullptr, false);
    if (!object.is_object())
        return std::nullopt;
    RecordSummary summary;
    read_calls(object, summary);
    summary.pages = number_of<uint64_t>(object, "pages");
    summary.page_images = number_of<uint64_t>(object, "page_images");
    summary.log_bytes = number_of<uint64_t>(object, "log_bytes");
    summary.seconds = number_of<double>(object, "seconds");
    summary.processor_seconds = number_of<double>(object, "processor_seconds");
    summary.processor_seconds_without_logger = number_of<double>(object, "processor_seconds_without_logger");
    summary.seconds_without_logger = number_of<double>(object, "seconds_without_logger");
    if (const auto check = object.find("check"); check != object.end() && check->is_object())
    {
        summary.pages_compared = number_of<uint64_t>(*check, "pages");
        summary.pixels_different = number_of<uint64_t>(*check, "pixels_different");
    }
    if (const auto log = object.find("log"); log != object.end() && log->is_string())
        summary.log = log->get<std::string>();
    return summary;
}

std::string format_record_summary(const RecordSummary& summary)
{
    std::string text;
    auto calls = summary.calls;
    std::stable_sort(calls.begin(), calls.end(), [](const auto& a, const auto& b) { return a.second > b.second; });
    uint64_t all = 0;
    for (const auto& [name, count] : calls)
    {
        append(text, "%-32.200s %10llu\n", name.c_str(), static_cast<unsigned long long>(count));
        all += count;
    }
    append(text, "%-32s %10llu\n", "calls in all", static_cast<unsigned long long>(all));
    if (summary.pages)
        append(text, "%-32s %10llu\n", "pages", static_cast<unsigned long long>(*summary.pages));
    if (summary.log_bytes)
        append(text, "%-32s %10llu bytes\n", "log", static_cast<unsigned long long>(*summary.log_bytes));
    append_times(text, summary);
    append_check(text, summary);
    if (!summary.log.empty())
        text += "log written to " + summary.log + "\n";
    return text;
}

}  // namespace orvlog::tool
