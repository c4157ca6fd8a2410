#include "common/UserReferenceField.h"

#include <QEvent>
#include <QStyle>
#include <QToolButton>

#include "common/FieldHelpers.h"
#include "common/FormParameters.h"
#include "common/Labels.h"

namespace winadmin {

namespace {

UserSelectionOpener userSelectionOpener = nullptr;

const QString kHostName = QStringLiteral("HostName");
const QString kUserName = QStringLiteral("UserName");

// Forms name the field "edtSomething" and its button "cmdSomething".
QString ChooserName(const QString& fieldName) {
    if (fieldName.startsWith(QLatin1String("edt"))) return QLatin1String("cmd") + fieldName.mid(3);
    return fieldName + QLatin1String("Chooser");
}

}  // namespace

void SetUserSelectionOpener(UserSelectionOpener opener) {
    userSelectionOpener = opener;
}

UserSelectionOpener TheUserSelectionOpener() {
    return userSelectionOpener;
}

UserReferenceField::UserReferenceField(QWidget* parent)
    : QLineEdit(parent), chooser_(new QToolButton(this)) {
    setReadOnly(true);
    chooser_->setText(QStringLiteral("..."));
    chooser_->setToolTip(GetLabel(QStringLiteral("Select User")));
    chooser_->setCursor(Qt::ArrowCursor);
    // Tab stops at the button after the field; Space presses it.
    chooser_->setFocusPolicy(Qt::StrongFocus);
    chooser_->installEventFilter(this);
    connect(chooser_, &QToolButton::clicked, this, &UserReferenceField::Choose);
    connect(this, &QObject::objectNameChanged, chooser_,
            [this](const QString& name) { chooser_->setObjectName(ChooserName(name)); });
    Clear();
    UpdateChooser();
}

UserReference UserReferenceField::Value() const {
    const QString shown = text().trimmed();
    if (shown.isEmpty() || shown == NoneText()) return {};
    const qsizetype at = shown.lastIndexOf(QLatin1Char('@'));
    if (at < 0) return {shown, {}};
    return {shown.left(at), shown.mid(at + 1)};
}

void UserReferenceField::SetValue(const QString& user, const QString& host) {
    setText(FormatUserAtHost(user, host));
    setCursorPosition(0);
    UpdateChooser();
}

void UserReferenceField::Clear() {
    SetValue(QString(), QString());
}

bool UserReferenceField::Choose() {
    const UserSelectionOpener open = TheUserSelectionOpener();
    if (!open || !isEnabled()) return false;
    const UserReference current = Value();
    FormParameterList request{{kHostName, current.host}, {kUserName, current.user}};
    if (!noneAllowed_) request.append({QStringLiteral("NoneAllowed"), QStringLiteral("0")});
    SetFormParameters(std::move(request));
    open(window());
    if (!AnsweredRefresh()) return false;
    SetValue(FormParameterValue(kUserName), FormParameterValue(kHostName));
    emit ValueChanged();
    return true;
}

void UserReferenceField::showEvent(QShowEvent* event) {
    QLineEdit::showEvent(event);
    // The form sets its tab order after its controls are made; the button
    // follows the field wherever the field ended up. (Asking Qt to put it
    // where it already is would tie the focus chain in a knot.)
    if (nextInFocusChain() != chooser_) QWidget::setTabOrder(this, chooser_);
    UpdateChooser();
    PlaceChooser();
}

void UserReferenceField::resizeEvent(QResizeEvent* event) {
    QLineEdit::resizeEvent(event);
    PlaceChooser();
}

bool UserReferenceField::eventFilter(QObject* watched, QEvent* event) {
    // A screen reader names the button when it gets the focus; by then the
    // form has named the field after its label.
    if (watched == chooser_ && event->type() == QEvent::FocusIn) UpdateChooser();
    return QLineEdit::eventFilter(watched, event);
}

void UserReferenceField::PlaceChooser() {
    const int frame = style()->pixelMetric(QStyle::PM_DefaultFrameWidth, nullptr, this);
    const int height = std::max(0, this->height() - 2 * frame);
    const int width = std::max(height, chooser_->sizeHint().width());
    chooser_->setGeometry(this->width() - frame - width, frame, width, height);
    // The text stops short of the button.
    if (textMargins().right() != width) setTextMargins(0, 0, width, 0);
}

void UserReferenceField::UpdateChooser() {
    chooser_->setEnabled(TheUserSelectionOpener() != nullptr);
    // Named after the field, as its label names it, so that two choosers on
    // one page can be told apart.
    const QString field = accessibleName();
    chooser_->setAccessibleName(field.isEmpty() ? chooser_->toolTip()
                                                : field + QLatin1String(" ..."));
}

}  // namespace winadmin
