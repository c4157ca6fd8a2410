#include "service/ServerHost.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "demo/DemoData.h"
#include "service/AdminService.h"
#include "service/Auth.h"
#include "service/ListenAddress.h"
#include "service/Log.h"
#include "sim/Simulator.h"
#include "store/Store.h"
#include "store/StoreLock.h"
#include "tls/Certificates.h"

namespace veldrano::server {

namespace fs = std::filesystem;

namespace {

constexpr int kMaxMessageBytes = 4 * 1024 * 1024;

std::string ReadFile(const fs::path& path) {
    std::ifstream in(path);
    if (!in) throw std::runtime_error("cannot read " + path.string());
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Writes text to path through a new file that has mode from the start (a key
// must never be readable by others, not even for a moment), then moves it
// into place.
void WriteFile(const fs::path& path, const std::string& text, mode_t mode) {
    const fs::path partial = path.string() + ".new";
    ::unlink(partial.c_str());
    const int fd = ::open(partial.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (fd < 0) throw std::runtime_error("cannot create " + partial.string());
    const bool written = ::write(fd, text.data(), text.size()) == ssize_t(text.size());
    ::close(fd);
    if (!written) throw std::runtime_error("cannot write " + partial.string());
    fs::rename(partial, path);
}

std::string ThisHostName() {
    char name[256] = {};
    return gethostname(name, sizeof name - 1) == 0 && name[0] ? name : "localhost";
}

// The certificate and key the server presents: those given, or its own
// beside the store, made at the first start that needs them.
tls::Identity LoadIdentity(const ServerOptions& options, bool* created) {
    tls::Identity identity;
    if (!options.certificateFile.empty() || !options.keyFile.empty()) {
        if (options.certificateFile.empty() || options.keyFile.empty())
            throw std::runtime_error("a certificate needs its key and a key its certificate");
        identity = {ReadFile(options.certificateFile), ReadFile(options.keyFile)};
        tls::CheckIdentity(identity);
        return identity;
    }
    const fs::path dir = fs::absolute(options.dataPath).parent_path();
    const fs::path cert = dir / "server.crt", key = dir / "server.key";
    if (fs::exists(cert) && fs::exists(key)) {
        identity = {ReadFile(cert), ReadFile(key)};
        tls::CheckIdentity(identity);
        return identity;
    }
    identity = tls::CreateSelfSigned({ThisHostName(), "localhost", "127.0.0.1", "::1"});
    WriteFile(key, identity.privateKeyPem, 0600);
    WriteFile(cert, identity.certificatePem, 0644);
    *created = true;
    return identity;
}

}  // namespace

ServerHost::ServerHost(const ServerOptions& options)
    : lock_(std::make_unique<StoreLock>(options.dataPath)),
      store_(std::make_unique<Store>(options.dataPath)) {
    CaptureLibraryLogs();
    if (!options.brand.empty()) store_->SetMeta("brand", options.brand);
    if (!options.language.empty()) store_->SetMeta("language", options.language);

    auth_ = std::make_unique<Auth>(*store_, options.loginAttemptsPerWindow);
    if (!options.password.empty()) {
        auth_->SetPassword(options.password);
    } else if (!auth_->HasPassword()) {
        if (options.initialPassword.empty()) generatedPassword_ = RandomPassword();
        initialPasswordUsed_ = !options.initialPassword.empty();
        auth_->SetPassword(options.initialPassword.empty() ? generatedPassword_
                                                           : options.initialPassword);
    }

    simulator_ = std::make_unique<Simulator>(*store_);
    if (options.demo && store_->IsEmpty()) FillDemo(*store_);
    simulator_->EnsureProcessSlots();

    service_ = std::make_unique<AdminService>(*store_, *auth_, *simulator_, options.writeTimeout);
    grpc::ServerBuilder builder;
    builder.SetMaxReceiveMessageSize(kMaxMessageBytes);
    builder.SetMaxSendMessageSize(kMaxMessageBytes);
    Listen(builder, options);
    builder.RegisterService(service_.get());
    server_ = builder.BuildAndStart();
    if (!server_ || (!options.listen.empty() && port_ == 0))
        throw ServiceError(pb::ERROR_HOST_UNREACHABLE,
                           "cannot listen on " + options.listen +
                               ": the port is in use or the address is not this machine's");

    if (options.simulate) simulator_->Run(options.simulationPeriodMs);
}

void ServerHost::Listen(grpc::ServerBuilder& builder, const ServerOptions& options) {
    // Without this gRPC lets a second server share the port, and the
    // kernel then splits the consoles' connections between the two.
    builder.AddChannelArgument(GRPC_ARG_ALLOW_REUSEPORT, 0);
    if (options.listen.empty()) return;
    std::string error;
    const auto address = ParseListenAddress(options.listen, &error);
    if (!address) throw ServiceError(pb::ERROR_INVALID_ARGUMENT, error);
    if (address->IsLoopback()) {
        builder.AddListeningPort(address->Target(), grpc::InsecureServerCredentials(), &port_);
        return;
    }
    const tls::Identity identity = LoadIdentity(options, &certificateCreated_);
    grpc::SslServerCredentialsOptions tlsOptions;
    tlsOptions.pem_key_cert_pairs.push_back({identity.privateKeyPem, identity.certificatePem});
    builder.AddListeningPort(address->Target(), grpc::SslServerCredentials(tlsOptions), &port_);
    certificatePem_ = identity.certificatePem;
}

ServerHost::~ServerHost() {
    Shutdown();
}

std::shared_ptr<grpc::Channel> ServerHost::InProcessChannel() {
    grpc::ChannelArguments args;
    args.SetMaxReceiveMessageSize(kMaxMessageBytes);
    return server_->InProcessChannel(args);
}

void ServerHost::Wait() {
    if (server_) server_->Wait();
}

void ServerHost::Shutdown() {
    if (simulator_) simulator_->Stop();
    if (server_) server_->Shutdown(std::chrono::system_clock::now() + std::chrono::seconds(2));
}

}  // namespace veldrano::server
