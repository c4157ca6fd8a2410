// The object commands of the main window: New, Properties and Delete, from
// the File menu, the toolbar, the pop-up menus (which forward here), a double
// click or Enter on a list row. Which kinds each command applies to, and how
// it names the object, is the kinds table's (Kinds.h); the windows they open
// are found by kind in the catalog (ObjectEditors.h). After a window reports
// a save, or after a delete, the explorer is rebuilt and finds its selection
// again by key.

#include <QAction>
#include <QApplication>
#include <QItemSelectionModel>
#include <QListView>
#include <QTreeView>
#include <QTreeWidget>

#include "common/Labels.h"
#include "common/Prompter.h"
#include "lists/ExplorerListView.h"
#include "lists/Kinds.h"
#include "lists/ListModel.h"
#include "session/CallSession.h"
#include "session/ServerSession.h"
#include "shell/ObjectCommands.h"
#include "shell/ObjectEditors.h"
#include "shell/frmMain.h"
#include "ui_frmMain.h"

namespace winadmin {

namespace {

// The place of the zone that the node belongs to (0 outside the routing zones).
int ZoneIndexOfNode(const QTreeWidgetItem* node) {
    for (; node; node = node->parent())
        if (node->data(0, NodeKindRole).toString() == QLatin1String("Zone"))
            return ZoneIndexOfKey(node->data(0, NodeKeyRole).toString());
    return 0;
}

// The request for the selected object; the name is its key, its index or, for
// the viewers, the server they show.
ObjectRequest RequestFor(const frmMain::Selection& selection) {
    ObjectRequest request;
    const KindTraits& kind = TraitsOfKind(selection.kind);
    request.kind = selection.kind;
    request.hostName = selection.Server();
    if (selection.kind == QLatin1String("GatewayUser"))
        request.gatewayAddress = selection.scope.object;
    if (kind.IsIndexed())
        request.name = QString::number(IndexOfKey(selection.key));
    else if (kind.address == KindAddress::ByServer)
        request.name = selection.Server();
    else if (selection.control == QLatin1String("TreeView") &&
             selection.kind == QLatin1String("Server"))
        request.name = selection.key;
    else
        request.name = selection.text;
    if (kind.address == KindAddress::ByIndexInZone)
        request.zoneIndex = QString::number(selection.zoneIndex);
    return request;
}

}  // namespace

void frmMain::ConnectObjectCommands() {
    connect(ui->mnuFileNew, &QAction::triggered, this, &frmMain::NewObject);
    connect(ui->mnuFileProperties, &QAction::triggered, this, &frmMain::OpenProperties);
    connect(ui->mnuFileDelete, &QAction::triggered, this, &frmMain::DeleteSelection);

    // The commands act on whichever of tree and list had the focus last.
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        if (!now) return;
        if (now == ui->tvTreeView)
            activeControl_ = QStringLiteral("TreeView");
        else if (now == static_cast<QWidget*>(ui->lvListView->DetailsView()) ||
                 now == static_cast<QWidget*>(ui->lvListView->IconView()))
            activeControl_ = QStringLiteral("ListView");
        else
            return;
        UpdateObjectCommands();
    });
    connect(ui->tvTreeView, &QTreeWidget::currentItemChanged, this,
            [this] { UpdateObjectCommands(); });
    connect(listModel_, &QAbstractItemModel::modelReset, this, [this] {
        if (QItemSelectionModel* rows = ui->lvListView->SelectionModel())
            connect(rows, &QItemSelectionModel::selectionChanged, this,
                    &frmMain::UpdateObjectCommands, Qt::UniqueConnection);
        UpdateObjectCommands();
    });
    if (QItemSelectionModel* rows = ui->lvListView->SelectionModel())
        connect(rows, &QItemSelectionModel::selectionChanged, this, &frmMain::UpdateObjectCommands);

    // The pop-up entries that forward to the object and clipboard commands
    // follow their state.
    for (QAction* target : {ui->mnuFileNew, ui->mnuFileProperties, ui->mnuFileDelete,
                            ui->mnuEditCopy, ui->mnuEditCut, ui->mnuEditPaste}) {
        // "mnuFile" and "mnuEdit" are prefixes of one length.
        const QString suffix = target->objectName().mid(int(qstrlen("mnuFile")));
        for (QAction* entry : findChildren<QAction*>()) {
            const QString name = entry->objectName();
            const bool forwards = name != target->objectName() &&
                                  (name.endsWith(suffix) || (suffix == QLatin1String("Delete") &&
                                                             name.endsWith(QLatin1String("Del"))));
            if (!forwards) continue;
            entry->setEnabled(target->isEnabled());
            connect(target, &QAction::enabledChanged, entry, &QAction::setEnabled);
        }
    }
    UpdateObjectCommands();
}

frmMain::Selection frmMain::SelectedObject() const {
    Selection selection;
    QTreeWidgetItem* node = ui->tvTreeView->currentItem();
    selection.scope = ScopeOfNode(node);
    selection.nodeKey = node ? node->data(0, NodeKeyRole).toString() : QString();
    selection.zoneIndex = ZoneIndexOfNode(node);
    if (activeControl_ == QLatin1String("ListView")) {
        QItemSelectionModel* rows = ui->lvListView->SelectionModel();
        const QModelIndex current = rows ? rows->currentIndex() : QModelIndex();
        if (!current.isValid() || !rows->isRowSelected(current.row())) return selection;
        const ListRow& row = listModel_->Row(current.row());
        selection.control = activeControl_;
        selection.kind = row.iconKey;
        selection.key = row.key;
        selection.text = row.cells.value(0);
        selection.tag = row.tag;
        selection.id = row.id;
        selection.version = row.version;
    } else if (node) {
        selection.control = QStringLiteral("TreeView");
        selection.kind = node->data(0, NodeKindRole).toString();
        selection.key = selection.nodeKey;
        selection.text = node->text(0);
        selection.version = node->data(0, NodeVersionRole).toLongLong();
    }
    return selection;
}

void frmMain::UpdateObjectCommands() {
    const QTreeWidgetItem* node = ui->tvTreeView->currentItem();
    const QString nodeKind = node ? node->data(0, NodeKindRole).toString() : QString();
    ui->mnuFileNew->setEnabled(CreatesUnder(nodeKind) && FindObjectWindow(nodeKind));

    const Selection selection = SelectedObject();
    const bool fromTree = selection.control == QLatin1String("TreeView");
    ui->mnuFileProperties->setEnabled(OpensFrom(selection.kind, fromTree) &&
                                      FindObjectWindow(selection.kind));
    ui->mnuFileDelete->setEnabled(DeletesFrom(selection.kind, fromTree));
    UpdateClipboardCommands(selection, nodeKind);
}

void frmMain::NewObject() {
    QTreeWidgetItem* node = ui->tvTreeView->currentItem();
    if (!node) return;
    const QString kind = node->data(0, NodeKindRole).toString();
    if (!CreatesUnder(kind)) return;
    ObjectRequest request;
    request.kind = kind;
    request.create = true;
    const NodeScope scope = ScopeOfNode(node);
    request.hostName = scope.server;
    if (kind == QLatin1String("Gateway")) request.gatewayAddress = scope.object;
    if (const int zone = ZoneIndexOfNode(node)) request.zoneIndex = QString::number(zone);
    if (OpenObjectEditor(this, request)) RefreshExplorer(SavedObjectKey());
}

void frmMain::OpenProperties() {
    const Selection selection = SelectedObject();
    if (selection.IsEmpty()) return;
    const bool fromTree = selection.control == QLatin1String("TreeView");
    if (!OpensFrom(selection.kind, fromTree)) return;
    if (OpenObjectEditor(this, RequestFor(selection))) RefreshExplorer(SavedObjectKey());
}

void frmMain::DeleteSelection() {
    const Selection selection = SelectedObject();
    if (selection.IsEmpty()) return;
    const bool fromTree = selection.control == QLatin1String("TreeView");
    if (!DeletesFrom(selection.kind, fromTree)) return;

    Prompt question;
    question.text = GetLabel(QStringLiteral("QuestionDelete")) + QLatin1Char('\r') +
                    QLatin1Char('\'') + selection.text + QLatin1Char('\'');
    question.icon = PromptIcon::Question;
    question.buttons = PromptButtons::YesNo;
    question.defaultButton = 2;
    if (ThePrompter().Show(question) != Answer::Yes) return;

    const ObjectRequest request = RequestFor(selection);
    ObjectAddress object;
    object.kind = selection.kind;
    object.name = request.name;
    object.server = selection.Server();
    object.gateway = selection.scope.object;
    object.zoneIndex = selection.zoneIndex;
    object.id = selection.id;
    object.version = selection.version;
    // A zone goes by its name, which is its key; its rates and destinations
    // by the name of the zone the tree showed them under.
    if (selection.kind == QLatin1String("Zone")) object.name = selection.text;
    if (object.zoneIndex) object.zone = selection.scope.object;
    ServerSession* session = TheSession();
    if (!session) return;
    if (CallSession([&] { DeleteExplorerObject(*session, object); })) RefreshExplorer();
}

}  // namespace winadmin
