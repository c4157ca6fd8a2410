// Least-cost routing: zones in their list order, each with its rates and
// destinations shown by 1-based position within the zone. Positions move when
// a row before them is deleted, so a rate or destination is identified by its
// row id, and every zone, rate and destination takes its versions from one
// counter: a version names one state of one record, never another record's,
// and a request that names a moved or deleted record is refused as a conflict.

#include "store/Store.h"
#include "store/StoreDetail.h"

namespace veldrano::server {

using namespace detail;

namespace {

const KeyedTable kZones{"zones", "name"};

FieldCheck ZoneCheck(const std::string& name) {
    return {"zone '" + name + "'"};
}

int64_t RequireZone(Database& db, const std::string& name) {
    int64_t id = RowId(db, kZones, 0, name);
    if (!id) ZoneCheck(name).Fail(pb::ERROR_NOT_FOUND, "does not exist");
    return id;
}

int64_t CountIn(Database& db, const char* table, int64_t zone) {
    auto st = db.Prepare(std::string("SELECT COUNT(*) FROM ") + table + " WHERE zone_id = ?");
    st.Bind(1, zone);
    return st.Step() ? st.Int(0) : 0;
}

pb::Zone ReadZone(Database& db, Statement& st) {
    auto z = ParseBody<pb::Zone>(st.Blob(3));
    z.set_name(st.Text(1));
    z.set_version(st.Int(2));
    z.set_rate_count(static_cast<int32_t>(CountIn(db, "rates", st.Int(0))));
    z.set_destination_count(static_cast<int32_t>(CountIn(db, "destinations", st.Int(0))));
    return z;
}

// Rates and destinations share their storage shape: rows of a zone ordered by
// a contiguous 1-based position.
struct ZoneRow {
    int64_t id = 0;
    int64_t version = 0;
    std::string body;
    int position = 0;
};

// The next version for a zone, rate or destination: above every version any
// of them ever had, since the counter survives deletions.
int64_t NextLcrVersion(Database& db) {
    auto st = db.Prepare(
        "SELECT MAX(v) FROM (SELECT CAST(value AS INTEGER) AS v FROM meta WHERE key = "
        "'lcr_version' UNION ALL SELECT MAX(version) FROM zones UNION ALL SELECT MAX(version) "
        "FROM rates UNION ALL SELECT MAX(version) FROM destinations)");
    const int64_t next = (st.Step() ? st.Int(0) : 0) + 1;
    db.Prepare("INSERT OR REPLACE INTO meta(key, value) VALUES('lcr_version', ?)")
        .Bind(1, std::to_string(next))
        .Run();
    return next;
}

ZoneRow ReadZoneRow(Statement& st) {
    ZoneRow row;
    if (st.Step()) row = {st.Int(0), st.Int(1), st.Blob(2), static_cast<int>(st.Int(3))};
    return row;
}

ZoneRow FindZoneRow(Database& db, const char* table, int64_t zone, int index) {
    auto st = db.Prepare(std::string("SELECT id, version, body, position FROM ") + table +
                         " WHERE zone_id = ? AND position = ?");
    st.Bind(1, zone).Bind(2, index);
    return ReadZoneRow(st);
}

ZoneRow FindZoneRowById(Database& db, const char* table, int64_t zone, int64_t id) {
    auto st = db.Prepare(std::string("SELECT id, version, body, position FROM ") + table +
                         " WHERE zone_id = ? AND id = ?");
    st.Bind(1, zone).Bind(2, id);
    return ReadZoneRow(st);
}

// The row a request names: by identity when it carries one (a row that is no
// longer in the zone is a conflict, whatever now stands at the index), else
// by position.
ZoneRow NamedZoneRow(Database& db, const char* table, int64_t zone, int index, int64_t id) {
    if (!id) return FindZoneRow(db, table, zone, index);
    ZoneRow row = FindZoneRowById(db, table, zone, id);
    if (!row.id) ThrowConflict();
    return row;
}

template <class M>
std::vector<M> ListZoneRows(Database& db, const char* table, const std::string& zoneName) {
    int64_t zone = RequireZone(db, zoneName);
    std::vector<M> result;
    auto st = db.Prepare(std::string("SELECT position, version, body, id FROM ") + table +
                         " WHERE zone_id = ? ORDER BY position");
    st.Bind(1, zone);
    while (st.Step()) {
        auto m = ParseBody<M>(st.Blob(2));
        m.set_zone(zoneName);
        m.set_index(static_cast<int32_t>(st.Int(0)));
        m.set_version(st.Int(1));
        m.set_id(st.Int(3));
        result.push_back(std::move(m));
    }
    return result;
}

template <class M>
M GetZoneRow(Database& db, const char* table, const std::string& zoneName, int index) {
    auto row = FindZoneRow(db, table, RequireZone(db, zoneName), index);
    M m;
    if (row.id) {
        m = ParseBody<M>(row.body);
        m.set_index(index);
        m.set_version(row.version);
        m.set_id(row.id);
    } else {
        m.set_is_new(true);
    }
    m.set_zone(zoneName);
    return m;
}

// Inserts a new row at the end of the zone, or updates the row that m names
// (by identity, else at m.index()).
template <class M>
int64_t CommitZoneRow(Database& db, const char* table, const FieldCheck& check, int64_t zone,
                      const M& m, int* index) {
    M body = m;
    body.clear_zone();
    body.clear_index();
    body.clear_id();
    int position = m.index();
    int64_t rowId = 0;
    if (m.is_new()) {
        position = static_cast<int>(CountIn(db, table, zone)) + 1;
    } else {
        const ZoneRow row = NamedZoneRow(db, table, zone, m.index(), m.id());
        NextVersion(check, false, row.id, row.version, m.version());
        rowId = row.id;
        position = row.position;
    }
    const int64_t version = NextLcrVersion(db);
    if (rowId) {
        db.Prepare(std::string("UPDATE ") + table + " SET version = ?, body = ? WHERE id = ?")
            .Bind(1, version)
            .BindBlob(2, Body(body))
            .Bind(3, rowId)
            .Run();
    } else {
        db.Prepare(std::string("INSERT INTO ") + table +
                   "(zone_id, position, version, body) VALUES(?, ?, ?, ?)")
            .Bind(1, zone)
            .Bind(2, position)
            .Bind(3, version)
            .BindBlob(4, Body(body))
            .Run();
    }
    if (index) *index = position;
    return version;
}

void DeleteZoneRow(Database& db, const char* table, const FieldCheck& check,
                   const std::string& zoneName, int index, int64_t expectedVersion, int64_t id) {
    int64_t zone = RequireZone(db, zoneName);
    const ZoneRow row = NamedZoneRow(db, table, zone, index, id);
    CheckDelete(check, row.id, row.version, expectedVersion);
    db.Prepare(std::string("DELETE FROM ") + table + " WHERE id = ?").Bind(1, row.id).Run();
    // Keep positions contiguous so that indices stay 1..count.
    db.Prepare(std::string("UPDATE ") + table +
               " SET position = position - 1 WHERE zone_id = ? AND position > ?")
        .Bind(1, zone)
        .Bind(2, row.position)
        .Run();
}

FieldCheck RowCheck(const char* kind, const std::string& zone, int index) {
    return {std::string(kind) + " " + std::to_string(index) + " of zone '" + zone + "'"};
}

}  // namespace

// ---------------------------------------------------------------------------
// Zones

pb::ZoneList Store::ListZones() {
    std::lock_guard lock(mutex_);
    pb::ZoneList list;
    auto st = db_->Prepare("SELECT id, name, version, body FROM zones ORDER BY position");
    while (st.Step()) *list.add_zones() = ReadZone(*db_, st);
    for (int i = 0; i < list.zones_size(); ++i)
        list.mutable_zones(i)->set_next(i + 1 < list.zones_size() ? list.zones(i + 1).name()
                                                                  : std::string());
    if (list.zones_size()) list.set_first(list.zones(0).name());
    return list;
}

pb::Zone Store::GetZone(const std::string& name) {
    std::lock_guard lock(mutex_);
    auto list = ListZones();
    for (const auto& z : list.zones())
        if (z.name() == name) return z;
    pb::Zone z;
    z.set_name(name);
    z.set_is_new(true);
    return z;
}

int64_t Store::CommitZone(const pb::Zone& z) {
    std::lock_guard lock(mutex_);
    auto check = ZoneCheck(z.name());
    check.Text("the zone name", z.name(), 30, true);
    if (z.is_local() && z.is_daemon())
        check.Fail(pb::ERROR_INVALID_ARGUMENT, "a zone is either local or served by a daemon");
    Transaction tx(*db_);
    if (z.is_daemon()) {
        if (IsEmptyRef(z.daemon())) check.Fail(pb::ERROR_REQUIRED, "the daemon user is missing");
        RequireUserRef(*db_, check, "the daemon user", z.daemon());
    }
    if (!z.is_local() && !z.is_daemon() && z.primary_host().empty())
        check.Fail(pb::ERROR_REQUIRED, "the primary host is missing");
    for (const auto* host : {&z.primary_host(), &z.secondary_host()})
        if (!host->empty() && !ServerId(*db_, *host))
            check.Fail(pb::ERROR_UNKNOWN_REFERENCE, "the host '" + *host + "' is unknown");
    pb::Zone body = z;
    for (auto f : {&pb::Zone::clear_name, &pb::Zone::clear_next, &pb::Zone::clear_rate_count,
                   &pb::Zone::clear_destination_count})
        (body.*f)();
    int64_t id = 0;
    Upsert(*db_, kZones, 0, z.name(), check, z.is_new(), z.version(), Body(body), &id);
    // Upsert checked the sent version; the stored one comes from the counter,
    // so that a zone deleted and created again under its name is not taken
    // for the one a console loaded before.
    const int64_t version = NextLcrVersion(*db_);
    db_->Prepare("UPDATE zones SET version = ? WHERE id = ?").Bind(1, version).Bind(2, id).Run();
    if (z.is_new())
        db_->Prepare(
               "UPDATE zones SET position = (SELECT COALESCE(MAX(position), 0) + 1 "
               "FROM zones) WHERE id = ?")
            .Bind(1, id)
            .Run();
    tx.Commit();
    return version;
}

void Store::DeleteZone(const std::string& name, int64_t expectedVersion) {
    std::lock_guard lock(mutex_);
    Transaction tx(*db_);
    // Rates and destinations go with the zone through the schema's cascade.
    DeleteRow(*db_, kZones, 0, name, ZoneCheck(name), expectedVersion);
    tx.Commit();
}

// ---------------------------------------------------------------------------
// Rates

std::vector<pb::Rate> Store::ListRates(const std::string& zone) {
    std::lock_guard lock(mutex_);
    return ListZoneRows<pb::Rate>(*db_, "rates", zone);
}

pb::Rate Store::GetRate(const std::string& zone, int index) {
    std::lock_guard lock(mutex_);
    auto r = GetZoneRow<pb::Rate>(*db_, "rates", zone, index);
    if (r.is_new()) {
        for (auto day : {&pb::Rate::set_monday, &pb::Rate::set_tuesday, &pb::Rate::set_wednesday,
                         &pb::Rate::set_thursday, &pb::Rate::set_friday})
            (r.*day)(true);
        r.set_start_hour(8);
        r.set_stop_hour(18);
    }
    return r;
}

int64_t Store::CommitRate(const pb::Rate& r, int* index) {
    std::lock_guard lock(mutex_);
    auto check = RowCheck("rate", r.zone(), r.index());
    check.Range("the start hour", r.start_hour(), 0, 23);
    check.Range("the start minute", r.start_minute(), 0, 59);
    check.Range("the stop hour", r.stop_hour(), 0, 24);
    check.Range("the stop minute", r.stop_minute(), 0, r.stop_hour() == 24 ? 0 : 59);
    if (!(r.monday() || r.tuesday() || r.wednesday() || r.thursday() || r.friday() ||
          r.saturday() || r.sunday()))
        check.Fail(pb::ERROR_REQUIRED, "at least one day must be chosen");
    Transaction tx(*db_);
    int64_t version = CommitZoneRow(*db_, "rates", check, RequireZone(*db_, r.zone()), r, index);
    tx.Commit();
    return version;
}

void Store::DeleteRate(const std::string& zone, int index, int64_t expectedVersion, int64_t id) {
    std::lock_guard lock(mutex_);
    Transaction tx(*db_);
    DeleteZoneRow(*db_, "rates", RowCheck("rate", zone, index), zone, index, expectedVersion, id);
    tx.Commit();
}

// ---------------------------------------------------------------------------
// Destinations

std::vector<pb::Destination> Store::ListDestinations(const std::string& zone) {
    std::lock_guard lock(mutex_);
    return ListZoneRows<pb::Destination>(*db_, "destinations", zone);
}

pb::Destination Store::GetDestination(const std::string& zone, int index) {
    std::lock_guard lock(mutex_);
    return GetZoneRow<pb::Destination>(*db_, "destinations", zone, index);
}

int64_t Store::CommitDestination(const pb::Destination& d, int* index) {
    std::lock_guard lock(mutex_);
    auto check = RowCheck("destination", d.zone(), d.index());
    check.Range("the destination type", d.type(), 0, 3);
    check.Text("the prefix", d.prefix(), 30);
    check.Text("the destination name", d.name(), 30, true);
    Transaction tx(*db_);
    int64_t zone = RequireZone(*db_, d.zone());
    for (const auto& other : ListZoneRows<pb::Destination>(*db_, "destinations", d.zone()))
        if ((d.is_new() || (d.id() ? other.id() != d.id() : other.index() != d.index())) &&
            other.prefix() == d.prefix() && other.type() == d.type())
            check.Fail(pb::ERROR_ALREADY_EXISTS,
                       "a destination with this prefix and type already exists");
    int64_t version = CommitZoneRow(*db_, "destinations", check, zone, d, index);
    tx.Commit();
    return version;
}

void Store::DeleteDestination(const std::string& zone, int index, int64_t expectedVersion,
                              int64_t id) {
    std::lock_guard lock(mutex_);
    Transaction tx(*db_);
    DeleteZoneRow(*db_, "destinations", RowCheck("destination", zone, index), zone, index,
                  expectedVersion, id);
    tx.Commit();
}

}  // namespace veldrano::server
