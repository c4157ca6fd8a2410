// The least-cost-routing editors against the demo installation's zones: the
// zone's daemon, the rate's times, the destination's uniqueness, the
// explorer's delete of a row another console moved; and the editor frame on
// a probe rate form, addressed by its place.

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include "common/Labels.h"
#include "common/UserReferenceField.h"
#include "editors/RecordEditor.h"
#include "editors/frmDestination.h"
#include "editors/frmRateDetails.h"
#include "editors/frmZoneDetails.h"
#include "lists/ListModel.h"
#include "session/ServerSession.h"
#include "shell/frmMain.h"
#include "store/Store.h"
#include "support/EditorDriver.h"
#include "support/EditorLifecycle.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

// The demo zones in their list order.
const std::string kGermany = "Germany national";  // place 2, hosts fxmaster and fxline01
const std::string kOverseas = "Overseas, least cost daemon";  // place 4

FormParameterList Zone(const char* place) {
    return {{QStringLiteral("ZoneModify"), QLatin1String(place)}};
}
// An object of Germany national by its place, or a new one without key.
FormParameterList InZone(const char* key, const char* place) {
    return {{QLatin1String(key ? key : "New"), QLatin1String(place)},
            {QStringLiteral("ZoneIndex"), QStringLiteral("2")}};
}

const QString kZone = QString::fromStdString(kGermany);

// A rate of one zone by its place, on a form of the buttons, the details
// container and its one field; "New" creates one at once. The confirmation
// before a save is the test's to choose.
class ProbeRate : public RecordEditor<RateRecord> {
public:
    explicit ProbeRate(bool forgetWrite = false) : RecordEditor(nullptr) {
        field->setObjectName(QStringLiteral("edtStartHour"));
        ok->setObjectName(QStringLiteral("cmdOK"));
        (new QVBoxLayout(details))->addWidget(field);
        auto* layout = new QVBoxLayout(this);
        for (QWidget* widget : std::initializer_list<QWidget*>{details, ok, cancel, remove})
            layout->addWidget(widget);
        auto& hour = Bind(field);
        if (forgetWrite)
            hour.Loads([this](const RateRecord& rate) {
                field->setText(QString::number(rate.start_hour()));
            });
        else
            hour.Number(&RateRecord::start_hour, &RateRecord::set_start_hour);
        SetUpFrame({.identity = Identity::Position,
                    .details = details,
                    .ok = ok,
                    .cancel = cancel,
                    .remove = remove},
                   {QStringLiteral("RateModify")});
    }
    Confirmation ConfirmSave(Action) override { return confirmation; }
    RateRecord Fetch() override {
        RateRecord rate = TheSession()->GetRate(kZone, Index());
        rate.set_zone(kZone.toStdString());
        return rate;
    }
    Committed Commit(Action) override {
        const IndexedCommit committed = TheSession()->CommitRate(Edited());
        return {committed.version, committed.index};
    }

    QFrame* details = new QFrame;
    QLineEdit* field = new QLineEdit;
    QPushButton* ok = new QPushButton;
    QPushButton* cancel = new QPushButton;
    QPushButton* remove = new QPushButton;
    Confirmation confirmation = Confirmation::Proceed;
};

using ZoneEditor = ShownEditor<frmZoneDetails>;
using RateEditor = ShownEditor<frmRateDetails>;
using DestinationEditor = ShownEditor<frmDestination>;

// Types a time over the whole text: the colon goes only by backspace, so the
// selection is taken away first.
void TypeTime(EditorDriver& editor, const char* field, const QString& time) {
    QLineEdit* edit = editor.Field(field);
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Backspace);
    QTest::keyClicks(edit, time);
    QCOMPARE(edit->text(), time);
}

}  // namespace

class TestLcrEditors : public ExplorerSuite {
    Q_OBJECT

private slots:
    void Lifecycles();
    void DaemonTypedAsUserAtHost();
    void RateTimes();
    void DestinationsAreUniqueByPrefix();
    void ExplorerDeletesTheRowItShowed();
    void AFieldLoadedButNeverWrittenIsRefused();
    void PositionNewCreatesAtOnceAndReloadsByItsPlace();
};

void TestLcrEditors::Lifecycles() {
    LifecycleSubject zone;
    zone.make = [] { return std::make_unique<frmZoneDetails>(); };
    zone.open = Zone("2");
    zone.missing = Zone("9");
    zone.notExistText = GetLabel(QStringLiteral("ZoneNotExist"));
    zone.edit = [](EditorDriver& editor) {
        const bool backup = editor.Field<QComboBox>("cboSecondHost")->currentText() == "fxbackup";
        editor.Set(backup ? "cboSecondHost=fxsales" : "cboSecondHost=fxbackup");
    };
    zone.storedVersion = [this] { return Store().GetZone(kGermany).version(); };
    CheckLifecycle(zone, fx_->prompter);
    if (QTest::currentTestFailed()) return;

    LifecycleSubject rate;
    rate.make = [] { return std::make_unique<frmRateDetails>(); };
    rate.open = InZone("RateModify", "2");
    rate.missing = InZone("RateModify", "9");
    rate.notExistText = GetLabel(QStringLiteral("RateNotExist"));
    // Whatever the last edit left, one more click changes the rate.
    rate.edit = [](EditorDriver& editor) {
        QTest::keyClick(editor.Field<QCheckBox>("chkSaturday"), Qt::Key_Space);
    };
    rate.storedVersion = [this] { return Store().GetRate(kGermany, 2).version(); };
    CheckLifecycle(rate, fx_->prompter);
    if (QTest::currentTestFailed()) return;

    LifecycleSubject destination;
    destination.make = [] { return std::make_unique<frmDestination>(); };
    destination.open = InZone("DestinationModify", "1");
    destination.missing = InZone("DestinationModify", "9");
    destination.notExistText = GetLabel(QStringLiteral("DestinationNotExist"));
    destination.edit = TypeCounted("edtDestComment", QStringLiteral("Landlines "));
    destination.storedVersion = [this] { return Store().GetDestination(kGermany, 1).version(); };
    CheckLifecycle(destination, fx_->prompter);
}

void TestLcrEditors::DaemonTypedAsUserAtHost() {
    ZoneEditor editor(Zone("4"));
    auto* daemon = editor.Field<UserReferenceField>("edtDaemon");
    // Leaving the field with a user but no host asks for user@host and
    // keeps the focus there.
    daemon->setFocus();
    daemon->selectAll();
    QTest::keyClicks(daemon, QStringLiteral("treasury"));
    fx_->prompter.Answer(Answer::OK);
    editor.Field<QWidget>("edtZoneName")->setFocus();
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("ProvideUser@Host")));
    QCOMPARE(editor.dialog.focusWidget(), static_cast<QWidget*>(daemon));
    editor.Type("edtDaemon", QStringLiteral("admin@fxmaster"));
    editor.ExpectOK(fx_->prompter, {});
    const ZoneRecord stored = Store().GetZone(kOverseas);
    QCOMPARE(stored.daemon().user_name() + '@' + stored.daemon().host_name(),
             std::string("admin@fxmaster"));
}

void TestLcrEditors::RateTimes() {
    RateEditor editor(InZone("RateModify", "1"));
    // The end of the day is no start time. The focus goes to the field's
    // spin box, which holds the field.
    TypeTime(editor, "medtStartTime", QStringLiteral("24:00"));
    editor.ExpectOK(fx_->prompter, GetLabel(QStringLiteral("InvalidStartTime")), "updStartTime");
    // As a stop time it is stored as 24:00 and shown so again.
    TypeTime(editor, "medtStartTime", QStringLiteral("20:15"));
    TypeTime(editor, "medtStopTime", QStringLiteral("24:00"));
    editor.ExpectOK(fx_->prompter, {});
    const RateRecord stored = Store().GetRate(kGermany, 1);
    QCOMPARE(std::pair(stored.start_hour(), stored.start_minute()), std::pair(20, 15));
    QCOMPARE(std::pair(stored.stop_hour(), stored.stop_minute()), std::pair(24, 0));
    RateEditor again(InZone("RateModify", "1"));
    QCOMPARE(again.Field("medtStopTime")->text(), QStringLiteral("24:00"));
}

void TestLcrEditors::DestinationsAreUniqueByPrefix() {
    // Germany national has "German landlines", FAX +49: a second one is
    // refused.
    DestinationEditor editor(InZone(nullptr, nullptr));
    editor.Set("ddlType=FAX");
    editor.Type("edtPrefix", QStringLiteral("+49"));
    editor.Type("edtDestComment", QStringLiteral("German numbers"));
    editor.ExpectOK(fx_->prompter, GetLabel(QStringLiteral("This Destination already exists")),
                    "edtPrefix");
    // A destination saved with its own prefix and type is no clash with
    // itself.
    DestinationEditor first(InZone("DestinationModify", "1"));
    first.Type("edtDestComment", QStringLiteral("Landlines"));
    first.ExpectOK(fx_->prompter, {});
    QCOMPARE(Store().GetDestination(kGermany, 1).name(), std::string("Landlines"));
}

void TestLcrEditors::ExplorerDeletesTheRowItShowed() {
    auto main = fx_->OpenMain();
    QVERIFY(ExplorerFixture::Click(*main, QStringLiteral("Rates2")));
    // The row shows the second rate; another console deletes the first, so
    // the row's index now names the third.
    QVERIFY(ClickRow(*main, main->ListRows()->FindKey(QStringLiteral("2Rate"))));
    const RateRecord first = Store().GetRate(kGermany, 1);
    Store().DeleteRate(kGermany, 1, first.version(), first.id());
    const auto before = Store().ListRates(kGermany);
    fx_->prompter.Answer({Answer::Yes});
    main->MenuEntry(QStringLiteral("mnuRateDel"))->trigger();
    // The rate the row showed went, not the one now at its index.
    auto after = Store().ListRates(kGermany);
    QCOMPARE(after.size(), size_t(1));
    QCOMPARE(after[0].version(), before[1].version());
}

void TestLcrEditors::AFieldLoadedButNeverWrittenIsRefused() {
    // A field loaded but never written would lose every edit made in it.
    QVERIFY_THROWS_EXCEPTION(std::logic_error, ProbeRate(true));
}

void TestLcrEditors::PositionNewCreatesAtOnceAndReloadsByItsPlace() {
    const size_t before = Store().ListRates(kGermany).size();
    ShownEditor<ProbeRate> editor({{QStringLiteral("New"), QString()}});
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
    QCOMPARE(Store().ListRates(kGermany).size(), before);
    editor.dialog.confirmation = Confirmation::Proceed;
    QVERIFY(EditorFrameProbe::Save(editor.dialog));
    // Saved at the end of the zone and shown again from there. Another
    // console deletes the first rate meanwhile: a second save updates the
    // same rate, now a place earlier, rather than the one after it.
    QCOMPARE(editor.dialog.State(), EditorState::Shown);
    const RateRecord first = Store().GetRate(kGermany, 1);
    Store().DeleteRate(kGermany, 1, first.version(), first.id());
    editor.Type("edtStartHour", QStringLiteral("6"));
    QVERIFY(EditorFrameProbe::Save(editor.dialog));
    const auto rates = Store().ListRates(kGermany);
    QCOMPARE(rates.size(), before);
    QCOMPARE(rates.back().start_hour(), 6);
    // Another console deletes it too: the refused save writes nothing and
    // keeps the edits.
    Store().DeleteRate(kGermany, int(rates.size()), rates.back().version(), rates.back().id());
    editor.Type("edtStartHour", QStringLiteral("7"));
    fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdOK");
    QVERIFY(editor.dialog.isVisible());
    QCOMPARE(editor.Field("edtStartHour")->text(), QStringLiteral("7"));
    QCOMPARE(Store().ListRates(kGermany).size(), before - 1);
}

QTEST_MAIN(TestLcrEditors)
#include "tst_lcreditors.moc"
