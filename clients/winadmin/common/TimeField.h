#pragma once
// Times of day typed as "hh:mm", as the least-cost-routing rates keep their
// start and stop: what counts as a valid time, taking a time apart into hour
// and minute and building it back, the field with its key rules, and the
// spin box whose arrows step the hour or the minute under the text cursor.

#include <QLineEdit>
#include <optional>

#include "common/UpDown.h"

namespace winadmin {

// Whether the end of the day, "24:00", counts as a time. Stop times take it;
// start times do not.
enum class EndOfDay { Refused, Allowed };

struct TimeOfDay {
    int hour = 0;    // 0 to 23; 24 only for the end of the day
    int minute = 0;  // 0 to 59
    friend bool operator==(const TimeOfDay&, const TimeOfDay&) = default;
};

// Exactly the texts that the platform's time parsing takes as "hh:mm", and
// the literal "24:00" where the end of the day is allowed.
bool IsValidTime(const QString& text, EndOfDay endOfDay = EndOfDay::Refused);
// The hour and minute of a valid time text; nothing for any other text.
std::optional<TimeOfDay> SplitTime(const QString& text, EndOfDay endOfDay = EndOfDay::Refused);
// The "hh:mm" text of hour and minute when they make a valid time, else "".
// Where the end of the day is allowed, hour 24 stands for it and gives
// "24:00" (a stored stop hour of 24 means the end of the day whatever minute
// came with it).
QString JoinTime(int hour, int minute, EndOfDay endOfDay = EndOfDay::Refused);

// One arrow step of a time field in direction +1 (up) or -1 (down), on the
// part under the cursor: before the colon the hour, which cycles through 0
// to 24 so that the end of the day can be reached; after it the minute,
// which cycles through 0 to 59 without carrying into the hour; on the colon
// nothing. A short text is first brought to "hh:mm". A text that is no time
// (an hour of 24 counts as one here, whatever the field allows) beeps and
// becomes "00:00". The changed part replaces its old digits, and the cursor
// goes back to its start.
void SpinTime(QLineEdit* field, int direction);

// A time field: at most five characters, digits and one colon. The colon
// goes only by backspace: keys that would delete it forward (Delete, cut) or
// type over it are swallowed, as is any character but a digit or the colon,
// a second colon, and typing into a full field with nothing selected.
class TimeField : public QLineEdit {
    Q_OBJECT

public:
    explicit TimeField(QWidget* parent = nullptr);

    void SetEndOfDay(EndOfDay endOfDay) { endOfDay_ = endOfDay; }
    EndOfDay EndOfDayRule() const { return endOfDay_; }

    bool IsValid() const { return IsValidTime(text(), endOfDay_); }
    std::optional<TimeOfDay> Time() const { return SplitTime(text(), endOfDay_); }
    // Shows the time as "hh:mm" and answers true; hour and minute that make
    // no valid time leave the field as it is and answer false.
    bool SetTime(int hour, int minute);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    bool Refuses(const QKeyEvent* event) const;
    bool WouldDeleteColon(const QKeyEvent* event) const;

    EndOfDay endOfDay_ = EndOfDay::Refused;
};

// The spin box of a time field: the same look as the numeric ones, its
// steps are those of SpinTime.
class TimeUpDown : public UpDown {
    Q_OBJECT

public:
    explicit TimeUpDown(QWidget* parent = nullptr) : UpDown(parent) {}

    void Bind(QLineEdit* field);
    // Only the direction counts: a page step is one step too.
    void StepBy(int steps) override;

protected:
    StepEnabled stepEnabled() const override;
    int MinimumTextWidth() const override;
};

}  // namespace winadmin
