// The demo installation, read back through the store: it must show the
// console every kind of object. It is written through the store's commits,
// whose checks already refuse references to what is not there; these tests
// check what those cannot: that each kind and each variant is present.

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "demo/DemoData.h"
#include "tests/StoreFixtures.h"

namespace veldrano::server::testing {
namespace {

bool Resolves(Store& store, const pb::UserRef& ref) {
    return !ref.user_name().empty() && !store.GetUser(ref.host_name(), ref.user_name()).is_new();
}

class DemoDataTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(store_->IsEmpty());
        FillDemo(*store_);
        servers_ = store_->ListServers();
    }

    std::vector<pb::User> AllUsers() {
        std::vector<pb::User> all;
        for (const pb::Server& s : servers_)
            for (pb::User& u : store_->ListUsers(s.name())) all.push_back(u);
        return all;
    }

    TempStore store_;
    std::vector<pb::Server> servers_;
};

TEST_F(DemoDataTest, ServersCoverRolesNetTypesAndRunState) {
    ASSERT_GE(servers_.size(), 3u);
    std::set<std::string> netTypes;
    int remote = 0, offline = 0, users = 0, printers = 0, devices = 0;
    for (const pb::Server& s : servers_) {
        netTypes.insert(s.net_type());
        remote += s.remote();
        offline += !s.online();
        users += s.user_server();
        printers += s.printer_server();
        devices += s.device_server();
        std::vector<pb::Process> procs = store_->ListProcesses(s.name());
        ASSERT_EQ(procs.size(), 8u) << s.name();
        for (const pb::Process& p : procs)
            EXPECT_EQ(p.pid() > 0, s.online()) << s.name() << " slot " << p.slot();
    }
    EXPECT_EQ(netTypes, (std::set<std::string>{"rpc", "rrpc"}));
    EXPECT_GE(remote, 1);
    EXPECT_GE(offline, 1);
    EXPECT_GE(users, 2);
    EXPECT_GE(printers, 2);
    EXPECT_GE(devices, 2);
}

TEST_F(DemoDataTest, EveryDeviceTypeIsPresentAndMultiLineTypesShowBothKindsOfLine) {
    std::set<int> types;
    std::set<pb::DeviceRunState> states;
    // Per type: secondary lines configured on the server, and lines counted
    // but not configured (the editor shows them as such).
    std::map<int, int> configured, counted;
    for (const pb::Server& s : servers_) {
        for (const pb::Device& d : store_->ListDevices(s.name())) {
            types.insert(d.type());
            states.insert(d.state());
            EXPECT_TRUE(store_->GetServer(d.primary().user_server()).user_server()) << d.name();
            const pb::Device open = store_->OpenDevice(s.name(), d.name());
            for (const pb::DeviceLine& l : open.secondary_lines())
                ++(l.version() > 0 ? configured : counted)[d.type()];
        }
    }
    for (const pb::DeviceType& t : Store::DeviceTypes()) {
        EXPECT_EQ(types.count(t.id()), 1u) << "no device of type " << t.id() << " " << t.name();
        if (t.max_lines() < 2) continue;
        EXPECT_GT(configured[t.id()], 0) << "no configured secondary line of " << t.name();
        EXPECT_GT(counted[t.id()], 0) << "no line of " << t.name() << " left to configure";
    }
    EXPECT_EQ(states.size(), 3u) << "not every device state is shown";
}

TEST_F(DemoDataTest, UsersGroupsAndPrintersShowEveryVariant) {
    std::vector<pb::User> users = AllUsers();
    ASSERT_GE(users.size(), 40u);
    std::set<std::string> hosts;
    int substitutes = 0, crossServer = 0, printing = 0, extras = 0;
    for (const pb::User& u : users) {
        hosts.insert(u.host_name());
        extras += u.extras_size() > 0;
        substitutes += !u.substitute().user_name().empty();
        crossServer +=
            !u.substitute().user_name().empty() && u.substitute().host_name() != u.host_name();
        printing += !u.printer().empty();
    }
    EXPECT_GE(hosts.size(), 3u);
    EXPECT_GE(substitutes, 5);
    EXPECT_GE(crossServer, 1);
    EXPECT_GE(printing, 5);
    EXPECT_EQ(extras, static_cast<int>(users.size()));

    bool spansServers = false;
    for (const pb::Group& g : store_->ListGroups()) {
        std::set<std::string> hosts;
        EXPECT_GT(g.members_size(), 0) << g.name();
        for (const pb::UserRef& m : g.members()) hosts.insert(m.host_name());
        spansServers |= hosts.size() >= 2;
    }
    EXPECT_TRUE(spansServers);

    std::set<int> printerTypes;
    for (const pb::Server& s : servers_)
        for (const pb::Printer& p : store_->ListPrinters(s.name())) printerTypes.insert(p.type());
    for (int type = 0; type <= 11; ++type)
        EXPECT_EQ(printerTypes.count(type), 1u) << "no printer of type " << type;
}

TEST_F(DemoDataTest, RoutesMappingsGatewaysAndSettingsAreComplete) {
    std::vector<pb::Route> routes = store_->ListRoutes();
    ASSERT_GE(routes.size(), 3u);
    bool polls = false;
    for (const pb::Route& r : routes) {
        EXPECT_TRUE(Resolves(*store_, r.user())) << r.name();
        EXPECT_FALSE(r.group().empty()) << r.name();
        if (r.poll_server().empty()) continue;
        polls = true;
        EXPECT_FALSE(r.poll_document().empty()) << r.name();
    }
    EXPECT_TRUE(polls);
    EXPECT_GE(store_->ListNumberMappings().size(), 3u);
    std::vector<pb::Gateway> gateways = store_->ListGateways();
    ASSERT_EQ(gateways.size(), 2u);
    for (const pb::Gateway& g : gateways) EXPECT_GE(store_->ListGatewayUsers(g.name()).size(), 2u);

    pb::AdminSettings s = store_->GetAdminSettings();
    bool offered = false;
    for (const pb::MapErrorChoice& c : s.map_error_choices())
        offered |= c.code() == s.map_error_to_busy();
    EXPECT_TRUE(offered) << "map_error_to_busy " << s.map_error_to_busy() << " is not a choice";
    EXPECT_TRUE(Resolves(*store_, s.send_copy_user()));
    EXPECT_TRUE(Resolves(*store_, s.receive_copy_user()));
    EXPECT_NE(s.smtp_gateway_user().find('@'), std::string::npos);
}

TEST_F(DemoDataTest, LeastCostRoutingHasEveryZoneKindRateAndDestination) {
    pb::ZoneList zones = store_->ListZones();
    ASSERT_GE(zones.zones_size(), 4);
    int local = 0, daemon = 0, pair = 0, single = 0;
    bool fullDay = false;
    std::set<int> destTypes;
    std::set<bool> external;
    for (const pb::Zone& z : zones.zones()) {
        if (z.is_local())
            ++local;
        else if (z.is_daemon())
            ++daemon;
        else
            z.secondary_host().empty() ? ++single : ++pair;
        std::vector<pb::Rate> rates = store_->ListRates(z.name());
        EXPECT_FALSE(rates.empty()) << z.name();
        for (const pb::Rate& r : rates) fullDay |= r.stop_hour() == 24 && r.stop_minute() == 0;
        for (const pb::Destination& d : store_->ListDestinations(z.name())) {
            destTypes.insert(d.type());
            external.insert(d.external());
        }
    }
    EXPECT_GE(local, 1);
    EXPECT_GE(daemon, 1);
    EXPECT_GE(pair, 1);
    EXPECT_GE(single, 1);
    EXPECT_TRUE(fullDay) << "no rate runs to 24:00";
    EXPECT_EQ(destTypes.size(), 4u);
    EXPECT_EQ(external.size(), 2u);
}

TEST_F(DemoDataTest, EventLogHasEverySeverityAndASecondFillIsRefused) {
    std::set<int> severities;
    int64_t total = 0;
    for (const pb::Server& srv : servers_) {
        total += store_->EventCount(srv.name());
        for (const pb::Event& e : Events(*store_, srv.name())) severities.insert(e.severity());
    }
    EXPECT_GE(total, 24);
    EXPECT_EQ(severities, (std::set<int>{0, 1, 2, 3, 4, 5}));

    // A store that is not empty is refused and left as it was.
    const size_t users = AllUsers().size();
    const int64_t events = store_->EventCount("fxmaster");
    EXPECT_REFUSED(FillDemo(*store_), pb::ERROR_ALREADY_EXISTS);
    EXPECT_EQ(AllUsers().size(), users);
    EXPECT_EQ(store_->EventCount("fxmaster"), events);
    EXPECT_EQ(store_->ListServers().size(), servers_.size());
}

}  // namespace
}  // namespace veldrano::server::testing
