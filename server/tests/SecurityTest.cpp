// A server that leaves loopback: TLS with its own or a given certificate,
// clients that pin it, one server per port and per store, private files,
// and the offline password reset of the real program.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdio>
#include <fstream>

#include "service/ListenAddress.h"
#include "service/ServerHost.h"
#include "tests/ServiceClient.h"
#include "tests/TempDirectory.h"
#include "tls/Certificates.h"

namespace veldrano::server::testing {
namespace {

// A client that trusts exactly rootPem, as the console does once it has
// pinned a server's certificate.
ServiceClient PinnedClient(int port, const std::string& rootPem) {
    grpc::SslCredentialsOptions tls;
    tls.pem_root_certs = rootPem;
    grpc::ChannelArguments args;
    args.SetSslTargetNameOverride(tls::HostNameOf(rootPem));
    return ServiceClient(grpc::CreateCustomChannel("127.0.0.1:" + std::to_string(port),
                                                   grpc::SslCredentials(tls), args));
}

ServiceClient PlainClient(int port) {
    return ServiceClient(grpc::CreateChannel("127.0.0.1:" + std::to_string(port),
                                             grpc::InsecureChannelCredentials()));
}

void WriteText(const std::string& path, const std::string& text) {
    std::ofstream(path) << text;
}

TEST(ListenAddressTest, PortsAreCheckedAndDefaulted) {
    std::string error;
    auto address = ParseListenAddress("server.example.net", &error);
    ASSERT_TRUE(address);
    EXPECT_EQ(address->Target(), "server.example.net:47110");
    EXPECT_FALSE(address->IsLoopback());
    address = ParseListenAddress("[::1]:9000", &error);
    ASSERT_TRUE(address);
    EXPECT_EQ(address->Target(), "[::1]:9000");
    EXPECT_TRUE(address->IsLoopback());
    EXPECT_TRUE(ParseListenAddress("127.1.2.3:0", &error)->IsLoopback());
    EXPECT_FALSE(ParseListenAddress("0.0.0.0", &error)->IsLoopback());

    for (const char* bad :
         {"host:99999", "host:", "host:-1", "host:80x", ":47110", "::1:80", "[::1"})
        EXPECT_FALSE(ParseListenAddress(bad, &error)) << bad;
    ParseListenAddress("host:99999", &error);
    EXPECT_NE(error.find("0 to 65535"), std::string::npos) << error;
}

TEST(TlsTest, AServerOffLoopbackMakesItsCertificateOnceAndServesOnlyTls) {
    TempDirectory dir;
    std::string first;
    {
        ServerHost host(HostOptions(dir, "0.0.0.0:0"));
        ASSERT_TRUE(host.Encrypted());
        EXPECT_TRUE(host.CertificateCreated());
        first = host.CertificatePem();
        EXPECT_EQ(tls::Fingerprint(first).size(), 32u * 3 - 1);

        ServiceClient pinned = PinnedClient(host.Port(), first);
        EXPECT_TRUE(pinned.Login(kHostPassword).ok());

        // A client without TLS gets no answer, and nothing is half-done.
        ServiceClient plain = PlainClient(host.Port());
        const grpc::Status status = plain.Login(kHostPassword);
        EXPECT_EQ(status.error_code(), grpc::StatusCode::UNAVAILABLE) << status.error_message();

        // A client that pinned another certificate refuses this server.
        const tls::Identity other = tls::CreateSelfSigned({tls::HostNameOf(first)});
        ServiceClient wrongPin = PinnedClient(host.Port(), other.certificatePem);
        EXPECT_EQ(wrongPin.Login(kHostPassword).error_code(), grpc::StatusCode::UNAVAILABLE);
    }
    struct stat key {};
    ASSERT_EQ(stat(dir.File("server.key").c_str(), &key), 0);
    EXPECT_EQ(key.st_mode & 0777, 0600u);

    // The next start presents the same certificate, so pins stay valid.
    ServerHost again(HostOptions(dir, "0.0.0.0:0"));
    EXPECT_FALSE(again.CertificateCreated());
    EXPECT_EQ(again.CertificatePem(), first);
}

TEST(TlsTest, AGivenCertificateIsPresentedAndABrokenPairRefusedAtStart) {
    TempDirectory dir;
    const tls::Identity given = tls::CreateSelfSigned({"admin.example.net", "127.0.0.1"});
    WriteText(dir.File("given.crt"), given.certificatePem);
    WriteText(dir.File("given.key"), given.privateKeyPem);
    ServerOptions options = HostOptions(dir, "0.0.0.0:0");
    options.certificateFile = dir.File("given.crt");
    options.keyFile = dir.File("given.key");
    {
        ServerHost host(options);
        EXPECT_EQ(tls::Fingerprint(host.CertificatePem()), tls::Fingerprint(given.certificatePem));
        EXPECT_EQ(tls::HostNameOf(host.CertificatePem()), "admin.example.net");
        EXPECT_TRUE(PinnedClient(host.Port(), given.certificatePem).Login(kHostPassword).ok());
    }
    EXPECT_FALSE(std::filesystem::exists(dir.File("server.key")));

    WriteText(dir.File("given.key"), tls::CreateSelfSigned({"x"}).privateKeyPem);
    try {
        ServerHost host(options);
        ADD_FAILURE() << "a key of another certificate was accepted";
    } catch (const std::exception& e) {
        EXPECT_NE(std::string(e.what()).find("does not belong"), std::string::npos) << e.what();
    }
}

TEST(TlsTest, LoopbackStaysPlainForTheLocalConsole) {
    TempDirectory dir;
    ServerHost host(HostOptions(dir, "127.0.0.1:0"));
    EXPECT_FALSE(host.Encrypted());
    EXPECT_TRUE(PlainClient(host.Port()).Login(kHostPassword).ok());
    EXPECT_FALSE(std::filesystem::exists(dir.File("server.crt")));
}

TEST(OwnershipTest, OneServerPerPortAndPerStore) {
    TempDirectory dir, otherDir;
    ServerHost first(HostOptions(dir, "127.0.0.1:0"));

    try {
        ServerHost samePort(HostOptions(otherDir, "127.0.0.1:" + std::to_string(first.Port())));
        ADD_FAILURE() << "a second server shares the port";
    } catch (const std::exception& e) {
        EXPECT_NE(std::string(e.what()).find(std::to_string(first.Port())), std::string::npos)
            << e.what();
    }
    try {
        ServerHost sameStore(HostOptions(dir, "127.0.0.1:0"));
        ADD_FAILURE() << "a second server opened the store";
    } catch (const std::exception& e) {
        const std::string message = e.what();
        EXPECT_NE(message.find(dir.File("store.db")), std::string::npos) << message;
        EXPECT_NE(message.find(std::to_string(getpid())), std::string::npos) << message;
    }
    // The first one still serves.
    EXPECT_TRUE(PlainClient(first.Port()).Login(kHostPassword).ok());
}

TEST(OwnershipTest, StoreFilesAreTheOwnersAlone) {
    TempDirectory dir;
    ServerHost host(HostOptions(dir, ""));
    ServiceClient client(host.InProcessChannel());
    ASSERT_TRUE(client.Login(kHostPassword).ok());
    for (const char* suffix : {"", "-wal", "-shm", ".lock"}) {
        struct stat file {};
        const std::string path = dir.File("store.db") + suffix;
        ASSERT_EQ(stat(path.c_str(), &file), 0) << path;
        EXPECT_EQ(file.st_mode & 0777, 0600u) << path;
    }
}

// Runs the real program with arguments, feeding input to it; answers its
// exit code and puts what it printed in *output.
int RunProgram(const std::string& arguments, const std::string& input, std::string* output) {
    const char* bin = std::getenv("VELDRANO_SERVER_BIN");
    TempDirectory scratch("veldrano-run");
    WriteText(scratch.File("in"), input);
    // A program that starts serving by mistake is stopped, not waited for.
    const std::string command = "timeout 20 " + std::string(bin ? bin : "server/veldrano-server") +
                                " " + arguments + " < " + scratch.File("in") + " > " +
                                scratch.File("out") + " 2>&1";
    const int status = std::system(command.c_str());
    std::ifstream in(scratch.File("out"));
    output->assign(std::istreambuf_iterator<char>(in), {});
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

    {
        ServerHost serving(HostOptions(dir, ""));
        EXPECT_EQ(RunProgram("--data " + store + " --set-password", "a new password\n", &output),
                  1);
        EXPECT_NE(output.find("in use by process " + std::to_string(getpid())), std::string::npos)
            << output;
    }

    // The first password of a new store follows the same rule.
    WriteText(dir.File("short"), "x\n");
    EXPECT_EQ(RunProgram("--data " + dir.File("new.db") + " --password-file " + dir.File("short") +
                             " --listen 127.0.0.1:0",
                         "", &output),
              1);
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

TEST(ProgramOptionsTest, HelpVersionAndRefusedArguments) {
    std::string output;
    EXPECT_EQ(RunProgram("--help", "", &output), 0);
    for (const char* option : {"--data", "--listen", "--certificate", "--key", "--demo", "--brand",
                               "--language", "--password-file", "--set-password", "--generate",
                               "--no-simulation", "--log-level", "--version", "--help"})
        EXPECT_NE(output.find(option), std::string::npos) << option;
    EXPECT_EQ(RunProgram("--version", "", &output), 0);
    EXPECT_EQ(output.rfind("veldrano-server ", 0), 0u) << output;

    EXPECT_EQ(RunProgram("--listen=host:99999", "", &output), 2);
    EXPECT_NE(output.find("0 to 65535"), std::string::npos) << output;
    EXPECT_EQ(RunProgram("--listen", "", &output), 2);
    EXPECT_NE(output.find("--listen needs a value"), std::string::npos) << output;
    EXPECT_EQ(RunProgram("--log-level loud", "", &output), 2);
    EXPECT_EQ(RunProgram("--no-such-option", "", &output), 2);
    EXPECT_NE(output.find("--no-such-option"), std::string::npos) << output;
}

}  // namespace
}  // namespace veldrano::server::testing
