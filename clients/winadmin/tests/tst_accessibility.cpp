// What a screen reader and a keyboard user meet: every control of the main
// window has a name, Ctrl+Tab turns pages, F1 in a dialog opens the guide at
// that dialog; and the help window's search over the shipped user guide.

#include <QAccessible>
#include <QComboBox>
#include <QListWidget>
#include <QTest>
#include <QTextBrowser>
#include <QTreeWidget>

#include "common/FormParameters.h"
#include "editors/frmUserDetails.h"
#include "lists/ExplorerListView.h"
#include "shell/HelpViewer.h"
#include "shell/frmMain.h"
#include "support/EditorDriver.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

// The roles a person acts on; labels, panels and frames only describe.
bool Interactive(QAccessible::Role role) {
    using A = QAccessible;
    static const QList<A::Role> roles = {
        A::PushButton,   A::ButtonMenu, A::CheckBox, A::RadioButton, A::ComboBox,
        A::EditableText, A::SpinBox,    A::List,     A::Tree,        A::Table,
        A::PageTabList,  A::MenuItem,   A::ToolBar,  A::StatusBar,   A::MenuBar};
    return roles.contains(role);
}

// Walks the accessible tree as a screen reader does and lists every
// interactive element without a name, with its role and object name. The
// rows and cells of lists are their contents, not controls, and are skipped.
void CollectUnnamed(QAccessibleInterface* node, QStringList& unnamed, int& interactive) {
    if (!node || !node->isValid() || node->state().invisible) return;
    const QAccessible::Role role = node->role();
    if (Interactive(role)) {
        ++interactive;
        if (node->text(QAccessible::Name).trimmed().isEmpty()) {
            const QObject* object = node->object();
            unnamed << QStringLiteral("%1 %2")
                           .arg(int(role), 0, 16)
                           .arg(object ? object->objectName() + u'/' +
                                             object->metaObject()->className()
                                       : QStringLiteral("?"));
        }
    }
    if (role == QAccessible::List || role == QAccessible::Tree || role == QAccessible::Table ||
        role == QAccessible::ComboBox)
        return;
    for (int i = 0; i < node->childCount(); ++i)
        CollectUnnamed(node->child(i), unnamed, interactive);
}

}  // namespace

class TestAccessibility : public ExplorerSuite {
    Q_OBJECT

private slots:
    void MainWindowNamesEveryControl();
    void EditorTurnsPagesWithCtrlTabAndOpensItsGuideSectionWithF1();
    void SearchListsTheSectionsWithEveryWordInTheOneHelpWindow();
};

void TestAccessibility::MainWindowNamesEveryControl() {
    auto main = ExplorerFixture::OpenMain();
    QStringList unnamed;
    int interactive = 0;
    CollectUnnamed(QAccessible::queryAccessibleInterface(main.get()), unnamed, interactive);
    QVERIFY2(unnamed.isEmpty(), qPrintable(unnamed.join(u'\n')));
    // Tree, list, toolbar and its buttons, status bar, menu bar entries at least.
    QVERIFY2(interactive >= 10, qPrintable(QString::number(interactive)));
    // The list is named after the branch it shows, and follows the tree.
    QTreeWidgetItem* lcr = ExplorerFixture::Click(*main, QStringLiteral("LCR"));
    QVERIFY(lcr);
    QCOMPARE(main->List()->DetailsView()->accessibleName(), lcr->text(0));
}

void TestAccessibility::EditorTurnsPagesWithCtrlTabAndOpensItsGuideSectionWithF1() {
    {
        ShownEditor<frmUserDetails> editor(
            {{QStringLiteral("UserName"), "jmueller"}, {QStringLiteral("HostName"), "fxmaster"}});
        QVERIFY(QTest::qWaitForWindowActive(&editor.dialog));
        auto* tabs = editor.Field<QTabWidget>("tabDetails");
        auto* scanner = editor.Field<QComboBox>("cboScanner");
        const int scanPage = tabs->indexOf(scanner->parentWidget());
        QVERIFY(scanPage >= 0 && scanPage + 1 < tabs->count());
        tabs->setCurrentIndex(scanPage);
        scanner->setFocus();
        // As X11 delivers them: the tab key carries its character, which a
        // drop-down list would take for a search.
        QTest::sendKeyEvent(QTest::Click, scanner, Qt::Key_Tab, QStringLiteral("\t"),
                            Qt::ControlModifier);
        QCOMPARE(tabs->currentIndex(), scanPage + 1);

        tabs->setCurrentIndex(0);
        QTest::keyClick(editor.Field("edtComment"), Qt::Key_F1);
        HelpViewer* viewer = HelpViewer::Current();
        QVERIFY(viewer && viewer->isVisible());
        QCOMPARE(viewer->CurrentPage(),
                 HelpViewer::ContentsPage.resolved(QUrl(QStringLiteral("#users"))));
        // Over the modal dialog, so that it can be read and scrolled.
        QCOMPARE(viewer->window()->parentWidget(), &editor.dialog);
        editor.Click("cmdCancel");
    }
    QTRY_VERIFY(!HelpViewer::Current());  // it belonged to the dialog
}

void TestAccessibility::SearchListsTheSectionsWithEveryWordInTheOneHelpWindow() {
    QWidget owner;
    ShowHelpContents(&owner);
    HelpViewer* viewer = HelpViewer::Current();
    QVERIFY(viewer && viewer->isWindow());
    ShowHelpSearch(&owner);
    QCOMPARE(HelpViewer::Current(), viewer);
    QCOMPARE(viewer->CurrentPage(), HelpViewer::IndexPage);

    auto* field = Child<QLineEdit>(*viewer, "edtFind");
    auto* results = Child<QListWidget>(*viewer, "lvResults");
    auto* page = Child<QTextBrowser>(*viewer, "brwPage");
    QTest::keyClicks(field, QStringLiteral("HOST selected"));
    QTest::keyClick(field, Qt::Key_Return);
    QStringList titles;
    for (int row = 0; row < results->count(); ++row) titles << results->item(row)->text();
    // The section about settings names the host too, but not the other word.
    QVERIFY(!titles.contains(QStringLiteral("Where settings are kept")));
    const int row = int(titles.indexOf(QStringLiteral("Logging in")));
    QVERIFY2(row >= 0, qPrintable(titles.join(u'|')));
    QTest::mouseClick(results->viewport(), Qt::LeftButton, {},
                      results->visualItemRect(results->item(row)).center());
    QCOMPARE(viewer->CurrentPage(),
             HelpViewer::ContentsPage.resolved(QUrl(QStringLiteral("#login"))));
    // The word selected inside the section, not in the table of contents
    // above it.
    QCOMPARE(page->textCursor().selectedText().toLower(), QStringLiteral("host"));
    const QString before = page->toPlainText().left(page->textCursor().selectionStart());
    QVERIFY(before.contains(QStringLiteral("When the console starts")));

    // Words that no section has together: a beep and a line that says so.
    field->setText(QStringLiteral("password xylophone"));
    QCOMPARE(viewer->Search(), 0);
    QCOMPARE(fx_->prompter.BeepCount(), 1);
}

QTEST_MAIN(TestAccessibility)
#include "tst_accessibility.moc"
