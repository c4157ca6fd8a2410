#pragma once
// Thin RAII layer over the SQLite C API: one connection, prepared statements,
// transactions that roll back unless committed. Failures become ServiceError
// ERROR_STORE_FAILURE (or ERROR_SERVER_BUSY when the file stays locked).

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace veldrano::server {

class Statement {
public:
    Statement(sqlite3* db, std::string_view sql);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    Statement& Bind(int index, int64_t value);
    Statement& Bind(int index, int value) { return Bind(index, static_cast<int64_t>(value)); }
    Statement& Bind(int index, const std::string& value);
    Statement& BindBlob(int index, const std::string& bytes);

    // Steps once; true while a row is available.
    bool Step();
    // Steps to the end (for statements that return no rows).
    void Run();
    void Reset();

    int64_t Int(int column) const;
    std::string Text(int column) const;
    std::string Blob(int column) const;
    bool IsNull(int column) const;

private:
    sqlite3* db_;
    sqlite3_stmt* stmt_ = nullptr;
};

class Database {
public:
    enum class Mode { ReadWrite, ReadOnly };
    // A read-write open creates a missing file readable by its owner only:
    // the store holds the password hash and every user's settings, and
    // SQLite gives its WAL and shared-memory files the same permissions.
    explicit Database(const std::string& path, Mode mode = Mode::ReadWrite);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    void Exec(std::string_view sql);
    Statement Prepare(std::string_view sql) { return Statement(db_, sql); }
    int64_t LastInsertId() const { return sqlite3_last_insert_rowid(db_); }
    int Changes() const { return sqlite3_changes(db_); }
    bool InTransaction() const { return !sqlite3_get_autocommit(db_); }
    sqlite3* Handle() { return db_; }

private:
    sqlite3* db_ = nullptr;
};

// Begins a transaction (or a savepoint inside one) and rolls it back on
// destruction unless Commit was called, so an exception never half-writes.
class Transaction {
public:
    explicit Transaction(Database& db);
    ~Transaction();
    void Commit();

private:
    Database& db_;
    bool nested_;
    bool done_ = false;
};

[[noreturn]] void ThrowSqlite(sqlite3* db, int rc, std::string_view what);

}  // namespace veldrano::server
