#include "inspect/export/sqlite.h"

namespace orvlog::inspect
{

namespace
{

constexpr int kPatience = 60000;  // milliseconds that another writer may take

// A name that begins like a URL is one to SQLite.
std::string plain_path(const std::string& path)
{
    return path.starts_with("file:") || path.starts_with(':') || path.empty() ? "./" + path : path;
}

}  // namespace

Database::Database(const std::string& path, int flags) : path_(path)
{
    sqlite3* handle = nullptr;
    const int code = sqlite3_open_v2(plain_path(path).c_str(), &handle, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    handle_.reset(handle);
    if (code != SQLITE_OK)
        fail(code);
    sqlite3_extended_result_codes(handle, 1);
    sqlite3_busy_timeout(handle, kPatience);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
}

void Database::fail(int code) const
{
    const int kind = code & 0xFF;
    std::string why = handle_ != nullptr ? sqlite3_errmsg(handle_.get()) : sqlite3_errstr(code);
    if (kind == SQLITE_BUSY)
        why = "is being written by another program";
    else if (kind == SQLITE_NOTADB)
        why = "is no database";
    // Who only reads leaves that to who writes.
    else if (code == SQLITE_READONLY_ROLLBACK || code == SQLITE_READONLY_RECOVERY)
        why = "was left half written by a program that was ended; the next orvlog export into it sets it right";
    throw DatabaseError(path_ + ": " + why, code);
}

void Database::run(const std::string& sql) const
{
    const int code = sqlite3_exec(handle_.get(), sql.c_str(), nullptr, nullptr, nullptr);
    if (code != SQLITE_OK)
        fail(code);
}

int64_t Database::number(const std::string& sql) const
{
    Statement statement(*this, sql);
    return statement.step() ? statement.number(0) : 0;
}

bool Database::is_of(int64_t mark) const
{
    const int64_t found = number("PRAGMA application_id");
    if (found == mark)
        return true;
    if (found != 0 || number("SELECT count(*) FROM sqlite_master") != 0)
        throw DatabaseError(path_ + ": a database of something else; nothing was written", SQLITE_NOTADB);
    return false;
}

Statement::Statement(const Database& database, const std::string& sql) : database_(database)
{
    sqlite3_stmt* handle = nullptr;
    check(sqlite3_prepare_v2(database.handle(), sql.data(), static_cast<int>(sql.size()), &handle, nullptr));
    handle_.reset(handle);
}

void Statement::check(int code) const
{
    if (code != SQLITE_OK)
        database_.fail(code);
}

Statement& Statement::bind(int place, int64_t value)
{
    check(sqlite3_bind_int64(handle_.get(), place, value));
    return *this;
}

Statement& Statement::bind(int place, double value)
{
    check(sqlite3_bind_double(handle_.get(), place, value));
    return *this;
}

Statement& Statement::bind(int place, std::string_view text)
{
    check(sqlite3_bind_text64(handle_.get(), place, text.data() != nullptr ? text.data() : "", text.size(),
                              SQLITE_STATIC, SQLITE_UTF8));
    return *this;
}

Statement& Statement::bind_null(int place)
{
    check(sqlite3_bind_null(handle_.get(), place));
    return *this;
}

bool Statement::step()
{
    const int code = sqlite3_step(handle_.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE)
        database_.fail(code);
    return code == SQLITE_ROW;
}

void Statement::reset()
{
    sqlite3_reset(handle_.get());
}

int64_t Statement::number(int column) const
{
    return sqlite3_column_int64(handle_.get(), column);
}

std::string Statement::text(int column) const
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(handle_.get(), column));
    return text != nullptr ? std::string(text, static_cast<size_t>(sqlite3_column_bytes(handle_.get(), column)))
                           : std::string();
}

Transaction::~Transaction()
{
    if (open_)
        sqlite3_exec(database_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void Transaction::commit()
{
    database_.run("COMMIT");
    open_ = false;
}

}  // namespace orvlog::inspect
