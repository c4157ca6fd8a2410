#pragma once
// What the explorer's tests add to the console fixture: the reference server
// holding the demo installation, the main window opened on it, and clicks on
// tree nodes and list headers as a person makes them.

#include <QStringList>
#include <memory>

#include "support/ConsoleFixture.h"

class QAbstractItemModel;
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
    std::unique_ptr<frmMain> OpenMain();
    veldrano::server::Store& Store();

    // Clicks the node, opening the branches above it first; nullptr when no
    // node has the key.
    static QTreeWidgetItem* Click(frmMain& main, const QString& key);
    static void ClickHeader(frmMain& main, int section);

    static QString Key(const QTreeWidgetItem* node);
    static QString Kind(const QTreeWidgetItem* node);
    static QStringList ColumnTexts(const QAbstractItemModel* model, int column);
};

}  // namespace winadmin
