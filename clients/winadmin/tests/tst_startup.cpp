// The console's start-up against the reference server, under a German
// locale: the login dialog, the splash with the brand's title, the main
// window, the About box's tool, and the settings store it reads.

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTest>

#include "common/AppContext.h"
#include "common/Settings.h"
#include "session/ServerSession.h"
#include "shell/Startup.h"
#include "shell/frmAbout.h"
#include "shell/frmFind.h"
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

// A program on PATH that leaves a mark when it is started.
bool WriteTool(const QString& folder, const QString& name) {
    QFile script(folder + u'/' + name);
    if (!script.open(QIODevice::WriteOnly)) return false;
    script.write(
        QStringLiteral("#!/bin/sh\necho started > '%1.started'\n").arg(script.fileName()).toUtf8());
    script.close();
    return script.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                 QFileDevice::ExeOwner);
}

const QString kProduct = QStringLiteral("VELDRANO Administrator");
const QString kMain = QStringLiteral("MainForm");
const QString kLastServer = QStringLiteral("LastAdminServer");
const QString kLastServerKey = QStringLiteral("Software/Tarnex/LastAdminServer/Default");
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
    void RefusalSelectsTheFieldToCorrect_data();
    void RefusalSelectsTheFieldToCorrect();
    void OtherLoginErrorsGoThroughTheErrorDialog();
    void SplashFollowsTheBrand();
    void UnknownBrandIsNamedAsTheServerSpellsIt();
    void SystemInformationTool_data();
    void SystemInformationTool();
    void SavedValuesAreTrimmedAndLiveAsDefaultValuesOfSubkeys();
    void StoredTextIsReadAsTheClassicBufferHeldIt_data();
    void StoredTextIsReadAsTheClassicBufferHeldIt();
    void SectionsAndPlainNamesDoNotCollide();
    void StoreThatCannotBeWrittenThrowsOnSaveOnly();
    void BatchWritesTheStoreOnceAtItsEnd();
    void LeadingNumber_data();
    void LeadingNumber();

private:
    // What a program other than the console left in the store.
    void StoreRaw(const QString& key, const QString& value) {
        QSettings(file_, QSettings::IniFormat).setValue(key, value);
    }
    // QSettings objects of one process share unwritten changes, so batches
    // are checked on the file itself.
    QString FileText() const {
        QFile file(file_);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
    // A file in the folder of the test's settings file.
    QString Beside(const char* name) const {
        return QFileInfo(file_).dir().filePath(QLatin1String(name));
    }

    void SetUp() override {
        // Each case starts from the title the program is built with.
        SetApplicationTitle(BrandFor(QString()).title);
        path_ = qgetenv("PATH");
        file_ = fx_->SettingsFile();
    }
    void TearDown() override {
        qputenv("PATH", path_);
        qunsetenv("VELDRANO_SPLASH_MS");
    }

    QByteArray path_;
    QString file_;
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
    int loginWindows = -1;
    int mainWindows = -1;
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
    QVERIFY(main);
    QCOMPARE(echo, QLineEdit::Password);
    // Remembered as the server reports it, without the blanks typed around it.
    QCOMPARE(StoredHost(), QStringLiteral("atlas-7"));

    // The splash showed while the main window loaded, after the login had
    // gone, and went before the main window appeared.
    QCOMPARE(loginWindows, 0);
    QCOMPARE(mainWindows, 0);
    QCOMPARE(Count<frmSplash>(), 0);

    QVERIFY(main->isVisible());
    // The start-up reads the separator from the (German) locale.
    QCOMPARE(NumericCharacters(), QStringLiteral(",0123456789"));
    // A locale without a separator leaves numeric fields with the point.
    SetDecimalSeparator(QString());
    QCOMPARE(NumericCharacters(), QStringLiteral(".0123456789"));

    // Loaded once, hidden, and kept with the main window.
    const QList<frmFind*> finds = main->findChildren<frmFind*>();
    QVERIFY(finds.size() == 1 && !finds.first()->isVisible());
}

void TestStartup::RefusalSelectsTheFieldToCorrect_data() {
    QTest::addColumn<bool>("wrongHost");
    QTest::newRow("wrong password") << false;
    QTest::newRow("unreachable host") << true;
}

void TestStartup::RefusalSelectsTheFieldToCorrect() {
    QFETCH(bool, wrongHost);
    fx_->StartServer();
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
    const QString refusal = fx_->prompter.LastPrompt().text;
    QVERIFY2(refusal.endsWith(wrongHost ? " (81002AF9)." : " (80070005)."), qPrintable(refusal));
    QVERIFY(login.dialog.isVisible());
    // Both fields as typed; the one to correct has the focus, selected whole.
    QCOMPARE(login.host->text(), host);
    QCOMPARE(login.password->text(), password);
    QLineEdit* toCorrect = wrongHost ? login.host : login.password;
    QCOMPARE(login.dialog.focusWidget(), toCorrect);
    QCOMPARE(toCorrect->selectedText(), toCorrect->text());
    QCOMPARE(StoredHost(), QStringLiteral("<none>"));
}

void TestStartup::OtherLoginErrorsGoThroughTheErrorDialog() {
    fx_->StartServer();
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
}

void TestStartup::UnknownBrandIsNamedAsTheServerSpellsIt() {
    // A near miss of a known brand: the built-in title and no logo.
    const QString word = QStringLiteral("kelvar ");
    QCOMPARE(BrandFor(word).title, QStringLiteral("VELDRANO"));
    QVERIFY(BrandFor(word).logoPath.isEmpty());
    QCOMPARE(ProductTitle(word), QStringLiteral("kelvar  Administrator"));
}

void TestStartup::SystemInformationTool_data() {
    QTest::addColumn<QStringList>("installed");
    QTest::addColumn<QString>("started");  // "" when the box says there is none

    QTest::newRow("none") << QStringList() << QString();
    QTest::newRow("both, hardinfo first") << QStringList{"kinfocenter", "hardinfo"} << "hardinfo";
}

void TestStartup::SystemInformationTool() {
    QFETCH(QStringList, installed);
    QFETCH(QString, started);
    fx_->LogIn(ServerOptions());
    frmSplash splash;  // settles the title, as at start-up

    QTemporaryDir bin;
    QVERIFY(bin.isValid());
    for (const QString& tool : installed) QVERIFY(WriteTool(bin.path(), tool));
    // Only this folder: whatever the machine has installed stays out.
    qputenv("PATH", bin.path().toLocal8Bit());

    frmAbout about;
    about.show();
    if (started.isEmpty()) fx_->prompter.Answer(Answer::OK);
    QTest::mouseClick(Child<QPushButton>(about, "cmdSysInfo"), Qt::LeftButton);

    QCOMPARE(fx_->prompter.Prompts().size(), started.isEmpty() ? 1 : 0);
    if (!started.isEmpty()) {
        QTRY_VERIFY(QFile::exists(bin.filePath(started + QStringLiteral(".started"))));
        for (const QString& tool : installed)
            QCOMPARE(QFile::exists(bin.filePath(tool + QStringLiteral(".started"))),
                     tool == started);
    }
}

void TestStartup::SavedValuesAreTrimmedAndLiveAsDefaultValuesOfSubkeys() {
    // What was written is the trimmed text, as the default value of a subkey:
    // a value beside the subkey would not be found by an older console.
    QVERIFY(SaveSetting(kVendor, kLastServer, QStringLiteral("  mx-01  ")));
    QSettings raw(file_, QSettings::IniFormat);
    QCOMPARE(raw.value(kLastServerKey).toString(), QStringLiteral("mx-01"));
    QVERIFY(!raw.contains(QStringLiteral("Software/Tarnex/LastAdminServer")));

    // Saving blanks leaves a value that reads as absent.
    QVERIFY(SaveSetting(kVendor, kLastServer, QStringLiteral("   ")));
    QCOMPARE(GetSetting(kVendor, kLastServer, QStringLiteral("dflt")), QStringLiteral("dflt"));
}

void TestStartup::StoredTextIsReadAsTheClassicBufferHeldIt_data() {
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("expected");

    const QString dflt = QStringLiteral("<default>");
    QTest::newRow("blanks only") << QStringLiteral("     ") << dflt;
    QTest::newRow("text after NUL") << QStringLiteral("mx-01\0junk") << QStringLiteral("mx-01");
    const QString longValue = QString(250, u'a');
    QTest::newRow("250 characters") << longValue << longValue.left(199);
    // The cut comes before the trim: blanks that end up last go as well.
    QTest::newRow("cut at a blank")
        << QString(198, u'x') + QStringLiteral("  tail") << QString(198, u'x');
}

void TestStartup::StoredTextIsReadAsTheClassicBufferHeldIt() {
    QFETCH(QString, stored);
    QFETCH(QString, expected);
    // Plain and section settings share the reading.
    StoreRaw(kLeftKey, stored);
    QCOMPARE(GetSectionSetting(kVendor, kProduct, kMain, QStringLiteral("Left"),
                               QStringLiteral("<default>")),
             expected);
}

void TestStartup::SectionsAndPlainNamesDoNotCollide() {
    // Products apart are tst_mainwindow's (the brand chooses the key).
    const QString name = QStringLiteral("Left");
    const QString view = QStringLiteral("AdmView");
    QVERIFY(SaveSetting(kVendor, name, QStringLiteral("plain")));
    QVERIFY(SaveSetting(kVendor, kMain, QStringLiteral("section as a name")));
    QVERIFY(SaveSectionSetting(kVendor, kProduct, kMain, name, QStringLiteral("main")));
    QVERIFY(SaveSectionSetting(kVendor, kProduct, view, name, QStringLiteral("view")));

    QCOMPARE(GetSetting(kVendor, name, {}), QStringLiteral("plain"));
    QCOMPARE(GetSetting(kVendor, kMain, {}), QStringLiteral("section as a name"));
    QCOMPARE(GetSectionSetting(kVendor, kProduct, kMain, name, {}), QStringLiteral("main"));
    QCOMPARE(GetSectionSetting(kVendor, kProduct, view, name, {}), QStringLiteral("view"));
}

void TestStartup::StoreThatCannotBeWrittenThrowsOnSaveOnly() {
    // A path below a plain file cannot be created, whoever runs the test.
    QFile blocker(Beside("blocker"));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    UseSettingsFile(Beside("blocker/settings.ini"));

    QCOMPARE(GetSetting(kVendor, kLastServer, QStringLiteral("dflt")), QStringLiteral("dflt"));
    try {
        SaveSetting(kVendor, kLastServer, QStringLiteral("mx-01"));
        QFAIL("a store that cannot be written must refuse the save");
    } catch (const SettingsError& error) {
        // The message names the store that failed.
        QVERIFY2(QString::fromUtf8(error.what()).contains(QStringLiteral("blocker")), error.what());
    }
}

void TestStartup::BatchWritesTheStoreOnceAtItsEnd() {
    {
        SettingsBatch batch;
        {
            SettingsBatch nested;  // a batch inside a batch does not write early
            SaveSectionSetting(kVendor, kProduct, kMain, QStringLiteral("Left"), " 1200 ");
            nested.Finish();
        }
        QVERIFY(!FileText().contains(QStringLiteral("1200")));
        // What was saved is read back at once, before the store is written.
        QCOMPARE(GetSectionSetting(kVendor, kProduct, kMain, QStringLiteral("Left"), {}),
                 QStringLiteral("1200"));
        batch.Finish();
    }
    QCOMPARE(QSettings(file_, QSettings::IniFormat).value(kLeftKey).toString(),
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

void TestStartup::LeadingNumber_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("expected");

    const double fallback = -99.0;
    QTest::newRow("negative, blanks around") << QStringLiteral("  -42  ") << -42.0;
    QTest::newRow("fraction then letter") << QStringLiteral("1.5x") << 1.5;
    QTest::newRow("letters") << QStringLiteral("abc") << fallback;
    QTest::newRow("comma is no decimal point") << QStringLiteral("1,5") << 1.0;
    QTest::newRow("exponent") << QStringLiteral("2e3 px") << 2000.0;
    QTest::newRow("exponent without digits") << QStringLiteral("2e") << 2.0;
}

void TestStartup::LeadingNumber() {
    QFETCH(QString, text);
    QFETCH(double, expected);
    // Stored numbers use "." whatever the administrator's (here German)
    // locale says.
    QCOMPARE(winadmin::LeadingNumber(text, -99.0), expected);
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
