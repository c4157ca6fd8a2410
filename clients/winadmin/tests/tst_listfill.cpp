// The explorer's column sets and list fills against the reference server:
// headers, persisted widths and alignment of every kind, and the cells of
// every kind's rows as the server's records turn into them.

#include <QTest>
#include <memory>

#include "common/Labels.h"
#include "common/Settings.h"
#include "common/Twips.h"
#include "demo/DemoData.h"
#include "shell/ListFill.h"
#include "shell/ListFillKinds.h"
#include "shell/ViewSettings.h"
#include "store/Store.h"
#include "support/ConsoleFixture.h"

using namespace winadmin;
namespace pb = veldrano::admin::v1;
namespace demo = veldrano::server::demo;

namespace {

QString L(const char* key) {
    return GetLabel(QLatin1String(key));
}

QList<QStringList> Cells(const std::vector<ListRow>& rows) {
    QList<QStringList> cells;
    for (const ListRow& row : rows) cells << row.cells.ToStringList();
    return cells;
}

QStringList Column(const std::vector<ListRow>& rows, int column) {
    QStringList texts;
    for (const ListRow& row : rows) texts << row.cells.value(column);
    return texts;
}

// Every row of the list has this kind and this tag.
bool AllRows(const std::vector<ListRow>& rows, const char* kind, const QString& tag = {}) {
    return std::all_of(rows.begin(), rows.end(), [&](const ListRow& row) {
        return row.iconKey == QLatin1String(kind) && row.tag == tag;
    });
}

void SaveSeverity(const char* severity) {
    SaveSectionSetting(kVendor, GetProductKeyName(), kMainFormSection, QStringLiteral("Severity"),
                       QLatin1String(severity));
}

}  // namespace

class TestListFill : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void ColumnSetsOfEveryKind_data();
    void ColumnSetsOfEveryKind();
    void WidthsComeFromTheirOwnSettings();
    void UnknownKindHasNoColumnsAndNoRows();
    void ServersAndTheirObjects();
    void EventsFilteredBySeverityOnTheServer();
    void ZonesRatesAndDestinations();
    void InstallationWideKindsAndFolders();
    void CodeTextsFollowTheLabelsAtEachFill();
    void FailingCallIsThrown();

private:
    veldrano::server::Store& Store() { return fixture_->server->GetStore(); }
    void AddServer(const std::string& name, bool remote = false);
    std::vector<ListRow> Fill(const char* kind, const QString& key, const NodeScope& scope = {}) {
        return FillListView(QLatin1String(kind), key, *TheSession(), scope);
    }

    std::unique_ptr<ConsoleFixture> fixture_;
};

void TestListFill::init() {
    fixture_ = std::make_unique<ConsoleFixture>();
    fixture_->LogIn();
}

void TestListFill::cleanup() {
    QCOMPARE(ConsoleFixture::Close(fixture_), 0);
}

void TestListFill::AddServer(const std::string& name, bool remote) {
    pb::Server server = demo::MakeServer(name, "Server " + name, true, true, true, "rpc");
    server.set_remote(remote);
    Store().CommitServer(server);
}

void TestListFill::ColumnSetsOfEveryKind_data() {
    QTest::addColumn<QString>("kinds");
    QTest::addColumn<QString>("keys");
    QTest::newRow("folders") << "Administrator|Server|Zone"
                             << "Name";
    QTest::newRow("servers") << "Servers"
                             << "ServerName|ServerComment|ServerRemote|ServerUser|ServerPrinter|"
                                "ServerDevice";
    QTest::newRow("users") << "Users"
                           << "UserName|UserComment";
    QTest::newRow("groups") << "Groups"
                            << "GroupName|GroupComment";
    QTest::newRow("printers") << "Printers|Printer"
                              << "PrinterName|PrinterComment|PrinterType";
    QTest::newRow("devices") << "Devices|Device"
                             << "DeviceName|DeviceComment|DeviceTypeComment";
    QTest::newRow("processes") << "Processes"
                               << "ProcessSlot|ProcessID|ProcessDirectory|ProcessCommand|"
                                  "ProcessStatus";
    QTest::newRow("events") << "Events"
                            << "EventTime|EventSeverity|EventOriginatorID|EventMessageText|"
                               "EventMessageClass|EventOriginatorType";
    QTest::newRow("routes") << "Routes"
                            << "RouteName|RouteComment|RouteMatchExtension|RouteMatchTSI";
    QTest::newRow("mappings") << "NumberMappings"
                              << "NumberMappingsMatch|NumberMappingsReplace";
    QTest::newRow("gateways") << "Gateways"
                              << "GatewayName|GatewayComment";
    QTest::newRow("gateway") << "Gateway"
                             << "MailAddress|Extension";
    QTest::newRow("lcr") << "LCR"
                         << "Comment|IsLocal|PrimaryHost|SecondaryHost|IsDaemon|Daemon";
    QTest::newRow("rates") << "Rates"
                           << "Days|Rate Start|Rate Stop";
    QTest::newRow("destinations") << "Destinations"
                                  << "Dest Prefix|Dest Type|Dest External|Dests";
}

void TestListFill::ColumnSetsOfEveryKind() {
    QFETCH(QString, kinds);
    QFETCH(QString, keys);
    const QStringList centred = {"ServerRemote", "ServerUser", "ServerPrinter", "ServerDevice"};
    for (const QString& kind : kinds.split(u'|')) {
        QStringList built;
        for (const ListColumn& column : BuildListColumns(kind, ColumnWidths())) {
            built << column.key;
            // Headers are the server's texts (a few English ones are their keys).
            QCOMPARE(column.header, GetLabel(column.key));
            if (!QStringList{"Name", "Extension", "Days"}.contains(column.key))
                QVERIFY2(column.header != column.key, qPrintable(column.key));
            QCOMPARE(column.alignment, centred.contains(column.key)               ? Qt::AlignHCenter
                                       : column.key == QLatin1String("ProcessID") ? Qt::AlignRight
                                                                                  : Qt::AlignLeft);
        }
        QCOMPARE(built, keys.split(u'|'));
    }
}

void TestListFill::WidthsComeFromTheirOwnSettings() {
    // Every persisted width gets a value of its own, so that a column reading
    // another column's width shows.
    ColumnWidths widths;
    int twips = 600;
    QSet<QString> persisted;
    for (const ColumnWidths::View& view : widths.Views()) {
        for (const ColumnWidths::Column& column : view.columns) {
            QVERIFY(widths.SetWidth(view.section, column.key, twips += 45));
            persisted.insert(view.section + u'/' + column.key);
        }
    }
    // The columns whose width value is not named like their header.
    const char* const renamed[][4] = {
        {"LCR", "Comment", "ZoneView", "ZoneComment"},
        {"LCR", "SecondaryHost", "ZoneView", "Secondary"},
        {"Rates", "Days", "RateView", "RateDays"},
        {"Rates", "Rate Start", "RateView", "RateStart"},
        {"Rates", "Rate Stop", "RateView", "RateStop"},
        {"Destinations", "Dest Prefix", "DestView", "DestPrefix"},
        {"Destinations", "Dest Type", "DestView", "DestType"},
        {"Destinations", "Dest External", "DestView", "Destext"},
        {"Destinations", "Dests", "DestView", "DestName"},
    };
    for (const auto& [kind, key, section, value] : renamed) {
        bool found = false;
        for (const ListColumn& column : BuildListColumns(QLatin1String(kind), widths)) {
            if (column.key != QLatin1String(key)) continue;
            found = true;
            QCOMPARE(column.widthSection, QLatin1String(section));
            QCOMPARE(column.widthKey, QLatin1String(value));
            QCOMPARE(column.width,
                     TwipsToPixels(widths.Width(column.widthSection, column.widthKey)));
        }
        QVERIFY2(found, key);
    }

    // No two columns of a list read one width, every column reads a persisted
    // one, and only the group editor's member column is left over.
    QSet<QString> used;
    for (const char* kind : {"Administrator", "Groups", "Routes", "NumberMappings", "Servers",
                             "Users", "Printers", "Devices", "Processes", "Events", "Gateways",
                             "Gateway", "Rates", "Destinations", "LCR"}) {
        QSet<QString> ofKind;
        for (const ListColumn& column : BuildListColumns(QLatin1String(kind), widths))
            ofKind.insert(column.widthSection + u'/' + column.widthKey);
        QCOMPARE(ofKind.size(), int(BuildListColumns(QLatin1String(kind), widths).size()));
        used.unite(ofKind);
    }
    QVERIFY((used - persisted).isEmpty());
    QCOMPARE(persisted - used, QSet<QString>{QStringLiteral("UserView/MemberName")});
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

    const std::vector<ListRow> servers = Fill("Servers", QStringLiteral("Servers"));
    QCOMPARE(Cells(servers),
             (QList<QStringList>{{"alpha", "Server alpha", L("Yes"), L("Yes"), L("Yes"), L("Yes")},
                                 {"beta", "Second", L("No"), L("Yes"), L("No"), L("No")}}));
    QCOMPARE(servers[1].tag, QStringLiteral("beta"));

    // A server's branches name it in their key, or in the scope the tree gives.
    const std::vector<ListRow> users = Fill("Users", QStringLiteral("alphaUsers"));
    QCOMPARE(Cells(users), (QList<QStringList>{{"amy", "Amy Adler"}, {"zed", "Zed Zimmer"}}));
    QVERIFY(AllRows(users, "User", "alpha"));
    QCOMPARE(Column(Fill("Users", QStringLiteral("betaUsers"), {"beta", {}}), 0),
             QStringList{"bob"});

    const std::vector<ListRow> printers = Fill("Printers", QStringLiteral("alphaPrinters"));
    QCOMPARE(Column(printers, 2),
             QStringList({L("PRN_ASCII"), L("PRN_HP_LJ_FAST"), L("PRN_WINDOWS")}));
    QVERIFY(AllRows(printers, "Printer", "alpha"));
    QCOMPARE(Cells(Fill("Printer", QStringLiteral("alphaPrintersp10"), {"alpha", "p10"})),
             (QList<QStringList>{{"p10", "Pr", L("PRN_HP_LJ_FAST")}}));
    // A printer deleted since the tree was built.
    QCOMPARE(Cells(Fill("Printer", QStringLiteral("alphaPrintersgone"), {"alpha", "gone"})),
             (QList<QStringList>{{"gone", L("<not found>"), L("<not found>")}}));

    const QList<QStringList> device = {
        {"line1", "First line", QString::fromStdString(type.name())}};
    QCOMPARE(Cells(Fill("Devices", QStringLiteral("alphaDevices"))), device);
    QCOMPARE(Cells(Fill("Device", QStringLiteral("alphaDevicesline1"), {"alpha", "line1"})),
             device);

    const int states[][3] = {{0, 0, -1}, {4242, 1, -1}, {-7, 1, 3}, {17, -1, -1}};
    for (int slot = 0; slot < 4; ++slot) {
        pb::Process process;
        process.set_slot(slot);
        process.set_pid(states[slot][0]);
        process.set_run_state(states[slot][1]);
        process.set_exit_status(states[slot][2]);
        process.set_directory("/var/spool");
        process.set_command("faxd");
        Store().PutProcess("alpha", process);
    }
    const std::vector<ListRow> processes = Fill("Processes", QStringLiteral("alphaProcesses"));
    QCOMPARE(Cells(processes),
             (QList<QStringList>{{"0", "---", "/var/spool", "faxd", L("ProcessStarting")},
                                 {"1", " 4242", "/var/spool", "faxd", L("ProcessRun")},
                                 {"2", "---", "/var/spool", "faxd", L("ProcessExit") + " (0x3)"},
                                 {"3", " 17", "/var/spool", "faxd", L("ProcessFailed")}}));
    QVERIFY(AllRows(processes, "Process", "alpha"));
}

void TestListFill::EventsFilteredBySeverityOnTheServer() {
    AddServer("alpha");
    const qint64 base = QDateTime(QDate(2024, 3, 9), QTime(7, 5, 3)).toSecsSinceEpoch();
    // Severities 0 to 6 (6 is no known code), the newest last.
    for (int severity = 0; severity <= 6; ++severity)
        Store().AppendEvent("alpha", demo::MakeEvent(base + severity, severity, 17, 4100 + severity,
                                                     0x41, "event " + std::to_string(severity)));
    auto severities = [](const std::vector<ListRow>& rows) {
        QStringList texts;
        for (const ListRow& row : rows) texts << row.cells.value(3).section(u' ', 1);
        return texts;
    };

    // Nothing stored: every severity, newest first, the time in local time.
    std::vector<ListRow> rows = Fill("Events", QStringLiteral("alphaEvents"));
    QCOMPARE(severities(rows), QStringList({"6", "5", "4", "3", "2", "1", "0"}));
    QCOMPARE(
        rows.back().cells.ToStringList(),
        QStringList({"2024-03-09 07:05:03", L("SeverityNone"), "4100", "event 0",
                     L("MsgClassAppl") + ' ' + L("MsgClassUnix") + ' ', L("OriginatorGateway")}));
    QCOMPARE(rows.front().cells.at(1), L("<Unknown>"));
    QVERIFY(AllRows(rows, "Event", "alpha"));

    SaveSeverity("3");
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
    SaveSeverity("0");
    counts.clear();
    rows = FillListView(QStringLiteral("Events"), QStringLiteral("alphaEvents"), *TheSession(), {},
                        count);
    QCOMPARE(int(rows.size()), kEventListCap);
    QVERIFY(counts.size() > 2);
    QVERIFY(std::is_sorted(counts.begin(), counts.end()));
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
    const std::vector<ListRow> zones = Fill("LCR", QStringLiteral("LCR"));
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
    const std::vector<ListRow> rates = Fill("Rates", QStringLiteral("Rates2"), {{}, "Germany"});
    QCOMPARE(Cells(rates), germany);
    QCOMPARE(rates[2].key, QStringLiteral("3Rate"));
    QVERIFY(AllRows(rates, "Rate"));
    // Without a scope the zone is the one the key's index names in the walk.
    QCOMPARE(Cells(Fill("Rates", QStringLiteral("Rates2"))), germany);
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
    const std::vector<ListRow> destinations =
        Fill("Destinations", QStringLiteral("Destinations3"), {{}, "Overseas"});
    QCOMPARE(Cells(destinations), (QList<QStringList>{{"001", "FAX", L("Yes"), "to 001"},
                                                      {"002", "SMS", L("No"), "to 002"},
                                                      {"003", "TELEX", L("Yes"), "to 003"},
                                                      {"004", "VOICE", L("No"), "to 004"}}));
    QCOMPARE(destinations[1].key, QStringLiteral("2Destination"));
    QVERIFY(AllRows(destinations, "Destination"));

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
    const struct {
        const char* kind;
        const char* key;
        int rows;
        QStringList row;  // one of the rows
        const char* rowKind;
    } expectations[] = {
        {"Groups", "Groups", 7, {"AllStaff", "Everybody, all sites"}, "Group"},
        {"Routes",
         "Routes",
         6,
         {"hq-rates", "Daily rates from HQ treasury", "", "+41 44 555"},
         "Route"},
        {"NumberMappings", "NumberMappings", 6, {"*31#", "+41445551000"}, "NumberMapping"},
        {"Gateways", "Gateways", 2, {"smtp.example.com", "Company mail relay"}, "Gateway"},
        {"Gateway", "smtp.example.com", 4, {"accounts@example.com", "310"}, "GatewayUser"},
    };
    for (const auto& expect : expectations) {
        const std::vector<ListRow> rows = Fill(expect.kind, QLatin1String(expect.key));
        QCOMPARE(int(rows.size()), expect.rows);
        QVERIFY2(Cells(rows).contains(expect.row), qPrintable(expect.row.join(u'|')));
        QVERIFY(AllRows(rows, expect.rowKind));
    }

    // The folders list their branches, known without asking the server.
    auto* grpc = static_cast<GrpcServerSession*>(TheSession());
    const uint64_t calls = grpc->RpcCount();
    auto keys = [](const std::vector<ListRow>& rows) {
        QStringList keys;
        for (const ListRow& row : rows) {
            keys << row.key;
            const QString label = row.iconKey == QLatin1String("LCR") ? "Lcr" : row.iconKey;
            if (row.cells.front() != GetLabel(label))
                keys << "(text of " + row.key + " is " + row.cells.front() + ")";
        }
        return keys;
    };
    const std::vector<ListRow> root = Fill("Administrator", QStringLiteral("Administrator"));
    QCOMPARE(keys(root),
             QStringList({"Groups", "Routes", "LCR", "NumberMappings", "Gateways", "Servers"}));
    QCOMPARE(root[2].iconKey, QStringLiteral("LCR"));
    const std::vector<ListRow> server = Fill("Server", QStringLiteral("fx1"));
    QCOMPARE(keys(server),
             QStringList({"fx1Users", "fx1Printers", "fx1Devices", "fx1Processes", "fx1Events"}));
    QCOMPARE(server[3].tag, QStringLiteral("fx1"));
    QCOMPARE(keys(Fill("Zone", QStringLiteral("zone12"))),
             QStringList({"Rates12", "Destinations12"}));
    QCOMPARE(grpc->RpcCount(), calls);
}

void TestListFill::CodeTextsFollowTheLabelsAtEachFill() {
    AddServer("alpha");
    Store().CommitPrinter(demo::MakePrinter("alpha", "win", "Windows queue", 11));
    const QString english = Fill("Printers", QStringLiteral("alphaPrinters")).front().cells.at(2);
    TestServer german({false, "", "de"});
    auto germanLabels = german.Login();
    SetLabelSource(germanLabels.get());
    const std::vector<ListRow> rows = Fill("Printers", QStringLiteral("alphaPrinters"));
    SetLabelSource(TheSession());
    QCOMPARE(rows.front().cells.at(2), germanLabels->GetLabel(QStringLiteral("PRN_WINDOWS")));
    QVERIFY(rows.front().cells.at(2) != english);
}

void TestListFill::FailingCallIsThrown() {
    AddServer("alpha");
    // A server the installation does not know.
    QVERIFY_THROWS_EXCEPTION(SessionError, Fill("Users", QStringLiteral("nosuchUsers")));
    // No server at all (reached over TCP, as the console reaches one).
    fixture_->StartServer(ServerOptions("", "", true));
    SetTheSession(fixture_->server->LoginTcp());
    fixture_->server->Shutdown();
    QVERIFY_THROWS_EXCEPTION(SessionError, Fill("Groups", QStringLiteral("Groups")));
}

QTEST_MAIN(TestListFill)
#include "tst_listfill.moc"
