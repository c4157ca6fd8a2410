// The group editor with its two member lists, and the group and server
// selection dialogs, driven through their widgets against the demo
// installation.

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeView>

#include "common/FormParameters.h"
#include "common/Labels.h"
#include "editors/frmGroupDetails.h"
#include "editors/frmGroupSelection.h"
#include "editors/frmServerSelection.h"
#include "lists/Find.h"
#include "lists/ListModel.h"
#include "shell/ObjectEditors.h"
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
    void EmptyCommentRefused();
    void ExplorerRequestOpensTheGroup();
    void GroupSelectionAnswers_data();
    void GroupSelectionAnswers();
    void ServerSelectionChooses();
};

void TestGroupEditor::Lifecycle() {
    LifecycleSubject subject;
    subject.make = [] { return std::make_unique<frmGroupDetails>(); };
    subject.open = Group(QStringLiteral("Finance"));
    subject.missing = Group(QStringLiteral("Nobody"));
    subject.notExistText = GetLabel(QStringLiteral("GroupNotExist"));
    subject.create = kNew;
    subject.keyField = "edtGroupName";
    subject.takenKey = kLegal;
    subject.existsText = GetLabel(QStringLiteral("GroupExist"));
    int edits = 0;
    subject.edit = [&edits](EditorDriver& editor) {
        editor.Type("edtComment", QStringLiteral("Edit %1").arg(++edits));
    };
    subject.storedVersion = [this] { return Store().GetGroup("Finance").version(); };
    CheckLifecycle(subject, fx_->prompter);
}

void TestGroupEditor::MovesAndRemovesExactlyTheSelectedRows() {
    GroupEditor editor(Group(kLegal));
    QCOMPARE(editor.dialog.State(), EditorState::Shown);
    // Each member with its own server's comment, keyed by user and host.
    QCOMPARE(editor.List("lvGrpMembers").Row(2).cells.ToStringList(),
             QStringList({"gsteiner", "Gabi Steiner, Group Legal"}));
    QCOMPARE(editor.List("lvGrpMembers").Row(2).key,
             QStringLiteral("Usergsteiner@remote-hq.example.net"));
    // Nobody is offered until a server is picked; then its users are,
    // members left out.
    QCOMPARE(editor.Field<QComboBox>("cboServer")->currentIndex(), -1);
    QVERIFY(editor.Names("lvSrvUsers").isEmpty());
    QTest::keyClicks(editor.Field<QComboBox>("cboServer"), QStringLiteral("fxmaster"));
    QCOMPARE(editor.Names("lvSrvUsers").size(), 16);
    QVERIFY(!editor.Names("lvSrvUsers").contains("lfischer"));
    QVERIFY(!editor.Field<QPushButton>("cmdRemoveFromGrp")->isEnabled());

    // Clicked bottom up; they join in list order.
    editor.Select("lvSrvUsers", {"jmueller", "accounts"});
    editor.Click("cmdMoveToGrp");
    QCOMPARE(editor.dialog.State(), EditorState::Changed);
    QCOMPARE(editor.Names("lvGrpMembers"),
             QStringList({"lfischer", "legal", "gsteiner", "accounts", "jmueller"}));
    QCOMPARE(editor.List("lvGrpMembers").Row(4).key, QStringLiteral("Userjmueller@fxmaster"));
    QCOMPARE(editor.Names("lvSrvUsers").size(), 14);
    QVERIFY(!editor.Names("lvSrvUsers").contains("accounts"));

    // Two members apart from each other; the one of the shown server is
    // offered again.
    editor.Select("lvGrpMembers", {"lfischer", "gsteiner"});
    QVERIFY(editor.Field<QPushButton>("cmdRemoveFromGrp")->isEnabled());
    editor.Click("cmdRemoveFromGrp");
    QCOMPARE(editor.Names("lvGrpMembers"), QStringList({"legal", "accounts", "jmueller"}));
    QVERIFY(editor.Names("lvSrvUsers").contains("lfischer"));
    QVERIFY(!editor.Field<QPushButton>("cmdRemoveFromGrp")->isEnabled());

    // A double click moves the row it hits, either way.
    editor.Select("lvSrvUsers", {"abecker"}, true);
    editor.Select("lvGrpMembers", {"legal"}, true);
    QCOMPARE(editor.Names("lvGrpMembers"), QStringList({"accounts", "jmueller", "abecker"}));

    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    QCOMPARE(EditorDriver::Answer(), QStringLiteral("-1"));
    QCOMPARE(StoredMembers(Store(), "Legal"),
             QStringList({"accounts@fxmaster", "jmueller@fxmaster", "abecker@fxmaster"}));
}

void TestGroupEditor::CreatesGroupWithEqualNamesOfTwoServers() {
    veldrano::admin::v1::User twin = Store().GetUser("fxsales", "reception");
    twin.set_comment("Sales reception");
    Store().CommitUser(twin);

    GroupEditor editor(kNew);
    // Parentheses never get into a group name.
    editor.Type("edtGroupName", QStringLiteral("Night (Watch)"));
    QCOMPARE(editor.Field("edtGroupName")->text(), QStringLiteral("Night Watch"));
    editor.Key("edtGroupName", Qt::Key_Return);
    QCOMPARE(editor.dialog.State(), EditorState::NewObject);
    QVERIFY(editor.Names("lvGrpMembers").isEmpty());
    editor.Type("edtComment", QStringLiteral("Receptions after hours"));
    QTest::keyClicks(editor.Field<QComboBox>("cboServer"), QStringLiteral("fxmaster"));
    editor.Select("lvSrvUsers", {"reception"}, true);
    // A pause, so that the typing starts a new search in the list.
    QTest::qWait(QApplication::keyboardInputInterval() + 50);
    QTest::keyClicks(editor.Field<QComboBox>("cboServer"), QStringLiteral("fxsales"));
    QCOMPARE(editor.Field<QComboBox>("cboServer")->currentText(), QStringLiteral("fxsales"));
    editor.Select("lvSrvUsers", {"reception"}, true);

    const ListModel& members = editor.List("lvGrpMembers");
    QCOMPARE(members.rowCount(), 2);
    QCOMPARE(members.Row(0).key, QStringLiteral("Userreception@fxmaster"));
    QCOMPARE(members.Row(1).key, QStringLiteral("Userreception@fxsales"));
    QCOMPARE(members.Row(1).cells.at(1), QStringLiteral("Sales reception"));

    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    QCOMPARE(EditorDriver::Answer(), QStringLiteral("-1"));
    const auto stored = Store().GetGroup("Night Watch");
    QVERIFY(!stored.is_new());
    QCOMPARE(stored.comment(), std::string("Receptions after hours"));
    QCOMPARE(StoredMembers(Store(), "Night Watch"),
             QStringList({"reception@fxmaster", "reception@fxsales"}));
}

void TestGroupEditor::EmptyCommentRefused() {
    GroupEditor editor(Group(QStringLiteral("Finance")));
    editor.Type("edtComment", {});
    fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdOK");
    const Prompt& refusal = fx_->prompter.LastPrompt();
    QCOMPARE(refusal.text, GetLabel(QStringLiteral("Field")) + QStringLiteral("Comment") +
                               GetLabel(QStringLiteral("CannotBeEmpty")));
    // Icon, title and focus are the field checks' (tst_fieldhelpers, tst_editorframe).
    QVERIFY(editor.dialog.isVisible());
    QCOMPARE(Store().GetGroup("Finance").comment(), std::string("Accounts, treasury, control"));

    fx_->prompter.Answer(Answer::No);
    editor.Click("cmdCancel");
    QCOMPARE(EditorDriver::Answer(), QStringLiteral("0"));
}

void TestGroupEditor::ExplorerRequestOpensTheGroup() {
    QString comment;
    WhenShown<frmGroupDetails>([&](frmGroupDetails& editor) {
        QTRY_COMPARE(editor.State(), EditorState::Shown);
        comment = Child<QLineEdit>(editor, "edtComment")->text();
        EditorDriver(editor).Click("cmdCancel");
    });
    ObjectRequest request;
    request.kind = QStringLiteral("Group");
    request.name = kLegal;
    QVERIFY(!OpenObjectEditor(nullptr, request));
    QCOMPARE(comment, QStringLiteral("Legal at head office and HQ"));
}

void TestGroupEditor::GroupSelectionAnswers_data() {
    // The row's name says how the dialog is left.
    QTest::addColumn<QString>("chosen");  // "" when nothing is chosen
    for (const char* how : {"Enter", "double click", "OK"}) QTest::newRow(how) << "Management";
    for (const char* how : {"Cancel", "Escape"}) QTest::newRow(how) << "";
}

void TestGroupEditor::GroupSelectionAnswers() {
    const QByteArray how = QTest::currentDataTag();
    ShownEditor<frmGroupSelection> selection(Group(kLegal));
    auto* list = selection.Field<QTreeView>("lvGroups");
    QCOMPARE(selection.dialog.SelectedName(), kLegal);
    // The find dialog searches this list while it is open.
    QCOMPARE(FindList(kFindGroupSelection), list);
    selection.Click("cmdFind");
    QVERIFY(frmFind::Loaded() && frmFind::Loaded()->isVisible());
    QCOMPARE(frmFind::Loaded()->CallerCode(), kFindGroupSelection);
    frmFind::Loaded()->hide();
    QVERIFY(PressFind(kFindGroupSelection, QStringLiteral("sales"), {}));
    QCOMPARE(selection.dialog.SelectedName(), QStringLiteral("SalesTeam"));
    QTest::keyClick(list, Qt::Key_Up);

    if (how == "Enter") QTest::keyClick(list, Qt::Key_Return);
    if (how == "double click") selection.Select("lvGroups", {"Management"}, true);
    if (how == "OK") selection.Click("cmdOK");
    if (how == "Cancel") selection.Click("cmdCancel");
    if (how == "Escape") QTest::keyClick(list, Qt::Key_Escape);

    QVERIFY(!selection.dialog.isVisible());
    QFETCH(QString, chosen);
    QCOMPARE(Pairs(FormParameters()), chosen.isEmpty()
                                          ? QStringList({"Refresh=0"})
                                          : QStringList({"Refresh=-1", "GroupName=" + chosen}));
}

void TestGroupEditor::ServerSelectionChooses() {
    // The current host is preselected; the next one is taken.
    WhenShown<frmServerSelection>([](frmServerSelection& selection) {
        QTRY_COMPARE(selection.SelectedName(), QStringLiteral("fxprint01"));
        EditorDriver(selection).Key("lvServers", Qt::Key_Down);
        EditorDriver(selection).Click("cmdOK");
    });
    QCOMPARE(frmServerSelection::Choose(nullptr, QStringLiteral("fxprint01")),
             QStringLiteral("fxsales"));
    QCOMPARE(Pairs(FormParameters()), QStringList({"Refresh=-1", "HostName=fxsales"}));

    WhenShown<frmServerSelection>([](frmServerSelection& selection) {
        QTRY_VERIFY(!selection.SelectedName().isEmpty());
        EditorDriver(selection).Key("lvServers", Qt::Key_Escape);
    });
    QCOMPARE(frmServerSelection::Choose(nullptr, QString()), QString());
    QCOMPARE(Pairs(FormParameters()), QStringList({"Refresh=0"}));
}

QTEST_MAIN(TestGroupEditor)
#include "tst_groupeditor.moc"
