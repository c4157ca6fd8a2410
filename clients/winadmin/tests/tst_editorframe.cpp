// The editor frame with what the editors' own suites do not cover: a
// keyless probe (the real administrator editor runs the shared lifecycle in
// its own suite; the probe shows what a keyless frame does with "New" and
// what the frame refuses at set-up), a dialog of a rate addressed by its
// place in its zone, and the save outcomes that a confirmation can choose.

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include "common/FormParameters.h"
#include "common/Labels.h"
#include "editors/RecordEditor.h"
#include "session/ServerSession.h"
#include "store/Store.h"
#include "support/EditorDriver.h"
#include "support/EditorLifecycle.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

const QString kZone = QStringLiteral("Germany national");

template <class W>
W* Add(QWidget* parent, const char* name, QLayout* layout) {
    auto* widget = new W(parent);
    widget->setObjectName(QLatin1String(name));
    layout->addWidget(widget);
    return widget;
}

// The buttons and the plain-frame details container every probe has.
struct ProbeForm {
    explicit ProbeForm(QDialog* dialog) {
        auto* layout = new QVBoxLayout(dialog);
        details = Add<QFrame>(dialog, "fraDetails", layout);
        detailsLayout = new QVBoxLayout(details);
        ok = Add<QPushButton>(dialog, "cmdOK", layout);
        cancel = Add<QPushButton>(dialog, "cmdCancel", layout);
        remove = Add<QPushButton>(dialog, "cmdDelete", layout);
    }
    QLineEdit* Field(QWidget* page, QLayout* layout, const char* name, const char* label) {
        auto* caption = Add<QLabel>(page, label, layout);
        caption->setText(QLatin1String(name + 3) + QLatin1Char(':'));
        auto* field = Add<QLineEdit>(page, name, layout);
        caption->setBuddy(field);
        return field;
    }
    QFrame* details;
    QVBoxLayout* detailsLayout;
    QPushButton* ok;
    QPushButton* cancel;
    QPushButton* remove;
};

// No key: the one settings record, with one field.
class ProbeSettings : public RecordEditor<AdminSettingsRecord> {
public:
    explicit ProbeSettings(bool forgetWrite = false) : RecordEditor(nullptr), form(this) {
        using A = AdminSettingsRecord;
        auto* timeout =
            form.Field(form.details, form.detailsLayout, "edtLoginIdleTimeout", "lblTimeout");
        auto& binding =
            Bind(timeout, form.details->findChild<QLabel*>(QStringLiteral("lblTimeout")))
                .Filter(kKeyDigits, 10)
                .Range(0, 2147483647)
                .Mandatory();
        if (forgetWrite)
            binding.Loads([timeout](const A& a) {
                timeout->setText(QString::number(a.login_idle_timeout()));
            });
        else
            binding.Number(&A::login_idle_timeout, &A::set_login_idle_timeout);
        SetUpFrame({.identity = Identity::Single,
                    .details = form.details,
                    .ok = form.ok,
                    .cancel = form.cancel,
                    .remove = form.remove},
                   {});
    }
    AdminSettingsRecord Fetch() override { return TheSession()->GetAdminSettings(); }
    Committed Commit(Action) override { return {TheSession()->CommitAdminSettings(Edited())}; }

    ProbeForm form;
};

// A rate by its place in its zone; "New" creates one at once. The
// confirmation before a save is the test's to choose.
class ProbeRate : public RecordEditor<RateRecord> {
public:
    ProbeRate() : RecordEditor(nullptr), form(this) {
        using R = RateRecord;
        Bind(Add<QCheckBox>(form.details, "chkMonday", form.detailsLayout))
            .Checked(&R::monday, &R::set_monday);
        Bind(form.Field(form.details, form.detailsLayout, "edtStartHour", "lblStartHour"),
             form.details->findChild<QLabel*>(QStringLiteral("lblStartHour")))
            .Filter(kKeyDigits, 2)
            .Number(&R::start_hour, &R::set_start_hour)
            .Range(0, 23)
            .Mandatory();
        SetUpFrame({.identity = Identity::Position,
                    .details = form.details,
                    .ok = form.ok,
                    .cancel = form.cancel,
                    .remove = form.remove},
                   {QStringLiteral("RateModify"), QStringLiteral("DestinationNotExist")});
    }
    bool ReadRequest() override {
        zone_ = FormParameterValue(QStringLiteral("Zone"));
        if (TheSession()->GetZone(zone_).is_new()) return Warn(QStringLiteral("ZoneNotExist"));
        return true;
    }
    Confirmation ConfirmSave(Action action) override {
        actions.append(action);
        return confirmation;
    }
    RateRecord Fetch() override {
        // A place past the end names no rate.
        const int count = int(TheSession()->Rates(zone_).size());
        if (Index() > count) {
            RateRecord none;
            none.set_is_new(true);
            return none;
        }
        RateRecord rate = TheSession()->GetRate(zone_, Index());
        rate.set_zone(zone_.toStdString());
        return rate;
    }
    Committed Commit(Action action) override {
        if (action == Delete) {
            TheSession()->DeleteRate(zone_, Index(), Kept().version());
            return {};
        }
        const IndexedCommit committed = TheSession()->CommitRate(Edited());
        return {committed.version, committed.index};
    }
    QString ObjectName() const override { return QString::number(Index()); }

    ProbeForm form;
    Confirmation confirmation = Confirmation::Proceed;
    QList<Action> actions;

private:
    QString zone_;
};

FormParameterList Rate(const QString& place, const QString& zone = kZone) {
    return {{QStringLiteral("RateModify"), place}, {QStringLiteral("Zone"), zone}};
}
FormParameterList NewRate() {
    return {{QStringLiteral("New"), QString()}, {QStringLiteral("Zone"), kZone}};
}

}  // namespace

class TestEditorFrame : public ExplorerSuite {
    Q_OBJECT

private slots:
    void KeylessOffersNoDeleteAndNoNewKey();
    void FormsTheFrameCannotRunAreRefused();
    void PositionLifecycle();
    void PositionNewCreatesAtOnceAndReloadsByItsPlace();
    void RequestRefusedClosesWithZero();
    void ConfirmationOutcomesOnInsertAndUpdate();
};

void TestEditorFrame::KeylessOffersNoDeleteAndNoNewKey() {
    // Whatever the request says, the one record is shown.
    ShownEditor<ProbeSettings> editor({{QStringLiteral("New"), QString()}});
    QCOMPARE(editor.dialog.State(), EditorState::Shown);
    QVERIFY(!editor.dialog.form.remove->isEnabled());
    QVERIFY(editor.dialog.form.ok->isEnabled());
    editor.Type("edtLoginIdleTimeout", QStringLiteral("0"));
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    QCOMPARE(Store().GetAdminSettings().login_idle_timeout(), 0);
    QCOMPARE(editor.Answer(), QStringLiteral("-1"));
}

void TestEditorFrame::FormsTheFrameCannotRunAreRefused() {
    // A field loaded but never written would lose every edit made in it.
    QVERIFY_THROWS_EXCEPTION(std::logic_error, ProbeSettings(true));
    // A form without its details container.
    struct NoDetails : RecordEditor<AdminSettingsRecord> {
        NoDetails() : RecordEditor(nullptr) {
            auto* ok = new QPushButton(this);
            auto* cancel = new QPushButton(this);
            SetUpFrame({.identity = Identity::Single, .ok = ok, .cancel = cancel}, {});
        }
        AdminSettingsRecord Fetch() override { return {}; }
        Committed Commit(Action) override { return {}; }
    };
    QVERIFY_THROWS_EXCEPTION(std::logic_error, NoDetails());
}

void TestEditorFrame::PositionLifecycle() {
    LifecycleSubject subject;
    subject.make = [] { return std::make_unique<ProbeRate>(); };
    subject.open = Rate(QStringLiteral("2"));
    subject.missing = Rate(QStringLiteral("9"));
    subject.notExistText = GetLabel(QStringLiteral("DestinationNotExist"));
    int edits = 0;
    subject.edit = [&edits](EditorDriver& editor) {
        editor.Type("edtStartHour", QString::number(10 + ++edits));
    };
    subject.storedVersion = [this] { return Store().GetRate(kZone.toStdString(), 2).version(); };
    CheckLifecycle(subject, fx_->prompter);
}

void TestEditorFrame::PositionNewCreatesAtOnceAndReloadsByItsPlace() {
    const size_t before = Store().ListRates(kZone.toStdString()).size();
    ShownEditor<ProbeRate> editor(NewRate());
    // No key to type: the details are open at once, with the server's defaults.
    QCOMPARE(editor.dialog.State(), EditorState::NewObject);
    QVERIFY(editor.dialog.form.details->isEnabled());
    QVERIFY(editor.dialog.form.ok->isEnabled());
    QCOMPARE(editor.Field("edtStartHour")->text(), QStringLiteral("8"));
    editor.Type("edtStartHour", QStringLiteral("5"));
    QVERIFY(EditorFrameProbe::Save(editor.dialog));
    // Saved at the end of the zone and shown again from there.
    QCOMPARE(Store().ListRates(kZone.toStdString()).size(), before + 1);
    QCOMPARE(editor.dialog.State(), EditorState::Shown);
    QCOMPARE(editor.Field("edtStartHour")->text(), QStringLiteral("5"));
    QVERIFY(editor.dialog.form.remove->isEnabled());
    // A second save updates the same rate rather than adding one.
    editor.Type("edtStartHour", QStringLiteral("6"));
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    const auto rates = Store().ListRates(kZone.toStdString());
    QCOMPARE(rates.size(), before + 1);
    QCOMPARE(rates.back().start_hour(), 6);
    QCOMPARE(editor.Answer(), QStringLiteral("-1"));
}

void TestEditorFrame::RequestRefusedClosesWithZero() {
    fx_->prompter.Answer(Answer::OK);
    ShownEditor<ProbeRate> editor(Rate(QStringLiteral("1"), QStringLiteral("Nowhere")));
    QTRY_VERIFY(!editor.dialog.isVisible());
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("ZoneNotExist")));
    QCOMPARE(fx_->prompter.LastPrompt().icon, PromptIcon::Exclamation);
    QCOMPARE(editor.Answer(), QStringLiteral("0"));
}

void TestEditorFrame::ConfirmationOutcomesOnInsertAndUpdate() {
    const auto count = [this] { return Store().ListRates(kZone.toStdString()).size(); };
    const size_t before = count();
    {
        // Stay: nothing written, the dialog open with its edits, still new.
        ShownEditor<ProbeRate> editor(NewRate());
        editor.Type("edtStartHour", QStringLiteral("4"));
        editor.dialog.confirmation = Confirmation::Stay;
        editor.Click("cmdOK");
        QVERIFY(editor.dialog.isVisible());
        QCOMPARE(editor.dialog.State(), EditorState::NewObject);
        QCOMPARE(editor.Field("edtStartHour")->text(), QStringLiteral("4"));
        QCOMPARE(count(), before);
        // CloseUnsaved: closes at once, nothing written, nothing asked.
        editor.dialog.confirmation = Confirmation::CloseUnsaved;
        editor.Click("cmdOK");
        QVERIFY(!editor.dialog.isVisible());
        QCOMPARE(count(), before);
        QCOMPARE(editor.Answer(), QStringLiteral("0"));
        QCOMPARE(editor.dialog.actions,
                 QList<EditorFrame::Action>({EditorFrame::Insert, EditorFrame::Insert}));
    }
    // The save question's Yes goes through the same confirmation.
    ShownEditor<ProbeRate> editor(Rate(QStringLiteral("1")));
    const int64_t version = Store().GetRate(kZone.toStdString(), 1).version();
    editor.Type("edtStartHour", QStringLiteral("7"));
    editor.dialog.confirmation = Confirmation::Stay;
    fx_->prompter.Answer(Answer::Yes);
    editor.Click("cmdCancel");
    QVERIFY(editor.dialog.isVisible());
    QCOMPARE(Store().GetRate(kZone.toStdString(), 1).version(), version);
    editor.dialog.confirmation = Confirmation::Proceed;
    fx_->prompter.Answer(Answer::Yes);
    editor.Click("cmdCancel");
    QVERIFY(!editor.dialog.isVisible());
    QCOMPARE(Store().GetRate(kZone.toStdString(), 1).start_hour(), 7);
    QCOMPARE(editor.dialog.actions.back(), EditorFrame::Update);
}

QTEST_MAIN(TestEditorFrame)
#include "tst_editorframe.moc"
