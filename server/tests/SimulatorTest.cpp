// The simulated runtime against a real store: process slots, server and
// device actions, the events they log and the thread.

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <set>
#include <thread>

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
        SeedInstallation(*store_);
        store_->SetServerOnline("gamma", false);
        for (const char* device : {"line1", "isdn1"})
            store_->SetDeviceState("alpha", device, pb::DEVICE_RUNNING);
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
        for (const pb::Process& p : store_->ListProcesses(host)) {
            EXPECT_TRUE(IsRunning(p)) << host << " slot " << p.slot();
            pids.insert(p.pid());
        }
    }
    EXPECT_EQ(pids.size(), 16u) << "a slot is missing or two processes share a pid";
    EXPECT_EQ(store_->ListProcesses("gamma").size(), 8u);
    for (const pb::Process& p : store_->ListProcesses("gamma")) EXPECT_TRUE(IsTerminated(p));

    // A second pass, as after a restart of the program, keeps what is there,
    // and a second simulator continues above the stored pids.
    const int kept = Slot("alpha", 5).pid();
    sim_.EnsureProcessSlots();
    EXPECT_EQ(Slot("alpha", 5).pid(), kept);
    Simulator other(*store_);
    other.EnsureProcessSlots();
    other.StartProcess("alpha", 2);
    EXPECT_EQ(pids.count(Slot("alpha", 2).pid()), 0u);
}

TEST_F(SimulatorTest, ProcessGoesFromStartingToRunningAndStopsToTerminated) {
    sim_.StopProcess("alpha", 3);
    EXPECT_TRUE(IsTerminated(Slot("alpha", 3)));
    EXPECT_TRUE(IsRunning(Slot("alpha", 4)));

    sim_.StartProcess("alpha", 3);
    const pb::Process p = Slot("alpha", 3);
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
    for (const pb::Process& p : store_->ListProcesses("alpha")) EXPECT_TRUE(IsTerminated(p));
    EXPECT_EQ(store_->GetDevice("alpha", "line1").state(), pb::DEVICE_STOPPED);
    EXPECT_TRUE(IsRunning(Slot("beta", 0)));

    // A stopped server stays quiet: no watchdog restarts, no background events.
    const int64_t before = store_->EventCount("alpha");
    for (int i = 0; i < 30; ++i) sim_.Tick();
    EXPECT_EQ(store_->EventCount("alpha"), before);
    for (const pb::Process& p : store_->ListProcesses("alpha")) EXPECT_EQ(p.pid(), 0);

    sim_.StartServer("alpha");
    EXPECT_TRUE(store_->GetServer("alpha").online());
    for (const pb::Process& p : store_->ListProcesses("alpha")) EXPECT_EQ(p.run_state(), 0);
    EXPECT_EQ(store_->GetDevice("alpha", "isdn1").state(), pb::DEVICE_RUNNING);
}

TEST_F(SimulatorTest, EveryActionLogsOneReadableEventOnItsServer) {
    const std::vector<std::pair<const char*, std::function<void()>>> actions = {
        {"faxdriver", [&] { sim_.StopProcess("alpha", 1); }},
        {"alpha", [&] { sim_.StopServer("alpha"); }},
        {"alpha", [&] { sim_.StartServer("alpha"); }},
        {"isdn1", [&] { sim_.TerminateDevice("alpha", "isdn1"); }},
    };
    for (const auto& [mentions, run] : actions) {
        SCOPED_TRACE(mentions);
        const int64_t before = store_->EventCount("alpha"), others = store_->EventCount("beta");
        run();
        EXPECT_EQ(store_->EventCount("alpha"), before + 1);
        EXPECT_EQ(store_->EventCount("beta"), others);
        const pb::Event newest = Events(*store_, "alpha", 1).at(0);
        EXPECT_NE(newest.text().find(mentions), std::string::npos) << newest.text();
        EXPECT_NE(newest.text().find("administrator"), std::string::npos) << newest.text();
    }
    EXPECT_EQ(store_->GetDevice("alpha", "isdn1").state(), pb::DEVICE_TERMINATED);
    EXPECT_EQ(store_->GetDevice("alpha", "line1").state(), pb::DEVICE_RUNNING);
}

TEST_F(SimulatorTest, UnknownServerSlotOrDeviceIsNotFoundAndLogsNothing) {
    const int64_t before = EventsOfAlphaAndBeta();
    EXPECT_REFUSED(sim_.StartServer("nosuchhost"), pb::ERROR_NOT_FOUND);
    EXPECT_REFUSED(sim_.StartProcess("alpha", 8), pb::ERROR_NOT_FOUND);
    EXPECT_REFUSED(sim_.StopDevice("beta", "line1"), pb::ERROR_NOT_FOUND);
    EXPECT_EQ(EventsOfAlphaAndBeta(), before);
    EXPECT_TRUE(store_->GetServer("nosuchhost").is_new());
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
