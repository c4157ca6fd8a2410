// Find in list against the reference server (its label table): the matching
// rules, where a search starts and how it wraps, what it asks, the find dialog
// and the main window's Find and Find Next driven from the keyboard, and the
// lists other windows register.

#include <QAction>
#include <QCheckBox>
#include <QDialog>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTest>
#include <QToolBar>
#include <QTreeView>
#include <QVBoxLayout>
#include <memory>

#include "common/AppContext.h"
#include "common/Labels.h"
#include "common/Settings.h"
#include "session/ServerSession.h"
#include "shell/ExplorerListView.h"
#include "shell/Find.h"
#include "shell/ListModel.h"
#include "shell/frmFind.h"
#include "shell/frmMain.h"
#include "support/ScriptedPrompter.h"
#include "support/TestServer.h"

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
    std::vector<ListColumn> columns(3);
    for (int i = 0; i < 3; ++i) {
        columns[i].key = columns[i].header = QStringList{"Name", "Comment", "Phone"}[i];
        columns[i].width = 100;
    }
    model.SetColumns(std::move(columns));
    std::vector<ListRow> filled(size_t(rows.size()));
    for (size_t i = 0; i < filled.size(); ++i) {
        filled[i].cells = rows[qsizetype(i)];
        filled[i].iconKey = QStringLiteral("User");
    }
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

template <class T>
T* Child(QObject* parent, const char* name) {
    return parent->findChild<T*>(QLatin1String(name));
}

}  // namespace

class TestFind : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void Matching_data();
    void Matching();
    void EndOfListAsksBeforeWrapping_data();
    void EndOfListAsksBeforeWrapping();
    void NotFoundLeavesSelection();
    void EmptyTextNeverSearches();
    void MainWindowFindFromKeyboard();
    void RegisteredListsAndTheirLifetime();
    void LentToModalOwnerAndBack();
    void LargeListStaysFast();

private:
    // A list as a selection dialog would show it, registered under a code.
    QTreeView* OpenList(const QString& callerCode, const QList<QStringList>& rows = kRows);
    std::unique_ptr<frmMain> OpenMain();
    void CheckPrompt(int index, const char* key, const QString& title, PromptButtons buttons);

    std::unique_ptr<QTemporaryDir> dir_;
    std::unique_ptr<TestServer> server_;
    std::unique_ptr<ScriptedPrompter> prompter_;
    std::unique_ptr<ListModel> model_;  // the list of OpenList
    std::unique_ptr<QTreeView> list_;
};

void TestFind::init() {
    dir_ = std::make_unique<QTemporaryDir>();
    QVERIFY(dir_->isValid());
    UseSettingsFile(dir_->filePath(QStringLiteral("settings.ini")));
    prompter_ = std::make_unique<ScriptedPrompter>();
    server_ = std::make_unique<TestServer>();
    SetTheSession(server_->Login());
    model_ = std::make_unique<ListModel>();
}

void TestFind::cleanup() {
    QCOMPARE(prompter_->UnusedAnswers(), 0);
    list_.reset();
    model_.reset();
    delete frmFind::Loaded();
    SetTheSession(nullptr);
    server_.reset();
    prompter_.reset();
    UseNativeSettings();
    dir_.reset();
}

QTreeView* TestFind::OpenList(const QString& callerCode, const QList<QStringList>& rows) {
    Fill(*model_, rows);
    list_ = std::make_unique<QTreeView>();
    list_->setUniformRowHeights(true);
    list_->setSelectionMode(QAbstractItemView::SingleSelection);
    list_->setSelectionBehavior(QAbstractItemView::SelectRows);
    list_->setModel(model_.get());
    list_->resize(400, 200);
    list_->show();
    RegisterFindList(callerCode, list_.get());
    return list_.get();
}

std::unique_ptr<frmMain> TestFind::OpenMain() {
    auto main = std::make_unique<frmMain>();
    // The explorer's own rows, as if a node had filled them.
    Fill(*main->ListRows(), kRows);
    main->show();
    main->activateWindow();
    if (!QTest::qWaitForWindowActive(main.get())) qWarning("main window not activated");
    return main;
}

void TestFind::CheckPrompt(int index, const char* key, const QString& title,
                           PromptButtons buttons) {
    QVERIFY(index < prompter_->Prompts().size());
    const Prompt& prompt = prompter_->Prompts().at(index).prompt;
    QCOMPARE(prompt.text, GetLabel(QLatin1String(key)));
    QVERIFY2(prompt.text != QLatin1String(key), key);  // the server's text, not the key
    QCOMPARE(prompt.title, title);
    QCOMPARE(prompt.icon, PromptIcon::Exclamation);
    QCOMPARE(prompt.buttons, buttons);
}

void TestFind::Matching_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("matchCase");
    QTest::addColumn<bool>("wholeWord");
    QTest::addColumn<int>("selected");
    QTest::addColumn<int>("expected");

    QTest::newRow("match in a sub-item column") << "upport" << false << false << -1 << 1;
    QTest::newRow("case ignored") << "SALES" << false << false << -1 << 0;
    QTest::newRow("case matched") << "sales" << true << false << -1 << 2;
    QTest::newRow("starts after the selection") << "sales" << false << false << 0 << 2;
    QTest::newRow("whole word skips containing cells") << "sales" << false << true << -1 << 2;
    QTest::newRow("whole word with case") << "Sales" << true << true << -1 << 4;
    QTest::newRow("star is a wildcard") << "49*555" << false << false << -1 << 2;
    QTest::newRow("star in whole word keeps the length") << "Sa*" << false << true << -1 << 5;
    QTest::newRow("question mark is literal") << "q?" << false << true << -1 << 4;
    QTest::newRow("dot is literal") << "1.5" << false << false << -1 << 5;
    QTest::newRow("brackets are literal") << "[ext]" << false << false << -1 << 5;
}

void TestFind::Matching() {
    QFETCH(QString, text);
    QFETCH(bool, matchCase);
    QFETCH(bool, wholeWord);
    QFETCH(int, selected);
    QFETCH(int, expected);

    QTreeView* view = OpenList(kFindUserSelection);
    if (selected >= 0) Select(view, selected);
    QVERIFY(PressFind(kFindUserSelection, text, {matchCase, wholeWord}));
    QCOMPARE(Selection(view), QList<int>({expected, expected}));
    QVERIFY(prompter_->Prompts().isEmpty());
}

void TestFind::EndOfListAsksBeforeWrapping_data() {
    QTest::addColumn<int>("selected");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("answer");
    QTest::addColumn<int>("expected");

    QTest::newRow("last row, yes wraps") << 5 << "bert" << Answer::Yes << 1;
    QTest::newRow("last row, no stays") << 5 << "bert" << Answer::No << 5;
    QTest::newRow("match only above the selection") << 2 << "anna" << Answer::Yes << 0;
}

void TestFind::EndOfListAsksBeforeWrapping() {
    QFETCH(int, selected);
    QFETCH(QString, text);
    QFETCH(int, answer);
    QFETCH(int, expected);

    QTreeView* view = OpenList(kFindGroupSelection);
    Select(view, selected);
    prompter_->Answer(answer);
    QCOMPARE(PressFind(kFindGroupSelection, text, {}, QStringLiteral("Find")),
             answer == Answer::Yes);
    QCOMPARE(prompter_->Prompts().size(), 1);
    CheckPrompt(0, "MsgFindAgain", QStringLiteral("Find"), PromptButtons::YesNo);
    QCOMPARE(Selection(view), QList<int>({expected, expected}));
}

void TestFind::NotFoundLeavesSelection() {
    QTreeView* view = OpenList(kFindUserSelection);
    const QString title = ApplicationTitle();

    // From the top there is nothing to wrap to.
    prompter_->Answer(Answer::OK);
    QVERIFY(!PressFind(kFindUserSelection, QStringLiteral("zzz"), {}));
    QCOMPARE(prompter_->Prompts().size(), 1);
    CheckPrompt(0, "MsgNotFound", title, PromptButtons::OK);
    QVERIFY(!view->selectionModel()->hasSelection());

    // A cell that only begins with the text is no whole-word match, on either pass.
    Select(view, 2);
    prompter_->Answer({Answer::Yes, Answer::OK});
    QVERIFY(!PressFind(kFindUserSelection, QStringLiteral("Sales off"), {false, true}));
    QCOMPARE(prompter_->Prompts().size(), 3);
    CheckPrompt(1, "MsgFindAgain", title, PromptButtons::YesNo);
    CheckPrompt(2, "MsgNotFound", title, PromptButtons::OK);
    QCOMPARE(Selection(view), QList<int>({2, 2}));

    // Match case leaves the upper-case phone prefix unmatched.
    prompter_->Answer({Answer::Yes, Answer::OK});
    QVERIFY(!PressFind(kFindUserSelection, QStringLiteral("SUPPORT"), {true, false}));
    QCOMPARE(prompter_->Prompts().size(), 5);
    QCOMPARE(Selection(view), QList<int>({2, 2}));

    // An empty list has nothing to find.
    OpenList(kFindUserSelection, {});
    prompter_->Answer(Answer::OK);
    QVERIFY(!PressFind(kFindUserSelection, QStringLiteral("Anna"), {}));
    CheckPrompt(5, "MsgNotFound", title, PromptButtons::OK);
}

void TestFind::EmptyTextNeverSearches() {
    QTreeView* view = OpenList(kFindUserSelection);
    Select(view, 1);
    frmFind find;
    find.ShowFor(kFindUserSelection);
    QVERIFY(QTest::qWaitForWindowExposed(&find));
    prompter_->Answer(Answer::OK);
    QTest::mouseClick(Child<QPushButton>(&find, "cmdFind"), Qt::LeftButton);
    QCOMPARE(prompter_->Prompts().size(), 1);
    CheckPrompt(0, "MsgFindEmpty", find.windowTitle(), PromptButtons::OK);
    QCOMPARE(Selection(view), QList<int>({1, 1}));
    QVERIFY(find.isVisible());

    // Find Next of the main window before anything was searched for.
    auto main = OpenMain();
    prompter_->Answer(Answer::OK);
    Child<QAction>(main.get(), "mnuEditFindNext")->trigger();
    QCOMPARE(prompter_->Prompts().size(), 2);
    CheckPrompt(1, "MsgFindEmpty", ApplicationTitle(), PromptButtons::OK);
    QVERIFY(!main->List()->SelectionModel()->hasSelection());
}

void TestFind::MainWindowFindFromKeyboard() {
    auto main = OpenMain();
    ExplorerListView* list = main->List();
    QAbstractItemView* details = list->DetailsView();
    auto* findAction = Child<QAction>(main.get(), "mnuEditFind");
    QVERIFY(findAction->isEnabled());
    QVERIFY(Child<QAction>(main.get(), "mnuEditFindNext")->isEnabled());

    QTest::keyClick(main.get(), Qt::Key_F, Qt::ControlModifier);
    frmFind* find = frmFind::Loaded();
    QVERIFY(find);
    QVERIFY(QTest::qWaitForWindowActive(find));
    QCOMPARE(find->CallerCode(), kFindMain);
    QCOMPARE(find->parentWidget(), main.get());
    auto* text = Child<QLineEdit>(find, "edtFindText");
    QTRY_COMPARE(QApplication::focusWidget(), text);

    QTest::keyClicks(text, QStringLiteral("+49"));
    QTest::keyClick(text, Qt::Key_Return);
    QCOMPARE(Selection(details), QList<int>({0, 0}));
    // Still up: Enter again goes on to the next match.
    QVERIFY(find->isVisible());
    QTest::keyClick(text, Qt::Key_Return);
    QCOMPARE(Selection(details), QList<int>({2, 2}));

    // Escape only hides; Find Next in the main window goes on with the same
    // text, now as a whole word with match case, typed in before hiding.
    QTest::keyClick(text, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(text, QStringLiteral("Sales"));
    QTest::keyClick(Child<QCheckBox>(find, "chkMatchCase"), Qt::Key_Space);
    QTest::keyClick(Child<QCheckBox>(find, "chkWholeWord"), Qt::Key_Space);
    QTest::keyClick(text, Qt::Key_Escape);
    QVERIFY(!find->isVisible());
    main->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(main.get()));
    QTest::keyClick(main.get(), Qt::Key_F3);
    QCOMPARE(Selection(details), QList<int>({4, 4}));
    QVERIFY(!find->isVisible());

    // In the icon modes the same selection is made and shown where it is seen.
    Child<QAction>(main.get(), "mnuViewLargeIcons")->trigger();
    prompter_->Answer(Answer::Yes);
    QTest::keyClick(main.get(), Qt::Key_F3);
    QCOMPARE(Selection(list->IconView()), QList<int>({4, 4}));
    QCOMPARE(prompter_->Prompts().size(), 1);
    CheckPrompt(0, "MsgFindAgain", ApplicationTitle(), PromptButtons::YesNo);

    // The toolbar button opens the dialog again with the last text selected.
    auto* toolBar = Child<QToolBar>(main.get(), "tbToolBar");
    QTest::mouseClick(toolBar->widgetForAction(findAction), Qt::LeftButton);
    QVERIFY(find->isVisible());
    QCOMPARE(text->text(), QStringLiteral("Sales"));
    QCOMPARE(text->selectedText(), QStringLiteral("Sales"));
    QVERIFY(Child<QCheckBox>(find, "chkMatchCase")->isChecked());
    QVERIFY(Child<QCheckBox>(find, "chkWholeWord")->isChecked());
}

void TestFind::RegisteredListsAndTheirLifetime() {
    auto main = OpenMain();
    Select(main->List()->DetailsView(), 5);
    QTreeView* view = OpenList(kFindGroupSelection, {{"Sales team"}, {"Support team"}});
    QVERIFY(PressFind(kFindGroupSelection, QStringLiteral("support"), {}));
    QCOMPARE(Selection(view), QList<int>({1, 1}));
    // The main list's selection is its own.
    QCOMPARE(Selection(main->List()->DetailsView()), QList<int>({5, 5}));

    // A window that registers the same code later takes it over; any view
    // over any model will do, cells that are not text included.
    QStandardItemModel numbers;
    for (int number : {7, 1423, 42}) {
        auto* item = new QStandardItem;
        item->setData(number, Qt::DisplayRole);
        numbers.appendRow(item);
    }
    QListView other;
    other.setModel(&numbers);
    RegisterFindList(kFindGroupSelection, &other);
    QCOMPARE(FindList(kFindGroupSelection), &other);
    QVERIFY(PressFind(kFindGroupSelection, QStringLiteral("42"), {false, true}));
    QCOMPARE(Selection(&other), QList<int>({2, 2}));

    // A list that is gone is no longer searched: a beep, no message.
    list_.reset();
    RegisterFindList(kFindUserSelection, new QTreeView(&other));
    delete other.findChild<QTreeView*>();
    QVERIFY(!FindList(kFindUserSelection));
    QVERIFY(!PressFind(kFindUserSelection, QStringLiteral("x"), {}));
    QCOMPARE(prompter_->BeepCount(), 1);
    QVERIFY(prompter_->Prompts().isEmpty());
}

void TestFind::LentToModalOwnerAndBack() {
    auto main = OpenMain();
    auto* find = new frmFind(main.get());
    Child<QLineEdit>(find, "edtFindText")->setText(QStringLiteral("Carla"));

    // A modal selection dialog with its own list.
    auto selection = std::make_unique<QDialog>(main.get());
    auto* view = new QTreeView(selection.get());
    new QVBoxLayout(selection.get());
    selection->layout()->addWidget(view);
    ListModel users;
    Fill(users, {{"Bert"}, {"Dora"}, {"Doris"}});
    view->setModel(&users);
    RegisterFindList(kFindUserSelection, view);
    selection->open();
    QVERIFY(QTest::qWaitForWindowExposed(selection.get()));

    ShowFindDialog(kFindUserSelection, view);
    QCOMPARE(find->parentWidget(), selection.get());
    QVERIFY(find->isVisible());
    auto* text = Child<QLineEdit>(find, "edtFindText");
    QTest::keyClicks(text, QStringLiteral("dor"));
    QTest::keyClick(text, Qt::Key_Return);
    QCOMPARE(Selection(view), QList<int>({1, 1}));
    QVERIFY(!main->List()->SelectionModel()->hasSelection());

    // The selection dialog closes: the find dialog goes back to the main
    // window, hidden, with its text, and serves the main list again.
    selection->accept();
    QCOMPARE(find->parentWidget(), main.get());
    QVERIFY(!find->isVisible());
    QCOMPARE(find->CallerCode(), kFindMain);
    QCOMPARE(text->text(), QStringLiteral("dor"));

    // Lent again and its borrower destroyed while it still shows.
    selection->open();
    ShowFindDialog(kFindUserSelection, selection.get());
    QCOMPARE(find->parentWidget(), selection.get());
    selection.reset();
    QCOMPARE(frmFind::Loaded(), find);
    QCOMPARE(find->parentWidget(), main.get());
}

void TestFind::LargeListStaysFast() {
    constexpr int kRowCount = 100000;
    QList<QStringList> rows;
    rows.reserve(kRowCount);
    for (int i = 0; i < kRowCount; ++i)
        rows.append({QStringLiteral("user%1").arg(i), QStringLiteral("Comment of user %1").arg(i),
                     QStringLiteral("+49 30 %1").arg(i)});
    rows.last()[2] = QStringLiteral("+49 30 NEEDLE");
    QTreeView* view = OpenList(kFindMain, rows);
    Select(view, 10);

    QElapsedTimer timer;
    timer.start();
    QVERIFY(PressFind(kFindMain, QStringLiteral("needle"), {}));
    const qint64 elapsed = timer.elapsed();
    QCOMPARE(Selection(view), QList<int>({kRowCount - 1, kRowCount - 1}));
    const QRect shown = view->visualRect(view->model()->index(kRowCount - 1, 0));
    QVERIFY(view->viewport()->rect().intersects(shown));
    // Some 300,000 cells take a few tens of milliseconds; the bound leaves
    // room for a slow machine, not for a search that goes quadratic.
    QVERIFY2(elapsed < 1500, qPrintable(QStringLiteral("%1 ms").arg(elapsed)));
}

QTEST_MAIN(TestFind)
#include "tst_find.moc"
