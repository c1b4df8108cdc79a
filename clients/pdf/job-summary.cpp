// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/job.h"

#include <nlohmann/json.hpp>

#include <fstream>

namespace orvlog::pdf_client
{

bool write_summary(const JobSummary& summary, const std::string& file_name)
{
    nlohmann::ordered_json object;
    nlohmann::ordered_json calls = nlohmann::ordered_json::object();
    for (size_t i = 0; i < summary.calls.made.size(); ++i)
        if (summary.calls.made[i] > 0)
            calls[name_of(static_cast<Call>(i))] = summary.calls.made[i];
    object["calls"] = calls;
    object["calls_refused"] = summary.calls.refused;
    object["text_end_points"] = {{"count", summary.calls.end_points}, {"worst_inches", summary.calls.worst_end_point}};
    object["pages"] = summary.pages;
    if (summary.page_images > 0)
        object["page_images"] = summary.page_images;
    if (!summary.log.empty())
        object["log"] = summary.log;
    if (summary.log_bytes >= 0)
        object["log_bytes"] = summary.log_bytes;
    if (summary.time)
    {
        object["seconds"] = summary.time->seconds;
        object["processor_seconds"] = summary.time->processor_seconds;
    }
    if (summary.time_without_logger)
    {
        object["seconds_without_logger"] = summary.time_without_logger->seconds;
        object["processor_seconds_without_logger"] = summary.time_without_logger->processor_seconds;
    }
    object["tickets"] = {{"retained", summary.tickets_retained}, {"released", summary.tickets_released}};
    object["messages"] = summary.messages;
    if (summary.check)
    {
        object["check"] = {{"same", summary.check->same},
                           {"pages", summary.check->pages_compared},
                           {"pixels_different", summary.check->pixels_different}};
    }
    std::ofstream output(file_name, std::ios::binary);
    output << object.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
    output.close();
    return output.good();
}

}  // namespace orvlog::pdf_client
