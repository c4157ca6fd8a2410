// Taking roles away from a server: one commit that deletes the confirmed
// roles' objects and writes the server, all or nothing.

#include <gtest/gtest.h>

#include "tests/StoreFixtures.h"

namespace veldrano::server::testing {
namespace {

pb::RoleObjectDeletion Confirm(bool users, bool printers, bool devices) {
    pb::RoleObjectDeletion confirmed;
    confirmed.set_users(users);
    confirmed.set_printers(printers);
    confirmed.set_devices(devices);
    return confirmed;
}

class RoleRemovalTest : public SeededStore {
protected:
    void SetUp() override {
        SeededStore::SetUp();
        alpha = store->GetServer("alpha");
    }

    // What alpha holds, to compare before and after a refused commit.
    struct Holdings {
        size_t users, printers, devices, salesMembers;
        int64_t version;
        bool userRole, printerRole, deviceRole;
        bool operator==(const Holdings&) const = default;
    };
    Holdings Hold() {
        auto server = store->GetServer("alpha");
        return {store->ListUsers("alpha").size(),
                store->ListPrinters("alpha").size(),
                store->ListDevices("alpha").size(),
                static_cast<size_t>(store->GetGroup("Sales").members_size()),
                server.version(),
                server.user_server(),
                server.printer_server(),
                server.device_server()};
    }

    // Expects the commit to be refused with code and alpha left as it was.
    void ExpectRefusedUnchanged(const pb::Server& server, const pb::RoleObjectDeletion& confirmed,
                                pb::Error code) {
        const Holdings before = Hold();
        EXPECT_REFUSED(store->CommitServer(server, confirmed), code);
        EXPECT_TRUE(Hold() == before);
    }

    pb::Server alpha;
};

TEST_F(RoleRemovalTest, ARoleWithObjectsIsNotTakenAwayWithoutConfirmation) {
    ASSERT_EQ(Hold(), (Holdings{1, 1, 3, 2, alpha.version(), true, true, true}));
    const auto noUsers = With(alpha, "user_server: false");
    ExpectRefusedUnchanged(noUsers, {}, pb::ERROR_ROLE_OBJECTS_REMAIN);
    // Confirming other roles' objects is no confirmation for this one.
    ExpectRefusedUnchanged(noUsers, Confirm(false, true, true), pb::ERROR_ROLE_OBJECTS_REMAIN);

    // All or nothing: the printers (confirmed, checked first) are not deleted
    // when the devices (unconfirmed) refuse the commit.
    ExpectRefusedUnchanged(With(alpha, "printer_server: false device_server: false"),
                           Confirm(true, true, false), pb::ERROR_ROLE_OBJECTS_REMAIN);
    EXPECT_FALSE(store->GetPrinter("alpha", "laser1").is_new());
}

TEST_F(RoleRemovalTest, ConfirmedDeletionTakesExactlyTheRemovedRolesObjects) {
    const auto printingOnly =
        With(alpha, "user_server: false device_server: false comment: 'Printing only'");
    // Printers are confirmed too, but the role stays: they stay with it.
    EXPECT_EQ(store->CommitServer(printingOnly, Confirm(true, true, true)), alpha.version() + 1);

    EXPECT_EQ(Hold(), (Holdings{0, 1, 0, 1, alpha.version() + 1, false, true, false}));
    EXPECT_EQ(store->GetServer("alpha").comment(), "Printing only");
    // The other servers keep theirs, and the group keeps its other member.
    EXPECT_FALSE(store->GetUser("beta", "bob").is_new());
    EXPECT_EQ(store->GetGroup("Sales").members(0).host_name(), "beta");
}

TEST_F(RoleRemovalTest, ARoleWithoutObjectsGoesWithoutConfirmation) {
    const auto gamma = store->GetServer("gamma");
    ASSERT_TRUE(store->ListPrinters("gamma").empty());
    EXPECT_EQ(store->CommitServer(With(gamma, "printer_server: false device_server: true")),
              gamma.version() + 1);
    EXPECT_FALSE(store->GetServer("gamma").printer_server());
}

TEST_F(RoleRemovalTest, AStaleOrRepeatedCommitDeletesNothing) {
    // Another administrator changes alpha after this one loaded it.
    store->CommitServer(With(alpha, "comment: 'Changed elsewhere'"));
    auto mine = With(alpha, "user_server: false printer_server: false");
    ExpectRefusedUnchanged(mine, Confirm(true, true, true), pb::ERROR_VERSION_CONFLICT);
    EXPECT_EQ(store->GetServer("alpha").comment(), "Changed elsewhere");

    // On the current version the same request succeeds; sent again (a retry
    // after a lost answer) it is refused and takes nothing more.
    mine.set_version(store->GetServer("alpha").version());
    store->CommitServer(mine, Confirm(true, true, true));
    const Holdings after = Hold();
    EXPECT_EQ(after, (Holdings{0, 0, 3, 1, mine.version() + 1, false, false, true}));
    ExpectRefusedUnchanged(mine, Confirm(true, true, true), pb::ERROR_VERSION_CONFLICT);
}

TEST_F(RoleRemovalTest, AnInvalidRecordDeletesNothing) {
    ExpectRefusedUnchanged(With(alpha, "user_server: false dispatch_count: 0"),
                           Confirm(true, true, true), pb::ERROR_OUT_OF_RANGE);
}

}  // namespace
}  // namespace veldrano::server::testing
