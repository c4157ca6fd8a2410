// Find in list against the reference server (its label table): the matching
// rules, where a search starts and how it wraps, what it asks, the find dialog
// and the main window's Find and Find Next driven from the keyboard, and the
// lists other windows register.

#include <QAction>
#include <QCheckBox>
#include <QDialog>
#include <QLineEdit>
#include <QListView>
#include <QTest>
#include <QTreeView>
#include <memory>

#include "common/AppContext.h"
#include "common/Labels.h"
#include "lists/ExplorerListView.h"
#include "lists/Find.h"
#include "lists/ListModel.h"
#include "shell/frmFind.h"
#include "shell/frmMain.h"
#include "support/ConsoleFixture.h"

using namespace winadmin;

namespace {

// Name, comment, phone. Each row is there to tell one rule from its near miss.
const QList<QStringList> kRows = {
    {"Anna", "Sales office", "+49 30 1234"},
    {"Bert", "Support", "+44 20 777"},
    {"Carla", "sales", "+49 89 555"},
    {"Dieter", "QA", "1x5"},
    {"Eva", "Sales", "Q?"},
    {"Sal", "Route 1.5", "[ext]"},
};

void Fill(ListModel& model, const QList<QStringList>& rows) {
    std::vector<ListColumn> columns;
    for (const char* key : {"Name", "Comment", "Phone"})
        columns.push_back({key, key, 100, Qt::AlignLeft, "View", key});
    model.SetColumns(std::move(columns));
    std::vector<ListRow> filled;
    for (const QStringList& row : rows) filled.push_back({row, QStringLiteral("User"), {}, {}});
    model.SetRows(std::move(filled));
}

void Select(QAbstractItemView* view, int row) {
    view->selectionModel()->setCurrentIndex(
        view->model()->index(row, 0),
        QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

// The selected rows, followed by the current row.
QList<int> Selection(const QAbstractItemView* view) {
    QList<int> rows;
    for (const QModelIndex& index : view->selectionModel()->selectedRows()) rows << index.row();
    rows << view->selectionModel()->currentIndex().row();
    return rows;
}

}  // namespace

class TestFind : public ConsoleSuite {
    Q_OBJECT

private slots:
    void Search_data();
    void Search();
    void MainWindowFindFromKeyboard();
    void RegisteredListsAndTheirLifetime();
    void LentToModalOwnerAndBack();

private:
    // A list as a selection dialog would show it, registered under a code.
    QTreeView* OpenList(const QString& callerCode, const QList<QStringList>& rows = kRows);
    std::unique_ptr<frmMain> OpenMain();
    void CheckPrompt(int index, const char* key, const QString& title, PromptButtons buttons);

    void SetUp() override { model_ = std::make_unique<ListModel>(); }
    void TearDown() override {
        list_.reset();
        model_.reset();
        delete frmFind::Loaded();
    }

    std::unique_ptr<ListModel> model_;  // the list of OpenList
    std::unique_ptr<QTreeView> list_;
};

QTreeView* TestFind::OpenList(const QString& callerCode, const QList<QStringList>& rows) {
    Fill(*model_, rows);
    list_ = std::make_unique<QTreeView>();
    list_->setSelectionMode(QAbstractItemView::SingleSelection);
    list_->setSelectionBehavior(QAbstractItemView::SelectRows);
    list_->setModel(model_.get());
    list_->show();
    RegisterFindList(callerCode, list_.get());
    return list_.get();
}

std::unique_ptr<frmMain> TestFind::OpenMain() {
    auto main = std::make_unique<frmMain>();
    // The explorer's own rows, as if a node had filled them.
    Fill(*main->ListRows(), kRows);
    if (!ShowActive(*main)) qWarning("main window not activated");
    return main;
}

void TestFind::CheckPrompt(int index, const char* key, const QString& title,
                           PromptButtons buttons) {
    QVERIFY(index < fx_->prompter.Prompts().size());
    const Prompt& prompt = fx_->prompter.Prompts().at(index).prompt;
    QCOMPARE(prompt.text, GetLabel(QLatin1String(key)));
    QCOMPARE(prompt.title, title);
    QCOMPARE(prompt.buttons, buttons);
}

void TestFind::Search_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("matchCase");
    QTest::addColumn<bool>("wholeWord");
    QTest::addColumn<int>("selected");
    QTest::addColumn<QList<int>>("answers");
    QTest::addColumn<int>("expected");  // -1: nothing selected
    QTest::addColumn<QStringList>("prompts");
    const QList<int> none;
    const QStringList quiet;

    QTest::newRow("sub-item column, case ignored")
        << "UPPORT" << false << false << -1 << none << 1 << quiet;
    QTest::newRow("case matched") << "sales" << true << false << -1 << none << 2 << quiet;
    QTest::newRow("starts after the selection")
        << "sales" << false << false << 0 << none << 2 << quiet;
    QTest::newRow("whole word skips containing")
        << "sales" << false << true << -1 << none << 2 << quiet;
    QTest::newRow("star is a wildcard") << "49*555" << false << false << -1 << none << 2 << quiet;
    QTest::newRow("star in whole word keeps length")
        << "Sa*" << false << true << -1 << none << 5 << quiet;
    const QStringList again{"MsgFindAgain"};
    QTest::newRow("last row, yes wraps")
        << "bert" << false << false << 5 << QList<int>{Answer::Yes} << 1 << again;
    QTest::newRow("last row, no stays")
        << "bert" << false << false << 5 << QList<int>{Answer::No} << 5 << again;
    // Not found: nothing to wrap to from the top; a cell that only begins
    // with the text is no whole-word match on either pass.
    QTest::newRow("not found from the top")
        << "zzz" << false << false << -1 << QList<int>{Answer::OK} << -1
        << QStringList{"MsgNotFound"};
    QTest::newRow("not found after wrapping")
        << "Sales off" << false << true << 2 << QList<int>{Answer::Yes, Answer::OK} << 2
        << QStringList{"MsgFindAgain", "MsgNotFound"};
}

void TestFind::Search() {
    QFETCH(QString, text);
    QFETCH(bool, matchCase);
    QFETCH(bool, wholeWord);
    QFETCH(int, selected);
    QFETCH(QList<int>, answers);
    QFETCH(int, expected);
    QFETCH(QStringList, prompts);

    QTreeView* view = OpenList(kFindUserSelection);
    if (selected >= 0) Select(view, selected);
    for (int answer : answers) fx_->prompter.Answer(answer);
    const bool found = answers.isEmpty() || answers.last() == Answer::Yes;
    QCOMPARE(PressFind(kFindUserSelection, text, {matchCase, wholeWord}, QStringLiteral("Find")),
             found);
    QCOMPARE(fx_->prompter.Prompts().size(), prompts.size());
    for (int i = 0; i < prompts.size(); ++i)
        CheckPrompt(i, qPrintable(prompts[i]), QStringLiteral("Find"),
                    prompts[i] == "MsgNotFound" ? PromptButtons::OK : PromptButtons::YesNo);
    if (expected < 0)
        QVERIFY(!view->selectionModel()->hasSelection());
    else
        QCOMPARE(Selection(view), QList<int>({expected, expected}));
}

void TestFind::MainWindowFindFromKeyboard() {
    auto main = OpenMain();
    ExplorerListView* list = main->List();
    QAbstractItemView* details = list->DetailsView();
    // Find Next before anything was searched for: an empty text never
    // searches.
    fx_->prompter.Answer(Answer::OK);
    QTest::keyClick(main.get(), Qt::Key_F3);
    CheckPrompt(0, "MsgFindEmpty", ApplicationTitle(), PromptButtons::OK);
    QVERIFY(!details->selectionModel()->hasSelection());

    QTest::keyClick(main.get(), Qt::Key_F, Qt::ControlModifier);
    frmFind* find = frmFind::Loaded();
    QVERIFY(find && QTest::qWaitForWindowActive(find));
    QCOMPARE(find->CallerCode(), kFindMain);
    auto* text = Child<QLineEdit>(*find, "edtFindText");

    QTest::keyClicks(text, QStringLiteral("+49"));
    QTest::keyClick(text, Qt::Key_Return);
    QCOMPARE(Selection(details), QList<int>({0, 0}));
    // Still up: Enter again goes on to the next match.
    QTest::keyClick(text, Qt::Key_Return);
    QCOMPARE(Selection(details), QList<int>({2, 2}));

    // Escape only hides; Find Next in the main window goes on with the same
    // text, now as a whole word with match case, typed in before hiding.
    QTest::keyClick(text, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(text, QStringLiteral("Sales"));
    QTest::keyClick(Child<QCheckBox>(*find, "chkMatchCase"), Qt::Key_Space);
    QTest::keyClick(Child<QCheckBox>(*find, "chkWholeWord"), Qt::Key_Space);
    QTest::keyClick(text, Qt::Key_Escape);
    QVERIFY(!find->isVisible());
    main->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(main.get()));

    // In the icon modes the same selection is made and shown where it is seen
    // (from the first row: row 2 is where a search ignoring case would stop).
    Child<QAction>(*main, "mnuViewLargeIcons")->trigger();
    Select(list->IconView(), 0);
    QTest::keyClick(main.get(), Qt::Key_F3);
    QCOMPARE(Selection(list->IconView()), QList<int>({4, 4}));
}

void TestFind::RegisteredListsAndTheirLifetime() {
    auto main = OpenMain();
    Select(main->List()->DetailsView(), 5);
    QTreeView* view = OpenList(kFindGroupSelection, {{"Sales team"}, {"Support team"}});
    QVERIFY(PressFind(kFindGroupSelection, QStringLiteral("support"), {}));
    QCOMPARE(Selection(view), QList<int>({1, 1}));
    // The main list's selection is its own.
    QCOMPARE(Selection(main->List()->DetailsView()), QList<int>({5, 5}));

    // A list that is gone is no longer searched: a beep, no message.
    list_.reset();
    QVERIFY(!FindList(kFindGroupSelection));
    QVERIFY(!PressFind(kFindGroupSelection, QStringLiteral("x"), {}));
    QCOMPARE(fx_->prompter.BeepCount(), 1);
    QVERIFY(fx_->prompter.Prompts().isEmpty());
}

void TestFind::LentToModalOwnerAndBack() {
    auto main = OpenMain();
    auto* find = new frmFind(main.get());
    auto* text = Child<QLineEdit>(*find, "edtFindText");
    // A modal selection dialog with its own list.
    auto selection = std::make_unique<QDialog>(main.get());
    auto* view = new QTreeView(selection.get());
    ListModel users;
    Fill(users, {{"Bert"}, {"Dora"}, {"Doris"}});
    view->setModel(&users);
    RegisterFindList(kFindUserSelection, view);
    selection->open();
    QVERIFY(QTest::qWaitForWindowExposed(selection.get()));
    ShowFindDialog(kFindUserSelection, view);
    QCOMPARE(find->parentWidget(), selection.get());
    QTest::keyClicks(text, QStringLiteral("dor"));
    QTest::keyClick(text, Qt::Key_Return);
    QCOMPARE(Selection(view), QList<int>({1, 1}));

    // The selection dialog closes: back to the main window, hidden, serving
    // the main list again.
    selection->accept();
    QCOMPARE(find->parentWidget(), main.get());
    QVERIFY(!find->isVisible());
    QCOMPARE(find->CallerCode(), kFindMain);

    // Lent again and its borrower destroyed while it still shows.
    selection->open();
    ShowFindDialog(kFindUserSelection, selection.get());
    selection.reset();
    QCOMPARE(frmFind::Loaded(), find);
    QCOMPARE(find->parentWidget(), main.get());
}

QTEST_MAIN(TestFind)
#include "tst_find.moc"
