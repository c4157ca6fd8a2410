// A first run with nothing stored, against the reference server: twips follow
// the application font, so the default columns show their headers and usual
// content whole at a small and a large font; a cut cell shows its text
// as a tip, and a stored frame opens whole on the screens.

#include <QDateTime>
#include <QHeaderView>
#include <QHelpEvent>
#include <QTest>
#include <QToolTip>

#include "common/Twips.h"
#include "common/WindowPlacement.h"
#include "lists/ColumnWidths.h"
#include "lists/ListFill.h"
#include "lists/ListModel.h"
#include "lists/ListTreeView.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

// The application font for the case, restored after it.
struct FontOfSize {
    explicit FontOfSize(int points) : saved(QApplication::font()) {
        QFont font = saved;
        font.setPointSize(points);
        QApplication::setFont(font);
    }
    ~FontOfSize() { QApplication::setFont(saved); }
    QFont saved;
};

const QString kComment30 = QStringLiteral("Accounts payable, second floor");

// What a column usually holds, by the value name of its width.
QString TypicalCell(const ListColumn& column) {
    if (column.widthKey == QLatin1String("EventTime"))
        return QDateTime(QDate(2026, 11, 25), QTime(14, 3, 27))
            .toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    if (column.widthKey == QLatin1String("ProcessID")) return QStringLiteral("48213");
    if (column.widthKey.contains(QLatin1String("Comment"))) return kComment30;
    return column.header;
}

// Every kind the explorer lists, one of each column set.
const char* const kKinds[] = {"Administrator", "Groups", "Routes",      "NumberMappings",
                              "Servers",       "Users",  "Printers",    "Devices",
                              "Processes",     "Events", "Gateways",    "Gateway",
                              "LCR",           "Rates",  "Destinations"};

// Screen layouts the test machine need not have: a second monitor to the
// right, a third above it, smaller, as laptops and docking stations arrange
// them.
const QRect kPrimary(0, 0, 1920, 1040);
const QRect kRight(1920, 0, 1280, 984);
const QRect kAbove(1920, -768, 1024, 768);
const QSize kMinimum(400, 300);

bool TipShownFor(ListTreeView& view, const QModelIndex& index) {
    // A tip hides after a short delay; the next one must not be the last.
    QToolTip::hideText();
    if (!QTest::qWaitFor([] { return !QToolTip::isVisible(); }, 2000)) return true;
    const QPoint at = view.visualRect(index).center();
    QHelpEvent help(QEvent::ToolTip, at, view.viewport()->mapToGlobal(at));
    QApplication::sendEvent(view.viewport(), &help);
    return QToolTip::isVisible() && QToolTip::text() == index.data().toString();
}

}  // namespace

class TestFirstRun : public ExplorerSuite {
    Q_OBJECT

private slots:
    void TwipsFollowTheApplicationFont();
    void DefaultColumnsShowTheirContent();
    void OnlyACutCellShowsItsTextAsTip();
    void StoredFrameIsPlacedWhollyOnTheScreens();
};

void TestFirstRun::TwipsFollowTheApplicationFont() {
    for (int points : {9, 12}) {
        FontOfSize font(points);
        // A twip is worth as much more as the average character is wider.
        QCOMPARE(TwipsToPixels(9000),
                 qRound(9000 / 15.0 * AverageCharWidth() / kClassicAverageCharWidth));
        // A size saved and read again lands on the same pixel.
        for (int pixels = -50; pixels <= 4000; ++pixels)
            QCOMPARE(TwipsToPixels(PixelsToTwips(pixels)), pixels);
        // And stored twips read, shown and saved again stay put after that.
        for (int twips : {1, 799, 32767}) {
            const int saved = PixelsToTwips(TwipsToPixels(twips));
            QCOMPARE(PixelsToTwips(TwipsToPixels(saved)), saved);
        }
    }
}

void TestFirstRun::DefaultColumnsShowTheirContent() {
    const ColumnWidths defaults;
    for (int points : {9, 12}) {
        FontOfSize font(points);
        for (const char* kind : kKinds) {
            ListModel model;
            model.SetColumns(BuildListColumns(QLatin1String(kind), defaults));
            const std::vector<ListColumn>& columns = model.Columns();
            QStringList cells;
            for (const ListColumn& column : columns) cells << TypicalCell(column);
            std::vector<ListRow> rows(1);
            rows[0].cells = ListCells(cells);
            model.SetRows(std::move(rows));

            ListTreeView view;
            view.setModel(&model);
            view.header()->setStretchLastSection(false);
            // The explorer shows which column sorts.
            view.header()->setSortIndicatorShown(true);
            view.header()->setSortIndicator(0, Qt::AscendingOrder);
            for (size_t i = 0; i < columns.size(); ++i)
                view.header()->resizeSection(int(i), columns[i].width);
            view.resize(view.header()->length() + 50, 200);
            view.show();
            QVERIFY(QTest::qWaitForWindowExposed(&view));
            for (int i = 0; i < int(columns.size()); ++i) {
                const QString what = QStringLiteral("%1 / %2 at %3 points")
                                         .arg(QLatin1String(kind), columns[size_t(i)].header)
                                         .arg(points);
                QVERIFY2(view.header()->sectionSize(i) >= view.header()->sectionSizeHint(i),
                         qPrintable(what + QStringLiteral(": header cut")));
                QVERIFY2(!view.IsElided(model.index(0, i)),
                         qPrintable(what + QStringLiteral(": cell cut")));
            }
        }
    }
}

void TestFirstRun::OnlyACutCellShowsItsTextAsTip() {
    ListModel model;
    ListColumn name, comment;
    name.header = QStringLiteral("Name");
    comment.header = QStringLiteral("Comment");
    model.SetColumns({name, comment});
    std::vector<ListRow> rows(1);
    rows[0].cells = ListCells({QStringLiteral("fx"), kComment30});
    model.SetRows(std::move(rows));
    ListTreeView view;
    view.setModel(&model);
    view.header()->setStretchLastSection(false);
    view.header()->resizeSection(0, 200);
    view.header()->resizeSection(1, 60);
    view.resize(400, 200);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));

    QVERIFY(TipShownFor(view, model.index(0, 1)));
    QVERIFY(!TipShownFor(view, model.index(0, 0)));
    QToolTip::hideText();
}

void TestFirstRun::StoredFrameIsPlacedWhollyOnTheScreens() {
    const QList<QRect> screens{kPrimary, kRight, kAbove};
    const struct {
        QList<QRect> screens;
        QRect frame, placed;
    } cases[] = {// The place of the upper monitor with it unplugged.
                 {{kPrimary}, QRect(2000, -700, 600, 500), QRect(1320, 0, 600, 500)},
                 // Partly off the edge: onto the screen that shows most of it.
                 {screens, QRect(2700, -500, 600, 400), QRect(2344, -500, 600, 400)},
                 // Below the least size the top left corner shows, where the menus are.
                 {{QRect(0, 0, 320, 240)}, QRect(50, 50, 500, 400), QRect(0, 0, 400, 300)},
                 {{}, QRect(5000, 5000, 10, 10), QRect(5000, 5000, 10, 10)}};
    for (const auto& [on, frame, placed] : cases)
        QCOMPARE(PlaceOnScreens(frame, kMinimum, on), placed);

    // Frames all over and around the three screens, of every size.
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

QTEST_MAIN(TestFirstRun)
#include "tst_firstrun.moc"
