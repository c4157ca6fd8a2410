// bench-lists: what the explorer's tree and lists cost on a large installation,
// against the reference server embedded in this process and reached over
// loopback TCP, as the console reaches a server.
//
// Measures, side by side in one run:
//   model_fill_speedup_vs_standard_item_model  100,000 fetched user records
//       put into a QStandardItemModel item by item, against the list fill
//       (UserRows handed to the ListModel, which takes the records over and
//       reads a field only when it is shown); goal >= 10. The same with each
//       model shown by a view while it fills, first paint included, follows
//       as model_fill_speedup_view_shown.
//   model_fill_vs_floor   the list fill against a loop that only turns the
//       same cells into display strings in a std::vector; goal <= 2
//   users_list_on_screen_ms   fetching 100,000 users through the session, the
//       fill and the first paint of the details view; goal <= 300
//   tree_build_ms   fetching the tree (200 servers of 100 printers and 100
//       devices each, 1,000 zones), building it with the main window's
//       routines and painting it; after the first run each build replaces the
//       last tree, as Refresh does; goal <= 150
//   sort_100k_ms   a header click that sorts 100,000 rows shown in the view,
//       in an English collation; goal <= 500
// Prints "name: value" lines, medians of several runs, and each figure's ratio
// to its goal. Run with QT_QPA_PLATFORM=offscreen (set when unset).
//
// Usage: bench-lists [users] [servers] [printers-and-devices-per-server] [zones]

#include <QApplication>
#include <QHeaderView>
#include <QLocale>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTreeView>
#include <QTreeWidget>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <vector>

#include "BenchSupport.h"
#include "demo/Generator.h"
#include "lists/ColumnWidths.h"
#include "lists/ExplorerListView.h"
#include "lists/KindIcons.h"
#include "lists/ListFill.h"
#include "lists/ListFillKinds.h"
#include "lists/ListModel.h"
#include "service/ServerHost.h"
#include "session/GrpcServerSession.h"
#include "shell/ExplorerTree.h"
#include "store/Store.h"

namespace {

using namespace bench;
using winadmin::ListModel;
using winadmin::ListRow;
using winadmin::UserRecord;

constexpr int Runs = 5;
// The median of runs of f, each timed on its own; prepare runs untimed before each.
double MedianMs(const std::function<void()>& f, const std::function<void()>& prepare = {}) {
    std::vector<double> times;
    for (int run = 0; run < Runs; ++run) {
        if (prepare) prepare();
        const Clock::time_point start = Clock::now();
        f();
        times.push_back(MillisecondsSince(start));
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

// Every fill below starts from the same fetched records and ends with a
// filled model; what the records or the model cost to throw away afterwards
// is left out of each timing alike (it happens before the next run).

// A list filled the usual way without a model of its own: one item per cell,
// the icon and the row's kind and server on the first, row after row. With a
// view the model is filled as the explorer fills its list, shown, so the view
// hears of every row; without one it is the bare data structure.
double FillStandardModel(const std::vector<UserRecord>& users, const QString& server,
                         QTreeView* view) {
    const QIcon icon = winadmin::KindIcon(QStringLiteral("User"));
    const QString kind = QStringLiteral("User");
    std::unique_ptr<QStandardItemModel> model;
    return MedianMs(
        [&] {
            model = std::make_unique<QStandardItemModel>();
            if (view) view->setModel(model.get());
            model->setHorizontalHeaderLabels(
                {QStringLiteral("User Name"), QStringLiteral("Comment")});
            for (const UserRecord& user : users) {
                auto* name = new QStandardItem(icon, QString::fromStdString(user.name()));
                name->setData(kind, Qt::UserRole + 1);
                name->setData(server, Qt::UserRole + 2);
                auto* comment = new QStandardItem(QString::fromStdString(user.comment()));
                model->appendRow({name, comment});
            }
            if (view) view->repaint();
        },
        [&] {
            if (view) view->setModel(nullptr);
            model.reset();
        });
}

// The list fill takes the fetched records over, as FillListView does with
// what the session answers; each run gets its own copy, made untimed.
double FillListModel(const std::vector<UserRecord>& users, const QString& server,
                     const winadmin::ColumnWidths& widths, QTreeView* view) {
    std::unique_ptr<ListModel> model;
    std::vector<UserRecord> records;
    return MedianMs(
        [&] {
            model = std::make_unique<ListModel>();
            if (view) view->setModel(model.get());
            model->SetColumns(winadmin::BuildListColumns(QStringLiteral("Users"), widths));
            model->SetRows(winadmin::UserRows(std::move(records), server));
            if (view) view->repaint();
        },
        [&] {
            if (view) view->setModel(nullptr);
            model.reset();
            records = users;
        });
}

// What turning the same records into the same cells costs at the least: the
// two texts of every user made into display strings in one vector.
double FormatFloor(const std::vector<UserRecord>& users) {
    std::vector<QString> cells;
    return MedianMs(
        [&] {
            cells.reserve(users.size() * 2);
            for (const UserRecord& user : users) {
                cells.push_back(QString::fromStdString(user.name()));
                cells.push_back(QString::fromStdString(user.comment()));
            }
        },
        [&] { cells = {}; });
}

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int userCount = argc > 1 ? std::atoi(argv[1]) : 100000;
    veldrano::server::GenerateSizes sizes;
    sizes.servers = argc > 2 ? std::atoi(argv[2]) : 200;
    sizes.printersPerServer = argc > 3 ? std::atoi(argv[3]) : 100;
    sizes.devicesPerServer = sizes.printersPerServer;
    sizes.zones = argc > 4 ? std::atoi(argv[4]) : 1000;
    sizes.firstServerUsers = userCount;

    BenchServer benchServer;
    veldrano::server::ServerHost& server = benchServer.Host();
    Clock::time_point start = Clock::now();
    veldrano::server::Generate(server.GetStore(), sizes);
    Print("generate_ms", MillisecondsSince(start));
    const QString host = QString::fromStdString(server.GetStore().ListServers().front().name());

    try {
        auto owned = std::make_unique<winadmin::GrpcServerSession>();
        owned->SetHostName(QStringLiteral("127.0.0.1:%1").arg(server.Port()));
        owned->SetPassword(Password);
        owned->Login();
        // The session is the label source, as after a login.
        winadmin::SetTheSession(std::move(owned));
        winadmin::ServerSession& session = *winadmin::TheSession();
        const winadmin::ColumnWidths widths;
        winadmin::KindIcon(QStringLiteral("User"));

        // --- Filling a model: ours, the standard one, the floor ---------------------------
        const std::vector<UserRecord> users = session.Users(host);
        std::printf("users: %zu\n", users.size());
        QTreeView shown;
        shown.setUniformRowHeights(true);
        shown.setRootIsDecorated(false);
        shown.resize(900, 600);
        shown.show();
        QApplication::processEvents();
        const double standardMs = FillStandardModel(users, host, &shown);
        const double oursMs = FillListModel(users, host, widths, &shown);
        const double standardDetachedMs = FillStandardModel(users, host, nullptr);
        const double oursDetachedMs = FillListModel(users, host, widths, nullptr);
        const double floorMs = FormatFloor(users);
        Print("standard_item_model_fill_ms", standardDetachedMs);
        Print("list_model_fill_ms", oursDetachedMs);
        Print("format_floor_ms", floorMs);
        Print("standard_item_model_fill_view_shown_ms", standardMs);
        Print("list_model_fill_view_shown_ms", oursMs);
        Print("model_fill_speedup_vs_standard_item_model", standardDetachedMs / oursDetachedMs);
        Print("model_fill_speedup_view_shown", standardMs / oursMs);
        Print("model_fill_vs_floor", oursDetachedMs / floorMs);

        // --- The users' list on screen ------------------------------------------------------
        winadmin::ExplorerListView list;
        ListModel model;
        list.SetModel(&model);
        list.resize(900, 600);
        list.show();
        QApplication::processEvents();
        const QString usersKey = host + QStringLiteral("Users");
        const double onScreenMs = MedianMs(
            [&] {
                std::vector<ListRow> rows =
                    winadmin::FillListView(QStringLiteral("Users"), usersKey, session);
                model.SetColumns(winadmin::BuildListColumns(QStringLiteral("Users"), widths));
                for (size_t i = 0; i < model.Columns().size(); ++i)
                    list.DetailsView()->header()->resizeSection(int(i), model.Columns()[i].width);
                model.SetRows(std::move(rows));
                list.SelectionModel()->setCurrentIndex(
                    model.index(0, 0),
                    QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
                list.repaint();
            },
            [&] { model.SetColumns({}); });
        Print("users_list_on_screen_ms", onScreenMs);
        // The fetch alone, for the share the transport has in the figure above.
        std::vector<UserRecord> fetched;
        Print("users_fetch_ms",
              MedianMs([&] { fetched = session.Users(host); }, [&] { fetched = {}; }));

        // --- Sorting what is shown ----------------------------------------------------------
        // In a language's collation (what administrators have), and in the C
        // locale, which compares the texts directly.
        auto timeSorts = [&] {
            std::vector<double> sorts;
            for (int column : {1, 1, 0, 0, 1}) {
                const Clock::time_point sortStart = Clock::now();
                model.SortByHeaderClick(column);
                sorts.push_back(MillisecondsSince(sortStart));
            }
            std::sort(sorts.begin(), sorts.end());
            return sorts[sorts.size() / 2];
        };
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        const double sortMs = timeSorts();
        QLocale::setDefault(QLocale::c());
        Print("sort_100k_ms", sortMs);
        Print("sort_100k_c_locale_ms", timeSorts());

        // --- The tree -----------------------------------------------------------------------
        QTreeWidget tree;
        tree.setHeaderHidden(true);
        tree.setUniformRowHeights(true);
        tree.resize(300, 600);
        tree.show();
        QApplication::processEvents();
        int nodes = 0;
        const double fetchMs = MedianMs([&] { winadmin::FetchExplorerTree(session); });
        const double treeMs = MedianMs([&] {
            const winadmin::ExplorerTreeData data = winadmin::FetchExplorerTree(session);
            winadmin::BuildExplorerTree(&tree, data);
            tree.repaint();
        });
        for (QTreeWidgetItemIterator it(&tree); *it; ++it) ++nodes;
        std::printf("tree_nodes: %d\n", nodes);
        Print("tree_fetch_ms", fetchMs);
        Print("tree_build_ms", treeMs);

        Print("model_fill_speedup_vs_goal", (standardDetachedMs / oursDetachedMs) / 10.0);
        Print("model_fill_vs_floor_vs_goal", (oursDetachedMs / floorMs) / 2.0);
        Print("users_list_on_screen_vs_goal", onScreenMs / 300.0);
        Print("tree_build_vs_goal", treeMs / 150.0);
        Print("sort_100k_vs_goal", sortMs / 500.0);
    } catch (const winadmin::SessionError& error) {
        std::fprintf(stderr, "session error %X: %s\n", error.Number(),
                     error.Description().toUtf8().constData());
        return 1;
    }
    winadmin::SetTheSession(nullptr);
    return 0;
}
