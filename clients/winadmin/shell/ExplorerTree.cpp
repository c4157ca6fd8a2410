#include "shell/ExplorerTree.h"

#include <QTreeWidget>

#include "common/Labels.h"
#include "lists/KindIcons.h"
#include "session/ServerSession.h"

namespace winadmin {

namespace {

const QString kAdministrator = QStringLiteral("Administrator");
const QString kServer = QStringLiteral("Server");
const QString kZone = QStringLiteral("Zone");

// A node keeps its text, key and kind as plain members and answers its icon
// from the kind. A large tree is tens of thousands of nodes; the generic item
// would hold four variants in a list per node, grown one by one.
class ExplorerNodeItem final : public QTreeWidgetItem {
public:
    explicit ExplorerNodeItem(const NodeDef& def)
        : QTreeWidgetItem(UserType), text_(def.text), key_(def.key), kind_(def.kind) {}

    QVariant data(int column, int role) const override {
        if (column == 0) {
            switch (role) {
                case Qt::DisplayRole:
                case Qt::EditRole:
                    return text_;
                case Qt::DecorationRole: {
                    const QVariant own = QTreeWidgetItem::data(column, role);
                    return own.isValid() ? own : QVariant(KindIcon(kind_));
                }
                case NodeKeyRole:
                    return key_;
                case NodeKindRole:
                    return kind_;
                default:
                    break;
            }
        }
        return QTreeWidgetItem::data(column, role);
    }

    void setData(int column, int role, const QVariant& value) override {
        if (column == 0) {
            if (role == Qt::DisplayRole || role == Qt::EditRole)
                text_ = value.toString();
            else if (role == NodeKeyRole)
                key_ = value.toString();
            else if (role == NodeKindRole)
                kind_ = value.toString();
        }
        // The base keeps a copy too, and tells the views.
        QTreeWidgetItem::setData(column, role, value);
    }

    QTreeWidgetItem* clone() const override {
        auto* copy = new ExplorerNodeItem({key_, text_, kind_});
        for (int i = 0; i < childCount(); ++i) copy->addChild(child(i)->clone());
        return copy;
    }

private:
    QString text_;
    QString key_;
    QString kind_;
};

void AddChildren(QTreeWidgetItem* parent, const std::vector<NodeDef>& defs) {
    QList<QTreeWidgetItem*> children;
    children.reserve(qsizetype(defs.size()));
    for (const NodeDef& def : defs) children.append(MakeExplorerNode(def));
    parent->addChildren(children);
}

// A server's printers or devices below its branch node. The leaves are the
// bulk of a large tree, so the per-leaf work is kept to the item itself.
void AddLeaves(QTreeWidgetItem* branch, const QString& branchKey,
               const google::protobuf::RepeatedPtrField<std::string>& names, const QString& kind) {
    QList<QTreeWidgetItem*> leaves;
    leaves.reserve(names.size());
    for (const std::string& name : names) {
        const QString text = QString::fromStdString(name);
        leaves.append(MakeExplorerNode({branchKey + text, text, kind}));
    }
    branch->addChildren(leaves);
}

const QTreeWidgetItem* AncestorOfKind(const QTreeWidgetItem* node, const QString& kind) {
    for (; node; node = node->parent())
        if (node->data(0, NodeKindRole).toString() == kind) return node;
    return nullptr;
}

}  // namespace

ExplorerTreeData FetchExplorerTree(ServerSession& session) {
    ExplorerTreeData data;
    data.zones = session.Zones();
    for (const GatewayRecord& gateway : session.Gateways())
        data.gateways.append(QString::fromStdString(gateway.name()));
    data.servers = session.ServerObjects();
    return data;
}

QTreeWidgetItem* MakeExplorerNode(const NodeDef& def) {
    return new ExplorerNodeItem(def);
}

void BuildExplorerTree(QTreeWidget* tree, const ExplorerTreeData& data) {
    tree->clear();
    QTreeWidgetItem* root =
        MakeExplorerNode({kAdministrator, GetLabel(kAdministrator), kAdministrator});
    AddChildren(root, FolderChildren(kAdministrator, kAdministrator));
    // The level-one branches by key; their order is the table's.
    auto branch = [root](const char* key) {
        for (int i = 0; i < root->childCount(); ++i)
            if (root->child(i)->data(0, NodeKeyRole).toString() == QLatin1String(key))
                return root->child(i);
        return static_cast<QTreeWidgetItem*>(nullptr);
    };

    QTreeWidgetItem* lcr = branch("LCR");
    const std::vector<const ZoneRecord*> zones = WalkZones(data.zones);
    QList<QTreeWidgetItem*> zoneNodes;
    zoneNodes.reserve(qsizetype(zones.size()));
    for (size_t i = 0; i < zones.size(); ++i) {
        const QString key = ZoneKey(int(i) + 1);
        QTreeWidgetItem* zone =
            MakeExplorerNode({key, QString::fromStdString(zones[i]->name()), kZone});
        zone->setData(0, NodeVersionRole, qint64(zones[i]->version()));
        AddChildren(zone, FolderChildren(kZone, key));
        zoneNodes.append(zone);
    }
    lcr->addChildren(zoneNodes);

    std::vector<NodeDef> gateways;
    gateways.reserve(size_t(data.gateways.size()));
    for (const QString& gateway : data.gateways)
        gateways.push_back({gateway, gateway, QStringLiteral("Gateway")});
    AddChildren(branch("Gateways"), gateways);

    const QString printers = QStringLiteral("Printers");
    const QString devices = QStringLiteral("Devices");
    QList<QTreeWidgetItem*> serverNodes;
    serverNodes.reserve(qsizetype(data.servers.size()));
    for (const ServerObjectsRecord& objects : data.servers) {
        const QString name = QString::fromStdString(objects.server());
        QTreeWidgetItem* server = MakeExplorerNode({name, name, kServer});
        AddChildren(server, FolderChildren(kServer, name));
        for (int i = 0; i < server->childCount(); ++i) {
            QTreeWidgetItem* child = server->child(i);
            const QString kind = child->data(0, NodeKindRole).toString();
            const QString key = child->data(0, NodeKeyRole).toString();
            if (kind == printers)
                AddLeaves(child, key, objects.printers(), QStringLiteral("Printer"));
            else if (kind == devices)
                AddLeaves(child, key, objects.devices(), QStringLiteral("Device"));
        }
        serverNodes.append(server);
    }
    branch("Servers")->addChildren(serverNodes);

    // Inserted last, so that the view learns of the whole tree at once.
    tree->addTopLevelItem(root);
    root->setExpanded(true);
}

NodeScope ScopeOfNode(const QTreeWidgetItem* node) {
    NodeScope scope;
    if (!node) return scope;
    if (const QTreeWidgetItem* server = AncestorOfKind(node, kServer))
        scope.server = server->data(0, NodeKeyRole).toString();
    const QString kind = node->data(0, NodeKindRole).toString();
    if (kind == QLatin1String("Printer") || kind == QLatin1String("Device") || kind == kZone)
        scope.object = node->text(0);
    else if (kind == QLatin1String("Gateway"))
        scope.object = node->data(0, NodeKeyRole).toString();
    else if (kind == QLatin1String("Rates") || kind == QLatin1String("Destinations")) {
        if (const QTreeWidgetItem* zone = AncestorOfKind(node, kZone)) scope.object = zone->text(0);
    }
    return scope;
}

QHash<QString, QTreeWidgetItem*> IndexNodesByKey(QTreeWidget* tree) {
    QHash<QString, QTreeWidgetItem*> index;
    QList<QTreeWidgetItem*> pending;
    for (int i = 0; i < tree->topLevelItemCount(); ++i) pending.append(tree->topLevelItem(i));
    while (!pending.isEmpty()) {
        QTreeWidgetItem* item = pending.takeLast();
        index.insert(item->data(0, NodeKeyRole).toString(), item);
        for (int i = 0; i < item->childCount(); ++i) pending.append(item->child(i));
    }
    return index;
}

QString KindOf(const QTreeWidgetItem* node) {
    return node ? node->data(0, NodeKindRole).toString() : QString();
}

bool AcceptsDrop(const QString& nodeKind, const QString& draggedKind) {
    if (draggedKind == QLatin1String("User")) return nodeKind == QLatin1String("Users");
    if (draggedKind == QLatin1String("Printer"))
        return nodeKind == QLatin1String("Printers") || nodeKind == QLatin1String("Printer");
    if (draggedKind == QLatin1String("Device"))
        return nodeKind == QLatin1String("Devices") || nodeKind == QLatin1String("Device");
    if (draggedKind == QLatin1String("GatewayUser")) return nodeKind == QLatin1String("Gateway");
    return false;
}

}  // namespace winadmin
