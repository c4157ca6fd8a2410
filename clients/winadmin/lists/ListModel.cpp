#include "lists/ListModel.h"

#include <QCollator>
#include <QMimeData>
#include <QSet>
#include <algorithm>
#include <functional>
#include <numeric>

#include "lists/KindIcons.h"

namespace winadmin {

const QString ListModel::DragFormat = QStringLiteral("application/x-veldrano-explorer-rows");

bool ListModel::IsDraggable(const QString& iconKey) {
    return iconKey == QLatin1String("User") || iconKey == QLatin1String("Printer") ||
           iconKey == QLatin1String("Device") || iconKey == QLatin1String("GatewayUser");
}

ListModel::ListModel(QObject* parent) : QAbstractTableModel(parent) {}

void ListModel::SetColumns(std::vector<ListColumn> columns) {
    // The same columns again (the next server's users, a refresh) are the
    // same kind of list, which keeps the order chosen for it and the header
    // click that reverses it.
    const bool sameKind =
        std::equal(columns.begin(), columns.end(), columns_.begin(), columns_.end(),
                   [](const ListColumn& a, const ListColumn& b) { return a.key == b.key; });
    beginResetModel();
    columns_ = std::move(columns);
    rows_ = {};
    if (!sameKind) {
        sortColumn_ = -1;
        sortOrder_ = Qt::AscendingOrder;
    }
    endResetModel();
}

void ListModel::SetRows(ListRowSet rows) {
    beginResetModel();
    // The old rows go before the new ones are sorted, so that a refresh of a
    // large list holds one list at a time.
    rows_ = std::move(rows);
    // Whatever order the server answered in, a list the administrator sorted
    // stays sorted when it is filled again.
    if (sortColumn_ >= 0 && sortColumn_ < columnCount())
        rows_.Reorder(SortedPositions(sortColumn_, sortOrder_));
    endResetModel();
}

void ListModel::AddNewestRows(std::vector<ListRow> rows, size_t maxRows) {
    if (rows.size() >= maxRows) {
        // Nothing held stays.
        rows.resize(maxRows);
        SetRows(std::move(rows));
        return;
    }
    if (rows_.size() + rows.size() > maxRows) RemoveOldest(rows_.size() + rows.size() - maxRows);
    if (rows.empty()) return;
    if (sortColumn_ < 0 || sortColumn_ >= columnCount()) {
        beginInsertRows({}, 0, int(rows.size()) - 1);
        rows_.Insert(0, std::move(rows));
        endInsertRows();
        return;
    }
    // Oldest first, so that each newer row lands before an older one of
    // equal text.
    for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
        const int place = int(SortedPlace(*row));
        beginInsertRows({}, place, place);
        std::vector<ListRow> one;
        one.push_back(std::move(*row));
        rows_.Insert(size_t(place), std::move(one));
        endInsertRows();
    }
}

void ListModel::RemoveOldest(size_t count) {
    count = std::min(count, rows_.size());
    if (count == 0) return;
    if (sortColumn_ < 0 || sortColumn_ >= columnCount()) {
        beginRemoveRows({}, int(rows_.size() - count), int(rows_.size()) - 1);
        rows_.Erase(rows_.size() - count, rows_.size());
        endRemoveRows();
        return;
    }
    std::vector<size_t> positions(rows_.size());
    std::iota(positions.begin(), positions.end(), size_t(0));
    std::nth_element(positions.begin(), positions.begin() + ptrdiff_t(count - 1), positions.end(),
                     [&](size_t a, size_t b) { return rows_.Id(a) < rows_.Id(b); });
    positions.resize(count);
    // From the bottom up, a run of neighbours at a time, so that no removal
    // moves a row still to go.
    std::sort(positions.begin(), positions.end(), std::greater<>());
    for (size_t i = 0; i < positions.size();) {
        const size_t last = positions[i];
        size_t first = last;
        while (++i < positions.size() && positions[i] == first - 1) first = positions[i];
        beginRemoveRows({}, int(first), int(last));
        rows_.Erase(first, last + 1);
        endRemoveRows();
    }
}

size_t ListModel::SortedPlace(const ListRow& row) const {
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    const bool plain = collator.locale().language() == QLocale::C;
    const QString text = row.cells.value(sortColumn_);
    size_t low = 0, high = rows_.size();
    while (low < high) {
        const size_t middle = low + (high - low) / 2;
        const QString held = rows_.Cell(middle, sortColumn_);
        const int c = plain ? QString::compare(held, text, Qt::CaseInsensitive)
                            : collator.compare(held, text);
        if (sortOrder_ == Qt::AscendingOrder ? c < 0 : c > 0)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

void ListModel::Clear() {
    beginResetModel();
    rows_ = {};
    endResetModel();
}

void ListModel::SetColumnWidth(int column, int width) {
    if (column >= 0 && column < columnCount()) columns_[size_t(column)].width = width;
}

int ListModel::FindKey(const QString& key) const {
    if (key.isEmpty() || !rows_.HasKeys()) return -1;
    for (size_t i = 0; i < rows_.size(); ++i)
        if (rows_.Key(i) == key) return static_cast<int>(i);
    return -1;
}

int ListModel::FindText(const QString& text, const QString& iconKey) const {
    for (size_t i = 0; i < rows_.size(); ++i) {
        // A row without cells has no text to match, not even an empty one.
        if ((iconKey.isEmpty() || rows_.IconKey(i) == iconKey) && rows_.CellCount(i) > 0 &&
            rows_.Cell(i, 0) == text)
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
    if (!index.isValid() || index.row() >= rowCount() || index.column() >= columnCount()) return {};
    const size_t row = static_cast<size_t>(index.row());
    switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            return rows_.Cell(row, index.column());
        case Qt::DecorationRole:
            return index.column() == 0 ? QVariant(KindIcon(rows_.IconKey(row))) : QVariant();
        case Qt::TextAlignmentRole:
            return int(columns_[static_cast<size_t>(index.column())].alignment | Qt::AlignVCenter);
        default:
            return {};
    }
}

QVariant ListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) return {};
    const auto& column = columns_[static_cast<size_t>(section)];
    if (role == Qt::DisplayRole) return column.header;
    if (role == Qt::TextAlignmentRole) return int(column.alignment | Qt::AlignVCenter);
    return {};
}

std::vector<size_t> ListModel::SortedPositions(int column, Qt::SortOrder order) const {
    std::vector<size_t> positions(rows_.size());
    std::iota(positions.begin(), positions.end(), size_t(0));
    // In the administrator's language ("Émile" between "adam" and "zora"),
    // case aside. Each text's collation key is made once, not once per
    // comparison. The C locale has no language to sort by, and its collation
    // keys would tell upper from lower case: there the texts are compared
    // directly.
    auto sortBy = [&](const auto& keys, auto compare) {
        std::stable_sort(positions.begin(), positions.end(), [&](size_t a, size_t b) {
            const int c = compare(keys[a], keys[b]);
            return order == Qt::AscendingOrder ? c < 0 : c > 0;
        });
    };
    QCollator collator;
    if (collator.locale().language() == QLocale::C) {
        std::vector<QString> texts;
        texts.reserve(rows_.size());
        for (size_t i = 0; i < rows_.size(); ++i) texts.push_back(rows_.Cell(i, column));
        sortBy(texts, [](const QString& a, const QString& b) {
            return QString::compare(a, b, Qt::CaseInsensitive);
        });
    } else {
        collator.setCaseSensitivity(Qt::CaseInsensitive);
        std::vector<QCollatorSortKey> keys;
        keys.reserve(rows_.size());
        for (size_t i = 0; i < rows_.size(); ++i)
            keys.push_back(collator.sortKey(rows_.Cell(i, column)));
        sortBy(keys,
               [](const QCollatorSortKey& a, const QCollatorSortKey& b) { return a.compare(b); });
    }
    return positions;
}

void ListModel::sort(int column, Qt::SortOrder order) {
    if (column < 0 || column >= columnCount()) return;
    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    // Positions are sorted rather than rows, so that persistent indexes (the
    // selection) can be moved to where their rows went.
    const std::vector<size_t> positions = SortedPositions(column, order);
    std::vector<int> newPosition(rows_.size());
    for (size_t i = 0; i < positions.size(); ++i) newPosition[positions[i]] = static_cast<int>(i);
    rows_.Reorder(positions);
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex& index : before)
        after << this->index(newPosition[static_cast<size_t>(index.row())], index.column());
    changePersistentIndexList(before, after);
    sortColumn_ = column;
    sortOrder_ = order;
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

Qt::ItemFlags ListModel::flags(const QModelIndex& index) const {
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    if (index.isValid() && index.row() < rowCount() &&
        IsDraggable(rows_.IconKey(size_t(index.row()))))
        flags |= Qt::ItemIsDragEnabled;
    return flags;
}

QStringList ListModel::mimeTypes() const {
    return {DragFormat};
}

QMimeData* ListModel::mimeData(const QModelIndexList& indexes) const {
    // One line a row (the selection hands every cell of it): kind, server and
    // text, separated by tabs, which no name may hold.
    QSet<int> rows;
    QStringList lines;
    for (const QModelIndex& index : indexes) {
        if (!index.isValid() || index.row() >= rowCount() || rows.contains(index.row())) continue;
        rows.insert(index.row());
        const ListRow row = Row(index.row());
        if (!IsDraggable(row.iconKey)) continue;
        lines.append(row.iconKey + u'\t' + row.tag + u'\t' +
                     (row.cells.isEmpty() ? QString() : row.cells.front()));
    }
    if (lines.isEmpty()) return nullptr;
    auto* data = new QMimeData;
    data->setData(DragFormat, lines.join(u'\n').toUtf8());
    return data;
}

Qt::DropActions ListModel::supportedDragActions() const {
    return Qt::MoveAction | Qt::CopyAction;
}

QStringList ListModel::DraggedRows(const QMimeData* data) {
    if (!data || !data->hasFormat(DragFormat)) return {};
    return QString::fromUtf8(data->data(DragFormat)).split(u'\n', Qt::SkipEmptyParts);
}

QString ListModel::DraggedKind(const QMimeData* data) {
    if (!data || !data->hasFormat(DragFormat)) return {};
    const QString text = QString::fromUtf8(data->data(DragFormat));
    return text.section(u'\t', 0, 0);
}

}  // namespace winadmin
