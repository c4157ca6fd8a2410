// The main explorer window against the reference server: its persisted view,
// the divider drag, the list modes, menus and toolbar, and how it closes.

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QScreen>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>
#include <QToolBar>
#include <QTreeView>
#include <QTreeWidget>
#include <memory>

#include "common/AppContext.h"
#include "common/Labels.h"
#include "common/Settings.h"
#include "common/Twips.h"
#include "lists/ExplorerListView.h"
#include "lists/ViewSettings.h"
#include "session/ServerSession.h"
#include "shell/HelpViewer.h"
#include "shell/frmAbout.h"
#include "shell/frmFind.h"
#include "shell/frmMain.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

QRect Available() {
    return QGuiApplication::primaryScreen()->availableGeometry();
}

constexpr auto OpenMain = &ExplorerFixture::OpenMain;

}  // namespace

class TestMainWindow : public ConsoleSuite {
    Q_OBJECT

private slots:
    void initTestCase();
    void FreshProfileOpensWithDefaults();
    void ViewRoundTripRestoresEverything();
    void ClosedMaximisedOrMinimisedKeepsEarlierBounds_data();
    void ClosedMaximisedOrMinimisedKeepsEarlierBounds();
    void BadSettingsStillOpenVisibleOnScreen_data();
    void BadSettingsStillOpenVisibleOnScreen();
    void SplitterDragStopsAtLimits_data();
    void SplitterDragStopsAtLimits();
    void ResizeKeepsDividerInside();
    void ListModeAppliedOnFirstActivationOnly();
    void ViewModesShareTheSelection();
    void BrandChoosesProductKey();
    void ServerTimeoutHandedToSession_data();
    void ServerTimeoutHandedToSession();
    void MenuEntriesAndShortcuts();
    void LabelsFollowServerLanguage();
    void HelpEntriesOpenTheirWindows();
    void ClosingEndsEveryWindowEvenIfSaveFails();
};

void TestMainWindow::initTestCase() {
    // The placement cases want the default window to fit the 800 x 600
    // offscreen screen, as it fits any desktop's; the classic dialog font's
    // size gives the classic scale (how a larger font grows the window is
    // the first-run suite's concern).
    QFont font = QApplication::font();
    for (int pixels = font.pixelSize() > 0 ? font.pixelSize() : 16;
         pixels > 6 && AverageCharWidth() > kClassicAverageCharWidth; --pixels) {
        font.setPixelSize(pixels);
        QApplication::setFont(font);
    }
    QVERIFY(TwipsToPixels(11000) < Available().width());
}

void TestMainWindow::FreshProfileOpensWithDefaults() {
    auto main = OpenMain();
    QCOMPARE(main->pos(), QPoint(TwipsToPixels(1000), TwipsToPixels(1000)));
    QCOMPARE(main->size(), QSize(TwipsToPixels(10000), TwipsToPixels(5000)));
    QCOMPARE(main->SplitterPosition(), 2500);
    QCOMPARE(main->Tree()->width(), TwipsToPixels(2500));
    QCOMPARE(main->ListViewMode(), int(ExplorerListView::Details));
    QCOMPARE(main->List()->currentWidget(), main->List()->DetailsView());
    QVERIFY(Child<QAction>(*main, "mnuViewDetails")->isChecked());
    QVERIFY(!Child<QWidget>(*main, "picSplitter")->isVisible());
    QCOMPARE(main->StatusPanel(2)->text(), TheSession()->GetHostName());
    // The tree holds its root until the installation's branches are added.
    QCOMPARE(main->Tree()->topLevelItemCount(), 1);
    QCOMPARE(main->FindNode(QStringLiteral("Administrator")), main->Tree()->topLevelItem(0));

    // Nothing is written while the window is open; closing writes the view
    // and the width table under the names existing stores hold.
    QCOMPARE(StoredSetting(QStringLiteral("Splitter")), kUnset);
    QVERIFY(main->close());
    QCOMPARE(StoredSetting(QStringLiteral("Splitter")), QStringLiteral("2500"));
    QCOMPARE(StoredSetting(QStringLiteral("ListView Mode")), QStringLiteral("3"));
    QCOMPARE(StoredSetting(QStringLiteral("Destext"), QStringLiteral("DestView")),
             QStringLiteral("1200"));
}

void TestMainWindow::ViewRoundTripRestoresEverything() {
    const QString users = QStringLiteral("UserView");
    const QString userName = QStringLiteral("UserName");
    const QPoint pos(TwipsToPixels(1500), TwipsToPixels(900));
    const QSize size(TwipsToPixels(9000), TwipsToPixels(6000));
    // Stored widths that are not plain numbers are read as far as they go or
    // give the column's default.
    StoreSetting("GroupName", "2222px", "GroupView");
    StoreSetting("EventTime", "-5", "EventView");
    StoreSetting("RateDays", "40000", "RateView");
    {
        auto main = OpenMain();
        ColumnWidths& widths = main->Widths();
        QCOMPARE(widths.Width(QStringLiteral("GroupView"), QStringLiteral("GroupName")), 2222);
        QCOMPARE(widths.Width(QStringLiteral("EventView"), QStringLiteral("EventTime")), 2200);
        QCOMPARE(widths.Width(QStringLiteral("RateView"), QStringLiteral("RateDays")), 3000);
        // Beyond what the 16-bit table holds, and names it does not persist.
        QVERIFY(widths.SetWidth(users, userName, 32767));
        QVERIFY(!widths.SetWidth(users, userName, 32768));
        QVERIFY(!widths.SetWidth(users, userName, -1));
        QVERIFY(!widths.SetWidth(users, QStringLiteral("Username"), 100));
        QVERIFY(!widths.SetWidth(QStringLiteral("Userview"), userName, 100));
        QCOMPARE(widths.Width(users, QStringLiteral("Username")), ColumnWidths::UnknownColumnWidth);
        QVERIFY(widths.SetWidth(QStringLiteral("DestView"), QStringLiteral("Destext"), 0));

        main->move(pos);
        main->resize(size);
        main->SizeControls(4000);
        Child<QAction>(*main, "mnuViewSmallIcons")->trigger();
        QVERIFY(main->close());
    }
    QCOMPARE(StoredSetting("EventTime", "EventView"), QStringLiteral("2200"));
    auto main = OpenMain();
    QCOMPARE(main->pos(), pos);
    QCOMPARE(main->size(), size);
    QCOMPARE(main->SplitterPosition(), 4000);
    QCOMPARE(main->Tree()->width(), TwipsToPixels(4000));
    QCOMPARE(main->ListViewMode(), int(ExplorerListView::SmallIcons));
    QVERIFY(Child<QAction>(*main, "mnuViewSmallIcons")->isChecked());
    QCOMPARE(main->Widths().Width(users, userName), 32767);
    QCOMPARE(main->Widths().Width(QStringLiteral("DestView"), QStringLiteral("Destext")), 0);
    QCOMPARE(main->Widths().Width(QStringLiteral("GroupView"), QStringLiteral("GroupName")), 2222);
}

void TestMainWindow::ClosedMaximisedOrMinimisedKeepsEarlierBounds_data() {
    QTest::addColumn<Qt::WindowState>("state");
    QTest::newRow("maximised") << Qt::WindowMaximized;
    QTest::newRow("minimised") << Qt::WindowMinimized;
}

void TestMainWindow::ClosedMaximisedOrMinimisedKeepsEarlierBounds() {
    QFETCH(Qt::WindowState, state);
    const QStringList names = {"Left", "Top", "Width", "Height"};
    const QStringList bounds = {"2010", "1515", "9000", "4500"};
    for (int i = 0; i < names.size(); ++i) StoreSetting(names[i], bounds[i]);

    auto main = OpenMain();
    // Where the window was last put before its state changed; the bounds
    // saved before it opened must win over these.
    main->move(TwipsToPixels(3000), TwipsToPixels(2400));
    main->resize(TwipsToPixels(7500), TwipsToPixels(4200));
    main->setWindowState(state);
    QTRY_VERIFY(main->windowState() & state);
    main->SizeControls(3000);
    main->SetListViewMode(ExplorerListView::List);
    QVERIFY(main->close());

    for (int i = 0; i < names.size(); ++i) QCOMPARE(StoredSetting(names[i]), bounds[i]);
    // The rest of the view is saved whatever the window's state.
    QCOMPARE(StoredSetting(QStringLiteral("ListView Mode")), QStringLiteral("2"));
    QCOMPARE(StoredSetting(QStringLiteral("Splitter")), QString::number(main->SplitterPosition()));
}

void TestMainWindow::BadSettingsStillOpenVisibleOnScreen_data() {
    QTest::addColumn<QStringList>("stored");  // Left, Top, Width, Height, Splitter, Mode
    QTest::addColumn<QPoint>("pos");
    QTest::addColumn<QSize>("size");    // invalid: the window fills the screen
    QTest::addColumn<int>("splitter");  // -1: the right-hand limit
    QTest::addColumn<int>("mode");

    const QRect screen = Available();
    const QPoint defaultPos(TwipsToPixels(1000), TwipsToPixels(1000));
    const QSize defaultSize(TwipsToPixels(10000), TwipsToPixels(5000));
    const int details = ExplorerListView::Details;
    QTest::newRow("letters") << QStringList{"left", "top", "wide", "tall", "half", "details"}
                             << defaultPos << defaultSize << 2500 << details;
    QTest::newRow("negatives") << QStringList{"-5000", "-3000", "-10000", "-1", "-200", "-1"}
                               << screen.topLeft() << defaultSize << 1500 << details;
    QTest::newRow("huge") << QStringList{"99999999", "99999999", "99999999",
                                         "99999999", "99999999", "9"}
                          << screen.topLeft() << QSize() << -1 << details;
    QTest::newRow("beyond any int")
        << QStringList{"1e300", "-1e300", "1e300", "1e300", "1e300", "1e300"} << defaultPos
        << defaultSize << 2500 << details;
    // Mode 0 is a mode of its own.
    QTest::newRow("tiny") << QStringList{"0", "0", "1", "1", "0", "0"} << screen.topLeft()
                          << QSize(TwipsToPixels(frmMain::MinimumWidthTwips),
                                   TwipsToPixels(frmMain::MinimumHeightTwips))
                          << 1500 << int(ExplorerListView::LargeIcons);
    QTest::newRow("trailing letters")
        << QStringList{"1000x", "1000 twips", "9000.9 wide", "5000h", "3000twips", "1st"}
        << defaultPos << QSize(TwipsToPixels(9000), TwipsToPixels(5000)) << 3000
        << int(ExplorerListView::SmallIcons);
}

void TestMainWindow::BadSettingsStillOpenVisibleOnScreen() {
    QFETCH(QStringList, stored);
    QFETCH(QPoint, pos);
    QFETCH(QSize, size);
    QFETCH(int, splitter);
    const QStringList names = {"Left", "Top", "Width", "Height", "Splitter", "ListView Mode"};
    for (int i = 0; i < names.size(); ++i) StoreSetting(names.at(i), stored.at(i));

    auto main = OpenMain();
    QVERIFY(main->isVisible());
    QVERIFY(Available().contains(main->frameGeometry()));
    QCOMPARE(main->pos(), pos);
    if (size.isValid())
        QCOMPARE(main->size(), size);
    else
        QCOMPARE(main->frameGeometry(), Available());
    if (splitter < 0) splitter = PixelsToTwips(main->width()) - frmMain::SplitLimit;
    QCOMPARE(main->SplitterPosition(), splitter);
    QTEST(main->ListViewMode(), "mode");
    QCOMPARE(main->List()->geometry().right(), main->centralWidget()->width() - 1);
}

void TestMainWindow::SplitterDragStopsAtLimits_data() {
    QTest::addColumn<int>("pointerX");  // pixels from the divider's left edge
    QTest::addColumn<int>("expected");  // twips; -1: the right-hand limit
    QTest::newRow("far left") << -1000 << 1500;
    QTest::newRow("just inside the left limit")
        << -TwipsToPixels(1000) + 2 << 2500 + PixelsToTwips(-TwipsToPixels(1000) + 2);
    QTest::newRow("far right") << 2000 << -1;
    QTest::newRow("follows the pointer") << 60 << 2500 + PixelsToTwips(60);
}

void TestMainWindow::SplitterDragStopsAtLimits() {
    QFETCH(int, pointerX);
    QFETCH(int, expected);
    auto main = OpenMain();
    if (expected < 0) expected = PixelsToTwips(main->width()) - frmMain::SplitLimit;
    auto* divider = Child<QWidget>(*main, "imgSplitter");
    auto* bar = Child<QWidget>(*main, "picSplitter");
    const QRect treeBefore = main->Tree()->geometry();
    const QRect listBefore = main->List()->geometry();

    QTest::mousePress(divider, Qt::LeftButton, {}, QPoint(0, 10));
    QVERIFY(bar->isVisible());
    QVERIFY(main->IsDraggingSplitter());
    QCOMPARE(bar->x(), TwipsToPixels(2500 - frmMain::DragBarOffset));

    QTest::mouseMove(divider, QPoint(pointerX, 10));
    QCOMPARE(bar->x(), TwipsToPixels(expected));
    // Only the bar moves while the button is down.
    QCOMPARE(main->Tree()->geometry(), treeBefore);
    QCOMPARE(main->List()->geometry(), listBefore);
    QCOMPARE(main->SplitterPosition(), 2500);

    QTest::mouseRelease(divider, Qt::LeftButton, {}, QPoint(pointerX, 10));
    QVERIFY(!bar->isVisible());
    QVERIFY(!main->IsDraggingSplitter());
    QCOMPARE(main->SplitterPosition(), expected);
    QCOMPARE(main->Tree()->width(), TwipsToPixels(expected));
    QCOMPARE(divider->x(), main->Tree()->width());
    QCOMPARE(main->List()->geometry().right(), main->centralWidget()->width() - 1);

    QVERIFY(main->close());
    QCOMPARE(StoredSetting(QStringLiteral("Splitter")), QString::number(expected));
}

void TestMainWindow::ResizeKeepsDividerInside() {
    StoreSetting(QStringLiteral("Splitter"), QStringLiteral("8000"));
    auto main = OpenMain();
    QCOMPARE(main->SplitterPosition(), 8000);

    main->resize(TwipsToPixels(6000), main->height());
    // The form's width in twips is measured from its pixels.
    const int limit = PixelsToTwips(TwipsToPixels(6000)) - frmMain::SplitLimit;
    QTRY_COMPARE(main->SplitterPosition(), limit);
    QCOMPARE(main->Tree()->width(), TwipsToPixels(limit));
    QCOMPARE(main->List()->geometry().right(), main->centralWidget()->width() - 1);
}

void TestMainWindow::ListModeAppliedOnFirstActivationOnly() {
    StoreSetting(QStringLiteral("ListView Mode"), QStringLiteral("1"));
    {
        // Never activated: it never showed the stored mode, so it keeps it.
        frmMain unseen;
        QCOMPARE(unseen.ListViewMode(), int(ExplorerListView::Details));
        QVERIFY(unseen.close());
        QCOMPARE(StoredSetting(QStringLiteral("ListView Mode")), QStringLiteral("1"));
    }
    auto main = std::make_unique<frmMain>();
    QCOMPARE(main->ListViewMode(), int(ExplorerListView::Details));

    QVERIFY(ShowActive(*main));
    QCOMPARE(main->ListViewMode(), int(ExplorerListView::SmallIcons));
    QVERIFY(Child<QAction>(*main, "mnuViewSmallIcons")->isChecked());

    Child<QAction>(*main, "mnuViewList")->trigger();
    QWidget other;
    QVERIFY(ShowActive(other));
    main->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(main.get()));
    QCOMPARE(main->ListViewMode(), int(ExplorerListView::List));
    QVERIFY(main->close());
    QCOMPARE(StoredSetting(QStringLiteral("ListView Mode")), QStringLiteral("2"));
}

void TestMainWindow::ViewModesShareTheSelection() {
    auto main = OpenMain();
    ExplorerListView* list = main->List();
    QStandardItemModel model(5, 2);
    list->SetModel(&model);
    list->DetailsView()->setCurrentIndex(model.index(3, 0));
    for (const char* mode : {"mnuViewLargeIcons", "mnuViewSmallIcons", "mnuViewList"}) {
        Child<QAction>(*main, mode)->trigger();
        QCOMPARE(list->currentWidget(), list->IconView());
        QCOMPARE(list->IconView()->currentIndex().row(), 3);
        // Objects can be dragged onto the tree from every mode.
        QVERIFY(list->IconView()->dragEnabled());
    }
    // A row picked in an icon mode is the row the report view shows selected.
    list->IconView()->setCurrentIndex(model.index(1, 0));
    Child<QAction>(*main, "mnuViewDetails")->trigger();
    QVERIFY(list->DetailsView()->selectionModel()->isRowSelected(1, {}));
    // A new model (the next node's rows) is shared the same way.
    QStandardItemModel next(2, 1);
    list->SetModel(&next);
    QCOMPARE(list->IconView()->selectionModel(), list->DetailsView()->selectionModel());
    QCOMPARE(list->SelectionModel()->model(), &next);
}

void TestMainWindow::BrandChoosesProductKey() {
    // The brand as the server spells it chooses the key (the table is
    // tst_appcontext's); the view is saved under it and nowhere else.
    fx_->LogIn(ServerOptions("QUOREL"));
    QCOMPARE(GetProductKeyName(), QStringLiteral("Quorel Administrator"));
    OpenMain()->close();
    QCOMPARE(StoredSetting(QStringLiteral("Splitter")), QStringLiteral("2500"));
    QCOMPARE(GetSectionSetting(kVendor, QStringLiteral("VELDRANO Administrator"), kMainFormSection,
                               QStringLiteral("Splitter"), kUnset),
             kUnset);
}

void TestMainWindow::ServerTimeoutHandedToSession_data() {
    QTest::addColumn<QString>("stored");
    QTest::addColumn<int>("expected");  // -1: the session's own default stays
    QTest::newRow("largest") << "32767" << 32767;
    QTest::newRow("nothing stored") << "" << -1;
    QTest::newRow("zero means no deadline") << "0" << -1;
    QTest::newRow("beyond 16 bits") << "70000" << -1;
    QTest::newRow("trailing letters") << "12abc" << 12;
}

void TestMainWindow::ServerTimeoutHandedToSession() {
    QFETCH(QString, stored);
    QFETCH(int, expected);
    const int sessionDefault = TheSession()->GetTimeout();
    QVERIFY(sessionDefault != 32767);
    if (!stored.isEmpty()) StoreSetting(QStringLiteral("Server Timeout"), stored);

    auto main = std::make_unique<frmMain>();
    QCOMPARE(TheSession()->GetTimeout(), expected < 0 ? sessionDefault : expected);
    // Closing does not write it: only the options dialog chooses a time-out.
    QVERIFY(main->close());
    QCOMPARE(StoredSetting(QStringLiteral("Server Timeout")), stored.isEmpty() ? kUnset : stored);
}

void TestMainWindow::MenuEntriesAndShortcuts() {
    auto main = OpenMain();
    // Their commands come with the explorer's selection handling (the root's
    // properties are the administrator settings, tst_objectcommands).
    for (const char* name :
         {"mnuFileNew", "mnuFileDelete", "mnuEditCut", "mnuEditCopy", "mnuEditPaste"})
        QVERIFY2(!Child<QAction>(*main, name)->isEnabled(), name);
    // The keys no one would guess; the others are pressed where they are used.
    QCOMPARE(Child<QAction>(*main, "mnuFileProperties")->shortcut(),
             QKeySequence(Qt::ALT | Qt::Key_Return));
    QCOMPARE(Child<QAction>(*main, "mnuFileDelete")->shortcut(), QKeySequence(Qt::Key_Delete));

    // Nothing selected: of the pop-up entries only help, the routing reload
    // and, as the main menu's, properties act (start, stop and terminate are
    // set as their menu opens).
    const bool properties = Child<QAction>(*main, "mnuFileProperties")->isEnabled();
    for (const char* menu :
         {"mnuPopup1", "mnuPopup2", "mnuPopup3", "mnuPopupServer", "mnuPopupDevice",
          "mnuPopupProcess", "mnuRatePopup", "mnuDestsPopup", "mnuZonePopup", "mnuPopupLCR"}) {
        QVERIFY2(main->PopupMenu(QLatin1String(menu)), menu);
        for (QAction* action : main->PopupMenu(QLatin1String(menu))->actions()) {
            const QString name = action->objectName();
            QCOMPARE(main->MenuEntry(name), action);
            if (name.endsWith("Start") || name.endsWith("Stop") || name.endsWith("Terminate"))
                continue;
            QVERIFY2(action->isEnabled() ==
                         (name.endsWith(QLatin1String("Help")) || name == "mnuPopupLCRReload" ||
                          (name.endsWith("Properties") && properties)),
                     qPrintable(name));
        }
    }
    // The others forward to the main menu's commands (the rates' "Del" and
    // the lists' Paste are used so in tst_objectcommands and tst_clipboard).
    const std::pair<const char*, const char*> forwards[] = {
        {"mnuPopupServerNew", "mnuFileNew"}, {"mnuZoneProperties", "mnuFileProperties"}};
    for (const auto& [entry, command] : forwards) {
        QSignalSpy triggered(Child<QAction>(*main, command), &QAction::triggered);
        Child<QAction>(*main, command)->setEnabled(true);
        main->MenuEntry(QLatin1String(entry))->setEnabled(true);
        // The root's properties are the administrator settings' window.
        if (command == std::string_view("mnuFileProperties"))
            WhenShown<QDialog>([](QDialog& dialog) { dialog.reject(); });
        main->MenuEntry(QLatin1String(entry))->trigger();
        QVERIFY2(triggered.count() == 1, entry);
    }
}

void TestMainWindow::LabelsFollowServerLanguage() {
    fx_->LogIn(ServerOptions("", "de"));
    auto main = OpenMain();
    QCOMPARE(Child<QMenu>(*main, "mnuFile")->title(), QStringLiteral("&Datei"));
    QCOMPARE(main->MenuEntry(QStringLiteral("mnuPopupLCRReload"))->text(),
             QStringLiteral("&Neu laden"));
    QAction* find = Child<QAction>(*main, "mnuEditFind");
    QCOMPARE(find->text(), QStringLiteral("&Suchen..."));
    QCOMPARE(Child<QToolBar>(*main, "tbToolBar")->widgetForAction(find)->accessibleName(),
             QStringLiteral("Suchen"));
}

void TestMainWindow::HelpEntriesOpenTheirWindows() {
    auto main = OpenMain();
    Child<QAction>(*main, "mnuHelpSearch")->trigger();
    HelpViewer* help = HelpViewer::Current();
    QVERIFY(help && help->isVisible());
    QCOMPARE(help->CurrentPage(), HelpViewer::IndexPage);
    // The pop-up menus' help entries lead to the contents.
    main->MenuEntry(QStringLiteral("mnuRateHelp"))->trigger();
    QCOMPARE(HelpViewer::Current(), help);
    QCOMPARE(help->CurrentPage(), HelpViewer::ContentsPage);

    // What About shows is tst_startup's.
    bool aboutShown = false;
    WhenShown<frmAbout>([&](frmAbout& about) {
        aboutShown = true;
        about.reject();
    });
    Child<QAction>(*main, "mnuHelpAbout")->trigger();
    QVERIFY(aboutShown);

    // Closing the console takes the help window with it.
    QVERIFY(main->close());
    QVERIFY(!HelpViewer::Current() || !HelpViewer::Current()->isVisible());
}

void TestMainWindow::ClosingEndsEveryWindowEvenIfSaveFails() {
    auto main = OpenMain();
    auto* find = new frmFind(main.get());
    find->show();
    QDialog other;
    other.show();
    QVERIFY(QTest::qWaitForWindowExposed(&other));

    // A path below a plain file cannot be created: every save throws.
    const QDir dir = QFileInfo(fx_->SettingsFile()).dir();
    QFile blocker(dir.filePath(QStringLiteral("blocker")));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    UseSettingsFile(dir.filePath(QStringLiteral("blocker/settings.ini")));
    QVERIFY_THROWS_EXCEPTION(SettingsError, StoreSetting(QStringLiteral("Splitter"), "1"));

    Child<QAction>(*main, "mnuFileExit")->trigger();
    QVERIFY(!main->isVisible());
    QVERIFY(!find->isVisible());
    QVERIFY(!other.isVisible());
}

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
