// What stands where there is no SQLite.

#include "tools/shared/left-out.h"

namespace orvlog::tool
{

Run declare_export(CLI::App& app)
{
    return declare_left_out(app, "SQLite", "export");
}

Run declare_query(CLI::App& app)
{
    return declare_left_out(app, "SQLite", "query");
}

Run declare_watch(CLI::App& app)
{
    return declare_left_out(app, "SQLite", "watch");
}

}  // namespace orvlog::tool
