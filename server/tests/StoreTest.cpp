// The store's contract: new-object answers, the commit and delete protocol
// with versions, cascades, validation that refuses without writing, positions
// of rates and destinations, and schema migrations.

#include <gtest/gtest.h>

#include "store/Database.h"
#include "store/Schema.h"
#include "tests/DemoTestSupport.h"
#include "tests/StoreFixtures.h"

namespace veldrano::server::testing {
namespace {

class StoreTest : public ::testing::Test {
protected:
    void SetUp() override { SeedInstallation(*store); }
    TempStore store;
};

TEST_F(StoreTest, MissingKeysAnswerNewRecordsWithTheServersDefaults) {
    auto server = store->GetServer("nowhere");
    EXPECT_TRUE(server.is_new());
    EXPECT_EQ(server.name(), "nowhere");
    EXPECT_EQ(server.net_type(), "rpc");
    EXPECT_EQ(server.version(), 0);

    auto user = store->GetUser("alpha", "nobody");
    EXPECT_TRUE(user.is_new());
    EXPECT_EQ(user.host_name(), "alpha");
    EXPECT_EQ(user.background_paper_size(), 9);
    EXPECT_GE(user.admin_priority(), 1);

    auto device = store->GetDevice("alpha", "newdev");
    EXPECT_TRUE(device.is_new());
    EXPECT_TRUE(device.primary().enable_fax());
    EXPECT_EQ(device.primary().reservation_timeout(), 1);
    EXPECT_EQ(device.primary().scanner_page_wait(), 1);

    EXPECT_TRUE(store->GetRate("Europe", 99).is_new());
    EXPECT_TRUE(store->GetGroup("nogroup").is_new());
    EXPECT_TRUE(store->GetZone("nozone").is_new());
    // A new record fetched and committed unchanged (but for its mandatory
    // fields) is accepted: the defaults are valid.
    user.set_comment("Fresh");
    EXPECT_EQ(store->CommitUser(user), 1);

    // A scope that does not exist is not a new record but an error.
    EXPECT_REFUSED(store->GetUser("nowhere", "x"), pb::ERROR_NOT_FOUND);
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

    ASSERT_EQ(store->ListRates("Europe").size(), 3u);
    store->DeleteZone("Europe");
    EXPECT_REFUSED(store->ListRates("Europe"), pb::ERROR_NOT_FOUND);
    auto zones = store->ListZones();
    ASSERT_EQ(zones.zones_size(), 1);
    EXPECT_EQ(zones.first(), "Overseas");
    EXPECT_EQ(zones.zones(0).next(), "");
}

TEST_F(StoreTest, ZonesFormAListInCreationOrder) {
    auto zones = store->ListZones();
    ASSERT_EQ(zones.zones_size(), 2);
    EXPECT_EQ(zones.first(), "Europe");
    EXPECT_EQ(zones.zones(0).next(), "Overseas");
    EXPECT_EQ(zones.zones(1).next(), "");
    EXPECT_EQ(zones.zones(0).rate_count(), 3);
    EXPECT_EQ(zones.zones(0).destination_count(), 2);
}

TEST_F(StoreTest, RatesAndDestinationsAreAddressedByPositionThatCloseUpOnDelete) {
    auto rates = store->ListRates("Europe");
    ASSERT_EQ(rates.size(), 3u);
    EXPECT_EQ(rates[2].index(), 3);
    int thirdStart = rates[2].start_hour();

    store->DeleteRate("Europe", 2);
    rates = store->ListRates("Europe");
    ASSERT_EQ(rates.size(), 2u);
    EXPECT_EQ(rates[1].index(), 2);
    EXPECT_EQ(rates[1].start_hour(), thirdStart);

    // A new rate is appended and answers its index.
    auto rate = store->GetRate("Europe", 0);
    int index = 0;
    store->CommitRate(rate, &index);
    EXPECT_EQ(index, 3);

    // Same prefix is fine for another type, refused for the same type.
    auto dest = store->GetDestination("Europe", 0);
    dest.set_prefix("0049");
    dest.set_name("Germany SMS");
    dest.set_type(pb::DEST_SMS);
    store->CommitDestination(dest);
    dest.set_name("Germany again");
    dest.set_type(pb::DEST_FAX);
    EXPECT_REFUSED(store->CommitDestination(dest), pb::ERROR_ALREADY_EXISTS);
    // Editing a destination without changing its prefix is not a clash with itself.
    auto first = store->GetDestination("Europe", 1);
    first.set_name("Germany renamed");
    EXPECT_NO_THROW(store->CommitDestination(first));
}

struct Refusal {
    const char* what;
    std::function<void(Store&)> commit;
    pb::Error code;
};

TEST_F(StoreTest, InvalidRecordsAreRefusedWithTheirNumberAndNothingIsWritten) {
    auto user = [](Store& s) { return s.GetUser("alpha", "alice"); };
    const std::vector<Refusal> refusals = {
        {"empty comment",
         [&](Store& s) {
             auto u = user(s);
             u.set_comment(" ");
             s.CommitUser(u);
         },
         pb::ERROR_REQUIRED},
        {"long name",
         [&](Store& s) {
             auto u = s.GetUser("alpha", "elevenchars");
             u.set_comment("x");
             s.CommitUser(u);
         },
         pb::ERROR_TOO_LONG},
        {"parenthesis",
         [&](Store& s) {
             auto u = s.GetUser("alpha", "a(b");
             u.set_comment("x");
             s.CommitUser(u);
         },
         pb::ERROR_INVALID_CHARACTER},
        {"priority 32001",
         [&](Store& s) {
             auto u = user(s);
             u.set_admin_priority(32001);
             s.CommitUser(u);
         },
         pb::ERROR_OUT_OF_RANGE},
        {"print without printer",
         [&](Store& s) {
             auto u = user(s);
             u.set_print_if_send_failed(true);
             u.set_printer("");
             s.CommitUser(u);
         },
         pb::ERROR_REQUIRED},
        {"unknown printer",
         [&](Store& s) {
             auto u = user(s);
             u.set_printer("nope");
             s.CommitUser(u);
         },
         pb::ERROR_UNKNOWN_REFERENCE},
        {"eight papers",
         [&](Store& s) {
             auto u = user(s);
             u.mutable_background_paper()->RemoveLast();
             s.CommitUser(u);
         },
         pb::ERROR_INVALID_ARGUMENT},
        {"user on printer-only server",
         [&](Store& s) {
             auto u = s.GetUser("gamma", "zed");
             u.set_comment("x");
             s.CommitUser(u);
         },
         pb::ERROR_ROLE_MISSING},
        {"printer type 12",
         [&](Store& s) {
             auto p = s.GetPrinter("alpha", "laser1");
             p.set_type(12);
             s.CommitPrinter(p);
         },
         pb::ERROR_OUT_OF_RANGE},
        {"split page 1000",
         [&](Store& s) {
             auto p = s.GetPrinter("alpha", "laser1");
             p.set_split_page(1000);
             s.CommitPrinter(p);
         },
         pb::ERROR_OUT_OF_RANGE},
        {"dispatch 10001",
         [&](Store& s) {
             auto v = s.GetServer("alpha");
             v.set_dispatch_count(10001);
             s.CommitServer(v);
         },
         pb::ERROR_OUT_OF_RANGE},
        {"no role",
         [&](Store& s) {
             auto v = s.GetServer("alpha");
             v.set_user_server(false);
             v.set_printer_server(false);
             v.set_device_server(false);
             s.CommitServer(v);
         },
         pb::ERROR_REQUIRED},
        {"net type",
         [&](Store& s) {
             auto v = s.GetServer("alpha");
             v.set_net_type("tcp");
             s.CommitServer(v);
         },
         pb::ERROR_INVALID_ARGUMENT},
        {"group member unknown",
         [&](Store& s) {
             auto g = s.GetGroup("Sales");
             auto* m = g.add_members();
             m->set_user_name("ghost");
             m->set_host_name("alpha");
             s.CommitGroup(g);
         },
         pb::ERROR_UNKNOWN_REFERENCE},
        {"rate stop 24:30",
         [&](Store& s) {
             auto r = s.GetRate("Europe", 1);
             r.set_stop_hour(24);
             r.set_stop_minute(30);
             s.CommitRate(r);
         },
         pb::ERROR_OUT_OF_RANGE},
        {"rate without days",
         [&](Store& s) {
             pb::Rate r = s.GetRate("Europe", 1);
             for (auto f : {&pb::Rate::set_monday, &pb::Rate::set_tuesday, &pb::Rate::set_wednesday,
                            &pb::Rate::set_thursday, &pb::Rate::set_friday, &pb::Rate::set_saturday,
                            &pb::Rate::set_sunday})
                 (r.*f)(false);
             s.CommitRate(r);
         },
         pb::ERROR_REQUIRED},
        {"zone without host",
         [&](Store& s) {
             auto z = s.GetZone("Europe");
             z.set_is_local(false);
             z.set_is_daemon(false);
             z.set_primary_host("");
             s.CommitZone(z);
         },
         pb::ERROR_REQUIRED},
        {"device account factor",
         [&](Store& s) {
             auto d = s.GetDevice("alpha", "line1");
             d.mutable_primary()->set_account_factor(-1);
             s.CommitDevice(d);
         },
         pb::ERROR_OUT_OF_RANGE},
        {"device reservation 0",
         [&](Store& s) {
             auto d = s.GetDevice("alpha", "line1");
             d.mutable_primary()->set_reservation_timeout(0);
             s.CommitDevice(d);
         },
         pb::ERROR_OUT_OF_RANGE},
        {"smtp user",
         [&](Store& s) {
             auto a = s.GetAdminSettings();
             a.set_smtp_gateway_user("nohost");
             s.CommitAdminSettings(a);
         },
         pb::ERROR_INVALID_ARGUMENT},
        {"block size 1",
         [&](Store& s) {
             auto a = s.GetAdminSettings();
             a.set_journal_blocksize(1);
             s.CommitAdminSettings(a);
         },
         pb::ERROR_OUT_OF_RANGE},
    };
    auto before = store->GetUser("alpha", "alice");
    for (const auto& r : refusals) {
        SCOPED_TRACE(r.what);
        EXPECT_REFUSED(r.commit(*store), r.code);
    }
    auto after = store->GetUser("alpha", "alice");
    EXPECT_EQ(after.SerializeAsString(), before.SerializeAsString());
    EXPECT_EQ(store->GetPrinter("alpha", "laser1").type(), 8);
    EXPECT_EQ(store->ListRates("Europe").size(), 3u);
}

TEST_F(StoreTest, SecondaryLinesFollowTheConfiguredCount) {
    auto device = store->GetDevice("alpha", "isdn1");
    ASSERT_EQ(device.configured_lines(), 2);
    pb::DeviceLine line;
    line.set_number(2);
    *line.mutable_settings() = device.primary();
    line.mutable_settings()->set_comment("Second channel");
    EXPECT_EQ(store->SaveDeviceLine("alpha", "isdn1", line), 1);
    EXPECT_EQ(store->GetDevice("alpha", "isdn1").secondary_lines(0).settings().comment(),
              "Second channel");

    line.set_number(3);
    EXPECT_REFUSED(store->SaveDeviceLine("alpha", "isdn1", line), pb::ERROR_OUT_OF_RANGE);
    EXPECT_REFUSED(store->DeleteDeviceLine("alpha", "isdn1", 1), pb::ERROR_INVALID_ARGUMENT);

    store->DeleteDeviceLine("alpha", "isdn1", 2);
    EXPECT_REFUSED(store->DeleteDeviceLine("alpha", "isdn1", 2), pb::ERROR_LINE_NOT_CONFIGURED);

    // Lowering the line count drops the lines beyond it.
    line.set_number(2);
    line.set_version(0);
    store->SaveDeviceLine("alpha", "isdn1", line);
    device = store->GetDevice("alpha", "isdn1");
    device.set_configured_lines(1);
    store->CommitDevice(device);
    EXPECT_EQ(store->GetDevice("alpha", "isdn1").secondary_lines_size(), 0);
}

TEST_F(StoreTest, ScannersAreTheServersScannerDevices) {
    auto scanners = store->ListScanners("alpha");
    ASSERT_EQ(scanners.size(), 1u);
    EXPECT_EQ(scanners[0], "scan1");
    auto user = store->GetUser("alpha", "alice");
    user.set_scanner("line1");  // a fax line is no scanner
    EXPECT_REFUSED(store->CommitUser(user), pb::ERROR_UNKNOWN_REFERENCE);
    user.set_scanner("scan1");
    EXPECT_NO_THROW(store->CommitUser(user));
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
    auto dir =
        std::filesystem::temp_directory_path() / ("veldrano-migrate-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    auto path = (dir / "old.sqlite").string();
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
    {
        // A store from a newer server is refused rather than misread.
        Database db(path);
        db.Exec("PRAGMA user_version = 99");
    }
    EXPECT_THROW(Store store(path), ServiceError);
    std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace veldrano::server::testing
