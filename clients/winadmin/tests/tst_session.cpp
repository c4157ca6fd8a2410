// The gRPC session against the reference server embedded in the test process.

#include <google/protobuf/util/message_differencer.h>

#include <QElapsedTimer>
#include <QSet>
#include <QTcpServer>
#include <QTest>

#include "store/Store.h"
#include "support/TestServer.h"

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

QString Hex(uint32_t number) {
    return QString::number(number, 16).toUpper();
}

// Compares numbers in hexadecimal, so a failure reads like the error box.
#define COMPARE_NUMBER(error, expected) QCOMPARE(Hex((error).Number()), Hex(expected))

TestServer::Options Tcp() {
    TestServer::Options options;
    options.tcp = true;
    return options;
}

UserRecord FullUser(const QString& host, const QString& name) {
    UserRecord user;
    user.set_host_name(host.toStdString());
    user.set_name(name.toStdString());
    user.set_is_new(true);
    user.set_comment("Ines Haldor");
    user.set_admin_priority(31999);
    user.set_bar_code("BC-17");
    user.set_cpi("cpi");
    user.set_pin_code("0042");
    user.set_headlines(std::string(80, 'h'));
    user.set_priority(100);
    user.set_tsi("+41 44 000 00 00");
    user.set_resolution(2);
    user.set_keep_copy(true);
    user.set_mail_if_send_failed(true);
    user.set_voice_if_new_received(true);
    user.set_mail_address("ines@example.net");
    user.set_phone_signal_nr("555 0101");
    user.set_background_default(2147483647);
    for (int i = 0; i < 9; ++i) user.add_background_paper(i * 1000);
    auto* extra = user.add_extras();
    extra->set_name("Room");
    extra->set_value("B 2.14 \xc3\xa4\xc3\xb6\xc3\xbc");
    extra = user.add_extras();
    extra->set_name("Cost centre");
    extra->set_value("7700");
    return user;
}

}  // namespace

class TestSession : public QObject {
    Q_OBJECT

private slots:
    void LoginOpensTheSession();
    void LoginRefusesWrongPasswordAndAllowsAnotherAttempt();
    void LoginReportsUnreachableHost_data();
    void LoginReportsUnreachableHost();
    void CallsNeedAValidToken();
    void ExpiredTokenLogsInAgainOnce();
    void LostServerIsReportedAsBusy();
    void SilentServerRunsIntoTheDeadline();
    void LabelsComeFromMemory();
    void LabelsFollowTheServersLanguage();
    void ServerRefusalsKeepTheServersNumbers();
    void RecordsTravelWhole();
    void LargeCollectionsArriveInOneCall();
    void EveryKindIsAddressedByItsKey();
    void ChannelTargetsFromHostText_data();
    void ChannelTargetsFromHostText();
};

void TestSession::LoginOpensTheSession() {
    TestServer::Options options;
    options.brand = "quorel";
    TestServer server(options);
    server.GetStore().SetMeta("server_level", "4");
    server.GetStore().SetMeta("second_version", "6");

    GrpcServerSession session(server.Channel());
    QCOMPARE(session.GetTimeout(), 30);
    session.SetHostName(QStringLiteral("  alpha.example  "));
    QCOMPARE(session.GetHostName(), QStringLiteral("  alpha.example  "));
    session.SetTimeout(7);
    session.SetPassword(TestServer::Password);
    QVERIFY(!session.IsLoggedIn());

    session.Login();

    QVERIFY(session.IsLoggedIn());
    // The name as the server knows it, not as typed.
    QCOMPARE(session.GetHostName(), QStringLiteral("alpha.example"));
    QCOMPARE(session.GetBrand(), QStringLiteral("quorel"));
    QCOMPARE(session.ServerLevel(), 4);
    QCOMPARE(session.SecondVersion(), 6);
    // A time-out chosen before login outlives the server's default.
    QCOMPARE(session.GetTimeout(), 7);
    QVERIFY(session.Servers().empty());
}

void TestSession::LoginRefusesWrongPasswordAndAllowsAnotherAttempt() {
    TestServer server;
    GrpcServerSession session(server.Channel());
    session.SetPassword(QStringLiteral("not the password"));

    const SessionError refused = Refusal([&] { session.Login(); });
    COMPARE_NUMBER(refused, 0x80070005u);
    QVERIFY(!refused.Description().isEmpty());
    QVERIFY(!refused.Source().isEmpty());
    QVERIFY(!session.IsLoggedIn());
    COMPARE_NUMBER(Refusal([&] { session.Servers(); }), 0x80070005u);

    // The same object serves the next attempt, as the login dialog keeps it.
    session.SetPassword(TestServer::Password);
    session.Login();
    QVERIFY(session.IsLoggedIn());
    QCOMPARE(session.GetBrand(), QStringLiteral("kelvar"));
}

void TestSession::LoginReportsUnreachableHost_data() {
    QTest::addColumn<bool>("usePort");
    QTest::addColumn<QString>("host");
    QTest::newRow("nothing listens") << true << QString();
    QTest::newRow("not a host name") << false << QStringLiteral("two words");
    QTest::newRow("port out of range") << false << QStringLiteral("localhost:70000");
    QTest::newRow("empty") << false << QStringLiteral("   ");
}

void TestSession::LoginReportsUnreachableHost() {
    QFETCH(bool, usePort);
    QFETCH(QString, host);
    if (usePort) {
        // A port that was free a moment ago: bound, then released.
        QTcpServer probe;
        QVERIFY(probe.listen(QHostAddress::LocalHost));
        host = QStringLiteral("127.0.0.1:%1").arg(probe.serverPort());
        probe.close();
    }
    GrpcServerSession session;
    session.SetHostName(host);
    session.SetPassword(TestServer::Password);

    const SessionError error = Refusal([&] { session.Login(); });
    COMPARE_NUMBER(error, 0x81002AF9u);
    QVERIFY(error.Description().contains(host.trimmed()));
    QVERIFY(!session.IsLoggedIn());
    // Host texts that name no host never reach the network.
    QCOMPARE(session.RpcCount(), usePort ? 1u : 0u);
}

void TestSession::CallsNeedAValidToken() {
    TestServer server;
    GrpcServerSession anonymous(server.Channel());
    const SessionError error = Refusal([&] { anonymous.Servers(); });
    COMPARE_NUMBER(error, 0x80070005u);
    // The server itself refused: the call went out.
    QCOMPARE(anonymous.RpcCount(), 1u);
    QCOMPARE(Refusal([&] { anonymous.GetUser(QStringLiteral("a"), QStringLiteral("b")); }).Number(),
             0x80070005u);
}

void TestSession::ExpiredTokenLogsInAgainOnce() {
    TestServer server(Tcp());
    server.AddUserServer(QStringLiteral("alpha"));
    auto session = server.LoginTcp();
    QCOMPARE(session->Servers().size(), size_t(1));

    // A restarted server has forgotten every token.
    server.Restart();
    const uint64_t before = session->RpcCount();
    QCOMPARE(session->Servers().size(), size_t(1));
    // Refused call, login, repeated call.
    QCOMPARE(session->RpcCount() - before, 3u);

    // When the stored password no longer opens the server, the refusal stands.
    server.Restart(QStringLiteral("Changed-Password-9"));
    const uint64_t beforeSecond = session->RpcCount();
    COMPARE_NUMBER(Refusal([&] { session->Servers(); }), 0x80070005u);
    QCOMPARE(session->RpcCount() - beforeSecond, 2u);
}

void TestSession::LostServerIsReportedAsBusy() {
    TestServer server(Tcp());
    auto session = server.LoginTcp();
    session->GetAdminSettings();
    server.Shutdown();
    // Transient: the administrator is offered Retry for these.
    COMPARE_NUMBER(Refusal([&] { session->GetAdminSettings(); }), 0x81000002u);
    COMPARE_NUMBER(Refusal([&] { session->Users(QStringLiteral("alpha")); }), 0x81000002u);
}

void TestSession::SilentServerRunsIntoTheDeadline() {
    // Accepts connections (the kernel completes them) and never says a word.
    QTcpServer silent;
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    GrpcServerSession session;
    session.SetHostName(QStringLiteral("127.0.0.1:%1").arg(silent.serverPort()));
    session.SetPassword(TestServer::Password);
    session.SetTimeout(1);

    QElapsedTimer clock;
    clock.start();
    const SessionError error = Refusal([&] { session.Login(); });
    const qint64 elapsed = clock.elapsed();

    COMPARE_NUMBER(error, 0x81000001u);
    QVERIFY2(elapsed >= 900 && elapsed < 10000, qPrintable(QString::number(elapsed)));
}

void TestSession::LabelsComeFromMemory() {
    // Over TCP: a call on the in-process channel of a stopped server is not
    // an error gRPC reports, it is a crash.
    TestServer server(Tcp());
    auto session = server.LoginTcp();
    const uint64_t calls = session->RpcCount();

    QCOMPARE(session->GetLabel(QStringLiteral("Host name")), QStringLiteral("Host name:"));
    QCOMPARE(session->GetLabel(QStringLiteral("Cancel")), QStringLiteral("Cancel"));
    QCOMPARE(session->GetLabel(QStringLiteral("No such key 4711")),
             QStringLiteral("No such key 4711"));
    for (int i = 0; i < 1000; ++i) session->GetLabel(QStringLiteral("key %1").arg(i));
    QCOMPARE(session->RpcCount(), calls);

    // With the server gone, labels still answer while calls fail.
    server.Shutdown();
    QCOMPARE(session->GetLabel(QStringLiteral("Host name")), QStringLiteral("Host name:"));
    COMPARE_NUMBER(Refusal([&] { session->Servers(); }), 0x81000002u);
}

void TestSession::LabelsFollowTheServersLanguage() {
    TestServer::Options options;
    options.language = "de";
    TestServer server(options);
    auto session = server.Login();
    QCOMPARE(session->GetLabel(QStringLiteral("Cancel")), QStringLiteral("Abbrechen"));

    // An unchanged table costs one small call and keeps every text.
    const uint64_t calls = session->RpcCount();
    session->ReloadLabels();
    QCOMPARE(session->RpcCount(), calls + 1);
    QCOMPARE(session->GetLabel(QStringLiteral("Yes")), QStringLiteral("Ja"));
}

void TestSession::ServerRefusalsKeepTheServersNumbers() {
    TestServer server;
    server.AddUserServer(QStringLiteral("alpha"));
    auto first = server.Login();
    auto second = server.Login();

    UserRecord user = first->GetUser(QStringLiteral("alpha"), QStringLiteral("bob"));
    QVERIFY(user.is_new());
    QCOMPARE(user.name(), std::string("bob"));

    const SessionError required = Refusal([&] { first->CommitUser(user); });
    COMPARE_NUMBER(required, 0x81010006u);
    QVERIFY(!required.Description().isEmpty());
    QCOMPARE(required.Source(), QStringLiteral("Kelvar.Administrator"));

    user.set_comment("Bob Arnesen");
    const int64_t created = first->CommitUser(user);
    QVERIFY(created > 0);

    // Both administrators load the user; the second one saves first.
    UserRecord mine = first->GetUser(QStringLiteral("alpha"), QStringLiteral("bob"));
    UserRecord theirs = second->GetUser(QStringLiteral("alpha"), QStringLiteral("bob"));
    QVERIFY(!mine.is_new());
    QCOMPARE(mine.version(), created);
    theirs.set_comment("Bob A.");
    const int64_t changed = second->CommitUser(theirs);
    QVERIFY(changed != created);

    mine.set_comment("Robert Arnesen");
    const SessionError conflict = Refusal([&] { first->CommitUser(mine); });
    COMPARE_NUMBER(conflict, 0x81000003u);
    QVERIFY2(conflict.Description().contains(QStringLiteral("another administrator"),
                                             Qt::CaseInsensitive),
             qPrintable(conflict.Description()));
    QCOMPARE(first->GetUser(QStringLiteral("alpha"), QStringLiteral("bob")).comment(),
             std::string("Bob A."));

    // Deleting against the stale version is refused too; the current one works.
    COMPARE_NUMBER(Refusal([&] {
                       first->DeleteUser(QStringLiteral("alpha"), QStringLiteral("bob"), created);
                   }),
                   0x81000003u);
    first->DeleteUser(QStringLiteral("alpha"), QStringLiteral("bob"), changed);
    QVERIFY(first->GetUser(QStringLiteral("alpha"), QStringLiteral("bob")).is_new());
    COMPARE_NUMBER(Refusal([&] { first->StartServer(QStringLiteral("no-such-host")); }),
                   0x81010002u);
}

void TestSession::RecordsTravelWhole() {
    TestServer server;
    server.AddUserServer(QStringLiteral("alpha"));
    server.AddUsers(QStringLiteral("alpha"), 1, QStringLiteral("sub"));
    auto session = server.Login();

    UserRecord sent = FullUser(QStringLiteral("alpha"), QStringLiteral("ines"));
    sent.mutable_substitute()->set_user_name("sub0");
    sent.mutable_substitute()->set_host_name("alpha");
    const int64_t version = session->CommitUser(sent);

    // Read back past the protocol, straight from the store.
    UserRecord stored = server.GetStore().GetUser("alpha", "ines");
    QCOMPARE(stored.version(), version);
    QVERIFY(!stored.is_new());
    UserRecord received = session->GetUser(QStringLiteral("alpha"), QStringLiteral("ines"));

    for (UserRecord* record : {&sent, &stored, &received}) {
        record->clear_version();
        record->clear_is_new();
        record->clear_password_set();
    }
    std::string difference;
    google::protobuf::util::MessageDifferencer differencer;
    differencer.ReportDifferencesToString(&difference);
    QVERIFY2(differencer.Compare(sent, stored), difference.c_str());
    QVERIFY2(differencer.Compare(stored, received), difference.c_str());
}

void TestSession::LargeCollectionsArriveInOneCall() {
    TestServer server;
    server.AddUserServer(QStringLiteral("alpha"));
    // About 6 MiB in all: more than one gRPC message may carry.
    const std::string value(80, 'v');
    veldrano::server::Store& store = server.GetStore();
    store.Bulk([&] {
        for (int i = 0; i < 2000; ++i) {
            UserRecord user = store.GetUser("alpha", "u" + std::to_string(i));
            user.set_comment("user " + std::to_string(i));
            for (int e = 0; e < 25; ++e) {
                auto* extra = user.add_extras();
                extra->set_name(std::string(30, 'n') + std::to_string(e));
                extra->set_value(value);
            }
            store.CommitUser(user);
        }
    });
    auto session = server.Login();
    const uint64_t calls = session->RpcCount();

    const std::vector<UserRecord> users = session->Users(QStringLiteral("alpha"));

    QCOMPARE(session->RpcCount(), calls + 1);
    QCOMPARE(users.size(), size_t(2000));
    QSet<QString> names;
    for (const UserRecord& user : users) {
        names.insert(QString::fromStdString(user.name()));
        QCOMPARE(user.extras_size(), 25);
        QCOMPARE(user.host_name(), std::string("alpha"));
    }
    QCOMPARE(names.size(), 2000);
    QVERIFY(names.contains(QStringLiteral("u0")) && names.contains(QStringLiteral("u1999")));
}

void TestSession::EveryKindIsAddressedByItsKey() {
    TestServer server;
    server.AddUserServer(QStringLiteral("alpha"));
    server.AddUsers(QStringLiteral("alpha"), 2);
    server.GetStore().CommitGateway([] {
        veldrano::admin::v1::Gateway gateway;
        gateway.set_name("smtp.example.net");
        gateway.set_is_new(true);
        return gateway;
    }());
    auto session = server.Login();
    const QString alpha = QStringLiteral("alpha");

    PrinterRecord printer = session->GetPrinter(alpha, QStringLiteral("lp1"));
    QVERIFY(printer.is_new());
    printer.set_comment("Floor 2");
    printer.set_filter_command("lpr -P lp1");
    const int64_t printerVersion = session->CommitPrinter(printer);
    QCOMPARE(session->GetPrinter(alpha, QStringLiteral("lp1")).version(), printerVersion);
    QCOMPARE(session->Printers(alpha).size(), size_t(1));

    GroupRecord group = session->GetGroup(QStringLiteral("sales"));
    group.set_comment("Sales");
    auto* member = group.add_members();
    member->set_user_name("u1");
    member->set_host_name("alpha");
    session->CommitGroup(group);
    QCOMPARE(session->GetGroup(QStringLiteral("sales")).members_size(), 1);
    QCOMPARE(session->Groups().size(), size_t(1));

    GatewayUserRecord mailUser = session->GetGatewayUser(QStringLiteral("smtp.example.net"),
                                                         QStringLiteral("ann@example.net"));
    QVERIFY(mailUser.is_new());
    mailUser.set_extension("2001");
    session->CommitGatewayUser(mailUser);
    QCOMPARE(session->GatewayUsers(QStringLiteral("smtp.example.net")).size(), size_t(1));
    QCOMPARE(
        session
            ->GetGatewayUser(QStringLiteral("smtp.example.net"), QStringLiteral("ann@example.net"))
            .extension(),
        std::string("2001"));

    // Rates are addressed by zone and 1-based index.
    ZoneRecord zone = session->GetZone(QStringLiteral("Europe"));
    zone.set_is_local(true);
    session->CommitZone(zone);
    RateRecord rate = session->GetRate(QStringLiteral("Europe"), 0);
    rate.set_zone("Europe");
    rate.set_stop_hour(24);
    const IndexedCommit first = session->CommitRate(rate);
    rate.set_sunday(true);
    const IndexedCommit second = session->CommitRate(rate);
    QCOMPARE(first.index, 1);
    QCOMPARE(second.index, 2);
    QVERIFY(session->GetRate(QStringLiteral("Europe"), 2).sunday());
    QVERIFY(!session->GetRate(QStringLiteral("Europe"), 1).sunday());
    session->DeleteRate(QStringLiteral("Europe"), 1);
    const std::vector<RateRecord> rates = session->Rates(QStringLiteral("Europe"));
    QCOMPARE(rates.size(), size_t(1));
    QVERIFY(rates.front().sunday());
    QCOMPARE(rates.front().index(), 1);
    QCOMPARE(session->Zones().zones_size(), 1);
}

void TestSession::ChannelTargetsFromHostText_data() {
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("target");
    QTest::newRow("name") << QStringLiteral("msgsrv") << QStringLiteral("msgsrv:47110");
    QTest::newRow("name and port")
        << QStringLiteral("msgsrv.example.net:5000") << QStringLiteral("msgsrv.example.net:5000");
    QTest::newRow("blanks around")
        << QStringLiteral("  10.0.0.7 ") << QStringLiteral("10.0.0.7:47110");
    QTest::newRow("ipv6 in brackets") << QStringLiteral("[::1]") << QStringLiteral("[::1]:47110");
    QTest::newRow("ipv6 with port")
        << QStringLiteral("[fe80::1]:99") << QStringLiteral("[fe80::1]:99");
    QTest::newRow("bare ipv6") << QStringLiteral("fe80::2") << QStringLiteral("[fe80::2]:47110");
    QTest::newRow("port zero") << QStringLiteral("msgsrv:0") << QString();
    QTest::newRow("port not a number") << QStringLiteral("msgsrv:http") << QString();
    QTest::newRow("missing port") << QStringLiteral("msgsrv:") << QString();
    QTest::newRow("text after bracket") << QStringLiteral("[::1]x") << QString();
    QTest::newRow("empty brackets") << QStringLiteral("[]") << QString();
}

void TestSession::ChannelTargetsFromHostText() {
    QFETCH(QString, host);
    QFETCH(QString, target);
    QCOMPARE(QString::fromStdString(GrpcServerSession::ChannelTarget(host)), target);
}

QTEST_GUILESS_MAIN(TestSession)
#include "tst_session.moc"
