// Labels, code tables and the explorer's list fills against the reference
// server: form translation (German, so that every translated caption differs
// from its key), the code texts, headers and persisted widths of every kind,
// and the cells of the kinds' rows as the server's records turn into them.

#include <QScopeGuard>
#include <QTest>
#include <QtWidgets>
#include <memory>

#include "common/CodeTables.h"
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

template <class T>
T* Add(QWidget* parent, const char* name, const QString& caption = {}) {
    auto* widget = new T(parent);
    widget->setObjectName(QLatin1String(name));
    if constexpr (requires { widget->setText(caption); }) widget->setText(caption);
    if (!parent->layout()) new QVBoxLayout(parent);
    parent->layout()->addWidget(widget);
    return widget;
}

}  // namespace

class TestListFill : public ConsoleSuite {
    Q_OBJECT

private slots:
    void CaptionsAndCodeTextsFollowTheLanguageOfTheMoment();
    void CodeTablesFallBackToUnknown();
    void ColumnSetsOfEveryKind();
    void ServersAndTheirObjects();
    void EventsFilteredBySeverityOnTheServer();
    void ZonesAndRates();

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

void TestListFill::CaptionsAndCodeTextsFollowTheLanguageOfTheMoment() {
    TestServer german(ServerOptions("", "de"));
    auto germanLabels = german.Login();
    const QString english = SeverityText(3);
    SetLabelSource(germanLabels.get());
    const auto restore = qScopeGuard([] { SetLabelSource(TheSession()); });
    QCOMPARE(SeverityText(3), germanLabels->GetLabel(QStringLiteral("SeverityError")));
    QVERIFY(SeverityText(3) != english);

    QMainWindow window;
    window.setWindowTitle(QStringLiteral("Login"));
    auto* form = new QWidget(&window);
    window.setCentralWidget(form);
    auto* twice = Add<QLabel>(form, "lblTwice", QStringLiteral("Comment::"));
    // A page that translates itself inside a form that translates everything
    // in it, twice: the control keeps its design key.
    auto* page = Add<QWidget>(form, "fraPage");
    auto* host = Add<QLabel>(page, "lblHostName", QStringLiteral("Host name:"));
    auto* field = Add<QLineEdit>(page, "edtHostName");
    host->setBuddy(field);
    // Pop-up menus are not in the bar; they are menus of the window all the same.
    QAction* stop = (new QMenu(QStringLiteral("Edit"), &window))->addAction("S&top");
    QVERIFY(ApplyFormLabels(page));
    QVERIFY(ApplyFormLabels(&window));
    QVERIFY(ApplyFormLabels(&window));
    QCOMPARE(window.windowTitle(), QStringLiteral("Anmeldung"));
    // The table's text replaces the caption as it stands: its colon is the
    // table's, none is added or kept; the label lends it to its buddy.
    QCOMPARE(host->text(), QStringLiteral("&Hostname:"));
    QCOMPARE(field->accessibleName(), QStringLiteral("Hostname"));
    // Only one colon goes; "Comment:" is no key of the table.
    QCOMPARE(twice->text(), QStringLiteral("Comment:"));
    QCOMPARE(stop->text(), QStringLiteral("S&toppen"));
}

// The texts of whole rows are below and in tst_monitors.
void TestListFill::CodeTablesFallBackToUnknown() {
    QCOMPARE(PrinterTypeText(-1), L("<Unknown>"));
    QCOMPARE(OriginatorText(20), L("<Unknown>"));
    // Message class bits outside the ten are ignored.
    QCOMPARE(MessageClassText(0x400), QString());
    QCOMPARE(MessageClassText(0x7FF), MessageClassText(0x3FF));
    // The process status looks at the run state first.
    QCOMPARE(ProcessStatusText(-1, 0), L("ProcessStarting"));
    QCOMPARE(ProcessStatusText(-1, -1), L("ProcessFailed"));
    QCOMPARE(ProcessStatusText(0, 1), L("ProcessTerminated"));
    QCOMPARE(ProcessStatusText(-5, 1), L("ProcessExit") + QStringLiteral(" (0xFFFFFFFB)"));
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

    // A kind the lists do not know has no columns and no rows.
    QVERIFY(BuildListColumns(QStringLiteral("users"), widths).empty());
    QVERIFY(Fill("users", QStringLiteral("Users")).empty());
}

void TestListFill::ServersAndTheirObjects() {
    AddServer("alpha", true);
    Store().CommitServer(demo::MakeServer("beta", "Second", true, false, false, "rpc"));
    Store().CommitUser(demo::MakeUser("beta", "bob", "Bob on beta"));
    Store().CommitPrinter(demo::MakePrinter("alpha", "p11", "Pr", 11));

    const ListRowSet servers = Fill("Servers", QStringLiteral("Servers"));
    QCOMPARE(Cells(servers).at(1),
             QStringList({"beta", "Second", L("No"), L("Yes"), L("No"), L("No")}));
    QCOMPARE(servers[1].tag, QStringLiteral("beta"));

    // A server's branches name it in their key, or in the scope the tree gives.
    const ListRowSet users = Fill("Users", QStringLiteral("betaUsers"));
    QCOMPARE(Cells(users), (QList<QStringList>{{"bob", "Bob on beta"}}));
    QCOMPARE(users[0].tag, QStringLiteral("beta"));
    QCOMPARE(Cells(Fill("Users", QStringLiteral("Users"), {"beta", {}})), Cells(users));

    QCOMPARE(Cells(Fill("Printers", QStringLiteral("alphaPrinters"))),
             (QList<QStringList>{{"p11", "Pr", L("PRN_WINDOWS")}}));
    // A printer deleted since the tree was built.
    QCOMPARE(Cells(Fill("Printer", QStringLiteral("alphaPrintersgone"), {"alpha", "gone"})),
             (QList<QStringList>{{"gone", L("<not found>"), L("<not found>")}}));

    // Which fields feed the cells; the status rules are above.
    pb::Process process;
    process.set_slot(1);
    process.set_pid(4242);
    process.set_run_state(1);
    process.set_exit_status(3);
    Store().PutProcess("alpha", process);
    QCOMPARE(Cells(Fill("Processes", QStringLiteral("alphaProcesses"))),
             (QList<QStringList>{{"1", " 4242", "", "", L("ProcessExit") + " (0x3)"}}));
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

    // More events below the filter than the list holds, all newer than the
    // few above it: the server filters before it counts, so those are listed.
    Store().Bulk([&] {
        for (int i = 0; i < kEventListCap + 5; ++i)
            Store().AppendEvent("alpha", demo::MakeEvent(base + 100 + i, 1, 0, 1, 0, "noise"));
    });
    StoreSetting(QStringLiteral("Severity"), QStringLiteral("3"));
    QCOMPARE(severities(Fill("Events", QStringLiteral("alphaEvents"))),
             QStringList({"6", "5", "4", "3"}));
}

void TestListFill::ZonesAndRates() {
    AddServer("alpha");
    Store().CommitUser(demo::MakeUser("alpha", "lcrd", "Routing daemon"));
    pb::Zone zone;
    zone.set_is_new(true);
    zone.set_name("Overseas");
    zone.set_secondary_host("alpha");
    zone.set_is_daemon(true);
    zone.mutable_daemon()->set_user_name("lcrd");
    zone.mutable_daemon()->set_host_name("alpha");
    Store().CommitZone(zone);
    const ListRowSet zones = Fill("LCR", QStringLiteral("LCR"));
    QCOMPARE(
        Cells(zones),
        (QList<QStringList>{{"Overseas", L("No"), L("(None)"), "alpha", L("Yes"), "lcrd@alpha"}}));
    QCOMPARE(zones[0].key, QStringLiteral("zone1"));

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
    rate("Overseas", "1100000", 8, 18);
    rate("Overseas", "0000001", 9, 24);
    const ListRowSet rates = Fill("Rates", QStringLiteral("Rates1"), {{}, "Overseas"});
    QCOMPARE(Cells(rates),
             (QList<QStringList>{{"Mo,Tu,", "08:05", "18:00"}, {"Su", "09:05", "24:00"}}));
    QCOMPARE(rates[1].key, QStringLiteral("2Rate"));

    // What the server refuses to store (no day, impossible times) can still
    // come from another server product.
    pb::Rate odd;
    QCOMPARE(RateDaysText(odd), QStringLiteral("--"));
    odd.set_start_hour(25);
    QCOMPARE(RateStartText(odd), QString());
}

QTEST_MAIN(TestListFill)
#include "tst_listfill.moc"
