// The field helpers on real widgets: what gets into a field by typing,
// pasting and dropping, editing keys as the platform sends them, the empty
// and range checks with their messages; the numeric and time fields' spin
// boxes on real forms.

#include <QApplication>
#include <QDialog>
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
        auto* layout = new QVBoxLayout(&dialog);
        layout->addWidget(start);
        layout->addWidget(stop);
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
        field->setCursorPosition(cursor);
        if (selected) field->setSelection(cursor, selected);
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
    void LengthLimitAndEditingKeysAsThePlatformSendsThem();
    void PasteAndDropHeldToTheFilter();
    void RangeCheckAndHiddenPagesComeForward();
    void StepsWithinBoundsWhileEnabled();
    void KeyFilterThroughTheSpinBox();
    void ValidTimesTakenApartAndBuiltBack();
    void TimeKeyRules_data();
    void TimeKeyRules();
    void TimeSpin_data();
    void TimeSpin();
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

void TestFieldHelpers::LengthLimitAndEditingKeysAsThePlatformSendsThem() {
    Form form;
    InstallKeyFilter(form.field, kKeyDigits, 3);
    form.Type(QStringLiteral("1234"));
    QCOMPARE(form.field->text(), QStringLiteral("123"));
    // With text selected the key replaces it, full field or not.
    form.field->setSelection(1, 1);
    form.Type(QStringLiteral("9"));
    QCOMPARE(form.field->text(), QStringLiteral("193"));
    // In a full field: Delete and Backspace carry U+007F and U+0008 on X11;
    // other platforms, and some input methods, send no text with them.
    form.field->setCursorPosition(0);
    PlatformDelete(form.field);
    QCOMPARE(form.field->text(), QStringLiteral("93"));
    form.field->setText(QStringLiteral("123"));
    PlatformBackspace(form.field);
    QCOMPARE(form.field->text(), QStringLiteral("12"));
    form.field->setText(QStringLiteral("123"));
    form.field->setCursorPosition(2);
    PlatformKey(form.field, Qt::Key_Delete, QString());
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

void TestFieldHelpers::RangeCheckAndHiddenPagesComeForward() {
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
    // The focus routine leaves a field on a page not shown alone.
    CTRLSetFocus(form.hidden);
    QVERIFY(!form.hidden->hasFocus());
    QCOMPARE(form.tabs->currentIndex(), 0);
    // A failed check brings that page to the front and focuses the field.
    fx_->prompter.Answer(Answer::OK);
    QVERIFY(IsFieldEmpty(form.hidden, FieldEmptyMessage(QStringLiteral("Comment:"))));
    QCOMPARE(form.tabs->currentIndex(), 1);
    QVERIFY(form.hidden->hasFocus());
}

void TestFieldHelpers::StepsWithinBoundsWhileEnabled() {
    SpinForm form;
    QVERIFY(form.Show(0, 10));
    form.field->setText(QStringLiteral("9"));
    CTRLSetFocus(form.field);
    // Keys go to the focus, which is the spin box.
    QCOMPARE(FocusTarget(), form.spin);
    QTest::keyClick(FocusTarget(), Qt::Key_Up);
    ClickSpinArrow(form.spin, QStyle::SC_SpinBoxUp);
    QCOMPARE(form.field->text(), QStringLiteral("10"));
    // A disabled field: no steps, and Tab passes its spin box by.
    form.field->setEnabled(false);
    ClickSpinArrow(form.spin, QStyle::SC_SpinBoxDown);
    QCOMPARE(form.field->text(), QStringLiteral("10"));
    form.before->setFocus();
    QTest::keyClick(FocusTarget(), Qt::Key_Tab);
    QVERIFY(form.after->hasFocus());

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

void TestFieldHelpers::KeyFilterThroughTheSpinBox() {
    // Whether the filter was put on before the binding or after.
    for (bool filterFirst : {true, false}) {
        SpinForm form;
        if (filterFirst) InstallKeyFilter(form.field, kKeyDigits, 3);
        form.spin->Bind(form.field, 0, 999);
        if (!filterFirst) InstallKeyFilter(form.field, kKeyDigits, 3);
        QVERIFY(ShowActive(form.dialog));
        CTRLSetFocus(form.field);
        QTest::keyClicks(FocusTarget(), QStringLiteral("1a234"));
        QCOMPARE(form.field->text(), QStringLiteral("123"));
        QCOMPARE(fx_->prompter.BeepCount(), filterFirst ? 2 : 4);
    }
}

void TestFieldHelpers::ValidTimesTakenApartAndBuiltBack() {
    // The platform's "hh:mm" wants both digits.
    QVERIFY(!IsValidTime(QStringLiteral("7:05"), EndOfDay::Allowed));
    QCOMPARE(SplitTime(QStringLiteral("24:00")), std::nullopt);
    // A stored stop hour of 24 is the end of the day, minute or not; it is
    // the rate editor's only.
    QCOMPARE(JoinTime(24, 30, EndOfDay::Allowed), QStringLiteral("24:00"));
    QCOMPARE(JoinTime(24, 0), QString());
}

void TestFieldHelpers::TimeKeyRules_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("cursor");
    QTest::addColumn<int>("selected");
    // Characters to type, "Delete", "Backspace", or "Paste " and the text
    // pasted.
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("kept");
    const auto row = [](const char* name, const char* text, int cursor, int selected,
                        const char* keys, const char* kept) {
        QTest::newRow(name) << QString(text) << cursor << selected << QString(keys)
                            << QString(kept);
    };
    row("digits and the colon only", "", 0, 0, "1a2-.3 ", "123");
    row("typing over the colon", "08:30", 1, 2, "5", "08:30");
    row("Backspace takes the colon", "08:30", 3, 0, "Backspace", "0830");
    row("Delete before the colon", "08:30", 2, 0, "Delete", "08:30");
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
    else if (keys.startsWith(QLatin1String("Paste ")))
        Paste(times.start, keys.mid(6));
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

void TestFieldHelpers::EndOfDayOnlyWhereAllowed() {
    RateTimes times;
    times.start->setText(QStringLiteral("05:00"));
    // Loading: a stored stop hour of 24 shows the end of the day; a start
    // hour of 24 is not put into its field.
    QVERIFY(times.stop->SetTime(24, 0));
    QCOMPARE(times.stop->Time(), (TimeOfDay{24, 0}));
    QVERIFY(!times.start->SetTime(24, 0));
    QCOMPARE(times.start->text(), QStringLiteral("05:00"));
}

QTEST_MAIN(TestFieldHelpers)
#include "tst_fieldhelpers.moc"
