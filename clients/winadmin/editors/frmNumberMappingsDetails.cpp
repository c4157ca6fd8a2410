#include "editors/frmNumberMappingsDetails.h"

#include "common/FieldHelpers.h"
#include "session/ServerSession.h"
#include "ui_frmNumberMappingsDetails.h"

namespace winadmin {

frmNumberMappingsDetails::frmNumberMappingsDetails(QWidget* parent)
    : RecordEditor(parent), ui(std::make_unique<Ui::frmNumberMappingsDetails>()) {
    ui->setupUi(this);
    using M = NumberMappingRecord;
    Bind(ui->edtMatch, ui->lblMatch, false).KeyField().Text(&M::match, &M::set_match);
    Bind(ui->edtReplace, ui->lblReplace)
        .Filter(kKeyAnyText, kReplaceLength)
        .Text(&M::replace, &M::set_replace)
        .Mandatory();
    SetUpFrame(
        {.keyField = ui->edtMatch,
         .keyLabel = ui->lblMatch,
         .keyFilter = kKeyNoParentheses,
         .keyMaxLength = kMatchLength,
         .details = ui->fraDetails,
         .firstDetail = ui->edtReplace,
         .ok = ui->cmdOK,
         .cancel = ui->cmdCancel,
         .remove = ui->cmdDelete,
         .helpTopic = "mappings"},
        {QStringLiteral("NumMapMatch"), QStringLiteral("MapNotExist"), QStringLiteral("MapExist")});
}

frmNumberMappingsDetails::~frmNumberMappingsDetails() = default;

NumberMappingRecord frmNumberMappingsDetails::Fetch() {
    return TheSession()->GetNumberMapping(Key());
}

Committed frmNumberMappingsDetails::Commit(Action action) {
    ServerSession& session = *TheSession();
    if (action == Delete) {
        session.DeleteNumberMapping(Text(Kept().match()), Kept().version());
        return {};
    }
    return {session.CommitNumberMapping(Edited())};
}

}  // namespace winadmin
