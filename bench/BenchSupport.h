#pragma once
// What every benchmark shares: the clock, the "name: value" output, and a
// reference server on a temporary store listening on loopback.

#include <QString>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <vector>

#include "service/ServerHost.h"

namespace bench {

using Clock = std::chrono::steady_clock;

inline const QString Password = QStringLiteral("Bench-Password-1");

inline double MillisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

inline double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

inline void Print(const char* name, double value) {
    std::printf("%s: %.3f\n", name, value);
    std::fflush(stdout);
}

inline void Print(const char* name, long long value) {
    std::printf("%s: %lld\n", name, value);
    std::fflush(stdout);
}

// The reference server on a fresh store, without simulation, on a free port.
class BenchServer {
public:
    BenchServer() {
        if (!dir_.isValid()) throw std::runtime_error("cannot create a temporary directory");
        veldrano::server::ServerOptions options;
        options.dataPath = dir_.filePath(QStringLiteral("bench.db")).toStdString();
        options.listen = "127.0.0.1:0";
        options.password = Password.toStdString();
        options.simulate = false;
        host_ = std::make_unique<veldrano::server::ServerHost>(options);
    }
    veldrano::server::ServerHost& Host() { return *host_; }

private:
    QTemporaryDir dir_;
    std::unique_ptr<veldrano::server::ServerHost> host_;
};

}  // namespace bench
