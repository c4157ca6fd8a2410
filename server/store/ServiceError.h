#pragma once
// The one exception type of the server: a protocol error number (from the
// table in admin.proto) and a readable detail for the administrator.

#include <stdexcept>
#include <string>

#include "admin.pb.h"

namespace veldrano::server {

namespace pb = veldrano::admin::v1;

class ServiceError : public std::runtime_error {
public:
    ServiceError(pb::Error code, const std::string& detail)
        : std::runtime_error(detail), code_(code) {}
    pb::Error code() const { return code_; }

private:
    pb::Error code_;
};

// Number, default description and source of an error, read from the table in
// the protocol's descriptor so the .proto stays the single source.
struct ErrorInfo {
    uint32_t number = 0;
    std::string description;
    std::string source;
};
ErrorInfo DescribeError(pb::Error code);

}  // namespace veldrano::server
