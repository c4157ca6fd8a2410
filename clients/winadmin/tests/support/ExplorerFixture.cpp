#include "support/ExplorerFixture.h"

#include <QApplication>
#include <QDropEvent>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <optional>

#include "common/UserReferenceField.h"
#include "demo/DemoData.h"
#include "editors/frmUserSelection.h"
#include "lists/ExplorerListView.h"
#include "lists/ListModel.h"
#include "session/ServerSession.h"
#include "shell/HelpViewer.h"
#include "shell/frmMain.h"
#include "store/Store.h"

namespace winadmin {

void ExplorerFixture::StartDemo(bool tcp) {
    StartServer(ServerOptions("", "", tcp));
    veldrano::server::FillDemo(Store());
    SetTheSession(tcp ? server->LoginTcp() : server->Login());
    SetUserSelectionOpener(&frmUserSelection::Open);
    InstallDialogHelp();
}

std::unique_ptr<frmMain> ExplorerFixture::OpenMain() {
    auto main = std::make_unique<frmMain>();
    if (!ShowActive(*main)) qWarning("main window not activated");
    return main;
}

veldrano::server::Store& ExplorerFixture::Store() {
    return server->GetStore();
}

namespace {

// The node's centre, its branches opened and the node scrolled into view.
std::optional<QPoint> NodePoint(frmMain& main, const QString& key) {
    QTreeWidgetItem* node = main.FindNode(key);
    if (!node) return std::nullopt;
    for (QTreeWidgetItem* parent = node->parent(); parent; parent = parent->parent())
        parent->setExpanded(true);
    main.Tree()->scrollToItem(node);
    return main.Tree()->visualItemRect(node).center();
}

}  // namespace

QTreeWidgetItem* ExplorerFixture::Click(frmMain& main, const QString& key) {
    const std::optional<QPoint> at = NodePoint(main, key);
    if (!at) return nullptr;
    QTest::mouseClick(main.Tree()->viewport(), Qt::LeftButton, {}, *at);
    return main.FindNode(key);
}

bool ExplorerFixture::DragOnto(frmMain& main, const QMimeData* data, const QString& key, bool drop,
                               Qt::KeyboardModifiers modifiers) {
    const std::optional<QPoint> at = NodePoint(main, key);
    if (!at) return false;
    const Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction;
    QWidget* viewport = main.Tree()->viewport();
    QDragEnterEvent enter(*at, actions, data, Qt::LeftButton, modifiers);
    QApplication::sendEvent(viewport, &enter);
    if (!enter.isAccepted()) return false;
    QDragMoveEvent move(*at, actions, data, Qt::LeftButton, modifiers);
    QApplication::sendEvent(viewport, &move);
    if (!drop || !move.isAccepted()) return move.isAccepted();
    QDropEvent dropped(*at, actions, data, Qt::LeftButton, modifiers);
    QApplication::sendEvent(viewport, &dropped);
    return dropped.isAccepted();
}

void ExplorerFixture::ClickHeader(frmMain& main, int section) {
    QHeaderView* header = main.List()->DetailsView()->header();
    const QPoint at(header->sectionViewportPosition(section) + header->sectionSize(section) / 2,
                    header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, at);
}

QString ExplorerFixture::Key(const QTreeWidgetItem* node) {
    return node->data(0, NodeKeyRole).toString();
}

QString ExplorerFixture::Kind(const QTreeWidgetItem* node) {
    return node->data(0, NodeKindRole).toString();
}

QStringList ExplorerFixture::ColumnTexts(const QAbstractItemModel* model, int column) {
    QStringList texts;
    for (int row = 0; row < model->rowCount(); ++row)
        texts << model->index(row, column).data().toString();
    return texts;
}

int RowOf(frmMain& main, const QString& text, const QString& kind) {
    return main.ListRows()->FindText(text, kind);
}

bool ClickRow(frmMain& main, int row, Qt::KeyboardModifiers modifiers) {
    if (row < 0) return false;
    ClickRow(main.List()->DetailsView(), row, modifiers);
    return main.ActiveControl() == QLatin1String("ListView");
}

bool ClickRow(frmMain& main, const QString& text, const QString& kind) {
    return ClickRow(main, RowOf(main, text, kind));
}

QString SelectedRowText(frmMain& main) {
    QItemSelectionModel* rows = main.List()->SelectionModel();
    const QModelIndex current = rows->currentIndex();
    return current.isValid() && rows->isRowSelected(current.row())
               ? main.ListRows()->Row(current.row()).cells.value(0)
               : QString();
}

QSet<QString> ExpandedKeys(frmMain& main) {
    QSet<QString> keys;
    for (QTreeWidgetItemIterator it(main.Tree()); *it; ++it)
        if ((*it)->isExpanded()) keys.insert(ExplorerFixture::Key(*it));
    return keys;
}

bool Enabled(frmMain& main, const char* entry) {
    return main.MenuEntry(QLatin1String(entry))->isEnabled();
}

void ExplorerSuite::init() {
    fx_ = std::make_unique<ExplorerFixture>();
    fx_->StartDemo();
}

void ExplorerSuite::cleanup() {
    std::unique_ptr<ConsoleFixture> fixture = std::move(fx_);
    QCOMPARE(ConsoleFixture::Close(fixture), 0);
}

}  // namespace winadmin
