#include "service/Log.h"

#include <google/protobuf/stubs/logging.h>
#include <grpc/support/log.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <mutex>

namespace veldrano::server {

namespace {

constexpr size_t kMaxMessageBytes = 400;
// LogNoise lets kNoiseBurst lines through per kNoiseWindow, then counts.
constexpr int kNoiseBurst = 20;
constexpr std::chrono::seconds kNoiseWindow{10};

std::atomic<int> currentLevel{static_cast<int>(LogLevel::Error)};

struct Output {
    std::mutex mutex;
    std::function<void(const std::string&)> sink;
    std::chrono::steady_clock::time_point windowStart{};
    int noiseInWindow = 0;
    long long suppressed = 0;
};

Output& TheOutput() {
    static Output output;
    return output;
}

const char* LevelWord(LogLevel level) {
    switch (level) {
        case LogLevel::Error:
            return "error";
        case LogLevel::Warning:
            return "warning";
        case LogLevel::Notice:
            return "notice";
        case LogLevel::Info:
            return "info";
        case LogLevel::Debug:
            return "debug";
    }
    return "info";
}

// One line: control characters become '?', and a long message is cut at a
// character boundary.
std::string Clean(std::string_view message) {
    std::string line;
    line.reserve(std::min(message.size(), kMaxMessageBytes) + 4);
    for (const char c : message) {
        if (line.size() >= kMaxMessageBytes && (static_cast<unsigned char>(c) & 0xC0) != 0x80) {
            line += "...";
            break;
        }
        line += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
    }
    return line;
}

std::string Format(LogLevel level, std::string_view message) {
    // journald sets JOURNAL_STREAM for a service whose standard error it
    // reads; it then takes the priority from the prefix and adds the time.
    static const bool journal = std::getenv("JOURNAL_STREAM") != nullptr;
    if (journal) return "<" + std::to_string(static_cast<int>(level)) + ">" + Clean(message);
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", &local);
    return std::string(stamp) + " " + LevelWord(level) + ": " + Clean(message);
}

void Emit(Output& out, const std::string& line) {
    if (out.sink) {
        out.sink(line);
        return;
    }
    const std::string withNewline = line + "\n";
    // One write per line, so that lines of several threads never interleave.
    [[maybe_unused]] const auto written =
        ::write(STDERR_FILENO, withNewline.data(), withNewline.size());
}

bool Enabled(LogLevel level) {
    return static_cast<int>(level) <= currentLevel.load();
}

}  // namespace

std::optional<LogLevel> ParseLogLevel(std::string_view word) {
    for (LogLevel level :
         {LogLevel::Error, LogLevel::Warning, LogLevel::Notice, LogLevel::Info, LogLevel::Debug})
        if (word == LevelWord(level)) return level;
    return std::nullopt;
}

void SetLogLevel(LogLevel level) {
    currentLevel = static_cast<int>(level);
}

LogLevel GetLogLevel() {
    return static_cast<LogLevel>(currentLevel.load());
}

void Log(LogLevel level, std::string_view message) {
    if (!Enabled(level)) return;
    Output& out = TheOutput();
    const std::string line = Format(level, message);
    std::lock_guard lock(out.mutex);
    Emit(out, line);
}

void LogNoise(LogLevel level, std::string_view message) {
    if (!Enabled(level)) return;
    Output& out = TheOutput();
    std::lock_guard lock(out.mutex);
    const auto now = std::chrono::steady_clock::now();
    if (now - out.windowStart >= kNoiseWindow) {
        if (out.suppressed > 0)
            Emit(out, Format(LogLevel::Warning,
                             std::to_string(out.suppressed) +
                                 " similar messages were not logged (too many in a short time)"));
        out.windowStart = now;
        out.noiseInWindow = 0;
        out.suppressed = 0;
    }
    if (out.noiseInWindow >= kNoiseBurst) {
        ++out.suppressed;
        return;
    }
    ++out.noiseInWindow;
    Emit(out, Format(level, message));
}

void SetLogSink(std::function<void(const std::string& line)> sink) {
    Output& out = TheOutput();
    std::lock_guard lock(out.mutex);
    out.sink = std::move(sink);
    out.windowStart = {};
    out.noiseInWindow = 0;
    out.suppressed = 0;
}

void CaptureLibraryLogs() {
    google::protobuf::SetLogHandler([](google::protobuf::LogLevel level, const char*, int,
                                       const std::string& message) {
        LogNoise(level >= google::protobuf::LOGLEVEL_ERROR ? LogLevel::Warning : LogLevel::Debug,
                 "protobuf: " + message);
    });
    // gRPC reports, among others, every failed TLS handshake: a scanner or
    // a client without encryption must not fill the log.
    gpr_set_log_function([](gpr_log_func_args* args) {
        LogNoise(args->severity == GPR_LOG_SEVERITY_ERROR ? LogLevel::Warning : LogLevel::Debug,
                 std::string("grpc: ") + args->message);
    });
}

}  // namespace veldrano::server
