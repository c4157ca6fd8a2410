// Users of a server, their scanners, and the installation's groups.

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/wire_format_lite.h>

#include <algorithm>
#include <set>

#include "store/Store.h"
#include "store/StoreDetail.h"

namespace veldrano::server {

using namespace detail;

namespace {

constexpr int kPaperCount = 9;
const KeyedTable kUsers{"users", "name", "server_id"};
const KeyedTable kGroups{"groups", "name"};
constexpr int64_t kMaxInt32 = 2147483647;

FieldCheck UserCheck(const std::string& host, const std::string& name) {
    return {"user '" + name + "@" + host + "'"};
}

pb::User UserDefaults(const std::string& host, const std::string& name) {
    pb::User u;
    u.set_host_name(host);
    u.set_name(name);
    u.set_admin_priority(100);
    u.set_priority(50);
    for (int i = 0; i < kPaperCount; ++i) u.add_background_paper(0);
    u.set_is_new(true);
    return u;
}

constexpr const char* kUserColumns =
    "SELECT u.name, u.version, u.password_hash IS NOT NULL, u.body FROM users u ";

pb::User ReadUser(Statement& st, const std::string& host) {
    auto u = ParseBody<pb::User>(st.Blob(3));
    u.set_host_name(host);
    u.set_name(st.Text(0));
    u.set_version(st.Int(1));
    u.set_password_set(st.Int(2) != 0);
    return u;
}

// The comment of a stored user body, read by skipping every other field: a
// list of a hundred thousand users would otherwise parse each whole record
// for the one field it shows.
std::string StoredComment(const std::string& body) {
    using google::protobuf::internal::WireFormatLite;
    google::protobuf::io::CodedInputStream input(reinterpret_cast<const uint8_t*>(body.data()),
                                                 int(body.size()));
    std::string comment;
    while (const uint32_t tag = input.ReadTag()) {
        const bool isComment =
            WireFormatLite::GetTagFieldNumber(tag) == pb::User::kCommentFieldNumber &&
            WireFormatLite::GetTagWireType(tag) == WireFormatLite::WIRETYPE_LENGTH_DELIMITED;
        // A later occurrence of a field wins, as in a full parse.
        if (isComment ? !WireFormatLite::ReadString(&input, &comment)
                      : !WireFormatLite::SkipField(&input, tag))
            throw ServiceError(pb::ERROR_STORE_FAILURE, "a stored record cannot be read");
    }
    if (!input.ConsumedEntireMessage())
        throw ServiceError(pb::ERROR_STORE_FAILURE, "a stored record cannot be read");
    return comment;
}

}  // namespace

void Store::ForEachUserListRow(const std::string& host, const std::function<void(pb::User&)>& f) {
    Snapshot snapshot(*this);
    int64_t server = RequireServer(snapshot.db(), host);
    auto st = snapshot.db().Prepare(
        "SELECT u.name, u.body FROM users u WHERE u.server_id = ? ORDER BY u.name");
    st.Bind(1, server);
    pb::User row;
    while (st.Step()) {
        row.set_name(st.Text(0));
        row.set_comment(StoredComment(st.Blob(1)));
        f(row);
    }
}

void Store::ForEachUser(const std::string& host, const std::function<void(pb::User&)>& f) {
    Snapshot snapshot(*this);
    int64_t server = RequireServer(snapshot.db(), host);
    auto st =
        snapshot.db().Prepare(std::string(kUserColumns) + "WHERE u.server_id = ? ORDER BY u.name");
    st.Bind(1, server);
    while (st.Step()) {
        auto u = ReadUser(st, host);
        f(u);
    }
}

std::vector<pb::User> Store::ListUsers(const std::string& host) {
    std::vector<pb::User> result;
    ForEachUser(host, [&](pb::User& u) { result.push_back(std::move(u)); });
    return result;
}

pb::User Store::GetUser(const std::string& host, const std::string& name) {
    std::lock_guard lock(mutex_);
    int64_t server = RequireServer(*db_, host);
    auto st = db_->Prepare(std::string(kUserColumns) + "WHERE u.server_id = ? AND u.name = ?");
    st.Bind(1, server).Bind(2, name);
    return st.Step() ? ReadUser(st, host) : UserDefaults(host, name);
}

int64_t Store::CommitUser(const pb::User& u) {
    std::lock_guard lock(mutex_);
    auto check = UserCheck(u.host_name(), u.name());
    check.Text("the user name", u.name(), 10, true, true);
    check.Text("the comment", u.comment(), 30, true);
    check.Range("the admin priority", u.admin_priority(), 1, 32000);
    check.Text("the bar code", u.bar_code(), 20);
    check.Text("the CPI", u.cpi(), 20);
    check.Text("the PIN code", u.pin_code(), 20);
    check.Text("the headlines", u.headlines(), 80);
    check.Range("the priority", u.priority(), 1, 100);
    check.Text("the TSI", u.tsi(), 20);
    check.Range("the resolution", u.resolution(), 0, 2);
    bool mail = u.mail_if_new_received() || u.mail_if_send_failed() || u.mail_if_send_succeeded();
    bool print =
        u.print_if_new_received() || u.print_if_send_failed() || u.print_if_send_succeeded();
    bool signal = u.light_if_new_received() || u.light_if_send_failed() ||
                  u.light_if_send_succeeded() || u.voice_if_new_received() ||
                  u.voice_if_send_failed() || u.voice_if_send_succeeded();
    check.Text("the mail address", u.mail_address(), 80, mail);
    check.Text("the phone signal number", u.phone_signal_nr(), 20, signal);
    if (print && u.printer().empty())
        check.Fail(pb::ERROR_REQUIRED, "a print action needs a printer");
    check.Range("the background default", u.background_default(), 0, kMaxInt32);
    if (u.background_paper_size() != kPaperCount)
        check.Fail(pb::ERROR_INVALID_ARGUMENT, "the background needs exactly 9 paper values");
    for (int64_t paper : u.background_paper())
        check.Range("a background paper value", paper, 0, kMaxInt32);
    if (u.extras_size() > 1000) check.Fail(pb::ERROR_REQUEST_TOO_LARGE, "too many extras");
    std::set<std::string> names;
    for (const auto& extra : u.extras()) {
        check.Text("an extra's name", extra.name(), 40, true);
        check.Text("an extra's value", extra.value(), 80);
        if (!names.insert(extra.name()).second)
            check.Fail(pb::ERROR_INVALID_ARGUMENT, "the extra '" + extra.name() + "' is twice");
    }

    Transaction tx(*db_);
    int64_t server = RequireServer(*db_, u.host_name());
    RequireRole(*db_, server, &pb::Server::user_server, check, "user server");
    if (!u.printer().empty() &&
        !FindId(*db_, "SELECT id FROM printers WHERE server_id = ? AND name = ?", server,
                u.printer()))
        check.Fail(pb::ERROR_UNKNOWN_REFERENCE, "the printer '" + u.printer() + "' is unknown");
    if (!u.scanner().empty()) {
        auto scanners = ListScanners(u.host_name());
        if (std::find(scanners.begin(), scanners.end(), u.scanner()) == scanners.end())
            check.Fail(pb::ERROR_UNKNOWN_REFERENCE, "the scanner '" + u.scanner() + "' is unknown");
    }
    RequireUserRef(*db_, check, "the substitute", u.substitute());

    pb::User body = u;
    body.clear_host_name();
    body.clear_name();
    body.clear_password_set();
    int64_t version =
        Upsert(*db_, kUsers, server, u.name(), check, u.is_new(), u.version(), Body(body));
    tx.Commit();
    return version;
}

void Store::DeleteUser(const std::string& host, const std::string& name, int64_t expectedVersion) {
    std::lock_guard lock(mutex_);
    Transaction tx(*db_);
    // Group memberships go with the user through the schema's cascade.
    DeleteRow(*db_, kUsers, RequireServer(*db_, host), name, UserCheck(host, name),
              expectedVersion);
    RefuseDanglingReferences(*db_, UserCheck(host, name));
    tx.Commit();
}

void Store::SetUserPasswordHash(const std::string& host, const std::string& name,
                                const std::string& hash) {
    std::lock_guard lock(mutex_);
    int64_t id = UserId(*db_, host, name);
    if (!id) UserCheck(host, name).Fail(pb::ERROR_NOT_FOUND, "does not exist");
    // The password is no property the editor shows: setting it leaves the
    // record's version alone, so an editor open on the user can still save.
    db_->Prepare("UPDATE users SET password_hash = NULLIF(?, '') WHERE id = ?")
        .Bind(1, hash)
        .Bind(2, id)
        .Run();
}

std::vector<std::string> Store::ListScanners(const std::string& host) {
    std::lock_guard lock(mutex_);
    int64_t server = RequireServer(*db_, host);
    std::set<int32_t> scannerTypes;
    for (const auto& type : DeviceTypes())
        if (type.is_scanner()) scannerTypes.insert(type.id());
    std::vector<std::string> result;
    auto st = db_->Prepare("SELECT name, body FROM devices WHERE server_id = ? ORDER BY name");
    st.Bind(1, server);
    while (st.Step())
        if (scannerTypes.count(ParseBody<pb::Device>(st.Blob(1)).type()))
            result.push_back(st.Text(0));
    return result;
}

// ---------------------------------------------------------------------------
// Groups

namespace {

FieldCheck GroupCheck(const std::string& name) {
    return {"group '" + name + "'"};
}

// withComments: the members' comments as well (GetGroup), read from their
// own rows, so that showing a group never needs its members' servers' users.
pb::Group ReadGroup(Database& db, int64_t id, const std::string& name, int64_t version,
                    const std::string& body, bool withComments) {
    auto g = ParseBody<pb::Group>(body);
    g.set_name(name);
    g.set_version(version);
    g.clear_members();
    g.clear_member_comments();
    auto st = db.Prepare(std::string("SELECT u.name, s.name") + (withComments ? ", u.body" : "") +
                         " FROM group_members m JOIN users u ON u.id = m.user_id "
                         "JOIN servers s ON s.id = u.server_id WHERE m.group_id = ? "
                         "ORDER BY m.position");
    st.Bind(1, id);
    while (st.Step()) {
        auto* member = g.add_members();
        member->set_user_name(st.Text(0));
        member->set_host_name(st.Text(1));
        if (withComments) g.add_member_comments(ParseBody<pb::User>(st.Blob(2)).comment());
    }
    return g;
}

}  // namespace

std::vector<pb::Group> Store::ListGroups() {
    std::lock_guard lock(mutex_);
    std::vector<pb::Group> result;
    auto st = db_->Prepare("SELECT id, name, version, body FROM groups ORDER BY name");
    while (st.Step())
        result.push_back(ReadGroup(*db_, st.Int(0), st.Text(1), st.Int(2), st.Blob(3), false));
    return result;
}

pb::Group Store::GetGroup(const std::string& name) {
    std::lock_guard lock(mutex_);
    auto st = db_->Prepare("SELECT id, name, version, body FROM groups WHERE name = ?");
    st.Bind(1, name);
    if (st.Step()) return ReadGroup(*db_, st.Int(0), st.Text(1), st.Int(2), st.Blob(3), true);
    pb::Group g;
    g.set_name(name);
    g.set_is_new(true);
    return g;
}

int64_t Store::CommitGroup(const pb::Group& g) {
    std::lock_guard lock(mutex_);
    auto check = GroupCheck(g.name());
    check.Text("the group name", g.name(), 20, true, true);
    check.Text("the comment", g.comment(), 30, true);
    Transaction tx(*db_);
    std::vector<int64_t> members;
    std::set<int64_t> seen;
    for (const auto& ref : g.members()) {
        int64_t user = UserId(*db_, ref.host_name(), ref.user_name());
        if (!user)
            check.Fail(pb::ERROR_UNKNOWN_REFERENCE, "the member " + RefText(ref) + " is unknown");
        if (!seen.insert(user).second)
            check.Fail(pb::ERROR_INVALID_ARGUMENT, "the member " + RefText(ref) + " is twice");
        members.push_back(user);
    }
    pb::Group body = g;
    body.clear_name();
    body.clear_members();
    // The comments belong to the users; a copy here would go stale.
    body.clear_member_comments();
    int64_t id = 0;
    int64_t version =
        Upsert(*db_, kGroups, 0, g.name(), check, g.is_new(), g.version(), Body(body), &id);
    db_->Prepare("DELETE FROM group_members WHERE group_id = ?").Bind(1, id).Run();
    auto insert =
        db_->Prepare("INSERT INTO group_members(group_id, user_id, position) VALUES(?, ?, ?)");
    for (size_t i = 0; i < members.size(); ++i) {
        insert.Bind(1, id).Bind(2, members[i]).Bind(3, static_cast<int64_t>(i));
        insert.Run();
        insert.Reset();
    }
    tx.Commit();
    return version;
}

void Store::DeleteGroup(const std::string& name, int64_t expectedVersion) {
    std::lock_guard lock(mutex_);
    Transaction tx(*db_);
    DeleteRow(*db_, kGroups, 0, name, GroupCheck(name), expectedVersion);
    RefuseDanglingReferences(*db_, GroupCheck(name));
    tx.Commit();
}

}  // namespace veldrano::server
