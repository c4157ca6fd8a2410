#include "service/ListenAddress.h"

#include <algorithm>
#include <cctype>

#include "tls/Probe.h"

namespace veldrano::server {

namespace {

std::optional<int> ParsePort(const std::string& text) {
    if (text.empty() || text.size() > 5) return std::nullopt;
    for (const char c : text)
        if (!std::isdigit(static_cast<unsigned char>(c))) return std::nullopt;
    const int port = std::stoi(text);
    if (port > 65535) return std::nullopt;
    return port;
}

}  // namespace

std::string ListenAddress::Target() const {
    const bool v6 = host.find(':') != std::string::npos;
    return (v6 ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

bool ListenAddress::IsLoopback() const {
    return tls::IsLoopbackHost(host);
}

std::optional<ListenAddress> ParseListenAddress(const std::string& text, std::string* error) {
    ListenAddress address;
    std::string portText;
    bool hasPort = false;
    if (!text.empty() && text.front() == '[') {
        const size_t close = text.find(']');
        if (close == std::string::npos || close == 1) {
            *error = "an IPv6 address needs its closing bracket: " + text;
            return std::nullopt;
        }
        address.host = text.substr(1, close - 1);
        const std::string rest = text.substr(close + 1);
        if (!rest.empty()) {
            if (rest.front() != ':') {
                *error = "expected ':PORT' after the bracketed address: " + text;
                return std::nullopt;
            }
            portText = rest.substr(1);
            hasPort = true;
        }
    } else if (std::count(text.begin(), text.end(), ':') > 1) {
        *error = "write an IPv6 address in brackets, as [" + text + "]:PORT";
        return std::nullopt;
    } else {
        const size_t colon = text.find(':');
        address.host = text.substr(0, colon);
        if (colon != std::string::npos) {
            portText = text.substr(colon + 1);
            hasPort = true;
        }
    }
    if (address.host.empty()) {
        *error = "the listen address needs a host (0.0.0.0 for every address): " + text;
        return std::nullopt;
    }
    if (hasPort) {
        const auto port = ParsePort(portText);
        if (!port) {
            *error = "the port must be a number from 0 to 65535: " + portText;
            return std::nullopt;
        }
        address.port = *port;
    }
    return address;
}

}  // namespace veldrano::server
