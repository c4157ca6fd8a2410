// The simulated runtime against a real store: process slots, server and
// device actions, the events they log, the background stream and the thread.

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <set>
#include <thread>

#include "demo/DemoData.h"
#include "sim/Simulator.h"
#include "tests/StoreFixtures.h"

namespace veldrano::server::testing {
namespace {

bool IsRunning(const pb::Process& p) {
    return p.run_state() == 1 && p.exit_status() == -1 && p.pid() > 0;
}
bool IsTerminated(const pb::Process& p) {
    return p.run_state() == 1 && p.exit_status() == 0 && p.pid() == 0;
}

class SimulatorTest : public ::testing::Test {
protected:
    void SetUp() override {
        store_->Bulk([&] {
            store_->CommitServer(
                demo::MakeServer("alpha", "Head office", true, false, true, "rpc"));
            store_->CommitServer(
                demo::MakeServer("beta", "Print room", false, true, false, "rrpc"));
            store_->CommitServer(demo::MakeServer("gamma", "Standby", false, false, true, "rpc"));
            store_->SetServerOnline("alpha", true);
            store_->SetServerOnline("beta", true);
            store_->SetServerOnline("gamma", false);
            const pb::DeviceType& type = Store::DeviceTypes().front();
            store_->CommitDevice(demo::MakeDevice("alpha", "fax1", type, "alpha", "Line one"));
            store_->CommitDevice(demo::MakeDevice("alpha", "fax2", type, "alpha", "Line two"));
            store_->CommitDevice(demo::MakeDevice("gamma", "fax9", type, "alpha", "Standby line"));
            store_->SetDeviceState("alpha", "fax1", pb::DEVICE_RUNNING);
            store_->SetDeviceState("alpha", "fax2", pb::DEVICE_RUNNING);
        });
        sim_.EnsureProcessSlots();
    }

    pb::Process Slot(const std::string& host, int slot) {
        for (const pb::Process& p : store_->ListProcesses(host))
            if (p.slot() == slot) return p;
        ADD_FAILURE() << host << " has no slot " << slot;
        return {};
    }

    int64_t EventsOfAlphaAndBeta() {
        return store_->EventCount("alpha") + store_->EventCount("beta");
    }

    TempStore store_;
    Simulator sim_{*store_};
};

TEST_F(SimulatorTest, EveryServerGetsEightSlotsOnceRunningOnlyWhenOnline) {
    std::set<int> pids;
    for (const char* host : {"alpha", "beta"}) {
        std::vector<pb::Process> procs = store_->ListProcesses(host);
        ASSERT_EQ(procs.size(), 8u) << host;
        for (int slot = 0; slot < 8; ++slot) {
            EXPECT_EQ(procs[slot].slot(), slot);
            EXPECT_FALSE(procs[slot].command().empty());
            EXPECT_FALSE(procs[slot].directory().empty());
            EXPECT_TRUE(IsRunning(procs[slot])) << host << " slot " << slot;
            pids.insert(procs[slot].pid());
        }
    }
    EXPECT_EQ(pids.size(), 16u) << "two running processes share a pid";
    EXPECT_EQ(store_->ListProcesses("gamma").size(), 8u);
    for (const pb::Process& p : store_->ListProcesses("gamma")) EXPECT_TRUE(IsTerminated(p));

    // A second pass, as after a restart of the program, keeps what is there,
    // and a second simulator continues above the stored pids.
    const int kept = Slot("alpha", 5).pid();
    sim_.EnsureProcessSlots();
    EXPECT_EQ(Slot("alpha", 5).pid(), kept);
    EXPECT_EQ(store_->ListProcesses("alpha").size(), 8u);
    Simulator other(*store_);
    other.EnsureProcessSlots();
    other.StartProcess("alpha", 2);
    EXPECT_EQ(pids.count(Slot("alpha", 2).pid()), 0u);
}

TEST_F(SimulatorTest, ProcessGoesFromStartingToRunningAndStopsToTerminated) {
    const int untouched = Slot("alpha", 4).pid();
    sim_.StopProcess("alpha", 3);
    EXPECT_TRUE(IsTerminated(Slot("alpha", 3)));
    EXPECT_EQ(Slot("alpha", 4).pid(), untouched);

    sim_.StartProcess("alpha", 3);
    pb::Process p = Slot("alpha", 3);
    EXPECT_EQ(p.run_state(), 0);
    EXPECT_EQ(p.exit_status(), -2);
    ASSERT_GT(p.pid(), 0);
    sim_.Tick();
    EXPECT_TRUE(IsRunning(Slot("alpha", 3)));
    EXPECT_EQ(Slot("alpha", 3).pid(), p.pid());
}

TEST_F(SimulatorTest, StoppingAServerStopsItsProcessesAndDevicesOnly) {
    sim_.StopServer("alpha");
    EXPECT_FALSE(store_->GetServer("alpha").online());
    for (const pb::Process& p : store_->ListProcesses("alpha"))
        EXPECT_TRUE(IsTerminated(p)) << "slot " << p.slot();
    for (const pb::Device& d : store_->ListDevices("alpha"))
        EXPECT_EQ(d.state(), pb::DEVICE_STOPPED);
    EXPECT_TRUE(store_->GetServer("beta").online());
    for (const pb::Process& p : store_->ListProcesses("beta")) EXPECT_TRUE(IsRunning(p));

    // A stopped server stays quiet: no watchdog restarts, no background events.
    const int64_t before = store_->EventCount("alpha");
    for (int i = 0; i < 30; ++i) sim_.Tick();
    EXPECT_EQ(store_->EventCount("alpha"), before);
    for (const pb::Process& p : store_->ListProcesses("alpha")) EXPECT_EQ(p.pid(), 0);

    sim_.StartServer("alpha");
    EXPECT_TRUE(store_->GetServer("alpha").online());
    for (const pb::Process& p : store_->ListProcesses("alpha")) EXPECT_EQ(p.run_state(), 0);
    for (const pb::Device& d : store_->ListDevices("alpha"))
        EXPECT_EQ(d.state(), pb::DEVICE_RUNNING);
}

TEST_F(SimulatorTest, EveryActionLogsOneReadableEventOnItsServerAndSetsItsState) {
    struct Action {
        const char* host;
        std::function<void()> run;
        const char* mentions;
        int deviceState;  // of the device named by mentions; -1 for none
    };
    const std::vector<Action> actions = {
        {"alpha", [&] { sim_.StopProcess("alpha", 1); }, "faxdriver", -1},
        {"alpha", [&] { sim_.StartProcess("alpha", 1); }, "faxdriver", -1},
        {"alpha", [&] { sim_.StopDevice("alpha", "fax2"); }, "fax2", pb::DEVICE_STOPPED},
        {"alpha", [&] { sim_.StartDevice("alpha", "fax2"); }, "fax2", pb::DEVICE_RUNNING},
        {"alpha", [&] { sim_.TerminateDevice("alpha", "fax2"); }, "fax2", pb::DEVICE_TERMINATED},
        {"beta", [&] { sim_.StopServer("beta"); }, "beta", -1},
        {"beta", [&] { sim_.StartServer("beta"); }, "beta", -1},
        {"gamma", [&] { sim_.StartDevice("gamma", "fax9"); }, "fax9", pb::DEVICE_RUNNING},
    };
    for (const Action& a : actions) {
        SCOPED_TRACE(a.mentions);
        const char* other = a.host == std::string("alpha") ? "beta" : "alpha";
        const int64_t before = store_->EventCount(a.host), others = store_->EventCount(other);
        a.run();
        EXPECT_EQ(store_->EventCount(a.host), before + 1);
        EXPECT_EQ(store_->EventCount(other), others);
        std::vector<pb::Event> newest = Events(*store_, a.host, 1);
        ASSERT_EQ(newest.size(), 1u);
        EXPECT_NE(newest[0].text().find(a.mentions), std::string::npos) << newest[0].text();
        EXPECT_NE(newest[0].text().find("administrator"), std::string::npos) << newest[0].text();
        EXPECT_GT(newest[0].time(), 0);
        if (a.deviceState >= 0) {
            EXPECT_EQ(store_->GetDevice(a.host, a.mentions).state(), a.deviceState);
        }
    }
    EXPECT_EQ(store_->GetDevice("alpha", "fax1").state(), pb::DEVICE_RUNNING);
}

TEST_F(SimulatorTest, UnknownServerSlotOrDeviceIsNotFoundAndLogsNothing) {
    const std::vector<std::function<void()>> calls = {
        [&] { sim_.StartServer("nosuchhost"); },
        [&] { sim_.StopServer("nosuchhost"); },
        [&] { sim_.StartProcess("nosuchhost", 0); },
        [&] { sim_.StartProcess("alpha", 8); },
        [&] { sim_.StopProcess("alpha", -1); },
        [&] { sim_.StartDevice("alpha", "nodevice"); },
        [&] { sim_.StopDevice("beta", "fax1"); },
        [&] { sim_.TerminateDevice("nosuchhost", "fax1"); },
    };
    const int64_t before = EventsOfAlphaAndBeta();
    for (size_t i = 0; i < calls.size(); ++i) {
        try {
            calls[i]();
            ADD_FAILURE() << "call " << i << " did not throw";
        } catch (const ServiceError& e) {
            EXPECT_EQ(e.code(), pb::ERROR_NOT_FOUND) << "call " << i;
            EXPECT_STRNE(e.what(), "") << "call " << i;
        }
    }
    EXPECT_EQ(EventsOfAlphaAndBeta(), before);
    EXPECT_TRUE(store_->GetServer("nosuchhost").is_new());
}

TEST_F(SimulatorTest, BackgroundEventsCoverEverySeverityWithValidCodes) {
    for (int i = 0; i < 60; ++i) sim_.Tick();
    std::set<int> severities;
    int background = 0;
    for (const char* host : {"alpha", "beta"}) {
        for (const pb::Event& e : Events(*store_, host)) {
            EXPECT_GE(e.originator_type(), 0);
            EXPECT_LE(e.originator_type(), 19);
            EXPECT_NE(e.message_class(), 0) << e.text();
            EXPECT_EQ(e.message_class() & ~0x3FF, 0) << e.text();
            EXPECT_FALSE(e.text().empty());
            severities.insert(e.severity());
            ++background;
        }
    }
    EXPECT_GE(background, 60);
    EXPECT_EQ(severities, (std::set<int>{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(store_->EventCount("gamma"), 0) << "an offline server got background events";
}

TEST_F(SimulatorTest, ProcessesThatDieOnTheirOwnAreRestartedLater) {
    auto dead = [](const pb::Process& p) {
        return p.run_state() == -1 ||
               (p.exit_status() != -1 && p.exit_status() != -2 && p.exit_status() != 0);
    };
    for (int tick = 0; tick < 600; ++tick) {
        sim_.Tick();
        for (const char* host : {"alpha", "beta"}) {
            for (const pb::Process& p : store_->ListProcesses(host)) {
                if (!dead(p)) continue;
                EXPECT_EQ(p.pid(), 0) << "a dead process keeps its pid";
                for (int wait = 0; wait < 10; ++wait) {
                    sim_.Tick();
                    const pb::Process now = Slot(host, p.slot());
                    if (now.pid() > 0 && (now.run_state() == 0 || IsRunning(now))) return;
                }
                FAIL() << host << " slot " << p.slot() << " was never restarted";
            }
        }
    }
    FAIL() << "no process ever failed or exited in 600 ticks";
}

TEST_F(SimulatorTest, RunTicksOnItsOwnAndStopReturnsPromptly) {
    // Stop must not wait for a long period (a minute) to run out; the bound of
    // a few seconds only leaves room for a loaded machine. The pauses let the
    // thread reach its wait first.
    const auto stopsPromptly = [](const std::function<void()>& stop) {
        const auto t0 = std::chrono::steady_clock::now();
        stop();
        return std::chrono::steady_clock::now() - t0 < std::chrono::seconds(5);
    };
    const int64_t before = EventsOfAlphaAndBeta();
    sim_.Run(5);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_TRUE(stopsPromptly([&] { sim_.Stop(); }));
    const int64_t after = EventsOfAlphaAndBeta();
    EXPECT_GE(after - before, 5);

    sim_.Run(60000);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_TRUE(stopsPromptly([&] { sim_.Stop(); }));
    EXPECT_EQ(EventsOfAlphaAndBeta(), after);

    // Destroying a running simulator ends its thread as well.
    auto running = std::make_unique<Simulator>(*store_);
    running->Run(60000);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_TRUE(stopsPromptly([&] { running.reset(); }));
}

}  // namespace
}  // namespace veldrano::server::testing
