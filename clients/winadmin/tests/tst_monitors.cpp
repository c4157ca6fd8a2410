// The process and event viewers against the reference server: the update
// period and its timer, fills that never nest, the selection across a
// refresh, the severity filter, the maximum and the refresh that adds only
// new events, a log begun anew, unknown servers.

#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <memory>

#include "common/Labels.h"
#include "demo/DemoData.h"
#include "lists/ListModel.h"
#include "monitor/frmEvents.h"
#include "monitor/frmProcesses.h"
#include "session/CallSession.h"
#include "session/GrpcServerSession.h"
#include "store/Store.h"
#include "support/ExplorerFixture.h"
#include "support/Loopback.h"

using namespace winadmin;

namespace pb = veldrano::admin::v1;

namespace {

// A viewer shown and opened on a server, deleted at the end of the case
// unless it closed itself.
template <class Viewer>
struct Opened {
    explicit Opened(const QString& host) : window(new Viewer) {
        window->show();
        window->Open(host);
    }
    ~Opened() { delete window.data(); }
    Viewer* operator->() const { return window.data(); }
    QPointer<Viewer> window;
};

constexpr auto Column = &ExplorerFixture::ColumnTexts;

// Every row's cells, as the list shows them.
QStringList Shown(const ListModel* rows) {
    QStringList shown;
    for (int row = 0; row < rows->rowCount(); ++row)
        shown << rows->Row(row).cells.ToStringList().join(u'|');
    return shown;
}

// Sets the event viewer's maximum as a person does.
void TypeMaximum(frmEvents& viewer, const QString& maximum) {
    auto* field = Child<QLineEdit>(viewer, "edtMaxEvents");
    Retype(field, maximum);
    QTest::keyClick(field, Qt::Key_Return);
}

// What an event viewer opened now on evhost with a maximum of 7 shows, sorted
// as like is.
QStringList ShownAfresh(const ListModel* like) {
    Opened<frmEvents> fresh(QStringLiteral("evhost"));
    TypeMaximum(*fresh.window, QStringLiteral("7"));
    if (like->SortColumn() >= 0) fresh->Rows()->sort(like->SortColumn(), like->SortOrder());
    return Shown(fresh->Rows());
}

// The log of a server of its own, evhost: events of the severities given, a
// minute apart, originator ids from 100 on. Texts repeat, so that a sorted
// list has ties to place new rows among.
struct EventLog {
    explicit EventLog(veldrano::server::Store& store) : store(store) { MakeServer(); }
    void MakeServer() {
        store.CommitServer(
            veldrano::server::demo::MakeServer("evhost", "Events", true, false, false, "rpc"));
    }
    void operator()(std::initializer_list<int> severities) {
        store.Bulk([&] {
            for (int severity : severities) {
                const char* text = serial % 3 == 0 ? "line busy" : "job done";
                store.AppendEvent("evhost", veldrano::server::demo::MakeEvent(
                                                1700000000 + serial * 60, severity, serial % 20,
                                                100 + serial, 0, text));
                ++serial;
            }
        });
    }
    veldrano::server::Store& store;
    int serial = 0;
};

}  // namespace

class TestMonitors : public ExplorerSuite {
    Q_OBJECT

private slots:
    void UpdatePeriodClampsAndDrivesTheTimer();
    void TicksNeverNestAndAFailingServerGivesOneBoxPerTick();
    void TicksSkipWhileAnotherCallWaits();
    void UnknownServerIsReportedAndAnotherCanBePicked();
    void EventsRefreshWithinTheFilterAndTheMaximum();
};

void TestMonitors::UpdatePeriodClampsAndDrivesTheTimer() {
    auto& store = Store();
    Opened<frmProcesses> viewer(QStringLiteral("fxmaster"));
    auto* speed = Child<QLineEdit>(*viewer.window, "edtUpdateSpeed");
    QTimer* timer = viewer->LoadTimer();
    Retype(speed, QStringLiteral("75"));
    QCOMPARE(speed->text(), QStringLiteral("60"));

    // A new non-zero period refreshes at once, before any timer could, and the
    // selection outlives the refresh that changes the row under it.
    auto* list = Child<QTreeView>(*viewer.window, "lvProcessView");
    ClickRow(list, 3);
    pb::Process slot3 = store.ListProcesses("fxmaster")[3];
    slot3.set_pid(0);
    store.PutProcess("fxmaster", slot3);
    Retype(speed, QStringLiteral("7"));
    QCOMPARE(viewer->Rows()->Row(3).cells.value(1), QStringLiteral("---"));
    QVERIFY(list->selectionModel()->isRowSelected(3, {}));
    QCOMPARE(timer->interval(), 7000);

    // Below 0 reads 0: the timer stops, and a refresh by hand leaves it off.
    Retype(speed, QStringLiteral("-3"));
    QCOMPARE(speed->text(), QStringLiteral("0"));
    QVERIFY(!timer->isActive());
    slot3.set_pid(4711);
    store.PutProcess("fxmaster", slot3);
    QTest::mouseClick(Child<QPushButton>(*viewer.window, "cmdUpdate"), Qt::LeftButton);
    QCOMPARE(viewer->Rows()->Row(3).cells.value(1), QStringLiteral(" 4711"));
    QVERIFY(!timer->isActive());
}

void TestMonitors::TicksNeverNestAndAFailingServerGivesOneBoxPerTick() {
    fx_->StartDemo(true);  // over TCP, so that the server can be stopped
    Opened<frmProcesses> processes(QStringLiteral("fxmaster"));
    Opened<frmEvents> events(QStringLiteral("fxmaster"));
    QVERIFY(processes->Rows()->rowCount() > 0);
    fx_->server->Shutdown();

    // While the box is up, both viewers' timers fire (as a box's event loop
    // lets them): neither starts a fill, so one box is all there is.
    int boxes = 0;
    bool fillingWhileShown = false, timerOffWhileShown = false;
    fx_->prompter.whileShown = [&] {
        if (++boxes == 1) {
            fillingWhileShown = processes->IsFilling();
            timerOffWhileShown = !processes->LoadTimer()->isActive();
        }
        processes->Tick();
        events->Tick();
    };
    const auto stopLoop = qScopeGuard([&] { fx_->prompter.whileShown = {}; });
    fx_->prompter.Answer(Answer::Cancel);
    processes->Tick();
    QCOMPARE(boxes, 1);
    QVERIFY(fillingWhileShown && timerOffWhileShown);
    // The failed fill shows no stale rows, and the next tick is scheduled.
    QCOMPARE(processes->Rows()->rowCount(), 0);
    QVERIFY(processes->LoadTimer()->isActive());
}

void TestMonitors::TicksSkipWhileAnotherCallWaits() {
    Opened<frmProcesses> processes(QStringLiteral("fxmaster"));
    const int rows = processes->Rows()->rowCount();
    QVERIFY(rows > 0);

    // The console's session now reaches a server that never answers; a
    // window's call waits on it for the whole time-out while the viewer's
    // timer keeps firing.
    QTcpServer silent;
    const QString host = SilentLoopbackHost(silent);
    QVERIFY(!host.isEmpty());
    auto hung = std::make_unique<GrpcServerSession>(
        grpc::CreateChannel(host.toStdString(), grpc::InsecureChannelCredentials()));
    hung->SetTimeout(2);
    SetTheSession(std::move(hung));
    processes->LoadTimer()->start(200);
    int ticksSeen = 0;
    QTimer watch;
    connect(&watch, &QTimer::timeout, [&] {
        ++ticksSeen;
        QVERIFY(!processes->IsFilling());
    });
    watch.start(100);

    // One box, the waiting call's own: no tick started a call behind it.
    fx_->prompter.Answer(Answer::Cancel);
    QVERIFY(!CallSession([] { TheSession()->Servers(); }));
    watch.stop();
    QCOMPARE(fx_->prompter.Prompts().size(), 1);
    QVERIFY(ticksSeen >= 10);
    // The viewer kept its rows and its timer for the next turn.
    QCOMPARE(processes->Rows()->rowCount(), rows);
    QVERIFY(processes->LoadTimer()->isActive());
    processes->LoadTimer()->stop();
}

void TestMonitors::UnknownServerIsReportedAndAnotherCanBePicked() {
    fx_->prompter.Answer(Answer::OK);
    Opened<frmProcesses> viewer(QStringLiteral("no-such-host"));
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("ServerNotExist")));
    // Still open, on no server, until one is picked.
    QVERIFY(viewer->isVisible());
    QCOMPARE(viewer->Rows()->rowCount(), 0);
    auto* servers = Child<QComboBox>(*viewer.window, "cboServer");
    servers->setFocus();
    QTest::keyClick(servers, Qt::Key_Down);
    QCOMPARE(viewer->SelectedServer(), servers->itemText(0));
    QCOMPARE(viewer->Rows()->rowCount(),
             int(Store().ListProcesses(servers->itemText(0).toStdString()).size()));
}

void TestMonitors::EventsRefreshWithinTheFilterAndTheMaximum() {
    EventLog log(Store());
    log({1, 3, 2, 5, 0, 4, 2, 1, 3, 2, 5, 1});
    StoreSetting(QStringLiteral("Severity"), QStringLiteral("2"));
    Opened<frmEvents> viewer(QStringLiteral("evhost"));
    Retype(Child<QLineEdit>(*viewer.window, "edtUpdateSpeed"), QStringLiteral("0"));
    ListModel* rows = viewer->Rows();
    auto* list = Child<QTreeView>(*viewer.window, "lvEventView");
    // The maximum holds even when more events pass the filter; the newest stay.
    TypeMaximum(*viewer.window, QStringLiteral("7"));
    QCOMPARE(Column(rows, 2), QStringList({"110", "109", "108", "106", "105", "103", "102"}));
    QSignalSpy fullFills(rows, &QAbstractItemModel::modelReset);

    // New events, two of them hidden by the filter: the two shown go in
    // front, as many of the oldest leave, and the selected event stays so.
    ClickRow(list, 1);
    const int64_t selected = rows->Row(1).id;
    log({5, 1, 0, 3});
    viewer->Tick();
    QCOMPARE(fullFills.count(), 0);
    QCOMPARE(Shown(rows), ShownAfresh(rows));
    QCOMPARE(rows->Row(list->currentIndex().row()).id, selected);
    viewer->Tick();  // nothing new: nothing changes
    QCOMPARE(fullFills.count(), 0);

    // Sorted by a header, new rows go to their places (before the equal
    // texts, as a fill puts the newer first) and the oldest leave wherever
    // they stand.
    QHeaderView* header = list->header();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      QPoint(header->sectionViewportPosition(3) + 4, header->height() / 2));
    QCOMPARE(rows->SortColumn(), 3);
    log({2, 4, 3, 3});
    viewer->Tick();
    QCOMPARE(fullFills.count(), 0);
    QCOMPARE(Shown(rows), ShownAfresh(rows));
    // More new events than the list holds replace it.
    log({2, 2, 3, 3, 4, 4, 5, 5, 2});
    viewer->Tick();
    QCOMPARE(fullFills.count(), 1);
    QCOMPARE(Shown(rows), ShownAfresh(rows));

    // The server deleted and made again under its name between two ticks:
    // its new events are all newer than the rows held, yet those rows are of
    // a log that is gone.
    Store().DeleteServer("evhost");
    log.MakeServer();
    log({3});
    viewer->Tick();
    QCOMPARE(fullFills.count(), 2);
    QCOMPARE(Column(rows, 2), QStringList({"129"}));

    // Another filter fetches the list whole: the note logged last shows.
    log({1});
    auto* severity = Child<QComboBox>(*viewer.window, "cboSeverity");
    severity->setFocus();
    QTest::keyClick(severity, Qt::Key_Up);
    QCOMPARE(fullFills.count(), 3);
    QVERIFY(Column(rows, 2).contains(QStringLiteral("130")));
    QCOMPARE(StoredSetting(QStringLiteral("Severity")), QStringLiteral("2"));  // the explorer's
}

QTEST_MAIN(TestMonitors)
#include "tst_monitors.moc"
