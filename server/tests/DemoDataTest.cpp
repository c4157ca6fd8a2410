// The demo installation, read back through the store: the console's demo needs
// a sample of every area. It is written through the store's commits, whose
// checks already refuse references to what is not there.

#include <gtest/gtest.h>

#include <set>

#include "demo/DemoData.h"
#include "tests/StoreFixtures.h"

namespace veldrano::server::testing {
namespace {

TEST(DemoDataTest, HoldsASampleOfEveryAreaAndASecondFillIsRefused) {
    TempStore store;
    FillDemo(*store);
    const std::vector<pb::Server> servers = store->ListServers();
    std::set<std::string> netTypes;
    std::set<bool> online;
    std::set<int> deviceTypes, severities;
    size_t users = 0, printers = 0;
    for (const pb::Server& s : servers) {
        netTypes.insert(s.net_type());
        online.insert(s.online());
        EXPECT_EQ(store->ListProcesses(s.name()).size(), 8u) << s.name();
        users += store->ListUsers(s.name()).size();
        printers += store->ListPrinters(s.name()).size();
        for (const pb::Device& d : store->ListDevices(s.name())) {
            deviceTypes.insert(d.type());
        }
        for (const pb::Event& e : Events(*store, s.name())) severities.insert(e.severity());
    }
    EXPECT_EQ(netTypes, (std::set<std::string>{"rpc", "rrpc"}));
    EXPECT_EQ(online.size(), 2u);
    EXPECT_EQ(deviceTypes.size(), Store::DeviceTypes().size());
    EXPECT_EQ(severities, (std::set<int>{0, 1, 2, 3, 4, 5}));
    EXPECT_GE(users, 40u);
    EXPECT_GE(printers, 12u);
    EXPECT_FALSE(store->ListGroups().empty());
    EXPECT_FALSE(store->ListRoutes().empty());
    EXPECT_FALSE(store->ListNumberMappings().empty());
    EXPECT_EQ(store->ListGateways().size(), 2u);
    const pb::ZoneList zones = store->ListZones();
    ASSERT_GE(zones.zones_size(), 4);
    EXPECT_FALSE(store->ListRates(zones.first()).empty());
    EXPECT_FALSE(store->ListDestinations(zones.first()).empty());

    // A store that is not empty is refused and left as it was.
    const int64_t events = store->EventCount("fxmaster");
    EXPECT_REFUSED(FillDemo(*store), pb::ERROR_ALREADY_EXISTS);
    EXPECT_EQ(store->EventCount("fxmaster"), events);
    EXPECT_EQ(store->ListServers().size(), servers.size());
}

}  // namespace
}  // namespace veldrano::server::testing
