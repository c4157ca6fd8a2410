// The group editor with its two member lists, and the group and server
// selection dialogs, driven through their widgets against the demo
// installation.

#include <QComboBox>
#include <QLineEdit>
#include <QTest>
#include <QTreeView>

#include "common/FormParameters.h"
#include "common/Labels.h"
#include "editors/frmGroupDetails.h"
#include "editors/frmGroupSelection.h"
#include "editors/frmServerSelection.h"
#include "lists/Find.h"
#include "lists/ListModel.h"
#include "shell/frmFind.h"
#include "store/Store.h"
#include "support/EditorDriver.h"
#include "support/EditorLifecycle.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

const QString kLegal = QStringLiteral("Legal");

using GroupEditor = ShownEditor<frmGroupDetails>;
const FormParameterList kNew = {{QStringLiteral("New"), QString()}};
FormParameterList Group(const QString& name) {
    return {{QStringLiteral("GroupName"), name}};
}

QStringList Pairs(const FormParameterList& parameters) {
    QStringList pairs;
    for (const FormParameter& pair : parameters) pairs.append(pair.name + '=' + pair.value);
    return pairs;
}

// "user@host" of each member the server holds.
QStringList StoredMembers(veldrano::server::Store& store, const char* group) {
    QStringList members;
    const auto stored = store.GetGroup(group);
    for (const auto& ref : stored.members())
        members << QString::fromStdString(ref.user_name() + '@' + ref.host_name());
    return members;
}

}  // namespace

class TestGroupEditor : public ExplorerSuite {
    Q_OBJECT

private slots:
    void Lifecycle();
    void MovesAndRemovesExactlyTheSelectedRows();
    void CreatesGroupWithEqualNamesOfTwoServers();
    void GroupSelectionFindsAndTakesWithEnter();
    void ServerSelectionEscapeChoosesNothing();
};

void TestGroupEditor::Lifecycle() {
    CheckLifecycle({.make = [] { return std::make_unique<frmGroupDetails>(); },
                    .open = Group(QStringLiteral("Finance")),
                    .missing = Group(QStringLiteral("Nobody")),
                    .notExistText = GetLabel(QStringLiteral("GroupNotExist")),
                    .missingServer = {},
                    .create = kNew,
                    .keyField = "edtGroupName",
                    .takenKey = kLegal,
                    .existsText = GetLabel(QStringLiteral("GroupExist")),
                    .edit = TypeCounted("edtComment", QStringLiteral("Edit ")),
                    .storedVersion = [this] { return Store().GetGroup("Finance").version(); }},
                   fx_->prompter);
}

void TestGroupEditor::MovesAndRemovesExactlyTheSelectedRows() {
    GroupEditor editor(Group(kLegal));
    // A member of another server shows that server's comment.
    QCOMPARE(editor.List("lvGrpMembers").Row(2).cells.ToStringList(),
             QStringList({"gsteiner", "Gabi Steiner, Group Legal"}));
    // Nobody is offered until a server is picked; then its users are,
    // members left out.
    QVERIFY(editor.Names("lvSrvUsers").isEmpty());
    QTest::keyClicks(editor.Field<QComboBox>("cboServer"), QStringLiteral("fxmaster"));
    QVERIFY(!editor.Names("lvSrvUsers").contains("lfischer"));

    // Clicked bottom up; they join in list order.
    editor.Select("lvSrvUsers", {"jmueller", "accounts"});
    editor.Click("cmdMoveToGrp");
    QCOMPARE(editor.Names("lvGrpMembers"),
             QStringList({"lfischer", "legal", "gsteiner", "accounts", "jmueller"}));
    QVERIFY(!editor.Names("lvSrvUsers").contains("accounts"));

    // Two members apart from each other; the one of the shown server is
    // offered again.
    editor.Select("lvGrpMembers", {"lfischer", "gsteiner"});
    editor.Click("cmdRemoveFromGrp");
    QCOMPARE(editor.Names("lvGrpMembers"), QStringList({"legal", "accounts", "jmueller"}));
    QVERIFY(editor.Names("lvSrvUsers").contains("lfischer"));
    QVERIFY(!editor.Enabled("cmdRemoveFromGrp"));

    editor.Select("lvSrvUsers", {"abecker"}, true);
    editor.Select("lvGrpMembers", {"legal"}, true);
    editor.ExpectOK(fx_->prompter, {});
    QCOMPARE(StoredMembers(Store(), "Legal"),
             QStringList({"accounts@fxmaster", "jmueller@fxmaster", "abecker@fxmaster"}));
}

void TestGroupEditor::CreatesGroupWithEqualNamesOfTwoServers() {
    veldrano::admin::v1::User twin = Store().GetUser("fxsales", "reception");
    twin.set_comment("Sales reception");
    Store().CommitUser(twin);
    GroupEditor editor(kNew);
    editor.Type("edtGroupName", QStringLiteral("Night Watch"));
    editor.Key("edtGroupName", Qt::Key_Return);
    QTest::keyClicks(editor.Field<QComboBox>("cboServer"), QStringLiteral("fxmaster"));
    editor.Select("lvSrvUsers", {"reception"}, true);
    // A pause, so that the typing starts a new search in the list.
    QTest::qWait(QApplication::keyboardInputInterval() + 50);
    QTest::keyClicks(editor.Field<QComboBox>("cboServer"), QStringLiteral("fxsales"));
    editor.Select("lvSrvUsers", {"reception"}, true);
    // The comment is required; the members stay through the refusal.
    editor.ExpectOK(fx_->prompter, EmptyMessage("Comment"));
    QVERIFY(Store().GetGroup("Night Watch").is_new());
    editor.Type("edtComment", QStringLiteral("Receptions after hours"));
    editor.ExpectOK(fx_->prompter, {});
    QCOMPARE(StoredMembers(Store(), "Night Watch"),
             QStringList({"reception@fxmaster", "reception@fxsales"}));
}

void TestGroupEditor::GroupSelectionFindsAndTakesWithEnter() {
    ShownEditor<frmGroupSelection> selection(Group(kLegal));
    auto* list = selection.Field<QTreeView>("lvGroups");
    QCOMPARE(selection.dialog.SelectedName(), kLegal);
    selection.Click("cmdFind");
    QCOMPARE(frmFind::Loaded()->CallerCode(), kFindGroupSelection);
    frmFind::Loaded()->hide();
    QVERIFY(PressFind(kFindGroupSelection, QStringLiteral("sales"), {}));
    QCOMPARE(selection.dialog.SelectedName(), QStringLiteral("SalesTeam"));
    QTest::keyClick(list, Qt::Key_Up);
    QTest::keyClick(list, Qt::Key_Return);
    QVERIFY(!selection.dialog.isVisible());
    QCOMPARE(Pairs(FormParameters()), QStringList({"Refresh=-1", "GroupName=Management"}));
}

void TestGroupEditor::ServerSelectionEscapeChoosesNothing() {
    WhenShown<frmServerSelection>([](frmServerSelection& selection) {
        QTRY_COMPARE(selection.SelectedName(), QStringLiteral("fxprint01"));
        EditorDriver(selection).Key("lvServers", Qt::Key_Escape);
    });
    QCOMPARE(frmServerSelection::Choose(nullptr, QStringLiteral("fxprint01")), QString());
    QCOMPARE(Pairs(FormParameters()), QStringList({"Refresh=0"}));
}

QTEST_MAIN(TestGroupEditor)
#include "tst_groupeditor.moc"
