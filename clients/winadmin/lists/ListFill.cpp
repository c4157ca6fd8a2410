// The column sets of the explorer's list, the fill's dispatch by node kind,
// and the rows of the installation-wide kinds.

#include "lists/ListFill.h"

#include "common/Labels.h"
#include "common/Twips.h"
#include "lists/ListFillKinds.h"
#include "lists/ViewSettings.h"
#include "session/ServerSession.h"

namespace winadmin {

namespace {

struct ColumnDef {
    const char* key;       // header label key
    const char* widthKey;  // value name in the view's width section
    Qt::Alignment alignment = Qt::AlignLeft;
};

struct ColumnSet {
    std::initializer_list<const char*> kinds;
    const char* section;
    std::initializer_list<ColumnDef> columns;
};

// The column set of every kind, in column order, and where each column's width
// is persisted. Header keys and width value names are two vocabularies that
// grew apart; existing stores hold the value names, so every column is mapped
// by name here and never by position. Where they differ:
//
//   kind          header key       section      width value
//   LCR           "ZoneListComment" ZoneView    "ZoneComment"
//   LCR           "SecondaryHost"  ZoneView     "Secondary"
//   Rates         "Days"           RateView     "RateDays"
//   Rates         "Rate Start"     RateView     "RateStart"
//   Rates         "Rate Stop"      RateView     "RateStop"
//   Destinations  "Dest Prefix"    DestView     "DestPrefix"
//   Destinations  "Dest Type"      DestView     "DestType"
//   Destinations  "Dest External"  DestView     "Destext"
//   Destinations  "Dests"          DestView     "DestName"
//
// (The destination widths are stored in another order than the columns
// show: name, type, external, prefix.) Every other column's width value is
// its header key. "Gateway" lists gateway users, whose two columns share the
// gateways' section. UserView's "MemberName" belongs to the group editor's
// member list, not to this list.
const ColumnSet kColumnSets[] = {
    {{"Administrator", "Server", "Zone"}, "AdmView", {{"Name", "Name"}}},
    {{"Groups"}, "GroupView", {{"GroupName", "GroupName"}, {"GroupComment", "GroupComment"}}},
    {{"Routes"},
     "RouteView",
     {{"RouteName", "RouteName"},
      {"RouteComment", "RouteComment"},
      {"RouteMatchExtension", "RouteMatchExtension"},
      {"RouteMatchTSI", "RouteMatchTSI"}}},
    {{"NumberMappings"},
     "NumberMappingsView",
     {{"NumberMappingsMatch", "NumberMappingsMatch"},
      {"NumberMappingsReplace", "NumberMappingsReplace"}}},
    {{"Servers"},
     "ServerView",
     {{"ServerName", "ServerName"},
      {"ServerComment", "ServerComment"},
      {"ServerRemote", "ServerRemote", Qt::AlignHCenter},
      {"ServerUser", "ServerUser", Qt::AlignHCenter},
      {"ServerPrinter", "ServerPrinter", Qt::AlignHCenter},
      {"ServerDevice", "ServerDevice", Qt::AlignHCenter}}},
    {{"Users"}, "UserView", {{"UserName", "UserName"}, {"UserComment", "UserComment"}}},
    {{"Printers", "Printer"},
     "PrinterView",
     {{"PrinterName", "PrinterName"},
      {"PrinterComment", "PrinterComment"},
      {"PrinterType", "PrinterType"}}},
    {{"Devices", "Device"},
     "DeviceView",
     {{"DeviceName", "DeviceName"},
      {"DeviceComment", "DeviceComment"},
      {"DeviceTypeComment", "DeviceTypeComment"}}},
    {{"Processes"},
     "ProcessView",
     {{"ProcessSlot", "ProcessSlot"},
      {"ProcessID", "ProcessID", Qt::AlignRight},
      {"ProcessDirectory", "ProcessDirectory"},
      {"ProcessCommand", "ProcessCommand"},
      {"ProcessStatus", "ProcessStatus"}}},
    {{"Events"},
     "EventView",
     {{"EventTime", "EventTime"},
      {"EventSeverity", "EventSeverity"},
      {"EventOriginatorID", "EventOriginatorID"},
      {"EventMessageText", "EventMessageText"},
      {"EventMessageClass", "EventMessageClass"},
      {"EventOriginatorType", "EventOriginatorType"}}},
    {{"Gateways"},
     "GatewayView",
     {{"GatewayName", "GatewayName"}, {"GatewayComment", "GatewayComment"}}},
    {{"Gateway"}, "GatewayView", {{"MailAddress", "MailAddress"}, {"Extension", "Extension"}}},
    {{"LCR"},
     "ZoneView",
     {{"ZoneListComment", "ZoneComment"},
      {"IsLocal", "IsLocal"},
      {"PrimaryHost", "PrimaryHost"},
      {"SecondaryHost", "Secondary"},
      {"IsDaemon", "IsDaemon"},
      {"Daemon", "Daemon"}}},
    {{"Rates"},
     "RateView",
     {{"Days", "RateDays"}, {"Rate Start", "RateStart"}, {"Rate Stop", "RateStop"}}},
    {{"Destinations"},
     "DestView",
     {{"Dest Prefix", "DestPrefix"},
      {"Dest Type", "DestType"},
      {"Dest External", "Destext"},
      {"Dests", "DestName"}}},
};

const ColumnSet* ColumnSetOf(const QString& kind) {
    for (const ColumnSet& set : kColumnSets)
        for (const char* word : set.kinds)
            if (kind == QLatin1String(word)) return &set;
    return nullptr;
}

// The server of a server's branch node is its key without the branch word.
QString ServerOf(const QString& key, const NodeScope& scope, QLatin1String branch) {
    if (!scope.server.isEmpty()) return scope.server;
    return key.endsWith(branch) ? key.chopped(branch.size()) : key;
}

QString ZoneOf(const QString& key, const NodeScope& scope, ServerSession& session) {
    if (!scope.object.isEmpty()) return scope.object;
    const ZoneListRecord zones = session.Zones();
    const std::vector<const ZoneRecord*> walked = WalkZones(zones);
    const int index = ZoneIndexOfKey(key);
    return index > 0 && size_t(index) <= walked.size() ? Text(walked[size_t(index - 1)]->name())
                                                       : QString();
}

}  // namespace

std::vector<ListColumn> BuildListColumns(const QString& kind, const ColumnWidths& widths) {
    std::vector<ListColumn> columns;
    const ColumnSet* set = ColumnSetOf(kind);
    if (!set) return columns;
    const QString section = QLatin1String(set->section);
    for (const ColumnDef& def : set->columns) {
        ListColumn& column = columns.emplace_back();
        column.key = QLatin1String(def.key);
        column.header = GetLabel(column.key);
        column.alignment = def.alignment;
        column.widthSection = section;
        column.widthKey = QLatin1String(def.widthKey);
        column.width = TwipsToPixels(widths.Width(section, column.widthKey));
    }
    return columns;
}

ListRowSet FillListView(const QString& kind, const QString& key, ServerSession& session,
                        const NodeScope& scope, const FillProgress& progress) {
    ListRowSet rows;
    if (kind == QLatin1String("Administrator") || kind == QLatin1String("Zone")) {
        rows = FolderRows(kind, key, {});
    } else if (kind == QLatin1String("Server")) {
        rows = FolderRows(kind, key, key);
    } else if (kind == QLatin1String("Groups")) {
        rows = GroupRows(session.Groups());
    } else if (kind == QLatin1String("Routes")) {
        rows = RouteRows(session.Routes());
    } else if (kind == QLatin1String("NumberMappings")) {
        rows = NumberMappingRows(session.NumberMappings());
    } else if (kind == QLatin1String("Gateways")) {
        rows = GatewayRows(session.Gateways());
    } else if (kind == QLatin1String("Gateway")) {
        rows = GatewayUserRows(session.GatewayUsers(scope.object.isEmpty() ? key : scope.object));
    } else if (kind == QLatin1String("Servers")) {
        rows = ServerRows(session.Servers());
    } else if (kind == QLatin1String("Users")) {
        const QString server = ServerOf(key, scope, QLatin1String("Users"));
        rows = UserRows(session.UserListRows(server), server);
    } else if (kind == QLatin1String("Printers")) {
        const QString server = ServerOf(key, scope, QLatin1String("Printers"));
        rows = PrinterRows(session.Printers(server), server);
    } else if (kind == QLatin1String("Printer")) {
        rows = PrinterRows(session.Printers(scope.server), scope.server, scope.object);
    } else if (kind == QLatin1String("Devices") || kind == QLatin1String("Device")) {
        const bool one = kind == QLatin1String("Device");
        const QString server = one ? scope.server : ServerOf(key, scope, QLatin1String("Devices"));
        const std::vector<DeviceRecord> devices = session.Devices(server);
        rows = DeviceRows(devices, session.DeviceTypes(), server, one ? scope.object : QString());
    } else if (kind == QLatin1String("Processes")) {
        const QString server = ServerOf(key, scope, QLatin1String("Processes"));
        rows = ProcessRows(session.Processes(server), server);
    } else if (kind == QLatin1String("Events")) {
        const QString server = ServerOf(key, scope, QLatin1String("Events"));
        // The server leaves out what the filter hides, so the cap counts
        // listed events only; the rows check the filter once more in the
        // 16-bit terms of the setting.
        const int minSeverity = StoredSeverity();
        rows = EventRows(session.Events(server, minSeverity, kEventListCap), server, minSeverity,
                         progress);
    } else if (kind == QLatin1String("LCR")) {
        rows = ZoneRows(session.Zones());
    } else if (kind == QLatin1String("Rates")) {
        rows = RateRows(session.Rates(ZoneOf(key, scope, session)));
    } else if (kind == QLatin1String("Destinations")) {
        rows = DestinationRows(session.Destinations(ZoneOf(key, scope, session)));
    }
    return rows;
}

std::vector<ListRow> FolderRows(const QString& kind, const QString& key, const QString& server) {
    // The branches below the node, as the tree shows them; each row carries
    // its node's key, by which a command finds the node.
    std::vector<ListRow> rows;
    for (const NodeDef& child : FolderChildren(kind, key)) {
        ListRow& row = rows.emplace_back();
        row.cells = QStringList{child.text};
        row.iconKey = child.kind;
        row.key = child.key;
        row.tag = server;
    }
    return rows;
}

std::vector<ListRow> GroupRows(std::vector<GroupRecord>&& groups) {
    return RecordRows(std::move(groups), QStringLiteral("Group"), {},
                      {&GroupRecord::name, &GroupRecord::comment});
}

std::vector<ListRow> RouteRows(std::vector<RouteRecord>&& routes) {
    return RecordRows(std::move(routes), QStringLiteral("Route"), {},
                      {&RouteRecord::name, &RouteRecord::comment, &RouteRecord::match_extension,
                       &RouteRecord::match_tsi});
}

std::vector<ListRow> NumberMappingRows(std::vector<NumberMappingRecord>&& mappings) {
    return RecordRows(std::move(mappings), QStringLiteral("NumberMapping"), {},
                      {&NumberMappingRecord::match, &NumberMappingRecord::replace});
}

std::vector<ListRow> GatewayRows(std::vector<GatewayRecord>&& gateways) {
    return RecordRows(std::move(gateways), QStringLiteral("Gateway"), {},
                      {&GatewayRecord::name, &GatewayRecord::comment});
}

std::vector<ListRow> GatewayUserRows(std::vector<GatewayUserRecord>&& users) {
    return RecordRows(std::move(users), QStringLiteral("GatewayUser"), {},
                      {&GatewayUserRecord::mail_address, &GatewayUserRecord::extension});
}

}  // namespace winadmin
