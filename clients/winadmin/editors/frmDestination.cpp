#include "editors/frmDestination.h"

#include "common/FieldHelpers.h"
#include "common/Labels.h"
#include "session/CallSession.h"
#include "session/ServerSession.h"
#include "ui_frmDestination.h"

namespace winadmin {

frmDestination::frmDestination(QWidget* parent)
    : RecordEditor(parent), ui(std::make_unique<Ui::frmDestination>()) {
    ui->setupUi(this);
    using D = DestinationRecord;
    // Declared in the order the checks run: the name, then uniqueness.
    Bind(ui->ddlType, ui->laType).ItemCode(&D::type, &D::set_type);
    Bind(ui->edtPrefix, ui->laPrefix)
        .Filter(kKeyAnyText, kTextLength)
        .Text(&D::prefix, &D::set_prefix);
    Bind(ui->edtDestComment, ui->laDest)
        .Filter(kKeyAnyText, kTextLength)
        .Text(&D::name, &D::set_name)
        .Mandatory();
    Bind(ui->chkExternal).Checked(&D::external, &D::set_external);
    Check([this] { return CheckUnique(); });
    SetUpFrame({.identity = Identity::Position,
                .details = ui->fraDetails,
                .firstDetail = ui->ddlType,
                .ok = ui->cmdOK,
                .cancel = ui->cmdCancel,
                .remove = ui->cmdDelete,
                .helpTopic = "lcr"},
               {QStringLiteral("DestinationModify"), QStringLiteral("DestinationNotExist")});
}

frmDestination::~frmDestination() = default;

void frmDestination::FillFixedLists() {
    // The list position is the stored type.
    Loading([&] {
        ui->ddlType->clear();
        for (const char* type : {"FAX", "TELEX", "VOICE", "SMS"})
            ui->ddlType->addItem(GetLabel(QLatin1String(type)), ui->ddlType->count());
        ui->ddlType->setCurrentIndex(-1);
    });
}

bool frmDestination::ReadRequest() {
    zone_ = FindOwningZone(QStringLiteral("Destination Details"));
    return !zone_.isEmpty();
}

bool frmDestination::CheckUnique() {
    std::vector<DestinationRecord> others;
    if (!CallSession([&] { others = TheSession()->Destinations(zone_); })) return false;
    const std::string prefix = FieldValue(ui->edtPrefix->text());
    const int type = ui->ddlType->currentData().toInt();
    for (const DestinationRecord& other : others) {
        // The destination being edited is no clash with itself.
        if (!Kept().is_new() && other.id() == Kept().id()) continue;
        if (other.prefix() == prefix && int(other.type()) == type)
            return Warn(QStringLiteral("This Destination already exists"), ui->edtPrefix);
    }
    return true;
}

DestinationRecord frmDestination::Fetch() {
    DestinationRecord destination = TheSession()->GetDestination(zone_, Index());
    destination.set_zone(zone_.toStdString());
    return destination;
}

Committed frmDestination::Commit(Action action) {
    ServerSession& session = *TheSession();
    if (action == Delete) {
        session.DeleteDestination(zone_, Index(), Kept().version(), Kept().id());
        return {};
    }
    const IndexedCommit committed = session.CommitDestination(Edited());
    return {committed.version, committed.index};
}

}  // namespace winadmin
