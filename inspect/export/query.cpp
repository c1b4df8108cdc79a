#include "inspect/export/query.h"

#include "inspect/export/schema.h"
#include "inspect/export/table-database.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <optional>

namespace orvlog::inspect
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr int kStepsBetweenLooks = 10000;
constexpr int64_t kMostMemory = int64_t{512} << 20;
constexpr int kLongestValue = 64 << 20;

struct Limit
{
    std::optional<Clock::time_point> end;
    bool over = false;
};

int authorise(void*, int action, const char*, const char* second, const char*, const char*)
{
    if (action == SQLITE_FUNCTION)
        return second != nullptr && std::string_view(second) == "load_extension" ? SQLITE_DENY : SQLITE_OK;
    const bool reads = action == SQLITE_SELECT || action == SQLITE_READ || action == SQLITE_RECURSIVE;
    return reads ? SQLITE_OK : SQLITE_DENY;
}

int look_at_clock(void* context)
{
    auto* limit = static_cast<Limit*>(context);
    limit->over = limit->end && Clock::now() > *limit->end;
    return limit->over ? 1 : 0;
}

QueryValue value_of(sqlite3_stmt* statement, int column)
{
    QueryValue value;
    switch (sqlite3_column_type(statement, column))
    {
    case SQLITE_INTEGER:
        value.kind = QueryValue::Kind::integer;
        value.integer = sqlite3_column_int64(statement, column);
        break;
    case SQLITE_FLOAT:
        value.kind = QueryValue::Kind::real;
        value.real = sqlite3_column_double(statement, column);
        break;
    case SQLITE_TEXT:
    case SQLITE_BLOB:
    {
        const bool text = sqlite3_column_type(statement, column) == SQLITE_TEXT;
        value.kind = text ? QueryValue::Kind::text : QueryValue::Kind::bytes;
        const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, column));
        const auto size = static_cast<size_t>(sqlite3_column_bytes(statement, column));
        value.text = bytes != nullptr ? std::string_view(bytes, size) : std::string_view();
        break;
    }
    default:
        break;
    }
    return value;
}

bool only_blanks(std::string_view text)
{
    return text.find_first_not_of(" \t\r\n;") == std::string_view::npos;
}

// The one statement of a question. Its handle goes with the database.
sqlite3_stmt* prepare(const Database& database, const std::string& sql)
{
    if (sql.find('\0') != std::string::npos)
        throw DatabaseError("a question can't hold the byte 0", SQLITE_ERROR);
    sqlite3_stmt* statement = nullptr;
    const char* rest = nullptr;
    const int code =
        sqlite3_prepare_v2(database.handle(), sql.c_str(), static_cast<int>(sql.size()) + 1, &statement, &rest);
    if (code == SQLITE_AUTH)
        throw DatabaseError("a question may only read: " + std::string(sqlite3_errmsg(database.handle())), code);
    if (code != SQLITE_OK)
        database.fail(code);
    if (statement == nullptr)
        throw DatabaseError("no question", SQLITE_ERROR);
    if (!only_blanks(rest) || sqlite3_stmt_readonly(statement) == 0 || sqlite3_bind_parameter_count(statement) > 0)
    {
        sqlite3_finalize(statement);
        throw DatabaseError("one question at a time, without parameters", SQLITE_ERROR);
    }
    return statement;
}

void open_for_reading(const Database& database, const std::string& path)
{
    if (database.number("PRAGMA application_id") != kDatabaseMark)
        throw DatabaseError(path + ": not a database that orvlog export has made", SQLITE_NOTADB);
    const int64_t version = database.number("PRAGMA user_version");
    if (version != kTablesVersion)
        throw DatabaseError(path + ": has tables of version " + std::to_string(version) + ", not " +
                                std::to_string(kTablesVersion),
                            SQLITE_NOTADB);
    database.run("PRAGMA query_only = 1; PRAGMA temp_store = FILE; PRAGMA cell_size_check = 1");
    sqlite3_limit(database.handle(), SQLITE_LIMIT_LENGTH, kLongestValue);
    sqlite3_limit(database.handle(), SQLITE_LIMIT_ATTACHED, 0);
    sqlite3_hard_heap_limit64(kMostMemory);
    sqlite3_set_authorizer(database.handle(), authorise, nullptr);
}

}  // namespace

void ask(const std::string& path, const std::string& sql, const QueryPlan& plan)
{
    std::error_code error;
    if (!std::filesystem::exists(path, error))
        throw DatabaseError(path + ": " + std::make_error_code(std::errc::no_such_file_or_directory).message(),
                            SQLITE_CANTOPEN);
    if (std::filesystem::is_directory(path, error))
        throw DatabaseError(path +
                                ": is a folder; a question is asked of a database, as orvlog export --sqlite makes it",
                            SQLITE_CANTOPEN);
    const Database database(path, SQLITE_OPEN_READONLY);
    open_for_reading(database, path);
    Limit limit;
    if (plan.seconds > 0)
        limit.end =
            Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(plan.seconds));
    sqlite3_progress_handler(database.handle(), kStepsBetweenLooks, look_at_clock, &limit);
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(prepare(database, sql), sqlite3_finalize);
    const int columns = sqlite3_column_count(statement.get());
    std::vector<std::string> names;
    for (int i = 0; i < columns; ++i)
        names.emplace_back(sqlite3_column_name(statement.get(), i));
    plan.on_columns(names);
    std::vector<QueryValue> row(static_cast<size_t>(columns));
    for (;;)
    {
        const int code = sqlite3_step(statement.get());
        if (code == SQLITE_DONE)
            return;
        if (limit.over)
            throw DatabaseError("the question takes too long; --seconds gives it more", code);
        if (code != SQLITE_ROW)
            database.fail(code);
        for (int i = 0; i < columns; ++i)
            row[static_cast<size_t>(i)] = value_of(statement.get(), i);
        if (!plan.on_row(row))
            return;
    }
}

}  // namespace orvlog::inspect
