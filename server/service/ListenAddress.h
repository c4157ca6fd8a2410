#pragma once
// The address the server listens on, as given on the command line:
// "HOST", "HOST:PORT", "[IPv6]" or "[IPv6]:PORT".

#include <optional>
#include <string>

namespace veldrano::server {

constexpr int kDefaultPort = 47110;

struct ListenAddress {
    std::string host;  // without brackets
    int port = kDefaultPort;

    // "host:port", with brackets around an IPv6 host, as gRPC takes it.
    std::string Target() const;
    // Loopback addresses stay on this machine and are served without TLS.
    bool IsLoopback() const;
};

// Parses text; a missing port is kDefaultPort. Port 0 asks for any free
// port. Answers nothing and sets *error for anything else, e.g. a port out
// of 0..65535 or an empty host.
std::optional<ListenAddress> ParseListenAddress(const std::string& text, std::string* error);

}  // namespace veldrano::server
