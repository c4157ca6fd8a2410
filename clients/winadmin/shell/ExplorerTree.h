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

#include "lists/ExplorerNodes.h"
#include "session/Records.h"

class QTreeWidget;
class QTreeWidgetItem;

namespace winadmin {

class ServerSession;

// A zone node also keeps the version of the zone it showed (NodeVersionRole).
enum ExplorerNodeRole { NodeKeyRole = Qt::UserRole + 1, NodeKindRole, NodeVersionRole };

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

NodeScope ScopeOfNode(const QTreeWidgetItem* node);

// Every node by key, for finding many nodes again after a rebuild.
QHash<QString, QTreeWidgetItem*> IndexNodesByKey(QTreeWidget* tree);

// Whether objects of a dragged row kind may be dropped on a node of this kind:
// users onto "Users", printers onto "Printers" or a printer, devices onto
// "Devices" or a device, gateway users onto a gateway.
bool AcceptsDrop(const QString& nodeKind, const QString& draggedKind);
// The node's kind word; "" for no node.
QString KindOf(const QTreeWidgetItem* node);

}  // namespace winadmin
