// The explorer in the main window against the reference server: the tree of
// the whole installation, the list each node fills, Refresh keeping the view,
// failed calls, and the running count of the event list.

#include <QAbstractItemModelTester>
#include <QAction>
#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QListView>
#include <QTest>
#include <QTreeView>
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
namespace pb = veldrano::admin::v1;

namespace {

constexpr auto Key = &ExplorerFixture::Key;
constexpr auto Kind = &ExplorerFixture::Kind;

QStringList Headers(const QAbstractItemModel* model) {
    QStringList headers;
    for (int column = 0; column < model->columnCount(); ++column)
        headers << model->headerData(column, Qt::Horizontal).toString();
    return headers;
}

// Every node's key, in the tree's order.
QStringList NodeKeys(QTreeWidget* tree) {
    QStringList keys;
    for (QTreeWidgetItemIterator it(tree); *it; ++it) keys << Key(*it);
    return keys;
}

}  // namespace

class TestExplorer : public ExplorerSuite {
    Q_OBJECT

private slots:
    void TreeHoldsTheWholeInstallation();
    void EveryNodeFillsItsList();
    void RefreshKeepsTheView();
    void FailedCallsAreShownAndTheWindowStaysUsable();
    void FailedRefreshShowsOneBoxAndKeepsTheView();
    void EventListCountsWhileItFills();
};

void TestExplorer::TreeHoldsTheWholeInstallation() {
    auto& store = Store();
    auto main = fx_->OpenMain();
    QTreeWidget* tree = main->Tree();
    QCOMPARE(tree->topLevelItemCount(), 1);
    QVERIFY(tree->topLevelItem(0)->isExpanded());
    QCOMPARE(Key(tree->currentItem()), QStringLiteral("Administrator"));

    // The tree as an outline, node by node in order: depth, key, kind, text.
    QStringList outline;
    for (QTreeWidgetItemIterator it(tree); *it; ++it) {
        int depth = 0;
        for (const QTreeWidgetItem* up = (*it)->parent(); up; up = up->parent()) ++depth;
        outline << QString("%1 %2 %3 %4").arg(depth).arg(Key(*it), Kind(*it), (*it)->text(0));
        QVERIFY2(!(*it)->icon(0).isNull(), qPrintable(Key(*it)));
    }
    // The same outline from what the server holds.
    QStringList expected;
    auto node = [&](int depth, const QString& key, const char* kind, const QString& text) {
        expected << QStringLiteral("%1 %2 %3 %4").arg(depth).arg(key, QLatin1String(kind), text);
    };
    auto branch = [&](int depth, const QString& key, const char* kind) {
        node(depth, key, kind, GetLabel(QLatin1String(kind)));
    };
    node(0, "Administrator", "Administrator", GetLabel("Administrator"));
    branch(1, "Groups", "Groups");
    branch(1, "Routes", "Routes");
    node(1, "LCR", "LCR", GetLabel("Lcr"));
    const pb::ZoneList zones = store.ListZones();
    for (int i = 0; i < zones.zones_size(); ++i) {
        const QString index = QString::number(i + 1);
        node(2, "zone" + index, "Zone", QString::fromStdString(zones.zones(i).name()));
        branch(3, "Rates" + index, "Rates");
        branch(3, "Destinations" + index, "Destinations");
    }
    branch(1, "NumberMappings", "NumberMappings");
    branch(1, "Gateways", "Gateways");
    for (const pb::Gateway& gateway : store.ListGateways())
        node(2, QString::fromStdString(gateway.name()), "Gateway",
             QString::fromStdString(gateway.name()));
    branch(1, "Servers", "Servers");
    for (const pb::ServerObjects& server : store.ListServerObjects()) {
        const QString name = QString::fromStdString(server.server());
        node(2, name, "Server", name);
        branch(3, name + "Users", "Users");
        branch(3, name + "Printers", "Printers");
        for (const std::string& leaf : server.printers())
            node(4, name + "Printers" + leaf.c_str(), "Printer", QString::fromStdString(leaf));
        branch(3, name + "Devices", "Devices");
        for (const std::string& leaf : server.devices())
            node(4, name + "Devices" + leaf.c_str(), "Device", QString::fromStdString(leaf));
        branch(3, name + "Processes", "Processes");
        branch(3, name + "Events", "Events");
    }
    QCOMPARE(outline, expected);
    // Spot checks against the demo installation's own names.
    QVERIFY(outline.contains("4 fxmasterPrinterslj-acc Printer lj-acc"));
    QVERIFY(outline.contains("2 zone1 Zone Local extensions"));
    QVERIFY2(zones.zones_size() >= 3 && outline.size() > 50,
             qPrintable(QString::number(outline.size())));

    // However many servers, the tree costs three calls.
    auto* grpc = static_cast<GrpcServerSession*>(TheSession());
    const uint64_t calls = grpc->RpcCount();
    main->BuildTree();
    QCOMPARE(grpc->RpcCount() - calls, uint64_t(3));
}

void TestExplorer::EveryNodeFillsItsList() {
    auto& store = Store();
    auto main = fx_->OpenMain();
    ListModel* model = main->ListRows();
    QAbstractItemModelTester tester(model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QItemSelectionModel* selection = main->List()->SelectionModel();

    // The root lists its branches.
    QCOMPARE(Headers(model), QStringList{GetLabel(QStringLiteral("Name"))});
    QCOMPARE(model->rowCount(), 6);

    ExplorerFixture::Click(*main, QStringLiteral("fxmasterUsers"));
    QCOMPARE(Headers(model), QStringList({GetLabel(QStringLiteral("UserName")),
                                          GetLabel(QStringLiteral("UserComment"))}));
    QCOMPARE(model->rowCount(), int(store.ListUsers("fxmaster").size()));
    QVERIFY(selection->isRowSelected(0, {}));

    const std::tuple<const char*, int, int, const char*> expectations[] = {
        {"smtp.example.com", 2, int(store.ListGatewayUsers("smtp.example.com").size()),
         "GatewayUser"},
        {"LCR", 6, store.ListZones().zones_size(), "Zone"},
        {"zone2", 1, 2, "Rates"},
        {"Rates2", 3, int(store.ListRates(store.ListZones().zones(1).name()).size()), "Rate"},
        {"Destinations1", 4, int(store.ListDestinations(store.ListZones().zones(0).name()).size()),
         "Destination"},
        {"fxprint01", 1, 5, "Users"},
        {"fxprint01Printersljfast", 3, 1, "Printer"},
        {"fxline01Devices", 3, int(store.ListDevices("fxline01").size()), "Device"},
        {"fxmasterProcesses", 5, int(store.ListProcesses("fxmaster").size()), "Process"},
        {"fxmasterEvents", 6, int(store.EventCount("fxmaster")), "Event"},
    };
    for (const auto& [node, columns, rows, rowKind] : expectations) {
        QVERIFY2(ExplorerFixture::Click(*main, QLatin1String(node)), node);
        QCOMPARE(model->columnCount(), columns);
        QVERIFY2(rows > 0, node);
        QCOMPARE(model->rowCount(), rows);
        QCOMPARE(model->Row(0).iconKey, QLatin1String(rowKind));
        QCOMPARE(selection->currentIndex().row(), 0);
    }
    QCOMPARE(model->Row(0).tag, QStringLiteral("fxmaster"));

    // A node of a kind the list does not know leaves it without columns.
    main->AddNode(main->FindNode(QStringLiteral("Administrator")), QStringLiteral("Bogus"),
                  QStringLiteral("Bogus"), QStringLiteral("Bogus"));
    ExplorerFixture::Click(*main, QStringLiteral("Bogus"));
    QCOMPARE(model->columnCount(), 0);
    QCOMPARE(model->rowCount(), 0);
    QCOMPARE(main->List()->DetailsView()->header()->count(), 0);
}

void TestExplorer::RefreshKeepsTheView() {
    auto& store = Store();
    auto main = fx_->OpenMain();
    QTreeWidget* tree = main->Tree();
    ListModel* model = main->ListRows();
    QAbstractItemModelTester tester(model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    main->FindNode(QStringLiteral("LCR"))->setExpanded(true);
    ExplorerFixture::Click(*main, QStringLiteral("fxmasterPrinterslj-acc"));
    ExplorerFixture::Click(*main, QStringLiteral("fxmasterUsers"));
    ExplorerFixture::ClickHeader(*main, 0);
    ExplorerFixture::ClickHeader(*main, 0);
    const int jmueller = model->FindText(QStringLiteral("jmueller"));
    main->List()->SelectionModel()->setCurrentIndex(
        model->index(jmueller, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
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
    const QModelIndex current = main->List()->SelectionModel()->currentIndex();
    QCOMPARE(current.data().toString(), QStringLiteral("jmueller"));
    QVERIFY(main->List()->SelectionModel()->isRowSelected(current.row(), {}));
    // Still sorted as chosen: descending by name, the new user first.
    QCOMPARE(model->index(0, 0).data().toString(), QStringLiteral("zz-new"));
    QCOMPARE(main->List()->DetailsView()->header()->sortIndicatorOrder(), Qt::DescendingOrder);

    // A node that has gone leaves the nearest one still there selected.
    ExplorerFixture::Click(*main, QStringLiteral("fxprint01Printersljfast"));
    store.DeletePrinter("fxprint01", "ljfast");
    main->MenuEntry(QStringLiteral("mnuViewRefresh"))->trigger();
    QCOMPARE(Key(tree->currentItem()), QStringLiteral("fxprint01Printers"));
    QCOMPARE(model->FindText(QStringLiteral("ljfast")), -1);
    QCOMPARE(model->rowCount(), int(store.ListPrinters("fxprint01").size()));
}

void TestExplorer::FailedCallsAreShownAndTheWindowStaysUsable() {
    fx_->StartDemo(true);  // over TCP, so that the server can be stopped
    auto main = fx_->OpenMain();
    ListModel* model = main->ListRows();
    ExplorerFixture::Click(*main, QStringLiteral("fxmasterUsers"));
    QVERIFY(model->rowCount() > 0);
    fx_->server->Shutdown();

    // The server cannot be reached: offered Retry, cancelled.
    fx_->prompter.Answer(Answer::Cancel);
    ExplorerFixture::Click(*main, QStringLiteral("Groups"));
    QCOMPARE(fx_->prompter.Prompts().size(), 1);
    const Prompt& prompt = fx_->prompter.LastPrompt();
    QCOMPARE(prompt.icon, PromptIcon::Critical);
    QCOMPARE(prompt.buttons, PromptButtons::RetryCancel);
    QVERIFY2(prompt.text.endsWith(QStringLiteral("(81000002).")), qPrintable(prompt.text));
    QVERIFY(!fx_->prompter.Prompts().last().busyPointer);
    QCOMPARE(model->rowCount(), 0);

    // Retry asks the server again, and the window goes on answering.
    fx_->prompter.Answer({Answer::Retry, Answer::Cancel});
    ExplorerFixture::Click(*main, QStringLiteral("Routes"));
    QCOMPARE(fx_->prompter.Prompts().size(), 3);
    QCOMPARE(model->columnCount(), 4);
    QCOMPARE(model->rowCount(), 0);
    QCOMPARE(Key(main->Tree()->currentItem()), QStringLiteral("Routes"));
    QCOMPARE(QApplication::overrideCursor(), nullptr);
}

void TestExplorer::FailedRefreshShowsOneBoxAndKeepsTheView() {
    fx_->StartDemo(true);  // over TCP, so that the server can be stopped
    auto main = fx_->OpenMain();
    QTreeWidget* tree = main->Tree();
    ListModel* model = main->ListRows();
    ExplorerFixture::Click(*main, QStringLiteral("fxprint01Printersljfast"));
    ExplorerFixture::Click(*main, QStringLiteral("fxmasterUsers"));
    const QStringList nodes = NodeKeys(tree);
    const QSet<QString> expanded = ExpandedKeys(*main);
    const QStringList rows = ExplorerFixture::ColumnTexts(model, 0);
    QVERIFY(nodes.size() > 20);
    QVERIFY(rows.size() > 1);
    QVERIFY(ClickRow(*main, rows.at(1)));
    fx_->server->Shutdown();

    fx_->prompter.Answer(Answer::Cancel);
    QTest::keyClick(tree, Qt::Key_F5);
    QCOMPARE(fx_->prompter.Prompts().size(), 1);
    QCOMPARE(fx_->prompter.LastPrompt().buttons, PromptButtons::RetryCancel);
    QCOMPARE(NodeKeys(tree), nodes);
    QCOMPARE(ExpandedKeys(*main), expanded);
    QCOMPARE(Key(tree->currentItem()), QStringLiteral("fxmasterUsers"));
    QCOMPARE(ExplorerFixture::ColumnTexts(model, 0), rows);
    QCOMPARE(SelectedRowText(*main), rows.at(1));

    // The server comes back while the box shows: Retry refreshes at once,
    // with no second box.
    fx_->prompter.whileShown = [this] { fx_->server->Restart(); };
    Store().CommitUser(veldrano::server::demo::MakeUser("fxmaster", "zz-new", "Added meanwhile"));
    fx_->prompter.Answer(Answer::Retry);
    QTest::keyClick(tree, Qt::Key_F5);
    fx_->prompter.whileShown = {};
    QCOMPARE(fx_->prompter.Prompts().size(), 2);
    QCOMPARE(NodeKeys(tree), nodes);
    QCOMPARE(Key(tree->currentItem()), QStringLiteral("fxmasterUsers"));
    QCOMPARE(model->rowCount(), rows.size() + 1);
    QVERIFY(model->FindText(QStringLiteral("zz-new")) >= 0);
    QCOMPARE(SelectedRowText(*main), rows.at(1));
}

void TestExplorer::EventListCountsWhileItFills() {
    // A server of its own, with enough events for the running count to move.
    Store().CommitServer(
        veldrano::server::demo::MakeServer("evhost", "Events", true, false, false, "rpc"));
    Store().Bulk([&] {
        for (int i = 0; i < 1200; ++i)
            Store().AppendEvent("evhost", veldrano::server::demo::MakeEvent(1700000000 + i, i % 6,
                                                                            0, 1, 0, "load"));
    });
    StoreSetting(QStringLiteral("Severity"), QStringLiteral("3"));
    auto main = fx_->OpenMain();
    // What the count panel paints while the rows are made.
    struct Recorder : QObject {
        QStringList shown;
        bool eventFilter(QObject* watched, QEvent* event) override {
            if (event->type() == QEvent::Paint) shown << static_cast<QLabel*>(watched)->text();
            return false;
        }
    } recorder;
    const QStringList& shown = recorder.shown;
    QLabel* panel = main->StatusPanel(1);
    panel->installEventFilter(&recorder);
    ExplorerFixture::Click(*main, QStringLiteral("evhostEvents"));
    panel->removeEventFilter(&recorder);
    QCOMPARE(main->ListRows()->rowCount(), 600);  // error and above
    QVERIFY2(shown.contains(QStringLiteral("500")) && shown.contains(QStringLiteral("600")),
             qPrintable(shown.join(u',')));
    QCOMPARE(panel->text(), QString());
}

QTEST_MAIN(TestExplorer)
#include "tst_explorer.moc"
