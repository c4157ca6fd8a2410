// The console's start-up against the reference server: login, splash with
// the brand's title and logo, the main window with its hidden find dialog,
// and the About box.

#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "common/AppContext.h"
#include "session/ServerSession.h"
#include "shell/Startup.h"
#include "shell/frmAbout.h"
#include "shell/frmFind.h"
#include "shell/frmLogin.h"
#include "shell/frmMain.h"
#include "shell/frmSplash.h"
#include "support/ConsoleFixture.h"

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

QImage Image(const QPixmap& pixmap) {
    return pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
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

}  // namespace

class TestStartup : public ConsoleSuite {
    Q_OBJECT

public:
    TestStartup() : ConsoleSuite(Server::None) {}

private slots:
    void CancelledLoginEndsTheProgram();
    void LoginLeadsThroughTheSplashToTheMainWindow();
    void SplashAndAboutFollowTheBrand();
    void SystemInformationTool_data();
    void SystemInformationTool();

private:
    void SetUp() override {
        // Each case starts from the title the program is built with.
        SetApplicationTitle(BrandFor(QString()).title);
        path_ = qgetenv("PATH");
    }
    void TearDown() override {
        qputenv("PATH", path_);
        qunsetenv("VELDRANO_SPLASH_MS");
    }

    QByteArray path_;
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
    WhenShown<frmLogin>([&](frmLogin& login) {
        WhenShown<frmSplash>([&](frmSplash&) {
            loginWindows = Count<frmLogin>();
            mainWindows = Count<frmMain>(true);
        });
        QTest::keyClicks(Child<QLineEdit>(login, "edtHostName"), QStringLiteral("atlas-7"));
        QTest::keyClicks(Child<QLineEdit>(login, "edtPassword"), TestServer::Password);
        QTest::mouseClick(Child<QPushButton>(login, "cmdOK"), Qt::LeftButton);
        // A refused login would keep the modal dialog, and the test, waiting.
        if (login.isVisible())
            QTest::mouseClick(Child<QPushButton>(login, "cmdCancel"), Qt::LeftButton);
    });

    std::unique_ptr<frmMain> main = StartConsole();
    QVERIFY(main);

    // The splash showed while the main window loaded, after the login had
    // gone, and went before the main window appeared.
    QCOMPARE(loginWindows, 0);
    QCOMPARE(mainWindows, 0);
    QCOMPARE(Count<frmSplash>(), 0);

    QVERIFY(main->isVisible());
    // The start-up reads the separator from the locale.
    QVERIFY(DecimalSeparator() != QStringLiteral("#"));

    // Loaded once, hidden, and kept with the main window.
    const QList<frmFind*> finds = main->findChildren<frmFind*>();
    QVERIFY(finds.size() == 1 && !finds.first()->isVisible());
}

void TestStartup::SplashAndAboutFollowTheBrand() {
    // Which brands are known, and what an unknown one shows, is
    // tst_appcontext's.
    const QString title = QStringLiteral("Quorel Administrator");
    // Reported as the server has it, case and all.
    QCOMPARE(fx_->LogIn(ServerOptions("quoRel")).GetBrand(), QStringLiteral("quoRel"));

    frmSplash splash;
    QCOMPARE(Child<QLabel>(splash, "lblProductName")->text(), title);
    const QPixmap shown = Child<QLabel>(splash, "picLogo")->pixmap();
    QCOMPARE(Image(shown), Image(LogoPixmap(QStringLiteral(":/brand/quorel.svg"),
                                            Child<QLabel>(splash, "picLogo")->minimumSize(),
                                            shown.devicePixelRatio())));
    // A second splash of the same session adds no second " Administrator".
    frmSplash again;
    QCOMPARE(ApplicationTitle(), title);

    frmAbout about;
    QCOMPARE(Child<QLabel>(about, "lblProductName")->text(), title);
    // The console's version and build beside the server's version.
    const QString versions = Child<QLabel>(about, "lblVersion")->text();
    QVERIFY2(versions.contains(QStringLiteral(" 1.0.0 (build ")) &&
                 versions.endsWith(QStringLiteral("Server version 1.0.0")),
             qPrintable(versions));
}

void TestStartup::SystemInformationTool_data() {
    QTest::addColumn<QStringList>("installed");
    QTest::addColumn<QString>("started");  // "" when the box says there is none

    QTest::newRow("none") << QStringList() << QString();
    QTest::newRow("kinfocenter") << QStringList{"kinfocenter"} << "kinfocenter";
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

    if (started.isEmpty()) {
        QCOMPARE(fx_->prompter.Prompts().size(), 1);
        QCOMPARE(fx_->prompter.LastPrompt().text,
                 QStringLiteral("System Information Is Unavailable At This Time"));
    } else {
        QTRY_VERIFY(QFile::exists(bin.filePath(started + QStringLiteral(".started"))));
        for (const QString& tool : installed)
            QCOMPARE(QFile::exists(bin.filePath(tool + QStringLiteral(".started"))),
                     tool == started);
    }
}

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"
