#include "sim/Simulator.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <iterator>

#include "store/Store.h"

namespace veldrano::server {
namespace {

// Message class bits and originator types as the message server reports them.
constexpr int kUnix = 0x01, kRpc = 0x02, kNet = 0x04, kServer = 0x08, kDriver = 0x10,
              kFilter = 0x20, kAppl = 0x40, kAsync = 0x80, kSetup = 0x100, kSignal = 0x200;
constexpr int kClassBits[] = {kUnix,   kRpc,  kNet,   kServer, kDriver,
                              kFilter, kAppl, kAsync, kSetup,  kSignal};
constexpr int kOriginatorFaxAdm = 10;
constexpr int kOriginatorDriverFax = 7;
constexpr int kOriginatorDriverTelex = 8;

constexpr int kRunFailed = -1, kRunStarting = 0, kRunLaunched = 1;
constexpr int kExitInitialising = -2, kExitRunning = -1, kExitTerminated = 0;

struct SlotTemplate {
    const char* directory;
    const char* command;
    int originator;
    int messageClass;
};

// The standard processes of a message-server host, in slot order.
constexpr SlotTemplate kSlots[] = {
    {"/opt/veldrano/bin", "dispatcher", 0, kServer},
    {"/opt/veldrano/bin", "faxdriver -l 1", 7, kDriver},
    {"/opt/veldrano/bin", "faxdriver -l 2", 7, kDriver},
    {"/opt/veldrano/bin", "telexdriver", 8, kDriver},
    {"/opt/veldrano/bin", "mailgate", 17, kNet},
    {"/opt/veldrano/bin", "lcrd", 18, kRpc},
    {"/opt/veldrano/bin", "printspooler", 15, kAppl},
    {"/opt/veldrano/lib/filters", "filterd -w 4", 6, kFilter},
};

int SlotOriginator(int slot) {
    return slot >= 0 && slot < static_cast<int>(std::size(kSlots)) ? kSlots[slot].originator : 0;
}

std::string Describe(const pb::Process& p) {
    return "Process " + std::to_string(p.slot()) + " (" + p.command() + ")";
}

bool DiedOnItsOwn(const pb::Process& p) {
    return p.run_state() == kRunFailed ||
           (p.run_state() == kRunLaunched && p.exit_status() != kExitRunning &&
            p.exit_status() != kExitInitialising && p.exit_status() != kExitTerminated);
}

// Per originator: what it says when all is well and when it is in trouble.
// "#" is replaced by a job, line or page number.
struct Chatter {
    const char* ordinary;
    const char* trouble;
};

constexpr Chatter kChatter[20] = {
    {"Job # queued for dispatch", "Dispatch queue over limit, job # deferred"},
    {"Send job # handed to the line driver", "Send job # failed: remote busy, retry in 5 min"},
    {"Receive job # completed, # pages", "Receive job # aborted after page #"},
    {"Address book block of # entries sent", "Address book transfer broken at entry #"},
    {"Number normalised for job #", "Job #: number not dialable, check mappings"},
    {"Journal entry # written", "Journal write failed for entry #: disk full"},
    {"Filter converted document #, # pages", "Filter could not convert document #"},
    {"Line #: fax sent, # pages", "Line #: no carrier after dialling"},
    {"Telex line: message # delivered", "Telex line: answerback mismatch on message #"},
    {"ASCII document # rendered", "ASCII document # holds unprintable characters"},
    {"Administrator session # opened", "Administrator session # refused"},
    {"Client session # connected", "Client session # lost its connection"},
    {"Windows client # logged in", "Windows client # sent a damaged request"},
    {"Notification # delivered", "Notification # could not be delivered"},
    {"Desktop notification # shown", "Desktop notification # timed out"},
    {"Print job # printed, # pages", "Print job #: printer not ready"},
    {"PostScript job # converted", "PostScript job # failed: syntax error"},
    {"Mail # accepted for extension #", "Mail relay refused message #"},
    {"Least-cost route chosen for job #", "No rate covers job #, sent at standard rate"},
    {"SMS # delivered", "SMS # rejected by the carrier"},
};

const pb::DeviceType* FindType(int id) {
    for (const pb::DeviceType& t : Store::DeviceTypes())
        if (t.id() == id) return &t;
    return nullptr;
}

}  // namespace

Simulator::Simulator(Store& store) : store_(store) {}

Simulator::~Simulator() {
    Stop();
}

int Simulator::Random(int below) {
    return std::uniform_int_distribution<int>(0, below - 1)(random_);
}

void Simulator::Log(const std::string& host, int severity, int originatorType, int messageClass,
                    const std::string& text) {
    Log(host, severity, originatorType, 0, messageClass, text);
}

void Simulator::Log(const std::string& host, int severity, int originatorType, int originatorId,
                    int messageClass, const std::string& text) {
    pb::Event e;
    e.set_time(static_cast<int64_t>(std::time(nullptr)));
    e.set_severity(severity);
    e.set_originator_type(originatorType);
    e.set_originator_id(originatorId);
    e.set_message_class(messageClass);
    e.set_text(text);
    store_.AppendEvent(host, e);
}

void Simulator::RequireServer(const std::string& host) {
    if (store_.GetServer(host).is_new())
        throw ServiceError(pb::ERROR_NOT_FOUND, "The server '" + host + "' does not exist");
}

pb::Process Simulator::RequireProcess(const std::string& host, int slot) {
    RequireServer(host);
    for (const pb::Process& p : store_.ListProcesses(host))
        if (p.slot() == slot) return p;
    throw ServiceError(pb::ERROR_NOT_FOUND,
                       "The server '" + host + "' has no process slot " + std::to_string(slot));
}

pb::Device Simulator::RequireDevice(const std::string& host, const std::string& device) {
    RequireServer(host);
    pb::Device d = store_.GetDevice(host, device);
    if (d.is_new())
        throw ServiceError(
            pb::ERROR_NOT_FOUND,
            "The device '" + device + "' does not exist on the server '" + host + "'");
    return d;
}

void Simulator::Launch(const std::string& host, pb::Process& p) {
    p.set_run_state(kRunStarting);
    p.set_pid(nextPid_++);
    p.set_exit_status(kExitInitialising);
    store_.PutProcess(host, p);
    restartAt_.erase({host, p.slot()});
}

void Simulator::Halt(const std::string& host, pb::Process& p) {
    p.set_run_state(kRunLaunched);
    p.set_exit_status(kExitTerminated);
    p.set_pid(0);
    store_.PutProcess(host, p);
    restartAt_.erase({host, p.slot()});
}

void Simulator::EnsureProcessSlots() {
    std::lock_guard lock(mutex_);
    store_.Bulk([&] {
        std::vector<pb::Server> servers = store_.ListServers();
        // New pids continue above every pid already stored, so that a second
        // simulator on the same store never hands out a pid twice.
        std::vector<bool> missing;
        int highest = 0;
        for (const pb::Server& s : servers) {
            std::vector<pb::Process> procs = store_.ListProcesses(s.name());
            for (const pb::Process& p : procs) highest = std::max(highest, p.pid());
            missing.push_back(procs.empty());
        }
        if (highest >= nextPid_) nextPid_ = highest + 1;
        for (size_t i = 0; i < servers.size(); ++i) {
            if (!missing[i]) continue;
            for (int slot = 0; slot < static_cast<int>(std::size(kSlots)); ++slot) {
                pb::Process p;
                p.set_slot(slot);
                p.set_directory(kSlots[slot].directory);
                p.set_command(kSlots[slot].command);
                p.set_run_state(kRunLaunched);
                // A server that runs has its processes running; one that is
                // down shows them as terminated.
                p.set_exit_status(servers[i].online() ? kExitRunning : kExitTerminated);
                p.set_pid(servers[i].online() ? nextPid_++ : 0);
                store_.PutProcess(servers[i].name(), p);
            }
        }
    });
}

void Simulator::StartServer(const std::string& host) {
    std::lock_guard lock(mutex_);
    RequireServer(host);
    store_.Bulk([&] {
        store_.SetServerOnline(host, true);
        int processes = 0, devices = 0;
        for (pb::Process& p : store_.ListProcesses(host)) {
            Launch(host, p);
            ++processes;
        }
        // The line drivers come up with their server.
        for (const pb::Device& d : store_.ListDevices(host)) {
            store_.SetDeviceState(host, d.name(), pb::DEVICE_RUNNING);
            ++devices;
        }
        Log(host, 1, kOriginatorFaxAdm, kServer | kAppl,
            "Server " + host + " started by the administrator; " + std::to_string(processes) +
                " processes and " + std::to_string(devices) + " devices starting");
    });
}

void Simulator::StopServer(const std::string& host) {
    std::lock_guard lock(mutex_);
    RequireServer(host);
    store_.Bulk([&] {
        int processes = 0, devices = 0;
        for (pb::Process& p : store_.ListProcesses(host)) {
            Halt(host, p);
            ++processes;
        }
        for (const pb::Device& d : store_.ListDevices(host)) {
            store_.SetDeviceState(host, d.name(), pb::DEVICE_STOPPED);
            ++devices;
        }
        store_.SetServerOnline(host, false);
        Log(host, 2, kOriginatorFaxAdm, kServer | kAppl,
            "Server " + host + " stopped by the administrator; " + std::to_string(processes) +
                " processes and " + std::to_string(devices) + " devices stopped");
    });
}

void Simulator::StartProcess(const std::string& host, int slot) {
    std::lock_guard lock(mutex_);
    pb::Process p = RequireProcess(host, slot);
    store_.Bulk([&] {
        Launch(host, p);
        Log(host, 1, kOriginatorFaxAdm, p.pid(), kAppl | kUnix,
            Describe(p) + " started by the administrator, pid " + std::to_string(p.pid()));
    });
}

void Simulator::StopProcess(const std::string& host, int slot) {
    std::lock_guard lock(mutex_);
    pb::Process p = RequireProcess(host, slot);
    int pid = p.pid();
    store_.Bulk([&] {
        Halt(host, p);
        Log(host, 2, kOriginatorFaxAdm, pid, kAppl | kUnix,
            Describe(p) + " stopped by the administrator");
    });
}

void Simulator::DeviceAction(const std::string& host, const std::string& device,
                             pb::DeviceRunState state, int severity, const char* verb) {
    std::lock_guard lock(mutex_);
    pb::Device d = RequireDevice(host, device);
    const pb::DeviceType* type = FindType(d.type());
    int originator = type != nullptr && type->features().telex() == 1 ? kOriginatorDriverTelex
                                                                      : kOriginatorDriverFax;
    store_.Bulk([&] {
        store_.SetDeviceState(host, device, state);
        Log(host, severity, originator, kDriver | kAppl,
            "Device " + device + " " + verb + " by the administrator");
    });
}

void Simulator::StartDevice(const std::string& host, const std::string& device) {
    DeviceAction(host, device, pb::DEVICE_RUNNING, 1, "started");
}

void Simulator::StopDevice(const std::string& host, const std::string& device) {
    DeviceAction(host, device, pb::DEVICE_STOPPED, 1, "stopped");
}

void Simulator::TerminateDevice(const std::string& host, const std::string& device) {
    DeviceAction(host, device, pb::DEVICE_TERMINATED, 2, "terminated");
}

void Simulator::Advance(const pb::Server& server, pb::Process& p) {
    const std::string& host = server.name();
    if (p.run_state() == kRunStarting) {
        p.set_run_state(kRunLaunched);
        p.set_exit_status(kExitRunning);
        store_.PutProcess(host, p);
        Log(host, 0, SlotOriginator(p.slot()), p.pid(), kUnix,
            Describe(p) + " is running, pid " + std::to_string(p.pid()));
        return;
    }
    if (!server.online() || !DiedOnItsOwn(p)) return;
    auto key = std::make_pair(host, p.slot());
    auto due = restartAt_.find(key);
    if (due == restartAt_.end()) {
        restartAt_[key] = ticks_ + 3 + Random(4);
    } else if (ticks_ >= due->second) {
        Launch(host, p);
        Log(host, 1, 0, p.pid(), kServer | kUnix,
            Describe(p) + " restarted by the watchdog, pid " + std::to_string(p.pid()));
    }
}

void Simulator::MaybeBreakProcess(const pb::Server& server) {
    std::vector<pb::Process> running;
    for (const pb::Process& p : store_.ListProcesses(server.name()))
        if (p.run_state() == kRunLaunched && p.exit_status() == kExitRunning) running.push_back(p);
    if (running.empty()) return;
    pb::Process p = running[Random(static_cast<int>(running.size()))];
    int pid = p.pid();
    p.set_pid(0);
    if (Random(2) == 0) {
        // A process killed by a signal no longer runs: the shell's status
        // for signal 11, so that only running processes offer Stop.
        p.set_run_state(kRunFailed);
        p.set_exit_status(128 + 11);
        store_.PutProcess(server.name(), p);
        Log(server.name(), 4, SlotOriginator(p.slot()), pid, kUnix | kSignal,
            Describe(p) + " failed: killed by signal 11");
    } else {
        static constexpr int kCodes[] = {1, 2, 3, 13, 127, 255};
        int code = kCodes[Random(static_cast<int>(std::size(kCodes)))];
        p.set_exit_status(code);
        store_.PutProcess(server.name(), p);
        Log(server.name(), 3, SlotOriginator(p.slot()), pid, kUnix,
            Describe(p) + " exited with code " + std::to_string(code));
    }
}

void Simulator::BackgroundEvent(const pb::Server& server) {
    // Severities rotate so that a viewer filtered at any level sees traffic
    // within a few periods; originators and classes are drawn at random.
    int severity = static_cast<int>(ticks_ % 6);
    int originator = Random(20);
    int messageClass = kClassBits[Random(static_cast<int>(std::size(kClassBits)))];
    if (Random(3) == 0) messageClass |= kClassBits[Random(static_cast<int>(std::size(kClassBits)))];
    std::string pattern =
        severity >= 3 ? kChatter[originator].trouble : kChatter[originator].ordinary;
    // The first number is a job (or a line, for line messages), later ones
    // are page or entry counts.
    std::string text;
    bool first = true;
    for (char c : pattern) {
        if (c != '#') {
            text += c;
            continue;
        }
        bool line = first && pattern.rfind("Line", 0) == 0;
        text += std::to_string(first && !line ? 10000 + Random(90000) : 1 + Random(line ? 8 : 24));
        first = false;
    }
    Log(server.name(), severity, originator, 4100 + Random(900), messageClass, text);
}

void Simulator::Tick() {
    std::lock_guard lock(mutex_);
    ++ticks_;
    store_.Bulk([&] {
        std::vector<pb::Server> servers = store_.ListServers();
        std::vector<const pb::Server*> online;
        for (const pb::Server& s : servers) {
            if (s.online()) online.push_back(&s);
            for (pb::Process& p : store_.ListProcesses(s.name())) Advance(s, p);
        }
        if (online.empty()) return;
        if (Random(12) == 0) MaybeBreakProcess(*online[Random(static_cast<int>(online.size()))]);
        BackgroundEvent(*online[Random(static_cast<int>(online.size()))]);
    });
}

void Simulator::Run(int periodMs) {
    Stop();
    {
        std::lock_guard lock(mutex_);
        stopping_ = false;
    }
    auto period = std::chrono::milliseconds(std::max(periodMs, 10));
    thread_ = std::thread([this, period] {
        std::unique_lock lock(mutex_);
        while (!wake_.wait_for(lock, period, [this] { return stopping_; })) {
            lock.unlock();
            try {
                Tick();
            } catch (const std::exception&) {
                // A store that is busy or failing now may answer next time;
                // the simulation is decoration and must not take the server down.
            }
            lock.lock();
        }
    });
}

void Simulator::Stop() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    if (thread_.joinable()) thread_.join();
}

}  // namespace veldrano::server
