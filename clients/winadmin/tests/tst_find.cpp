// The list model behind every list and Find in it, against the reference
// server (its label table): the header-click sort with its reversing rule and
// cells read from a row table (with Qt's model checks running); the matching
// rules, where a search starts and how it wraps, what it asks, the find dialog
// and the main window's Find and Find Next driven from the keyboard, and the
// lists other windows register.

#include <QAbstractItemModelTester>
#include <QAction>
#include <QCheckBox>
#include <QDialog>
#include <QLineEdit>
#include <QScopeGuard>
#include <QTest>
#include <QTreeView>
#include <memory>

#include "common/Labels.h"
#include "lists/ExplorerListView.h"
#include "lists/Find.h"
#include "lists/ListFillKinds.h"
#include "lists/ListModel.h"
#include "shell/frmFind.h"
#include "shell/frmMain.h"
#include "support/ExplorerFixture.h"

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

QStringList Texts(const ListModel& model, int column) {
    return ExplorerFixture::ColumnTexts(&model, column);
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
    void HeaderClicksSortAndReverse_data();
    void HeaderClicksSortAndReverse();
    void TableRowsShowAndFind();
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

void TestFind::HeaderClicksSortAndReverse_data() {
    // Without a language (the C locale) and with one, case never decides.
    QTest::addColumn<QLocale>("locale");
    QTest::newRow("C") << QLocale::c();
    QTest::newRow("English") << QLocale(QLocale::English, QLocale::UnitedKingdom);
}

void TestFind::HeaderClicksSortAndReverse() {
    QFETCH(QLocale, locale);
    const QLocale before;
    QLocale::setDefault(locale);
    auto restore = qScopeGuard([&] { QLocale::setDefault(before); });
    ListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    Fill(model, {{"gamma", "2"}, {"Beta", "1"}, {"alpha", "1"}, {"beta", "3"}});
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
}

void TestFind::TableRowsShowAndFind() {
    // Users as a list call answers them.
    RowTable filled(2);
    for (const char* name : {"bert", "anna", "Émile"}) filled.Append({name, "2nd"});
    filled.Compact();
    QCOMPARE(filled.HeldBytes(), size_t(23 + 6 * 4));  // UTF-8 texts and cell ends, no more
    QVERIFY_THROWS_EXCEPTION(std::logic_error, filled.Append({"one cell"}));

    ListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    Fill(model, {});
    model.SetRows(UserRows(std::move(filled), QStringLiteral("fxmaster")));
    // Texts arrive as UTF-8 and are shown as what they say; only the first
    // column is searched, case and kind counting.
    QCOMPARE(model.Row(2).cells.ToStringList(), QStringList({"Émile", "2nd"}));
    QCOMPARE(model.FindText(QStringLiteral("Émile"), QStringLiteral("User")), 2);
    QCOMPARE(model.FindText(QStringLiteral("Émile"), QStringLiteral("Group")), -1);
    QCOMPARE(model.FindText(QStringLiteral("émile")), -1);
    QCOMPARE(model.FindText(QStringLiteral("2nd")), -1);
    QCOMPARE(model.FindKey(QString()), -1);  // rows without a key are not found by an empty one
}

void TestFind::Search_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("matchCase");
    QTest::addColumn<bool>("wholeWord");
    QTest::addColumn<int>("selected");
    QTest::addColumn<QList<int>>("answers");  // the first asks to search again
    QTest::addColumn<int>("expected");        // -1: nothing selected
    const auto row = [](const char* name, const char* text, bool matchCase, bool wholeWord,
                        int selected, QList<int> answers, int expected) {
        QTest::newRow(name) << QString(text) << matchCase << wholeWord << selected << answers
                            << expected;
    };
    row("sub-item column, case ignored", "UPPORT", false, false, -1, {}, 1);
    row("case matched", "sales", true, false, -1, {}, 2);
    row("whole word skips containing", "sales", false, true, -1, {}, 2);
    row("star is a wildcard", "49*555", false, false, -1, {}, 2);
    row("last row, yes wraps", "bert", false, false, 5, {Answer::Yes}, 1);
    // Not found: nothing to wrap to from the top; a cell that only begins
    // with the text is no whole-word match on either pass.
    row("not found from the top", "zzz", false, false, -1, {Answer::OK}, -1);
    row("not found after wrapping", "Sales off", false, true, 2, {Answer::Yes, Answer::OK}, 2);
}

void TestFind::Search() {
    QFETCH(QList<int>, answers);
    QFETCH(int, selected);
    QFETCH(int, expected);
    QTreeView* view = OpenList(kFindUserSelection);
    if (selected >= 0) Select(view, selected);
    for (int answer : answers) fx_->prompter.Answer(answer);
    QFETCH(QString, text);
    QFETCH(bool, matchCase);
    QFETCH(bool, wholeWord);
    QCOMPARE(PressFind(kFindUserSelection, text, {matchCase, wholeWord}, QStringLiteral("Find")),
             answers.isEmpty() || answers.last() == Answer::Yes);
    QCOMPARE(fx_->prompter.Prompts().size(), answers.size());
    for (int i = 0; i < answers.size(); ++i) {
        const bool again = selected >= 0 && i == 0;
        CheckPrompt(i, again ? "MsgFindAgain" : "MsgNotFound", QStringLiteral("Find"),
                    again ? PromptButtons::YesNo : PromptButtons::OK);
    }
    if (expected < 0)
        QVERIFY(!view->selectionModel()->hasSelection());
    else
        QCOMPARE(Selection(view), QList<int>({expected, expected}));
}

void TestFind::MainWindowFindFromKeyboard() {
    auto main = OpenMain();
    QAbstractItemView* details = main->List()->DetailsView();
    QTest::keyClick(main.get(), Qt::Key_F, Qt::ControlModifier);
    frmFind* find = frmFind::Loaded();
    QVERIFY(find && QTest::qWaitForWindowActive(find));
    QCOMPARE(find->CallerCode(), kFindMain);
    auto* text = Child<QLineEdit>(*find, "edtFindText");

    QTest::keyClicks(text, QStringLiteral("+49"));
    QTest::keyClick(text, Qt::Key_Return);
    QCOMPARE(Selection(details), QList<int>({0, 0}));

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
    // From the first row: row 2 is where a search ignoring case would stop.
    QTest::keyClick(main.get(), Qt::Key_F3);
    QCOMPARE(Selection(details), QList<int>({4, 4}));
}

void TestFind::RegisteredListsAndTheirLifetime() {
    QTreeView* view = OpenList(kFindGroupSelection, {{"Sales team"}, {"Support team"}});
    QVERIFY(PressFind(kFindGroupSelection, QStringLiteral("support"), {}));
    QCOMPARE(Selection(view), QList<int>({1, 1}));
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

    // Its borrower destroyed while it still shows: back to the main window,
    // serving the main list again.
    selection.reset();
    QCOMPARE(frmFind::Loaded(), find);
    QCOMPARE(find->parentWidget(), main.get());
    QCOMPARE(find->CallerCode(), kFindMain);
}

QTEST_MAIN(TestFind)
#include "tst_find.moc"
