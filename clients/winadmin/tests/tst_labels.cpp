// Form translation against the label table of the reference server, German
// so that every translated caption differs from its key.

#include <QTest>
#include <QtWidgets>

#include "common/Labels.h"
#include "session/ServerSession.h"
#include "support/ConsoleFixture.h"

using namespace winadmin;

namespace {

template <class T>
T* Add(QWidget* parent, const char* name, const QString& caption = {}) {
    auto* widget = new T(parent);
    widget->setObjectName(QLatin1String(name));
    if constexpr (std::is_base_of_v<QGroupBox, T>)
        widget->setTitle(caption);
    else if constexpr (requires { widget->setText(caption); })
        widget->setText(caption);
    if (!parent->layout()) new QVBoxLayout(parent);
    parent->layout()->addWidget(widget);
    return widget;
}

std::unique_ptr<QWidget> NewForm(const QString& caption) {
    auto form = std::make_unique<QWidget>();
    form->setObjectName(QStringLiteral("frmTest"));
    form->setWindowTitle(caption);
    return form;
}

}  // namespace

class TestLabels : public ConsoleSuite {
    Q_OBJECT

public:
    TestLabels() : ConsoleSuite(Server::LoggedIn, "de") {}

private slots:
    void CaptionsAreLookedUpWithoutOneTrailingColon();
    void FieldsPicturesAndOtherWindowsAreLeftAlone();
    void ToolbarTranslatesOnlyTooltipsItHas();
    void HiddenLabelsFrameKeepsItsTitleAndFeedsTheTabs();
    void LabelLendsItsTextToItsBuddy();
    void WithoutTableEveryKeyIsItsOwnText();
};

void TestLabels::CaptionsAreLookedUpWithoutOneTrailingColon() {
    QMainWindow window;
    window.setWindowTitle(QStringLiteral("Login"));
    auto* form = new QWidget(&window);
    window.setCentralWidget(form);
    auto* twice = Add<QLabel>(form, "lblTwice", QStringLiteral("Comment::"));
    auto* unknown = Add<QLabel>(form, "lblUnknown", QStringLiteral("No such caption:"));
    auto* frame = Add<QGroupBox>(form, "fraGeneral", QStringLiteral("General:"));
    // A page that translates itself inside a form that translates everything
    // in it, twice: the control keeps its design key.
    auto* page = Add<QWidget>(form, "fraPage");
    auto* host = Add<QLabel>(page, "lblHostName", QStringLiteral("Host name:"));

    QMenu* file = window.menuBar()->addMenu(QStringLiteral("&File"));
    QMenu* view = file->addMenu(QStringLiteral("&View"));
    QAction* large = view->addAction(QStringLiteral("Lar&ge Icons"));
    // Pop-up menus are not in the bar; they are menus of the window all the same.
    QAction* stop = (new QMenu(QStringLiteral("Edit"), &window))->addAction("S&top");

    QVERIFY(ApplyFormLabels(page));
    QVERIFY(ApplyFormLabels(&window));
    QVERIFY(ApplyFormLabels(&window));

    QCOMPARE(window.windowTitle(), QStringLiteral("Anmeldung"));
    // The table's text replaces the caption as it stands: its colon is the
    // table's, none is added or kept.
    QCOMPARE(host->text(), QStringLiteral("Hostname:"));
    QCOMPARE(frame->title(), QStringLiteral("Allgemein"));
    QCOMPARE(unknown->text(), QStringLiteral("No such caption"));
    // Only one colon goes; "Comment:" is no key of the table.
    QCOMPARE(twice->text(), QStringLiteral("Comment:"));
    QCOMPARE(view->title(), QStringLiteral("&Ansicht"));
    QCOMPARE(large->text(), QStringLiteral("&Gro\u00DFe Symbole"));
    QCOMPARE(stop->text(), QStringLiteral("S&toppen"));
}

void TestLabels::FieldsPicturesAndOtherWindowsAreLeftAlone() {
    auto form = NewForm(QStringLiteral("Find"));
    auto* edit = Add<QLineEdit>(form.get(), "edtHostName", QStringLiteral("Users"));
    auto* logo = Add<QLabel>(form.get(), "picLogo");
    QPixmap picture(8, 8);
    logo->setPixmap(picture);
    // A dialog owned by the form is a form of its own, translated when it loads.
    auto* dialog = new QDialog(form.get());
    dialog->setWindowTitle(QStringLiteral("Find"));
    auto* inside = Add<QLabel>(dialog, "lblFind", QStringLiteral("Find what:"));

    QVERIFY(ApplyFormLabels(form.get()));
    QCOMPARE(edit->text(), QStringLiteral("Users"));
    QVERIFY(!logo->pixmap().isNull());
    QCOMPARE(inside->text(), QStringLiteral("Find what:"));
    QVERIFY(ApplyFormLabels(dialog));
    QCOMPARE(inside->text(), QStringLiteral("Suchen nach:"));
}

void TestLabels::ToolbarTranslatesOnlyTooltipsItHas() {
    QMainWindow window;
    QMenu* view = window.menuBar()->addMenu(QStringLiteral("&View"));
    QToolBar* bar = window.addToolBar(QStringLiteral("tbrMain"));
    // The caption of a toolbar button is not shown and not translated.
    QAction* find = bar->addAction(QStringLiteral("Users"));
    find->setToolTip(QStringLiteral("Find"));
    QAction* bare = bar->addAction(QIcon(), QString());
    // One action in menu and toolbar: its tooltip is the menu text, which the
    // menu translates.
    QAction* refresh = view->addAction(QStringLiteral("&Refresh"));
    bar->addAction(refresh);

    QVERIFY(ApplyFormLabels(&window));
    QCOMPARE(find->toolTip(), QStringLiteral("Suchen"));
    QCOMPARE(find->text(), QStringLiteral("Users"));
    QCOMPARE(bare->toolTip(), QString());
    QCOMPARE(refresh->toolTip(), QStringLiteral("Aktualisieren"));
}

void TestLabels::HiddenLabelsFrameKeepsItsTitleAndFeedsTheTabs() {
    auto form = NewForm(QStringLiteral("Options"));
    auto* hidden = Add<QGroupBox>(form.get(), "fraHiddenLabels", QStringLiteral("General"));
    const QList<QLabel*> captions = {Add<QLabel>(hidden, "lblTab", QStringLiteral("General")),
                                     Add<QLabel>(hidden, "lblTab", QStringLiteral("Users"))};
    hidden->hide();
    auto* tabs = Add<QTabWidget>(form.get(), "tabOptions");
    for (const char* key : {"Groups", "Routes", "Events"}) tabs->addTab(new QWidget, key);

    QVERIFY(ApplyFormLabels(form.get()));
    QCOMPARE(hidden->title(), QStringLiteral("General"));
    // Tab captions are the hidden labels' business, not the walk's.
    QCOMPARE(tabs->tabText(0), QStringLiteral("Groups"));
    QVERIFY(ApplyTabCaptions(tabs, captions));
    QCOMPARE(tabs->tabText(1), QStringLiteral("Benutzer"));
    QCOMPARE(tabs->tabText(2), QStringLiteral("Events"));  // more tabs than labels
    auto* oneTab = new QTabWidget(form.get());
    oneTab->addTab(new QWidget, QStringLiteral("a"));
    QVERIFY(ApplyTabCaptions(oneTab, captions));  // more labels than tabs
    QCOMPARE(oneTab->tabText(0), QStringLiteral("Allgemein"));
}

void TestLabels::LabelLendsItsTextToItsBuddy() {
    auto form = NewForm(QStringLiteral("Login"));
    auto* host = Add<QLabel>(form.get(), "lblHostName", QStringLiteral("Host name:"));
    auto* field = Add<QLineEdit>(form.get(), "edtHostName");
    host->setBuddy(field);
    auto* loose = Add<QLineEdit>(form.get(), "edtLoose");
    QVERIFY(ApplyFormLabels(form.get()));
    QCOMPARE(field->accessibleName(), QStringLiteral("Hostname"));
    QVERIFY(loose->accessibleName().isEmpty());
}

void TestLabels::WithoutTableEveryKeyIsItsOwnText() {
    SetLabelSource(nullptr);
    QCOMPARE(GetLabel(QStringLiteral("Users")), QStringLiteral("Users"));
    auto form = NewForm(QStringLiteral("Login"));
    QVERIFY(ApplyFormLabels(form.get()));
    QCOMPARE(form->windowTitle(), QStringLiteral("Login"));
}

QTEST_MAIN(TestLabels)
#include "tst_labels.moc"
