// The login dialog against the reference server: what the administrator
// types, what the console says back, and what it remembers.

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

#include "common/Settings.h"
#include "shell/frmLogin.h"
#include "support/ScriptedPrompter.h"
#include "support/TestServer.h"

using namespace winadmin;

namespace {

const QString kSource = QStringLiteral("Kelvar.Administrator");

QString StoredHost() {
    return GetSetting(kVendor, QStringLiteral("LastAdminServer"), QStringLiteral("<none>"));
}

// A loopback port that nobody listens on (taken, then given back).
quint16 ClosedPort() {
    QTcpServer probe;
    if (!probe.listen(QHostAddress::LocalHost)) return 0;
    const quint16 port = probe.serverPort();
    probe.close();
    return port;
}

// The dialog as the administrator sees it: shown, active, fields by name.
class LoginWindow {
public:
    LoginWindow() {
        dialog.show();
        dialog.activateWindow();
        active = QTest::qWaitForWindowActive(&dialog);
        host = dialog.findChild<QLineEdit*>(QStringLiteral("edtHostName"));
        password = dialog.findChild<QLineEdit*>(QStringLiteral("edtPassword"));
        ok = dialog.findChild<QPushButton*>(QStringLiteral("cmdOK"));
        cancel = dialog.findChild<QPushButton*>(QStringLiteral("cmdCancel"));
    }

    bool Complete() const { return active && host && password && ok && cancel; }

    void Type(QLineEdit* field, const QString& text) {
        field->setFocus();
        QTest::keyClicks(field, text);
    }
    void ClickOK() { QTest::mouseClick(ok, Qt::LeftButton); }

    frmLogin dialog;
    bool active = false;
    QLineEdit* host = nullptr;
    QLineEdit* password = nullptr;
    QPushButton* ok = nullptr;
    QPushButton* cancel = nullptr;
};

}  // namespace

class TestLogin : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void RightPasswordLogsInAndRemembersTheReportedHost();
    void WrongPasswordSelectsThePasswordAndAllowsAnotherAttempt();
    void HostErrorsSelectTheHostName_data();
    void HostErrorsSelectTheHostName();
    void TransientFailureOffersRetryThatRepeatsTheLogin();
    void ThrottledLoginCanBeCancelledAndTriedLater();
    void CancelAndEscapeWriteNothing();
    void RemembersTheLastHost_data();
    void RemembersTheLastHost();
    void KeyboardAloneLogsIn();

private:
    std::unique_ptr<QTemporaryDir> settingsDir_;
    std::unique_ptr<TestServer> server_;
    std::unique_ptr<ScriptedPrompter> prompter_;
};

void TestLogin::init() {
    settingsDir_ = std::make_unique<QTemporaryDir>();
    QVERIFY(settingsDir_->isValid());
    UseSettingsFile(settingsDir_->filePath(QStringLiteral("settings.ini")));
    server_ = std::make_unique<TestServer>();
    prompter_ = std::make_unique<ScriptedPrompter>();
    frmLogin::SetSessionFactory(
        [this] { return std::make_unique<GrpcServerSession>(server_->Channel()); });
}

void TestLogin::cleanup() {
    // Checked last: a failed check ends cleanup, and the next case must
    // still start from a clean state.
    const int unusedAnswers = prompter_ ? prompter_->UnusedAnswers() : 0;
    frmLogin::SetSessionFactory({});
    SetTheSession(nullptr);
    prompter_.reset();
    server_.reset();
    UseNativeSettings();
    settingsDir_.reset();
    QCOMPARE(unusedAnswers, 0);
}

void TestLogin::RightPasswordLogsInAndRemembersTheReportedHost() {
    LoginWindow login;
    QVERIFY(login.Complete());
    // Nothing remembered yet: an empty field, and the session exists before
    // anyone typed a thing.
    QCOMPARE(login.host->text(), QString());
    ServerSession* session = TheSession();
    QVERIFY(session);
    QVERIFY(!session->IsLoggedIn());

    login.Type(login.host, QStringLiteral("  atlas-7  "));
    login.Type(login.password, TestServer::Password);
    QCOMPARE(login.password->echoMode(), QLineEdit::Password);
    login.ClickOK();

    QVERIFY(prompter_->Prompts().isEmpty());
    QVERIFY(login.dialog.LoginResult());
    QCOMPARE(login.dialog.result(), int(QDialog::Accepted));
    QVERIFY(!login.dialog.isVisible());
    QCOMPARE(TheSession(), session);
    QVERIFY(session->IsLoggedIn());
    // The server reports the host without the blanks typed around it.
    QCOMPARE(session->GetHostName(), QStringLiteral("atlas-7"));
    QCOMPARE(StoredHost(), QStringLiteral("atlas-7"));
}

void TestLogin::WrongPasswordSelectsThePasswordAndAllowsAnotherAttempt() {
    LoginWindow login;
    QVERIFY(login.Complete());
    login.Type(login.host, QStringLiteral(" atlas-7"));
    login.Type(login.password, QStringLiteral("not the password"));
    prompter_->Answer(Answer::OK);
    login.ClickOK();

    QCOMPARE(prompter_->Prompts().size(), 1);
    const Prompt& refusal = prompter_->LastPrompt();
    QCOMPARE(refusal.icon, PromptIcon::Exclamation);
    QCOMPARE(refusal.buttons, PromptButtons::OK);
    QCOMPARE(refusal.title, kSource);
    QVERIFY2(refusal.text.endsWith(QStringLiteral(" (80070005).")), qPrintable(refusal.text));
    QVERIFY(refusal.text.startsWith(QStringLiteral("Access is denied")));

    QVERIFY(!login.dialog.LoginResult());
    QVERIFY(login.dialog.isVisible());
    QCOMPARE(login.host->text(), QStringLiteral(" atlas-7"));
    QCOMPARE(login.dialog.focusWidget(), login.password);
    QCOMPARE(login.password->selectedText(), QStringLiteral("not the password"));
    QCOMPARE(StoredHost(), QStringLiteral("<none>"));

    // The selected password is simply typed over.
    ServerSession* session = TheSession();
    QTest::keyClicks(login.password, TestServer::Password);
    QCOMPARE(login.password->text(), TestServer::Password);
    login.ClickOK();
    QVERIFY(login.dialog.LoginResult());
    QCOMPARE(TheSession(), session);
    QCOMPARE(StoredHost(), QStringLiteral("atlas-7"));
}

void TestLogin::HostErrorsSelectTheHostName_data() {
    QTest::addColumn<QString>("host");
    QTest::newRow("nobody listens") << QStringLiteral("127.0.0.1:%1").arg(ClosedPort());
    QTest::newRow("not a host name") << QStringLiteral("mail server!");
    QTest::newRow("port out of range") << QStringLiteral("localhost:70000");
}

void TestLogin::HostErrorsSelectTheHostName() {
    QFETCH(QString, host);
    // The program's own session, which connects to whatever is typed.
    frmLogin::SetSessionFactory({});
    LoginWindow login;
    QVERIFY(login.Complete());
    login.Type(login.host, host);
    login.Type(login.password, TestServer::Password);
    prompter_->Answer(Answer::OK);
    login.ClickOK();

    QCOMPARE(prompter_->Prompts().size(), 1);
    const Prompt& refusal = prompter_->LastPrompt();
    QCOMPARE(refusal.icon, PromptIcon::Exclamation);
    QCOMPARE(refusal.buttons, PromptButtons::OK);
    QCOMPARE(refusal.title, kSource);
    QVERIFY2(refusal.text.endsWith(QStringLiteral(" (81002AF9).")), qPrintable(refusal.text));

    QVERIFY(!login.dialog.LoginResult());
    QVERIFY(login.dialog.isVisible());
    QCOMPARE(login.dialog.focusWidget(), login.host);
    QCOMPARE(login.host->selectedText(), host);
    QCOMPARE(login.password->text(), TestServer::Password);
    QCOMPARE(StoredHost(), QStringLiteral("<none>"));
}

void TestLogin::TransientFailureOffersRetryThatRepeatsTheLogin() {
    // Accepts connections and never answers: every login attempt runs into
    // the session's deadline, a failure that may pass.
    QTcpServer silent;
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    frmLogin::SetSessionFactory([] {
        auto session = std::make_unique<GrpcServerSession>();
        session->SetTimeout(1);
        return session;
    });
    LoginWindow login;
    QVERIFY(login.Complete());
    login.Type(login.host, QStringLiteral("127.0.0.1:%1").arg(silent.serverPort()));
    login.Type(login.password, TestServer::Password);
    prompter_->Answer({Answer::Retry, Answer::Retry, Answer::Cancel});

    QElapsedTimer clock;
    clock.start();
    login.ClickOK();
    const qint64 elapsed = clock.elapsed();

    // Three attempts: the first and one per Retry; Cancel ends it.
    QCOMPARE(prompter_->Prompts().size(), 3);
    for (const auto& record : prompter_->Prompts()) {
        QCOMPARE(record.prompt.icon, PromptIcon::Critical);
        QCOMPARE(record.prompt.buttons, PromptButtons::RetryCancel);
        QCOMPARE(record.prompt.title, kSource);
        QVERIFY2(record.prompt.text.endsWith(QStringLiteral(" (81000001).")),
                 qPrintable(record.prompt.text));
    }
    QVERIFY2(elapsed >= 2700, qPrintable(QString::number(elapsed)));
    QVERIFY(!login.dialog.LoginResult());
    QVERIFY(login.dialog.isVisible());
    QCOMPARE(StoredHost(), QStringLiteral("<none>"));
}

void TestLogin::ThrottledLoginCanBeCancelledAndTriedLater() {
    LoginWindow login;
    QVERIFY(login.Complete());
    login.Type(login.host, QStringLiteral("atlas-7"));
    // The server holds the workstation back after five refusals in a row.
    for (int attempt = 0; attempt < 5; ++attempt) {
        login.password->clear();
        QTest::keyClicks(login.password, QStringLiteral("guess %1").arg(attempt));
        prompter_->Answer(Answer::OK);
        login.ClickOK();
    }
    QCOMPARE(prompter_->Prompts().size(), 5);

    login.password->clear();
    QTest::keyClicks(login.password, TestServer::Password);
    prompter_->Answer(Answer::Cancel);
    login.ClickOK();
    QCOMPARE(prompter_->Prompts().size(), 6);
    const Prompt& held = prompter_->LastPrompt();
    QCOMPARE(held.icon, PromptIcon::Critical);
    QCOMPARE(held.buttons, PromptButtons::RetryCancel);
    QVERIFY2(held.text.endsWith(QStringLiteral(" (81000004).")), qPrintable(held.text));
    QVERIFY(!login.dialog.LoginResult());
    QVERIFY(login.dialog.isVisible());

    // Once the hold is over the same dialog and session log in.
    QTest::qWait(1200);
    login.ClickOK();
    QCOMPARE(prompter_->Prompts().size(), 6);
    QVERIFY(login.dialog.LoginResult());
    QCOMPARE(StoredHost(), QStringLiteral("atlas-7"));
}

void TestLogin::CancelAndEscapeWriteNothing() {
    const QString file = settingsDir_->filePath(QStringLiteral("settings.ini"));
    {
        LoginWindow login;
        QVERIFY(login.Complete());
        login.Type(login.host, QStringLiteral("atlas-7"));
        login.Type(login.password, TestServer::Password);
        QTest::mouseClick(login.cancel, Qt::LeftButton);
        QVERIFY(!login.dialog.LoginResult());
        QCOMPARE(login.dialog.result(), int(QDialog::Rejected));
        QVERIFY(!login.dialog.isVisible());
        QVERIFY(!TheSession()->IsLoggedIn());
    }
    {
        LoginWindow login;
        QVERIFY(login.Complete());
        login.Type(login.host, QStringLiteral("atlas-7"));
        QTest::keyClick(login.host, Qt::Key_Escape);
        QVERIFY(!login.dialog.LoginResult());
        QVERIFY(!login.dialog.isVisible());
    }
    QVERIFY(prompter_->Prompts().isEmpty());
    QVERIFY(!QFile::exists(file) || QFile(file).size() == 0);
}

void TestLogin::RemembersTheLastHost_data() {
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("shown");
    QTest::newRow("a host") << QStringLiteral("atlas-7") << QStringLiteral("atlas-7");
    QTest::newRow("host with port")
        << QStringLiteral("10.4.0.12:47200") << QStringLiteral("10.4.0.12:47200");
    QTest::newRow("blanks only") << QStringLiteral("     ") << QString();
}

void TestLogin::RemembersTheLastHost() {
    QFETCH(QString, stored);
    QFETCH(QString, shown);
    // Written as a person's settings file has it, blanks included.
    {
        QSettings file(settingsDir_->filePath(QStringLiteral("settings.ini")),
                       QSettings::IniFormat);
        file.setValue(QStringLiteral("Software/Tarnex/LastAdminServer/Default"), stored);
    }
    LoginWindow login;
    QVERIFY(login.Complete());
    QCOMPARE(login.host->text(), shown);
    QCOMPARE(login.host->selectedText(), shown);
    if (shown.isEmpty()) return;

    // Typing replaces the remembered host.
    QTest::keyClicks(login.host, QStringLiteral("borealis"));
    QCOMPARE(login.host->text(), QStringLiteral("borealis"));
}

void TestLogin::KeyboardAloneLogsIn() {
    LoginWindow login;
    QVERIFY(login.Complete());
    // Each field label carries the mnemonic of its field.
    auto* hostLabel = login.dialog.findChild<QLabel*>(QStringLiteral("lblHostName"));
    auto* passwordLabel = login.dialog.findChild<QLabel*>(QStringLiteral("lblPassword"));
    QVERIFY(hostLabel && passwordLabel);
    QCOMPARE(hostLabel->buddy(), login.host);
    QCOMPARE(passwordLabel->buddy(), login.password);

    QCOMPARE(QApplication::focusWidget(), login.host);
    QTest::keyClicks(login.host, QStringLiteral("atlas-7"));
    QTest::keyClick(login.host, Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), login.password);
    QTest::keyClick(login.password, Qt::Key_H, Qt::AltModifier);
    QCOMPARE(QApplication::focusWidget(), login.host);
    QTest::keyClick(login.host, Qt::Key_P, Qt::AltModifier);
    QCOMPARE(QApplication::focusWidget(), login.password);
    QTest::keyClicks(login.password, TestServer::Password);
    QTest::keyClick(login.password, Qt::Key_Return);

    QVERIFY(prompter_->Prompts().isEmpty());
    QVERIFY(login.dialog.LoginResult());
    QCOMPARE(StoredHost(), QStringLiteral("atlas-7"));
}

QTEST_MAIN(TestLogin)
#include "tst_login.moc"
