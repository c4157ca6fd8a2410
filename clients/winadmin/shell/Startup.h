#pragma once
// The console's entry point: number format, login, splash, main window.

#include <memory>

class QApplication;

namespace winadmin {

class frmMain;

// The start-up up to the running console: reads the decimal separator, logs
// in through the login dialog (modal), shows the splash while the main window
// and the hidden find dialog load, and shows the main window. Answers the
// main window, or nullptr when the login was cancelled (then nothing of the
// explorer was created and no setting written). The find dialog is a child
// of the main window and lives as long as it does.
std::unique_ptr<frmMain> StartConsole();

// The program: StartConsole, then the event loop until the main window has
// closed (it saves its view settings and closes every other window itself).
// Answers the program's exit code; 0 after a cancelled login.
int Main(QApplication& app);

// How long the splash stays up at least, in milliseconds: the value of
// VELDRANO_SPLASH_MS, 0 when unset or not a number. Only for taking
// pictures of it; a console in use never waits for the splash.
int SplashHoldMs();

}  // namespace winadmin
