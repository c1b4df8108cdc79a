#include "tools/shared/files-from.h"

namespace orvlog::tool
{

void add_files_from(CLI::App& app, std::vector<std::string>& folders)
{
    app.add_option("--files-from", folders,
                   "look for the files that the log names in DIR, too, before the log's folder; may be given again")
        ->type_name("DIR")
        ->expected(1)
        ->take_all();
}

}  // namespace orvlog::tool
