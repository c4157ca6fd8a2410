#include "editors/frmGatewayUser.h"

#include "common/FieldHelpers.h"
#include "common/Labels.h"
#include "editors/FormParameters.h"
#include "session/ServerSession.h"
#include "ui_frmGatewayUser.h"

namespace winadmin {

namespace {

QString Text(const std::string& value) {
    return QString::fromStdString(value);
}

std::string Utf8(const QString& text) {
    return text.trimmed().toStdString();
}

}  // namespace

frmGatewayUser::frmGatewayUser(QWidget* parent)
    : EditorFrame(parent), ui(std::make_unique<Ui::frmGatewayUser>()) {
    ui->setupUi(this);
    Controls controls;
    controls.keyField = ui->edtMailAddress;
    controls.keyLabel = ui->lblMailAddress;
    controls.details = ui->tabDetails;
    controls.firstDetail = ui->edtExtension;
    controls.ok = ui->cmdOK;
    controls.cancel = ui->cmdCancel;
    controls.remove = ui->cmdDelete;
    controls.keyFilter = kKeyNoParentheses;
    controls.keyMaxLength = kMailAddressLength;
    SetUpFrame(controls, {QStringLiteral("GatewayUser"), QStringLiteral("GtwUsrNotExist"),
                          QStringLiteral("GtwUsrExist")});
    InstallKeyFilter(ui->edtExtension, kKeyAnyText, kExtensionLength);
    WatchFields({ui->edtMailAddress, ui->edtExtension});
}

frmGatewayUser::~frmGatewayUser() = default;

void frmGatewayUser::ReadRequest() {
    // The address is a key only within its gateway, which the caption names
    // so that equal addresses of two gateways are not confused.
    gateway_ = FormParameterValue(QStringLiteral("GatewayAddress"));
    setWindowTitle(AppendParenthesized(GetLabel(QStringLiteral("Gateway User Details")), gateway_));
}

void frmGatewayUser::ClearFields() {
    ui->edtExtension->clear();
}

void frmGatewayUser::LoadFields() {
    ui->edtMailAddress->setText(Text(user_.mail_address()));
    ui->edtExtension->setText(Text(user_.extension()));
}

bool frmGatewayUser::WriteFields() {
    user_.set_gateway(gateway_.toStdString());
    user_.set_mail_address(Utf8(ui->edtMailAddress->text()));
    user_.set_extension(Utf8(ui->edtExtension->text()));
    return true;
}

bool frmGatewayUser::ValidateFields() {
    return !IsFieldEmpty(ui->edtMailAddress, FieldEmptyMessage(ui->lblMailAddress->text()));
}

bool frmGatewayUser::FetchObject(const QString& key) {
    user_ = TheSession()->GetGatewayUser(gateway_, key);
    return user_.is_new();
}

void frmGatewayUser::ReleaseObject() {
    user_ = GatewayUserRecord();
}

void frmGatewayUser::CommitObject(int action) {
    ServerSession& session = *TheSession();
    if (action == Delete) {
        session.DeleteGatewayUser(gateway_, Text(user_.mail_address()), user_.version());
        return;
    }
    user_.set_version(session.CommitGatewayUser(user_));
}

void OpenGatewayUserEditor(QWidget* parent) {
    frmGatewayUser editor(parent);
    editor.exec();
}

}  // namespace winadmin
