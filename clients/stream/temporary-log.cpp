#include "clients/stream/temporary-log.h"

#include "clients/stream/malloc-allocator.h"
#include "clients/system/system.h"
#include "orvlog/log/orvlog-merge.h"

#include <cerrno>
#include <cstring>
#include <vector>

namespace orvlog::client_stream
{

namespace
{

namespace fs = std::filesystem;

// As the library names it: the 16 bytes as four words, the last one first.
std::string name_for(const ORVLOG_IdentitySource* identity)
{
    uint8_t number[16] = {};
    identity->object->functions->orvlog_get_session_id(identity->object, number);
    uint32_t words[4];
    std::memcpy(words, number, sizeof words);
    char name[ORVLOG_TEMP_LOG_NAME];
    std::snprintf(name, sizeof name, "orvlog-%08x-%08x-%08x-%08x.tmp", words[3], words[2], words[1], words[0]);
    return name;
}

// The logs that kept images of this session have.
std::vector<fs::path> image_logs(const fs::path& folder, const std::string& temporary_log)
{
    const std::string head = temporary_log.substr(0, temporary_log.size() - std::strlen(".tmp")) + "-async-image-";
    std::vector<fs::path> found;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error))
        if (entry.path().filename().string().starts_with(head))
            found.push_back(entry.path());
    return found;
}

// The library's merge removes what it has taken in as it goes. So it is given links, in a folder of their own.
class Links
{
public:
    Links()
    {
        std::error_code error;
        const fs::path form = fs::temp_directory_path(error) / "orvlog-merge-";
        folder_ = system::make_folder(form);
        if (folder_.empty())
            why_ = form.string() + ": " + std::strerror(errno);
    }
    Links(const Links&) = delete;
    Links& operator=(const Links&) = delete;
    ~Links()
    {
        std::error_code ignored;
        if (!folder_.empty())
            fs::remove_all(folder_, ignored);
    }

    void add(const fs::path& file)
    {
        std::error_code error;
        if (!folder_.empty())
            system::link_file(file, folder_ / file.filename(), error);
        if (error && why_.empty())
            why_ = (folder_ / file.filename()).string() + ": " + error.message();
    }
    const fs::path& folder() const
    {
        return folder_;
    }
    const std::string& why() const
    {
        return why_;
    }

private:
    fs::path folder_;
    std::string why_;
};

// A coded stream hides what its target did.
bool took_all(GIO_Stream* target)
{
    return target->ops->gio_Flush(target->instance) == 0 && target->ops->gio_LastError(target->instance) == GIO_OK;
}

}  // namespace

std::unique_ptr<TemporaryLog> TemporaryLog::open(const ORVLOG_IdentitySource* identity)
{
    const std::string name = name_for(identity);
    std::unique_ptr<FileStream> file = FileStream::open(name, "w");
    std::error_code error;
    const fs::path folder = fs::current_path(error);
    if (file == nullptr || error)
    {
        errno = error ? error.value() : errno;
        return nullptr;
    }
    return std::unique_ptr<TemporaryLog>(new TemporaryLog(std::move(file), name, folder));
}

TemporaryLog::TemporaryLog(std::unique_ptr<FileStream> file, std::string name, fs::path folder)
    : file_(std::move(file)), name_(std::move(name)), folder_(std::move(folder))
{
}

GIO_Stream* TemporaryLog::stream()
{
    return file_->stream();
}

std::string TemporaryLog::merge_command(const fs::path& from, const std::string& log) const
{
    const fs::path seen = (folder_ / name_).lexically_relative(from);
    const bool below = !seen.empty() && *seen.begin() != "..";
    return "orvlog merge " + system::shell_word((below ? seen : folder_ / name_).string()) + " -o " +
           system::shell_word(log);
}

bool TemporaryLog::merge_into(GIO_Stream* target, bool compressed, std::string* why)
{
    why->clear();
    if (!file_->close())
    {
        *why = name_ + ": " + std::strerror(file_->first_error());
        return false;
    }
    std::vector<fs::path> parts = image_logs(folder_, name_);
    parts.push_back(folder_ / name_);
    Links links;
    for (const fs::path& part : parts)
        links.add(part);
    *why = links.why();
    if (!why->empty())
        return false;
    MallocAllocator memory;
    const PresentFolder there(links.folder());
    const bool merged =
        !there.error() && ORVLOG_MergeLogs(memory.allocator(), name_.c_str(), target, compressed ? 1 : 0, 1) != 0;
    if (!took_all(target))
        return false;
    if (!merged)
    {
        *why = name_ + ": can't be merged";
        return false;
    }
    std::error_code ignored;
    for (const fs::path& part : parts)
        fs::remove(part, ignored);
    return true;
}

PresentFolder::PresentFolder(const fs::path& folder)
{
    back_ = fs::current_path(error_);
    if (!error_ && !folder.empty())
        fs::current_path(folder, error_);
}

PresentFolder::~PresentFolder()
{
    std::error_code ignored;
    if (!back_.empty())
        fs::current_path(back_, ignored);
}

}  // namespace orvlog::client_stream
