#pragma once
// The up-down (spin) control of a numeric text field, drawn as the platform's
// spin box around the field. Bind adopts the field as the spin box's line
// edit and puts the spin box where the field was, so forms keep designing the
// field and its arrows as two named controls. The field stays the place where
// the number is typed and checked (its name, key filter, focus, range check),
// so what the administrator types out of range is still seen by the range
// check rather than silently clamped. Up and Down keys, the arrows and the
// wheel step the number within bounds.

#include <QAbstractSpinBox>

class QLineEdit;

namespace winadmin {

class UpDown : public QAbstractSpinBox {
    Q_OBJECT

public:
    explicit UpDown(QWidget* parent = nullptr);

    // Binds the control to its field with the bounds and step of its value.
    // The spin box takes over the field's place in its layout, its size
    // policy and width limits, its place in the tab order and the labels
    // that name it. A spin box holds one field for its life: binding the same
    // field again changes the bounds only.
    void Bind(QLineEdit* field, int minimum, int maximum, int step = 1);
    QLineEdit* Field() const { return field_; }
    int Minimum() const { return minimum_; }
    int Maximum() const { return maximum_; }

    // One step up (+1) or down (-1); a field that holds no number starts from
    // the nearest bound. Does nothing while the field is disabled or read-only
    // (disabling the spin box disables its field; a field disabled on its
    // own greys the arrows).
    virtual void StepBy(int steps);

    void stepBy(int steps) override { StepBy(steps); }
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    // What Bind does with the field, for spin boxes that step something
    // other than a whole number.
    void Adopt(QLineEdit* field);
    // Whether the field takes steps at all (enabled and editable).
    bool FieldSteps() const;
    // The width of the text the field needs at least; the spin box adds its
    // frame and arrows.
    virtual int MinimumTextWidth() const;

    StepEnabled stepEnabled() const override;
    // The field's own validator and the range check judge the text.
    QValidator::State validate(QString& input, int& pos) const override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QSize SpinSizeFor(QSize text) const;
    void FollowFieldEnabled();
    void TakeLayoutPlaceOf(QWidget* field);
    void TakeFocusPlaceOf(QWidget* before, QWidget* after);
    void TakeLabelsOf(QWidget* field);

    QLineEdit* field_ = nullptr;
    int minimum_ = 0;
    int maximum_ = 0;
    int step_ = 1;
};

}  // namespace winadmin
