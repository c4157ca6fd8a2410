#include "common/UpDown.h"

#include <QEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QToolButton>
#include <QVBoxLayout>

#include "common/Labels.h"

namespace winadmin {

UpDown::UpDown(QWidget* parent) : QWidget(parent), up_(new QToolButton(this)), down_(new QToolButton(this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    for (QToolButton* button : {up_, down_}) {
        button->setAutoRepeat(true);
        button->setFocusPolicy(Qt::NoFocus);  // the field takes the keys
        button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
        button->setFixedWidth(16);
        layout->addWidget(button);
    }
    up_->setArrowType(Qt::UpArrow);
    down_->setArrowType(Qt::DownArrow);
    up_->setObjectName(QStringLiteral("up"));
    down_->setObjectName(QStringLiteral("down"));
    connect(up_, &QToolButton::clicked, this, [this] { StepBy(1); });
    connect(down_, &QToolButton::clicked, this, [this] { StepBy(-1); });
    setFocusPolicy(Qt::NoFocus);
}

void UpDown::Bind(QLineEdit* field, int minimum, int maximum, int step) {
    if (field_) field_->removeEventFilter(this);
    field_ = field;
    minimum_ = minimum;
    maximum_ = maximum;
    step_ = step;
    if (field_) field_->installEventFilter(this);
    // Buttons without text still tell a screen reader what they do.
    const QString name = field_ ? field_->accessibleName() : QString();
    up_->setAccessibleName(GetLabel(QStringLiteral("SpinUp")) + QLatin1Char(' ') + name);
    down_->setAccessibleName(GetLabel(QStringLiteral("SpinDown")) + QLatin1Char(' ') + name);
}

void UpDown::StepBy(int steps) {
    if (!field_ || !field_->isEnabled() || field_->isReadOnly()) return;
    bool ok = false;
    const int current = field_->text().trimmed().toInt(&ok);
    int next = ok ? current + steps * step_ : (steps > 0 ? minimum_ : maximum_);
    next = qBound(minimum_, next, maximum_);
    if (ok && next == current) return;
    field_->setText(QString::number(next));
    field_->selectAll();
}

bool UpDown::eventFilter(QObject* watched, QEvent* event) {
    if (watched == field_ && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Up || key == Qt::Key_Down) {
            StepBy(key == Qt::Key_Up ? 1 : -1);
            return true;
        }
    }
    if (watched == field_ && event->type() == QEvent::EnabledChange) setEnabled(field_->isEnabled());
    return QWidget::eventFilter(watched, event);
}

}  // namespace winadmin
