#pragma once
// The rows of each kind made from records already fetched: what FillListView
// does after its call, kept apart so that the fill's own cost can be measured
// without the transport.

#include <QString>
#include <vector>

#include "lists/ListFill.h"
#include "session/Records.h"

namespace winadmin {

// Kinds whose cells are the records' own texts take the records over (see
// RecordRows); the others format their cells at once.

// Installation-wide kinds and the folder rows.
std::vector<ListRow> FolderRows(const QString& kind, const QString& key, const QString& server);
std::vector<ListRow> GroupRows(std::vector<GroupRecord>&& groups);
std::vector<ListRow> RouteRows(std::vector<RouteRecord>&& routes);
std::vector<ListRow> NumberMappingRows(std::vector<NumberMappingRecord>&& mappings);
std::vector<ListRow> GatewayRows(std::vector<GatewayRecord>&& gateways);
std::vector<ListRow> GatewayUserRows(std::vector<GatewayUserRecord>&& users);

// Server-scoped kinds; every row carries the server's name as its tag.
std::vector<ListRow> ServerRows(const std::vector<ServerRecord>& servers);
// The explorer's users: the table's rows, a few bytes each besides their texts.
ListRowSet UserRows(RowTable&& users, const QString& server);
// With a name, only that printer (or device); a name that is not among the
// records gives one row for it whose further cells say "<not found>".
std::vector<ListRow> PrinterRows(const std::vector<PrinterRecord>& printers, const QString& server,
                                 const QString& only = {});
std::vector<ListRow> DeviceRows(const std::vector<DeviceRecord>& devices,
                                const std::vector<DeviceTypeRecord>& types, const QString& server,
                                const QString& only = {});
std::vector<ListRow> ProcessRows(const std::vector<ProcessRecord>& processes,
                                 const QString& server);
// Events of at least minSeverity (compared as the 16-bit codes they are),
// each row carrying its event's id; the cells are made when shown.
std::vector<ListRow> EventRows(std::vector<EventRecord>&& events, const QString& server,
                               int minSeverity, const FillProgress& progress = {});

// Least-cost routing.
std::vector<ListRow> ZoneRows(const ZoneListRecord& zones);
std::vector<ListRow> RateRows(const std::vector<RateRecord>& rates);
std::vector<ListRow> DestinationRows(const std::vector<DestinationRecord>& destinations);

// Cell texts shared with the editors' lists.
QString RateDaysText(const RateRecord& rate);
QString RateStartText(const RateRecord& rate);
QString RateStopText(const RateRecord& rate);
QString DestinationTypeText(int type);
// user@host, or the "(None)" text when the reference is empty.
QString UserRefText(const UserRefRecord& user);
// A code as the 16-bit value the code tables and the severity filter take. A
// value that does not fit is held at the nearest end of the range, where no
// table has a code, so it still shows as unknown and still compares as large
// (or small).
int16_t Code16(int32_t value);

// The records of a list whose cells are string fields of the records, in
// column order; fields are the records' accessors.
template <class Record>
class RecordTable final : public ListRecords {
public:
    using Field = const std::string& (Record::*)() const;

    RecordTable(std::vector<Record>&& records, std::vector<Field> fields)
        : records_(std::move(records)), fields_(std::move(fields)) {}

    int CellCount() const override { return int(fields_.size()); }
    QString Cell(size_t record, int cell) const override {
        return QString::fromStdString((records_[record].*fields_[size_t(cell)])());
    }
    size_t Size() const { return records_.size(); }

private:
    std::vector<Record> records_;
    std::vector<Field> fields_;
};

// Rows over records kept whole (see ListCells): the records move into one
// table that the rows share, and no field is read until it is shown.
template <class Record>
std::vector<ListRow> RecordRows(std::vector<Record>&& records, const QString& iconKey,
                                const QString& tag,
                                std::vector<typename RecordTable<Record>::Field> fields) {
    auto table = std::make_shared<const RecordTable<Record>>(std::move(records), std::move(fields));
    std::vector<ListRow> rows(table->Size());
    for (size_t i = 0; i < rows.size(); ++i) {
        rows[i].cells = ListCells(table, i);
        rows[i].iconKey = iconKey;
        rows[i].tag = tag;
    }
    return rows;
}

}  // namespace winadmin
