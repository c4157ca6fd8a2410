#pragma once
// A raw protocol client for the service suites: a stub on a channel, the
// token after login, and the ErrorDetail of the last refusal.

#include <grpcpp/generic/generic_stub.h>
#include <grpcpp/grpcpp.h>

#include <future>
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

// The number of a refusal, 0 for success.
inline uint32_t Number(const grpc::Status& status) {
    return ServiceClient::Detail(status).number();
}

inline pb::Key Key(const std::string& host, const std::string& name) {
    pb::Key key;
    key.set_host_name(host);
    key.set_name(name);
    return key;
}

// Sends bytes as the request of method, bypassing the client's serializer.
inline grpc::Status RawCall(std::shared_ptr<grpc::Channel> channel, const std::string& method,
                            const std::string& bytes, const std::string& token = "") {
    grpc::GenericStub generic(channel);
    grpc::ClientContext context;
    context.set_deadline(std::chrono::system_clock::now() + std::chrono::seconds(10));
    if (!token.empty()) context.AddMetadata("veldrano-token", token);
    grpc::Slice slice(bytes);
    grpc::ByteBuffer request(&slice, 1), answer;
    std::promise<grpc::Status> done;
    generic.UnaryCall(&context, method, {}, &request, &answer,
                      [&](grpc::Status s) { done.set_value(s); });
    return done.get_future().get();
}

}  // namespace veldrano::server::testing
