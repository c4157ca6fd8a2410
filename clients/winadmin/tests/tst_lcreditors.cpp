// The least-cost-routing editors against the demo installation's five zones:
// the zone's three ways of being served, the rate's times and days, the
// destination's uniqueness within its zone, and what happens when another
// console moves or deletes the row a dialog or the explorer shows.

#include <QCheckBox>
#include <QComboBox>
#include <QTest>

#include "common/FormParameters.h"
#include "common/Labels.h"
#include "common/UserReferenceField.h"
#include "editors/frmDestination.h"
#include "editors/frmRateDetails.h"
#include "editors/frmZoneDetails.h"
#include "lists/ListModel.h"
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
FormParameterList InZone(const char* key, const char* place, const char* zone = "2") {
    FormParameterList request;
    if (key)
        request.append({QLatin1String(key), QLatin1String(place)});
    else
        request.append({QStringLiteral("New"), QString()});
    request.append({QStringLiteral("ZoneIndex"), QLatin1String(zone)});
    return request;
}

using ZoneEditor = ShownEditor<frmZoneDetails>;
using RateEditor = ShownEditor<frmRateDetails>;
using DestinationEditor = ShownEditor<frmDestination>;

// A box clicked as a person does from the keyboard.
void Toggle(EditorDriver& editor, const char* box) {
    QTest::keyClick(editor.Field<QCheckBox>(box), Qt::Key_Space);
}

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
    void ZoneIsLocalDaemonOrHostPair();
    void ZoneChecks();
    void DaemonTypedAsUserAtHost();
    void RateTimesAndDays();
    void DestinationsAreUniqueByPrefixAndType();
    void ASaveReachesItsOwnRowAfterAnotherConsoleDeletedOne();
    void ExplorerDeleteOfAChangedRowIsRefused();
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
    rate.edit = [](EditorDriver& editor) { Toggle(editor, "chkSaturday"); };
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

void TestLcrEditors::ZoneIsLocalDaemonOrHostPair() {
    ZoneEditor editor(Zone("4"));
    QVERIFY(editor.Enabled("edtDaemon") && !editor.Enabled("cboPrimHost"));
    // Local clears the daemon and takes every host field away.
    Toggle(editor, "chkIsLocal");
    QVERIFY(!editor.Field<QCheckBox>("chkIsDaemon")->isChecked());
    QVERIFY(!editor.Enabled("cmdDaemonSelection") && !editor.Enabled("cboSecondHost"));
    // Neither: the host pair.
    Toggle(editor, "chkIsLocal");
    QVERIFY(editor.Enabled("cboPrimHost") && !editor.Enabled("edtDaemon"));
    // Daemon again clears local.
    Toggle(editor, "chkIsLocal");
    Toggle(editor, "chkIsDaemon");
    QVERIFY(!editor.Field<QCheckBox>("chkIsLocal")->isChecked());
}

void TestLcrEditors::ZoneChecks() {
    ZoneEditor editor({{QStringLiteral("New"), QString()}});
    editor.ExpectOK(fx_->prompter, EmptyMessage("Zone Name"));
    // Neither local nor daemon: a primary host is needed, the secondary not.
    editor.Type("edtZoneName", QStringLiteral("Nordics"));
    editor.ExpectOK(fx_->prompter, GetLabel(QStringLiteral("PrimaryHostMissing")), "cboPrimHost");
    // A daemon zone needs its user.
    editor.Set("chkIsDaemon=1");
    editor.ExpectOK(fx_->prompter, GetLabel(QStringLiteral("DaemonUserMissing")));
    QVERIFY(Store().GetZone("Nordics").is_new());
    editor.Set("chkIsDaemon=0");
    editor.Set("cboPrimHost=fxline01");
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    const ZoneRecord stored = Store().GetZone("Nordics");
    QCOMPARE(stored.primary_host(), std::string("fxline01"));
    QVERIFY(stored.secondary_host().empty());
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
    // OK refuses it the same way.
    editor.ExpectOK(fx_->prompter, GetLabel(QStringLiteral("ProvideUser@Host")));
    editor.Type("edtDaemon", QStringLiteral("admin@fxmaster"));
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    const ZoneRecord stored = Store().GetZone(kOverseas);
    QCOMPARE(stored.daemon().user_name() + '@' + stored.daemon().host_name(),
             std::string("admin@fxmaster"));
}

void TestLcrEditors::RateTimesAndDays() {
    RateEditor editor(InZone("RateModify", "1"));
    const auto refused = [&](const char* key, const char* focus) {
        editor.ExpectOK(fx_->prompter, GetLabel(QLatin1String(key)), focus);
    };
    // The end of the day is no start time. The focus goes to the field's
    // spin box, which holds the field.
    TypeTime(editor, "medtStartTime", QStringLiteral("24:00"));
    refused("InvalidStartTime", "updStartTime");
    TypeTime(editor, "medtStartTime", QStringLiteral("20:15"));
    TypeTime(editor, "medtStopTime", QStringLiteral("25:00"));
    refused("InvalidStopTime", "updStopTime");
    // No day: refused even with both times valid.
    TypeTime(editor, "medtStopTime", QStringLiteral("24:00"));
    for (const char* day : {"chkMonday", "chkTuesday", "chkWednesday", "chkThursday", "chkFriday"})
        editor.Set(QLatin1String(day) + QLatin1String("=0"));
    refused("AtLeastOneDayShouldBeSelected", "chkMonday");
    QCOMPARE(Store().GetRate(kGermany, 1).start_hour(), 8);

    // The end of the day is stored as 24:00 and shown so again.
    editor.Set("chkSunday=1");
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    RateRecord stored = Store().GetRate(kGermany, 1);
    QCOMPARE(std::pair(stored.start_hour(), stored.start_minute()), std::pair(20, 15));
    QCOMPARE(std::pair(stored.stop_hour(), stored.stop_minute()), std::pair(24, 0));
    QVERIFY(stored.sunday() && !stored.monday());
    RateEditor again(InZone("RateModify", "1"));
    QCOMPARE(again.Field("medtStopTime")->text(), QStringLiteral("24:00"));
    // A stop before the start is kept as it is.
    TypeTime(again, "medtStopTime", QStringLiteral("06:00"));
    again.Click("cmdOK");
    QVERIFY(!again.dialog.isVisible());
    QCOMPARE(Store().GetRate(kGermany, 1).stop_hour(), 6);
}

void TestLcrEditors::DestinationsAreUniqueByPrefixAndType() {
    // Germany national has "German landlines", FAX +49.
    DestinationEditor editor(InZone(nullptr, nullptr));
    // An empty name is refused before the uniqueness is looked at.
    editor.Set("ddlType=FAX");
    editor.Type("edtPrefix", QStringLiteral("+49"));
    editor.ExpectOK(fx_->prompter, EmptyMessage("Destination Name"));
    // A second FAX destination with the prefix is refused, an SMS one not.
    editor.Type("edtDestComment", QStringLiteral("German numbers by SMS"));
    editor.ExpectOK(fx_->prompter, GetLabel(QStringLiteral("This Destination already exists")),
                    "edtPrefix");
    editor.Set("ddlType=SMS");
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    QCOMPARE(Store().ListDestinations(kGermany).back().type(), pb::DEST_SMS);

    // A destination saved with its own prefix and type is no clash with
    // itself.
    DestinationEditor first(InZone("DestinationModify", "1"));
    first.Type("edtDestComment", QStringLiteral("Landlines"));
    first.Click("cmdOK");
    QVERIFY(!first.dialog.isVisible());
    QCOMPARE(Store().GetDestination(kGermany, 1).name(), std::string("Landlines"));
}

void TestLcrEditors::ASaveReachesItsOwnRowAfterAnotherConsoleDeletedOne() {
    // This console opens the third rate (the weekend); another deletes the
    // second meanwhile. The save changes the weekend rate, now second.
    RateEditor editor(InZone("RateModify", "3"));
    const RateRecord second = Store().GetRate(kGermany, 2);
    Store().DeleteRate(kGermany, 2, second.version(), second.id());
    TypeTime(editor, "medtStartTime", QStringLiteral("01:00"));
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    const auto rates = Store().ListRates(kGermany);
    QCOMPARE(rates.size(), size_t(2));
    QCOMPARE(rates[0].start_hour(), 8);
    QCOMPARE(rates[1].start_hour(), 1);
    QVERIFY(rates[1].sunday());

    // A dialog whose destination was deleted meanwhile saves nothing.
    DestinationEditor gone(InZone("DestinationModify", "2"));
    const DestinationRecord telex = Store().GetDestination(kGermany, 2);
    Store().DeleteDestination(kGermany, 2, telex.version(), telex.id());
    const auto before = Store().ListDestinations(kGermany).size();
    gone.Type("edtDestComment", QStringLiteral("Telex, renamed"));
    fx_->prompter.Answer(Answer::OK);
    gone.Click("cmdOK");
    QVERIFY(fx_->prompter.LastPrompt().text.contains(QStringLiteral("(8101000E)")));
    QVERIFY(gone.dialog.isVisible());
    QCOMPARE(Store().ListDestinations(kGermany).size(), before);
}

void TestLcrEditors::ExplorerDeleteOfAChangedRowIsRefused() {
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

    // A zone changed by another console after the tree showed it is not
    // deleted from the tree.
    QVERIFY(ExplorerFixture::Click(*main, QStringLiteral("zone4")));
    ZoneRecord changed = Store().GetZone(kOverseas);
    changed.set_secondary_host("fxbackup");
    Store().CommitZone(changed);
    fx_->prompter.Answer({Answer::Yes, Answer::OK});
    main->MenuEntry(QStringLiteral("mnuFileDelete"))->trigger();
    QVERIFY(fx_->prompter.LastPrompt().text.contains(QStringLiteral("(8101000E)")));
    QVERIFY(!Store().GetZone(kOverseas).is_new());
}

QTEST_MAIN(TestLcrEditors)
#include "tst_lcreditors.moc"
