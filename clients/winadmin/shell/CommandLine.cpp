#include "shell/CommandLine.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QStringList>
#include <cstdio>

namespace winadmin {

namespace {

// What QApplication would use: "-platform name" on the command line before
// the environment's choice.
QString PlatformChoice(const QStringList& arguments) {
    for (qsizetype i = 1; i + 1 < arguments.size(); ++i)
        if (arguments.at(i) == QLatin1String("-platform") ||
            arguments.at(i) == QLatin1String("--platform"))
            return arguments.at(i + 1);
    return qEnvironmentVariable("QT_QPA_PLATFORM");
}

bool AsksForText(const QStringList& arguments) {
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        if (argument == QLatin1String("--help") || argument == QLatin1String("-h") ||
            argument == QLatin1String("-?") || argument == QLatin1String("--version") ||
            argument == QLatin1String("-v"))
            return true;
    }
    return false;
}

}  // namespace

QString MissingDisplay(const QString& platform, const QString& x11Display,
                       const QString& waylandDisplay) {
    const QStringList choices = platform.split(QLatin1Char(';'), Qt::SkipEmptyParts);
    if (choices.isEmpty()) {
        if (!x11Display.isEmpty() || !waylandDisplay.isEmpty()) return {};
        return QStringLiteral(
            "there is no display to open the console on: neither DISPLAY nor WAYLAND_DISPLAY "
            "is set. Start it from a desktop session (or through ssh -X).");
    }
    QStringList unset;
    for (const QString& choice : choices) {
        // What follows a colon ("xcb:dpi=96") is the plugin's own.
        const QString name = choice.section(QLatin1Char(':'), 0, 0).trimmed();
        if (name == QLatin1String("xcb")) {
            if (!x11Display.isEmpty()) return {};
            unset << QStringLiteral("DISPLAY");
        } else if (name.startsWith(QLatin1String("wayland"))) {
            if (!waylandDisplay.isEmpty()) return {};
            unset << QStringLiteral("WAYLAND_DISPLAY");
        } else {
            return {};
        }
    }
    unset.removeDuplicates();
    return QStringLiteral(
               "there is no display for the window system \"%1\" that QT_QPA_PLATFORM or "
               "-platform names: %2 not set. Start the console from a desktop session, or "
               "choose another window system.")
        .arg(platform, unset.join(QStringLiteral(" and ")) +
                           (unset.size() > 1 ? QStringLiteral(" are") : QStringLiteral(" is")));
}

std::optional<int> AnswerCommandLine(int argc, char* argv[]) {
    QStringList arguments;
    for (int i = 0; i < argc; ++i) arguments << QString::fromLocal8Bit(argv[i]);

    if (AsksForText(arguments)) {
        // Help and version need no window, so they work without a display.
        QCoreApplication core(argc, argv);
        QCoreApplication::setApplicationName(QStringLiteral("VELDRANO Administrator"));
        QCoreApplication::setApplicationVersion(QStringLiteral(VELDRANO_VERSION));
        QCommandLineParser parser;
        parser.setApplicationDescription(QStringLiteral(
            "The administration console of the VELDRANO message server. It asks for the "
            "server and the administrator password when it starts.\n"
            "Qt's own options, such as -platform, are accepted as well."));
        // Not addHelpOption: its --help-all would list Qt's options, which
        // only a QApplication knows, and there must be none here.
        const QCommandLineOption help(
            {QStringLiteral("h"), QStringLiteral("help"), QStringLiteral("?")},
            QStringLiteral("Shows this help."));
        parser.addOption(help);
        const QCommandLineOption version = parser.addVersionOption();
        // Qt's own options are not this parser's; they are left to QApplication.
        parser.parse(arguments);
        if (parser.isSet(help)) {
            std::fputs(qPrintable(parser.helpText()), stdout);
        } else if (parser.isSet(version)) {
            std::fputs(
                qPrintable(QStringLiteral("%1 %2\n").arg(QCoreApplication::applicationName(),
                                                         QCoreApplication::applicationVersion())),
                stdout);
        }
        std::fflush(stdout);
        return 0;
    }

#if defined(Q_OS_UNIX) && !defined(Q_OS_DARWIN)
    const QString missing =
        MissingDisplay(PlatformChoice(arguments), qEnvironmentVariable("DISPLAY"),
                       qEnvironmentVariable("WAYLAND_DISPLAY"));
    if (!missing.isEmpty()) {
        std::fprintf(stderr, "veldrano-admin: %s\n", qPrintable(missing));
        return 2;
    }
#endif
    return std::nullopt;
}

}  // namespace winadmin
