#pragma once
// The one model behind the explorer's list and the other object lists: rows
// of cell texts (a ListRowSet), shown by a QTreeView in details mode and by a
// QListView in the icon and list modes. Every row carries its kind word (icon
// key), the server it belongs to (tag) and, for rates and destinations, its
// key ("3Rate"), which the commands read.

#include <QAbstractTableModel>
#include <QStringList>
#include <vector>

#include "lists/ListRowSet.h"

class QMimeData;

namespace winadmin {

struct ListColumn {
    QString key;     // the label key of the header
    QString header;  // the translated header text
    int width = 0;   // pixels
    Qt::Alignment alignment = Qt::AlignLeft;
    // Where the column's width is persisted (ColumnWidths): the section of the
    // list view and the value name, which is not always the header key.
    QString widthSection;
    QString widthKey;
};

class ListModel : public QAbstractTableModel {
    Q_OBJECT

public:
    explicit ListModel(QObject* parent = nullptr);

    // Clears the rows. A column set with other keys is another kind of
    // object and clears the sort as well; the same keys keep it.
    void SetColumns(std::vector<ListColumn> columns);
    // New rows of the same kind (a refresh) keep the order the administrator
    // chose by clicking a header. The model takes the rows over.
    void SetRows(ListRowSet rows);
    // Rows of a log that grows (newest first, each with a greater id than
    // every row held): they join the list and the rows of the lowest ids
    // beyond maxRows leave it, so the list holds what SetRows with the newest
    // maxRows rows would, in the same order. Only the rows that come and go
    // change, so the view keeps its selection and scrolling, and the rows
    // that stay cost nothing. Rows held in no header's order must be newest
    // first, as SetRows was given them.
    void AddNewestRows(std::vector<ListRow> rows, size_t maxRows);
    void Clear();
    // A column's width as the view shows it now (pixels), so that the column
    // set handed out again keeps what was dragged.
    void SetColumnWidth(int column, int width);

    const std::vector<ListColumn>& Columns() const { return columns_; }
    // A copy of the row (made on demand for a table's rows): cheap, since its
    // texts are shared.
    ListRow Row(int row) const { return rows_[static_cast<size_t>(row)]; }
    // -1 when no row has it; rows without a key are never found by key.
    int FindKey(const QString& key) const;
    int FindText(const QString& text, const QString& iconKey = QString()) const;

    // Rows of users, printers, devices and gateway users can be dragged onto
    // the tree; the drag carries their kind, server and text in this format.
    static const QString DragFormat;
    // The kinds that move between servers (or gateways): by dragging, and
    // by copy and paste.
    static bool IsDraggable(const QString& iconKey);
    // The kind word of the rows a drag carries; empty for foreign data.
    static QString DraggedKind(const QMimeData* data);
    // Its rows, one "kind<Tab>server<Tab>name" each.
    static QStringList DraggedRows(const QMimeData* data);

    // A click on a header: the same column again reverses the order, another
    // column sorts ascending. Answers the order now in effect.
    Qt::SortOrder SortByHeaderClick(int column);
    int SortColumn() const { return sortColumn_; }
    Qt::SortOrder SortOrder() const { return sortOrder_; }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    Qt::DropActions supportedDragActions() const override;

private:
    // The order of the rows sorted by column; stable, so rows with equal
    // texts keep the order they had.
    std::vector<size_t> SortedPositions(int column, Qt::SortOrder order) const;
    // Where a row newer than every row held goes in the sorted list: before
    // the rows of equal text, where a stable sort of newest-first rows puts it.
    size_t SortedPlace(const ListRow& row) const;
    // Takes out the count rows of the lowest ids.
    void RemoveOldest(size_t count);

    std::vector<ListColumn> columns_;
    ListRowSet rows_;
    int sortColumn_ = -1;
    Qt::SortOrder sortOrder_ = Qt::AscendingOrder;
};

}  // namespace winadmin
