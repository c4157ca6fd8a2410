#include "lists/Kinds.h"

#include <QHash>

namespace winadmin {

namespace {

constexpr uint16_t kOpens = kOpensFromTree | kOpensFromList;
constexpr uint16_t kDeletes = kDeletesFromTree | kDeletesFromList;

// Kinds that are both folder and row (servers, printers, devices, zones) are
// opened and deleted from either view. Groups, routes and users never show in
// the tree, so their delete-from-the-tree flag is never asked for.
constexpr KindTraits kKinds[] = {
    {"Administrator", ":/kinds/Administrator.svg", kFolder | kOpensFromTree},
    {"Servers", ":/kinds/Servers.svg", kFolder | kNewUnder},
    {"Server",
     ":/kinds/Server.svg",
     kFolder | kRow | kNewUnder | kOpens | kDeletes,
     KindAddress::ByName,
     {"mnuPopupServer", "mnuPopupServerStart", "mnuPopupServerStop"},
     StartStopEntries::AlwaysEnabled},
    {"Users", ":/kinds/Users.svg", kFolder | kNewUnder},
    {"User", ":/kinds/User.svg", kRow | kOpensFromList | kDeletes},
    {"Groups", ":/kinds/Groups.svg", kFolder | kNewUnder},
    {"Group", ":/kinds/Group.svg", kRow | kOpensFromList | kDeletes},
    {"Printers", ":/kinds/Printers.svg", kFolder | kNewUnder},
    {"Printer", ":/kinds/Printer.svg", kFolder | kRow | kNewUnder | kOpens | kDeletes},
    {"Devices", ":/kinds/Devices.svg", kFolder},
    {"Device",
     ":/kinds/Device.svg",
     kFolder | kRow | kNewUnder | kOpens | kDeletes,
     KindAddress::ByName,
     {"mnuPopupDevice", "mnuPopupDeviceStart", "mnuPopupDeviceStop"},
     StartStopEntries::AlwaysEnabled},
    {"Processes", ":/kinds/Processes.svg", kFolder | kOpensFromTree, KindAddress::ByServer},
    {"Process",
     ":/kinds/Process.svg",
     kRow | kOpensFromList,
     KindAddress::ByServer,
     {"mnuPopupProcess", "mnuPopupProcessStart", "mnuPopupProcessStop"},
     StartStopEntries::FollowRunState},
    {"Events", ":/kinds/Events.svg", kFolder | kOpensFromTree, KindAddress::ByServer},
    {"Event", ":/kinds/Event.svg", kRow | kOpensFromList, KindAddress::ByServer, {"mnuPopup2"}},
    {"Routes", ":/kinds/Routes.svg", kFolder | kNewUnder},
    {"Route", ":/kinds/Route.svg", kRow | kOpensFromList | kDeletes},
    {"NumberMappings", ":/kinds/NumberMappings.svg", kFolder | kNewUnder},
    {"NumberMapping", ":/kinds/NumberMapping.svg", kRow | kOpensFromList | kDeletesFromList},
    {"Gateways", ":/kinds/Gateways.svg", kFolder},
    {"Gateway", ":/kinds/Gateway.svg", kFolder | kRow | kNewUnder},
    {"GatewayUser", ":/kinds/GatewayUser.svg", kRow | kOpensFromList | kDeletesFromList},
    {"LCR", ":/kinds/LCR.svg", kFolder | kNewUnder},
    {"Zone",
     ":/kinds/Zone.svg",
     kFolder | kRow | kNewUnder | kOpens | kDeletes,
     KindAddress::ByIndex,
     {"mnuZonePopup", "mnuZoneNew", "mnuZoneHelp"},
     StartStopEntries::Untouched},
    {"Rates", ":/kinds/Rates.svg", kFolder | kNewUnder},
    {"Rate",
     ":/kinds/Rate.svg",
     kRow | kOpensFromList | kDeletesFromList,
     KindAddress::ByIndexInZone,
     {"mnuRatePopup", "mnuRateNew", "mnuRateHelp"},
     StartStopEntries::Untouched},
    {"Destinations", ":/kinds/Destinations.svg", kFolder | kNewUnder},
    {"Destination",
     ":/kinds/Destination.svg",
     kRow | kOpensFromList | kDeletesFromList,
     KindAddress::ByIndexInZone,
     {"mnuDestsPopup", "mnuDestsNew", "mnuDestsHelp"},
     StartStopEntries::Untouched},
};

// The rules the commands rely on: what opens or goes from the list is a row,
// what New creates under or Properties opens in the tree is a node, and only
// rows have a pop-up menu of their own, whose entries exist where the kind
// sets them.
constexpr bool WellFormed(const KindTraits& kind) {
    const auto has = [&kind](uint16_t flag) { return (kind.flags & flag) != 0; };
    const bool onList = has(kOpensFromList | kDeletesFromList) ||
                        kind.address == KindAddress::ByIndexInZone || kind.listMenu.menu;
    if (onList && !has(kRow)) return false;
    if (has(kNewUnder | kOpensFromTree) && !has(kFolder)) return false;
    if (kind.startStop != StartStopEntries::None && !kind.listMenu.first) return false;
    return (kind.listMenu.first == nullptr) == (kind.listMenu.second == nullptr);
}

constexpr bool AllWellFormed() {
    for (const KindTraits& kind : kKinds)
        if (!WellFormed(kind)) return false;
    return true;
}
static_assert(AllWellFormed(), "a kind offers a command its place in the explorer cannot have");

const KindTraits kUnknownKind = {"", nullptr, 0};

}  // namespace

const KindTraits& TraitsOfKind(const QString& word) {
    static const QHash<QString, const KindTraits*> byWord = [] {
        QHash<QString, const KindTraits*> index;
        for (const KindTraits& kind : kKinds) index.insert(QLatin1String(kind.word), &kind);
        return index;
    }();
    return *byWord.value(word, &kUnknownKind);
}

const QStringList& KnownKinds() {
    static const QStringList words = [] {
        QStringList all;
        for (const KindTraits& kind : kKinds)
            if (kind.icon) all.append(QLatin1String(kind.word));
        return all;
    }();
    return words;
}

}  // namespace winadmin
