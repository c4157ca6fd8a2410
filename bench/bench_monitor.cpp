// bench-monitor: what the process and event viewers cost, the event viewer
// against a log of a million events, both viewers left open on a live server.
//
// Measures, side by side in one run:
//   event_refresh_ms   one timer tick of the event viewer on a server whose
//       log holds 1,000,000 events, over loopback TCP to the reference server
//       embedded in this process: the fetch with the severity filter (Error
//       and above) and the viewer's maximum, the model update and the list's
//       repaint; goal <= 100. The same at the largest maximum the viewer
//       takes follows as event_refresh_at_cap_ms.
//   event_refresh_vs_floor   that tick against filtering the same 1,000,000
//       severities in memory (a plain loop over a vector); reported.
//   idle_cpu_percent   CPU time of this process (user + system, every thread)
//       over 30 s of wall time with both viewers open at a 1 s period on the
//       demo installation, served by a veldrano-server process of its own
//       with its simulation running; goal <= 5.
// Prints "name: value" lines, medians of several runs, and each figure's ratio
// to its goal. Run with QT_QPA_PLATFORM=offscreen (set when unset).
//
// Usage: bench-monitor [events] [idle-seconds]

#include <sys/resource.h>

#include <QApplication>
#include <QEventLoop>
#include <QLineEdit>
#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QTreeView>
#include <cstdlib>
#include <memory>
#include <vector>

#include "BenchSupport.h"
#include "common/Settings.h"
#include "demo/Generator.h"
#include "lists/ListFill.h"
#include "lists/ViewSettings.h"
#include "monitor/frmEvents.h"
#include "monitor/frmProcesses.h"
#include "session/GrpcServerSession.h"
#include "store/Store.h"

namespace {

using namespace bench;

constexpr int Runs = 7;
constexpr int kErrorSeverity = 3;

double CpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& t) { return double(t.tv_sec) + t.tv_usec / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

bool LogIn(const QString& host, const QString& password) {
    auto session = std::make_unique<winadmin::GrpcServerSession>();
    session->SetHostName(host);
    session->SetPassword(password);
    try {
        session->Login();
    } catch (const winadmin::SessionError&) {
        return false;
    }
    winadmin::SetTheSession(std::move(session));
    return true;
}

// One tick of the viewer as its timer runs it, painted.
double TickMs(winadmin::frmEvents& viewer) {
    auto* list = viewer.findChild<QTreeView*>(QStringLiteral("lvEventView"));
    std::vector<double> times;
    for (int run = 0; run < Runs; ++run) {
        const Clock::time_point start = Clock::now();
        viewer.Tick();
        list->viewport()->repaint();
        times.push_back(MillisecondsSince(start));
    }
    return Median(times);
}

void SetMaxEvents(winadmin::frmEvents& viewer, int maximum) {
    auto* field = viewer.findChild<QLineEdit*>(QStringLiteral("edtMaxEvents"));
    field->setText(QString::number(maximum));
    emit field->editingFinished();
}

// A free loopback port: bound, then given back for the server to take.
int FreePort() {
    QTcpServer probe;
    if (!probe.listen(QHostAddress::LocalHost)) return 0;
    return probe.serverPort();
}

// The event viewer against a million events; answers false when the
// session fails.
bool MeasureEventRefresh(long eventCount) {
    BenchServer benchServer;
    veldrano::server::ServerHost& server = benchServer.Host();
    veldrano::server::GenerateSizes sizes;
    sizes.servers = 1;
    sizes.events = eventCount;
    Clock::time_point start = Clock::now();
    veldrano::server::Generate(server.GetStore(), sizes);
    Print("generate_ms", MillisecondsSince(start));
    const std::string host = server.GetStore().ListServers().front().name();
    std::printf("events: %lld\n", static_cast<long long>(server.GetStore().EventCount(host)));

    // The floor: the same severities, filtered in memory.
    std::vector<int> severities;
    severities.reserve(size_t(eventCount));
    veldrano::admin::v1::EventRequest all;
    all.set_host_name(host);
    all.set_max_count(int(std::min<long>(eventCount, INT32_MAX)));
    server.GetStore().ForEachEvent(
        all, [&](const veldrano::admin::v1::Event& e) { severities.push_back(e.severity()); });
    std::vector<double> floors;
    size_t kept = 0;
    for (int run = 0; run < Runs; ++run) {
        std::vector<uint32_t> passing;
        const Clock::time_point floorStart = Clock::now();
        passing.reserve(severities.size());
        for (size_t i = 0; i < severities.size(); ++i)
            if (severities[i] >= kErrorSeverity) passing.push_back(uint32_t(i));
        floors.push_back(MillisecondsSince(floorStart));
        kept = passing.size();
    }
    const double floorMs = Median(floors);
    std::printf("severities_filtered: %zu of %zu\n", kept, severities.size());

    if (!LogIn(QStringLiteral("127.0.0.1:%1").arg(server.Port()), Password)) return false;
    winadmin::SaveMainFormSetting(QStringLiteral("Severity"), kErrorSeverity);
    double tickMs = 0, capMs = 0;
    {
        winadmin::frmEvents viewer;
        viewer.resize(900, 600);
        viewer.show();
        viewer.Open(QString::fromStdString(host));
        viewer.LoadTimer()->stop();
        QApplication::processEvents();
        std::printf("max_events: %d\n", viewer.MaxEvents());
        tickMs = TickMs(viewer);
        std::printf("rows: %d\n", viewer.Rows()->rowCount());
        SetMaxEvents(viewer, winadmin::kEventListCap);
        viewer.LoadTimer()->stop();
        capMs = TickMs(viewer);
        std::printf("rows_at_cap: %d\n", viewer.Rows()->rowCount());
        viewer.LoadTimer()->stop();
    }
    winadmin::SetTheSession(nullptr);
    Print("severity_floor_ms", floorMs);
    Print("event_refresh_ms", tickMs);
    Print("event_refresh_at_cap_ms", capMs);
    Print("event_refresh_vs_floor", tickMs / floorMs);
    Print("event_refresh_vs_goal", tickMs / 100.0);
    return true;
}

// Both viewers at a 1 s period on the demo installation of a server process
// of its own, so that its work is not counted as the console's.
bool MeasureIdleCpu(const QString& dataDir, int seconds) {
    const int port = FreePort();
    const QString host = QStringLiteral("127.0.0.1:%1").arg(port);
    QProcess server;
    server.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    server.setStandardOutputFile(QProcess::nullDevice());
    server.start(QStringLiteral(VELDRANO_SERVER_PATH),
                 {QStringLiteral("--demo"), QStringLiteral("--data"), dataDir + "/demo.db",
                  QStringLiteral("--listen"), host});
    if (!server.waitForStarted(10000)) return false;
    bool in = false;
    for (int attempt = 0; attempt < 100 && !in; ++attempt) {
        in = LogIn(host, QStringLiteral("veldrano"));
        if (!in) QThread::msleep(100);
    }
    if (!in) return false;

    // The explorer's default filter: every severity.
    winadmin::SaveMainFormSetting(QStringLiteral("Severity"), 0);
    int fills = 0;
    {
        winadmin::frmProcesses processes;
        winadmin::frmEvents events;
        for (winadmin::MonitorWindow* viewer : {static_cast<winadmin::MonitorWindow*>(&processes),
                                                static_cast<winadmin::MonitorWindow*>(&events)}) {
            viewer->resize(900, 500);
            viewer->show();
            viewer->findChild<QLineEdit*>(QStringLiteral("edtUpdateSpeed"))->setText("1");
            viewer->Open(QStringLiteral("fxmaster"));
            QObject::connect(viewer->Rows(), &QAbstractItemModel::modelReset, [&] { ++fills; });
        }
        QApplication::processEvents();
        fills = 0;
        QEventLoop loop;
        QTimer::singleShot(seconds * 1000, &loop, &QEventLoop::quit);
        const double cpuStart = CpuSeconds();
        const Clock::time_point start = Clock::now();
        loop.exec();
        const double cpu = CpuSeconds() - cpuStart;
        const double wallMs = MillisecondsSince(start);
        std::printf("idle_seconds: %.1f\nidle_fills: %d\n", wallMs / 1000, fills);
        std::printf("event_rows: %d\n", events.Rows()->rowCount());
        Print("idle_cpu_ms", cpu * 1000);
        Print("idle_cpu_percent", 100 * cpu * 1000 / wallMs);
        Print("idle_cpu_vs_goal", (100 * cpu * 1000 / wallMs) / 5.0);
    }
    winadmin::SetTheSession(nullptr);
    server.terminate();
    server.waitForFinished(10000);
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const long eventCount = argc > 1 ? std::atol(argv[1]) : 1000000;
    const int idleSeconds = argc > 2 ? std::atoi(argv[2]) : 30;
    QTemporaryDir dir;
    if (!dir.isValid()) return 1;
    // The viewers read and write their settings; the benchmark keeps its own.
    winadmin::UseSettingsFile(dir.filePath(QStringLiteral("settings.ini")));

    if (!MeasureEventRefresh(eventCount)) {
        std::fprintf(stderr, "the event viewer could not log in\n");
        return 1;
    }
    if (!MeasureIdleCpu(dir.path(), idleSeconds)) {
        std::fprintf(stderr, "the demo server did not start or refused the login\n");
        return 1;
    }
    return 0;
}
