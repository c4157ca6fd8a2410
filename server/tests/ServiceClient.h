#pragma once
// A raw protocol client for the service suites: a stub on a channel, the
// token after login, and the ErrorDetail of the last refusal.

#include <grpcpp/grpcpp.h>

#include <memory>
#include <string>

#include "admin.grpc.pb.h"

namespace veldrano::server::testing {

namespace pb = veldrano::admin::v1;

struct ServiceClient {
    explicit ServiceClient(std::shared_ptr<grpc::Channel> channel)
        : stub(pb::Administration::NewStub(channel)) {}

    std::unique_ptr<grpc::ClientContext> Context(int seconds = 10) const {
        auto context = std::make_unique<grpc::ClientContext>();
        context->set_deadline(std::chrono::system_clock::now() + std::chrono::seconds(seconds));
        if (!token.empty()) context->AddMetadata("veldrano-token", token);
        return context;
    }

    grpc::Status Login(const std::string& password) {
        pb::LoginRequest req;
        req.set_password(password);
        req.set_host_name(" localhost ");
        pb::LoginReply reply;
        auto status = stub->Login(Context().get(), req, &reply);
        if (status.ok()) token = reply.token();
        return status;
    }

    static pb::ErrorDetail Detail(const grpc::Status& status) {
        pb::ErrorDetail detail;
        detail.ParseFromString(status.error_details());
        return detail;
    }

    std::unique_ptr<pb::Administration::Stub> stub;
    std::string token;
};

}  // namespace veldrano::server::testing
