#pragma once
// The persisted width of every list column, one settings section per list view
// and one value per column key. The list fill reads its widths from here and
// writes back what the administrator dragged, so that the main window can save
// the whole table when it closes.

#include <QString>
#include <cstdint>
#include <vector>

namespace winadmin {

class ColumnWidths {
public:
    struct Column {
        QString key;
        int16_t defaultWidth;  // twips
        int16_t width;         // twips
    };
    struct View {
        QString section;
        std::vector<Column> columns;
    };

    // Every view and column with its default width.
    ColumnWidths();

    // Twips; the default width of an unknown column for a key the table does
    // not hold, so that a new column is never shown zero wide.
    int Width(const QString& section, const QString& key) const;
    // Widths outside what a 16-bit twips value can hold, and negative ones,
    // are refused (answers false, keeps the old width); unknown keys as well,
    // since only the table's columns are persisted.
    bool SetWidth(const QString& section, const QString& key, int twips);

    // Reads every width from the settings store under the product key; values
    // that are missing or unusable give the column's default.
    void Load(const QString& productKey);
    // Writes every width, in table order. A store that cannot be written
    // throws (see SaveSectionSetting).
    void Save(const QString& productKey) const;

    const std::vector<View>& Views() const { return views_; }

    static constexpr int UnknownColumnWidth = 1500;

private:
    Column* Find(const QString& section, const QString& key);
    const Column* Find(const QString& section, const QString& key) const;

    std::vector<View> views_;
};

}  // namespace winadmin
