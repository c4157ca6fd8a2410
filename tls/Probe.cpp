#include "tls/Probe.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>

namespace veldrano::tls {

namespace {

using Outcome = ProbeResult::Outcome;

struct Socket {
    int fd = -1;
    ~Socket() {
        if (fd >= 0) ::close(fd);
    }
};

// Connects to the first address of host that accepts within the time-out.
bool ConnectWithin(const std::string& host, int port, int timeoutMs, Socket& socket,
                   std::string* detail) {
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int rc = getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found);
    if (rc != 0) {
        *detail = gai_strerror(rc);
        return false;
    }
    std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> list(found, freeaddrinfo);
    for (addrinfo* a = found; a; a = a->ai_next) {
        Socket attempt;
        attempt.fd = ::socket(a->ai_family, a->ai_socktype | SOCK_CLOEXEC, a->ai_protocol);
        if (attempt.fd < 0) continue;
        const int flags = fcntl(attempt.fd, F_GETFL);
        fcntl(attempt.fd, F_SETFL, flags | O_NONBLOCK);
        int error = 0;
        if (::connect(attempt.fd, a->ai_addr, a->ai_addrlen) != 0) {
            if (errno != EINPROGRESS) {
                *detail = std::strerror(errno);
                continue;
            }
            pollfd p{attempt.fd, POLLOUT, 0};
            if (poll(&p, 1, timeoutMs) != 1) {
                *detail = "no answer within the time-out";
                continue;
            }
            socklen_t size = sizeof error;
            getsockopt(attempt.fd, SOL_SOCKET, SO_ERROR, &error, &size);
            if (error != 0) {
                *detail = std::strerror(error);
                continue;
            }
        }
        fcntl(attempt.fd, F_SETFL, flags);
        timeval limit{timeoutMs / 1000, (timeoutMs % 1000) * 1000};
        setsockopt(attempt.fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        setsockopt(attempt.fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
        std::swap(socket.fd, attempt.fd);
        return true;
    }
    return false;
}

std::string CertificatePem(X509* cert) {
    std::unique_ptr<BIO, decltype(&BIO_free_all)> bio(BIO_new(BIO_s_mem()), BIO_free_all);
    PEM_write_bio_X509(bio.get(), cert);
    char* data = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &data);
    return std::string(data, static_cast<size_t>(size));
}

}  // namespace

ProbeResult Probe(const std::string& host, int port, int timeoutMs) {
    ProbeResult result;
    Socket socket;
    if (!ConnectWithin(host, port, timeoutMs, socket, &result.detail)) return result;

    std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(SSL_CTX_new(TLS_client_method()),
                                                              SSL_CTX_free);
    SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION);
    SSL_CTX_set_default_verify_paths(context.get());
    // The handshake must finish whatever the certificate, so that the
    // console can show an unknown one; the verdict is read afterwards.
    SSL_CTX_set_verify(context.get(), SSL_VERIFY_NONE, nullptr);
    std::unique_ptr<SSL, decltype(&SSL_free)> ssl(SSL_new(context.get()), SSL_free);
    static const unsigned char alpn[] = {2, 'h', '2'};
    SSL_set_alpn_protos(ssl.get(), alpn, sizeof alpn);
    SSL_set_tlsext_host_name(ssl.get(), host.c_str());
    SSL_set1_host(ssl.get(), host.c_str());
    SSL_set_fd(ssl.get(), socket.fd);
    ERR_clear_error();
    errno = 0;
    if (const int rc = SSL_connect(ssl.get()); rc != 1) {
        const int saved = errno;
        const int error = SSL_get_error(ssl.get(), rc);
        // The socket's time-out ends a read as "try again": a host that
        // took the connection and never spoke is silent, not plain text.
        if (error == SSL_ERROR_WANT_READ || error == SSL_ERROR_WANT_WRITE ||
            (error == SSL_ERROR_SYSCALL && (saved == EAGAIN || saved == EWOULDBLOCK))) {
            result.outcome = Outcome::NoAnswer;
            result.detail = "no answer within the time-out";
            return result;
        }
        result.outcome = Outcome::NotEncrypted;
        const unsigned long queued = ERR_get_error();
        const char* reason = queued ? ERR_reason_error_string(queued) : nullptr;
        result.detail = reason ? reason : "the connection ended before a TLS handshake";
        return result;
    }
    X509* peer = SSL_get1_peer_certificate(ssl.get());
    if (!peer) {
        result.outcome = Outcome::NotEncrypted;
        result.detail = "the server presented no certificate";
        return result;
    }
    result.outcome = Outcome::Encrypted;
    result.certificatePem = CertificatePem(peer);
    result.trustedBySystem = SSL_get_verify_result(ssl.get()) == X509_V_OK;
    X509_free(peer);
    SSL_shutdown(ssl.get());
    return result;
}

bool IsLoopbackHost(const std::string& host) {
    if (host == "localhost" || host == "::1") return true;
    in_addr v4{};
    return inet_pton(AF_INET, host.c_str(), &v4) == 1 && (ntohl(v4.s_addr) >> 24) == 127;
}

std::string SystemTrustBundle() {
    const char* override = std::getenv(X509_get_default_cert_file_env());
    std::ifstream in(override && *override ? override : X509_get_default_cert_file());
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace veldrano::tls
