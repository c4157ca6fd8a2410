// Installation-wide kinds: inbound routes, number mappings, mail gateways with
// their users, and the administrator settings.

#include "store/Store.h"
#include "store/StoreDetail.h"

namespace veldrano::server {

using namespace detail;

namespace {

const KeyedTable kRoutes{"routes", "name"};
const KeyedTable kMappings{"number_mappings", "match"};
const KeyedTable kGateways{"gateways", "name"};
const KeyedTable kGatewayUsers{"gateway_users", "address", "gateway_id"};

FieldCheck RouteCheck(const std::string& name) {
    return {"route '" + name + "'"};
}
FieldCheck MappingCheck(const std::string& match) {
    return {"number mapping '" + match + "'"};
}
FieldCheck GatewayUserCheck(const std::string& gateway, const std::string& address) {
    return {"gateway user '" + address + "' of " + gateway};
}

// Reads "SELECT key, version, body" rows into records of kind M.
template <class M>
std::vector<M> ReadAll(Database& db, const std::string& sql, void (M::*setKey)(const std::string&),
                       int64_t parent = 0) {
    std::vector<M> result;
    auto st = db.Prepare(sql);
    if (parent) st.Bind(1, parent);
    while (st.Step()) {
        auto m = ParseBody<M>(st.Blob(2));
        (m.*setKey)(st.Text(0));
        m.set_version(st.Int(1));
        result.push_back(std::move(m));
    }
    return result;
}

template <class M>
M ReadOne(Database& db, const KeyedTable& t, int64_t parent, const std::string& key,
          void (M::*setKey)(const std::string&)) {
    std::string sql = std::string("SELECT ") + t.keyColumn + ", version, body FROM " + t.table +
                      " WHERE " + t.keyColumn + " = ?";
    if (t.parentColumn) sql += std::string(" AND ") + t.parentColumn + " = ?";
    auto st = db.Prepare(sql);
    st.Bind(1, key);
    if (t.parentColumn) st.Bind(2, parent);
    M m;
    if (st.Step()) {
        m = ParseBody<M>(st.Blob(2));
        m.set_version(st.Int(1));
    } else {
        m.set_is_new(true);
    }
    (m.*setKey)(key);
    return m;
}

int64_t RequireGateway(Database& db, const std::string& name) {
    int64_t id = RowId(db, kGateways, 0, name);
    if (!id) throw ServiceError(pb::ERROR_NOT_FOUND, "gateway '" + name + "' does not exist");
    return id;
}

}  // namespace

// ---------------------------------------------------------------------------
// Routes

std::vector<pb::Route> Store::ListRoutes() {
    std::lock_guard lock(mutex_);
    return ReadAll<pb::Route>(*db_, "SELECT name, version, body FROM routes ORDER BY name",
                              &pb::Route::set_name);
}

pb::Route Store::GetRoute(const std::string& name) {
    std::lock_guard lock(mutex_);
    return ReadOne<pb::Route>(*db_, kRoutes, 0, name, &pb::Route::set_name);
}

int64_t Store::CommitRoute(const pb::Route& r) {
    std::lock_guard lock(mutex_);
    auto check = RouteCheck(r.name());
    check.Text("the route name", r.name(), 10, true, true);
    check.Text("the comment", r.comment(), 30, true);
    check.Text("the match extension", r.match_extension(), 20);
    check.Text("the match TSI", r.match_tsi(), 20);
    check.Text("the poll document", r.poll_document(), 20);
    Transaction tx(*db_);
    RequireUserRef(*db_, check, "the target user", r.user());
    if (!r.group().empty() && !RowId(*db_, {"groups", "name"}, 0, r.group()))
        check.Fail(pb::ERROR_UNKNOWN_REFERENCE, "the group '" + r.group() + "' is unknown");
    if (!r.poll_server().empty() && !ServerId(*db_, r.poll_server()))
        check.Fail(pb::ERROR_UNKNOWN_REFERENCE,
                   "the poll server '" + r.poll_server() + "' is unknown");
    pb::Route body = r;
    body.clear_name();
    int64_t version =
        Upsert(*db_, kRoutes, 0, r.name(), check, r.is_new(), r.version(), Body(body));
    tx.Commit();
    return version;
}

void Store::DeleteRoute(const std::string& name, int64_t expectedVersion) {
    std::lock_guard lock(mutex_);
    Transaction tx(*db_);
    DeleteRow(*db_, kRoutes, 0, name, RouteCheck(name), expectedVersion);
    tx.Commit();
}

// ---------------------------------------------------------------------------
// Number mappings

std::vector<pb::NumberMapping> Store::ListNumberMappings() {
    std::lock_guard lock(mutex_);
    return ReadAll<pb::NumberMapping>(
        *db_, "SELECT match, version, body FROM number_mappings ORDER BY match",
        &pb::NumberMapping::set_match);
}

pb::NumberMapping Store::GetNumberMapping(const std::string& match) {
    std::lock_guard lock(mutex_);
    return ReadOne<pb::NumberMapping>(*db_, kMappings, 0, match, &pb::NumberMapping::set_match);
}

int64_t Store::CommitNumberMapping(const pb::NumberMapping& m) {
    std::lock_guard lock(mutex_);
    auto check = MappingCheck(m.match());
    check.Text("the match text", m.match(), 20, true, true);
    check.Text("the replace text", m.replace(), 20, true);
    Transaction tx(*db_);
    pb::NumberMapping body = m;
    body.clear_match();
    int64_t version =
        Upsert(*db_, kMappings, 0, m.match(), check, m.is_new(), m.version(), Body(body));
    tx.Commit();
    return version;
}

void Store::DeleteNumberMapping(const std::string& match, int64_t expectedVersion) {
    std::lock_guard lock(mutex_);
    Transaction tx(*db_);
    DeleteRow(*db_, kMappings, 0, match, MappingCheck(match), expectedVersion);
    tx.Commit();
}

// ---------------------------------------------------------------------------
// Gateways and their users

std::vector<pb::Gateway> Store::ListGateways() {
    std::lock_guard lock(mutex_);
    return ReadAll<pb::Gateway>(*db_, "SELECT name, version, body FROM gateways ORDER BY name",
                                &pb::Gateway::set_name);
}

int64_t Store::CommitGateway(const pb::Gateway& g) {
    std::lock_guard lock(mutex_);
    FieldCheck check{"gateway '" + g.name() + "'"};
    check.Text("the gateway address", g.name(), 80, true, true);
    check.Text("the comment", g.comment(), 30);
    Transaction tx(*db_);
    pb::Gateway body = g;
    body.clear_name();
    int64_t version =
        Upsert(*db_, kGateways, 0, g.name(), check, g.is_new(), g.version(), Body(body));
    tx.Commit();
    return version;
}

std::vector<pb::GatewayUser> Store::ListGatewayUsers(const std::string& gateway) {
    std::lock_guard lock(mutex_);
    auto users = ReadAll<pb::GatewayUser>(
        *db_,
        "SELECT address, version, body FROM gateway_users WHERE gateway_id = ? ORDER BY address",
        &pb::GatewayUser::set_mail_address, RequireGateway(*db_, gateway));
    for (auto& u : users) u.set_gateway(gateway);
    return users;
}

pb::GatewayUser Store::GetGatewayUser(const std::string& gateway, const std::string& address) {
    std::lock_guard lock(mutex_);
    auto u = ReadOne<pb::GatewayUser>(*db_, kGatewayUsers, RequireGateway(*db_, gateway), address,
                                      &pb::GatewayUser::set_mail_address);
    u.set_gateway(gateway);
    return u;
}

int64_t Store::CommitGatewayUser(const pb::GatewayUser& u) {
    std::lock_guard lock(mutex_);
    auto check = GatewayUserCheck(u.gateway(), u.mail_address());
    check.Text("the mail address", u.mail_address(), 80, true, true);
    check.Text("the extension", u.extension(), 20);
    Transaction tx(*db_);
    int64_t gateway = RequireGateway(*db_, u.gateway());
    pb::GatewayUser body = u;
    body.clear_gateway();
    body.clear_mail_address();
    int64_t version = Upsert(*db_, kGatewayUsers, gateway, u.mail_address(), check, u.is_new(),
                             u.version(), Body(body));
    tx.Commit();
    return version;
}

void Store::DeleteGatewayUser(const std::string& gateway, const std::string& address,
                              int64_t expectedVersion) {
    std::lock_guard lock(mutex_);
    Transaction tx(*db_);
    DeleteRow(*db_, kGatewayUsers, RequireGateway(*db_, gateway), address,
              GatewayUserCheck(gateway, address), expectedVersion);
    tx.Commit();
}

// ---------------------------------------------------------------------------
// Administrator settings

namespace {

void AddChoices(pb::AdminSettings& s) {
    s.clear_map_error_choices();
    int code = 0;
    for (const char* key : {"MapErrorNone", "MapErrorNoAnswer", "MapErrorAll"}) {
        auto* choice = s.add_map_error_choices();
        choice->set_code(code++);
        choice->set_label_key(key);
    }
}

}  // namespace

pb::AdminSettings Store::GetAdminSettings() {
    std::lock_guard lock(mutex_);
    pb::AdminSettings s;
    auto st = db_->Prepare("SELECT version, body FROM admin_settings WHERE id = 1");
    if (st.Step()) {
        s = ParseBody<pb::AdminSettings>(st.Blob(1));
        s.set_version(st.Int(0));
    } else {
        s.set_login_idle_timeout(900);
        s.set_mail_language("en");
        s.set_smtp_gateway_user("SMTPnative");
        s.set_address_book_blocksize(64);
        s.set_journal_blocksize(64);
    }
    AddChoices(s);
    return s;
}

int64_t Store::CommitAdminSettings(const pb::AdminSettings& s) {
    std::lock_guard lock(mutex_);
    FieldCheck check{"administrator settings"};
    check.Range("the login idle time-out", s.login_idle_timeout(), 0, 2147483647);
    check.Text("the mail language", s.mail_language(), 20);
    check.Range("the error mapping", s.map_error_to_busy(), 0, 2);
    const std::string& smtp = s.smtp_gateway_user();
    check.Text("the SMTP gateway user", smtp, 80);
    if (!smtp.empty() && smtp != "SMTPnative" && smtp.find('@') == std::string::npos)
        check.Fail(pb::ERROR_INVALID_ARGUMENT,
                   "the SMTP gateway user must be user@host or SMTPnative");
    check.Range("the address book block size", s.address_book_blocksize(), 2, 2147483647);
    check.Range("the journal block size", s.journal_blocksize(), 2, 2147483647);
    check.Text("the compatibility", s.compatibility(), 80);
    Transaction tx(*db_);
    RequireUserRef(*db_, check, "the send copy user", s.send_copy_user());
    RequireUserRef(*db_, check, "the receive copy user", s.receive_copy_user());
    auto st = db_->Prepare("SELECT version FROM admin_settings WHERE id = 1");
    bool exists = st.Step();
    // There is always one settings record: before the first commit the
    // defaults stand in for it with version 0.
    if (!exists && s.version() != 0) ThrowConflict();
    int64_t version =
        NextVersion(check, !exists, exists ? 1 : 0, exists ? st.Int(0) : 0, s.version());
    pb::AdminSettings body = s;
    body.clear_map_error_choices();
    db_->Prepare(
           "INSERT INTO admin_settings(id, version, body) VALUES(1, ?, ?) "
           "ON CONFLICT(id) DO UPDATE SET version = excluded.version, body = excluded.body")
        .Bind(1, version)
        .BindBlob(2, Body(body))
        .Run();
    tx.Commit();
    return version;
}

}  // namespace veldrano::server
