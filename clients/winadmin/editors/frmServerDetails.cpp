#include "editors/frmServerDetails.h"

#include "common/CodeTables.h"
#include "common/FieldHelpers.h"
#include "common/Labels.h"
#include "common/Prompter.h"
#include "session/ServerSession.h"
#include "ui_frmServerDetails.h"

namespace winadmin {

namespace {

const QString kRpc = QStringLiteral("rpc");
const QString kRrpc = QStringLiteral("rrpc");

ServerSession& Session() {
    return *TheSession();
}

}  // namespace

frmServerDetails::frmServerDetails(QWidget* parent)
    : EditorFrame(parent), ui(std::make_unique<Ui::frmServerDetails>()) {
    ui->setupUi(this);
    SetUpFrame({.keyField = ui->edtHostName,
                .keyLabel = ui->lblHostName,
                .firstDetail = ui->edtComment,
                .keyFilter = kKeyNoParentheses,
                .keyMaxLength = kHostNameLength},
               {QStringLiteral("HostName"), QStringLiteral("ServerNotExist"),
                QStringLiteral("ServerExist")});
    InstallKeyFilter(ui->edtComment, kKeyAnyText, kCommentLength);
    InstallKeyFilter(ui->edtDispatchCount, kKeyDigits, 5);
    InstallKeyFilter(ui->edtDebugLevel, kKeyDigits, 2);
    InstallKeyFilter(ui->edtCompatibility, kKeyAnyText, kCompatibilityLength);
    ui->updDispatchCount->Bind(ui->edtDispatchCount, 1, 10000, 1);
    ui->updDebugLevel->Bind(ui->edtDebugLevel, 0, 10, 1);
    // The compatibility value is saved like every other field, so editing it
    // alone must count as a change too.
    WatchFields({ui->edtComment, ui->edtDebugLevel, ui->edtDispatchCount, ui->edtCompatibility,
                 ui->cboNetType, ui->chkUserServer, ui->chkPrinterServer, ui->chkDeviceServer,
                 ui->chkSerializeSameNumber, ui->chkDispatchOff});
    connect(ui->cboNetType, &QComboBox::currentIndexChanged, this, [this] {
        if (!IsLoading()) EnableRules();
    });
}

frmServerDetails::~frmServerDetails() = default;

void frmServerDetails::FillFixedLists() {
    Loading([&] {
        ui->cboNetType->clear();
        for (const QString& type : {kRpc, kRrpc}) ui->cboNetType->addItem(GetLabel(type), type);
        ui->cboNetType->setCurrentIndex(-1);
    });
}

void frmServerDetails::ClearFields() {
    for (QCheckBox* box : {ui->chkUserServer, ui->chkPrinterServer, ui->chkDeviceServer,
                           ui->chkSerializeSameNumber, ui->chkDispatchOff})
        box->setChecked(false);
    ui->cboNetType->setCurrentIndex(-1);
    for (QLineEdit* field : {ui->edtComment, ui->edtOnline, ui->edtDispatchCount, ui->edtDebugLevel,
                             ui->edtCompatibility})
        field->clear();
}

void frmServerDetails::LoadFields() {
    ui->edtHostName->setText(Text(server_.name()));
    ui->edtComment->setText(Text(server_.comment()));
    ui->chkUserServer->setChecked(server_.user_server());
    ui->chkPrinterServer->setChecked(server_.printer_server());
    ui->chkDeviceServer->setChecked(server_.device_server());
    ui->cboNetType->setCurrentIndex(ui->cboNetType->findData(Text(server_.net_type())));
    ui->edtOnline->setText(YesNoText(server_.online()));
    ui->chkSerializeSameNumber->setChecked(server_.serialize_same_number());
    ui->chkDispatchOff->setChecked(server_.dispatch_off());
    ui->edtDispatchCount->setText(QString::number(server_.dispatch_count()));
    ui->edtDebugLevel->setText(QString::number(server_.debug_level()));
    ui->edtCompatibility->setText(Text(server_.compatibility()));
}

bool frmServerDetails::WriteFields() {
    server_.set_name(FieldValue(ui->edtHostName->text()));
    server_.set_comment(FieldValue(ui->edtComment->text()));
    server_.set_user_server(ui->chkUserServer->isChecked());
    server_.set_printer_server(ui->chkPrinterServer->isChecked());
    server_.set_device_server(ui->chkDeviceServer->isChecked());
    server_.set_net_type(FieldValue(ui->cboNetType->currentData().toString()));
    server_.set_serialize_same_number(ui->chkSerializeSameNumber->isChecked());
    server_.set_dispatch_off(ui->chkDispatchOff->isChecked());
    // A remote server skips the range checks, so its disabled fields may hold
    // anything; only values the server takes are written, the rest stay as
    // stored.
    bool ok = false;
    if (const int count = ui->edtDispatchCount->text().trimmed().toInt(&ok);
        ok && count >= 1 && count <= 10000)
        server_.set_dispatch_count(count);
    if (const int level = ui->edtDebugLevel->text().trimmed().toInt(&ok);
        ok && level >= 0 && level <= 10)
        server_.set_debug_level(level);
    server_.set_compatibility(FieldValue(ui->edtCompatibility->text()));
    return true;
}

bool frmServerDetails::IsRemoteRpc() const {
    return ui->cboNetType->currentData().toString() == kRrpc;
}

bool frmServerDetails::ValidateFields() {
    // A comment is required only of user servers.
    if (ui->chkUserServer->isChecked() &&
        IsFieldEmpty(ui->edtComment, FieldEmptyMessage(ui->lblComment->text())))
        return false;
    if (ui->cboNetType->currentIndex() < 0 &&
        IsFieldEmpty(ui->cboNetType, FieldEmptyMessage(ui->lblNetType->text())))
        return false;
    if (!ui->chkUserServer->isChecked() && !ui->chkPrinterServer->isChecked() &&
        !ui->chkDeviceServer->isChecked()) {
        Prompt prompt;
        prompt.text = GetLabel(QStringLiteral("ChooseServerType"));
        prompt.title = windowTitle();
        prompt.icon = PromptIcon::Exclamation;
        ThePrompter().Show(prompt);
        CTRLSetFocus(ui->chkUserServer);
        return false;
    }
    if (IsRemoteRpc()) return true;
    const QString count = ui->lblDispatchCount->text();
    const QString level = ui->lblDebugLevel->text();
    return !IsFieldEmpty(ui->edtDispatchCount, FieldEmptyMessage(count)) &&
           CheckFieldRange(ui->edtDispatchCount, count, 1, 10000) &&
           !IsFieldEmpty(ui->edtDebugLevel, FieldEmptyMessage(level)) &&
           CheckFieldRange(ui->edtDebugLevel, level, 0, 10);
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

bool frmServerDetails::ConfirmUpdate() {
    // Asked in the order users, printers, devices; one No and nothing at all
    // is written.
    struct Role {
        bool had;
        bool kept;
        const char* question;
        bool* confirmed;
    };
    const Role roles[] = {
        {server_.user_server(), ui->chkUserServer->isChecked(), "DeleteUsers", &deleteUsers_},
        {server_.printer_server(), ui->chkPrinterServer->isChecked(), "DeletePrinters",
         &deletePrinters_},
        {server_.device_server(), ui->chkDeviceServer->isChecked(), "DeleteDevices",
         &deleteDevices_},
    };
    bool confirmed[3] = {false, false, false};
    for (int i = 0; i < 3; ++i) {
        if (!roles[i].had || roles[i].kept) continue;
        Prompt question;
        question.text = GetLabel(QLatin1String(roles[i].question));
        question.title = windowTitle();
        question.icon = PromptIcon::Exclamation;
        question.buttons = PromptButtons::YesNo;
        question.defaultButton = 2;
        if (ThePrompter().Show(question) != Answer::Yes) return false;
        confirmed[i] = true;
    }
    for (int i = 0; i < 3; ++i) *roles[i].confirmed = confirmed[i];
    return true;
}

bool frmServerDetails::FetchObject(const QString& key) {
    server_ = Session().GetServer(key);
    return server_.is_new();
}

void frmServerDetails::ReleaseObject() {
    server_ = ServerRecord();
}

void frmServerDetails::CommitObject(int action) {
    ServerSession& session = Session();
    const QString host = Text(server_.name());
    if (action == Delete) {
        session.DeleteServer(host, server_.version());
        return;
    }
    if (action == Update) {
        // The objects of the roles given up go first, as agreed; the flags
        // are spent whether or not the rest succeeds, so a retry asks again.
        const bool users = std::exchange(deleteUsers_, false);
        const bool printers = std::exchange(deletePrinters_, false);
        const bool devices = std::exchange(deleteDevices_, false);
        if (users)
            for (const UserRecord& user : session.Users(host))
                session.DeleteUser(host, Text(user.name()), user.version());
        if (printers)
            for (const PrinterRecord& printer : session.Printers(host))
                session.DeletePrinter(host, Text(printer.name()), printer.version());
        if (devices)
            for (const DeviceRecord& device : session.Devices(host))
                session.DeleteDevice(host, Text(device.name()), device.version());
    }
    server_.set_version(session.CommitServer(server_));
}

}  // namespace winadmin
