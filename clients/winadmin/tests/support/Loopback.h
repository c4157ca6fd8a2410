#pragma once
// Loopback peers for the session's network failures. Header only: the test
// programs link Qt Network, the support library does not.

#include <QTcpServer>

namespace winadmin {

// "127.0.0.1:port" of a loopback port that nobody listens on (bound, then
// given back).
inline QString ClosedLoopbackHost() {
    QTcpServer probe;
    if (!probe.listen(QHostAddress::LocalHost)) return {};
    const quint16 port = probe.serverPort();
    probe.close();
    return QStringLiteral("127.0.0.1:%1").arg(port);
}

// "127.0.0.1:port" of a peer that accepts connections (the kernel completes
// them) and never says a word; empty when it cannot listen.
inline QString SilentLoopbackHost(QTcpServer& silent) {
    if (!silent.listen(QHostAddress::LocalHost)) return {};
    return QStringLiteral("127.0.0.1:%1").arg(silent.serverPort());
}

}  // namespace winadmin
