#pragma once
// A running reference server: store (owned exclusively, see StoreLock),
// administration service, simulation and gRPC listener. The program veldrano-server is a thin
// command line around it; tests and benchmarks embed it in their own process.

#include <grpcpp/grpcpp.h>

#include <chrono>
#include <memory>
#include <string>

namespace veldrano::server {

class Store;
class Auth;
class AdminService;
class Simulator;
class StoreLock;

struct ServerOptions {
    std::string dataPath;  // SQLite file; created when missing
    // "host:port" ("[v6]:port"); "" for no TCP listener (in-process only).
    // A loopback address is served in plain text, any other with TLS.
    std::string listen = "127.0.0.1:47110";
    // The TLS certificate and key (PEM files). Without them the server uses
    // server.crt / server.key beside the store, made on first need.
    std::string certificateFile;
    std::string keyFile;
    std::string brand;            // stored when given; default "kelvar"
    std::string language;         // stored when given; default "en"
    std::string password;         // sets the administrator password when given
    std::string initialPassword;  // used only when the store has no password yet
    bool demo = false;            // fill an empty store with the demo installation
    bool simulate = true;         // background event stream and process transitions
    int simulationPeriodMs = 2000;
    int loginAttemptsPerWindow = 5;  // see Auth
    // A client that takes no page of a list for this long is cut off.
    std::chrono::milliseconds writeTimeout = std::chrono::seconds(30);
};

class ServerHost {
public:
    explicit ServerHost(const ServerOptions& options);
    ~ServerHost();
    ServerHost(const ServerHost&) = delete;
    ServerHost& operator=(const ServerHost&) = delete;

    // A channel to the service inside this process, without TCP.
    std::shared_ptr<grpc::Channel> InProcessChannel();
    // The TCP port actually bound (useful with listen "127.0.0.1:0"); 0 when none.
    int Port() const { return port_; }
    // Whether the listener speaks TLS, and the certificate it presents.
    bool Encrypted() const { return !certificatePem_.empty(); }
    const std::string& CertificatePem() const { return certificatePem_; }
    // True when the certificate was made at this start.
    bool CertificateCreated() const { return certificateCreated_; }
    // The password generated at the first start of a store without one (and
    // without initialPassword), "" otherwise.
    const std::string& GeneratedPassword() const { return generatedPassword_; }
    // Whether initialPassword became the password (the store had none).
    bool InitialPasswordUsed() const { return initialPasswordUsed_; }

    Store& GetStore() { return *store_; }
    Auth& GetAuth() { return *auth_; }
    Simulator& GetSimulator() { return *simulator_; }
    void Wait();
    void Shutdown();

private:
    void Listen(grpc::ServerBuilder& builder, const ServerOptions& options);

    std::unique_ptr<StoreLock> lock_;  // first in, last out
    std::unique_ptr<Store> store_;
    std::unique_ptr<Auth> auth_;
    std::unique_ptr<AdminService> service_;
    std::unique_ptr<Simulator> simulator_;
    std::unique_ptr<grpc::Server> server_;
    std::string generatedPassword_;
    std::string certificatePem_;
    bool certificateCreated_ = false;
    bool initialPasswordUsed_ = false;
    int port_ = 0;
};

}  // namespace veldrano::server
