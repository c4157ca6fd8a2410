#include "lists/ExplorerListView.h"

#include <QApplication>
#include <QHeaderView>
#include <QListView>
#include <QTreeView>

#include "lists/ListTreeView.h"

namespace winadmin {

namespace {

constexpr int kLargeIconSize = 32;
constexpr int kSmallIconSize = 16;

}  // namespace

ExplorerListView::ExplorerListView(QWidget* parent) : QStackedWidget(parent) {
    details_ = new ListTreeView(this);
    details_->setObjectName(QStringLiteral("lvDetails"));
    details_->setRootIsDecorated(false);
    details_->setItemsExpandable(false);
    // Large lists (thousands of users) must scroll without measuring rows.
    details_->setUniformRowHeights(true);
    details_->setAllColumnsShowFocus(true);
    details_->setSelectionMode(QAbstractItemView::SingleSelection);
    details_->setSelectionBehavior(QAbstractItemView::SelectRows);
    details_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    details_->setIconSize(QSize(kSmallIconSize, kSmallIconSize));
    details_->header()->setStretchLastSection(false);

    icons_ = new QListView(this);
    icons_->setObjectName(QStringLiteral("lvIcons"));
    icons_->setSelectionMode(QAbstractItemView::SingleSelection);
    // The icon modes show one column, but a row picked there must be the
    // whole row the report view shows selected.
    icons_->setSelectionBehavior(QAbstractItemView::SelectRows);
    icons_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    icons_->setResizeMode(QListView::Adjust);
    icons_->setMovement(QListView::Static);
    icons_->setUniformItemSizes(true);

    addWidget(details_);
    addWidget(icons_);
    setCurrentWidget(details_);
    setFocusProxy(details_);
}

void ExplorerListView::SetModel(QAbstractItemModel* model) {
    // Each view makes a selection model of its own in setModel; the icon view
    // gives its up and shares the report view's, so both always show the same
    // selection and current row. The pair's previous one is no longer used.
    QItemSelectionModel* previous = details_->selectionModel();
    details_->setModel(model);
    icons_->setModel(model);
    QItemSelectionModel* iconsOwn = icons_->selectionModel();
    icons_->setSelectionModel(details_->selectionModel());
    delete iconsOwn;
    delete previous;
}

QAbstractItemModel* ExplorerListView::Model() const {
    return details_->model();
}

QItemSelectionModel* ExplorerListView::SelectionModel() const {
    return Model() ? details_->selectionModel() : nullptr;
}

void ExplorerListView::SetMode(int mode) {
    if (!IsMode(mode)) return;
    const bool hadFocus = HasListFocus();
    // Changing the arrangement resets whether rows can be dragged out.
    const bool dragEnabled = icons_->dragEnabled();
    if (mode != Details) {
        // Large icons wrap their captions; small icons fill rows left to
        // right; the list fills columns top to bottom.
        const bool large = mode == LargeIcons;
        icons_->setViewMode(large ? QListView::IconMode : QListView::ListMode);
        icons_->setFlow(mode == List ? QListView::TopToBottom : QListView::LeftToRight);
        icons_->setWrapping(true);
        const int size = large ? kLargeIconSize : kSmallIconSize;
        icons_->setIconSize(QSize(size, size));
        icons_->setWordWrap(large);
    }
    // setViewMode resets the movement; the icons stay where the model puts them.
    icons_->setMovement(QListView::Static);
    icons_->setDragEnabled(dragEnabled);
    QAbstractItemView* shown = mode == Details ? static_cast<QAbstractItemView*>(details_)
                                               : static_cast<QAbstractItemView*>(icons_);
    setCurrentWidget(shown);
    setFocusProxy(shown);
    if (hadFocus) shown->setFocus();
    if (SelectionModel() && SelectionModel()->currentIndex().isValid())
        shown->scrollTo(SelectionModel()->currentIndex());
    const bool changed = mode != mode_;
    mode_ = mode;
    if (changed) emit ModeChanged(mode_);
}

QAbstractItemView* ExplorerListView::CurrentView() const {
    return qobject_cast<QAbstractItemView*>(currentWidget());
}

bool ExplorerListView::HasListFocus() const {
    const QWidget* focus = QApplication::focusWidget();
    return focus && (focus == this || isAncestorOf(focus));
}

}  // namespace winadmin
