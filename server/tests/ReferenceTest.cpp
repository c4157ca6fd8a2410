// References kept in record bodies: a route's user, group and poll server,
// and a user's printer. A commit must not store a reference to something that
// is gone, and a deletion (of one record, a server or a role's objects) must
// not leave one behind: it is refused as a whole, naming who still refers.

#include <gtest/gtest.h>

#include <functional>

#include "tests/StoreFixtures.h"

namespace veldrano::server::testing {
namespace {

class ReferenceTest : public SeededStore {
protected:
    void SetUp() override {
        SeededStore::SetUp();
        store->CommitRoute(With(store->GetRoute("sales-in"),
                                "comment: 'Sales inbound' user { user_name: 'alice' host_name: "
                                "'alpha' } group: 'Sales' poll_server: 'beta'"));
        store->CommitUser(With(store->GetUser("alpha", "alice"), "printer: 'laser1'"));
    }

    // Expects a refusal with code whose description names every text of mentions.
    void ExpectRefused(const std::function<void()>& call, pb::Error code,
                       std::initializer_list<const char*> mentions) {
        try {
            call();
            ADD_FAILURE() << "accepted";
        } catch (const ServiceError& e) {
            EXPECT_EQ(e.code(), code) << e.what();
            for (const char* text : mentions)
                EXPECT_NE(std::string(e.what()).find(text), std::string::npos)
                    << e.what() << " does not name " << text;
        }
    }

    // Changes the route so that it names none of the seeded objects.
    void ReleaseRoute() {
        auto route = store->GetRoute("sales-in");
        route.clear_user();
        route.clear_group();
        route.clear_poll_server();
        store->CommitRoute(route);
    }
};

TEST_F(ReferenceTest, ARouteCannotNameWhatIsNotThere) {
    const pb::Route stored = store->GetRoute("sales-in");
    for (auto [named, change] : {std::pair{"gone@alpha", "user { user_name: 'gone' }"},
                                 {"alice@nowhere", "user { host_name: 'nowhere' }"},
                                 {"'Nobody'", "group: 'Nobody'"},
                                 {"'omega'", "poll_server: 'omega'"}}) {
        const auto route = With(stored, change + std::string(" poll_document: 'changed'"));
        ExpectRefused([&] { store->CommitRoute(route); }, pb::ERROR_UNKNOWN_REFERENCE, {named});
    }
    EXPECT_EQ(store->GetRoute("sales-in").version(), stored.version());
    EXPECT_EQ(store->GetRoute("sales-in").poll_document(), "");
    // "(None)" everywhere is an empty name, which is allowed.
    ReleaseRoute();
    EXPECT_TRUE(store->GetRoute("sales-in").group().empty());
}

TEST_F(ReferenceTest, WhatARouteNamesIsNotDeleted) {
    const int64_t alice = store->GetUser("alpha", "alice").version();
    ExpectRefused([&] { store->DeleteUser("alpha", "alice", alice); }, pb::ERROR_STILL_NAMED,
                  {"'sales-in'", "alice@alpha"});
    ExpectRefused([&] { store->DeleteGroup("Sales", store->GetGroup("Sales").version()); },
                  pb::ERROR_STILL_NAMED, {"'sales-in'", "'Sales'"});
    // The poll server, and a server whose users a route names, go with
    // neither a delete nor a role taken away.
    ExpectRefused([&] { store->DeleteServer("beta", store->GetServer("beta").version()); },
                  pb::ERROR_STILL_NAMED, {"'sales-in' polls the server 'beta'"});
    ExpectRefused([&] { store->DeleteServer("alpha", store->GetServer("alpha").version()); },
                  pb::ERROR_STILL_NAMED, {"alice@alpha"});
    ExpectRefused(
        [&] {
            store->CommitServer(With(store->GetServer("alpha"), "user_server: false"),
                                With(pb::RoleObjectDeletion(), "users: true"));
        },
        pb::ERROR_STILL_NAMED, {"alice@alpha"});

    // Nothing of it happened.
    EXPECT_EQ(store->GetUser("alpha", "alice").version(), alice);
    EXPECT_EQ(store->GetGroup("Sales").members_size(), 2);
    EXPECT_TRUE(store->GetServer("alpha").user_server());
    EXPECT_EQ(store->ListUsers("beta").size(), 1u);

    // Once the route names others, each goes.
    ReleaseRoute();
    store->DeleteGroup("Sales", store->GetGroup("Sales").version());
    store->DeleteServer("beta", store->GetServer("beta").version());
    store->DeleteUser("alpha", "alice", alice);
    EXPECT_TRUE(store->GetUser("alpha", "alice").is_new());
}

TEST_F(ReferenceTest, APrinterThatUsersPrintOnIsNotDeleted) {
    const int64_t laser = store->GetPrinter("alpha", "laser1").version();
    ExpectRefused([&] { store->DeletePrinter("alpha", "laser1", laser); }, pb::ERROR_STILL_NAMED,
                  {"user 'alice' prints on 'laser1'"});
    ExpectRefused(
        [&] {
            store->CommitServer(With(store->GetServer("alpha"), "printer_server: false"),
                                With(pb::RoleObjectDeletion(), "printers: true"));
        },
        pb::ERROR_STILL_NAMED, {"'laser1'"});
    EXPECT_EQ(store->GetPrinter("alpha", "laser1").version(), laser);
    EXPECT_TRUE(store->GetServer("alpha").printer_server());

    // Users and printers taken away together leave nobody behind who prints.
    ReleaseRoute();
    store->CommitServer(With(store->GetServer("alpha"), "user_server: false printer_server: false"),
                        With(pb::RoleObjectDeletion(), "users: true printers: true"));
    EXPECT_TRUE(store->ListPrinters("alpha").empty());
    EXPECT_TRUE(store->ListUsers("alpha").empty());
}

}  // namespace
}  // namespace veldrano::server::testing
