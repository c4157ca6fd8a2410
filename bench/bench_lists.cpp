// bench-lists: what the explorer's tree and lists cost on a large installation,
// against the reference server embedded in this process and reached over
// loopback TCP, as the console reaches a server.
//
// Measures, side by side in one run (each figure then as name_vs_goal):
//   model_fill_speedup   100,000 users as the list call answers them (name
//       and comment) put into a QStandardItemModel item by item, against the
//       list fill; both models shown by a view and painted, so that both end
//       with the same list on screen; goal >= 10. The same with both sorted
//       by the comment before the paint follows as model_fill_sorted_speedup.
//   model_fill_vs_floor   the sorted list fill against a plain loop that
//       makes exactly the texts the fill, sort and paint make (the sorted
//       column of every row, its collation keys, the cells of the rows
//       painted) and sorts the same way: like with like, since the list
//       fill makes no text that is not shown or sorted; goal <= 2
//   users_list_on_screen_ms   fetching 100,000 users through the session, the
//       fill and the first paint of the details view; goal <= 300
//   fill_per_row_ns at 10,000, 100,000 and 1,000,000 rows: a fill of pages
//       as they arrive into the shown list, per row; goal: from each size to
//       the next tenfold one the cost of a row grows by at most 1.5x
//   console memory (in a console process of its own, so that the server's
//       memory is not counted): the bytes the list holds per listed user
//       (rows, texts, the view's own), goal <= 200; resident size after ten
//       refreshes of the list against after one, goal within 20 %
//   tree_build_ms   fetching the tree (200 servers of 100 printers and 100
//       devices each, 1,000 zones), building it and painting it; goal <= 150
//   sort_100k_ms   a header click that sorts 100,000 rows shown in the view,
//       in an English collation; goal <= 500
// Timings are medians of several runs. Run with QT_QPA_PLATFORM=offscreen
// (set when unset).
//
// Usage: bench-lists [users] [servers] [printers-and-devices-per-server] [zones]

#include <malloc.h>

#include <QApplication>
#include <QCollator>
#include <QHeaderView>
#include <QLocale>
#include <QProcess>
#include <QStandardItemModel>
#include <QTreeView>
#include <QTreeWidget>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "demo/Generator.h"
#include "lists/ColumnWidths.h"
#include "lists/ExplorerListView.h"
#include "lists/KindIcons.h"
#include "lists/ListFill.h"
#include "lists/ListFillKinds.h"
#include "lists/ListModel.h"
#include "session/GrpcServerSession.h"
#include "shell/ExplorerTree.h"
#include "store/Store.h"

namespace {

using namespace bench;
using winadmin::ListModel;
using winadmin::RowTable;

constexpr int Runs = 5;
// The median of runs of f, each timed on its own; prepare runs untimed before each.
double MedianMs(const std::function<void()>& f, const std::function<void()>& prepare = {},
                int runs = Runs) {
    std::vector<double> times;
    for (int run = 0; run < runs; ++run) {
        if (prepare) prepare();
        const Clock::time_point start = Clock::now();
        f();
        times.push_back(MillisecondsSince(start));
    }
    return Median(times);
}

QString Utf8(std::string_view text) {
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

std::unique_ptr<QTreeView> ShownView() {
    auto view = std::make_unique<QTreeView>();
    view->setUniformRowHeights(true);
    view->setRootIsDecorated(false);
    view->resize(900, 600);
    view->show();
    QApplication::processEvents();
    return view;
}

// The list the usual way: one item per cell, the icon and the row's kind and
// server on the first, row after row, then (sorted) the model's own sort.
double FillStandardModel(const RowTable& users, const QString& server, QTreeView& view,
                         bool sorted) {
    const QIcon icon = winadmin::KindIcon(QStringLiteral("User"));
    const QString kind = QStringLiteral("User");
    std::unique_ptr<QStandardItemModel> model;
    return MedianMs(
        [&] {
            model = std::make_unique<QStandardItemModel>();
            view.setModel(model.get());
            model->setHorizontalHeaderLabels(
                {QStringLiteral("User Name"), QStringLiteral("Comment")});
            for (size_t i = 0; i < users.Size(); ++i) {
                auto* name = new QStandardItem(icon, Utf8(users.Cell(i, 0)));
                name->setData(kind, Qt::UserRole + 1);
                name->setData(server, Qt::UserRole + 2);
                model->appendRow({name, new QStandardItem(Utf8(users.Cell(i, 1)))});
            }
            if (sorted) model->sort(1, Qt::DescendingOrder);
            view.repaint();
        },
        [&] {
            view.setModel(nullptr);
            model.reset();
        });
}

// The list fill takes the table over, as the explorer does with what the
// session answers; each run gets its own copy, made untimed.
double FillListModel(const RowTable& users, const QString& server, QTreeView& view, bool sorted) {
    const std::vector<winadmin::ListColumn> columns =
        winadmin::BuildListColumns(QStringLiteral("Users"), winadmin::ColumnWidths());
    std::unique_ptr<ListModel> model;
    RowTable copy;
    return MedianMs(
        [&] {
            model = std::make_unique<ListModel>();
            view.setModel(model.get());
            model->SetColumns(columns);
            model->SetRows(winadmin::UserRows(std::move(copy), server));
            if (sorted) model->sort(1, Qt::DescendingOrder);
            view.repaint();
        },
        [&] {
            view.setModel(nullptr);
            model.reset();
            copy = users;
        });
}

// What the fill, sort and paint above have to make at the least: the texts
// of the sorted column and their collation keys, the same stable sort, and
// the cells of the rows that one screen shows.
double FormatFloor(const RowTable& users, int rowsOnScreen) {
    std::vector<QString> cells;
    return MedianMs(
        [&] {
            QCollator collator;
            collator.setCaseSensitivity(Qt::CaseInsensitive);
            std::vector<QCollatorSortKey> keys;
            keys.reserve(users.Size());
            for (size_t i = 0; i < users.Size(); ++i)
                keys.push_back(collator.sortKey(Utf8(users.Cell(i, 1))));
            std::vector<size_t> order(users.Size());
            std::iota(order.begin(), order.end(), size_t(0));
            std::stable_sort(order.begin(), order.end(),
                             [&](size_t a, size_t b) { return keys[a].compare(keys[b]) > 0; });
            for (int row = 0; row < rowsOnScreen && size_t(row) < order.size(); ++row)
                for (int column = 0; column < 2; ++column)
                    cells.push_back(Utf8(users.Cell(order[size_t(row)], column)));
        },
        [&] { cells = {}; });
}

// Pages of users as the list call brings them, made up like the generator's.
std::vector<veldrano::admin::v1::UserPage> UserPages(int count) {
    std::vector<veldrano::admin::v1::UserPage> pages;
    char name[16];
    for (int i = 0; i < count; ++i) {
        if (i % 5000 == 0) pages.emplace_back();
        auto* user = pages.back().add_users();
        std::snprintf(name, sizeof name, "u%07d", i + 1);
        user->set_name(name);
        user->set_comment("Benchmark user " + std::to_string(i + 1));
    }
    return pages;
}

// One fill of count rows from pages to a painted list, per row, in ns.
double FillPerRowNs(int count, const QString& server, QTreeView& view) {
    const auto pages = UserPages(count);
    ListModel model;
    model.SetColumns(winadmin::BuildListColumns(QStringLiteral("Users"), winadmin::ColumnWidths()));
    view.setModel(&model);
    const double ms = MedianMs(
        [&] {
            RowTable table(2);
            for (const auto& page : pages)
                for (const auto& user : page.users()) table.Append({user.name(), user.comment()});
            table.Compact();
            model.SetRows(winadmin::UserRows(std::move(table), server));
            view.repaint();
        },
        [&] { model.Clear(); }, 3);
    view.setModel(nullptr);
    return ms * 1e6 / count;
}

long long ResidentBytes() {
    std::ifstream statm("/proc/self/statm");
    long long pages = 0, resident = 0;
    statm >> pages >> resident;
    return resident * 4096;
}

// Bytes the program holds from the allocator, every thread's arena and the
// large blocks it maps included.
long long HeapBytes() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<long long>(info.uordblks + info.hblkhd);
}

// The console's part alone: logs in to the server on port, shows host's
// users as the explorer does and refreshes the list ten times. The resident
// size is taken as the system sees it, allocator caches and all.
int ConsoleMemory(int port, const QString& host) {
    auto owned = std::make_unique<winadmin::GrpcServerSession>();
    owned->SetHostName(QStringLiteral("127.0.0.1:%1").arg(port));
    owned->SetPassword(Password);
    owned->Login();
    winadmin::SetTheSession(std::move(owned));
    winadmin::ServerSession& session = *winadmin::TheSession();
    winadmin::ExplorerListView list;
    ListModel model;
    list.SetModel(&model);
    list.resize(900, 600);
    list.show();
    const auto columns =
        winadmin::BuildListColumns(QStringLiteral("Users"), winadmin::ColumnWidths());
    // As the explorer refreshes: the columns (which let the old rows go),
    // the fill, the rows, the paint.
    auto refresh = [&] {
        model.SetColumns(columns);
        model.SetRows(winadmin::FillListView(QStringLiteral("Users"), host + "Users", session));
        list.repaint();
        QApplication::processEvents();
    };
    // Everything but a large list made once (connection, labels, fonts,
    // icons) with the small list of the servers; then the users' columns.
    model.SetColumns(winadmin::BuildListColumns(QStringLiteral("Servers"), {}));
    model.SetRows(winadmin::FillListView(QStringLiteral("Servers"), "Servers", session));
    list.repaint();
    QApplication::processEvents();
    model.SetColumns(columns);
    list.repaint();
    QApplication::processEvents();
    const long long emptyHeap = HeapBytes();
    refresh();
    const long long oneHeap = HeapBytes();
    const long long one = ResidentBytes();
    const int users = model.rowCount();
    for (int i = 1; i < 10; ++i) refresh();
    const long long ten = ResidentBytes();
    const double perUser = double(oneHeap - emptyHeap) / std::max(1, users);
    Print("console_listed_users", static_cast<long long>(users));
    Print("console_rss_after_one_refresh_mb", double(one) / 1048576.0);
    Print("console_rss_after_ten_refreshes_mb", double(ten) / 1048576.0);
    Print("console_bytes_per_listed_user", perUser);
    Print("memory_per_listed_user_vs_goal", perUser / 200.0);
    Print("rss_ten_refreshes_vs_goal", (double(ten) / double(one)) / 1.2);
    winadmin::SetTheSession(nullptr);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc == 4 && std::string(argv[1]) == "--console")
        return ConsoleMemory(std::atoi(argv[2]), QString::fromUtf8(argv[3]));
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
        // Administrators sort in their language's collation.
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));

        // --- Filling a model: ours, the standard one, the floor ---------------------------
        const RowTable users = session.UserListRows(host);
        std::printf("users: %zu\n", users.Size());
        std::unique_ptr<QTreeView> shown = ShownView();
        const double standardMs = FillStandardModel(users, host, *shown, false);
        const double oursMs = FillListModel(users, host, *shown, false);
        const double standardSortedMs = FillStandardModel(users, host, *shown, true);
        const double oursSortedMs = FillListModel(users, host, *shown, true);
        const int rowsOnScreen =
            shown->viewport()->height() / std::max(1, shown->sizeHintForRow(0)) + 1;
        const double floorMs = FormatFloor(users, rowsOnScreen);
        Print("standard_item_model_fill_paint_ms", standardMs);
        Print("list_model_fill_paint_ms", oursMs);
        Print("standard_item_model_fill_sort_paint_ms", standardSortedMs);
        Print("list_model_fill_sort_paint_ms", oursSortedMs);
        Print("format_and_sort_floor_ms", floorMs);
        Print("model_fill_speedup", standardMs / oursMs);
        Print("model_fill_sorted_speedup", standardSortedMs / oursSortedMs);
        Print("model_fill_vs_floor", oursSortedMs / floorMs);

        // --- Linearity: the same fill at three sizes --------------------------------------
        const double perRow10k = FillPerRowNs(10000, host, *shown);
        const double perRow100k = FillPerRowNs(100000, host, *shown);
        const double perRow1m = FillPerRowNs(1000000, host, *shown);
        Print("fill_per_row_ns_10k", perRow10k);
        Print("fill_per_row_ns_100k", perRow100k);
        Print("fill_per_row_ns_1m", perRow1m);
        const double growth = std::max(perRow100k / perRow10k, perRow1m / perRow100k);
        shown.reset();

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
                model.SetColumns(winadmin::BuildListColumns(QStringLiteral("Users"), widths));
                for (size_t i = 0; i < model.Columns().size(); ++i)
                    list.DetailsView()->header()->resizeSection(int(i), model.Columns()[i].width);
                model.SetRows(winadmin::FillListView(QStringLiteral("Users"), usersKey, session));
                list.SelectionModel()->setCurrentIndex(
                    model.index(0, 0),
                    QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
                list.repaint();
            },
            [&] { model.SetColumns({}); });
        Print("users_list_on_screen_ms", onScreenMs);
        // The fetch alone, for the share the transport has in the figure above.
        RowTable fetched;
        Print("users_fetch_ms", MedianMs([&] { fetched = session.UserListRows(host); },
                                         [&] { fetched = RowTable(); }));

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
            return Median(sorts);
        };
        const double sortMs = timeSorts();
        QLocale::setDefault(QLocale::c());
        Print("sort_100k_ms", sortMs);
        Print("sort_100k_c_locale_ms", timeSorts());
        model.SetColumns({});

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

        // --- The console's memory, in a process of its own ----------------------------------
        QProcess console;
        console.setProcessChannelMode(QProcess::ForwardedChannels);
        console.start(QCoreApplication::applicationFilePath(),
                      {QStringLiteral("--console"), QString::number(server.Port()), host});
        if (!console.waitForFinished(300000) || console.exitCode() != 0)
            std::fprintf(stderr, "the console's memory was not measured\n");

        Print("model_fill_speedup_vs_goal", (standardMs / oursMs) / 10.0);
        Print("model_fill_vs_floor_vs_goal", (oursSortedMs / floorMs) / 2.0);
        Print("fill_scaling_vs_goal", growth / 1.5);
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
