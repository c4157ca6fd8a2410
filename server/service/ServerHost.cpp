#include "service/ServerHost.h"

#include <iostream>

#include "demo/DemoData.h"
#include "service/AdminService.h"
#include "service/Auth.h"
#include "sim/Simulator.h"
#include "store/Store.h"

namespace veldrano::server {

namespace {
constexpr int kMaxMessageBytes = 4 * 1024 * 1024;
}

ServerHost::ServerHost(const ServerOptions& options)
    : store_(std::make_unique<Store>(options.dataPath)) {
    if (!options.brand.empty()) store_->SetMeta("brand", options.brand);
    if (!options.language.empty()) store_->SetMeta("language", options.language);

    auth_ = std::make_unique<Auth>(*store_, options.loginFailuresBeforeThrottle);
    if (!options.password.empty()) {
        auth_->SetPassword(options.password);
    } else if (!auth_->HasPassword()) {
        if (options.initialPassword.empty()) generatedPassword_ = RandomPassword();
        auth_->SetPassword(options.initialPassword.empty() ? generatedPassword_
                                                           : options.initialPassword);
    }

    simulator_ = std::make_unique<Simulator>(*store_);
    if (options.demo && store_->IsEmpty()) FillDemo(*store_);
    simulator_->EnsureProcessSlots();

    service_ = std::make_unique<AdminService>(*store_, *auth_, *simulator_);
    grpc::ServerBuilder builder;
    builder.SetMaxReceiveMessageSize(kMaxMessageBytes);
    builder.SetMaxSendMessageSize(kMaxMessageBytes);
    if (!options.listen.empty())
        builder.AddListeningPort(options.listen, grpc::InsecureServerCredentials(), &port_);
    builder.RegisterService(service_.get());
    server_ = builder.BuildAndStart();
    if (!server_ || (!options.listen.empty() && port_ == 0))
        throw ServiceError(pb::ERROR_HOST_UNREACHABLE, "cannot listen on " + options.listen);

    if (options.simulate) simulator_->Run(options.simulationPeriodMs);
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
