// Copy, cut and paste of users, printers, devices and gateway users, and the
// drop of list rows on a tree node. The clipboard names the object (kind,
// name, server or gateway) rather than holding its data: Paste asks the
// server to copy or move it, in one request that either does all of it or
// nothing (save the one loss the paste order keeps: a cut object whose name
// the target already has).

#include <QAction>
#include <QApplication>
#include <QDropEvent>
#include <QListView>
#include <QMimeData>
#include <QTreeView>
#include <QTreeWidget>

#include "common/Labels.h"
#include "common/Prompter.h"
#include "lists/ExplorerListView.h"
#include "lists/ListModel.h"
#include "session/CallSession.h"
#include "session/ServerSession.h"
#include "shell/frmMain.h"
#include "ui_frmMain.h"

namespace winadmin {

namespace {

const ServerRecord* FindServer(const std::vector<ServerRecord>& servers, const QString& name) {
    for (const ServerRecord& server : servers)
        if (Text(server.name()) == name) return &server;
    return nullptr;
}

// For a user, what the paste order checks before it may ask its question:
// both servers there and not blocking, the user there. Then, from a local
// server to a remote one, the question itself. Answers whether to go on.
bool MayTransferUser(const frmMain::ClipboardItem& item, const QString& target) {
    const std::vector<ServerRecord> servers = TheSession()->Servers();
    const ServerRecord* from = FindServer(servers, item.source);
    const ServerRecord* to = FindServer(servers, target);
    if (!from || !to || from->blocking()) return false;
    if (TheSession()->GetUser(item.source, item.name).is_new() || to->blocking()) return false;
    if (from->remote() || !to->remote()) return true;
    Prompt question;
    question.text = GetLabel(QStringLiteral("UserFromLocalToRemote"));
    question.icon = PromptIcon::Exclamation;
    question.buttons = PromptButtons::YesNo;
    question.defaultButton = 2;
    return ThePrompter().Show(question) == Answer::Yes;
}

}  // namespace

void frmMain::ConnectClipboard() {
    connect(ui->mnuEditCopy, &QAction::triggered, this, [this] { CopyObject(false); });
    connect(ui->mnuEditCut, &QAction::triggered, this, [this] { CopyObject(true); });
    connect(ui->mnuEditPaste, &QAction::triggered, this, &frmMain::PasteObject);
}

void frmMain::UpdateClipboardCommands(const Selection& selection, const QString& nodeKind) {
    const bool takes = !selection.IsEmpty() && ListModel::IsDraggable(selection.kind);
    ui->mnuEditCopy->setEnabled(takes);
    ui->mnuEditCut->setEnabled(takes);
    ui->mnuEditPaste->setEnabled(clipboard_ && AcceptsDrop(nodeKind, clipboard_->kind));
}

void frmMain::CopyObject(bool cut) {
    // The focus decides, not the control the commands remember: Copy in
    // any other control is no copy of an object.
    const QWidget* focus = QApplication::focusWidget();
    const bool inTree = focus == ui->tvTreeView;
    const bool inList = focus == static_cast<QWidget*>(ui->lvListView->DetailsView()) ||
                        focus == static_cast<QWidget*>(ui->lvListView->IconView());
    const Selection selection = SelectedObject();
    const bool fromFocus = (inTree && selection.control == QLatin1String("TreeView")) ||
                           (inList && selection.control == QLatin1String("ListView"));
    if (!fromFocus || !ListModel::IsDraggable(selection.kind)) {
        ThePrompter().Beep();
        return;
    }
    cut_ = cut;
    clipboard_ =
        ClipboardItem{selection.kind, selection.text,
                      selection.kind == QLatin1String("GatewayUser") ? selection.scope.object
                                                                     : selection.Server()};
    UpdateObjectCommands();
}

void frmMain::PasteObject() {
    if (!clipboard_) return;
    const QTreeWidgetItem* node = ui->tvTreeView->currentItem();
    if (!node || !AcceptsDrop(KindOf(node), clipboard_->kind)) return;
    const ClipboardItem item = *clipboard_;
    if (!TransferObject(item, node, cut_)) return;
    // What was moved is no longer where the clipboard names it.
    if (cut_) clipboard_.reset();
    RefreshExplorer();
}

bool frmMain::TransferObject(const ClipboardItem& item, const QTreeWidgetItem* target, bool cut) {
    const NodeScope scope = ScopeOfNode(target);
    const bool gatewayUser = item.kind == QLatin1String("GatewayUser");
    const QString to = gatewayUser ? scope.object : scope.server;
    if (to.isEmpty()) return false;
    pb::TransferOutcome outcome = pb::TRANSFER_STOPPED;
    bool answered = false;
    CallSession([&] {
        if (item.kind == QLatin1String("User") && !MayTransferUser(item, to)) return;
        outcome = TheSession()->TransferObject(item.kind, item.source, item.name, to, cut);
        answered = true;
    });
    if (outcome == pb::TRANSFER_TARGET_EXISTS) ThePrompter().Beep();
    return answered;
}

void frmMain::DropOnTree(QDropEvent* event) {
    const QTreeWidgetItem* node = ui->tvTreeView->itemAt(event->position().toPoint());
    const QMimeData* data = event->mimeData();
    const QString kind = ListModel::DraggedKind(data);
    if (!node || !AcceptsDrop(KindOf(node), kind)) {
        event->ignore();
        return;
    }
    // As file managers do: a plain drop copies, Shift moves.
    const bool move = event->modifiers().testFlag(Qt::ShiftModifier);
    event->setDropAction(move ? Qt::MoveAction : Qt::CopyAction);
    event->accept();
    // The rows come from the list, which shows the current node: a gateway
    // user's gateway is that node's.
    const QString gateway = ScopeOfNode(ui->tvTreeView->currentItem()).object;
    std::vector<ClipboardItem> items;
    for (const QString& line : ListModel::DraggedRows(data)) {
        const QStringList parts = line.split(u'\t');
        if (parts.size() < 3) continue;
        items.push_back(
            {parts[0], parts[2], parts[0] == QLatin1String("GatewayUser") ? gateway : parts[1]});
    }
    const QString targetKey = node->data(0, NodeKeyRole).toString();
    // Questions and refreshes wait until the drag has ended.
    QMetaObject::invokeMethod(
        this,
        [this, items, targetKey, move] {
            const QTreeWidgetItem* target = FindNode(targetKey);
            if (!target) return;
            bool any = false;
            for (const ClipboardItem& item : items) any |= TransferObject(item, target, move);
            if (any) RefreshExplorer();
        },
        Qt::QueuedConnection);
}

}  // namespace winadmin
