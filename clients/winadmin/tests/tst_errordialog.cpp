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
    void FormatsErrorText_data();
    void FormatsErrorText();
    void ChoosesButtonsByFamily_data();
    void ChoosesButtonsByFamily();
    void ResetsBusyPointerBeforeShowing();
    void ShowsSessionErrorFromTheTable();
    void FallbackPrompterAnswersDefaultButton();
};

void TestErrorDialog::FormatsErrorText_data() {
    QTest::addColumn<QString>("description");
    QTest::addColumn<uint>("number");
    QTest::addColumn<QString>("expected");

    QTest::newRow("access denied") << QStringLiteral("Access is denied") << 0x80070005u
                                   << QStringLiteral("Access is denied (80070005).");
    QTest::newRow("letters upper case")
        << QStringLiteral("Odd answer") << 0x8101000Du << QStringLiteral("Odd answer (8101000D).");
    QTest::newRow("short number") << QStringLiteral("Small") << 5u << QStringLiteral("Small (5).");
    QTest::newRow("empty description")
        << QString() << 0xABCDEF01u << QStringLiteral(" (ABCDEF01).");
}

void TestErrorDialog::FormatsErrorText() {
    QFETCH(QString, description);
    QFETCH(uint, number);
    QFETCH(QString, expected);
    QCOMPARE(FormatErrorText(description, number), expected);
}

void TestErrorDialog::ChoosesButtonsByFamily_data() {
    QTest::addColumn<uint>("number");
    QTest::addColumn<PromptButtons>("buttons");
    QTest::addColumn<int>("answer");

    QTest::newRow("version conflict, retry")
        << 0x81000003u << PromptButtons::RetryCancel << int(Answer::Retry);
    QTest::newRow("time-out, cancel")
        << 0x81000001u << PromptButtons::RetryCancel << int(Answer::Cancel);
    QTest::newRow("not found") << 0x81010002u << PromptButtons::OK << int(Answer::OK);
    QTest::newRow("access denied") << 0x80070005u << PromptButtons::OK << int(Answer::OK);
    QTest::newRow("8000 family") << 0x80004005u << PromptButtons::OK << int(Answer::OK);
    QTest::newRow("unknown family") << 0x12345678u << PromptButtons::OK << int(Answer::OK);
    QTest::newRow("short number") << 5u << PromptButtons::OK << int(Answer::OK);
    // Seven digits that start like the transient family are still no prefix.
    QTest::newRow("seven digits") << 0x08100001u << PromptButtons::OK << int(Answer::OK);
    QTest::newRow("ignore passes through")
        << 0x81010001u << PromptButtons::OK << int(Answer::Ignore);
}

void TestErrorDialog::ChoosesButtonsByFamily() {
    QFETCH(uint, number);
    QFETCH(PromptButtons, buttons);
    QFETCH(int, answer);

    ScriptedPrompter prompter;
    prompter.Answer(answer);
    const QString description = QStringLiteral("Something went wrong");
    const QString source = QStringLiteral("Some.Component");

    QCOMPARE(ShowErrorMessage(number, description, source), answer);

    QCOMPARE(prompter.Prompts().size(), 1);
    const Prompt& shown = prompter.LastPrompt();
    QCOMPARE(shown.buttons, buttons);
    QCOMPARE(shown.icon, PromptIcon::Critical);
    QCOMPARE(shown.title, source);
    QCOMPARE(shown.defaultButton, 1);
    const QString hex = QString::number(number, 16).toUpper();
    QVERIFY(shown.text.startsWith(description));
    QVERIFY2(shown.text.endsWith(QStringLiteral("(%1).").arg(hex)), qPrintable(shown.text));
}

void TestErrorDialog::ResetsBusyPointerBeforeShowing() {
    ScriptedPrompter prompter;
    prompter.Answer(Answer::OK);
    // Nested busy sections, as a failing editor leaves them.
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);

    ShowErrorMessage(0x81010002u, QStringLiteral("Gone"), QStringLiteral("Test"));

    QCOMPARE(prompter.Prompts().size(), 1);
    QVERIFY(!prompter.Prompts().first().busyPointer);
    QVERIFY(QGuiApplication::overrideCursor() == nullptr);
}

void TestErrorDialog::ShowsSessionErrorFromTheTable() {
    // Number, description and source come from the protocol's error table.
    const SessionError conflict = SessionError::FromCode(
        veldrano::admin::v1::ERROR_VERSION_CONFLICT, QStringLiteral("user bob@alpha"));
    QCOMPARE(conflict.Number(), 0x81000003u);
    QVERIFY(conflict.Description().contains(QStringLiteral("another administrator"),
                                            Qt::CaseInsensitive));
    QVERIFY(conflict.Description().endsWith(QStringLiteral(": user bob@alpha")));
    QCOMPARE(conflict.Source(), QStringLiteral("Kelvar.Administrator"));
    QVERIFY(QByteArray(conflict.what()).contains("81000003"));

    ScriptedPrompter prompter;
    prompter.Answer(Answer::Retry);
    QCOMPARE(ShowErrorMessage(conflict), int(Answer::Retry));
    const Prompt& shown = prompter.LastPrompt();
    QCOMPARE(shown.text, FormatErrorText(conflict.Description(), 0x81000003u));
    QCOMPARE(shown.title, conflict.Source());
    QCOMPARE(shown.buttons, PromptButtons::RetryCancel);

    QCOMPARE(ErrorNumber(veldrano::admin::v1::ERROR_HOST_UNREACHABLE), 0x81002AF9u);
    QCOMPARE(ErrorNumber(veldrano::admin::v1::ERROR_NONE), 0u);
}

void TestErrorDialog::FallbackPrompterAnswersDefaultButton() {
    // No scripted prompter here: the process's own fallback answers.
    Prompt prompt;
    prompt.text = QStringLiteral("Delete the user?");
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
        QCOMPARE(prompter.UnusedAnswers(), 0);
    }
    QCOMPARE(ThePrompter().Show(prompt), int(Answer::Retry));
}

QTEST_MAIN(TestErrorDialog)
#include "tst_errordialog.moc"
