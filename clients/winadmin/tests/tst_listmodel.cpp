// The list model behind every explorer list: the header-click sort with its
// reversing rule, what a refill keeps, cells read from a row table, finding
// rows and dragging them, with Qt's model checks running throughout.

#include <QAbstractItemModelTester>
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

// Users as a list call answers them.
RowTable UserTable(std::initializer_list<std::pair<const char*, const char*>> users) {
    RowTable rows(2);
    for (const auto& [name, comment] : users) rows.Append({name, comment});
    rows.Compact();
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
    void TableRowsShowFindSortAndDrag();
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

    // Same column twice reverses; rows with equal texts keep their order, and
    // the selection follows its row.
    QCOMPARE(model.SortByHeaderClick(0), Qt::AscendingOrder);
    QCOMPARE(Texts(model, 0), QStringList({"alpha", "Beta", "beta", "gamma"}));
    QCOMPARE(model.SortByHeaderClick(0), Qt::DescendingOrder);
    QCOMPARE(Texts(model, 0), QStringList({"gamma", "Beta", "beta", "alpha"}));
    QCOMPARE(selection.currentIndex().row(), 3);
    QVERIFY(selection.isRowSelected(3, {}));

    // Another column starts ascending, whatever the order was; equal comments
    // stay in the order the previous sort left them (Beta before alpha).
    QCOMPARE(model.SortByHeaderClick(1), Qt::AscendingOrder);
    QCOMPARE(Texts(model, 0), QStringList({"Beta", "alpha", "gamma", "beta"}));

    // A click beside the columns changes nothing and is not remembered.
    model.SortByHeaderClick(7);
    QCOMPARE(model.SortColumn(), 1);
    QCOMPARE(model.SortOrder(), Qt::AscendingOrder);
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
    model.SetRows(Rows({{"a", "1"}, {"c", "2"}, {"b", "3"}}));
    QCOMPARE(Texts(model, 0), QStringList({"c", "b", "a"}));
    QCOMPARE(model.SortByHeaderClick(0), Qt::AscendingOrder);

    // Another kind's columns start unsorted.
    model.SetColumns(TwoColumns("GroupName", "GroupComment"));
    model.SetRows(Rows({{"z", "1"}, {"y", "2"}}));
    QCOMPARE(model.SortColumn(), -1);
    QCOMPARE(Texts(model, 0), QStringList({"z", "y"}));
}

void TestListModel::TableRowsShowFindSortAndDrag() {
    RowTable filled = UserTable({{"bert", "2nd"}, {"anna", "1st"}, {"Émile", "3rd"}});
    QCOMPARE(filled.HeldBytes(), size_t(23 + 6 * 4));  // UTF-8 texts and cell ends, no more
    QVERIFY_THROWS_EXCEPTION(std::logic_error, filled.Append({"one cell"}));

    ListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.SetColumns(TwoColumns());
    model.SetRows(UserRows(std::move(filled), QStringLiteral("fxmaster")));
    // Texts arrive as UTF-8 and are shown as what they say; only the first
    // column is searched, case and kind counting.
    QCOMPARE(model.Row(2).cells.ToStringList(), QStringList({"Émile", "3rd"}));
    QCOMPARE(model.Row(2).tag, QStringLiteral("fxmaster"));
    QCOMPARE(model.FindText(QStringLiteral("Émile"), QStringLiteral("User")), 2);
    QCOMPARE(model.FindText(QStringLiteral("Émile"), QStringLiteral("Group")), -1);
    QCOMPARE(model.FindText(QStringLiteral("émile")), -1);
    QCOMPARE(model.FindText(QStringLiteral("3rd")), -1);
    QCOMPARE(model.FindKey(QString()), -1);  // rows without a key are not found by an empty one
    std::unique_ptr<QMimeData> drag(model.mimeData({model.index(2, 0), model.index(2, 1)}));
    QCOMPARE(ListModel::DraggedRows(drag.get()), QStringList{"User\tfxmaster\tÉmile"});

    QItemSelectionModel selection(&model);
    selection.setCurrentIndex(model.index(0, 0), QItemSelectionModel::Select);
    model.SortByHeaderClick(1);
    QCOMPARE(Texts(model, 0), QStringList({"anna", "bert", "Émile"}));
    QCOMPARE(selection.currentIndex().data().toString(), QStringLiteral("bert"));

    // Sorted as the administrator's language sorts, accents and case aside.
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::French, QLocale::France));
    model.SetRows(UserRows(UserTable({{"zora", ""}, {"Émile", ""}, {"adam", ""}}), {}));
    model.SortByHeaderClick(0);
    QLocale::setDefault(before);
    QCOMPARE(Texts(model, 0), QStringList({"adam", "Émile", "zora"}));
}

void TestListModel::RowsOfObjectsCanBeDragged() {
    ListModel model;
    model.SetColumns(TwoColumns());
    std::vector<ListRow> rows = Rows({{"anna", "x"}, {"bert", "y"}});
    for (const char* kind : {"Printer", "GatewayUser", "Group"})
        rows.push_back({{QString::fromLatin1(kind)}, kind, "fxprint01", {}});
    model.SetRows(std::move(rows));
    QStringList draggable;
    for (int row = 0; row < model.rowCount(); ++row)
        if (model.flags(model.index(row, 0)) & Qt::ItemIsDragEnabled)
            draggable << model.Row(row).iconKey;
    QCOMPARE(draggable, QStringList({"User", "User", "Printer", "GatewayUser"}));
    // Fewer cells than columns: the missing ones show empty.
    QCOMPARE(model.data(model.index(2, 1)).toString(), QString());

    // Both cells of both rows selected: two rows travel, each once.
    std::unique_ptr<QMimeData> data(model.mimeData(
        {model.index(0, 0), model.index(0, 1), model.index(1, 0), model.index(1, 1)}));
    QCOMPARE(QString::fromUtf8(data->data(ListModel::DragFormat)),
             QStringLiteral("User\thost\tanna\nUser\thost\tbert"));
    QCOMPARE(ListModel::DraggedKind(data.get()), QStringLiteral("User"));
    QVERIFY(!std::unique_ptr<QMimeData>(model.mimeData({model.index(4, 0)})));

    // Plain text that looks like a drag is not one.
    QMimeData foreign;
    foreign.setText(QStringLiteral("User\thost\tanna"));
    QCOMPARE(ListModel::DraggedKind(&foreign), QString());
}

QTEST_MAIN(TestListModel)
#include "tst_listmodel.moc"
