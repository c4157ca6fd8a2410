// veldrano-admin: the administration console of the VELDRANO message server.

#include <QApplication>
#include <QIcon>

#include "common/QtPrompter.h"
#include "lists/KindIcons.h"
#include "shell/CommandLine.h"
#include "shell/Startup.h"

int main(int argc, char* argv[]) {
    // Before QApplication: it aborts when there is no display, and --help
    // must work where there is none.
    if (const std::optional<int> exitCode = winadmin::AnswerCommandLine(argc, argv))
        return *exitCode;
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Tarnex"));
    QApplication::setApplicationName(QStringLiteral("VELDRANO Administrator"));

    winadmin::QtPrompter prompter;
    winadmin::SetPrompter(&prompter);
    winadmin::LoadConsoleResources();
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/app/icon.svg")));

    const int result = winadmin::Main(app);
    winadmin::SetPrompter(nullptr);
    return result;
}
