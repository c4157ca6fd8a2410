#include "store/Store.h"

#include <google/protobuf/descriptor.h>

#include <map>

#include "store/Database.h"
#include "store/Schema.h"
#include "store/StoreDetail.h"

namespace veldrano::server {

using namespace detail;

ErrorInfo DescribeError(pb::Error code) {
    ErrorInfo info;
    const auto* value = pb::Error_descriptor()->FindValueByNumber(code);
    if (!value) value = pb::Error_descriptor()->FindValueByNumber(pb::ERROR_PROTOCOL);
    info.number = value->options().GetExtension(pb::error_number);
    info.description = value->options().GetExtension(pb::error_description);
    info.source = value->options().GetExtension(pb::error_source);
    return info;
}

namespace detail {

int64_t FindId(Database& db, const char* sql, const std::string& key) {
    auto st = db.Prepare(sql);
    st.Bind(1, key);
    return st.Step() ? st.Int(0) : 0;
}

int64_t FindId(Database& db, const char* sql, int64_t parent, const std::string& key) {
    auto st = db.Prepare(sql);
    st.Bind(1, parent).Bind(2, key);
    return st.Step() ? st.Int(0) : 0;
}

int64_t ServerId(Database& db, const std::string& name) {
    return FindId(db, "SELECT id FROM servers WHERE name = ?", name);
}

int64_t RequireServer(Database& db, const std::string& name) {
    int64_t id = ServerId(db, name);
    if (!id) throw ServiceError(pb::ERROR_NOT_FOUND, "server '" + name + "' does not exist");
    return id;
}

int64_t UserId(Database& db, const std::string& host, const std::string& name) {
    int64_t server = ServerId(db, host);
    return server
               ? FindId(db, "SELECT id FROM users WHERE server_id = ? AND name = ?", server, name)
               : 0;
}

int64_t NextVersion(const FieldCheck& check, bool isNew, int64_t existingId, int64_t storedVersion,
                    int64_t sentVersion) {
    if (isNew) {
        if (existingId) check.Fail(pb::ERROR_ALREADY_EXISTS, "the key is already in use");
        return 1;
    }
    // Deleted meanwhile or changed meanwhile: either way another administrator
    // changed the object.
    if (!existingId || storedVersion != sentVersion) ThrowConflict();
    return storedVersion + 1;
}

void CheckDelete(const FieldCheck& check, int64_t id, int64_t storedVersion,
                 int64_t expectedVersion) {
    if (!id) check.Fail(pb::ERROR_NOT_FOUND, "does not exist");
    if (expectedVersion && expectedVersion != storedVersion) ThrowConflict();
}

void ThrowConflict() {
    // The table's description is the whole message; the record is the one
    // open in the administrator's dialog, and any detail would restate it.
    throw ServiceError(pb::ERROR_VERSION_CONFLICT, "");
}

int64_t StoredVersion(Database& db, const char* table, int64_t id) {
    auto st = db.Prepare(std::string("SELECT version FROM ") + table + " WHERE id = ?");
    st.Bind(1, id);
    return st.Step() ? st.Int(0) : 0;
}

void RequireUserRef(Database& db, const FieldCheck& check, const char* field,
                    const pb::UserRef& ref) {
    if (IsEmptyRef(ref)) return;
    if (!UserId(db, ref.host_name(), ref.user_name()))
        check.Fail(pb::ERROR_UNKNOWN_REFERENCE,
                   std::string(field) + " names the unknown user " + RefText(ref));
}

int64_t RowId(Database& db, const KeyedTable& t, int64_t parent, const std::string& key) {
    std::string sql = std::string("SELECT id FROM ") + t.table + " WHERE " + t.keyColumn + " = ?";
    if (t.parentColumn) sql += std::string(" AND ") + t.parentColumn + " = ?";
    auto st = db.Prepare(sql);
    st.Bind(1, key);
    if (t.parentColumn) st.Bind(2, parent);
    return st.Step() ? st.Int(0) : 0;
}

int64_t Upsert(Database& db, const KeyedTable& t, int64_t parent, const std::string& key,
               const FieldCheck& check, bool isNew, int64_t sentVersion, const std::string& body,
               int64_t* rowId) {
    int64_t id = RowId(db, t, parent, key);
    int64_t version =
        NextVersion(check, isNew, id, id ? StoredVersion(db, t.table, id) : 0, sentVersion);
    if (id) {
        db.Prepare(std::string("UPDATE ") + t.table + " SET version = ?, body = ? WHERE id = ?")
            .Bind(1, version)
            .BindBlob(2, body)
            .Bind(3, id)
            .Run();
    } else {
        std::string columns = std::string(t.keyColumn) + ", version, body";
        std::string values = "?, ?, ?";
        if (t.parentColumn) {
            columns += std::string(", ") + t.parentColumn;
            values += ", ?";
        }
        auto st = db.Prepare(std::string("INSERT INTO ") + t.table + "(" + columns + ") VALUES(" +
                             values + ")");
        st.Bind(1, key).Bind(2, version).BindBlob(3, body);
        if (t.parentColumn) st.Bind(4, parent);
        st.Run();
        id = db.LastInsertId();
    }
    if (rowId) *rowId = id;
    return version;
}

void DeleteRow(Database& db, const KeyedTable& t, int64_t parent, const std::string& key,
               const FieldCheck& check, int64_t expectedVersion) {
    int64_t id = RowId(db, t, parent, key);
    CheckDelete(check, id, id ? StoredVersion(db, t.table, id) : 0, expectedVersion);
    db.Prepare(std::string("DELETE FROM ") + t.table + " WHERE id = ?").Bind(1, id).Run();
}

void RequireRole(Database& db, int64_t serverId, bool (pb::Server::*role)() const,
                 const FieldCheck& check, const char* roleName) {
    auto st = db.Prepare("SELECT body FROM servers WHERE id = ?");
    st.Bind(1, serverId);
    if (st.Step() && !(ParseBody<pb::Server>(st.Blob(0)).*role)())
        check.Fail(pb::ERROR_ROLE_MISSING, std::string("the server is not a ") + roleName);
}

}  // namespace detail

Store::Store(const std::string& path) : path_(path), db_(std::make_unique<Database>(path)) {
    Migrate(*db_, LatestSchemaVersion());
}

Store::Snapshot::Snapshot(Store& store) : store_(store) {
    {
        std::lock_guard lock(store_.readersMutex_);
        if (!store_.idleReaders_.empty()) {
            db_ = std::move(store_.idleReaders_.back());
            store_.idleReaders_.pop_back();
        }
    }
    if (!db_) db_ = std::make_unique<Database>(store_.path_, Database::Mode::ReadOnly);
    db_->Exec("BEGIN");
}

Store::Snapshot::~Snapshot() {
    try {
        db_->Exec("COMMIT");
    } catch (...) {
        return;  // a connection that cannot end its read is not reused
    }
    // A few idle connections cover the usual handful of consoles; more
    // would only hold file handles.
    constexpr size_t kIdleReaders = 4;
    std::lock_guard lock(store_.readersMutex_);
    if (store_.idleReaders_.size() < kIdleReaders) store_.idleReaders_.push_back(std::move(db_));
}

Store::~Store() = default;

int Store::SchemaVersion() {
    std::lock_guard lock(mutex_);
    auto st = db_->Prepare("PRAGMA user_version");
    return st.Step() ? static_cast<int>(st.Int(0)) : 0;
}

int Store::LatestSchemaVersion() {
    return server::LatestSchemaVersion();
}

std::string Store::GetMeta(const std::string& key, const std::string& fallback) {
    std::lock_guard lock(mutex_);
    auto st = db_->Prepare("SELECT value FROM meta WHERE key = ?");
    st.Bind(1, key);
    return st.Step() ? st.Text(0) : fallback;
}

void Store::SetMeta(const std::string& key, const std::string& value) {
    std::lock_guard lock(mutex_);
    db_->Prepare(
           "INSERT INTO meta(key, value) VALUES(?, ?) "
           "ON CONFLICT(key) DO UPDATE SET value = excluded.value")
        .Bind(1, key)
        .Bind(2, value)
        .Run();
}

bool Store::IsEmpty() {
    std::lock_guard lock(mutex_);
    auto st = db_->Prepare("SELECT COUNT(*) FROM servers");
    return st.Step() && st.Int(0) == 0;
}

void Store::Bulk(const std::function<void()>& f) {
    std::lock_guard lock(mutex_);
    Transaction tx(*db_);
    f();
    tx.Commit();
}

// ---------------------------------------------------------------------------
// Servers

namespace {

const KeyedTable kServers{"servers", "name"};

FieldCheck ServerCheck(const std::string& name) {
    return {"server '" + name + "'"};
}

void ValidateServer(const pb::Server& s) {
    auto check = ServerCheck(s.name());
    check.Text("the host name", s.name(), 35, true, true);
    check.Text("the comment", s.comment(), 30, s.user_server());
    if (s.net_type() != "rpc" && s.net_type() != "rrpc")
        check.Fail(pb::ERROR_INVALID_ARGUMENT, "the net type must be \"rpc\" or \"rrpc\"");
    if (!s.user_server() && !s.printer_server() && !s.device_server())
        check.Fail(pb::ERROR_REQUIRED, "at least one role must be chosen");
    check.Range("the dispatch count", s.dispatch_count(), 1, 10000);
    check.Range("the debug level", s.debug_level(), 0, 10);
    check.Text("the compatibility", s.compatibility(), 80);
}

pb::Server ServerDefaults(const std::string& name) {
    pb::Server s;
    s.set_name(name);
    s.set_user_server(true);
    s.set_net_type("rpc");
    s.set_dispatch_count(4);
    s.set_debug_level(0);
    s.set_is_new(true);
    return s;
}

// The object counts are for the server list; a single server is fetched
// without them, since counting a large user base costs more than the fetch.
constexpr const char* kServerListColumns =
    "SELECT s.id, s.name, s.version, s.online, s.body, "
    "(SELECT COUNT(*) FROM users u WHERE u.server_id = s.id), "
    "(SELECT COUNT(*) FROM printers p WHERE p.server_id = s.id), "
    "(SELECT COUNT(*) FROM devices d WHERE d.server_id = s.id) FROM servers s ";
constexpr const char* kServerColumns =
    "SELECT s.id, s.name, s.version, s.online, s.body, 0, 0, 0 FROM servers s ";

pb::Server ReadServer(Statement& st) {
    auto s = ParseBody<pb::Server>(st.Blob(4));
    s.set_name(st.Text(1));
    s.set_version(st.Int(2));
    s.set_online(st.Int(3) != 0);
    s.set_user_count(static_cast<int32_t>(st.Int(5)));
    s.set_printer_count(static_cast<int32_t>(st.Int(6)));
    s.set_device_count(static_cast<int32_t>(st.Int(7)));
    // A stopped server cannot hand objects over.
    s.set_blocking(!s.online());
    return s;
}

// The objects that each role of a server carries.
struct RoleObjects {
    bool (pb::Server::*role)() const;
    bool (pb::RoleObjectDeletion::*confirmed)() const;
    const char* table;
};
constexpr RoleObjects kRoleObjects[] = {
    {&pb::Server::user_server, &pb::RoleObjectDeletion::users, "users"},
    {&pb::Server::printer_server, &pb::RoleObjectDeletion::printers, "printers"},
    {&pb::Server::device_server, &pb::RoleObjectDeletion::devices, "devices"},
};

// For each role that s lacks while the server still has objects of it: deletes
// those objects when confirmed (answering whether it deleted any) (group memberships and device
// lines go with them through the schema's cascades, as with one delete per object), refuses
// otherwise. Runs inside the commit's transaction, so a refusal undoes it all.
bool RemoveRoleObjects(Database& db, int64_t serverId, const pb::Server& s,
                       const pb::RoleObjectDeletion& confirmed) {
    bool removed = false;
    for (const RoleObjects& objects : kRoleObjects) {
        if ((s.*objects.role)()) continue;
        const std::string table = objects.table;
        auto count = db.Prepare("SELECT COUNT(*) FROM " + table + " WHERE server_id = ?");
        count.Bind(1, serverId);
        const int64_t n = count.Step() ? count.Int(0) : 0;
        if (n == 0) continue;
        if (!(confirmed.*objects.confirmed)())
            ServerCheck(s.name()).Fail(
                pb::ERROR_ROLE_OBJECTS_REMAIN,
                std::to_string(n) + " " + (n == 1 ? table.substr(0, table.size() - 1) : table));
        db.Prepare("DELETE FROM " + table + " WHERE server_id = ?").Bind(1, serverId).Run();
        removed = true;
    }
    return removed;
}

}  // namespace

std::vector<pb::Server> Store::ListServers() {
    std::lock_guard lock(mutex_);
    std::vector<pb::Server> result;
    auto st = db_->Prepare(std::string(kServerListColumns) + "ORDER BY s.name");
    while (st.Step()) result.push_back(ReadServer(st));
    return result;
}

pb::Server Store::GetServer(const std::string& name) {
    std::lock_guard lock(mutex_);
    auto st = db_->Prepare(std::string(kServerColumns) + "WHERE s.name = ?");
    st.Bind(1, name);
    return st.Step() ? ReadServer(st) : ServerDefaults(name);
}

int64_t Store::CommitServer(const pb::Server& s, const pb::RoleObjectDeletion& confirmed) {
    std::lock_guard lock(mutex_);
    ValidateServer(s);
    Transaction tx(*db_);
    pb::Server body = s;
    for (auto f : {&pb::Server::clear_name, &pb::Server::clear_online, &pb::Server::clear_blocking,
                   &pb::Server::clear_user_count, &pb::Server::clear_printer_count,
                   &pb::Server::clear_device_count})
        (body.*f)();
    // The version is checked (and the record written) first: a stale record
    // must be refused as such, not judged by roles it no longer describes.
    int64_t id = 0;
    int64_t version = Upsert(*db_, kServers, 0, s.name(), ServerCheck(s.name()), s.is_new(),
                             s.version(), Body(body), &id);
    // What routes or the server's own users name must not go with a role.
    if (RemoveRoleObjects(*db_, id, s, confirmed))
        RefuseDanglingReferences(*db_, ServerCheck(s.name()), s.printer_server() ? 0 : id);
    tx.Commit();
    return version;
}

void Store::DeleteServer(const std::string& name, int64_t expectedVersion) {
    std::lock_guard lock(mutex_);
    Transaction tx(*db_);
    // Users, printers, devices, their lines, memberships, processes and events
    // go with it through the cascades of the schema.
    DeleteRow(*db_, kServers, 0, name, ServerCheck(name), expectedVersion);
    RefuseDanglingReferences(*db_, ServerCheck(name));
    tx.Commit();
}

std::vector<pb::ServerObjects> Store::ListServerObjects() {
    std::lock_guard lock(mutex_);
    std::vector<pb::ServerObjects> result;
    std::map<int64_t, size_t> byId;
    auto servers = db_->Prepare("SELECT id, name FROM servers ORDER BY name");
    while (servers.Step()) {
        byId[servers.Int(0)] = result.size();
        result.emplace_back().set_server(servers.Text(1));
    }
    // Two scans in all, whatever the number of servers.
    for (const char* table : {"printers", "devices"}) {
        auto st = db_->Prepare(std::string("SELECT server_id, name FROM ") + table +
                               " ORDER BY server_id, name");
        bool printers = std::string(table) == "printers";
        while (st.Step()) {
            auto& objects = result[byId.at(st.Int(0))];
            *(printers ? objects.add_printers() : objects.add_devices()) = st.Text(1);
        }
    }
    return result;
}

void Store::SetServerOnline(const std::string& name, bool online) {
    std::lock_guard lock(mutex_);
    int64_t id = RequireServer(*db_, name);
    db_->Prepare("UPDATE servers SET online = ? WHERE id = ?")
        .Bind(1, online ? 1 : 0)
        .Bind(2, id)
        .Run();
}

}  // namespace veldrano::server
