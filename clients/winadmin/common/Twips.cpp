#include "common/Twips.h"

#include <QGuiApplication>
#include <QScreen>
#include <QtMath>

namespace winadmin {

namespace {
constexpr double kTwipsPerInch = 1440.0;
// 96 dots per inch, what a screen without its own figure is taken to have.
constexpr double kDefaultTwipsPerPixel = 15.0;
}  // namespace

double TwipsPerPixel() {
    // Without a GUI application (a benchmark, a tool) there is no screen to ask.
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance())) return kDefaultTwipsPerPixel;
    const QScreen* screen = QGuiApplication::primaryScreen();
    const double dpi = screen ? screen->logicalDotsPerInch() : 0.0;
    return dpi > 0.0 ? kTwipsPerInch / dpi : kDefaultTwipsPerPixel;
}

int TwipsToPixels(int twips) {
    return qRound(twips / TwipsPerPixel());
}

int PixelsToTwips(int pixels) {
    return qRound(pixels * TwipsPerPixel());
}

}  // namespace winadmin
