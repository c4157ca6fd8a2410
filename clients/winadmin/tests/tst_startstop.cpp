// The list's pop-up menus and the start, stop and terminate commands in the
// main window against the reference server: which menu a right click shows,
// when the start and stop entries are enabled, what each command asks and
// does, and the explorer refreshed (or deliberately not) afterwards.

#include <QAction>
#include <QContextMenuEvent>
#include <QMenu>
#include <QStatusBar>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>
#include <memory>

#include "common/Labels.h"
#include "lists/ExplorerListView.h"
#include "lists/ListModel.h"
#include "shell/frmMain.h"
#include "store/Store.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;
namespace pb = veldrano::admin::v1;

namespace {

constexpr int kMarkRole = Qt::UserRole + 77;

const char* const kListMenus[] = {"mnuPopup1",      "mnuPopup2",      "mnuPopup3",
                                  "mnuPopupServer", "mnuPopupDevice", "mnuPopupProcess",
                                  "mnuRatePopup",   "mnuDestsPopup",  "mnuZonePopup"};

// A right click in the list, where a person makes it: on a row (which
// selects it) or, with row -1, below the last row. Answers the name of the
// pop-up menu it shows (closed again), "" for none.
QString RightClick(frmMain& main, int row) {
    QTreeView* list = main.List()->DetailsView();
    const QPoint at = row >= 0
                          ? RowPoint(list, row)
                          : QPoint(list->viewport()->width() / 2, list->viewport()->height() - 4);
    QTest::mousePress(list->viewport(), Qt::RightButton, {}, at);
    QTest::mouseRelease(list->viewport(), Qt::RightButton, {}, at);
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, list->viewport()->mapToGlobal(at));
    QApplication::sendEvent(list->viewport(), &event);
    QString shown;
    for (const char* name : kListMenus) {
        QMenu* menu = main.PopupMenu(QLatin1String(name));
        if (!menu || !menu->isVisible()) continue;
        shown = QLatin1String(name);
        menu->close();
    }
    return shown;
}

// A mark on the current tree node that a rebuild of the tree does not keep.
void MarkTree(frmMain& main) {
    main.Tree()->currentItem()->setData(0, kMarkRole, true);
}
bool Refreshed(frmMain& main) {
    return !main.Tree()->currentItem()->data(0, kMarkRole).toBool();
}

}  // namespace

class TestStartStop : public ExplorerSuite {
    Q_OBJECT

private slots:
    void MenusFollowTheRowAndItsState();
    void TerminateOnlyOnYesThenRefresh();
    void ProcessAndServerCommands();

private:
    std::unique_ptr<frmMain> OpenMain() {
        auto main = fx_->OpenMain();
        // Room below the rows of every list used here, for clicks on no row.
        main->resize(1000, 900);
        return main;
    }
};

void TestStartStop::MenusFollowTheRowAndItsState() {
    auto main = OpenMain();
    QVERIFY(ExplorerFixture::Click(*main, QStringLiteral("fxsalesUsers")));
    QCOMPARE(RightClick(*main, 0), QStringLiteral("mnuPopup3"));
    // The row deselected: whatever the node, the menu of no object.
    ClickRow(*main, 0, Qt::ControlModifier);
    QCOMPARE(SelectedRowText(*main), QString());
    QCOMPARE(RightClick(*main, -1), QStringLiteral("mnuPopup1"));
    QCOMPARE(fx_->prompter.BeepCount(), 0);

    // Start and stop of processes as their state allows.
    auto& store = fx_->Store();
    std::vector<pb::Process> procs = store.ListProcesses("fxmaster");
    procs[2].set_exit_status(0);  // terminated
    procs[3].set_run_state(-1);   // failed with an exit code
    procs[3].set_exit_status(5);
    for (int slot : {2, 3}) store.PutProcess("fxmaster", procs[size_t(slot)]);
    ExplorerFixture::Click(*main, QStringLiteral("fxmasterProcesses"));

    const auto processEntries = [&](int row) {
        RightClick(*main, row);
        return std::pair(Enabled(*main, "mnuPopupProcessStart"),
                         Enabled(*main, "mnuPopupProcessStop"));
    };
    QCOMPARE(processEntries(RowOf(*main, "1")), std::pair(false, true));
    QCOMPARE(processEntries(RowOf(*main, "2")), std::pair(true, false));
    QCOMPARE(processEntries(RowOf(*main, "3")), std::pair(true, false));
    // The state is asked of the server when the menu opens, not read from a
    // list that may be old by then.
    procs[1].set_exit_status(0);
    store.PutProcess("fxmaster", procs[1]);
    QCOMPARE(processEntries(RowOf(*main, "1")), std::pair(true, false));

    // Devices: every entry whatever their state (fxbackup is down).
    ExplorerFixture::Click(*main, QStringLiteral("fxbackupDevices"));
    QCOMPARE(RightClick(*main, 0), QStringLiteral("mnuPopupDevice"));
    QVERIFY(Enabled(*main, "mnuPopupDeviceStart") && Enabled(*main, "mnuPopupDeviceStop") &&
            Enabled(*main, "mnuPopupDeviceTerminate"));
}

void TestStartStop::TerminateOnlyOnYesThenRefresh() {
    fx_->StartDemo(true);  // over TCP, so that the server can be stopped
    auto& store = fx_->Store();
    auto main = OpenMain();
    ExplorerFixture::Click(*main, QStringLiteral("fxline01Devices"));
    const int row = main->ListRows()->rowCount() - 1;
    const QString device = main->ListRows()->Row(row).cells.value(0);
    const auto state = [&] {
        for (const pb::Device& d : store.ListDevices("fxline01"))
            if (QString::fromStdString(d.name()) == device) return d.state();
        return pb::DeviceRunState(-1);
    };
    const pb::DeviceRunState before = state();
    const int64_t events = store.EventCount("fxline01");
    QCOMPARE(RightClick(*main, row), QStringLiteral("mnuPopupDevice"));
    MarkTree(*main);

    // No: the device untouched, nothing logged, nothing refreshed.
    fx_->prompter.Answer(Answer::No);
    main->MenuEntry(QStringLiteral("mnuPopupDeviceTerminate"))->trigger();
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("WANT_TERMINATE_DEVICE")));
    QCOMPARE(state(), before);
    QCOMPARE(store.EventCount("fxline01"), events);
    QVERIFY(!Refreshed(*main));

    // Yes: terminated and logged, the explorer refreshed (what a refresh
    // keeps is tst_explorer's).
    fx_->prompter.Answer(Answer::Yes);
    main->MenuEntry(QStringLiteral("mnuPopupDeviceTerminate"))->trigger();
    QCOMPARE(state(), pb::DEVICE_TERMINATED);
    QCOMPARE(store.EventCount("fxline01"), events + 1);
    QVERIFY(Refreshed(*main));

    // A server that does not answer: the failure is shown, no refresh follows.
    MarkTree(*main);
    fx_->server->Shutdown();
    fx_->prompter.Answer({Answer::Yes, Answer::Cancel});
    main->MenuEntry(QStringLiteral("mnuPopupDeviceStop"))->trigger();
    QVERIFY(!Refreshed(*main));
    // A refused request is not reported as sent.
    QVERIFY(!main->statusBar()->currentMessage().startsWith(QStringLiteral("Stop requested")));
}

void TestStartStop::ProcessAndServerCommands() {
    auto& store = fx_->Store();
    auto main = OpenMain();
    ExplorerFixture::Click(*main, QStringLiteral("fxmasterProcesses"));
    const auto slot1 = [&] { return store.ListProcesses("fxmaster")[1]; };
    QCOMPARE(slot1().exit_status(), -1);
    QCOMPARE(RightClick(*main, RowOf(*main, "1")), QStringLiteral("mnuPopupProcess"));
    MarkTree(*main);

    // Stop: asked, done on slot 1 itself, the explorer refreshed.
    fx_->prompter.Answer(Answer::Yes);
    main->MenuEntry(QStringLiteral("mnuPopupProcessStop"))->trigger();
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("WANT_STOP_PROCESS")));
    QCOMPARE(slot1().exit_status(), 0);
    QCOMPARE(store.ListProcesses("fxmaster")[2].exit_status(), -1);
    QVERIFY(Refreshed(*main));
    // Start: asks nothing, and the explorer is left as it is.
    QCOMPARE(RightClick(*main, RowOf(*main, "1")), QStringLiteral("mnuPopupProcess"));
    MarkTree(*main);
    const int prompts = fx_->prompter.Prompts().size();
    main->MenuEntry(QStringLiteral("mnuPopupProcessStart"))->trigger();
    QCOMPARE(fx_->prompter.Prompts().size(), prompts);
    QCOMPARE(slot1().run_state(), 0);  // starting
    QVERIFY(!Refreshed(*main));
    // Nothing on screen changes yet, so the status bar says what was asked.
    QCOMPARE(main->statusBar()->currentMessage(), QStringLiteral("Start requested: 1@fxmaster"));

    // A server: a stop is asked, a start is not.
    ExplorerFixture::Click(*main, QStringLiteral("Servers"));
    QCOMPARE(RightClick(*main, RowOf(*main, "fxsales")), QStringLiteral("mnuPopupServer"));
    fx_->prompter.Answer(Answer::Yes);
    main->MenuEntry(QStringLiteral("mnuPopupServerStop"))->trigger();
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("WANT_STOP_SERVER")));
    QVERIFY(!store.GetServer("fxsales").online());
    main->MenuEntry(QStringLiteral("mnuPopupServerStart"))->trigger();
    QVERIFY(store.GetServer("fxsales").online());
    QCOMPARE(fx_->prompter.Prompts().size(), prompts + 1);

    // With no row selected the commands only beep.
    ClickRow(*main, RowOf(*main, "fxsales"), Qt::ControlModifier);
    main->MenuEntry(QStringLiteral("mnuPopupServerStop"))->trigger();
    main->MenuEntry(QStringLiteral("mnuPopupServerStart"))->trigger();
    QCOMPARE(fx_->prompter.BeepCount(), 2);
    QCOMPARE(fx_->prompter.Prompts().size(), prompts + 1);
}

QTEST_MAIN(TestStartStop)
#include "tst_startstop.moc"
