// The main explorer window against the reference server: its persisted view,
// the list modes, how it closes, and the options dialog's server time-out and
// event severity.

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
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
    void ViewIsWrittenOnCloseAndRestored();
    void ClosedMaximisedKeepsEarlierBounds();
    void BadSettingsStillOpenVisibleOnScreen();
    void ListModeAppliedOnFirstActivationOnly();
    void BrandChoosesProductKey();
    void ServerTimeoutHandedToSession();
    void ClosingEndsEveryWindowEvenIfSaveFails();
    void InvalidTimeoutRefused();
    void OptionsShowStoredValuesCancelWritesNothingOkSaves();

private:
    // Nothing written, the session's time-out as it was.
    void VerifyNothingChanged(const QString& storedTimeout = kUnset,
                              const QString& storedSeverity = kUnset);

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

void TestMainWindow::ViewIsWrittenOnCloseAndRestored() {
    const QString users = QStringLiteral("UserView");
    const QString userName = QStringLiteral("UserName");
    const QPoint pos(TwipsToPixels(1500), TwipsToPixels(900));
    const QSize size(TwipsToPixels(9000), TwipsToPixels(6000));
    // Stored widths that are not plain numbers are read as far as they go or
    // give the column's default.
    StoreSetting("GroupName", "2222px", "GroupView");
    StoreSetting("EventTime", "-5", "EventView");
    {
        auto main = OpenMain();
        ColumnWidths& widths = main->Widths();
        QCOMPARE(widths.Width(QStringLiteral("GroupView"), QStringLiteral("GroupName")), 2222);
        QCOMPARE(widths.Width(QStringLiteral("EventView"), QStringLiteral("EventTime")), 2200);
        // Beyond what the 16-bit table holds, and names it does not persist.
        QVERIFY(widths.SetWidth(users, userName, 32767));
        QVERIFY(!widths.SetWidth(users, userName, 32768));
        QVERIFY(!widths.SetWidth(users, QStringLiteral("Username"), 100));
        QVERIFY(widths.SetWidth(QStringLiteral("DestView"), QStringLiteral("Destext"), 0));

        main->move(pos);
        main->resize(size);
        main->SizeControls(4000);
        Child<QAction>(*main, "mnuViewSmallIcons")->trigger();
        // Nothing is written while the window is open.
        QCOMPARE(StoredSetting(QStringLiteral("Splitter")), kUnset);
        QVERIFY(main->close());
    }
    // Under the names existing stores hold.
    QCOMPARE(StoredSetting("EventTime", "EventView"), QStringLiteral("2200"));
    QCOMPARE(StoredSetting("Destext", "DestView"), QStringLiteral("0"));
    auto main = OpenMain();
    QCOMPARE(main->pos(), pos);
    QCOMPARE(main->size(), size);
    QCOMPARE(main->Tree()->width(), TwipsToPixels(4000));
    QVERIFY(Child<QAction>(*main, "mnuViewSmallIcons")->isChecked());
    QCOMPARE(main->Widths().Width(users, userName), 32767);
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

void TestMainWindow::BadSettingsStillOpenVisibleOnScreen() {
    // Where a frame lands on the screens is tst_firstrun's, how numbers are
    // read from text tst_startup's. Mode 0 is a mode of its own.
    const QStringList names = {"Left", "Top", "Width", "Height", "Splitter", "ListView Mode"};
    const std::tuple<QStringList, int, int> cases[] = {
        {{"1e300", "-1e300", "1e300", "1e300", "1e300", "1e300"}, 2500, ExplorerListView::Details},
        {{"0", "0", "1", "1", "0", "0"}, 1500, ExplorerListView::LargeIcons}};
    for (const auto& [stored, splitter, mode] : cases) {
        for (int i = 0; i < names.size(); ++i) StoreSetting(names.at(i), stored.at(i));
        auto main = OpenMain();
        QVERIFY(Available().contains(main->frameGeometry()));
        QCOMPARE(main->SplitterPosition(), splitter);
        QCOMPARE(main->ListViewMode(), mode);
    }
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

void TestMainWindow::ServerTimeoutHandedToSession() {
    QVERIFY(sessionDefault_ != 32767);
    // Zero (no deadline) and what is beyond 16 bits leave the session's own.
    for (const QString stored : {"0", "70000", "32767"}) {
        StoreSetting(kTimeout, stored);
        auto main = std::make_unique<frmMain>();
        QCOMPARE(TheSession()->GetTimeout(), stored == "32767" ? 32767 : sessionDefault_);
        // Closing does not write it: only the options dialog chooses a time-out.
        QVERIFY(main->close());
        QCOMPARE(StoredSetting(kTimeout), stored);
    }
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
    QVERIFY(!main->isVisible() && !find->isVisible() && !other.isVisible());
    QVERIFY(!HelpViewer::Current() || !HelpViewer::Current()->isVisible());
}

void TestMainWindow::VerifyNothingChanged(const QString& storedTimeout,
                                          const QString& storedSeverity) {
    QCOMPARE(StoredSetting(kTimeout), storedTimeout);
    QCOMPARE(StoredSetting(kSeverity), storedSeverity);
    QCOMPARE(TheSession()->GetTimeout(), sessionDefault_);
}

void TestMainWindow::InvalidTimeoutRefused() {
    // The field takes digits only, five at most.
    const std::tuple<QString, QString, QString> cases[] = {
        {"", "", "The field 'Server Timeout' cannot be empty."},
        {"9x9-9.9 99+9", "99999", "The valid range for 'Server Timeout' is from 1 to 32767."}};
    for (const auto& [typed, shown, message] : cases) {
        // A fresh profile shows the session's time-out and the first severity.
        OptionsWindow options;
        QCOMPARE(options.timeout->text(), QString::number(sessionDefault_));
        QCOMPARE(options.severity->currentIndex(), 0);
        options.TypeTimeout(typed);
        QCOMPARE(options.timeout->text(), shown);
        QTest::keyClick(options.severity, Qt::Key_Down);
        fx_->prompter.Answer(Answer::OK);
        // Enter presses the default button, OK.
        QTest::keyClick(options.timeout, Qt::Key_Return);
        QCOMPARE(fx_->prompter.LastPrompt().text, message);
        QVERIFY(options.dialog.isVisible());
        QCOMPARE(QApplication::focusWidget(), options.timeout);
        QCOMPARE(options.timeout->selectedText(), shown);
        VerifyNothingChanged();
    }
}

void TestMainWindow::OptionsShowStoredValuesCancelWritesNothingOkSaves() {
    StoreSetting(kTimeout, QStringLiteral("20"));
    StoreSetting(kSeverity, QStringLiteral("9"));
    {
        OptionsWindow options;
        QCOMPARE(options.timeout->text(), QStringLiteral("20"));
        // A severity beyond the list shows as the first.
        QCOMPARE(options.severity->currentIndex(), 0);
        options.TypeTimeout(QStringLiteral("99"));
        QTest::keyClick(options.severity, Qt::Key_Down);
        QTest::mouseClick(Child<QPushButton>(options.dialog, "cmdCancel"), Qt::LeftButton);
        VerifyNothingChanged(QStringLiteral("20"), QStringLiteral("9"));
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
