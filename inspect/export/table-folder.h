// The tables as files of a folder, TABLE.jsonl each, with a ledger beside them that tells which logs they hold and how
// long they are. What stands in a file beyond that was never finished, and goes when the folder is next written to.

#pragma once

#include "inspect/export/row-compression.h"
#include "inspect/export/sqlite.h"
#include "inspect/export/table-store.h"

#include <array>
#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace orvlog::inspect
{

class TableFolder : public TableStore
{
public:
    // Makes the folder if there is none. Throws std::runtime_error where something stands in the way that isn't of an
    // export, or of another form. Without a compression the folder's own is taken, and none for a new one.
    TableFolder(const std::string& folder, std::optional<Compression> compression);
    ~TableFolder() override;

    std::unique_ptr<RowWriter> writer(StagedRows& staged) const override;
    void prepare(StagedRows& staged) const override;
    bool has(const std::string& key) override;
    bool add(const std::string& key, StagedRows& staged) override;
    void flush() override;

    // The database of the ledger, in which others may have tables of their own.
    const Database& ledger() const
    {
        return *ledger_;
    }
    // Begins what flush() makes sure of; add() does so by itself.
    void begin();

private:
    void open_ledger(std::optional<Compression> compression);
    std::filesystem::path path_of(size_t table) const;
    void mend(size_t table, uint64_t size) const;
    void append(size_t table, Spill& rows);

    std::filesystem::path folder_;
    Compression compression_ = Compression::none;
    std::unique_ptr<Database> ledger_;
    std::unique_ptr<Transaction> open_;
    std::array<uint64_t, kTables> sizes_{};
    std::array<bool, kTables> changed_{};
    std::chrono::steady_clock::time_point begun_;
};

}  // namespace orvlog::inspect
