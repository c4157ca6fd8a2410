#pragma once
// The service suites' starting point: a server host on a fresh store in a
// directory of its own, seeded with the small installation, and a raw
// protocol client on its in-process channel.

#include <gtest/gtest.h>

#include <memory>

#include "service/ServerHost.h"
#include "sim/Simulator.h"
#include "tests/ServiceClient.h"
#include "tests/StoreFixtures.h"

namespace veldrano::server::testing {

class ServiceFixture : public ::testing::Test {
protected:
    explicit ServiceFixture(int attemptsPerWindow = 3) {
        ServerOptions options = HostOptions(dir_, "");
        options.loginAttemptsPerWindow = attemptsPerWindow;
        host_ = std::make_unique<ServerHost>(options);
        SeedInstallation(host_->GetStore());
        host_->GetSimulator().EnsureProcessSlots();
        client_ = std::make_unique<ServiceClient>(host_->InProcessChannel());
    }

    ServiceClient& client() { return *client_; }
    Store& store() { return host_->GetStore(); }

    TempDirectory dir_{"veldrano-service"};
    std::unique_ptr<ServerHost> host_;
    std::unique_ptr<ServiceClient> client_;
};

}  // namespace veldrano::server::testing
