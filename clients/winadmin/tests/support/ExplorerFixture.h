#pragma once
// What the explorer's tests add to the console fixture: the reference server
// holding the demo installation, the main window opened on it, clicks on
// tree nodes, list rows and list headers as a person makes them, and the
// test object that gives each case a fresh fixture.

#include <QObject>
#include <QSet>
#include <QStringList>
#include <memory>

#include "support/ConsoleFixture.h"

class QAbstractItemModel;
class QMimeData;
class QTreeWidgetItem;

namespace veldrano::server {
class Store;
}

namespace winadmin {

class frmMain;

class ExplorerFixture : public ConsoleFixture {
public:
    // The demo installation and the console's session on it, through the
    // in-process channel or, for tests that stop the server, over TCP.
    void StartDemo(bool tcp = false);
    // Shown and activated, as the start-up routine leaves it.
    static std::unique_ptr<frmMain> OpenMain();
    veldrano::server::Store& Store();

    // Clicks the node, opening the branches above it first; nullptr when no
    // node has the key.
    static QTreeWidgetItem* Click(frmMain& main, const QString& key);
    static void ClickHeader(frmMain& main, int section);
    // Drags data onto the node (its branches opened first) as the mouse does,
    // entering and moving over it, and with drop set lets it go there;
    // answers whether the tree took it.
    static bool DragOnto(frmMain& main, const QMimeData* data, const QString& key,
                         bool drop = false, Qt::KeyboardModifiers modifiers = {});

    static QString Key(const QTreeWidgetItem* node);
    static QString Kind(const QTreeWidgetItem* node);
    static QStringList ColumnTexts(const QAbstractItemModel* model, int column);
};

// The main window's list: the row showing text (with the icon of kind when
// given), -1 for none; a click on a row, which leaves the list the active
// control (false when there is no such row or it does not); the first cell
// of the current row while it is selected, "" otherwise.
int RowOf(frmMain& main, const QString& text, const QString& kind = {});
bool ClickRow(frmMain& main, int row, Qt::KeyboardModifiers modifiers = {});
bool ClickRow(frmMain& main, const QString& text, const QString& kind = {});
QString SelectedRowText(frmMain& main);
// The tree: the keys of the open nodes.
QSet<QString> ExpandedKeys(frmMain& main);
bool Enabled(frmMain& main, const char* entry);

// The test object of a suite on this fixture: a fresh fixture on the demo
// installation for each case (a case that stops the server starts its own
// over TCP), and after the case no scripted answer left unused.
class ExplorerSuite : public QObject {
    Q_OBJECT

protected:
    veldrano::server::Store& Store() { return fx_->Store(); }

    std::unique_ptr<ExplorerFixture> fx_;

private slots:
    void init();
    void cleanup();
};

}  // namespace winadmin
