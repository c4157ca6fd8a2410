// Copy and move between servers (users, printers, devices) and between
// gateways (gateway users). One transaction: the public calls used inside it
// nest as savepoints, so any refusal rolls back the deletion from the source
// as well as the addition to the target.

#include <functional>
#include <set>

#include "store/Store.h"
#include "store/StoreDetail.h"

namespace veldrano::server {

using namespace detail;

namespace {

// What a transfer does with one kind of object; the steps a paste needs.
struct Transferable {
    std::function<bool(const std::string& host)> exists;  // the object at host
    std::function<void()> remove;                         // from the source
    std::function<void(const std::string& target)> add;   // the copy, at target
};

}  // namespace

pb::TransferOutcome Store::TransferObject(const pb::TransferRequest& r) {
    static const std::set<std::string> kKinds = {"User", "Printer", "Device", "GatewayUser"};
    if (!kKinds.count(r.kind()))
        throw ServiceError(pb::ERROR_INVALID_ARGUMENT,
                           "objects of kind '" + r.kind() + "' are not copied");
    std::lock_guard lock(mutex_);
    Transaction tx(*db_);
    const std::string& name = r.name();
    Transferable object;
    if (r.kind() == "GatewayUser") {
        for (const std::string* gateway : {&r.source(), &r.target()})
            if (!RowId(*db_, {"gateways", "name"}, 0, *gateway)) return pb::TRANSFER_STOPPED;
        const pb::GatewayUser user = GetGatewayUser(r.source(), name);
        object = {
            [&](const std::string& gateway) { return !GetGatewayUser(gateway, name).is_new(); },
            [&] { DeleteGatewayUser(r.source(), name); },
            [&, user](const std::string& gateway) {
                pb::GatewayUser copy = user;
                copy.set_gateway(gateway);
                copy.set_version(0);
                copy.set_is_new(true);
                CommitGatewayUser(copy);
            }};
    } else {
        // Both servers there, and neither blocking.
        for (const std::string* host : {&r.source(), &r.target()}) {
            const pb::Server server = GetServer(*host);
            if (server.is_new() || server.blocking()) return pb::TRANSFER_STOPPED;
        }
        if (r.kind() == "User") {
            const pb::User user = GetUser(r.source(), name);
            std::string hash;
            auto st = db_->Prepare("SELECT COALESCE(password_hash, '') FROM users WHERE id = ?");
            st.Bind(1, UserId(*db_, r.source(), name));
            if (st.Step()) hash = st.Text(0);
            object = {[&](const std::string& host) { return !GetUser(host, name).is_new(); },
                      [&] { DeleteUser(r.source(), name); },
                      [&, user, hash](const std::string& host) {
                          pb::User copy = user;
                          copy.set_host_name(host);
                          copy.set_version(0);
                          copy.set_is_new(true);
                          CommitUser(copy);
                          // The same person, with the same password.
                          if (!hash.empty()) SetUserPasswordHash(host, name, hash);
                      }};
        } else if (r.kind() == "Printer") {
            const pb::Printer printer = GetPrinter(r.source(), name);
            object = {[&](const std::string& host) { return !GetPrinter(host, name).is_new(); },
                      [&] { DeletePrinter(r.source(), name); },
                      [&, printer](const std::string& host) {
                          pb::Printer copy = printer;
                          copy.set_host_name(host);
                          copy.set_version(0);
                          copy.set_is_new(true);
                          CommitPrinter(copy);
                      }};
        } else {
            // With every configured line, in this one commit.
            const pb::Device device = GetDevice(r.source(), name);
            object = {[&](const std::string& host) { return !GetDevice(host, name).is_new(); },
                      [&] { DeleteDevice(r.source(), name); },
                      [&, device](const std::string& host) {
                          pb::Device copy = device;
                          copy.set_host_name(host);
                          copy.set_version(0);
                          copy.set_is_new(true);
                          copy.clear_secondary_lines();
                          CommitDevice(copy);
                          for (pb::DeviceLine line : device.secondary_lines()) {
                              line.set_version(0);
                              SaveDeviceLine(host, name, line);
                          }
                      }};
        }
    }
    if (!object.exists(r.source())) return pb::TRANSFER_STOPPED;
    // A cut object leaves the source first; when the target has the name, it
    // is not added there either. The console's Paste has always done this.
    if (r.cut()) object.remove();
    const bool taken = object.exists(r.target());
    if (!taken) object.add(r.target());
    tx.Commit();
    return taken ? pb::TRANSFER_TARGET_EXISTS : pb::TRANSFERRED;
}

}  // namespace veldrano::server
