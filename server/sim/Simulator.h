#pragma once
// What runs on the administered servers, simulated: process slots that start
// and stop, line devices, and an event log that grows. Every action is logged
// as an event of the server it concerns; a background thread adds a slow
// stream of events of every severity, originator and class, and moves
// starting processes to running.

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <utility>

#include "store/ServiceError.h"

namespace veldrano::server {

class Store;

class Simulator {
public:
    explicit Simulator(Store& store);
    ~Simulator();

    // Gives every server without process slots its standard set of slots.
    void EnsureProcessSlots();

    // Runtime actions. Unknown servers, slots and devices throw ServiceError
    // ERROR_NOT_FOUND.
    void StartServer(const std::string& host);
    void StopServer(const std::string& host);
    void StartProcess(const std::string& host, int slot);
    void StopProcess(const std::string& host, int slot);
    void StartDevice(const std::string& host, const std::string& device);
    void StopDevice(const std::string& host, const std::string& device);
    void TerminateDevice(const std::string& host, const std::string& device);

    // One simulation step: promotes starting processes, adds a background event.
    void Tick();

    // Runs Tick every periodMs on a thread of its own until Stop or destruction.
    void Run(int periodMs);
    void Stop();

private:
    void Log(const std::string& host, int severity, int originatorType, int messageClass,
             const std::string& text);
    void Log(const std::string& host, int severity, int originatorType, int originatorId,
             int messageClass, const std::string& text);
    void RequireServer(const std::string& host);
    pb::Process RequireProcess(const std::string& host, int slot);
    pb::Device RequireDevice(const std::string& host, const std::string& device);
    void Launch(const std::string& host, pb::Process& p);
    void Halt(const std::string& host, pb::Process& p);
    void DeviceAction(const std::string& host, const std::string& device, pb::DeviceRunState state,
                      int severity, const char* verb);
    void Advance(const pb::Server& server, pb::Process& p);
    void MaybeBreakProcess(const pb::Server& server);
    void BackgroundEvent(const pb::Server& server);
    int Random(int below);

    Store& store_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::thread thread_;
    bool stopping_ = false;
    std::mt19937 random_{20261122};
    std::atomic<int> nextPid_{4100};
    long ticks_ = 0;
    // Processes that died on their own, keyed by host and slot, with the tick
    // at which the watchdog starts them again.
    std::map<std::pair<std::string, int>, long> restartAt_;
};

}  // namespace veldrano::server
