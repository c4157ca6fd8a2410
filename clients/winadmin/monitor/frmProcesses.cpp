#include "monitor/frmProcesses.h"

#include <QPointer>

#include "common/Labels.h"
#include "lists/ListFillKinds.h"
#include "session/ServerSession.h"
#include "ui_frmProcesses.h"

namespace winadmin {

frmProcesses::frmProcesses(QWidget* parent)
    : MonitorWindow(QStringLiteral("ProcessView"), QStringLiteral("Processes"), parent),
      ui(std::make_unique<Ui::frmProcesses>()) {
    ui->setupUi(this);
    ApplyFormLabels(this);
    AttachControls({ui->cboServer, ui->cmdUpdate, ui->edtUpdateSpeed, ui->updUpdateSpeed,
                    ui->lvProcessView, "processes"});
    // A double click on a row opens nothing: the slots are no objects with a
    // window of their own, and starting or stopping one belongs to the
    // explorer's menu, where it is confirmed. The row is only selected.
}

frmProcesses::~frmProcesses() = default;

std::vector<ListRow> frmProcesses::FetchRows(ServerSession& session, const QString& server) {
    // The explorer's process cells, without the server's name as tag: the
    // viewer's rows are no objects that commands act on.
    return ProcessRows(session.Processes(server), QString());
}

QString frmProcesses::RowIdentity(const ListRow& row) const {
    return row.cells.value(0);  // the slot
}

void OpenProcessViewer(QWidget* parent) {
    static QPointer<frmProcesses> viewer;
    ShowViewer(viewer, parent);
}

}  // namespace winadmin
