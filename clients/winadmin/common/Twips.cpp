#include "common/Twips.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QtMath>

namespace winadmin {

namespace {
// The classic layout's unit: 1440 twips an inch at 96 dots per inch.
constexpr double kClassicTwipsPerPixel = 15.0;
}  // namespace

double AverageCharWidth() {
    // Without a GUI application (a benchmark, a tool) there is no font to ask.
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return kClassicAverageCharWidth;
    const QString letters = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
    const double width = QFontMetricsF(QGuiApplication::font()).horizontalAdvance(letters);
    return width > 0.0 ? width / letters.size() : kClassicAverageCharWidth;
}

double TwipsPerPixel() {
    const double twipsPerPixel =
        kClassicTwipsPerPixel * kClassicAverageCharWidth / AverageCharWidth();
    return qMax(1.0, twipsPerPixel);
}

int TwipsToPixels(int twips) {
    return qRound(twips / TwipsPerPixel());
}

int PixelsToTwips(int pixels) {
    return qRound(pixels * TwipsPerPixel());
}

}  // namespace winadmin
