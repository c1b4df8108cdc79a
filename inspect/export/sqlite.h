// A database of SQLite, and a statement in it, which close with their objects.

#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace orvlog::inspect
{

// What a database didn't do, as one line.
class DatabaseError : public std::runtime_error
{
public:
    DatabaseError(const std::string& what, int code) : std::runtime_error(what), code_(code) {}
    int code() const
    {
        return code_;
    }

private:
    int code_;
};

class Database
{
public:
    // `flags` are those of sqlite3_open_v2. Names are paths, whatever they look like. Throws DatabaseError.
    Database(const std::string& path, int flags);

    sqlite3* handle() const
    {
        return handle_.get();
    }
    // Runs statements that give no rows. Throws DatabaseError.
    void run(const std::string& sql) const;
    // The first value of the first row as a number; 0 without a row.
    int64_t number(const std::string& sql) const;
    // Whether its application_id is this one; false for one that is empty. Throws DatabaseError for any other.
    bool is_of(int64_t mark) const;
    [[noreturn]] void fail(int code) const;

private:
    struct Close
    {
        void operator()(sqlite3* handle) const
        {
            sqlite3_close_v2(handle);
        }
    };

    std::string path_;
    std::unique_ptr<sqlite3, Close> handle_;
};

class Statement
{
public:
    Statement(const Database& database, const std::string& sql);

    Statement& bind(int place, int64_t value);
    Statement& bind(int place, double value);
    Statement& bind(int place, std::string_view text);  // which has to live until the statement is reset
    Statement& bind_null(int place);
    // True for a row, false at the end.
    bool step();
    void reset();
    int64_t number(int column) const;
    std::string text(int column) const;

private:
    struct Finalize
    {
        void operator()(sqlite3_stmt* handle) const
        {
            sqlite3_finalize(handle);
        }
    };

    void check(int code) const;

    const Database& database_;
    std::unique_ptr<sqlite3_stmt, Finalize> handle_;
};

// Between its making and commit() all or nothing is done. Begins by asking for the right to write.
class Transaction
{
public:
    explicit Transaction(const Database& database) : database_(database)
    {
        database_.run("BEGIN IMMEDIATE");
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();
    void commit();

private:
    const Database& database_;
    bool open_ = true;
};

}  // namespace orvlog::inspect
