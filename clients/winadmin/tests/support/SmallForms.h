#pragma once
// The small form the widget suites put a field under test on, laid out as
// the editors lay out theirs, and the arrows of a spin box clicked where the
// style draws them.

#include <QAbstractSpinBox>
#include <QDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QStyle>
#include <QStyleOptionSpinBox>
#include <QTest>

namespace winadmin {

// A field above, the field under test with its label (its buddy), a field
// below, in one grid; the tab stops set as a form sets them, once its
// controls are made and before anything binds the field.
template <class Field>
struct LabelledField {
    LabelledField(const QString& caption, const char* name) {
        grid->addWidget(before, 0, 1);
        grid->addWidget(label, 1, 0);
        grid->addWidget(field, 1, 1);
        grid->addWidget(after, 2, 1);
        label->setText(caption);
        label->setBuddy(field);
        field->setObjectName(QLatin1String(name));
        QWidget::setTabOrder(before, field);
        QWidget::setTabOrder(field, after);
    }
    QDialog dialog;
    QGridLayout* grid = new QGridLayout(&dialog);
    QLineEdit* before = new QLineEdit;
    QLabel* label = new QLabel;
    Field* field = new Field;
    QLineEdit* after = new QLineEdit;
};

inline QRect SpinArrowRect(QAbstractSpinBox* spin, QStyle::SubControl arrow) {
    QStyleOptionSpinBox option;
    option.initFrom(spin);
    option.frame = spin->hasFrame();
    option.subControls = QStyle::SC_SpinBoxUp | QStyle::SC_SpinBoxDown;
    option.buttonSymbols = spin->buttonSymbols();
    return spin->style()->subControlRect(QStyle::CC_SpinBox, &option, arrow, spin);
}

inline void ClickSpinArrow(QAbstractSpinBox* spin, QStyle::SubControl arrow) {
    QTest::mouseClick(spin, Qt::LeftButton, Qt::NoModifier, SpinArrowRect(spin, arrow).center());
}

}  // namespace winadmin
