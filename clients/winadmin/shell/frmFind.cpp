#include "shell/frmFind.h"

#include <QEvent>
#include <QShortcut>

#include "common/Labels.h"
#include "ui_frmFind.h"

namespace winadmin {

namespace {

QPointer<frmFind> loadedDialog;

}  // namespace

frmFind::frmFind(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmFind>()), home_(parent) {
    ui->setupUi(this);
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

}  // namespace winadmin
