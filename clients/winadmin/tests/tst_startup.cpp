// The console's start-up against the reference server, under a German
// locale: the login dialog, the splash with the brand's title, the main
// window, and the settings store it reads.

#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTest>

#include "common/AppContext.h"
#include "common/Settings.h"
#include "session/ServerSession.h"
#include "shell/Startup.h"
#include "shell/frmLogin.h"
#include "shell/frmMain.h"
#include "shell/frmSplash.h"
#include "support/ConsoleFixture.h"
#include "support/Loopback.h"

using namespace winadmin;

namespace {

// Windows of type W that exist, or only those that show.
template <class W>
int Count(bool visibleOnly = false) {
    int count = 0;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (qobject_cast<W*>(window) && (window->isVisible() || !visibleOnly)) ++count;
    return count;
}

const QString kProduct = QStringLiteral("VELDRANO Administrator");
const QString kMain = QStringLiteral("MainForm");
const QString kLeft = QStringLiteral("Left");
const QString kLastServer = QStringLiteral("LastAdminServer");
const QString kLeftKey =
    QStringLiteral("Software/Tarnex/VELDRANO Administrator/MainForm/Left/Default");

QString StoredHost() {
    return GetSetting(kVendor, kLastServer, QStringLiteral("<none>"));
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

class TestStartup : public ConsoleSuite {
    Q_OBJECT

public:
    TestStartup() : ConsoleSuite(Server::None) {}

private slots:
    void CancelledLoginEndsTheProgram();
    void LoginLeadsThroughTheSplashToTheMainWindow();
    void RefusalSelectsTheFieldToCorrect();
    void OtherLoginErrorsGoThroughTheErrorDialog();
    void SplashFollowsTheBrand();
    void TextIsStoredAndReadAsTheClassicConsoleDid();
    void BatchWritesTheStoreOnceAtItsEnd();
    void LeadingNumberReadsThePointWhateverTheLocale();

private:
    // QSettings objects of one process share unwritten changes, so batches
    // are checked on the file itself.
    QString FileText() const {
        QFile file(fx_->SettingsFile());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
    void SetUp() override {
        // Each case starts from the title the program is built with.
        SetApplicationTitle(BrandFor(QString()).title);
    }
    void TearDown() override { qunsetenv("VELDRANO_SPLASH_MS"); }
};

void TestStartup::CancelledLoginEndsTheProgram() {
    fx_->StartServer();
    bool sawLogin = false;
    WhenShown<frmLogin>([&](frmLogin& login) {
        sawLogin = true;
        QTest::keyClicks(Child<QLineEdit>(login, "edtHostName"), QStringLiteral("atlas-7"));
        QTest::mouseClick(Child<QPushButton>(login, "cmdCancel"), Qt::LeftButton);
    });

    // Main answers at once: no event loop is entered after a cancelled login.
    QCOMPARE(Main(*qApp), 0);
    QVERIFY(sawLogin);
    QCOMPARE(Count<frmSplash>() + Count<frmMain>(), 0);
    // Not one setting written.
    QVERIFY(!QFile::exists(fx_->SettingsFile()));
}

void TestStartup::LoginLeadsThroughTheSplashToTheMainWindow() {
    fx_->StartServer();
    qputenv("VELDRANO_SPLASH_MS", "300");
    SetDecimalSeparator(QStringLiteral("#"));

    // Login dialogs and shown main windows while the splash shows.
    int loginWindows = -1, mainWindows = -1;
    QLineEdit::EchoMode echo = QLineEdit::Normal;
    WhenShown<frmLogin>([&](frmLogin& login) {
        WhenShown<frmSplash>([&](frmSplash&) {
            loginWindows = Count<frmLogin>();
            mainWindows = Count<frmMain>(true);
        });
        QTest::keyClicks(Child<QLineEdit>(login, "edtHostName"), QStringLiteral("  atlas-7  "));
        QTest::keyClicks(Child<QLineEdit>(login, "edtPassword"), TestServer::Password);
        echo = Child<QLineEdit>(login, "edtPassword")->echoMode();
        QTest::mouseClick(Child<QPushButton>(login, "cmdOK"), Qt::LeftButton);
        // A refused login would keep the modal dialog, and the test, waiting.
        if (login.isVisible())
            QTest::mouseClick(Child<QPushButton>(login, "cmdCancel"), Qt::LeftButton);
    });

    std::unique_ptr<frmMain> main = StartConsole();
    QVERIFY(main && main->isVisible());
    QCOMPARE(echo, QLineEdit::Password);
    // Remembered as the server reports it, without the blanks typed around it.
    QCOMPARE(StoredHost(), QStringLiteral("atlas-7"));

    // The splash showed while the main window loaded, after the login had
    // gone, and went before the main window appeared.
    QCOMPARE(loginWindows + mainWindows, 0);
    QCOMPARE(Count<frmSplash>(), 0);

    // The start-up reads the separator from the (German) locale.
    QCOMPARE(NumericCharacters(), QStringLiteral(",0123456789"));
}

void TestStartup::RefusalSelectsTheFieldToCorrect() {
    fx_->StartServer();
    for (bool wrongHost : {false, true}) {
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
        QCOMPARE(fx_->prompter.Prompts().size(), wrongHost ? 2 : 1);
        const QString refusal = fx_->prompter.LastPrompt().text;
        QVERIFY2(refusal.endsWith(wrongHost ? " (81002AF9)." : " (80070005)."),
                 qPrintable(refusal));
        QVERIFY(login.dialog.isVisible());
        // Both fields as typed; the one to correct has the focus, selected whole.
        QCOMPARE(login.host->text(), host);
        QCOMPARE(login.password->text(), password);
        QLineEdit* toCorrect = wrongHost ? login.host : login.password;
        QCOMPARE(login.dialog.focusWidget(), toCorrect);
        QCOMPARE(toCorrect->selectedText(), toCorrect->text());
        QCOMPARE(StoredHost(), QStringLiteral("<none>"));
    }
}

void TestStartup::OtherLoginErrorsGoThroughTheErrorDialog() {
    fx_->StartServer();
    LoginWindow login;
    QVERIFY(login.Complete());
    login.Type(login.host, QStringLiteral("atlas-7"));
    // The server holds the workstation back after five refusals in a row,
    // even for the right password: a failure that may pass.
    for (int attempt = 0; attempt < 5; ++attempt) {
        Retype(login.password, QStringLiteral("guess %1").arg(attempt));
        fx_->prompter.Answer(Answer::OK);
        login.ClickOK();
    }
    Retype(login.password, TestServer::Password);

    // Retry repeats the login at once, Cancel ends the attempt. The box's
    // buttons and title are the error dialog's rule (tst_qtprompter).
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

void TestStartup::SplashFollowsTheBrand() {
    const QString title = QStringLiteral("Quorel Administrator");
    // Reported as the server has it, case and all.
    QCOMPARE(fx_->LogIn(ServerOptions("quoRel")).GetBrand(), QStringLiteral("quoRel"));

    frmSplash splash;
    QCOMPARE(Child<QLabel>(splash, "lblProductName")->text(), title);
    // A second splash of the same session adds no second " Administrator".
    frmSplash again;
    QCOMPARE(ApplicationTitle(), title);

    // A near miss of a known brand: the built-in title and no logo, and the
    // product named as the server spells it.
    QCOMPARE(BrandFor(QStringLiteral("kelvar ")).title, QStringLiteral("VELDRANO"));
    QVERIFY(BrandFor(QStringLiteral("kelvar ")).logoPath.isEmpty());
    QCOMPARE(ProductTitle(QStringLiteral("kelvar ")), QStringLiteral("kelvar  Administrator"));
}

void TestStartup::TextIsStoredAndReadAsTheClassicConsoleDid() {
    // What was written is the trimmed text, as the default value of a subkey:
    // a value beside the subkey would not be found by an older console.
    QVERIFY(SaveSetting(kVendor, kLastServer, QStringLiteral("  mx-01  ")));
    QSettings raw(fx_->SettingsFile(), QSettings::IniFormat);
    QCOMPARE(raw.value(QStringLiteral("Software/Tarnex/LastAdminServer/Default")).toString(),
             QStringLiteral("mx-01"));
    QVERIFY(!raw.contains(QStringLiteral("Software/Tarnex/LastAdminServer")));

    // Saving blanks leaves a value that reads as absent.
    QVERIFY(SaveSetting(kVendor, kLastServer, QStringLiteral("   ")));
    QCOMPARE(GetSetting(kVendor, kLastServer, QStringLiteral("dflt")), QStringLiteral("dflt"));

    // What another program stored is read as the classic buffer held it;
    // plain and section settings share the reading. The cut at 199
    // characters comes before the trim: blanks that end up last go as well.
    const std::pair<QString, QString> cases[] = {
        {QStringLiteral("mx-01\0junk"), QStringLiteral("mx-01")},
        {QString(198, u'x') + QStringLiteral("  tail"), QString(198, u'x')}};
    for (const auto& [stored, expected] : cases) {
        QSettings(fx_->SettingsFile(), QSettings::IniFormat).setValue(kLeftKey, stored);
        QCOMPARE(GetSectionSetting(kVendor, kProduct, kMain, kLeft, {}), expected);
    }

    // Sections and plain names do not collide (products apart are
    // tst_mainwindow's: the brand chooses the key).
    const QString view = QStringLiteral("AdmView");
    QVERIFY(SaveSetting(kVendor, kLeft, QStringLiteral("plain")));
    QVERIFY(SaveSetting(kVendor, kMain, QStringLiteral("section as a name")));
    QVERIFY(SaveSectionSetting(kVendor, kProduct, kMain, kLeft, QStringLiteral("main")));
    QVERIFY(SaveSectionSetting(kVendor, kProduct, view, kLeft, QStringLiteral("view")));

    QCOMPARE(GetSetting(kVendor, kLeft, {}), QStringLiteral("plain"));
    QCOMPARE(GetSetting(kVendor, kMain, {}), QStringLiteral("section as a name"));
    QCOMPARE(GetSectionSetting(kVendor, kProduct, kMain, kLeft, {}), QStringLiteral("main"));
    QCOMPARE(GetSectionSetting(kVendor, kProduct, view, kLeft, {}), QStringLiteral("view"));
}

void TestStartup::BatchWritesTheStoreOnceAtItsEnd() {
    {
        SettingsBatch batch;
        {
            SettingsBatch nested;  // a batch inside a batch does not write early
            SaveSectionSetting(kVendor, kProduct, kMain, kLeft, " 1200 ");
            nested.Finish();
        }
        QVERIFY(!FileText().contains(QStringLiteral("1200")));
        // What was saved is read back at once, before the store is written.
        QCOMPARE(GetSectionSetting(kVendor, kProduct, kMain, kLeft, {}), QStringLiteral("1200"));
        batch.Finish();
    }
    QCOMPARE(QSettings(fx_->SettingsFile(), QSettings::IniFormat).value(kLeftKey).toString(),
             QStringLiteral("1200"));
    // A batch left by an exception still writes what was set.
    try {
        SettingsBatch batch;
        SaveSetting(kVendor, kLastServer, QStringLiteral("mx-02"));
        throw std::runtime_error("interrupted");
    } catch (const std::runtime_error&) {
    }
    QVERIFY(FileText().contains(QStringLiteral("mx-02")));
}

void TestStartup::LeadingNumberReadsThePointWhateverTheLocale() {
    // Stored numbers use "." whatever the administrator's (here German)
    // locale says; what is not a number gives the fallback.
    const std::pair<const char*, double> cases[] = {
        {"1.5x", 1.5}, {"1,5", 1.0}, {"abc", -99.0}, {"2e3 px", 2000.0}};
    for (const auto& [text, expected] : cases)
        QCOMPARE(LeadingNumber(QString::fromLatin1(text), -99.0), expected);
}

int main(int argc, char** argv) {
    // The administrator's locale, as the console finds it at start-up: its
    // separator differs from the built-in one.
    qputenv("LC_ALL", "de_DE.UTF-8");
    QApplication app(argc, argv);
    app.setAttribute(Qt::AA_Use96Dpi, true);
    TestStartup test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}
#include "tst_startup.moc"
