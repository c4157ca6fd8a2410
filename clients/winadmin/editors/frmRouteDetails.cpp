#include "editors/frmRouteDetails.h"

#include "common/FieldHelpers.h"
#include "common/FormParameters.h"
#include "common/Labels.h"
#include "editors/frmGroupSelection.h"
#include "session/CallSession.h"
#include "session/ServerSession.h"
#include "ui_frmRouteDetails.h"

namespace winadmin {

frmRouteDetails::frmRouteDetails(QWidget* parent)
    : RecordEditor(parent), ui(std::make_unique<Ui::frmRouteDetails>()) {
    ui->setupUi(this);
    using R = RouteRecord;
    const auto polled = [] { return TheSession()->ServerLevel() >= kPollingLevel; };
    // Declared in the order the checks run.
    Bind(ui->edtRouteName, ui->lblRouteName, false).KeyField().Text(&R::name, &R::set_name);
    Bind(ui->edtComment, ui->lblComment)
        .Filter(kKeyAnyText, kCommentLength)
        .Text(&R::comment, &R::set_comment)
        .Mandatory();
    Bind(ui->edtMatchExt)
        .Filter(kKeyAnyText, kMatchExtensionLength)
        .Text(&R::match_extension, &R::set_match_extension);
    Bind(ui->edtMatchTSI)
        .Filter(kKeyAnyText, kMatchTsiLength)
        .Text(&R::match_tsi, &R::set_match_tsi);
    Bind(ui->edtUser, ui->lblUser).Reference(&R::user, &R::mutable_user).Mandatory();
    Bind(ui->edtGroup, ui->lblGroup)
        .Cleared(NoneText())
        .Loads([this](const R& route) {
            const QString group = Text(route.group());
            ui->edtGroup->setText(group.isEmpty() ? NoneText() : group);
        })
        .Writes([this](R& route) {
            const QString shown = ui->edtGroup->text();
            route.set_group(shown == NoneText() ? std::string() : FieldValue(shown));
        })
        .Mandatory();
    Bind(ui->cboPollServer, ui->lblPollServer)
        .ItemData(&R::poll_server, &R::set_poll_server)
        .Mandatory(polled);
    Bind(ui->edtPollDocument, ui->lblPollDocument)
        .Filter(kKeyAnyText, kPollDocumentLength)
        .Text(&R::poll_document, &R::set_poll_document)
        .Mandatory(polled);
    ui->cmdGroupSelection->setToolTip(GetLabel(QStringLiteral("Select Group")));
    ui->cmdGroupSelection->setAccessibleName(ui->cmdGroupSelection->toolTip());
    connect(ui->cmdGroupSelection, &QToolButton::clicked, this, &frmRouteDetails::ChooseGroup);
    SetUpFrame({.keyField = ui->edtRouteName,
                .keyLabel = ui->lblRouteName,
                .keyFilter = kKeyNoParentheses,
                .keyMaxLength = kRouteNameLength,
                .details = ui->fraDetails,
                .firstDetail = ui->edtComment,
                .ok = ui->cmdOK,
                .cancel = ui->cmdCancel,
                .remove = ui->cmdDelete,
                .helpTopic = "routes"},
               {QStringLiteral("RouteName"), QStringLiteral("RouteNotExist"),
                QStringLiteral("RouteAlreadyExist")});
}

frmRouteDetails::~frmRouteDetails() = default;

bool frmRouteDetails::ReadRequest() {
    // Every server can be polled; the list is taken once per dialog.
    std::vector<ServerRecord> servers;
    if (!CallSession([&] { servers = TheSession()->Servers(); })) return false;
    Loading([&] {
        ui->cboPollServer->clear();
        ui->cboPollServer->addItem(NoneText(), QString());
        for (const ServerRecord& server : servers)
            ui->cboPollServer->addItem(Text(server.name()), Text(server.name()));
        ui->cboPollServer->setCurrentIndex(-1);
    });
    return true;
}

void frmRouteDetails::ChooseGroup() {
    const QString shown = ui->edtGroup->text();
    frmGroupSelection selection(this);
    selection.SetNoneAllowed(true);
    const QString chosen = selection.ExecChoice(shown);
    if (!AnsweredRefresh()) return;
    ui->edtGroup->setText(chosen.isEmpty() ? NoneText() : chosen);
    MarkModified();
}

RouteRecord frmRouteDetails::Fetch() {
    return TheSession()->GetRoute(Key());
}

Committed frmRouteDetails::Commit(Action action) {
    ServerSession& session = *TheSession();
    if (action == Delete) {
        session.DeleteRoute(Text(Kept().name()), Kept().version());
        return {};
    }
    return {session.CommitRoute(Edited())};
}

}  // namespace winadmin
