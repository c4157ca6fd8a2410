#include "common/TimeField.h"

#include <QKeyEvent>
#include <QRegularExpressionValidator>
#include <QTime>

#include "common/Prompter.h"

namespace winadmin {

namespace {

const QString kTimeFormat = QStringLiteral("hh:mm");
const QString kEndOfDay = QStringLiteral("24:00");
constexpr int kTimeLength = 5;
constexpr int kColonAt = 2;
constexpr int kLastHour = 24;  // the hour spin reaches the end of the day
constexpr int kLastMinute = 59;

QString TwoDigits(int number) {
    return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
}

// A time as far as the spin is concerned: the hour may be 24 with any valid
// minute, since the spin itself leads there and must lead back.
std::optional<TimeOfDay> SpinnableTime(const QString& text) {
    if (auto time = SplitTime(text)) return time;
    if (text.startsWith(QLatin1String("24:"))) {
        if (auto minutes = SplitTime(QLatin1String("00:") + text.mid(3)))
            return TimeOfDay{kLastHour, minutes->minute};
    }
    return std::nullopt;
}

int Cycle(int value, int direction, int last) {
    if (direction > 0) return value < last ? value + 1 : 0;
    return value > 0 ? value - 1 : last;
}

}  // namespace

bool IsValidTime(const QString& text, EndOfDay endOfDay) {
    if (endOfDay == EndOfDay::Allowed && text == kEndOfDay) return true;
    return QTime::fromString(text, kTimeFormat).isValid();
}

std::optional<TimeOfDay> SplitTime(const QString& text, EndOfDay endOfDay) {
    if (endOfDay == EndOfDay::Allowed && text == kEndOfDay) return TimeOfDay{kLastHour, 0};
    const QTime time = QTime::fromString(text, kTimeFormat);
    if (!time.isValid()) return std::nullopt;
    return TimeOfDay{time.hour(), time.minute()};
}

QString JoinTime(int hour, int minute, EndOfDay endOfDay) {
    if (endOfDay == EndOfDay::Allowed && hour == kLastHour) return kEndOfDay;
    const QTime time(hour, minute);
    return time.isValid() ? time.toString(kTimeFormat) : QString();
}

void SpinTime(QLineEdit* field, int direction) {
    if (!field || direction == 0) return;
    const QString text = field->text();
    const std::optional<TimeOfDay> time = SpinnableTime(text);
    if (!time) {
        ThePrompter().Beep();
        field->setText(QTime(0, 0).toString(kTimeFormat));
        return;
    }
    int cursor = field->cursorPosition();
    if (text.size() < kTimeLength) {
        // "7:5" becomes "07:05"; the cursor keeps to the part it was in by
        // moving on as far as the text grew.
        field->setText(TwoDigits(time->hour) + QLatin1Char(':') + TwoDigits(time->minute));
        cursor += int(field->text().size() - text.size());
        field->setCursorPosition(cursor);
    }
    if (cursor == kColonAt) return;
    const bool hours = cursor < kColonAt;
    const int start = hours ? 0 : kColonAt + 1;
    const int value = hours ? Cycle(time->hour, direction, kLastHour)
                            : Cycle(time->minute, direction, kLastMinute);
    field->setSelection(start, 2);
    field->insert(TwoDigits(value));
    field->setCursorPosition(start);
}

TimeField::TimeField(QWidget* parent) : QLineEdit(parent) {
    setMaxLength(kTimeLength);
    // Pasted text is held to the characters a time is typed with.
    setValidator(new QRegularExpressionValidator(
        QRegularExpression(QStringLiteral("[0-9]*:?[0-9]*")), this));
}

bool TimeField::SetTime(int hour, int minute) {
    const QString text = JoinTime(hour, minute, endOfDay_);
    if (text.isEmpty()) return false;
    setText(text);
    return true;
}

void TimeField::keyPressEvent(QKeyEvent* event) {
    if (Refuses(event)) {
        // Swallowed here, so that it reaches neither the text nor the dialog.
        event->accept();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

bool TimeField::WouldDeleteColon(const QKeyEvent* event) const {
    const bool deleteForward = event->key() == Qt::Key_Delete;
    const bool toEnd = event->matches(QKeySequence::DeleteEndOfWord) ||
                       event->matches(QKeySequence::DeleteEndOfLine);
    const bool cut = event->matches(QKeySequence::Cut);
    if (!deleteForward && !toEnd && !cut) return false;
    if (hasSelectedText()) return selectedText().contains(QLatin1Char(':'));
    if (cut) return false;  // nothing selected, nothing cut
    const QString ahead = text().mid(cursorPosition(), toEnd ? -1 : 1);
    return ahead.contains(QLatin1Char(':'));
}

bool TimeField::Refuses(const QKeyEvent* event) const {
    // Backspace may take anything, the colon too.
    if (event->key() == Qt::Key_Backspace) return false;
    if (WouldDeleteColon(event)) return true;
    // Shortcuts and editing keys type nothing; pasted text meets the
    // validator. X11 sends Delete with U+007F, which is no character to type.
    if (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    const QString typed = event->text();
    if (typed.isEmpty() || !typed.front().isPrint()) return false;
    if (text().size() >= kTimeLength && !hasSelectedText()) return true;
    if (selectedText().contains(QLatin1Char(':'))) return true;
    for (QChar c : typed) {
        if (c == QLatin1Char(':')) {
            if (text().contains(QLatin1Char(':'))) return true;
        } else if (c < QLatin1Char('0') || c > QLatin1Char('9')) {
            return true;
        }
    }
    return false;
}

void TimeUpDown::Bind(QLineEdit* field) {
    UpDown::Bind(field, 0, kLastHour);
}

void TimeUpDown::StepBy(int steps) {
    if (FieldSteps()) SpinTime(Field(), steps > 0 ? 1 : -1);
}

QAbstractSpinBox::StepEnabled TimeUpDown::stepEnabled() const {
    // Both parts cycle, so there is always a step either way.
    return FieldSteps() ? (StepUpEnabled | StepDownEnabled) : StepNone;
}

int TimeUpDown::MinimumTextWidth() const {
    return QFontMetrics(font()).horizontalAdvance(QStringLiteral("00:00"));
}

}  // namespace winadmin
