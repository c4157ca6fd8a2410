// The list model behind every explorer list: the header-click sort with its
// reversing rule, what a refill keeps, cells read from records, finding rows
// and dragging them, with Qt's model checks running throughout.

#include <QAbstractItemModelTester>
#include <QIcon>
#include <QItemSelectionModel>
#include <QMimeData>
#include <QScopeGuard>
#include <QTest>
#include <memory>

#include "lists/ListFillKinds.h"
#include "lists/ListModel.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

std::vector<ListColumn> TwoColumns(const char* first = "Name", const char* second = "Comment") {
    return {{first, first, 100, Qt::AlignLeft, "View", first},
            {second, second, 100, Qt::AlignHCenter, "View", second}};
}

std::vector<ListRow> Rows(const QList<QStringList>& cells, const QString& kind = "User") {
    std::vector<ListRow> rows;
    int n = 0;
    for (const QStringList& row : cells)
        rows.push_back({row, kind, QStringLiteral("host"), QString::number(++n) + kind});
    return rows;
}

QStringList Texts(const ListModel& model, int column) {
    return ExplorerFixture::ColumnTexts(&model, column);
}

}  // namespace

class TestListModel : public QObject {
    Q_OBJECT

private slots:
    void HeaderClicksSortAndReverse_data();
    void HeaderClicksSortAndReverse();
    void RefillKeepsTheOrderOfTheSameKind();
    void CellsFromRecordsAndFindingRows();
    void TableRowsRefillSortedAndKeepTheSelection();
    void RowsOfObjectsCanBeDragged();
};

void TestListModel::HeaderClicksSortAndReverse_data() {
    // Without a language (the C locale) and with one, case never decides.
    QTest::addColumn<QLocale>("locale");
    QTest::newRow("C") << QLocale::c();
    QTest::newRow("English") << QLocale(QLocale::English, QLocale::UnitedKingdom);
}

void TestListModel::HeaderClicksSortAndReverse() {
    QFETCH(QLocale, locale);
    const QLocale before;
    QLocale::setDefault(locale);
    auto restore = qScopeGuard([&] { QLocale::setDefault(before); });
    ListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.SetColumns(TwoColumns());
    model.SetRows(Rows({{"gamma", "2"}, {"Beta", "1"}, {"alpha", "1"}, {"beta", "3"}}));
    QItemSelectionModel selection(&model);
    selection.setCurrentIndex(model.index(2, 0),  // alpha
                              QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    QCOMPARE(model.SortColumn(), -1);

    // Same column twice reverses; rows with equal texts keep their order, and
    // the selection follows its row.
    const QStringList ascending = {"alpha", "Beta", "beta", "gamma"};
    QCOMPARE(model.SortByHeaderClick(0), Qt::AscendingOrder);
    QCOMPARE(Texts(model, 0), ascending);
    QCOMPARE(selection.currentIndex().row(), 0);
    QCOMPARE(model.SortByHeaderClick(0), Qt::DescendingOrder);
    QCOMPARE(Texts(model, 0), QStringList({"gamma", "Beta", "beta", "alpha"}));
    QCOMPARE(selection.currentIndex().row(), 3);
    QCOMPARE(selection.selectedRows().size(), 1);
    QVERIFY(selection.isRowSelected(3, {}));

    // Another column starts ascending, whatever the order was.
    QCOMPARE(model.SortByHeaderClick(1), Qt::AscendingOrder);
    QCOMPARE(Texts(model, 1), QStringList({"1", "1", "2", "3"}));
    // Equal comments in the order the previous sort left them (Beta before alpha).
    QCOMPARE(Texts(model, 0), QStringList({"Beta", "alpha", "gamma", "beta"}));
    QCOMPARE(model.SortByHeaderClick(1), Qt::DescendingOrder);
    QCOMPARE(Texts(model, 1), QStringList({"3", "2", "1", "1"}));

    // A click beside the columns changes nothing and is not remembered.
    model.SortByHeaderClick(7);
    QCOMPARE(model.SortColumn(), 1);
    QCOMPARE(model.SortOrder(), Qt::DescendingOrder);
}

void TestListModel::RefillKeepsTheOrderOfTheSameKind() {
    ListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.SetColumns(TwoColumns());
    model.SetRows(Rows({{"b", "1"}, {"a", "2"}}));
    model.SortByHeaderClick(0);
    model.SortByHeaderClick(0);

    // A refresh: the same columns, rows in the server's order, kept descending.
    model.SetColumns(TwoColumns());
    QCOMPARE(model.rowCount(), 0);
    model.SetRows(Rows({{"a", "1"}, {"c", "2"}, {"b", "3"}}));
    QCOMPARE(Texts(model, 0), QStringList({"c", "b", "a"}));
    QCOMPARE(model.SortByHeaderClick(0), Qt::AscendingOrder);

    // Another kind's columns start unsorted.
    model.SetColumns(TwoColumns("GroupName", "GroupComment"));
    model.SetRows(Rows({{"z", "1"}, {"y", "2"}}));
    QCOMPARE(model.SortColumn(), -1);
    QCOMPARE(Texts(model, 0), QStringList({"z", "y"}));

    model.Clear();
    QCOMPARE(model.rowCount(), 0);
    QCOMPARE(model.columnCount(), 2);
    model.SetColumns({});
    QCOMPARE(model.columnCount(), 0);
}

void TestListModel::CellsFromRecordsAndFindingRows() {
    std::vector<UserRecord> users;
    for (const char* name : {"zora", "Émile", "adam"}) {
        UserRecord& user = users.emplace_back();
        user.set_name(name);
        user.set_comment(std::string("about ") + name);
    }
    std::vector<ListRow> rows = UserRows(std::move(users), QStringLiteral("fxmaster"));
    // Texts arrive as UTF-8 and are shown as what they say.
    QCOMPARE(rows[1].cells.ToStringList(), QStringList({"Émile", "about Émile"}));
    QCOMPARE(rows[1].tag, QStringLiteral("fxmaster"));
    const ListRow copy = rows[2];  // copies read the same record
    rows.push_back({{"short"}, QStringLiteral("Group"), {}, {}});

    ListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.SetColumns(TwoColumns());
    model.SetRows(std::move(rows));
    QCOMPARE(copy.cells.front(), QStringLiteral("adam"));
    QCOMPARE(model.FindText(QStringLiteral("Émile"), QStringLiteral("User")), 1);
    QCOMPARE(model.FindText(QStringLiteral("émile")), -1);
    QCOMPARE(model.FindText(QStringLiteral("short"), QStringLiteral("User")), -1);
    QCOMPARE(model.FindKey(QString()), -1);  // rows without a key are not found by an empty one
    // Fewer cells than columns: the missing ones show empty; the kind's icon
    // is in the first column only.
    QCOMPARE(model.data(model.index(3, 1)).toString(), QString());
    QVERIFY(!model.data(model.index(3, 0), Qt::DecorationRole).value<QIcon>().isNull());
    QVERIFY(!model.data(model.index(3, 1), Qt::DecorationRole).isValid());
    QCOMPARE(model.data(model.index(0, 1), Qt::TextAlignmentRole).toInt(),
             int(Qt::AlignHCenter | Qt::AlignVCenter));

    // Sorted as the administrator's language sorts, accents and case aside.
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::French, QLocale::France));
    model.SortByHeaderClick(1);
    QLocale::setDefault(before);
    QCOMPARE(Texts(model, 0), QStringList({"short", "adam", "Émile", "zora"}));
}

void TestListModel::TableRowsRefillSortedAndKeepTheSelection() {
    auto table = [](std::initializer_list<std::pair<const char*, const char*>> users) {
        RowTable rows(2);
        for (const auto& [name, comment] : users) rows.Append({name, comment});
        rows.Compact();
        return rows;
    };
    RowTable filled = table({{"bert", "2nd"}, {"anna", "1st"}, {"Émile", "3rd"}});
    QCOMPARE(filled.HeldBytes(), size_t(23 + 6 * 4));  // UTF-8 texts and cell ends, no more
    QVERIFY_THROWS_EXCEPTION(std::logic_error, filled.Append({"one cell"}));

    ListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.SetColumns(TwoColumns());
    model.SetRows(UserRows(std::move(filled), QStringLiteral("fxmaster")));
    QCOMPARE(Texts(model, 1), QStringList({"2nd", "1st", "3rd"}));
    QItemSelectionModel selection(&model);
    selection.setCurrentIndex(model.index(0, 0), QItemSelectionModel::Select);
    model.SortByHeaderClick(1);
    QCOMPARE(Texts(model, 0), QStringList({"anna", "bert", "Émile"}));
    QCOMPARE(selection.currentIndex().data().toString(), QStringLiteral("bert"));

    // A refresh with the same columns comes in sorted as chosen; a row past
    // the table's cells has none.
    model.SetColumns(TwoColumns());
    model.SetRows(UserRows(table({{"dora", "0th"}, {"carl", "4th"}}), QStringLiteral("fxmaster")));
    QCOMPARE(Texts(model, 0), QStringList({"dora", "carl"}));
    QCOMPARE(model.Row(1).cells.ToStringList(), QStringList({"carl", "4th"}));
    QCOMPARE(model.Row(1).tag, QStringLiteral("fxmaster"));
    QCOMPARE(model.FindText(QStringLiteral("carl"), QStringLiteral("User")), 1);
    QCOMPARE(model.FindText(QStringLiteral("4th")), -1);
}

void TestListModel::RowsOfObjectsCanBeDragged() {
    ListModel model;
    model.SetColumns(TwoColumns());
    std::vector<ListRow> rows = Rows({{"anna", "x"}, {"bert", "y"}});
    for (const char* kind : {"Printer", "Device", "GatewayUser", "Group", "Rate", "Server"})
        rows.push_back({{QString::fromLatin1(kind)}, kind, "fxprint01", {}});
    model.SetRows(std::move(rows));
    QStringList draggable;
    for (int row = 0; row < model.rowCount(); ++row)
        if (model.flags(model.index(row, 0)) & Qt::ItemIsDragEnabled)
            draggable << model.Row(row).iconKey;
    QCOMPARE(draggable, QStringList({"User", "User", "Printer", "Device", "GatewayUser"}));

    // Both cells of both rows selected: two rows travel, each once.
    std::unique_ptr<QMimeData> data(model.mimeData(
        {model.index(0, 0), model.index(0, 1), model.index(1, 0), model.index(1, 1)}));
    QCOMPARE(QString::fromUtf8(data->data(ListModel::DragFormat)),
             QStringLiteral("User\thost\tanna\nUser\thost\tbert"));
    QCOMPARE(ListModel::DraggedKind(data.get()), QStringLiteral("User"));
    std::unique_ptr<QMimeData> printer(model.mimeData({model.index(2, 0)}));
    QCOMPARE(ListModel::DraggedKind(printer.get()), QStringLiteral("Printer"));
    QVERIFY(!std::unique_ptr<QMimeData>(model.mimeData({model.index(5, 0)})));

    // Plain text that looks like a drag is not one.
    QMimeData foreign;
    foreign.setText(QStringLiteral("User\thost\tanna"));
    QCOMPARE(ListModel::DraggedKind(&foreign), QString());
    QCOMPARE(ListModel::DraggedKind(nullptr), QString());
}

QTEST_MAIN(TestListModel)
#include "tst_listmodel.moc"
