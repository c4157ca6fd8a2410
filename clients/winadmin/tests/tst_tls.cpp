// The console reaching a server that serves TLS: the unknown certificate
// asked about once and pinned, a declined or changed one refused, one that
// the system trusts taken without a question, and the plan for each probe.

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "common/Settings.h"
#include "service/ServerHost.h"
#include "session/SecureChannel.h"
#include "session/SessionError.h"
#include "support/ScriptedPrompter.h"
#include "support/TestServer.h"
#include "tls/Certificates.h"

using namespace winadmin;
namespace pb = veldrano::admin::v1;

namespace {

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

// The number of the SessionError that f throws; 0 when it throws none.
template <class F>
uint32_t RefusalNumber(F&& f) {
    try {
        f();
    } catch (const SessionError& error) {
        return error.Number();
    }
    return 0;
}

QString Fingerprint(TestServer& server) {
    return QString::fromStdString(veldrano::tls::Fingerprint(server.Host().CertificatePem()));
}

QString PinOf(TestServer& server) {
    return GetSetting(kVendor,
                      PinnedFingerprintKey(GrpcServerSession::ChannelTarget(server.TcpHost())), {});
}

}  // namespace

class TestTls : public QObject {
    Q_OBJECT

private slots:
    void init();
    void AnUnknownCertificateIsPinnedAndHeldTo();
    void ACertificateTheSystemTrustsNeedsNoQuestion();
    void PlansFollowTheProbe();

private:
    std::unique_ptr<QTemporaryDir> settings_;
};

void TestTls::init() {
    settings_ = std::make_unique<QTemporaryDir>();
    UseSettingsFile(settings_->filePath(QStringLiteral("settings.ini")));
}

void TestTls::AnUnknownCertificateIsPinnedAndHeldTo() {
    TestServer server(TlsOptions());
    ScriptedPrompter prompter;
    // Declined: nothing connects and nothing is pinned.
    prompter.Answer(Answer::No);
    QCOMPARE(RefusalNumber([&] { SessionTo(server)->Login(); }),
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
    auto again = SessionTo(server);
    again->Login();
    QVERIFY(again->IsLoggedIn());

    // The server gets a new certificate (its files removed, it makes new
    // ones at the restart): whoever answers now is not the server trusted,
    // and no question offers to take it.
    QVERIFY(QFile::remove(server.DataDirectory() + QStringLiteral("/server.crt")));
    QVERIFY(QFile::remove(server.DataDirectory() + QStringLiteral("/server.key")));
    server.Restart();
    try {
        SessionTo(server)->Login();
        QFAIL("a changed certificate was accepted");
    } catch (const SessionError& error) {
        QCOMPARE(error.Number(), ErrorNumber(pb::ERROR_CERTIFICATE_CHANGED));
        QVERIFY2(error.Description().contains(pinned) &&
                     error.Description().contains(Fingerprint(server)),
                 qPrintable(error.Description()));
    }
    QCOMPARE(prompter.Prompts().size(), 2);
    QCOMPARE(PinOf(server), pinned);
}

void TestTls::ACertificateTheSystemTrustsNeedsNoQuestion() {
    // A certificate in the trust store that OpenSSL reads (SSL_CERT_FILE
    // points at it), naming the address the console uses.
    QTemporaryDir dir;
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

void TestTls::PlansFollowTheProbe() {
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

QTEST_GUILESS_MAIN(TestTls)
#include "tst_tls.moc"
