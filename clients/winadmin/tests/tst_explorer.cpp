// The explorer in the main window against the reference server: the tree of
// the whole installation, the list each node fills, Refresh keeping the view,
// and failed calls.

#include <QAction>
#include <QApplication>
#include <QTest>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <memory>

#include "common/Labels.h"
#include "demo/DemoData.h"
#include "lists/ExplorerListView.h"
#include "lists/ListModel.h"
#include "shell/frmMain.h"
#include "store/Store.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

constexpr auto Key = &ExplorerFixture::Key;

QStringList NodeKeys(QTreeWidget* tree) {
    QStringList keys;
    for (QTreeWidgetItemIterator it(tree); *it; ++it) keys << Key(*it);
    return keys;
}

}  // namespace

class TestExplorer : public ExplorerSuite {
    Q_OBJECT

private slots:
    void TreeHoldsTheInstallationAndNodesFillTheList();
    void RefreshKeepsTheViewEvenWhenItFails();
};

void TestExplorer::TreeHoldsTheInstallationAndNodesFillTheList() {
    // Texts beyond ASCII travel as UTF-8 through the compact table a list
    // call answers.
    Store().CommitUser(veldrano::server::demo::MakeUser("fxmaster", "zoë", "Café ☎ desk"));
    auto main = fx_->OpenMain();
    QTreeWidget* tree = main->Tree();
    QCOMPARE(tree->topLevelItemCount(), 1);
    QCOMPARE(Key(tree->currentItem()), QStringLiteral("Administrator"));

    // Samples of the tree as an outline: depth, key, kind, text. (The
    // branches of a folder, and their order, are tst_listfill's.)
    QStringList outline;
    for (QTreeWidgetItemIterator it(tree); *it; ++it) {
        int depth = 0;
        for (const QTreeWidgetItem* up = (*it)->parent(); up; up = up->parent()) ++depth;
        outline << QString("%1 %2 %3 %4")
                       .arg(depth)
                       .arg(Key(*it), ExplorerFixture::Kind(*it), (*it)->text(0));
        QVERIFY2(!(*it)->icon(0).isNull(), qPrintable(Key(*it)));
    }
    for (const QString& node : {"3 fxmasterUsers Users " + GetLabel("Users"),
                                QString("4 fxmasterPrinterslj-acc Printer lj-acc")})
        QVERIFY2(outline.contains(node), qPrintable(node));
    QCOMPARE(outline.filter(QStringLiteral(" Server ")).size(),
             int(Store().ListServerObjects().size()));

    // However many servers, the tree costs three calls.
    auto* grpc = static_cast<GrpcServerSession*>(TheSession());
    const uint64_t calls = grpc->RpcCount();
    main->BuildTree();
    QCOMPARE(grpc->RpcCount() - calls, uint64_t(3));

    // Nodes fill the list: one named by its key, one whose zone is the
    // tree's, a leaf; the first row is selected.
    auto& store = Store();
    ListModel* model = main->ListRows();
    const std::tuple<const char*, int, int, const char*> expectations[] = {
        {"fxline01Devices", 3, int(store.ListDevices("fxline01").size()), "Device"},
        {"Rates2", 3, int(store.ListRates(store.ListZones().zones(1).name()).size()), "Rate"},
        {"fxprint01Printersljfast", 3, 1, "Printer"},
    };
    for (const auto& [node, columns, rows, rowKind] : expectations) {
        QVERIFY2(ExplorerFixture::Click(*main, QLatin1String(node)), node);
        QCOMPARE(model->columnCount(), columns);
        QVERIFY2(rows > 0, node);
        QCOMPARE(model->rowCount(), rows);
        QCOMPARE(model->Row(0).iconKey, QLatin1String(rowKind));
        QVERIFY(main->List()->SelectionModel()->isRowSelected(0, {}));
    }
    QCOMPARE(model->Row(0).tag, QStringLiteral("fxprint01"));

    // The users' rows say what the whole records say.
    ExplorerFixture::Click(*main, QStringLiteral("fxmasterUsers"));
    QList<QStringList> listed, stored;
    for (int row = 0; row < model->rowCount(); ++row)
        listed << QStringList{model->index(row, 0).data().toString(),
                              model->index(row, 1).data().toString()};
    for (const auto& user : store.ListUsers("fxmaster"))
        stored << QStringList{QString::fromStdString(user.name()),
                              QString::fromStdString(user.comment())};
    QCOMPARE(listed, stored);
    QVERIFY(listed.contains(QStringList{"zoë", "Café ☎ desk"}));
}

void TestExplorer::RefreshKeepsTheViewEvenWhenItFails() {
    fx_->StartDemo(true);  // over TCP, so that the server can be stopped
    auto& store = Store();
    auto main = fx_->OpenMain();
    QTreeWidget* tree = main->Tree();
    ListModel* model = main->ListRows();
    main->FindNode(QStringLiteral("LCR"))->setExpanded(true);
    ExplorerFixture::Click(*main, QStringLiteral("fxmasterPrinterslj-acc"));
    ExplorerFixture::Click(*main, QStringLiteral("fxmasterUsers"));
    ExplorerFixture::ClickHeader(*main, 0);
    ExplorerFixture::ClickHeader(*main, 0);
    QVERIFY(ClickRow(*main, QStringLiteral("jmueller")));
    const QSet<QString> expanded = ExpandedKeys(*main);
    QCOMPARE(expanded,
             (QSet<QString>{"Administrator", "LCR", "Servers", "fxmaster", "fxmasterPrinters"}));

    // Another administrator adds a user and a server meanwhile.
    store.CommitUser(veldrano::server::demo::MakeUser("fxmaster", "zz-new", "Added meanwhile"));
    store.CommitServer(
        veldrano::server::demo::MakeServer("fxnew", "New server", true, false, false, "rpc"));
    QTest::keyClick(tree, Qt::Key_F5);
    QCOMPARE(ExpandedKeys(*main), expanded);
    QCOMPARE(Key(tree->currentItem()), QStringLiteral("fxmasterUsers"));
    QVERIFY(main->FindNode(QStringLiteral("fxnewUsers")));
    QCOMPARE(SelectedRowText(*main), QStringLiteral("jmueller"));
    // Still sorted as chosen: descending by name, the new user first.
    QCOMPARE(model->index(0, 0).data().toString(), QStringLiteral("zz-new"));

    // A refresh that fails leaves everything as it was. (The box's buttons
    // and icon are tst_qtprompter's.)
    const QStringList nodes = NodeKeys(tree);
    const QStringList rows = ExplorerFixture::ColumnTexts(model, 0);
    fx_->server->Shutdown();
    fx_->prompter.Answer(Answer::Cancel);
    QTest::keyClick(tree, Qt::Key_F5);
    QCOMPARE(fx_->prompter.Prompts().size(), 1);
    QVERIFY2(fx_->prompter.LastPrompt().text.endsWith(QStringLiteral("(81000002).")),
             qPrintable(fx_->prompter.LastPrompt().text));
    QCOMPARE(NodeKeys(tree), nodes);
    QCOMPARE(ExpandedKeys(*main), expanded);
    QCOMPARE(Key(tree->currentItem()), QStringLiteral("fxmasterUsers"));
    QCOMPARE(ExplorerFixture::ColumnTexts(model, 0), rows);
    QCOMPARE(SelectedRowText(*main), QStringLiteral("jmueller"));

    // The server comes back while the box shows: Retry refreshes at once,
    // with no second box.
    fx_->prompter.whileShown = [this] { fx_->server->Restart(); };
    store.CommitUser(veldrano::server::demo::MakeUser("fxmaster", "aaron", "Added meanwhile"));
    fx_->prompter.Answer(Answer::Retry);
    QTest::keyClick(tree, Qt::Key_F5);
    fx_->prompter.whileShown = {};
    QCOMPARE(fx_->prompter.Prompts().size(), 2);
    QVERIFY(model->FindText(QStringLiteral("aaron")) >= 0);

    // A node that has gone leaves the nearest one still there selected.
    ExplorerFixture::Click(*main, QStringLiteral("fxprint01Printersljfast"));
    Store().DeletePrinter("fxprint01", "ljfast");  // the restarted server's store
    main->MenuEntry(QStringLiteral("mnuViewRefresh"))->trigger();
    QCOMPARE(Key(tree->currentItem()), QStringLiteral("fxprint01Printers"));
    QCOMPARE(model->FindText(QStringLiteral("ljfast")), -1);

    // A node whose list cannot be read shows its columns and no rows, and
    // the window goes on answering.
    fx_->server->Shutdown();
    fx_->prompter.Answer(Answer::Cancel);
    ExplorerFixture::Click(*main, QStringLiteral("Routes"));
    QCOMPARE(fx_->prompter.Prompts().size(), 3);
    QCOMPARE(model->columnCount(), 4);
    QCOMPARE(model->rowCount(), 0);
}

QTEST_MAIN(TestExplorer)
#include "tst_explorer.moc"
