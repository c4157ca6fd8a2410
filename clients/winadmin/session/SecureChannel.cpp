#include "session/SecureChannel.h"

#include <algorithm>

#include "common/Prompter.h"
#include "common/Settings.h"
#include "session/SessionError.h"
#include "tls/Certificates.h"

namespace winadmin {

namespace pb = veldrano::admin::v1;
using Kind = ChannelPlan::Kind;
using Outcome = veldrano::tls::ProbeResult::Outcome;

namespace {

// Splits a channel target into host (without brackets) and port.
std::pair<std::string, int> HostAndPort(const std::string& target) {
    const size_t colon = target.rfind(':');
    std::string host = target.substr(0, colon);
    if (host.size() > 1 && host.front() == '[') host = host.substr(1, host.size() - 2);
    return {host, std::stoi(target.substr(colon + 1))};
}

ChannelPlan Refusal(pb::Error error, const QString& fingerprint = {}) {
    return {Kind::Refuse, fingerprint, error};
}

// 32 pairs in two lines of 16, which are easier to compare than one line
// that the message box wraps anywhere.
QString ShownFingerprint(const QString& fingerprint) {
    constexpr qsizetype kHalf = 16 * 3;
    QString shown = fingerprint;
    if (shown.size() > kHalf) shown.replace(kHalf - 1, 1, QLatin1Char('\n'));
    return shown;
}

bool AskToTrust(const QString& host, const QString& fingerprint) {
    Prompt prompt;
    prompt.title = QStringLiteral("Unknown server certificate");
    prompt.text =
        QStringLiteral(
            "The server %1 presents a certificate that this console does not know yet.\n\n"
            "SHA-256 fingerprint:\n%2\n\n"
            "Compare it with the fingerprint that the server printed when it started, or that "
            "its administrator gives you. Trust this server from now on and connect?")
            .arg(host, ShownFingerprint(fingerprint));
    prompt.icon = PromptIcon::Question;
    prompt.buttons = PromptButtons::YesNo;
    prompt.defaultButton = 2;  // No: a stray Enter must not trust a stranger
    return ThePrompter().Show(prompt) == Answer::Yes;
}

}  // namespace

QString PinnedFingerprintKey(const std::string& target) {
    return QStringLiteral("TrustedServers/") + QString::fromStdString(target);
}

ChannelPlan PlanChannel(const veldrano::tls::ProbeResult& probe, bool loopbackHost,
                        const QString& pinnedFingerprint) {
    switch (probe.outcome) {
        case Outcome::Unreachable:
            return Refusal(pb::ERROR_HOST_UNREACHABLE);
        case Outcome::NoAnswer:
            return Refusal(pb::ERROR_TIMEOUT);
        case Outcome::NotEncrypted:
            return loopbackHost ? ChannelPlan{Kind::Plain, {}, pb::ERROR_NONE}
                                : Refusal(pb::ERROR_NOT_ENCRYPTED);
        case Outcome::Encrypted:
            break;
    }
    const QString fingerprint =
        QString::fromStdString(veldrano::tls::Fingerprint(probe.certificatePem));
    if (probe.trustedBySystem) return {Kind::SystemTrust, fingerprint, pb::ERROR_NONE};
    if (pinnedFingerprint.isEmpty()) return {Kind::AskFirst, fingerprint, pb::ERROR_NONE};
    if (pinnedFingerprint.compare(fingerprint, Qt::CaseInsensitive) == 0)
        return {Kind::Pinned, fingerprint, pb::ERROR_NONE};
    return Refusal(pb::ERROR_CERTIFICATE_CHANGED, fingerprint);
}

std::shared_ptr<grpc::Channel> OpenTrustedChannel(const std::string& target,
                                                  grpc::ChannelArguments arguments,
                                                  int timeoutSeconds, const Waiter& wait) {
    const auto [host, port] = HostAndPort(target);
    const QString shownHost = QString::fromStdString(target);
    // The probe is the first exchange with the server, so it gets the
    // session's time-out, as a call would.
    const int probeMs = std::max(timeoutSeconds, 1) * 1000;
    veldrano::tls::ProbeResult probe;
    wait([&] { probe = veldrano::tls::Probe(host, port, probeMs); });
    const QString key = PinnedFingerprintKey(target);
    const QString pinned = GetSetting(kVendor, key, {});
    ChannelPlan plan = PlanChannel(probe, veldrano::tls::IsLoopbackHost(host), pinned);

    if (plan.kind == Kind::AskFirst) {
        if (!AskToTrust(shownHost, plan.fingerprint))
            throw SessionError::FromCode(pb::ERROR_CERTIFICATE_NOT_TRUSTED, shownHost);
        SaveSetting(kVendor, key, plan.fingerprint);
        plan.kind = Kind::Pinned;
    }
    switch (plan.kind) {
        case Kind::Plain:
            return grpc::CreateCustomChannel(target, grpc::InsecureChannelCredentials(), arguments);
        case Kind::SystemTrust: {
            grpc::SslCredentialsOptions tls;
            tls.pem_root_certs = veldrano::tls::SystemTrustBundle();
            return grpc::CreateCustomChannel(target, grpc::SslCredentials(tls), arguments);
        }
        case Kind::Pinned: {
            // The pinned certificate is the only root: gRPC's own handshake
            // then accepts this certificate and nothing else, whatever
            // happens between the probe and the connection.
            grpc::SslCredentialsOptions tls;
            tls.pem_root_certs = probe.certificatePem;
            arguments.SetSslTargetNameOverride(veldrano::tls::HostNameOf(probe.certificatePem));
            return grpc::CreateCustomChannel(target, grpc::SslCredentials(tls), arguments);
        }
        case Kind::AskFirst:
        case Kind::Refuse:
            break;
    }
    QString detail = shownHost;
    if (plan.refusal == pb::ERROR_CERTIFICATE_CHANGED)
        detail = QStringLiteral("%1 (trusted %2, presented %3; settings: %4)")
                     .arg(shownHost, pinned, plan.fingerprint, SettingsLocation());
    else if (!probe.detail.empty())
        detail += QStringLiteral(" (%1)").arg(QString::fromStdString(probe.detail));
    throw SessionError::FromCode(plan.refusal, detail);
}

}  // namespace winadmin
