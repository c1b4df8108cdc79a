#include "tools/shared/output.h"

#include "clients/command-line/progress-bar.h"
#include "clients/system/signals.h"
#include "clients/system/system.h"
#include "clients/system/unfinished.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace orvlog::tool
{

namespace
{

namespace fs = std::filesystem;

// Where a link leads; a name that is none stays as it is.
std::string resolved(const std::string& name)
{
    std::error_code error;
    const fs::path path = fs::is_symlink(name, error) ? fs::canonical(name, error) : fs::path(name);
    return error ? name : path.string();
}

bool has_part(const std::string& name)
{
    std::error_code error;
    const fs::file_status status = fs::status(name, error);
    return !fs::exists(status) || fs::is_regular_file(status);
}

// Makes a file beside `name` that wasn't there, and tells its name. Null with errno set on failure. A signal finds no
// file that isn't noted.
std::FILE* open_part(const std::string& name, std::string* part)
{
    const system::SignalsHeld held;
    std::FILE* file = nullptr;
    for (int i = 1; file == nullptr && i <= 100; ++i)
    {
        *part = name + (i == 1 ? ".part" : ".part" + std::to_string(i));
        file = system::create_file(*part);
        if (file == nullptr && errno != EEXIST)
            break;
    }
    const int reason = errno;
    if (file != nullptr)
        system::set_unfinished(*part);
    errno = reason;
    return file;
}

std::FILE* open_output(const std::string& name, std::string* part)
{
    if (name == "-")
        return stdout;
    return has_part(name) ? open_part(name, part) : std::fopen(name.c_str(), "wb");
}

}  // namespace

Output::Output(const std::string& name) : name_(resolved(name)), file_(open_output(name_, &part_))
{
    reason_ = file_ == nullptr ? errno : 0;
    ops_.gio_Write = [](const void* data, uint64_t item_size, uint64_t item_count, void* c) -> uint64_t
    { return static_cast<Output*>(c)->write(data, item_size * item_count) ? item_count : 0; };
    ops_.gio_Flush = [](void*) -> int32_t { return 0; };
    handle_ = {this, GIO_KIND_FORWARD_ONLY, &ops_};
    errno = reason_;
}

Output::~Output()
{
    if (file_ == nullptr || file_ == stdout)
        return;
    std::fclose(file_);
    discard();
}

void Output::discard()
{
    if (!part_.empty())
        std::remove(part_.c_str());
    system::set_unfinished("");
}

bool Output::write(const void* data, size_t size)
{
    if (file_ == stdout)
        command_line::ProgressBar::make_way_for_output();
    if (failed_ || std::fwrite(data, 1, size, file_) == size)
        return !failed_;
    failed_ = true;
    reason_ = errno;
    return false;
}

bool Output::finish()
{
    errno = 0;
    const bool flushed = file_ != nullptr && std::fflush(file_) == 0;
    if (!flushed || failed_)
    {
        errno = failed_ || file_ == nullptr ? reason_ : errno;
        return false;
    }
    if (file_ == stdout)
        return true;
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    // A signal takes all away or nothing.
    const system::SignalsHeld held;
    if (closed && (part_.empty() || system::replace_file(part_, name_)))
    {
        system::set_unfinished("");
        system::forget_files_beside();
        return true;
    }
    const int reason = errno;
    discard();
    errno = reason;
    return false;
}

}  // namespace orvlog::tool
