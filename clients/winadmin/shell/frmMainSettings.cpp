// The main window's persisted view: bounds, divider, list mode, server
// time-out and column widths, under the product key of the session's brand.

#include <QGuiApplication>

#include "common/Settings.h"
#include "common/Twips.h"
#include "lists/ExplorerListView.h"
#include "lists/ViewSettings.h"
#include "session/ServerSession.h"
#include "shell/frmMain.h"

namespace winadmin {

namespace {

// Bounds and divider are whatever number was stored; ApplyBounds and
// SizeControls bring them onto the screen. Beyond this the number is taken
// for garbage and the default applies.
constexpr int kFarTwips = 1'000'000'000;

constexpr int kDefaultLeft = 1000;
constexpr int kDefaultTop = 1000;
constexpr int kDefaultWidth = 10000;
constexpr int kDefaultHeight = 5000;
constexpr int kDefaultSplitter = 2500;

}  // namespace

void frmMain::LoadViewSettings() {
    const int left =
        ReadMainFormNumber(QStringLiteral("Left"), kDefaultLeft, -kFarTwips, kFarTwips);
    const int top = ReadMainFormNumber(QStringLiteral("Top"), kDefaultTop, -kFarTwips, kFarTwips);
    // A window of no or negative size cannot be shown at all.
    const int width = ReadMainFormNumber(QStringLiteral("Width"), kDefaultWidth, 1, kFarTwips);
    const int height = ReadMainFormNumber(QStringLiteral("Height"), kDefaultHeight, 1, kFarTwips);
    ApplyBounds(left, top, width, height);

    SizeControls(
        ReadMainFormNumber(QStringLiteral("Splitter"), kDefaultSplitter, -kFarTwips, kFarTwips));

    // Handing the stored time-out back every start makes the administrator's
    // choice last; a first run keeps the session's own default.
    if (ServerSession* session = TheSession()) session->SetTimeout(StoredServerTimeout());

    widths_.Load(GetProductKeyName());
}

void frmMain::SaveViewSettings() {
    SettingsBatch batch;
    // A maximised or minimised window's bounds are not where it should open
    // next time; the bounds saved before stay.
    if (!(windowState() & (Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen))) {
        SaveMainFormSetting(QStringLiteral("Left"), PixelsToTwips(x()));
        SaveMainFormSetting(QStringLiteral("Top"), PixelsToTwips(y()));
        SaveMainFormSetting(QStringLiteral("Width"), PixelsToTwips(width()));
        SaveMainFormSetting(QStringLiteral("Height"), PixelsToTwips(height()));
    }
    // Until the first activation the list shows the designed mode, not the
    // stored one, which must then survive.
    if (activatedOnce_) SaveMainFormSetting(QStringLiteral("ListView Mode"), ListViewMode());
    SaveMainFormSetting(QStringLiteral("Splitter"), splitterTwips_);
    widths_.Save(GetProductKeyName());
    batch.Finish();
}

}  // namespace winadmin
