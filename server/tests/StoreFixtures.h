#pragma once
// A small installation that the store and service suites start from: three
// servers with different roles, users on two of them, a group across both,
// printers and devices on the first, and two routing zones; and what the
// store suites check with.

#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "store/Store.h"
#include "tests/TempDirectory.h"

// Expects statement to throw a ServiceError with the expected code.
#define EXPECT_REFUSED(statement, expected)              \
    do {                                                 \
        try {                                            \
            statement;                                   \
            ADD_FAILURE() << #statement " was accepted"; \
        } catch (const ServiceError& e) {                \
            EXPECT_EQ(e.code(), expected) << e.what();   \
        }                                                \
    } while (0)

namespace veldrano::server::testing {

// record with the fields written in text (protobuf text format) merged in.
template <class M>
M With(M record, const std::string& text) {
    EXPECT_TRUE(google::protobuf::TextFormat::MergeFromString(text, &record)) << text;
    return record;
}

// Newest events of a server, newest first.
inline std::vector<pb::Event> Events(Store& store, const std::string& host, int max = 0) {
    pb::EventRequest req;
    req.set_host_name(host);
    req.set_max_count(max);
    std::vector<pb::Event> out;
    store.ForEachEvent(req, [&](const pb::Event& e) { out.push_back(e); });
    return out;
}

inline void SeedInstallation(Store& store) {
    for (auto [name, roles] : {std::pair{"alpha", "printer_server: true device_server: true"},
                               {"beta", "net_type: 'rrpc'"},
                               {"gamma", "user_server: false printer_server: true"}})
        store.CommitServer(
            With(store.GetServer(name), roles + std::string(" comment: 'Server ") + name + "'"));
    store.CommitPrinter(With(store.GetPrinter("alpha", "laser1"),
                             "comment: 'Office laser' filter_command: 'lpr -P laser1'"));
    for (auto [name, type] : {std::pair{"line1", "type: 1"},
                              {"isdn1", "type: 2 configured_lines: 2"},
                              {"scan1", "type: 8"}})
        store.CommitDevice(
            With(store.GetDevice("alpha", name),
                 type + std::string(" primary { user_server: 'alpha' comment: 'Device ") + name +
                     "' }"));
    for (auto [host, name] : {std::pair{"alpha", "alice"}, std::pair{"beta", "bob"}})
        store.CommitUser(
            With(store.GetUser(host, name), "comment: 'User " + std::string(name) +
                                                "' extras { name: 'Department' value: 'Sales' }"));
    store.CommitGroup(With(store.GetGroup("Sales"),
                           "comment: 'Sales team' members { user_name: 'alice' host_name: 'alpha' "
                           "} members { user_name: 'bob' host_name: 'beta' }"));
    store.CommitZone(With(store.GetZone("Europe"), "is_local: true"));
    store.CommitZone(With(store.GetZone("Overseas"), "primary_host: 'alpha'"));
    for (int start : {6, 12, 18})
        store.CommitRate(
            With(store.GetRate("Europe", 0), "stop_hour: 24 start_hour: " + std::to_string(start)));
    store.CommitDestination(
        With(store.GetDestination("Europe", 0), "prefix: '0049' name: 'Germany'"));
    store.CommitDestination(
        With(store.GetDestination("Europe", 0), "prefix: '0033' name: 'France'"));
}

// A store seeded with the small installation.
class SeededStore : public ::testing::Test {
protected:
    void SetUp() override { SeedInstallation(*store); }
    TempStore store;
};

// Configures line 2 of the seeded ISDN device isdn1 of alpha, comment
// "Second channel".
inline void ConfigureSecondLine(Store& store) {
    store.SaveDeviceLine("alpha", "isdn1",
                         With(pb::DeviceLine(),
                              "number: 2 settings { comment: 'Second channel' user_server: 'alpha' "
                              "reservation_timeout: 1 scanner_page_wait: 1 }"));
}

}  // namespace veldrano::server::testing
