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
    Run run;
    if (!process.waitForFinished(30000)) {
        process.kill();
        process.waitForFinished();
        return run;
    }
    run.exitCode = process.exitCode();
    run.status = process.exitStatus();
    run.out = QString::fromLocal8Bit(process.readAllStandardOutput());
    run.err = QString::fromLocal8Bit(process.readAllStandardError());
    return run;
}

}  // namespace

class TestCommandLine : public QObject {
    Q_OBJECT

private slots:
    void HelpAndVersionNeedNoDisplay_data();
    void HelpAndVersionNeedNoDisplay();
    void NoDisplayIsRefusedClearly_data();
    void NoDisplayIsRefusedClearly();
    void DisplayNeedFollowsThePlatform();
};

void TestCommandLine::HelpAndVersionNeedNoDisplay_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("expected");
    const QString version = QStringLiteral("VELDRANO Administrator " VELDRANO_VERSION "\n");
    QTest::newRow("--version") << QStringList{"--version"} << version;
    QTest::newRow("-h among Qt's own options")
        << QStringList{"-platform", "xcb", "-h"} << QStringLiteral("--help");
}

void TestCommandLine::HelpAndVersionNeedNoDisplay() {
    QFETCH(QStringList, arguments);
    QFETCH(QString, expected);
    // A window system without its display: help and version must not care.
    const Run run = RunConsole(arguments, {QStringLiteral("QT_QPA_PLATFORM=xcb")});
    QCOMPARE(run.status, QProcess::NormalExit);
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(run.err.isEmpty(), qPrintable(run.err));
    QVERIFY2(expected.endsWith(u'\n') ? run.out == expected : run.out.contains(expected),
             qPrintable(run.out));
}

void TestCommandLine::NoDisplayIsRefusedClearly_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("environment");
    QTest::addColumn<QString>("names");
    // Which platform needs which display is DisplayNeedFollowsThePlatform's.
    QTest::newRow("nothing set") << QStringList{} << QStringList{} << QStringLiteral("DISPLAY");
    QTest::newRow("X11 chosen, no DISPLAY")
        << QStringList{} << QStringList{"QT_QPA_PLATFORM=xcb"} << QStringLiteral("\"xcb\"");
    QTest::newRow("X11 chosen on the command line")
        << QStringList{"-platform", "xcb"} << QStringList{"QT_QPA_PLATFORM=offscreen"}
        << QStringLiteral("\"xcb\"");
}

void TestCommandLine::NoDisplayIsRefusedClearly() {
    QFETCH(QStringList, arguments);
    QFETCH(QStringList, environment);
    QFETCH(QString, names);
    const Run run = RunConsole(arguments, environment);
    // Ended on its own with a failure code, not aborted.
    QCOMPARE(run.status, QProcess::NormalExit);
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.err.startsWith(QStringLiteral("veldrano-admin: ")), qPrintable(run.err));
    QVERIFY2(run.err.contains(names), qPrintable(run.err));
    QVERIFY(run.out.isEmpty());
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
