#pragma once
// The channel to a server, opened only after the console has decided to
// trust it. A server off this machine must speak TLS; its certificate is
// trusted when it chains to the system's trust store, or when the
// administrator accepted its fingerprint once, after which that fingerprint
// is pinned (as ssh pins host keys) and any other certificate is refused.
// A server on a loopback address may also answer in plain text.

#include <grpcpp/grpcpp.h>

#include <QString>
#include <functional>
#include <memory>
#include <string>

#include "admin.pb.h"
#include "tls/Probe.h"

namespace winadmin {

// How the console reaches one server.
struct ChannelPlan {
    enum class Kind { Plain, SystemTrust, Pinned, AskFirst, Refuse };
    Kind kind = Kind::Refuse;
    QString fingerprint;  // of the certificate presented (Pinned, AskFirst, Refuse)
    veldrano::admin::v1::Error refusal = veldrano::admin::v1::ERROR_NONE;  // for Refuse
};

// The decision alone: what the probe found, whether the host is this
// machine, and the fingerprint pinned for the server ("" for none).
ChannelPlan PlanChannel(const veldrano::tls::ProbeResult& probe, bool loopbackHost,
                        const QString& pinnedFingerprint);

// Where a server's pinned fingerprint is kept in the settings store.
QString PinnedFingerprintKey(const std::string& target);

// Runs blocking work the way the session waits for its calls (the window
// keeps painting meanwhile).
using Waiter = std::function<void(const std::function<void()>& work)>;

// Probes target ("host:port", "[v6]:port") through wait, asks the
// administrator through the prompter about a certificate never seen before,
// and opens the channel with arguments. Throws SessionError:
// ERROR_HOST_UNREACHABLE, ERROR_TIMEOUT, ERROR_NOT_ENCRYPTED,
// ERROR_CERTIFICATE_CHANGED or ERROR_CERTIFICATE_NOT_TRUSTED.
std::shared_ptr<grpc::Channel> OpenTrustedChannel(const std::string& target,
                                                  grpc::ChannelArguments arguments,
                                                  int timeoutSeconds, const Waiter& wait);

}  // namespace winadmin
