#include "editors/frmServerSelection.h"

#include "session/ServerSession.h"
#include "ui_frmServerSelection.h"

namespace winadmin {

frmServerSelection::frmServerSelection(QWidget* parent)
    : SelectionDialog(parent), ui(std::make_unique<Ui::frmServerSelection>()) {
    ui->setupUi(this);
    SetUpSelection({.choiceName = QStringLiteral("HostName"),
                    .columnKeys = {QStringLiteral("ServerName"), QStringLiteral("ServerComment")},
                    .list = ui->lvServers,
                    .ok = ui->cmdOK,
                    .cancel = ui->cmdCancel,
                    .helpTopic = "servers"});
}

frmServerSelection::~frmServerSelection() = default;

QString frmServerSelection::Choose(QWidget* parent, const QString& current) {
    frmServerSelection dialog(parent);
    return dialog.ExecChoice(current);
}

std::vector<ListRow> frmServerSelection::FetchRows() {
    std::vector<ListRow> rows;
    for (const ServerRecord& server : TheSession()->Servers()) {
        ListRow& row = rows.emplace_back();
        row.cells = ListCells::FromUtf8({server.name(), server.comment()});
        row.iconKey = QStringLiteral("Server");
    }
    return rows;
}

}  // namespace winadmin
