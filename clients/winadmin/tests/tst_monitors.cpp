// The process and event viewers against the reference server: the update
// period and its timer, fills that never nest, the cells, the severity
// filter and the maximum, unknown servers, and one window per kind opened
// from the explorer.

#include <QAction>
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

#include "common/CodeTables.h"
#include "common/Labels.h"
#include "demo/DemoData.h"
#include "lists/ListModel.h"
#include "monitor/frmEvents.h"
#include "monitor/frmProcesses.h"
#include "session/CallSession.h"
#include "session/GrpcServerSession.h"
#include "session/ServerSession.h"
#include "shell/frmMain.h"
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

// Every row's cells, as the list shows them.
QStringList Shown(const ListModel* rows) {
    QStringList shown;
    for (int row = 0; row < rows->rowCount(); ++row)
        shown << rows->Row(row).cells.ToStringList().join(u'|');
    return shown;
}

// What an event viewer opened now on host shows, sorted as like is.
QStringList ShownAfresh(const QString& host, const ListModel* like) {
    Opened<frmEvents> fresh(host);
    if (like->SortColumn() >= 0) fresh->Rows()->sort(like->SortColumn(), like->SortOrder());
    return Shown(fresh->Rows());
}

}  // namespace

class TestMonitors : public ExplorerSuite {
    Q_OBJECT

private slots:
    void UpdatePeriodClampsAndDrivesTheTimer();
    void TicksNeverNestAndAFailingServerGivesOneBoxPerTick();
    void TicksSkipWhileAnotherCallWaits();
    void ProcessCellsAndSelectionSurviveRefresh();
    void UnknownServerIsReportedAndAnotherCanBePicked();
    void SeverityFilterAndMaximum();
    void RefreshesAddOnlyNewEventsAndShowWhatAFullFillShows();
    void ExplorerOpensOneViewerPerKind();
};

void TestMonitors::UpdatePeriodClampsAndDrivesTheTimer() {
    auto& store = Store();
    Opened<frmProcesses> viewer(QStringLiteral("fxmaster"));
    auto* speed = Child<QLineEdit>(*viewer.window, "edtUpdateSpeed");
    QTimer* timer = viewer->LoadTimer();
    // Nothing stored: the default period, running.
    QCOMPARE(speed->text(), QString::number(MonitorWindow::kDefaultUpdateSpeed));
    QVERIFY(timer->isActive());
    QCOMPARE(timer->interval(), MonitorWindow::kDefaultUpdateSpeed * 1000);

    Retype(speed, QStringLiteral("75"));
    QCOMPARE(speed->text(), QStringLiteral("60"));
    QCOMPARE(timer->interval(), 60000);
    QVERIFY(timer->isActive());

    // A new non-zero period refreshes at once, before any timer could.
    pb::Process slot0 = store.ListProcesses("fxmaster").front();
    slot0.set_pid(0);
    store.PutProcess("fxmaster", slot0);
    Retype(speed, QStringLiteral("7"));
    QCOMPARE(viewer->Rows()->Row(0).cells.value(1), QStringLiteral("---"));
    QCOMPARE(timer->interval(), 7000);

    // Below 0 reads 0: the timer stops, and a refresh by hand leaves it off.
    Retype(speed, QStringLiteral("-3"));
    QCOMPARE(speed->text(), QStringLiteral("0"));
    QVERIFY(!timer->isActive());
    slot0.set_pid(4711);
    store.PutProcess("fxmaster", slot0);
    QTest::mouseClick(Child<QPushButton>(*viewer.window, "cmdUpdate"), Qt::LeftButton);
    QCOMPARE(viewer->Rows()->Row(0).cells.value(1), QStringLiteral(" 4711"));
    QVERIFY(!timer->isActive());

    // An emptied field reads 0 when Update is pressed.
    speed->clear();
    QTest::mouseClick(Child<QPushButton>(*viewer.window, "cmdUpdate"), Qt::LeftButton);
    QCOMPARE(speed->text(), QStringLiteral("0"));
    QVERIFY(!timer->isActive());

    // Closing stops the timer and keeps the period for the next viewer.
    Retype(speed, QStringLiteral("12"));
    QVERIFY(viewer->close());
    QVERIFY(!timer->isActive());
    QCOMPARE(StoredSetting(QStringLiteral("Update Speed"), QStringLiteral("ProcessView")),
             QStringLiteral("12"));
    Opened<frmProcesses> again(QStringLiteral("fxmaster"));
    QCOMPARE(again->LoadTimer()->interval(), 12000);
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
    QVERIFY(fillingWhileShown);
    QVERIFY(timerOffWhileShown);
    // The failed fill shows no stale rows, and the next tick is scheduled.
    QCOMPARE(processes->Rows()->rowCount(), 0);
    QVERIFY(!processes->IsFilling());
    QVERIFY(processes->LoadTimer()->isActive());

    // Retry asks again within the same tick; each answer is one box.
    fx_->prompter.Answer({Answer::Retry, Answer::Cancel});
    events->Tick();
    QCOMPARE(boxes, 3);
    QCOMPARE(fx_->prompter.Prompts().size(), 3);
    QCOMPARE(fx_->prompter.LastPrompt().buttons, PromptButtons::RetryCancel);
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
    QVERIFY2(fx_->prompter.LastPrompt().text.endsWith(QStringLiteral("(81000001).")),
             qPrintable(fx_->prompter.LastPrompt().text));
    QVERIFY(ticksSeen >= 10);
    // The viewer kept its rows and its timer for the next turn.
    QCOMPARE(processes->Rows()->rowCount(), rows);
    QVERIFY(processes->LoadTimer()->isActive());
    processes->LoadTimer()->stop();
}

void TestMonitors::ProcessCellsAndSelectionSurviveRefresh() {
    auto& store = Store();
    std::vector<pb::Process> procs = store.ListProcesses("fxmaster");
    QVERIFY(procs.size() >= 4);

    // The cells are the explorer's (tst_listfill); the viewer's rows name no server.
    Opened<frmProcesses> viewer(QStringLiteral("fxmaster"));
    ListModel* rows = viewer->Rows();
    QCOMPARE(rows->rowCount(), int(procs.size()));
    QCOMPARE(rows->Row(3).cells.value(4), GetLabel(QStringLiteral("ProcessRun")));
    QCOMPARE(rows->Row(3).iconKey, QStringLiteral("Process"));
    QVERIFY(rows->Row(3).tag.isEmpty());

    // A double click on a row only selects it; the selection outlives the
    // refreshes that change the row under it.
    auto* list = Child<QTreeView>(*viewer.window, "lvProcessView");
    ClickRow(list, 3, {}, true);
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
    procs[3].set_exit_status(0);
    store.PutProcess("fxmaster", procs[3]);
    viewer->Tick();
    QCOMPARE(list->currentIndex().row(), 3);
    QVERIFY(list->selectionModel()->isRowSelected(3, {}));
    QCOMPARE(rows->Row(3).cells.value(4), GetLabel(QStringLiteral("ProcessTerminated")));
}

void TestMonitors::UnknownServerIsReportedAndAnotherCanBePicked() {
    fx_->prompter.Answer(Answer::OK);
    Opened<frmProcesses> viewer(QStringLiteral("no-such-host"));
    QCOMPARE(fx_->prompter.Prompts().size(), 1);
    const Prompt& prompt = fx_->prompter.LastPrompt();
    QCOMPARE(prompt.text, GetLabel(QStringLiteral("ServerNotExist")));
    QCOMPARE(prompt.icon, PromptIcon::Exclamation);
    QCOMPARE(prompt.buttons, PromptButtons::OK);
    QCOMPARE(prompt.title, GetLabel(QStringLiteral("Process Viewer")));
    // Still open, on no server, until one is picked.
    QVERIFY(viewer->isVisible());
    QCOMPARE(viewer->SelectedServer(), QString());
    QCOMPARE(viewer->Rows()->rowCount(), 0);
    auto* servers = Child<QComboBox>(*viewer.window, "cboServer");
    servers->setFocus();
    QTest::keyClick(servers, Qt::Key_Down);
    QCOMPARE(viewer->SelectedServer(), servers->itemText(0));
    QCOMPARE(viewer->Rows()->rowCount(),
             int(Store().ListProcesses(servers->itemText(0).toStdString()).size()));
}

void TestMonitors::SeverityFilterAndMaximum() {
    auto& store = Store();
    store.CommitServer(
        veldrano::server::demo::MakeServer("evhost", "Events", true, false, false, "rpc"));
    store.Bulk([&] {
        for (int i = 0; i < 60; ++i)
            store.AppendEvent("evhost", veldrano::server::demo::MakeEvent(
                                            1700000000 + i * 60, i % 6, 0, 100 + i, 0, "event"));
    });
    StoreSetting(QStringLiteral("Severity"), QStringLiteral("3"));

    Opened<frmEvents> viewer(QStringLiteral("evhost"));
    auto* severity = Child<QComboBox>(*viewer.window, "cboSeverity");
    auto* maximum = Child<QLineEdit>(*viewer.window, "edtMaxEvents");
    ListModel* rows = viewer->Rows();
    QCOMPARE(severity->itemData(5).toInt(), 5);
    QCOMPARE(severity->currentText(), GetLabel(QStringLiteral("SeverityError")));
    QCOMPARE(maximum->text(), QString::number(frmEvents::kDefaultMaxEvents));
    // Error and above only, newest first.
    QCOMPARE(rows->rowCount(), 30);
    const QStringList severities = ExplorerFixture::ColumnTexts(rows, 1);
    const QSet<QString> shown(severities.begin(), severities.end());
    QCOMPARE(shown, (QSet<QString>{SeverityText(3), SeverityText(4), SeverityText(5)}));
    QCOMPARE(rows->Row(0).cells.value(2), QStringLiteral("159"));
    QCOMPARE(rows->Row(0).iconKey, QStringLiteral("Event"));

    // Picking "None" lists every event at once; the explorer's setting stays.
    severity->setFocus();
    QTest::keyClick(severity, Qt::Key_Home);
    QCOMPARE(viewer->MinimumSeverity(), 0);
    QCOMPARE(rows->rowCount(), 60);
    QCOMPARE(StoredSetting(QStringLiteral("Severity")), QStringLiteral("3"));

    // The maximum holds even when more events pass the filter; the newest stay.
    Retype(maximum, QStringLiteral("7"));
    QTest::keyClick(maximum, Qt::Key_Return);
    QCOMPARE(rows->rowCount(), 7);
    QCOMPARE(rows->Row(0).cells.value(2), QStringLiteral("159"));
    QCOMPARE(rows->Row(6).cells.value(2), QStringLiteral("153"));
    store.AppendEvent("evhost", veldrano::server::demo::MakeEvent(1700009999, 5, 0, 999, 0, "new"));
    viewer->Tick();
    QCOMPARE(rows->rowCount(), 7);
    QCOMPARE(rows->Row(0).cells.value(2), QStringLiteral("999"));

    // Closing keeps the maximum and the period; a stored severity of 0 shows
    // "None" and every event.
    Retype(maximum, QStringLiteral("25"));
    QTest::keyClick(maximum, Qt::Key_Return);
    QVERIFY(viewer->close());
    QCOMPARE(StoredSetting(QStringLiteral("Max Events"), QStringLiteral("EventView")),
             QStringLiteral("25"));
    QCOMPARE(StoredSetting(QStringLiteral("Update Speed"), QStringLiteral("EventView")),
             QString::number(MonitorWindow::kDefaultUpdateSpeed));
    StoreSetting(QStringLiteral("Severity"), QStringLiteral("0"));
    Opened<frmEvents> again(QStringLiteral("evhost"));
    QCOMPARE(Child<QComboBox>(*again.window, "cboSeverity")->currentText(),
             GetLabel(QStringLiteral("SeverityNone")));
    QCOMPARE(again->Rows()->rowCount(), 25);
}

void TestMonitors::RefreshesAddOnlyNewEventsAndShowWhatAFullFillShows() {
    auto& store = Store();
    store.CommitServer(
        veldrano::server::demo::MakeServer("evhost", "Events", true, false, false, "rpc"));
    int serial = 0;
    // Texts repeat, so that a sorted list has ties to place new rows among.
    const auto log = [&](std::initializer_list<int> severities) {
        store.Bulk([&] {
            for (int severity : severities) {
                const char* text = serial % 3 == 0 ? "line busy" : "job done";
                store.AppendEvent("evhost", veldrano::server::demo::MakeEvent(
                                                1700000000 + serial * 60, severity, serial % 20,
                                                100 + serial, 0, text));
                ++serial;
            }
        });
    };
    log({1, 3, 2, 5, 0, 4, 2, 1, 3, 2, 5, 1});
    StoreSetting(QStringLiteral("Severity"), QStringLiteral("2"));
    StoreSetting(QStringLiteral("Max Events"), QStringLiteral("7"), QStringLiteral("EventView"));
    const QString host = QStringLiteral("evhost");
    Opened<frmEvents> viewer(host);
    Retype(Child<QLineEdit>(*viewer.window, "edtUpdateSpeed"), QStringLiteral("0"));
    ListModel* rows = viewer->Rows();
    auto* list = Child<QTreeView>(*viewer.window, "lvEventView");
    QCOMPARE(rows->rowCount(), 7);
    QSignalSpy fullFills(rows, &QAbstractItemModel::modelReset);

    // New events, two of them hidden by the filter: the two shown go in
    // front, as many of the oldest leave, and the selected event stays so.
    ClickRow(list, 1);
    const int64_t selected = rows->Row(1).id;
    log({5, 1, 0, 3});
    viewer->Tick();
    QCOMPARE(fullFills.count(), 0);
    QCOMPARE(Shown(rows), ShownAfresh(host, rows));
    QCOMPARE(rows->Row(0).cells.value(2), QStringLiteral("115"));
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
    QCOMPARE(Shown(rows), ShownAfresh(host, rows));
    // More new events than the list holds replace it.
    log({2, 2, 3, 3, 4, 4, 5, 5, 2});
    viewer->Tick();
    QCOMPARE(fullFills.count(), 1);
    QCOMPARE(Shown(rows), ShownAfresh(host, rows));

    // Another filter fetches the list whole: the note logged last shows.
    log({1});
    auto* severity = Child<QComboBox>(*viewer.window, "cboSeverity");
    severity->setFocus();
    QTest::keyClick(severity, Qt::Key_Up);
    QCOMPARE(viewer->MinimumSeverity(), 1);
    QCOMPARE(fullFills.count(), 2);
    QVERIFY(ExplorerFixture::ColumnTexts(rows, 2).contains(QStringLiteral("129")));
    // So does F5.
    QVERIFY(ShowActive(*viewer.window));
    QTest::keyClick(list, Qt::Key_F5);
    QCOMPARE(fullFills.count(), 3);
}

void TestMonitors::ExplorerOpensOneViewerPerKind() {
    auto main = fx_->OpenMain();
    auto viewers = [] {
        QList<MonitorWindow*> found;
        for (QWidget* window : QApplication::topLevelWidgets())
            if (auto* viewer = qobject_cast<MonitorWindow*>(window); viewer && viewer->isVisible())
                found << viewer;
        return found;
    };
    QAction* properties = main->MenuEntry(QStringLiteral("mnuFileProperties"));
    ExplorerFixture::Click(*main, QStringLiteral("fxmasterProcesses"));
    QVERIFY(properties->isEnabled());
    properties->trigger();
    ExplorerFixture::Click(*main, QStringLiteral("fxsalesProcesses"));
    properties->trigger();
    ExplorerFixture::Click(*main, QStringLiteral("fxsalesEvents"));
    properties->trigger();
    QCOMPARE(viewers().size(), 2);
    auto* processes = qobject_cast<frmProcesses*>(viewers().value(0));
    if (!processes) processes = qobject_cast<frmProcesses*>(viewers().value(1));
    QVERIFY(processes);
    QCOMPARE(processes->SelectedServer(), QStringLiteral("fxsales"));
    QCOMPARE(processes->windowTitle(), GetLabel(QStringLiteral("Process Viewer")));

    // Closing the main window closes the viewers, each keeping its period.
    Retype(Child<QLineEdit>(*processes, "edtUpdateSpeed"), QStringLiteral("9"));
    QPointer<MonitorWindow> kept(processes);
    main->close();
    QVERIFY(viewers().isEmpty());
    QCOMPARE(StoredSetting(QStringLiteral("Update Speed"), QStringLiteral("ProcessView")),
             QStringLiteral("9"));
    delete kept.data();
}

QTEST_MAIN(TestMonitors)
#include "tst_monitors.moc"
