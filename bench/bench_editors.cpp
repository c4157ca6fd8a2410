// bench-editors: how long a properties dialog takes from the request to its
// first paint with the object loaded, on a large installation, against the
// reference server embedded in this process and reached over loopback TCP.
//
// Measures:
//   device_dialog_open_ms   the device dialog opened on a device of 30 lines
//       (29 of them stored) on a server with 100 such devices: created,
//       shown, loaded through the session and painted; goal <= 100
//   device_line_switch_ms   choosing another line in the open dialog and
//       painting it; no goal of its own, for comparison
//   group_open_100k_ms   the group dialog opened on a group of 50 members
//       spread over a server of 100,000 users, each member shown with its
//       comment; goal <= 100
// Prints "name: value" lines, medians of several runs, and each figure's ratio
// to its goal. Run with QT_QPA_PLATFORM=offscreen (set when unset).
//
// Usage: bench-editors [devices] [lines-per-device] [users]

#include <QApplication>
#include <QComboBox>
#include <QTreeView>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "BenchSupport.h"
#include "common/FormParameters.h"
#include "demo/Generator.h"
#include "editors/frmDeviceDetails.h"
#include "editors/frmGroupDetails.h"
#include "session/GrpcServerSession.h"
#include "store/Store.h"

namespace {

using namespace bench;
namespace pb = veldrano::admin::v1;

constexpr int Runs = 9;
constexpr int MultiLineType = 3;  // the primary rate type: up to 30 lines

// Makes every device of the host a device of lines lines, all of them stored.
void StoreLines(veldrano::server::Store& store, const std::string& host, int lines) {
    for (pb::Device device : store.ListDevices(host)) {
        device.set_type(MultiLineType);
        device.set_configured_lines(lines);
        device.set_version(store.CommitDevice(device));
        for (int number = 2; number <= lines; ++number) {
            pb::DeviceLine line;
            line.set_number(number);
            *line.mutable_settings() = device.primary();
            store.SaveDeviceLine(host, device.name(), line);
        }
    }
}

// Spins the event loop until done answers true.
template <class Done>
void WaitFor(Done done) {
    while (!done()) QApplication::processEvents(QEventLoop::AllEvents, 5);
}

// The console's session on the server; throws SessionError.
void LogIn(BenchServer& server) {
    auto owned = std::make_unique<winadmin::GrpcServerSession>();
    owned->SetHostName(QStringLiteral("127.0.0.1:%1").arg(server.Host().Port()));
    owned->SetPassword(Password);
    owned->Login();
    winadmin::SetTheSession(std::move(owned));
}

// Fills the bench server's store with one generated server of the given sizes,
// printing how long that took as timing; answers the server's name.
std::string GenerateOneServer(BenchServer& server, veldrano::server::GenerateSizes sizes,
                              const char* timing) {
    sizes.servers = 1;
    veldrano::server::Store& store = server.Host().GetStore();
    const Clock::time_point start = Clock::now();
    veldrano::server::Generate(store, sizes);
    Print(timing, MillisecondsSince(start));
    return store.ListServers().front().name();
}

// Opens Dialog with the given request Runs times, each time from creation to
// the first paint with its object loaded, and hands each open dialog to
// afterOpen; answers the median opening time in milliseconds.
template <class Dialog, class AfterOpen>
double MedianOpen(const winadmin::FormParameterList& request, AfterOpen afterOpen) {
    std::vector<double> opens;
    for (int run = 0; run < Runs; ++run) {
        winadmin::SetFormParameters(request);
        const Clock::time_point start = Clock::now();
        Dialog dialog;
        dialog.show();
        WaitFor([&] { return dialog.State() == winadmin::EditorState::Shown; });
        dialog.repaint();
        opens.push_back(MillisecondsSince(start));
        afterOpen(dialog);
        dialog.hide();
    }
    return Median(opens);
}

// The device dialog on a device of lines lines among devices such devices.
void MeasureDeviceDialog(int deviceCount, int lines) {
    veldrano::server::GenerateSizes sizes;
    sizes.devicesPerServer = deviceCount;
    BenchServer benchServer;
    const std::string host = GenerateOneServer(benchServer, sizes, "generate_ms");
    veldrano::server::Store& store = benchServer.Host().GetStore();
    StoreLines(store, host, lines);
    const std::vector<pb::Device> devices = store.ListDevices(host);
    const QString device = QString::fromStdString(devices[devices.size() / 2].name());
    LogIn(benchServer);

    std::vector<double> switches;
    const double openMs = MedianOpen<winadmin::frmDeviceDetails>(
        {{QStringLiteral("DeviceName"), device},
         {QStringLiteral("HostName"), QString::fromStdString(host)}},
        [&](winadmin::frmDeviceDetails& dialog) {
            auto* selector = dialog.findChild<QComboBox*>(QStringLiteral("cboLine"));
            const Clock::time_point start = Clock::now();
            selector->setCurrentIndex(selector->count() - 1);
            dialog.repaint();
            switches.push_back(MillisecondsSince(start));
            if (dialog.Line() != lines) throw std::runtime_error("the last line is not shown");
        });
    winadmin::SetTheSession(nullptr);
    Print("device_lines", static_cast<long long>(lines));
    Print("device_dialog_open_ms", openMs);
    Print("device_line_switch_ms", Median(switches));
    Print("device_dialog_open_vs_goal", openMs / 100.0);
}

// The group dialog on a group whose members are users of a server of users
// users.
void MeasureGroupDialog(int users) {
    constexpr int kMembers = 50;
    veldrano::server::GenerateSizes sizes;
    sizes.firstServerUsers = users;
    BenchServer benchServer;
    const std::string host = GenerateOneServer(benchServer, sizes, "generate_users_ms");
    veldrano::server::Store& store = benchServer.Host().GetStore();
    pb::Group group = store.GetGroup("Night shift");
    group.set_comment("Benchmark group");
    for (int i = 0; i < kMembers; ++i) {
        char name[16];
        std::snprintf(name, sizeof name, "u%07d", 1 + i * (users / kMembers));
        pb::UserRef* member = group.add_members();
        member->set_user_name(name);
        member->set_host_name(host);
    }
    store.CommitGroup(group);
    LogIn(benchServer);

    const QString lastComment =
        QStringLiteral("Benchmark user %1").arg(1 + (kMembers - 1) * (users / kMembers));
    const double openMs = MedianOpen<winadmin::frmGroupDetails>(
        {{QStringLiteral("GroupName"), QStringLiteral("Night shift")}},
        [&](winadmin::frmGroupDetails& dialog) {
            auto* members = dialog.findChild<QTreeView*>(QStringLiteral("lvGrpMembers"))->model();
            if (members->rowCount() != kMembers ||
                members->index(kMembers - 1, 1).data().toString() != lastComment)
                throw std::runtime_error("the members are not shown with their comments");
        });
    winadmin::SetTheSession(nullptr);
    Print("group_server_users", static_cast<long long>(users));
    Print("group_members", static_cast<long long>(kMembers));
    Print("group_open_100k_ms", openMs);
    Print("group_open_100k_vs_goal", openMs / 100.0);
}

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int devices = argc > 1 ? std::atoi(argv[1]) : 100;
    const int lines = argc > 2 ? std::atoi(argv[2]) : 30;
    const int users = argc > 3 ? std::atoi(argv[3]) : 100000;
    try {
        MeasureDeviceDialog(devices, lines);
        MeasureGroupDialog(users);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench-editors: %s\n", error.what());
        return 1;
    }
    return 0;
}
