// The console's start-up against the reference server: login, splash with
// the brand's title and logo, the main window with its hidden find dialog,
// and the About box.

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <functional>

#include "common/AppContext.h"
#include "common/Settings.h"
#include "shell/Startup.h"
#include "shell/frmAbout.h"
#include "shell/frmFind.h"
#include "shell/frmLogin.h"
#include "shell/frmMain.h"
#include "shell/frmSplash.h"
#include "support/ScriptedPrompter.h"
#include "support/TestServer.h"

using namespace winadmin;

namespace {

// Calls action with the first window of type W that shows up. The start-up
// runs modal loops of its own, so the test can only act from a timer.
template <class W>
void WhenShown(std::function<void(W&)> action) {
    auto* poll = new QTimer;
    poll->setInterval(5);
    QObject::connect(poll, &QTimer::timeout, [poll, action] {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            auto* wanted = qobject_cast<W*>(window);
            if (!wanted || !wanted->isVisible()) continue;
            poll->stop();
            poll->deleteLater();
            action(*wanted);
            return;
        }
    });
    poll->start();
}

template <class W>
W* FindChild(QWidget& parent, const char* name) {
    return parent.findChild<W*>(QLatin1String(name));
}

template <class W>
int TopLevelCount() {
    int count = 0;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (qobject_cast<W*>(window)) ++count;
    return count;
}

void LogIn(frmLogin& login, const QString& password) {
    auto* host = FindChild<QLineEdit>(login, "edtHostName");
    auto* field = FindChild<QLineEdit>(login, "edtPassword");
    QTest::keyClicks(host, QStringLiteral("atlas-7"));
    QTest::keyClicks(field, password);
    QTest::mouseClick(FindChild<QPushButton>(login, "cmdOK"), Qt::LeftButton);
    // A refused login would keep the modal dialog, and the test, waiting.
    if (login.isVisible())
        QTest::mouseClick(FindChild<QPushButton>(login, "cmdCancel"), Qt::LeftButton);
}

QImage Image(const QPixmap& pixmap) {
    return pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
}

// A program on PATH that leaves a mark when it is started.
bool WriteTool(const QString& folder, const QString& name, const QString& marker) {
    QFile script(folder + u'/' + name);
    if (!script.open(QIODevice::WriteOnly)) return false;
    script.write(QStringLiteral("#!/bin/sh\necho started > '%1'\n").arg(marker).toUtf8());
    script.close();
    return script.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                 QFileDevice::ExeOwner);
}

TestServer::Options ServerWith(const char* word, const char* language = "") {
    TestServer::Options options;
    options.brand = word;
    options.language = language;
    return options;
}

}  // namespace

class TestStartup : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void CancelledLoginEndsTheProgram();
    void LoginLeadsThroughTheSplashToTheMainWindow();
    void SplashFollowsTheBrand_data();
    void SplashFollowsTheBrand();
    void BrandLogosAreDistinctAndKeepTheirShape();
    void AboutShowsTitleAndVersionAndCloses();
    void SystemInformationTool_data();
    void SystemInformationTool();
    void MissingToolIsReportedInTheServersLanguage();

private:
    void StartServer(const TestServer::Options& options = {});
    void LogInDirectly(const TestServer::Options& options = {});
    QString SettingsFile() const { return settingsDir_->filePath(QStringLiteral("settings.ini")); }

    std::unique_ptr<QTemporaryDir> settingsDir_;
    std::unique_ptr<TestServer> server_;
    std::unique_ptr<ScriptedPrompter> prompter_;
    QByteArray path_;
};

void TestStartup::init() {
    settingsDir_ = std::make_unique<QTemporaryDir>();
    QVERIFY(settingsDir_->isValid());
    UseSettingsFile(SettingsFile());
    prompter_ = std::make_unique<ScriptedPrompter>();
    // Each case starts from the title the program is built with.
    SetApplicationTitle(BrandFor(QString()).title);
    path_ = qgetenv("PATH");
}

void TestStartup::cleanup() {
    // Checked last: a failed check ends cleanup, and the next case must
    // still start from a clean state.
    const int unusedAnswers = prompter_ ? prompter_->UnusedAnswers() : 0;
    qputenv("PATH", path_);
    qunsetenv("VELDRANO_SPLASH_MS");
    frmLogin::SetSessionFactory({});
    SetTheSession(nullptr);
    prompter_.reset();
    server_.reset();
    UseNativeSettings();
    settingsDir_.reset();
    QCOMPARE(unusedAnswers, 0);
}

void TestStartup::StartServer(const TestServer::Options& options) {
    server_ = std::make_unique<TestServer>(options);
    frmLogin::SetSessionFactory(
        [this] { return std::make_unique<GrpcServerSession>(server_->Channel()); });
}

void TestStartup::LogInDirectly(const TestServer::Options& options) {
    server_ = std::make_unique<TestServer>(options);
    SetTheSession(server_->Login());
}

void TestStartup::CancelledLoginEndsTheProgram() {
    StartServer();
    bool sawLogin = false;
    WhenShown<frmLogin>([&](frmLogin& login) {
        sawLogin = true;
        QTest::keyClicks(FindChild<QLineEdit>(login, "edtHostName"), QStringLiteral("atlas-7"));
        QTest::mouseClick(FindChild<QPushButton>(login, "cmdCancel"), Qt::LeftButton);
    });

    // Main answers at once: no event loop is entered after a cancelled login.
    QCOMPARE(Main(*qApp), 0);
    QVERIFY(sawLogin);
    QCOMPARE(TopLevelCount<frmMain>(), 0);
    QCOMPARE(TopLevelCount<frmSplash>(), 0);
    QCOMPARE(TopLevelCount<frmLogin>(), 0);
    QVERIFY(!QFile::exists(SettingsFile()));
    QVERIFY(prompter_->Prompts().isEmpty());
}

void TestStartup::LoginLeadsThroughTheSplashToTheMainWindow() {
    StartServer();
    qputenv("VELDRANO_SPLASH_MS", "300");
    SetDecimalSeparator(QStringLiteral("#"));

    struct {
        bool shown = false;
        QString productName;
        QString version;
        bool logo = false;
        bool mainVisible = true;
        int loginWindows = -1;
    } splash;
    WhenShown<frmLogin>([&](frmLogin& login) {
        WhenShown<frmSplash>([&](frmSplash& shown) {
            splash.shown = true;
            splash.productName = FindChild<QLabel>(shown, "lblProductName")->text();
            splash.version = FindChild<QLabel>(shown, "lblVersion")->text();
            splash.logo = !FindChild<QLabel>(shown, "picLogo")->pixmap().isNull();
            splash.loginWindows = TopLevelCount<frmLogin>();
            splash.mainVisible = false;
            for (QWidget* window : QApplication::topLevelWidgets())
                if (qobject_cast<frmMain*>(window) && window->isVisible())
                    splash.mainVisible = true;
        });
        LogIn(login, TestServer::Password);
    });

    std::unique_ptr<frmMain> main = StartConsole();
    QVERIFY(main);
    QVERIFY(prompter_->Prompts().isEmpty());

    // The splash showed while the main window loaded, after the login had
    // gone, and went before the main window appeared.
    QVERIFY(splash.shown);
    QCOMPARE(splash.productName, QStringLiteral("VELDRANO Administrator"));
    QCOMPARE(splash.version, QStringLiteral("Version 1.0.0"));
    QVERIFY(splash.logo);
    QCOMPARE(splash.loginWindows, 0);
    QVERIFY(!splash.mainVisible);
    QCOMPARE(TopLevelCount<frmSplash>(), 0);

    QVERIFY(main->isVisible());
    QCOMPARE(ApplicationTitle(), QStringLiteral("VELDRANO Administrator"));
    QVERIFY(TheSession()->IsLoggedIn());
    QCOMPARE(GetSetting(kVendor, QStringLiteral("LastAdminServer"), QString()),
             QStringLiteral("atlas-7"));
    QVERIFY(DecimalSeparator() != QStringLiteral("#"));

    // Loaded once, hidden, and kept with the main window.
    const QList<frmFind*> finds = main->findChildren<frmFind*>();
    QCOMPARE(finds.size(), 1);
    QVERIFY(!finds.first()->isVisible());

    main->close();
    QVERIFY(!main->isVisible());
}

void TestStartup::SplashFollowsTheBrand_data() {
    QTest::addColumn<QString>("brand");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("logo");

    QTest::newRow("kelvar") << "kelvar"
                            << "VELDRANO Administrator"
                            << ":/brand/veldrano.svg";
    QTest::newRow("upper case") << "KELVAR"
                                << "VELDRANO Administrator"
                                << ":/brand/veldrano.svg";
    QTest::newRow("quorel") << "quorel"
                            << "Quorel Administrator"
                            << ":/brand/quorel.svg";
    QTest::newRow("mixed case") << "QuoRel"
                                << "Quorel Administrator"
                                << ":/brand/quorel.svg";
    QTest::newRow("unknown") << "acme"
                             << "VELDRANO Administrator" << QString();
}

void TestStartup::SplashFollowsTheBrand() {
    QFETCH(QString, brand);
    QFETCH(QString, title);
    QFETCH(QString, logo);
    LogInDirectly(ServerWith(brand.toUtf8().constData()));
    QCOMPARE(TheSession()->GetBrand(), brand);

    frmSplash splash;
    QCOMPARE(ApplicationTitle(), title);
    QCOMPARE(FindChild<QLabel>(splash, "lblProductName")->text(), title);
    QCOMPARE(FindChild<QLabel>(splash, "lblVersion")->text(), QStringLiteral("Version 1.0.0"));
    auto* picture = FindChild<QLabel>(splash, "picLogo");
    if (logo.isEmpty()) {
        QVERIFY(picture->pixmap().isNull());
    } else {
        QVERIFY(!picture->pixmap().isNull());
        const QPixmap expected =
            LogoPixmap(logo, picture->minimumSize(), picture->pixmap().devicePixelRatio());
        QCOMPARE(Image(picture->pixmap()), Image(expected));
    }

    // A second splash of the same session does not add another
    // " Administrator".
    frmSplash again;
    QCOMPARE(ApplicationTitle(), title);
}

void TestStartup::BrandLogosAreDistinctAndKeepTheirShape() {
    const QSize box(300, 120);
    const QPixmap veldrano = LogoPixmap(QStringLiteral(":/brand/veldrano.svg"), box);
    const QPixmap quorel = LogoPixmap(QStringLiteral(":/brand/quorel.svg"), box);
    QVERIFY(!veldrano.isNull());
    QVERIFY(!quorel.isNull());
    QVERIFY(Image(veldrano) != Image(quorel));
    // A box of another shape is filled along one side only.
    const QPixmap tall = LogoPixmap(QStringLiteral(":/brand/veldrano.svg"), QSize(150, 150));
    QCOMPARE(tall.size(), QSize(150, 60));
    const QPixmap sharp = LogoPixmap(QStringLiteral(":/brand/quorel.svg"), box, 2.0);
    QCOMPARE(sharp.size(), QSize(600, 240));
    QCOMPARE(sharp.deviceIndependentSize(), QSizeF(box));
    QVERIFY(LogoPixmap(QStringLiteral(":/brand/none.svg"), box).isNull());
}

void TestStartup::AboutShowsTitleAndVersionAndCloses() {
    LogInDirectly(ServerWith("quorel"));
    frmSplash splash;  // settles the title, as at start-up

    frmAbout about;
    about.show();
    QVERIFY(QTest::qWaitForWindowExposed(&about));
    QCOMPARE(about.windowTitle(), QStringLiteral("About Quorel Administrator"));
    QCOMPARE(FindChild<QLabel>(about, "lblProductName")->text(),
             QStringLiteral("Quorel Administrator"));
    QCOMPARE(FindChild<QLabel>(about, "lblVersion")->text(), QStringLiteral("Version 1.0.0"));
    QCOMPARE(FindChild<QPushButton>(about, "cmdSysInfo")->text(),
             QStringLiteral("&System Info..."));

    QTest::mouseClick(FindChild<QPushButton>(about, "cmdOK"), Qt::LeftButton);
    QVERIFY(!about.isVisible());
    QCOMPARE(about.result(), int(QDialog::Accepted));
    QVERIFY(prompter_->Prompts().isEmpty());
}

void TestStartup::SystemInformationTool_data() {
    QTest::addColumn<QStringList>("installed");
    QTest::addColumn<QString>("started");

    QTest::newRow("none") << QStringList() << QString();
    QTest::newRow("kinfocenter") << QStringList{"kinfocenter"} << "kinfocenter";
    QTest::newRow("both, hardinfo first") << QStringList{"kinfocenter", "hardinfo"} << "hardinfo";
}

void TestStartup::SystemInformationTool() {
    QFETCH(QStringList, installed);
    QFETCH(QString, started);
    LogInDirectly();
    frmSplash splash;

    QTemporaryDir bin;
    QVERIFY(bin.isValid());
    for (const QString& tool : installed)
        QVERIFY(WriteTool(bin.path(), tool, bin.filePath(tool + QStringLiteral(".started"))));
    // Only this folder: whatever the machine has installed stays out.
    qputenv("PATH", bin.path().toLocal8Bit());

    frmAbout about;
    about.show();
    if (started.isEmpty()) prompter_->Answer(Answer::OK);
    QTest::mouseClick(FindChild<QPushButton>(about, "cmdSysInfo"), Qt::LeftButton);

    if (started.isEmpty()) {
        QCOMPARE(prompter_->Prompts().size(), 1);
        const Prompt& prompt = prompter_->LastPrompt();
        QCOMPARE(prompt.text, QStringLiteral("System Information Is Unavailable At This Time"));
        QCOMPARE(prompt.buttons, PromptButtons::OK);
        QCOMPARE(prompt.title, QStringLiteral("VELDRANO Administrator"));
    } else {
        QTRY_VERIFY(QFile::exists(bin.filePath(started + QStringLiteral(".started"))));
        QVERIFY(prompter_->Prompts().isEmpty());
        for (const QString& tool : installed)
            if (tool != started)
                QVERIFY(!QFile::exists(bin.filePath(tool + QStringLiteral(".started"))));
    }
    // The box stays open for another look.
    QVERIFY(about.isVisible());
}

void TestStartup::MissingToolIsReportedInTheServersLanguage() {
    LogInDirectly(ServerWith("", "de"));
    QTemporaryDir bin;
    qputenv("PATH", bin.path().toLocal8Bit());
    frmAbout about;
    about.show();
    prompter_->Answer(Answer::OK);
    QTest::mouseClick(FindChild<QPushButton>(about, "cmdSysInfo"), Qt::LeftButton);
    QCOMPARE(prompter_->LastPrompt().text,
             QStringLiteral("Die Systeminformationen sind zurzeit nicht verfügbar"));
    // The button's own caption came from the same table.
    QCOMPARE(FindChild<QPushButton>(about, "cmdSysInfo")->text(), QStringLiteral("&Systeminfo..."));
}

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"
