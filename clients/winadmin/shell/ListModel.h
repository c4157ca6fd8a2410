#pragma once
// The one model behind the explorer's list and the other object lists: rows of
// ready-made cell texts over a vector, shown by a QTreeView in details mode
// and by a QListView in the icon and list modes. Every row carries its kind
// word (icon key), the server it belongs to (tag) and, for rates and
// destinations, its key ("3Rate"), which the commands read.

#include <QAbstractTableModel>
#include <QStringList>
#include <vector>

namespace winadmin {

struct ListColumn {
    QString key;     // the label key of the header; also the width setting's name
    QString header;  // the translated header text
    int width = 0;   // pixels
    Qt::Alignment alignment = Qt::AlignLeft;
};

struct ListRow {
    QStringList cells;  // the text, then the sub-items in column order
    QString iconKey;    // the kind word: "User", "Rate", ...
    QString tag;        // the owning server, for server-scoped kinds
    QString key;        // index + kind word for rates and destinations
};

class ListModel : public QAbstractTableModel {
    Q_OBJECT

public:
    explicit ListModel(QObject* parent = nullptr);

    // Clears the rows too: a new column set means a new kind of object.
    void SetColumns(std::vector<ListColumn> columns);
    void SetRows(std::vector<ListRow> rows);
    void Clear();

    const std::vector<ListColumn>& Columns() const { return columns_; }
    const ListRow& Row(int row) const { return rows_[static_cast<size_t>(row)]; }
    int FindKey(const QString& key) const;
    int FindText(const QString& text, const QString& iconKey = QString()) const;

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

private:
    std::vector<ListColumn> columns_;
    std::vector<ListRow> rows_;
    int sortColumn_ = -1;
    Qt::SortOrder sortOrder_ = Qt::AscendingOrder;
};

}  // namespace winadmin
