// The user-reference field on a real form with a German label table: what
// it shows, how its chooser asks a selection dialog through the
// form-parameter list (a probe dialog registered here answers as the real
// one must), and that it can be used by keyboard and screen reader.

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <optional>

#include "common/FormParameters.h"
#include "common/Labels.h"
#include "common/UserReferenceField.h"
#include "support/ConsoleFixture.h"
#include "support/PlatformKeys.h"
#include "support/SmallForms.h"

using namespace winadmin;

namespace {

// Stands in for the user selection dialog: a modal dialog over the form
// that notes the request it was opened with, then answers as the real one
// must: ("Refresh", "-1"), ("HostName", ...), ("UserName", ...) for a
// confirmed choice, ("Refresh", "0") when cancelled (no choice set).
struct ProbeUserSelection {
    static void Open(QWidget* parent) {
        received = FormParameters();
        openedOver = parent;
        QDialog dialog(parent);
        QTimer::singleShot(0, &dialog, [&dialog] {
            if (!choice) {
                AnswerRefresh(false);
                return dialog.reject();
            }
            SetFormParameters({{QStringLiteral("Refresh"), QStringLiteral("-1")},
                               {QStringLiteral("HostName"), choice->host},
                               {QStringLiteral("UserName"), choice->user}});
            dialog.accept();
        });
        dialog.exec();
    }

    static inline FormParameterList received;
    static inline QWidget* openedOver = nullptr;
    static inline std::optional<UserReference> choice;
};

// An editor page with the reference on it.
struct ReferenceForm : LabelledField<UserReferenceField> {
    ReferenceForm() : LabelledField(QStringLiteral("Substitute:"), "edtSubstitute") {}
};

}  // namespace

class TestUserReferenceField : public ConsoleSuite {
    Q_OBJECT

public:
    TestUserReferenceField() : ConsoleSuite(Server::LoggedIn, "de") {}

private slots:
    void ShowsTheReferenceOrNone();
    void WithoutOpenerTheChooserIsDisabled();
    void ConfirmedChoiceIsShownAndSignalled_data();
    void ConfirmedChoiceIsShownAndSignalled();
    void CancelledChoiceChangesNothing();
    void KeyboardAndNames();
    void TypedReference();

private:
    void SetUp() override {
        SetUserSelectionOpener(&ProbeUserSelection::Open);
        ProbeUserSelection::received.clear();
        ProbeUserSelection::openedOver = nullptr;
        ProbeUserSelection::choice.reset();
    }
    void TearDown() override { SetUserSelectionOpener(nullptr); }
};

void TestUserReferenceField::ShowsTheReferenceOrNone() {
    ReferenceForm form;
    QVERIFY(ShowActive(form.dialog));
    QVERIFY(form.field->isReadOnly());
    QCOMPARE(form.field->text(), QStringLiteral("(Keine)"));
    QVERIFY(form.field->Value().IsNone());
    form.field->SetValue(QStringLiteral("ann"), QStringLiteral("fxmaster"));
    QCOMPARE(form.field->text(), QStringLiteral("ann@fxmaster"));
    QCOMPARE(form.field->Value(), (UserReference{"ann", "fxmaster"}));
    form.field->Clear();
    QCOMPARE(form.field->text(), QStringLiteral("(Keine)"));
    QVERIFY(form.field->Value().IsNone());
    // Emptied as any text field is, it holds no reference either.
    form.field->SetValue(QStringLiteral("ann"), QStringLiteral("fxmaster"));
    form.field->clear();
    QVERIFY(form.field->Value().IsNone());
    // The button sits inside the field's frame at its end; the text stops
    // short of it.
    QToolButton* chooser = form.field->Chooser();
    QVERIFY(chooser->isVisible());
    QVERIFY(form.field->rect().contains(chooser->geometry()));
    QVERIFY(chooser->geometry().right() > form.field->width() - 6);
    QVERIFY(form.field->textMargins().right() >= chooser->width());
}

void TestUserReferenceField::WithoutOpenerTheChooserIsDisabled() {
    SetUserSelectionOpener(nullptr);
    ReferenceForm form;
    QVERIFY(ShowActive(form.dialog));
    QVERIFY(!form.field->Chooser()->isEnabled());
    QVERIFY(!form.field->Choose());
    // Registered later, the chooser works from the next showing on.
    SetUserSelectionOpener(&ProbeUserSelection::Open);
    form.dialog.hide();
    QVERIFY(ShowActive(form.dialog));
    QVERIFY(form.field->Chooser()->isEnabled());
    // A disabled field takes its chooser with it.
    form.field->setEnabled(false);
    QVERIFY(!form.field->Chooser()->isEnabled());
    QVERIFY(!form.field->Choose());
    QVERIFY(ProbeUserSelection::received.isEmpty());
}

void TestUserReferenceField::ConfirmedChoiceIsShownAndSignalled_data() {
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("shown");
    QTest::newRow("another user") << "bob"
                                  << "fxsales"
                                  << "bob@fxsales";
    QTest::newRow("the same user") << "ann"
                                   << "fxmaster"
                                   << "ann@fxmaster";
    QTest::newRow("no user") << ""
                             << ""
                             << "(Keine)";
}

void TestUserReferenceField::ConfirmedChoiceIsShownAndSignalled() {
    QFETCH(QString, user);
    QFETCH(QString, host);
    ReferenceForm form;
    QVERIFY(ShowActive(form.dialog));
    form.field->SetValue(QStringLiteral("ann"), QStringLiteral("fxmaster"));
    QSignalSpy changed(form.field, &UserReferenceField::ValueChanged);
    ProbeUserSelection::choice = UserReference{user, host};
    QTest::mouseClick(form.field->Chooser(), Qt::LeftButton);
    // The dialog was asked from the current choice, over the form.
    QCOMPARE(ProbeUserSelection::received.size(), 2);
    QCOMPARE(ProbeUserSelection::received[0].name, QStringLiteral("HostName"));
    QCOMPARE(ProbeUserSelection::received[0].value, QStringLiteral("fxmaster"));
    QCOMPARE(ProbeUserSelection::received[1].name, QStringLiteral("UserName"));
    QCOMPARE(ProbeUserSelection::received[1].value, QStringLiteral("ann"));
    QCOMPARE(ProbeUserSelection::openedOver, &form.dialog);
    QTEST(form.field->text(), "shown");
    QCOMPARE(form.field->Value(), (UserReference{user, host}));
    // A confirmed choice counts as a change, even of the same user.
    QCOMPARE(changed.count(), 1);
}

void TestUserReferenceField::CancelledChoiceChangesNothing() {
    ReferenceForm form;
    QVERIFY(ShowActive(form.dialog));
    QSignalSpy changed(form.field, &UserReferenceField::ValueChanged);
    // From "(None)" the dialog gets an empty choice.
    ProbeUserSelection::choice.reset();
    QVERIFY(!form.field->Choose());
    QCOMPARE(ProbeUserSelection::received.size(), 2);
    QCOMPARE(ProbeUserSelection::received[0].value, QString());
    QCOMPARE(ProbeUserSelection::received[1].value, QString());
    QCOMPARE(form.field->text(), QStringLiteral("(Keine)"));
    form.field->SetValue(QStringLiteral("ann"), QStringLiteral("fxmaster"));
    QTest::mouseClick(form.field->Chooser(), Qt::LeftButton);
    QCOMPARE(ProbeUserSelection::received[1].value, QStringLiteral("ann"));
    QCOMPARE(form.field->text(), QStringLiteral("ann@fxmaster"));
    QCOMPARE(changed.count(), 0);
    QVERIFY(form.dialog.isVisible());
}

void TestUserReferenceField::KeyboardAndNames() {
    ReferenceForm form;
    QVERIFY(ShowActive(form.dialog));
    // As an editor does it: labels applied after the form shows, then the
    // record loaded.
    ApplyFormLabels(&form.dialog);
    QCOMPARE(form.field->accessibleName(), QStringLiteral("Vertreter"));
    QToolButton* chooser = form.field->Chooser();
    QCOMPARE(chooser->objectName(), QStringLiteral("cmdSubstitute"));
    QCOMPARE(chooser->toolTip(), QStringLiteral("Benutzer auswählen"));
    form.field->SetValue(QStringLiteral("ann"), QStringLiteral("fxmaster"));
    QCOMPARE(chooser->accessibleName(), QStringLiteral("Vertreter ..."));

    // Tab: the field, its chooser, then the field after; Space chooses.
    form.before->setFocus();
    QTest::keyClick(FocusTarget(), Qt::Key_Tab);
    QVERIFY(form.field->hasFocus());
    QTest::keyClick(FocusTarget(), Qt::Key_Tab);
    QVERIFY(chooser->hasFocus());
    QSignalSpy changed(form.field, &UserReferenceField::ValueChanged);
    ProbeUserSelection::choice = UserReference{"carl", "fxline01"};
    QTest::keyClick(FocusTarget(), Qt::Key_Space);
    QTRY_COMPARE(changed.count(), 1);
    QCOMPARE(form.field->text(), QStringLiteral("carl@fxline01"));
    // Back in the form (the window manager activates it again), the focus
    // is where it was.
    QVERIFY(ShowActive(form.dialog));
    QVERIFY(chooser->hasFocus());
    QTest::keyClick(FocusTarget(), Qt::Key_Tab);
    QVERIFY(form.after->hasFocus());
    QTest::keyClick(FocusTarget(), Qt::Key_Backtab);
    QVERIFY(chooser->hasFocus());
    QTest::keyClick(FocusTarget(), Qt::Key_Backtab);
    QVERIFY(form.field->hasFocus());

    // A chooser reached before any value was loaded is named all the same.
    ReferenceForm fresh;
    QVERIFY(ShowActive(fresh.dialog));
    ApplyFormLabels(&fresh.dialog);
    fresh.field->setFocus();
    QTest::keyClick(FocusTarget(), Qt::Key_Tab);
    QVERIFY(fresh.field->Chooser()->hasFocus());
    QCOMPARE(fresh.field->Chooser()->accessibleName(), QStringLiteral("Vertreter ..."));
}

void TestUserReferenceField::TypedReference() {
    // Where an editor lets the reference be typed as user@host.
    ReferenceForm form;
    form.field->setReadOnly(false);
    QVERIFY(ShowActive(form.dialog));
    Retype(form.field, QStringLiteral("dora@fxsales"));
    QCOMPARE(form.field->Value(), (UserReference{"dora", "fxsales"}));
    Retype(form.field, QStringLiteral("dora"));
    QCOMPARE(form.field->Value(), (UserReference{"dora", ""}));
    Retype(form.field, QStringLiteral("(Keine)"));
    QVERIFY(form.field->Value().IsNone());
}

QTEST_MAIN(TestUserReferenceField)
#include "tst_userreferencefield.moc"
