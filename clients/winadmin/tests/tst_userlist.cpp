// The explorer's list of a server's users against the reference server: the
// rows, read from the compact table the list call answers, say what the whole
// records say, texts beyond ASCII included. (What a refresh shows is
// tst_explorer's.)

#include <QTest>

#include "demo/DemoData.h"
#include "lists/ListModel.h"
#include "shell/frmMain.h"
#include "store/Store.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

class TestUserList : public ExplorerSuite {
    Q_OBJECT

private slots:
    void RowsSayWhatTheRecordsSay();
};

void TestUserList::RowsSayWhatTheRecordsSay() {
    // Texts beyond ASCII travel as UTF-8 through the table.
    Store().CommitUser(veldrano::server::demo::MakeUser("fxmaster", "zoë", "Café ☎ desk"));
    auto main = fx_->OpenMain();
    ExplorerFixture::Click(*main, QStringLiteral("fxmasterUsers"));
    const ListModel& model = *main->ListRows();
    QList<QStringList> listed, stored;
    for (int row = 0; row < model.rowCount(); ++row)
        listed << QStringList{model.index(row, 0).data().toString(),
                              model.index(row, 1).data().toString()};
    for (const auto& user : Store().ListUsers("fxmaster"))
        stored << QStringList{QString::fromStdString(user.name()),
                              QString::fromStdString(user.comment())};
    QCOMPARE(listed, stored);
    QVERIFY(listed.contains(QStringList{"zoë", "Café ☎ desk"}));
}

QTEST_MAIN(TestUserList)
#include "tst_userlist.moc"
