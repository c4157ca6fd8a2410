#include "editors/FieldBinding.h"

namespace winadmin {

void SetFieldText(QWidget* field, const QString& text) {
    if (auto* edit = qobject_cast<QLineEdit*>(field))
        edit->setText(text);
    else if (auto* combo = qobject_cast<QComboBox*>(field))
        combo->isEditable() ? combo->setEditText(text)
                            : combo->setCurrentIndex(text.isEmpty() ? -1 : combo->findText(text));
    else if (auto* label = qobject_cast<QLabel*>(field))
        label->setText(text);
}

QString CaptionOf(const FieldSteps& steps) {
    return steps.label ? steps.label->text() : steps.field->accessibleName();
}

bool CheckMandatory(const FieldSteps& steps) {
    return !IsFieldEmpty(steps.field, FieldEmptyMessage(CaptionOf(steps)));
}

bool CheckRange(const FieldSteps& steps, double from, double to) {
    return CheckFieldRange(steps.field, CaptionOf(steps), from, to);
}

}  // namespace winadmin
