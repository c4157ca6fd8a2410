// The server, printer and gateway user editors against the demo
// installation: the server's checks and what a failed role removal leaves;
// a Windows printer's fields; a gateway user keyed by its gateway too.

#include <QCheckBox>
#include <QLineEdit>
#include <QScopeGuard>
#include <QTest>

#include "common/Labels.h"
#include "editors/frmGatewayUser.h"
#include "editors/frmPrinterDetails.h"
#include "editors/frmServerDetails.h"
#include "session/ServerSession.h"
#include "session/SessionError.h"
#include "store/Store.h"
#include "support/EditorDriver.h"
#include "support/EditorLifecycle.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

using ServerEditor = ShownEditor<frmServerDetails>;
FormParameterList Host(const QString& host) {
    return {{QStringLiteral("HostName"), host}};
}
const FormParameterList kNew = {{QStringLiteral("New"), QString()}};

// Routes name their target users, and a server keeps users that a route
// names: these go first when a test takes a server's users away.
void DeleteRoutesTo(veldrano::server::Store& store, const std::string& host) {
    for (const RouteRecord& route : store.ListRoutes())
        if (route.user().host_name() == host) store.DeleteRoute(route.name(), route.version());
}

const QString kMaster = QStringLiteral("fxmaster");
const QString kSmtp = QStringLiteral("smtp.example.com");
const QString kX400 = QStringLiteral("x400.example.net");

FormParameterList OpenRequest(const QString& printer, const QString& host = kMaster) {
    return {{QStringLiteral("PrinterName"), printer}, {QStringLiteral("HostName"), host}};
}

// An empty address starts a new gateway user.
FormParameterList GatewayRequest(const QString& address, const QString& gateway) {
    return {{address.isEmpty() ? QStringLiteral("New") : QStringLiteral("GatewayUser"), address},
            {QStringLiteral("GatewayAddress"), gateway}};
}

using PrinterEditor = ShownEditor<frmPrinterDetails>;
using GatewayEditor = ShownEditor<frmGatewayUser>;

bool Reachable() {
    try {
        TheSession()->GetServer(QStringLiteral("fxmaster"));
        return true;
    } catch (const SessionError&) {
        return false;
    }
}

}  // namespace

class TestServerEditor : public ExplorerSuite {
    Q_OBJECT

private slots:
    void Lifecycle();
    void RolesAndComment();
    void RoleRemovalFailingHalfwayWritesNothingAndAsksAgain();
    void RoleRemovalRetriedAfterTheServerCameBack();
    void PrinterLifecycle();
    void WindowsPrinterHasNoPaperSizeOrSplitPage();
    void GatewayUserLifecycle();
    void GatewayUserKeyedByItsGateway();
};

void TestServerEditor::Lifecycle() {
    CheckLifecycle({.make = [] { return std::make_unique<frmServerDetails>(); },
                    .open = Host("fxsales"),
                    .missing = Host("nosuchhost"),
                    .notExistText = GetLabel(QStringLiteral("ServerNotExist")),
                    .missingServer = {},
                    .create = kNew,
                    .keyField = "edtHostName",
                    .takenKey = QStringLiteral("fxprint01"),
                    .existsText = GetLabel(QStringLiteral("ServerExist")),
                    .edit = TypeCounted("edtComment", QStringLiteral("Edit ")),
                    .storedVersion = [this] { return Store().GetServer("fxsales").version(); }},
                   fx_->prompter);
}

void TestServerEditor::RolesAndComment() {
    ServerEditor editor(Host("fxprint01"));
    auto* printer = editor.Field<QCheckBox>("chkPrinterServer");
    printer->setChecked(false);
    editor.ExpectOK(fx_->prompter, QStringLiteral("Please choose at least one role: user "
                                                  "server, printer server or device server."));
    // Only a user server needs a comment.
    editor.Type("edtComment", {});
    printer->setChecked(true);
    // What is shown only is never written: the stored online state stays.
    editor.Field("edtOnline")->setText(QStringLiteral("No"));
    editor.ExpectOK(fx_->prompter, {});
    const auto stored = Store().GetServer("fxprint01");
    QVERIFY(stored.online() && stored.comment().empty());
}

void TestServerEditor::RoleRemovalFailingHalfwayWritesNothingAndAsksAgain() {
    const size_t users = Store().ListUsers("fxmaster").size();
    ServerEditor editor(Host("fxmaster"));
    // Another administrator saves the server after it was opened, so the
    // commit that takes the role away is refused.
    auto other = Store().GetServer("fxmaster");
    other.set_comment("Changed elsewhere");
    Store().CommitServer(other);
    editor.Field<QCheckBox>("chkUserServer")->setChecked(false);
    fx_->prompter.Answer({Answer::Yes, Answer::OK});
    editor.Click("cmdOK");
    // Repeating cannot cure a conflict: the box offers OK alone.
    QVERIFY(fx_->prompter.LastPrompt().text.endsWith(QLatin1String(" (8101000E).")));
    QCOMPARE(fx_->prompter.LastPrompt().buttons, PromptButtons::OK);
    // Nothing half-written: the users are all there, the role too.
    QCOMPARE(Store().ListUsers("fxmaster").size(), users);
    QVERIFY(Store().GetServer("fxmaster").user_server());
    QVERIFY(!editor.Field<QCheckBox>("chkUserServer")->isChecked());
    // The next attempt asks again: the dialog still sees the role as stored.
    fx_->prompter.Answer({Answer::No});
    editor.Click("cmdOK");
    QCOMPARE(fx_->prompter.Prompts().size(), 3);
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("DeleteUsers")));
}

void TestServerEditor::RoleRemovalRetriedAfterTheServerCameBack() {
    fx_->StartDemo(true);  // over TCP, so that the server can be stopped
    DeleteRoutesTo(Store(), "fxmaster");
    ServerEditor editor(Host("fxmaster"));
    editor.Field<QCheckBox>("chkUserServer")->setChecked(false);
    // The server goes away while the question is up and is back while the
    // failure is shown.
    int shown = 0;
    fx_->prompter.whileShown = [&] {
        if (++shown == 1) fx_->server->Shutdown();
        if (shown == 2) {
            fx_->server->Restart();
            // The channel reconnects after a pause of its own; the
            // administrator presses Retry once it has.
            QTRY_VERIFY(Reachable());
        }
    };
    const auto quiet = qScopeGuard([&] { fx_->prompter.whileShown = {}; });
    fx_->prompter.Answer({Answer::Yes, Answer::Retry});
    editor.Click("cmdOK");
    // Retry repeats the same commit, without asking again.
    QCOMPARE(fx_->prompter.Prompts().size(), 2);
    QCOMPARE(fx_->prompter.LastPrompt().buttons, PromptButtons::RetryCancel);
    QVERIFY(!editor.dialog.isVisible());
    QVERIFY(Store().ListUsers("fxmaster").empty());
}

void TestServerEditor::PrinterLifecycle() {
    CheckLifecycle(
        {.make = [] { return std::make_unique<frmPrinterDetails>(); },
         .open = OpenRequest(QStringLiteral("lj-acc")),
         .missing = OpenRequest(QStringLiteral("lj-acc"), QStringLiteral("fxprint01")),
         .notExistText = GetLabel(QStringLiteral("PrinterNotExist")),
         .missingServer = OpenRequest(QStringLiteral("lj-acc"), QStringLiteral("nowhere")),
         .create = {{QStringLiteral("New"), QString()}, {QStringLiteral("HostName"), kMaster}},
         .keyField = "edtPrinterName",
         .takenKey = QStringLiteral("ps-board"),
         .existsText = GetLabel(QStringLiteral("PrinterExist")),
         .edit = TypeCounted("edtComment", QStringLiteral("Accounts laser ")),
         .storedVersion = [this] { return Store().GetPrinter("fxmaster", "lj-acc").version(); }},
        fx_->prompter);
}

void TestServerEditor::WindowsPrinterHasNoPaperSizeOrSplitPage() {
    PrinterEditor editor(OpenRequest(QStringLiteral("ps-board")));
    // An empty split page is not checked while the type has none.
    editor.Type("edtSplitPage", QString());
    editor.Set("cboPrinterType=" + GetLabel(QStringLiteral("PRN_WINDOWS")));
    QVERIFY(!editor.Enabled("cboPaperSize") && !editor.Enabled("updSplitPage"));
    // Any other type brings them back, with their check.
    editor.Set("cboPrinterType=" + GetLabel(QStringLiteral("PRN_PS")));
    editor.ExpectOK(fx_->prompter, EmptyMessage("Split Page"));
    editor.Set("cboPrinterType=" + GetLabel(QStringLiteral("PRN_WINDOWS")));
    editor.ExpectOK(fx_->prompter, {});
    // A disabled field is not written: the stored split page stays.
    const auto stored = Store().GetPrinter("fxmaster", "ps-board");
    QCOMPARE(stored.type(), 11);
    QCOMPARE(stored.split_page(), 20);
}

void TestServerEditor::GatewayUserLifecycle() {
    const QString address = QStringLiteral("sales@example.com");
    CheckLifecycle(
        {.make = [] { return std::make_unique<frmGatewayUser>(); },
         .open = GatewayRequest(address, kSmtp),
         .missing = GatewayRequest(address, kX400),  // known to the other gateway only
         .notExistText = GetLabel(QStringLiteral("GtwUsrNotExist")),
         .missingServer = {},
         .create = GatewayRequest({}, kSmtp),
         .keyField = "edtMailAddress",
         .takenKey = address,
         .existsText = GetLabel(QStringLiteral("GtwUsrExist")),
         .edit = TypeCounted("edtExtension", QStringLiteral("30")),
         .storedVersion =
             [this] {
                 return Store().GetGatewayUser("smtp.example.com", "sales@example.com").version();
             }},
        fx_->prompter);
}

void TestServerEditor::GatewayUserKeyedByItsGateway() {
    // The other gateway's address (its lifecycle's taken key) is free here.
    const QString address = QStringLiteral("sales@example.com");
    const auto stored = [&] {
        return Store().GetGatewayUser(kX400.toStdString(), address.toStdString());
    };
    GatewayEditor editor(GatewayRequest({}, kX400));
    editor.Type("edtMailAddress", address);
    editor.Key("edtMailAddress", Qt::Key_Return);
    editor.Type("edtExtension", QStringLiteral("4711"));
    QVERIFY(EditorFrameProbe::Save(editor.dialog));
    QCOMPARE(stored().extension(), std::string("4711"));
    // Deleted from the dialog: the other gateway's users, that address's
    // among them, are never touched.
    fx_->prompter.Answer(Answer::Yes);
    editor.Click("cmdDelete");
    QCOMPARE(fx_->prompter.LastPrompt().defaultButton, 2);
    QCOMPARE(editor.dialog.State(), EditorState::Empty);
    QVERIFY(stored().is_new());
    QVERIFY(!Store().GetGatewayUser(kSmtp.toStdString(), address.toStdString()).is_new());
}

QTEST_MAIN(TestServerEditor)
#include "tst_servereditor.moc"
