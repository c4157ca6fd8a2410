#include "editors/frmRateDetails.h"

#include "common/FieldHelpers.h"
#include "common/TimeField.h"
#include "session/ServerSession.h"
#include "ui_frmRateDetails.h"

namespace winadmin {

frmRateDetails::frmRateDetails(QWidget* parent)
    : RecordEditor(parent), ui(std::make_unique<Ui::frmRateDetails>()) {
    ui->setupUi(this);
    using R = RateRecord;
    ui->medtStopTime->SetEndOfDay(EndOfDay::Allowed);
    ui->updStartTime->Bind(ui->medtStartTime);
    ui->updStopTime->Bind(ui->medtStopTime);
    // The checks run in this order: start time, stop time, the days.
    const auto bindTime = [this](TimeField* field, QLabel* label, int (R::*hour)() const,
                                 int (R::*minute)() const, void (R::*setHour)(int),
                                 void (R::*setMinute)(int), const char* invalid) {
        Bind(field, label)
            .Loads([=](const R& rate) {
                if (!field->SetTime((rate.*hour)(), (rate.*minute)())) field->clear();
            })
            .Writes([=](R& rate) {
                const std::optional<TimeOfDay> time = field->Time();
                if (!time) return;
                (rate.*setHour)(time->hour);
                (rate.*setMinute)(time->minute);
            });
        Check([=, this] { return field->IsValid() || Warn(QLatin1String(invalid), field); });
    };
    bindTime(ui->medtStartTime, ui->labelStartHour, &R::start_hour, &R::start_minute,
             &R::set_start_hour, &R::set_start_minute, "InvalidStartTime");
    bindTime(ui->medtStopTime, ui->labelStopHour, &R::stop_hour, &R::stop_minute, &R::set_stop_hour,
             &R::set_stop_minute, "InvalidStopTime");
    const std::pair<QCheckBox*, std::pair<bool (R::*)() const, void (R::*)(bool)>> days[] = {
        {ui->chkMonday, {&R::monday, &R::set_monday}},
        {ui->chkTuesday, {&R::tuesday, &R::set_tuesday}},
        {ui->chkWednesday, {&R::wednesday, &R::set_wednesday}},
        {ui->chkThursday, {&R::thursday, &R::set_thursday}},
        {ui->chkFriday, {&R::friday, &R::set_friday}},
        {ui->chkSaturday, {&R::saturday, &R::set_saturday}},
        {ui->chkSunday, {&R::sunday, &R::set_sunday}},
    };
    for (const auto& [box, flag] : days) Bind(box).Checked(flag.first, flag.second);
    Check([this] {
        for (const QCheckBox* box : ui->fraDays->findChildren<QCheckBox*>())
            if (box->isChecked()) return true;
        return Warn(QStringLiteral("AtLeastOneDayShouldBeSelected"), ui->chkMonday);
    });
    SetUpFrame({.identity = Identity::Position,
                .details = ui->fraDetails,
                .firstDetail = ui->chkMonday,
                .ok = ui->cmdOK,
                .cancel = ui->cmdCancel,
                .remove = ui->cmdDelete,
                .helpTopic = "lcr"},
               {QStringLiteral("RateModify"), QStringLiteral("RateNotExist")});
}

frmRateDetails::~frmRateDetails() = default;

bool frmRateDetails::ReadRequest() {
    zone_ = FindOwningZone(QStringLiteral("Rate Details"));
    return !zone_.isEmpty();
}

RateRecord frmRateDetails::Fetch() {
    // The rate at the place is taken with its identity, which the save and
    // the delete name from now on.
    RateRecord rate = TheSession()->GetRate(zone_, Index());
    rate.set_zone(zone_.toStdString());
    return rate;
}

Committed frmRateDetails::Commit(Action action) {
    ServerSession& session = *TheSession();
    if (action == Delete) {
        session.DeleteRate(zone_, Index(), Kept().version(), Kept().id());
        return {};
    }
    const IndexedCommit committed = session.CommitRate(Edited());
    return {committed.version, committed.index};
}

}  // namespace winadmin
