#pragma once
// The installation's configuration and runtime state, kept in one SQLite file.
//
// Every method is one transaction: it validates, writes everything or nothing,
// and throws ServiceError with a protocol error number on refusal. Records are
// the protocol's own messages; "Get" of a missing key answers a record marked
// is_new with the server's defaults. The store is safe to use from several
// threads (calls are serialised).

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "admin.pb.h"
#include "store/ServiceError.h"

namespace veldrano::server {

class Database;

class Store {
public:
    // Opens (creating if needed) and migrates the store at path.
    explicit Store(const std::string& path);
    ~Store();
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    int SchemaVersion();
    static int LatestSchemaVersion();

    // Installation settings (brand, language, password hash, ...).
    std::string GetMeta(const std::string& key, const std::string& fallback = "");
    void SetMeta(const std::string& key, const std::string& value);
    bool IsEmpty();  // no server configured yet

    // Runs f inside one transaction (for bulk fills such as the demo data).
    void Bulk(const std::function<void()>& f);

    // Servers
    std::vector<pb::Server> ListServers();
    pb::Server GetServer(const std::string& name);
    // Also deletes, in the same transaction, the objects of each role that s
    // takes away and that confirmed names; refuses with
    // ERROR_ROLE_OBJECTS_REMAIN a role taken away from a server that still has
    // objects of it without that confirmation.
    int64_t CommitServer(const pb::Server& s, const pb::RoleObjectDeletion& confirmed = {});
    void DeleteServer(const std::string& name, int64_t expectedVersion = 0);
    void SetServerOnline(const std::string& name, bool online);
    // The printer and device names of every server, servers in name order.
    std::vector<pb::ServerObjects> ListServerObjects();

    // Users. ForEachUser (and ListUsers) read from a Snapshot: they see what
    // is committed, not the changes of a Bulk that is still running.
    void ForEachUser(const std::string& host, const std::function<void(pb::User&)>& f);
    // The same users as their list shows them: name and comment only.
    void ForEachUserListRow(const std::string& host, const std::function<void(pb::User&)>& f);
    std::vector<pb::User> ListUsers(const std::string& host);
    pb::User GetUser(const std::string& host, const std::string& name);
    int64_t CommitUser(const pb::User& u);
    void DeleteUser(const std::string& host, const std::string& name, int64_t expectedVersion = 0);
    // An empty hash removes the password. The version stays as it is.
    void SetUserPasswordHash(const std::string& host, const std::string& name,
                             const std::string& hash);
    std::vector<std::string> ListScanners(const std::string& host);

    // Groups
    std::vector<pb::Group> ListGroups();
    pb::Group GetGroup(const std::string& name);
    int64_t CommitGroup(const pb::Group& g);
    void DeleteGroup(const std::string& name, int64_t expectedVersion = 0);

    // Printers
    std::vector<pb::Printer> ListPrinters(const std::string& host);
    pb::Printer GetPrinter(const std::string& host, const std::string& name);
    int64_t CommitPrinter(const pb::Printer& p);
    void DeletePrinter(const std::string& host, const std::string& name,
                       int64_t expectedVersion = 0);

    // Devices
    static const std::vector<pb::DeviceType>& DeviceTypes();
    std::vector<pb::Device> ListDevices(const std::string& host);
    // The device with its configured secondary lines only.
    pb::Device GetDevice(const std::string& host, const std::string& name);
    // The device as the editor shows it: every line 2 .. configured_lines
    // (those not configured with version 0 and fresh settings) and the line
    // names. A name that names no device answers a new one of type newType
    // (0 or unknown: the first type) with that type's default line count.
    pb::Device OpenDevice(const std::string& host, const std::string& name, int newType = 0);
    int64_t CommitDevice(const pb::Device& d);
    void DeleteDevice(const std::string& host, const std::string& name,
                      int64_t expectedVersion = 0);
    int64_t SaveDeviceLine(const std::string& host, const std::string& device,
                           const pb::DeviceLine& line);
    void DeleteDeviceLine(const std::string& host, const std::string& device, int number);
    // Deletes every secondary line, stores the type and moves configured_lines
    // into the type's range, against the device's version; answers the new one.
    int64_t ChangeDeviceType(const std::string& host, const std::string& device, int type,
                             int64_t expectedVersion);

    // Copies or moves a user, printer, device or gateway user in one
    // transaction, in the order the console's Paste promises: both ends
    // there and not blocking, the object there; a cut object leaves the
    // source; the copy is added unless the target has that name. A refusal
    // (a reference the target lacks, a role it lacks) undoes all of it.
    pb::TransferOutcome TransferObject(const pb::TransferRequest& request);
    void SetDeviceState(const std::string& host, const std::string& device,
                        pb::DeviceRunState state);

    // Processes (one row per slot of a server)
    std::vector<pb::Process> ListProcesses(const std::string& host);
    void PutProcess(const std::string& host, const pb::Process& p);

    // Events
    int64_t AppendEvent(const std::string& host, const pb::Event& e);
    // Calls f for each event that passes the filter (severity, newer_than),
    // newest or oldest first, at most max_count of them. Reads only the
    // events it passes on, however long the log and whichever the filter.
    // Answers the id of the oldest event the log holds (0 for an empty
    // log), which changes only when a server is made again under its name.
    int64_t ForEachEvent(const pb::EventRequest& req,
                         const std::function<void(const pb::Event&)>& f);
    int64_t EventCount(const std::string& host);

    // Routes and number mappings
    std::vector<pb::Route> ListRoutes();
    pb::Route GetRoute(const std::string& name);
    int64_t CommitRoute(const pb::Route& r);
    void DeleteRoute(const std::string& name, int64_t expectedVersion = 0);
    std::vector<pb::NumberMapping> ListNumberMappings();
    pb::NumberMapping GetNumberMapping(const std::string& match);
    int64_t CommitNumberMapping(const pb::NumberMapping& m);
    void DeleteNumberMapping(const std::string& match, int64_t expectedVersion = 0);

    // Gateways and gateway users
    std::vector<pb::Gateway> ListGateways();
    int64_t CommitGateway(const pb::Gateway& g);
    std::vector<pb::GatewayUser> ListGatewayUsers(const std::string& gateway);
    pb::GatewayUser GetGatewayUser(const std::string& gateway, const std::string& address);
    int64_t CommitGatewayUser(const pb::GatewayUser& u);
    void DeleteGatewayUser(const std::string& gateway, const std::string& address,
                           int64_t expectedVersion = 0);

    // Administrator settings
    pb::AdminSettings GetAdminSettings();
    int64_t CommitAdminSettings(const pb::AdminSettings& s);

    // Least-cost routing. Zones keep the order in which they were created.
    pb::ZoneList ListZones();
    pb::Zone GetZone(const std::string& name);
    int64_t CommitZone(const pb::Zone& z);
    void DeleteZone(const std::string& name, int64_t expectedVersion = 0);
    std::vector<pb::Rate> ListRates(const std::string& zone);
    pb::Rate GetRate(const std::string& zone, int index);
    // Answers the rate's index after the commit in *index when given.
    int64_t CommitRate(const pb::Rate& r, int* index = nullptr);
    void DeleteRate(const std::string& zone, int index, int64_t expectedVersion = 0,
                    int64_t id = 0);
    std::vector<pb::Destination> ListDestinations(const std::string& zone);
    pb::Destination GetDestination(const std::string& zone, int index);
    int64_t CommitDestination(const pb::Destination& d, int* index = nullptr);
    void DeleteDestination(const std::string& zone, int index, int64_t expectedVersion = 0,
                           int64_t id = 0);

    // A read transaction on a connection of its own: it sees the store as it
    // was when it began and holds no lock that writers, logins or other
    // readers wait for, so a client that reads a long list slowly (or stops
    // reading) delays nobody else.
    class Snapshot {
    public:
        explicit Snapshot(Store& store);
        ~Snapshot();
        Snapshot(const Snapshot&) = delete;
        Snapshot& operator=(const Snapshot&) = delete;
        Database& db() { return *db_; }

    private:
        Store& store_;
        std::unique_ptr<Database> db_;
    };

private:
    std::string path_;
    std::recursive_mutex mutex_;
    std::unique_ptr<Database> db_;
    std::mutex readersMutex_;
    std::vector<std::unique_ptr<Database>> idleReaders_;
};

}  // namespace veldrano::server
