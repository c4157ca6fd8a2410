// A first run with nothing stored, against the reference server: twips follow
// the application font, so the default columns show their headers and usual
// content whole at a small and a large font; a cell that is cut shows its text
// as a tip; a viewer opened in the screen's corner opens whole on the screen.

#include <QDateTime>
#include <QHeaderView>
#include <QHelpEvent>
#include <QPointer>
#include <QScreen>
#include <QTest>
#include <QToolTip>

#include "common/Twips.h"
#include "common/WindowPlacement.h"
#include "lists/ColumnWidths.h"
#include "lists/ListFill.h"
#include "lists/ListModel.h"
#include "lists/ListTreeView.h"
#include "monitor/frmEvents.h"
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

QString EventTimeText() {
    return QDateTime(QDate(2026, 11, 25), QTime(14, 3, 27))
        .toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
}

// What a column usually holds, by the value name of its width.
QString TypicalCell(const ListColumn& column) {
    if (column.widthKey == QLatin1String("EventTime")) return EventTimeText();
    if (column.widthKey == QLatin1String("ProcessID")) return QStringLiteral("48213");
    if (column.widthKey.contains(QLatin1String("Comment"))) return kComment30;
    return column.header;
}

// Every kind the explorer lists, one of each column set.
const char* const kKinds[] = {"Administrator", "Groups", "Routes",      "NumberMappings",
                              "Servers",       "Users",  "Printers",    "Devices",
                              "Processes",     "Events", "Gateways",    "Gateway",
                              "LCR",           "Rates",  "Destinations"};

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
    void ViewerInTheCornerOpensOnScreen();
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
    ListColumn name;
    name.header = QStringLiteral("Name");
    ListColumn comment;
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

void TestFirstRun::ViewerInTheCornerOpensOnScreen() {
    // Every window the console opens, not only the main one.
    KeepWindowsOnScreen();
    const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
    // Heap-made: it deletes itself when closed.
    QPointer<frmEvents> viewer(new frmEvents);
    viewer->move(available.right() - 40, available.bottom() - 40);
    viewer->show();
    viewer->Open(QStringLiteral("fxmaster"));
    QVERIFY(QTest::qWaitForWindowExposed(viewer.data()));
    QVERIFY(available.contains(viewer->frameGeometry()));
    delete viewer.data();
}

QTEST_MAIN(TestFirstRun)
#include "tst_firstrun.moc"
