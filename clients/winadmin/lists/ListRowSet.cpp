#include "lists/ListRowSet.h"

#include <iterator>
#include <numeric>
#include <stdexcept>

namespace winadmin {

namespace {

class Utf8Row final : public ListRecords {
public:
    explicit Utf8Row(std::initializer_list<std::string_view> texts)
        : texts_(texts.begin(), texts.end()) {}
    int CellCount() const override { return int(texts_.size()); }
    QString Cell(size_t, int cell) const override {
        return QString::fromStdString(texts_[size_t(cell)]);
    }

private:
    std::vector<std::string> texts_;
};

}  // namespace

ListCells ListCells::FromUtf8(std::initializer_list<std::string_view> texts) {
    return ListCells(std::make_shared<const Utf8Row>(texts), 0);
}

QStringList ListCells::ToStringList() const {
    if (!records_) return texts_;
    QStringList texts;
    texts.reserve(size());
    for (int i = 0; i < size(); ++i) texts.append(at(i));
    return texts;
}

QString TableRecords::Cell(size_t record, int cell) const {
    const std::string_view text = table_.Cell(record, cell);
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

ListRowSet::ListRowSet(std::shared_ptr<const ListRecords> table, size_t count, QString iconKey,
                       QString tag)
    : table_(std::move(table)), iconKey_(std::move(iconKey)), tag_(std::move(tag)), order_(count) {
    std::iota(order_.begin(), order_.end(), uint32_t(0));
}

ListRow ListRowSet::operator[](size_t i) const {
    if (!table_) return rows_[i];
    ListRow row;
    row.cells = ListCells(table_, order_[i]);
    row.iconKey = iconKey_;
    row.tag = tag_;
    return row;
}

QString ListRowSet::Cell(size_t i, int column) const {
    if (!table_) return rows_[i].cells.value(column);
    return column >= 0 && column < table_->CellCount() ? table_->Cell(order_[i], column)
                                                       : QString();
}

const QString& ListRowSet::Key(size_t i) const {
    static const QString none;
    return table_ ? none : rows_[i].key;
}

void ListRowSet::Reorder(const std::vector<size_t>& positions) {
    if (table_) {
        std::vector<uint32_t> order;
        order.reserve(positions.size());
        for (size_t position : positions) order.push_back(order_[position]);
        order_ = std::move(order);
        return;
    }
    std::vector<ListRow> rows;
    rows.reserve(rows_.size());
    for (size_t position : positions) rows.push_back(std::move(rows_[position]));
    rows_ = std::move(rows);
}

void ListRowSet::RefuseTable() const {
    if (table_) throw std::logic_error("a table's rows are neither inserted nor erased one by one");
}

void ListRowSet::Insert(size_t at, std::vector<ListRow> rows) {
    RefuseTable();
    rows_.insert(rows_.begin() + ptrdiff_t(at), std::make_move_iterator(rows.begin()),
                 std::make_move_iterator(rows.end()));
}

void ListRowSet::Erase(size_t first, size_t end) {
    RefuseTable();
    rows_.erase(rows_.begin() + ptrdiff_t(first), rows_.begin() + ptrdiff_t(end));
}

}  // namespace winadmin
