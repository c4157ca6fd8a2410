// bench-find: what Find costs on a large list.
//
// Measures, side by side in one run, a search of a 100,000-row list whose only
// match is in the last cell of the last row (so every cell is read): the
// console's PressFindOnePart through the view and its model, without and with
// match case and whole word, and over cells that the model keeps as UTF-8
// bytes (converted as they are read), against the plainest possible loop that reads the
// same cells straight from the rows and calls QString::contains. Prints the
// median times and the ratio of each to that loop.
//
// Usage: bench-find [rows]

#include <QApplication>
#include <QTreeView>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

#include "lists/Find.h"
#include "lists/ListModel.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr int Runs = 7;

double MedianMs(const std::function<void()>& work) {
    std::vector<double> times;
    for (int run = 0; run < Runs; ++run) {
        const auto start = Clock::now();
        work();
        times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

// Rows as the list fills make them from server records: the cells either as
// texts or as the UTF-8 bytes that the records brought.
void FillRows(winadmin::ListModel& model, int rows, bool utf8) {
    std::vector<winadmin::ListColumn> columns(4);
    for (auto& column : columns) column.header = column.key = QStringLiteral("Column");
    model.SetColumns(std::move(columns));
    std::vector<winadmin::ListRow> filled(static_cast<size_t>(rows));
    for (int i = 0; i < rows; ++i) {
        QStringList cells = {
            QStringLiteral("user%1").arg(i),
            QStringLiteral("User number %1 of the sales office").arg(i),
            QStringLiteral("+49 30 %1").arg(i, 7, 10, QLatin1Char('0')),
            i + 1 == rows ? QStringLiteral("NeedleHost") : QStringLiteral("host%1").arg(i % 16)};
        if (utf8) {
            std::string bytes[4];
            for (int c = 0; c < 4; ++c) bytes[c] = cells[c].toStdString();
            filled[size_t(i)].cells =
                winadmin::ListCells::FromUtf8({bytes[0], bytes[1], bytes[2], bytes[3]});
        } else {
            filled[size_t(i)].cells = std::move(cells);
        }
    }
    model.SetRows(std::move(filled));
}

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int rows = argc > 1 ? std::max(1, std::atoi(argv[1])) : 100000;

    winadmin::ListModel model;
    FillRows(model, rows, false);
    QTreeView view;
    view.setModel(&model);
    winadmin::ListModel utf8Model;
    FillRows(utf8Model, rows, true);
    QTreeView utf8View;
    utf8View.setModel(&utf8Model);

    // Only the last row matches, so a search from the top reads every cell
    // and never asks anything.
    auto find = [](QTreeView& list, const QString& text, bool wholeWord, bool ignoreCase) {
        return [&list, text, wholeWord, ignoreCase] {
            list.selectionModel()->clear();
            if (!winadmin::PressFindOnePart(text, wholeWord, ignoreCase, &list, QString()))
                std::abort();
        };
    };
    const double baseline = MedianMs([&] {
        int found = -1;
        for (int row = 0; row < rows && found < 0; ++row)
            for (int column = 0; column < 4; ++column)
                if (model.Row(row).cells.at(column).contains(QStringLiteral("needle"),
                                                             Qt::CaseInsensitive))
                    found = row;
        if (found != rows - 1) std::abort();
    });
    const double ignoreCase = MedianMs(find(view, QStringLiteral("needle"), false, true));
    const double matchCase = MedianMs(find(view, QStringLiteral("Needle"), false, false));
    const double wholeWord = MedianMs(find(view, QStringLiteral("needlehost"), true, true));
    const double wildcard = MedianMs(find(view, QStringLiteral("need*host"), false, true));
    const double fromUtf8 = MedianMs(find(utf8View, QStringLiteral("needle"), false, true));

    std::printf("rows: %d, cells: %d, median of %d runs\n", rows, rows * 4, Runs);
    std::printf("baseline (QString::contains over the rows): %.2f ms\n", baseline);
    const struct {
        const char* name;
        double ms;
    } results[] = {{"find, case ignored", ignoreCase},
                   {"find, match case", matchCase},
                   {"find, whole word", wholeWord},
                   {"find, wildcard", wildcard},
                   {"find, case ignored, cells kept as UTF-8", fromUtf8}};
    for (const auto& result : results)
        std::printf("%s: %.2f ms, ratio to baseline %.2f\n", result.name, result.ms,
                    baseline > 0 ? result.ms / baseline : 0.0);
    return 0;
}
