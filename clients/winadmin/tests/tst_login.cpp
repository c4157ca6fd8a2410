// The login dialog against the reference server: what the administrator
// types, what the console says back, and what it remembers.

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "common/Settings.h"
#include "session/ServerSession.h"
#include "shell/frmLogin.h"
#include "support/ConsoleFixture.h"
#include "support/Loopback.h"

using namespace winadmin;

namespace {

QString StoredHost() {
    return GetSetting(kVendor, QStringLiteral("LastAdminServer"), QStringLiteral("<none>"));
}

// The dialog as the administrator sees it: shown, active, fields by name.
struct LoginWindow {
    LoginWindow() { active = ShowActive(dialog); }
    bool Complete() const { return active && host && password && ok; }
    void Type(QLineEdit* field, const QString& text) {
        field->setFocus();
        QTest::keyClicks(field, text);
    }
    void ClickOK() { QTest::mouseClick(ok, Qt::LeftButton); }

    frmLogin dialog;
    bool active = false;
    QLineEdit* host = Child<QLineEdit>(dialog, "edtHostName");
    QLineEdit* password = Child<QLineEdit>(dialog, "edtPassword");
    QPushButton* ok = Child<QPushButton>(dialog, "cmdOK");
};

}  // namespace

class TestLogin : public ConsoleSuite {
    Q_OBJECT

public:
    TestLogin() : ConsoleSuite(Server::Listening) {}

private slots:
    void RightPasswordByKeyboardRemembersTheReportedHost();
    void RefusalSelectsTheFieldToCorrect_data();
    void RefusalSelectsTheFieldToCorrect();
    void OtherErrorsGoThroughTheErrorDialog();
};

void TestLogin::RightPasswordByKeyboardRemembersTheReportedHost() {
    LoginWindow login;
    QVERIFY(login.Complete());
    // The session exists before anyone typed a thing.
    ServerSession* session = TheSession();
    QVERIFY(session);
    // Field labels end in a colon here too, though no label table is loaded.
    QCOMPARE(Child<QLabel>(login.dialog, "lblPassword")->text(), QStringLiteral("&Password:"));

    // The keyboard alone: the host field first, a label's mnemonic to the next.
    QCOMPARE(QApplication::focusWidget(), login.host);
    QTest::keyClicks(login.host, QStringLiteral("  atlas-7  "));
    QTest::keyClick(login.host, Qt::Key_P, Qt::AltModifier);
    QCOMPARE(QApplication::focusWidget(), login.password);
    QTest::keyClicks(login.password, TestServer::Password);
    QCOMPARE(login.password->echoMode(), QLineEdit::Password);
    QTest::keyClick(login.password, Qt::Key_Return);

    QVERIFY(login.dialog.LoginResult());
    QVERIFY(!login.dialog.isVisible());
    QCOMPARE(TheSession(), session);
    QVERIFY(session->IsLoggedIn());
    // Remembered as the server reports it, without the blanks typed around it,
    // and shown selected next time: typing replaces it.
    QCOMPARE(StoredHost(), QStringLiteral("atlas-7"));
    LoginWindow next;
    QCOMPARE(next.host->selectedText(), QStringLiteral("atlas-7"));
}

void TestLogin::RefusalSelectsTheFieldToCorrect_data() {
    QTest::addColumn<bool>("wrongHost");
    QTest::newRow("wrong password") << false;
    QTest::newRow("unreachable host") << true;
}

void TestLogin::RefusalSelectsTheFieldToCorrect() {
    QFETCH(bool, wrongHost);
    // The program's own session, which connects to whatever is typed.
    if (wrongHost) frmLogin::SetSessionFactory({});
    const QString host = wrongHost ? ClosedLoopbackHost() : QStringLiteral(" atlas-7");
    const QString password = wrongHost ? TestServer::Password : QStringLiteral("not it");
    LoginWindow login;
    QVERIFY(login.Complete());
    login.Type(login.host, host);
    login.Type(login.password, password);
    fx_->prompter.Answer(Answer::OK);
    login.ClickOK();

    // Not the common error dialog: the administrator's to correct.
    QCOMPARE(fx_->prompter.Prompts().size(), 1);
    const Prompt& refusal = fx_->prompter.LastPrompt();
    QCOMPARE(refusal.icon, PromptIcon::Exclamation);
    QCOMPARE(refusal.title, QStringLiteral("Kelvar.Administrator"));
    QVERIFY2(refusal.text.endsWith(wrongHost ? " (81002AF9)." : " (80070005)."),
             qPrintable(refusal.text));
    QVERIFY(login.dialog.isVisible());
    // Both fields as typed; the one to correct has the focus, selected whole.
    QCOMPARE(login.host->text(), host);
    QCOMPARE(login.password->text(), password);
    QLineEdit* toCorrect = wrongHost ? login.host : login.password;
    QCOMPARE(login.dialog.focusWidget(), toCorrect);
    QCOMPARE(toCorrect->selectedText(), toCorrect->text());
    QCOMPARE(StoredHost(), QStringLiteral("<none>"));
}

void TestLogin::OtherErrorsGoThroughTheErrorDialog() {
    LoginWindow login;
    QVERIFY(login.Complete());
    login.Type(login.host, QStringLiteral("atlas-7"));
    // The server holds the workstation back after five refusals in a row,
    // even for the right password: a failure that may pass.
    for (int attempt = 0; attempt < 5; ++attempt) {
        login.password->clear();
        QTest::keyClicks(login.password, QStringLiteral("guess %1").arg(attempt));
        fx_->prompter.Answer(Answer::OK);
        login.ClickOK();
    }
    login.password->clear();
    QTest::keyClicks(login.password, TestServer::Password);

    // Retry repeats the login at once, Cancel ends the attempt. The box's
    // buttons and title are the error dialog's rule (tst_errordialog).
    fx_->prompter.Answer({Answer::Retry, Answer::Cancel});
    login.ClickOK();
    const QList<ScriptedPrompter::Record>& prompts = fx_->prompter.Prompts();
    QCOMPARE(prompts.size(), 7);
    QVERIFY2(prompts.last().prompt.text.endsWith(QStringLiteral(" (81000004).")),
             qPrintable(prompts.last().prompt.text));
    QVERIFY(login.dialog.isVisible());
    QCOMPARE(StoredHost(), QStringLiteral("<none>"));

    // Ignore goes on with the steps after the failed one.
    fx_->prompter.Answer(Answer::Ignore);
    login.ClickOK();
    QCOMPARE(prompts.size(), 8);
    QVERIFY(login.dialog.LoginResult());
    QCOMPARE(StoredHost(), QStringLiteral("atlas-7"));
}

QTEST_MAIN(TestLogin)
#include "tst_login.moc"
