#include "support/ConsoleFixture.h"

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

bool ShowActive(QWidget& window) {
    window.show();
    window.activateWindow();
    return QTest::qWaitForWindowActive(&window);
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

}  // namespace winadmin
