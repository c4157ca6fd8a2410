// The store's contract: new-object answers, the commit and delete protocol
// with versions, cascades, validation that refuses without writing, events,
// and schema migrations.

#include <gtest/gtest.h>

#include "store/Database.h"
#include "store/Schema.h"
#include "tests/StoreFixtures.h"

namespace veldrano::server::testing {
namespace {

using StoreTest = SeededStore;

TEST_F(StoreTest, CommitAndDeleteRefuseStaleVersionsTakenKeysAndUnknownKeys) {
    // A missing key answers a new record whose defaults, with the mandatory
    // comment, are valid; a scope that does not exist is an error.
    const auto server = store->GetServer("nowhere");
    EXPECT_TRUE(server.is_new());
    EXPECT_EQ(server.name(), "nowhere");
    EXPECT_EQ(store->CommitServer(With(server, "comment: 'Fresh'")), 1);
    EXPECT_REFUSED(store->GetUser("omega", "x"), pb::ERROR_NOT_FOUND);
    const auto user = With(store->GetUser("alpha", "carol"), "comment: 'Carol'");
    EXPECT_TRUE(user.is_new());
    EXPECT_EQ(store->CommitUser(user), 1);
    auto loaded = store->GetUser("alpha", "carol");
    EXPECT_FALSE(loaded.is_new());
    EXPECT_EQ(loaded.version(), 1);
    EXPECT_EQ(loaded.comment(), "Carol");

    // A second "new" commit of the same key means someone else created it.
    EXPECT_REFUSED(store->CommitUser(user), pb::ERROR_ALREADY_EXISTS);

    // Two administrators load version 1; the first save wins, the second is
    // refused instead of silently overwriting.
    EXPECT_EQ(store->CommitUser(With(loaded, "comment: 'First'")), 2);
    EXPECT_REFUSED(store->CommitUser(With(loaded, "comment: 'Second'")),
                   pb::ERROR_VERSION_CONFLICT);
    EXPECT_EQ(store->GetUser("alpha", "carol").comment(), "First");

    // An update of an object deleted meanwhile is a conflict too.
    auto stale = store->GetUser("alpha", "carol");
    store->DeleteUser("alpha", "carol");
    EXPECT_REFUSED(store->CommitUser(stale), pb::ERROR_VERSION_CONFLICT);
    EXPECT_TRUE(store->GetUser("alpha", "carol").is_new());

    EXPECT_REFUSED(store->DeleteUser("alpha", "ghost"), pb::ERROR_NOT_FOUND);
    auto printer = store->GetPrinter("alpha", "laser1");
    EXPECT_REFUSED(store->DeletePrinter("alpha", "laser1", printer.version() + 1),
                   pb::ERROR_VERSION_CONFLICT);
    store->DeletePrinter("alpha", "laser1", printer.version());
    EXPECT_TRUE(store->GetPrinter("alpha", "laser1").is_new());
}

TEST_F(StoreTest, DeletingAServerTakesItsObjectsAndMembershipsWithIt) {
    store->DeleteServer("alpha");
    EXPECT_REFUSED(store->ListUsers("alpha"), pb::ERROR_NOT_FOUND);
    // The member on the other server stays; the one on alpha went.
    auto sales = store->GetGroup("Sales");
    ASSERT_EQ(sales.members_size(), 1);
    EXPECT_EQ(sales.members(0).host_name(), "beta");
    // Re-creating the server starts empty: nothing of the old one survived.
    store->CommitServer(With(store->GetServer("alpha"),
                             "comment: 'Again' printer_server: true device_server: true"));
    EXPECT_TRUE(store->ListPrinters("alpha").empty());
    EXPECT_TRUE(store->ListDevices("alpha").empty());
}

TEST_F(StoreTest, DeletingAUserOrAZoneCascades) {
    store->DeleteUser("beta", "bob");
    auto sales = store->GetGroup("Sales");
    ASSERT_EQ(sales.members_size(), 1);
    EXPECT_EQ(sales.members(0).user_name(), "alice");

    // Zones form a list in creation order, with their row counts.
    auto zones = store->ListZones();
    ASSERT_EQ(zones.zones_size(), 2);
    EXPECT_EQ(zones.first(), "Europe");
    EXPECT_EQ(zones.zones(0).next(), "Overseas");
    EXPECT_EQ(zones.zones(0).rate_count(), 3);
    store->DeleteZone("Europe");
    EXPECT_REFUSED(store->ListRates("Europe"), pb::ERROR_NOT_FOUND);
    zones = store->ListZones();
    ASSERT_EQ(zones.zones_size(), 1);
    EXPECT_EQ(zones.first(), "Overseas");
    EXPECT_EQ(zones.zones(0).next(), "");
}

TEST_F(StoreTest, InvalidRecordsAreRefusedWithTheirNumberAndNothingIsWritten) {
    Store& s = *store;
    const pb::User alice = s.GetUser("alpha", "alice");
    const pb::Server alpha = s.GetServer("alpha");
    const pb::Rate rate = s.GetRate("Europe", 1);
    const char* named = "comment: 'x'";

    EXPECT_REFUSED(s.CommitUser(With(alice, "comment: ' '")), pb::ERROR_REQUIRED);
    EXPECT_REFUSED(s.CommitUser(With(s.GetUser("alpha", "elevenchars"), named)),
                   pb::ERROR_TOO_LONG);
    EXPECT_REFUSED(s.CommitUser(With(s.GetUser("alpha", "a(b"), named)),
                   pb::ERROR_INVALID_CHARACTER);
    EXPECT_REFUSED(s.CommitUser(With(alice, "admin_priority: 32001")), pb::ERROR_OUT_OF_RANGE);
    EXPECT_REFUSED(s.CommitUser(With(alice, "print_if_send_failed: true")), pb::ERROR_REQUIRED);
    EXPECT_REFUSED(s.CommitUser(With(alice, "printer: 'nope'")), pb::ERROR_UNKNOWN_REFERENCE);
    // A fax line is no scanner.
    EXPECT_REFUSED(s.CommitUser(With(alice, "scanner: 'line1'")), pb::ERROR_UNKNOWN_REFERENCE);
    EXPECT_REFUSED(s.CommitUser(With(alice, "background_paper: 0")), pb::ERROR_INVALID_ARGUMENT);
    EXPECT_REFUSED(s.CommitUser(With(s.GetUser("gamma", "zed"), named)), pb::ERROR_ROLE_MISSING);
    EXPECT_REFUSED(s.CommitServer(With(
                       alpha, "user_server: false printer_server: false device_server: false")),
                   pb::ERROR_REQUIRED);
    EXPECT_REFUSED(s.CommitServer(With(alpha, "net_type: 'tcp'")), pb::ERROR_INVALID_ARGUMENT);
    EXPECT_REFUSED(s.CommitGroup(With(s.GetGroup("Sales"),
                                      "members { user_name: 'ghost' host_name: 'alpha' }")),
                   pb::ERROR_UNKNOWN_REFERENCE);
    EXPECT_REFUSED(s.CommitRate(With(rate, "stop_hour: 24 stop_minute: 30")),
                   pb::ERROR_OUT_OF_RANGE);
    EXPECT_REFUSED(s.CommitRate(With(rate,
                                     "monday: false tuesday: false wednesday: false thursday: "
                                     "false friday: false saturday: false sunday: false")),
                   pb::ERROR_REQUIRED);
    EXPECT_REFUSED(s.CommitZone(With(s.GetZone("Europe"), "is_local: false primary_host: ''")),
                   pb::ERROR_REQUIRED);
    EXPECT_REFUSED(s.CommitAdminSettings(With(s.GetAdminSettings(), "smtp_gateway_user: 'x'")),
                   pb::ERROR_INVALID_ARGUMENT);

    EXPECT_EQ(s.GetUser("alpha", "alice").SerializeAsString(), alice.SerializeAsString());
    EXPECT_EQ(s.GetServer("alpha").SerializeAsString(), alpha.SerializeAsString());
    EXPECT_EQ(s.GetRate("Europe", 1).SerializeAsString(), rate.SerializeAsString());
    // The scanner, a device of the scanner type, is one.
    EXPECT_EQ(s.ListScanners("alpha"), std::vector<std::string>{"scan1"});
    EXPECT_NO_THROW(s.CommitUser(With(alice, "scanner: 'scan1'")));
}

TEST_F(StoreTest, AGroupAnswersItsMembersCommentsAsTheyAreNow) {
    auto group = store->GetGroup("Sales");
    ASSERT_EQ(group.members_size(), 2);
    EXPECT_EQ(
        std::vector<std::string>(group.member_comments().begin(), group.member_comments().end()),
        (std::vector<std::string>{"User alice", "User bob"}));
    // Sent back with a commit they are not kept: the users' own comments are
    // what the next fetch answers, and a list of groups carries none.
    group.set_member_comments(0, "stale");
    store->CommitGroup(group);
    store->CommitUser(With(store->GetUser("beta", "bob"), "comment: 'Bob at the branch'"));
    group = store->GetGroup("Sales");
    EXPECT_EQ(group.member_comments(0), "User alice");
    EXPECT_EQ(group.member_comments(1), "Bob at the branch");
    EXPECT_EQ(store->ListGroups().front().member_comments_size(), 0);
}

TEST(SchemaTest, AnOlderStoreIsMigratedAndKeepsItsData) {
    TempDirectory dir("veldrano-migrate");
    const std::string path = dir.File("old.sqlite");
    {
        Database db(path);
        Migrate(db, 1);
        const auto body =
            With(pb::Server(), "net_type: 'rpc' printer_server: true dispatch_count: 1");
        db.Prepare("INSERT INTO servers(name, version, body) VALUES('legacy', 3, ?)")
            .BindBlob(1, body.SerializeAsString())
            .Run();
        auto st = db.Prepare("SELECT COUNT(*) FROM sqlite_master WHERE name = 'events'");
        ASSERT_TRUE(st.Step());
        ASSERT_EQ(st.Int(0), 0);
    }
    {
        Store store(path);
        EXPECT_EQ(store.SchemaVersion(), Store::LatestSchemaVersion());
        auto legacy = store.GetServer("legacy");
        EXPECT_FALSE(legacy.is_new());
        EXPECT_EQ(legacy.version(), 3);
        pb::Event e;
        e.set_text("after migration");
        EXPECT_GT(store.AppendEvent("legacy", e), 0);
    }
    // A store from a newer server is refused rather than misread.
    Database(path).Exec("PRAGMA user_version = 99");
    EXPECT_THROW(Store store(path), ServiceError);
}

}  // namespace
}  // namespace veldrano::server::testing
