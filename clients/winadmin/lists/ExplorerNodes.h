#pragma once
// What the explorer's tree and its list agree on about nodes: a node's key,
// text and kind word, the fixed branches below the folder nodes, the order
// and keys of the routing zones, and what a node stands for. The list of a
// folder node shows the same branches as the tree, and the list fill finds a
// zone by the same key, so both read them here rather than from the tree.

#include <QString>
#include <vector>

#include "session/Records.h"

namespace winadmin {

// One node: its key, its text and its kind word.
struct NodeDef {
    QString key;
    QString text;
    QString kind;
};

// The fixed branches below a node of kind "Administrator", "Server" (key = the
// server's name) or "Zone" (key = "zone" + index), texts looked up now; other
// kinds have none. The tree and the list of such a node both show these.
std::vector<NodeDef> FolderChildren(const QString& kind, const QString& key);

// The zones in the order of the routing list: from the first, following each
// zone's link to the next. A link to a zone not in the list, or back to one
// already walked, ends the walk. Zone index i (from 1) is element i - 1.
std::vector<const ZoneRecord*> WalkZones(const ZoneListRecord& zones);
// The zone at a 1-based place of that walk; nullptr when there is none.
const ZoneRecord* ZoneAtPlace(const ZoneListRecord& zones, int place);

// "zone" + index and its inverse (0 when the key is no zone key).
QString ZoneKey(int index);
int ZoneIndexOfKey(const QString& key);

// What a node stands for beyond its kind and key: the server it belongs to
// (server-scoped kinds) and the named object (printer, device, gateway, or the
// zone of a zone, rates or destinations node).
struct NodeScope {
    QString server;
    QString object;
};

}  // namespace winadmin
