// The login dialog against the reference server: what the administrator
// types, what the console says back, and what it remembers.

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTest>

#include "common/Settings.h"
#include "session/ServerSession.h"
#include "shell/frmLogin.h"
#include "support/ConsoleFixture.h"
#include "support/Loopback.h"

using namespace winadmin;

namespace {

const QString kSource = QStringLiteral("Kelvar.Administrator");

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
    void RemembersTheLastHost_data();
    void RemembersTheLastHost();
};

void TestLogin::RightPasswordByKeyboardRemembersTheReportedHost() {
    LoginWindow login;
    QVERIFY(login.Complete());
    // Nothing remembered yet: an empty field, and the session exists before
    // anyone typed a thing.
    QCOMPARE(login.host->text(), QString());
    ServerSession* session = TheSession();
    QVERIFY(session && !session->IsLoggedIn());
    // Field labels end in a colon here too, though no label table is loaded.
    QCOMPARE(Child<QLabel>(login.dialog, "lblHostName")->text(), QStringLiteral("&Host name:"));
    QCOMPARE(Child<QLabel>(login.dialog, "lblPassword")->text(), QStringLiteral("&Password:"));

    // The keyboard alone: Tab, then each label's mnemonic leads to its field.
    QCOMPARE(QApplication::focusWidget(), login.host);
    QTest::keyClicks(login.host, QStringLiteral("  atlas-7  "));
    QTest::keyClick(login.host, Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), login.password);
    QTest::keyClick(login.password, Qt::Key_H, Qt::AltModifier);
    QCOMPARE(QApplication::focusWidget(), login.host);
    QTest::keyClick(login.host, Qt::Key_P, Qt::AltModifier);
    QCOMPARE(QApplication::focusWidget(), login.password);
    QTest::keyClicks(login.password, TestServer::Password);
    QCOMPARE(login.password->echoMode(), QLineEdit::Password);
    QTest::keyClick(login.password, Qt::Key_Return);

    QVERIFY(login.dialog.LoginResult());
    QCOMPARE(login.dialog.result(), int(QDialog::Accepted));
    QVERIFY(!login.dialog.isVisible());
    QCOMPARE(TheSession(), session);
    QVERIFY(session->IsLoggedIn());
    // Remembered as the server reports it, without the blanks typed around it.
    QCOMPARE(session->GetHostName(), QStringLiteral("atlas-7"));
    QCOMPARE(StoredHost(), QStringLiteral("atlas-7"));
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
    QCOMPARE(refusal.buttons, PromptButtons::OK);
    QCOMPARE(refusal.title, kSource);
    QVERIFY2(refusal.text.endsWith(wrongHost ? " (81002AF9)." : " (80070005)."),
             qPrintable(refusal.text));
    QVERIFY(!login.dialog.LoginResult());
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
    // title is the error dialog's rule (tst_errordialog).
    fx_->prompter.Answer({Answer::Retry, Answer::Cancel});
    login.ClickOK();
    const QList<ScriptedPrompter::Record>& prompts = fx_->prompter.Prompts();
    QCOMPARE(prompts.size(), 7);
    for (const auto& record : prompts.mid(5)) {
        QCOMPARE(record.prompt.icon, PromptIcon::Critical);
        QCOMPARE(record.prompt.buttons, PromptButtons::RetryCancel);
        QVERIFY2(record.prompt.text.endsWith(QStringLiteral(" (81000004).")),
                 qPrintable(record.prompt.text));
    }
    QVERIFY(!login.dialog.LoginResult());
    QVERIFY(login.dialog.isVisible());
    QCOMPARE(StoredHost(), QStringLiteral("<none>"));

    // Ignore goes on with the steps after the failed one.
    fx_->prompter.Answer(Answer::Ignore);
    login.ClickOK();
    QCOMPARE(prompts.size(), 8);
    QVERIFY(login.dialog.LoginResult());
    QVERIFY(!login.dialog.isVisible());
    QCOMPARE(StoredHost(), QStringLiteral("atlas-7"));
}

void TestLogin::RemembersTheLastHost_data() {
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("shown");
    QTest::newRow("host with port") << QString("10.4.0.12:47200") << QString("10.4.0.12:47200");
    QTest::newRow("blanks only") << QString("     ") << QString();
}

void TestLogin::RemembersTheLastHost() {
    QFETCH(QString, stored);
    QFETCH(QString, shown);
    // Written as a person's settings file has it, blanks included.
    QSettings(fx_->SettingsFile(), QSettings::IniFormat)
        .setValue(QStringLiteral("Software/Tarnex/LastAdminServer/Default"), stored);
    LoginWindow login;
    QVERIFY(login.Complete());
    QCOMPARE(login.host->text(), shown);
    // Selected whole: typing replaces the remembered host.
    QCOMPARE(login.host->selectedText(), shown);
    QTest::keyClicks(login.host, QStringLiteral("borealis"));
    QCOMPARE(login.host->text(), QStringLiteral("borealis"));
}

QTEST_MAIN(TestLogin)
#include "tst_login.moc"
