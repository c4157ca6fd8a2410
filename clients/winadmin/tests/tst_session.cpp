// The gRPC session against the reference server embedded in the test process.

#include <QElapsedTimer>
#include <QTest>

#include "store/Store.h"
#include "support/ConsoleFixture.h"
#include "support/Loopback.h"

using namespace winadmin;

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

private:
    // Accepts connections (the kernel completes them) and never says a word.
    QTcpServer silent_;
};

void TestSession::LoginOpensTheSession() {
    TestServer server(ServerOptions("quorel"));
    server.GetStore().SetMeta("server_level", "4");
    server.GetStore().SetMeta("second_version", "6");
    GrpcServerSession session(server.Channel());
    // A wrong password is tst_login's.
    session.SetHostName(QStringLiteral("  alpha.example  "));
    session.SetTimeout(7);
    session.SetPassword(TestServer::Password);
    session.Login();
    QVERIFY(session.IsLoggedIn());
    // The name as the server knows it, not as typed.
    QCOMPARE(session.GetHostName(), QStringLiteral("alpha.example"));
    QCOMPARE(session.GetBrand(), QStringLiteral("quorel"));
    QCOMPARE(session.ServerLevel(), 4);
    QCOMPARE(session.SecondVersion(), 6);
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
    if (number == 0x81002AF9u) QVERIFY(error.Description().contains(host));
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
    row("msgsrv.example.net:5000", "msgsrv.example.net:5000");
    row("[::1]", "[::1]:47110");
    row("[fe80::1]:99", "[fe80::1]:99");
    row("fe80::2", "[fe80::2]:47110");
    // Texts that name no host.
    row("localhost:70000", "");
    row("[::1]x", "");
    row("   ", "");
}

void TestSession::ChannelTargetsFromHostText() {
    QFETCH(QString, host);
    QTEST(QString::fromStdString(GrpcServerSession::ChannelTarget(host)), "target");
}

QTEST_GUILESS_MAIN(TestSession)
#include "tst_session.moc"
