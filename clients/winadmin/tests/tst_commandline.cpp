// The console's command line: help and version without a window, and a
// clear refusal instead of Qt's abort where there is no display. The
// program itself runs, with the environment each case needs.

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

#include "shell/CommandLine.h"

using namespace winadmin;

namespace {

struct Run {
    int exitCode = -1;
    QProcess::ExitStatus status = QProcess::CrashExit;
    QString out;
    QString err;
};

// The program beside this test, with no display at all unless the
// environment given adds one.
Run RunConsole(const QStringList& arguments, const QStringList& environment = {}) {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) env.remove(name);
    for (const QString& entry : environment)
        env.insert(entry.section(QLatin1Char('='), 0, 0), entry.section(QLatin1Char('='), 1));
    QProcess process;
    process.setProcessEnvironment(env);
    process.start(QCoreApplication::applicationDirPath() + QStringLiteral("/veldrano-admin"),
                  arguments);
    // One that hangs is killed with the process object and reads as a crash.
    if (!process.waitForFinished(30000)) return {};
    return {process.exitCode(), process.exitStatus(),
            QString::fromLocal8Bit(process.readAllStandardOutput()),
            QString::fromLocal8Bit(process.readAllStandardError())};
}

}  // namespace

class TestCommandLine : public QObject {
    Q_OBJECT

private slots:
    void HelpAndVersionNeedNoDisplay();
    void NoDisplayIsRefusedClearly();
    void DisplayNeedFollowsThePlatform();
};

void TestCommandLine::HelpAndVersionNeedNoDisplay() {
    // A window system without its display: help and version must not care.
    const QStringList environment{QStringLiteral("QT_QPA_PLATFORM=xcb")};
    const Run version = RunConsole({QStringLiteral("--version")}, environment);
    QCOMPARE(version.out, QStringLiteral("VELDRANO Administrator " VELDRANO_VERSION "\n"));
    // -h among Qt's own options.
    const Run help = RunConsole({"-platform", "xcb", "-h"}, environment);
    QVERIFY2(help.out.contains(QStringLiteral("--help")), qPrintable(help.out));
    for (const Run& run : {version, help}) {
        QCOMPARE(run.status, QProcess::NormalExit);
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(run.err.isEmpty(), qPrintable(run.err));
    }
}

void TestCommandLine::NoDisplayIsRefusedClearly() {
    // Which platform needs which display is DisplayNeedFollowsThePlatform's;
    // the command line's choice wins over the environment's.
    const std::tuple<QStringList, QStringList, QString> cases[] = {
        {{}, {}, QStringLiteral("DISPLAY")},
        {{"-platform", "xcb"}, {"QT_QPA_PLATFORM=offscreen"}, QStringLiteral("\"xcb\"")}};
    for (const auto& [arguments, environment, names] : cases) {
        const Run run = RunConsole(arguments, environment);
        // Ended on its own with a failure code, not aborted.
        QCOMPARE(run.status, QProcess::NormalExit);
        QCOMPARE(run.exitCode, 2);
        QVERIFY2(run.err.startsWith(QStringLiteral("veldrano-admin: ")), qPrintable(run.err));
        QVERIFY2(run.err.contains(names), qPrintable(run.err));
        QVERIFY(run.out.isEmpty());
    }
}

void TestCommandLine::DisplayNeedFollowsThePlatform() {
    // Arguments: platform, X11 display, Wayland display; empty when it opens.
    QVERIFY(MissingDisplay("xcb:dpi=96", ":1", "").isEmpty());
    QVERIFY(!MissingDisplay("wayland", ":0", "").isEmpty());
    QVERIFY(MissingDisplay("wayland-egl", "", "w").isEmpty());
    // Qt tries a list in order; one that can open is enough.
    QVERIFY(MissingDisplay("wayland;xcb", ":0", "").isEmpty());
    QVERIFY(MissingDisplay("offscreen", "", "").isEmpty());
}

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
