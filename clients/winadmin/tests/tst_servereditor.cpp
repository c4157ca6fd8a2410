// The editor frame's lifecycle and the server editor on it, driven through
// the dialog's widgets against the demo installation.

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
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
    void LoadsTheStoredServer();
    void NewServerKeepsWhatWasFilledIn();
    void ValidationOrderAndBounds_data();
    void ValidationOrderAndBounds();
    void RemoteServerSkipsRangeChecks();
    void RoleRemovalAsksInOrderThenDeletesTheRolesObjects();
    void RoleRemovalFailingHalfwayWritesNothingAndAsksAgain();
    void RoleRemovalRetriedAfterTheServerCameBack();
    void StaleVersionLeavesDialogOpen();
    void DeleteFromDialog();
};

void TestServerEditor::Lifecycle() {
    LifecycleSubject subject;
    subject.make = [] { return std::make_unique<frmServerDetails>(); };
    subject.open = Host("fxsales");
    subject.missing = Host("nosuchhost");
    subject.notExistText = GetLabel(QStringLiteral("ServerNotExist"));
    subject.create = kNew;
    subject.keyField = "edtHostName";
    subject.takenKey = QStringLiteral("fxprint01");
    subject.existsText = GetLabel(QStringLiteral("ServerExist"));
    int edits = 0;
    subject.edit = [&edits](EditorDriver& editor) {
        editor.Type("edtComment", QStringLiteral("Edit %1").arg(++edits));
    };
    subject.storedVersion = [this] { return Store().GetServer("fxsales").version(); };
    CheckLifecycle(subject, fx_->prompter);
}

void TestServerEditor::LoadsTheStoredServer() {
    ServerEditor editor(Host("fxmaster"));
    QCOMPARE(editor.Field("edtComment")->text(), QStringLiteral("Head office message server"));
    QVERIFY(editor.Field<QCheckBox>("chkPrinterServer")->isChecked());
    QCOMPARE(editor.Field<QComboBox>("cboNetType")->currentText(), QStringLiteral("rpc"));
    QCOMPARE(editor.Field("edtOnline")->text(), QStringLiteral("Yes"));
    QVERIFY(editor.Field<QWidget>("edtComment")->hasFocus());
    QVERIFY(editor.Field<QPushButton>("cmdDelete")->isEnabled());
    // What is shown only is never written back: a save keeps the stored
    // online state whatever the field says.
    editor.Field("edtOnline")->setText(QStringLiteral("No"));
    editor.Type("edtDebugLevel", QStringLiteral("3"));
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    QVERIFY(Store().GetServer("fxmaster").online());
    QCOMPARE(Store().GetServer("fxmaster").debug_level(), 3);
}

void TestServerEditor::NewServerKeepsWhatWasFilledIn() {
    // The new-key states are the lifecycle's; here what a new server keeps.
    ServerEditor editor(kNew);
    // Parentheses never reach the key; Enter accepts it and opens the details.
    editor.Type("edtHostName", QStringLiteral("fx(new)"));
    QCOMPARE(editor.Field("edtHostName")->text(), QStringLiteral("fxnew"));
    editor.Key("edtHostName", Qt::Key_Return);
    QCOMPARE(editor.dialog.State(), EditorState::NewObject);
    QVERIFY(editor.Field<QPushButton>("cmdOK")->isEnabled());
    editor.Type("edtComment", QStringLiteral("New print host"));
    editor.Field<QCheckBox>("chkUserServer")->setChecked(false);
    editor.Field<QCheckBox>("chkPrinterServer")->setChecked(true);
    editor.Field<QComboBox>("cboNetType")->setCurrentIndex(0);
    QCOMPARE(editor.dialog.State(), EditorState::NewObject);
    // Enter again in the locked key keeps what was filled in.
    editor.Key("edtHostName", Qt::Key_Return);
    QCOMPARE(editor.Field("edtComment")->text(), QStringLiteral("New print host"));
    QVERIFY(editor.Field<QCheckBox>("chkPrinterServer")->isChecked());
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    QCOMPARE(editor.Answer(), QStringLiteral("-1"));
    const auto stored = Store().GetServer("fxnew");
    QVERIFY(!stored.is_new());
    QVERIFY(stored.printer_server() && !stored.user_server());
    QCOMPARE(stored.comment(), std::string("New print host"));
}

void TestServerEditor::ValidationOrderAndBounds_data() {
    QTest::addColumn<QString>("host");
    QTest::addColumn<bool>("userServer");
    QTest::addColumn<QString>("comment");
    QTest::addColumn<QString>("dispatch");
    QTest::addColumn<QString>("debug");
    QTest::addColumn<QString>("message");  // "" when the save goes through
    const char* dispatchRange = "The valid range for 'Dispatch Count' is from 1 to 10000.";
    const char* debugRange = "The valid range for 'Debug Level' is from 0 to 10.";
    const auto row = [](const char* name, const char* host, bool user, const char* comment,
                        const char* dispatch, const char* debug, const char* message) {
        QTest::newRow(name) << QString(host) << user << QString(comment) << QString(dispatch)
                            << QString(debug) << QString(message);
    };
    row("user server needs a comment", "fxmaster", true, "", "4", "1",
        "The field 'Comment' cannot be empty.");
    row("printer-only server without comment", "fxprint01", false, "", "4", "1", "");
    row("no role", "fxprint01", false, "x", "4", "1",
        "Please choose at least one role: user server, printer server or device server.");
    row("dispatch 10000", "fxmaster", true, "x", "10000", "10", "");
    row("dispatch 10001", "fxmaster", true, "x", "10001", "1", dispatchRange);
    row("dispatch 0", "fxmaster", true, "x", "0", "1", dispatchRange);
    row("dispatch empty", "fxmaster", true, "x", "", "1",
        "The field 'Dispatch Count' cannot be empty.");
    row("debug 11", "fxmaster", true, "x", "5", "11", debugRange);
    row("comment checked before the ranges", "fxmaster", true, "", "0", "11",
        "The field 'Comment' cannot be empty.");
}

void TestServerEditor::ValidationOrderAndBounds() {
    QFETCH(QString, host);
    QFETCH(bool, userServer);
    QFETCH(QString, message);
    ServerEditor editor(Host(host));
    QFETCH(QString, comment);
    editor.Type("edtComment", comment);
    editor.Field<QCheckBox>("chkUserServer")->setChecked(userServer);
    if (message.startsWith(QLatin1String("Please choose")))
        editor.Field<QCheckBox>("chkPrinterServer")->setChecked(false);
    QFETCH(QString, dispatch);
    QFETCH(QString, debug);
    editor.Type("edtDispatchCount", dispatch);
    editor.Type("edtDebugLevel", debug);
    const int64_t before = Store().GetServer(host.toStdString()).version();
    editor.ExpectOK(fx_->prompter, message);
    QCOMPARE(Store().GetServer(host.toStdString()).version() > before, message.isEmpty());
}

void TestServerEditor::RemoteServerSkipsRangeChecks() {
    ServerEditor editor(Host("fxline01"));
    QCOMPARE(editor.Field<QComboBox>("cboNetType")->currentData().toString(),
             QStringLiteral("rrpc"));
    QVERIFY(!editor.Field("edtDispatchCount")->isEnabled());
    QVERIFY(!editor.Field<QWidget>("updDebugLevel")->isEnabled());
    // Back to rpc opens the fields; rrpc again closes them.
    editor.Field<QComboBox>("cboNetType")->setCurrentIndex(0);
    QVERIFY(editor.Field("edtDispatchCount")->isEnabled());
    editor.Type("edtDispatchCount", QStringLiteral("99999"));
    editor.Field<QComboBox>("cboNetType")->setCurrentIndex(1);
    QVERIFY(!editor.Field<QCheckBox>("chkDispatchOff")->isEnabled());
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    QCOMPARE(editor.Answer(), QStringLiteral("-1"));
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
    QCOMPARE(prompts[1].prompt.icon, PromptIcon::Exclamation);
    QVERIFY(editor.dialog.isVisible());
    QCOMPARE(Store().GetServer("fxmaster").version(), before.version());
    QCOMPARE(Store().ListUsers("fxmaster").size(), users);
    // Yes to both while routes deliver to its users: the server refuses,
    // naming the routes, and nothing goes.
    fx_->prompter.Answer({Answer::Yes, Answer::Yes, Answer::OK});
    editor.Click("cmdOK");
    QVERIFY(fx_->prompter.LastPrompt().text.contains(QLatin1String("route 'night'")));
    QVERIFY(fx_->prompter.LastPrompt().text.contains(QLatin1String("(81010011)")));
    QVERIFY(editor.dialog.isVisible());
    QCOMPARE(Store().ListUsers("fxmaster").size(), users);
    // Once no route names them: the roles go with their objects.
    DeleteRoutesTo(Store(), "fxmaster");
    fx_->prompter.Answer({Answer::Yes, Answer::Yes});
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    QVERIFY(Store().ListUsers("fxmaster").empty());
    QVERIFY(Store().GetPrinter("fxmaster", "lj-acc").is_new());
    const auto after = Store().GetServer("fxmaster");
    QVERIFY(!after.user_server() && !after.printer_server());
}

void TestServerEditor::RoleRemovalFailingHalfwayWritesNothingAndAsksAgain() {
    const size_t users = Store().ListUsers("fxmaster").size();
    QVERIFY(users > 0);
    ServerEditor editor(Host("fxmaster"));
    // Another administrator saves the server after it was opened, so the
    // commit that takes the role away is refused.
    auto other = Store().GetServer("fxmaster");
    other.set_comment("Changed elsewhere");
    Store().CommitServer(other);
    editor.Field<QCheckBox>("chkUserServer")->setChecked(false);
    fx_->prompter.Answer({Answer::Yes, Answer::OK});
    editor.Click("cmdOK");
    QCOMPARE(fx_->prompter.Prompts().size(), 2);
    QCOMPARE(fx_->prompter.LastPrompt().buttons, PromptButtons::OK);
    // Nothing half-written: the users are all there, the role too.
    QCOMPARE(Store().ListUsers("fxmaster").size(), users);
    QVERIFY(Store().GetServer("fxmaster").user_server());
    QCOMPARE(editor.dialog.State(), EditorState::Changed);
    QVERIFY(!editor.Field<QCheckBox>("chkUserServer")->isChecked());
    // The next attempt asks again: the dialog still sees the role as stored.
    fx_->prompter.Answer({Answer::No});
    editor.Click("cmdOK");
    QCOMPARE(fx_->prompter.Prompts().size(), 3);
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("DeleteUsers")));
    QCOMPARE(Store().ListUsers("fxmaster").size(), users);
    QVERIFY(editor.dialog.isVisible());
}

void TestServerEditor::RoleRemovalRetriedAfterTheServerCameBack() {
    fx_->StartDemo(true);  // over TCP, so that the server can be stopped
    for (const bool retry : {true, false}) {
        const QByteArray host = retry ? "fxmaster" : "fxsales";
        DeleteRoutesTo(Store(), host.toStdString());
        const int base = int(fx_->prompter.Prompts().size());
        ServerEditor editor(Host(QString::fromLatin1(host)));
        editor.Field<QCheckBox>("chkUserServer")->setChecked(false);
        // The server goes away while the question is up and is back while
        // the failure is shown.
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
        fx_->prompter.Answer({Answer::Yes, retry ? Answer::Retry : Answer::Cancel});
        editor.Click("cmdOK");
        QCOMPARE(fx_->prompter.Prompts().at(base + 1).prompt.buttons, PromptButtons::RetryCancel);
        if (!retry) {
            // Cancel: nothing written; OK again asks the question again.
            QVERIFY(Store().GetServer(host.toStdString()).user_server());
            QVERIFY(!Store().ListUsers(host.toStdString()).empty());
            fx_->prompter.Answer(Answer::Yes);
            editor.Click("cmdOK");
            QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("DeleteUsers")));
        }
        QVERIFY(!editor.dialog.isVisible());
        QVERIFY(!Store().GetServer(host.toStdString()).user_server());
        QVERIFY(Store().ListUsers(host.toStdString()).empty());
        SetFormParameters({});
        fx_->prompter.whileShown = {};
        // One question per attempt: Retry repeats the same commit.
        QCOMPARE(int(fx_->prompter.Prompts().size()) - base, retry ? 2 : 3);
    }
}

void TestServerEditor::StaleVersionLeavesDialogOpen() {
    ServerEditor editor(Host("fxsales"));
    // Another administrator saves the server meanwhile.
    auto other = Store().GetServer("fxsales");
    other.set_comment("Changed elsewhere");
    Store().CommitServer(other);
    editor.Type("edtComment", QStringLiteral("Mine"));
    // Repeating cannot cure a conflict: the box offers OK alone.
    fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdOK");
    const Prompt& error = fx_->prompter.LastPrompt();
    const QString number =
        QString::number(ErrorNumber(veldrano::admin::v1::ERROR_VERSION_CONFLICT), 16).toUpper();
    QVERIFY2(error.text.startsWith(QLatin1String("Another administrator changed")) &&
                 error.text.endsWith(QLatin1String(" (") + number + QLatin1String(").")),
             qPrintable(error.text));
    QVERIFY(!number.startsWith(QLatin1String("8100")));
    QCOMPARE(error.buttons, PromptButtons::OK);
    QVERIFY(editor.dialog.isVisible());
    QCOMPARE(editor.dialog.State(), EditorState::Changed);
    QCOMPARE(editor.Field("edtComment")->text(), QStringLiteral("Mine"));
    QCOMPARE(Store().GetServer("fxsales").comment(), std::string("Changed elsewhere"));
}

void TestServerEditor::DeleteFromDialog() {
    ServerEditor editor(Host("fxbackup"));
    fx_->prompter.Answer(Answer::Yes);
    editor.Click("cmdDelete");
    const Prompt& asked = fx_->prompter.LastPrompt();
    QCOMPARE(asked.text, QStringLiteral("Do you really want to delete this object?\r'fxbackup'"));
    QCOMPARE(asked.defaultButton, 2);
    QCOMPARE(editor.dialog.State(), EditorState::Empty);
    QVERIFY(Store().GetServer("fxbackup").is_new());
    QVERIFY(editor.Field("edtHostName")->text().isEmpty());
    editor.Click("cmdOK");
    QCOMPARE(editor.Answer(), QStringLiteral("-1"));
}

QTEST_MAIN(TestServerEditor)
#include "tst_servereditor.moc"
