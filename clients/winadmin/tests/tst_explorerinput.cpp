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

#include "common/Prompter.h"
#include "common/Settings.h"
#include "common/Twips.h"
#include "lists/ExplorerListView.h"
#include "lists/ListModel.h"
#include "lists/ViewSettings.h"
#include "shell/frmMain.h"
#include "store/Store.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

using Fx = ExplorerFixture;

bool CaseInsensitiveLess(const QString& a, const QString& b) {
    return QString::compare(a, b, Qt::CaseInsensitive) < 0;
}

}  // namespace

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

    QStringList names = Fx::ColumnTexts(model, 0);
    std::sort(names.begin(), names.end(), CaseInsensitiveLess);
    Fx::ClickHeader(*main, 0);
    QCOMPARE(Fx::ColumnTexts(model, 0), names);
    QVERIFY(header->isSortIndicatorShown());
    QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);
    // The sort rules are tst_listmodel's; the indicator shows what they chose.
    Fx::ClickHeader(*main, 0);
    QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
    Fx::ClickHeader(*main, 1);
    QCOMPARE(header->sortIndicatorSection(), 1);
    QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);

    // A width the administrator drags goes into the table the window saves.
    header->resizeSection(1, 240);
    QCOMPARE(main->Widths().Width("UserView", "UserComment"), PixelsToTwips(240));
    Fx::Click(*main, QStringLiteral("Groups"));
    QCOMPARE(header->sectionSize(1), TwipsToPixels(defaults.Width("GroupView", "GroupComment")));
    Fx::Click(*main, QStringLiteral("fxsalesUsers"));
    QCOMPARE(header->sectionSize(1), 240);
    // The same kind keeps its order too.
    QCOMPARE(header->sortIndicatorSection(), 1);

    // Dragged under a name that is not the header's.
    Fx::Click(*main, QStringLiteral("Destinations1"));
    header->resizeSection(2, 77);
    QCOMPARE(main->Widths().Width("DestView", "Destext"), PixelsToTwips(77));
    QCOMPARE(main->Widths().Width("DestView", "DestType"), defaults.Width("DestView", "DestType"));

    // Laying out columns for a node changes no width that was not dragged,
    // however the pixels round.
    for (const char* node : {"Administrator", "fxmaster", "zone1", "LCR", "Rates1"})
        Fx::Click(*main, QLatin1String(node));
    QCOMPARE(main->Widths().Width("AdmView", "Name"), defaults.Width("AdmView", "Name"));
    QCOMPARE(main->Widths().Width("ZoneView", "IsLocal"), defaults.Width("ZoneView", "IsLocal"));

    QVERIFY(main->close());
    QCOMPARE(GetSectionSetting(kVendor, GetProductKeyName(), "UserView", "UserComment", {}),
             QString::number(PixelsToTwips(240)));
    QCOMPARE(GetSectionSetting(kVendor, GetProductKeyName(), "ZoneView", "IsLocal", {}),
             QString::number(defaults.Width("ZoneView", "IsLocal")));
}

void TestExplorerInput::KeyboardWorksInBothPanes() {
    auto main = fx_->OpenMain();
    QTreeWidget* tree = main->Tree();
    QTreeView* list = main->List()->DetailsView();
    tree->setFocus();
    QTest::keyClick(tree, Qt::Key_Down);
    QCOMPARE(Fx::Key(tree->currentItem()), QStringLiteral("Groups"));
    QCOMPARE(main->ListRows()->columnCount(), 2);
    QTest::keyClick(tree, Qt::Key_End);
    QCOMPARE(Fx::Key(tree->currentItem()), QStringLiteral("Servers"));
    QTest::keyClick(tree, Qt::Key_Right);
    QTest::keyClick(tree, Qt::Key_Down);
    QCOMPARE(Fx::Kind(tree->currentItem()), QStringLiteral("Server"));
    QTest::keyClick(tree, Qt::Key_Home);
    QCOMPARE(Fx::Key(tree->currentItem()), QStringLiteral("Administrator"));

    // Tab goes to the list, whose first row is current, and back.
    Fx::Click(*main, QStringLiteral("fxmasterUsers"));
    tree->setFocus();
    QTest::keyClick(tree, Qt::Key_Tab);
    QVERIFY(list->hasFocus());
    QCOMPARE(list->currentIndex().row(), 0);
    QTest::keyClick(list, Qt::Key_End);
    QCOMPARE(list->currentIndex().row(), main->ListRows()->rowCount() - 1);
    QTest::keyClick(list, Qt::Key_Tab);
    QVERIFY(tree->hasFocus());
    QTest::keyClick(tree, Qt::Key_Backtab);
    QVERIFY(list->hasFocus());
    QTest::keyClick(list, Qt::Key_Backtab);
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
    auto main = fx_->OpenMain();
    auto accepts = [&](const QMimeData* data, const char* key) {
        return Fx::DragOnto(*main, data, QLatin1String(key));
    };
    auto dragged = [&](const char* node) {
        Fx::Click(*main, QLatin1String(node));
        return std::unique_ptr<QMimeData>(
            main->ListRows()->mimeData({main->ListRows()->index(0, 0)}));
    };

    const struct {
        const char* from;
        const char* onto;
        bool accepted;
    } drags[] = {
        {"fxmasterUsers", "fxsalesUsers", true},
        {"fxmasterUsers", "fxsalesPrinters", false},
        {"fxprint01Printers", "fxmasterPrinters", true},
        {"fxprint01Printers", "fxmasterDevices", false},
        {"fxline01Devices", "fxbackupDevices", true},
        {"fxline01Devices", "fxbackupUsers", false},
        {"smtp.example.com", "x400.example.net", true},
        {"smtp.example.com", "Gateways", false},
    };
    for (const auto& [from, onto, accepted] : drags)
        QVERIFY2(accepts(dragged(from).get(), onto) == accepted, onto);

    // Groups are not moved by dragging, and text from elsewhere is no object.
    Fx::Click(*main, QStringLiteral("Groups"));
    QVERIFY(
        !std::unique_ptr<QMimeData>(main->ListRows()->mimeData({main->ListRows()->index(0, 0)})));
    QMimeData text;
    text.setText(QStringLiteral("User\tfxmaster\tjmueller"));
    QVERIFY(!accepts(&text, "fxsalesUsers"));
    // What a drop does is the clipboard suite's.
}

void TestExplorerInput::RoutingPopupReloadsTheTables() {
    fx_->StartDemo(true);  // over TCP, so that the server can be stopped
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

    fx_->server->Shutdown();
    fx_->prompter.Answer(Answer::Cancel);
    reload->trigger();
    QCOMPARE(fx_->prompter.Prompts().size(), 1);
    QCOMPARE(fx_->prompter.LastPrompt().icon, PromptIcon::Critical);
}

QTEST_MAIN(TestExplorerInput)
#include "tst_explorerinput.moc"
