#pragma once
// The texts of a list's rows, as a list call answers them: a fixed number of
// cells per row, every cell's UTF-8 bytes back to back in one buffer and the
// end of each cell in another. A hundred thousand users thus cost two
// allocations and about forty bytes each, where the records they came in
// would cost a kilobyte and a heap object per field.

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace winadmin {

class RowTable {
public:
    explicit RowTable(int columns = 0) : columns_(columns) {}

    int Columns() const { return columns_; }
    size_t Size() const { return columns_ > 0 ? ends_.size() / size_t(columns_) : 0; }
    bool Empty() const { return ends_.empty(); }

    // Appends one row; cells must hold exactly Columns() texts. Throws
    // std::length_error when the table would pass 4 GiB of text.
    void Append(std::initializer_list<std::string_view> cells);
    std::string_view Cell(size_t row, int column) const;

    // Gives back what growing by doubling left unused. Done once the last
    // row is in, so that a long-lived table holds no more than its texts.
    void Compact();
    // Bytes held, unused capacity included.
    size_t HeldBytes() const { return text_.capacity() + ends_.capacity() * sizeof(uint32_t); }

private:
    int columns_;
    std::string text_;
    std::vector<uint32_t> ends_;  // one per cell, row after row
};

}  // namespace winadmin
