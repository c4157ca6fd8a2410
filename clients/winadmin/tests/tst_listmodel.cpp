// The list model behind every explorer list: the header-click sort with its
// reversing rule, what a refill keeps, cells read from records on demand,
// finding rows again, dragging rows, and Qt's model checks through all of it.
// (The explorer's tests run the checks on the lists of a whole installation.)

#include <QAbstractItemModelTester>
#include <QIcon>
#include <QItemSelectionModel>
#include <QMimeData>
#include <QScopeGuard>
#include <QTest>
#include <memory>

#include "shell/ListFillKinds.h"
#include "shell/ListModel.h"

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

QStringList ColumnTexts(const QAbstractItemModel& model, int column) {
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts << model.data(model.index(row, column)).toString();
    return texts;
}

}  // namespace

class TestListModel : public QObject {
    Q_OBJECT

private slots:
    void HeaderClicksSortAndReverse_data();
    void HeaderClicksSortAndReverse();
    void SelectionFollowsItsRowThroughSorts();
    void RefillKeepsTheOrderOfTheSameKind();
    void CellsReadFromRecordsWhenAskedFor();
    void FindingAndShowingRows();
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
    QCOMPARE(model.SortColumn(), -1);

    // Case does not decide the order; rows with equal texts keep theirs.
    QCOMPARE(model.SortByHeaderClick(0), Qt::AscendingOrder);
    QCOMPARE(ColumnTexts(model, 0), QStringList({"alpha", "Beta", "beta", "gamma"}));
    QCOMPARE(model.SortByHeaderClick(0), Qt::DescendingOrder);
    QCOMPARE(ColumnTexts(model, 0), QStringList({"gamma", "Beta", "beta", "alpha"}));
    QCOMPARE(model.SortByHeaderClick(0), Qt::AscendingOrder);
    QCOMPARE(ColumnTexts(model, 0), QStringList({"alpha", "Beta", "beta", "gamma"}));

    // Another column starts ascending, whatever the order was.
    QCOMPARE(model.SortByHeaderClick(0), Qt::DescendingOrder);
    QCOMPARE(model.SortByHeaderClick(1), Qt::AscendingOrder);
    QCOMPARE(ColumnTexts(model, 1), QStringList({"1", "1", "2", "3"}));
    // Equal comments in the order the previous sort left them (Beta before alpha).
    QCOMPARE(ColumnTexts(model, 0), QStringList({"Beta", "alpha", "gamma", "beta"}));
    QCOMPARE(model.SortColumn(), 1);
    QCOMPARE(model.SortByHeaderClick(1), Qt::DescendingOrder);
    QCOMPARE(ColumnTexts(model, 1), QStringList({"3", "2", "1", "1"}));

    // A click beside the columns changes nothing and is not remembered.
    model.SortByHeaderClick(7);
    QCOMPARE(model.SortColumn(), 1);
    QCOMPARE(model.SortOrder(), Qt::DescendingOrder);
}

void TestListModel::SelectionFollowsItsRowThroughSorts() {
    ListModel model;
    model.SetColumns(TwoColumns());
    model.SetRows(Rows({{"c", "x"}, {"a", "y"}, {"b", "z"}}));
    QItemSelectionModel selection(&model);
    selection.setCurrentIndex(model.index(1, 0),
                              QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    model.SortByHeaderClick(0);
    QCOMPARE(selection.currentIndex().row(), 0);
    QCOMPARE(model.Row(selection.currentIndex().row()).cells.front(), QStringLiteral("a"));
    model.SortByHeaderClick(0);
    QCOMPARE(selection.currentIndex().row(), 2);
    QVERIFY(selection.isRowSelected(2, {}));
    QCOMPARE(selection.selectedRows().size(), 1);
}

void TestListModel::RefillKeepsTheOrderOfTheSameKind() {
    ListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.SetColumns(TwoColumns());
    model.SetRows(Rows({{"b", "1"}, {"a", "2"}}));
    model.SortByHeaderClick(0);
    model.SortByHeaderClick(0);

    // A refresh: the same columns, rows in the server's order.
    model.SetColumns(TwoColumns());
    QCOMPARE(model.rowCount(), 0);
    model.SetRows(Rows({{"a", "1"}, {"c", "2"}, {"b", "3"}}));
    QCOMPARE(ColumnTexts(model, 0), QStringList({"c", "b", "a"}));
    // The next click on that header still reverses.
    QCOMPARE(model.SortByHeaderClick(0), Qt::AscendingOrder);

    // Another kind's columns start unsorted.
    model.SetColumns(TwoColumns("GroupName", "GroupComment"));
    model.SetRows(Rows({{"z", "1"}, {"y", "2"}}));
    QCOMPARE(model.SortColumn(), -1);
    QCOMPARE(ColumnTexts(model, 0), QStringList({"z", "y"}));
    QCOMPARE(model.SortByHeaderClick(0), Qt::AscendingOrder);

    model.Clear();
    QCOMPARE(model.rowCount(), 0);
    QCOMPARE(model.columnCount(), 2);
    model.SetColumns({});
    QCOMPARE(model.columnCount(), 0);
}

void TestListModel::CellsReadFromRecordsWhenAskedFor() {
    std::vector<UserRecord> users;
    for (const char* name : {"zora", "Émile", "adam"}) {
        UserRecord& user = users.emplace_back();
        user.set_name(name);
        user.set_comment(std::string("about ") + name);
    }
    std::vector<ListRow> rows = UserRows(std::move(users), QStringLiteral("fxmaster"));
    QCOMPARE(rows.size(), size_t(3));
    QCOMPARE(rows[1].cells.size(), 2);
    // Texts arrive as UTF-8 and are shown as what they say.
    QCOMPARE(rows[1].cells.ToStringList(), QStringList({"Émile", "about Émile"}));
    QCOMPARE(rows[1].cells.value(2), QString());
    QCOMPARE(rows[1].tag, QStringLiteral("fxmaster"));
    // Copies of a row read the same record.
    const ListRow copy = rows[2];

    ListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.SetColumns(TwoColumns());
    model.SetRows(std::move(rows));
    QCOMPARE(copy.cells.front(), QStringLiteral("adam"));
    QCOMPARE(model.FindText(QStringLiteral("Émile"), QStringLiteral("User")), 1);
    QCOMPARE(model.data(model.index(1, 1)).toString(), QStringLiteral("about Émile"));

    // Sorted as the administrator's language sorts, accents and case aside.
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::French, QLocale::France));
    model.SortByHeaderClick(1);
    QLocale::setDefault(before);
    QCOMPARE(ColumnTexts(model, 0), QStringList({"adam", "Émile", "zora"}));
}

void TestListModel::FindingAndShowingRows() {
    ListModel model;
    model.SetColumns(TwoColumns());
    std::vector<ListRow> rows = Rows({{"same", "1"}, {"same", "2"}, {"other"}});
    rows[1].iconKey = QStringLiteral("Group");
    rows[2].key.clear();
    model.SetRows(std::move(rows));
    QCOMPARE(model.FindKey(QStringLiteral("2Group")), -1);
    QCOMPARE(model.FindKey(QStringLiteral("2User")), 1);
    // Rows without a key are not found by an empty one.
    QCOMPARE(model.FindKey(QString()), -1);
    QCOMPARE(model.FindText(QStringLiteral("same")), 0);
    QCOMPARE(model.FindText(QStringLiteral("same"), QStringLiteral("Group")), 1);
    QCOMPARE(model.FindText(QStringLiteral("Same")), -1);
    QCOMPARE(model.FindText(QStringLiteral("other"), QStringLiteral("Group")), -1);

    // A row with fewer cells than columns shows the missing ones empty; the
    // icon of the row's kind is in the first column only.
    QCOMPARE(model.data(model.index(2, 1)).toString(), QString());
    QVERIFY(!model.data(model.index(1, 0), Qt::DecorationRole).value<QIcon>().isNull());
    QVERIFY(!model.data(model.index(1, 1), Qt::DecorationRole).isValid());
    QCOMPARE(model.data(model.index(0, 1), Qt::TextAlignmentRole).toInt(),
             int(Qt::AlignHCenter | Qt::AlignVCenter));
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
    QVERIFY(data);
    QCOMPARE(model.mimeTypes(), QStringList{ListModel::DragFormat});
    QCOMPARE(QString::fromUtf8(data->data(ListModel::DragFormat)),
             QStringLiteral("User\thost\tanna\nUser\thost\tbert"));
    QCOMPARE(ListModel::DraggedKind(data.get()), QStringLiteral("User"));
    std::unique_ptr<QMimeData> printer(model.mimeData({model.index(2, 0)}));
    QCOMPARE(ListModel::DraggedKind(printer.get()), QStringLiteral("Printer"));
    // Rows that cannot be dragged do not travel.
    QVERIFY(!std::unique_ptr<QMimeData>(model.mimeData({model.index(5, 0)})));

    QMimeData foreign;
    foreign.setText(QStringLiteral("User\thost\tanna"));
    QCOMPARE(ListModel::DraggedKind(&foreign), QString());
    QCOMPARE(ListModel::DraggedKind(nullptr), QString());
}

QTEST_MAIN(TestListModel)
#include "tst_listmodel.moc"
