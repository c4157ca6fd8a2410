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
// Prints "name: value" lines, medians of several runs, and each figure's ratio
// to its goal. Run with QT_QPA_PLATFORM=offscreen (set when unset).
//
// Usage: bench-editors [devices] [lines-per-device]

#include <QApplication>
#include <QComboBox>
#include <cstdlib>
#include <memory>
#include <vector>

#include "BenchSupport.h"
#include "common/FormParameters.h"
#include "demo/Generator.h"
#include "editors/frmDeviceDetails.h"
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

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    veldrano::server::GenerateSizes sizes;
    sizes.servers = 1;
    sizes.devicesPerServer = argc > 1 ? std::atoi(argv[1]) : 100;
    const int lines = argc > 2 ? std::atoi(argv[2]) : 30;

    BenchServer benchServer;
    veldrano::server::Store& store = benchServer.Host().GetStore();
    Clock::time_point start = Clock::now();
    veldrano::server::Generate(store, sizes);
    const std::string host = store.ListServers().front().name();
    StoreLines(store, host, lines);
    Print("generate_ms", MillisecondsSince(start));
    const std::vector<pb::Device> devices = store.ListDevices(host);
    const QString device = QString::fromStdString(devices[devices.size() / 2].name());

    try {
        auto owned = std::make_unique<winadmin::GrpcServerSession>();
        owned->SetHostName(QStringLiteral("127.0.0.1:%1").arg(benchServer.Host().Port()));
        owned->SetPassword(Password);
        owned->Login();
        winadmin::SetTheSession(std::move(owned));

        std::vector<double> opens, switches;
        for (int run = 0; run < Runs; ++run) {
            winadmin::SetFormParameters(
                {{QStringLiteral("DeviceName"), device},
                 {QStringLiteral("HostName"), QString::fromStdString(host)}});
            start = Clock::now();
            winadmin::frmDeviceDetails dialog;
            dialog.show();
            WaitFor([&] { return dialog.State() == winadmin::EditorState::Shown; });
            dialog.repaint();
            opens.push_back(MillisecondsSince(start));

            auto* selector = dialog.findChild<QComboBox*>(QStringLiteral("cboLine"));
            start = Clock::now();
            selector->setCurrentIndex(selector->count() - 1);
            dialog.repaint();
            switches.push_back(MillisecondsSince(start));
            if (dialog.Line() != lines) throw std::runtime_error("the last line is not shown");
            dialog.hide();
        }
        const double openMs = Median(opens);
        Print("device_lines", static_cast<long long>(lines));
        Print("device_dialog_open_ms", openMs);
        Print("device_line_switch_ms", Median(switches));
        Print("device_dialog_open_vs_goal", openMs / 100.0);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench-editors: %s\n", error.what());
        return 1;
    }
    return 0;
}
