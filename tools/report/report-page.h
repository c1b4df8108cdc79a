// The sources of the page, as they were when the program was built.

#pragma once

#include <string_view>

namespace orvlog::tool
{

extern const std::string_view kReportPage;
extern const std::string_view kReportStyle;
extern const std::string_view kReportScript;

}  // namespace orvlog::tool
