#pragma once
// The server's log: one line per event on standard error, in a form that
// journald keeps as it is (a "<N>" priority prefix when standard error is the
// journal, a time stamp and a level word otherwise). Messages never span
// lines: control characters are replaced and long messages are cut.
//
// Noise that anyone can cause without logging in (failed logins, calls
// without a session, malformed requests) goes through LogNoise, which lets
// a burst through and then only a summary of what it dropped.

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace veldrano::server {

// The syslog priorities.
enum class LogLevel { Error = 3, Warning = 4, Notice = 5, Info = 6, Debug = 7 };

// "error", "warning", "notice", "info" or "debug"; nothing for another word.
std::optional<LogLevel> ParseLogLevel(std::string_view word);
// Lines above this level are dropped. The program starts at Info; embedded
// servers (tests, benchmarks) stay at Error so their output stays readable.
void SetLogLevel(LogLevel level);
LogLevel GetLogLevel();

void Log(LogLevel level, std::string_view message);
void LogNoise(LogLevel level, std::string_view message);

// Where finished lines go (standard error when none); for tests.
void SetLogSink(std::function<void(const std::string& line)> sink);

// Routes the protobuf and gRPC libraries' own messages (a request with a
// malformed text field, a failed handshake) into LogNoise.
void CaptureLibraryLogs();

}  // namespace veldrano::server
