#include "inspect/export/table-database.h"

#include <filesystem>
#include <stdexcept>

namespace orvlog::inspect
{

namespace
{

std::string column_sql(const Column& column)
{
    const char* type = column.type == ColumnType::text   ? " TEXT"
                       : column.type == ColumnType::real ? " REAL"
                                                         : " INTEGER";
    std::string sql = "\"";
    return sql.append(column.name).append("\"").append(type).append(column.may_be_null ? "" : " NOT NULL");
}

std::string table_sql(const TableForm& form)
{
    std::string sql = "CREATE TABLE \"";
    sql.append(form.name).append("\" (");
    for (const Column& column : form.columns)
        sql.append(column_sql(column)).append(", ");
    sql.append("PRIMARY KEY (");
    for (size_t i = 0; i < form.key; ++i)
        sql.append(i > 0 ? ", \"" : "\"").append(form.columns[i].name).append("\"");
    return sql.append(")) WITHOUT ROWID;\n");
}

std::string insert_sql(const TableForm& form)
{
    std::string sql = "INSERT INTO \"";
    sql.append(form.name).append("\" VALUES (?");
    for (size_t i = 1; i < form.columns.size(); ++i)
        sql.append(", ?");
    return sql.append(")");
}

void bind(Statement& statement, int place, const PackedValue& value)
{
    switch (value.kind)
    {
    case PackedValue::Kind::null:
        statement.bind_null(place);
        break;
    case PackedValue::Kind::integer:
        statement.bind(place, value.integer);
        break;
    case PackedValue::Kind::real:
        statement.bind(place, value.real);
        break;
    case PackedValue::Kind::text:
        statement.bind(place, value.text);
        break;
    }
}

}  // namespace

TableDatabase::TableDatabase(const std::string& path)
    : path_(path), database_(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE)
{
    // What has been begun is finished or taken back before anything is looked at; readers aren't kept out meanwhile.
    const bool made = database_.is_of(kDatabaseMark);
    database_.run("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL");
    if (!made)
        make_tables();
    const int64_t version = database_.number("PRAGMA user_version");
    if (version != kTablesVersion)
        throw std::runtime_error(path_ + ": has tables of version " + std::to_string(version) + ", not " +
                                 std::to_string(kTablesVersion) + "; nothing was written");
}

TableDatabase::~TableDatabase()
{
    // One file that can be read from anywhere, unless somebody reads it just now.
    sqlite3_busy_timeout(database_.handle(), 0);
    sqlite3_exec(database_.handle(), "PRAGMA journal_mode = DELETE", nullptr, nullptr, nullptr);
}

void TableDatabase::make_tables()
{
    Transaction transaction(database_);
    // Another program may have been faster.
    if (database_.number("PRAGMA application_id") == kDatabaseMark)
        return;
    std::string sql = "CREATE TABLE \"schema\" (\"table\" TEXT NOT NULL, \"place\" INTEGER NOT NULL, "
                      "\"column\" TEXT NOT NULL, \"type\" TEXT NOT NULL, \"meaning\" TEXT NOT NULL, "
                      "PRIMARY KEY (\"table\", \"place\")) WITHOUT ROWID;\n";
    for (const TableForm& form : table_forms())
        sql += table_sql(form);
    database_.run(sql);
    Statement insert(database_, "INSERT INTO \"schema\" VALUES (?, ?, ?, ?, ?)");
    for (const TableForm& form : table_forms())
    {
        int64_t place = 0;
        for (const Column& column : form.columns)
        {
            insert.bind(1, form.name).bind(2, ++place).bind(3, column.name);
            insert.bind(4, type_name(column.type)).bind(5, column.meaning);
            insert.step();
            insert.reset();
        }
    }
    database_.run("PRAGMA application_id = " + std::to_string(kDatabaseMark) +
                  "; PRAGMA user_version = " + std::to_string(kTablesVersion));
    transaction.commit();
}

std::unique_ptr<RowWriter> TableDatabase::writer(StagedRows& staged) const
{
    return std::make_unique<PackedRows>(staged);
}

bool TableDatabase::has(const std::string& key)
{
    Statement statement(database_, "SELECT 1 FROM jobs WHERE job = ?");
    return statement.bind(1, std::string_view(key)).step();
}

void TableDatabase::insert(Table table, StagedRows& staged)
{
    Statement statement(database_, insert_sql(form_of(table)));
    read_packed(staged, table,
                [&statement](std::span<const PackedValue> values)
                {
                    int place = 0;
                    for (const PackedValue& value : values)
                        bind(statement, ++place, value);
                    statement.step();
                    statement.reset();
                });
}

bool TableDatabase::add(const std::string& key, StagedRows& staged)
{
    Transaction transaction(database_);
    if (has(key))
        return false;
    for (size_t i = 0; i < kTables; ++i)
        if (staged.counts[i] > 0)
            insert(static_cast<Table>(i), staged);
    transaction.commit();
    return true;
}

}  // namespace orvlog::inspect
