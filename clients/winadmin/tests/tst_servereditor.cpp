// The server editor, driven through the dialog's widgets against the demo
// installation: its checks, the roles and what their removal takes along,
// and what a refused or failed save leaves.

#include <QCheckBox>
#include <QLineEdit>
#include <QScopeGuard>
#include <QTest>

#include "common/FormParameters.h"
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
    void NewServerSavedThenDeletedFromTheDialog();
    void ChecksInOrderAndBounds();
    void RoleRemovalAsksInOrderThenDeletesTheRolesObjects();
    void RoleRemovalFailingHalfwayWritesNothingAndAsksAgain();
    void RoleRemovalRetriedAfterTheServerCameBack();
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

void TestServerEditor::NewServerSavedThenDeletedFromTheDialog() {
    ServerEditor editor(kNew);
    editor.Type("edtHostName", QStringLiteral("fxnew"));
    editor.Key("edtHostName", Qt::Key_Return);
    editor.Type("edtComment", QStringLiteral("New print host"));
    editor.Field<QCheckBox>("chkUserServer")->setChecked(false);
    editor.Field<QCheckBox>("chkPrinterServer")->setChecked(true);
    QVERIFY(EditorFrameProbe::Save(editor.dialog));
    const auto stored = Store().GetServer("fxnew");
    QVERIFY(stored.printer_server() && !stored.user_server());
    // Deleted from the dialog after a question that names it, No the default.
    fx_->prompter.Answer(Answer::Yes);
    editor.Click("cmdDelete");
    const Prompt& asked = fx_->prompter.LastPrompt();
    QCOMPARE(asked.text, QStringLiteral("Do you really want to delete this object?\r'fxnew'"));
    QCOMPARE(asked.defaultButton, 2);
    QCOMPARE(editor.dialog.State(), EditorState::Empty);
    QVERIFY(Store().GetServer("fxnew").is_new());
    editor.Click("cmdOK");
    QCOMPARE(editor.Answer(), QStringLiteral("-1"));
}

void TestServerEditor::ChecksInOrderAndBounds() {
    ServerEditor editor(Host("fxprint01"));
    auto* user = editor.Field<QCheckBox>("chkUserServer");
    auto* printer = editor.Field<QCheckBox>("chkPrinterServer");
    printer->setChecked(false);
    editor.ExpectOK(fx_->prompter, QStringLiteral("Please choose at least one role: user "
                                                  "server, printer server or device server."));
    // The comment comes first, and only a user server needs one.
    editor.Type("edtComment", {});
    editor.Type("edtDispatchCount", QStringLiteral("10001"));
    user->setChecked(true);
    editor.ExpectOK(fx_->prompter, EmptyMessage("Comment"));
    user->setChecked(false);
    printer->setChecked(true);
    editor.ExpectOK(fx_->prompter, RangeMessage("Dispatch Count", "1", "10000"));
    editor.Type("edtDispatchCount", QStringLiteral("10000"));
    // What is shown only is never written: the stored online state stays.
    editor.Field("edtOnline")->setText(QStringLiteral("No"));
    editor.ExpectOK(fx_->prompter, {});
    const auto stored = Store().GetServer("fxprint01");
    QVERIFY(stored.online());
    QCOMPARE(stored.dispatch_count(), 10000);
}

void TestServerEditor::RoleRemovalAsksInOrderThenDeletesTheRolesObjects() {
    const auto before = Store().GetServer("fxmaster");
    const size_t users = Store().ListUsers("fxmaster").size();
    ServerEditor editor(Host("fxmaster"));
    editor.Field<QCheckBox>("chkUserServer")->setChecked(false);
    editor.Field<QCheckBox>("chkPrinterServer")->setChecked(false);
    // No to the second question: nothing is written.
    fx_->prompter.Answer({Answer::Yes, Answer::No});
    editor.Click("cmdOK");
    const auto& prompts = fx_->prompter.Prompts();
    QCOMPARE(prompts.size(), 2);
    QVERIFY(prompts[0].prompt.text.contains(QLatin1String("no longer a user server")));
    QVERIFY(prompts[1].prompt.text.contains(QLatin1String("no longer a printer server")));
    QCOMPARE(prompts[1].prompt.defaultButton, 2);
    QCOMPARE(Store().GetServer("fxmaster").version(), before.version());
    // Yes to both while routes deliver to its users: the server refuses,
    // naming the routes, and nothing goes.
    fx_->prompter.Answer({Answer::Yes, Answer::Yes, Answer::OK});
    editor.Click("cmdOK");
    QVERIFY(fx_->prompter.LastPrompt().text.contains(QLatin1String("route 'night'")));
    QVERIFY(fx_->prompter.LastPrompt().text.contains(QLatin1String("(81010011)")));
    QCOMPARE(Store().ListUsers("fxmaster").size(), users);
    // Once no route names them: the roles go with their objects.
    DeleteRoutesTo(Store(), "fxmaster");
    fx_->prompter.Answer({Answer::Yes, Answer::Yes});
    editor.ExpectOK(fx_->prompter, {});
    QVERIFY(Store().ListUsers("fxmaster").empty());
    QVERIFY(Store().GetPrinter("fxmaster", "lj-acc").is_new());
    QVERIFY(!Store().GetServer("fxmaster").printer_server());
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

QTEST_MAIN(TestServerEditor)
#include "tst_servereditor.moc"
