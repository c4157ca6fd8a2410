// What the administrator does in the explorer's panes beyond selecting:
// dragging column widths, opening a branch with Enter, the routing reload,
// New, Properties and Delete (which window opens with which request, the
// delete confirmation and what it deletes, the explorer brought up to date by
// key afterwards), and copy, cut and paste of users, printers, devices and
// gateway users, by the menus and by dragging rows onto the tree.

#include <QAction>
#include <QHeaderView>
#include <QLineEdit>
#include <QMimeData>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>
#include <memory>

#include "common/FormParameters.h"
#include "common/Labels.h"
#include "common/Twips.h"
#include "editors/frmServerDetails.h"
#include "lists/ExplorerListView.h"
#include "lists/ListFillKinds.h"
#include "lists/ListModel.h"
#include "lists/ViewSettings.h"
#include "session/Records.h"
#include "session/ServerSession.h"
#include "shell/ObjectCommands.h"
#include "shell/frmMain.h"
#include "store/Store.h"
#include "support/EditorDriver.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

using Fx = ExplorerFixture;

namespace {

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

}  // namespace

class TestExplorerInput : public ExplorerSuite {
    Q_OBJECT

private slots:
    void DraggedWidthsAreKeptPerKind();
    void EnterOpensABranchRow();
    void RoutingReloadIsLoggedByTheServers();
    void DeleteReachesTheKindsAddressedDifferently();
    void DeleteAsksWithNameInQuotes();
    void DeleteRateByIndexFromKey();
    void PropertiesAndNewOpenTheEditorThenRefresh();
    void CopyNeedsTheFocusAndPastesOnlyOntoItsOwnKind();
    void CopyAndCutBetweenServers();
    void CutAsksBeforeGoingRemoteAndUndoesARefusal();
    void DeviceWithItsLinesAndGatewayUser();
    void DropOnItsOwnKindCopiesAndShiftMoves();
};

void TestExplorerInput::DraggedWidthsAreKeptPerKind() {
    auto main = fx_->OpenMain();
    QHeaderView* header = main->List()->DetailsView()->header();
    const ColumnWidths defaults;
    // A width the administrator drags goes into the table the window saves
    // (saving it is tst_mainwindow's); the same kind keeps it, another kind
    // has its own.
    Fx::Click(*main, QStringLiteral("fxmasterUsers"));
    header->resizeSection(1, 240);
    QCOMPARE(main->Widths().Width("UserView", "UserComment"), PixelsToTwips(240));
    Fx::Click(*main, QStringLiteral("Groups"));
    QCOMPARE(header->sectionSize(1), TwipsToPixels(defaults.Width("GroupView", "GroupComment")));
    Fx::Click(*main, QStringLiteral("fxsalesUsers"));
    QCOMPARE(header->sectionSize(1), 240);

    // Dragged under a name that is not the header's.
    Fx::Click(*main, QStringLiteral("Destinations1"));
    header->resizeSection(2, 77);
    QCOMPARE(main->Widths().Width("DestView", "Destext"), PixelsToTwips(77));

    // Laying out columns for a node changes no width that was not dragged,
    // however the pixels round.
    Fx::Click(*main, QStringLiteral("LCR"));
    QCOMPARE(main->Widths().Width("ZoneView", "IsLocal"), defaults.Width("ZoneView", "IsLocal"));
}

void TestExplorerInput::EnterOpensABranchRow() {
    auto main = fx_->OpenMain();
    QTreeWidget* tree = main->Tree();
    QTreeView* list = main->List()->DetailsView();
    // Enter on a branch row opens the branch; on an object row it opens
    // nothing yet and leaves the tree where it is.
    Fx::Click(*main, QStringLiteral("fxmaster"));
    const int events = main->ListRows()->FindKey(QStringLiteral("fxmasterEvents"));
    QVERIFY(events > 0);
    list->setFocus();
    list->setCurrentIndex(main->ListRows()->index(events, 0));
    QTest::keyClick(list, Qt::Key_Return);
    QCOMPARE(Fx::Key(tree->currentItem()), QStringLiteral("fxmasterEvents"));
    QCOMPARE(main->ListRows()->Columns().front().key, QStringLiteral("EventTime"));
    list->setCurrentIndex(main->ListRows()->index(0, 0));
    QTest::keyClick(list, Qt::Key_Return);
    QCOMPARE(Fx::Key(tree->currentItem()), QStringLiteral("fxmasterEvents"));
}

void TestExplorerInput::RoutingReloadIsLoggedByTheServers() {
    auto main = fx_->OpenMain();
    const int64_t before = Store().EventCount("fxmaster");
    main->MenuEntry(QStringLiteral("mnuPopupLCRReload"))->trigger();
    QCOMPARE(Store().EventCount("fxmaster"), before + 1);
}

void TestExplorerInput::DeleteReachesTheKindsAddressedDifferently() {
    auto& store = Store();
    ServerSession& session = *TheSession();
    QVERIFY(!store.GetUser("fxmaster", "jmueller").is_new());
    QVERIFY(DeleteExplorerObject(session, {"User", "jmueller", "fxmaster"}));
    QVERIFY(store.GetUser("fxmaster", "jmueller").is_new());
    QVERIFY(!store.GetGatewayUser("smtp.example.com", "jmueller@example.com").is_new());
    QVERIFY(DeleteExplorerObject(session,
                                 {"GatewayUser", "jmueller@example.com", {}, "smtp.example.com"}));
    QVERIFY(store.GetGatewayUser("smtp.example.com", "jmueller@example.com").is_new());
    // Zones, rates and destinations by their place in the list.
    const size_t destinations = store.ListDestinations("Germany national").size();
    QVERIFY(DeleteExplorerObject(session, {"Destination", "1", {}, {}, 2}));
    QCOMPARE(store.ListDestinations("Germany national").size(), destinations - 1);
    QVERIFY(!DeleteExplorerObject(session, {"Processes", "fxmaster"}));
}

void TestExplorerInput::DeleteAsksWithNameInQuotes() {
    GroupRecord group;
    group.set_name("O'Neil");
    group.set_comment("Apostrophe in the name");
    group.set_is_new(true);
    Store().CommitGroup(group);
    auto main = fx_->OpenMain();
    QVERIFY(ExplorerFixture::Click(*main, QStringLiteral("Groups")));
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

void TestExplorerInput::DeleteRateByIndexFromKey() {
    auto main = fx_->OpenMain();
    QVERIFY(ExplorerFixture::Click(*main, QStringLiteral("Rates2")));
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

void TestExplorerInput::PropertiesAndNewOpenTheEditorThenRefresh() {
    auto main = fx_->OpenMain();
    QVERIFY(ExplorerFixture::Click(*main, QStringLiteral("Servers")));
    QVERIFY(ClickRow(*main, QStringLiteral("fxsales"), QStringLiteral("Server")));
    QString request;
    WhenShown<frmServerDetails>([&](frmServerDetails& editor) {
        request = FirstFormParameter().name + '=' + FirstFormParameter().value;
        QTRY_COMPARE(editor.State(), EditorState::Shown);
        EditorDriver shown(editor);
        shown.Type("edtComment", QStringLiteral("Field service only"));
        shown.Click("cmdOK");
    });
    // Enter on the row, as on a double click, opens the editor.
    QTest::keyClick(main->List()->DetailsView(), Qt::Key_Return);
    QCOMPARE(request, QStringLiteral("HostName=fxsales"));
    QCOMPARE(Store().GetServer("fxsales").comment(), std::string("Field service only"));
    // The list was read again.
    QVERIFY(main->ListRows()
                ->Row(RowOf(*main, QStringLiteral("fxsales")))
                .cells.ToStringList()
                .contains(QStringLiteral("Field service only")));

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

void TestExplorerInput::CopyNeedsTheFocusAndPastesOnlyOntoItsOwnKind() {
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
    QVERIFY(!Enabled(*main, "mnuEditPaste"));
    const size_t printers = Store().ListPrinters("fxprint01").size();
    Trigger(*main, "mnuEditPaste");
    QCOMPARE(Store().ListPrinters("fxprint01").size(), printers);
    QVERIFY(Fx::Click(*main, QStringLiteral("fxsalesUsers")));
    QVERIFY(Enabled(*main, "mnuEditPaste"));
}

void TestExplorerInput::CopyAndCutBetweenServers() {
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
                     QStringLiteral("kwagner"), QStringLiteral("fxsalesUsers")));
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

void TestExplorerInput::CutAsksBeforeGoingRemoteAndUndoesARefusal() {
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

void TestExplorerInput::DeviceWithItsLinesAndGatewayUser() {
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

void TestExplorerInput::DropOnItsOwnKindCopiesAndShiftMoves() {
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

QTEST_MAIN(TestExplorerInput)
#include "tst_explorerinput.moc"
