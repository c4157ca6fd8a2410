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
    // How a stored time-out is read is tst_mainwindow's (the session gets it
    // from the same reading).
    QTest::addColumn<QString>("timeout");  // stored; "" for none
    QTest::addColumn<QString>("severity");
    QTest::addColumn<int>("shownSeverity");
    QTest::newRow("fresh profile") << QString() << QString() << 0;
    QTest::newRow("trailing letters") << QString("30") << QString("3x") << 3;
    QTest::newRow("severity beyond the list") << QString("30") << QString("9") << 0;
}

void TestOptions::LoadsStoredValues() {
    QFETCH(QString, timeout);
    QFETCH(QString, severity);
    if (!timeout.isEmpty()) StoreSetting(kTimeout, timeout);
    if (!severity.isEmpty()) StoreSetting(kSeverity, severity);

    OptionsWindow options;
    QCOMPARE(options.timeout->text(),
             timeout.isEmpty() ? QString::number(sessionDefault_) : timeout);
    QTEST(options.severity->currentIndex(), "shownSeverity");
}

void TestOptions::InvalidTimeoutRefused_data() {
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("shown");  // what the field took of it
    QTest::addColumn<QString>("message");
    const auto row = [](const char* name, const char* typed, const char* shown,
                        const char* message) {
        QTest::newRow(name) << QString(typed) << QString(shown) << QString(message);
    };
    const char* range = "The valid range for 'Server Timeout' is from 1 to 32767.";
    row("empty", "", "", "The field 'Server Timeout' cannot be empty.");
    row("zero", "0", "0", range);
    // Digits only, five at most.
    row("beyond 16 bits", "9x9-9.9 99+9", "99999", range);
}

void TestOptions::InvalidTimeoutRefused() {
    QFETCH(QString, typed);
    QFETCH(QString, shown);
    OptionsWindow options;
    options.TypeTimeout(typed);
    QCOMPARE(options.timeout->text(), shown);
    QTest::keyClick(options.severity, Qt::Key_Down);

    fx_->prompter.Answer(Answer::OK);
    // Enter presses the default button, OK.
    QTest::keyClick(options.timeout, Qt::Key_Return);

    QCOMPARE(fx_->prompter.Prompts().size(), 1);
    QTEST(fx_->prompter.LastPrompt().text, "message");
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
        VerifyNothingChanged(QStringLiteral("20"));
    }
    {
        OptionsWindow options;
        options.TypeTimeout(QStringLiteral("45"));
        for (int i = 0; i < 4; ++i) QTest::keyClick(options.severity, Qt::Key_Down);
        QTest::mouseClick(Child<QPushButton>(options.dialog, "cmdOK"), Qt::LeftButton);
        QVERIFY(!options.dialog.isVisible());
        QCOMPARE(StoredSetting(kTimeout), QStringLiteral("45"));
        QCOMPARE(StoredSetting(kSeverity), QStringLiteral("4"));
        QCOMPARE(TheSession()->GetTimeout(), 45);
    }
    // The main window's menu opens the dialog modally over it, with the
    // saved values (the next start's time-out is tst_mainwindow's).
    frmMain main;
    main.show();
    QVERIFY(QTest::qWaitForWindowExposed(&main));
    QString timeout;
    WhenShown<frmOptions>([&](frmOptions& dialog) {
        if (dialog.isModal() && dialog.parentWidget() == &main)
            timeout = Child<QLineEdit>(dialog, "edtServerTimeout")->text();
        dialog.reject();
    });
    Child<QAction>(main, "mnuViewOptions")->trigger();
    QCOMPARE(timeout, QStringLiteral("45"));
}

QTEST_MAIN(TestOptions)
#include "tst_options.moc"
