// The user-reference field on a real form with a German label table: what
// it shows, how its chooser asks a selection dialog through the
// form-parameter list (a probe dialog registered here answers as the real
// one must), and that it can be used by keyboard and screen reader.

#include <QDialog>
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

QStringList Pairs(const FormParameterList& list) {
    QStringList pairs;
    for (const FormParameter& pair : list) pairs << pair.name + u'=' + pair.value;
    return pairs;
}

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
        QVERIFY(ShowActive(form_.emplace().dialog));
    }
    void TearDown() override {
        SetUserSelectionOpener(nullptr);
        form_.reset();
    }
    std::optional<ReferenceForm> form_;
};

void TestUserReferenceField::ShowsTheReferenceOrNone() {
    UserReferenceField* field = form_->field;
    QVERIFY(field->isReadOnly());
    QCOMPARE(field->text(), QStringLiteral("(Keine)"));
    field->SetValue(QStringLiteral("ann"), QStringLiteral("fxmaster"));
    QCOMPARE(field->text(), QStringLiteral("ann@fxmaster"));
    field->Clear();
    QCOMPARE(field->text(), QStringLiteral("(Keine)"));
    QVERIFY(field->Value().IsNone());
    // Emptied as any text field is, it holds no reference either.
    field->SetValue(QStringLiteral("ann"), QStringLiteral("fxmaster"));
    field->clear();
    QVERIFY(field->Value().IsNone());
}

void TestUserReferenceField::ConfirmedChoiceIsShownAndSignalled() {
    ReferenceForm& form = *form_;
    form.field->SetValue(QStringLiteral("ann"), QStringLiteral("fxmaster"));
    QSignalSpy changed(form.field, &UserReferenceField::ValueChanged);
    ProbeUserSelection::choice = UserReference{"ann", "fxmaster"};
    QTest::mouseClick(form.field->Chooser(), Qt::LeftButton);
    // The dialog was asked from the current choice, over the form.
    QCOMPARE(Pairs(ProbeUserSelection::received),
             QStringList({"HostName=fxmaster", "UserName=ann"}));
    QCOMPARE(ProbeUserSelection::openedOver, &form.dialog);
    QCOMPARE(form.field->text(), QStringLiteral("ann@fxmaster"));
    // A confirmed choice counts as a change, even of the same user.
    QCOMPARE(changed.count(), 1);
}

void TestUserReferenceField::CancelledChoiceChangesNothing() {
    UserReferenceField* field = form_->field;
    QSignalSpy changed(field, &UserReferenceField::ValueChanged);
    // From "(None)" the dialog gets an empty choice.
    QVERIFY(!field->Choose());
    QCOMPARE(Pairs(ProbeUserSelection::received), QStringList({"HostName=", "UserName="}));
    QCOMPARE(field->text(), QStringLiteral("(Keine)"));
    QCOMPARE(changed.count(), 0);
}

void TestUserReferenceField::KeyboardAndNames() {
    ReferenceForm& form = *form_;
    // As an editor does it: labels applied after the form shows.
    ApplyFormLabels(&form.dialog);
    QToolButton* chooser = form.field->Chooser();
    // Tab: the field, its chooser, then the field after; Space chooses.
    form.before->setFocus();
    QTest::keyClick(FocusTarget(), Qt::Key_Tab);
    QVERIFY(form.field->hasFocus());
    QTest::keyClick(FocusTarget(), Qt::Key_Tab);
    QVERIFY(chooser->hasFocus());
    // Reached before any value was loaded, it is named all the same.
    QCOMPARE(chooser->accessibleName(), QStringLiteral("Vertreter ..."));
    ProbeUserSelection::choice = UserReference{"carl", "fxline01"};
    QTest::keyClick(FocusTarget(), Qt::Key_Space);
    QTRY_COMPARE(form.field->text(), QStringLiteral("carl@fxline01"));
}

void TestUserReferenceField::TypedReference() {
    // Where an editor lets the reference be typed as user@host (stored as
    // user and host: tst_lcreditors).
    UserReferenceField* field = form_->field;
    field->setReadOnly(false);
    Retype(field, QStringLiteral("dora"));
    QCOMPARE(field->Value(), (UserReference{"dora", ""}));
    Retype(field, QStringLiteral("(Keine)"));
    QVERIFY(field->Value().IsNone());
}

QTEST_MAIN(TestUserReferenceField)
#include "tst_userreferencefield.moc"
