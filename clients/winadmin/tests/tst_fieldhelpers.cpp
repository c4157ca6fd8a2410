// The field helpers on real widgets: what gets into a field by typing,
// pasting and dropping, editing keys as the platform sends them, the empty
// and range checks with their messages; the numeric and time fields' spin
// boxes on real forms.

#include <QApplication>
#include <QDialog>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QTabWidget>
#include <QTest>
#include <QVBoxLayout>

#include "common/AppContext.h"
#include "common/FieldHelpers.h"
#include "common/TimeField.h"
#include "common/UpDown.h"
#include "support/ConsoleFixture.h"
#include "support/PlatformKeys.h"
#include "support/SmallForms.h"

using namespace winadmin;

namespace {

// A small form: one field under test and a second tab page, not shown.
struct Form {
    Form() {
        dialog.setWindowTitle(QStringLiteral("Test Form"));
        auto* layout = new QVBoxLayout(&dialog);
        layout->addWidget(field);
        layout->addWidget(tabs);
        tabs->addTab(new QWidget, QStringLiteral("one"));
        auto* hiddenPage = new QWidget;
        hidden = new QLineEdit(hiddenPage);
        tabs->addTab(hiddenPage, QStringLiteral("two"));
        ShowActive(dialog);
    }
    void Type(const QString& text) { QTest::keyClicks(field, text); }
    QDialog dialog;
    QLineEdit* field = new QLineEdit;
    QTabWidget* tabs = new QTabWidget;
    QLineEdit* hidden = nullptr;
};

// The editors' row of a numeric field: its spin box in the third column,
// bound once the form is laid out.
struct SpinForm : LabelledField<QLineEdit> {
    SpinForm() : LabelledField(QStringLiteral("&Count:"), "edtCount") {
        grid->addWidget(spin, 1, 2);
        field->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        spin->setObjectName(QStringLiteral("updCount"));
    }
    bool Show(int minimum = 0, int maximum = 10, int step = 1) {
        spin->Bind(field, minimum, maximum, step);
        return ShowActive(dialog);
    }
    UpDown* spin = new UpDown;
};

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

class TestFieldHelpers : public ConsoleSuite {
    Q_OBJECT

public:
    TestFieldHelpers() : ConsoleSuite(Server::None) {}

private slots:
    void KeyFilterKinds_data();
    void KeyFilterKinds();
    void LengthLimitUnlessSelected();
    void EditingKeysPassAsThePlatformSendsThem();
    void PasteAndDropHeldToTheFilter();
    void RangeCheck();
    void DisabledFieldsPassAndHiddenPagesComeForward();
    void StepsWithinBoundsByKeysAndArrows();
    void KeyFilterThroughTheSpinBox_data();
    void KeyFilterThroughTheSpinBox();
    void EnablingFollowsTheField();
    void ValidTimesTakenApartAndBuiltBack();
    void TimeKeyRules_data();
    void TimeKeyRules();
    void TimeSpin_data();
    void TimeSpin();
    void ArrowsOfBothFields();
    void EndOfDayOnlyWhereAllowed();

private:
    // A separator of the user's that differs from the built-in one.
    void SetUp() override { SetDecimalSeparator(QStringLiteral(",")); }
    void TearDown() override { SetDecimalSeparator(QStringLiteral(".")); }
};

void TestFieldHelpers::KeyFilterKinds_data() {
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("kept");
    QTest::addColumn<int>("beeps");
    const auto row = [](const char* name, int kind, const char* typed, const char* kept,
                        int beeps) {
        QTest::newRow(name) << kind << QString(typed) << QString(kept) << beeps;
    };
    row("digits", 1, "1a2.3", "123", 2);
    row("number forms", 3, "1.2/3-4,", "1.2/34", 2);
    row("decimal with the user's separator", 4, "1,5.2", "1,52", 1);
    row("no parentheses", 5, "x(y)z", "xyz", 2);
    row("unknown kind takes anything", 9, "(1)", "(1)", 0);
}

void TestFieldHelpers::KeyFilterKinds() {
    QFETCH(int, kind);
    QFETCH(QString, typed);
    Form form;
    InstallKeyFilter(form.field, kind, 0);
    form.Type(typed);
    QTEST(form.field->text(), "kept");
    QTEST(fx_->prompter.BeepCount(), "beeps");
}

void TestFieldHelpers::LengthLimitUnlessSelected() {
    Form form;
    InstallKeyFilter(form.field, kKeyAnyText, 4);
    form.Type(QStringLiteral("abcde"));
    QCOMPARE(form.field->text(), QStringLiteral("abcd"));
    QCOMPARE(fx_->prompter.BeepCount(), 1);
    // With text selected the key replaces it.
    form.field->setSelection(1, 2);
    form.Type(QStringLiteral("X"));
    QCOMPARE(form.field->text(), QStringLiteral("aXd"));
    QCOMPARE(fx_->prompter.BeepCount(), 1);
}

void TestFieldHelpers::EditingKeysPassAsThePlatformSendsThem() {
    // In a full field: Delete and Backspace carry U+007F and U+0008 on X11;
    // other platforms, and some input methods, send no text with them.
    Form form;
    InstallKeyFilter(form.field, kKeyDigits, 3);
    form.field->setText(QStringLiteral("123"));
    form.field->setCursorPosition(0);
    PlatformDelete(form.field);
    QCOMPARE(form.field->text(), QStringLiteral("23"));
    form.field->setText(QStringLiteral("123"));
    PlatformBackspace(form.field);
    QCOMPARE(form.field->text(), QStringLiteral("12"));
    form.field->setText(QStringLiteral("123"));
    form.field->setCursorPosition(2);
    PlatformKey(form.field, Qt::Key_Delete, QString());
    QCOMPARE(form.field->text(), QStringLiteral("12"));
    QCOMPARE(fx_->prompter.BeepCount(), 0);
    // The filter still holds what is typed.
    form.Type(QStringLiteral("x"));
    QCOMPARE(form.field->text(), QStringLiteral("12"));
    QCOMPARE(fx_->prompter.BeepCount(), 1);
}

void TestFieldHelpers::PasteAndDropHeldToTheFilter() {
    Form form;
    InstallKeyFilter(form.field, kKeyNoParentheses, 10);
    Paste(form.field, QStringLiteral("Name (user@host)"));
    QCOMPARE(form.field->text(), QString());
    Paste(form.field, QStringLiteral("a-much-longer-text"));
    QCOMPARE(form.field->text(), QStringLiteral("a-much-lon"));
    // A drop inserts through the same checks.
    form.field->clear();
    QMimeData data;
    data.setText(QStringLiteral("(x)"));
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(form.field, &drop);
    QCOMPARE(form.field->text(), QString());
}

void TestFieldHelpers::RangeCheck() {
    Form form;
    const auto check = [&form](const char* text) {
        form.field->setText(QLatin1String(text));
        return CheckFieldRange(form.field, QStringLiteral("Dispatch Count:"), 1, 99);
    };
    QVERIFY(check("99"));
    QVERIFY(check("1,5"));
    fx_->prompter.Answer({Answer::OK, Answer::OK});
    QVERIFY(!check("12abc"));
    QVERIFY(!check("100"));
    // The editors' tests compare the whole text; here the field.
    QCOMPARE(fx_->prompter.Prompts().size(), 2);
    QCOMPARE(fx_->prompter.BeepCount(), 2);
    QVERIFY(form.field->hasFocus());
    QCOMPARE(form.field->selectedText(), QStringLiteral("100"));
}

void TestFieldHelpers::DisabledFieldsPassAndHiddenPagesComeForward() {
    Form form;
    form.field->setText(QStringLiteral("x"));
    form.field->setEnabled(false);
    QVERIFY(CheckFieldRange(form.field, QStringLiteral("A:"), 1, 2));
    form.field->clear();
    QVERIFY(!IsFieldEmpty(form.field, QStringLiteral("never shown")));
    // The focus routine leaves a field on a page not shown alone.
    CTRLSetFocus(form.hidden);
    QVERIFY(!form.hidden->hasFocus());
    QCOMPARE(form.tabs->currentIndex(), 0);
    // A failed check brings that page to the front and focuses the field.
    fx_->prompter.Answer(Answer::OK);
    QVERIFY(IsFieldEmpty(form.hidden, FieldEmptyMessage(QStringLiteral("Comment:"))));
    QCOMPARE(form.tabs->currentIndex(), 1);
    QVERIFY(form.hidden->hasFocus());
    // Containers take their fields with them.
    DisableContainer(form.hidden->parentWidget());
    QVERIFY(!form.hidden->isEnabled());
    EnableContainer(form.hidden->parentWidget());
    QVERIFY(form.hidden->isEnabled());
}

void TestFieldHelpers::StepsWithinBoundsByKeysAndArrows() {
    SpinForm form;
    QVERIFY(form.Show(0, 10));
    form.field->setText(QStringLiteral("9"));
    CTRLSetFocus(form.field);
    // Keys go to the focus, which is the spin box.
    QCOMPARE(FocusTarget(), form.spin);
    QTest::keyClick(FocusTarget(), Qt::Key_Up);
    ClickSpinArrow(form.spin, QStyle::SC_SpinBoxUp);
    QCOMPARE(form.field->text(), QStringLiteral("10"));
    // A field without a number starts from the bound in the step's direction.
    form.field->setText(QStringLiteral("abc"));
    ClickSpinArrow(form.spin, QStyle::SC_SpinBoxDown);
    QCOMPARE(form.field->text(), QStringLiteral("10"));
    // A read-only field is not stepped.
    form.field->setReadOnly(true);
    QTest::keyClick(FocusTarget(), Qt::Key_Down);
    QCOMPARE(form.field->text(), QStringLiteral("10"));

    // Steps of their own size, bounded all the same; numbers beyond an int
    // come back to the bound too.
    SpinForm wide;
    QVERIFY(wide.Show(0, 2147483647, 1000));
    wide.field->setText(QStringLiteral("99999999999"));
    CTRLSetFocus(wide.field);
    QTest::keyClick(FocusTarget(), Qt::Key_Down);
    QCOMPARE(wide.field->text(), QStringLiteral("2147483647"));
    QTest::keyClick(FocusTarget(), Qt::Key_Down);
    QCOMPARE(wide.field->text(), QStringLiteral("2147482647"));
}

void TestFieldHelpers::KeyFilterThroughTheSpinBox_data() {
    QTest::addColumn<bool>("filterFirst");
    QTest::newRow("filter put on before binding") << true;
    QTest::newRow("filter put on after binding") << false;
}

void TestFieldHelpers::KeyFilterThroughTheSpinBox() {
    QFETCH(bool, filterFirst);
    SpinForm form;
    if (filterFirst) InstallKeyFilter(form.field, kKeyDigits, 3);
    form.spin->Bind(form.field, 0, 999);
    if (!filterFirst) InstallKeyFilter(form.field, kKeyDigits, 3);
    QVERIFY(ShowActive(form.dialog));
    CTRLSetFocus(form.field);
    QTest::keyClicks(FocusTarget(), QStringLiteral("1a234"));
    QCOMPARE(form.field->text(), QStringLiteral("123"));
    QCOMPARE(fx_->prompter.BeepCount(), 2);
    // Delete and Backspace as X11 sends them, in the full field.
    form.field->setCursorPosition(0);
    PlatformDelete(FocusTarget());
    QCOMPARE(form.field->text(), QStringLiteral("23"));
    form.field->setCursorPosition(2);
    PlatformBackspace(FocusTarget());
    QCOMPARE(form.field->text(), QStringLiteral("2"));
    QCOMPARE(fx_->prompter.BeepCount(), 2);
}

void TestFieldHelpers::EnablingFollowsTheField() {
    SpinForm form;
    QVERIFY(form.Show(0, 10));
    form.field->setText(QStringLiteral("5"));
    // A disabled field: no steps, and Tab passes its spin box by.
    form.field->setEnabled(false);
    ClickSpinArrow(form.spin, QStyle::SC_SpinBoxUp);
    QCOMPARE(form.field->text(), QStringLiteral("5"));
    form.before->setFocus();
    QTest::keyClick(FocusTarget(), Qt::Key_Tab);
    QVERIFY(form.after->hasFocus());
}

void TestFieldHelpers::ValidTimesTakenApartAndBuiltBack() {
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

void TestFieldHelpers::TimeKeyRules_data() {
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
    row("typing over the colon", "08:30", 1, 2, "5", "08:30");
    row("Backspace takes the colon", "08:30", 3, 0, "Backspace", "0830");
    row("Delete before the colon", "08:30", 2, 0, "Delete", "08:30");
    row("Cut of the colon", "08:30", 1, 2, "Cut", "08:30");
    row("Ctrl+Delete towards the colon", "08:30", 0, 0, "Ctrl+Delete", "08:30");
    row("Paste of two colons over all", "08:30", 0, 5, "Paste 1:2:", "08:30");
}

void TestFieldHelpers::TimeKeyRules() {
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

void TestFieldHelpers::TimeSpin_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("cursor");
    QTest::addColumn<int>("direction");
    QTest::addColumn<QString>("spun");
    QTest::addColumn<int>("cursorAfter");
    QTest::addColumn<int>("beeps");
    QTest::newRow("hour up to the end of day") << "23:00" << 0 << 1 << "24:00" << 0 << 0;
    QTest::newRow("hour down from 0") << "00:30" << 0 << -1 << "24:30" << 0 << 0;
    QTest::newRow("minute up from 59 does not carry") << "12:59" << 4 << 1 << "12:00" << 3 << 0;
    QTest::newRow("on the colon") << "12:34" << 2 << 1 << "12:34" << 2 << 0;
    QTest::newRow("no time") << "ab" << 1 << 1 << "00:00" << 5 << 1;
}

void TestFieldHelpers::TimeSpin() {
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

void TestFieldHelpers::ArrowsOfBothFields() {
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

void TestFieldHelpers::EndOfDayOnlyWhereAllowed() {
    RateTimes times;
    // Loading: a stored stop hour of 24 shows the end of the day; a start
    // hour of 24 is not put into its field.
    QVERIFY(times.stop->SetTime(24, 0));
    QCOMPARE(times.stop->Time(), (TimeOfDay{24, 0}));
    times.start->setText(QStringLiteral("07:00"));
    QVERIFY(!times.start->SetTime(24, 0));
    QCOMPARE(times.start->text(), QStringLiteral("07:00"));
}

QTEST_MAIN(TestFieldHelpers)
#include "tst_fieldhelpers.moc"
