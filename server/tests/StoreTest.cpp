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

TEST_F(StoreTest, MissingKeysAnswerNewRecordsWhoseDefaultsAreValid) {
    auto server = store->GetServer("nowhere");
    EXPECT_TRUE(server.is_new());
    EXPECT_EQ(server.name(), "nowhere");
    EXPECT_EQ(server.version(), 0);
    auto user = store->GetUser("alpha", "nobody");
    EXPECT_TRUE(user.is_new());
    EXPECT_EQ(user.host_name(), "alpha");
    EXPECT_TRUE(store->GetDevice("alpha", "newdev").is_new());
    EXPECT_TRUE(store->GetRate("Europe", 99).is_new());
    EXPECT_TRUE(store->GetGroup("nogroup").is_new());
    EXPECT_TRUE(store->GetZone("nozone").is_new());
    // Committed unchanged but for their mandatory comments, they are accepted.
    server.set_comment("Fresh");
    EXPECT_EQ(store->CommitServer(server), 1);
    user.set_comment("Fresh");
    EXPECT_EQ(store->CommitUser(user), 1);

    // A scope that does not exist is not a new record but an error.
    EXPECT_REFUSED(store->GetUser("omega", "x"), pb::ERROR_NOT_FOUND);
    EXPECT_REFUSED(store->GetRate("nozone", 1), pb::ERROR_NOT_FOUND);
}

TEST_F(StoreTest, CommitInsertsUpdatesAndRefusesStaleOrTakenKeys) {
    auto user = store->GetUser("alpha", "carol");
    user.set_comment("Carol");
    EXPECT_EQ(store->CommitUser(user), 1);
    auto loaded = store->GetUser("alpha", "carol");
    EXPECT_FALSE(loaded.is_new());
    EXPECT_EQ(loaded.version(), 1);
    EXPECT_EQ(loaded.comment(), "Carol");

    // A second "new" commit of the same key means someone else created it.
    EXPECT_REFUSED(store->CommitUser(user), pb::ERROR_ALREADY_EXISTS);

    // Two administrators load version 1; the first save wins, the second is
    // refused instead of silently overwriting.
    auto first = loaded, second = loaded;
    first.set_comment("First");
    EXPECT_EQ(store->CommitUser(first), 2);
    second.set_comment("Second");
    EXPECT_REFUSED(store->CommitUser(second), pb::ERROR_VERSION_CONFLICT);
    EXPECT_EQ(store->GetUser("alpha", "carol").comment(), "First");

    // An update of an object deleted meanwhile is a conflict too.
    auto stale = store->GetUser("alpha", "carol");
    store->DeleteUser("alpha", "carol");
    EXPECT_REFUSED(store->CommitUser(stale), pb::ERROR_VERSION_CONFLICT);
    EXPECT_TRUE(store->GetUser("alpha", "carol").is_new());
}

TEST_F(StoreTest, DeleteRefusesUnknownKeysAndStaleVersions) {
    EXPECT_REFUSED(store->DeleteUser("alpha", "ghost"), pb::ERROR_NOT_FOUND);
    EXPECT_REFUSED(store->DeleteGroup("ghosts"), pb::ERROR_NOT_FOUND);
    EXPECT_REFUSED(store->DeleteRate("Europe", 7), pb::ERROR_NOT_FOUND);
    auto printer = store->GetPrinter("alpha", "laser1");
    EXPECT_REFUSED(store->DeletePrinter("alpha", "laser1", printer.version() + 1),
                   pb::ERROR_VERSION_CONFLICT);
    store->DeletePrinter("alpha", "laser1", printer.version());
    EXPECT_TRUE(store->GetPrinter("alpha", "laser1").is_new());
}

TEST_F(StoreTest, DeletingAServerTakesItsObjectsAndMembershipsWithIt) {
    ASSERT_EQ(store->GetGroup("Sales").members_size(), 2);
    store->DeleteServer("alpha");
    EXPECT_TRUE(store->GetServer("alpha").is_new());
    EXPECT_REFUSED(store->ListUsers("alpha"), pb::ERROR_NOT_FOUND);
    // The member on the other server stays; the one on alpha went.
    auto sales = store->GetGroup("Sales");
    ASSERT_EQ(sales.members_size(), 1);
    EXPECT_EQ(sales.members(0).host_name(), "beta");
    // Re-creating the server starts empty: nothing of the old one survived.
    auto again = store->GetServer("alpha");
    again.set_comment("Again");
    again.set_printer_server(true);
    again.set_device_server(true);
    store->CommitServer(again);
    EXPECT_TRUE(store->ListUsers("alpha").empty());
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
    EXPECT_EQ(zones.zones(1).next(), "");
    EXPECT_EQ(zones.zones(0).rate_count(), 3);
    EXPECT_EQ(zones.zones(0).destination_count(), 2);
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
    const pb::Printer laser = s.GetPrinter("alpha", "laser1");
    const pb::Server alpha = s.GetServer("alpha");
    const pb::Rate rate = s.GetRate("Europe", 1);
    const pb::Device line1 = s.GetDevice("alpha", "line1");
    const pb::AdminSettings admin = s.GetAdminSettings();
    const auto named = [](pb::User& u) { u.set_comment("x"); };
    using U = pb::User&;

    EXPECT_REFUSED(s.CommitUser(With(alice, [](U u) { u.set_comment(" "); })), pb::ERROR_REQUIRED);
    EXPECT_REFUSED(s.CommitUser(With(s.GetUser("alpha", "elevenchars"), named)),
                   pb::ERROR_TOO_LONG);
    EXPECT_REFUSED(s.CommitUser(With(s.GetUser("alpha", "a(b"), named)),
                   pb::ERROR_INVALID_CHARACTER);
    EXPECT_REFUSED(s.CommitUser(With(alice, [](U u) { u.set_admin_priority(32001); })),
                   pb::ERROR_OUT_OF_RANGE);
    EXPECT_REFUSED(s.CommitUser(With(alice, [](U u) { u.set_print_if_send_failed(true); })),
                   pb::ERROR_REQUIRED);
    EXPECT_REFUSED(s.CommitUser(With(alice, [](U u) { u.set_printer("nope"); })),
                   pb::ERROR_UNKNOWN_REFERENCE);
    // A fax line is no scanner.
    EXPECT_REFUSED(s.CommitUser(With(alice, [](U u) { u.set_scanner("line1"); })),
                   pb::ERROR_UNKNOWN_REFERENCE);
    EXPECT_REFUSED(
        s.CommitUser(With(alice, [](U u) { u.mutable_background_paper()->RemoveLast(); })),
        pb::ERROR_INVALID_ARGUMENT);
    EXPECT_REFUSED(s.CommitUser(With(s.GetUser("gamma", "zed"), named)), pb::ERROR_ROLE_MISSING);
    EXPECT_REFUSED(s.CommitPrinter(With(laser, [](pb::Printer& p) { p.set_type(12); })),
                   pb::ERROR_OUT_OF_RANGE);
    EXPECT_REFUSED(s.CommitServer(With(alpha, [](pb::Server& v) { v.set_dispatch_count(10001); })),
                   pb::ERROR_OUT_OF_RANGE);
    EXPECT_REFUSED(s.CommitServer(With(alpha,
                                       [](pb::Server& v) {
                                           v.set_user_server(false);
                                           v.set_printer_server(false);
                                           v.set_device_server(false);
                                       })),
                   pb::ERROR_REQUIRED);
    EXPECT_REFUSED(s.CommitServer(With(alpha, [](pb::Server& v) { v.set_net_type("tcp"); })),
                   pb::ERROR_INVALID_ARGUMENT);
    EXPECT_REFUSED(s.CommitGroup(With(s.GetGroup("Sales"),
                                      [](pb::Group& g) {
                                          auto* m = g.add_members();
                                          m->set_user_name("ghost");
                                          m->set_host_name("alpha");
                                      })),
                   pb::ERROR_UNKNOWN_REFERENCE);
    EXPECT_REFUSED(s.CommitRate(With(rate,
                                     [](pb::Rate& r) {
                                         r.set_stop_hour(24);
                                         r.set_stop_minute(30);
                                     })),
                   pb::ERROR_OUT_OF_RANGE);
    pb::Rate noDays = rate;
    for (auto day : {&pb::Rate::set_monday, &pb::Rate::set_tuesday, &pb::Rate::set_wednesday,
                     &pb::Rate::set_thursday, &pb::Rate::set_friday, &pb::Rate::set_saturday,
                     &pb::Rate::set_sunday})
        (noDays.*day)(false);
    EXPECT_REFUSED(s.CommitRate(noDays), pb::ERROR_REQUIRED);
    EXPECT_REFUSED(s.CommitZone(With(s.GetZone("Europe"),
                                     [](pb::Zone& z) {
                                         z.set_is_local(false);
                                         z.set_primary_host("");
                                     })),
                   pb::ERROR_REQUIRED);
    EXPECT_REFUSED(s.CommitDevice(With(
                       line1, [](pb::Device& d) { d.mutable_primary()->set_account_factor(-1); })),
                   pb::ERROR_OUT_OF_RANGE);
    EXPECT_REFUSED(
        s.CommitDevice(
            With(line1, [](pb::Device& d) { d.mutable_primary()->set_reservation_timeout(0); })),
        pb::ERROR_OUT_OF_RANGE);
    EXPECT_REFUSED(s.CommitAdminSettings(With(
                       admin, [](pb::AdminSettings& a) { a.set_smtp_gateway_user("nohost"); })),
                   pb::ERROR_INVALID_ARGUMENT);
    EXPECT_REFUSED(s.CommitAdminSettings(
                       With(admin, [](pb::AdminSettings& a) { a.set_journal_blocksize(1); })),
                   pb::ERROR_OUT_OF_RANGE);

    EXPECT_EQ(s.GetUser("alpha", "alice").SerializeAsString(), alice.SerializeAsString());
    EXPECT_EQ(s.GetPrinter("alpha", "laser1").SerializeAsString(), laser.SerializeAsString());
    EXPECT_EQ(s.ListRates("Europe").size(), 3u);
    // The scanner, a device of the scanner type, is one.
    EXPECT_EQ(s.ListScanners("alpha"), std::vector<std::string>{"scan1"});
    EXPECT_NO_THROW(s.CommitUser(With(alice, [](U u) { u.set_scanner("scan1"); })));
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
    auto bob = store->GetUser("beta", "bob");
    bob.set_comment("Bob at the branch");
    store->CommitUser(bob);
    group = store->GetGroup("Sales");
    EXPECT_EQ(group.member_comments(0), "User alice");
    EXPECT_EQ(group.member_comments(1), "Bob at the branch");
    EXPECT_EQ(store->ListGroups().front().member_comments_size(), 0);
}

TEST_F(StoreTest, ServerObjectsNameEveryPrinterAndDeviceUnderItsServer) {
    auto objects = store->ListServerObjects();
    ASSERT_EQ(objects.size(), 3u);
    EXPECT_EQ(objects[0].server(), "alpha");
    ASSERT_EQ(objects[0].printers_size(), 1);
    EXPECT_EQ(objects[0].printers(0), "laser1");
    ASSERT_EQ(objects[0].devices_size(), 3);
    EXPECT_EQ(objects[0].devices(0), "isdn1");  // by name
    EXPECT_EQ(objects[1].server(), "beta");
    EXPECT_EQ(objects[1].printers_size() + objects[1].devices_size(), 0);
    auto printer = store->GetPrinter("gamma", "ink2");
    printer.set_comment("Ink");
    printer.set_filter_command("cat");
    store->CommitPrinter(printer);
    EXPECT_EQ(store->ListServerObjects()[2].printers(0), "ink2");
}

TEST(SchemaTest, AnOlderStoreIsMigratedAndKeepsItsData) {
    TempDirectory dir("veldrano-migrate");
    const std::string path = dir.File("old.sqlite");
    {
        Database db(path);
        Migrate(db, 1);
        pb::Server body;
        body.set_net_type("rpc");
        body.set_printer_server(true);
        body.set_dispatch_count(1);
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
