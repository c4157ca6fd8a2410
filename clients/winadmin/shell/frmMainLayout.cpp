// The main window's layout: tree, divider and list side by side, and the
// divider drag with its feedback bar.

#include <QGuiApplication>
#include <QMouseEvent>
#include <QScreen>
#include <QShowEvent>
#include <QTreeWidget>

#include "common/Twips.h"
#include "common/WindowPlacement.h"
#include "lists/ExplorerListView.h"
#include "shell/frmMain.h"
#include "ui_frmMain.h"

namespace winadmin {

namespace {

// The divider is a strip the pointer can still catch.
constexpr int kDividerTwips = 60;

}  // namespace

int frmMain::ClampSplitter(int splitterTwips) const {
    const int formTwips = PixelsToTwips(width());
    // A window narrower than both limits keeps the tree at its least width.
    return qMax(SplitLimit, qMin(splitterTwips, formTwips - SplitLimit));
}

void frmMain::SizeControls(int splitterTwips) {
    splitterTwips_ = ClampSplitter(splitterTwips);
    const int height = ui->picClient->height();
    const int left = TwipsToPixels(splitterTwips_);
    const int divider = TwipsToPixels(kDividerTwips);
    ui->tvTreeView->setGeometry(0, 0, left, height);
    ui->imgSplitter->setGeometry(left, 0, divider, height);
    ui->lvListView->setGeometry(left + divider, 0, qMax(0, ui->picClient->width() - left - divider),
                                height);
}

void frmMain::ApplyBounds(int leftTwips, int topTwips, int widthTwips, int heightTwips) {
    move(TwipsToPixels(leftTwips), TwipsToPixels(topTwips));
    resize(TwipsToPixels(widthTwips), TwipsToPixels(heightTwips));
    KeepOnScreen();
}

void frmMain::KeepOnScreen() {
    // Whatever was stored (a monitor no longer there, a size from a larger
    // screen, nonsense), the window opens whole on a screen that is there;
    // a position on another monitor than the primary one is kept. The frame
    // counts as part of the window; its size is only known once the window
    // exists, so the first show checks again.
    winadmin::KeepOnScreen(this);
}

void frmMain::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (!shownOnce_ && !event->spontaneous()) {
        shownOnce_ = true;
        if (!(windowState() & (Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen)))
            KeepOnScreen();
    }
}

void frmMain::BeginSplitterDrag() {
    dragBarTwips_ = splitterTwips_ - DragBarOffset;
    ui->picSplitter->setGeometry(TwipsToPixels(dragBarTwips_), 0, ui->imgSplitter->width(),
                                 ui->picClient->height());
    ui->picSplitter->raise();
    ui->picSplitter->show();
    dragging_ = true;
}

void frmMain::MoveSplitterDrag(int pointerXPixels) {
    // Only the bar follows the pointer; the tree and the list keep their size
    // until the button is released, so a long list is not laid out at every
    // pointer step.
    const int wanted = splitterTwips_ + PixelsToTwips(pointerXPixels);
    const int rightLimit = PixelsToTwips(width()) - SplitLimit;
    if (wanted < SplitLimit)
        dragBarTwips_ = SplitLimit;
    else if (wanted > rightLimit)
        dragBarTwips_ = rightLimit;
    else
        dragBarTwips_ = wanted;
    ui->picSplitter->move(TwipsToPixels(dragBarTwips_), 0);
}

void frmMain::EndSplitterDrag() {
    SizeControls(dragBarTwips_);
    ui->picSplitter->hide();
    dragging_ = false;
}

bool frmMain::eventFilter(QObject* watched, QEvent* event) {
    if (watched == ui->tvTreeView->viewport() && FilterTreeDrag(event)) return true;
    if (watched == ui->imgSplitter) {
        switch (event->type()) {
            case QEvent::MouseButtonPress:
                if (static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
                    BeginSplitterDrag();
                    return true;
                }
                break;
            case QEvent::MouseMove:
                if (dragging_) {
                    MoveSplitterDrag(qRound(static_cast<QMouseEvent*>(event)->position().x()));
                    return true;
                }
                break;
            case QEvent::MouseButtonRelease:
                if (dragging_ && static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
                    EndSplitterDrag();
                    return true;
                }
                break;
            default:
                break;
        }
    } else if (watched == ui->picClient && event->type() == QEvent::Resize && !dragging_) {
        SizeControls(splitterTwips_);
    }
    return QMainWindow::eventFilter(watched, event);
}

}  // namespace winadmin
