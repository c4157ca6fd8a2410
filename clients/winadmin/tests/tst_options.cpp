// The options dialog: server time-out and event severity, driven through its
// fields against the reference server.

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "session/ServerSession.h"
#include "shell/frmMain.h"
#include "shell/frmOptions.h"
#include "support/ConsoleFixture.h"

using namespace winadmin;

namespace {

const QString kTimeout = QStringLiteral("Server Timeout");
const QString kSeverity = QStringLiteral("Severity");

// The dialog as the administrator sees it: shown, active, controls by name.
struct OptionsWindow {
    OptionsWindow() { ShowActive(dialog); }
    void TypeTimeout(const QString& text) {
        timeout->clear();
        QTest::keyClicks(timeout, text);
    }
    frmOptions dialog;
    QLineEdit* timeout = Child<QLineEdit>(dialog, "edtServerTimeout");
    QComboBox* severity = Child<QComboBox>(dialog, "cboSeverity");
};

}  // namespace

class TestOptions : public ConsoleSuite {
    Q_OBJECT

private slots:
    void LoadsStoredValues_data();
    void LoadsStoredValues();
    void InvalidTimeoutRefused_data();
    void InvalidTimeoutRefused();
    void CancelWritesNothingOkSavesForTheNextStart();

private:
    // Nothing written, the session's time-out as it was.
    void VerifyNothingChanged(const QString& storedTimeout = kUnset);

    void SetUp() override { sessionDefault_ = TheSession()->GetTimeout(); }

    int sessionDefault_ = 0;
};

void TestOptions::VerifyNothingChanged(const QString& storedTimeout) {
    QCOMPARE(StoredSetting(kTimeout), storedTimeout);
    QCOMPARE(StoredSetting(kSeverity), kUnset);
    QCOMPARE(TheSession()->GetTimeout(), sessionDefault_);
}

void TestOptions::LoadsStoredValues_data() {
    QTest::addColumn<QString>("timeout");       // stored; "" for none
    QTest::addColumn<QString>("severity");      // stored; "" for none
    QTest::addColumn<QString>("shownTimeout");  // "" for the session's time-out
    QTest::addColumn<int>("shownSeverity");
    QTest::addColumn<QString>("severityText");
    const auto row = [](const char* name, const char* timeout, const char* severity,
                        const char* shownTimeout, int shownSeverity, const char* severityText) {
        QTest::newRow(name) << QString(timeout) << QString(severity) << QString(shownTimeout)
                            << shownSeverity << QString(severityText);
    };
    row("fresh profile", "", "", "", 0, "None");
    row("trailing letters", "12abc", "3x", "12", 3, "Error");
    row("severity beyond the list", "30", "9", "30", 0, "None");
    row("unusable time-out", "0", "-1", "", 0, "None");
}

void TestOptions::LoadsStoredValues() {
    QFETCH(QString, timeout);
    QFETCH(QString, severity);
    QFETCH(QString, shownTimeout);
    QFETCH(int, shownSeverity);
    if (!timeout.isEmpty()) StoreSetting(kTimeout, timeout);
    if (!severity.isEmpty()) StoreSetting(kSeverity, severity);

    OptionsWindow options;
    QCOMPARE(options.timeout->text(),
             shownTimeout.isEmpty() ? QString::number(sessionDefault_) : shownTimeout);
    QCOMPARE(options.severity->currentIndex(), shownSeverity);
    QTEST(options.severity->currentText(), "severityText");
}

void TestOptions::InvalidTimeoutRefused_data() {
    QTest::addColumn<QByteArray>("language");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("shown");  // what the field took of it
    QTest::addColumn<QString>("message");
    const auto row = [](const char* name, const char* language, const char* typed,
                        const char* shown, const char* message) {
        QTest::newRow(name) << QByteArray(language) << QString(typed) << QString(shown)
                            << QString(message);
    };
    const char* range = "The valid range for 'Server Timeout' is from 1 to 32767.";
    row("empty", "en", "", "", "The field 'Server Timeout' cannot be empty.");
    row("empty, German", "de", "", "", "Das Feld 'Server-Zeitlimit' darf nicht leer sein.");
    row("zero", "en", "0", "0", range);
    // Digits only, five at most.
    row("beyond 16 bits", "en", "9x9-9.9 99+9", "99999", range);
}

void TestOptions::InvalidTimeoutRefused() {
    QFETCH(QByteArray, language);
    QFETCH(QString, typed);
    QFETCH(QString, shown);
    QFETCH(QString, message);
    fx_->LogIn(ServerOptions("", language.constData()));
    OptionsWindow options;
    options.TypeTimeout(typed);
    QCOMPARE(options.timeout->text(), shown);
    QTest::keyClick(options.severity, Qt::Key_Down);

    fx_->prompter.Answer(Answer::OK);
    // Enter presses the default button, OK.
    QTest::keyClick(options.timeout, Qt::Key_Return);

    QCOMPARE(fx_->prompter.Prompts().size(), 1);
    const Prompt& refusal = fx_->prompter.LastPrompt();
    QCOMPARE(refusal.text, message);
    QCOMPARE(refusal.icon, PromptIcon::Exclamation);
    QCOMPARE(refusal.buttons, PromptButtons::OK);
    QCOMPARE(refusal.title, options.dialog.windowTitle());
    QVERIFY(options.dialog.isVisible());
    QCOMPARE(QApplication::focusWidget(), options.timeout);
    QCOMPARE(options.timeout->selectedText(), shown);
    VerifyNothingChanged();
}

void TestOptions::CancelWritesNothingOkSavesForTheNextStart() {
    StoreSetting(kTimeout, QStringLiteral("20"));
    {
        OptionsWindow options;
        options.TypeTimeout(QStringLiteral("99"));
        QTest::keyClick(options.severity, Qt::Key_Down);
        QTest::mouseClick(Child<QPushButton>(options.dialog, "cmdCancel"), Qt::LeftButton);
        QVERIFY(!options.dialog.isVisible());
        QCOMPARE(options.dialog.result(), int(QDialog::Rejected));
        VerifyNothingChanged(QStringLiteral("20"));
    }
    {
        OptionsWindow options;
        options.TypeTimeout(QStringLiteral("45"));
        for (int i = 0; i < 4; ++i) QTest::keyClick(options.severity, Qt::Key_Down);
        QTest::mouseClick(Child<QPushButton>(options.dialog, "cmdOK"), Qt::LeftButton);
        QVERIFY(!options.dialog.isVisible());
        QCOMPARE(options.dialog.result(), int(QDialog::Accepted));
        QCOMPARE(StoredSetting(kTimeout), QStringLiteral("45"));
        QCOMPARE(StoredSetting(kSeverity), QStringLiteral("4"));
        QCOMPARE(TheSession()->GetTimeout(), 45);
    }
    // The next start: a new session with its own default, then the main
    // window's load hands it the chosen time-out; its menu opens the dialog
    // modally over it, with the saved values.
    SetTheSession(fx_->server->Login());
    QCOMPARE(TheSession()->GetTimeout(), sessionDefault_);
    frmMain main;
    QCOMPARE(TheSession()->GetTimeout(), 45);
    main.show();
    QVERIFY(QTest::qWaitForWindowExposed(&main));
    QWidget* parent = nullptr;
    bool modal = false;
    QString timeout;
    int severity = -1;
    WhenShown<frmOptions>([&](frmOptions& dialog) {
        parent = dialog.parentWidget();
        modal = dialog.isModal();
        timeout = Child<QLineEdit>(dialog, "edtServerTimeout")->text();
        severity = Child<QComboBox>(dialog, "cboSeverity")->currentIndex();
        dialog.reject();
    });
    Child<QAction>(main, "mnuViewOptions")->trigger();
    QCOMPARE(parent, &main);
    QVERIFY(modal);
    QCOMPARE(timeout, QStringLiteral("45"));
    QCOMPARE(severity, 4);
    // Not kept after it closed.
    QVERIFY(main.findChildren<frmOptions*>().isEmpty());
}

QTEST_MAIN(TestOptions)
#include "tst_options.moc"
