// The rows of least-cost routing: the zones of the routing list, and a zone's
// rates and destinations. Rates and destinations are addressed by their index
// in the zone, so their rows carry index + kind word as key ("3Rate").

#include <QTime>

#include "common/CodeTables.h"
#include "common/FieldHelpers.h"
#include "common/Labels.h"
#include "lists/ListFillKinds.h"

namespace winadmin {

namespace {

QString HostText(const std::string& host) {
    return host.empty() ? NoneText() : Text(host);
}

QString TimeText(int hour, int minute) {
    const QTime time(hour, minute);
    return time.isValid() ? time.toString(QStringLiteral("hh:mm")) : QString();
}

}  // namespace

QString UserRefText(const UserRefRecord& user) {
    if (user.user_name().empty() && user.host_name().empty()) return NoneText();
    return Text(user.user_name()) + u'@' + Text(user.host_name());
}

std::vector<ListRow> ZoneRows(const ZoneListRecord& zones) {
    // Keys as the tree's zone nodes have them, from the same walk, so that a
    // row leads to its node.
    const std::vector<const ZoneRecord*> walked = WalkZones(zones);
    std::vector<ListRow> rows;
    rows.reserve(walked.size());
    const QString kind = QStringLiteral("Zone");
    for (size_t i = 0; i < walked.size(); ++i) {
        const ZoneRecord& zone = *walked[i];
        ListRow& row = rows.emplace_back();
        row.cells = {Text(zone.name()),
                     YesNoText(zone.is_local()),
                     HostText(zone.primary_host()),
                     HostText(zone.secondary_host()),
                     YesNoText(zone.is_daemon()),
                     UserRefText(zone.daemon())};
        row.iconKey = kind;
        row.key = ZoneKey(int(i) + 1);
        row.version = zone.version();
    }
    return rows;
}

QString RateDaysText(const RateRecord& rate) {
    // Monday to Saturday each bring their separator and Sunday none, so two
    // weekdays read "Mo,Tu," and the whole week ends without a comma. The
    // administrators know the lists this way; it is kept.
    const bool days[] = {rate.monday(), rate.tuesday(),  rate.wednesday(), rate.thursday(),
                         rate.friday(), rate.saturday(), rate.sunday()};
    static const char* const keys[] = {"Mo", "Tu", "We", "Th", "Fr", "Sa", "Su"};
    QString text;
    for (int day = 0; day < 7; ++day) {
        if (!days[day]) continue;
        text += GetLabel(QLatin1String(keys[day]));
        if (day < 6) text += u',';
    }
    return text.isEmpty() ? QStringLiteral("--") : text;
}

QString RateStartText(const RateRecord& rate) {
    return TimeText(rate.start_hour(), rate.start_minute());
}

QString RateStopText(const RateRecord& rate) {
    // The end of the day is hour 24, which no clock time can hold.
    if (rate.stop_hour() == 24) return QStringLiteral("24:00");
    return TimeText(rate.stop_hour(), rate.stop_minute());
}

std::vector<ListRow> RateRows(const std::vector<RateRecord>& rates) {
    std::vector<ListRow> rows;
    rows.reserve(rates.size());
    const QString kind = QStringLiteral("Rate");
    for (const RateRecord& rate : rates) {
        ListRow& row = rows.emplace_back();
        row.cells = {RateDaysText(rate), RateStartText(rate), RateStopText(rate)};
        row.iconKey = kind;
        row.key = QString::number(rate.index()) + kind;
        row.id = rate.id();
        row.version = rate.version();
    }
    return rows;
}

QString DestinationTypeText(int type) {
    // The type as the protocol names it, without the enumeration's prefix.
    if (!pb::DestinationType_IsValid(type)) return GetLabel(QStringLiteral("<Unknown>"));
    const std::string& name = pb::DestinationType_Name(pb::DestinationType(type));
    constexpr std::string_view prefix = "DEST_";
    return Text(name.substr(name.compare(0, prefix.size(), prefix) == 0 ? prefix.size() : 0));
}

std::vector<ListRow> DestinationRows(const std::vector<DestinationRecord>& destinations) {
    std::vector<ListRow> rows;
    rows.reserve(destinations.size());
    const QString kind = QStringLiteral("Destination");
    for (const DestinationRecord& destination : destinations) {
        ListRow& row = rows.emplace_back();
        row.cells = {Text(destination.prefix()), DestinationTypeText(destination.type()),
                     YesNoText(destination.external()), Text(destination.name())};
        row.iconKey = kind;
        row.key = QString::number(destination.index()) + kind;
        row.id = destination.id();
        row.version = destination.version();
    }
    return rows;
}

}  // namespace winadmin
