// What anyone who reaches the port can try: a client that stops reading a
// long list, parallel password guesses, huge values echoed back, floods of
// malformed or unauthenticated calls. None of it may cost other consoles
// more than a moment, and the log records it without being flooded.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <thread>

#include "demo/Generator.h"
#include "service/Auth.h"
#include "service/Log.h"
#include "service/ServerHost.h"
#include "store/Store.h"
#include "tests/ServiceClient.h"
#include "tests/StoreFixtures.h"

namespace veldrano::server::testing {
namespace {

using namespace std::chrono_literals;
// Collects the log lines written while it lives, at the Info level.
class CapturedLog {
public:
    CapturedLog() : level_(GetLogLevel()) {
        SetLogLevel(LogLevel::Info);
        SetLogSink([this](const std::string& line) {
            std::lock_guard lock(mutex_);
            lines_.push_back(line);
        });
    }
    ~CapturedLog() {
        SetLogSink(nullptr);
        SetLogLevel(level_);
    }
    std::vector<std::string> Lines() {
        std::lock_guard lock(mutex_);
        return lines_;
    }
    size_t Count(const std::string& part) {
        const auto lines = Lines();
        return std::count_if(lines.begin(), lines.end(), [&](const auto& line) {
            return line.find(part) != std::string::npos;
        });
    }

private:
    LogLevel level_;
    std::mutex mutex_;
    std::vector<std::string> lines_;
};

TEST(StallTest, AClientThatStopsReadingDelaysNobodyAndIsCutOff) {
    TempDirectory dir;
    ServerOptions options = HostOptions(dir, "127.0.0.1:0");
    options.writeTimeout = 1500ms;
    ServerHost host(options);
    Generate(host.GetStore(), ParseGenerateSizes("servers=1,users=60000"));
    const std::string server = host.GetStore().ListServers().front().name();

    // The stalled reader: small flow-control windows, so that the server
    // soon waits on it with most of the list unsent.
    grpc::ChannelArguments args;
    args.SetInt(GRPC_ARG_HTTP2_BDP_PROBE, 0);
    args.SetInt(GRPC_ARG_HTTP2_STREAM_LOOKAHEAD_BYTES, 16 * 1024);
    const std::string target = "127.0.0.1:" + std::to_string(host.Port());
    ServiceClient stalled(
        grpc::CreateCustomChannel(target, grpc::InsecureChannelCredentials(), args));
    ASSERT_TRUE(stalled.Login(kHostPassword).ok());
    auto context = stalled.Context(60);
    auto reader = stalled.stub->ListUsers(context.get(),
                                          With(pb::ListRequest(), "host_name: '" + server + "'"));
    pb::UserPage page;
    ASSERT_TRUE(reader->Read(&page));
    std::this_thread::sleep_for(300ms);  // the server fills the window and waits

    // Meanwhile other consoles log in, read and write at once.
    ServiceClient other(grpc::CreateChannel(target, grpc::InsecureChannelCredentials()));
    const auto started = std::chrono::steady_clock::now();
    ASSERT_TRUE(other.Login(kHostPassword).ok());
    pb::CommitServerRequest commit;
    EXPECT_TRUE(
        other.stub->GetServer(other.Context(2).get(), Key("", server), commit.mutable_server())
            .ok());
    commit.mutable_server()->set_comment("changed while a list is read");
    pb::CommitReply reply;
    EXPECT_TRUE(other.stub->CommitServer(other.Context(2).get(), commit, &reply).ok());
    EXPECT_LT(std::chrono::steady_clock::now() - started, 1000ms);

    // After the time-out the stalled call is cut off; reading on ends in
    // an error, not in the whole list.
    std::this_thread::sleep_for(2s);
    int users = page.users_size();
    while (reader->Read(&page)) users += page.users_size();
    EXPECT_FALSE(reader->Finish().ok());
    EXPECT_LT(users, 60000);
}

TEST(ThrottleTest, ParallelGuessesGetOnlyTheAllowanceEvaluated) {
    TempDirectory dir;
    ServerOptions options = HostOptions(dir, "");
    options.loginAttemptsPerWindow = 5;
    ServerHost host(options);
    std::atomic<int> denied = 0, throttled = 0;
    std::vector<std::thread> guessers;
    for (int i = 0; i < 32; ++i)
        guessers.emplace_back([&] {
            ServiceClient guesser(host.InProcessChannel());
            const auto number = Number(guesser.Login("guess"));
            denied += number == 0x80070005u;
            throttled += number == 0x81000004u;
        });
    for (auto& guesser : guessers) guesser.join();
    EXPECT_EQ(denied, 5);
    EXPECT_EQ(throttled, 27);
    // The right password waits its turn like any guess, and the refusal says
    // why in the table's words alone.
    ServiceClient admin(host.InProcessChannel());
    const grpc::Status status = admin.Login(kHostPassword);
    EXPECT_EQ(status.error_code(), grpc::StatusCode::RESOURCE_EXHAUSTED);
    EXPECT_EQ(ServiceClient::Detail(status).description(),
              DescribeError(pb::ERROR_THROTTLED).description);
}

TEST(ThrottleTest, AttemptsAgeOutAndASuccessClearsTheCount) {
    TempStore store;
    Auth auth(*store, 2, 300ms);
    auth.SetPassword(kHostPassword);
    auto code = [&](const std::string& client, const std::string& password) {
        try {
            auth.Login(client, password);
            return pb::ERROR_NONE;
        } catch (const ServiceError& e) {
            return e.code();
        }
    };
    EXPECT_EQ(code("a", "x"), pb::ERROR_ACCESS_DENIED);
    EXPECT_EQ(code("a", "y"), pb::ERROR_ACCESS_DENIED);
    EXPECT_EQ(code("a", kHostPassword), pb::ERROR_THROTTLED);
    EXPECT_EQ(code("b", kHostPassword), pb::ERROR_NONE);  // another workstation
    std::this_thread::sleep_for(350ms);
    EXPECT_EQ(code("a", kHostPassword), pb::ERROR_NONE);
    EXPECT_EQ(code("a", "x"), pb::ERROR_ACCESS_DENIED);
    EXPECT_EQ(code("a", "y"), pb::ERROR_ACCESS_DENIED);
    EXPECT_EQ(code("a", "z"), pb::ERROR_THROTTLED);
}

TEST(EchoTest, AHugeValueIsEchoedAsAShortPrefixAndAnOversizedRequestRefused) {
    TempDirectory dir;
    ServerHost host(HostOptions(dir, ""));
    ServiceClient client(host.InProcessChannel());
    ASSERT_TRUE(client.Login(kHostPassword).ok());
    pb::CommitReply reply;
    const pb::ErrorDetail detail = ServiceClient::Detail(client.stub->CommitGroup(
        client.Context().get(),
        With(pb::Group(), "is_new: true name: '" + std::string(4000, 'g') + "'"), &reply));
    EXPECT_EQ(detail.number(), 0x81010004u);
    EXPECT_LT(detail.description().size(), 300u) << detail.description();
    EXPECT_NE(detail.description().find("'" + std::string(40, 'g') + "...'"), std::string::npos)
        << detail.description();

    // A request over the message limit is refused whole, and the server goes on.
    const auto huge =
        With(pb::Group(), "is_new: true name: 'big' comment: '" + std::string(5 << 20, 'x') + "'");
    EXPECT_FALSE(client.stub->CommitGroup(client.Context().get(), huge, &reply).ok());
    EXPECT_TRUE(
        client.stub->CommitGroup(client.Context().get(), With(huge, "comment: 'small'"), &reply)
            .ok());
}

TEST(LogTest, LoginsAndRefusalsAreLoggedWithoutPasswordsOrFloods) {
    TempDirectory dir;
    ServerHost host(HostOptions(dir, ""));
    CapturedLog log;
    ServiceClient client(host.InProcessChannel());
    EXPECT_FALSE(client.Login("my-secret-guess").ok());
    EXPECT_TRUE(client.Login(kHostPassword).ok());
    EXPECT_EQ(log.Count("Login from"), 1u);
    EXPECT_EQ(log.Count("login from"), 1u);
    EXPECT_EQ(log.Count("accepted"), 1u);
    for (const auto& line : log.Lines()) {
        EXPECT_EQ(line.find("my-secret-guess"), std::string::npos) << line;
        EXPECT_EQ(line.find(kHostPassword), std::string::npos) << line;
        EXPECT_EQ(line.find('\n'), std::string::npos);
    }

    // A flood without a session, and one of malformed text fields: a burst
    // is logged, the rest only counted.
    ServiceClient stranger(host.InProcessChannel());
    pb::Server record;
    for (int i = 0; i < 200; ++i)
        stranger.stub->GetServer(stranger.Context().get(), Key("", "alpha"), &record);
    auto channel = host.InProcessChannel();
    for (int i = 0; i < 200; ++i)
        RawCall(channel, "/veldrano.admin.v1.Administration/GetServer",
                std::string("\x12\x02\xff\xfe", 4));
    EXPECT_LE(log.Lines().size(), 25u);
    EXPECT_GE(log.Count("GetServer from"), 1u);
}

}  // namespace
}  // namespace veldrano::server::testing
