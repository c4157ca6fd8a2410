// The user-reference field on a real form with a German label table: what
// it shows, how its chooser asks a selection dialog through the
// form-parameter list (a probe dialog registered here answers as the real
// one must), and that it can be used by keyboard and screen reader.

#include <QDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include "common/FormParameters.h"
#include "common/Labels.h"
#include "common/UserReferenceField.h"
#include "support/ConsoleFixture.h"
#include "support/PlatformKeys.h"

using namespace winadmin;

namespace {

// Stands in for the user selection dialog: starts from the choice it is
// given and answers ("Refresh", "-1"), ("HostName", ...), ("UserName", ...)
// on OK, ("Refresh", "0") on Cancel.
class ProbeUserSelection : public QDialog {
    Q_OBJECT

public:
    explicit ProbeUserSelection(QWidget* parent) : QDialog(parent) {
        received = FormParameters();
        openedOver = parent;
        auto* layout = new QGridLayout(this);
        layout->addWidget(user, 0, 0);
        layout->addWidget(host, 0, 1);
        layout->addWidget(ok, 1, 0);
        layout->addWidget(cancel, 1, 1);
        user->setObjectName(QStringLiteral("edtUserName"));
        host->setObjectName(QStringLiteral("edtHostName"));
        ok->setObjectName(QStringLiteral("cmdOK"));
        cancel->setObjectName(QStringLiteral("cmdCancel"));
        ok->setDefault(true);
        user->setText(FormParameterValue(QStringLiteral("UserName")));
        host->setText(FormParameterValue(QStringLiteral("HostName")));
        connect(ok, &QPushButton::clicked, this, &QDialog::accept);
        connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    }

    void done(int result) override {
        if (result == Accepted)
            SetFormParameters({{QStringLiteral("Refresh"), QStringLiteral("-1")},
                               {QStringLiteral("HostName"), host->text()},
                               {QStringLiteral("UserName"), user->text()}});
        else
            AnswerRefresh(false);
        QDialog::done(result);
    }

    static void Open(QWidget* parent) {
        ProbeUserSelection dialog(parent);
        dialog.exec();
    }

    static inline FormParameterList received;
    static inline QWidget* openedOver = nullptr;

private:
    QLineEdit* user = new QLineEdit;
    QLineEdit* host = new QLineEdit;
    QPushButton* ok = new QPushButton(QStringLiteral("OK"));
    QPushButton* cancel = new QPushButton(QStringLiteral("Cancel"));
};

// Picks user@host in the probe once it shows, and confirms with Enter; an
// empty user and host confirm "no user".
void ChooseInProbe(const QString& user, const QString& host) {
    WhenShown<ProbeUserSelection>([user, host](ProbeUserSelection& dialog) {
        Retype(Child<QLineEdit>(dialog, "edtUserName"), user);
        Retype(Child<QLineEdit>(dialog, "edtHostName"), host);
        QTest::keyClick(Child<QLineEdit>(dialog, "edtHostName"), Qt::Key_Return);
    });
}

void CancelProbe(bool byEscape) {
    WhenShown<ProbeUserSelection>([byEscape](ProbeUserSelection& dialog) {
        if (byEscape)
            QTest::keyClick(&dialog, Qt::Key_Escape);
        else
            QTest::mouseClick(Child<QPushButton>(dialog, "cmdCancel"), Qt::LeftButton);
    });
}

// An editor page: a field before, the reference with its label, a field
// after, tab stops set by the form after its controls are made.
struct ReferenceForm {
    ReferenceForm() {
        dialog.setWindowTitle(QStringLiteral("Reference Form"));
        auto* grid = new QGridLayout(&dialog);
        grid->addWidget(before, 0, 1);
        grid->addWidget(label, 1, 0);
        grid->addWidget(field, 1, 1);
        grid->addWidget(after, 2, 1);
        field->setObjectName(QStringLiteral("edtSubstitute"));
        label->setBuddy(field);
        QWidget::setTabOrder(before, field);
        QWidget::setTabOrder(field, after);
    }
    QDialog dialog;
    QLineEdit* before = new QLineEdit;
    QLabel* label = new QLabel(QStringLiteral("Substitute:"));
    UserReferenceField* field = new UserReferenceField;
    QLineEdit* after = new QLineEdit;
};

}  // namespace

class TestUserReferenceField : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void ShowsTheReferenceOrNone();
    void WithoutOpenerTheChooserIsDisabled();
    void ConfirmedChoiceIsShownAndSignalled_data();
    void ConfirmedChoiceIsShownAndSignalled();
    void CancelledChoiceChangesNothing_data();
    void CancelledChoiceChangesNothing();
    void KeyboardAndNames();
    void TypedReference();

private:
    std::unique_ptr<ConsoleFixture> fixture_;
};

void TestUserReferenceField::init() {
    fixture_ = std::make_unique<ConsoleFixture>();
    fixture_->LogIn(ServerOptions("", "de"));
    SetUserSelectionOpener(&ProbeUserSelection::Open);
    ProbeUserSelection::received.clear();
    ProbeUserSelection::openedOver = nullptr;
}

void TestUserReferenceField::cleanup() {
    SetUserSelectionOpener(nullptr);
    QCOMPARE(ConsoleFixture::Close(fixture_), 0);
}

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
    ChooseInProbe(user, host);
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

void TestUserReferenceField::CancelledChoiceChangesNothing_data() {
    QTest::addColumn<bool>("byEscape");
    QTest::newRow("Cancel button") << false;
    QTest::newRow("Escape") << true;
}

void TestUserReferenceField::CancelledChoiceChangesNothing() {
    QFETCH(bool, byEscape);
    ReferenceForm form;
    QVERIFY(ShowActive(form.dialog));
    QSignalSpy changed(form.field, &UserReferenceField::ValueChanged);
    // From "(None)" the dialog gets an empty choice.
    CancelProbe(byEscape);
    QVERIFY(!form.field->Choose());
    QCOMPARE(ProbeUserSelection::received.size(), 2);
    QCOMPARE(ProbeUserSelection::received[0].value, QString());
    QCOMPARE(ProbeUserSelection::received[1].value, QString());
    QCOMPARE(form.field->text(), QStringLiteral("(Keine)"));
    form.field->SetValue(QStringLiteral("ann"), QStringLiteral("fxmaster"));
    CancelProbe(byEscape);
    QTest::mouseClick(form.field->Chooser(), Qt::LeftButton);
    QVERIFY(!ProbeUserSelection::received.isEmpty());
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
    ChooseInProbe(QStringLiteral("carl"), QStringLiteral("fxline01"));
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
