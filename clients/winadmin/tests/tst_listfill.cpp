// The explorer's column sets and list fills against the reference server:
// headers and persisted widths of every kind, and the cells of the kinds'
// rows as the server's records turn into them.

#include <QTest>
#include <memory>

#include "common/Labels.h"
#include "common/Twips.h"
#include "demo/DemoData.h"
#include "lists/Kinds.h"
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
    void ServersAndTheirObjects();
    void EventsFilteredBySeverityOnTheServer();
    void ZonesAndRates();
    void GatewayUsersAndFolders();

private:
    veldrano::server::Store& Store() { return fx_->server->GetStore(); }
    void AddServer(const std::string& name, bool remote = false);
    ListRowSet Fill(const char* kind, const QString& key, const NodeScope& scope = {}) {
        return FillListView(QLatin1String(kind), key, *TheSession(), scope);
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
    for (const QString& kind : KnownKinds()) {
        const std::vector<ListColumn> columns = BuildListColumns(kind, widths);
        QSet<QString> ofKind;
        for (const ListColumn& column : columns) {
            QCOMPARE(column.header, GetLabel(column.key));
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

    // A kind the lists do not know has no columns and no rows, and costs no call.
    auto* grpc = static_cast<GrpcServerSession*>(TheSession());
    const uint64_t calls = grpc->RpcCount();
    QVERIFY(BuildListColumns(QStringLiteral("users"), widths).empty());
    QVERIFY(Fill("users", QStringLiteral("Users")).empty());
    QCOMPARE(grpc->RpcCount(), calls);
}

void TestListFill::ServersAndTheirObjects() {
    AddServer("alpha", true);
    Store().CommitServer(demo::MakeServer("beta", "Second", true, false, false, "rpc"));
    Store().CommitUser(demo::MakeUser("alpha", "amy", "Amy Adler"));
    Store().CommitUser(demo::MakeUser("beta", "bob", "Bob on beta"));
    Store().CommitPrinter(demo::MakePrinter("alpha", "p11", "Pr", 11));

    const ListRowSet servers = Fill("Servers", QStringLiteral("Servers"));
    QCOMPARE(Cells(servers),
             (QList<QStringList>{{"alpha", "Server alpha", L("Yes"), L("Yes"), L("Yes"), L("Yes")},
                                 {"beta", "Second", L("No"), L("Yes"), L("No"), L("No")}}));
    QCOMPARE(servers[1].tag, QStringLiteral("beta"));

    // A server's branches name it in their key, or in the scope the tree gives.
    const ListRowSet users = Fill("Users", QStringLiteral("alphaUsers"));
    QCOMPARE(Cells(users), (QList<QStringList>{{"amy", "Amy Adler"}}));
    QVERIFY(AllRows(users, "User", "alpha"));
    QCOMPARE(Cells(Fill("Users", QStringLiteral("betaUsers"), {"beta", {}})),
             (QList<QStringList>{{"bob", "Bob on beta"}}));
    // A server the installation does not know: the call's failure is thrown
    // (an unreachable server is the explorer's test, through the error dialog).
    QVERIFY_THROWS_EXCEPTION(SessionError, Fill("Users", QStringLiteral("nosuchUsers")));

    QCOMPARE(Cells(Fill("Printers", QStringLiteral("alphaPrinters"))),
             (QList<QStringList>{{"p11", "Pr", L("PRN_WINDOWS")}}));
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

    // Which fields feed the cells; the status rules are tst_labels'.
    pb::Process process;
    process.set_slot(1);
    process.set_pid(4242);
    process.set_run_state(1);
    process.set_exit_status(3);
    process.set_directory("/var/spool");
    process.set_command("faxd");
    Store().PutProcess("alpha", process);
    QCOMPARE(
        Cells(Fill("Processes", QStringLiteral("alphaProcesses"))),
        (QList<QStringList>{{"1", " 4242", "/var/spool", "faxd", L("ProcessExit") + " (0x3)"}}));
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
    const ListRowSet rows = Fill("Events", QStringLiteral("alphaEvents"));
    QCOMPARE(severities(rows), QStringList({"6", "5", "4", "3", "2", "1", "0"}));
    QCOMPARE(
        rows.back().cells.ToStringList(),
        QStringList({"2024-03-09 07:05:03", L("SeverityNone"), "4100", "event 0",
                     L("MsgClassAppl") + ' ' + L("MsgClassUnix") + ' ', L("OriginatorGateway")}));
    QCOMPARE(rows.front().cells.at(1), L("<Unknown>"));

    // More events below the filter than the list holds, all newer than the
    // few above it: the server filters before it counts, so those are listed.
    Store().Bulk([&] {
        for (int i = 0; i < kEventListCap + 5; ++i)
            Store().AppendEvent("alpha", demo::MakeEvent(base + 100 + i, 1, 0, 1, 0, "noise"));
    });
    StoreSetting(QStringLiteral("Severity"), QStringLiteral("3"));
    QCOMPARE(severities(Fill("Events", QStringLiteral("alphaEvents"))),
             QStringList({"6", "5", "4", "3"}));
    // Without the filter the cap holds.
    StoreSetting(QStringLiteral("Severity"), QStringLiteral("0"));
    QCOMPARE(int(Fill("Events", QStringLiteral("alphaEvents")).size()), kEventListCap);
}

void TestListFill::ZonesAndRates() {
    AddServer("alpha");
    Store().CommitUser(demo::MakeUser("alpha", "lcrd", "Routing daemon"));
    pb::Zone zone;
    zone.set_is_new(true);
    zone.set_name("Germany");
    zone.set_is_local(true);
    zone.set_primary_host("alpha");
    Store().CommitZone(zone);
    zone.Clear();
    zone.set_is_new(true);
    zone.set_name("Overseas");
    zone.set_secondary_host("alpha");
    zone.set_is_daemon(true);
    zone.mutable_daemon()->set_user_name("lcrd");
    zone.mutable_daemon()->set_host_name("alpha");
    Store().CommitZone(zone);
    const ListRowSet zones = Fill("LCR", QStringLiteral("LCR"));
    const QString none = L("(None)");
    QCOMPARE(Cells(zones),
             (QList<QStringList>{{"Germany", L("Yes"), "alpha", none, L("No"), none},
                                 {"Overseas", L("No"), none, "alpha", L("Yes"), "lcrd@alpha"}}));
    QCOMPARE(zones[1].key, QStringLiteral("zone2"));

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
    rate("Germany", "0000001", 9, 24);
    rate("Overseas", "0000010", 1, 2);
    const ListRowSet rates = Fill("Rates", QStringLiteral("Rates1"), {{}, "Germany"});
    QCOMPARE(Cells(rates),
             (QList<QStringList>{{"Mo,Tu,", "08:05", "18:00"}, {"Su", "09:05", "24:00"}}));
    QCOMPARE(rates[1].key, QStringLiteral("2Rate"));
    // Without a scope the zone is the one the key's index names in the walk.
    QCOMPARE(Cells(Fill("Rates", QStringLiteral("Rates2"))),
             (QList<QStringList>{{"Sa,", "01:05", "02:00"}}));

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

void TestListFill::GatewayUsersAndFolders() {
    veldrano::server::FillDemo(Store());
    // A gateway's users are listed under the gateway's own node.
    const ListRowSet users = Fill("Gateway", QStringLiteral("smtp.example.com"));
    QVERIFY(Cells(users).contains({"accounts@example.com", "310"}));
    QVERIFY(AllRows(users, "GatewayUser"));

    // The folders list their branches, known without asking the server.
    auto* grpc = static_cast<GrpcServerSession*>(TheSession());
    const uint64_t calls = grpc->RpcCount();
    auto keys = [](const ListRowSet& rows) {
        QStringList keys;
        for (const ListRow& row : rows)
            keys << (row.cells.front() == GetLabel(row.iconKey) ? row.key : row.key + "?");
        return keys;
    };
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
