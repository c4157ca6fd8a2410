#include "shell/frmFind.h"

#include <QAction>
#include <QApplication>
#include <QEvent>
#include <QShortcut>

#include "common/DialogHelp.h"
#include "common/Labels.h"
#include "lists/ExplorerListView.h"
#include "shell/frmMain.h"
#include "ui_frmFind.h"

namespace winadmin {

namespace {

QPointer<frmFind> loadedDialog;

frmMain* MainWindow() {
    for (QWidget* window : QApplication::topLevelWidgets())
        if (auto* main = qobject_cast<frmMain*>(window)) return main;
    return nullptr;
}

void ShowLoadedDialog(const QString& callerCode, QWidget* owner) {
    frmFind* dialog = frmFind::Loaded();
    if (!dialog) {
        // The start-up loads it; a console put together otherwise (a test)
        // gets it on first use, at home in the main window if there is one.
        QWidget* home = MainWindow();
        dialog = new frmFind(home ? home : owner ? owner->window() : nullptr);
    }
    dialog->ShowFor(callerCode, owner);
}

// The selection dialogs ask the list search for the find dialog and cannot
// name it. Installed when the program starts rather than by the main window,
// since a selection dialog may be up without one (a test); this file is
// linked into every program that can show the dialog.
[[maybe_unused]] const bool presenterInstalled = (SetFindDialogPresenter(&ShowLoadedDialog), true);

}  // namespace

frmFind::frmFind(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmFind>()), home_(parent) {
    ui->setupUi(this);
    InstallHelpKey(this, QStringLiteral("menus"));
    ApplyFormLabels(this);
    setModal(false);
    // Enter anywhere in the dialog is the default button, Find; Escape is
    // QDialog's reject, which only hides.
    connect(ui->cmdFind, &QPushButton::clicked, this, &frmFind::FindNext);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    // The main window's F3 does not reach a dialog that has the focus.
    auto* findNext = new QShortcut(QKeySequence(Qt::Key_F3), this);
    connect(findNext, &QShortcut::activated, this, &frmFind::FindNext);
    loadedDialog = this;
}

frmFind::~frmFind() = default;

frmFind* frmFind::Loaded() {
    return loadedDialog;
}

QString frmFind::SearchText() const {
    return ui->edtFindText->text();
}

FindOptions frmFind::Options() const {
    return {ui->chkMatchCase->isChecked(), ui->chkWholeWord->isChecked()};
}

bool frmFind::FindNext() {
    return PressFind(callerCode_, SearchText(), Options(), windowTitle());
}

void frmFind::ShowFor(const QString& callerCode, QWidget* owner) {
    QWidget* window = owner ? owner->window() : home_.data();
    if (window == home_) {
        ComeHome();
    } else if (window != lentTo_) {
        ComeHome();
        // An application-modal selection dialog blocks every window that is
        // not its own, this one included while it belongs to the main window.
        MoveTo(window);
        lentTo_ = window;
        window->installEventFilter(this);
    }
    callerCode_ = callerCode;
    show();
    raise();
    activateWindow();
    ui->edtFindText->setFocus(Qt::OtherFocusReason);
    ui->edtFindText->selectAll();
}

bool frmFind::eventFilter(QObject* watched, QEvent* event) {
    // Back home before the borrower goes away: as its child the dialog, and
    // the text and options in it, would go with it.
    if (watched == lentTo_ && (event->type() == QEvent::Hide || event->type() == QEvent::Close))
        ComeHome();
    return QDialog::eventFilter(watched, event);
}

void frmFind::MoveTo(QWidget* window) {
    // setParent hides the dialog and forgets where it stood.
    const QPoint position = pos();
    setParent(window, windowFlags());
    move(position);
}

void frmFind::ComeHome() {
    if (!lentTo_) return;
    lentTo_->removeEventFilter(this);
    lentTo_ = nullptr;
    hide();
    MoveTo(home_);
    callerCode_ = kFindMain;
}

void ConnectFind(frmMain& main) {
    ExplorerListView* list = main.List();
    // Whichever mode shows the list: scrolling must happen where it is seen.
    RegisterFindList(kFindMain, &main, [list] { return list->CurrentView(); });

    QAction* find = main.MenuEntry(QStringLiteral("mnuEditFind"));
    QAction* findNext = main.MenuEntry(QStringLiteral("mnuEditFindNext"));
    find->setEnabled(true);
    findNext->setEnabled(true);
    QObject::connect(find, &QAction::triggered, &main,
                     [&main] { ShowFindDialog(kFindMain, &main); });
    QObject::connect(findNext, &QAction::triggered, &main, [&main] {
        // The last search is whatever the dialog holds; without a dialog yet
        // there was none, and the empty text says so.
        frmFind* dialog = frmFind::Loaded();
        if (!dialog) dialog = new frmFind(&main);
        PressFind(kFindMain, dialog->SearchText(), dialog->Options());
    });
}

}  // namespace winadmin
