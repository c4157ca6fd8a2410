// The spin box of a numeric field on real forms: how it steps by keys and
// arrows, and that the field keeps what the editors rely on (its name, its
// key filter, focus, enabling). That a typed number outside the range waits
// for the range check is the editors' (tst_admineditor).

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
    // Binds the field and shows the form active.
    bool Show(int minimum = 0, int maximum = 10, int step = 1) {
        spin->Bind(field, minimum, maximum, step);
        return ShowActive(dialog);
    }
    UpDown* spin = new UpDown;
};

}  // namespace

class TestUpDown : public ConsoleSuite {
    Q_OBJECT

public:
    TestUpDown() : ConsoleSuite(Server::None) {}

private slots:
    void StepsWithinBoundsByKeysAndArrows();
    void KeyFilterThroughTheSpinBox_data();
    void KeyFilterThroughTheSpinBox();
    void TabOrderAndNames();
    void EnablingFollowsTheField();
};

void TestUpDown::StepsWithinBoundsByKeysAndArrows() {
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
    form.field->clear();
    QTest::keyClick(FocusTarget(), Qt::Key_Up);
    QCOMPARE(form.field->text(), QStringLiteral("0"));
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

void TestUpDown::KeyFilterThroughTheSpinBox_data() {
    QTest::addColumn<bool>("filterFirst");
    QTest::newRow("filter put on before binding") << true;
    QTest::newRow("filter put on after binding") << false;
}

void TestUpDown::KeyFilterThroughTheSpinBox() {
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

void TestUpDown::TabOrderAndNames() {
    SpinForm form;
    ApplyFormLabels(&form.dialog);
    QVERIFY(form.Show());
    // The label's name, given before binding as the monitors do, goes with
    // the field (the editors label after binding: tst_accessibility).
    QCOMPARE(form.spin->accessibleName(), QStringLiteral("Count"));
    QCOMPARE(form.label->buddy(), form.spin);
    // Tab reaches the spin box where the field was.
    form.before->setFocus();
    QTest::keyClick(FocusTarget(), Qt::Key_Tab);
    QVERIFY(form.field->hasFocus());
    QCOMPARE(form.field->selectedText(), form.field->text());
    QTest::keyClick(FocusTarget(), Qt::Key_Tab);
    QVERIFY(form.after->hasFocus());
}

void TestUpDown::EnablingFollowsTheField() {
    SpinForm form;
    QVERIFY(form.Show(0, 10));
    form.field->setText(QStringLiteral("5"));
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
}

QTEST_MAIN(TestUpDown)
#include "tst_updown.moc"
