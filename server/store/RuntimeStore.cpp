// What runs on the servers: process slots and the event log.

#include <climits>
#include <memory>
#include <queue>

#include "store/Store.h"
#include "store/StoreDetail.h"

namespace veldrano::server {

using namespace detail;

std::vector<pb::Process> Store::ListProcesses(const std::string& host) {
    std::lock_guard lock(mutex_);
    int64_t server = RequireServer(*db_, host);
    std::vector<pb::Process> result;
    auto st = db_->Prepare("SELECT slot, body FROM processes WHERE server_id = ? ORDER BY slot");
    st.Bind(1, server);
    while (st.Step()) {
        auto p = ParseBody<pb::Process>(st.Blob(1));
        p.set_slot(static_cast<int32_t>(st.Int(0)));
        result.push_back(std::move(p));
    }
    return result;
}

void Store::PutProcess(const std::string& host, const pb::Process& p) {
    std::lock_guard lock(mutex_);
    int64_t server = RequireServer(*db_, host);
    db_->Prepare(
           "INSERT INTO processes(server_id, slot, body) VALUES(?, ?, ?) "
           "ON CONFLICT(server_id, slot) DO UPDATE SET body = excluded.body")
        .Bind(1, server)
        .Bind(2, p.slot())
        .BindBlob(3, p.SerializeAsString())
        .Run();
}

int64_t Store::AppendEvent(const std::string& host, const pb::Event& e) {
    std::lock_guard lock(mutex_);
    int64_t server = RequireServer(*db_, host);
    auto st = db_->Prepare(
        "INSERT INTO events(server_id, time, severity, originator_id, originator_type, "
        "message_class, text) VALUES(?, ?, ?, ?, ?, ?, ?)");
    st.Bind(1, server)
        .Bind(2, e.time())
        .Bind(3, e.severity())
        .Bind(4, e.originator_id())
        .Bind(5, e.originator_type())
        .Bind(6, e.message_class())
        .Bind(7, e.text())
        .Run();
    return db_->LastInsertId();
}

namespace {

// The severities of the server's log from minimum up, each found by one seek
// in the severity index rather than by a walk over the log.
std::vector<int64_t> SeveritiesFrom(Database& db, int64_t server, int64_t minimum) {
    std::vector<int64_t> severities;
    auto st = db.Prepare(
        "SELECT severity FROM events INDEXED BY events_severity "
        "WHERE server_id = ? AND severity >= ? ORDER BY severity LIMIT 1");
    for (int64_t from = minimum;; from = severities.back() + 1) {
        st.Reset();
        st.Bind(1, server).Bind(2, from);
        if (!st.Step()) break;
        severities.push_back(st.Int(0));
        if (severities.back() == INT64_MAX) break;
    }
    return severities;
}

// One severity's events in id order, after the request's newer_than. The
// index is named: without statistics the planner may take the (server_id,
// id) index for the ORDER BY and walk the whole log past other severities.
constexpr const char* kSeverityCursor =
    "SELECT id, time, severity, originator_id, originator_type, message_class, text "
    "FROM events INDEXED BY events_severity "
    "WHERE server_id = ? AND severity = ? AND id > ? ORDER BY id ";

void ReadEvent(const Statement& st, pb::Event& e) {
    e.set_id(st.Int(0));
    e.set_time(st.Int(1));
    e.set_severity(static_cast<int32_t>(st.Int(2)));
    e.set_originator_id(static_cast<int32_t>(st.Int(3)));
    e.set_originator_type(static_cast<int32_t>(st.Int(4)));
    e.set_message_class(static_cast<int32_t>(st.Int(5)));
    e.set_text(st.Text(6));
}

}  // namespace

int64_t Store::ForEachEvent(const pb::EventRequest& req,
                            const std::function<void(const pb::Event&)>& f) {
    Snapshot snapshot(*this);
    Database& db = snapshot.db();
    int64_t server = RequireServer(db, req.host_name());
    int64_t limit = req.max_count() > 0 ? req.max_count() : 10000;
    const bool oldestFirst = req.oldest_first();
    // One cursor per severity that passes the filter, merged by id: each
    // cursor reads only events that are sent (and one past them), so a
    // refresh costs the events it lists, whichever severities they have.
    const std::string sql = std::string(kSeverityCursor) + (oldestFirst ? "ASC" : "DESC");
    std::vector<std::unique_ptr<Statement>> cursors;
    struct Head {
        int64_t id;
        size_t cursor;
    };
    auto later = [oldestFirst](const Head& a, const Head& b) {
        return oldestFirst ? a.id > b.id : a.id < b.id;
    };
    std::priority_queue<Head, std::vector<Head>, decltype(later)> heads(later);
    for (int64_t severity : SeveritiesFrom(db, server, req.min_severity())) {
        auto st = std::make_unique<Statement>(db.Handle(), sql);
        st->Bind(1, server).Bind(2, severity).Bind(3, req.newer_than());
        if (!st->Step()) continue;
        heads.push({st->Int(0), cursors.size()});
        cursors.push_back(std::move(st));
    }
    pb::Event e;
    for (int64_t sent = 0; sent < limit && !heads.empty(); ++sent) {
        const size_t next = heads.top().cursor;
        heads.pop();
        Statement& st = *cursors[next];
        ReadEvent(st, e);
        f(e);
        if (st.Step()) heads.push({st.Int(0), next});
    }
    // Event ids are never used again, and a server's events go with it: the
    // log's oldest id tells one log from the next under the same name.
    auto oldest = db.Prepare("SELECT MIN(id) FROM events WHERE server_id = ?");
    oldest.Bind(1, server);
    return oldest.Step() ? oldest.Int(0) : 0;
}

int64_t Store::EventCount(const std::string& host) {
    std::lock_guard lock(mutex_);
    int64_t server = RequireServer(*db_, host);
    auto st = db_->Prepare("SELECT COUNT(*) FROM events WHERE server_id = ?");
    st.Bind(1, server);
    return st.Step() ? st.Int(0) : 0;
}

}  // namespace veldrano::server
