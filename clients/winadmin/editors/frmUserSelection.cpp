#include "editors/frmUserSelection.h"

#include <QSignalBlocker>

#include "common/FieldHelpers.h"
#include "common/FormParameters.h"
#include "common/Labels.h"
#include "lists/Find.h"
#include "lists/ListFillKinds.h"
#include "session/CallSession.h"
#include "session/ServerSession.h"
#include "ui_frmUserSelection.h"

namespace winadmin {

namespace {

const QString kHostName = QStringLiteral("HostName");
const QString kUserName = QStringLiteral("UserName");

}  // namespace

frmUserSelection::frmUserSelection(QWidget* parent)
    : SelectionDialog(parent), ui(std::make_unique<Ui::frmUserSelection>()) {
    ui->setupUi(this);
    SetUpSelection({.choiceName = kUserName,
                    .columnKeys = {QStringLiteral("UserName"), QStringLiteral("UserComment")},
                    .list = ui->lvUsers,
                    .ok = ui->cmdOK,
                    .cancel = ui->cmdCancel,
                    .find = ui->cmdFind,
                    .findCode = kFindUserSelection,
                    .helpTopic = "users"});
    // Another server offers its users at once, and the list takes the
    // focus for the choice.
    connect(ui->cboServer, &QComboBox::currentIndexChanged, this, [this] {
        if (isVisible()) Refill();
    });
}

frmUserSelection::~frmUserSelection() = default;

void frmUserSelection::Open(QWidget* parent) {
    frmUserSelection dialog(parent);
    dialog.exec();
}

QString frmUserSelection::ChosenHost() const {
    return ui->cboServer->currentData().toString();
}

void frmUserSelection::showEvent(QShowEvent* event) {
    // Read before the base class starts its tick, which fills the list.
    requestedHost_ = FormParameterValue(kHostName);
    noneAllowed_ = FormParameterValue(QStringLiteral("NoneAllowed")) != QLatin1String("0");
    SelectionDialog::showEvent(event);
}

void frmUserSelection::FillServers() {
    std::vector<ServerRecord> servers = TheSession()->Servers();
    const QSignalBlocker quiet(ui->cboServer);
    ui->cboServer->clear();
    for (const ServerRecord& server : servers)
        if (server.user_server()) ui->cboServer->addItem(Text(server.name()), Text(server.name()));
    // The current choice's server; without one, the server the console is
    // logged in to, when it has users.
    int chosen = ui->cboServer->findData(requestedHost_);
    if (chosen < 0) chosen = ui->cboServer->findData(TheSession()->GetHostName());
    ui->cboServer->setCurrentIndex(chosen >= 0 ? chosen : 0);
}

std::vector<ListRow> frmUserSelection::FetchRows() {
    if (ui->cboServer->count() == 0) FillServers();
    std::vector<ListRow> rows;
    if (noneAllowed_) {
        // Its text cannot name a user: user names take no parentheses.
        ListRow& none = rows.emplace_back();
        none.cells = QStringList{NoneText(), QString()};
    }
    const QString host = ChosenHost();
    if (host.isEmpty()) return rows;
    // What the list shows of each user, not the whole records.
    const ListRowSet users = UserRows(TheSession()->UserListRows(host), host);
    rows.reserve(rows.size() + users.size());
    for (ListRow row : users) rows.push_back(std::move(row));
    return rows;
}

void frmUserSelection::AnswerChoice(const QString& chosen) {
    const bool none = noneAllowed_ && chosen == NoneText();
    FormParameters().append({kHostName, none ? QString() : ChosenHost()});
    FormParameters().append({kUserName, none ? QString() : chosen});
}

}  // namespace winadmin
