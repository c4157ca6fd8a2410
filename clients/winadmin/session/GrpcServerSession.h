#pragma once
// ServerSession over the administration protocol's gRPC service.

#include <grpcpp/grpcpp.h>

#include <QEventLoop>
#include <QHash>
#include <QThreadPool>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>

#include "admin.grpc.pb.h"
#include "session/ServerSession.h"

namespace winadmin {

class GrpcServerSession final : public ServerSession {
public:
    static constexpr int DefaultPort = 47110;
    static constexpr int TimeoutBeforeLogin = 30;

    // Login opens a channel to the host set with SetHostName.
    GrpcServerSession();
    // Uses the given channel whatever host name is set (an in-process channel
    // of an embedded server, for example).
    explicit GrpcServerSession(std::shared_ptr<grpc::Channel> channel);
    ~GrpcServerSession() override;

    // "host", "host:port", "[v6]", "[v6]:port" or a bare IPv6 literal to a gRPC
    // target with the default port filled in; "" when the text names no host.
    static std::string ChannelTarget(const QString& host);

    // The arguments of every channel the console opens to a server: reconnect
    // quickly after the server went away. Credentials are the caller's.
    static grpc::ChannelArguments ChannelArguments();

    // The administrator's error for a failed call: the server's own numbered
    // error when it sent one, else one for what the transport reports. host
    // names the server in the error of a login that cannot reach it.
    static SessionError MapStatus(const grpc::Status& status, bool atLogin, const QString& host);

    // Calls issued on the wire so far, logins included. Lets tests and
    // benchmarks prove that a collection costs one call and a label none.
    uint64_t RpcCount() const { return rpcCount_; }

    void SetHostName(const QString& host) override;
    QString GetHostName() const override;
    void SetPassword(const QString& password) override;
    void Login() override;
    bool IsLoggedIn() const override { return loggedIn_; }
    QString GetBrand() const override;
    QString GetLabel(const QString& key) const override;
    void ReloadLabels() override;
    int GetTimeout() const override { return timeoutSeconds_; }
    void SetTimeout(int seconds) override;
    bool CallInProgress() const override { return callInProgress_; }
    int ServerLevel() const override { return info_.server_level(); }
    int SecondVersion() const override { return info_.second_version(); }
    void SetAdminPassword(const QString& password) override;

    std::vector<ServerRecord> Servers() override;
    std::vector<ServerObjectsRecord> ServerObjects() override;
    ServerRecord GetServer(const QString& name) override;
    int64_t CommitServer(const ServerRecord& server,
                         const RoleObjectDeletion& deleteObjects = {}) override;
    void DeleteServer(const QString& name, int64_t expectedVersion = 0) override;
    void StartServer(const QString& name) override;
    void StopServer(const QString& name) override;

    RowTable UserListRows(const QString& host) override;
    UserRecord GetUser(const QString& host, const QString& name) override;
    int64_t CommitUser(const UserRecord& user) override;
    void DeleteUser(const QString& host, const QString& name, int64_t expectedVersion = 0) override;
    void SetUserPassword(const QString& host, const QString& name,
                         const QString& password) override;
    QStringList Scanners(const QString& host) override;

    std::vector<GroupRecord> Groups() override;
    GroupRecord GetGroup(const QString& name) override;
    int64_t CommitGroup(const GroupRecord& group) override;
    void DeleteGroup(const QString& name, int64_t expectedVersion = 0) override;

    std::vector<PrinterRecord> Printers(const QString& host) override;
    PrinterRecord GetPrinter(const QString& host, const QString& name) override;
    int64_t CommitPrinter(const PrinterRecord& printer) override;
    void DeletePrinter(const QString& host, const QString& name,
                       int64_t expectedVersion = 0) override;

    std::vector<DeviceTypeRecord> DeviceTypes() override;
    std::vector<DeviceRecord> Devices(const QString& host) override;
    DeviceRecord GetDevice(const QString& host, const QString& name, int newType = 0) override;
    int64_t CommitDevice(const DeviceRecord& device) override;
    void DeleteDevice(const QString& host, const QString& name,
                      int64_t expectedVersion = 0) override;
    int64_t SaveDeviceLine(const QString& host, const QString& device,
                           const DeviceLineRecord& line) override;
    void DeleteDeviceLine(const QString& host, const QString& device, int number) override;
    int64_t ChangeDeviceType(const QString& host, const QString& device, int type,
                             int64_t expectedVersion) override;
    void StartDevice(const QString& host, const QString& name) override;
    void StopDevice(const QString& host, const QString& name) override;
    void TerminateDevice(const QString& host, const QString& name) override;

    std::vector<ProcessRecord> Processes(const QString& host) override;
    void StartProcess(const QString& host, int slot) override;
    void StopProcess(const QString& host, int slot) override;
    std::vector<EventRecord> Events(const QString& host, int minSeverity, int maxCount,
                                    int64_t newerThan = 0, int64_t* logStart = nullptr) override;

    std::vector<RouteRecord> Routes() override;
    RouteRecord GetRoute(const QString& name) override;
    int64_t CommitRoute(const RouteRecord& route) override;
    void DeleteRoute(const QString& name, int64_t expectedVersion = 0) override;

    std::vector<NumberMappingRecord> NumberMappings() override;
    NumberMappingRecord GetNumberMapping(const QString& match) override;
    int64_t CommitNumberMapping(const NumberMappingRecord& mapping) override;
    void DeleteNumberMapping(const QString& match, int64_t expectedVersion = 0) override;

    std::vector<GatewayRecord> Gateways() override;
    std::vector<GatewayUserRecord> GatewayUsers(const QString& gateway) override;
    GatewayUserRecord GetGatewayUser(const QString& gateway, const QString& address) override;
    int64_t CommitGatewayUser(const GatewayUserRecord& user) override;
    void DeleteGatewayUser(const QString& gateway, const QString& address,
                           int64_t expectedVersion = 0) override;

    AdminSettingsRecord GetAdminSettings() override;
    int64_t CommitAdminSettings(const AdminSettingsRecord& settings) override;

    ZoneListRecord Zones() override;
    ZoneRecord GetZone(const QString& name) override;
    int64_t CommitZone(const ZoneRecord& zone) override;
    void DeleteZone(const QString& name, int64_t expectedVersion = 0) override;
    std::vector<RateRecord> Rates(const QString& zone) override;
    RateRecord GetRate(const QString& zone, int index) override;
    IndexedCommit CommitRate(const RateRecord& rate) override;
    void DeleteRate(const QString& zone, int index, int64_t expectedVersion = 0,
                    int64_t id = 0) override;
    std::vector<DestinationRecord> Destinations(const QString& zone) override;
    DestinationRecord GetDestination(const QString& zone, int index) override;
    IndexedCommit CommitDestination(const DestinationRecord& destination) override;
    void DeleteDestination(const QString& zone, int index, int64_t expectedVersion = 0,
                           int64_t id = 0) override;
    void ReloadLcr() override;
    pb::TransferOutcome TransferObject(const QString& kind, const QString& source,
                                       const QString& name, const QString& target,
                                       bool cut) override;

private:
    using Stub = veldrano::admin::v1::Administration::Stub;
    using CallBody = std::function<grpc::Status(grpc::ClientContext&)>;

    static constexpr int kReconnectFirstMs = 200;
    static constexpr int kReconnectLongestMs = 1000;

    void EnsureChannel();
    // Whether the session's own channel gave up reaching the server for now.
    bool ChannelFailed() const;
    void PrepareContext(grpc::ClientContext& context, bool withToken) const;
    veldrano::admin::v1::LoginReply CallLogin(bool atLogin);
    // A fresh token after the server refused the session's one; asks the
    // administrator for the password when the one held is refused too.
    std::string LogInAgain(const SessionError& refused);
    void LoadLabels(const std::string& knownStamp);
    // How a call's body waits for its answer: blocking, on the worker (see
    // Await), or in a completion queue of its own (see AwaitAnswer).
    enum class Waiting { OnWorker, InQueue };
    // Runs one call with deadline and token; logs in again once when the
    // server no longer knows the token.
    void Run(const CallBody& body, Waiting waiting = Waiting::OnWorker);
    // Makes the blocking call of body on a worker while this thread's event
    // loop goes on (without user input), when there is one to go on.
    grpc::Status Await(const CallBody& body, grpc::ClientContext& context);
    // Waits for the one answer of a call started on queue, then shuts the
    // queue down. A quick answer is waited for on this thread, as a
    // blocking call would; a slow one on the worker while the event loop goes
    // on, as in Await.
    void AwaitAnswer(grpc::CompletionQueue& queue);
    // The event loop without user input until loop quits, with the busy
    // pointer once the wait shows.
    void WaitInLoop(QEventLoop& loop);

    // A unary call, started by start(context, queue) as the stub's
    // PrepareAsync method does.
    template <class Reply, class Start>
    Reply Unary(Start&& start);
    // A collection's page stream read to its end; onPage, when given, sees
    // each page's other fields once its records are taken.
    template <class Item, class Open, class Page>
    std::vector<Item> Collect(
        Open&& open, google::protobuf::RepeatedPtrField<Item>* (Page::*items)(),
        const std::function<void(const std::type_identity_t<Page>&)>& onPage = {});

    std::shared_ptr<grpc::Channel> fixedChannel_;
    std::shared_ptr<grpc::Channel> channel_;
    std::string channelTarget_;
    std::unique_ptr<Stub> stub_;

    QString hostText_;
    QString reportedHost_;
    QString password_;
    std::string token_;
    bool loggedIn_ = false;
    int timeoutSeconds_ = TimeoutBeforeLogin;
    bool timeoutChosen_ = false;

    veldrano::admin::v1::SessionInfo info_;
    std::string labelStamp_;
    QHash<QString, QString> labels_;
    std::vector<DeviceTypeRecord> deviceTypes_;
    uint64_t rpcCount_ = 0;
    bool callInProgress_ = false;
    // The one worker of the waiting call; a call made while one waits
    // blocks on its own thread instead.
    QThreadPool worker_;
};

// Every record call goes through Run, so deadline, token, re-login and error
// mapping are the same for all of them. A unary call waits in a queue of
// its own rather than on the worker: handing a small call to another thread
// and back cost a third of its time.
template <class Reply, class Start>
Reply GrpcServerSession::Unary(Start&& start) {
    Reply reply;
    Run(
        [&](grpc::ClientContext& context) {
            reply.Clear();
            grpc::CompletionQueue queue;
            grpc::Status status;
            const auto call = start(context, &queue);
            call->StartCall();
            call->Finish(&reply, &status, &status);
            AwaitAnswer(queue);
            return status;
        },
        Waiting::InQueue);
    return reply;
}

// Reads a collection's page stream to its end within one call. Records are
// swapped out of one reused page, whose emptied shells then take the next
// page's records without allocating new record objects. (Keeping every page
// until the total is known, to size the result once, measured slower: the
// client's work then no longer overlaps the server's production of the next
// page.)
template <class Item, class Open, class Page>
std::vector<Item> GrpcServerSession::Collect(
    Open&& open, google::protobuf::RepeatedPtrField<Item>* (Page::*items)(),
    const std::function<void(const std::type_identity_t<Page>&)>& onPage) {
    std::vector<Item> result;
    Run([&](grpc::ClientContext& context) {
        result.clear();
        auto reader = open(context);
        Page page;
        while (reader->Read(&page)) {
            for (Item& item : *(page.*items)()) result.emplace_back().Swap(&item);
            if (onPage) onPage(page);
        }
        return reader->Finish();
    });
    return result;
}

}  // namespace winadmin
