// What stands where there is no poppler.

#include "tools/shared/left-out.h"

namespace orvlog::tool
{

Run declare_record(CLI::App& app)
{
    return declare_left_out(app, "poppler", "record");
}

}  // namespace orvlog::tool
