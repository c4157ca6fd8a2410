#include "lists/ExplorerNodes.h"

#include <QHash>
#include <QSet>

#include "common/Labels.h"

namespace winadmin {

namespace {

const QString kAdministrator = QStringLiteral("Administrator");
const QString kServer = QStringLiteral("Server");
const QString kZone = QStringLiteral("Zone");
const QString kZonePrefix = QStringLiteral("zone");

// The branches below the root in the order they are shown: key, label key,
// kind. "LCR" is the one whose label key differs from its key.
struct BranchDef {
    const char* key;
    const char* labelKey;
};
constexpr BranchDef kLevelOne[] = {
    {"Groups", "Groups"},     {"Routes", "Routes"},
    {"LCR", "Lcr"},           {"NumberMappings", "NumberMappings"},
    {"Gateways", "Gateways"}, {"Servers", "Servers"},
};

// A server's branches; their keys are the server's name followed by the kind,
// which keeps them unique across servers.
constexpr const char* kServerBranches[] = {"Users", "Printers", "Devices", "Processes", "Events"};

QString Latin(const char* text) {
    return QString::fromLatin1(text);
}

}  // namespace

std::vector<NodeDef> FolderChildren(const QString& kind, const QString& key) {
    std::vector<NodeDef> children;
    if (kind == kAdministrator) {
        for (const BranchDef& branch : kLevelOne)
            children.push_back(
                {Latin(branch.key), GetLabel(Latin(branch.labelKey)), Latin(branch.key)});
    } else if (kind == kServer) {
        for (const char* branch : kServerBranches)
            children.push_back({key + Latin(branch), GetLabel(Latin(branch)), Latin(branch)});
    } else if (kind == kZone) {
        const QString index = QString::number(ZoneIndexOfKey(key));
        for (const char* branch : {"Rates", "Destinations"})
            children.push_back({Latin(branch) + index, GetLabel(Latin(branch)), Latin(branch)});
    }
    return children;
}

std::vector<const ZoneRecord*> WalkZones(const ZoneListRecord& zones) {
    QHash<QString, const ZoneRecord*> byName;
    byName.reserve(zones.zones_size());
    for (const ZoneRecord& zone : zones.zones())
        byName.insert(QString::fromStdString(zone.name()), &zone);
    std::vector<const ZoneRecord*> walked;
    walked.reserve(size_t(zones.zones_size()));
    QSet<QString> seen;
    for (QString name = QString::fromStdString(zones.first()); !name.isEmpty();) {
        const ZoneRecord* zone = byName.value(name);
        if (!zone || seen.contains(name)) break;
        seen.insert(name);
        walked.push_back(zone);
        name = QString::fromStdString(zone->next());
    }
    return walked;
}

const ZoneRecord* ZoneAtPlace(const ZoneListRecord& zones, int place) {
    const std::vector<const ZoneRecord*> walked = WalkZones(zones);
    return place >= 1 && place <= int(walked.size()) ? walked[size_t(place - 1)] : nullptr;
}

QString ZoneKey(int index) {
    return kZonePrefix + QString::number(index);
}

int ZoneIndexOfKey(const QString& key) {
    // Commands and lists recover the index by removing the known prefix; the
    // Rates and Destinations keys end in the same index.
    for (const QString& prefix :
         {kZonePrefix, QStringLiteral("Rates"), QStringLiteral("Destinations")}) {
        if (!key.startsWith(prefix)) continue;
        bool ok = false;
        const int index = key.mid(prefix.size()).toInt(&ok);
        return ok && index > 0 ? index : 0;
    }
    return 0;
}

}  // namespace winadmin
