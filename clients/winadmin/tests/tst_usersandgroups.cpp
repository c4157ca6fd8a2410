// The user and group editors, driven through their pages against the demo
// installation: what a new user stores, the checks, references the server
// no longer has, the extras list and the password; the group's two member
// lists, and the group and server selection dialogs.

#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeView>

#include "common/FormParameters.h"
#include "common/Labels.h"
#include "common/Pages.h"
#include "editors/frmGroupDetails.h"
#include "editors/frmGroupSelection.h"
#include "editors/frmServerSelection.h"
#include "editors/frmUserDetails.h"
#include "lists/Find.h"
#include "lists/ListModel.h"
#include "shell/frmFind.h"
#include "store/Store.h"
#include "support/EditorDriver.h"
#include "support/EditorLifecycle.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

const QString kMaster = QStringLiteral("fxmaster");
using UserEditor = ShownEditor<frmUserDetails>;

FormParameterList Open(const QString& user, const QString& host = kMaster) {
    return {{QStringLiteral("UserName"), user}, {QStringLiteral("HostName"), host}};
}
FormParameterList New(const QString& host = kMaster) {
    return {{QStringLiteral("New"), QString()}, {QStringLiteral("HostName"), host}};
}

const QString kLegal = QStringLiteral("Legal");

using GroupEditor = ShownEditor<frmGroupDetails>;
const FormParameterList kNewGroup = {{QStringLiteral("New"), QString()}};
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

class TestUserEditor : public ExplorerSuite {
    Q_OBJECT

private slots:
    void Lifecycle();
    void NewUserStoresTheOptionsCode();
    void ChecksAndTheirPages();
    void VanishedScannerAndPrinterShowNone();
    void ExtrasAndPasswordKeepTheEdits();
    void GroupLifecycle();
    void MovesAndRemovesExactlyTheSelectedRows();
    void CreatesGroupWithEqualNamesOfTwoServers();
    void GroupSelectionFindsAndTakesWithEnter();
    void ServerSelectionEscapeChoosesNothing();
};

void TestUserEditor::Lifecycle() {
    CheckLifecycle(
        {.make = [] { return std::make_unique<frmUserDetails>(); },
         .open = Open(QStringLiteral("jmueller")),
         .missing = Open(QStringLiteral("jmueller"), QStringLiteral("fxsales")),
         .notExistText = GetLabel(QStringLiteral("UserNotExist")),
         .missingServer = New(QStringLiteral("nosuchhost")),
         .create = New(),
         .keyField = "edtUserName",
         .takenKey = QStringLiteral("abecker"),
         .existsText = GetLabel(QStringLiteral("UserExist")),
         .edit = TypeCounted("edtComment", QStringLiteral("Edit ")),
         .storedVersion = [this] { return Store().GetUser("fxmaster", "jmueller").version(); }},
        fx_->prompter);
}

void TestUserEditor::NewUserStoresTheOptionsCode() {
    UserEditor editor(New());
    editor.Type("edtUserName", QStringLiteral("nightshift"));
    editor.Key("edtUserName", Qt::Key_Return);
    editor.Set(QStringLiteral("edtComment=Night shift"));
    editor.Set(QStringLiteral("optResolutionHalftone=1"));
    editor.ExpectOK(fx_->prompter, {});
    // An option group is stored as the code of the option chosen.
    QCOMPARE(Store().GetUser("fxmaster", "nightshift").resolution(), 2);
}

void TestUserEditor::ChecksAndTheirPages() {
    // tschmidt mails on new messages and has neither print nor signal actions.
    UserEditor editor(Open(QStringLiteral("tschmidt")));
    auto* pages = editor.Field<QTabWidget>("tabDetails");
    // Each step fixes what the last refusal named; a refusal brings the
    // field's page to the front, whichever was shown.
    const auto refused = [&](const QStringList& edits, const QString& message, const char* page,
                             const char* field) {
        for (const QString& edit : edits) editor.Set(edit);
        pages->setCurrentWidget(editor.Field<QWidget>("tabExtras"));
        editor.ExpectOK(fx_->prompter, message, QLatin1String(field));
        QCOMPARE(pages->currentWidget()->objectName(), QLatin1String(page));
    };
    refused({"edtMailAddress=", "edtComment="}, EmptyMessage("Comment"), "tabGeneral",
            "edtComment");
    refused({"edtComment=Tom Schmidt"}, EmptyMessage("Mail Address"), "tabActions",
            "edtMailAddress");
    // Without mail no address; a light needs a number (a printer for print
    // actions: VanishedScannerAndPrinterShowNone).
    refused({"chkMailIfNewReceived=0", "chkLightIfSendFailed=1"},
            EmptyMessage("Phone Signal Number"), "tabActions", "edtPhoneSignalNr");
    editor.Set(QStringLiteral("chkLightIfSendFailed=0"));
    editor.ExpectOK(fx_->prompter, {});
    QCOMPARE(Store().GetUser("fxmaster", "tschmidt").comment(), std::string("Tom Schmidt"));
}

void TestUserEditor::VanishedScannerAndPrinterShowNone() {
    // rschulz scans and prints on lj-acc; both go while nobody looks. The
    // server refuses to delete a printer that users print on, so the
    // printer goes as only a store of an older release can have lost it.
    const UserRecord before = Store().GetUser("fxmaster", "rschulz");
    Store().DeleteDevice("fxmaster", before.scanner());
    fx_->server->RunSqlBehindTheServer("DELETE FROM printers WHERE name = 'lj-acc'");
    fx_->prompter.Answer({Answer::OK, Answer::OK});
    UserEditor editor(Open(QStringLiteral("rschulz")));
    const auto& prompts = fx_->prompter.Prompts();
    QCOMPARE(prompts.size(), 2);
    QCOMPARE(prompts[0].prompt.text, GetLabel(QStringLiteral("ScannerNotExist")));
    QCOMPARE(prompts[1].prompt.text, GetLabel(QStringLiteral("PrinterNotExist")));
    const QString none = GetLabel(QStringLiteral("(None)"));
    QCOMPARE(editor.Field<QComboBox>("cboScanner")->currentText(), none);
    QCOMPARE(editor.Field<QComboBox>("cboPrinter")->currentText(), none);
    QCOMPARE(editor.dialog.State(), EditorState::Shown);
    // Its print actions now lack a printer; without them it saves, and the
    // gone names are no longer stored.
    editor.Type("edtComment", QStringLiteral("Rita Schulz, HR"));
    editor.ExpectOK(fx_->prompter, GetLabel(QStringLiteral("PrinterNotChoosed")));
    for (const char* box : {"chkPrintIfNewReceived=0", "chkPrintIfSendFailed=0"}) editor.Set(box);
    editor.ExpectOK(fx_->prompter, {});
    const UserRecord after = Store().GetUser("fxmaster", "rschulz");
    QVERIFY(after.scanner().empty() && after.printer().empty());
}

void TestUserEditor::ExtrasAndPasswordKeepTheEdits() {
    QVERIFY(!Store().GetUser("fxmaster", "jmueller").password_set());
    UserEditor editor(Open(QStringLiteral("jmueller")));
    ShowPageOf(editor.Field<QWidget>("ListView1"));
    // A pair needs a name.
    fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdSet");
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("NoItem")));
    editor.Select("ListView1", {QStringLiteral("language")});
    editor.Type("edtValue", QStringLiteral("en"));
    editor.Click("cmdSet");
    editor.Type("edtName", QStringLiteral("fax header"));
    editor.Type("edtValue", QStringLiteral("Accounts, room 104"));
    editor.Click("cmdSet");
    // Remove needs a row; it asks, and No keeps it.
    editor.Field<QTreeView>("ListView1")->clearSelection();
    fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdDelete");
    QCOMPARE(fx_->prompter.LastPrompt().title, GetLabel(QStringLiteral("Remove Error")));
    editor.Select("ListView1", {QStringLiteral("costcenter")});
    fx_->prompter.Answer({Answer::No, Answer::Yes});
    editor.Click("cmdDelete");
    QVERIFY(fx_->prompter.LastPrompt().text.endsWith(QLatin1String("'costcenter'")));
    QCOMPARE(editor.Names("ListView1").size(), 3);
    editor.Click("cmdDelete");

    // The export writes the list as shown, unsaved changes and all.
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("extras.txt"));
    fx_->prompter.AnswerFileName(file);
    editor.Click("cmdExport");
    QFile exported(file);
    QVERIFY(exported.open(QIODevice::ReadOnly));
    QCOMPARE(exported.readAll(), QByteArray("language en\nfax header Accounts, room 104\n"));

    // A password is set at once; the edits made before still save over it.
    // Entries that differ are the dialog's to refuse (tst_admineditor).
    fx_->prompter.Answer(Answer::OK);
    WhenAskedForPassword(QStringLiteral("Harbour-Light-42"), QStringLiteral("Harbour-Light-42"));
    editor.Click("cmdChangePassword");
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("NewPasswordSet")));
    QVERIFY(Store().GetUser("fxmaster", "jmueller").password_set());
    editor.ExpectOK(fx_->prompter, {});
    const UserRecord stored = Store().GetUser("fxmaster", "jmueller");
    QCOMPARE(stored.extras_size(), 2);
    QCOMPARE(stored.extras(1).value(), std::string("Accounts, room 104"));
    QVERIFY(stored.password_set());
}

void TestUserEditor::GroupLifecycle() {
    CheckLifecycle({.make = [] { return std::make_unique<frmGroupDetails>(); },
                    .open = Group(QStringLiteral("Finance")),
                    .missing = Group(QStringLiteral("Nobody")),
                    .notExistText = GetLabel(QStringLiteral("GroupNotExist")),
                    .missingServer = {},
                    .create = kNewGroup,
                    .keyField = "edtGroupName",
                    .takenKey = kLegal,
                    .existsText = GetLabel(QStringLiteral("GroupExist")),
                    .edit = TypeCounted("edtComment", QStringLiteral("Edit ")),
                    .storedVersion = [this] { return Store().GetGroup("Finance").version(); }},
                   fx_->prompter);
}

void TestUserEditor::MovesAndRemovesExactlyTheSelectedRows() {
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

    // Two members apart from each other; the one of the shown server is
    // offered again.
    editor.Select("lvGrpMembers", {"lfischer", "gsteiner"});
    editor.Click("cmdRemoveFromGrp");
    QCOMPARE(editor.Names("lvGrpMembers"), QStringList({"legal", "accounts", "jmueller"}));
    QVERIFY(editor.Names("lvSrvUsers").contains("lfischer"));

    editor.Select("lvSrvUsers", {"abecker"}, true);
    editor.Select("lvGrpMembers", {"legal"}, true);
    editor.ExpectOK(fx_->prompter, {});
    QCOMPARE(StoredMembers(Store(), "Legal"),
             QStringList({"accounts@fxmaster", "jmueller@fxmaster", "abecker@fxmaster"}));
}

void TestUserEditor::CreatesGroupWithEqualNamesOfTwoServers() {
    veldrano::admin::v1::User twin = Store().GetUser("fxsales", "reception");
    twin.set_comment("Sales reception");
    Store().CommitUser(twin);
    GroupEditor editor(kNewGroup);
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
    editor.Type("edtComment", QStringLiteral("Receptions after hours"));
    editor.ExpectOK(fx_->prompter, {});
    QCOMPARE(StoredMembers(Store(), "Night Watch"),
             QStringList({"reception@fxmaster", "reception@fxsales"}));
}

void TestUserEditor::GroupSelectionFindsAndTakesWithEnter() {
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

void TestUserEditor::ServerSelectionEscapeChoosesNothing() {
    WhenShown<frmServerSelection>([](frmServerSelection& selection) {
        QTRY_COMPARE(selection.SelectedName(), QStringLiteral("fxprint01"));
        EditorDriver(selection).Key("lvServers", Qt::Key_Escape);
    });
    QCOMPARE(frmServerSelection::Choose(nullptr, QStringLiteral("fxprint01")), QString());
    QCOMPARE(Pairs(FormParameters()), QStringList({"Refresh=0"}));
}

QTEST_MAIN(TestUserEditor)
#include "tst_usersandgroups.moc"
