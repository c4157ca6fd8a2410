#pragma once
// Helpers shared by the store's per-kind sources. Not part of the store's API.

#include <string>

#include "store/Database.h"
#include "store/ServiceError.h"
#include "store/Validate.h"

namespace veldrano::server::detail {

// Serializes a record without its key and bookkeeping fields, which live in
// columns of their own.
template <class M>
std::string Body(M copy) {
    copy.clear_version();
    if constexpr (requires { copy.clear_is_new(); }) copy.clear_is_new();
    return copy.SerializeAsString();
}

template <class M>
M ParseBody(const std::string& bytes) {
    M m;
    if (!m.ParseFromString(bytes))
        throw ServiceError(pb::ERROR_STORE_FAILURE, "a stored record cannot be read");
    return m;
}

// Row id of a keyed row, 0 when there is none.
int64_t FindId(Database& db, const char* sql, const std::string& key);
int64_t FindId(Database& db, const char* sql, int64_t parent, const std::string& key);

int64_t ServerId(Database& db, const std::string& name);
// As ServerId, but refuses an unknown server with ERROR_NOT_FOUND.
int64_t RequireServer(Database& db, const std::string& name);
int64_t UserId(Database& db, const std::string& host, const std::string& name);

// The common commit protocol: is_new inserts (refusing a taken key), otherwise
// the stored version must equal the one sent. Answers the version to store.
int64_t NextVersion(const FieldCheck& check, bool isNew, int64_t existingId, int64_t storedVersion,
                    int64_t sentVersion);
// The common delete protocol: refuses unknown keys and stale versions.
void CheckDelete(const FieldCheck& check, int64_t id, int64_t storedVersion,
                 int64_t expectedVersion);
// Refuses a commit or delete against a version that is no longer stored.
[[noreturn]] void ThrowConflict();

int64_t StoredVersion(Database& db, const char* table, int64_t id);

// A table of records with a unique key, optionally within a parent row.
struct KeyedTable {
    const char* table;
    const char* keyColumn;
    const char* parentColumn = nullptr;  // e.g. "server_id"; nullptr for top-level tables
};

int64_t RowId(Database& db, const KeyedTable& t, int64_t parent, const std::string& key);
// Inserts or updates one record body under the common commit protocol and
// answers its new version; *rowId receives the row's id.
int64_t Upsert(Database& db, const KeyedTable& t, int64_t parent, const std::string& key,
               const FieldCheck& check, bool isNew, int64_t sentVersion, const std::string& body,
               int64_t* rowId = nullptr);
// Deletes one record under the common delete protocol.
void DeleteRow(Database& db, const KeyedTable& t, int64_t parent, const std::string& key,
               const FieldCheck& check, int64_t expectedVersion);

// Refuses objects on a server that lacks the role they need.
void RequireRole(Database& db, int64_t serverId, bool (pb::Server::*role)() const,
                 const FieldCheck& check, const char* roleName);

// A user reference must name an existing user (or be empty when allowed).
void RequireUserRef(Database& db, const FieldCheck& check, const char* field,
                    const pb::UserRef& ref);

// Refuses a deletion, with ERROR_STILL_NAMED and the records that name what
// it took away, when a route names a user, group or server that is gone or,
// for printerServerId, a user of that server names a printer that is gone.
// Called inside the deletion's transaction, after the deletion.
void RefuseDanglingReferences(Database& db, const FieldCheck& deleted, int64_t printerServerId = 0);

}  // namespace veldrano::server::detail
