// What a screen reader and a keyboard user meet: every control of the main
// window and of an editor has a name, Ctrl+Tab turns pages, F1 in a dialog
// opens the guide at that dialog.

#include <QAccessible>
#include <QComboBox>
#include <QTest>
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

using UserEditor = ShownEditor<frmUserDetails>;

FormParameterList User(const QString& name) {
    return {{QStringLiteral("UserName"), name}, {QStringLiteral("HostName"), "fxmaster"}};
}

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

QStringList UnnamedControls(QWidget& window, int* interactive = nullptr) {
    QStringList unnamed;
    int count = 0;
    CollectUnnamed(QAccessible::queryAccessibleInterface(&window), unnamed, count);
    if (interactive) *interactive = count;
    return unnamed;
}

// The guide's first page at one of its sections.
QUrl Section(const char* anchor) {
    QUrl url = HelpViewer::ContentsPage;
    url.setFragment(QString::fromLatin1(anchor));
    return url;
}

}  // namespace

class TestAccessibility : public ExplorerSuite {
    Q_OBJECT

private slots:
    void MainWindowNamesEveryControl();
    void UserEditorNamesEveryControlOnEveryPage();
    void CtrlTabTurnsPagesFromADropDownList();
    void F1OpensTheGuideAtTheDialogsSection();
};

void TestAccessibility::MainWindowNamesEveryControl() {
    auto main = ExplorerFixture::OpenMain();
    int interactive = 0;
    QStringList unnamed = UnnamedControls(*main, &interactive);
    QVERIFY2(unnamed.isEmpty(), qPrintable(unnamed.join(u'\n')));
    // Tree, list, toolbar and its buttons, status bar, menu bar entries at least.
    QVERIFY2(interactive >= 10, qPrintable(QString::number(interactive)));
    // The list is named after the branch it shows, and follows the tree.
    QTreeWidgetItem* lcr = ExplorerFixture::Click(*main, QStringLiteral("LCR"));
    QVERIFY(lcr);
    QCOMPARE(main->List()->DetailsView()->accessibleName(), lcr->text(0));
}

void TestAccessibility::UserEditorNamesEveryControlOnEveryPage() {
    UserEditor editor(User(QStringLiteral("jmueller")));
    auto* tabs = editor.Field<QTabWidget>("tabDetails");
    QVERIFY(tabs->count() > 1);
    // A reader sees the controls of the page in front only; each page in turn.
    for (int page = 0; page < tabs->count(); ++page) {
        tabs->setCurrentIndex(page);
        int interactive = 0;
        const QStringList unnamed = UnnamedControls(editor.dialog, &interactive);
        QVERIFY2(unnamed.isEmpty(), qPrintable(tabs->tabText(page) + u'\n' + unnamed.join(u'\n')));
        QVERIFY(interactive >= 4);  // the key, the tab bar, OK and Cancel at least
    }
}

void TestAccessibility::CtrlTabTurnsPagesFromADropDownList() {
    UserEditor editor(User(QStringLiteral("jmueller")));
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
}

void TestAccessibility::F1OpensTheGuideAtTheDialogsSection() {
    {
        UserEditor editor(User(QStringLiteral("jmueller")));
        QVERIFY(QTest::qWaitForWindowActive(&editor.dialog));
        QTest::keyClick(editor.Field("edtComment"), Qt::Key_F1);
        HelpViewer* viewer = HelpViewer::Current();
        QVERIFY(viewer && viewer->isVisible());
        QCOMPARE(viewer->CurrentPage(), Section("users"));
        // Over the modal dialog, so that it can be read and scrolled.
        QCOMPARE(viewer->window()->parentWidget(), &editor.dialog);
        editor.Click("cmdCancel");
    }
    QTRY_VERIFY(!HelpViewer::Current());  // it belonged to the dialog
}

QTEST_MAIN(TestAccessibility)
#include "tst_accessibility.moc"
