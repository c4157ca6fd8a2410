// Reading a server's event log: the severity filter, the count, both orders
// and "newer than" together give exactly the events a plain walk over the log
// would pick, whichever severities they have and whatever other servers log
// between them.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/StoreFixtures.h"

namespace veldrano::server::testing {
namespace {

struct Logged {
    int64_t id;
    std::string host;
    int severity;
};

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

class EventLogTest : public SeededStore {
protected:
    void Log(const std::string& host, int severity) {
        pb::Event e;
        e.set_time(1700000000 + int64_t(log.size()));
        e.set_severity(severity);
        e.set_originator_id(int(log.size()));
        e.set_text(host + " event " + std::to_string(log.size()));
        log.push_back({store->AppendEvent(host, e), host, severity});
    }

    std::vector<Logged> log;
};

TEST_F(EventLogTest, AMergedReadPicksWhatAWalkOverTheLogPicks) {
    // alpha's severities come in runs and stray values, with beta's events
    // between them, so that every cursor of a merged read starts, pauses and
    // ends at a different place.
    static constexpr int kAlpha[] = {1, 1, 2, 5, 1, 3, 3, 3, 0, 2, 9, 1, 4, -2, 2, 2, 5, 1};
    store->Bulk([&] {
        for (int round = 0; round < 3; ++round) {
            for (size_t i = 0; i < std::size(kAlpha); ++i) {
                Log("alpha", kAlpha[i]);
                if (i % 3 == 0) Log("beta", kAlpha[(i + round) % std::size(kAlpha)]);
            }
        }
    });
    const int64_t middle = log[log.size() / 2].id;
    for (const char* host : {"alpha", "beta"}) {
        for (int minSeverity : {-5, 0, 2, 3, 5, 6, 10}) {
            for (int maxCount : {1, 4, 1000}) {
                for (bool oldestFirst : {false, true}) {
                    for (int64_t newerThan : {int64_t(0), middle, log.back().id}) {
                        pb::EventRequest req;
                        req.set_host_name(host);
                        req.set_min_severity(minSeverity);
                        req.set_max_count(maxCount);
                        req.set_oldest_first(oldestFirst);
                        req.set_newer_than(newerThan);
                        SCOPED_TRACE(req.ShortDebugString());
                        EXPECT_EQ(IdsRead(*store, req), IdsWanted(log, req));
                    }
                }
            }
        }
    }
}

TEST_F(EventLogTest, EventsKeepTheirFieldsAndTheCountDefaultsToTheCap) {
    const pb::Event e = With(pb::Event(),
                             "time: 1700001234 severity: 4 originator_id: 4711 originator_type: 19 "
                             "message_class: 0x240 text: 'Line 3 down: no dial tone'");
    const int64_t id = store->AppendEvent("alpha", e);
    store->Bulk([&] {
        for (int i = 0; i < 10005; ++i) Log("gamma", i % 2);
    });
    const std::vector<pb::Event> read = Events(*store, "alpha");
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(read[0].SerializeAsString(),
              With(e, "id: " + std::to_string(id)).SerializeAsString());
    EXPECT_EQ(Events(*store, "gamma").size(), 10000u);
}

}  // namespace
}  // namespace veldrano::server::testing
