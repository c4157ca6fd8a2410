// The explorer's column sets and list fills against the reference server:
// headers, persisted widths and alignment of every kind, and the cells of
// every kind's rows as the server's records turn into them.

#include <QTest>
#include <memory>

#include "common/Labels.h"
#include "common/Twips.h"
#include "demo/DemoData.h"
#include "lists/KindIcons.h"
#include "lists/ListFill.h"
#include "lists/ListFillKinds.h"
#include "lists/ViewSettings.h"
#include "store/Store.h"
#include "support/ConsoleFixture.h"

using namespace winadmin;
namespace pb = veldrano::admin::v1;
namespace demo = veldrano::server::demo;

namespace {

QString L(const char* key) {
    return GetLabel(QLatin1String(key));
}

QList<QStringList> Cells(const ListRowSet& rows) {
    QList<QStringList> cells;
    for (const ListRow& row : rows) cells << row.cells.ToStringList();
    return cells;
}

QStringList Column(const ListRowSet& rows, int column) {
    QStringList texts;
    for (const ListRow& row : rows) texts << row.cells.value(column);
    return texts;
}

// Every row of the list has this kind and this tag.
bool AllRows(const ListRowSet& rows, const char* kind, const QString& tag = {}) {
    return std::all_of(rows.begin(), rows.end(), [&](const ListRow& row) {
        return row.iconKey == QLatin1String(kind) && row.tag == tag;
    });
}

}  // namespace

class TestListFill : public ConsoleSuite {
    Q_OBJECT

private slots:
    void ColumnSetsOfEveryKind();
    void UnknownKindHasNoColumnsAndNoRows();
    void ServersAndTheirObjects();
    void EventsFilteredBySeverityOnTheServer();
    void ZonesRatesAndDestinations();
    void InstallationWideKindsAndFolders();

private:
    veldrano::server::Store& Store() { return fx_->server->GetStore(); }
    void AddServer(const std::string& name, bool remote = false);
    // Every row's kind has its picture.
    ListRowSet Fill(const char* kind, const QString& key, const NodeScope& scope = {}) {
        ListRowSet rows = FillListView(QLatin1String(kind), key, *TheSession(), scope);
        for (const ListRow& row : rows)
            if (KindIcon(row.iconKey).isNull())
                QTest::qFail(qPrintable("no picture for " + row.iconKey), __FILE__, __LINE__);
        return rows;
    }
};

void TestListFill::AddServer(const std::string& name, bool remote) {
    pb::Server server = demo::MakeServer(name, "Server " + name, true, true, true, "rpc");
    server.set_remote(remote);
    Store().CommitServer(server);
}

void TestListFill::ColumnSetsOfEveryKind() {
    // Every persisted width gets a value of its own, so that a column reading
    // another column's width shows.
    ColumnWidths widths;
    int twips = 600;
    QSet<QString> persisted, used;
    for (const ColumnWidths::View& view : widths.Views())
        for (const ColumnWidths::Column& column : view.columns) {
            QVERIFY(widths.SetWidth(view.section, column.key, twips += 45));
            persisted.insert(view.section + u'/' + column.key);
        }
    const QStringList centred = {"ServerRemote", "ServerUser", "ServerPrinter", "ServerDevice"};
    for (const QString& kind : KnownKinds()) {
        const std::vector<ListColumn> columns = BuildListColumns(kind, widths);
        QSet<QString> ofKind;
        for (const ListColumn& column : columns) {
            // Headers are the server's texts (a few English ones are their keys).
            QCOMPARE(column.header, GetLabel(column.key));
            if (!QStringList{"Name", "Extension", "Days"}.contains(column.key))
                QVERIFY2(column.header != column.key, qPrintable(column.key));
            QCOMPARE(column.alignment, centred.contains(column.key) ? Qt::AlignHCenter
                                       : column.key == "ProcessID"  ? Qt::AlignRight
                                                                    : Qt::AlignLeft);
            QCOMPARE(column.width,
                     TwipsToPixels(widths.Width(column.widthSection, column.widthKey)));
            ofKind.insert(column.widthSection + u'/' + column.widthKey);
        }
        // No two columns of a list read one width.
        QCOMPARE(ofKind.size(), int(columns.size()));
        used.unite(ofKind);
    }
    // Every column reads a persisted width, and every persisted width but the
    // group editor's member column belongs to a list.
    QVERIFY((used - persisted).isEmpty());
    QCOMPARE(persisted - used, QSet<QString>{QStringLiteral("UserView/MemberName")});

    // Columns in the order of the cells, widths stored under names the
    // existing settings hold rather than the column's key.
    QStringList zones;
    for (const ListColumn& column : BuildListColumns(QStringLiteral("LCR"), widths))
        zones << column.key + u'=' + column.widthSection + u'/' + column.widthKey;
    QCOMPARE(zones,
             QStringList({"ZoneListComment=ZoneView/ZoneComment", "IsLocal=ZoneView/IsLocal",
                          "PrimaryHost=ZoneView/PrimaryHost", "SecondaryHost=ZoneView/Secondary",
                          "IsDaemon=ZoneView/IsDaemon", "Daemon=ZoneView/Daemon"}));
}

void TestListFill::UnknownKindHasNoColumnsAndNoRows() {
    auto* grpc = static_cast<GrpcServerSession*>(TheSession());
    const uint64_t calls = grpc->RpcCount();
    for (const char* kind : {"Bogus", "users", "Rate", ""}) {
        QVERIFY(BuildListColumns(QLatin1String(kind), ColumnWidths()).empty());
        QVERIFY(Fill(kind, QStringLiteral("Users")).empty());
    }
    QCOMPARE(grpc->RpcCount(), calls);
}

void TestListFill::ServersAndTheirObjects() {
    AddServer("alpha", true);
    Store().CommitServer(demo::MakeServer("beta", "Second", true, false, false, "rpc"));
    Store().CommitUser(demo::MakeUser("alpha", "zed", "Zed Zimmer"));
    Store().CommitUser(demo::MakeUser("alpha", "amy", "Amy Adler"));
    Store().CommitUser(demo::MakeUser("beta", "bob", "Bob on beta"));
    for (int type : {0, 10, 11})
        Store().CommitPrinter(demo::MakePrinter("alpha", "p" + std::to_string(type), "Pr", type));
    const pb::DeviceType& type = veldrano::server::Store::DeviceTypes().front();
    Store().CommitDevice(demo::MakeDevice("alpha", "line1", type, "alpha", "First line"));

    const ListRowSet servers = Fill("Servers", QStringLiteral("Servers"));
    QCOMPARE(Cells(servers),
             (QList<QStringList>{{"alpha", "Server alpha", L("Yes"), L("Yes"), L("Yes"), L("Yes")},
                                 {"beta", "Second", L("No"), L("Yes"), L("No"), L("No")}}));
    QCOMPARE(servers[1].tag, QStringLiteral("beta"));

    // A server's branches name it in their key, or in the scope the tree gives.
    const ListRowSet users = Fill("Users", QStringLiteral("alphaUsers"));
    QCOMPARE(Cells(users), (QList<QStringList>{{"amy", "Amy Adler"}, {"zed", "Zed Zimmer"}}));
    QVERIFY(AllRows(users, "User", "alpha"));
    QCOMPARE(Column(Fill("Users", QStringLiteral("betaUsers"), {"beta", {}}), 0),
             QStringList{"bob"});
    // A server the installation does not know: the call's failure is thrown
    // (an unreachable server is the explorer's test, through the error dialog).
    QVERIFY_THROWS_EXCEPTION(SessionError, Fill("Users", QStringLiteral("nosuchUsers")));

    const ListRowSet printers = Fill("Printers", QStringLiteral("alphaPrinters"));
    QCOMPARE(Column(printers, 2),
             QStringList({L("PRN_ASCII"), L("PRN_HP_LJ_FAST"), L("PRN_WINDOWS")}));
    QVERIFY(AllRows(printers, "Printer", "alpha"));
    // Code texts follow the labels of the moment, not those of an earlier fill.
    TestServer german(ServerOptions("", "de"));
    auto germanLabels = german.Login();
    SetLabelSource(germanLabels.get());
    const QString windows = Fill("Printers", QStringLiteral("alphaPrinters")).back().cells.at(2);
    SetLabelSource(TheSession());
    QCOMPARE(windows, germanLabels->GetLabel(QStringLiteral("PRN_WINDOWS")));
    QVERIFY(windows != L("PRN_WINDOWS"));
    // A printer deleted since the tree was built.
    QCOMPARE(Cells(Fill("Printer", QStringLiteral("alphaPrintersgone"), {"alpha", "gone"})),
             (QList<QStringList>{{"gone", L("<not found>"), L("<not found>")}}));

    QCOMPARE(Cells(Fill("Device", QStringLiteral("alphaDevicesline1"), {"alpha", "line1"})),
             (QList<QStringList>{{"line1", "First line", QString::fromStdString(type.name())}}));

    // Which fields feed the cells; the status rules are tst_codetables'.
    const int states[][3] = {{4242, 1, -1}, {-7, 1, 3}};
    for (int slot = 0; slot < 2; ++slot) {
        pb::Process process;
        process.set_slot(slot);
        process.set_pid(states[slot][0]);
        process.set_run_state(states[slot][1]);
        process.set_exit_status(states[slot][2]);
        process.set_directory("/var/spool");
        process.set_command("faxd");
        Store().PutProcess("alpha", process);
    }
    QCOMPARE(Cells(Fill("Processes", QStringLiteral("alphaProcesses"))),
             (QList<QStringList>{{"0", " 4242", "/var/spool", "faxd", L("ProcessRun")},
                                 {"1", "---", "/var/spool", "faxd", L("ProcessExit") + " (0x3)"}}));
}

void TestListFill::EventsFilteredBySeverityOnTheServer() {
    AddServer("alpha");
    const qint64 base = QDateTime(QDate(2024, 3, 9), QTime(7, 5, 3)).toSecsSinceEpoch();
    // Severities 0 to 6 (6 is no known code), the newest last.
    for (int severity = 0; severity <= 6; ++severity)
        Store().AppendEvent("alpha", demo::MakeEvent(base + severity, severity, 17, 4100 + severity,
                                                     0x41, "event " + std::to_string(severity)));
    auto severities = [](const ListRowSet& rows) {
        QStringList texts;
        for (const ListRow& row : rows) texts << row.cells.value(3).section(u' ', 1);
        return texts;
    };

    // Nothing stored: every severity, newest first, the time in local time.
    ListRowSet rows = Fill("Events", QStringLiteral("alphaEvents"));
    QCOMPARE(severities(rows), QStringList({"6", "5", "4", "3", "2", "1", "0"}));
    QCOMPARE(
        rows.back().cells.ToStringList(),
        QStringList({"2024-03-09 07:05:03", L("SeverityNone"), "4100", "event 0",
                     L("MsgClassAppl") + ' ' + L("MsgClassUnix") + ' ', L("OriginatorGateway")}));
    QCOMPARE(rows.front().cells.at(1), L("<Unknown>"));
    QVERIFY(AllRows(rows, "Event", "alpha"));

    StoreSetting(QStringLiteral("Severity"), QStringLiteral("3"));
    QCOMPARE(severities(Fill("Events", QStringLiteral("alphaEvents"))),
             QStringList({"6", "5", "4", "3"}));

    // More events below the filter than the list holds, all newer than the
    // few above it: the server filters before it counts, so those are listed.
    Store().Bulk([&] {
        for (int i = 0; i < kEventListCap + 5; ++i)
            Store().AppendEvent("alpha", demo::MakeEvent(base + 100 + i, 1, 0, 1, 0, "noise"));
    });
    QList<int> counts;
    auto count = [&](int rows) { counts << rows; };
    rows = FillListView(QStringLiteral("Events"), QStringLiteral("alphaEvents"), *TheSession(), {},
                        count);
    QCOMPARE(severities(rows), QStringList({"6", "5", "4", "3"}));
    QCOMPARE(counts, QList<int>{4});

    // Without the filter the cap holds, and the count runs while rows are made.
    StoreSetting(QStringLiteral("Severity"), QStringLiteral("0"));
    counts.clear();
    QCOMPARE(int(FillListView(QStringLiteral("Events"), QStringLiteral("alphaEvents"),
                              *TheSession(), {}, count)
                     .size()),
             kEventListCap);
    QVERIFY(counts.size() > 2 && std::is_sorted(counts.begin(), counts.end()));
    QCOMPARE(counts.last(), kEventListCap);
}

void TestListFill::ZonesRatesAndDestinations() {
    AddServer("alpha");
    Store().CommitUser(demo::MakeUser("alpha", "lcrd", "Routing daemon"));
    auto zone = [&](const std::string& name, bool local, const char* primary, const char* secondary,
                    const char* daemon) {
        pb::Zone zone;
        zone.set_name(name);
        zone.set_is_local(local);
        zone.set_primary_host(primary);
        zone.set_secondary_host(secondary);
        zone.set_is_daemon(*daemon);
        if (*daemon) {
            zone.mutable_daemon()->set_user_name(daemon);
            zone.mutable_daemon()->set_host_name("alpha");
        }
        zone.set_is_new(true);
        Store().CommitZone(zone);
    };
    zone("Local calls", true, "", "", "");
    zone("Germany", false, "alpha", "", "");
    zone("Overseas", false, "", "alpha", "lcrd");
    const ListRowSet zones = Fill("LCR", QStringLiteral("LCR"));
    const QString none = L("(None)");
    QCOMPARE(Cells(zones),
             (QList<QStringList>{{"Local calls", L("Yes"), none, none, L("No"), none},
                                 {"Germany", L("No"), "alpha", none, L("No"), none},
                                 {"Overseas", L("No"), none, "alpha", L("Yes"), "lcrd@alpha"}}));
    QCOMPARE(zones[2].key, QStringLiteral("zone3"));
    QVERIFY(AllRows(zones, "Zone"));

    // Days as seven flags from Monday, starting at minute 5, ending on the hour.
    auto rate = [&](const std::string& zone, const char* days, int start, int stop) {
        pb::Rate rate;
        rate.set_zone(zone);
        for (auto set : {&pb::Rate::set_monday, &pb::Rate::set_tuesday, &pb::Rate::set_wednesday,
                         &pb::Rate::set_thursday, &pb::Rate::set_friday, &pb::Rate::set_saturday,
                         &pb::Rate::set_sunday})
            (rate.*set)(*days++ == '1');
        rate.set_start_hour(start);
        rate.set_start_minute(5);
        rate.set_stop_hour(stop);
        rate.set_is_new(true);
        Store().CommitRate(rate);
    };
    rate("Germany", "1100000", 8, 18);
    rate("Germany", "1111111", 0, 24);
    rate("Germany", "0000001", 9, 12);
    rate("Overseas", "0000010", 1, 2);
    const QList<QStringList> germany = {{"Mo,Tu,", "08:05", "18:00"},
                                        {"Mo,Tu,We,Th,Fr,Sa,Su", "00:05", "24:00"},
                                        {"Su", "09:05", "12:00"}};
    const ListRowSet rates = Fill("Rates", QStringLiteral("Rates2"), {{}, "Germany"});
    QCOMPARE(Cells(rates), germany);
    QCOMPARE(rates[2].key, QStringLiteral("3Rate"));
    // Without a scope the zone is the one the key's index names in the walk.
    QCOMPARE(Cells(Fill("Rates", QStringLiteral("Rates3"))),
             (QList<QStringList>{{"Sa,", "01:05", "02:00"}}));

    int n = 0;
    for (auto type : {pb::DEST_FAX, pb::DEST_SMS, pb::DEST_TELEX, pb::DEST_VOICE}) {
        pb::Destination destination;
        destination.set_zone("Overseas");
        destination.set_type(type);
        destination.set_prefix("00" + std::to_string(++n));
        destination.set_name("to " + destination.prefix());
        destination.set_external(n % 2);
        destination.set_is_new(true);
        Store().CommitDestination(destination);
    }
    const ListRowSet destinations = Fill("Destinations", QStringLiteral("Destinations3"));
    QCOMPARE(Cells(destinations), (QList<QStringList>{{"001", "FAX", L("Yes"), "to 001"},
                                                      {"002", "SMS", L("No"), "to 002"},
                                                      {"003", "TELEX", L("Yes"), "to 003"},
                                                      {"004", "VOICE", L("No"), "to 004"}}));
    QCOMPARE(destinations[1].key, QStringLiteral("2Destination"));

    // What the server refuses to store (no day, impossible times) can still
    // come from another server product.
    pb::Rate odd;
    QCOMPARE(RateDaysText(odd), QStringLiteral("--"));
    odd.set_stop_hour(24);
    odd.set_stop_minute(30);
    odd.set_start_hour(25);
    QCOMPARE(RateStopText(odd), QStringLiteral("24:00"));
    QCOMPARE(RateStartText(odd), QString());
    QCOMPARE(DestinationTypeText(9), L("<Unknown>"));
}

void TestListFill::InstallationWideKindsAndFolders() {
    veldrano::server::FillDemo(Store());
    // Kind, key, row count, the row kind and one of the rows.
    const std::tuple<const char*, const char*, int, const char*, QStringList> lists[] = {
        {"Groups", "Groups", 7, "Group", {"AllStaff", "Everybody, all sites"}},
        {"Routes",
         "Routes",
         6,
         "Route",
         {"hq-rates", "Daily rates from HQ treasury", "", "+41 44 555"}},
        {"NumberMappings", "NumberMappings", 6, "NumberMapping", {"*31#", "+41445551000"}},
        {"Gateways", "Gateways", 2, "Gateway", {"smtp.example.com", "Company mail relay"}},
        {"Gateway", "smtp.example.com", 4, "GatewayUser", {"accounts@example.com", "310"}},
    };
    for (const auto& [kind, key, count, rowKind, row] : lists) {
        const ListRowSet rows = Fill(kind, QLatin1String(key));
        QCOMPARE(int(rows.size()), count);
        QVERIFY2(Cells(rows).contains(row), qPrintable(row.join(u'|')));
        QVERIFY(AllRows(rows, rowKind));
    }

    // The folders list their branches, known without asking the server.
    auto* grpc = static_cast<GrpcServerSession*>(TheSession());
    const uint64_t calls = grpc->RpcCount();
    auto keys = [](const ListRowSet& rows) {
        QStringList keys;
        for (const ListRow& row : rows) {
            const QString label = row.iconKey == QLatin1String("LCR") ? "Lcr" : row.iconKey;
            keys << (row.cells.front() == GetLabel(label) ? row.key : row.key + "?");
        }
        return keys;
    };
    QCOMPARE(keys(Fill("Administrator", QStringLiteral("Administrator"))),
             QStringList({"Groups", "Routes", "LCR", "NumberMappings", "Gateways", "Servers"}));
    const ListRowSet server = Fill("Server", QStringLiteral("fx1"));
    QCOMPARE(keys(server),
             QStringList({"fx1Users", "fx1Printers", "fx1Devices", "fx1Processes", "fx1Events"}));
    QCOMPARE(server[3].tag, QStringLiteral("fx1"));
    QCOMPARE(keys(Fill("Zone", QStringLiteral("zone12"))),
             QStringList({"Rates12", "Destinations12"}));
    QCOMPARE(grpc->RpcCount(), calls);
}

QTEST_MAIN(TestListFill)
#include "tst_listfill.moc"
