#pragma once
// What the console answers before it opens a window: --help, --version, and
// a clear refusal when there is no display to open one on (Qt would abort).

#include <QString>
#include <optional>

namespace winadmin {

// Why no window can open with the given platform plugin choice ("" when
// none was made; several may be joined by ';' as Qt takes them) and the
// X11 and Wayland display variables as set; "" when one can. Platforms that
// need no display server (offscreen, vnc, eglfs, ...) always can.
QString MissingDisplay(const QString& platform, const QString& x11Display,
                       const QString& waylandDisplay);

// Handles what the command line asks that needs no window. Answers the exit
// code when the program should end now (help and version shown, or no
// display), nothing when the console should start.
std::optional<int> AnswerCommandLine(int argc, char* argv[]);

}  // namespace winadmin
