#pragma once
// What the explorer's tests share: a fresh settings file, a scripted prompter
// and the reference server holding the demo installation, the main window
// opened on it, and clicks on tree nodes and list headers as a person makes
// them.

#include <QStringList>
#include <QTemporaryDir>
#include <memory>

#include "support/ScriptedPrompter.h"
#include "support/TestServer.h"

class QAbstractItemModel;
class QTreeWidgetItem;

namespace veldrano::server {
class Store;
}

namespace winadmin {

class frmMain;

class ExplorerFixture {
public:
    // Settings file and prompter; the server comes with StartServer.
    ExplorerFixture();
    ~ExplorerFixture();

    // The demo installation, logged in through the in-process channel or,
    // for tests that stop the server, over TCP.
    void StartServer(bool tcp = false);
    // Shown and activated, as the start-up routine leaves it.
    std::unique_ptr<frmMain> OpenMain();

    TestServer& Server() { return *server_; }
    veldrano::server::Store& Store();
    ScriptedPrompter& Prompter() { return prompter_; }

    // Clicks the node, opening the branches above it first; nullptr when no
    // node has the key.
    static QTreeWidgetItem* Click(frmMain& main, const QString& key);
    static void ClickHeader(frmMain& main, int section);

    static QString Key(const QTreeWidgetItem* node);
    static QString Kind(const QTreeWidgetItem* node);
    static QStringList ColumnTexts(const QAbstractItemModel* model, int column);

private:
    QTemporaryDir dir_;
    ScriptedPrompter prompter_;
    std::unique_ptr<TestServer> server_;
};

}  // namespace winadmin
