// The explorer's wiring in the main window: the tree's selection fills the
// list, the list's header sorts it and keeps the width table current, Refresh
// rebuilds both and keeps the view, a drag over the tree shows where objects
// may go, and the tree's least-cost-routing pop-up reloads the routing engine.

#include <QAction>
#include <QApplication>
#include <QDragMoveEvent>
#include <QHeaderView>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QSet>
#include <QTreeView>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

#include "common/Labels.h"
#include "common/Prompter.h"
#include "common/Twips.h"
#include "lists/ExplorerListView.h"
#include "lists/ListFill.h"
#include "session/CallSession.h"
#include "session/ServerSession.h"
#include "shell/frmMain.h"
#include "ui_frmMain.h"

namespace winadmin {

namespace {

QString KeyOf(const QTreeWidgetItem* node) {
    return node ? node->data(0, NodeKeyRole).toString() : QString();
}

}  // namespace

void frmMain::ConnectExplorer() {
    listModel_ = new ListModel(this);
    ui->lvListView->SetModel(listModel_);

    QTreeWidget* tree = ui->tvTreeView;
    connect(tree, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* current) {
        if (!treeQuiet_) ShowNode(current);
    });

    QTreeView* details = ui->lvListView->DetailsView();
    QHeaderView* header = details->header();
    // The model sorts on a click; the view must not sort a second time.
    details->setSortingEnabled(false);
    header->setSectionsClickable(true);
    connect(header, &QHeaderView::sectionClicked, this, &frmMain::SortByHeader);
    connect(header, &QHeaderView::sectionResized, this, &frmMain::KeepColumnWidth);

    // Users, printers, devices and gateway users are dragged from the list
    // onto the tree; what the drop does comes with the object commands.
    for (QAbstractItemView* view : {static_cast<QAbstractItemView*>(details),
                                    static_cast<QAbstractItemView*>(ui->lvListView->IconView())}) {
        view->setDragEnabled(true);
        view->setDragDropMode(QAbstractItemView::DragOnly);
        connect(view, &QAbstractItemView::activated, this, &frmMain::OpenListRow);
    }
    tree->setAcceptDrops(true);
    tree->viewport()->setAcceptDrops(true);
    tree->viewport()->installEventFilter(this);

    // Tab goes from the tree to the list and on round to the tree.
    setTabOrder(tree, details);
    setTabOrder(details, ui->lvListView->IconView());

    tree->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(tree, &QWidget::customContextMenuRequested, this, &frmMain::ShowTreeMenu);
    if (QAction* reload = MenuEntry(QStringLiteral("mnuPopupLCRReload"))) {
        reload->setEnabled(true);
        connect(reload, &QAction::triggered, this, &frmMain::ReloadLcr);
    }
    ui->mnuViewRefresh->setEnabled(true);
    connect(ui->mnuViewRefresh, &QAction::triggered, this, [this] { RefreshExplorer(); });
}

bool frmMain::BuildTree(bool keepOnFailure) {
    ExplorerTreeData data;
    bool fetched = true;
    if (ServerSession* session = TheSession())
        fetched = CallSession([&] { data = FetchExplorerTree(*session); });
    if (!fetched && keepOnFailure) return false;
    treeQuiet_ = true;
    BuildExplorerTree(ui->tvTreeView, data);
    ui->tvTreeView->setCurrentItem(ui->tvTreeView->topLevelItem(0));
    treeQuiet_ = false;
    return fetched;
}

void frmMain::ShowNode(QTreeWidgetItem* node) {
    const QString kind = KindOf(node);
    const QString key = KeyOf(node);
    // The kind's columns first, whatever the fill does (a failed fill leaves
    // them without rows). Setting them lets the old rows go before the new
    // ones arrive, so a refresh of a large list never holds two of it.
    layingOutColumns_ = true;
    listModel_->SetColumns(BuildListColumns(kind, widths_));
    ApplyColumnWidths();
    layingOutColumns_ = false;
    ServerSession* session = TheSession();
    if (node && session) {
        const NodeScope scope = ScopeOfNode(node);
        ListRowSet rows;
        CallSession([&] {
            rows = FillListView(kind, key, *session, scope,
                                [this](int count) { ShowFillCount(count); });
        });
        if (QLabel* panel = StatusPanel(1)) panel->clear();
        layingOutColumns_ = true;
        listModel_->SetRows(std::move(rows));
        layingOutColumns_ = false;
    }
    ShowSortIndicator();
    SelectRow(0);
    NameList(node ? node->text(0) : GetLabel(QStringLiteral("Objects")));
}

void frmMain::ApplyColumnWidths() {
    QHeaderView* header = ui->lvListView->DetailsView()->header();
    const std::vector<ListColumn>& columns = listModel_->Columns();
    for (size_t i = 0; i < columns.size(); ++i) header->resizeSection(int(i), columns[i].width);
}

void frmMain::KeepColumnWidth(int column, int oldPixels, int newPixels) {
    Q_UNUSED(oldPixels);
    if (layingOutColumns_ || ui->lvListView->Model() != listModel_) return;
    if (column < 0 || column >= int(listModel_->Columns().size())) return;
    const ListColumn& shown = listModel_->Columns()[size_t(column)];
    widths_.SetWidth(shown.widthSection, shown.widthKey, PixelsToTwips(newPixels));
    listModel_->SetColumnWidth(column, newPixels);
}

void frmMain::SortByHeader(int column) {
    if (ui->lvListView->Model() != listModel_) return;
    listModel_->SortByHeaderClick(column);
    ShowSortIndicator();
    if (QItemSelectionModel* selection = ui->lvListView->SelectionModel())
        if (selection->currentIndex().isValid())
            ui->lvListView->CurrentView()->scrollTo(selection->currentIndex());
}

void frmMain::ShowSortIndicator() {
    QHeaderView* header = ui->lvListView->DetailsView()->header();
    const int column = listModel_->SortColumn();
    header->setSortIndicatorShown(column >= 0);
    if (column >= 0) header->setSortIndicator(column, listModel_->SortOrder());
}

void frmMain::SelectRow(int row) {
    QItemSelectionModel* selection = ui->lvListView->SelectionModel();
    if (!selection || row < 0 || row >= listModel_->rowCount()) return;
    const QModelIndex index = listModel_->index(row, 0);
    selection->setCurrentIndex(index,
                               QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    ui->lvListView->CurrentView()->scrollTo(index);
}

void frmMain::ShowFillCount(int rows) {
    QLabel* panel = StatusPanel(1);
    if (!panel) return;
    panel->setText(QString::number(rows));
    // The fill holds the event loop; the count must show while it runs.
    if (panel->isVisible()) panel->repaint();
}

void frmMain::RefreshExplorer(const QString& savedName) {
    QTreeWidget* tree = ui->tvTreeView;
    QSet<QString> expanded;
    for (QTreeWidgetItemIterator it(tree); *it; ++it)
        if ((*it)->isExpanded()) expanded.insert(KeyOf(*it));
    // The selected node and its ancestors, nearest first: when the node has
    // gone, the closest one left is selected.
    QStringList chain;
    for (QTreeWidgetItem* node = tree->currentItem(); node; node = node->parent())
        chain.append(KeyOf(node));
    QString rowKey, rowText, rowKind;
    if (QItemSelectionModel* selection = ui->lvListView->SelectionModel();
        selection && selection->currentIndex().isValid()) {
        const ListRow& row = listModel_->Row(selection->currentIndex().row());
        rowKey = row.key;
        rowText = row.cells.value(0);
        rowKind = row.iconKey;
    }

    // A tree stripped to its fixed branches would lose the administrator's
    // place, and the list of a server that does not answer would only
    // report the same failure a second time.
    if (!BuildTree(true)) return;
    const QHash<QString, QTreeWidgetItem*> nodes = IndexNodesByKey(tree);
    treeQuiet_ = true;
    // A fresh tree has only its root expanded.
    if (QTreeWidgetItem* root = tree->topLevelItem(0))
        root->setExpanded(expanded.contains(KeyOf(root)));
    for (const QString& key : expanded)
        if (QTreeWidgetItem* node = nodes.value(key)) node->setExpanded(true);
    QTreeWidgetItem* current = tree->topLevelItem(0);
    for (const QString& key : chain) {
        if (QTreeWidgetItem* found = nodes.value(key)) {
            current = found;
            break;
        }
    }
    tree->setCurrentItem(current);
    treeQuiet_ = false;
    if (current) tree->scrollToItem(current);

    ShowNode(current);
    // An editor's saved object wins over the row selected before it opened
    // (a new object has no row before).
    int row = savedName.isEmpty() ? -1 : listModel_->FindText(savedName);
    if (row < 0) row = listModel_->FindKey(rowKey);
    if (row < 0 && !rowText.isEmpty()) row = listModel_->FindText(rowText, rowKind);
    if (row >= 0) SelectRow(row);
}

bool frmMain::FilterTreeDrag(QEvent* event) {
    // Qt shows the "no drop" pointer (Qt::ForbiddenCursor) wherever the
    // target ignores the drag, so refusing a node is what marks it.
    switch (event->type()) {
        case QEvent::DragEnter: {
            auto* drag = static_cast<QDragEnterEvent*>(event);
            if (ListModel::DraggedKind(drag->mimeData()).isEmpty())
                drag->ignore();
            else
                drag->acceptProposedAction();
            return true;
        }
        case QEvent::DragMove: {
            auto* drag = static_cast<QDragMoveEvent*>(event);
            const QTreeWidgetItem* node = ui->tvTreeView->itemAt(drag->position().toPoint());
            if (node && AcceptsDrop(KindOf(node), ListModel::DraggedKind(drag->mimeData())))
                drag->acceptProposedAction();
            else
                drag->ignore();
            return true;
        }
        case QEvent::Drop:
            DropOnTree(static_cast<QDropEvent*>(event));
            return true;
        default:
            return false;
    }
}

void frmMain::OpenListRow(const QModelIndex& index) {
    if (!index.isValid()) return;
    // An object's row opens its window; a branch's row (its key is its node's)
    // opens the branch in the tree.
    activeControl_ = QStringLiteral("ListView");
    if (ui->mnuFileProperties->isEnabled()) {
        OpenProperties();
        return;
    }
    QTreeWidgetItem* node = FindNode(listModel_->Row(index.row()).key);
    if (!node) return;
    if (node->parent()) node->parent()->setExpanded(true);
    ui->tvTreeView->setCurrentItem(node);
}

void frmMain::ShowTreeMenu(const QPoint& position) {
    QTreeWidgetItem* node = ui->tvTreeView->itemAt(position);
    if (KindOf(node) != QLatin1String("LCR")) return;
    ui->tvTreeView->setCurrentItem(node);
    if (QMenu* menu = PopupMenu(QStringLiteral("mnuPopupLCR")))
        menu->popup(ui->tvTreeView->viewport()->mapToGlobal(position));
}

void frmMain::ReloadLcr() {
    if (ServerSession* session = TheSession()) CallSession([&] { session->ReloadLcr(); });
}

}  // namespace winadmin
