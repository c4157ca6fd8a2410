#pragma once
// The explorer's tree: one root for the administered installation, a branch
// per kind of configuration object, and below them the servers, gateways and
// least-cost zones with their own branches. Every node carries a key that is
// unique in the tree and a kind word (its image name) that tells the list fill
// and every command what is selected.
//
// The tree is built in two steps so that a failing call never leaves half a
// tree: everything is fetched first (three calls, however large the
// installation), then the nodes are made detached and inserted in one go.

#include <QHash>
#include <QString>
#include <QStringList>
#include <vector>

#include "session/Records.h"

class QTreeWidget;
class QTreeWidgetItem;

namespace winadmin {

class ServerSession;

enum ExplorerNodeRole { NodeKeyRole = Qt::UserRole + 1, NodeKindRole };

// One node: its key, its text and its kind word.
struct NodeDef {
    QString key;
    QString text;
    QString kind;
};

// What the tree shows of the installation.
struct ExplorerTreeData {
    ZoneListRecord zones;
    QStringList gateways;
    std::vector<ServerObjectsRecord> servers;  // printer and device names included
};

// One call each for the zones, the gateways and every server's printers and
// devices. Throws SessionError.
ExplorerTreeData FetchExplorerTree(ServerSession& session);

// Clears the tree and adds every node; the root is expanded. An empty data set
// gives the root and its fixed branches, which is what the window shows when
// the installation could not be read.
void BuildExplorerTree(QTreeWidget* tree, const ExplorerTreeData& data);

// A node made detached, with its icon, key and kind.
QTreeWidgetItem* MakeExplorerNode(const NodeDef& def);

// The fixed branches below a node of kind "Administrator", "Server" (key = the
// server's name) or "Zone" (key = "zone" + index), texts looked up now; other
// kinds have none. The tree and the list of such a node both show these.
std::vector<NodeDef> FolderChildren(const QString& kind, const QString& key);

// The zones in the order of the routing list: from the first, following each
// zone's link to the next. A link to a zone not in the list, or back to one
// already walked, ends the walk. Zone index i (from 1) is element i - 1.
std::vector<const ZoneRecord*> WalkZones(const ZoneListRecord& zones);

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
NodeScope ScopeOfNode(const QTreeWidgetItem* node);

// Every node by key, for finding many nodes again after a rebuild.
QHash<QString, QTreeWidgetItem*> IndexNodesByKey(QTreeWidget* tree);

// Whether objects of a dragged row kind may be dropped on a node of this kind:
// users onto "Users", printers onto "Printers" or a printer, devices onto
// "Devices" or a device, gateway users onto a gateway.
bool AcceptsDrop(const QString& nodeKind, const QString& draggedKind);

}  // namespace winadmin
