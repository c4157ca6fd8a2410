#pragma once
// The store's schema, as an ordered list of migrations. A store records the
// number of the last migration applied (PRAGMA user_version) and is brought
// forward step by step when it is opened, each step in its own transaction.

namespace veldrano::server {

class Database;

int LatestSchemaVersion();
// Applies the migrations after the store's current version up to target.
void Migrate(Database& db, int target);

}  // namespace veldrano::server
