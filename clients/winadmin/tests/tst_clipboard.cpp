// Copy, cut and paste of users, printers, devices and gateway users in the
// main window, by menu, by shortcut and by dragging list rows onto the tree,
// against the demo installation.

#include <QLineEdit>
#include <QMimeData>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>

#include "common/Labels.h"
#include "lists/ExplorerListView.h"
#include "lists/ListModel.h"
#include "shell/frmMain.h"
#include "store/Store.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

using Fx = ExplorerFixture;

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
              const QString& target, const char* paste = "mnuEditPaste") {
    if (!Pick(main, node, row)) return false;
    Trigger(main, command);
    if (!Fx::Click(main, target)) return false;
    Trigger(main, paste);
    return true;
}

// Drops the list's row on the tree node, as the mouse does, with the
// keyboard modifiers held; answers whether the tree took the drop.
bool Drop(frmMain& main, const QString& row, const QString& nodeKey,
          Qt::KeyboardModifiers modifiers = {}) {
    const int index = RowOf(main, row);
    if (index < 0) return false;
    std::unique_ptr<QMimeData> data(main.ListRows()->mimeData({main.ListRows()->index(index, 0)}));
    return Fx::DragOnto(main, data.get(), nodeKey, true, modifiers);
}

}  // namespace

class TestClipboard : public ExplorerSuite {
    Q_OBJECT

private slots:
    void CopyNeedsTheFocusAndPastesOnlyOntoItsOwnKind();
    void CopyAndCutBetweenServers();
    void CutAsksBeforeGoingRemoteAndUndoesARefusal();
    void DeviceWithItsLinesAndGatewayUser();
    void DragAndDropCopiesAndShiftMoves();
};

void TestClipboard::CopyNeedsTheFocusAndPastesOnlyOntoItsOwnKind() {
    auto main = fx_->OpenMain();
    QVERIFY(!Enabled(*main, "mnuEditCopy") && !Enabled(*main, "mnuEditPaste"));
    QVERIFY(Pick(*main, QStringLiteral("fxmasterUsers"), QStringLiteral("phoffmann")));
    QTest::keyClick(main->List()->DetailsView(), Qt::Key_C, Qt::ControlModifier);
    QVERIFY(main->Clipboard());
    QCOMPARE(main->Clipboard()->name, QStringLiteral("phoffmann"));
    QCOMPARE(main->Clipboard()->source, QStringLiteral("fxmaster"));
    // The same with the focus elsewhere: a beep, the clipboard as it was.
    QVERIFY(ClickRow(*main, QStringLiteral("kwagner")));
    auto* other = new QLineEdit(main.get());
    other->show();
    other->setFocus();
    Trigger(*main, "mnuEditCut");
    QCOMPARE(fx_->prompter.BeepCount(), 1);
    QCOMPARE(main->Clipboard()->name, QStringLiteral("phoffmann"));
    QVERIFY(!main->ClipboardIsCut());

    // A user onto a Printers node: nothing, and Paste is not offered.
    QVERIFY(Fx::Click(*main, QStringLiteral("fxprint01Printers")));
    QVERIFY(!Enabled(*main, "mnuEditPaste") && !Enabled(*main, "mnuPopup3Paste"));
    const size_t printers = Store().ListPrinters("fxprint01").size();
    Trigger(*main, "mnuEditPaste");
    QCOMPARE(Store().ListPrinters("fxprint01").size(), printers);
    QVERIFY(Fx::Click(*main, QStringLiteral("fxsalesUsers")));
    QVERIFY(Enabled(*main, "mnuEditPaste") && Enabled(*main, "mnuPopup3Paste"));
}

void TestClipboard::CopyAndCutBetweenServers() {
    auto main = fx_->OpenMain();
    const UserRecord source = Store().GetUser("fxmaster", "phoffmann");
    QVERIFY(Pick(*main, QStringLiteral("fxmasterUsers"), QStringLiteral("phoffmann")));
    Trigger(*main, "mnuEditCopy");
    QVERIFY(Fx::Click(*main, QStringLiteral("fxsalesUsers")));
    QTest::keyClick(main->Tree(), Qt::Key_V, Qt::ControlModifier);
    const UserRecord copy = Store().GetUser("fxsales", "phoffmann");
    QCOMPARE(copy.comment(), source.comment());
    QCOMPARE(copy.tsi(), source.tsi());
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
                     QStringLiteral("kwagner"), QStringLiteral("fxsalesUsers"), "mnuPopup3Paste"));
    QVERIFY(Store().GetUser("fxmaster", "kwagner").is_new());
    QVERIFY(!Store().GetUser("fxsales", "kwagner").is_new());
    QVERIFY(!main->Clipboard());
    // Cut onto a taken name: the source's user is gone and not added; the
    // paste order has always done this, and it is kept.
    QVERIFY(Transfer(*main, "mnuEditCut", QStringLiteral("fxmasterUsers"),
                     QStringLiteral("phoffmann"), QStringLiteral("fxsalesUsers")));
    QCOMPARE(fx_->prompter.BeepCount(), 2);
    QVERIFY(Store().GetUser("fxmaster", "phoffmann").is_new());
    QCOMPARE(Store().GetUser("fxsales", "phoffmann").version(), copy.version());
}

void TestClipboard::CutAsksBeforeGoingRemoteAndUndoesARefusal() {
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

void TestClipboard::DeviceWithItsLinesAndGatewayUser() {
    auto main = fx_->OpenMain();
    // isdn5 of the sales server, with its configured lines.
    const DeviceRecord source = Store().GetDevice("fxsales", "isdn5");
    QVERIFY(source.secondary_lines_size() >= 2);
    QVERIFY(Transfer(*main, "mnuEditCopy", QStringLiteral("fxsalesDevices"),
                     QStringLiteral("isdn5"), QStringLiteral("fxline01Devices")));
    const DeviceRecord copy = Store().GetDevice("fxline01", "isdn5");
    QCOMPARE(copy.secondary_lines_size(), source.secondary_lines_size());
    QCOMPARE(copy.secondary_lines(0).settings().comment(),
             source.secondary_lines(0).settings().comment());

    QVERIFY(Transfer(*main, "mnuEditCut", QStringLiteral("smtp.example.com"),
                     QStringLiteral("orders@example.com"), QStringLiteral("x400.example.net")));
    QCOMPARE(Store().GetGatewayUser("x400.example.net", "orders@example.com").extension(),
             std::string("250"));
    QVERIFY(Store().GetGatewayUser("smtp.example.com", "orders@example.com").is_new());
}

void TestClipboard::DragAndDropCopiesAndShiftMoves() {
    auto main = fx_->OpenMain();
    QVERIFY(Fx::Click(*main, QStringLiteral("fxmasterUsers")));
    // Where a drop is taken at all is tst_explorerinput's.
    QVERIFY(Drop(*main, QStringLiteral("phoffmann"), QStringLiteral("fxsalesUsers")));
    QTRY_VERIFY(!Store().GetUser("fxsales", "phoffmann").is_new());
    QVERIFY(!Store().GetUser("fxmaster", "phoffmann").is_new());
    QTRY_COMPARE(CurrentKey(*main), QStringLiteral("fxmasterUsers"));
    QVERIFY(
        Drop(*main, QStringLiteral("kwagner"), QStringLiteral("fxsalesUsers"), Qt::ShiftModifier));
    QTRY_VERIFY(!Store().GetUser("fxsales", "kwagner").is_new());
    QVERIFY(Store().GetUser("fxmaster", "kwagner").is_new());
    QTRY_COMPARE(RowOf(*main, QStringLiteral("kwagner")), -1);
}

QTEST_MAIN(TestClipboard)
#include "tst_clipboard.moc"
