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
    void SplashAndAboutFollowTheBrand_data();
    void SplashAndAboutFollowTheBrand();
    void BrandLogosAreDistinctAndKeepTheirShape();
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
    QCOMPARE(Count<frmLogin>() + Count<frmSplash>() + Count<frmMain>(), 0);
    QVERIFY(!TheSession()->IsLoggedIn());
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
    QCOMPARE(ApplicationTitle(), QStringLiteral("VELDRANO Administrator"));
    QVERIFY(TheSession()->IsLoggedIn());
    // The start-up reads the separator from the locale.
    QVERIFY(DecimalSeparator() != QStringLiteral("#"));

    // Loaded once, hidden, and kept with the main window.
    const QList<frmFind*> finds = main->findChildren<frmFind*>();
    QCOMPARE(finds.size(), 1);
    QVERIFY(!finds.first()->isVisible());
}

void TestStartup::SplashAndAboutFollowTheBrand_data() {
    QTest::addColumn<QByteArray>("brand");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("logo");
    QTest::newRow("quorel") << QByteArray("quorel") << "Quorel Administrator"
                            << ":/brand/quorel.svg";
    QTest::newRow("unknown") << QByteArray("acme") << "VELDRANO Administrator" << QString();
}

void TestStartup::SplashAndAboutFollowTheBrand() {
    QFETCH(QByteArray, brand);
    QFETCH(QString, title);
    QFETCH(QString, logo);
    // Reported as the server has it, case and all.
    QCOMPARE(fx_->LogIn(ServerOptions(brand.constData())).GetBrand(), QString(brand));

    frmSplash splash;
    QCOMPARE(ApplicationTitle(), title);
    QCOMPARE(Child<QLabel>(splash, "lblProductName")->text(), title);
    QCOMPARE(Child<QLabel>(splash, "lblVersion")->text(), QStringLiteral("Version 1.0.0"));
    const QPixmap shown = Child<QLabel>(splash, "picLogo")->pixmap();
    QCOMPARE(shown.isNull(), logo.isEmpty());
    if (!logo.isEmpty())
        QCOMPARE(Image(shown),
                 Image(LogoPixmap(logo, Child<QLabel>(splash, "picLogo")->minimumSize(),
                                  shown.devicePixelRatio())));
    // A second splash of the same session adds no second " Administrator".
    frmSplash again;
    QCOMPARE(ApplicationTitle(), title);

    frmAbout about;
    about.show();
    QVERIFY(QTest::qWaitForWindowExposed(&about));
    QCOMPARE(about.windowTitle(), "About " + title);
    QCOMPARE(Child<QLabel>(about, "lblProductName")->text(), title);
    // The console's version and build beside the server's version.
    const QString versions = Child<QLabel>(about, "lblVersion")->text();
    QVERIFY2(versions.contains(QStringLiteral("Console version 1.0.0 (build ")) &&
                 versions.endsWith(QStringLiteral(")\nServer version 1.0.0")),
             qPrintable(versions));
    QTest::mouseClick(Child<QPushButton>(about, "cmdOK"), Qt::LeftButton);
    QVERIFY(!about.isVisible());
    QCOMPARE(about.result(), int(QDialog::Accepted));
}

void TestStartup::BrandLogosAreDistinctAndKeepTheirShape() {
    const QSize box(300, 120);
    const QPixmap veldrano = LogoPixmap(QStringLiteral(":/brand/veldrano.svg"), box);
    const QPixmap quorel = LogoPixmap(QStringLiteral(":/brand/quorel.svg"), box);
    QVERIFY(!veldrano.isNull() && !quorel.isNull());
    QVERIFY(Image(veldrano) != Image(quorel));
    // A box of another shape is filled along one side only.
    QCOMPARE(LogoPixmap(QStringLiteral(":/brand/veldrano.svg"), QSize(150, 150)).size(),
             QSize(150, 60));
    const QPixmap sharp = LogoPixmap(QStringLiteral(":/brand/quorel.svg"), box, 2.0);
    QCOMPARE(sharp.size(), QSize(600, 240));
    QCOMPARE(sharp.deviceIndependentSize(), QSizeF(box));
    QVERIFY(LogoPixmap(QStringLiteral(":/brand/none.svg"), box).isNull());
}

void TestStartup::SystemInformationTool_data() {
    QTest::addColumn<QByteArray>("language");
    QTest::addColumn<QStringList>("installed");
    QTest::addColumn<QString>("started");  // "" when the box says there is none
    QTest::addColumn<QString>("message");

    QTest::newRow("none") << QByteArray("en") << QStringList() << QString()
                          << "System Information Is Unavailable At This Time";
    QTest::newRow("none, German") << QByteArray("de") << QStringList() << QString()
                                  << "Die Systeminformationen sind zurzeit nicht verfügbar";
    QTest::newRow("kinfocenter") << QByteArray("en") << QStringList{"kinfocenter"} << "kinfocenter"
                                 << QString();
    QTest::newRow("both, hardinfo first")
        << QByteArray("en") << QStringList{"kinfocenter", "hardinfo"} << "hardinfo" << QString();
}

void TestStartup::SystemInformationTool() {
    QFETCH(QByteArray, language);
    QFETCH(QStringList, installed);
    QFETCH(QString, started);
    QFETCH(QString, message);
    fx_->LogIn(ServerOptions("", language.constData()));
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
        const Prompt& prompt = fx_->prompter.LastPrompt();
        QCOMPARE(prompt.text, message);
        QCOMPARE(prompt.buttons, PromptButtons::OK);
        QCOMPARE(prompt.title, QStringLiteral("VELDRANO Administrator"));
    } else {
        QTRY_VERIFY(QFile::exists(bin.filePath(started + QStringLiteral(".started"))));
        for (const QString& tool : installed)
            QCOMPARE(QFile::exists(bin.filePath(tool + QStringLiteral(".started"))),
                     tool == started);
    }
    // The box stays open for another look.
    QVERIFY(about.isVisible());
}

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"
