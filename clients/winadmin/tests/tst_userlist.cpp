// The explorer's list of a server's users against the reference server: the
// list reads only what it shows of each user, yet its rows hold the texts of
// the whole records; F5 shows what another administrator changed meanwhile;
// the rows of the compact table sort, search and drag like any other rows.

#include <QLocale>
#include <QMimeData>
#include <QTest>
#include <QTreeWidget>
#include <memory>

#include "common/Labels.h"
#include "demo/DemoData.h"
#include "lists/KindIcons.h"
#include "lists/ListModel.h"
#include "shell/frmMain.h"
#include "store/Store.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

// Name and comment of every row, as the list shows them.
QList<QStringList> Listed(const ListModel& model) {
    QList<QStringList> rows;
    for (int row = 0; row < model.rowCount(); ++row)
        rows << QStringList{model.index(row, 0).data().toString(),
                            model.index(row, 1).data().toString()};
    return rows;
}

// The same from the whole records the store holds, in the store's order.
QList<QStringList> Stored(veldrano::server::Store& store, const std::string& host) {
    QList<QStringList> rows;
    for (const auto& user : store.ListUsers(host))
        rows << QStringList{QString::fromStdString(user.name()),
                            QString::fromStdString(user.comment())};
    return rows;
}

}  // namespace

class TestUserList : public ExplorerSuite {
    Q_OBJECT

private slots:
    void RowsHoldWhatTheWholeRecordsSay();
    void RefreshShowsWhatChangedMeanwhile();
};

void TestUserList::RowsHoldWhatTheWholeRecordsSay() {
    // Texts beyond ASCII travel as UTF-8 through the table.
    Store().CommitUser(veldrano::server::demo::MakeUser("fxmaster", "zoë", "Café ☎ desk"));
    auto main = fx_->OpenMain();
    ExplorerFixture::Click(*main, QStringLiteral("fxmasterUsers"));
    ListModel& model = *main->ListRows();

    QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), GetLabel(QStringLiteral("UserName")));
    QCOMPARE(model.headerData(1, Qt::Horizontal).toString(),
             GetLabel(QStringLiteral("UserComment")));
    QVERIFY(model.rowCount() > 2);
    QCOMPARE(Listed(model), Stored(Store(), "fxmaster"));
    const int zoe = model.FindText(QStringLiteral("zoë"), QStringLiteral("User"));
    QCOMPARE(model.index(zoe, 1).data().toString(), QStringLiteral("Café ☎ desk"));
    QCOMPARE(model.FindText(QStringLiteral("zoë"), QStringLiteral("Group")), -1);
    QCOMPARE(model.index(0, 2).data(), QVariant());  // no third cell

    // Every row is a user of its server, as the commands read it, with the
    // user's picture; none has a key.
    for (int row = 0; row < model.rowCount(); ++row) {
        const ListRow listed = model.Row(row);
        QCOMPARE(listed.iconKey, QStringLiteral("User"));
        QCOMPARE(listed.tag, QStringLiteral("fxmaster"));
        QVERIFY(listed.key.isEmpty());
        QCOMPARE(listed.cells.size(), 2);
    }
    QVERIFY(!model.index(0, 0).data(Qt::DecorationRole).isNull());
    QCOMPARE(model.FindKey(QStringLiteral("1Rate")), -1);

    // Sorting by the comment moves the rows, not their texts apart. (In the
    // C locale the model compares texts case aside, as below.)
    QLocale::setDefault(QLocale::c());
    ExplorerFixture::ClickHeader(*main, 1);
    ExplorerFixture::ClickHeader(*main, 1);
    QCOMPARE(model.SortOrder(), Qt::DescendingOrder);
    QList<QStringList> descending = Stored(Store(), "fxmaster");
    std::stable_sort(descending.begin(), descending.end(), [](const auto& a, const auto& b) {
        return QString::compare(a[1], b[1], Qt::CaseInsensitive) > 0;
    });
    QCOMPARE(Listed(model), descending);

    // A dragged row says what it is.
    const int sorted = model.FindText(QStringLiteral("zoë"));
    std::unique_ptr<QMimeData> drag(
        model.mimeData({model.index(sorted, 0), model.index(sorted, 1)}));
    QVERIFY(drag);
    QCOMPARE(ListModel::DraggedRows(drag.get()), QStringList{"User\tfxmaster\tzoë"});
    QVERIFY(model.flags(model.index(sorted, 0)) & Qt::ItemIsDragEnabled);
}

void TestUserList::RefreshShowsWhatChangedMeanwhile() {
    // One user that no route or group names, so that it can go.
    Store().CommitUser(veldrano::server::demo::MakeUser("fxmaster", "leaving", "On the way out"));
    auto main = fx_->OpenMain();
    ExplorerFixture::Click(*main, QStringLiteral("fxmasterUsers"));
    ListModel& model = *main->ListRows();
    const QList<QStringList> before = Listed(model);
    QVERIFY(before.size() > 2);

    // Another administrator edits one user, deletes another, adds a third.
    auto& store = Store();
    const std::string edited = before[0][0].toStdString();
    const QString deleted = QStringLiteral("leaving");
    QVERIFY(before.contains(QStringList{deleted, "On the way out"}));
    auto user = store.GetUser("fxmaster", edited);
    user.set_comment("Moved to the second floor");
    store.CommitUser(user);
    store.DeleteUser("fxmaster", deleted.toStdString());
    store.CommitUser(veldrano::server::demo::MakeUser("fxmaster", "aaron", "Added meanwhile"));
    QTest::keyClick(main->Tree(), Qt::Key_F5);

    const QList<QStringList> after = Listed(model);
    QCOMPARE(after, Stored(store, "fxmaster"));
    QVERIFY(after.contains(QStringList{before[0][0], "Moved to the second floor"}));
    QVERIFY(!after.contains(before[0]));
    QCOMPARE(model.FindText(deleted), -1);
    QCOMPARE(model.index(model.FindText(QStringLiteral("aaron")), 1).data().toString(),
             QStringLiteral("Added meanwhile"));
    QCOMPARE(after.size(), before.size());
}

QTEST_MAIN(TestUserList)
#include "tst_userlist.moc"
