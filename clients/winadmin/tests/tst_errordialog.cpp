// The common error dialog and the prompter it goes through.

#include <QGuiApplication>
#include <QTest>

#include "session/ErrorDialog.h"
#include "session/ServerSession.h"
#include "support/ScriptedPrompter.h"
#include "support/TestServer.h"

using namespace winadmin;

Q_DECLARE_METATYPE(winadmin::PromptButtons)

namespace {

namespace pb = veldrano::admin::v1;

const QString kBuiltInTitle = QStringLiteral("VELDRANO Administrator");

// Makes session the process's one session until the end of the scope.
struct SessionScope {
    explicit SessionScope(std::unique_ptr<ServerSession> session) {
        SetTheSession(std::move(session));
    }
    ~SessionScope() { SetTheSession(nullptr); }
};

}  // namespace

class TestErrorDialog : public QObject {
    Q_OBJECT

private slots:
    void ChoosesButtonsByFamily_data();
    void ChoosesButtonsByFamily();
    void ShowsSessionErrorOverBusyWork();
    void TitleIsTheProductTitleOfTheSessionsBrand();
    void FallbackPrompterAnswersTheDefaultButton();
};

void TestErrorDialog::ChoosesButtonsByFamily_data() {
    QTest::addColumn<uint>("number");
    QTest::addColumn<PromptButtons>("buttons");
    QTest::addColumn<int>("answer");  // passed through as the prompter gives it
    QTest::addColumn<QString>("text");
    // Through the protocol's table: what repeating can cure offers Retry, a
    // conflict (the same commit would be refused again) does not.
    QTest::newRow("time-out") << ErrorNumber(pb::ERROR_TIMEOUT) << PromptButtons::RetryCancel
                              << int(Answer::Retry) << QStringLiteral("Failed (81000001).");
    QTest::newRow("version conflict")
        << ErrorNumber(pb::ERROR_VERSION_CONFLICT) << PromptButtons::OK << int(Answer::Ignore)
        << QStringLiteral("Failed (8101000E).");
    // Seven digits that start like the transient family are still no prefix.
    QTest::newRow("seven digits") << 0x08100001u << PromptButtons::OK << int(Answer::OK)
                                  << QStringLiteral("Failed (8100001).");
}

void TestErrorDialog::ChoosesButtonsByFamily() {
    QFETCH(uint, number);
    QFETCH(int, answer);
    ScriptedPrompter prompter;
    prompter.Answer(answer);
    QCOMPARE(ShowErrorMessage(number, QStringLiteral("Failed"), QStringLiteral("Some.Component")),
             answer);
    const Prompt& shown = prompter.LastPrompt();
    QTEST(shown.buttons, "buttons");
    QTEST(shown.text, "text");
    QCOMPARE(shown.icon, PromptIcon::Critical);
    // No session: the built-in product, never the component.
    QCOMPARE(shown.title, kBuiltInTitle);
    QCOMPARE(shown.defaultButton, 1);
}

void TestErrorDialog::ShowsSessionErrorOverBusyWork() {
    // The description comes from the protocol's error table, once; a detail
    // follows it.
    const SessionError conflict = SessionError::FromCode(pb::ERROR_VERSION_CONFLICT);
    QCOMPARE(
        conflict.Description().count(QStringLiteral("another administrator"), Qt::CaseInsensitive),
        1);
    const SessionError denied =
        SessionError::FromCode(pb::ERROR_ACCESS_DENIED, QStringLiteral("not logged in"));
    QCOMPARE(denied.Description(), QStringLiteral("Access is denied: not logged in"));

    ScriptedPrompter prompter;
    prompter.Answer(Answer::OK);
    // Nested busy sections, as a failing editor leaves them.
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    QCOMPARE(ShowErrorMessage(conflict), int(Answer::OK));
    const ScriptedPrompter::Record& shown = prompter.Prompts().constFirst();
    QVERIFY(!shown.busyPointer);
    QVERIFY(!QGuiApplication::overrideCursor());
    QCOMPARE(shown.prompt.text, conflict.Description() + QStringLiteral(" (8101000E)."));
}

void TestErrorDialog::TitleIsTheProductTitleOfTheSessionsBrand() {
    TestServer::Options options;
    options.brand = "quorel";
    TestServer server(options);
    ScriptedPrompter prompter;
    {
        // A session that has not logged in yet knows no brand.
        SessionScope scope(std::make_unique<GrpcServerSession>(server.Channel()));
        prompter.Answer(Answer::OK);
        ShowErrorMessage(1u, QStringLiteral("Failed"), QStringLiteral("Some.Component"));
        QCOMPARE(prompter.LastPrompt().title, kBuiltInTitle);
    }
    SessionScope scope(server.Login());
    // An error the server raised: the box names the product, the error
    // object keeps its source for whoever handles it.
    SessionError refused(0, {}, {});
    try {
        TheSession()->StartServer(QStringLiteral("no-such-host"));
        QFAIL("the call was expected to fail");
    } catch (const SessionError& error) {
        refused = error;
    }
    QCOMPARE(refused.Source(), QStringLiteral("Kelvar.Administrator"));
    prompter.Answer(Answer::OK);
    QCOMPARE(ShowErrorMessage(refused), int(Answer::OK));
    QCOMPARE(prompter.LastPrompt().title, QStringLiteral("Quorel Administrator"));
    QVERIFY(!prompter.LastPrompt().text.contains(refused.Source()));
}

void TestErrorDialog::FallbackPrompterAnswersTheDefaultButton() {
    // No scripted prompter here: the process's own fallback answers.
    Prompt prompt;
    prompt.buttons = PromptButtons::YesNoCancel;
    prompt.defaultButton = 2;
    QCOMPARE(ThePrompter().Show(prompt), int(Answer::No));
    // A default beyond the buttons falls back to the first one.
    prompt.buttons = PromptButtons::RetryCancel;
    prompt.defaultButton = 9;
    QCOMPARE(ThePrompter().Show(prompt), int(Answer::Retry));
}

QTEST_MAIN(TestErrorDialog)
#include "tst_errordialog.moc"
