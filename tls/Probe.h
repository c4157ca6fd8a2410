#pragma once
// Looks at what a server presents before the console trusts it: one TLS
// handshake that reads the certificate without sending anything else.

#include <string>

namespace veldrano::tls {

struct ProbeResult {
    enum class Outcome {
        Encrypted,     // the handshake finished; certificatePem is the server's
        NotEncrypted,  // the host answered, but not with TLS
        NoAnswer,      // connected, but the host said nothing within the time-out
        Unreachable,   // no connection (name unknown, refused, timed out)
    };
    Outcome outcome = Outcome::Unreachable;
    std::string certificatePem;
    // The certificate chains to the system's trust store and names host.
    bool trustedBySystem = false;
    std::string detail;  // why it was not encrypted or not reachable
};

ProbeResult Probe(const std::string& host, int port, int timeoutMs);

// Whether host names this machine's loopback interface (localhost, 127.x,
// ::1): the one place where a server may be reached without TLS.
bool IsLoopbackHost(const std::string& host);

// The PEM text of the system's trust store ("" when it cannot be read), as
// gRPC takes its root certificates.
std::string SystemTrustBundle();

}  // namespace veldrano::tls
