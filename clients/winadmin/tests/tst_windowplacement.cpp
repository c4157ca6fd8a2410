// Where the main window opens from its stored position, over screen layouts
// that the test machine does not need to have.

#include <QTest>

#include "common/WindowPlacement.h"

using namespace winadmin;

namespace {

const QRect kPrimary(0, 0, 1920, 1040);
// A second monitor to the right, a third above it, smaller, as laptops and
// docking stations arrange them.
const QRect kRight(1920, 0, 1280, 984);
const QRect kAbove(1920, -768, 1024, 768);
const QSize kMinimum(400, 300);

}  // namespace

class TestWindowPlacement : public QObject {
    Q_OBJECT

private slots:
    void PlacesTheStoredFrame_data();
    void PlacesTheStoredFrame();
    void ResultIsAlwaysWhollyVisible();
};

void TestWindowPlacement::PlacesTheStoredFrame_data() {
    QTest::addColumn<QList<QRect>>("screens");
    QTest::addColumn<QRect>("frame");
    QTest::addColumn<QRect>("placed");
    const QList<QRect> three{kPrimary, kRight, kAbove};
    const QList<QRect> one{kPrimary};

    // A frame that shows whole stays put (the sweep below checks that); the
    // place of the upper monitor with it unplugged.
    QTest::newRow("monitor above gone")
        << one << QRect(2000, -700, 600, 500) << QRect(1320, 0, 600, 500);
    // Partly off the edge: onto the screen that shows most of it.
    QTest::newRow("hanging over the gap beside the monitor above")
        << three << QRect(2700, -500, 600, 400) << QRect(2344, -500, 600, 400);
    QTest::newRow("larger than the screen it is on")
        << three << QRect(2000, 10, 1600, 1200) << QRect(1920, 0, 1280, 984);
    QTest::newRow("smaller than the window allows")
        << three << QRect(2300, 200, 10, 10) << QRect(2300, 200, 400, 300);
    // Below the least size the top left corner shows, where the menus are.
    QTest::newRow("screen smaller than the least size")
        << QList<QRect>{QRect(0, 0, 320, 240)} << QRect(50, 50, 500, 400) << QRect(0, 0, 400, 300);
    QTest::newRow("no screens") << QList<QRect>{} << QRect(5000, 5000, 10, 10)
                                << QRect(5000, 5000, 10, 10);
}

void TestWindowPlacement::PlacesTheStoredFrame() {
    QFETCH(QList<QRect>, screens);
    QFETCH(QRect, frame);
    QTEST(PlaceOnScreens(frame, kMinimum, screens), "placed");
}

void TestWindowPlacement::ResultIsAlwaysWhollyVisible() {
    // Frames all over and around the three screens, of every size.
    const QList<QRect> screens{kPrimary, kRight, kAbove};
    QRegion visible;
    for (const QRect& screen : screens) visible += screen;
    int moved = 0;
    for (int x = -3000; x <= 5000; x += 370) {
        for (int y = -2000; y <= 2500; y += 290) {
            for (const QSize size : {QSize(1, 1), QSize(700, 500), QSize(2500, 1500)}) {
                const QRect frame(QPoint(x, y), size);
                const QRect placed = PlaceOnScreens(frame, kMinimum, screens);
                QVERIFY2(QRegion(placed).subtracted(visible).isEmpty(), QTest::toString(frame));
                QVERIFY(placed.width() >= kMinimum.width() && placed.height() >= kMinimum.height());
                // A frame already visible is never touched.
                const QRect grown(frame.topLeft(), frame.size().expandedTo(kMinimum));
                if (QRegion(grown).subtracted(visible).isEmpty())
                    QCOMPARE(placed, grown);
                else
                    ++moved;
            }
        }
    }
    QVERIFY(moved > 0);
}

QTEST_APPLESS_MAIN(TestWindowPlacement)
#include "tst_windowplacement.moc"
