// The real veldrano-server program: it serves a store on loopback, answers
// the demo password, and keeps every acknowledged commit through a kill -9.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <set>
#include <thread>

#include "tests/ServiceClient.h"

namespace veldrano::server::testing {
namespace {

namespace fs = std::filesystem;

class ServerProcess {
public:
    ServerProcess(const std::string& data, int port) {
        const char* bin = std::getenv("VELDRANO_SERVER_BIN");
        binary_ = bin ? bin : "server/veldrano-server";
        std::string listen = "127.0.0.1:" + std::to_string(port);
        pid_ = fork();
        if (pid_ == 0) {
            execl(binary_.c_str(), binary_.c_str(), "--demo", "--no-simulation", "--data",
                  data.c_str(), "--listen", listen.c_str(), static_cast<char*>(nullptr));
            _exit(127);
        }
        channel_ = grpc::CreateChannel(listen, grpc::InsecureChannelCredentials());
        channel_->WaitForConnected(std::chrono::system_clock::now() + std::chrono::seconds(20));
    }
    ~ServerProcess() { Kill(SIGKILL); }

    void Kill(int signal) {
        if (pid_ <= 0) return;
        kill(pid_, signal);
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = -1;
    }
    std::shared_ptr<grpc::Channel> Channel() { return channel_; }

private:
    std::string binary_;
    pid_t pid_ = -1;
    std::shared_ptr<grpc::Channel> channel_;
};

int FreePort() {
    // Ports from a range unlikely to be taken, spread by process id so that
    // parallel test runs do not collide.
    return 20000 + static_cast<int>(getpid() % 20000);
}

// Name of the first user server of the installation, and the server count.
std::pair<std::string, int> FirstUserServer(ServiceClient& client) {
    pb::ServerPage page;
    auto context = client.Context();
    auto reader = client.stub->ListServers(context.get(), pb::ListRequest());
    std::string userServer;
    int servers = 0;
    while (reader->Read(&page))
        for (const auto& s : page.servers()) {
            ++servers;
            if (s.user_server() && userServer.empty()) userServer = s.name();
        }
    EXPECT_TRUE(reader->Finish().ok());
    return {userServer, servers};
}

TEST(ProgramTest, AcknowledgedCommitsSurviveAKill9) {
    fs::path dir = fs::temp_directory_path() / ("veldrano-kill-" + std::to_string(getpid()));
    fs::create_directories(dir);
    std::string data = (dir / "store.sqlite").string();
    int port = FreePort();

    std::set<std::string> acknowledged;
    {
        ServerProcess server(data, port);
        ServiceClient client(server.Channel());
        ASSERT_TRUE(client.Login("veldrano").ok()) << "demo password refused";

        auto [userServer, servers] = FirstUserServer(client);
        EXPECT_GE(servers, 3);
        ASSERT_FALSE(userServer.empty());

        // Commit from a second thread and kill the server while it writes.
        std::atomic<bool> stop{false};
        std::mutex m;
        std::thread writer([&] {
            for (int i = 0; !stop; ++i) {
                pb::User u;
                u.set_host_name(userServer);
                u.set_name("k" + std::to_string(i));
                u.set_comment("Written before the crash");
                u.set_admin_priority(1);
                u.set_priority(1);
                for (int p = 0; p < 9; ++p) u.add_background_paper(0);
                u.set_is_new(true);
                pb::CommitReply reply;
                if (!client.stub->CommitUser(client.Context(2).get(), u, &reply).ok()) break;
                std::lock_guard lock(m);
                acknowledged.insert(u.name());
            }
        });
        while (true) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            std::lock_guard lock(m);
            if (acknowledged.size() >= 25) break;
        }
        server.Kill(SIGKILL);
        stop = true;
        writer.join();
    }

    ServerProcess again(data, port);
    ServiceClient client(again.Channel());
    ASSERT_TRUE(client.Login("veldrano").ok());
    std::string userServer = FirstUserServer(client).first;
    for (const auto& name : acknowledged) {
        pb::Key key;
        key.set_host_name(userServer);
        key.set_name(name);
        pb::User user;
        ASSERT_TRUE(client.stub->GetUser(client.Context().get(), key, &user).ok());
        EXPECT_FALSE(user.is_new()) << name << " was acknowledged but is gone";
    }
    EXPECT_GE(acknowledged.size(), 25u);
    again.Kill(SIGTERM);
    fs::remove_all(dir);
}

}  // namespace
}  // namespace veldrano::server::testing
