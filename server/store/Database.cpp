#include "store/Database.h"

#include <fcntl.h>
#include <unistd.h>

#include "store/ServiceError.h"

namespace veldrano::server {

void ThrowSqlite(sqlite3* db, int rc, std::string_view what) {
    std::string message = std::string(what) + ": " + (db ? sqlite3_errmsg(db) : sqlite3_errstr(rc));
    int primary = rc & 0xff;
    if (primary == SQLITE_BUSY || primary == SQLITE_LOCKED)
        throw ServiceError(pb::ERROR_SERVER_BUSY, message);
    throw ServiceError(pb::ERROR_STORE_FAILURE, message);
}

Statement::Statement(sqlite3* db, std::string_view sql) : db_(db) {
    int rc = sqlite3_prepare_v2(db, sql.data(), static_cast<int>(sql.size()), &stmt_, nullptr);
    if (rc != SQLITE_OK) ThrowSqlite(db, rc, "prepare");
}

Statement::~Statement() {
    sqlite3_finalize(stmt_);
}

Statement& Statement::Bind(int index, int64_t value) {
    int rc = sqlite3_bind_int64(stmt_, index, value);
    if (rc != SQLITE_OK) ThrowSqlite(db_, rc, "bind");
    return *this;
}

Statement& Statement::Bind(int index, const std::string& value) {
    int rc = sqlite3_bind_text(stmt_, index, value.data(), static_cast<int>(value.size()),
                               SQLITE_TRANSIENT);
    if (rc != SQLITE_OK) ThrowSqlite(db_, rc, "bind");
    return *this;
}

Statement& Statement::BindBlob(int index, const std::string& bytes) {
    int rc = sqlite3_bind_blob(stmt_, index, bytes.data(), static_cast<int>(bytes.size()),
                               SQLITE_TRANSIENT);
    if (rc != SQLITE_OK) ThrowSqlite(db_, rc, "bind");
    return *this;
}

bool Statement::Step() {
    int rc = sqlite3_step(stmt_);
    if (rc == SQLITE_ROW) return true;
    if (rc == SQLITE_DONE) return false;
    ThrowSqlite(db_, rc, "step");
}

void Statement::Run() {
    while (Step()) {
    }
}

void Statement::Reset() {
    sqlite3_reset(stmt_);
    sqlite3_clear_bindings(stmt_);
}

int64_t Statement::Int(int column) const {
    return sqlite3_column_int64(stmt_, column);
}

std::string Statement::Text(int column) const {
    auto* text = reinterpret_cast<const char*>(sqlite3_column_text(stmt_, column));
    return text ? std::string(text, sqlite3_column_bytes(stmt_, column)) : std::string();
}

std::string Statement::Blob(int column) const {
    auto* data = static_cast<const char*>(sqlite3_column_blob(stmt_, column));
    return data ? std::string(data, sqlite3_column_bytes(stmt_, column)) : std::string();
}

bool Statement::IsNull(int column) const {
    return sqlite3_column_type(stmt_, column) == SQLITE_NULL;
}

Database::Database(const std::string& path, Mode mode) {
    const bool readOnly = mode == Mode::ReadOnly;
    if (!readOnly && path != ":memory:") {
        // Created here rather than by SQLite, whose default mode follows the
        // umask (often 0644).
        const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (fd >= 0) ::close(fd);
    }
    const int flags =
        (readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) |
        SQLITE_OPEN_FULLMUTEX;
    int rc = sqlite3_open_v2(path.c_str(), &db_, flags, nullptr);
    if (rc != SQLITE_OK) {
        std::string message = "cannot open store " + path + ": " + sqlite3_errmsg(db_);
        sqlite3_close(db_);
        db_ = nullptr;
        throw ServiceError(pb::ERROR_STORE_FAILURE, message);
    }
    sqlite3_busy_timeout(db_, 5000);
    if (readOnly) return;  // the writer has set the journal mode, which is kept in the file
    // WAL with full sync: an acknowledged commit is on disk before the reply
    // leaves, so it survives a killed server process and a power cut alike.
    Exec("PRAGMA journal_mode=WAL");
    Exec("PRAGMA synchronous=FULL");
    Exec("PRAGMA foreign_keys=ON");
}

Database::~Database() {
    sqlite3_close(db_);
}

void Database::Exec(std::string_view sql) {
    char* error = nullptr;
    int rc = sqlite3_exec(db_, std::string(sql).c_str(), nullptr, nullptr, &error);
    if (rc != SQLITE_OK) {
        std::string message = error ? error : "";
        sqlite3_free(error);
        ThrowSqlite(nullptr, rc, message.empty() ? std::string(sql) : message);
    }
}

Transaction::Transaction(Database& db) : db_(db), nested_(db.InTransaction()) {
    db_.Exec(nested_ ? "SAVEPOINT nested" : "BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
    if (done_) return;
    try {
        if (nested_) {
            db_.Exec("ROLLBACK TO nested");
            db_.Exec("RELEASE nested");
        } else {
            db_.Exec("ROLLBACK");
        }
    } catch (...) {
        // The connection is unusable if even the rollback fails; nothing to add.
    }
}

void Transaction::Commit() {
    db_.Exec(nested_ ? "RELEASE nested" : "COMMIT");
    done_ = true;
}

}  // namespace veldrano::server
