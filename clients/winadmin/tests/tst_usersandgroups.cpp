// The user, group, route and number mapping editors against the demo
// installation: the user's checks, references the server no longer has,
// the extras and the password; the group's member lists; the route's
// choosers and its polling checks, which depend on the server level.

#include <QComboBox>
#include <QLineEdit>
#include <QTabWidget>
#include <QTest>
#include <QTreeView>

#include "common/Labels.h"
#include "common/Pages.h"
#include "editors/frmGroupDetails.h"
#include "editors/frmGroupSelection.h"
#include "editors/frmNumberMappingsDetails.h"
#include "editors/frmRouteDetails.h"
#include "editors/frmUserDetails.h"
#include "session/ServerSession.h"
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
const FormParameterList kNew = {{QStringLiteral("New"), QString()}};
FormParameterList Group(const QString& name) {
    return {{QStringLiteral("GroupName"), name}};
}

// "user@host" of each member the server holds.
QStringList StoredMembers(veldrano::server::Store& store, const char* group) {
    QStringList members;
    const auto stored = store.GetGroup(group);
    for (const auto& ref : stored.members())
        members << QString::fromStdString(ref.user_name() + '@' + ref.host_name());
    return members;
}

FormParameterList Request(const char* key, const QString& value) {
    return {{QLatin1String(key), value}};
}

using RouteEditor = ShownEditor<frmRouteDetails>;

}  // namespace

class TestUsersAndGroups : public ExplorerSuite {
    Q_OBJECT

private slots:
    void Lifecycle();
    void ChecksAndTheirPages();
    void VanishedScannerAndPrinterShowNone();
    void ExtrasAndPasswordKeepTheEdits();
    void GroupLifecycle();
    void MovesAndRemovesExactlyTheSelectedRows();
    void CreatesGroupWithEqualNamesOfTwoServers();
    void RouteAndMappingLifecycles();
    void ChoosersAndNoneAreStoredAsEmptyNames();
    void PollingIsCheckedFromLevelFive();
};

void TestUsersAndGroups::Lifecycle() {
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

void TestUsersAndGroups::ChecksAndTheirPages() {
    // tschmidt has neither print nor signal actions.
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
    refused({"edtComment="}, EmptyMessage("Comment"), "tabGeneral", "edtComment");
    // A light needs a number (a printer for print actions:
    // VanishedScannerAndPrinterShowNone).
    refused({"edtComment=Tom Schmidt", "chkLightIfSendFailed=1"},
            EmptyMessage("Phone Signal Number"), "tabActions", "edtPhoneSignalNr");
}

void TestUsersAndGroups::VanishedScannerAndPrinterShowNone() {
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
    // Its print actions now lack a printer.
    editor.Type("edtComment", QStringLiteral("Rita Schulz, HR"));
    editor.ExpectOK(fx_->prompter, GetLabel(QStringLiteral("PrinterNotChoosed")));
}

void TestUsersAndGroups::ExtrasAndPasswordKeepTheEdits() {
    QVERIFY(!Store().GetUser("fxmaster", "jmueller").password_set());
    UserEditor editor(Open(QStringLiteral("jmueller")));
    ShowPageOf(editor.Field<QWidget>("ListView1"));
    editor.Select("ListView1", {QStringLiteral("language")});
    editor.Type("edtValue", QStringLiteral("en"));
    editor.Click("cmdSet");
    editor.Type("edtName", QStringLiteral("fax header"));
    editor.Type("edtValue", QStringLiteral("Accounts, room 104"));
    editor.Click("cmdSet");

    // A password is set at once; the edits made before still save over it.
    // Entries that differ are the dialog's to refuse (tst_admineditor).
    fx_->prompter.Answer(Answer::OK);
    WhenAskedForPassword(QStringLiteral("Harbour-Light-42"), QStringLiteral("Harbour-Light-42"));
    editor.Click("cmdChangePassword");
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("NewPasswordSet")));
    editor.ExpectOK(fx_->prompter, {});
    const UserRecord stored = Store().GetUser("fxmaster", "jmueller");
    QCOMPARE(stored.extras(1).value(), std::string("en"));
    QCOMPARE(stored.extras(2).value(), std::string("Accounts, room 104"));
    QVERIFY(stored.password_set());
}

void TestUsersAndGroups::GroupLifecycle() {
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

void TestUsersAndGroups::MovesAndRemovesExactlyTheSelectedRows() {
    GroupEditor editor(Group(kLegal));
    // A server's users are offered, members left out.
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
    editor.ExpectOK(fx_->prompter, {});
    QCOMPARE(StoredMembers(Store(), "Legal"),
             QStringList({"legal@fxmaster", "accounts@fxmaster", "jmueller@fxmaster"}));
}

void TestUsersAndGroups::CreatesGroupWithEqualNamesOfTwoServers() {
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
    editor.Type("edtComment", QStringLiteral("Receptions after hours"));
    editor.ExpectOK(fx_->prompter, {});
    QCOMPARE(StoredMembers(Store(), "Night Watch"),
             QStringList({"reception@fxmaster", "reception@fxsales"}));
}

void TestUsersAndGroups::RouteAndMappingLifecycles() {
    const auto routes = Store().ListRoutes().size();
    LifecycleSubject route;
    route.make = [] { return std::make_unique<frmRouteDetails>(); };
    route.open = Request("RouteName", QStringLiteral("orders"));
    route.missing = Request("RouteName", QStringLiteral("no-route"));
    route.notExistText = GetLabel(QStringLiteral("RouteNotExist"));
    route.create = kNew;
    route.keyField = "edtRouteName";
    route.takenKey = QStringLiteral("legal-in");
    route.existsText = GetLabel(QStringLiteral("RouteAlreadyExist"));
    route.edit = TypeCounted("edtComment", QStringLiteral("Order forms "));
    route.storedVersion = [this] { return Store().GetRoute("orders").version(); };
    CheckLifecycle(route, fx_->prompter);
    // Asking about a taken name created nothing.
    QCOMPARE(Store().ListRoutes().size(), routes);
    if (QTest::currentTestFailed()) return;

    LifecycleSubject mapping;
    mapping.make = [] { return std::make_unique<frmNumberMappingsDetails>(); };
    mapping.open = Request("NumMapMatch", QStringLiteral("0041"));
    mapping.missing = Request("NumMapMatch", QStringLiteral("0042"));
    mapping.notExistText = GetLabel(QStringLiteral("MapNotExist"));
    mapping.create = kNew;
    mapping.keyField = "edtMatch";
    mapping.takenKey = QStringLiteral("110");
    mapping.existsText = GetLabel(QStringLiteral("MapExist"));
    mapping.edit = TypeCounted("edtReplace", QStringLiteral("+4"));
    mapping.storedVersion = [this] { return Store().GetNumberMapping("0041").version(); };
    CheckLifecycle(mapping, fx_->prompter);
}

void TestUsersAndGroups::ChoosersAndNoneAreStoredAsEmptyNames() {
    RouteEditor editor(Request("RouteName", QStringLiteral("orders")));
    // The group chooser offers "(None)" first and starts on the group shown.
    WhenShown<frmGroupSelection>([](frmGroupSelection& dialog) {
        auto* view = Child<QTreeView>(dialog, "lvGroups");
        QTRY_VERIFY(view->model()->rowCount() > 1);
        QCOMPARE(view->model()->index(0, 0).data().toString(), NoneText());
        QCOMPARE(dialog.SelectedName(), QStringLiteral("SalesTeam"));
        ClickRow(view, 0, {}, true);
    });
    editor.Click("cmdGroupSelection");
    editor.Set("cboPollServer=" + NoneText());
    editor.ExpectOK(fx_->prompter, {});
    const auto stored = Store().GetRoute("orders");
    QVERIFY(stored.group().empty() && stored.poll_server().empty());
}

void TestUsersAndGroups::PollingIsCheckedFromLevelFive() {
    // acc-in polls nothing: "(None)" and no document.
    {
        RouteEditor editor(Request("RouteName", QStringLiteral("acc-in")));
        editor.Type("edtComment", QStringLiteral("Invoices"));
        editor.ExpectOK(fx_->prompter, EmptyMessage("Poll Document"), "edtPollDocument");
    }
    // Below level 5 the polling fields are not checked at all.
    Store().SetMeta("server_level", "4");
    TheSession()->Login();
    RouteEditor editor(Request("RouteName", QStringLiteral("acc-in")));
    editor.Type("edtComment", QStringLiteral("Invoices"));
    editor.ExpectOK(fx_->prompter, {});
    QCOMPARE(Store().GetRoute("acc-in").comment(), std::string("Invoices"));
}

QTEST_MAIN(TestUsersAndGroups)
#include "tst_usersandgroups.moc"
