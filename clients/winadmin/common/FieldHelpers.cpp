#include "common/FieldHelpers.h"

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QValidator>

#include "common/AppContext.h"
#include "common/Labels.h"
#include "common/Pages.h"
#include "common/Prompter.h"

namespace winadmin {

namespace {

constexpr int kEnter = 13;

QLineEdit* LineEditOf(QWidget* control) {
    if (auto* edit = qobject_cast<QLineEdit*>(control)) return edit;
    if (auto* combo = qobject_cast<QComboBox*>(control)) return combo->lineEdit();
    return nullptr;
}

// Holds pasted and dropped text to the characters the field's kind takes;
// the field's own maximum length cuts what is too long.
class KeyFilterValidator final : public QValidator {
public:
    KeyFilterValidator(int kind, QObject* parent) : QValidator(parent), kind_(kind) {}
    State validate(QString& input, int&) const override {
        for (QChar c : input)
            if (c.unicode() >= 32 && !KeyFilterAccepts(kind_, c)) return Invalid;
        return Acceptable;
    }

private:
    int kind_;
};

// Runs every key press of one field through ComboKeyPress and drops what it
// refuses.
class KeyFilterEvents final : public QObject {
public:
    KeyFilterEvents(QWidget* field, int kind, int maxLength)
        : QObject(field), field_(field), kind_(kind), maxLength_(maxLength) {}

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == field_ && event->type() == QEvent::ParentChange) FollowSpinBox();
        if (event->type() != QEvent::KeyPress) return QObject::eventFilter(watched, event);
        auto* key = static_cast<QKeyEvent*>(event);
        // Shortcuts (copy, paste, select all) are no typing.
        if (key->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
            return false;
        int keyAscii = 0;
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter)
            keyAscii = kEnter;
        else if (!key->text().isEmpty())
            keyAscii = key->text().at(0).unicode();
        else
            return false;
        ComboKeyPress(field_, kind_, maxLength_, keyAscii);
        return keyAscii == 0;
    }

    // A spin box hands the keys it does not use itself straight to its line
    // edit's event(), past any filter there: the filter has to sit on the spin
    // box too, whether the field is adopted before or after the filter is put on.
    void FollowSpinBox() {
        auto* spin = qobject_cast<QAbstractSpinBox*>(field_->parentWidget());
        if (!spin || spin == spin_) return;
        if (spin_) spin_->removeEventFilter(this);
        spin_ = spin;
        spin_->installEventFilter(this);
    }

private:
    QWidget* field_;
    int kind_;
    int maxLength_;
    QPointer<QAbstractSpinBox> spin_;
};

bool IsNumber(const QString& text, double* value) {
    QString normal = text.trimmed();
    if (DecimalSeparator() != QLatin1String("."))
        normal.replace(DecimalSeparator(), QLatin1String("."));
    bool ok = false;
    *value = normal.toDouble(&ok);
    return ok && !normal.isEmpty();
}

QString BoundText(double bound) {
    return QString::number(bound, 'g', 15).trimmed();
}

void ShowFieldMessage(QWidget* control, const QString& message) {
    ThePrompter().Beep();
    Prompt prompt;
    prompt.text = message;
    prompt.title = control->window()->windowTitle();
    prompt.icon = PromptIcon::Exclamation;
    ThePrompter().Show(prompt);
    // A field on a page behind another is brought to the front first, so
    // that the focus can reach it.
    ShowPageOf(control);
    CTRLSetFocus(control);
}

}  // namespace

bool KeyFilterAccepts(int kind, QChar c) {
    switch (kind) {
        case kKeyDigits:
            return c >= u'0' && c <= u'9';
        case kKeyNumberForms:
            return (c >= u'0' && c <= u'9') || c == u'.' || c == u'/';
        case kKeyDecimal:
            return NumericCharacters().contains(c);
        case kKeyNoParentheses:
            return c != u'(' && c != u')';
        default:
            return true;
    }
}

void ComboKeyPress(QWidget* control, int kind, int maxLength, int& keyAscii) {
    if (auto* combo = qobject_cast<QComboBox*>(control)) {
        if (!combo->isEnabled()) return;
        if (keyAscii == kEnter && combo->view() && combo->view()->isVisible()) {
            combo->hidePopup();
            keyAscii = 0;
            return;
        }
    }
    FilterKey(control, kind, maxLength, keyAscii);
}

bool FilterKey(QWidget* control, int kind, int maxLength, int& keyAscii) {
    QLineEdit* edit = LineEditOf(control);
    if (keyAscii == kEnter && edit && (edit->alignment() & Qt::AlignRight)) {
        keyAscii = 0;
        return true;
    }
    // Only what would be typed into the text is held to the rules. Editing
    // keys pass, also where the platform gives them a character: X11 sends
    // Delete as U+007F.
    // (Half of a character outside the basic plane is no editing key.)
    const QChar typed(keyAscii);
    if (keyAscii < 32 || (!typed.isPrint() && !typed.isSurrogate())) return true;
    const QString text = edit ? edit->text() : FieldText(control);
    const bool selection = edit && edit->hasSelectedText();
    bool refused = maxLength > 0 && text.size() + 1 > maxLength && !selection;
    if (!refused && kind >= kKeyDigits && kind <= kKeyNoParentheses)
        refused = !KeyFilterAccepts(kind, typed);
    if (refused) {
        keyAscii = 0;
        ThePrompter().Beep();
    }
    return true;
}

void InstallKeyFilter(QWidget* field, int kind, int maxLength) {
    QLineEdit* edit = LineEditOf(field);
    if (edit) {
        if (maxLength > 0) edit->setMaxLength(maxLength);
        if (kind >= kKeyDigits && kind <= kKeyNoParentheses && kind != kKeyAnyText)
            edit->setValidator(new KeyFilterValidator(kind, edit));
        auto* events = new KeyFilterEvents(field, kind, maxLength);
        edit->installEventFilter(events);
        events->FollowSpinBox();
    }
    if (auto* combo = qobject_cast<QComboBox*>(field)) {
        auto* events = new KeyFilterEvents(field, kind, maxLength);
        combo->installEventFilter(events);
        if (combo->view()) combo->view()->installEventFilter(events);
    }
}

int FindItemData(const QComboBox* combo, int value) {
    if (!combo) return -1;
    for (int i = 0; i < combo->count(); ++i) {
        bool ok = false;
        if (combo->itemData(i).toInt(&ok) == value && ok) return i;
    }
    return -1;
}

QString FieldText(const QWidget* control) {
    if (auto* edit = qobject_cast<const QLineEdit*>(control)) return edit->text();
    if (auto* combo = qobject_cast<const QComboBox*>(control)) return combo->currentText();
    if (auto* spin = qobject_cast<const QAbstractSpinBox*>(control)) return spin->text();
    if (auto* label = qobject_cast<const QLabel*>(control)) return label->text();
    return {};
}

QString FieldEmptyMessage(const QString& labelCaption) {
    return GetLabel(QStringLiteral("Field")) + CaptionWithoutColon(labelCaption) +
           GetLabel(QStringLiteral("CannotBeEmpty"));
}

bool IsFieldEmpty(QWidget* control, const QString& message) {
    if (!control || !control->isEnabled()) return false;
    if (!FieldText(control).trimmed().isEmpty()) return false;
    ShowFieldMessage(control, message);
    return true;
}

bool CheckFieldRange(QWidget* control, const QString& labelCaption, double from, double to) {
    if (!control) return false;
    if (!control->isEnabled()) return true;
    double value = 0;
    if (IsNumber(FieldText(control), &value) && value >= from && value <= to) return true;
    ShowFieldMessage(control, GetLabel(QStringLiteral("ValidRangeForField")) +
                                  CaptionWithoutColon(labelCaption) +
                                  GetLabel(QStringLiteral("IsFrom")) + BoundText(from) +
                                  QLatin1Char(' ') + GetLabel(QStringLiteral("To")) +
                                  BoundText(to) + QLatin1Char('.'));
    return false;
}

std::optional<double> ParseDecimal(const QString& text) {
    double value = 0;
    if (!IsNumber(text, &value)) return std::nullopt;
    return value;
}

QString FormatDecimal(double value, int decimals) {
    QString text = QString::number(value, 'f', decimals);
    if (DecimalSeparator() != QLatin1String("."))
        text.replace(QLatin1Char('.'), DecimalSeparator());
    return text;
}

QString NoneText() {
    return GetLabel(QStringLiteral("(None)"));
}

QString FormatRange(double from, double to) {
    return (QString::number(qint64(from)) + QLatin1String("..") + QString::number(qint64(to)))
        .trimmed();
}

QString FormatUserAtHost(const QString& user, const QString& host) {
    if (user.isEmpty() && host.isEmpty()) return NoneText();
    return user + QLatin1Char('@') + host;
}

QString FormatUserRef(const QString& displayName, const QString& user, const QString& host) {
    if (user.isEmpty() && host.isEmpty()) return NoneText();
    return displayName + QLatin1String(" (") + user + QLatin1Char('@') + host + QLatin1Char(')');
}

QString FormatNamed(const QString& name, const QString& second) {
    if (name.isEmpty()) return NoneText();
    return name.trimmed() + QLatin1String(" (") + second.trimmed() + QLatin1Char(')');
}

QString ParenthesizedUserAtHost(const QStringList& userAndHost) {
    const QString user = userAndHost.value(0);
    const QString host = userAndHost.value(1);
    if (user.isEmpty() && host.isEmpty()) return {};
    return QLatin1Char('(') + user + QLatin1Char('@') + host + QLatin1Char(')');
}

QString ParenthesizedUserAtHostOrNone(const QStringList& userAndHost) {
    const QString reference = ParenthesizedUserAtHost(userAndHost);
    return reference.isEmpty() ? NoneText() : reference;
}

QString AppendParenthesized(const QString& a, const QString& b) {
    if (b.trimmed().isEmpty()) return a;
    return a + QLatin1String(" (") + b + QLatin1Char(')');
}

QString ExtractParenthesized(const QString& s) {
    if (s.isEmpty() || s == NoneText()) return {};
    const int open = int(s.lastIndexOf(QLatin1Char('(')));
    const int close = int(s.indexOf(QLatin1Char(')'), open < 0 ? 0 : open));
    if (close < 0) return {};
    return s.mid(open + 1, close - open - 1);
}

QString CutAtNul(const QString& s) {
    const int nul = int(s.indexOf(QChar(0)));
    return nul < 0 ? s : s.left(nul);
}

void BeginBusy() {
    QApplication::setOverrideCursor(Qt::WaitCursor);
}

void EndBusy() {
    // A message box shown during the work may already have taken every
    // pointer down (ResetBusyPointer); there is then nothing to restore.
    if (QApplication::overrideCursor()) QApplication::restoreOverrideCursor();
}

void SetFieldLocked(QLineEdit* field, bool locked) {
    if (!field) return;
    field->setReadOnly(locked);
    QPalette palette = field->palette();
    const bool editable = field->isEnabled() && !locked;
    palette.setColor(QPalette::Base,
                     QApplication::palette().color(editable ? QPalette::Base : QPalette::Button));
    field->setPalette(palette);
}

void SetContainerEnabled(QWidget* container, bool enabled) {
    if (!container) return;
    container->setEnabled(enabled);
    QList<QLineEdit*> edits = container->findChildren<QLineEdit*>();
    // A single field is its own container.
    if (auto* field = qobject_cast<QLineEdit*>(container)) edits.prepend(field);
    for (QLineEdit* edit : edits) {
        // The line edits inside combo and spin boxes keep their owners' look.
        if (qobject_cast<QComboBox*>(edit->parentWidget()) ||
            qobject_cast<QAbstractSpinBox*>(edit->parentWidget()))
            continue;
        SetFieldLocked(edit, edit->isReadOnly());
    }
}

void DisableContainer(QWidget* container) {
    SetContainerEnabled(container, false);
}

void EnableContainer(QWidget* container) {
    SetContainerEnabled(container, true);
}

void CTRLSetFocus(QWidget* control) {
    if (!control || !control->isEnabled() || !control->isVisible()) return;
    QWidget* parent = control->parentWidget();
    if (parent && (!parent->isEnabled() || !parent->isVisible())) return;
    control->setFocus(Qt::OtherFocusReason);
    SelectAllText(control);
}

void SelectAllText(QWidget* control) {
    if (!control) return;
    if (QWidget* parent = control->parentWidget(); parent && !parent->isVisible()) return;
    if (QLineEdit* edit = LineEditOf(control))
        edit->selectAll();
    else if (auto* spin = qobject_cast<QAbstractSpinBox*>(control))
        spin->selectAll();
}

}  // namespace winadmin
