#include "tools/shared/temporary-folder.h"

#include "tools/shared/signals.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>

namespace orvlog::tool
{

TemporaryFolder::TemporaryFolder()
{
    const SignalsHeld held;
    catch_signals();
    // What TMPDIR names, whether it is there or not: a failure is to be told with its name.
    const char* told = std::getenv("TMPDIR");
    const std::filesystem::path base = told != nullptr && *told != '\0' ? told : "/tmp";
    std::string form = (base / "orvlog-XXXXXX").string();
    if (mkdtemp(form.data()) == nullptr)
        throw std::filesystem::filesystem_error("no temporary folder", base,
                                                std::error_code(errno, std::generic_category()));
    folder_ = form;
    note_folder(form);
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
    const SignalsHeld held;
    forget_folder(folder_.string());
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
