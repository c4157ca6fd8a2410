#pragma once
// Cuts off a client that stops reading a list. gRPC's Write blocks while the
// client's flow-control window is full; a page that the client does not take
// within the time-out cancels the call, which frees the handler's thread and
// the read snapshot behind it.

#include <grpcpp/server_context.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <thread>

namespace veldrano::server {

class WriteWatchdog {
public:
    explicit WriteWatchdog(std::chrono::milliseconds timeout);
    ~WriteWatchdog();
    WriteWatchdog(const WriteWatchdog&) = delete;
    WriteWatchdog& operator=(const WriteWatchdog&) = delete;

    // Watches one Write for as long as it lives.
    class Watch {
    public:
        Watch(WriteWatchdog& watchdog, grpc::ServerContext* context);
        ~Watch();
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;

    private:
        WriteWatchdog& watchdog_;
        uint64_t id_;
    };

    // Calls cancelled so far, for tests and the log.
    uint64_t Cancelled() const;

private:
    struct Entry {
        grpc::ServerContext* context;
        std::chrono::steady_clock::time_point deadline;
    };
    void Run();

    const std::chrono::milliseconds timeout_;
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::map<uint64_t, Entry> entries_;  // ids grow, so the first one is due first
    uint64_t nextId_ = 1;
    uint64_t cancelled_ = 0;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace veldrano::server
