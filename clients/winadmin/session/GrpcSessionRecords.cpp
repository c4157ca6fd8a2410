// The per-kind calls of GrpcServerSession: each is one protocol call, lists
// read their whole page stream.

#include "session/GrpcServerSession.h"

namespace winadmin {

namespace {

pb::Key MakeKey(const QString& host, const QString& name) {
    pb::Key key;
    key.set_host_name(host.toStdString());
    key.set_name(name.toStdString());
    return key;
}

pb::Key NameKey(const QString& name) {
    return MakeKey({}, name);
}

pb::Key IndexKey(const QString& parent, int index) {
    pb::Key key;
    key.set_parent(parent.toStdString());
    key.set_index(index);
    return key;
}

pb::DeleteRequest Deletion(pb::Key key, int64_t expectedVersion, int64_t id = 0) {
    pb::DeleteRequest request;
    *request.mutable_key() = std::move(key);
    request.set_expected_version(expectedVersion);
    request.set_id(id);
    return request;
}

pb::ListRequest ListOf(const QString& host, const QString& parent = {}) {
    pb::ListRequest request;
    request.set_host_name(host.toStdString());
    request.set_parent(parent.toStdString());
    return request;
}

// A list call that answers only what the list of its kind shows.
pb::ListRequest ColumnsOf(const QString& host) {
    pb::ListRequest request = ListOf(host);
    request.set_columns_only(true);
    return request;
}

pb::DeviceActionRequest DeviceAction(const QString& host, const QString& name) {
    pb::DeviceActionRequest request;
    request.set_host_name(host.toStdString());
    request.set_name(name.toStdString());
    return request;
}

pb::ProcessRequest ProcessAction(const QString& host, int slot) {
    pb::ProcessRequest request;
    request.set_host_name(host.toStdString());
    request.set_slot(slot);
    return request;
}

}  // namespace

// The stub's calls differ only in method and message types; these keep each
// operation below to the one line that says which call it makes.
#define VELDRANO_UNARY(Reply, Method, request)                                     \
    Unary<Reply>([&](grpc::ClientContext& context, grpc::CompletionQueue* queue) { \
        return stub_->PrepareAsync##Method(&context, request, queue);              \
    })
#define VELDRANO_LIST(Item, Method, request, Page, field)                                         \
    Collect<Item>([&](grpc::ClientContext& context) { return stub_->Method(&context, request); }, \
                  &Page::mutable_##field)
#define VELDRANO_VERSION(Method, record) VELDRANO_UNARY(pb::CommitReply, Method, record).version()
#define VELDRANO_ACTION(Method, request) VELDRANO_UNARY(pb::Empty, Method, request)

// --- Servers --------------------------------------------------------------------------

std::vector<ServerRecord> GrpcServerSession::Servers() {
    return VELDRANO_LIST(pb::Server, ListServers, ListOf({}), pb::ServerPage, servers);
}

std::vector<ServerObjectsRecord> GrpcServerSession::ServerObjects() {
    return VELDRANO_LIST(pb::ServerObjects, ListServerObjects, ListOf({}), pb::ServerObjectsPage,
                         servers);
}

ServerRecord GrpcServerSession::GetServer(const QString& name) {
    return VELDRANO_UNARY(pb::Server, GetServer, NameKey(name));
}

int64_t GrpcServerSession::CommitServer(const ServerRecord& server,
                                        const RoleObjectDeletion& deleteObjects) {
    pb::CommitServerRequest request;
    *request.mutable_server() = server;
    request.mutable_delete_objects()->set_users(deleteObjects.users);
    request.mutable_delete_objects()->set_printers(deleteObjects.printers);
    request.mutable_delete_objects()->set_devices(deleteObjects.devices);
    return VELDRANO_VERSION(CommitServer, request);
}

void GrpcServerSession::DeleteServer(const QString& name, int64_t expectedVersion) {
    VELDRANO_ACTION(DeleteServer, Deletion(NameKey(name), expectedVersion));
}

void GrpcServerSession::StartServer(const QString& name) {
    VELDRANO_ACTION(StartServer, NameKey(name));
}

void GrpcServerSession::StopServer(const QString& name) {
    VELDRANO_ACTION(StopServer, NameKey(name));
}

// --- Users ------------------------------------------------------------------------------

RowTable GrpcServerSession::UserListRows(const QString& host) {
    // Each page's users go into the table as they arrive and the page is
    // reused, so the whole list never exists as records.
    const pb::ListRequest request = ColumnsOf(host);
    RowTable table;
    Run([&](grpc::ClientContext& context) {
        table = RowTable(2);
        auto reader = stub_->ListUsers(&context, request);
        pb::UserPage page;
        while (reader->Read(&page))
            for (const pb::User& user : page.users()) table.Append({user.name(), user.comment()});
        return reader->Finish();
    });
    table.Compact();
    return table;
}

UserRecord GrpcServerSession::GetUser(const QString& host, const QString& name) {
    return VELDRANO_UNARY(pb::User, GetUser, MakeKey(host, name));
}

int64_t GrpcServerSession::CommitUser(const UserRecord& user) {
    return VELDRANO_VERSION(CommitUser, user);
}

void GrpcServerSession::DeleteUser(const QString& host, const QString& name,
                                   int64_t expectedVersion) {
    VELDRANO_ACTION(DeleteUser, Deletion(MakeKey(host, name), expectedVersion));
}

void GrpcServerSession::SetUserPassword(const QString& host, const QString& name,
                                        const QString& password) {
    pb::SetUserPasswordRequest request;
    request.set_host_name(host.toStdString());
    request.set_name(name.toStdString());
    request.set_new_password(password.toStdString());
    VELDRANO_ACTION(SetUserPassword, request);
}

QStringList GrpcServerSession::Scanners(const QString& host) {
    const pb::ScannerList list = VELDRANO_UNARY(pb::ScannerList, ListScanners, ListOf(host));
    QStringList names;
    names.reserve(list.names_size());
    for (const std::string& name : list.names()) names.append(QString::fromStdString(name));
    return names;
}

// --- Groups -----------------------------------------------------------------------------

std::vector<GroupRecord> GrpcServerSession::Groups() {
    return VELDRANO_LIST(pb::Group, ListGroups, ColumnsOf({}), pb::GroupPage, groups);
}

GroupRecord GrpcServerSession::GetGroup(const QString& name) {
    return VELDRANO_UNARY(pb::Group, GetGroup, NameKey(name));
}

int64_t GrpcServerSession::CommitGroup(const GroupRecord& group) {
    return VELDRANO_VERSION(CommitGroup, group);
}

void GrpcServerSession::DeleteGroup(const QString& name, int64_t expectedVersion) {
    VELDRANO_ACTION(DeleteGroup, Deletion(NameKey(name), expectedVersion));
}

// --- Printers ---------------------------------------------------------------------------

std::vector<PrinterRecord> GrpcServerSession::Printers(const QString& host) {
    return VELDRANO_LIST(pb::Printer, ListPrinters, ColumnsOf(host), pb::PrinterPage, printers);
}

PrinterRecord GrpcServerSession::GetPrinter(const QString& host, const QString& name) {
    return VELDRANO_UNARY(pb::Printer, GetPrinter, MakeKey(host, name));
}

int64_t GrpcServerSession::CommitPrinter(const PrinterRecord& printer) {
    return VELDRANO_VERSION(CommitPrinter, printer);
}

void GrpcServerSession::DeletePrinter(const QString& host, const QString& name,
                                      int64_t expectedVersion) {
    VELDRANO_ACTION(DeletePrinter, Deletion(MakeKey(host, name), expectedVersion));
}

// --- Devices ----------------------------------------------------------------------------

std::vector<DeviceTypeRecord> GrpcServerSession::DeviceTypes() {
    // The type table is fixed for a server's lifetime, and the device editor
    // asks for it on every open.
    if (deviceTypes_.empty()) {
        pb::DeviceTypeList list = VELDRANO_UNARY(pb::DeviceTypeList, ListDeviceTypes, pb::Empty());
        deviceTypes_.assign(list.types().begin(), list.types().end());
    }
    return deviceTypes_;
}

std::vector<DeviceRecord> GrpcServerSession::Devices(const QString& host) {
    return VELDRANO_LIST(pb::Device, ListDevices, ColumnsOf(host), pb::DevicePage, devices);
}

DeviceRecord GrpcServerSession::GetDevice(const QString& host, const QString& name, int newType) {
    pb::DeviceKey key;
    key.set_host_name(host.toStdString());
    key.set_name(name.toStdString());
    key.set_new_type(newType);
    return VELDRANO_UNARY(pb::Device, GetDevice, key);
}

int64_t GrpcServerSession::CommitDevice(const DeviceRecord& device) {
    return VELDRANO_VERSION(CommitDevice, device);
}

void GrpcServerSession::DeleteDevice(const QString& host, const QString& name,
                                     int64_t expectedVersion) {
    VELDRANO_ACTION(DeleteDevice, Deletion(MakeKey(host, name), expectedVersion));
}

int64_t GrpcServerSession::SaveDeviceLine(const QString& host, const QString& device,
                                          const DeviceLineRecord& line) {
    pb::SaveLineRequest request;
    request.set_host_name(host.toStdString());
    request.set_device(device.toStdString());
    *request.mutable_line() = line;
    return VELDRANO_VERSION(SaveDeviceLine, request);
}

void GrpcServerSession::DeleteDeviceLine(const QString& host, const QString& device, int number) {
    pb::LineRequest request;
    request.set_host_name(host.toStdString());
    request.set_device(device.toStdString());
    request.set_number(number);
    VELDRANO_ACTION(DeleteDeviceLine, request);
}

int64_t GrpcServerSession::ChangeDeviceType(const QString& host, const QString& device, int type,
                                            int64_t expectedVersion) {
    pb::DeviceTypeChange request;
    request.set_host_name(host.toStdString());
    request.set_device(device.toStdString());
    request.set_type(type);
    request.set_expected_version(expectedVersion);
    return VELDRANO_VERSION(ChangeDeviceType, request);
}

void GrpcServerSession::StartDevice(const QString& host, const QString& name) {
    VELDRANO_ACTION(StartDevice, DeviceAction(host, name));
}

void GrpcServerSession::StopDevice(const QString& host, const QString& name) {
    VELDRANO_ACTION(StopDevice, DeviceAction(host, name));
}

void GrpcServerSession::TerminateDevice(const QString& host, const QString& name) {
    VELDRANO_ACTION(TerminateDevice, DeviceAction(host, name));
}

// --- Runtime ----------------------------------------------------------------------------

std::vector<ProcessRecord> GrpcServerSession::Processes(const QString& host) {
    return VELDRANO_LIST(pb::Process, ListProcesses, ListOf(host), pb::ProcessPage, processes);
}

void GrpcServerSession::StartProcess(const QString& host, int slot) {
    VELDRANO_ACTION(StartProcess, ProcessAction(host, slot));
}

void GrpcServerSession::StopProcess(const QString& host, int slot) {
    VELDRANO_ACTION(StopProcess, ProcessAction(host, slot));
}

std::vector<EventRecord> GrpcServerSession::Events(const QString& host, int minSeverity,
                                                   int maxCount, int64_t newerThan,
                                                   int64_t* logStart) {
    pb::EventRequest request;
    request.set_host_name(host.toStdString());
    request.set_min_severity(minSeverity);
    request.set_max_count(maxCount);
    request.set_newer_than(newerThan);
    // The last page says where the log starts.
    int64_t start = 0;
    std::vector<EventRecord> events = Collect<pb::Event>(
        [&](grpc::ClientContext& context) { return stub_->ListEvents(&context, request); },
        &pb::EventPage::mutable_events,
        [&](const pb::EventPage& page) { start = page.log_start(); });
    if (logStart) *logStart = start;
    return events;
}

// --- Routes and number mappings -----------------------------------------------------------

std::vector<RouteRecord> GrpcServerSession::Routes() {
    return VELDRANO_LIST(pb::Route, ListRoutes, ColumnsOf({}), pb::RoutePage, routes);
}

RouteRecord GrpcServerSession::GetRoute(const QString& name) {
    return VELDRANO_UNARY(pb::Route, GetRoute, NameKey(name));
}

int64_t GrpcServerSession::CommitRoute(const RouteRecord& route) {
    return VELDRANO_VERSION(CommitRoute, route);
}

void GrpcServerSession::DeleteRoute(const QString& name, int64_t expectedVersion) {
    VELDRANO_ACTION(DeleteRoute, Deletion(NameKey(name), expectedVersion));
}

std::vector<NumberMappingRecord> GrpcServerSession::NumberMappings() {
    return VELDRANO_LIST(pb::NumberMapping, ListNumberMappings, ListOf({}), pb::NumberMappingPage,
                         mappings);
}

NumberMappingRecord GrpcServerSession::GetNumberMapping(const QString& match) {
    return VELDRANO_UNARY(pb::NumberMapping, GetNumberMapping, NameKey(match));
}

int64_t GrpcServerSession::CommitNumberMapping(const NumberMappingRecord& mapping) {
    return VELDRANO_VERSION(CommitNumberMapping, mapping);
}

void GrpcServerSession::DeleteNumberMapping(const QString& match, int64_t expectedVersion) {
    VELDRANO_ACTION(DeleteNumberMapping, Deletion(NameKey(match), expectedVersion));
}

// --- Gateways ----------------------------------------------------------------------------

std::vector<GatewayRecord> GrpcServerSession::Gateways() {
    return VELDRANO_LIST(pb::Gateway, ListGateways, ListOf({}), pb::GatewayPage, gateways);
}

std::vector<GatewayUserRecord> GrpcServerSession::GatewayUsers(const QString& gateway) {
    return VELDRANO_LIST(pb::GatewayUser, ListGatewayUsers, ListOf({}, gateway),
                         pb::GatewayUserPage, users);
}

GatewayUserRecord GrpcServerSession::GetGatewayUser(const QString& gateway,
                                                    const QString& address) {
    pb::Key key = NameKey(address);
    key.set_parent(gateway.toStdString());
    return VELDRANO_UNARY(pb::GatewayUser, GetGatewayUser, key);
}

int64_t GrpcServerSession::CommitGatewayUser(const GatewayUserRecord& user) {
    return VELDRANO_VERSION(CommitGatewayUser, user);
}

void GrpcServerSession::DeleteGatewayUser(const QString& gateway, const QString& address,
                                          int64_t expectedVersion) {
    pb::Key key = NameKey(address);
    key.set_parent(gateway.toStdString());
    VELDRANO_ACTION(DeleteGatewayUser, Deletion(std::move(key), expectedVersion));
}

// --- Administrator settings ----------------------------------------------------------------

AdminSettingsRecord GrpcServerSession::GetAdminSettings() {
    return VELDRANO_UNARY(pb::AdminSettings, GetAdminSettings, pb::Empty());
}

int64_t GrpcServerSession::CommitAdminSettings(const AdminSettingsRecord& settings) {
    return VELDRANO_VERSION(CommitAdminSettings, settings);
}

// --- Least-cost routing ----------------------------------------------------------------------

ZoneListRecord GrpcServerSession::Zones() {
    return VELDRANO_UNARY(pb::ZoneList, ListZones, ListOf({}));
}

ZoneRecord GrpcServerSession::GetZone(const QString& name) {
    return VELDRANO_UNARY(pb::Zone, GetZone, NameKey(name));
}

int64_t GrpcServerSession::CommitZone(const ZoneRecord& zone) {
    return VELDRANO_VERSION(CommitZone, zone);
}

void GrpcServerSession::DeleteZone(const QString& name, int64_t expectedVersion) {
    VELDRANO_ACTION(DeleteZone, Deletion(NameKey(name), expectedVersion));
}

std::vector<RateRecord> GrpcServerSession::Rates(const QString& zone) {
    return VELDRANO_LIST(pb::Rate, ListRates, ListOf({}, zone), pb::RatePage, rates);
}

RateRecord GrpcServerSession::GetRate(const QString& zone, int index) {
    return VELDRANO_UNARY(pb::Rate, GetRate, IndexKey(zone, index));
}

IndexedCommit GrpcServerSession::CommitRate(const RateRecord& rate) {
    const pb::CommitReply reply = VELDRANO_UNARY(pb::CommitReply, CommitRate, rate);
    return {reply.version(), reply.index()};
}

void GrpcServerSession::DeleteRate(const QString& zone, int index, int64_t expectedVersion,
                                   int64_t id) {
    VELDRANO_ACTION(DeleteRate, Deletion(IndexKey(zone, index), expectedVersion, id));
}

std::vector<DestinationRecord> GrpcServerSession::Destinations(const QString& zone) {
    return VELDRANO_LIST(pb::Destination, ListDestinations, ListOf({}, zone), pb::DestinationPage,
                         destinations);
}

DestinationRecord GrpcServerSession::GetDestination(const QString& zone, int index) {
    return VELDRANO_UNARY(pb::Destination, GetDestination, IndexKey(zone, index));
}

IndexedCommit GrpcServerSession::CommitDestination(const DestinationRecord& destination) {
    const pb::CommitReply reply = VELDRANO_UNARY(pb::CommitReply, CommitDestination, destination);
    return {reply.version(), reply.index()};
}

void GrpcServerSession::DeleteDestination(const QString& zone, int index, int64_t expectedVersion,
                                          int64_t id) {
    VELDRANO_ACTION(DeleteDestination, Deletion(IndexKey(zone, index), expectedVersion, id));
}

void GrpcServerSession::ReloadLcr() {
    VELDRANO_ACTION(ReloadLcr, pb::Empty());
}

pb::TransferOutcome GrpcServerSession::TransferObject(const QString& kind, const QString& source,
                                                      const QString& name, const QString& target,
                                                      bool cut) {
    pb::TransferRequest request;
    request.set_kind(kind.toStdString());
    request.set_source(source.toStdString());
    request.set_name(name.toStdString());
    request.set_target(target.toStdString());
    request.set_cut(cut);
    return VELDRANO_UNARY(pb::TransferReply, TransferObject, request).outcome();
}

#undef VELDRANO_UNARY
#undef VELDRANO_LIST
#undef VELDRANO_VERSION
#undef VELDRANO_ACTION

}  // namespace winadmin
