// The editor frame with what the editors' own suites do not cover, on a
// probe form: a binding the frame refuses at set-up, and a record addressed
// by its place that "New" creates at once, kept new by a confirmation that
// keeps the dialog open.

#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include "common/FormParameters.h"
#include "editors/RecordEditor.h"
#include "session/ServerSession.h"
#include "store/Store.h"
#include "support/EditorDriver.h"
#include "support/EditorLifecycle.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

const QString kZone = QStringLiteral("Germany national");

// The buttons, the details container and its one field.
struct ProbeForm {
    explicit ProbeForm(QDialog* dialog) {
        field->setObjectName(QStringLiteral("edtStartHour"));
        ok->setObjectName(QStringLiteral("cmdOK"));
        (new QVBoxLayout(details))->addWidget(field);
        auto* layout = new QVBoxLayout(dialog);
        for (QWidget* widget : std::initializer_list<QWidget*>{details, ok, cancel, remove})
            layout->addWidget(widget);
    }
    QFrame* details = new QFrame;
    QLineEdit* field = new QLineEdit;
    QPushButton* ok = new QPushButton;
    QPushButton* cancel = new QPushButton;
    QPushButton* remove = new QPushButton;
};

// A rate of one zone by its place; "New" creates one at once. The
// confirmation before a save is the test's to choose.
class ProbeRate : public RecordEditor<RateRecord> {
public:
    explicit ProbeRate(bool forgetWrite = false) : RecordEditor(nullptr), form(this) {
        auto& hour = Bind(form.field);
        if (forgetWrite)
            hour.Loads([this](const RateRecord& rate) {
                form.field->setText(QString::number(rate.start_hour()));
            });
        else
            hour.Number(&RateRecord::start_hour, &RateRecord::set_start_hour);
        SetUpFrame({.identity = Identity::Position,
                    .details = form.details,
                    .ok = form.ok,
                    .cancel = form.cancel,
                    .remove = form.remove},
                   {QStringLiteral("RateModify")});
    }
    Confirmation ConfirmSave(Action action) override {
        actions.append(action);
        return confirmation;
    }
    RateRecord Fetch() override {
        RateRecord rate = TheSession()->GetRate(kZone, Index());
        rate.set_zone(kZone.toStdString());
        return rate;
    }
    Committed Commit(Action) override {
        const IndexedCommit committed = TheSession()->CommitRate(Edited());
        return {committed.version, committed.index};
    }

    ProbeForm form;
    Confirmation confirmation = Confirmation::Proceed;
    QList<Action> actions;
};

const FormParameterList kNew = {{QStringLiteral("New"), QString()}};

}  // namespace

class TestEditorFrame : public ExplorerSuite {
    Q_OBJECT

private slots:
    void AFieldLoadedButNeverWrittenIsRefused();
    void PositionNewCreatesAtOnceAndReloadsByItsPlace();
};

void TestEditorFrame::AFieldLoadedButNeverWrittenIsRefused() {
    // A field loaded but never written would lose every edit made in it.
    QVERIFY_THROWS_EXCEPTION(std::logic_error, ProbeRate(true));
}

void TestEditorFrame::PositionNewCreatesAtOnceAndReloadsByItsPlace() {
    const size_t before = Store().ListRates(kZone.toStdString()).size();
    ShownEditor<ProbeRate> editor(kNew);
    // No key to type: the details are open at once, with the server's defaults.
    QCOMPARE(editor.dialog.State(), EditorState::NewObject);
    QCOMPARE(editor.Field("edtStartHour")->text(), QStringLiteral("8"));
    editor.Type("edtStartHour", QStringLiteral("5"));
    // A confirmation that keeps the dialog open keeps the new object and
    // its edits, and writes nothing.
    editor.dialog.confirmation = Confirmation::Stay;
    editor.Click("cmdOK");
    QVERIFY(editor.dialog.isVisible());
    QCOMPARE(editor.dialog.State(), EditorState::NewObject);
    QCOMPARE(editor.Field("edtStartHour")->text(), QStringLiteral("5"));
    QCOMPARE(Store().ListRates(kZone.toStdString()).size(), before);
    QCOMPARE(editor.dialog.actions, QList<EditorFrame::Action>({EditorFrame::Insert}));
    editor.dialog.confirmation = Confirmation::Proceed;
    QVERIFY(EditorFrameProbe::Save(editor.dialog));
    // Saved at the end of the zone and shown again from there: a second
    // save updates the same rate rather than adding one.
    QCOMPARE(editor.dialog.State(), EditorState::Shown);
    editor.Type("edtStartHour", QStringLiteral("6"));
    editor.ExpectOK(fx_->prompter, {});
    const auto rates = Store().ListRates(kZone.toStdString());
    QCOMPARE(rates.size(), before + 1);
    QCOMPARE(rates.back().start_hour(), 6);
}

QTEST_MAIN(TestEditorFrame)
#include "tst_editorframe.moc"
