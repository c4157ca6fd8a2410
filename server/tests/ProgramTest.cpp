// The real veldrano-server program: the offline password reset, and a demo
// store served on loopback that keeps every acknowledged commit through a
// kill -9.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <set>
#include <thread>

#include "demo/DemoData.h"
#include "tests/ServiceClient.h"
#include "tests/TempDirectory.h"

namespace veldrano::server::testing {
namespace {

std::string Binary() {
    const char* bin = std::getenv("VELDRANO_SERVER_BIN");
    return bin ? bin : "server/veldrano-server";
}

// Runs the program with arguments, feeding input to it; answers its exit
// code and puts what it printed in *output.
int RunProgram(const std::string& arguments, const std::string& input, std::string* output) {
    TempDirectory scratch("veldrano-run");
    std::ofstream(scratch.File("in")) << input;
    // A program that starts serving by mistake is stopped, not waited for.
    const std::string command = "timeout 20 " + Binary() + " " + arguments + " < " +
                                scratch.File("in") + " > " + scratch.File("out") + " 2>&1";
    const int status = std::system(command.c_str());
    std::ifstream out(scratch.File("out"));
    output->assign(std::istreambuf_iterator<char>(out), {});
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(ProgramOptionsTest, PasswordResetIsOfflineCheckedAndTakesEffect) {
    TempDirectory dir;
    const std::string store = dir.File("store.db");
    std::string output;
    { ServerHost host(HostOptions(dir, "")); }

    // Too short: refused with the least length, nothing changes.
    EXPECT_EQ(RunProgram("--data " + store + " --set-password", "short\n", &output), 1);
    EXPECT_NE(output.find("at least 8 characters"), std::string::npos) << output;

    EXPECT_EQ(RunProgram("--data=" + store + " --set-password", "a new password\n", &output), 0)
        << output;
    ServerOptions options = HostOptions(dir, "");
    options.password.clear();
    ServerHost host(options);
    ServiceClient client(host.InProcessChannel());
    EXPECT_FALSE(client.Login(kHostPassword).ok());
    EXPECT_TRUE(client.Login("a new password").ok());
}

// The program serving the demo installation in data on a loopback port.
class ServerProcess {
public:
    ServerProcess(const std::string& data, int port) {
        const std::string binary = Binary(), listen = "127.0.0.1:" + std::to_string(port);
        pid_ = fork();
        if (pid_ == 0) {
            execl(binary.c_str(), binary.c_str(), "--demo", "--no-simulation", "--data",
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
        waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }
    std::shared_ptr<grpc::Channel> Channel() { return channel_; }

private:
    pid_t pid_ = -1;
    std::shared_ptr<grpc::Channel> channel_;
};

TEST(ProgramTest, AcknowledgedCommitsSurviveAKill9) {
    TempDirectory dir("veldrano-kill");
    const std::string data = dir.File("store.sqlite");
    // A port from a range unlikely to be taken, spread by process id so that
    // parallel test runs do not collide.
    const int port = 20000 + static_cast<int>(getpid() % 20000);
    const std::string userServer = "fxmaster";  // of the demo installation

    std::set<std::string> acknowledged;
    {
        ServerProcess server(data, port);
        ServiceClient client(server.Channel());
        ASSERT_TRUE(client.Login("veldrano").ok()) << "demo password refused";

        // Commit from a second thread and kill the server while it writes.
        std::atomic<bool> stop{false}, stopped{false};
        std::mutex m;
        std::thread writer([&] {
            for (int i = 0; !stop; ++i) {
                pb::User u =
                    demo::MakeUser(userServer, "k" + std::to_string(i), "Before the crash");
                pb::CommitReply reply;
                if (!client.stub->CommitUser(client.Context(2).get(), u, &reply).ok()) break;
                std::lock_guard lock(m);
                acknowledged.insert(u.name());
            }
            stopped = true;
        });
        for (size_t count = 0; count < 25 && !stopped;) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            std::lock_guard lock(m);
            count = acknowledged.size();
        }
        server.Kill(SIGKILL);
        stop = true;
        writer.join();
    }
    ASSERT_GE(acknowledged.size(), 25u);

    ServerProcess again(data, port);
    ServiceClient client(again.Channel());
    ASSERT_TRUE(client.Login("veldrano").ok());
    for (const auto& name : acknowledged) {
        pb::User user;
        ASSERT_TRUE(
            client.stub->GetUser(client.Context().get(), Key(userServer, name), &user).ok());
        EXPECT_FALSE(user.is_new()) << name << " was acknowledged but is gone";
    }
    again.Kill(SIGTERM);
}

}  // namespace
}  // namespace veldrano::server::testing
