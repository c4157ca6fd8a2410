#pragma once
// The gRPC administration service over the store, the authentication and the
// simulation. Every handler runs through Guard: the token is checked (but for
// Login), every refusal becomes a status carrying an ErrorDetail, and no
// exception ever escapes into gRPC.

#include <chrono>
#include <functional>
#include <string>

#include "admin.grpc.pb.h"
#include "service/Auth.h"
#include "service/WriteWatchdog.h"

namespace veldrano::server {

class Store;
class Simulator;

namespace pb = veldrano::admin::v1;

class AdminService final : public pb::Administration::Service {
public:
    // A client that takes no page of a list for writeTimeout is cut off.
    AdminService(Store& store, Auth& auth, Simulator& simulator,
                 std::chrono::milliseconds writeTimeout = std::chrono::seconds(30));

    // Session
    grpc::Status Login(grpc::ServerContext*, const pb::LoginRequest*, pb::LoginReply*) override;
    grpc::Status GetSessionInfo(grpc::ServerContext*, const pb::Empty*, pb::SessionInfo*) override;
    grpc::Status GetLabels(grpc::ServerContext*, const pb::LabelsRequest*,
                           pb::LabelTable*) override;
    grpc::Status SetAdminPassword(grpc::ServerContext*, const pb::ChangePasswordRequest*,
                                  pb::Empty*) override;

    // Records: get, commit, delete
    grpc::Status GetServer(grpc::ServerContext*, const pb::Key*, pb::Server*) override;
    grpc::Status CommitServer(grpc::ServerContext*, const pb::CommitServerRequest*,
                              pb::CommitReply*) override;
    grpc::Status DeleteServer(grpc::ServerContext*, const pb::DeleteRequest*, pb::Empty*) override;
    grpc::Status GetUser(grpc::ServerContext*, const pb::Key*, pb::User*) override;
    grpc::Status CommitUser(grpc::ServerContext*, const pb::User*, pb::CommitReply*) override;
    grpc::Status DeleteUser(grpc::ServerContext*, const pb::DeleteRequest*, pb::Empty*) override;
    grpc::Status SetUserPassword(grpc::ServerContext*, const pb::SetUserPasswordRequest*,
                                 pb::Empty*) override;
    grpc::Status ListScanners(grpc::ServerContext*, const pb::ListRequest*,
                              pb::ScannerList*) override;
    grpc::Status GetGroup(grpc::ServerContext*, const pb::Key*, pb::Group*) override;
    grpc::Status CommitGroup(grpc::ServerContext*, const pb::Group*, pb::CommitReply*) override;
    grpc::Status DeleteGroup(grpc::ServerContext*, const pb::DeleteRequest*, pb::Empty*) override;
    grpc::Status GetPrinter(grpc::ServerContext*, const pb::Key*, pb::Printer*) override;
    grpc::Status CommitPrinter(grpc::ServerContext*, const pb::Printer*, pb::CommitReply*) override;
    grpc::Status DeletePrinter(grpc::ServerContext*, const pb::DeleteRequest*, pb::Empty*) override;
    grpc::Status ListDeviceTypes(grpc::ServerContext*, const pb::Empty*,
                                 pb::DeviceTypeList*) override;
    grpc::Status GetDevice(grpc::ServerContext*, const pb::DeviceKey*, pb::Device*) override;
    grpc::Status CommitDevice(grpc::ServerContext*, const pb::Device*, pb::CommitReply*) override;
    grpc::Status DeleteDevice(grpc::ServerContext*, const pb::DeleteRequest*, pb::Empty*) override;
    grpc::Status SaveDeviceLine(grpc::ServerContext*, const pb::SaveLineRequest*,
                                pb::CommitReply*) override;
    grpc::Status DeleteDeviceLine(grpc::ServerContext*, const pb::LineRequest*,
                                  pb::Empty*) override;
    grpc::Status ChangeDeviceType(grpc::ServerContext*, const pb::DeviceTypeChange*,
                                  pb::CommitReply*) override;
    grpc::Status TransferObject(grpc::ServerContext*, const pb::TransferRequest*,
                                pb::TransferReply*) override;
    grpc::Status GetRoute(grpc::ServerContext*, const pb::Key*, pb::Route*) override;
    grpc::Status CommitRoute(grpc::ServerContext*, const pb::Route*, pb::CommitReply*) override;
    grpc::Status DeleteRoute(grpc::ServerContext*, const pb::DeleteRequest*, pb::Empty*) override;
    grpc::Status GetNumberMapping(grpc::ServerContext*, const pb::Key*,
                                  pb::NumberMapping*) override;
    grpc::Status CommitNumberMapping(grpc::ServerContext*, const pb::NumberMapping*,
                                     pb::CommitReply*) override;
    grpc::Status DeleteNumberMapping(grpc::ServerContext*, const pb::DeleteRequest*,
                                     pb::Empty*) override;
    grpc::Status GetGatewayUser(grpc::ServerContext*, const pb::Key*, pb::GatewayUser*) override;
    grpc::Status CommitGatewayUser(grpc::ServerContext*, const pb::GatewayUser*,
                                   pb::CommitReply*) override;
    grpc::Status DeleteGatewayUser(grpc::ServerContext*, const pb::DeleteRequest*,
                                   pb::Empty*) override;
    grpc::Status GetAdminSettings(grpc::ServerContext*, const pb::Empty*,
                                  pb::AdminSettings*) override;
    grpc::Status CommitAdminSettings(grpc::ServerContext*, const pb::AdminSettings*,
                                     pb::CommitReply*) override;
    grpc::Status ListZones(grpc::ServerContext*, const pb::ListRequest*, pb::ZoneList*) override;
    grpc::Status GetZone(grpc::ServerContext*, const pb::Key*, pb::Zone*) override;
    grpc::Status CommitZone(grpc::ServerContext*, const pb::Zone*, pb::CommitReply*) override;
    grpc::Status DeleteZone(grpc::ServerContext*, const pb::DeleteRequest*, pb::Empty*) override;
    grpc::Status GetRate(grpc::ServerContext*, const pb::Key*, pb::Rate*) override;
    grpc::Status CommitRate(grpc::ServerContext*, const pb::Rate*, pb::CommitReply*) override;
    grpc::Status DeleteRate(grpc::ServerContext*, const pb::DeleteRequest*, pb::Empty*) override;
    grpc::Status GetDestination(grpc::ServerContext*, const pb::Key*, pb::Destination*) override;
    grpc::Status CommitDestination(grpc::ServerContext*, const pb::Destination*,
                                   pb::CommitReply*) override;
    grpc::Status DeleteDestination(grpc::ServerContext*, const pb::DeleteRequest*,
                                   pb::Empty*) override;
    grpc::Status ReloadLcr(grpc::ServerContext*, const pb::Empty*, pb::Empty*) override;

    // Runtime actions
    grpc::Status StartServer(grpc::ServerContext*, const pb::Key*, pb::Empty*) override;
    grpc::Status StopServer(grpc::ServerContext*, const pb::Key*, pb::Empty*) override;
    grpc::Status StartDevice(grpc::ServerContext*, const pb::DeviceActionRequest*,
                             pb::Empty*) override;
    grpc::Status StopDevice(grpc::ServerContext*, const pb::DeviceActionRequest*,
                            pb::Empty*) override;
    grpc::Status TerminateDevice(grpc::ServerContext*, const pb::DeviceActionRequest*,
                                 pb::Empty*) override;
    grpc::Status StartProcess(grpc::ServerContext*, const pb::ProcessRequest*, pb::Empty*) override;
    grpc::Status StopProcess(grpc::ServerContext*, const pb::ProcessRequest*, pb::Empty*) override;

    // Collections, streamed in pages (ListService.cpp)
    grpc::Status ListServers(grpc::ServerContext*, const pb::ListRequest*,
                             grpc::ServerWriter<pb::ServerPage>*) override;
    grpc::Status ListServerObjects(grpc::ServerContext*, const pb::ListRequest*,
                                   grpc::ServerWriter<pb::ServerObjectsPage>*) override;
    grpc::Status ListUsers(grpc::ServerContext*, const pb::ListRequest*,
                           grpc::ServerWriter<pb::UserPage>*) override;
    grpc::Status ListGroups(grpc::ServerContext*, const pb::ListRequest*,
                            grpc::ServerWriter<pb::GroupPage>*) override;
    grpc::Status ListPrinters(grpc::ServerContext*, const pb::ListRequest*,
                              grpc::ServerWriter<pb::PrinterPage>*) override;
    grpc::Status ListDevices(grpc::ServerContext*, const pb::ListRequest*,
                             grpc::ServerWriter<pb::DevicePage>*) override;
    grpc::Status ListProcesses(grpc::ServerContext*, const pb::ListRequest*,
                               grpc::ServerWriter<pb::ProcessPage>*) override;
    grpc::Status ListEvents(grpc::ServerContext*, const pb::EventRequest*,
                            grpc::ServerWriter<pb::EventPage>*) override;
    grpc::Status ListRoutes(grpc::ServerContext*, const pb::ListRequest*,
                            grpc::ServerWriter<pb::RoutePage>*) override;
    grpc::Status ListNumberMappings(grpc::ServerContext*, const pb::ListRequest*,
                                    grpc::ServerWriter<pb::NumberMappingPage>*) override;
    grpc::Status ListGateways(grpc::ServerContext*, const pb::ListRequest*,
                              grpc::ServerWriter<pb::GatewayPage>*) override;
    grpc::Status ListGatewayUsers(grpc::ServerContext*, const pb::ListRequest*,
                                  grpc::ServerWriter<pb::GatewayUserPage>*) override;
    grpc::Status ListRates(grpc::ServerContext*, const pb::ListRequest*,
                           grpc::ServerWriter<pb::RatePage>*) override;
    grpc::Status ListDestinations(grpc::ServerContext*, const pb::ListRequest*,
                                  grpc::ServerWriter<pb::DestinationPage>*) override;

    // Pages stay below this many bytes, far under gRPC's message limit.
    static constexpr size_t kPageBytes = 256 * 1024;

private:
    // Runs body after checking the caller's token; maps every failure and
    // logs each refusal with the call's name (the calling handler's).
    grpc::Status Guard(grpc::ServerContext* context, const std::function<void()>& body,
                       bool needsToken = true, const char* call = __builtin_FUNCTION());

    Store& store_;
    Auth& auth_;
    Simulator& simulator_;
    WriteWatchdog watchdog_;
};

// A refusal as a gRPC status with the ErrorDetail in its binary details.
grpc::Status ErrorStatus(pb::Error code, const std::string& detail);

}  // namespace veldrano::server
