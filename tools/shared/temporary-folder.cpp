#include "tools/shared/temporary-folder.h"

#include "clients/system/signals.h"
#include "clients/system/system.h"

#include <cerrno>
#include <fstream>

namespace orvlog::tool
{

TemporaryFolder::TemporaryFolder()
{
    const system::SignalsHeld held;
    system::catch_signals();
    const std::filesystem::path base = system::temporary_base();
    const std::string made = system::make_folder(base / "orvlog-");
    if (made.empty())
        throw std::filesystem::filesystem_error("no temporary folder", base,
                                                std::error_code(errno, std::generic_category()));
    folder_ = made;
    system::note_folder(made);
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
    const system::SignalsHeld held;
    system::forget_folder(folder_.string());
}

bool TemporaryFolder::keep(std::istream& bytes, const std::string& name) const
{
    errno = 0;
    std::ofstream file(path(name), std::ios::binary);
    if (bytes.peek() != std::istream::traits_type::eof())
        file << bytes.rdbuf();
    file.close();
    return file.good() && !bytes.bad();
}

}  // namespace orvlog::tool
