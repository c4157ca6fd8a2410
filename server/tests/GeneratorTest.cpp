// The benchmark generator: its size list and a small installation counted
// back through the store.

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <set>
#include <stdexcept>

#include "demo/Generator.h"
#include "tests/StoreFixtures.h"

namespace veldrano::server::testing {
namespace {

TEST(GenerateSizesTest, ParsesEveryNameWithSpacesAndInAnyOrder) {
    GenerateSizes s = ParseGenerateSizes(
        "users=100000, events=1000000,servers=200 ,printers=100,devices=100,zones=1000");
    EXPECT_EQ(s.servers, 200);
    EXPECT_EQ(s.firstServerUsers, 100000);
    EXPECT_EQ(s.printersPerServer, 100);
    EXPECT_EQ(s.devicesPerServer, 100);
    EXPECT_EQ(s.zones, 1000);
    EXPECT_EQ(s.events, 1000000);
    EXPECT_TRUE(s.eventHost.empty());

    s = ParseGenerateSizes("events=3000000000,eventhost=fxmaster");
    EXPECT_EQ(s.events, 3000000000L);
    EXPECT_EQ(s.eventHost, "fxmaster");
    EXPECT_EQ(s.servers, 0);

    s = ParseGenerateSizes("");
    EXPECT_EQ(s.servers + s.firstServerUsers + s.printersPerServer + s.devicesPerServer + s.zones,
              0);
}

TEST(GenerateSizesTest, RefusesUnknownNamesAndBadNumbersNamingTheCulprit) {
    const std::pair<const char*, const char*> bad[] = {
        {"usres=5", "usres"},
        {"users=12x", "12x"},
        {"users=", "users"},
        {"printers=-1", "-1"},
        {"servers", "servers"},
        {"zones=1.5", "1.5"},
        {"devices=99999999999999999999", "devices"},
        {"servers=2,events=many", "many"},
    };
    for (const auto& [text, culprit] : bad) {
        try {
            ParseGenerateSizes(text);
            ADD_FAILURE() << text << " was accepted";
        } catch (const std::invalid_argument& e) {
            EXPECT_NE(std::string(e.what()).find(culprit), std::string::npos)
                << text << ": " << e.what();
        }
    }
    EXPECT_NE(std::string(GenerateHelp()).find("eventhost"), std::string::npos);
}

TEST(GenerateTest, SmallInstallationHasExactlyTheAskedCounts) {
    TempStore store;
    Generate(*store,
             ParseGenerateSizes("servers=3,users=50,printers=5,devices=5,zones=4,events=500"));

    std::vector<pb::Server> servers = store->ListServers();
    ASSERT_EQ(servers.size(), 3u);
    const std::string first = servers.front().name();
    std::set<std::string> netTypes;
    for (const pb::Server& s : servers) {
        SCOPED_TRACE(s.name());
        netTypes.insert(s.net_type());
        EXPECT_EQ(store->ListUsers(s.name()).size(), s.name() == first ? 50u : 0u);
        EXPECT_EQ(store->ListPrinters(s.name()).size(), 5u);
        EXPECT_EQ(store->ListDevices(s.name()).size(), 5u);
        EXPECT_EQ(store->EventCount(s.name()), s.name() == first ? 500 : 0);
        EXPECT_EQ(store->ListProcesses(s.name()).size(), 8u);
        EXPECT_TRUE(s.online());
    }
    EXPECT_EQ(netTypes.size(), 2u);

    pb::ZoneList zones = store->ListZones();
    ASSERT_EQ(zones.zones_size(), 4);
    for (const pb::Zone& z : zones.zones()) {
        EXPECT_EQ(store->ListRates(z.name()).size(), 2u);
        EXPECT_EQ(store->ListDestinations(z.name()).size(), 2u);
    }

    // The log is usable by the viewer: times in order, newest first.
    int64_t newer = INT64_MAX;
    for (const pb::Event& e : Events(*store, first)) {
        EXPECT_LE(e.time(), newer);
        newer = e.time();
    }
}

TEST(GenerateTest, TheLogIsMostlyNotesAndWarningsWithRarePanicsSpreadOverIt) {
    TempStore store;
    Generate(*store, ParseGenerateSizes("events=20000"));
    const std::string host = store->ListServers().front().name();
    std::map<int, int> counts;
    std::vector<int64_t> panics;
    for (const pb::Event& e : Events(*store, host, 20000)) {
        ++counts[e.severity()];
        if (e.severity() == 5) panics.push_back(e.id());
    }
    EXPECT_EQ(counts,
              (std::map<int, int>{{0, 800}, {1, 13000}, {2, 6000}, {3, 180}, {4, 18}, {5, 2}}));
    // One in each 10,000, not two together.
    ASSERT_EQ(panics.size(), 2u);
    EXPECT_EQ(panics[0] - panics[1], 10000);
}

TEST(GenerateTest, EventsGoToTheNamedServerAndAnUnknownOneIsRefused) {
    TempStore store;
    GenerateSizes sizes = ParseGenerateSizes("servers=2,events=30");
    sizes.eventHost = "srv00002.bench.example.net";
    Generate(*store, sizes);
    EXPECT_EQ(store->EventCount("srv00001.bench.example.net"), 0);
    EXPECT_EQ(store->EventCount("srv00002.bench.example.net"), 30);

    TempStore other;
    sizes.eventHost = "nowhere.example.net";
    EXPECT_REFUSED(Generate(*other, sizes), pb::ERROR_NOT_FOUND);
}

TEST(GenerateTest, AskingForUsersAloneStillCreatesTheirServer) {
    TempStore store;
    Generate(*store, ParseGenerateSizes("users=7"));
    std::vector<pb::Server> servers = store->ListServers();
    ASSERT_EQ(servers.size(), 1u);
    EXPECT_EQ(store->ListUsers(servers[0].name()).size(), 7u);
}

}  // namespace
}  // namespace veldrano::server::testing
