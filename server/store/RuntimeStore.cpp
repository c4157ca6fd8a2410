// What runs on the servers: process slots and the event log.

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

void Store::ForEachEvent(const pb::EventRequest& req,
                         const std::function<void(const pb::Event&)>& f) {
    Snapshot snapshot(*this);
    int64_t server = RequireServer(snapshot.db(), req.host_name());
    int64_t limit = req.max_count() > 0 ? req.max_count() : 10000;
    // The (server_id, id) index walks the log in order and the limit stops the
    // walk, so a filtered, capped read never touches the whole log.
    auto st = snapshot.db().Prepare(
        std::string(
            "SELECT id, time, severity, originator_id, originator_type, message_class, text "
            "FROM events WHERE server_id = ? AND severity >= ? ORDER BY id ") +
        (req.oldest_first() ? "ASC" : "DESC") + " LIMIT ?");
    st.Bind(1, server).Bind(2, req.min_severity()).Bind(3, limit);
    pb::Event e;
    while (st.Step()) {
        e.set_id(st.Int(0));
        e.set_time(st.Int(1));
        e.set_severity(static_cast<int32_t>(st.Int(2)));
        e.set_originator_id(static_cast<int32_t>(st.Int(3)));
        e.set_originator_type(static_cast<int32_t>(st.Int(4)));
        e.set_message_class(static_cast<int32_t>(st.Int(5)));
        e.set_text(st.Text(6));
        f(e);
    }
}

int64_t Store::EventCount(const std::string& host) {
    std::lock_guard lock(mutex_);
    int64_t server = RequireServer(*db_, host);
    auto st = db_->Prepare("SELECT COUNT(*) FROM events WHERE server_id = ?");
    st.Bind(1, server);
    return st.Step() ? st.Int(0) : 0;
}

}  // namespace veldrano::server
