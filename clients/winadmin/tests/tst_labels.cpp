// Form translation against the label table of the reference server, German
// so that every translated caption differs from its key.

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTest>
#include <QTextEdit>
#include <QToolBar>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <memory>

#include "common/Labels.h"
#include "support/TestServer.h"

using namespace winadmin;

namespace {

// Forwards to the real session and notes every key asked for, so that a
// test can tell which captions were looked up at all.
class LookupLog final : public LabelSource {
public:
    explicit LookupLog(const LabelSource& session) : session_(session) {}
    QString GetLabel(const QString& key) const override {
        keys.append(key);
        return session_.GetLabel(key);
    }
    mutable QStringList keys;

private:
    const LabelSource& session_;
};

template <class T>
T* Add(QWidget* parent, const QString& name, const QString& caption = {}) {
    auto* widget = new T(parent);
    widget->setObjectName(name);
    if constexpr (std::is_base_of_v<QGroupBox, T>)
        widget->setTitle(caption);
    else if constexpr (requires { widget->setText(caption); })
        widget->setText(caption);
    parent->layout()->addWidget(widget);
    return widget;
}

std::unique_ptr<QWidget> NewForm(const QString& caption) {
    auto form = std::make_unique<QWidget>();
    form->setObjectName(QStringLiteral("frmTest"));
    form->setWindowTitle(caption);
    new QVBoxLayout(form.get());
    return form;
}

}  // namespace

class TestLabels : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void CaptionsAreLookedUpWithoutOneTrailingColon();
    void ButtonsFramesAndMenuEntriesAreTranslated();
    void FieldsListsAndCombosAreNeverTouched();
    void ToolbarTranslatesOnlyTooltipsItHas();
    void HiddenLabelsFrameKeepsItsTitleAndFeedsTheTabs();
    void LabelLendsItsTextToItsBuddy();
    void TranslatingTwiceKeepsTheDesignKeys();
    void OtherWindowsAndPicturesAreLeftAlone();
    void WithoutSessionEveryKeyIsItsOwnText();
    void CaptionWithoutColonCutsTheLastCharacter();

private:
    std::unique_ptr<TestServer> server_;
    std::unique_ptr<GrpcServerSession> session_;
    std::unique_ptr<LookupLog> log_;
};

void TestLabels::init() {
    TestServer::Options options;
    options.language = "de";
    server_ = std::make_unique<TestServer>(options);
    session_ = server_->Login();
    log_ = std::make_unique<LookupLog>(*session_);
    SetLabelSource(log_.get());
}

void TestLabels::cleanup() {
    SetLabelSource(nullptr);
    log_.reset();
    session_.reset();
    server_.reset();
}

void TestLabels::CaptionsAreLookedUpWithoutOneTrailingColon() {
    auto form = NewForm(QStringLiteral("Login"));
    auto* host =
        Add<QLabel>(form.get(), QStringLiteral("lblHostName"), QStringLiteral("Host name:"));
    auto* colon = Add<QLabel>(form.get(), QStringLiteral("lblColon"), QStringLiteral(":"));
    auto* twice = Add<QLabel>(form.get(), QStringLiteral("lblTwice"), QStringLiteral("Comment::"));
    auto* plain = Add<QLabel>(form.get(), QStringLiteral("lblPlain"), QStringLiteral("Users"));
    auto* unknown =
        Add<QLabel>(form.get(), QStringLiteral("lblUnknown"), QStringLiteral("No such caption:"));

    QVERIFY(ApplyFormLabels(form.get()));

    QCOMPARE(form->windowTitle(), QStringLiteral("Anmeldung"));
    // The table's text replaces the caption as it stands: its colon is the
    // table's, none is added or kept.
    QCOMPARE(host->text(), QStringLiteral("Hostname:"));
    QCOMPARE(plain->text(), QStringLiteral("Benutzer"));
    QCOMPARE(unknown->text(), QStringLiteral("No such caption"));
    // Only one colon goes; "Comment:" is no key of the table.
    QCOMPARE(twice->text(), QStringLiteral("Comment:"));
    QCOMPARE(colon->text(), QString());
    QVERIFY(log_->keys.contains(QString()));
    QVERIFY(log_->keys.contains(QStringLiteral("Host name")));
    QVERIFY(!log_->keys.contains(QStringLiteral("Host name:")));
}

void TestLabels::ButtonsFramesAndMenuEntriesAreTranslated() {
    QMainWindow window;
    window.setWindowTitle(QStringLiteral("Options"));
    auto* central = new QWidget(&window);
    new QVBoxLayout(central);
    window.setCentralWidget(central);
    auto* frame = Add<QGroupBox>(central, QStringLiteral("fraGeneral"), QStringLiteral("General:"));
    auto* ok = Add<QPushButton>(central, QStringLiteral("cmdCancel"), QStringLiteral("&Cancel"));
    auto* check = Add<QCheckBox>(central, QStringLiteral("chkYes"), QStringLiteral("Yes"));
    auto* option = Add<QRadioButton>(central, QStringLiteral("optNo"), QStringLiteral("No"));
    auto* tool = Add<QToolButton>(central, QStringLiteral("cmdFind"), QStringLiteral("Find"));

    QMenu* file = window.menuBar()->addMenu(QStringLiteral("&File"));
    QAction* newEntry = file->addAction(QStringLiteral("&New"));
    QAction* separator = file->addSeparator();
    QMenu* view = file->addMenu(QStringLiteral("&View"));
    QAction* large = view->addAction(QStringLiteral("Lar&ge Icons"));
    // Pop-up menus are not in the bar; they are menus of the window all the same.
    auto* popup = new QMenu(QStringLiteral("Edit"), &window);
    QAction* stop = popup->addAction(QStringLiteral("S&top"));

    QVERIFY(ApplyFormLabels(&window));

    QCOMPARE(window.windowTitle(), QStringLiteral("Optionen"));
    QCOMPARE(frame->title(), QStringLiteral("Allgemein"));
    QCOMPARE(ok->text(), QStringLiteral("&Abbrechen"));
    QCOMPARE(check->text(), QStringLiteral("Ja"));
    QCOMPARE(option->text(), QStringLiteral("Nein"));
    QCOMPARE(tool->text(), QStringLiteral("Suchen"));
    QCOMPARE(file->title(), QStringLiteral("&Datei"));
    QCOMPARE(newEntry->text(), QStringLiteral("&Neu"));
    QCOMPARE(view->title(), QStringLiteral("&Ansicht"));
    QCOMPARE(large->text(), QStringLiteral("&Gro\u00DFe Symbole"));
    QCOMPARE(stop->text(), QStringLiteral("S&toppen"));
    QVERIFY(separator->text().isEmpty());
    // A menu that is both a bar entry and a child widget is asked for once.
    QCOMPARE(log_->keys.count(QStringLiteral("&File")), 1);
}

void TestLabels::FieldsListsAndCombosAreNeverTouched() {
    auto form = NewForm(QStringLiteral("Find"));
    auto* edit = Add<QLineEdit>(form.get(), QStringLiteral("edtHostName"), QStringLiteral("Users"));
    edit->setPlaceholderText(QStringLiteral("Groups"));
    auto* memo =
        Add<QTextEdit>(form.get(), QStringLiteral("edtComment"), QStringLiteral("Printers"));
    auto* combo = Add<QComboBox>(form.get(), QStringLiteral("cboNetType"));
    combo->addItems({QStringLiteral("Yes"), QStringLiteral("No")});
    auto* editable = Add<QComboBox>(form.get(), QStringLiteral("cboHost"));
    editable->setEditable(true);
    editable->setEditText(QStringLiteral("Devices"));
    auto* spin = Add<QSpinBox>(form.get(), QStringLiteral("updCount"));
    spin->setSuffix(QStringLiteral("Events"));
    auto* list = Add<QListWidget>(form.get(), QStringLiteral("lvItems"));
    list->addItem(QStringLiteral("Routes"));
    list->setItemWidget(list->item(0), new QLabel(QStringLiteral("Servers")));
    auto* tree = Add<QTreeWidget>(form.get(), QStringLiteral("tvTree"));
    tree->setHeaderLabel(QStringLiteral("Name"));
    tree->addTopLevelItem(new QTreeWidgetItem({QStringLiteral("Gateways")}));

    QVERIFY(ApplyFormLabels(form.get()));

    QCOMPARE(edit->text(), QStringLiteral("Users"));
    QCOMPARE(edit->placeholderText(), QStringLiteral("Groups"));
    QCOMPARE(memo->toPlainText(), QStringLiteral("Printers"));
    QCOMPARE(combo->itemText(0), QStringLiteral("Yes"));
    QCOMPARE(editable->currentText(), QStringLiteral("Devices"));
    QCOMPARE(spin->suffix(), QStringLiteral("Events"));
    QCOMPARE(list->item(0)->text(), QStringLiteral("Routes"));
    QCOMPARE(qobject_cast<QLabel*>(list->itemWidget(list->item(0)))->text(),
             QStringLiteral("Servers"));
    QCOMPARE(tree->topLevelItem(0)->text(0), QStringLiteral("Gateways"));
    // Nothing but the form's own caption was looked up.
    QCOMPARE(log_->keys, QStringList{QStringLiteral("Find")});
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
    auto* barButton = qobject_cast<QToolButton*>(bar->widgetForAction(find));
    QVERIFY(barButton);

    QVERIFY(ApplyFormLabels(&window));

    QCOMPARE(find->toolTip(), QStringLiteral("Suchen"));
    QCOMPARE(bare->toolTip(), QString());
    QCOMPARE(refresh->text(), QStringLiteral("Akt&ualisieren"));
    QCOMPARE(refresh->toolTip(), QStringLiteral("Aktualisieren"));
    QCOMPARE(barButton->text(), QStringLiteral("Users"));
    QVERIFY(!log_->keys.contains(QStringLiteral("Users")));
    // The window's empty caption, the menu entries and the one tooltip of
    // its own: no lookup for the bare button or the borrowed tooltip.
    QStringList keys = log_->keys;
    keys.sort();
    QCOMPARE(keys, (QStringList{QString(), QStringLiteral("&Refresh"), QStringLiteral("&View"),
                                QStringLiteral("Find")}));
}

void TestLabels::HiddenLabelsFrameKeepsItsTitleAndFeedsTheTabs() {
    auto form = NewForm(QStringLiteral("Options"));
    auto* hidden =
        Add<QGroupBox>(form.get(), QStringLiteral("fraHiddenLabels"), QStringLiteral("General"));
    new QVBoxLayout(hidden);
    QList<QLabel*> captions;
    for (const QString& key : {QStringLiteral("General"), QStringLiteral("Users")})
        captions << Add<QLabel>(hidden, QStringLiteral("lblTab"), key);
    hidden->hide();
    auto* tabs = Add<QTabWidget>(form.get(), QStringLiteral("tabOptions"));
    for (const QString& key :
         {QStringLiteral("Groups"), QStringLiteral("Routes"), QStringLiteral("Events")})
        tabs->addTab(new QWidget, key);

    QVERIFY(ApplyFormLabels(form.get()));
    QCOMPARE(hidden->title(), QStringLiteral("General"));
    QCOMPARE(captions[0]->text(), QStringLiteral("Allgemein"));
    // Tab captions are the hidden labels' business, not the walk's.
    QCOMPARE(tabs->tabText(0), QStringLiteral("Groups"));

    QVERIFY(ApplyTabCaptions(tabs, captions));
    QCOMPARE(tabs->tabText(0), QStringLiteral("Allgemein"));
    QCOMPARE(tabs->tabText(1), QStringLiteral("Benutzer"));
    QCOMPARE(tabs->tabText(2), QStringLiteral("Events"));  // more tabs than labels

    auto* twoTabs = new QTabWidget(form.get());
    twoTabs->addTab(new QWidget, QStringLiteral("a"));
    QVERIFY(ApplyTabCaptions(twoTabs, captions));  // more labels than tabs
    QCOMPARE(twoTabs->tabText(0), QStringLiteral("Allgemein"));
    QVERIFY(!ApplyTabCaptions(nullptr, captions));
}

void TestLabels::LabelLendsItsTextToItsBuddy() {
    auto form = NewForm(QStringLiteral("Login"));
    auto* host =
        Add<QLabel>(form.get(), QStringLiteral("lblHostName"), QStringLiteral("Host name:"));
    auto* hostField = Add<QLineEdit>(form.get(), QStringLiteral("edtHostName"));
    host->setBuddy(hostField);
    auto* mnemonic =
        Add<QLabel>(form.get(), QStringLiteral("lblRefresh"), QStringLiteral("&Refresh"));
    auto* mnemonicField = Add<QLineEdit>(form.get(), QStringLiteral("edtRefresh"));
    mnemonic->setBuddy(mnemonicField);
    auto* loose = Add<QLineEdit>(form.get(), QStringLiteral("edtLoose"));

    QVERIFY(ApplyFormLabels(form.get()));
    QCOMPARE(hostField->accessibleName(), QStringLiteral("Hostname"));
    QCOMPARE(mnemonicField->accessibleName(), QStringLiteral("Aktualisieren"));
    QVERIFY(loose->accessibleName().isEmpty());

    // The translated mnemonic still leads to the field.
    form->show();
    form->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(form.get()));
    hostField->setFocus();
    QTest::keyClick(form.get(), Qt::Key_U, Qt::AltModifier);
    QTRY_COMPARE(QApplication::focusWidget(), mnemonicField);
}

void TestLabels::TranslatingTwiceKeepsTheDesignKeys() {
    // A page that translates itself inside a frame that translates
    // everything in it: "Hostname:" must not be taken for a key.
    auto form = NewForm(QStringLiteral("Login"));
    auto page = new QWidget(form.get());
    new QVBoxLayout(page);
    form->layout()->addWidget(page);
    auto* host = Add<QLabel>(page, QStringLiteral("lblHostName"), QStringLiteral("Host name:"));
    auto* cancel = Add<QPushButton>(page, QStringLiteral("cmdCancel"), QStringLiteral("&Cancel"));

    QVERIFY(ApplyFormLabels(page));
    QVERIFY(ApplyFormLabels(form.get()));
    QVERIFY(ApplyFormLabels(form.get()));

    QCOMPARE(form->windowTitle(), QStringLiteral("Anmeldung"));
    QCOMPARE(host->text(), QStringLiteral("Hostname:"));
    QCOMPARE(cancel->text(), QStringLiteral("&Abbrechen"));
    QVERIFY(!log_->keys.contains(QStringLiteral("Hostname")));
}

void TestLabels::OtherWindowsAndPicturesAreLeftAlone() {
    auto form = NewForm(QStringLiteral("Login"));
    auto* logo = Add<QLabel>(form.get(), QStringLiteral("picLogo"));
    QPixmap picture(8, 8);
    picture.fill(Qt::red);
    logo->setPixmap(picture);
    // A dialog owned by the form is a form of its own, translated when it loads.
    auto* dialog = new QDialog(form.get());
    dialog->setWindowTitle(QStringLiteral("Find"));
    new QVBoxLayout(dialog);
    auto* inside = Add<QLabel>(dialog, QStringLiteral("lblFind"), QStringLiteral("Find what:"));

    QVERIFY(ApplyFormLabels(form.get()));
    QVERIFY(!logo->pixmap().isNull());
    QCOMPARE(dialog->windowTitle(), QStringLiteral("Find"));
    QCOMPARE(inside->text(), QStringLiteral("Find what:"));

    QVERIFY(ApplyFormLabels(dialog));
    QCOMPARE(dialog->windowTitle(), QStringLiteral("Suchen"));
    QCOMPARE(inside->text(), QStringLiteral("Suchen nach:"));
}

void TestLabels::WithoutSessionEveryKeyIsItsOwnText() {
    QCOMPARE(GetLabel(QStringLiteral("Users")), QStringLiteral("Benutzer"));
    QCOMPARE(GetLabel(QStringLiteral("NoSuchKey 17")), QStringLiteral("NoSuchKey 17"));
    SetLabelSource(nullptr);
    QCOMPARE(GetLabel(QStringLiteral("Users")), QStringLiteral("Users"));
    auto form = NewForm(QStringLiteral("Login"));
    auto* label = Add<QLabel>(form.get(), QStringLiteral("lblUsers"), QStringLiteral("Users"));
    QVERIFY(ApplyFormLabels(form.get()));
    QCOMPARE(label->text(), QStringLiteral("Users"));
    QVERIFY(!ApplyFormLabels(nullptr));
}

void TestLabels::CaptionWithoutColonCutsTheLastCharacter() {
    // Messages name a field by its translated label; the table's colon goes.
    QCOMPARE(CaptionWithoutColon(GetLabel(QStringLiteral("Host name"))),
             QStringLiteral("Hostname"));
    QCOMPARE(CaptionWithoutColon(QStringLiteral("Dispatch count:")),
             QStringLiteral("Dispatch count"));
    QCOMPARE(CaptionWithoutColon(QString()), QString());
}

QTEST_MAIN(TestLabels)
#include "tst_labels.moc"
