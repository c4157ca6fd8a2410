#include "editors/frmGatewayUser.h"

#include "common/FieldHelpers.h"
#include "common/FormParameters.h"
#include "common/Labels.h"
#include "session/ServerSession.h"
#include "ui_frmGatewayUser.h"

namespace winadmin {

frmGatewayUser::frmGatewayUser(QWidget* parent)
    : RecordEditor(parent), ui(std::make_unique<Ui::frmGatewayUser>()) {
    ui->setupUi(this);
    using G = GatewayUserRecord;
    Bind(ui->edtMailAddress, ui->lblMailAddress)
        .KeyField()
        .Text(&G::mail_address, &G::set_mail_address)
        .Mandatory();
    Bind(ui->edtExtension)
        .Filter(kKeyAnyText, kExtensionLength)
        .Text(&G::extension, &G::set_extension);
    SetUpFrame({.keyField = ui->edtMailAddress,
                .keyLabel = ui->lblMailAddress,
                .keyFilter = kKeyNoParentheses,
                .keyMaxLength = kMailAddressLength,
                .details = ui->tabDetails,
                .firstDetail = ui->edtExtension,
                .ok = ui->cmdOK,
                .cancel = ui->cmdCancel,
                .remove = ui->cmdDelete,
                .helpTopic = "gateways"},
               {QStringLiteral("GatewayUser"), QStringLiteral("GtwUsrNotExist"),
                QStringLiteral("GtwUsrExist")});
}

frmGatewayUser::~frmGatewayUser() = default;

bool frmGatewayUser::ReadRequest() {
    // The address is a key only within its gateway, which the caption names
    // so that equal addresses of two gateways are not confused.
    gateway_ = FormParameterValue(QStringLiteral("GatewayAddress"));
    setWindowTitle(AppendParenthesized(GetLabel(QStringLiteral("Gateway User Details")), gateway_));
    return true;
}

GatewayUserRecord frmGatewayUser::Fetch() {
    GatewayUserRecord user = TheSession()->GetGatewayUser(gateway_, Key());
    user.set_gateway(gateway_.toStdString());
    return user;
}

Committed frmGatewayUser::Commit(Action action) {
    ServerSession& session = *TheSession();
    if (action == Delete) {
        session.DeleteGatewayUser(gateway_, Text(Kept().mail_address()), Kept().version());
        return {};
    }
    return {session.CommitGatewayUser(Edited())};
}

}  // namespace winadmin
