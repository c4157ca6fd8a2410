#pragma once
// What a list shows: its rows, each with its cell texts, kind, server and
// key. Small lists are rows made one by one; a large list is a table of
// records shown as rows of one kind and server, where a row costs its place
// in the table and the texts are made only when a cell is painted, searched
// or sorted.

#include <QStringList>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "session/RowTable.h"

namespace winadmin {

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

// A session's row table as the records of a list.
class TableRecords final : public ListRecords {
public:
    explicit TableRecords(RowTable table) : table_(std::move(table)) {}
    int CellCount() const override { return table_.Columns(); }
    QString Cell(size_t record, int cell) const override;
    size_t Size() const { return table_.Size(); }
    const RowTable& Table() const { return table_; }

private:
    RowTable table_;
};

class ListRowSet {
public:
    ListRowSet() = default;
    // Rows made one by one. (Implicit: wherever rows are wanted, a vector of
    // them will do.)
    ListRowSet(std::vector<ListRow> rows) : rows_(std::move(rows)) {}
    // Every record of table as a row of the kind iconKey and the server tag,
    // in the table's order.
    ListRowSet(std::shared_ptr<const ListRecords> table, size_t count, QString iconKey,
               QString tag);

    size_t size() const { return table_ ? order_.size() : rows_.size(); }
    bool empty() const { return size() == 0; }
    // A copy of row i; a table's row is made on the spot.
    ListRow operator[](size_t i) const;
    ListRow front() const { return (*this)[0]; }
    ListRow back() const { return (*this)[size() - 1]; }
    int CellCount(size_t i) const { return table_ ? table_->CellCount() : rows_[i].cells.size(); }
    // The text of a cell; "" for a cell the row does not have.
    QString Cell(size_t i, int column) const;
    const QString& IconKey(size_t i) const { return table_ ? iconKey_ : rows_[i].iconKey; }
    const QString& Key(size_t i) const;
    // Whether any row can have a key (a table's rows have none).
    bool HasKeys() const { return !table_; }

    // The id a row carries (events, and records addressed by their place); 0
    // for a table's rows.
    int64_t Id(size_t i) const { return table_ ? 0 : rows_[i].id; }

    // Puts the rows in a new order: row i becomes the row now at positions[i].
    void Reorder(const std::vector<size_t>& positions);
    // Rows of a list that grows and shrinks at the edges (a log): rows go in
    // before position at, and the rows [first, end) go out. Only lists of rows
    // made one by one grow this way: on a table both throw std::logic_error.
    void Insert(size_t at, std::vector<ListRow> rows);
    void Erase(size_t first, size_t end);

    class Iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = ListRow;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = ListRow;
        Iterator(const ListRowSet* rows, size_t i) : rows_(rows), i_(i) {}
        ListRow operator*() const { return (*rows_)[i_]; }
        Iterator& operator++() {
            ++i_;
            return *this;
        }
        Iterator operator++(int) { return Iterator(rows_, i_++); }
        bool operator==(const Iterator& other) const { return i_ == other.i_; }

    private:
        const ListRowSet* rows_;
        size_t i_;
    };
    Iterator begin() const { return {this, 0}; }
    Iterator end() const { return {this, size()}; }

private:
    // Throws when the rows are a table's.
    void RefuseTable() const;

    std::vector<ListRow> rows_;
    std::shared_ptr<const ListRecords> table_;
    QString iconKey_;
    QString tag_;
    // The table's record of each row, in the rows' order: four bytes a row
    // where a ListRow would take over a hundred.
    std::vector<uint32_t> order_;
};

}  // namespace winadmin
