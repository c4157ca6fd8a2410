// The main explorer window against the reference server: its persisted view,
// the divider drag, the list modes, menus and toolbar, and how it closes.

#include <QAction>
#include <QCheckBox>
#include <QDialog>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <QTreeView>
#include <QTreeWidget>
#include <memory>

#include "common/AppContext.h"
#include "common/Labels.h"
#include "common/Settings.h"
#include "common/Twips.h"
#include "shell/ExplorerListView.h"
#include "shell/HelpViewer.h"
#include "shell/ViewSettings.h"
#include "shell/frmAbout.h"
#include "shell/frmFind.h"
#include "shell/frmMain.h"
#include "support/ScriptedPrompter.h"
#include "support/TestServer.h"

using namespace winadmin;

namespace {

const QString kUnset = QStringLiteral("<unset>");

QString Stored(const QString& section, const QString& name) {
    return GetSectionSetting(kVendor, GetProductKeyName(), section, name, kUnset);
}

QString StoredMain(const QString& name) {
    return Stored(kMainFormSection, name);
}

void StoreMain(const QString& name, const QString& value) {
    SaveSectionSetting(kVendor, GetProductKeyName(), kMainFormSection, name, value);
}

QRect Available() {
    return QGuiApplication::primaryScreen()->availableGeometry();
}

template <class T>
T* Child(QObject* parent, const char* name) {
    return parent->findChild<T*>(QLatin1String(name));
}

}  // namespace

class TestMainWindow : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void FreshProfileOpensWithDefaults();
    void ViewRoundTripRestoresEverything();
    void ClosedMaximisedOrMinimisedKeepsEarlierBounds_data();
    void ClosedMaximisedOrMinimisedKeepsEarlierBounds();
    void BadSettingsStillOpenVisibleOnScreen_data();
    void BadSettingsStillOpenVisibleOnScreen();
    void TrailingLettersReadAsLeadingNumber();
    void SplitterDragStopsAtLimits_data();
    void SplitterDragStopsAtLimits();
    void ResizeKeepsDividerInside();
    void ListModeAppliedOnFirstActivationOnly();
    void ViewModesShareModelAndSelection();
    void BrandChoosesProductKey_data();
    void BrandChoosesProductKey();
    void ServerTimeoutHandedToSession_data();
    void ServerTimeoutHandedToSession();
    void ColumnWidthsSavedAndReloaded();
    void MenuEntriesAndShortcuts();
    void PopupMenusNameTheirEntries();
    void LabelsFollowServerLanguage();
    void HelpEntriesOpenTheirWindows();
    void ClosingEndsEveryWindowEvenIfSaveFails();
    void FindDialogShell();

private:
    void StartServer(const std::string& brand = {}, const std::string& language = {});
    // Shown and activated, as the start-up routine leaves it.
    std::unique_ptr<frmMain> OpenMain();

    std::unique_ptr<QTemporaryDir> dir_;
    std::unique_ptr<TestServer> server_;
    std::unique_ptr<ScriptedPrompter> prompter_;
};

void TestMainWindow::init() {
    dir_ = std::make_unique<QTemporaryDir>();
    QVERIFY(dir_->isValid());
    UseSettingsFile(dir_->filePath(QStringLiteral("settings.ini")));
    prompter_ = std::make_unique<ScriptedPrompter>();
    StartServer();
}

void TestMainWindow::cleanup() {
    if (prompter_) QCOMPARE(prompter_->UnusedAnswers(), 0);
    SetTheSession(nullptr);
    server_.reset();
    prompter_.reset();
    UseNativeSettings();
    dir_.reset();
}

void TestMainWindow::StartServer(const std::string& brand, const std::string& language) {
    SetTheSession(nullptr);
    TestServer::Options options;
    options.brand = brand;
    options.language = language;
    server_ = std::make_unique<TestServer>(options);
    SetTheSession(server_->Login());
}

std::unique_ptr<frmMain> TestMainWindow::OpenMain() {
    auto main = std::make_unique<frmMain>();
    main->show();
    main->activateWindow();
    if (!QTest::qWaitForWindowActive(main.get())) qWarning("main window not activated");
    return main;
}

void TestMainWindow::FreshProfileOpensWithDefaults() {
    auto main = OpenMain();
    QVERIFY(main->isActiveWindow());

    QCOMPARE(main->pos(), QPoint(TwipsToPixels(1000), TwipsToPixels(1000)));
    QCOMPARE(main->size(), QSize(TwipsToPixels(10000), TwipsToPixels(5000)));
    QCOMPARE(main->SplitterPosition(), 2500);
    QCOMPARE(main->Tree()->width(), TwipsToPixels(2500));
    QCOMPARE(main->ListViewMode(), int(ExplorerListView::Details));
    QCOMPARE(main->List()->currentWidget(), main->List()->DetailsView());
    QVERIFY(Child<QAction>(main.get(), "mnuViewDetails")->isChecked());
    QVERIFY(!Child<QWidget>(main.get(), "picSplitter")->isVisible());
    QCOMPARE(main->windowTitle(), ApplicationTitle());
    QCOMPARE(main->StatusPanel(2)->text(), TheSession()->GetHostName());

    // The tree holds its root until the installation's branches are added.
    QCOMPARE(main->Tree()->topLevelItemCount(), 1);
    QTreeWidgetItem* root = main->Tree()->topLevelItem(0);
    QCOMPARE(root->text(0), GetLabel(QStringLiteral("Administrator")));
    QCOMPARE(root->data(0, frmMain::NodeKindRole).toString(), QStringLiteral("Administrator"));
    QCOMPARE(main->FindNode(QStringLiteral("Administrator")), root);
    QVERIFY(!root->icon(0).isNull());

    // Nothing is written while the window is open.
    QCOMPARE(StoredMain(QStringLiteral("Splitter")), kUnset);
    QVERIFY(main->close());
    QCOMPARE(StoredMain(QStringLiteral("Splitter")), QStringLiteral("2500"));
    QCOMPARE(StoredMain(QStringLiteral("ListView Mode")), QStringLiteral("3"));
    QCOMPARE(LeadingNumber(StoredMain(QStringLiteral("Width")), 0),
             double(PixelsToTwips(TwipsToPixels(10000))));
    // Spot checks of the width table's names as existing stores hold them.
    QCOMPARE(Stored(QStringLiteral("DestView"), QStringLiteral("Destext")), QStringLiteral("1000"));
    QCOMPARE(Stored(QStringLiteral("UserView"), QStringLiteral("MemberName")),
             QStringLiteral("1850"));
    QCOMPARE(Stored(QStringLiteral("ProcessView"), QStringLiteral("ProcessID")),
             QStringLiteral("500"));
    QCOMPARE(Stored(QStringLiteral("ZoneView"), QStringLiteral("Secondary")),
             QStringLiteral("1500"));
    QCOMPARE(Stored(QStringLiteral("NumberMappingsView"), QStringLiteral("NumberMappingsReplace")),
             QStringLiteral("2000"));
}

void TestMainWindow::ViewRoundTripRestoresEverything() {
    const QPoint pos(TwipsToPixels(1500), TwipsToPixels(900));
    const QSize size(TwipsToPixels(9000), TwipsToPixels(6000));
    {
        auto main = OpenMain();
        main->move(pos);
        main->resize(size);
        main->SizeControls(4000);
        Child<QAction>(main.get(), "mnuViewSmallIcons")->trigger();
        QVERIFY(
            main->Widths().SetWidth(QStringLiteral("UserView"), QStringLiteral("UserName"), 1234));
        QVERIFY(main->close());
    }
    auto main = OpenMain();
    QCOMPARE(main->pos(), pos);
    QCOMPARE(main->size(), size);
    QCOMPARE(main->SplitterPosition(), 4000);
    QCOMPARE(main->Tree()->width(), TwipsToPixels(4000));
    QCOMPARE(main->ListViewMode(), int(ExplorerListView::SmallIcons));
    QVERIFY(Child<QAction>(main.get(), "mnuViewSmallIcons")->isChecked());
    QCOMPARE(main->Widths().Width(QStringLiteral("UserView"), QStringLiteral("UserName")), 1234);
}

void TestMainWindow::ClosedMaximisedOrMinimisedKeepsEarlierBounds_data() {
    QTest::addColumn<Qt::WindowState>("state");
    QTest::newRow("maximised") << Qt::WindowMaximized;
    QTest::newRow("minimised") << Qt::WindowMinimized;
}

void TestMainWindow::ClosedMaximisedOrMinimisedKeepsEarlierBounds() {
    QFETCH(Qt::WindowState, state);
    StoreMain(QStringLiteral("Left"), QStringLiteral("2010"));
    StoreMain(QStringLiteral("Top"), QStringLiteral("1515"));
    StoreMain(QStringLiteral("Width"), QStringLiteral("9000"));
    StoreMain(QStringLiteral("Height"), QStringLiteral("4500"));

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

    QCOMPARE(StoredMain(QStringLiteral("Left")), QStringLiteral("2010"));
    QCOMPARE(StoredMain(QStringLiteral("Top")), QStringLiteral("1515"));
    QCOMPARE(StoredMain(QStringLiteral("Width")), QStringLiteral("9000"));
    QCOMPARE(StoredMain(QStringLiteral("Height")), QStringLiteral("4500"));
    // The rest of the view is saved whatever the window's state.
    QCOMPARE(StoredMain(QStringLiteral("ListView Mode")), QStringLiteral("2"));
    QCOMPARE(StoredMain(QStringLiteral("Splitter")), QString::number(main->SplitterPosition()));
}

void TestMainWindow::BadSettingsStillOpenVisibleOnScreen_data() {
    QTest::addColumn<QStringList>("stored");  // Left, Top, Width, Height, Splitter, Mode
    QTest::addColumn<QPoint>("pos");
    QTest::addColumn<QSize>("size");    // invalid: the window fills the screen
    QTest::addColumn<int>("splitter");  // -1: the right-hand limit

    const QRect screen = Available();
    const QPoint defaultPos(TwipsToPixels(1000), TwipsToPixels(1000));
    const QSize defaultSize(TwipsToPixels(10000), TwipsToPixels(5000));
    QTest::newRow("letters") << QStringList{"left", "top", "wide", "tall", "half", "details"}
                             << defaultPos << defaultSize << 2500;
    QTest::newRow("negatives") << QStringList{"-5000", "-3000", "-10000", "-1", "-200", "-1"}
                               << screen.topLeft() << defaultSize << 1500;
    QTest::newRow("huge") << QStringList{"99999999", "99999999", "99999999",
                                         "99999999", "99999999", "9"}
                          << screen.topLeft() << QSize() << -1;
    QTest::newRow("beyond any int")
        << QStringList{"1e300", "-1e300", "1e300", "1e300", "1e300", "1e300"} << defaultPos
        << defaultSize << 2500;
    QTest::newRow("tiny") << QStringList{"0", "0", "1", "1", "0", "0"} << screen.topLeft()
                          << QSize(TwipsToPixels(frmMain::MinimumWidthTwips),
                                   TwipsToPixels(frmMain::MinimumHeightTwips))
                          << 1500;
}

void TestMainWindow::BadSettingsStillOpenVisibleOnScreen() {
    QFETCH(QStringList, stored);
    QFETCH(QPoint, pos);
    QFETCH(QSize, size);
    QFETCH(int, splitter);
    const QStringList names = {"Left", "Top", "Width", "Height", "Splitter", "ListView Mode"};
    for (int i = 0; i < names.size(); ++i) StoreMain(names.at(i), stored.at(i));

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
    // Mode 0 is a mode of its own; anything else unusable gives details.
    QCOMPARE(main->ListViewMode(), stored.last() == QLatin1String("0")
                                       ? int(ExplorerListView::LargeIcons)
                                       : int(ExplorerListView::Details));
    QVERIFY(main->Tree()->width() > 0);
    QVERIFY(main->List()->width() > 0);
    QCOMPARE(main->List()->geometry().right(), main->centralWidget()->width() - 1);
}

void TestMainWindow::TrailingLettersReadAsLeadingNumber() {
    StoreMain(QStringLiteral("Server Timeout"), QStringLiteral("12abc"));
    StoreMain(QStringLiteral("Splitter"), QStringLiteral("3000twips"));
    StoreMain(QStringLiteral("Width"), QStringLiteral("9000.9 wide"));
    StoreMain(QStringLiteral("ListView Mode"), QStringLiteral("1st"));

    auto main = OpenMain();
    QCOMPARE(TheSession()->GetTimeout(), 12);
    QCOMPARE(main->SplitterPosition(), 3000);
    QCOMPARE(main->width(), TwipsToPixels(9000));
    QCOMPARE(main->ListViewMode(), int(ExplorerListView::SmallIcons));
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
    auto* divider = Child<QWidget>(main.get(), "imgSplitter");
    auto* bar = Child<QWidget>(main.get(), "picSplitter");
    const QRect treeBefore = main->Tree()->geometry();
    const QRect listBefore = main->List()->geometry();
    QCOMPARE(divider->x(), TwipsToPixels(2500));

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
    QCOMPARE(main->List()->x(), divider->geometry().right() + 1);
    QCOMPARE(main->List()->geometry().right(), main->centralWidget()->width() - 1);

    QVERIFY(main->close());
    QCOMPARE(StoredMain(QStringLiteral("Splitter")), QString::number(expected));
}

void TestMainWindow::ResizeKeepsDividerInside() {
    StoreMain(QStringLiteral("Splitter"), QStringLiteral("8000"));
    auto main = OpenMain();
    QCOMPARE(main->SplitterPosition(), 8000);

    main->resize(TwipsToPixels(6000), main->height());
    QTRY_COMPARE(main->SplitterPosition(), 6000 - frmMain::SplitLimit);
    QCOMPARE(main->Tree()->width(), TwipsToPixels(4500));
    QCOMPARE(main->List()->geometry().right(), main->centralWidget()->width() - 1);
    QVERIFY(main->List()->width() > 0);
}

void TestMainWindow::ListModeAppliedOnFirstActivationOnly() {
    StoreMain(QStringLiteral("ListView Mode"), QStringLiteral("1"));
    {
        // Never activated: it never showed the stored mode, so it keeps it.
        frmMain unseen;
        QCOMPARE(unseen.ListViewMode(), int(ExplorerListView::Details));
        QVERIFY(unseen.close());
        QCOMPARE(StoredMain(QStringLiteral("ListView Mode")), QStringLiteral("1"));
    }
    auto main = std::make_unique<frmMain>();
    QCOMPARE(main->ListViewMode(), int(ExplorerListView::Details));

    main->show();
    main->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(main.get()));
    QCOMPARE(main->ListViewMode(), int(ExplorerListView::SmallIcons));
    QVERIFY(Child<QAction>(main.get(), "mnuViewSmallIcons")->isChecked());

    Child<QAction>(main.get(), "mnuViewList")->trigger();
    QWidget other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    main->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(main.get()));
    QCOMPARE(main->ListViewMode(), int(ExplorerListView::List));
    QVERIFY(main->close());
    QCOMPARE(StoredMain(QStringLiteral("ListView Mode")), QStringLiteral("2"));
}

void TestMainWindow::ViewModesShareModelAndSelection() {
    auto main = OpenMain();
    ExplorerListView* list = main->List();
    QStandardItemModel model(5, 2);
    for (int row = 0; row < 5; ++row)
        model.setItem(row, 0, new QStandardItem(QStringLiteral("row %1").arg(row)));
    list->SetModel(&model);
    list->DetailsView()->setCurrentIndex(model.index(3, 0));

    struct Expect {
        const char* action;
        QWidget* shown;
        QListView::ViewMode viewMode;
        QListView::Flow flow;
    };
    const Expect expectations[] = {
        {"mnuViewLargeIcons", list->IconView(), QListView::IconMode, QListView::LeftToRight},
        {"mnuViewSmallIcons", list->IconView(), QListView::ListMode, QListView::LeftToRight},
        {"mnuViewList", list->IconView(), QListView::ListMode, QListView::TopToBottom},
    };
    for (const Expect& expect : expectations) {
        Child<QAction>(main.get(), expect.action)->trigger();
        QCOMPARE(list->currentWidget(), expect.shown);
        QCOMPARE(list->IconView()->viewMode(), expect.viewMode);
        QCOMPARE(list->IconView()->flow(), expect.flow);
        QCOMPARE(list->IconView()->currentIndex().row(), 3);
    }
    QCOMPARE(list->IconView()->iconSize().width(), 16);

    // A row picked in an icon mode is the row the report view shows selected.
    list->IconView()->setCurrentIndex(model.index(1, 0));
    Child<QAction>(main.get(), "mnuViewDetails")->trigger();
    QCOMPARE(list->currentWidget(), list->DetailsView());
    QVERIFY(list->DetailsView()->selectionModel()->isRowSelected(1, {}));

    // A new model (the next node's rows) is shared the same way.
    QStandardItemModel next(2, 1);
    list->SetModel(&next);
    QCOMPARE(list->IconView()->model(), &next);
    QCOMPARE(list->IconView()->selectionModel(), list->DetailsView()->selectionModel());
    QCOMPARE(list->SelectionModel()->model(), &next);
}

void TestMainWindow::BrandChoosesProductKey_data() {
    QTest::addColumn<QString>("brand");
    QTest::addColumn<QString>("productKey");
    QTest::newRow("kelvar") << "kelvar"
                            << "VELDRANO Administrator";
    QTest::newRow("quorel in capitals") << "QUOREL"
                                        << "Quorel Administrator";
    QTest::newRow("other word keeps its case") << "NordFax"
                                               << "NordFax Administrator";
}

void TestMainWindow::BrandChoosesProductKey() {
    QFETCH(QString, brand);
    QFETCH(QString, productKey);
    StartServer(brand.toStdString());
    QCOMPARE(GetProductKeyName(), productKey);

    OpenMain()->close();
    QCOMPARE(GetSectionSetting(kVendor, productKey, kMainFormSection, QStringLiteral("Splitter"),
                               kUnset),
             QStringLiteral("2500"));
    for (const QString& other :
         {QStringLiteral("VELDRANO Administrator"), QStringLiteral("Quorel Administrator"),
          QStringLiteral("nordfax Administrator")}) {
        if (other == productKey) continue;
        QCOMPARE(
            GetSectionSetting(kVendor, other, kMainFormSection, QStringLiteral("Splitter"), kUnset),
            kUnset);
    }
}

void TestMainWindow::ServerTimeoutHandedToSession_data() {
    QTest::addColumn<QString>("stored");
    QTest::addColumn<int>("expected");  // -1: the session's own default stays
    QTest::newRow("chosen before") << "17" << 17;
    QTest::newRow("largest") << "32767" << 32767;
    QTest::newRow("nothing stored") << "" << -1;
    QTest::newRow("zero means no deadline") << "0" << -1;
    QTest::newRow("beyond 16 bits") << "70000" << -1;
    QTest::newRow("negative") << "-4" << -1;
    QTest::newRow("garbage") << "soon" << -1;
}

void TestMainWindow::ServerTimeoutHandedToSession() {
    QFETCH(QString, stored);
    QFETCH(int, expected);
    const int sessionDefault = TheSession()->GetTimeout();
    QVERIFY(sessionDefault != 17 && sessionDefault != 32767);
    if (!stored.isEmpty()) StoreMain(QStringLiteral("Server Timeout"), stored);

    auto main = std::make_unique<frmMain>();
    QCOMPARE(TheSession()->GetTimeout(), expected < 0 ? sessionDefault : expected);
    // Closing does not write it: only the options dialog chooses a time-out.
    QVERIFY(main->close());
    QCOMPARE(StoredMain(QStringLiteral("Server Timeout")), stored.isEmpty() ? kUnset : stored);
}

void TestMainWindow::ColumnWidthsSavedAndReloaded() {
    const QString users = QStringLiteral("UserView");
    const QString userName = QStringLiteral("UserName");
    SaveSectionSetting(kVendor, GetProductKeyName(), QStringLiteral("GroupView"),
                       QStringLiteral("GroupName"), QStringLiteral("2222px"));
    SaveSectionSetting(kVendor, GetProductKeyName(), QStringLiteral("EventView"),
                       QStringLiteral("EventTime"), QStringLiteral("-5"));
    SaveSectionSetting(kVendor, GetProductKeyName(), QStringLiteral("RateView"),
                       QStringLiteral("RateDays"), QStringLiteral("40000"));
    {
        auto main = OpenMain();
        ColumnWidths& widths = main->Widths();
        QCOMPARE(widths.Width(QStringLiteral("GroupView"), QStringLiteral("GroupName")), 2222);
        QCOMPARE(widths.Width(QStringLiteral("EventView"), QStringLiteral("EventTime")), 1600);
        QCOMPARE(widths.Width(QStringLiteral("RateView"), QStringLiteral("RateDays")), 3000);

        QVERIFY(widths.SetWidth(users, userName, 32767));
        // Beyond what the 16-bit table holds, and names it does not persist.
        QVERIFY(!widths.SetWidth(users, userName, 32768));
        QVERIFY(!widths.SetWidth(users, userName, -1));
        QVERIFY(!widths.SetWidth(users, QStringLiteral("Username"), 100));
        QVERIFY(!widths.SetWidth(QStringLiteral("Userview"), userName, 100));
        QCOMPARE(widths.Width(users, userName), 32767);
        QCOMPARE(widths.Width(users, QStringLiteral("Username")), ColumnWidths::UnknownColumnWidth);
        QVERIFY(widths.SetWidth(QStringLiteral("DestView"), QStringLiteral("Destext"), 0));
        QVERIFY(main->close());
    }
    QCOMPARE(Stored(users, userName), QStringLiteral("32767"));
    QCOMPARE(Stored(QStringLiteral("EventView"), QStringLiteral("EventTime")),
             QStringLiteral("1600"));
    auto main = OpenMain();
    QCOMPARE(main->Widths().Width(users, userName), 32767);
    QCOMPARE(main->Widths().Width(QStringLiteral("DestView"), QStringLiteral("Destext")), 0);
    QCOMPARE(main->Widths().Width(QStringLiteral("GroupView"), QStringLiteral("GroupName")), 2222);
}

void TestMainWindow::MenuEntriesAndShortcuts() {
    auto main = OpenMain();
    // Their commands come with the explorer's selection handling.
    for (const char* name : {"mnuFileNew", "mnuFileProperties", "mnuFileDelete", "mnuEditCut",
                             "mnuEditCopy", "mnuEditPaste"}) {
        QAction* action = Child<QAction>(main.get(), name);
        QVERIFY2(action, name);
        QVERIFY2(!action->isEnabled(), name);
    }
    for (const char* name :
         {"mnuFileExit", "mnuEditFind", "mnuEditFindNext", "mnuViewLargeIcons", "mnuViewSmallIcons",
          "mnuViewList", "mnuViewDetails", "mnuViewRefresh", "mnuViewOptions", "mnuHelpContents",
          "mnuHelpSearch", "mnuHelpAbout"}) {
        QAction* action = Child<QAction>(main.get(), name);
        QVERIFY2(action && action->isEnabled(), name);
    }
    const QList<QPair<const char*, QKeySequence>> shortcuts = {
        {"mnuViewRefresh", QKeySequence(Qt::Key_F5)},
        {"mnuFileDelete", QKeySequence(Qt::Key_Delete)},
        {"mnuFileProperties", QKeySequence(Qt::ALT | Qt::Key_Return)},
        {"mnuEditFind", QKeySequence(Qt::CTRL | Qt::Key_F)},
        {"mnuEditFindNext", QKeySequence(Qt::Key_F3)},
        {"mnuEditCopy", QKeySequence(Qt::CTRL | Qt::Key_C)},
        {"mnuEditCut", QKeySequence(Qt::CTRL | Qt::Key_X)},
        {"mnuEditPaste", QKeySequence(Qt::CTRL | Qt::Key_V)},
        {"mnuHelpContents", QKeySequence(Qt::Key_F1)},
        {"mnuFileNew", QKeySequence(Qt::CTRL | Qt::Key_N)},
    };
    for (const auto& [name, sequence] : shortcuts)
        QVERIFY2(Child<QAction>(main.get(), name)->shortcut() == sequence, name);

    // The view modes are one exclusive choice.
    Child<QAction>(main.get(), "mnuViewLargeIcons")->trigger();
    int checked = 0;
    for (const char* name :
         {"mnuViewLargeIcons", "mnuViewSmallIcons", "mnuViewList", "mnuViewDetails"})
        checked += Child<QAction>(main.get(), name)->isChecked() ? 1 : 0;
    QCOMPARE(checked, 1);
    QCOMPARE(main->ListViewMode(), int(ExplorerListView::LargeIcons));

    // Every toolbar button has a picture and, having no text, a name to be read out.
    auto* toolBar = Child<QToolBar>(main.get(), "tbToolBar");
    int buttons = 0;
    for (QAction* action : toolBar->actions()) {
        if (action->isSeparator()) continue;
        ++buttons;
        QVERIFY2(!action->icon().isNull(), qPrintable(action->objectName()));
        QWidget* button = toolBar->widgetForAction(action);
        QVERIFY2(!action->toolTip().isEmpty(), qPrintable(action->objectName()));
        QCOMPARE(button->accessibleName(), action->toolTip());
    }
    QCOMPARE(buttons, 11);
}

void TestMainWindow::PopupMenusNameTheirEntries() {
    auto main = OpenMain();
    const QList<QPair<QString, QStringList>> menus = {
        {"mnuPopup1", {"mnuPopup1New"}},
        {"mnuPopup2", {"mnuPopup2Properties"}},
        {"mnuPopup3",
         {"mnuPopup3Copy", "mnuPopup3Cut", "mnuPopup3Paste", "mnuPopup3Delete", "mnuPopup3New",
          "mnuPopup3Properties"}},
        {"mnuPopupServer",
         {"mnuPopupServerCopy", "mnuPopupServerCut", "mnuPopupServerPaste", "mnuPopupServerDelete",
          "mnuPopupServerNew", "mnuPopupServerProperties", "mnuPopupServerStart",
          "mnuPopupServerStop"}},
        {"mnuPopupDevice",
         {"mnuPopupDeviceCopy", "mnuPopupDeviceCut", "mnuPopupDevicePaste", "mnuPopupDeviceDelete",
          "mnuPopupDeviceNew", "mnuPopupDeviceProperties", "mnuPopupDeviceStart",
          "mnuPopupDeviceStop", "mnuPopupDeviceTerminate"}},
        {"mnuPopupProcess",
         {"mnuPopupProcessProperties", "mnuPopupProcessStart", "mnuPopupProcessStop"}},
        {"mnuRatePopup", {"mnuRateNew", "mnuRateProperties", "mnuRateDel", "mnuRateHelp"}},
        {"mnuDestsPopup", {"mnuDestsNew", "mnuDestsProperties", "mnuDestsDelete", "mnuDestsHelp"}},
        {"mnuZonePopup", {"mnuZoneNew", "mnuZoneProperties", "mnuZoneDelete", "mnuZoneHelp"}},
        {"mnuPopupLCR", {"mnuPopupLCRReload", "mnuPopupLCRNew"}},
    };
    for (const auto& [menuName, entries] : menus) {
        QMenu* menu = main->PopupMenu(menuName);
        QVERIFY2(menu, qPrintable(menuName));
        QStringList names;
        for (QAction* action : menu->actions()) {
            names.append(action->objectName());
            QCOMPARE(main->MenuEntry(action->objectName()), action);
            // Until their commands arrive only the help entries and the
            // routing reload do anything.
            QCOMPARE(action->isEnabled(),
                     action->objectName().endsWith(QLatin1String("Help")) ||
                         action->objectName() == QLatin1String("mnuPopupLCRReload"));
            QVERIFY(!action->text().isEmpty());
        }
        QCOMPARE(names, entries);
    }
    // The forwarding entries reach the main commands: once New is enabled,
    // the pop-up's New triggers it.
    QAction* fileNew = Child<QAction>(main.get(), "mnuFileNew");
    QSignalSpy triggered(fileNew, &QAction::triggered);
    fileNew->setEnabled(true);
    main->MenuEntry(QStringLiteral("mnuPopupServerNew"))->setEnabled(true);
    main->MenuEntry(QStringLiteral("mnuPopupServerNew"))->trigger();
    QCOMPARE(triggered.count(), 1);
}

void TestMainWindow::LabelsFollowServerLanguage() {
    StartServer({}, "de");
    auto main = OpenMain();
    QCOMPARE(Child<QMenu>(main.get(), "mnuFile")->title(), QStringLiteral("&Datei"));
    QCOMPARE(Child<QAction>(main.get(), "mnuFileExit")->text(), QStringLiteral("&Beenden"));
    QCOMPARE(Child<QAction>(main.get(), "mnuViewLargeIcons")->text(),
             QStringLiteral("&Große Symbole"));
    QCOMPARE(main->MenuEntry(QStringLiteral("mnuPopupServerStart"))->text(),
             QStringLiteral("&Starten"));
    QCOMPARE(main->MenuEntry(QStringLiteral("mnuPopupLCRReload"))->text(),
             QStringLiteral("&Neu laden"));
    QAction* find = Child<QAction>(main.get(), "mnuEditFind");
    QCOMPARE(find->text(), QStringLiteral("&Suchen..."));
    QCOMPARE(find->toolTip(), QStringLiteral("Suchen"));
    QCOMPARE(Child<QToolBar>(main.get(), "tbToolBar")->widgetForAction(find)->accessibleName(),
             QStringLiteral("Suchen"));
    QCOMPARE(main->Tree()->topLevelItem(0)->text(0), GetLabel(QStringLiteral("Administrator")));
}

void TestMainWindow::HelpEntriesOpenTheirWindows() {
    auto main = OpenMain();
    Child<QAction>(main.get(), "mnuHelpSearch")->trigger();
    HelpViewer* help = HelpViewer::Current();
    QVERIFY(help && help->isVisible());
    QCOMPARE(help->CurrentPage(), HelpViewer::IndexPage);
    // The pop-up menus' help entries lead to the contents.
    main->MenuEntry(QStringLiteral("mnuRateHelp"))->trigger();
    QCOMPARE(HelpViewer::Current(), help);
    QCOMPARE(help->CurrentPage(), HelpViewer::ContentsPage);

    frmAbout* about = nullptr;
    QTimer::singleShot(0, this, [&] {
        for (QWidget* window : QApplication::topLevelWidgets())
            if (auto* shown = qobject_cast<frmAbout*>(window); shown && shown->isVisible())
                about = shown;
        if (about) about->reject();
    });
    Child<QAction>(main.get(), "mnuHelpAbout")->trigger();
    QVERIFY(about);

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
    QFile blocker(dir_->filePath(QStringLiteral("blocker")));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    UseSettingsFile(dir_->filePath(QStringLiteral("blocker/settings.ini")));
    QVERIFY_THROWS_EXCEPTION(SettingsError, StoreMain(QStringLiteral("Splitter"), "1"));

    Child<QAction>(main.get(), "mnuFileExit")->trigger();
    QVERIFY(!main->isVisible());
    QVERIFY(!find->isVisible());
    QVERIFY(!other.isVisible());
}

void TestMainWindow::FindDialogShell() {
    StartServer({}, "de");
    frmFind find;
    QCOMPARE(find.windowTitle(), QStringLiteral("Suchen"));
    QVERIFY(!find.isModal());
    auto* what = Child<QLabel>(&find, "lblFindWhat");
    auto* text = Child<QLineEdit>(&find, "edtFindText");
    QCOMPARE(what->buddy(), text);
    QCOMPARE(Child<QCheckBox>(&find, "chkMatchCase")->text(),
             GetLabel(QStringLiteral("Match case")));
    QCOMPARE(Child<QCheckBox>(&find, "chkWholeWord")->text(),
             GetLabel(QStringLiteral("Whole word")));
    QVERIFY(Child<QPushButton>(&find, "cmdFind")->isDefault());

    find.show();
    QVERIFY(QTest::qWaitForWindowExposed(&find));
    QTest::keyClicks(text, QStringLiteral("Sales"));
    QTest::keyClick(text, Qt::Key_Escape);
    QVERIFY(!find.isVisible());
    // Hidden, not unloaded: the next search starts from the last text.
    find.show();
    QCOMPARE(text->text(), QStringLiteral("Sales"));
}

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
