// What the administrator does with the explorer's panes beyond selecting:
// sorting and sizing the list's columns through its header, moving with the
// keyboard, dragging objects over the tree, and the tree's routing pop-up.

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>
#include <QMimeData>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>
#include <memory>

#include "common/Twips.h"
#include "lists/ExplorerListView.h"
#include "lists/ListModel.h"
#include "lists/ViewSettings.h"
#include "shell/frmMain.h"
#include "store/Store.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

using Fx = ExplorerFixture;

class TestExplorerInput : public ExplorerSuite {
    Q_OBJECT

private slots:
    void HeaderSortsAndKeepsDraggedWidths();
    void KeyboardWorksInBothPanes();
    void DragOverTheTreeMarksWhereObjectsMayGo();
    void RoutingPopupReloadsTheTables();
};

void TestExplorerInput::HeaderSortsAndKeepsDraggedWidths() {
    auto main = fx_->OpenMain();
    ListModel* model = main->ListRows();
    QHeaderView* header = main->List()->DetailsView()->header();
    const ColumnWidths defaults;
    Fx::Click(*main, QStringLiteral("fxmasterUsers"));
    QCOMPARE(header->sectionSize(1), TwipsToPixels(defaults.Width("UserView", "UserComment")));

    // The sort rules are tst_listmodel's; the indicator shows what they chose.
    QStringList names = Fx::ColumnTexts(model, 0);
    std::sort(names.begin(), names.end(), [](const QString& a, const QString& b) {
        return QString::compare(a, b, Qt::CaseInsensitive) < 0;
    });
    Fx::ClickHeader(*main, 1);
    Fx::ClickHeader(*main, 0);
    QCOMPARE(Fx::ColumnTexts(model, 0), names);
    QVERIFY(header->isSortIndicatorShown());
    QCOMPARE(header->sortIndicatorSection(), 0);

    // A width the administrator drags goes into the table the window saves
    // (saving it is tst_mainwindow's); the same kind keeps its width and its
    // order.
    header->resizeSection(1, 240);
    QCOMPARE(main->Widths().Width("UserView", "UserComment"), PixelsToTwips(240));
    Fx::Click(*main, QStringLiteral("Groups"));
    QCOMPARE(header->sectionSize(1), TwipsToPixels(defaults.Width("GroupView", "GroupComment")));
    Fx::Click(*main, QStringLiteral("fxsalesUsers"));
    QCOMPARE(header->sectionSize(1), 240);
    QCOMPARE(header->sortIndicatorSection(), 0);

    // Dragged under a name that is not the header's.
    Fx::Click(*main, QStringLiteral("Destinations1"));
    header->resizeSection(2, 77);
    QCOMPARE(main->Widths().Width("DestView", "Destext"), PixelsToTwips(77));

    // Laying out columns for a node changes no width that was not dragged,
    // however the pixels round.
    Fx::Click(*main, QStringLiteral("LCR"));
    QCOMPARE(main->Widths().Width("ZoneView", "IsLocal"), defaults.Width("ZoneView", "IsLocal"));
}

void TestExplorerInput::KeyboardWorksInBothPanes() {
    auto main = fx_->OpenMain();
    QTreeWidget* tree = main->Tree();
    QTreeView* list = main->List()->DetailsView();

    // Tab goes to the list and on round to the tree.
    Fx::Click(*main, QStringLiteral("fxmasterUsers"));
    tree->setFocus();
    QTest::keyClick(tree, Qt::Key_Tab);
    QVERIFY(list->hasFocus());
    QTest::keyClick(list, Qt::Key_Tab);
    QVERIFY(tree->hasFocus());

    // Enter on a branch row opens the branch; on an object row it opens
    // nothing yet and leaves the tree where it is.
    Fx::Click(*main, QStringLiteral("fxmaster"));
    const int events = main->ListRows()->FindKey(QStringLiteral("fxmasterEvents"));
    QVERIFY(events > 0);
    list->setFocus();
    list->setCurrentIndex(main->ListRows()->index(events, 0));
    QTest::keyClick(list, Qt::Key_Return);
    QCOMPARE(Fx::Key(tree->currentItem()), QStringLiteral("fxmasterEvents"));
    QCOMPARE(main->ListRows()->Columns().front().key, QStringLiteral("EventTime"));
    list->setCurrentIndex(main->ListRows()->index(0, 0));
    QTest::keyClick(list, Qt::Key_Return);
    QCOMPARE(Fx::Key(tree->currentItem()), QStringLiteral("fxmasterEvents"));
}

void TestExplorerInput::DragOverTheTreeMarksWhereObjectsMayGo() {
    // Which rows can be dragged at all is tst_listmodel's; what a drop does is
    // the clipboard suite's.
    auto main = fx_->OpenMain();
    const struct {
        const char* from;
        const char* onto;
        bool accepted;
    } drags[] = {
        {"fxmasterUsers", "fxsalesPrinters", false},
        {"fxline01Devices", "fxbackupDevices", true},
        {"smtp.example.com", "x400.example.net", true},
        {"smtp.example.com", "Gateways", false},
    };
    for (const auto& [from, onto, accepted] : drags) {
        Fx::Click(*main, QLatin1String(from));
        std::unique_ptr<QMimeData> data(
            main->ListRows()->mimeData({main->ListRows()->index(0, 0)}));
        QVERIFY2(Fx::DragOnto(*main, data.get(), QLatin1String(onto)) == accepted, onto);
    }
}

void TestExplorerInput::RoutingPopupReloadsTheTables() {
    auto main = fx_->OpenMain();
    QMenu* popup = main->PopupMenu(QStringLiteral("mnuPopupLCR"));
    QAction* reload = main->MenuEntry(QStringLiteral("mnuPopupLCRReload"));
    QVERIFY(reload->isEnabled());
    auto rightClick = [&](const char* key) {
        const QPoint at = main->Tree()->visualItemRect(main->FindNode(QLatin1String(key))).center();
        QContextMenuEvent event(QContextMenuEvent::Mouse, at,
                                main->Tree()->viewport()->mapToGlobal(at));
        QApplication::sendEvent(main->Tree()->viewport(), &event);
    };
    rightClick("Groups");
    QVERIFY(!popup->isVisible());
    rightClick("LCR");
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    QCOMPARE(Fx::Key(main->Tree()->currentItem()), QStringLiteral("LCR"));
    popup->close();

    // The routing engine's reload is logged by every server that runs.
    const int64_t before = Store().EventCount("fxmaster");
    reload->trigger();
    QCOMPARE(Store().EventCount("fxmaster"), before + 1);
}

QTEST_MAIN(TestExplorerInput)
#include "tst_explorerinput.moc"
