#include "session/RowTable.h"

#include <limits>
#include <stdexcept>

namespace winadmin {

void RowTable::Append(std::initializer_list<std::string_view> cells) {
    if (int(cells.size()) != columns_) throw std::logic_error("a row of the wrong width");
    for (std::string_view cell : cells) {
        if (text_.size() + cell.size() > std::numeric_limits<uint32_t>::max())
            throw std::length_error("a list's texts pass 4 GiB");
        text_.append(cell);
        ends_.push_back(uint32_t(text_.size()));
    }
}

std::string_view RowTable::Cell(size_t row, int column) const {
    const size_t cell = row * size_t(columns_) + size_t(column);
    const uint32_t begin = cell == 0 ? 0 : ends_[cell - 1];
    return std::string_view(text_).substr(begin, ends_[cell] - begin);
}

void RowTable::Compact() {
    text_.shrink_to_fit();
    ends_.shrink_to_fit();
}

}  // namespace winadmin
