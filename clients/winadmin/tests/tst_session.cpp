// The gRPC session against the reference server embedded in the test process:
// its refusals, a call that waits on a server that does not answer, and the
// certificates of a server that serves TLS, pinned or refused.

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
    void timerEvent(QTimerEvent*) override { update(); }
};

}  // namespace

class TestSession : public QObject {
    Q_OBJECT

private slots:
    void LoginReportsNetworkFailures();
    void RefusalsKeepTheServersNumbersAndExpiredTokensLogInAgainOnce();
    void CallAfterARestartReconnectsAtOnce();
    void TransportFailuresMapToTheAdministratorsErrors();
    void LabelsComeFromMemory();
    void ChannelTargetsFromHostText();
    void HungServerKeepsTheConsolePainting();
    void AnUnknownCertificateIsPinnedAndHeldTo();
    void TlsPlansFollowTheProbe();
};

void TestSession::LoginReportsNetworkFailures() {
    // The console looks at the server's transport before its first call, so
    // a host that cannot be reached or says nothing costs no call.
    QTcpServer silent;  // accepts connections and never says a word
    const std::pair<QString, uint> cases[] = {{ClosedLoopbackHost(), 0x81002AF9u},
                                              {QStringLiteral("two words"), 0x81002AF9u},
                                              {SilentLoopbackHost(silent), 0x81000001u}};
    for (const auto& [host, number] : cases) {
        GrpcServerSession session;
        session.SetHostName(host);
        session.SetPassword(TestServer::Password);
        session.SetTimeout(1);
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(Refusal([&] { session.Login(); }).Number(), number);
        QCOMPARE(session.RpcCount(), 0u);
        // The peer that never answers costs the whole time-out, and no more.
        QVERIFY2(clock.elapsed() < 10000 && (number != 0x81000001u || clock.elapsed() >= 900),
                 qPrintable(QString::number(clock.elapsed())));
    }
}

void TestSession::RefusalsKeepTheServersNumbersAndExpiredTokensLogInAgainOnce() {
    TestServer server(ServerOptions("", "", true));
    server.AddUserServer(QStringLiteral("alpha"));
    {
        // Without a token the server itself refuses: the call went out.
        GrpcServerSession anonymous(server.Channel());
        QCOMPARE(Refusal([&] { anonymous.Servers(); }).Number(), 0x80070005u);
        QCOMPARE(anonymous.RpcCount(), 1u);
    }
    auto session = server.LoginTcp();
    QCOMPARE(Refusal([&] { session->StartServer(QStringLiteral("no-such-host")); }).Number(),
             0x81010002u);
    // Larger than the connection allows, which gRPC itself refuses: not the
    // Retry family, and the session goes on working.
    UserRecord user = session->GetUser(QStringLiteral("alpha"), QStringLiteral("bob"));
    user.set_comment(std::string(5 * 1024 * 1024, 'x'));
    QCOMPARE(Refusal([&] { session->CommitUser(user); }).Number(), 0x81010012u);
    user.set_comment("Bob Arnesen");
    QVERIFY(session->CommitUser(user) > 0);

    // A restarted server has forgotten every token (CallAfterARestart shows
    // the login repeated); when the stored password no longer opens it, the
    // refusal of the forgotten token stands: refused call, refused login.
    server.Restart(QStringLiteral("Changed-Password-9"));
    const uint64_t before = session->RpcCount();
    QCOMPARE(Refusal([&] { session->Servers(); }).Number(), 0x80070005u);
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
}

void TestSession::TransportFailuresMapToTheAdministratorsErrors() {
    // What the cases against a real server cannot pin down. A call cut by the
    // server going down is busy whichever way gRPC reports it; only the
    // unreachable host names itself; only the unknown failure and the
    // exhaustion pass gRPC's words on.
    using grpc::StatusCode;
    const QString host = QStringLiteral("alpha.example:47110");
    const struct {
        StatusCode code;
        const char* message;
        bool atLogin, passedOn;
        uint number;
    } cases[] = {{StatusCode::CANCELLED, "Cancelled", false, false, 0x81000002u},
                 {StatusCode::UNAVAILABLE, "Socket closed", false, false, 0x81000002u},
                 {StatusCode::UNAVAILABLE, "failed to connect", true, false, 0x81002AF9u},
                 {StatusCode::RESOURCE_EXHAUSTED, "too many calls", false, true, 0x81000002u},
                 {StatusCode::INTERNAL, "boom", false, true, 0x8101000Du}};
    for (const auto& c : cases) {
        const SessionError error =
            GrpcServerSession::MapStatus(grpc::Status(c.code, c.message), c.atLogin, host);
        QCOMPARE(error.Number(), c.number);
        QCOMPARE(error.Description().contains(host), c.atLogin);
        QCOMPARE(error.Description().contains(QLatin1String(c.message)), c.passedOn);
    }
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
    QCOMPARE(Refusal([&] { session->Servers(); }).Number(), 0x81000002u);
}

void TestSession::ChannelTargetsFromHostText() {
    // The last two name no host.
    const std::pair<const char*, const char*> cases[] = {{"  10.0.0.7 ", "10.0.0.7:47110"},
                                                         {"[fe80::1]:99", "[fe80::1]:99"},
                                                         {"fe80::2", "[fe80::2]:47110"},
                                                         {"localhost:70000", ""},
                                                         {"[::1]x", ""}};
    for (const auto& [host, target] : cases)
        QCOMPARE(GrpcServerSession::ChannelTarget(QString::fromLatin1(host)), std::string(target));
}

void TestSession::HungServerKeepsTheConsolePainting() {
    // The console keeps painting, shows the wait pointer, tells periodic
    // work that a call waits, and the session's time-out still ends the call.
    // A list's stream waits on the worker, a single answer in its own queue.
    for (bool unary : {false, true}) {
        QTcpServer silent;
        GrpcServerSession session(grpc::CreateCustomChannel(
            SilentLoopbackHost(silent).toStdString(), grpc::InsecureChannelCredentials(),
            GrpcServerSession::ChannelArguments()));
        session.SetTimeout(2);

        PaintCounter window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        window.startTimer(50);
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
        QCOMPARE(error.Number(), 0x81000001u);
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
}

void TestSession::AnUnknownCertificateIsPinnedAndHeldTo() {
    QTemporaryDir settings;
    UseSettingsFile(settings.filePath(QStringLiteral("settings.ini")));
    TestServer::Options options;
    options.tls = true;
    TestServer server(options);
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

    // The next console on this workstation knows the server already; a
    // time-out chosen before login outlives the server's default.
    auto next = SessionTo(server);
    next->SetTimeout(7);
    next->Login();
    QCOMPARE(next->GetTimeout(), 7);

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

void TestSession::TlsPlansFollowTheProbe() {
    // What the end-to-end cases above cannot reach: hosts that answer no TLS.
    using namespace veldrano::tls;
    const ProbeResult plain{ProbeResult::Outcome::NotEncrypted, {}, false, {}};
    QCOMPARE(PlanChannel(plain, true, {}).kind, ChannelPlan::Kind::Plain);
    QCOMPARE(PlanChannel(plain, false, {}).refusal, pb::ERROR_NOT_ENCRYPTED);
    // Which hosts are loopback ones is the server's too; a name only
    // beginning like one is not.
    QVERIFY(IsLoopbackHost("localhost") && !IsLoopbackHost("localhost.example.net"));
}

QTEST_MAIN(TestSession)
#include "tst_session.moc"
