#pragma once
// The reference server embedded in a test: the real service over a fresh
// temporary store, reached through the real gRPC binding.

#include <QString>
#include <QTemporaryDir>
#include <memory>
#include <string>

#include "session/GrpcServerSession.h"

namespace veldrano::server {
class ServerHost;
class Store;
}  // namespace veldrano::server

namespace winadmin {

class TestServer {
public:
    struct Options {
        bool tcp = false;      // also listen on a loopback port
        std::string brand;     // server default when empty
        std::string language;  // server default when empty
        // Listen on every address instead, which the server serves with TLS
        // only: with the given certificate and key files, or its own.
        bool tls = false;
        std::string certificateFile{}, keyFile{};
    };

    static const QString Password;

    TestServer();
    explicit TestServer(Options options);
    ~TestServer();
    TestServer(const TestServer&) = delete;
    TestServer& operator=(const TestServer&) = delete;

    veldrano::server::ServerHost& Host() { return *host_; }
    veldrano::server::Store& GetStore();
    std::shared_ptr<grpc::Channel> Channel();
    // "127.0.0.1:port" of the TCP listener; empty without one.
    QString TcpHost() const;
    // The folder of the store (and of the server's own certificate).
    QString DataDirectory() const { return dir_.path(); }

    // A session logged in with the known password through the in-process channel.
    std::unique_ptr<GrpcServerSession> Login();
    // A session logged in over TCP by host name, as the console does it.
    std::unique_ptr<GrpcServerSession> LoginTcp();

    // Stops the server; the store stays on disk.
    void Shutdown();
    // Starts it again on the same store and TCP port, as after a restart of the
    // service, with the given administrator password.
    void Restart(const QString& password = Password);

    // Adds a server with every role straight to the store (no protocol call).
    void AddUserServer(const QString& name);
    // Runs SQL on the store file through a connection of its own, bypassing
    // every check of the server: for states that only a store written by an
    // older release can hold.
    void RunSqlBehindTheServer(const char* sql);

private:
    void Start(const std::string& listen, const QString& password);

    Options options_;
    QTemporaryDir dir_;
    int port_ = 0;
    std::unique_ptr<veldrano::server::ServerHost> host_;
};

}  // namespace winadmin
