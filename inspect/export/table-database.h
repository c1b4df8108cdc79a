// The tables in a database of SQLite.

#pragma once

#include "inspect/export/sqlite.h"
#include "inspect/export/table-store.h"

#include <string>

namespace orvlog::inspect
{

// "ORVL": the application_id of such a database.
constexpr int64_t kDatabaseMark = 0x4F52564C;

class TableDatabase : public TableStore
{
public:
    // Makes the database if there is none. Throws std::runtime_error for one that holds something else.
    explicit TableDatabase(const std::string& path);
    ~TableDatabase() override;

    std::unique_ptr<RowWriter> writer(StagedRows& staged) const override;
    bool has(const std::string& key) override;
    bool add(const std::string& key, StagedRows& staged) override;

private:
    void make_tables();
    void insert(Table table, StagedRows& staged);

    std::string path_;
    Database database_;
};

}  // namespace orvlog::inspect
