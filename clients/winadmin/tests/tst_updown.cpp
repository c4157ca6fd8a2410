// The spin box of a numeric field on real forms: where it goes, how it steps
// by keys and arrows, and that the field keeps everything the editors rely on
// (its name, its key filter, focus, the range check, enabling).

#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

#include "common/FieldHelpers.h"
#include "common/Labels.h"
#include "common/UpDown.h"
#include "support/ConsoleFixture.h"
#include "support/PlatformKeys.h"
#include "support/SmallForms.h"

using namespace winadmin;

namespace {

// The editors' row of a numeric field: its spin box in the third column,
// bound once the form is laid out.
struct SpinForm : LabelledField<QLineEdit> {
    SpinForm() : LabelledField(QStringLiteral("&Count:"), "edtCount") {
        grid->addWidget(spin, 1, 2);
        field->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        spin->setObjectName(QStringLiteral("updCount"));
    }
    void Bind(int minimum = 0, int maximum = 10, int step = 1) {
        spin->Bind(field, minimum, maximum, step);
    }
    UpDown* spin = new UpDown;
};

}  // namespace

class TestUpDown : public ConsoleSuite {
    Q_OBJECT

public:
    TestUpDown() : ConsoleSuite(Server::None) {}

private slots:
    void TakesTheFieldsPlace();
    void NarrowFieldInARow();
    void StepsWithinBoundsByKeysAndArrows();
    void TypedOutOfRangeIsLeftForTheRangeCheck();
    void KeyFilterThroughTheSpinBox_data();
    void KeyFilterThroughTheSpinBox();
    void FocusTabOrderAndNames();
    void EnablingFollowsTheField();
};

void TestUpDown::TakesTheFieldsPlace() {
    SpinForm form;
    form.Bind();
    QVERIFY(ShowActive(form.dialog));
    // The spin box sits in the field's cell and leaves its own empty.
    QCOMPARE(form.grid->itemAtPosition(1, 1)->widget(), form.spin);
    QCOMPARE(form.grid->itemAtPosition(1, 2), nullptr);
    QCOMPARE(Child<QLineEdit>(form.dialog, "edtCount"), form.field);
    QCOMPARE(form.field->parentWidget(), form.spin);
    QVERIFY(form.field->isVisible());
    // As wide as the fields above and below, the number typed left of the arrows.
    QCOMPARE(form.spin->geometry().left(), form.before->geometry().left());
    QCOMPARE(form.spin->width(), form.before->width());
    QVERIFY(form.field->geometry().right() < SpinArrowRect(form.spin, QStyle::SC_SpinBoxUp).left());
    QVERIFY(form.spin->rect().contains(form.field->geometry()));
    QCOMPARE(form.field->alignment() & Qt::AlignRight, Qt::AlignRight);
}

void TestUpDown::NarrowFieldInARow() {
    // The monitors' row: a narrow field and its spin box side by side,
    // bound after the window is up.
    QDialog dialog;
    auto* row = new QHBoxLayout(&dialog);
    auto* field = new QLineEdit;
    field->setMaximumWidth(48);
    auto* spin = new UpDown;
    auto* button = new QLineEdit;
    row->addWidget(field);
    row->addWidget(spin);
    row->addWidget(button, 1);
    QVERIFY(ShowActive(dialog));
    spin->Bind(field, 0, 999);
    QTRY_VERIFY(field->isVisible());
    QCOMPARE(row->count(), 2);
    QCOMPARE(row->itemAt(0)->widget(), spin);
    // No wider than the field was and the arrows with their frame.
    QTRY_VERIFY(spin->width() > 48);
    QVERIFY(spin->width() <= 48 + SpinArrowRect(spin, QStyle::SC_SpinBoxDown).width() + 8);
    QVERIFY(field->width() >= QFontMetrics(field->font()).horizontalAdvance(QStringLiteral("999")));
    QVERIFY(field->geometry().right() < SpinArrowRect(spin, QStyle::SC_SpinBoxDown).left());
}

void TestUpDown::StepsWithinBoundsByKeysAndArrows() {
    SpinForm form;
    form.Bind(0, 10);
    QVERIFY(ShowActive(form.dialog));
    form.field->setText(QStringLiteral("9"));
    CTRLSetFocus(form.field);
    // Keys go to the focus, which is the spin box.
    QCOMPARE(FocusTarget(), form.spin);
    QTest::keyClick(FocusTarget(), Qt::Key_Up);
    QTest::keyClick(FocusTarget(), Qt::Key_Up);
    QCOMPARE(form.field->text(), QStringLiteral("10"));
    ClickSpinArrow(form.spin, QStyle::SC_SpinBoxUp);
    QCOMPARE(form.field->text(), QStringLiteral("10"));
    ClickSpinArrow(form.spin, QStyle::SC_SpinBoxDown);
    ClickSpinArrow(form.spin, QStyle::SC_SpinBoxDown);
    QCOMPARE(form.field->text(), QStringLiteral("8"));
    // A field without a number starts from the bound in the step's direction.
    form.field->clear();
    QTest::keyClick(FocusTarget(), Qt::Key_Up);
    QCOMPARE(form.field->text(), QStringLiteral("0"));
    QTest::keyClick(FocusTarget(), Qt::Key_Down);
    QCOMPARE(form.field->text(), QStringLiteral("0"));
    form.field->setText(QStringLiteral("abc"));
    ClickSpinArrow(form.spin, QStyle::SC_SpinBoxDown);
    QCOMPARE(form.field->text(), QStringLiteral("10"));
    // A read-only field is not stepped.
    form.field->setReadOnly(true);
    ClickSpinArrow(form.spin, QStyle::SC_SpinBoxDown);
    QTest::keyClick(FocusTarget(), Qt::Key_Down);
    QCOMPARE(form.field->text(), QStringLiteral("10"));
    QCOMPARE(fx_->prompter.BeepCount(), 0);

    // Steps of their own size, bounded all the same; numbers beyond an int
    // come back to the bound too.
    SpinForm wide;
    wide.Bind(0, 2147483647, 1000);
    QVERIFY(ShowActive(wide.dialog));
    wide.field->setText(QStringLiteral("2147483000"));
    CTRLSetFocus(wide.field);
    QTest::keyClick(FocusTarget(), Qt::Key_Up);
    QCOMPARE(wide.field->text(), QStringLiteral("2147483647"));
    wide.field->setText(QStringLiteral("99999999999"));
    QTest::keyClick(FocusTarget(), Qt::Key_Down);
    QCOMPARE(wide.field->text(), QStringLiteral("2147483647"));
    QTest::keyClick(FocusTarget(), Qt::Key_Down);
    QCOMPARE(wide.field->text(), QStringLiteral("2147482647"));
}

void TestUpDown::TypedOutOfRangeIsLeftForTheRangeCheck() {
    fx_->LogIn();
    SpinForm form;
    InstallKeyFilter(form.field, kKeyDigits, 5);
    form.Bind(1, 10);
    QVERIFY(ShowActive(form.dialog));
    CTRLSetFocus(form.field);
    QTest::keyClicks(FocusTarget(), QStringLiteral("50"));
    // Leaving the field keeps what was typed, Enter too.
    QTest::keyClick(FocusTarget(), Qt::Key_Return);
    QTest::keyClick(FocusTarget(), Qt::Key_Tab);
    QVERIFY(form.after->hasFocus());
    QCOMPARE(form.field->text(), QStringLiteral("50"));
    fx_->prompter.Answer(Answer::OK);
    QVERIFY(!CheckFieldRange(form.field, QStringLiteral("Count:"), 1, 10));
    QCOMPARE(fx_->prompter.LastPrompt().text,
             QStringLiteral("The valid range for 'Count' is from 1 to 10."));
    QVERIFY(form.field->hasFocus());
    QCOMPARE(form.field->selectedText(), QStringLiteral("50"));
    // A step brings it back within bounds.
    QTest::keyClick(FocusTarget(), Qt::Key_Down);
    QCOMPARE(form.field->text(), QStringLiteral("10"));
}

void TestUpDown::KeyFilterThroughTheSpinBox_data() {
    QTest::addColumn<bool>("filterFirst");
    QTest::newRow("filter put on before binding") << true;
    QTest::newRow("filter put on after binding") << false;
}

void TestUpDown::KeyFilterThroughTheSpinBox() {
    QFETCH(bool, filterFirst);
    SpinForm form;
    if (filterFirst) InstallKeyFilter(form.field, kKeyDigits, 3);
    form.Bind(0, 999);
    if (!filterFirst) InstallKeyFilter(form.field, kKeyDigits, 3);
    QVERIFY(ShowActive(form.dialog));
    CTRLSetFocus(form.field);
    QCOMPARE(FocusTarget(), form.spin);
    QTest::keyClicks(FocusTarget(), QStringLiteral("1a2"));
    QCOMPARE(form.field->text(), QStringLiteral("12"));
    QCOMPARE(fx_->prompter.BeepCount(), 1);
    QTest::keyClicks(FocusTarget(), QStringLiteral("34"));
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
    QTest::keyClick(FocusTarget(), Qt::Key_Up);
    QCOMPARE(form.field->text(), QStringLiteral("3"));
}

void TestUpDown::FocusTabOrderAndNames() {
    SpinForm form;
    ApplyFormLabels(&form.dialog);
    form.Bind();
    QVERIFY(ShowActive(form.dialog));
    // The label's name, given before binding, goes with the field.
    QCOMPARE(form.spin->accessibleName(), QStringLiteral("Count"));
    QCOMPARE(form.label->buddy(), form.spin);
    // And a form labelled after binding names the spin box.
    SpinForm later;
    later.Bind();
    ApplyFormLabels(&later.dialog);
    QCOMPARE(later.spin->accessibleName(), QStringLiteral("Count"));

    // Tab reaches the spin box where the field was.
    form.before->setFocus();
    QTest::keyClick(FocusTarget(), Qt::Key_Tab);
    QVERIFY(form.field->hasFocus());
    QCOMPARE(form.field->selectedText(), form.field->text());
    QTest::keyClick(FocusTarget(), Qt::Key_Tab);
    QVERIFY(form.after->hasFocus());
    QTest::keyClick(FocusTarget(), Qt::Key_Backtab);
    QVERIFY(form.field->hasFocus());
    // The label's mnemonic.
    form.before->setFocus();
    QTest::keyClick(&form.dialog, Qt::Key_C, Qt::AltModifier);
    QVERIFY(form.field->hasFocus());
    // The focus routine also selects the text.
    form.field->setText(QStringLiteral("7"));
    form.before->setFocus();
    CTRLSetFocus(form.field);
    QVERIFY(form.field->hasFocus());
    QCOMPARE(form.field->selectedText(), QStringLiteral("7"));
}

void TestUpDown::EnablingFollowsTheField() {
    SpinForm form;
    form.Bind(0, 10);
    QVERIFY(ShowActive(form.dialog));
    form.field->setText(QStringLiteral("5"));
    // A disabled page disables the field (which then passes its checks,
    // tst_fieldhelpers).
    DisableContainer(&form.dialog);
    QVERIFY(!form.field->isEnabled());
    EnableContainer(&form.dialog);
    QVERIFY(form.field->isEnabled());

    // The field disabled on its own: no steps, and Tab passes it by.
    form.field->setEnabled(false);
    ClickSpinArrow(form.spin, QStyle::SC_SpinBoxUp);
    QCOMPARE(form.field->text(), QStringLiteral("5"));
    form.before->setFocus();
    QTest::keyClick(FocusTarget(), Qt::Key_Tab);
    QVERIFY(form.after->hasFocus());
    // Enabled again on its own, it steps and takes the focus again.
    form.field->setEnabled(true);
    ClickSpinArrow(form.spin, QStyle::SC_SpinBoxUp);
    QCOMPARE(form.field->text(), QStringLiteral("6"));
    form.before->setFocus();
    QTest::keyClick(FocusTarget(), Qt::Key_Tab);
    QVERIFY(form.field->hasFocus());
    // The spin box disabled takes its field with it.
    form.spin->setEnabled(false);
    QVERIFY(!form.field->isEnabled());
    QTest::keyClick(form.field, Qt::Key_Up);
    QCOMPARE(form.field->text(), QStringLiteral("6"));
}

QTEST_MAIN(TestUpDown)
#include "tst_updown.moc"
