// Time fields as the rate editor uses them: which texts are times, taking
// times apart and building them back, the key rules of the field (typed as
// the platform sends keys, through the spin box that has the focus), and the
// arrows that step the hour or the minute under the cursor.

#include <QDialog>
#include <QFormLayout>
#include <QLabel>
#include <QTest>

#include "common/TimeField.h"
#include "support/ConsoleFixture.h"
#include "support/PlatformKeys.h"
#include "support/SmallForms.h"

using namespace winadmin;

namespace {

// The rate editor's two times, each with its spin box.
struct RateTimes {
    RateTimes() {
        auto* form = new QFormLayout(&dialog);
        form->addRow(new QLabel(QStringLiteral("Start Time:")), start);
        form->addRow(new QLabel(QStringLiteral("Stop Time:")), stop);
        start->setObjectName(QStringLiteral("medtStartTime"));
        stop->setObjectName(QStringLiteral("medtStopTime"));
        stop->SetEndOfDay(EndOfDay::Allowed);
        startSpin->Bind(start);
        stopSpin->Bind(stop);
        ShowActive(dialog);
    }
    // The text with the cursor at cursor, or with selected characters from
    // cursor on; the focus in the field.
    void Put(TimeField* field, const QString& text, int cursor, int selected = 0) {
        field->setFocus();
        field->setText(text);
        if (selected)
            field->setSelection(cursor, selected);
        else
            field->setCursorPosition(cursor);
    }
    QDialog dialog;
    TimeField* start = new TimeField;
    TimeField* stop = new TimeField;
    TimeUpDown* startSpin = new TimeUpDown(&dialog);
    TimeUpDown* stopSpin = new TimeUpDown(&dialog);
};

}  // namespace

class TestTimeField : public ConsoleSuite {
    Q_OBJECT

public:
    TestTimeField() : ConsoleSuite(Server::None) {}

private slots:
    void ValidTimesTakenApartAndBuiltBack();
    void KeyRules_data();
    void KeyRules();
    void Spin_data();
    void Spin();
    void ArrowsOfBothFields();
    void EndOfDayOnlyWhereAllowed();
};

void TestTimeField::ValidTimesTakenApartAndBuiltBack() {
    // The end of the day as start and stop time is the rate editor's.
    QVERIFY(IsValidTime(QStringLiteral("23:59")));
    QVERIFY(!IsValidTime(QStringLiteral("24:01"), EndOfDay::Allowed));
    // The platform's "hh:mm" wants both digits.
    QVERIFY(!IsValidTime(QStringLiteral("7:05"), EndOfDay::Allowed));
    QCOMPARE(SplitTime(QStringLiteral("24:00")), std::nullopt);
    QCOMPARE(JoinTime(7, 5), QStringLiteral("07:05"));
    QCOMPARE(SplitTime(QStringLiteral("07:05")), (TimeOfDay{7, 5}));
    QCOMPARE(JoinTime(24, 0), QString());
    QCOMPARE(JoinTime(23, 60), QString());
    // A stored stop hour of 24 is the end of the day, minute or not.
    QCOMPARE(JoinTime(24, 30, EndOfDay::Allowed), QStringLiteral("24:00"));
    QCOMPARE(JoinTime(25, 0, EndOfDay::Allowed), QString());
}

void TestTimeField::KeyRules_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("cursor");
    QTest::addColumn<int>("selected");
    // Characters to type, one of "Delete", "Backspace", "Cut", "Ctrl+Delete",
    // or "Paste " and the text pasted.
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("kept");
    const auto row = [](const char* name, const char* text, int cursor, int selected,
                        const char* keys, const char* kept) {
        QTest::newRow(name) << QString(text) << cursor << selected << QString(keys)
                            << QString(kept);
    };
    row("digits and the colon only", "", 0, 0, "1a2-.3 ", "123");
    row("full field", "08:30", 5, 0, "1", "08:30");
    row("second colon", "08:", 3, 0, ":", "08:");
    row("typing over the colon", "08:30", 1, 2, "5", "08:30");
    row("Backspace takes the colon", "08:30", 3, 0, "Backspace", "0830");
    row("Delete before the colon", "08:30", 2, 0, "Delete", "08:30");
    row("Delete of a digit in a full field", "08:30", 0, 0, "Delete", "8:30");
    row("Cut of the colon", "08:30", 1, 2, "Cut", "08:30");
    row("Ctrl+Delete towards the colon", "08:30", 0, 0, "Ctrl+Delete", "08:30");
    row("Paste of two colons over all", "08:30", 0, 5, "Paste 1:2:", "08:30");
}

void TestTimeField::KeyRules() {
    QFETCH(QString, text);
    QFETCH(int, cursor);
    QFETCH(int, selected);
    QFETCH(QString, keys);
    RateTimes times;
    times.Put(times.start, text, cursor, selected);
    // The platform sends the keys to the focus: the spin box around the field.
    QWidget* focus = FocusTarget();
    QCOMPARE(focus, times.startSpin);
    if (keys == QLatin1String("Delete"))
        PlatformDelete(focus);
    else if (keys == QLatin1String("Backspace"))
        PlatformBackspace(focus);
    else if (keys == QLatin1String("Cut"))
        QTest::keyClick(focus, Qt::Key_X, Qt::ControlModifier);
    else if (keys.startsWith(QLatin1String("Paste ")))
        Paste(times.start, keys.mid(6));
    else if (keys == QLatin1String("Ctrl+Delete"))
        PlatformKey(focus, Qt::Key_Delete, QString(QChar(0x7f)), Qt::ControlModifier);
    else
        QTest::keyClicks(focus, keys);
    QTEST(times.start->text(), "kept");
    // A refused key is swallowed quietly.
    QCOMPARE(fx_->prompter.BeepCount(), 0);
}

void TestTimeField::Spin_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("cursor");
    QTest::addColumn<int>("direction");
    QTest::addColumn<QString>("spun");
    QTest::addColumn<int>("cursorAfter");
    QTest::addColumn<int>("beeps");
    QTest::newRow("hour up to the end of day") << "23:00" << 0 << 1 << "24:00" << 0 << 0;
    QTest::newRow("hour up from 24") << "24:00" << 1 << 1 << "00:00" << 0 << 0;
    QTest::newRow("hour down from 0") << "00:30" << 0 << -1 << "24:30" << 0 << 0;
    QTest::newRow("minute up from 59 does not carry") << "12:59" << 4 << 1 << "12:00" << 3 << 0;
    QTest::newRow("on the colon") << "12:34" << 2 << 1 << "12:34" << 2 << 0;
    QTest::newRow("no time") << "ab" << 1 << 1 << "00:00" << 5 << 1;
}

void TestTimeField::Spin() {
    QFETCH(QString, text);
    QFETCH(int, cursor);
    QFETCH(int, direction);
    RateTimes times;
    // The start field spins the same way: the hour reaches 24 there too.
    times.Put(times.start, text, cursor);
    QTest::keyClick(FocusTarget(), direction > 0 ? Qt::Key_Up : Qt::Key_Down);
    QTEST(times.start->text(), "spun");
    QTEST(times.start->cursorPosition(), "cursorAfter");
    QVERIFY(!times.start->hasSelectedText());
    QTEST(fx_->prompter.BeepCount(), "beeps");
}

void TestTimeField::ArrowsOfBothFields() {
    RateTimes times;
    times.Put(times.stop, QStringLiteral("23:45"), 4);
    ClickSpinArrow(times.stopSpin, QStyle::SC_SpinBoxDown);
    QCOMPARE(times.stop->text(), QStringLiteral("23:44"));
    // The other field's arrows leave this one alone.
    times.Put(times.start, QStringLiteral("06:00"), 0);
    ClickSpinArrow(times.startSpin, QStyle::SC_SpinBoxDown);
    QCOMPARE(times.start->text(), QStringLiteral("05:00"));
    QCOMPARE(times.stop->text(), QStringLiteral("23:44"));
    // A disabled field does not spin.
    times.stop->setEnabled(false);
    ClickSpinArrow(times.stopSpin, QStyle::SC_SpinBoxUp);
    QCOMPARE(times.stop->text(), QStringLiteral("23:44"));
}

void TestTimeField::EndOfDayOnlyWhereAllowed() {
    RateTimes times;
    // Loading: a stored stop hour of 24 shows the end of the day; a start
    // hour of 24 is not put into its field.
    QVERIFY(times.stop->SetTime(24, 0));
    QCOMPARE(times.stop->Time(), (TimeOfDay{24, 0}));
    times.start->setText(QStringLiteral("07:00"));
    QVERIFY(!times.start->SetTime(24, 0));
    QCOMPARE(times.start->text(), QStringLiteral("07:00"));
}

QTEST_MAIN(TestTimeField)
#include "tst_timefield.moc"
