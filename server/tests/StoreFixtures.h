#pragma once
// A small installation that the store and service suites start from: three
// servers with different roles, users on two of them, a group across both,
// printers and devices on the first, and two routing zones; and what the
// store suites check with.

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

// record after edit(record), for a commit that differs in one field.
template <class M, class Edit>
M With(M record, Edit edit) {
    edit(record);
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
    auto server = [&](const char* name, bool users, bool printers, bool devices, const char* net) {
        auto s = store.GetServer(name);
        s.set_comment(std::string("Server ") + name);
        s.set_user_server(users);
        s.set_printer_server(printers);
        s.set_device_server(devices);
        s.set_net_type(net);
        store.CommitServer(s);
    };
    server("alpha", true, true, true, "rpc");
    server("beta", true, false, false, "rrpc");
    server("gamma", false, true, false, "rpc");

    auto printer = store.GetPrinter("alpha", "laser1");
    printer.set_comment("Office laser");
    printer.set_filter_command("lpr -P laser1");
    store.CommitPrinter(printer);

    auto device = [&](const char* name, int type, int lines) {
        auto d = store.GetDevice("alpha", name);
        d.set_type(type);
        d.set_configured_lines(lines);
        d.mutable_primary()->set_comment(std::string("Device ") + name);
        d.mutable_primary()->set_user_server("alpha");
        store.CommitDevice(d);
    };
    device("line1", 1, 1);
    device("isdn1", 2, 2);
    device("scan1", 8, 1);

    auto user = [&](const char* host, const char* name) {
        auto u = store.GetUser(host, name);
        u.set_comment(std::string("User ") + name);
        auto* extra = u.add_extras();
        extra->set_name("Department");
        extra->set_value("Sales");
        store.CommitUser(u);
    };
    user("alpha", "alice");
    user("beta", "bob");

    auto group = store.GetGroup("Sales");
    group.set_comment("Sales team");
    for (auto [u, h] : {std::pair{"alice", "alpha"}, std::pair{"bob", "beta"}}) {
        auto* m = group.add_members();
        m->set_user_name(u);
        m->set_host_name(h);
    }
    store.CommitGroup(group);

    auto europe = store.GetZone("Europe");
    europe.set_is_local(true);
    store.CommitZone(europe);
    auto overseas = store.GetZone("Overseas");
    overseas.set_primary_host("alpha");
    store.CommitZone(overseas);
    for (int start : {6, 12, 18}) {
        auto r = store.GetRate("Europe", 0);
        r.set_start_hour(start);
        r.set_stop_hour(24);
        store.CommitRate(r);
    }
    for (auto [prefix, name] : {std::pair{"0049", "Germany"}, std::pair{"0033", "France"}}) {
        auto d = store.GetDestination("Europe", 0);
        d.set_prefix(prefix);
        d.set_name(name);
        store.CommitDestination(d);
    }
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
    pb::DeviceLine line;
    line.set_number(2);
    line.mutable_settings()->set_comment("Second channel");
    line.mutable_settings()->set_user_server("alpha");
    line.mutable_settings()->set_reservation_timeout(1);
    line.mutable_settings()->set_scanner_page_wait(1);
    store.SaveDeviceLine("alpha", "isdn1", line);
}

}  // namespace veldrano::server::testing
