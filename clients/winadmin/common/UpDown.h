#pragma once
// The up-down (spin) control of a numeric text field: two small arrow buttons
// beside the field that step its number within bounds. The field stays the
// place where the number is typed and checked, so what the administrator
// types out of range is still seen by the range check rather than silently
// clamped. Up and Down arrow keys in the field step it too.

#include <QWidget>

class QLineEdit;
class QToolButton;

namespace winadmin {

class UpDown : public QWidget {
    Q_OBJECT

public:
    explicit UpDown(QWidget* parent = nullptr);

    // Binds the control to its field with the bounds and step of its value.
    void Bind(QLineEdit* field, int minimum, int maximum, int step = 1);
    QLineEdit* Field() const { return field_; }
    int Minimum() const { return minimum_; }
    int Maximum() const { return maximum_; }

    // One step up (+1) or down (-1); a field that holds no number starts from
    // the nearest bound.
    void StepBy(int steps);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QToolButton* up_;
    QToolButton* down_;
    QLineEdit* field_ = nullptr;
    int minimum_ = 0;
    int maximum_ = 0;
    int step_ = 1;
};

}  // namespace winadmin
