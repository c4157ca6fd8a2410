#include "shell/ObjectCommands.h"

#include "session/ServerSession.h"
#include "shell/ExplorerTree.h"

namespace winadmin {

namespace {

// The zone at a place in the routing list, as the tree numbers zones.
QString ZoneNameAt(ServerSession& session, int index) {
    const ZoneListRecord zones = session.Zones();
    const ZoneRecord* zone = ZoneAtPlace(zones, index);
    return zone ? QString::fromStdString(zone->name()) : QString();
}

}  // namespace

int IndexOfKey(const QString& key) {
    if (key.startsWith(QLatin1String("zone"))) return ZoneIndexOfKey(key);
    int digits = 0;
    while (digits < key.size() && key.at(digits).isDigit()) ++digits;
    return key.left(digits).toInt();
}

bool DeleteExplorerObject(ServerSession& session, const ObjectAddress& object) {
    const QString& kind = object.kind;
    if (kind == QLatin1String("Group"))
        session.DeleteGroup(object.name);
    else if (kind == QLatin1String("Route"))
        session.DeleteRoute(object.name);
    else if (kind == QLatin1String("NumberMapping"))
        session.DeleteNumberMapping(object.name);
    else if (kind == QLatin1String("GatewayUser"))
        session.DeleteGatewayUser(object.gateway, object.name);
    else if (kind == QLatin1String("Server"))
        session.DeleteServer(object.name);
    else if (kind == QLatin1String("User"))
        session.DeleteUser(object.server, object.name);
    else if (kind == QLatin1String("Printer"))
        session.DeletePrinter(object.server, object.name);
    else if (kind == QLatin1String("Device"))
        session.DeleteDevice(object.server, object.name);
    else if (kind == QLatin1String("Zone")) {
        // By its name, the zone's key, which does not move.
        session.DeleteZone(object.name, object.version);
    } else if (kind == QLatin1String("Rate") || kind == QLatin1String("Destination")) {
        const QString zone =
            object.zone.isEmpty() ? ZoneNameAt(session, object.zoneIndex) : object.zone;
        if (kind == QLatin1String("Rate"))
            session.DeleteRate(zone, object.name.toInt(), object.version, object.id);
        else
            session.DeleteDestination(zone, object.name.toInt(), object.version, object.id);
    } else {
        return false;
    }
    return true;
}

}  // namespace winadmin
