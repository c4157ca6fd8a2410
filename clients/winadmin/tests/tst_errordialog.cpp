// The common error dialog and the prompter it goes through.

#include <QGuiApplication>
#include <QTest>

#include "session/ErrorDialog.h"
#include "support/ScriptedPrompter.h"

using namespace winadmin;

Q_DECLARE_METATYPE(winadmin::PromptButtons)

class TestErrorDialog : public QObject {
    Q_OBJECT

private slots:
    void ChoosesButtonsByFamily_data();
    void ChoosesButtonsByFamily();
    void ShowsSessionErrorOverBusyWork();
    void FallbackPrompterAnswersTheDefaultButton();
};

void TestErrorDialog::ChoosesButtonsByFamily_data() {
    QTest::addColumn<uint>("number");
    QTest::addColumn<PromptButtons>("buttons");
    QTest::addColumn<int>("answer");  // passed through as the prompter gives it
    QTest::addColumn<QString>("text");

    const auto row = [](const char* name, uint number, PromptButtons buttons, int answer,
                        const char* text) {
        QTest::newRow(name) << number << buttons << answer << QString(text);
    };
    row("transient", 0x81000001u, PromptButtons::RetryCancel, Answer::Retry, "Failed (81000001).");
    row("8101, letters upper case", 0x8101000Du, PromptButtons::OK, Answer::Ignore,
        "Failed (8101000D).");
    row("access denied", 0x80070005u, PromptButtons::OK, Answer::OK, "Failed (80070005).");
    row("short number", 5u, PromptButtons::OK, Answer::OK, "Failed (5).");
    // Seven digits that start like the transient family are still no prefix.
    row("seven digits", 0x08100001u, PromptButtons::OK, Answer::OK, "Failed (8100001).");
}

void TestErrorDialog::ChoosesButtonsByFamily() {
    QFETCH(uint, number);
    QFETCH(int, answer);
    ScriptedPrompter prompter;
    prompter.Answer(answer);

    QCOMPARE(ShowErrorMessage(number, QStringLiteral("Failed"), QStringLiteral("Some.Component")),
             answer);

    QCOMPARE(prompter.Prompts().size(), 1);
    const Prompt& shown = prompter.LastPrompt();
    QTEST(shown.buttons, "buttons");
    QTEST(shown.text, "text");
    QCOMPARE(shown.icon, PromptIcon::Critical);
    QCOMPARE(shown.title, QStringLiteral("Some.Component"));
    QCOMPARE(shown.defaultButton, 1);
}

void TestErrorDialog::ShowsSessionErrorOverBusyWork() {
    // Number, description and source come from the protocol's error table.
    const SessionError conflict = SessionError::FromCode(
        veldrano::admin::v1::ERROR_VERSION_CONFLICT, QStringLiteral("user bob@alpha"));
    QCOMPARE(conflict.Number(), 0x81000003u);
    QVERIFY(conflict.Description().endsWith(QStringLiteral(": user bob@alpha")));
    QCOMPARE(conflict.Source(), QStringLiteral("Kelvar.Administrator"));
    QVERIFY(QByteArray(conflict.what()).contains("81000003"));

    ScriptedPrompter prompter;
    prompter.Answer(Answer::Retry);
    // Nested busy sections, as a failing editor leaves them.
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);

    QCOMPARE(ShowErrorMessage(conflict), int(Answer::Retry));

    const ScriptedPrompter::Record& shown = prompter.Prompts().constFirst();
    QVERIFY(!shown.busyPointer);
    QVERIFY(!QGuiApplication::overrideCursor());
    QVERIFY(shown.prompt.text.startsWith(conflict.Description()));
    QVERIFY(shown.prompt.text.endsWith(QStringLiteral(" (81000003).")));
    QCOMPARE(shown.prompt.title, conflict.Source());
    QCOMPARE(shown.prompt.buttons, PromptButtons::RetryCancel);
}

void TestErrorDialog::FallbackPrompterAnswersTheDefaultButton() {
    // No scripted prompter here: the process's own fallback answers.
    Prompt prompt;
    prompt.buttons = PromptButtons::YesNoCancel;
    prompt.defaultButton = 2;
    QCOMPARE(ThePrompter().Show(prompt), int(Answer::No));
    prompt.buttons = PromptButtons::AbortRetryIgnore;
    prompt.defaultButton = 3;
    QCOMPARE(ThePrompter().Show(prompt), int(Answer::Ignore));
    // A default beyond the buttons falls back to the first one.
    prompt.buttons = PromptButtons::RetryCancel;
    prompt.defaultButton = 9;
    QCOMPARE(ThePrompter().Show(prompt), int(Answer::Retry));

    // A scripted prompter takes over while it lives and hands back afterwards.
    {
        ScriptedPrompter prompter;
        prompter.Answer(Answer::Yes);
        QCOMPARE(ThePrompter().Show(prompt), int(Answer::Yes));
    }
    QCOMPARE(ThePrompter().Show(prompt), int(Answer::Retry));
}

QTEST_MAIN(TestErrorDialog)
#include "tst_errordialog.moc"
