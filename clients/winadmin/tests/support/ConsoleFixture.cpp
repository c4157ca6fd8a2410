#include "support/ConsoleFixture.h"

#include <QAbstractItemView>
#include <QClipboard>
#include <QLineEdit>
#include <QTest>
#include <stdexcept>

#include "common/Settings.h"
#include "session/ServerSession.h"
#include "shell/frmLogin.h"

namespace winadmin {

TestServer::Options ServerOptions(const char* brand, const char* language, bool tcp) {
    TestServer::Options options;
    options.brand = brand;
    options.language = language;
    options.tcp = tcp;
    return options;
}

QString StoredSetting(const QString& name, const QString& section) {
    return GetSectionSetting(kVendor, GetProductKeyName(), section, name, kUnset);
}

void StoreSetting(const QString& name, const QString& value, const QString& section) {
    SaveSectionSetting(kVendor, GetProductKeyName(), section, name, value);
}

bool ShowActive(QWidget& window) {
    window.show();
    window.activateWindow();
    return QTest::qWaitForWindowActive(&window);
}

void Retype(QLineEdit* field, const QString& text) {
    field->selectAll();
    if (text.isEmpty())
        QTest::keyClick(field, Qt::Key_Backspace);
    else
        QTest::keyClicks(field, text);
}

void Paste(QLineEdit* field, const QString& text) {
    QApplication::clipboard()->setText(text);
    QTest::keyClick(field, Qt::Key_V, Qt::ControlModifier);
}

QPoint RowPoint(QAbstractItemView* view, int row) {
    const QModelIndex index = view->model()->index(row, 0);
    view->scrollTo(index);
    return view->visualRect(index).center();
}

void ClickRow(QAbstractItemView* view, int row, Qt::KeyboardModifiers modifiers, bool doubleClick) {
    const QPoint at = RowPoint(view, row);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, modifiers, at);
    if (doubleClick) QTest::mouseDClick(view->viewport(), Qt::LeftButton, modifiers, at);
}

ConsoleFixture::ConsoleFixture() {
    if (!settingsDir_.isValid())
        throw std::runtime_error("cannot create a temporary directory for the settings");
    UseSettingsFile(SettingsFile());
}

ConsoleFixture::~ConsoleFixture() {
    frmLogin::SetSessionFactory({});
    SetTheSession(nullptr);
    server.reset();
    UseNativeSettings();
}

int ConsoleFixture::Close(std::unique_ptr<ConsoleFixture>& fixture) {
    const int unused = fixture ? fixture->prompter.UnusedAnswers() : 0;
    fixture.reset();
    return unused;
}

TestServer& ConsoleFixture::StartServer(const TestServer::Options& options) {
    SetTheSession(nullptr);
    server = std::make_unique<TestServer>(options);
    frmLogin::SetSessionFactory(
        [this] { return std::make_unique<GrpcServerSession>(server->Channel()); });
    return *server;
}

ServerSession& ConsoleFixture::LogIn(const TestServer::Options& options) {
    StartServer(options);
    SetTheSession(server->Login());
    return *TheSession();
}

QString ConsoleFixture::SettingsFile() const {
    return settingsDir_.filePath(QStringLiteral("settings.ini"));
}

void ConsoleSuite::init() {
    fx_ = std::make_unique<ConsoleFixture>();
    if (server_ == Server::Listening) fx_->StartServer(ServerOptions("", language_));
    if (server_ == Server::LoggedIn) fx_->LogIn(ServerOptions("", language_));
    SetUp();
}

void ConsoleSuite::cleanup() {
    TearDown();
    QCOMPARE(ConsoleFixture::Close(fx_), 0);
}

}  // namespace winadmin
