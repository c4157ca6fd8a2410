// Reading a server's event log: the severity filter, the count, both orders
// and "newer than" together give exactly the events a plain walk over the log
// would pick, whichever severities they have and whatever other servers log
// between them; a store from before the severity index reads the same.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "store/Database.h"
#include "store/Schema.h"
#include "tests/StoreFixtures.h"
#include "tests/TempDirectory.h"

namespace veldrano::server::testing {
namespace {

struct Logged {
    int64_t id;
    std::string host;
    int severity;
};

pb::EventRequest Request(const std::string& host, int minSeverity, int maxCount, bool oldestFirst,
                         int64_t newerThan) {
    pb::EventRequest req;
    req.set_host_name(host);
    req.set_min_severity(minSeverity);
    req.set_max_count(maxCount);
    req.set_oldest_first(oldestFirst);
    req.set_newer_than(newerThan);
    return req;
}

std::vector<int64_t> IdsRead(Store& store, const pb::EventRequest& req) {
    std::vector<int64_t> ids;
    store.ForEachEvent(req, [&](const pb::Event& e) { ids.push_back(e.id()); });
    return ids;
}

// What the request asks for, picked from everything logged by a plain walk.
std::vector<int64_t> IdsWanted(const std::vector<Logged>& log, const pb::EventRequest& req) {
    std::vector<int64_t> ids;
    for (const Logged& e : log)
        if (e.host == req.host_name() && e.severity >= req.min_severity() &&
            e.id > req.newer_than())
            ids.push_back(e.id);
    if (!req.oldest_first()) std::reverse(ids.begin(), ids.end());
    if (ids.size() > size_t(req.max_count())) ids.resize(size_t(req.max_count()));
    return ids;
}

class EventLogTest : public ::testing::Test {
protected:
    void SetUp() override { SeedInstallation(*store); }

    // alpha's severities come in runs and stray values, with beta's events
    // between them, so that every cursor of a merged read starts, pauses and
    // ends at a different place.
    void LogMixedSeverities() {
        static constexpr int kAlpha[] = {1, 1, 2, 5, 1, 3, 3, 3, 0, 2, 9, 1, 4, -2, 2, 2, 5, 1};
        store->Bulk([&] {
            for (int round = 0; round < 3; ++round) {
                for (size_t i = 0; i < std::size(kAlpha); ++i) {
                    Log("alpha", kAlpha[i]);
                    if (i % 3 == 0) Log("beta", kAlpha[(i + round) % std::size(kAlpha)]);
                }
            }
        });
    }

    void Log(const std::string& host, int severity) {
        pb::Event e;
        e.set_time(1700000000 + int64_t(log.size()));
        e.set_severity(severity);
        e.set_originator_id(int(log.size()));
        e.set_text(host + " event " + std::to_string(log.size()));
        log.push_back({store->AppendEvent(host, e), host, severity});
    }

    TempStore store;
    std::vector<Logged> log;
};

TEST_F(EventLogTest, AMergedReadPicksWhatAWalkOverTheLogPicks) {
    LogMixedSeverities();
    const int64_t middle = log[log.size() / 2].id;
    for (const char* host : {"alpha", "beta"}) {
        for (int minSeverity : {-5, 0, 2, 3, 5, 6, 10}) {
            for (int maxCount : {1, 4, 1000}) {
                for (bool oldestFirst : {false, true}) {
                    for (int64_t newerThan : {int64_t(0), middle, log.back().id}) {
                        const auto req =
                            Request(host, minSeverity, maxCount, oldestFirst, newerThan);
                        SCOPED_TRACE(req.ShortDebugString());
                        EXPECT_EQ(IdsRead(*store, req), IdsWanted(log, req));
                    }
                }
            }
        }
    }
}

TEST_F(EventLogTest, EventsKeepTheirFieldsAndTheCountDefaultsToTheCap) {
    pb::Event e;
    e.set_time(1700001234);
    e.set_severity(4);
    e.set_originator_id(4711);
    e.set_originator_type(19);
    e.set_message_class(0x240);
    e.set_text("Line 3 down: no dial tone");
    const int64_t id = store->AppendEvent("alpha", e);
    store->Bulk([&] {
        for (int i = 0; i < 10005; ++i) Log("gamma", i % 2);
    });

    std::vector<pb::Event> read;
    store->ForEachEvent(Request("alpha", 4, 0, false, 0),
                        [&](const pb::Event& got) { read.push_back(got); });
    ASSERT_EQ(read.size(), 1u);
    e.set_id(id);
    EXPECT_EQ(read[0].SerializeAsString(), e.SerializeAsString());
    EXPECT_EQ(IdsRead(*store, Request("gamma", 0, 0, false, 0)).size(), 10000u);
    EXPECT_REFUSED(store->ForEachEvent(Request("nowhere", 0, 0, false, 0), [](auto&) {}),
                   pb::ERROR_NOT_FOUND);
}

TEST(EventLogMigrationTest, AStoreLoggedBeforeTheSeverityIndexReadsTheSame) {
    auto dir = std::filesystem::temp_directory_path() /
               ("veldrano-eventlog-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    const std::string path = (dir / "old.sqlite").string();
    {
        Database db(path);
        Migrate(db, 2);
        pb::Server body;
        body.set_net_type("rpc");
        db.Prepare("INSERT INTO servers(id, name, version, body) VALUES(1, 'legacy', 1, ?)")
            .BindBlob(1, body.SerializeAsString())
            .Run();
        for (int i = 0; i < 12; ++i)
            db.Prepare(
                  "INSERT INTO events(server_id, time, severity, originator_id, "
                  "originator_type, message_class, text) VALUES(1, ?, ?, 0, 0, 0, 'old')")
                .Bind(1, 1600000000 + i)
                .Bind(2, i % 4)
                .Run();
    }
    {
        Store store(path);
        EXPECT_EQ(IdsRead(store, Request("legacy", 3, 2, false, 0)), (std::vector<int64_t>{12, 8}));
        EXPECT_EQ(IdsRead(store, Request("legacy", 2, 10, true, 7)),
                  (std::vector<int64_t>{8, 11, 12}));
    }
    std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace veldrano::server::testing
