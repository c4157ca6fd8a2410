#pragma once
// The console's one connection to the administered installation. The login
// dialog creates it; every window reaches the server through it until the
// program ends. A record fetched by key travels whole; a collection arrives in
// one call, and the collections that lists show (users, groups, printers,
// devices, routes) carry only what their lists show of each record. Every
// failure is thrown as SessionError.

#include <QString>
#include <QStringList>
#include <cstdint>
#include <memory>
#include <vector>

#include "common/Labels.h"
#include "session/Records.h"
#include "session/RowTable.h"
#include "session/SessionError.h"

namespace winadmin {

// Which roles' objects the administrator agreed to delete with a server commit
// that takes those roles away. A role taken away from a server that still has
// objects of it, without its flag here, is refused and nothing is written.
struct RoleObjectDeletion {
    bool users = false;
    bool printers = false;
    bool devices = false;
};

class ServerSession : public LabelSource {
public:
    virtual ~ServerSession() = default;

    // --- Session -------------------------------------------------------------

    // The host as typed before Login; after Login, the name under which the
    // server knows itself.
    virtual void SetHostName(const QString& host) = 0;
    virtual QString GetHostName() const = 0;
    virtual void SetPassword(const QString& password) = 0;
    // Opens the session: refused password 0x80070005, host 0x81002AF9. A
    // failed login leaves the object ready for the next attempt.
    virtual void Login() = 0;
    virtual bool IsLoggedIn() const = 0;

    // Lower-case brand word as the server reports it ("kelvar", "quorel").
    virtual QString GetBrand() const = 0;
    // The label text for key in the server's language; the key itself for a
    // key the server does not know. Never calls the server.
    QString GetLabel(const QString& key) const override = 0;
    virtual void ReloadLabels() = 0;

    // Seconds each call may take. 30 before login; after login the server's
    // default unless the administrator chose a value.
    virtual int GetTimeout() const = 0;
    virtual void SetTimeout(int seconds) = 0;
    // Whether a call is waiting for the server. The window keeps painting
    // and its timers keep running meanwhile; periodic work skips its turn
    // rather than start a second call behind the first.
    virtual bool CallInProgress() const = 0;

    virtual int ServerLevel() const = 0;
    virtual int SecondVersion() const = 0;
    virtual void SetAdminPassword(const QString& password) = 0;

    // --- Servers ---------------------------------------------------------------

    virtual std::vector<ServerRecord> Servers() = 0;
    // The printer and device names of every server in one call, for the tree.
    virtual std::vector<ServerObjectsRecord> ServerObjects() = 0;
    // A name that names no server answers a record marked is_new with defaults.
    virtual ServerRecord GetServer(const QString& name) = 0;
    // Answers the new version. One request and one transaction on the server:
    // the version is checked, the objects of each confirmed role that server
    // lacks are deleted and the server is written, or nothing happens. A stale
    // version is refused with ERROR_VERSION_CONFLICT, a role taken away while
    // its objects remain unconfirmed with ERROR_ROLE_OBJECTS_REMAIN.
    virtual int64_t CommitServer(const ServerRecord& server,
                                 const RoleObjectDeletion& deleteObjects = {}) = 0;
    // expectedVersion 0 deletes whatever version is stored.
    virtual void DeleteServer(const QString& name, int64_t expectedVersion = 0) = 0;
    virtual void StartServer(const QString& name) = 0;
    virtual void StopServer(const QString& name) = 0;

    // --- Users of a server -------------------------------------------------------

    // The users as their list shows them: name and comment, row by row in
    // the server's order, read into the table page by page as they arrive.
    virtual RowTable UserListRows(const QString& host) = 0;
    virtual UserRecord GetUser(const QString& host, const QString& name) = 0;
    virtual int64_t CommitUser(const UserRecord& user) = 0;
    virtual void DeleteUser(const QString& host, const QString& name,
                            int64_t expectedVersion = 0) = 0;
    virtual void SetUserPassword(const QString& host, const QString& name,
                                 const QString& password) = 0;
    virtual QStringList Scanners(const QString& host) = 0;

    // --- Groups --------------------------------------------------------------------

    // Name and comment of each group, without its members.
    virtual std::vector<GroupRecord> Groups() = 0;
    virtual GroupRecord GetGroup(const QString& name) = 0;
    virtual int64_t CommitGroup(const GroupRecord& group) = 0;
    virtual void DeleteGroup(const QString& name, int64_t expectedVersion = 0) = 0;

    // --- Printers of a server ------------------------------------------------------

    // Name, comment and type of each printer.
    virtual std::vector<PrinterRecord> Printers(const QString& host) = 0;
    virtual PrinterRecord GetPrinter(const QString& host, const QString& name) = 0;
    virtual int64_t CommitPrinter(const PrinterRecord& printer) = 0;
    virtual void DeletePrinter(const QString& host, const QString& name,
                               int64_t expectedVersion = 0) = 0;

    // --- Devices of a server and their lines ---------------------------------------

    virtual std::vector<DeviceTypeRecord> DeviceTypes() = 0;
    // Name, type and primary line comment of each device.
    virtual std::vector<DeviceRecord> Devices(const QString& host) = 0;
    // The device as the editor shows it: every line 2 .. configured lines by
    // number (a line not configured on the server has version 0 and fresh
    // settings) and each line's name. A name that names no device answers a
    // new one of type newType (0: the server's first type).
    virtual DeviceRecord GetDevice(const QString& host, const QString& name, int newType = 0) = 0;
    // Commits the device with its primary line; secondary lines are saved one
    // by one through SaveDeviceLine.
    virtual int64_t CommitDevice(const DeviceRecord& device) = 0;
    virtual void DeleteDevice(const QString& host, const QString& name,
                              int64_t expectedVersion = 0) = 0;
    virtual int64_t SaveDeviceLine(const QString& host, const QString& device,
                                   const DeviceLineRecord& line) = 0;
    virtual void DeleteDeviceLine(const QString& host, const QString& device, int number) = 0;
    // One request and one transaction on the server: the version is checked,
    // every secondary line is deleted, the type is stored and the line count
    // moved into the type's range, or nothing happens. Answers the new version.
    virtual int64_t ChangeDeviceType(const QString& host, const QString& device, int type,
                                     int64_t expectedVersion) = 0;
    virtual void StartDevice(const QString& host, const QString& name) = 0;
    virtual void StopDevice(const QString& host, const QString& name) = 0;
    virtual void TerminateDevice(const QString& host, const QString& name) = 0;

    // --- Runtime of a server -------------------------------------------------------

    virtual std::vector<ProcessRecord> Processes(const QString& host) = 0;
    virtual void StartProcess(const QString& host, int slot) = 0;
    virtual void StopProcess(const QString& host, int slot) = 0;
    // Newest first; the server leaves out events below minSeverity and, with
    // newerThan, events whose id is not greater, and stops after maxCount
    // events (0: the server's cap). Ids grow with the log. With logStart,
    // the id of the log's oldest event goes there (0 for an empty log): it
    // changes when the server is made again, which newerThan cannot tell.
    virtual std::vector<EventRecord> Events(const QString& host, int minSeverity, int maxCount,
                                            int64_t newerThan = 0, int64_t* logStart = nullptr) = 0;

    // --- Inbound routes and number mappings ------------------------------------------

    // Name, comment and match texts of each route.
    virtual std::vector<RouteRecord> Routes() = 0;
    virtual RouteRecord GetRoute(const QString& name) = 0;
    virtual int64_t CommitRoute(const RouteRecord& route) = 0;
    virtual void DeleteRoute(const QString& name, int64_t expectedVersion = 0) = 0;

    virtual std::vector<NumberMappingRecord> NumberMappings() = 0;
    virtual NumberMappingRecord GetNumberMapping(const QString& match) = 0;
    virtual int64_t CommitNumberMapping(const NumberMappingRecord& mapping) = 0;
    virtual void DeleteNumberMapping(const QString& match, int64_t expectedVersion = 0) = 0;

    // --- Mail gateways -----------------------------------------------------------------

    virtual std::vector<GatewayRecord> Gateways() = 0;
    virtual std::vector<GatewayUserRecord> GatewayUsers(const QString& gateway) = 0;
    virtual GatewayUserRecord GetGatewayUser(const QString& gateway, const QString& address) = 0;
    virtual int64_t CommitGatewayUser(const GatewayUserRecord& user) = 0;
    virtual void DeleteGatewayUser(const QString& gateway, const QString& address,
                                   int64_t expectedVersion = 0) = 0;

    // --- Administrator settings ----------------------------------------------------------

    virtual AdminSettingsRecord GetAdminSettings() = 0;
    virtual int64_t CommitAdminSettings(const AdminSettingsRecord& settings) = 0;

    // --- Least-cost routing ----------------------------------------------------------------

    // The zones in list order.
    virtual ZoneListRecord Zones() = 0;
    virtual ZoneRecord GetZone(const QString& name) = 0;
    virtual int64_t CommitZone(const ZoneRecord& zone) = 0;
    virtual void DeleteZone(const QString& name, int64_t expectedVersion = 0) = 0;

    // Rates and destinations are shown and fetched by their 1-based index in
    // the zone, which moves when an earlier one goes; the records carry
    // their identity (id), which does not. A commit of a loaded record, and
    // a delete given the id, act on that record whatever its index is now,
    // and are refused as a conflict when it is gone or changed.
    virtual std::vector<RateRecord> Rates(const QString& zone) = 0;
    virtual RateRecord GetRate(const QString& zone, int index) = 0;
    virtual IndexedCommit CommitRate(const RateRecord& rate) = 0;
    virtual void DeleteRate(const QString& zone, int index, int64_t expectedVersion = 0,
                            int64_t id = 0) = 0;

    virtual std::vector<DestinationRecord> Destinations(const QString& zone) = 0;
    virtual DestinationRecord GetDestination(const QString& zone, int index) = 0;
    virtual IndexedCommit CommitDestination(const DestinationRecord& destination) = 0;
    virtual void DeleteDestination(const QString& zone, int index, int64_t expectedVersion = 0,
                                   int64_t id = 0) = 0;

    // Makes the routing engine read its tables again.
    virtual void ReloadLcr() = 0;

    // --- Copy and move ------------------------------------------------------
    // Copies (or, cut, moves) the user, printer or device name from the
    // server source to the server target, or the gateway user from the
    // gateway source to the gateway target ("User", "Printer", "Device",
    // "GatewayUser"); one request and one transaction on the server.
    virtual pb::TransferOutcome TransferObject(const QString& kind, const QString& source,
                                               const QString& name, const QString& target,
                                               bool cut) = 0;
};

// The one session of the process: created by the login dialog, held until
// the program ends (tests replace it between cases). Setting it also makes
// it the source of every label text.
ServerSession* TheSession();
void SetTheSession(std::unique_ptr<ServerSession> session);

}  // namespace winadmin
