#include "service/WriteWatchdog.h"

#include "service/Log.h"

namespace veldrano::server {

WriteWatchdog::WriteWatchdog(std::chrono::milliseconds timeout)
    : timeout_(timeout), thread_([this] { Run(); }) {}

WriteWatchdog::~WriteWatchdog() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    thread_.join();
}

WriteWatchdog::Watch::Watch(WriteWatchdog& watchdog, grpc::ServerContext* context)
    : watchdog_(watchdog) {
    std::lock_guard lock(watchdog_.mutex_);
    id_ = watchdog_.nextId_++;
    const bool wasIdle = watchdog_.entries_.empty();
    watchdog_.entries_[id_] = {context, std::chrono::steady_clock::now() + watchdog_.timeout_};
    if (wasIdle) watchdog_.wake_.notify_all();
}

WriteWatchdog::Watch::~Watch() {
    // Under the lock, so the context is never cancelled after its Write
    // has returned and the call may be gone.
    std::lock_guard lock(watchdog_.mutex_);
    watchdog_.entries_.erase(id_);
}

uint64_t WriteWatchdog::Cancelled() const {
    std::lock_guard lock(mutex_);
    return cancelled_;
}

void WriteWatchdog::Run() {
    std::unique_lock lock(mutex_);
    while (!stopping_) {
        if (entries_.empty()) {
            wake_.wait(lock);
            continue;
        }
        // Every entry has the same time-out, so the oldest is due first.
        auto first = entries_.begin();
        if (std::chrono::steady_clock::now() < first->second.deadline) {
            wake_.wait_until(lock, first->second.deadline);
            continue;
        }
        first->second.context->TryCancel();
        entries_.erase(first);
        ++cancelled_;
        LogNoise(LogLevel::Notice, "a client stopped reading a list; the call was cut off");
    }
}

}  // namespace veldrano::server
