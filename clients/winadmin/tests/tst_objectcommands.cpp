// New, Properties and Delete in the main window: which window opens with
// which request, the delete confirmation and what it deletes, and the
// explorer brought up to date by key afterwards.

#include <QAction>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>

#include "common/FormParameters.h"
#include "editors/frmServerDetails.h"
#include "lists/ExplorerListView.h"
#include "lists/ListFillKinds.h"
#include "lists/ListModel.h"
#include "session/Records.h"
#include "session/ServerSession.h"
#include "shell/ObjectCommands.h"
#include "shell/frmMain.h"
#include "store/Store.h"
#include "support/EditorDriver.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

class TestObjectCommands : public ExplorerSuite {
    Q_OBJECT

private slots:
    void DeleteReachesTheKindsAddressedDifferently();
    void DeleteAsksWithNameInQuotes();
    void DeleteRateByIndexFromKey();
    void PropertiesAndNewOpenTheEditorThenRefresh();
    void KindsWithoutWindowAreNotOffered();
};

void TestObjectCommands::DeleteReachesTheKindsAddressedDifferently() {
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

void TestObjectCommands::DeleteAsksWithNameInQuotes() {
    GroupRecord group;
    group.set_name("O'Neil");
    group.set_comment("Apostrophe in the name");
    group.set_is_new(true);
    Store().CommitGroup(group);
    auto main = fx_->OpenMain();
    QVERIFY(ExplorerFixture::Click(*main, QStringLiteral("Groups")));
    QVERIFY(ClickRow(*main, QStringLiteral("O'Neil")));
    QAction* remove = main->MenuEntry(QStringLiteral("mnuFileDelete"));
    // The pop-up entry follows the command.
    QVERIFY(remove->isEnabled() && Enabled(*main, "mnuPopup3Delete"));

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

void TestObjectCommands::DeleteRateByIndexFromKey() {
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

void TestObjectCommands::PropertiesAndNewOpenTheEditorThenRefresh() {
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

void TestObjectCommands::KindsWithoutWindowAreNotOffered() {
    auto main = fx_->OpenMain();
    QAction* create = main->MenuEntry(QStringLiteral("mnuFileNew"));
    QAction* properties = main->MenuEntry(QStringLiteral("mnuFileProperties"));
    // The root has its settings window, but nothing is created under it.
    QVERIFY(ExplorerFixture::Click(*main, QStringLiteral("Administrator")));
    QVERIFY(properties->isEnabled() && !create->isEnabled());
    // A folder row is no object (Enter on it opens its branch, tst_explorerinput).
    QVERIFY(ClickRow(*main, main->FindNode(QStringLiteral("Servers"))->text(0)));
    QVERIFY(!properties->isEnabled());
    // A server node from the tree opens its editor; Delete is offered too.
    QVERIFY(ExplorerFixture::Click(*main, QStringLiteral("fxmaster")));
    QVERIFY(properties->isEnabled() && Enabled(*main, "mnuFileDelete"));
}

QTEST_MAIN(TestObjectCommands)
#include "tst_objectcommands.moc"
