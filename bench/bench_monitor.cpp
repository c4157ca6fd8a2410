// bench-monitor: what the process and event viewers cost, the event viewer
// against a log of a million events, both viewers left open on a live server.
//
// The log is the generator's: mostly notes and warnings, 1 in 100 an error or
// worse, 1 in 10,000 a panic (100 panics in a million).
//
// Measures, side by side in one run:
//   event_refresh_common_ms   a full refresh of the event viewer (F5: every
//       row fetched again) on a server whose log holds 1,000,000 events, over
//       loopback TCP to the reference server embedded in this process, with a
//       filter that matches often (Warning and above) and the viewer's
//       default maximum: the fetch, the model update and the list's repaint;
//       goal <= 100. event_refresh_at_cap_ms is the same at the largest
//       maximum the viewer takes.
//   event_refresh_rare_ms   the same with the Panic filter, which 100 events
//       pass; goal <= 100.
//   event_refresh_vs_scan   the viewer's refresh as its timer runs it (only
//       the events newer than those it holds are fetched; 20 new events were
//       logged since the last) against an in-memory scan of the same filter
//       over the same 1,000,000 severities (a plain loop over a vector that
//       collects the passing positions); the larger of the ratios for the two
//       filters, goal <= 3. The ticks are event_tick_common_ms and
//       event_tick_rare_ms; the full refreshes against the same scans follow
//       as event_refresh_common_vs_scan and event_refresh_rare_vs_scan, with
//       no goal.
//   event_viewer_10k_cpu_percent   CPU time of this process (user + system, every
//       thread) over 30 s of wall time with the event viewer open at a 1 s
//       period listing 10,000 events (every severity) of the demo
//       installation's main server, whose log holds 20,000 more events,
//       served by a veldrano-server process of its own with its simulation
//       running; goal <= 2. idle_cpu_percent is the same with the process
//       viewer open as well; goal <= 5.
// Prints "name: value" lines, medians of several runs, and each figure's ratio
// to its goal. Run with QT_QPA_PLATFORM=offscreen (set when unset).
//
// Usage: bench-monitor [events] [idle-seconds]

#include <sys/resource.h>

#include <QApplication>
#include <QComboBox>
#include <QEventLoop>
#include <QLineEdit>
#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QTreeView>
#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>
#include <vector>

#include "BenchSupport.h"
#include "common/Settings.h"
#include "demo/DemoData.h"
#include "demo/Generator.h"
#include "lists/ListFill.h"
#include "lists/ViewSettings.h"
#include "monitor/frmEvents.h"
#include "monitor/frmProcesses.h"
#include "session/GrpcServerSession.h"
#include "store/Store.h"

namespace {

using namespace bench;
namespace pb = veldrano::admin::v1;

constexpr int Runs = 7;
constexpr int kWarning = 2;
constexpr int kPanic = 5;

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

// A refresh of the viewer: whole (F5) or as its timer runs it, with the
// repaint of the list when its rows changed (a list that did not change
// paints nothing). before runs untimed ahead of each one.
double RefreshMs(winadmin::frmEvents& viewer, bool whole,
                 const std::function<void()>& before = {}) {
    auto* list = viewer.findChild<QTreeView*>(QStringLiteral("lvEventView"));
    int changes = 0;
    QObject counter;
    const auto count = [&changes] { ++changes; };
    QObject::connect(viewer.Rows(), &QAbstractItemModel::modelReset, &counter, count);
    QObject::connect(viewer.Rows(), &QAbstractItemModel::rowsInserted, &counter, count);
    QObject::connect(viewer.Rows(), &QAbstractItemModel::rowsRemoved, &counter, count);
    std::vector<double> times;
    for (int run = 0; run < Runs; ++run) {
        if (before) before();
        const int changesBefore = changes;
        const Clock::time_point start = Clock::now();
        if (whole)
            viewer.TickWhole();
        else
            viewer.Tick();
        if (changes != changesBefore) list->viewport()->repaint();
        times.push_back(MillisecondsSince(start));
        viewer.LoadTimer()->stop();
    }
    return Median(times);
}

void SetMaxEvents(winadmin::frmEvents& viewer, int maximum) {
    auto* field = viewer.findChild<QLineEdit*>(QStringLiteral("edtMaxEvents"));
    field->setText(QString::number(maximum));
    emit field->editingFinished();
    viewer.LoadTimer()->stop();
}

void SetMinimumSeverity(winadmin::frmEvents& viewer, int severity) {
    viewer.findChild<QComboBox*>(QStringLiteral("cboSeverity"))->setCurrentIndex(severity);
    viewer.LoadTimer()->stop();
}

// Filtering the severities in memory, as a plain loop does; answers the
// median time and how many passed.
double ScanMs(const std::vector<int>& severities, int minimum, size_t* passed) {
    std::vector<double> times;
    for (int run = 0; run < Runs; ++run) {
        std::vector<uint32_t> passing;
        const Clock::time_point start = Clock::now();
        for (size_t i = 0; i < severities.size(); ++i)
            if (severities[i] >= minimum) passing.push_back(uint32_t(i));
        times.push_back(MillisecondsSince(start));
        *passed = passing.size();
    }
    return Median(times);
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
    veldrano::server::Store& store = server.GetStore();
    veldrano::server::GenerateSizes sizes;
    sizes.servers = 1;
    sizes.events = eventCount;
    Clock::time_point start = Clock::now();
    veldrano::server::Generate(store, sizes);
    Print("generate_ms", MillisecondsSince(start));
    const std::string host = store.ListServers().front().name();
    std::printf("events: %lld\n", static_cast<long long>(store.EventCount(host)));

    // The same log in memory, oldest first.
    std::vector<int> severities;
    severities.reserve(size_t(eventCount));
    pb::EventRequest all;
    all.set_host_name(host);
    all.set_max_count(int(std::min<long>(eventCount, INT32_MAX)));
    all.set_oldest_first(true);
    store.ForEachEvent(all, [&](const pb::Event& e) { severities.push_back(e.severity()); });
    size_t commonPassed = 0, rarePassed = 0;
    const double commonScanMs = ScanMs(severities, kWarning, &commonPassed);
    const double rareScanMs = ScanMs(severities, kPanic, &rarePassed);
    std::printf("passing_common: %zu\npassing_rare: %zu\n", commonPassed, rarePassed);

    if (!LogIn(QStringLiteral("127.0.0.1:%1").arg(server.Port()), Password)) return false;
    winadmin::SaveMainFormSetting(QStringLiteral("Severity"), kWarning);
    double commonMs = 0, rareMs = 0, capMs = 0, tickCommonMs = 0, tickRareMs = 0;
    int rows = 0, rareRows = 0, capRows = 0;
    {
        winadmin::frmEvents viewer;
        viewer.resize(900, 600);
        viewer.show();
        viewer.Open(QString::fromStdString(host));
        viewer.LoadTimer()->stop();
        QApplication::processEvents();
        std::printf("max_events: %d\n", viewer.MaxEvents());
        // Twenty new events before each tick, as a busy server logs them in
        // a second; a third of them pass the common filter, none Panic.
        pb::Event fresh;
        fresh.set_time(std::time(nullptr));
        fresh.set_text("Fax sent, 1 page");
        int logged = 0;
        const auto logTwenty = [&] {
            store.Bulk([&] {
                for (int i = 0; i < 20; ++i, ++logged) {
                    fresh.set_time(fresh.time() + 1);
                    fresh.set_severity(logged % 3);
                    store.AppendEvent(host, fresh);
                }
            });
        };
        commonMs = RefreshMs(viewer, true);
        rows = viewer.Rows()->rowCount();
        tickCommonMs = RefreshMs(viewer, false, logTwenty);
        SetMinimumSeverity(viewer, kPanic);
        rareMs = RefreshMs(viewer, true);
        rareRows = viewer.Rows()->rowCount();
        tickRareMs = RefreshMs(viewer, false, logTwenty);
        SetMinimumSeverity(viewer, kWarning);
        SetMaxEvents(viewer, winadmin::kEventListCap);
        capMs = RefreshMs(viewer, true);
        capRows = viewer.Rows()->rowCount();
    }
    winadmin::SetTheSession(nullptr);
    std::printf("rows_common: %d\nrows_rare: %d\nrows_at_cap: %d\n", rows, rareRows, capRows);
    Print("scan_common_ms", commonScanMs);
    Print("scan_rare_ms", rareScanMs);
    Print("event_refresh_common_ms", commonMs);
    Print("event_refresh_rare_ms", rareMs);
    Print("event_refresh_at_cap_ms", capMs);
    Print("event_tick_common_ms", tickCommonMs);
    Print("event_tick_rare_ms", tickRareMs);
    Print("event_refresh_common_vs_scan", commonMs / commonScanMs);
    Print("event_refresh_rare_vs_scan", rareMs / rareScanMs);
    Print("event_tick_common_vs_scan", tickCommonMs / commonScanMs);
    Print("event_tick_rare_vs_scan", tickRareMs / rareScanMs);
    const double vsScan = std::max(tickCommonMs / commonScanMs, tickRareMs / rareScanMs);
    Print("event_refresh_vs_scan", vsScan);
    Print("event_refresh_common_vs_goal", commonMs / 100.0);
    Print("event_refresh_rare_vs_goal", rareMs / 100.0);
    Print("event_refresh_vs_scan_vs_goal", vsScan / 3.0);
    return true;
}

// CPU share of this process over seconds of wall time while the viewers run.
double CpuPercentOver(int seconds) {
    QEventLoop loop;
    QTimer::singleShot(seconds * 1000, &loop, &QEventLoop::quit);
    const double cpuStart = CpuSeconds();
    const Clock::time_point start = Clock::now();
    loop.exec();
    const double cpu = CpuSeconds() - cpuStart;
    return 100 * cpu * 1000 / MillisecondsSince(start);
}

void OpenAtOneSecond(winadmin::MonitorWindow& viewer) {
    viewer.resize(900, 500);
    viewer.show();
    viewer.findChild<QLineEdit*>(QStringLiteral("edtUpdateSpeed"))->setText("1");
    viewer.Open(QStringLiteral("fxmaster"));
}

// The viewers at a 1 s period on the demo installation of a server process
// of its own, so that its work is not counted as the console's.
bool MeasureViewerCpu(const QString& dataDir, int seconds) {
    const QString storePath = dataDir + "/demo.db";
    {
        // The demo installation with a log that fills the viewer's largest list.
        veldrano::server::Store store(storePath.toStdString());
        veldrano::server::FillDemo(store);
        veldrano::server::GenerateSizes sizes;
        sizes.events = 20000;
        sizes.eventHost = "fxmaster";
        veldrano::server::Generate(store, sizes);
    }
    const int port = FreePort();
    const QString host = QStringLiteral("127.0.0.1:%1").arg(port);
    QProcess server;
    server.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    server.setStandardOutputFile(QProcess::nullDevice());
    server.start(QStringLiteral(VELDRANO_SERVER_PATH),
                 {QStringLiteral("--demo"), QStringLiteral("--data"), storePath,
                  QStringLiteral("--listen"), host});
    if (!server.waitForStarted(10000)) return false;
    bool in = false;
    for (int attempt = 0; attempt < 100 && !in; ++attempt) {
        in = LogIn(host, QStringLiteral("veldrano"));
        if (!in) QThread::msleep(100);
    }
    if (!in) return false;

    // Every severity, the largest list.
    winadmin::SaveMainFormSetting(QStringLiteral("Severity"), 0);
    winadmin::SaveSectionSetting(winadmin::kVendor, winadmin::GetProductKeyName(),
                                 QStringLiteral("EventView"), QStringLiteral("Max Events"),
                                 QString::number(winadmin::kEventListCap));
    {
        winadmin::frmEvents events;
        OpenAtOneSecond(events);
        int changes = 0;
        QObject::connect(events.Rows(), &QAbstractItemModel::modelReset, [&] { ++changes; });
        QObject::connect(events.Rows(), &QAbstractItemModel::rowsInserted, [&] { ++changes; });
        QApplication::processEvents();
        const double eventsOnly = CpuPercentOver(seconds);
        std::printf("event_rows: %d\nevent_list_changes: %d\n", events.Rows()->rowCount(), changes);
        Print("event_viewer_10k_cpu_percent", eventsOnly);

        winadmin::frmProcesses processes;
        OpenAtOneSecond(processes);
        QApplication::processEvents();
        const double both = CpuPercentOver(seconds);
        Print("idle_cpu_percent", both);
        Print("event_viewer_10k_cpu_vs_goal", eventsOnly / 2.0);
        Print("idle_cpu_vs_goal", both / 5.0);
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
    if (!MeasureViewerCpu(dir.path(), idleSeconds)) {
        std::fprintf(stderr, "the demo server did not start or refused the login\n");
        return 1;
    }
    return 0;
}
