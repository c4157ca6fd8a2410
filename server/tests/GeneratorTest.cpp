// The benchmark generator: its size list and a small installation counted
// back through the store.

#include <gtest/gtest.h>

#include <stdexcept>

#include "demo/Generator.h"
#include "tests/StoreFixtures.h"

namespace veldrano::server::testing {
namespace {

TEST(GenerateSizesTest, ParsesEveryNameAndRefusesBadOnesNamingTheCulprit) {
    const GenerateSizes s =
        ParseGenerateSizes("users=100000, events=3000000000,servers=200 ,zones=9");
    EXPECT_EQ(s.servers, 200);
    EXPECT_EQ(s.firstServerUsers, 100000);
    EXPECT_EQ(s.zones, 9);
    EXPECT_EQ(s.events, 3000000000L);
    EXPECT_EQ(ParseGenerateSizes("eventhost=fxmaster").eventHost, "fxmaster");
    for (auto [text, culprit] : {std::pair{"usres=5", "usres"},
                                 {"users=12x", "12x"},
                                 {"servers", "servers"},
                                 {"printers=-1", "-1"},
                                 {"devices=99999999999999999999", "devices"}}) {
        try {
            ParseGenerateSizes(text);
            ADD_FAILURE() << text << " was accepted";
        } catch (const std::invalid_argument& e) {
            EXPECT_NE(std::string(e.what()).find(culprit), std::string::npos)
                << text << ": " << e.what();
        }
    }
}

TEST(GenerateTest, SmallInstallationHasExactlyTheAskedCounts) {
    TempStore store;
    Generate(*store,
             ParseGenerateSizes("servers=3,users=50,printers=5,devices=5,zones=4,events=500"));
    std::vector<pb::Server> servers = store->ListServers();
    ASSERT_EQ(servers.size(), 3u);
    const std::string first = servers.front().name();
    for (const pb::Server& s : servers) {
        SCOPED_TRACE(s.name());
        EXPECT_EQ(store->ListUsers(s.name()).size(), s.name() == first ? 50u : 0u);
        EXPECT_EQ(store->ListPrinters(s.name()).size(), 5u);
        EXPECT_EQ(store->ListDevices(s.name()).size(), 5u);
        EXPECT_EQ(store->EventCount(s.name()), s.name() == first ? 500 : 0);
    }
    pb::ZoneList zones = store->ListZones();
    ASSERT_EQ(zones.zones_size(), 4);
    EXPECT_EQ(store->ListRates(zones.first()).size(), 2u);
    EXPECT_EQ(store->ListDestinations(zones.first()).size(), 2u);
}

}  // namespace
}  // namespace veldrano::server::testing
