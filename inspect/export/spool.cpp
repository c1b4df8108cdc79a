#include "inspect/export/spool.h"

#include "reader/text/log-files.h"

#include <algorithm>
#include <array>
#include <system_error>

namespace orvlog::inspect
{

namespace
{

namespace fs = std::filesystem;

// Names of files that are on their way to being something else, or belong to a log.
bool is_log_name(const std::string& name)
{
    constexpr std::array<std::string_view, 4> kOthers = {".part", ".tmp", ".journal", ".bin"};
    return !name.starts_with('.') &&
           std::ranges::none_of(kOthers, [&name](std::string_view ending) { return name.ends_with(ending); });
}

double seconds_between(fs::file_time_type then, fs::file_time_type now)
{
    return std::chrono::duration<double>(now - then).count();
}

}  // namespace

Spool::Spool(const fs::path& spool, TableFolder& folder, const SpoolOptions& options)
    : spool_(fs::canonical(spool)), folder_(folder), options_(options)
{
    if (!fs::is_directory(spool_))
        throw fs::filesystem_error("", spool, std::make_error_code(std::errc::not_a_directory));
    folder_.ledger().run("CREATE TABLE IF NOT EXISTS seen (name BLOB PRIMARY KEY, size INTEGER NOT NULL, "
                         "changed INTEGER NOT NULL) WITHOUT ROWID");
}

bool Spool::is_noted(const SpoolLog& log) const
{
    Statement statement(folder_.ledger(), "SELECT 1 FROM seen WHERE name = ? AND size = ? AND changed = ?");
    statement.bind(1, std::string_view(log.name)).bind(2, static_cast<int64_t>(log.size)).bind(3, log.changed);
    return statement.step();
}

// What has gone meanwhile is left out.
void Spool::add(const fs::directory_entry& entry, fs::file_time_type now, SpoolView& view) const
{
    std::error_code error;
    SpoolLog log;
    log.name = entry.path().filename().string();
    if (!is_log_name(log.name) || fs::symlink_status(entry.path(), error).type() != fs::file_type::regular)
        return;
    log.size = fs::file_size(entry.path(), error);
    const fs::file_time_type changed = error ? now : fs::last_write_time(entry.path(), error);
    if (error)
        return;
    log.changed = changed.time_since_epoch().count();
    if (is_noted(log))
        return;
    // A file of tomorrow comes from another clock.
    const double rest = seconds_between(changed, now);
    if (rest >= 0 && rest < options_.rest_seconds)
    {
        ++view.moving;
        return;
    }
    log.may_be_cut = rest >= options_.settle_seconds;
    if (fs::symlink_status(spool_ / (log.name + ".journal"), error).type() == fs::file_type::regular)
    {
        if (log.may_be_cut)
            view.journals.push_back(log.name);
        else
            ++view.moving;
        return;
    }
    view.logs.push_back(std::move(log));
}

SpoolView Spool::look() const
{
    SpoolView view;
    const fs::file_time_type now = fs::file_time_type::clock::now();
    for (const fs::directory_entry& entry : fs::directory_iterator(spool_))
        add(entry, now, view);
    std::ranges::sort(view.logs, {}, &SpoolLog::name);
    std::ranges::sort(view.journals);
    return view;
}

ExportInput Spool::input_of(const SpoolLog& log) const
{
    const fs::path path = spool_ / log.name;
    const auto open = [path](std::string& why)
    {
        std::error_code error;
        std::unique_ptr<std::istream> stream = orvlog::reader::open_ordinary_file(path, error);
        why = error ? error.message() : "is no ordinary file";
        return stream;
    };
    return {{log.name, reader::LogFiles(path.string())}, open, log.may_be_cut};
}

void Spool::note(const std::vector<SpoolLog>& logs)
{
    if (logs.empty())
        return;
    folder_.begin();
    Statement insert(folder_.ledger(), "INSERT OR REPLACE INTO seen VALUES (?, ?, ?)");
    for (const SpoolLog& log : logs)
    {
        insert.bind(1, std::string_view(log.name)).bind(2, static_cast<int64_t>(log.size)).bind(3, log.changed);
        insert.step();
        insert.reset();
    }
    folder_.flush();
}

void Spool::forget_gone()
{
    std::vector<std::string> gone;
    Statement seen(folder_.ledger(), "SELECT name FROM seen");
    std::error_code error;
    while (seen.step())
        if (!fs::exists(fs::symlink_status(spool_ / seen.text(0), error)))
            gone.push_back(seen.text(0));
    seen.reset();
    if (gone.empty())
        return;
    folder_.begin();
    Statement forget(folder_.ledger(), "DELETE FROM seen WHERE name = ?");
    for (const std::string& name : gone)
    {
        forget.bind(1, std::string_view(name)).step();
        forget.reset();
    }
    folder_.flush();
}

}  // namespace orvlog::inspect
