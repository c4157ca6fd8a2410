#pragma once
// A running reference server: store, administration service, simulation and
// gRPC listener. The program veldrano-server is a thin command line around it;
// tests and benchmarks embed it in their own process.

#include <grpcpp/grpcpp.h>

#include <memory>
#include <string>

namespace veldrano::server {

class Store;
class Auth;
class AdminService;
class Simulator;

struct ServerOptions {
    std::string dataPath;                    // SQLite file; created when missing
    std::string listen = "127.0.0.1:47110";  // "" for no TCP listener (in-process only)
    std::string brand;                       // stored when given; default "kelvar"
    std::string language;                    // stored when given; default "en"
    std::string password;                    // sets the administrator password when given
    std::string initialPassword;             // used only when the store has no password yet
    bool demo = false;                       // fill an empty store with the demo installation
    bool simulate = true;                    // background event stream and process transitions
    int simulationPeriodMs = 2000;
    int loginFailuresBeforeThrottle = 5;
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
    // The password generated at the first start of a store without one (and
    // without initialPassword), "" otherwise.
    const std::string& GeneratedPassword() const { return generatedPassword_; }

    Store& GetStore() { return *store_; }
    Auth& GetAuth() { return *auth_; }
    Simulator& GetSimulator() { return *simulator_; }
    void Wait();
    void Shutdown();

private:
    std::unique_ptr<Store> store_;
    std::unique_ptr<Auth> auth_;
    std::unique_ptr<AdminService> service_;
    std::unique_ptr<Simulator> simulator_;
    std::unique_ptr<grpc::Server> server_;
    std::string generatedPassword_;
    int port_ = 0;
};

}  // namespace veldrano::server
