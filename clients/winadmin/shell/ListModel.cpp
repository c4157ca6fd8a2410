#include "shell/ListModel.h"

#include <algorithm>

#include "shell/KindIcons.h"

namespace winadmin {

ListModel::ListModel(QObject* parent) : QAbstractTableModel(parent) {}

void ListModel::SetColumns(std::vector<ListColumn> columns) {
    beginResetModel();
    columns_ = std::move(columns);
    rows_.clear();
    sortColumn_ = -1;
    sortOrder_ = Qt::AscendingOrder;
    endResetModel();
}

void ListModel::SetRows(std::vector<ListRow> rows) {
    beginResetModel();
    rows_ = std::move(rows);
    endResetModel();
}

void ListModel::Clear() {
    beginResetModel();
    rows_.clear();
    endResetModel();
}

int ListModel::FindKey(const QString& key) const {
    for (size_t i = 0; i < rows_.size(); ++i)
        if (rows_[i].key == key) return static_cast<int>(i);
    return -1;
}

int ListModel::FindText(const QString& text, const QString& iconKey) const {
    for (size_t i = 0; i < rows_.size(); ++i) {
        const auto& row = rows_[i];
        if (!row.cells.isEmpty() && row.cells.front() == text &&
            (iconKey.isEmpty() || row.iconKey == iconKey))
            return static_cast<int>(i);
    }
    return -1;
}

Qt::SortOrder ListModel::SortByHeaderClick(int column) {
    Qt::SortOrder order = Qt::AscendingOrder;
    if (column == sortColumn_)
        order = sortOrder_ == Qt::AscendingOrder ? Qt::DescendingOrder : Qt::AscendingOrder;
    sort(column, order);
    return order;
}

int ListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int ListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant ListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount() || index.column() >= columnCount())
        return {};
    const auto& row = rows_[static_cast<size_t>(index.row())];
    switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            return index.column() < row.cells.size() ? row.cells[index.column()] : QString();
        case Qt::DecorationRole:
            return index.column() == 0 ? QVariant(KindIcon(row.iconKey)) : QVariant();
        case Qt::TextAlignmentRole:
            return QVariant::fromValue(columns_[static_cast<size_t>(index.column())].alignment |
                                       Qt::AlignVCenter);
        default:
            return {};
    }
}

QVariant ListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) return {};
    const auto& column = columns_[static_cast<size_t>(section)];
    if (role == Qt::DisplayRole) return column.header;
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(column.alignment | Qt::AlignVCenter);
    return {};
}

void ListModel::sort(int column, Qt::SortOrder order) {
    if (column < 0 || column >= columnCount()) return;
    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    // Sort positions rather than rows, so that persistent indexes (the
    // selection) can be moved to where their rows went.
    std::vector<size_t> positions(rows_.size());
    for (size_t i = 0; i < positions.size(); ++i) positions[i] = i;
    auto cell = [&](size_t i) -> const QString& {
        static const QString empty;
        const auto& cells = rows_[i].cells;
        return column < cells.size() ? cells[column] : empty;
    };
    std::stable_sort(positions.begin(), positions.end(), [&](size_t a, size_t b) {
        int c = QString::compare(cell(a), cell(b), Qt::CaseInsensitive);
        return order == Qt::AscendingOrder ? c < 0 : c > 0;
    });
    std::vector<ListRow> sorted;
    sorted.reserve(rows_.size());
    std::vector<int> newPosition(rows_.size());
    for (size_t i = 0; i < positions.size(); ++i) {
        newPosition[positions[i]] = static_cast<int>(i);
        sorted.push_back(std::move(rows_[positions[i]]));
    }
    rows_ = std::move(sorted);
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex& index : before)
        after << this->index(newPosition[static_cast<size_t>(index.row())], index.column());
    changePersistentIndexList(before, after);
    sortColumn_ = column;
    sortOrder_ = order;
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

}  // namespace winadmin
