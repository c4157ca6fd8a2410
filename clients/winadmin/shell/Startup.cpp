#include "shell/Startup.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QScreen>
#include <QTimer>

#include "common/AppContext.h"
#include "common/UserReferenceField.h"
#include "common/WindowPlacement.h"
#include "editors/frmUserSelection.h"
#include "shell/HelpViewer.h"
#include "shell/frmFind.h"
#include "shell/frmLogin.h"
#include "shell/frmMain.h"
#include "shell/frmSplash.h"

namespace winadmin {

namespace {

void CenterOnScreen(QWidget* window) {
    const QScreen* screen = window->screen() ? window->screen() : QGuiApplication::primaryScreen();
    if (!screen) return;
    QRect frame = window->frameGeometry();
    frame.moveCenter(screen->availableGeometry().center());
    window->move(frame.topLeft());
}

// Shows the splash and lets it paint before the main window's load keeps
// the event loop busy.
void ShowSplash(frmSplash& splash) {
    CenterOnScreen(&splash);
    splash.show();
    splash.raise();
    splash.repaint();
    QApplication::processEvents();
}

void HoldSplash(int milliseconds) {
    if (milliseconds <= 0) return;
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

}  // namespace

int SplashHoldMs() {
    bool ok = false;
    const int value = qEnvironmentVariableIntValue("VELDRANO_SPLASH_MS", &ok);
    return ok && value > 0 ? value : 0;
}

std::unique_ptr<frmMain> StartConsole() {
    LoadDecimalSeparator();
    KeepWindowsOnScreen();
    // Every user-reference field of every editor chooses through it.
    SetUserSelectionOpener(&frmUserSelection::Open);
    // F1 in a dialog shows the guide at that dialog's section.
    InstallDialogHelp();

    {
        // Unloaded as soon as it answered; the session it created stays.
        frmLogin login;
        login.exec();
        if (!login.LoginResult()) return nullptr;
    }

    auto splash = std::make_unique<frmSplash>();
    ShowSplash(*splash);
    QElapsedTimer splashShown;
    splashShown.start();

    auto main = std::make_unique<frmMain>();
    // Loaded now and kept hidden, so that the last search text and options
    // are still there at the next search.
    auto* find = new frmFind(main.get());
    find->hide();

    HoldSplash(SplashHoldMs() - int(splashShown.elapsed()));
    splash->close();
    splash.reset();

    main->show();
    return main;
}

int Main(QApplication& app) {
    std::unique_ptr<frmMain> main = StartConsole();
    if (!main) return 0;
    return app.exec();
}

}  // namespace winadmin
