// The file of a report: the page, and the data in it.

#pragma once

#include "inspect/report/blocks.h"
#include "tools/shared/output.h"

#include <string>
#include <string_view>

namespace orvlog::tool
{

class ReportFrame
{
public:
    explicit ReportFrame(Output& output);

    // Everything up to the data. `title` is text.
    void begin(std::string_view title);
    orvlog::inspect::Blocks& blocks()
    {
        return blocks_;
    }
    // The index, and everything behind the data. False if something could not be written.
    bool end(std::string_view index);

private:
    void put(std::string_view text);

    Output& output_;
    orvlog::inspect::Blocks blocks_;
    std::string_view rest_;  // of the page, as it came
    bool good_ = true;
};

// Text as it stands in markup.
std::string markup_text(std::string_view text);

}  // namespace orvlog::tool
