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

// Stands in for the user selection dialog: a modal dialog that notes the
// request ("name=value" pairs), then answers as the real one must for a
// confirmed choice, or with ("Refresh", "0") when no choice is set.
struct ProbeUserSelection {
    static void Open(QWidget* parent) {
        received.clear();
        for (const FormParameter& pair : FormParameters())
            received << pair.name + u'=' + pair.value;
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

    static inline QStringList received;
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
    void ChoosingAsksFromTheCurrentChoice();
    void KeyboardAndNames();

private:
    void SetUp() override {
        SetUserSelectionOpener(&ProbeUserSelection::Open);
        ProbeUserSelection::received.clear();
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
    // Emptied as any text field is, it holds no reference either.
    field->clear();
    QVERIFY(field->Value().IsNone());
}

void TestUserReferenceField::ChoosingAsksFromTheCurrentChoice() {
    ReferenceForm& form = *form_;
    QSignalSpy changed(form.field, &UserReferenceField::ValueChanged);
    // From "(None)" the dialog gets an empty choice; a cancel changes nothing.
    QVERIFY(!form.field->Choose());
    QCOMPARE(ProbeUserSelection::received, QStringList({"HostName=", "UserName="}));
    QCOMPARE(form.field->text(), QStringLiteral("(Keine)"));
    QCOMPARE(changed.count(), 0);
    form.field->SetValue(QStringLiteral("ann"), QStringLiteral("fxmaster"));
    ProbeUserSelection::choice = UserReference{"ann", "fxmaster"};
    QTest::mouseClick(form.field->Chooser(), Qt::LeftButton);
    QCOMPARE(ProbeUserSelection::received, QStringList({"HostName=fxmaster", "UserName=ann"}));
    // A confirmed choice counts as a change, even of the same user.
    QCOMPARE(changed.count(), 1);
}

void TestUserReferenceField::KeyboardAndNames() {
    ReferenceForm& form = *form_;
    // As an editor does it: labels applied after the form shows.
    ApplyFormLabels(&form.dialog);
    QToolButton* chooser = form.field->Chooser();
    // Tab: the field, then its chooser; Space chooses.
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

QTEST_MAIN(TestUserReferenceField)
#include "tst_userreferencefield.moc"
