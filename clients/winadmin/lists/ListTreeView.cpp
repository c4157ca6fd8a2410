#include "lists/ListTreeView.h"

#include <QAbstractItemDelegate>
#include <QHelpEvent>
#include <QToolTip>

namespace winadmin {

ListTreeView::ListTreeView(QWidget* parent) : QTreeView(parent) {}

bool ListTreeView::IsElided(const QModelIndex& index) const {
    if (!index.isValid() || index.data(Qt::DisplayRole).toString().isEmpty()) return false;
    const QRect cell = visualRect(index);
    QAbstractItemDelegate* delegate = itemDelegateForIndex(index);
    if (!delegate || cell.isEmpty()) return false;
    // The delegate's size hint is what the cell needs to show icon, text and
    // margins whole; the delegate elides the text when the cell is narrower.
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.rect = cell;
    return delegate->sizeHint(option, index).width() > cell.width();
}

bool ListTreeView::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return QTreeView::viewportEvent(event);
    auto* help = static_cast<QHelpEvent*>(event);
    const QModelIndex index = indexAt(help->pos());
    // A tip the model gives for its own reasons is shown as the view would.
    if (!index.isValid() || !index.data(Qt::ToolTipRole).toString().isEmpty())
        return QTreeView::viewportEvent(event);
    if (IsElided(index)) {
        QToolTip::showText(help->globalPos(), index.data(Qt::DisplayRole).toString(), viewport(),
                           visualRect(index));
    } else {
        QToolTip::hideText();
        event->ignore();
    }
    return true;
}

}  // namespace winadmin
