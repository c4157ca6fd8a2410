#include "common/UpDown.h"

#include <QApplication>
#include <QEvent>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QStyle>
#include <QStyleOptionSpinBox>
#include <algorithm>

#include "common/Labels.h"

namespace winadmin {

namespace {

// The layout below root that holds widget as one of its own items.
QLayout* LayoutHolding(QLayout* root, QWidget* widget) {
    if (!root) return nullptr;
    for (int i = 0; i < root->count(); ++i) {
        QLayoutItem* item = root->itemAt(i);
        if (item->widget() == widget) return root;
        if (QLayout* found = LayoutHolding(item->layout(), widget)) return found;
    }
    return nullptr;
}

QLayout* LayoutHolding(QWidget* widget) {
    QWidget* parent = widget->parentWidget();
    return parent ? LayoutHolding(parent->layout(), widget) : nullptr;
}

bool TakesTabFocus(const QWidget* widget) {
    return (widget->focusPolicy() & Qt::TabFocus) == Qt::TabFocus;
}

// The nearest widget before (or after) field in its window's focus chain
// that Tab stops at, other than skipped; nullptr when there is none.
QWidget* TabNeighbour(QWidget* field, bool forward, const QWidget* skipped) {
    for (QWidget* w = forward ? field->nextInFocusChain() : field->previousInFocusChain();
         w && w != field; w = forward ? w->nextInFocusChain() : w->previousInFocusChain()) {
        if (w->window() != field->window()) continue;
        if (w != field->window() && w != skipped && TakesTabFocus(w) && !w->focusProxy()) return w;
    }
    return nullptr;
}

}  // namespace

UpDown::UpDown(QWidget* parent) : QAbstractSpinBox(parent) {
    // Held arrows speed up: some ranges run to two thousand million.
    setAccelerated(true);
}

void UpDown::Bind(QLineEdit* field, int minimum, int maximum, int step) {
    if (!field) return;
    if (field_ && field != field_) {
        qWarning("UpDown %s is bound to %s already", qPrintable(objectName()),
                 qPrintable(field_->objectName()));
        return;
    }
    minimum_ = minimum;
    maximum_ = maximum;
    step_ = step;
    if (!field_) Adopt(field);
    updateGeometry();
}

void UpDown::Adopt(QLineEdit* field) {
    QWidget* before = TabNeighbour(field, false, this);
    QWidget* after = TabNeighbour(field, true, this);
    const bool shown = !field->isHidden();
    const int maximumWidth = field->maximumWidth();
    QSizePolicy policy = field->sizePolicy();
    policy.setControlType(QSizePolicy::SpinBox);

    TakeLayoutPlaceOf(field);
    // Placed while the spin box still has its own line edit: Qt loses the
    // rest of the focus chain when it moves a spin box whose adopted field
    // sits elsewhere in it.
    TakeFocusPlaceOf(before, after);
    field_ = field;
    setLineEdit(field);
    // The size limits of the field now bound the spin box around it; the
    // field fills whatever room the spin box gives its text.
    setSizePolicy(policy);
    field->setMaximumWidth(QWIDGETSIZE_MAX);
    if (maximumWidth < QWIDGETSIZE_MAX)
        setMaximumWidth(SpinSizeFor(QSize(maximumWidth, field->sizeHint().height())).width());
    if (shown) field->show();
    FollowFieldEnabled();
    TakeLabelsOf(field);
    field->installEventFilter(this);
}

void UpDown::TakeLayoutPlaceOf(QWidget* field) {
    if (QLayout* own = LayoutHolding(this)) own->removeWidget(this);
    if (QLayout* layout = LayoutHolding(field)) {
        delete layout->replaceWidget(field, this);
    } else if (QWidget* parent = field->parentWidget()) {
        if (parentWidget() != parent) setParent(parent);
        setGeometry(field->geometry());
        if (!field->isHidden()) show();
    }
}

void UpDown::TakeFocusPlaceOf(QWidget* before, QWidget* after) {
    // Tab now stops at the spin box (the field hands its focus on to it), so
    // the spin box goes where the field was in the tab order.
    if (before)
        QWidget::setTabOrder(before, this);
    else if (after)
        QWidget::setTabOrder(this, after);
}

void UpDown::TakeLabelsOf(QWidget* field) {
    // A label's mnemonic and its name for screen readers now belong to the
    // spin box, which is what takes the focus and what a screen reader sees
    // of the field.
    if (!field->accessibleName().isEmpty()) setAccessibleName(field->accessibleName());
    setProperty(kNamesFieldProperty, QVariant::fromValue<QObject*>(field));
    for (QLabel* label : window()->findChildren<QLabel*>()) {
        if (label->buddy() == field) label->setBuddy(this);
    }
}

bool UpDown::FieldSteps() const {
    return field_ && field_->isEnabled() && !field_->isReadOnly();
}

void UpDown::StepBy(int steps) {
    if (!FieldSteps()) return;
    bool ok = false;
    const qint64 current = field_->text().trimmed().toLongLong(&ok);
    qint64 next = ok ? current + qint64(steps) * step_ : (steps > 0 ? minimum_ : maximum_);
    next = std::clamp<qint64>(next, minimum_, maximum_);
    if (ok && next == current) return;
    field_->setText(QString::number(next));
    field_->selectAll();
}

QAbstractSpinBox::StepEnabled UpDown::stepEnabled() const {
    if (!FieldSteps()) return StepNone;
    bool ok = false;
    const qint64 current = field_->text().trimmed().toLongLong(&ok);
    if (!ok) return StepUpEnabled | StepDownEnabled;
    // Out of range either way, a step brings the number back to the bound.
    StepEnabled enabled = StepNone;
    if (current != maximum_) enabled |= StepUpEnabled;
    if (current != minimum_) enabled |= StepDownEnabled;
    return enabled;
}

QValidator::State UpDown::validate(QString&, int&) const {
    return QValidator::Acceptable;
}

int UpDown::MinimumTextWidth() const {
    const QFontMetrics metrics(font());
    return std::max(metrics.horizontalAdvance(QString::number(minimum_)),
                    metrics.horizontalAdvance(QString::number(maximum_)));
}

QSize UpDown::SpinSizeFor(QSize text) const {
    QStyleOptionSpinBox option;
    initStyleOption(&option);
    return style()->sizeFromContents(QStyle::CT_SpinBox, &option, text, this);
}

QSize UpDown::sizeHint() const {
    if (!field_) return QAbstractSpinBox::sizeHint();
    ensurePolished();
    // As wide as the field would have been on its own.
    const QSize text = field_->sizeHint();
    return SpinSizeFor(QSize(std::max(text.width(), MinimumTextWidth()), text.height()))
        .boundedTo(maximumSize());
}

QSize UpDown::minimumSizeHint() const {
    if (!field_) return QAbstractSpinBox::minimumSizeHint();
    ensurePolished();
    // The longer bound and room for the cursor.
    const QSize text(MinimumTextWidth() + 4, field_->minimumSizeHint().height());
    return SpinSizeFor(text).boundedTo(maximumSize());
}

void UpDown::FollowFieldEnabled() {
    // A field disabled on its own greys its arrows (no step is enabled) and
    // leaves the tab order. Disabling the spin box itself would keep the
    // field disabled after it is enabled again on its own.
    setFocusPolicy(field_->isEnabled() ? Qt::WheelFocus : Qt::NoFocus);
    update();
}

bool UpDown::eventFilter(QObject* watched, QEvent* event) {
    if (watched == field_ && event->type() == QEvent::EnabledChange) FollowFieldEnabled();
    return QAbstractSpinBox::eventFilter(watched, event);
}

}  // namespace winadmin
