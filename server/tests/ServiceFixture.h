#pragma once
// The service suites' starting point: a server host on a fresh store in a
// directory of its own, seeded with the small installation, and a raw
// protocol client on its in-process channel.

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

#include "service/ServerHost.h"
#include "sim/Simulator.h"
#include "tests/ServiceClient.h"
#include "tests/StoreFixtures.h"

namespace veldrano::server::testing {

constexpr const char* kPassword = "s3cret pass";

class ServiceFixture : public ::testing::Test {
protected:
    explicit ServiceFixture(int failuresBeforeThrottle = 3) {
        dir_ = std::filesystem::temp_directory_path() /
               ("veldrano-service-" + std::to_string(::getpid()) + "-" +
                std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
        std::filesystem::create_directories(dir_);
        ServerOptions options;
        options.dataPath = (dir_ / "store.sqlite").string();
        options.listen = "";
        options.password = kPassword;
        options.simulate = false;
        options.loginAttemptsPerWindow = failuresBeforeThrottle;
        host_ = std::make_unique<ServerHost>(options);
        SeedInstallation(host_->GetStore());
        host_->GetSimulator().EnsureProcessSlots();
        client_ = std::make_unique<ServiceClient>(host_->InProcessChannel());
    }
    ~ServiceFixture() override {
        client_.reset();
        host_.reset();
        std::filesystem::remove_all(dir_);
    }

    ServiceClient& client() { return *client_; }
    Store& store() { return host_->GetStore(); }

    std::filesystem::path dir_;
    std::unique_ptr<ServerHost> host_;
    std::unique_ptr<ServiceClient> client_;
};

}  // namespace veldrano::server::testing
