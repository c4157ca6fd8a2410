#pragma once
// Certificates as the server makes them and the console pins them: PEM text
// in, PEM text out, OpenSSL underneath.

#include <stdexcept>
#include <string>
#include <vector>

namespace veldrano::tls {

struct Identity {
    std::string certificatePem;
    std::string privateKeyPem;
};

// A self-signed P-256 certificate for names (host names, or IP literals that
// become IP entries), the first one as its common name, valid ten years.
Identity CreateSelfSigned(const std::vector<std::string>& names);

// Throws std::runtime_error saying what is wrong when the certificate or the
// key cannot be read or the key does not belong to the certificate.
void CheckIdentity(const Identity& identity);

// SHA-256 of the certificate's DER form as upper-case hex pairs joined by
// ':', the form ssh and browsers show; "" when pem holds no certificate.
std::string Fingerprint(const std::string& certificatePem);

// The name a client must ask for to match the certificate: its first DNS
// name, else its common name; "" when it has neither.
std::string HostNameOf(const std::string& certificatePem);

}  // namespace veldrano::tls
