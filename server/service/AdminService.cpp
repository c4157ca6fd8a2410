#include "service/AdminService.h"

#include <ctime>

#include "service/Labels.h"
#include "service/Log.h"
#include "sim/Simulator.h"
#include "store/Store.h"

namespace veldrano::server {

namespace {

grpc::StatusCode TransportCode(pb::Error code) {
    switch (code) {
        case pb::ERROR_ACCESS_DENIED:
            return grpc::StatusCode::UNAUTHENTICATED;
        case pb::ERROR_THROTTLED:
            return grpc::StatusCode::RESOURCE_EXHAUSTED;
        case pb::ERROR_SERVER_BUSY:
            return grpc::StatusCode::UNAVAILABLE;
        case pb::ERROR_VERSION_CONFLICT:
            return grpc::StatusCode::ABORTED;
        case pb::ERROR_NOT_FOUND:
            return grpc::StatusCode::NOT_FOUND;
        case pb::ERROR_ALREADY_EXISTS:
            return grpc::StatusCode::ALREADY_EXISTS;
        case pb::ERROR_STORE_FAILURE:
            return grpc::StatusCode::INTERNAL;
        case pb::ERROR_LINE_NOT_CONFIGURED:
        case pb::ERROR_ROLE_MISSING:
        case pb::ERROR_ROLE_OBJECTS_REMAIN:
        case pb::ERROR_STILL_NAMED:
            return grpc::StatusCode::FAILED_PRECONDITION;
        default:
            return grpc::StatusCode::INVALID_ARGUMENT;
    }
}

// The client's address without its port, so that throttling follows the
// workstation rather than the connection.
std::string ClientOf(grpc::ServerContext* context) {
    std::string peer = context->peer();
    size_t colon = peer.rfind(':');
    size_t scheme = peer.find(':');
    return colon != std::string::npos && colon != scheme ? peer.substr(0, colon) : peer;
}

std::string TokenOf(grpc::ServerContext* context) {
    const auto& metadata = context->client_metadata();
    auto it = metadata.find("veldrano-token");
    return it == metadata.end() ? std::string() : std::string(it->second.data(), it->second.size());
}

constexpr const char* kVersion = "1.0.0";

// A detail quotes what the request brought ('a key', 'a name'). A quoted
// value is cut to its first kEchoChars characters and the detail to about
// kDetailBytes, so that a refusal of a huge value stays a small answer that
// every client can read.
constexpr size_t kEchoChars = 40;
constexpr size_t kDetailBytes = 400;

std::string ShortenEchoes(const std::string& detail) {
    std::string out;
    out.reserve(std::min(detail.size(), kDetailBytes + 8));
    bool quoted = false, cut = false;
    size_t chars = 0;
    for (const char c : detail) {
        const bool startsCharacter = (static_cast<unsigned char>(c) & 0xC0) != 0x80;
        if (startsCharacter && out.size() >= kDetailBytes) {
            out += "...";
            break;
        }
        if (c == '\'') {
            if (quoted && cut) out += "...";
            quoted = !quoted;
            cut = false;
            chars = 0;
        } else if (quoted) {
            if (startsCharacter) ++chars;
            if (chars > kEchoChars) {
                cut = true;
                continue;
            }
        }
        out += c;
    }
    return out;
}

bool IsCallerNoise(pb::Error code) {
    return code == pb::ERROR_ACCESS_DENIED || code == pb::ERROR_THROTTLED ||
           code == pb::ERROR_PROTOCOL;
}

}  // namespace

grpc::Status ErrorStatus(pb::Error code, const std::string& detail) {
    auto info = DescribeError(code);
    pb::ErrorDetail error;
    error.set_number(info.number);
    const std::string shortDetail = ShortenEchoes(detail);
    error.set_description(shortDetail.empty() ? info.description
                                              : info.description + ": " + shortDetail);
    error.set_source(info.source);
    return grpc::Status(TransportCode(code), error.description(), error.SerializeAsString());
}

AdminService::AdminService(Store& store, Auth& auth, Simulator& simulator,
                           std::chrono::milliseconds writeTimeout)
    : store_(store), auth_(auth), simulator_(simulator), watchdog_(writeTimeout) {}

grpc::Status AdminService::Guard(grpc::ServerContext* context, const std::function<void()>& body,
                                 bool needsToken, const char* call) {
    pb::Error code = pb::ERROR_NONE;
    std::string detail;
    try {
        if (needsToken) auth_.Check(TokenOf(context));
        body();
        return grpc::Status::OK;
    } catch (const ServiceError& e) {
        code = e.code();
        detail = e.what();
    } catch (const std::bad_alloc&) {
        code = pb::ERROR_REQUEST_TOO_LARGE;
    } catch (const std::exception& e) {
        code = pb::ERROR_STORE_FAILURE;
        detail = e.what();
    }
    grpc::Status status = ErrorStatus(code, detail);
    // Anyone who reaches the port can cause refusals without a session;
    // those are rate-limited. The password is never part of a message.
    const std::string line =
        std::string(call) + " from " + context->peer() + " refused: " + status.error_message();
    if (code == pb::ERROR_STORE_FAILURE)
        Log(LogLevel::Error, line);
    else if (IsCallerNoise(code))
        LogNoise(needsToken ? LogLevel::Info : LogLevel::Warning, line);
    else
        Log(LogLevel::Info, line);
    return status;
}

// ---------------------------------------------------------------------------
// Session

grpc::Status AdminService::Login(grpc::ServerContext* c, const pb::LoginRequest* req,
                                 pb::LoginReply* reply) {
    return Guard(
        c,
        [&] {
            reply->set_token(auth_.Login(ClientOf(c), req->password()));
            Log(LogLevel::Notice, "login from " + c->peer() + " accepted");
            std::string host = req->host_name();
            host.erase(0, host.find_first_not_of(' '));
            host.erase(host.find_last_not_of(' ') + 1);
            reply->set_host_name(host);
            reply->set_token_idle_seconds(static_cast<int32_t>(auth_.IdleLimit().count()));
        },
        false);
}

grpc::Status AdminService::GetSessionInfo(grpc::ServerContext* c, const pb::Empty*,
                                          pb::SessionInfo* reply) {
    return Guard(c, [&] {
        reply->set_brand(store_.GetMeta("brand", "kelvar"));
        reply->set_server_level(std::stoi(store_.GetMeta("server_level", "5")));
        reply->set_second_version(std::stoi(store_.GetMeta("second_version", "7")));
        reply->set_default_timeout_seconds(30);
        const auto& labels = Labels(store_.GetMeta("language", "en"));
        reply->set_language(labels.language);
        reply->set_label_stamp(labels.stamp);
        reply->set_product_version(kVersion);
    });
}

grpc::Status AdminService::GetLabels(grpc::ServerContext* c, const pb::LabelsRequest* req,
                                     pb::LabelTable* reply) {
    return Guard(c, [&] {
        const auto& labels = Labels(store_.GetMeta("language", "en"));
        reply->set_stamp(labels.stamp);
        reply->set_language(labels.language);
        if (req->known_stamp() == labels.stamp) {
            reply->set_unchanged(true);
            return;
        }
        for (const auto& [key, text] : labels.entries) {
            auto* label = reply->add_labels();
            label->set_key(key);
            label->set_text(text);
        }
    });
}

grpc::Status AdminService::SetAdminPassword(grpc::ServerContext* c,
                                            const pb::ChangePasswordRequest* req, pb::Empty*) {
    // The caller keeps its session; every other console logs in again.
    return Guard(c, [&] {
        auth_.ChangePassword(req->new_password(), TokenOf(c));
        Log(LogLevel::Notice,
            "administrator password changed from " + c->peer() + "; every other session ended");
    });
}

// ---------------------------------------------------------------------------
// Records

grpc::Status AdminService::GetServer(grpc::ServerContext* c, const pb::Key* k, pb::Server* r) {
    return Guard(c, [&] { *r = store_.GetServer(k->name()); });
}
grpc::Status AdminService::CommitServer(grpc::ServerContext* c, const pb::CommitServerRequest* req,
                                        pb::CommitReply* r) {
    return Guard(c, [&] {
        r->set_version(store_.CommitServer(req->server(), req->delete_objects()));
        // A new server comes with its process slots, like an installed host.
        if (req->server().is_new()) simulator_.EnsureProcessSlots();
    });
}
grpc::Status AdminService::DeleteServer(grpc::ServerContext* c, const pb::DeleteRequest* d,
                                        pb::Empty*) {
    return Guard(c, [&] { store_.DeleteServer(d->key().name(), d->expected_version()); });
}

grpc::Status AdminService::GetUser(grpc::ServerContext* c, const pb::Key* k, pb::User* r) {
    return Guard(c, [&] { *r = store_.GetUser(k->host_name(), k->name()); });
}
grpc::Status AdminService::CommitUser(grpc::ServerContext* c, const pb::User* u,
                                      pb::CommitReply* r) {
    return Guard(c, [&] { r->set_version(store_.CommitUser(*u)); });
}
grpc::Status AdminService::DeleteUser(grpc::ServerContext* c, const pb::DeleteRequest* d,
                                      pb::Empty*) {
    return Guard(c, [&] {
        store_.DeleteUser(d->key().host_name(), d->key().name(), d->expected_version());
    });
}
grpc::Status AdminService::SetUserPassword(grpc::ServerContext* c,
                                           const pb::SetUserPasswordRequest* req, pb::Empty*) {
    return Guard(c, [&] {
        // An empty password removes the user's password; any other must
        // meet the same rule as the administrator's.
        const std::string& password = req->new_password();
        if (!password.empty()) CheckNewPassword(password);
        store_.SetUserPasswordHash(req->host_name(), req->name(),
                                   password.empty() ? std::string() : HashPassword(password));
    });
}
grpc::Status AdminService::ListScanners(grpc::ServerContext* c, const pb::ListRequest* req,
                                        pb::ScannerList* r) {
    return Guard(c, [&] {
        for (auto& name : store_.ListScanners(req->host_name())) r->add_names(name);
    });
}

grpc::Status AdminService::GetGroup(grpc::ServerContext* c, const pb::Key* k, pb::Group* r) {
    return Guard(c, [&] { *r = store_.GetGroup(k->name()); });
}
grpc::Status AdminService::CommitGroup(grpc::ServerContext* c, const pb::Group* g,
                                       pb::CommitReply* r) {
    return Guard(c, [&] { r->set_version(store_.CommitGroup(*g)); });
}
grpc::Status AdminService::DeleteGroup(grpc::ServerContext* c, const pb::DeleteRequest* d,
                                       pb::Empty*) {
    return Guard(c, [&] { store_.DeleteGroup(d->key().name(), d->expected_version()); });
}

grpc::Status AdminService::GetPrinter(grpc::ServerContext* c, const pb::Key* k, pb::Printer* r) {
    return Guard(c, [&] { *r = store_.GetPrinter(k->host_name(), k->name()); });
}
grpc::Status AdminService::CommitPrinter(grpc::ServerContext* c, const pb::Printer* p,
                                         pb::CommitReply* r) {
    return Guard(c, [&] { r->set_version(store_.CommitPrinter(*p)); });
}
grpc::Status AdminService::DeletePrinter(grpc::ServerContext* c, const pb::DeleteRequest* d,
                                         pb::Empty*) {
    return Guard(c, [&] {
        store_.DeletePrinter(d->key().host_name(), d->key().name(), d->expected_version());
    });
}

grpc::Status AdminService::ListDeviceTypes(grpc::ServerContext* c, const pb::Empty*,
                                           pb::DeviceTypeList* r) {
    return Guard(c, [&] {
        for (const auto& t : Store::DeviceTypes()) *r->add_types() = t;
    });
}
grpc::Status AdminService::GetDevice(grpc::ServerContext* c, const pb::DeviceKey* k,
                                     pb::Device* r) {
    return Guard(c, [&] { *r = store_.OpenDevice(k->host_name(), k->name(), k->new_type()); });
}
grpc::Status AdminService::CommitDevice(grpc::ServerContext* c, const pb::Device* d,
                                        pb::CommitReply* r) {
    return Guard(c, [&] { r->set_version(store_.CommitDevice(*d)); });
}
grpc::Status AdminService::DeleteDevice(grpc::ServerContext* c, const pb::DeleteRequest* d,
                                        pb::Empty*) {
    return Guard(c, [&] {
        store_.DeleteDevice(d->key().host_name(), d->key().name(), d->expected_version());
    });
}
grpc::Status AdminService::SaveDeviceLine(grpc::ServerContext* c, const pb::SaveLineRequest* req,
                                          pb::CommitReply* r) {
    return Guard(c, [&] {
        r->set_version(store_.SaveDeviceLine(req->host_name(), req->device(), req->line()));
    });
}
grpc::Status AdminService::DeleteDeviceLine(grpc::ServerContext* c, const pb::LineRequest* req,
                                            pb::Empty*) {
    return Guard(c,
                 [&] { store_.DeleteDeviceLine(req->host_name(), req->device(), req->number()); });
}
grpc::Status AdminService::ChangeDeviceType(grpc::ServerContext* c, const pb::DeviceTypeChange* req,
                                            pb::CommitReply* r) {
    return Guard(c, [&] {
        r->set_version(store_.ChangeDeviceType(req->host_name(), req->device(), req->type(),
                                               req->expected_version()));
    });
}
grpc::Status AdminService::TransferObject(grpc::ServerContext* c, const pb::TransferRequest* req,
                                          pb::TransferReply* r) {
    return Guard(c, [&] { r->set_outcome(store_.TransferObject(*req)); });
}

grpc::Status AdminService::GetRoute(grpc::ServerContext* c, const pb::Key* k, pb::Route* r) {
    return Guard(c, [&] { *r = store_.GetRoute(k->name()); });
}
grpc::Status AdminService::CommitRoute(grpc::ServerContext* c, const pb::Route* route,
                                       pb::CommitReply* r) {
    return Guard(c, [&] { r->set_version(store_.CommitRoute(*route)); });
}
grpc::Status AdminService::DeleteRoute(grpc::ServerContext* c, const pb::DeleteRequest* d,
                                       pb::Empty*) {
    return Guard(c, [&] { store_.DeleteRoute(d->key().name(), d->expected_version()); });
}

grpc::Status AdminService::GetNumberMapping(grpc::ServerContext* c, const pb::Key* k,
                                            pb::NumberMapping* r) {
    return Guard(c, [&] { *r = store_.GetNumberMapping(k->name()); });
}
grpc::Status AdminService::CommitNumberMapping(grpc::ServerContext* c, const pb::NumberMapping* m,
                                               pb::CommitReply* r) {
    return Guard(c, [&] { r->set_version(store_.CommitNumberMapping(*m)); });
}
grpc::Status AdminService::DeleteNumberMapping(grpc::ServerContext* c, const pb::DeleteRequest* d,
                                               pb::Empty*) {
    return Guard(c, [&] { store_.DeleteNumberMapping(d->key().name(), d->expected_version()); });
}

grpc::Status AdminService::GetGatewayUser(grpc::ServerContext* c, const pb::Key* k,
                                          pb::GatewayUser* r) {
    return Guard(c, [&] { *r = store_.GetGatewayUser(k->parent(), k->name()); });
}
grpc::Status AdminService::CommitGatewayUser(grpc::ServerContext* c, const pb::GatewayUser* u,
                                             pb::CommitReply* r) {
    return Guard(c, [&] { r->set_version(store_.CommitGatewayUser(*u)); });
}
grpc::Status AdminService::DeleteGatewayUser(grpc::ServerContext* c, const pb::DeleteRequest* d,
                                             pb::Empty*) {
    return Guard(c, [&] {
        store_.DeleteGatewayUser(d->key().parent(), d->key().name(), d->expected_version());
    });
}

grpc::Status AdminService::GetAdminSettings(grpc::ServerContext* c, const pb::Empty*,
                                            pb::AdminSettings* r) {
    return Guard(c, [&] { *r = store_.GetAdminSettings(); });
}
grpc::Status AdminService::CommitAdminSettings(grpc::ServerContext* c, const pb::AdminSettings* s,
                                               pb::CommitReply* r) {
    return Guard(c, [&] { r->set_version(store_.CommitAdminSettings(*s)); });
}

grpc::Status AdminService::ListZones(grpc::ServerContext* c, const pb::ListRequest*,
                                     pb::ZoneList* r) {
    return Guard(c, [&] { *r = store_.ListZones(); });
}
grpc::Status AdminService::GetZone(grpc::ServerContext* c, const pb::Key* k, pb::Zone* r) {
    return Guard(c, [&] { *r = store_.GetZone(k->name()); });
}
grpc::Status AdminService::CommitZone(grpc::ServerContext* c, const pb::Zone* z,
                                      pb::CommitReply* r) {
    return Guard(c, [&] { r->set_version(store_.CommitZone(*z)); });
}
grpc::Status AdminService::DeleteZone(grpc::ServerContext* c, const pb::DeleteRequest* d,
                                      pb::Empty*) {
    return Guard(c, [&] { store_.DeleteZone(d->key().name(), d->expected_version()); });
}
grpc::Status AdminService::GetRate(grpc::ServerContext* c, const pb::Key* k, pb::Rate* r) {
    return Guard(c, [&] { *r = store_.GetRate(k->parent(), k->index()); });
}
grpc::Status AdminService::CommitRate(grpc::ServerContext* c, const pb::Rate* rate,
                                      pb::CommitReply* r) {
    return Guard(c, [&] {
        int index = 0;
        r->set_version(store_.CommitRate(*rate, &index));
        r->set_index(index);
    });
}
grpc::Status AdminService::DeleteRate(grpc::ServerContext* c, const pb::DeleteRequest* d,
                                      pb::Empty*) {
    return Guard(c, [&] {
        store_.DeleteRate(d->key().parent(), d->key().index(), d->expected_version(), d->id());
    });
}
grpc::Status AdminService::GetDestination(grpc::ServerContext* c, const pb::Key* k,
                                          pb::Destination* r) {
    return Guard(c, [&] { *r = store_.GetDestination(k->parent(), k->index()); });
}
grpc::Status AdminService::CommitDestination(grpc::ServerContext* c, const pb::Destination* d,
                                             pb::CommitReply* r) {
    return Guard(c, [&] {
        int index = 0;
        r->set_version(store_.CommitDestination(*d, &index));
        r->set_index(index);
    });
}
grpc::Status AdminService::DeleteDestination(grpc::ServerContext* c, const pb::DeleteRequest* d,
                                             pb::Empty*) {
    return Guard(c, [&] {
        store_.DeleteDestination(d->key().parent(), d->key().index(), d->expected_version(),
                                 d->id());
    });
}
grpc::Status AdminService::ReloadLcr(grpc::ServerContext* c, const pb::Empty*, pb::Empty*) {
    // The routing engine reads its tables from the store at every decision,
    // so a reload only has to be acknowledged (and is logged on every server).
    return Guard(c, [&] {
        pb::Event e;
        e.set_time(std::time(nullptr));
        e.set_severity(1);
        e.set_originator_type(18);
        e.set_message_class(0x40);
        e.set_text("Least-cost routing tables reloaded by the administrator");
        for (const auto& server : store_.ListServers())
            if (server.online()) store_.AppendEvent(server.name(), e);
    });
}

// ---------------------------------------------------------------------------
// Runtime actions

grpc::Status AdminService::StartServer(grpc::ServerContext* c, const pb::Key* k, pb::Empty*) {
    return Guard(c, [&] { simulator_.StartServer(k->name()); });
}
grpc::Status AdminService::StopServer(grpc::ServerContext* c, const pb::Key* k, pb::Empty*) {
    return Guard(c, [&] { simulator_.StopServer(k->name()); });
}
grpc::Status AdminService::StartDevice(grpc::ServerContext* c, const pb::DeviceActionRequest* d,
                                       pb::Empty*) {
    return Guard(c, [&] { simulator_.StartDevice(d->host_name(), d->name()); });
}
grpc::Status AdminService::StopDevice(grpc::ServerContext* c, const pb::DeviceActionRequest* d,
                                      pb::Empty*) {
    return Guard(c, [&] { simulator_.StopDevice(d->host_name(), d->name()); });
}
grpc::Status AdminService::TerminateDevice(grpc::ServerContext* c, const pb::DeviceActionRequest* d,
                                           pb::Empty*) {
    return Guard(c, [&] { simulator_.TerminateDevice(d->host_name(), d->name()); });
}
grpc::Status AdminService::StartProcess(grpc::ServerContext* c, const pb::ProcessRequest* p,
                                        pb::Empty*) {
    return Guard(c, [&] { simulator_.StartProcess(p->host_name(), p->slot()); });
}
grpc::Status AdminService::StopProcess(grpc::ServerContext* c, const pb::ProcessRequest* p,
                                       pb::Empty*) {
    return Guard(c, [&] { simulator_.StopProcess(p->host_name(), p->slot()); });
}

}  // namespace veldrano::server
