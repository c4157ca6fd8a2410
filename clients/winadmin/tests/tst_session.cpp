// The gRPC session against the reference server embedded in the test process:
// its refusals, a call that waits on a server that does not answer, and the
// certificates of a server that serves TLS, pinned, refused or trusted.

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include "common/Settings.h"
#include "service/ServerHost.h"
#include "session/SecureChannel.h"
#include "store/Store.h"
#include "support/ConsoleFixture.h"
#include "support/Loopback.h"
#include "tls/Certificates.h"

using namespace winadmin;
namespace pb = veldrano::admin::v1;

namespace {

// Runs f and answers the SessionError it throws; fails the test when it
// throws nothing.
template <class F>
SessionError Refusal(F&& f) {
    try {
        f();
    } catch (const SessionError& error) {
        return error;
    }
    QTest::qFail("the call was expected to fail", __FILE__, __LINE__);
    return SessionError(0, {}, {});
}

TestServer::Options TlsOptions() {
    TestServer::Options options;
    options.tls = true;
    return options;
}

std::unique_ptr<GrpcServerSession> SessionTo(TestServer& server) {
    auto session = std::make_unique<GrpcServerSession>();
    session->SetHostName(server.TcpHost());
    session->SetPassword(TestServer::Password);
    return session;
}

QString Fingerprint(TestServer& server) {
    return QString::fromStdString(veldrano::tls::Fingerprint(server.Host().CertificatePem()));
}

QString PinOf(TestServer& server) {
    return GetSetting(kVendor,
                      PinnedFingerprintKey(GrpcServerSession::ChannelTarget(server.TcpHost())), {});
}

class PaintCounter : public QWidget {
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent*) override { ++paints; }
};

// Compares numbers in hexadecimal, so a failure reads like the error box.
#define COMPARE_NUMBER(error, expected)                       \
    QCOMPARE(QString::number((error).Number(), 16).toUpper(), \
             QString::number(expected, 16).toUpper())

}  // namespace

class TestSession : public QObject {
    Q_OBJECT

private slots:
    void LoginOpensTheSession();
    void LoginReportsNetworkFailures_data();
    void LoginReportsNetworkFailures();
    void CallsNeedATokenAndExpiredOnesLogInAgainOnce();
    void CallAfterARestartReconnectsAtOnce();
    void TransportFailuresMapToTheAdministratorsErrors_data();
    void TransportFailuresMapToTheAdministratorsErrors();
    void LabelsComeFromMemory();
    void ServerRefusalsKeepTheServersNumbers();
    void RoleRemovalIsOneCommit();
    void ChannelTargetsFromHostText_data();
    void ChannelTargetsFromHostText();
    void HungServerKeepsTheConsolePainting_data();
    void HungServerKeepsTheConsolePainting();
    void AnUnknownCertificateIsPinnedAndHeldTo();
    void ACertificateTheSystemTrustsNeedsNoQuestion();
    void TlsPlansFollowTheProbe();

private:
    // Accepts connections (the kernel completes them) and never says a word.
    QTcpServer silent_;
};

void TestSession::LoginOpensTheSession() {
    TestServer server;
    GrpcServerSession session(server.Channel());
    // A wrong password is tst_startup's.
    session.SetHostName(QStringLiteral("  alpha.example  "));
    session.SetTimeout(7);
    session.SetPassword(TestServer::Password);
    session.Login();
    QVERIFY(session.IsLoggedIn());
    // The name as the server knows it, not as typed.
    QCOMPARE(session.GetHostName(), QStringLiteral("alpha.example"));
    // A time-out chosen before login outlives the server's default.
    QCOMPARE(session.GetTimeout(), 7);
}

void TestSession::LoginReportsNetworkFailures_data() {
    QTest::addColumn<QString>("host");
    QTest::addColumn<uint>("number");
    // The console looks at the server's transport before its first call, so
    // a host that cannot be reached or says nothing costs no call.
    QTest::newRow("nothing listens") << ClosedLoopbackHost() << 0x81002AF9u;
    QTest::newRow("not a host name") << QStringLiteral("two words") << 0x81002AF9u;
    QTest::newRow("silent peer") << SilentLoopbackHost(silent_) << 0x81000001u;
}

void TestSession::LoginReportsNetworkFailures() {
    QFETCH(QString, host);
    QFETCH(uint, number);
    GrpcServerSession session;
    session.SetHostName(host);
    session.SetPassword(TestServer::Password);
    session.SetTimeout(1);

    QElapsedTimer clock;
    clock.start();
    const SessionError error = Refusal([&] { session.Login(); });
    const qint64 elapsed = clock.elapsed();

    COMPARE_NUMBER(error, number);
    QCOMPARE(session.RpcCount(), 0u);
    // The peer that never answers costs the whole time-out, and no more.
    QVERIFY2(elapsed < 10000 && (number != 0x81000001u || elapsed >= 900),
             qPrintable(QString::number(elapsed)));
}

void TestSession::CallsNeedATokenAndExpiredOnesLogInAgainOnce() {
    TestServer server(ServerOptions("", "", true));
    server.AddUserServer(QStringLiteral("alpha"));
    {
        // Without a token the server itself refuses: the call went out.
        GrpcServerSession anonymous(server.Channel());
        COMPARE_NUMBER(Refusal([&] { anonymous.Servers(); }), 0x80070005u);
        QCOMPARE(anonymous.RpcCount(), 1u);
    }

    // A restarted server has forgotten every token (CallAfterARestart shows
    // the login repeated); when the stored password no longer opens it, the
    // refusal of the forgotten token stands: refused call, refused login.
    auto session = server.LoginTcp();
    server.Restart(QStringLiteral("Changed-Password-9"));
    const uint64_t before = session->RpcCount();
    COMPARE_NUMBER(Refusal([&] { session->Servers(); }), 0x80070005u);
    QCOMPARE(session->RpcCount() - before, 2u);
}

void TestSession::CallAfterARestartReconnectsAtOnce() {
    TestServer server(ServerOptions("", "", true));
    server.AddUserServer(QStringLiteral("alpha"));
    auto session = server.LoginTcp();
    server.Shutdown();

    // The administrator keeps trying while the server is down: every call
    // is a transient failure (busy, or unreachable once the console looks
    // for the server anew), and each failed attempt lengthens the wait
    // gRPC would put before its next one.
    QElapsedTimer down;
    down.start();
    int attempts = 0;
    while (down.elapsed() < 2500) {
        const uint32_t number = Refusal([&] { session->Servers(); }).Number();
        QVERIFY2(number == 0x81000002u || number == 0x81002AF9u,
                 qPrintable(QString::number(number, 16)));
        ++attempts;
        QTest::qWait(250);
    }
    QVERIFY(attempts >= 5);

    server.Restart();
    QElapsedTimer back;
    back.start();
    QCOMPARE(session->Servers().size(), size_t(1));
    QVERIFY2(back.elapsed() < 1000, qPrintable(QString::number(back.elapsed())));
    QVERIFY(session->IsLoggedIn());
}

void TestSession::TransportFailuresMapToTheAdministratorsErrors_data() {
    // What the cases against a real server cannot pin down (the server's own
    // numbers are ServerRefusalsKeepTheServersNumbers').
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");
    QTest::addColumn<bool>("atLogin");
    QTest::addColumn<uint>("number");
    using grpc::StatusCode;
    // A call cut by the server going down, whichever way gRPC reports it.
    QTest::newRow("cancelled") << int(StatusCode::CANCELLED) << "Cancelled" << false << 0x81000002u;
    QTest::newRow("unavailable mid-call")
        << int(StatusCode::UNAVAILABLE) << "Socket closed" << false << 0x81000002u;
    QTest::newRow("unavailable at login")
        << int(StatusCode::UNAVAILABLE) << "failed to connect" << true << 0x81002AF9u;
    QTest::newRow("other exhaustion")
        << int(StatusCode::RESOURCE_EXHAUSTED) << "too many calls" << false << 0x81000002u;
    QTest::newRow("unknown") << int(StatusCode::INTERNAL) << "boom" << false << 0x8101000Du;
}

void TestSession::TransportFailuresMapToTheAdministratorsErrors() {
    QFETCH(int, code);
    QFETCH(QString, message);
    QFETCH(bool, atLogin);
    QFETCH(uint, number);
    const QString host = QStringLiteral("alpha.example:47110");
    const grpc::Status status(grpc::StatusCode(code), message.toStdString());
    const SessionError error = GrpcServerSession::MapStatus(status, atLogin, host);
    COMPARE_NUMBER(error, number);
    // Only the unreachable host names itself; only the unknown failure and
    // the exhaustion pass gRPC's words on.
    QCOMPARE(error.Description().contains(host), atLogin);
    QCOMPARE(error.Description().contains(message),
             code == int(grpc::StatusCode::INTERNAL) ||
                 code == int(grpc::StatusCode::RESOURCE_EXHAUSTED));
}

void TestSession::LabelsComeFromMemory() {
    // Over TCP: a call on the in-process channel of a stopped server is not
    // an error gRPC reports, it is a crash.
    TestServer server(ServerOptions("", "de", true));
    auto session = server.LoginTcp();
    const uint64_t calls = session->RpcCount();

    QCOMPARE(session->GetLabel(QStringLiteral("No such key 4711")),
             QStringLiteral("No such key 4711"));
    QCOMPARE(session->RpcCount(), calls);

    // An unchanged table costs one small call and keeps every text.
    session->ReloadLabels();
    QCOMPARE(session->RpcCount(), calls + 1);
    QCOMPARE(session->GetLabel(QStringLiteral("Yes")), QStringLiteral("Ja"));

    // With the server gone, labels still answer while calls fail as busy.
    server.Shutdown();
    QCOMPARE(session->GetLabel(QStringLiteral("Cancel")), QStringLiteral("Abbrechen"));
    COMPARE_NUMBER(Refusal([&] { session->Servers(); }), 0x81000002u);
}

void TestSession::ServerRefusalsKeepTheServersNumbers() {
    // A conflicting save shows through the editors (tst_servereditor).
    TestServer server(ServerOptions("", "", true));
    server.AddUserServer(QStringLiteral("alpha"));
    auto session = server.LoginTcp();
    const QString alpha = QStringLiteral("alpha");
    const QString bob = QStringLiteral("bob");

    UserRecord user = session->GetUser(alpha, bob);
    COMPARE_NUMBER(Refusal([&] { session->CommitUser(user); }), 0x81010006u);
    // Larger than the connection allows; nothing is written (the user is
    // still new below) and the session goes on working.
    user.set_comment(std::string(5 * 1024 * 1024, 'x'));
    COMPARE_NUMBER(Refusal([&] { session->CommitUser(user); }), 0x81010012u);
    user.set_comment("Bob Arnesen");
    const int64_t created = session->CommitUser(user);
    user = session->GetUser(alpha, bob);
    user.set_comment("Bob A.");
    session->CommitUser(user);
    // Not the Retry family: the same delete would be refused again.
    COMPARE_NUMBER(Refusal([&] { session->DeleteUser(alpha, bob, created); }), 0x8101000Eu);
    COMPARE_NUMBER(Refusal([&] { session->StartServer(QStringLiteral("no-such-host")); }),
                   0x81010002u);
}

void TestSession::RoleRemovalIsOneCommit() {
    TestServer server;
    server.AddUserServer(QStringLiteral("alpha"));
    server.AddUsers(QStringLiteral("alpha"), 3);
    veldrano::server::Store& store = server.GetStore();
    auto session = server.Login();
    const QString alpha = QStringLiteral("alpha");
    ServerRecord record = session->GetServer(alpha);
    record.set_user_server(false);
    record.set_printer_server(true);

    // Without the confirmation (the default, as existing callers send it)
    // the users keep the role on the server.
    COMPARE_NUMBER(Refusal([&] { session->CommitServer(record); }), 0x8101000Fu);
    QVERIFY(store.GetServer("alpha").user_server());

    // Confirmed: one call deletes the users and writes the server.
    const uint64_t calls = session->RpcCount();
    RoleObjectDeletion confirmed;
    confirmed.users = true;
    QCOMPARE(session->CommitServer(record, confirmed), record.version() + 1);
    QCOMPARE(session->RpcCount(), calls + 1);
    QVERIFY(store.ListUsers("alpha").empty());
    // Sent again (a retry after a lost answer) it is refused and changes nothing.
    COMPARE_NUMBER(Refusal([&] { session->CommitServer(record, confirmed); }), 0x8101000Eu);
}

void TestSession::ChannelTargetsFromHostText_data() {
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("target");
    const auto row = [](const char* host, const char* target) {
        QTest::newRow(host) << QString(host) << QString(target);
    };
    row("  10.0.0.7 ", "10.0.0.7:47110");
    row("[fe80::1]:99", "[fe80::1]:99");
    row("fe80::2", "[fe80::2]:47110");
    // Texts that name no host.
    row("localhost:70000", "");
    row("[::1]x", "");
}

void TestSession::ChannelTargetsFromHostText() {
    QFETCH(QString, host);
    QTEST(QString::fromStdString(GrpcServerSession::ChannelTarget(host)), "target");
}

void TestSession::HungServerKeepsTheConsolePainting_data() {
    // A list's stream waits on the worker, a single answer in its own queue.
    QTest::addColumn<bool>("unary");
    QTest::newRow("list") << false;
    QTest::newRow("single answer") << true;
}

void TestSession::HungServerKeepsTheConsolePainting() {
    // The console keeps painting, shows the wait pointer, tells periodic
    // work that a call waits, and the session's time-out still ends the call.
    QFETCH(bool, unary);
    QTcpServer silent;
    const QString host = SilentLoopbackHost(silent);
    QVERIFY(!host.isEmpty());
    GrpcServerSession session(grpc::CreateCustomChannel(host.toStdString(),
                                                        grpc::InsecureChannelCredentials(),
                                                        GrpcServerSession::ChannelArguments()));
    session.SetTimeout(2);

    PaintCounter window;
    window.resize(200, 100);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTimer repaint;
    repaint.setInterval(50);
    connect(&repaint, &QTimer::timeout, &window, qOverload<>(&QWidget::update));
    repaint.start();
    bool waitingSeen = false;
    Qt::CursorShape pointer = Qt::ArrowCursor;
    QTimer::singleShot(1200, &window, [&] {
        waitingSeen = session.CallInProgress();
        if (const QCursor* cursor = QApplication::overrideCursor()) pointer = cursor->shape();
    });
    const int paintsBefore = window.paints;
    QElapsedTimer clock;
    clock.start();
    const SessionError error = Refusal([&] {
        if (unary)
            session.GetServer(QStringLiteral("fxmaster"));
        else
            session.Servers();
    });
    const qint64 elapsed = clock.elapsed();

    // The time-out ended the call, as it does when the call blocks.
    COMPARE_NUMBER(error, 0x81000001u);
    QVERIFY2(elapsed >= 1900 && elapsed < 10000, qPrintable(QString::number(elapsed)));
    // Meanwhile the window painted and timers ran, and they saw the call
    // waiting under the wait pointer.
    QVERIFY2(window.paints - paintsBefore >= 5, qPrintable(QString::number(window.paints)));
    QVERIFY(waitingSeen);
    QCOMPARE(pointer, Qt::WaitCursor);
    // Nothing of the wait is left behind.
    QVERIFY(!session.CallInProgress());
    QCOMPARE(QApplication::overrideCursor(), nullptr);
}

void TestSession::AnUnknownCertificateIsPinnedAndHeldTo() {
    QTemporaryDir settings;
    UseSettingsFile(settings.filePath(QStringLiteral("settings.ini")));
    TestServer server(TlsOptions());
    ScriptedPrompter prompter;
    // Declined: nothing connects and nothing is pinned.
    prompter.Answer(Answer::No);
    QCOMPARE(Refusal([&] { SessionTo(server)->Login(); }).Number(),
             ErrorNumber(pb::ERROR_CERTIFICATE_NOT_TRUSTED));
    QCOMPARE(PinOf(server), QString());

    prompter.Answer(Answer::Yes);
    SessionTo(server)->Login();
    QCOMPARE(prompter.Prompts().size(), 2);
    const Prompt& asked = prompter.LastPrompt();
    // The fingerprint as two lines of 16 pairs; No is the default answer.
    QString shown = Fingerprint(server);
    shown[16 * 3 - 1] = QLatin1Char('\n');
    QVERIFY2(asked.text.contains(shown), qPrintable(asked.text));
    QCOMPARE(asked.defaultButton, 2);
    const QString pinned = PinOf(server);
    QCOMPARE(pinned, Fingerprint(server));

    // The next console on this workstation knows the server already.
    SessionTo(server)->Login();

    // The server gets a new certificate (its files removed, it makes new
    // ones at the restart): whoever answers now is not the server trusted,
    // and no question offers to take it.
    QVERIFY(QFile::remove(server.DataDirectory() + QStringLiteral("/server.crt")));
    QVERIFY(QFile::remove(server.DataDirectory() + QStringLiteral("/server.key")));
    server.Restart();
    const SessionError changed = Refusal([&] { SessionTo(server)->Login(); });
    QCOMPARE(changed.Number(), ErrorNumber(pb::ERROR_CERTIFICATE_CHANGED));
    QVERIFY2(changed.Description().contains(pinned) &&
                 changed.Description().contains(Fingerprint(server)),
             qPrintable(changed.Description()));
    QCOMPARE(prompter.Prompts().size(), 2);
    QCOMPARE(PinOf(server), pinned);
}

void TestSession::ACertificateTheSystemTrustsNeedsNoQuestion() {
    // A certificate in the trust store that OpenSSL reads (SSL_CERT_FILE
    // points at it), naming the address the console uses.
    QTemporaryDir dir;
    UseSettingsFile(dir.filePath(QStringLiteral("settings.ini")));
    const auto identity = veldrano::tls::CreateSelfSigned({"localhost", "127.0.0.1"});
    const QString cert = dir.filePath(QStringLiteral("trusted.crt"));
    const QString key = dir.filePath(QStringLiteral("trusted.key"));
    for (const auto& [path, text] :
         {std::pair{cert, identity.certificatePem}, std::pair{key, identity.privateKeyPem}}) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text.data(), qint64(text.size()));
    }
    TestServer::Options options = TlsOptions();
    options.certificateFile = cert.toStdString();
    options.keyFile = key.toStdString();
    TestServer server(options);

    qputenv("SSL_CERT_FILE", cert.toLocal8Bit());
    ScriptedPrompter prompter;
    auto session = SessionTo(server);
    session->Login();
    qunsetenv("SSL_CERT_FILE");
    QVERIFY(session->IsLoggedIn());
    QCOMPARE(prompter.Prompts().size(), 0);
    QCOMPARE(PinOf(server), QString());
}

void TestSession::TlsPlansFollowTheProbe() {
    // What the end-to-end cases above cannot reach: hosts that answer no TLS,
    // or nothing at all.
    using Kind = ChannelPlan::Kind;
    using Outcome = veldrano::tls::ProbeResult::Outcome;
    const veldrano::tls::ProbeResult plain{Outcome::NotEncrypted, {}, false, {}};
    QCOMPARE(PlanChannel(plain, true, {}).kind, Kind::Plain);
    QCOMPARE(PlanChannel(plain, false, {}).refusal, pb::ERROR_NOT_ENCRYPTED);
    QCOMPARE(PlanChannel({Outcome::Unreachable, {}, false, {}}, true, {}).refusal,
             pb::ERROR_HOST_UNREACHABLE);
    QCOMPARE(PlanChannel({Outcome::NoAnswer, {}, false, {}}, false, {}).refusal, pb::ERROR_TIMEOUT);

    using veldrano::tls::IsLoopbackHost;
    QVERIFY(IsLoopbackHost("127.9.9.9") && IsLoopbackHost("localhost") && IsLoopbackHost("::1"));
    QVERIFY(!IsLoopbackHost("10.0.0.1") && !IsLoopbackHost("localhost.example.net"));
}

QTEST_MAIN(TestSession)
#include "tst_session.moc"
