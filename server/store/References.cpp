// The references between records that live in record bodies: a route names
// its target user, its group and its poll server; a user names the printer of
// its print action. A deletion runs this check inside its transaction after
// deleting (cascades included), so that whatever it took away, one record or
// a whole server, it is refused as a whole when something still names it.

#include <vector>

#include "store/Store.h"
#include "store/StoreDetail.h"

namespace veldrano::server::detail {

namespace {

// The refusal lists a few of the records that still name something; the
// administrator changes those first.
constexpr size_t kNamedInMessage = 5;

void CheckRoutes(Database& db, std::vector<std::string>& namers) {
    auto routes = db.Prepare("SELECT name, body FROM routes ORDER BY name");
    while (routes.Step()) {
        const auto route = ParseBody<pb::Route>(routes.Blob(1));
        const std::string name = "route '" + routes.Text(0) + "'";
        const pb::UserRef& user = route.user();
        if (!IsEmptyRef(user) && !UserId(db, user.host_name(), user.user_name()))
            namers.push_back(name + " names the user '" + RefText(user) + "'");
        if (!route.group().empty() && !RowId(db, {"groups", "name"}, 0, route.group()))
            namers.push_back(name + " names the group '" + route.group() + "'");
        if (!route.poll_server().empty() && !ServerId(db, route.poll_server()))
            namers.push_back(name + " polls the server '" + route.poll_server() + "'");
    }
}

void CheckUserPrinters(Database& db, int64_t serverId, std::vector<std::string>& namers) {
    auto users = db.Prepare("SELECT name, body FROM users WHERE server_id = ? ORDER BY name");
    users.Bind(1, serverId);
    while (users.Step()) {
        const auto user = ParseBody<pb::User>(users.Blob(1));
        if (!user.printer().empty() &&
            !RowId(db, {"printers", "name", "server_id"}, serverId, user.printer()))
            namers.push_back("user '" + users.Text(0) + "' prints on '" + user.printer() + "'");
    }
}

}  // namespace

void RefuseDanglingReferences(Database& db, const FieldCheck& deleted, int64_t printerServerId) {
    std::vector<std::string> namers;
    CheckRoutes(db, namers);
    if (printerServerId) CheckUserPrinters(db, printerServerId, namers);
    if (namers.empty()) return;
    std::string message = "would leave references behind: ";
    for (size_t i = 0; i < namers.size() && i < kNamedInMessage; ++i)
        message += (i ? "; " : "") + namers[i];
    if (namers.size() > kNamedInMessage)
        message += "; and " + std::to_string(namers.size() - kNamedInMessage) + " more";
    deleted.Fail(pb::ERROR_STILL_NAMED, message);
}

}  // namespace veldrano::server::detail
