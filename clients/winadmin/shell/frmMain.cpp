#include "shell/frmMain.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QListView>
#include <QPointer>
#include <QStatusBar>
#include <QToolButton>
#include <QTreeView>
#include <QTreeWidget>

#include "common/AppContext.h"
#include "common/Labels.h"
#include "common/Twips.h"
#include "lists/ExplorerListView.h"
#include "lists/Find.h"
#include "lists/KindIcons.h"
#include "lists/ViewSettings.h"
#include "session/ServerSession.h"
#include "shell/HelpViewer.h"
#include "shell/frmAbout.h"
#include "shell/frmFind.h"
#include "shell/frmOptions.h"
#include "ui_frmMain.h"

// Resources of a static library are only linked in when something names them.
static void InitToolbarResources() {
    Q_INIT_RESOURCE(toolbar);
}

namespace winadmin {

frmMain::frmMain(QWidget* parent) : QMainWindow(parent), ui(std::make_unique<Ui::frmMain>()) {
    InitToolbarResources();
    ui->setupUi(this);
    setMinimumSize(TwipsToPixels(MinimumWidthTwips), TwipsToPixels(MinimumHeightTwips));
    ui->picSplitter->hide();
    ui->picSplitter->setBackgroundRole(QPalette::Dark);
    ui->imgSplitter->installEventFilter(this);
    ui->picClient->installEventFilter(this);

    BuildViewModeGroup();
    BuildStatusBar();
    BuildPopupMenus();
    ApplyLabels();
    ConnectMenus();
    ConnectFind(*this);

    ConnectExplorer();
    ConnectObjectCommands();
    ConnectStartStop();
    ConnectClipboard();
    BuildTree();
    LoadViewSettings();
    // After the widths are read: the first list is laid out with them.
    ShowNode(ui->tvTreeView->currentItem());
}

frmMain::~frmMain() = default;

void frmMain::ApplyLabels() {
    ApplyFormLabels(this);
    setWindowTitle(ApplicationTitle());
    // Screen readers announce a control by its name; these show no caption
    // of their own. The list is named after what it shows (ShowNode).
    ui->tvTreeView->setAccessibleName(GetLabel(QStringLiteral("Explorer")));
    ui->tbToolBar->setAccessibleName(GetLabel(QStringLiteral("Toolbar")));
    ui->mnuBar->setAccessibleName(GetLabel(QStringLiteral("Menu Bar")));
    ui->sbStatusBar->setAccessibleName(GetLabel(QStringLiteral("Status")));
    NameList(GetLabel(QStringLiteral("Objects")));
    // The toolbar buttons show no text; screen readers announce the tooltip.
    for (QAction* action : ui->tbToolBar->actions()) {
        if (action->isSeparator()) continue;
        if (QWidget* button = ui->tbToolBar->widgetForAction(action))
            button->setAccessibleName(action->toolTip());
    }
}

void frmMain::BuildViewModeGroup() {
    viewModes_ = new QActionGroup(this);
    viewModes_->setExclusive(true);
    // In the order of the stored mode numbers.
    QAction* const byMode[] = {ui->mnuViewLargeIcons, ui->mnuViewSmallIcons, ui->mnuViewList,
                               ui->mnuViewDetails};
    for (int mode = ExplorerListView::LargeIcons; mode <= ExplorerListView::Details; ++mode) {
        QAction* action = byMode[mode];
        action->setData(mode);
        viewModes_->addAction(action);
    }
    ui->mnuViewDetails->setChecked(true);
    connect(viewModes_, &QActionGroup::triggered, this,
            [this](QAction* action) { SetListViewMode(action->data().toInt()); });
    // The menu follows the list, whoever changed its mode.
    connect(ui->lvListView, &ExplorerListView::ModeChanged, this, [this](int mode) {
        for (QAction* action : viewModes_->actions())
            if (action->data().toInt() == mode) action->setChecked(true);
    });
}

void frmMain::BuildStatusBar() {
    // Panel 1 takes the spare width for the running counts of a list fill;
    // panel 2 names the server the console is logged in to.
    for (int panel = 1; panel <= 2; ++panel) {
        auto* label = new QLabel(this);
        label->setObjectName(QStringLiteral("sbPanel%1").arg(panel));
        label->setFrameShape(QFrame::StyledPanel);
        label->setFrameShadow(QFrame::Sunken);
        ui->sbStatusBar->addWidget(label, panel == 1 ? 1 : 0);
        statusPanels_.append(label);
    }
    if (const ServerSession* session = TheSession())
        statusPanels_.at(1)->setText(session->GetHostName());
}

void frmMain::NameList(const QString& name) {
    // Both views, as either can be the one a screen reader lands on.
    ui->lvListView->setAccessibleName(name);
    ui->lvListView->DetailsView()->setAccessibleName(name);
    ui->lvListView->IconView()->setAccessibleName(name);
}

QLabel* frmMain::StatusPanel(int panel) const {
    return panel >= 1 && panel <= statusPanels_.size() ? statusPanels_.at(panel - 1) : nullptr;
}

void frmMain::ConnectMenus() {
    connect(ui->mnuFileExit, &QAction::triggered, this, &QWidget::close);
    connect(ui->mnuViewOptions, &QAction::triggered, this, &frmMain::ShowOptions);
    connect(ui->mnuHelpContents, &QAction::triggered, this, [this] { ShowHelpContents(this); });
    connect(ui->mnuHelpSearch, &QAction::triggered, this, [this] { ShowHelpSearch(this); });
    connect(ui->mnuHelpAbout, &QAction::triggered, this, [this] {
        frmAbout about(this);
        about.exec();
    });
}

void frmMain::ShowOptions() {
    frmOptions options(this);
    options.exec();
}

QTreeWidgetItem* frmMain::AddNode(QTreeWidgetItem* parent, const QString& key, const QString& text,
                                  const QString& kind) {
    QTreeWidgetItem* item = MakeExplorerNode({key, text, kind});
    if (parent)
        parent->addChild(item);
    else
        ui->tvTreeView->addTopLevelItem(item);
    return item;
}

QTreeWidgetItem* frmMain::FindNode(const QString& key) const {
    const QModelIndexList found = ui->tvTreeView->model()->match(
        ui->tvTreeView->model()->index(0, 0), NodeKeyRole, key, 1,
        Qt::MatchExactly | Qt::MatchCaseSensitive | Qt::MatchRecursive | Qt::MatchWrap);
    return found.isEmpty() ? nullptr : ui->tvTreeView->itemFromIndex(found.first());
}

QTreeWidget* frmMain::Tree() const {
    return ui->tvTreeView;
}

ExplorerListView* frmMain::List() const {
    return ui->lvListView;
}

int frmMain::ListViewMode() const {
    return ui->lvListView->GetMode();
}

void frmMain::SetListViewMode(int mode) {
    ui->lvListView->SetMode(mode);
}

void frmMain::changeEvent(QEvent* event) {
    if (event->type() == QEvent::ActivationChange && isActiveWindow() && !activatedOnce_) {
        activatedOnce_ = true;
        // Later activations keep whatever mode the administrator chose since.
        const int stored =
            ReadMainFormNumber(QStringLiteral("ListView Mode"), ExplorerListView::Details,
                               ExplorerListView::LargeIcons, ExplorerListView::Details);
        SetListViewMode(stored);
    }
    QMainWindow::changeEvent(event);
}

void frmMain::closeEvent(QCloseEvent* event) {
    // Whatever the store does, the window closes: a console that cannot
    // be left because of a read-only settings file would be worse.
    try {
        SaveViewSettings();
    } catch (const std::exception& error) {
        qWarning("View settings not saved: %s", error.what());
    } catch (...) {
        qWarning("View settings not saved");
    }
    CloseOtherWindows();
    event->accept();
}

void frmMain::CloseOtherWindows() {
    // Closed, not deleted: each window belongs to whoever opened it. Closing
    // one may delete another (a dialog that owns a viewer), hence the guards.
    QList<QPointer<QWidget>> windows;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window != this) windows.append(window);
    for (const QPointer<QWidget>& window : windows)
        if (window && window->isVisible()) window->close();
}

}  // namespace winadmin
