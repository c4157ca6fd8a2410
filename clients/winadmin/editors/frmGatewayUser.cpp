#include "editors/frmGatewayUser.h"

#include "common/FieldHelpers.h"
#include "common/Labels.h"
#include "editors/FormParameters.h"
#include "session/ServerSession.h"
#include "ui_frmGatewayUser.h"

namespace winadmin {

frmGatewayUser::frmGatewayUser(QWidget* parent)
    : EditorFrame(parent), ui(std::make_unique<Ui::frmGatewayUser>()) {
    ui->setupUi(this);
    SetUpFrame({.keyField = ui->edtMailAddress,
                .keyLabel = ui->lblMailAddress,
                .firstDetail = ui->edtExtension,
                .keyFilter = kKeyNoParentheses,
                .keyMaxLength = kMailAddressLength},
               {QStringLiteral("GatewayUser"), QStringLiteral("GtwUsrNotExist"),
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
    user_.set_mail_address(FieldValue(ui->edtMailAddress->text()));
    user_.set_extension(FieldValue(ui->edtExtension->text()));
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

}  // namespace winadmin
