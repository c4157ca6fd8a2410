#pragma once
// The one model behind the explorer's list and the other object lists: a
// vector of rows of cell texts, shown by a QTreeView in details mode and by a
// QListView in the icon and list modes. Every row carries its kind word (icon
// key), the server it belongs to (tag) and, for rates and destinations, its
// key ("3Rate"), which the commands read.

#include <QAbstractTableModel>
#include <QStringList>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

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

// Records that a list shows, kept as they came from the server and read only
// for the cells that are shown, searched or sorted.
class ListRecords {
public:
    virtual ~ListRecords() = default;
    virtual int CellCount() const = 0;
    virtual QString Cell(size_t record, int cell) const = 0;
};

// The texts of a row's cells: either ready-made texts, or a record of a
// shared table whose texts are made when asked for. A list of a hundred
// thousand users thus costs no text for the rows nobody scrolls to: filling
// it touches neither the records nor their texts.
class ListCells {
public:
    ListCells() = default;
    ListCells(QStringList texts) : texts_(std::move(texts)) {}
    ListCells(std::initializer_list<QString> texts) : texts_(texts) {}
    ListCells(std::shared_ptr<const ListRecords> records, size_t record)
        : records_(std::move(records)), record_(record) {}
    // Cells of one row kept as the UTF-8 texts given, made into texts when
    // asked for. (Rows of many records share one table; see ListRecords.)
    static ListCells FromUtf8(std::initializer_list<std::string_view> texts);

    int size() const { return records_ ? records_->CellCount() : int(texts_.size()); }
    bool isEmpty() const { return size() == 0; }
    // The text of cell i, which must exist.
    QString at(int i) const { return records_ ? records_->Cell(record_, i) : texts_.at(i); }
    QString operator[](int i) const { return at(i); }
    // "" for a cell the row does not have.
    QString value(int i) const { return i >= 0 && i < size() ? at(i) : QString(); }
    QString front() const { return at(0); }
    QStringList ToStringList() const;

private:
    QStringList texts_;
    std::shared_ptr<const ListRecords> records_;
    size_t record_ = 0;
};

struct ListRow {
    ListCells cells;  // the text, then the sub-items in column order
    QString iconKey;  // the kind word: "User", "Rate", ...
    QString tag;      // the owning server, for server-scoped kinds
    QString key;      // index + kind word for rates and destinations
    // What the row showed of a record addressed by its place (zones, rates,
    // destinations): its identity and version, so that a command acts on
    // that record even after another console moved it. Events carry their
    // id, which grows with the log. 0 for other kinds.
    int64_t id = 0;
    int64_t version = 0;
};

class ListModel : public QAbstractTableModel {
    Q_OBJECT

public:
    explicit ListModel(QObject* parent = nullptr);

    // Clears the rows. A column set with other keys is another kind of
    // object and clears the sort as well; the same keys keep it.
    void SetColumns(std::vector<ListColumn> columns);
    // New rows of the same kind (a refresh) keep the order the administrator
    // chose by clicking a header.
    void SetRows(std::vector<ListRow> rows);
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
    const ListRow& Row(int row) const { return rows_[static_cast<size_t>(row)]; }
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
    std::vector<ListRow> rows_;
    int sortColumn_ = -1;
    Qt::SortOrder sortOrder_ = Qt::AscendingOrder;
};

}  // namespace winadmin
