#include "inspect/export/table-folder.h"

#include "inspect/export/durable-file.h"

#include <stdexcept>

namespace orvlog::inspect
{

namespace
{

namespace fs = std::filesystem;

constexpr const char* kLedger = "ledger.sqlite";
constexpr std::array kCompressions = {"none", "gzip", "zstd"};
constexpr std::chrono::seconds kLongestBatch{1};
constexpr int64_t kLedgerMark = 0x4F52564D;

// A table's file that no ledger tells of is somebody else's.
void refuse_foreign_files(const fs::path& folder)
{
    for (const TableForm& form : table_forms())
        for (const Compression one : {Compression::none, Compression::gzip, Compression::zstd})
        {
            const fs::path path = folder / (std::string(form.name) + std::string(ending_of(one)));
            if (fs::exists(fs::symlink_status(path)))
                throw std::runtime_error(path.string() + ": is not of an export; nothing was written");
        }
}

}  // namespace

TableFolder::TableFolder(const std::string& folder, std::optional<Compression> compression)
    : folder_(folder.empty() ? "." : folder)
{
    std::error_code error;
    fs::create_directories(folder_, error);
    if (!fs::is_directory(folder_))
        throw std::runtime_error(folder + ": " + (error ? error.message() : "is no folder"));
    ledger_ = std::make_unique<Database>((folder_ / kLedger).string(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    open_ledger(compression);
}

TableFolder::~TableFolder() = default;

void TableFolder::open_ledger(std::optional<Compression> compression)
{
    const std::string name = (folder_ / kLedger).string();
    if (!ledger_->is_of(kLedgerMark))
    {
        refuse_foreign_files(folder_);
        Transaction transaction(*ledger_);
        ledger_->run("CREATE TABLE IF NOT EXISTS exported (job TEXT PRIMARY KEY) WITHOUT ROWID;"
                     "CREATE TABLE IF NOT EXISTS files (place INTEGER PRIMARY KEY, size INTEGER NOT NULL);"
                     "CREATE TABLE IF NOT EXISTS form (compression TEXT NOT NULL);");
        const auto chosen = static_cast<size_t>(compression.value_or(Compression::none));
        if (ledger_->number("SELECT count(*) FROM form") == 0)
            ledger_->run("INSERT INTO form VALUES ('" + std::string(kCompressions[chosen]) + "')");
        ledger_->run("PRAGMA application_id = " + std::to_string(kLedgerMark) +
                     "; PRAGMA user_version = " + std::to_string(kTablesVersion));
        transaction.commit();
    }
    if (ledger_->number("PRAGMA user_version") != kTablesVersion)
        throw std::runtime_error(name + ": of tables of another version; nothing was written");
    Statement form(*ledger_, "SELECT compression FROM form");
    const std::string known = form.step() ? form.text(0) : "";
    for (size_t i = 0; i < kCompressions.size(); ++i)
        if (known == kCompressions[i])
            compression_ = static_cast<Compression>(i);
    if (compression && *compression != compression_)
        throw std::runtime_error(folder_.string() + ": its files have the compression " + known +
                                 "; nothing was written");
}

fs::path TableFolder::path_of(size_t table) const
{
    return folder_ / (std::string(table_forms()[table].name) + std::string(ending_of(compression_)));
}

std::unique_ptr<RowWriter> TableFolder::writer(StagedRows& staged) const
{
    return std::make_unique<JsonRows>(staged);
}

void TableFolder::prepare(StagedRows& staged) const
{
    for (size_t i = 0; i < kTables; ++i)
        if (staged.counts[i] > 0)
            compress(staged.tables[i], compression_);
}

bool TableFolder::has(const std::string& key)
{
    Statement statement(*ledger_, "SELECT 1 FROM exported WHERE job = ?");
    return statement.bind(1, std::string_view(key)).step();
}

// What a process that was ended left behind the end goes.
void TableFolder::mend(size_t table, uint64_t size) const
{
    const fs::path path = path_of(table);
    const uint64_t there = fs::exists(path) ? fs::file_size(path) : 0;
    if (there < size)
        throw std::runtime_error(path.string() + ": is shorter than the ledger says; nothing was written");
    if (there > size)
        fs::resize_file(path, size);
}

void TableFolder::begin()
{
    if (open_ != nullptr)
        return;
    open_ = std::make_unique<Transaction>(*ledger_);
    begun_ = std::chrono::steady_clock::now();
    sizes_ = {};
    changed_ = {};
    Statement files(*ledger_, "SELECT place, size FROM files");
    while (files.step())
        if (const auto place = static_cast<size_t>(files.number(0)); place < kTables)
            sizes_[place] = static_cast<uint64_t>(files.number(1));
    for (size_t i = 0; i < kTables; ++i)
        mend(i, sizes_[i]);
}

void TableFolder::append(size_t table, Spill& rows)
{
    DurableFile file(path_of(table));
    rows.read([&file](std::string_view piece) { file.append(piece); });
    file.close();
    sizes_[table] += rows.size();
    changed_[table] = true;
}

bool TableFolder::add(const std::string& key, StagedRows& staged)
{
    begin();
    if (has(key))
        return false;
    const std::array<uint64_t, kTables> before = sizes_;
    try
    {
        // The job itself, which is the first table, comes last: a job that has a row there has all others.
        for (size_t i = kTables; i-- > 0;)
            // A table without a row is there all the same, so that who reads the folder finds it.
            if (!table_forms()[i].of_content || staged.counts[i] > 0)
                append(i, staged.tables[i]);
        Statement insert(*ledger_, "INSERT INTO exported VALUES (?)");
        insert.bind(1, std::string_view(key)).step();
    }
    catch (...)
    {
        sizes_ = before;
        for (size_t i = 0; i < kTables; ++i)
            mend(i, sizes_[i]);
        throw;
    }
    if (std::chrono::steady_clock::now() - begun_ > kLongestBatch)
        flush();
    return true;
}

void TableFolder::flush()
{
    if (open_ == nullptr)
        return;
    for (size_t i = 0; i < kTables; ++i)
        if (changed_[i])
        {
            DurableFile(path_of(i)).sync();
            Statement update(*ledger_, "INSERT OR REPLACE INTO files VALUES (?, ?)");
            update.bind(1, static_cast<int64_t>(i)).bind(2, static_cast<int64_t>(sizes_[i])).step();
        }
    open_->commit();
    open_.reset();
}

}  // namespace orvlog::inspect
