// The explorer in the main window against the reference server: the tree of
// the whole installation, the list each node fills, Refresh keeping the view,
// failed calls, and what the administrator does in its panes: New,
// Properties and Delete (which window opens with which request, the delete
// confirmation and what it deletes, the explorer brought up to date
// afterwards), copy, cut and paste by the menus and by dragging rows onto the
// tree, and the list's pop-up menus with the start, stop and terminate
// commands (when they are offered, what they ask, the refresh that follows).

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QStatusBar>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <memory>

#include "common/FormParameters.h"
#include "common/Labels.h"
#include "demo/DemoData.h"
#include "editors/frmServerDetails.h"
#include "lists/ExplorerListView.h"
#include "lists/ListFillKinds.h"
#include "lists/ListModel.h"
#include "session/GrpcServerSession.h"
#include "session/Records.h"
#include "session/ServerSession.h"
#include "shell/frmMain.h"
#include "store/Store.h"
#include "support/EditorDriver.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace pb = veldrano::admin::v1;
using Fx = ExplorerFixture;

namespace {

constexpr auto Key = &ExplorerFixture::Key;

QStringList NodeKeys(QTreeWidget* tree) {
    QStringList keys;
    for (QTreeWidgetItemIterator it(tree); *it; ++it) keys << Key(*it);
    return keys;
}

void Trigger(frmMain& main, const char* entry) {
    main.MenuEntry(QLatin1String(entry))->trigger();
}

// Selects the row in the list of node and gives the list the focus.
bool Pick(frmMain& main, const QString& node, const QString& row) {
    return Fx::Click(main, node) && ClickRow(main, row) &&
           QApplication::focusWidget() == main.List()->DetailsView();
}

// Copies (or cuts) the row of node and pastes it onto target by the menus.
bool Transfer(frmMain& main, const char* command, const QString& node, const QString& row,
              const QString& target) {
    if (!Pick(main, node, row)) return false;
    Trigger(main, command);
    if (!Fx::Click(main, target)) return false;
    Trigger(main, "mnuEditPaste");
    return true;
}

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

class TestExplorer : public ExplorerSuite {
    Q_OBJECT

private slots:
    void TreeHoldsTheInstallationAndNodesFillTheList();
    void RefreshKeepsTheViewEvenWhenItFails();
    void DeleteAsksWithNameInQuotes();
    void DeleteRateByIndexFromKey();
    void PropertiesAndNewOpenTheEditorThenRefresh();
    void CopyNeedsTheFocusAndPastesOnlyOntoItsOwnKind();
    void CopyAndCutBetweenServers();
    void CutAsksBeforeGoingRemoteAndUndoesARefusal();
    void DropOnItsOwnKindCopiesAndShiftMoves();
    void MenusFollowTheRowAndItsState();
    void StartStopAndTerminateCommands();
};

void TestExplorer::TreeHoldsTheInstallationAndNodesFillTheList() {
    // Texts beyond ASCII travel as UTF-8 through the compact table a list
    // call answers.
    Store().CommitUser(veldrano::server::demo::MakeUser("fxmaster", "zoë", "Café ☎ desk"));
    auto main = fx_->OpenMain();
    QTreeWidget* tree = main->Tree();
    QCOMPARE(Key(tree->currentItem()), QStringLiteral("Administrator"));
    // Every node has its icon.
    for (QTreeWidgetItemIterator it(tree); *it; ++it)
        QVERIFY2(!(*it)->icon(0).isNull(), qPrintable(Key(*it)));

    // However many servers, the tree costs three calls.
    auto* grpc = static_cast<GrpcServerSession*>(TheSession());
    const uint64_t calls = grpc->RpcCount();
    main->BuildTree();
    QCOMPARE(grpc->RpcCount() - calls, uint64_t(3));

    // Nodes fill the list, the first row selected: one whose zone is the
    // tree's, a leaf.
    auto& store = Store();
    ListModel* model = main->ListRows();
    QVERIFY(Fx::Click(*main, QStringLiteral("Rates2")));
    QCOMPARE(model->rowCount(), int(store.ListRates(store.ListZones().zones(1).name()).size()));
    QVERIFY(Fx::Click(*main, QStringLiteral("fxprint01Printersljfast")));
    QCOMPARE(model->rowCount(), 1);
    QCOMPARE(model->Row(0).tag, QStringLiteral("fxprint01"));
    QVERIFY(main->List()->SelectionModel()->isRowSelected(0, {}));

    Fx::Click(*main, QStringLiteral("fxmasterUsers"));
    QCOMPARE(model->Row(RowOf(*main, QStringLiteral("zoë"))).cells.value(1),
             QStringLiteral("Café ☎ desk"));
}

void TestExplorer::RefreshKeepsTheViewEvenWhenItFails() {
    fx_->StartDemo(true);  // over TCP, so that the server can be stopped
    auto& store = Store();
    auto main = fx_->OpenMain();
    QTreeWidget* tree = main->Tree();
    ListModel* model = main->ListRows();
    main->FindNode(QStringLiteral("LCR"))->setExpanded(true);
    Fx::Click(*main, QStringLiteral("fxmasterPrinterslj-acc"));
    Fx::Click(*main, QStringLiteral("fxmasterUsers"));
    Fx::ClickHeader(*main, 0);
    Fx::ClickHeader(*main, 0);
    QVERIFY(ClickRow(*main, QStringLiteral("jmueller")));
    const QSet<QString> expanded = ExpandedKeys(*main);

    // Another administrator adds a user and a server meanwhile.
    store.CommitUser(veldrano::server::demo::MakeUser("fxmaster", "zz-new", "Added meanwhile"));
    store.CommitServer(
        veldrano::server::demo::MakeServer("fxnew", "New server", true, false, false, "rpc"));
    QTest::keyClick(tree, Qt::Key_F5);
    QCOMPARE(ExpandedKeys(*main), expanded);
    QCOMPARE(Key(tree->currentItem()), QStringLiteral("fxmasterUsers"));
    QVERIFY(main->FindNode(QStringLiteral("fxnewUsers")));
    QCOMPARE(SelectedRowText(*main), QStringLiteral("jmueller"));
    // Still sorted as chosen: descending by name, the new user first.
    QCOMPARE(model->index(0, 0).data().toString(), QStringLiteral("zz-new"));

    // A refresh that fails leaves everything as it was. (The box's buttons
    // and icon are tst_qtprompter's.)
    const QStringList nodes = NodeKeys(tree);
    const QStringList rows = Fx::ColumnTexts(model, 0);
    fx_->server->Shutdown();
    fx_->prompter.Answer(Answer::Cancel);
    QTest::keyClick(tree, Qt::Key_F5);
    QCOMPARE(fx_->prompter.Prompts().size(), 1);
    QCOMPARE(NodeKeys(tree), nodes);
    QCOMPARE(Fx::ColumnTexts(model, 0), rows);
    QCOMPARE(SelectedRowText(*main), QStringLiteral("jmueller"));

    // A node that has gone leaves the nearest one still there selected.
    fx_->server->Restart();
    Fx::Click(*main, QStringLiteral("fxprint01Printersljfast"));
    Store().DeletePrinter("fxprint01", "ljfast");  // the restarted server's store
    main->MenuEntry(QStringLiteral("mnuViewRefresh"))->trigger();
    QCOMPARE(Key(tree->currentItem()), QStringLiteral("fxprint01Printers"));
    QCOMPARE(model->FindText(QStringLiteral("ljfast")), -1);

    // A node whose list cannot be read shows its columns and no rows, and
    // the window goes on answering.
    fx_->server->Shutdown();
    fx_->prompter.Answer(Answer::Cancel);
    Fx::Click(*main, QStringLiteral("Routes"));
    QCOMPARE(fx_->prompter.Prompts().size(), 2);
    QCOMPARE(model->columnCount(), 4);
    QCOMPARE(model->rowCount(), 0);
}

void TestExplorer::DeleteAsksWithNameInQuotes() {
    GroupRecord group;
    group.set_name("O'Neil");
    group.set_comment("Apostrophe in the name");
    group.set_is_new(true);
    Store().CommitGroup(group);
    auto main = fx_->OpenMain();
    QVERIFY(Fx::Click(*main, QStringLiteral("Groups")));
    QVERIFY(ClickRow(*main, QStringLiteral("O'Neil")));
    QAction* remove = main->MenuEntry(QStringLiteral("mnuFileDelete"));

    fx_->prompter.Answer(Answer::No);
    remove->trigger();
    const Prompt& asked = fx_->prompter.LastPrompt();
    QCOMPARE(asked.text, QStringLiteral("Do you really want to delete this object?\r'O'Neil'"));
    QCOMPARE(asked.defaultButton, 2);
    QVERIFY(!Store().GetGroup("O'Neil").is_new());

    fx_->prompter.Answer(Answer::Yes);
    remove->trigger();
    QVERIFY(Store().GetGroup("O'Neil").is_new());
    QCOMPARE(RowOf(*main, QStringLiteral("O'Neil")), -1);
}

void TestExplorer::DeleteRateByIndexFromKey() {
    auto main = fx_->OpenMain();
    QVERIFY(Fx::Click(*main, QStringLiteral("Rates2")));
    const std::string zone = main->Tree()->currentItem()->parent()->text(0).toStdString();
    const auto before = Store().ListRates(zone);
    QVERIFY(before.size() >= 3);
    // The row of the second rate, whatever its text.
    QVERIFY(ClickRow(*main, main->ListRows()->FindKey(QStringLiteral("2Rate"))));
    fx_->prompter.Answer(Answer::Yes);
    main->MenuEntry(QStringLiteral("mnuRateDel"))->trigger();
    const auto after = Store().ListRates(zone);
    QCOMPARE(after.size(), before.size() - 1);
    // The first stays, the third moves up into second place.
    auto text = [](const RateRecord& rate) {
        return RateDaysText(rate) + RateStartText(rate) + RateStopText(rate);
    };
    QCOMPARE(text(after[0]), text(before[0]));
    QCOMPARE(text(after[1]), text(before[2]));
}

void TestExplorer::PropertiesAndNewOpenTheEditorThenRefresh() {
    auto main = fx_->OpenMain();
    QVERIFY(Fx::Click(*main, QStringLiteral("Servers")));
    QVERIFY(ClickRow(*main, QStringLiteral("fxsales"), QStringLiteral("Server")));
    QString request;
    WhenShown<frmServerDetails>([&](frmServerDetails& editor) {
        request = FirstFormParameter().name + '=' + FirstFormParameter().value;
        QTRY_COMPARE(editor.State(), EditorState::Shown);
        editor.close();
    });
    // Enter on the row, as on a double click, opens the editor.
    QTest::keyClick(main->List()->DetailsView(), Qt::Key_Return);
    QCOMPARE(request, QStringLiteral("HostName=fxsales"));

    // New under the same node adds the server's node, and its row is the one
    // selected.
    WhenShown<frmServerDetails>([](frmServerDetails& editor) {
        QTRY_COMPARE(editor.State(), EditorState::NewKey);
        EditorDriver shown(editor);
        shown.Type("edtHostName", QStringLiteral("fxnew"));
        shown.Key("edtHostName", Qt::Key_Return);
        shown.Type("edtComment", QStringLiteral("Fresh host"));
        shown.Click("cmdOK");
    });
    main->MenuEntry(QStringLiteral("mnuFileNew"))->trigger();
    QVERIFY(!Store().GetServer("fxnew").is_new());
    QVERIFY(main->FindNode(QStringLiteral("fxnew")));
    QCOMPARE(SelectedRowText(*main), QStringLiteral("fxnew"));
}

void TestExplorer::CopyNeedsTheFocusAndPastesOnlyOntoItsOwnKind() {
    auto main = fx_->OpenMain();
    QVERIFY(Pick(*main, QStringLiteral("fxmasterUsers"), QStringLiteral("phoffmann")));
    QTest::keyClick(main->List()->DetailsView(), Qt::Key_C, Qt::ControlModifier);
    QVERIFY(main->Clipboard());
    QCOMPARE(main->Clipboard()->name, QStringLiteral("phoffmann"));
    // The same with the focus elsewhere: a beep, the clipboard as it was.
    QVERIFY(ClickRow(*main, QStringLiteral("kwagner")));
    auto* other = new QLineEdit(main.get());
    other->show();
    other->setFocus();
    Trigger(*main, "mnuEditCut");
    QCOMPARE(fx_->prompter.BeepCount(), 1);
    QCOMPARE(main->Clipboard()->name, QStringLiteral("phoffmann"));
    QVERIFY(!main->ClipboardIsCut());

    // Paste is offered on a node of the clipboard's kind only.
    QVERIFY(Fx::Click(*main, QStringLiteral("fxprint01Printers")));
    QVERIFY(!Enabled(*main, "mnuEditPaste"));
    QVERIFY(Fx::Click(*main, QStringLiteral("fxsalesUsers")));
    QVERIFY(Enabled(*main, "mnuEditPaste"));
}

void TestExplorer::CopyAndCutBetweenServers() {
    auto main = fx_->OpenMain();
    const UserRecord source = Store().GetUser("fxmaster", "phoffmann");
    QVERIFY(Pick(*main, QStringLiteral("fxmasterUsers"), QStringLiteral("phoffmann")));
    Trigger(*main, "mnuEditCopy");
    QVERIFY(Fx::Click(*main, QStringLiteral("fxsalesUsers")));
    QTest::keyClick(main->Tree(), Qt::Key_V, Qt::ControlModifier);
    const UserRecord copy = Store().GetUser("fxsales", "phoffmann");
    QCOMPARE(copy.comment(), source.comment());
    QCOMPARE(copy.extras_size(), source.extras_size());
    QVERIFY(!Store().GetUser("fxmaster", "phoffmann").is_new());
    QVERIFY(RowOf(*main, QStringLiteral("phoffmann")) >= 0);
    // Again: the target has the name; a beep, and nothing changes there.
    Trigger(*main, "mnuEditPaste");
    QCOMPARE(fx_->prompter.BeepCount(), 1);
    QCOMPARE(Store().GetUser("fxsales", "phoffmann").version(), copy.version());

    // Cut moves: gone from the source, there on the target, the clipboard
    // emptied.
    QVERIFY(Transfer(*main, "mnuEditCut", QStringLiteral("fxmasterUsers"),
                     QStringLiteral("kwagner"), QStringLiteral("fxsalesUsers")));
    QVERIFY(Store().GetUser("fxmaster", "kwagner").is_new());
    QVERIFY(!Store().GetUser("fxsales", "kwagner").is_new());
    QVERIFY(!main->Clipboard());

    // A gateway user goes by its gateway.
    QVERIFY(Transfer(*main, "mnuEditCut", QStringLiteral("smtp.example.com"),
                     QStringLiteral("orders@example.com"), QStringLiteral("x400.example.net")));
    QCOMPARE(Store().GetGatewayUser("x400.example.net", "orders@example.com").extension(),
             std::string("250"));
    QVERIFY(Store().GetGatewayUser("smtp.example.com", "orders@example.com").is_new());
}

void TestExplorer::CutAsksBeforeGoingRemoteAndUndoesARefusal() {
    auto main = fx_->OpenMain();
    fx_->prompter.Answer({Answer::No, Answer::Yes});
    QVERIFY(Transfer(*main, "mnuEditCut", QStringLiteral("fxmasterUsers"),
                     QStringLiteral("phoffmann"), QStringLiteral("remote-hq.example.netUsers")));
    const Prompt& asked = fx_->prompter.LastPrompt();
    QCOMPARE(asked.text, GetLabel(QStringLiteral("UserFromLocalToRemote")));
    QCOMPARE(asked.defaultButton, 2);
    QVERIFY(!Store().GetUser("fxmaster", "phoffmann").is_new());
    QVERIFY(Store().GetUser("remote-hq.example.net", "phoffmann").is_new());
    Trigger(*main, "mnuEditPaste");
    QVERIFY(Store().GetUser("fxmaster", "phoffmann").is_new());
    QVERIFY(!Store().GetUser("remote-hq.example.net", "phoffmann").is_new());

    // A refused reference undoes the cut: jmueller prints on lj-acc, which
    // the sales server does not have.
    fx_->prompter.Answer(Answer::OK);
    QVERIFY(Transfer(*main, "mnuEditCut", QStringLiteral("fxmasterUsers"),
                     QStringLiteral("jmueller"), QStringLiteral("fxsalesUsers")));
    const Prompt& refused = fx_->prompter.LastPrompt();
    QVERIFY2(refused.text.contains(QStringLiteral("(81010007)")), qPrintable(refused.text));
    QVERIFY(!Store().GetUser("fxmaster", "jmueller").is_new());
    QVERIFY(Store().GetUser("fxsales", "jmueller").is_new());
    // The cut is still on the clipboard, for another target.
    QVERIFY(main->Clipboard() && main->ClipboardIsCut());
}

void TestExplorer::DropOnItsOwnKindCopiesAndShiftMoves() {
    auto main = fx_->OpenMain();
    QVERIFY(Fx::Click(*main, QStringLiteral("fxmasterUsers")));
    // Drops the list's row on the tree node as the mouse does; answers
    // whether the tree took it.
    auto drop = [&](const char* row, const char* node, Qt::KeyboardModifiers modifiers = {}) {
        const int index = RowOf(*main, QLatin1String(row));
        std::unique_ptr<QMimeData> data(
            main->ListRows()->mimeData({main->ListRows()->index(index, 0)}));
        return index >= 0 && Fx::DragOnto(*main, data.get(), QLatin1String(node), true, modifiers);
    };
    QVERIFY(!drop("phoffmann", "fxsalesPrinters"));
    QVERIFY(drop("phoffmann", "fxsalesUsers"));
    QTRY_VERIFY(!Store().GetUser("fxsales", "phoffmann").is_new());
    QVERIFY(!Store().GetUser("fxmaster", "phoffmann").is_new());
    QVERIFY(drop("kwagner", "fxsalesUsers", Qt::ShiftModifier));
    QTRY_VERIFY(!Store().GetUser("fxsales", "kwagner").is_new());
    QVERIFY(Store().GetUser("fxmaster", "kwagner").is_new());
    QTRY_COMPARE(RowOf(*main, QStringLiteral("kwagner")), -1);
}

void TestExplorer::MenusFollowTheRowAndItsState() {
    auto main = fx_->OpenMain();
    main->resize(1000, 900);  // room below the rows, for a click on no row
    QVERIFY(Fx::Click(*main, QStringLiteral("fxsalesUsers")));
    QCOMPARE(RightClick(*main, 0), QStringLiteral("mnuPopup3"));
    // The row deselected: whatever the node, the menu of no object.
    ClickRow(*main, 0, Qt::ControlModifier);
    QCOMPARE(RightClick(*main, -1), QStringLiteral("mnuPopup1"));

    // Start and stop of processes as their state allows, asked of the server
    // when the menu opens, not read from a list that may be old by then.
    Fx::Click(*main, QStringLiteral("fxmasterProcesses"));
    const auto processEntries = [&] {
        RightClick(*main, RowOf(*main, "1"));
        return std::pair(Enabled(*main, "mnuPopupProcessStart"),
                         Enabled(*main, "mnuPopupProcessStop"));
    };
    QCOMPARE(processEntries(), std::pair(false, true));
    pb::Process process = fx_->Store().ListProcesses("fxmaster")[1];
    process.set_exit_status(0);  // terminated
    fx_->Store().PutProcess("fxmaster", process);
    QCOMPARE(processEntries(), std::pair(true, false));
}

void TestExplorer::StartStopAndTerminateCommands() {
    fx_->StartDemo(true);  // over TCP, so that the server can be stopped
    auto& store = fx_->Store();
    auto main = fx_->OpenMain();
    Fx::Click(*main, QStringLiteral("fxmasterProcesses"));
    const auto slot1 = [&] { return store.ListProcesses("fxmaster")[1]; };
    QCOMPARE(RightClick(*main, RowOf(*main, "1")), QStringLiteral("mnuPopupProcess"));
    MarkTree(*main);

    // Stop: asked, done on slot 1 itself, the explorer refreshed (what a
    // refresh keeps is tested above).
    fx_->prompter.Answer(Answer::Yes);
    main->MenuEntry(QStringLiteral("mnuPopupProcessStop"))->trigger();
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("WANT_STOP_PROCESS")));
    QCOMPARE(slot1().exit_status(), 0);
    QVERIFY(Refreshed(*main));
    // Start: asks nothing, and the explorer is left as it is.
    QCOMPARE(RightClick(*main, RowOf(*main, "1")), QStringLiteral("mnuPopupProcess"));
    MarkTree(*main);
    main->MenuEntry(QStringLiteral("mnuPopupProcessStart"))->trigger();
    QCOMPARE(fx_->prompter.Prompts().size(), 1);
    QCOMPARE(slot1().run_state(), 0);  // starting
    QVERIFY(!Refreshed(*main));
    // Nothing on screen changes yet, so the status bar says what was asked.
    QCOMPARE(main->statusBar()->currentMessage(), QStringLiteral("Start requested: 1@fxmaster"));

    // Terminate goes on only on Yes (the server logs each request).
    Fx::Click(*main, QStringLiteral("fxline01Devices"));
    const int64_t events = store.EventCount("fxline01");
    QCOMPARE(RightClick(*main, 0), QStringLiteral("mnuPopupDevice"));
    QAction* terminate = main->MenuEntry(QStringLiteral("mnuPopupDeviceTerminate"));
    fx_->prompter.Answer({Answer::No, Answer::Yes});
    terminate->trigger();
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("WANT_TERMINATE_DEVICE")));
    QCOMPARE(store.EventCount("fxline01"), events);
    terminate->trigger();
    QCOMPARE(store.EventCount("fxline01"), events + 1);

    // A server that does not answer: the failure is shown, no refresh follows.
    MarkTree(*main);
    fx_->server->Shutdown();
    fx_->prompter.Answer({Answer::Yes, Answer::Cancel});
    main->MenuEntry(QStringLiteral("mnuPopupDeviceStop"))->trigger();
    QVERIFY(!Refreshed(*main));
    // A refused request is not reported as sent.
    QVERIFY(!main->statusBar()->currentMessage().startsWith(QStringLiteral("Stop requested")));
}

QTEST_MAIN(TestExplorer)
#include "tst_explorer.moc"
