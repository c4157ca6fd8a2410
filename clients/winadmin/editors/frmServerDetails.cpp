#include "editors/frmServerDetails.h"

#include "common/CodeTables.h"
#include "common/Labels.h"
#include "ui_frmServerDetails.h"

namespace winadmin {

namespace {

const QString kRpc = QStringLiteral("rpc");
const QString kRrpc = QStringLiteral("rrpc");

}  // namespace

frmServerDetails::frmServerDetails(QWidget* parent)
    : RecordEditor(parent), ui(std::make_unique<Ui::frmServerDetails>()) {
    ui->setupUi(this);
    using S = ServerRecord;
    Bind(ui->edtHostName, ui->lblHostName, false).KeyField().Text(&S::name, &S::set_name);
    // A comment is required of user servers only, on purpose.
    Bind(ui->edtComment, ui->lblComment)
        .Filter(kKeyAnyText, kCommentLength)
        .Text(&S::comment, &S::set_comment)
        .Mandatory([this] { return ui->chkUserServer->isChecked(); });
    Bind(ui->cboNetType, ui->lblNetType).ItemData(&S::net_type, &S::set_net_type).Mandatory();
    Bind(ui->chkUserServer).Checked(&S::user_server, &S::set_user_server);
    Bind(ui->chkPrinterServer).Checked(&S::printer_server, &S::set_printer_server);
    Bind(ui->chkDeviceServer).Checked(&S::device_server, &S::set_device_server);
    Check([this] {
        return HasRole() || Warn(QStringLiteral("ChooseServerType"), ui->chkUserServer);
    });
    Bind(ui->edtOnline, ui->lblOnline, false)
        .Loads([this](const S& server) { ui->edtOnline->setText(YesNoText(server.online())); })
        .ShownOnly();
    Bind(ui->chkSerializeSameNumber)
        .Checked(&S::serialize_same_number, &S::set_serialize_same_number);
    Bind(ui->chkDispatchOff).Checked(&S::dispatch_off, &S::set_dispatch_off);
    // A remote server's dispatch fields are disabled: they skip their checks
    // and, like every disabled field, are not written back.
    Bind(ui->edtDispatchCount, ui->lblDispatchCount)
        .Filter(kKeyDigits, 5)
        .Range(1, 10000)
        .Spin(ui->updDispatchCount)
        .Number(&S::dispatch_count, &S::set_dispatch_count)
        .Mandatory();
    Bind(ui->edtDebugLevel, ui->lblDebugLevel)
        .Filter(kKeyDigits, 2)
        .Range(0, 10)
        .Spin(ui->updDebugLevel)
        .Number(&S::debug_level, &S::set_debug_level)
        .Mandatory();
    Bind(ui->edtCompatibility)
        .Filter(kKeyAnyText, kCompatibilityLength)
        .Text(&S::compatibility, &S::set_compatibility);
    connect(ui->cboNetType, &QComboBox::currentIndexChanged, this, [this] {
        if (!IsLoading()) EnableRules();
    });
    SetUpFrame({.keyField = ui->edtHostName,
                .keyLabel = ui->lblHostName,
                .keyFilter = kKeyNoParentheses,
                .keyMaxLength = kHostNameLength,
                .details = ui->tabDetails,
                .firstDetail = ui->edtComment,
                .ok = ui->cmdOK,
                .cancel = ui->cmdCancel,
                .remove = ui->cmdDelete,
                .helpTopic = "servers"},
               {QStringLiteral("HostName"), QStringLiteral("ServerNotExist"),
                QStringLiteral("ServerExist")});
}

frmServerDetails::~frmServerDetails() = default;

void frmServerDetails::FillFixedLists() {
    Loading([&] {
        ui->cboNetType->clear();
        for (const QString& type : {kRpc, kRrpc}) ui->cboNetType->addItem(GetLabel(type), type);
        ui->cboNetType->setCurrentIndex(-1);
    });
}

bool frmServerDetails::IsRemoteRpc() const {
    return ui->cboNetType->currentData().toString() == kRrpc;
}

bool frmServerDetails::HasRole() const {
    return ui->chkUserServer->isChecked() || ui->chkPrinterServer->isChecked() ||
           ui->chkDeviceServer->isChecked();
}

void frmServerDetails::EnableRules() {
    const bool local = !IsRemoteRpc();
    for (QWidget* control : std::initializer_list<QWidget*>{
             ui->chkSerializeSameNumber, ui->chkDispatchOff, ui->edtDispatchCount,
             ui->updDispatchCount, ui->edtDebugLevel, ui->updDebugLevel, ui->lblDispatchCount,
             ui->lblDebugLevel})
        control->setEnabled(local);
    SetContainerEnabled(ui->fraDispatching, ui->fraDispatching->isEnabled());
}

Confirmation frmServerDetails::ConfirmSave(Action action) {
    // Asked on every attempt, in the order users, printers, devices; one No
    // and nothing at all is written.
    deletions_ = {};
    if (action != Update) return Confirmation::Proceed;
    struct Role {
        bool had;
        bool kept;
        const char* question;
        bool* confirmed;
    };
    RoleObjectDeletion confirmed;
    const Role roles[] = {
        {Kept().user_server(), ui->chkUserServer->isChecked(), "DeleteUsers", &confirmed.users},
        {Kept().printer_server(), ui->chkPrinterServer->isChecked(), "DeletePrinters",
         &confirmed.printers},
        {Kept().device_server(), ui->chkDeviceServer->isChecked(), "DeleteDevices",
         &confirmed.devices},
    };
    for (const Role& role : roles) {
        if (!role.had || role.kept) continue;
        if (!AskYesNo(QLatin1String(role.question), PromptIcon::Exclamation, true))
            return Confirmation::Stay;
        *role.confirmed = true;
    }
    deletions_ = confirmed;
    return Confirmation::Proceed;
}

ServerRecord frmServerDetails::Fetch() {
    return TheSession()->GetServer(Key());
}

Committed frmServerDetails::Commit(Action action) {
    ServerSession& session = *TheSession();
    if (action == Delete) {
        session.DeleteServer(Text(Kept().name()), Kept().version());
        return {};
    }
    // The role change and the deletion of its objects are one commit: the
    // server does both or neither, so a retry after a failure is safe.
    return {session.CommitServer(Edited(), deletions_)};
}

}  // namespace winadmin
