#include "store/Schema.h"

#include <string>

#include "store/Database.h"
#include "store/ServiceError.h"

namespace veldrano::server {
namespace {

// Keys and relations are columns (so SQLite enforces uniqueness and cascades);
// the remaining fields of a record travel as its serialized protocol message
// in "body", which protobuf keeps readable across added fields.
const char* const kMigrations[] = {
    // 1: the installation's configuration.
    R"sql(
    CREATE TABLE meta (key TEXT PRIMARY KEY, value TEXT NOT NULL);
    CREATE TABLE servers (
        id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE, version INTEGER NOT NULL,
        online INTEGER NOT NULL DEFAULT 1, body BLOB NOT NULL);
    CREATE TABLE users (
        id INTEGER PRIMARY KEY,
        server_id INTEGER NOT NULL REFERENCES servers(id) ON DELETE CASCADE,
        name TEXT NOT NULL, version INTEGER NOT NULL, password_hash TEXT,
        body BLOB NOT NULL, UNIQUE (server_id, name));
    CREATE TABLE groups (
        id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE, version INTEGER NOT NULL,
        body BLOB NOT NULL);
    CREATE TABLE group_members (
        group_id INTEGER NOT NULL REFERENCES groups(id) ON DELETE CASCADE,
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        position INTEGER NOT NULL, PRIMARY KEY (group_id, user_id));
    CREATE INDEX group_members_user ON group_members(user_id);
    CREATE TABLE printers (
        id INTEGER PRIMARY KEY,
        server_id INTEGER NOT NULL REFERENCES servers(id) ON DELETE CASCADE,
        name TEXT NOT NULL, version INTEGER NOT NULL, body BLOB NOT NULL,
        UNIQUE (server_id, name));
    CREATE TABLE devices (
        id INTEGER PRIMARY KEY,
        server_id INTEGER NOT NULL REFERENCES servers(id) ON DELETE CASCADE,
        name TEXT NOT NULL, version INTEGER NOT NULL, state INTEGER NOT NULL DEFAULT 0,
        body BLOB NOT NULL, UNIQUE (server_id, name));
    CREATE TABLE device_lines (
        device_id INTEGER NOT NULL REFERENCES devices(id) ON DELETE CASCADE,
        number INTEGER NOT NULL, version INTEGER NOT NULL, body BLOB NOT NULL,
        PRIMARY KEY (device_id, number));
    CREATE TABLE routes (
        id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE, version INTEGER NOT NULL,
        body BLOB NOT NULL);
    CREATE TABLE number_mappings (
        id INTEGER PRIMARY KEY, match TEXT NOT NULL UNIQUE, version INTEGER NOT NULL,
        body BLOB NOT NULL);
    CREATE TABLE gateways (
        id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE, version INTEGER NOT NULL,
        body BLOB NOT NULL);
    CREATE TABLE gateway_users (
        id INTEGER PRIMARY KEY,
        gateway_id INTEGER NOT NULL REFERENCES gateways(id) ON DELETE CASCADE,
        address TEXT NOT NULL, version INTEGER NOT NULL, body BLOB NOT NULL,
        UNIQUE (gateway_id, address));
    CREATE TABLE admin_settings (
        id INTEGER PRIMARY KEY CHECK (id = 1), version INTEGER NOT NULL, body BLOB NOT NULL);
    CREATE TABLE zones (
        id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE, position INTEGER NOT NULL DEFAULT 0,
        version INTEGER NOT NULL, body BLOB NOT NULL);
    CREATE TABLE rates (
        id INTEGER PRIMARY KEY,
        zone_id INTEGER NOT NULL REFERENCES zones(id) ON DELETE CASCADE,
        position INTEGER NOT NULL, version INTEGER NOT NULL, body BLOB NOT NULL);
    CREATE INDEX rates_zone ON rates(zone_id, position);
    CREATE TABLE destinations (
        id INTEGER PRIMARY KEY,
        zone_id INTEGER NOT NULL REFERENCES zones(id) ON DELETE CASCADE,
        position INTEGER NOT NULL, version INTEGER NOT NULL, body BLOB NOT NULL);
    CREATE INDEX destinations_zone ON destinations(zone_id, position);
    )sql",
    // 2: what runs: process slots and the event log.
    R"sql(
    CREATE TABLE processes (
        server_id INTEGER NOT NULL REFERENCES servers(id) ON DELETE CASCADE,
        slot INTEGER NOT NULL, body BLOB NOT NULL, PRIMARY KEY (server_id, slot));
    CREATE TABLE events (
        id INTEGER PRIMARY KEY AUTOINCREMENT,
        server_id INTEGER NOT NULL REFERENCES servers(id) ON DELETE CASCADE,
        time INTEGER NOT NULL, severity INTEGER NOT NULL, originator_id INTEGER NOT NULL,
        originator_type INTEGER NOT NULL, message_class INTEGER NOT NULL, text TEXT NOT NULL);
    CREATE INDEX events_server ON events(server_id, id);
    )sql",
    // 3: each severity of a server's log in order, so that a filter that
    // matches few events reads those few however long the log is.
    R"sql(
    CREATE INDEX events_severity ON events(server_id, severity, id);
    )sql",
};

constexpr int kMigrationCount = sizeof(kMigrations) / sizeof(kMigrations[0]);

int CurrentVersion(Database& db) {
    auto st = db.Prepare("PRAGMA user_version");
    return st.Step() ? static_cast<int>(st.Int(0)) : 0;
}

}  // namespace

int LatestSchemaVersion() {
    return kMigrationCount;
}

void Migrate(Database& db, int target) {
    int version = CurrentVersion(db);
    if (version > kMigrationCount)
        throw ServiceError(
            pb::ERROR_STORE_FAILURE,
            "the store was written by a newer server (schema " + std::to_string(version) + ")");
    for (int next = version + 1; next <= target && next <= kMigrationCount; ++next) {
        Transaction tx(db);
        db.Exec(kMigrations[next - 1]);
        db.Exec("PRAGMA user_version = " + std::to_string(next));
        tx.Commit();
    }
}

}  // namespace veldrano::server
