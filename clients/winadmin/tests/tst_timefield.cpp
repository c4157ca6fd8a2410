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
    void ValidTimes_data();
    void ValidTimes();
    void TakenApartAndBuiltBack();
    void KeyRules_data();
    void KeyRules();
    void Spin_data();
    void Spin();
    void ArrowsOfBothFields();
    void EndOfDayOnlyWhereAllowed();
};

void TestTimeField::ValidTimes_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<bool>("validAsStop");
    QTest::newRow("midnight") << "00:00" << true << true;
    QTest::newRow("last minute") << "23:59" << true << true;
    QTest::newRow("end of day") << "24:00" << false << true;
    QTest::newRow("after the end of day") << "24:01" << false << false;
    // The platform's "hh:mm" wants both digits.
    QTest::newRow("one-digit hour") << "7:05" << false << false;
    QTest::newRow("empty") << "" << false << false;
    QTest::newRow("blank around") << " 07:05" << false << false;
}

void TestTimeField::ValidTimes() {
    QFETCH(QString, text);
    QTEST(IsValidTime(text), "valid");
    QTEST(IsValidTime(text, EndOfDay::Allowed), "validAsStop");
    QTEST(SplitTime(text).has_value(), "valid");
}

void TestTimeField::TakenApartAndBuiltBack() {
    // Every minute of the day survives the round trip.
    for (int hour = 0; hour < 24; ++hour) {
        for (int minute = 0; minute < 60; ++minute) {
            const QString text = JoinTime(hour, minute);
            QCOMPARE(text.size(), 5);
            QCOMPARE(SplitTime(text), (TimeOfDay{hour, minute}));
        }
    }
    QCOMPARE(JoinTime(24, 0), QString());
    QCOMPARE(JoinTime(23, 60), QString());
    QCOMPARE(JoinTime(-1, 0), QString());
    // A stored stop hour of 24 is the end of the day, minute or not.
    QCOMPARE(JoinTime(24, 0, EndOfDay::Allowed), QStringLiteral("24:00"));
    QCOMPARE(JoinTime(24, 30, EndOfDay::Allowed), QStringLiteral("24:00"));
    QCOMPARE(JoinTime(25, 0, EndOfDay::Allowed), QString());
    QCOMPARE(SplitTime(QStringLiteral("24:00"), EndOfDay::Allowed), (TimeOfDay{24, 0}));
    QCOMPARE(SplitTime(QStringLiteral("24:00")), std::nullopt);
}

void TestTimeField::KeyRules_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("cursor");
    QTest::addColumn<int>("selected");
    // Characters to type, one of "Delete", "Backspace", "Cut", "Ctrl+Delete",
    // or "Paste " and the text pasted.
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("kept");
    QTest::newRow("a time typed") << "" << 0 << 0 << "08:30"
                                  << "08:30";
    QTest::newRow("digits and the colon only") << "" << 0 << 0 << "1a2-.3 "
                                               << "123";
    QTest::newRow("full field") << "08:30" << 5 << 0 << "1"
                                << "08:30";
    QTest::newRow("full field, digits selected") << "08:30" << 3 << 2 << "4"
                                                 << "08:4";
    QTest::newRow("second colon") << "08:" << 3 << 0 << ":"
                                  << "08:";
    QTest::newRow("colon after it was taken out") << "0830" << 2 << 0 << ":"
                                                  << "08:30";
    QTest::newRow("typing over the colon") << "08:30" << 1 << 2 << "5"
                                           << "08:30";
    QTest::newRow("Backspace takes the colon") << "08:30" << 3 << 0 << "Backspace"
                                               << "0830";
    QTest::newRow("Delete before the colon") << "08:30" << 2 << 0 << "Delete"
                                             << "08:30";
    QTest::newRow("Delete of a selected colon") << "08:30" << 0 << 3 << "Delete"
                                                << "08:30";
    QTest::newRow("Delete of a digit in a full field") << "08:30" << 0 << 0 << "Delete"
                                                       << "8:30";
    QTest::newRow("Cut of the colon") << "08:30" << 1 << 2 << "Cut"
                                      << "08:30";
    QTest::newRow("Cut of the minutes") << "08:30" << 3 << 2 << "Cut"
                                        << "08:";
    QTest::newRow("Ctrl+Delete towards the colon") << "08:30" << 0 << 0 << "Ctrl+Delete"
                                                   << "08:30";
    QTest::newRow("Paste cut at five") << "" << 0 << 0 << "Paste 08:30:00"
                                       << "08:30";
    QTest::newRow("Paste of two colons over all") << "08:30" << 0 << 5 << "Paste 1:2:"
                                                  << "08:30";
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
    QTest::newRow("hour down keeps the leading zero") << "10:15" << 1 << -1 << "09:15" << 0 << 0;
    QTest::newRow("hour up to the end of day") << "23:00" << 0 << 1 << "24:00" << 0 << 0;
    QTest::newRow("hour up from 24") << "24:00" << 1 << 1 << "00:00" << 0 << 0;
    QTest::newRow("hour down from 0") << "00:30" << 0 << -1 << "24:30" << 0 << 0;
    QTest::newRow("hour down from 24:30") << "24:30" << 0 << -1 << "23:30" << 0 << 0;
    QTest::newRow("minute at the end") << "12:08" << 5 << -1 << "12:07" << 3 << 0;
    QTest::newRow("minute up from 59 does not carry") << "12:59" << 4 << 1 << "12:00" << 3 << 0;
    QTest::newRow("minute down from 00") << "12:00" << 3 << -1 << "12:59" << 3 << 0;
    QTest::newRow("minute of 24:30") << "24:30" << 4 << 1 << "24:31" << 3 << 0;
    QTest::newRow("on the colon") << "12:34" << 2 << 1 << "12:34" << 2 << 0;
    QTest::newRow("no time") << "ab" << 1 << 1 << "00:00" << 5 << 1;
    QTest::newRow("after the end of day") << "25:00" << 0 << -1 << "00:00" << 5 << 1;
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
    times.Put(times.stop, QStringLiteral("23:45"), 0);
    ClickSpinArrow(times.stopSpin, QStyle::SC_SpinBoxUp);
    QCOMPARE(times.stop->text(), QStringLiteral("24:45"));
    times.stop->setCursorPosition(4);
    ClickSpinArrow(times.stopSpin, QStyle::SC_SpinBoxDown);
    QCOMPARE(times.stop->text(), QStringLiteral("24:44"));
    // The other field's arrows leave this one alone.
    times.Put(times.start, QStringLiteral("06:00"), 0);
    ClickSpinArrow(times.startSpin, QStyle::SC_SpinBoxDown);
    QCOMPARE(times.start->text(), QStringLiteral("05:00"));
    QCOMPARE(times.stop->text(), QStringLiteral("24:44"));
    // A page key steps once too.
    QTest::keyClick(FocusTarget(), Qt::Key_PageUp);
    QCOMPARE(times.start->text(), QStringLiteral("06:00"));
    // A disabled field does not spin.
    times.stop->setEnabled(false);
    ClickSpinArrow(times.stopSpin, QStyle::SC_SpinBoxUp);
    QCOMPARE(times.stop->text(), QStringLiteral("24:44"));
    QCOMPARE(fx_->prompter.BeepCount(), 0);
}

void TestTimeField::EndOfDayOnlyWhereAllowed() {
    RateTimes times;
    // Loading: a stored stop hour of 24 shows the end of the day; a start
    // hour of 24 is not put into its field.
    QVERIFY(times.stop->SetTime(24, 0));
    QCOMPARE(times.stop->text(), QStringLiteral("24:00"));
    times.start->setText(QStringLiteral("07:00"));
    QVERIFY(!times.start->SetTime(24, 0));
    QCOMPARE(times.start->text(), QStringLiteral("07:00"));
    QVERIFY(times.start->SetTime(8, 5));
    QCOMPARE(times.start->text(), QStringLiteral("08:05"));
    // Saving: "24:00" only where allowed.
    QCOMPARE(times.stop->Time(), (TimeOfDay{24, 0}));
    times.start->setText(QStringLiteral("24:00"));
    QVERIFY(!times.start->IsValid());
}

QTEST_MAIN(TestTimeField)
#include "tst_timefield.moc"
