// The rows of the server-scoped kinds: servers, and a server's users,
// printers, devices, processes and events. Every row carries its server's
// name as tag, by which the commands find the server again.

#include <QDateTime>
#include <QHash>
#include <algorithm>
#include <limits>

#include "common/CodeTables.h"
#include "common/Labels.h"
#include "lists/ListFillKinds.h"

namespace winadmin {

namespace {

// Rows between two reports of the running count: often enough to see it
// move, seldom enough that the status bar costs nothing.
constexpr int kProgressStep = 500;

ListRow MakeRow(QStringList cells, const QString& iconKey, const QString& server) {
    ListRow row;
    row.cells = std::move(cells);
    row.iconKey = iconKey;
    row.tag = server;
    return row;
}

// The one row of a printer or device node whose object has gone since the
// tree was built (another administrator deleted it).
ListRow NotFoundRow(const QString& name, const QString& iconKey, const QString& server) {
    const QString notFound = GetLabel(QStringLiteral("<not found>"));
    return MakeRow({name, notFound, notFound}, iconKey, server);
}

}  // namespace

int16_t Code16(int32_t value) {
    return int16_t(std::clamp<int32_t>(value, std::numeric_limits<int16_t>::min(),
                                       std::numeric_limits<int16_t>::max()));
}

std::vector<ListRow> ServerRows(const std::vector<ServerRecord>& servers) {
    // The three role columns answer the question their headers ask ("User
    // Server"): whether the server has the role. The counts of its users,
    // printers and devices are one click away in its branches.
    std::vector<ListRow> rows;
    rows.reserve(servers.size());
    const QString kind = QStringLiteral("Server");
    for (const ServerRecord& server : servers) {
        const QString name = Text(server.name());
        rows.push_back(MakeRow({name, Text(server.comment()), YesNoText(server.remote()),
                                YesNoText(server.user_server()), YesNoText(server.printer_server()),
                                YesNoText(server.device_server())},
                               kind, name));
    }
    return rows;
}

ListRowSet UserRows(RowTable&& users, const QString& server) {
    const size_t count = users.Size();
    return ListRowSet(std::make_shared<const TableRecords>(std::move(users)), count,
                      QStringLiteral("User"), server);
}

std::vector<ListRow> PrinterRows(const std::vector<PrinterRecord>& printers, const QString& server,
                                 const QString& only) {
    std::vector<ListRow> rows;
    rows.reserve(only.isEmpty() ? printers.size() : 1);
    const QString kind = QStringLiteral("Printer");
    for (const PrinterRecord& printer : printers) {
        const QString name = Text(printer.name());
        if (!only.isEmpty() && name != only) continue;
        rows.push_back(
            MakeRow({name, Text(printer.comment()), PrinterTypeText(Code16(printer.type()))}, kind,
                    server));
    }
    if (!only.isEmpty() && rows.empty()) rows.push_back(NotFoundRow(only, kind, server));
    return rows;
}

std::vector<ListRow> DeviceRows(const std::vector<DeviceRecord>& devices,
                                const std::vector<DeviceTypeRecord>& types, const QString& server,
                                const QString& only) {
    QHash<int, QString> typeNames;
    for (const DeviceTypeRecord& type : types) typeNames.insert(type.id(), Text(type.name()));
    const QString notFound = GetLabel(QStringLiteral("<not found>"));
    std::vector<ListRow> rows;
    rows.reserve(only.isEmpty() ? devices.size() : 1);
    const QString kind = QStringLiteral("Device");
    for (const DeviceRecord& device : devices) {
        const QString name = Text(device.name());
        if (!only.isEmpty() && name != only) continue;
        // The device's comment is its primary line's.
        rows.push_back(MakeRow(
            {name, Text(device.primary().comment()), typeNames.value(device.type(), notFound)},
            kind, server));
    }
    if (!only.isEmpty() && rows.empty()) rows.push_back(NotFoundRow(only, kind, server));
    return rows;
}

std::vector<ListRow> ProcessRows(const std::vector<ProcessRecord>& processes,
                                 const QString& server) {
    std::vector<ListRow> rows;
    rows.reserve(processes.size());
    const QString kind = QStringLiteral("Process");
    for (const ProcessRecord& process : processes)
        rows.push_back(MakeRow({QString::number(process.slot()), CountOrDashText(process.pid()),
                                Text(process.directory()), Text(process.command()),
                                ProcessStatusText(process.exit_status(), process.run_state())},
                               kind, server));
    return rows;
}

namespace {

// A server's events, their cells made when they are shown: a viewer that
// lists ten thousand events formats the screenful in sight, and a refresh
// that adds a few rows formats nothing for those it keeps.
class EventTable final : public ListRecords {
public:
    explicit EventTable(std::vector<EventRecord>&& events) : events_(std::move(events)) {}

    int CellCount() const override { return 6; }
    QString Cell(size_t record, int cell) const override {
        const EventRecord& event = events_[record];
        switch (cell) {
            case 0:
                return QDateTime::fromSecsSinceEpoch(event.time())
                    .toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
            case 1:
                return SeverityText(Code16(event.severity()));
            case 2:
                return QString::number(event.originator_id());
            case 3:
                return Text(event.text());
            case 4:
                return MessageClassText(event.message_class());
            default:
                return OriginatorText(Code16(event.originator_type()));
        }
    }
    const EventRecord& Event(size_t record) const { return events_[record]; }
    size_t Size() const { return events_.size(); }

private:
    std::vector<EventRecord> events_;
};

}  // namespace

std::vector<ListRow> EventRows(std::vector<EventRecord>&& events, const QString& server,
                               int minSeverity, const FillProgress& progress) {
    auto table = std::make_shared<const EventTable>(std::move(events));
    std::vector<ListRow> rows;
    rows.reserve(table->Size());
    const QString kind = QStringLiteral("Event");
    for (size_t i = 0; i < table->Size(); ++i) {
        const EventRecord& event = table->Event(i);
        if (Code16(event.severity()) < minSeverity) continue;
        ListRow& row = rows.emplace_back();
        row.cells = ListCells(table, i);
        row.iconKey = kind;
        row.tag = server;
        row.id = event.id();
        if (progress && rows.size() % kProgressStep == 0) progress(int(rows.size()));
    }
    if (progress) progress(int(rows.size()));
    return rows;
}

}  // namespace winadmin
