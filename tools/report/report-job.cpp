#include "tools/report/report-job.h"

#include "inspect/report/columns.h"
#include "tools/report/report-compare.h"
#include "tools/report/report-frame.h"
#include "tools/shared/command.h"
#include "tools/shared/output.h"
#include "tools/shared/touch-text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>

namespace orvlog::tool
{

namespace
{

using orvlog::inspect::text_json;

std::string reasons_json()
{
    using cairo_renderer::Unchanged;
    std::string json = "[";
    for (uint8_t reason = 0; reason <= static_cast<uint8_t>(Unchanged::faint); ++reason)
        json.append(text_json(reason_text(static_cast<Unchanged>(reason)))).append(",");
    json.append(text_json("outside of the page or its clips")).append(",");
    return json.append(text_json("not looked for")).append("]");
}

class ReportJob
{
public:
    ReportJob(const std::vector<std::string>& logs, const std::string& output, const ReportSettings& settings)
        : output_(output), settings_(settings)
    {
        for (const std::string& log : logs)
            logs_.push_back(std::make_unique<ReportedLog>(log, settings_));
        if (logs_.size() == 2)
            compare_ = std::make_unique<ReportCompare>(*logs_[0], *logs_[1], settings_);
    }

    int run()
    {
        for (const auto& log : logs_)
            if (!log->open())
                return fail(log->why());
        if (is_a_log())
            return fail(output_ + ": is the log itself");
        Output output(output_);
        if (!output.open())
            return fail_to_write(errno);
        ReportFrame frame(output);
        frame.begin(title());
        for (const auto& log : logs_)
            if (!log->add(frame.blocks()))
                return fail(log->why());
        if (compare_ != nullptr && !compare_->add(frame.blocks()))
            return fail(compare_->why());
        const bool good = frame.end(index()) && output.finish();
        if (!good)
            return fail_to_write(output.reason() != 0 ? output.reason() : errno);
        return say_lacks();
    }

private:
    bool is_a_log() const
    {
        std::error_code none;
        return std::ranges::any_of(logs_, [&](const auto& log)
                                   { return std::filesystem::equivalent(log->name(), output_, none); });
    }

    std::string title() const
    {
        std::string title = logs_[0]->title();
        if (logs_.size() == 2)
            title += " and " + logs_[1]->title();
        return title + " - report";
    }

    int fail_to_write(int reason) const
    {
        const std::string name = output_ == "-" ? "standard output" : output_;
        return fail(name + ": " + std::strerror(reason != 0 ? reason : EIO));
    }

    std::string index() const
    {
        std::string json = "{\"format\":1,\"program\":\"orvlog\",\"version\":";
        json.append(text_json(ORVLOG_VERSION)).append(",\n\"logs\":[");
        for (const auto& log : logs_)
            json.append(log == logs_[0] ? "" : ",\n").append(log->json());
        json.append("],\n\"compare\":").append(compare_ != nullptr ? compare_->json() : "null");
        return json.append(",\n\"reasons\":").append(reasons_json()).append("}");
    }

    int say_lacks() const
    {
        int status = EXIT_DONE;
        for (const auto& log : logs_)
            for (const std::string& line : log->lacks())
                status = fail(log->name() + ": " + line);
        return status;
    }

    std::string output_;
    ReportSettings settings_;
    std::vector<std::unique_ptr<ReportedLog>> logs_;
    std::unique_ptr<ReportCompare> compare_;
};

}  // namespace

int make_report(const std::vector<std::string>& logs, const std::string& output, const ReportSettings& settings)
{
    return ReportJob(logs, output, settings).run();
}

}  // namespace orvlog::tool
