// A server that leaves loopback: TLS with its own or a given certificate,
// clients that pin it, one server per port and per store, and private files.

#include <gtest/gtest.h>
#include <sys/stat.h>

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

TEST(ListenAddressTest, PortsAreCheckedAndDefaulted) {
    std::string error;
    for (auto [text, target, loopback] :
         {std::tuple{"server.example.net", "server.example.net:47110", false},
          {"[::1]:9000", "[::1]:9000", true},
          {"127.1.2.3:0", "127.1.2.3:0", true}}) {
        const auto address = ParseListenAddress(text, &error);
        ASSERT_TRUE(address) << text;
        EXPECT_EQ(address->Target(), target);
        EXPECT_EQ(address->IsLoopback(), loopback) << text;
    }
    for (const char* bad : {"host:", "host:80x", ":47110", "::1:80", "[::1", "host:99999"})
        EXPECT_FALSE(ParseListenAddress(bad, &error)) << bad;
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

        EXPECT_TRUE(PinnedClient(host.Port(), first).Login(kHostPassword).ok());
        // The key and the store's files are the owner's alone.
        for (const char* file :
             {"server.key", "store.db", "store.db-wal", "store.db-shm", "store.db.lock"}) {
            struct stat status {};
            ASSERT_EQ(stat(dir.File(file).c_str(), &status), 0) << file;
            EXPECT_EQ(status.st_mode & 0777, 0600u) << file;
        }

        // A client without TLS gets no answer, and nothing is half-done.
        EXPECT_EQ(PlainClient(host.Port()).Login(kHostPassword).error_code(),
                  grpc::StatusCode::UNAVAILABLE);

        // A client that pinned another certificate refuses this server.
        const tls::Identity other = tls::CreateSelfSigned({tls::HostNameOf(first)});
        EXPECT_EQ(PinnedClient(host.Port(), other.certificatePem).Login(kHostPassword).error_code(),
                  grpc::StatusCode::UNAVAILABLE);
    }

    // The next start presents the same certificate, so pins stay valid.
    ServerHost again(HostOptions(dir, "0.0.0.0:0"));
    EXPECT_FALSE(again.CertificateCreated());
    EXPECT_EQ(again.CertificatePem(), first);
}

TEST(TlsTest, AGivenCertificateIsPresentedAndNoneIsMade) {
    TempDirectory dir;
    const tls::Identity given = tls::CreateSelfSigned({"admin.example.net", "127.0.0.1"});
    std::ofstream(dir.File("given.crt")) << given.certificatePem;
    std::ofstream(dir.File("given.key")) << given.privateKeyPem;
    ServerOptions options = HostOptions(dir, "0.0.0.0:0");
    options.certificateFile = dir.File("given.crt");
    options.keyFile = dir.File("given.key");
    ServerHost host(options);
    EXPECT_EQ(tls::Fingerprint(host.CertificatePem()), tls::Fingerprint(given.certificatePem));
    EXPECT_EQ(tls::HostNameOf(host.CertificatePem()), "admin.example.net");
    EXPECT_TRUE(PinnedClient(host.Port(), given.certificatePem).Login(kHostPassword).ok());
    EXPECT_FALSE(std::filesystem::exists(dir.File("server.key")));
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
    // The first one still serves, in plain text on loopback for the local
    // console, without a certificate.
    EXPECT_FALSE(first.Encrypted());
    EXPECT_TRUE(PlainClient(first.Port()).Login(kHostPassword).ok());
    EXPECT_FALSE(std::filesystem::exists(dir.File("server.crt")));
}

}  // namespace
}  // namespace veldrano::server::testing
