#include "editors/frmZoneDetails.h"

#include <QCheckBox>
#include <QToolButton>

#include "common/FieldHelpers.h"
#include "common/Labels.h"
#include "common/Prompter.h"
#include "lists/ExplorerNodes.h"
#include "session/CallSession.h"
#include "session/ServerSession.h"
#include "ui_frmZoneDetails.h"

namespace winadmin {

namespace {

// "(None)" first, then every server of the session; the stored host name is
// the item data, "" for none.
void FillHosts(QComboBox* combo, const std::vector<ServerRecord>& servers) {
    combo->clear();
    combo->addItem(NoneText(), QString());
    for (const ServerRecord& server : servers)
        combo->addItem(Text(server.name()), Text(server.name()));
    combo->setCurrentIndex(-1);
}

}  // namespace

frmZoneDetails::frmZoneDetails(QWidget* parent)
    : RecordEditor(parent), ui(std::make_unique<Ui::frmZoneDetails>()) {
    ui->setupUi(this);
    using Z = ZoneRecord;
    ui->edtDaemon->setReadOnly(false);
    ui->edtDaemon->Chooser()->setObjectName(QStringLiteral("cmdDaemonSelection"));
    // Declared in the order the checks run.
    Bind(ui->edtZoneName, ui->laZoneName)
        .Filter(kKeyNoParentheses, kZoneNameLength)
        .Text(&Z::name, &Z::set_name)
        .Mandatory();
    Bind(ui->chkIsLocal).Checked(&Z::is_local, &Z::set_is_local);
    Bind(ui->chkIsDaemon).Checked(&Z::is_daemon, &Z::set_is_daemon);
    Bind(ui->cboPrimHost).ItemData(&Z::primary_host, &Z::set_primary_host);
    Check([this] {
        return ui->chkIsLocal->isChecked() || ui->chkIsDaemon->isChecked() ||
               !ui->cboPrimHost->currentData().toString().isEmpty() ||
               Warn(QStringLiteral("PrimaryHostMissing"), ui->cboPrimHost);
    });
    Bind(ui->cboSecondHost).ItemData(&Z::secondary_host, &Z::set_secondary_host);
    Bind(ui->edtDaemon).Reference(&Z::daemon, &Z::mutable_daemon);
    Check([this] {
        if (!ui->chkIsDaemon->isChecked()) return true;
        if (ui->edtDaemon->Value().IsNone())
            return Warn(QStringLiteral("DaemonUserMissing"), ui->edtDaemon);
        return DaemonIsUserAtHost() || Warn(QStringLiteral("ProvideUser@Host"), ui->edtDaemon);
    });
    connect(ui->chkIsLocal, &QCheckBox::clicked, this, &frmZoneDetails::IsLocalClicked);
    connect(ui->chkIsDaemon, &QCheckBox::clicked, this, &frmZoneDetails::IsDaemonClicked);
    connect(ui->edtDaemon, &QLineEdit::editingFinished, this, &frmZoneDetails::DaemonEdited);
    SetUpFrame({.identity = Identity::Position,
                .details = ui->fraDetails,
                .firstDetail = ui->edtZoneName,
                .ok = ui->cmdOK,
                .cancel = ui->cmdCancel,
                .remove = ui->cmdDelete,
                .helpTopic = "lcr"},
               {QStringLiteral("ZoneModify"), QStringLiteral("ZoneNotExist")});
}

frmZoneDetails::~frmZoneDetails() = default;

bool frmZoneDetails::ReadRequest() {
    std::vector<ServerRecord> servers;
    if (!CallSession([&] { servers = TheSession()->Servers(); })) return false;
    Loading([&] {
        FillHosts(ui->cboPrimHost, servers);
        FillHosts(ui->cboSecondHost, servers);
    });
    return true;
}

void frmZoneDetails::LoadMore() {
    // The name is the zone's key: typed once, for a new zone.
    SetFieldLocked(ui->edtZoneName, !Kept().is_new());
    SetFirstDetail(Kept().is_new() ? static_cast<QWidget*>(ui->edtZoneName) : ui->chkIsLocal);
}

void frmZoneDetails::EnableRules() {
    const bool local = ui->chkIsLocal->isChecked();
    const bool daemon = ui->chkIsDaemon->isChecked();
    for (QWidget* hosts : std::initializer_list<QWidget*>{ui->cboPrimHost, ui->cboSecondHost,
                                                          ui->laPrimHost, ui->laSecondHost})
        hosts->setEnabled(!local && !daemon);
    ui->laDaemon->setEnabled(daemon);
    ui->edtDaemon->Chooser()->setEnabled(daemon);
    SetContainerEnabled(ui->edtDaemon, daemon);
}

void frmZoneDetails::IsLocalClicked() {
    if (ui->chkIsLocal->isChecked()) ui->chkIsDaemon->setChecked(false);
    EnableRules();
}

void frmZoneDetails::IsDaemonClicked() {
    if (ui->chkIsDaemon->isChecked()) ui->chkIsLocal->setChecked(false);
    EnableRules();
}

bool frmZoneDetails::DaemonIsUserAtHost() const {
    const UserReference daemon = ui->edtDaemon->Value();
    return daemon.IsNone() || (!daemon.user.isEmpty() && !daemon.host.isEmpty());
}

void frmZoneDetails::DaemonEdited() {
    if (IsLoading() || !ui->edtDaemon->isModified() || DaemonIsUserAtHost()) return;
    Prompt prompt;
    prompt.text = GetLabel(QStringLiteral("ProvideUser@Host"));
    prompt.title = windowTitle();
    ThePrompter().Show(prompt);
    CTRLSetFocus(ui->edtDaemon);
}

QString frmZoneDetails::ObjectName() const {
    return Text(Kept().name());
}

int frmZoneDetails::PlaceOf(const QString& name) const {
    const ZoneListRecord zones = TheSession()->Zones();
    const std::vector<const ZoneRecord*> walked = WalkZones(zones);
    for (size_t i = 0; i < walked.size(); ++i)
        if (Text(walked[i]->name()) == name) return int(i) + 1;
    return 0;
}

ZoneRecord frmZoneDetails::Fetch() {
    if (Index() == 0) return TheSession()->GetZone(QString());
    // The place is resolved to the zone's name once, here: from now on the
    // dialog works on that zone, wherever another console moves it.
    const ZoneListRecord zones = TheSession()->Zones();
    if (const ZoneRecord* zone = ZoneAtPlace(zones, Index())) return *zone;
    ZoneRecord none;
    none.set_is_new(true);
    return none;
}

Committed frmZoneDetails::Commit(Action action) {
    ServerSession& session = *TheSession();
    if (action == Delete) {
        session.DeleteZone(Text(Kept().name()), Kept().version());
        return {};
    }
    const int64_t version = session.CommitZone(Edited());
    return {version, action == Insert ? PlaceOf(Text(Edited().name())) : Index()};
}

}  // namespace winadmin
