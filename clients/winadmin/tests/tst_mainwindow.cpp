// The main explorer window against the reference server: its persisted view,
// the divider drag, the list modes, how it closes, and the options dialog's
// server time-out and event severity.

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QScreen>
#include <QStandardItemModel>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>
#include <memory>

#include "common/Settings.h"
#include "common/Twips.h"
#include "lists/ExplorerListView.h"
#include "lists/ViewSettings.h"
#include "session/ServerSession.h"
#include "shell/HelpViewer.h"
#include "shell/frmFind.h"
#include "shell/frmMain.h"
#include "shell/frmOptions.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

QRect Available() {
    return QGuiApplication::primaryScreen()->availableGeometry();
}

constexpr auto OpenMain = &ExplorerFixture::OpenMain;

const QString kTimeout = QStringLiteral("Server Timeout");
const QString kSeverity = QStringLiteral("Severity");

// The dialog as the administrator sees it: shown, active, controls by name.
struct OptionsWindow {
    OptionsWindow() { ShowActive(dialog); }
    void TypeTimeout(const QString& text) {
        timeout->clear();
        QTest::keyClicks(timeout, text);
    }
    frmOptions dialog;
    QLineEdit* timeout = Child<QLineEdit>(dialog, "edtServerTimeout");
    QComboBox* severity = Child<QComboBox>(dialog, "cboSeverity");
};

}  // namespace

class TestMainWindow : public ConsoleSuite {
    Q_OBJECT

private slots:
    void initTestCase();
    void ViewIsWrittenOnCloseOnly();
    void ViewRoundTripRestoresEverything();
    void ClosedMaximisedKeepsEarlierBounds();
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
    void ClosingEndsEveryWindowEvenIfSaveFails();
    void OptionsLoadStoredValues_data();
    void OptionsLoadStoredValues();
    void InvalidTimeoutRefused_data();
    void InvalidTimeoutRefused();
    void OptionsCancelWritesNothingOkSavesForTheNextStart();

private:
    // Nothing written, the session's time-out as it was.
    void VerifyNothingChanged(const QString& storedTimeout = kUnset);

    void SetUp() override { sessionDefault_ = TheSession()->GetTimeout(); }

    int sessionDefault_ = 0;
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

void TestMainWindow::ViewIsWrittenOnCloseOnly() {
    auto main = OpenMain();
    // Nothing is written while the window is open; closing writes the view
    // and the width table under the names existing stores hold.
    QCOMPARE(StoredSetting(QStringLiteral("Splitter")), kUnset);
    QVERIFY(main->close());
    QCOMPARE(StoredSetting(QStringLiteral("Splitter")), QStringLiteral("2500"));
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
        QVERIFY(!widths.SetWidth(users, QStringLiteral("Username"), 100));
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
    QCOMPARE(main->Tree()->width(), TwipsToPixels(4000));
    QVERIFY(Child<QAction>(*main, "mnuViewSmallIcons")->isChecked());
    QCOMPARE(main->Widths().Width(users, userName), 32767);
    QCOMPARE(main->Widths().Width(QStringLiteral("DestView"), QStringLiteral("Destext")), 0);
}

void TestMainWindow::ClosedMaximisedKeepsEarlierBounds() {
    const QStringList names = {"Left", "Top", "Width", "Height"};
    const QStringList bounds = {"2010", "1515", "9000", "4500"};
    for (int i = 0; i < names.size(); ++i) StoreSetting(names[i], bounds[i]);

    auto main = OpenMain();
    // Where the window was last put before it was maximised; the bounds
    // saved before it opened must win over these (minimised is the same rule).
    main->move(TwipsToPixels(3000), TwipsToPixels(2400));
    main->resize(TwipsToPixels(7500), TwipsToPixels(4200));
    main->setWindowState(Qt::WindowMaximized);
    QTRY_VERIFY(main->isMaximized());
    main->SizeControls(3000);
    QVERIFY(main->close());

    for (int i = 0; i < names.size(); ++i) QCOMPARE(StoredSetting(names[i]), bounds[i]);
    // The rest of the view is saved whatever the window's state.
    QCOMPARE(StoredSetting(QStringLiteral("Splitter")), QString::number(main->SplitterPosition()));
}

void TestMainWindow::BadSettingsStillOpenVisibleOnScreen_data() {
    // Where a frame lands on the screens is tst_firstrun's, how numbers
    // are read from text tst_startup's.
    QTest::addColumn<QStringList>("stored");  // Left, Top, Width, Height, Splitter, Mode
    QTest::addColumn<QPoint>("pos");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("splitter");
    QTest::addColumn<int>("mode");

    const QRect screen = Available();
    const QPoint defaultPos(TwipsToPixels(1000), TwipsToPixels(1000));
    const QSize defaultSize(TwipsToPixels(10000), TwipsToPixels(5000));
    const int details = ExplorerListView::Details;
    QTest::newRow("negatives") << QStringList{"-5000", "-3000", "-10000", "-1", "-200", "-1"}
                               << screen.topLeft() << defaultSize << 1500 << details;
    QTest::newRow("beyond any int")
        << QStringList{"1e300", "-1e300", "1e300", "1e300", "1e300", "1e300"} << defaultPos
        << defaultSize << 2500 << details;
    // Mode 0 is a mode of its own; the least size is the window's own.
    QTest::newRow("tiny") << QStringList{"0", "0", "1", "1", "0", "0"} << screen.topLeft()
                          << QSize(TwipsToPixels(frmMain::MinimumWidthTwips),
                                   TwipsToPixels(frmMain::MinimumHeightTwips))
                          << 1500 << int(ExplorerListView::LargeIcons);
}

void TestMainWindow::BadSettingsStillOpenVisibleOnScreen() {
    QFETCH(QStringList, stored);
    const QStringList names = {"Left", "Top", "Width", "Height", "Splitter", "ListView Mode"};
    for (int i = 0; i < names.size(); ++i) StoreSetting(names.at(i), stored.at(i));

    auto main = OpenMain();
    QVERIFY(Available().contains(main->frameGeometry()));
    QTEST(main->pos(), "pos");
    QTEST(main->size(), "size");
    QTEST(main->SplitterPosition(), "splitter");
    QTEST(main->ListViewMode(), "mode");
}

void TestMainWindow::SplitterDragStopsAtLimits_data() {
    QTest::addColumn<int>("pointerX");  // pixels from the divider's left edge
    QTest::addColumn<int>("expected");  // twips; -1: the right-hand limit
    QTest::newRow("far left") << -1000 << 1500;
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

    QTest::mousePress(divider, Qt::LeftButton, {}, QPoint(0, 10));

    QTest::mouseMove(divider, QPoint(pointerX, 10));
    QCOMPARE(bar->x(), TwipsToPixels(expected));
    // Only the bar moves while the button is down.
    QCOMPARE(main->Tree()->geometry(), treeBefore);

    QTest::mouseRelease(divider, Qt::LeftButton, {}, QPoint(pointerX, 10));
    QCOMPARE(main->Tree()->width(), TwipsToPixels(expected));
}

void TestMainWindow::ResizeKeepsDividerInside() {
    StoreSetting(QStringLiteral("Splitter"), QStringLiteral("8000"));
    auto main = OpenMain();
    main->resize(TwipsToPixels(6000), main->height());
    // The form's width in twips is measured from its pixels.
    const int limit = PixelsToTwips(TwipsToPixels(6000)) - frmMain::SplitLimit;
    QTRY_COMPARE(main->Tree()->width(), TwipsToPixels(limit));
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
    QVERIFY(ShowActive(*main));
    QCOMPARE(main->ListViewMode(), int(ExplorerListView::SmallIcons));

    Child<QAction>(*main, "mnuViewList")->trigger();
    QWidget other;
    QVERIFY(ShowActive(other));
    main->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(main.get()));
    QCOMPARE(main->ListViewMode(), int(ExplorerListView::List));
}

void TestMainWindow::ViewModesShareTheSelection() {
    auto main = OpenMain();
    ExplorerListView* list = main->List();
    QStandardItemModel model(5, 2);
    list->SetModel(&model);
    list->DetailsView()->setCurrentIndex(model.index(3, 0));
    Child<QAction>(*main, "mnuViewList")->trigger();
    QCOMPARE(list->currentWidget(), list->IconView());
    QCOMPARE(list->IconView()->currentIndex().row(), 3);
    // A row picked in an icon mode is the row the report view shows selected.
    list->IconView()->setCurrentIndex(model.index(1, 0));
    Child<QAction>(*main, "mnuViewDetails")->trigger();
    QVERIFY(list->DetailsView()->selectionModel()->isRowSelected(1, {}));
    // A new model (the next node's rows) is shared the same way.
    QStandardItemModel next(2, 1);
    list->SetModel(&next);
    QCOMPARE(list->IconView()->selectionModel(), list->DetailsView()->selectionModel());
}

void TestMainWindow::BrandChoosesProductKey() {
    // The brand as the server spells it chooses the key (an unknown brand
    // is tst_startup's); the view is saved under it and nowhere else.
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
    QTest::newRow("zero means no deadline") << "0" << -1;
    QTest::newRow("beyond 16 bits") << "70000" << -1;
}

void TestMainWindow::ServerTimeoutHandedToSession() {
    QFETCH(QString, stored);
    QFETCH(int, expected);
    QVERIFY(sessionDefault_ != 32767);
    StoreSetting(kTimeout, stored);

    auto main = std::make_unique<frmMain>();
    QCOMPARE(TheSession()->GetTimeout(), expected < 0 ? sessionDefault_ : expected);
    // Closing does not write it: only the options dialog chooses a time-out.
    QVERIFY(main->close());
    QCOMPARE(StoredSetting(kTimeout), stored);
}

void TestMainWindow::ClosingEndsEveryWindowEvenIfSaveFails() {
    auto main = OpenMain();
    auto* find = new frmFind(main.get());
    find->show();
    ShowHelpContents(main.get());
    QVERIFY(HelpViewer::Current());
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
    QVERIFY(!HelpViewer::Current() || !HelpViewer::Current()->isVisible());
}

void TestMainWindow::VerifyNothingChanged(const QString& storedTimeout) {
    QCOMPARE(StoredSetting(kTimeout), storedTimeout);
    QCOMPARE(StoredSetting(kSeverity), kUnset);
    QCOMPARE(TheSession()->GetTimeout(), sessionDefault_);
}

void TestMainWindow::OptionsLoadStoredValues_data() {
    // How a stored time-out is read is ServerTimeoutHandedToSession's (the
    // session gets it from the same reading).
    QTest::addColumn<QString>("timeout");  // stored; "" for none
    QTest::addColumn<QString>("severity");
    QTest::addColumn<int>("shownSeverity");
    QTest::newRow("fresh profile") << QString() << QString() << 0;
    QTest::newRow("severity beyond the list") << QString("30") << QString("9") << 0;
}

void TestMainWindow::OptionsLoadStoredValues() {
    QFETCH(QString, timeout);
    QFETCH(QString, severity);
    if (!timeout.isEmpty()) StoreSetting(kTimeout, timeout);
    if (!severity.isEmpty()) StoreSetting(kSeverity, severity);

    OptionsWindow options;
    QCOMPARE(options.timeout->text(),
             timeout.isEmpty() ? QString::number(sessionDefault_) : timeout);
    QTEST(options.severity->currentIndex(), "shownSeverity");
}

void TestMainWindow::InvalidTimeoutRefused_data() {
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("shown");  // what the field took of it
    QTest::addColumn<QString>("message");
    const auto row = [](const char* name, const char* typed, const char* shown,
                        const char* message) {
        QTest::newRow(name) << QString(typed) << QString(shown) << QString(message);
    };
    const char* range = "The valid range for 'Server Timeout' is from 1 to 32767.";
    row("empty", "", "", "The field 'Server Timeout' cannot be empty.");
    row("zero", "0", "0", range);
    // Digits only, five at most.
    row("beyond 16 bits", "9x9-9.9 99+9", "99999", range);
}

void TestMainWindow::InvalidTimeoutRefused() {
    QFETCH(QString, typed);
    QFETCH(QString, shown);
    OptionsWindow options;
    options.TypeTimeout(typed);
    QCOMPARE(options.timeout->text(), shown);
    QTest::keyClick(options.severity, Qt::Key_Down);

    fx_->prompter.Answer(Answer::OK);
    // Enter presses the default button, OK.
    QTest::keyClick(options.timeout, Qt::Key_Return);

    QCOMPARE(fx_->prompter.Prompts().size(), 1);
    QTEST(fx_->prompter.LastPrompt().text, "message");
    QVERIFY(options.dialog.isVisible());
    QCOMPARE(QApplication::focusWidget(), options.timeout);
    QCOMPARE(options.timeout->selectedText(), shown);
    VerifyNothingChanged();
}

void TestMainWindow::OptionsCancelWritesNothingOkSavesForTheNextStart() {
    StoreSetting(kTimeout, QStringLiteral("20"));
    {
        OptionsWindow options;
        options.TypeTimeout(QStringLiteral("99"));
        QTest::keyClick(options.severity, Qt::Key_Down);
        QTest::mouseClick(Child<QPushButton>(options.dialog, "cmdCancel"), Qt::LeftButton);
        VerifyNothingChanged(QStringLiteral("20"));
    }
    OptionsWindow options;
    options.TypeTimeout(QStringLiteral("45"));
    for (int i = 0; i < 4; ++i) QTest::keyClick(options.severity, Qt::Key_Down);
    QTest::mouseClick(Child<QPushButton>(options.dialog, "cmdOK"), Qt::LeftButton);
    QVERIFY(!options.dialog.isVisible());
    QCOMPARE(StoredSetting(kTimeout), QStringLiteral("45"));
    QCOMPARE(StoredSetting(kSeverity), QStringLiteral("4"));
    QCOMPARE(TheSession()->GetTimeout(), 45);
}

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
