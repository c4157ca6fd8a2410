#pragma once
// What the explorer's Delete command does to each kind of object, apart from
// the window: one call on the session per object.

#include <QString>

namespace winadmin {

class ServerSession;

// The object to delete: its kind word, its name (or, for zones, rates and
// destinations, its index in its collection or list) and where it lives.
struct ObjectAddress {
    QString kind;
    QString name;
    QString server{};   // users, printers, devices
    QString gateway{};  // gateway users
    int zoneIndex = 0;  // rates and destinations: their zone's place in the list
    QString zone{};     // and its name as the explorer showed it ("" to look it up)
    // Zones, rates, destinations: the version the explorer showed, and for
    // rates and destinations their identity; with them a record that another
    // console changed, moved or deleted meanwhile is refused, not mistaken.
    int64_t id = 0;
    int64_t version = 0;
};

// Deletes one object of the kinds "Group", "Route", "NumberMapping",
// "GatewayUser", "Rate", "Destination", "Zone", "Server", "User", "Printer",
// "Device". Answers false for any other kind. Throws SessionError.
bool DeleteExplorerObject(ServerSession& session, const ObjectAddress& object);

// The text after the kind word's index: "12" of "12Destination", "3" of
// "zone3"; 0 when there is no number.
int IndexOfKey(const QString& key);

}  // namespace winadmin
